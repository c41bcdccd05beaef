//===- integer_text_test.cpp - Integers to text and back -------------------===//
#include "tavi/format/integer_text.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <string>

#include "format/internal/digits.h"
#include "io/test_streams.h"
#include "text_helpers.h"

namespace tavi {
namespace {

using test::Mem;
using test::Stream;
using test::Wide;

template <typename T>
std::u16string Std(T value, int radix = 10) {
  char text[80];
  auto r = std::to_chars(text, text + sizeof text, value, radix);
  return Wide(std::string(text, r.ptr));
}

// Values of every magnitude: random bit lengths, plus the ends of each width.
std::vector<uint64_t> Samples() {
  std::vector<uint64_t> values = {0,
                                  1,
                                  9,
                                  10,
                                  99,
                                  100,
                                  4294967295u,
                                  4294967296u,
                                  99999999,
                                  100000000,
                                  9999999999999999999u,
                                  UINT64_MAX};
  std::mt19937_64 rng(7);
  for (int i = 0; i < 3000; ++i) values.push_back(rng() >> (rng() % 64));
  return values;
}

TEST(IntegerText, Examples) {
  char16_t b[8];
  EXPECT_EQ(_UnsignedToString(uint32_t{0}, b + 8), b + 7);
  EXPECT_EQ(b[7], u'0');
  EXPECT_EQ(Mem([](char16_t* e) { return _SignedToString(INT32_MIN, e); }), u"-2147483648");
  EXPECT_EQ(Mem([](char16_t* e) { return _SignedToString(INT64_MIN, e); }),
            u"-9223372036854775808");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint32_t{255}, e, 16); }), u"ff");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint32_t{255}, 4, e, 16); }), u"00ff");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint64_t{255}, 1, e, 16); }), u"ff");
  EXPECT_EQ(Mem([](char16_t* e) { return _SignedToString(int32_t{-255}, 4, e, 16); }), u"-00ff");
  EXPECT_EQ(Mem([](char16_t* e) { return _SignedToString(INT64_MIN, 0, e, 2); }),
            u"-1" + std::u16string(63, u'0'));
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint32_t{35}, e, 36); }), u"z");
  // A radix the digits cannot express falls back to decimal.
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint64_t{42}, e, 1); }), u"42");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint32_t{42}, 3, e, 0); }), u"042");
}

// Every form and width against std::to_chars, the fast decimal writer against the
// plain one, and every text parsed back.
TEST(IntegerText, AllFormsAgreeWithTheStandardLibraryAndReadBack) {
  for (const uint64_t v : Samples()) {
    const auto v32 = static_cast<uint32_t>(v);
    const auto s64 = static_cast<int64_t>(v);
    const auto s32 = static_cast<int32_t>(v);
    SCOPED_TRACE(v);
    const std::u16string dec = Std(v);
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToString(v, e); }), dec);
    EXPECT_EQ(Mem([&](char16_t* e) { return internal::PlainDigits(v, e, 10); }), dec);
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v); }), dec);
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToString(v32, e); }), Std(v32));
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v32); }), Std(v32));
    EXPECT_EQ(Mem([&](char16_t* e) { return _SignedToString(s64, e); }), Std(s64));
    EXPECT_EQ(Stream([&](XIO& o) { return XSignedToString(o, s32); }), Std(s32));
    const auto radix = static_cast<uint8_t>(2 + v % 35);
    const std::u16string r64 = Std(v, radix);
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToString(v, e, radix); }), r64);
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v32, radix); }), Std(v32, radix));
    const auto min = static_cast<uint16_t>(v % 70);
    const std::u16string sign = s32 < 0 ? u"-" : u"";
    std::u16string mag = Std(s32 < 0 ? 0u - v32 : v32, radix);
    if (mag.size() < min) mag.insert(0, min - mag.size(), u'0');
    EXPECT_EQ(Mem([&](char16_t* e) { return _SignedToString(s32, min, e, radix); }), sign + mag);
    EXPECT_EQ(Stream([&](XIO& o) { return XSignedToString(o, s32, min, radix); }), sign + mag);

    uint64_t back = 0;
    uint32_t back32 = 0;
    int64_t sback = 0;
    int32_t sback32 = 0;
    ASSERT_NE(_StringToUnsigned(back, dec.c_str()), nullptr);
    EXPECT_EQ(back, v);
    ASSERT_NE(_StringToUnsigned(back, r64.c_str(), radix), nullptr);
    EXPECT_EQ(back, v);
    ASSERT_NE(_StringToUnsigned(back32, Std(v32, radix).c_str(), radix), nullptr);
    EXPECT_EQ(back32, v32);
    if (s64 != INT64_MIN) {
      ASSERT_NE(_StringToSigned(sback, Std(s64).c_str()), nullptr);
      EXPECT_EQ(sback, s64);
    }
    if (s32 != INT32_MIN) {
      ASSERT_NE(_StringToSigned(sback32, Std(s32).c_str()), nullptr);
      EXPECT_EQ(sback32, s32);
    }
  }
}

TEST(IntegerText, StreamPaddingBeyondTheStackGoesInPieces) {
  const std::u16string text =
      Stream([](XIO& o) { return XSignedToString(o, int64_t{-7}, 300, 10); });
  EXPECT_EQ(text, u"-" + std::u16string(299, u'0') + u"7");
  test::Sink sink(2);  // the sign goes out, the padding fails
  EXPECT_FALSE(XSignedToString(sink, int64_t{-7}, 300, 10));
  EXPECT_EQ(sink.GetErrorCode(), kErrTooLong);
  test::Sink first(1);
  EXPECT_FALSE(XUnsignedToString(first, uint32_t{5}));
}

// One digit per step, as the decimal rule reads.
template <typename U>
const char16_t* ReferenceDecimal(U& value, const char16_t* p) {
  while (*p == u' ') ++p;
  if (*p < u'0' || *p > u'9') return nullptr;
  U v = 0;
  int n = 0;
  for (; *p >= u'0' && *p <= u'9'; ++p, ++n) {
    const U d = static_cast<U>(*p - u'0');
    if (n == 20) {
      const bool fits =
          sizeof(U) == 8 ? v <= UINT64_MAX / 10 && v * 10 <= UINT64_MAX - d : v < UINT32_MAX / 10;
      if (!fits) return nullptr;
    }
    if (n == 21) return nullptr;
    v = static_cast<U>(v * 10 + d);
  }
  value = v;
  return p;
}

TEST(IntegerParse, DecimalMatchesAOneDigitReferenceOnRandomText) {
  std::mt19937 rng(11);
  const char16_t alphabet[] = u"0000123456789 x-";
  for (int i = 0; i < 20000; ++i) {
    std::u16string text(rng() % 26, u'0');
    for (char16_t& c : text) c = rng() % 4 ? alphabet[rng() % 13] : alphabet[rng() % 16];
    uint64_t a = 0, b = 0;
    uint32_t a32 = 0, b32 = 0;
    const char16_t* stop = _StringToUnsigned(a, text.c_str());
    ASSERT_EQ(stop, ReferenceDecimal(b, text.c_str())) << test::Narrow(text);
    if (stop != nullptr) {
      EXPECT_EQ(a, b);
    }
    stop = _StringToUnsigned(a32, text.c_str());
    ASSERT_EQ(stop, ReferenceDecimal(b32, text.c_str())) << test::Narrow(text);
    if (stop != nullptr) {
      EXPECT_EQ(a32, b32);
    }
  }
}

// (text, value, characters consumed), or no value for null.
struct ParseCase {
  const char16_t* text;
  std::optional<uint64_t> value;
  size_t stop = 0;
};

template <typename T, typename... Radix>
void CheckParses(std::initializer_list<ParseCase> cases, Radix... radix) {
  for (const ParseCase& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    T value{};
    const char16_t* stop = [&] {
      if constexpr (std::is_signed_v<T>)
        return _StringToSigned(value, c.text);
      else
        return _StringToUnsigned(value, c.text, radix...);
    }();
    if (!c.value) {
      EXPECT_EQ(stop, nullptr);
      continue;
    }
    ASSERT_NE(stop, nullptr);
    EXPECT_EQ(static_cast<uint64_t>(value), *c.value);
    EXPECT_EQ(stop - c.text, static_cast<ptrdiff_t>(c.stop));
  }
}

TEST(IntegerParse, DecimalWrapAndOverflowRules) {
  CheckParses<uint64_t>({
      {u"   42x", 42, 5},
      {u"+1", {}},
      {u"-1", {}},
      {u"", {}},
      {u"\t1", {}},
      {u"18446744073709551616", 0, 20},  // twenty digits wrap
      {u"018446744073709551615", UINT64_MAX, 21},
      {u"018446744073709551616", {}},  // the twenty-first digit does not fit
      {u"0018446744073709551615", {}},
      {u"00000000000000000000x", 0, 20},
  });
  CheckParses<uint32_t>({
      {u"4294967296", 0, 10},
      {u"4294967295 ", 4294967295u, 10},
      {u"000000000004294967289", 4294967289u, 21},
      {u"000000000004294967295", {}},  // 429496729 before the last digit is already too much
      {u"0000000000000000000001", {}},
  });
  CheckParses<int64_t>({
      {u"-9223372036854775808", {}},
      {u"-9223372036854775807", static_cast<uint64_t>(-INT64_MAX), 20},
      {u"  -0", 0, 4},
      {u"+5", {}},
  });
  CheckParses<int32_t>({
      {u"-2147483648", {}},
      {u"4294967295", {}},
      {u"-42;", static_cast<uint64_t>(-42), 3},
  });
}

TEST(IntegerParse, RadixStopsBeforeOverflowWithoutFailing) {
  CheckParses<uint64_t>(
      {
          {u" fF", 255, 3},
          {u"FFFFFFFFFFFFFFFF", UINT64_MAX, 16},
          {u"10000000000000000", 0x1000000000000000, 16},
          {u"g", {}},
      },
      uint8_t{16});
  CheckParses<uint32_t>({{u"Ff", {}}, {u"fF", 15, 1}, {u"100000000", 0x10000000, 8}}, uint8_t{16});
  CheckParses<uint64_t>({{u"1012", 5, 3}, {u"2", {}}}, uint8_t{2});
  CheckParses<uint64_t>({{u"zZ!", 35 * 36 + 35, 2}}, uint8_t{36});
  CheckParses<uint64_t>({{u"0", {}}}, uint8_t{0});
}

}  // namespace
}  // namespace tavi
