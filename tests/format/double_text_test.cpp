//===- double_text_test.cpp - Doubles to text and back ---------------------===//
#include "tavi/format/double_text.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "format/internal/big_number.h"
#include "format/internal/double_core.h"
#include "format/internal/pow10_table.h"
#include "tavi/core/buffer.h"

namespace tavi {
namespace {

using format_internal::BigNumber;

std::u16string U16(const std::string& s) {
  return std::u16string(s.begin(), s.end());
}

std::string Narrow(const char16_t* p, size_t n) {
  std::string s;
  for (size_t i = 0; i < n; ++i) s += static_cast<char>(p[i]);
  return s;
}

std::string Print(double v, int decimals, bool exponent, bool shortFraction = false, int width = 16,
                  char16_t point = u'.') {
  char16_t buffer[kDoubleTextCapacity];
  uint32_t length = 0;
  const char16_t* first =
      _DoubleToString(length, v, buffer, static_cast<int8_t>(decimals), exponent, shortFraction,
                      static_cast<uint8_t>(width), point);
  EXPECT_EQ(first, buffer);
  EXPECT_EQ(length % 2, 0u);
  EXPECT_LE(length / 2, kDoubleTextCapacity);
  return Narrow(buffer, length / 2);
}

std::string PrintMode(double v, int print, int decimals, int width = 16) {
  strEnvNumberOptions options;
  options.PrintWidth = static_cast<uint8_t>(width);
  char16_t buffer[kDoubleTextCapacity];
  uint32_t length = 0;
  _DoubleToString(length, v, buffer, static_cast<eDoublePrint>(print),
                  static_cast<int8_t>(decimals), options);
  return Narrow(buffer, length / 2);
}

// The reader on ASCII text: the value, and how many characters it took (-1 for null).
struct Read {
  double value;
  int taken;
};

Read Parse(const std::string& s, char16_t point = u'.', char16_t alt = 0) {
  const std::u16string text = U16(s);
  double v = -12345;
  const char16_t* end = _StringToDouble(v, text.c_str(), point, alt);
  return {v, end ? static_cast<int>(end - text.c_str()) : -1};
}

uint64_t Bits(double v) {
  uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

// The reference: the C library's correctly rounded reader.
double Reference(const std::string& s) {
  return std::strtod(s.c_str(), nullptr);
}

// ---- Printing --------------------------------------------------------------------

TEST(DoubleToString, Examples) {
  struct Case {
    double value;
    int decimals;
    bool exponent;
    int width;
    const char* text;
  };
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const Case cases[] = {
      {nan, -1, false, 16, "NaN"},
      {inf, 2, true, 16, "INF"},
      {-inf, -1, false, 16, "INF"},
      {0.0, -1, false, 16, "0"},
      {-0.0, -1, false, 16, "0"},
      {0.0, 3, false, 16, "0.000"},
      {0.0, -1, true, 16, "0e+0"},
      {1.5, -1, false, 16, "1.5"},
      // Width 16: "0." leaves 14 digits, the sign takes one more.
      {1.0 / 3, -1, false, 16, "0.33333333333333"},
      {-1.0 / 3, -1, false, 16, "-0.3333333333333"},
      {2.0 / 3, -1, false, 16, "0.66666666666667"},
      {123456.789, -1, false, 8, "123456.8"},
      {123456.789, -1, false, 6, "123457"},
      {999999.96, -1, false, 8, "1000000"},
      {-0.001, 2, false, 16, "-0.00"},
      {0.5, 0, false, 16, "0"},
      {1.5, 0, false, 16, "2"},
      {2.5, 0, false, 16, "2"},
      {0.125, 2, false, 16, "0.12"},
      {0.375, 2, false, 16, "0.38"},
      // 0.15 and 9.995 lie just below their midpoints.
      {0.15, 1, false, 16, "0.1"},
      {9.995, 2, false, 16, "9.99"},
      {0.35, 1, false, 16, "0.3"},
      {0.45, 1, false, 16, "0.5"},
      {1e21, 1, false, 16, "1000000000000000000000.0"},
      {-1.0 / 3, -1, true, 16, "-3.33333333e-1"},
      {9.9996, 3, true, 16, "1.000e+1"},
      {2.2250738585072014e-308, -1, true, 16, "2.225073859e-308"},
      {2.0, -1, true, 4, "2e+0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Print(c.value, c.decimals, c.exponent, false, c.width), c.text);
  }
  EXPECT_EQ(Print(-2.25, 2, false, false, 16, u','), "-2,25");
  EXPECT_EQ(Print(1e300, -1, false, false, 16), "1" + std::string(300, '0'));
  // Digits past the shortest decimal are zeros, in the integer part too (2^60).
  EXPECT_EQ(Print(1152921504606846976.0, 0, false), "1152921504606847000");
}

TEST(DoubleToString, PrecisionLimits) {
  // Automatic precision stops at 205 fraction digits, at 36 with either flag.
  const std::string tiny = Print(std::ldexp(1.0, -60), -1, false, false, 255);
  EXPECT_EQ(tiny, "0.0000000000000000008673617379884035");  // 2^-60: 18 zeros, 16 digits
  EXPECT_EQ(Print(1e-200, -1, false, false, 255), "0." + std::string(199, '0') + "1");
  EXPECT_EQ(Print(1e-200, -1, false, true, 255), "0");
  EXPECT_EQ(Print(1e-30, -1, false, true, 255), "0.000000000000000000000000000001");
  EXPECT_EQ(Print(1.0 / 3, -1, false, false, 255), "0.3333333333333333");
  // Explicit decimals stop at 200; a negative width budget leaves no fraction.
  EXPECT_EQ(Print(0.5, 127, false).size(), 2u + 127u);
  EXPECT_EQ(Print(1e308, -1, false, false, 255).size(), 309u);
  EXPECT_EQ(Print(-1e308, 127, false).size(), 1u + 309u + 1u + 127u);
  EXPECT_EQ(Print(1.25, -1, false, false, 0), "1");
}

TEST(DoubleToString, PrintModes) {
  EXPECT_EQ(PrintMode(1e14, edpAuto, -1), "100000000000000");
  EXPECT_EQ(PrintMode(1.5e14, edpAuto, -1), "1.5e+14");
  EXPECT_EQ(PrintMode(1e-14, edpAuto, -1), "0.00000000000001");
  EXPECT_EQ(PrintMode(9e-15, edpAuto, -1), "9e-15");
  EXPECT_EQ(PrintMode(0.0, edpAuto, -1), "0");
  EXPECT_EQ(PrintMode(1.0 / 3, edpAuto, -1, 100), "0.3333333333333333");
  EXPECT_EQ(PrintMode(1e-14 / 3, edpAutoShort, -1, 100), "3.3333333333333332e-15");
  EXPECT_EQ(PrintMode(1.5e14, edpFixed, -1), "150000000000000");
  EXPECT_EQ(PrintMode(2.0, edpExponentShort, 2), "2.00e+0");
  EXPECT_EQ(PrintMode(2.0, edpExponent, -1), "2e+0");
  EXPECT_EQ(PrintMode(1.5e14, 5, -1), "150000000000000");
  EXPECT_EQ(PrintMode(1.5e14, 200, 1), "150000000000000.0");
  strEnvNumberOptions comma;
  comma.SetPointMark(u',');
  XBuffer out;
  EXPECT_TRUE(XDoubleToString(out, -0.75, edpAuto, -1, comma));
  EXPECT_TRUE(XDoubleToString(out, 2.5, 1, true, false, 16, u'.'));
  EXPECT_EQ(
      std::u16string(reinterpret_cast<const char16_t*>(out.GetBuffer()), out.GetBufferPos() / 2),
      u"-0,752.5e+0");
}

// Our exponent text against the standard library's shortest scientific text.
std::string ReferenceShortest(double v) {
  char text[64];
  char* end = std::to_chars(text, text + sizeof text, v, std::chars_format::scientific).ptr;
  std::string s(text, end);
  const size_t e = s.find('e');
  std::string exponent = s.substr(e + 2);
  while (exponent.size() > 1 && exponent[0] == '0') exponent.erase(0, 1);
  return s.substr(0, e + 2) + exponent;
}

std::vector<double> AwkwardDoubles() {
  std::vector<double> v = {5e-324,
                           1e-323,
                           2.2250738585072009e-308,
                           2.2250738585072014e-308,
                           1.7976931348623157e308,
                           0.1,
                           0.2,
                           0.3,
                           9007199254740991.0,
                           9007199254740992.0,
                           9007199254740993.0,
                           123456789012345678.0,
                           5e-310,
                           4.35e-320,
                           1.5,
                           0.5,
                           2.5};
  for (int e = -323; e <= 308; ++e) v.push_back(std::pow(10.0, e));
  for (int e = -1074; e <= 1023; ++e) v.push_back(std::ldexp(1.0, e));
  for (uint64_t b = 0; b < 20; ++b) v.push_back(format_internal::BitsDouble(b + 1));
  return v;
}

TEST(DoubleToString, ShortestDigitsRoundTrip) {
  std::mt19937_64 rng(7);
  std::vector<double> values = AwkwardDoubles();
  for (int i = 0; i < 200000; ++i) {
    double d = format_internal::BitsDouble(rng() & ~(uint64_t{1} << 63));
    if (std::isfinite(d) && d != 0) values.push_back(d);
  }
  for (int i = 0; i < 20000; ++i) values.push_back(static_cast<double>(rng() % 1000000) / 1000);
  for (double d : values) {
    const std::string ours = Print(d, -1, true, false, 60);
    ASSERT_EQ(ours, ReferenceShortest(d)) << Bits(d);
    const std::string fixed = PrintMode(-d, edpAuto, -1, 255);
    const Read back = Parse(fixed);
    ASSERT_EQ(back.taken, static_cast<int>(fixed.size())) << fixed;
    ASSERT_EQ(Bits(back.value), Bits(-d)) << fixed;
  }
}

// Fixed decimals: the exact value rounded (printf's digits) when the shortest decimal
// has more fraction digits; the shortest decimal padded with zeros otherwise.
TEST(DoubleToString, FixedDecimalsMatchReference) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> exponent(-8, 15.9);
  for (int i = 0; i < 100000; ++i) {
    const double d = std::pow(10.0, exponent(rng)) * ((rng() & 1) ? 1 : -1);
    const int decimals = static_cast<int>(rng() % 24);
    char shortest[400];
    char* end =
        std::to_chars(shortest, shortest + sizeof shortest, d, std::chars_format::fixed).ptr;
    std::string s(shortest, end);
    const size_t dot = s.find('.');
    const int have = dot == std::string::npos ? 0 : static_cast<int>(s.size() - dot - 1);
    std::string expected;
    if (decimals >= have) {
      expected = s;
      if (decimals > 0 && have == 0) expected += '.';
      expected += std::string(decimals - have, '0');
    } else {
      char text[400];
      std::snprintf(text, sizeof text, "%.*f", decimals, d);
      expected = text;
    }
    ASSERT_EQ(Print(d, decimals, false), expected) << Bits(d) << " " << decimals;
  }
}

// ---- Reading ---------------------------------------------------------------------

TEST(StringToDouble, Examples) {
  struct Case {
    const char* text;
    double value;
    int taken;
  };
  const Case cases[] = {
      {"   -1.5x", -1.5, 7},
      {".5", 0.5, 2},
      {"5.", 5.0, 2},
      {"1.e2", 100.0, 4},
      {"1.2.3", 1.2, 3},
      {"1 000", 1.0, 1},
      {"1E5", 1e5, 3},
      {"1e+5 ", 1e5, 4},
      {"1e-400", 0.0, 6},
      {"1e00000000000000000000000000000000000000005", 1e5, 43},
      {"1e-99999999999999999999", 0.0, 23},
      {"0.000000000000000000000000000001e30", 1.0, 35},
      {"4.9e-324", 5e-324, 8},
      {"2.4703282292062328e-324", 5e-324, 23},
      {"2.4703282292062327e-324", 0.0, 23},
      {"9007199254740993", 9007199254740992.0, 16},
      {"9007199254740995", 9007199254740996.0, 16},
      {"9007199254740993.0000000000000000000001", 9007199254740994.0, 39},
      {"1.7976931348623158e308", 1.7976931348623157e308, 22},
      {"-0", -0.0, 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const Read r = Parse(c.text);
    EXPECT_EQ(r.taken, c.taken);
    EXPECT_EQ(Bits(r.value), Bits(c.value));
  }
  const char* nulls[] = {"",   "-",   " x",  "+1",    ".",     "-.",      "..5", ".e5", "e5",
                         "1e", "1e+", "1ex", "1e309", "2e308", "1.8e308", "1e-", "- 1"};
  for (const char* text : nulls) EXPECT_EQ(Parse(text).taken, -1) << text;
  double unused = 0;
  EXPECT_EQ(_StringToDouble(unused, nullptr, u'.', 0), nullptr);
  // Very long digit runs: read in full, rounded as the C library rounds them.
  for (const std::string& s :
       {std::string(100000, '7') + "e-99990", "0." + std::string(5000, '0') + "123e300",
        std::string(400, '9') + "e-92", std::string(400, '9')}) {
    const Read r = Parse(s);
    if (std::isinf(Reference(s))) {
      EXPECT_EQ(r.taken, -1);
    } else {
      EXPECT_EQ(r.taken, static_cast<int>(s.size()));
      EXPECT_EQ(Bits(r.value), Bits(Reference(s)));
    }
  }
}

TEST(StringToDouble, PointAndAlternative) {
  EXPECT_EQ(Parse("1,5", u',').value, 1.5);
  EXPECT_EQ(Parse("1.5", u',').taken, 1);
  EXPECT_EQ(Parse("1,5", u'.', u',').value, 1.5);
  EXPECT_EQ(Parse("1.5", u'.', u',').value, 1.5);
  EXPECT_EQ(Parse("1.5,5", u'.', u',').taken, 3);
  EXPECT_EQ(Parse(",5", u'.', u',').value, 0.5);
  EXPECT_EQ(Parse(",.5", u'.', u',').taken, -1);
  EXPECT_EQ(Parse(",5", u'.').taken, -1);
}

// Midpoints between neighbouring doubles, written out exactly (a long double holds
// them), and a hair above and below: the slow exact path decides these.
TEST(StringToDouble, MidpointsRoundToEven) {
  std::mt19937_64 rng(3);
  std::vector<uint64_t> lows = {0,
                                1,
                                0x000FFFFFFFFFFFFF,
                                0x0010000000000000,
                                0x3FEFFFFFFFFFFFFF,
                                0x3FF0000000000000,
                                0x7FEFFFFFFFFFFFFE};
  for (int i = 0; i < 3000; ++i) lows.push_back(rng() % 0x7FEFFFFFFFFFFFFF);
  for (uint64_t low : lows) {
    const long double a = format_internal::BitsDouble(low);
    const long double b = format_internal::BitsDouble(low + 1);
    const long double mid = (a + b) / 2;
    char text[1200];
    std::snprintf(text, sizeof text, "%.1100Le", mid);
    std::string s(text);
    // Trailing zeros of the mantissa cut short; the exponent kept.
    const size_t e = s.find('e');
    std::string mantissa = s.substr(0, e);
    while (mantissa.back() == '0') mantissa.pop_back();
    const std::string exact = mantissa + s.substr(e);
    const std::string above = mantissa + std::string(900, '0') + "1" + s.substr(e);
    const double even = (low & 1) == 0 ? static_cast<double>(a) : static_cast<double>(b);
    SCOPED_TRACE(exact);
    EXPECT_EQ(Bits(Parse(exact).value), Bits(even));
    EXPECT_EQ(Bits(Parse(above).value), Bits(static_cast<double>(b)));
    // Lower the last non-zero digit by one: just below the midpoint.
    std::string below = mantissa;
    --below.back();
    EXPECT_EQ(Bits(Parse(below + s.substr(e)).value), Bits(static_cast<double>(a)));
  }
}

TEST(StringToDouble, MatchesReferenceOnRandomText) {
  std::mt19937_64 rng(5);
  char text[128];
  for (int i = 0; i < 200000; ++i) {
    std::string s;
    switch (i % 4) {
      case 0: {  // every kind of double, printed with 17 digits
        const double d = format_internal::BitsDouble(rng() % 0x7FF0000000000000);
        std::snprintf(text, sizeof text, "%.17g", d);
        s = text;
        break;
      }
      case 1: {  // 1 to 40 random digits, a point somewhere, any exponent
        const int n = 1 + static_cast<int>(rng() % 40);
        for (int k = 0; k < n; ++k) s += static_cast<char>('0' + rng() % 10);
        s.insert(rng() % (s.size() + 1), ".");
        s += "e" + std::to_string(static_cast<int>(rng() % 700) - 380);
        break;
      }
      case 2: {  // decimals with few digits in the range where the estimate decides
        std::snprintf(text, sizeof text, "%llue%d",
                      static_cast<unsigned long long>(rng() >> (rng() % 64)),
                      static_cast<int>(rng() % 60) - 30);
        s = text;
        break;
      }
      default: {  // 19 to 25 digits: more than the 64-bit significand holds
        const int n = 19 + static_cast<int>(rng() % 7);
        for (int k = 0; k < n; ++k) s += static_cast<char>('1' + rng() % 9);
        s += "e" + std::to_string(static_cast<int>(rng() % 640) - 340);
      }
    }
    const double expected = Reference(s);
    const Read r = Parse(s);
    const size_t e = s.find('e');
    if (std::isinf(expected) || (e != std::string::npos && std::atoi(&s[e + 1]) > 308)) {
      ASSERT_EQ(r.taken, -1) << s;
      continue;
    }
    ASSERT_EQ(r.taken, static_cast<int>(s.size())) << s;
    ASSERT_EQ(Bits(r.value), Bits(expected)) << s;
  }
}

// ---- Internals -------------------------------------------------------------------

// Every table entry g(e) satisfies g - 1 <= 10^e * 2^(127 - r) < g with r = floor(log2 10^e)
// and 2^127 < g < 2^128.
TEST(DoubleCore, PowerTableIsExact) {
  using format_internal::kPow10Significands;
  for (int e = format_internal::kPow10MinExponent; e <= format_internal::kPow10MaxExponent; ++e) {
    SCOPED_TRACE(e);
    const auto& entry = kPow10Significands[e - format_internal::kPow10MinExponent];
    ASSERT_NE(entry.hi >> 63, 0u);
    const int r = format_internal::FloorLog2Pow10ForTests(e);
    // 2^r <= 10^e < 2^(r+1), exactly.
    EXPECT_LE(format_internal::CompareScaled(BigNumber(1), 0, r, BigNumber(1), e, e), 0);
    EXPECT_GT(format_internal::CompareScaled(BigNumber(1), 0, r + 1, BigNumber(1), e, e), 0);
    // full = g and below = g - 1, assembled in 32-bit pieces.
    const auto assemble = [&entry](uint64_t lo) {
      BigNumber n(entry.hi);
      n.ShiftLeft(32);
      n.MultiplyAdd(1, static_cast<uint32_t>(lo >> 32));
      n.ShiftLeft(32);
      n.MultiplyAdd(1, static_cast<uint32_t>(lo));
      return n;
    };
    const BigNumber full = assemble(entry.lo);
    const BigNumber below = assemble(entry.lo - 1);
    EXPECT_LE(format_internal::CompareScaled(below, 0, 0, BigNumber(1), e, e + 127 - r), 0);
    EXPECT_GT(format_internal::CompareScaled(full, 0, 0, BigNumber(1), e, e + 127 - r), 0);
  }
}

}  // namespace
}  // namespace tavi
