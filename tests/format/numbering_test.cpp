//===- numbering_test.cpp - Roman numerals and letter numbering ------------===//
#include "tavi/format/numbering.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "io/test_streams.h"
#include "text_helpers.h"

namespace tavi {
namespace {

using test::Mem;
using test::Stream;

std::u16string Upper(std::u16string s) {
  for (char16_t& c : s) {
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 0x20);
  }
  return s;
}

TEST(Roman, WritesTheAdditiveNotation) {
  const struct {
    uint64_t value;
    const char16_t* text;
  } cases[] = {
      {0, u""},
      {1, u"i"},
      {3, u"iii"},
      {4, u"iv"},
      {5, u"v"},
      {8, u"viii"},
      {9, u"ix"},
      {14, u"xiv"},
      {40, u"xl"},
      {44, u"xxxxiv"},
      {49, u"xxxxix"},
      {90, u"xc"},
      {99, u"lxxxxix"},
      {400, u"cd"},
      {444, u"ccccxxxxiv"},
      {900, u"cm"},
      {1900, u"mcm"},
      {1994, u"mdcccclxxxxiv"},
      {2000, u"mm"},
      {3000, u"mmm"},
      {3999, u"mmmdcccclxxxxix"},
      {93000, u"93000"},
      {UINT64_MAX, u"18446744073709551615"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToRomanSmall(c.value, e); }), c.text);
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToRomanCapital(c.value, e); }), Upper(c.text));
    EXPECT_EQ(Stream([&](XIO& s) { return XUnsignedToRomanCapital(s, c.value); }), Upper(c.text));
    if (c.value <= UINT32_MAX) {
      const auto v32 = static_cast<uint32_t>(c.value);
      EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToRomanSmall(v32, e); }), c.text);
      EXPECT_EQ(Stream([&](XIO& s) { return XUnsignedToRomanSmall(s, v32); }), c.text);
    }
  }
  // The longest numeral fits the advertised capacity.
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToRomanSmall(uint32_t{92999}, e); }).size(),
            104u);
  test::Sink failing(1);
  EXPECT_FALSE(XUnsignedToRomanSmall(failing, uint32_t{7}));
}

TEST(Roman, EveryNumeralReadsBack) {
  for (uint32_t v = 0; v < 93000; ++v) {
    const std::u16string small = Mem([&](char16_t* e) { return _UnsignedToRomanSmall(v, e); });
    const std::u16string capital =
        Mem([&](char16_t* e) { return _UnsignedToRomanCapital(uint64_t{v}, e); });
    uint32_t read32 = 1;
    uint64_t read64 = 1;
    ASSERT_EQ(_StringRomanToUnsigned(read32, small.c_str()), small.c_str() + small.size());
    ASSERT_EQ(_StringRomanToUnsigned(read64, capital.c_str()), capital.c_str() + capital.size());
    ASSERT_EQ(read32, v);
    ASSERT_EQ(read64, v);
  }
}

TEST(Roman, Reading) {
  const struct {
    const char16_t* text;
    uint64_t value;
    int stop;  // -1: null
  } cases[] = {
      {u"MCM", 1900, 3}, {u"mcm", 1900, 3},     {u"XCIX", 90, 2}, {u"MMxx!", 2020, 4},
      {u"IIII", 4, 4},   {u"VX", 15, 2},        {u"IVI", 4, 2},   {u"", 0, 0},
      {u"  X", 0, 0},    {u"abc", 0, 0},        {u"Mb", 1000, 1}, {u"12abc", 12, 2},
      {u"\u216B", 0, 0}, {u"m\u0100", 1000, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    uint64_t value = 99;
    const char16_t* end = _StringRomanToUnsigned(value, c.text);
    ASSERT_EQ(end == nullptr ? -1 : static_cast<int>(end - c.text), c.stop);
    EXPECT_EQ(value, c.value);
  }
  // Decimals follow the integer reader: twenty digits wrap around, a twenty-first that
  // does not fit is the one way to a null result.
  uint32_t v32;
  uint64_t v64;
  EXPECT_NE(_StringRomanToUnsigned(v32, u"4294967296"), nullptr);
  EXPECT_EQ(v32, 0u);
  EXPECT_EQ(_StringRomanToUnsigned(v64, u"999999999999999999999"), nullptr);
  EXPECT_EQ(_StringRomanToUnsigned(v32, nullptr), nullptr);
}

// The letter digits of the 32-bit writer: each from the low 16 bits of the value.
std::u16string Letters32(uint32_t v, char16_t first, char16_t last) {
  const uint32_t base = static_cast<uint32_t>(last - first + 1);
  std::u16string s;
  do {
    s.insert(s.begin(), static_cast<char16_t>(first + (v & 0xFFFF) % base));
    v /= base;
  } while (v != 0);
  return s;
}

TEST(Letters, Writing) {
  const auto az = [](uint64_t v) {
    return Mem([&](char16_t* e) { return _UnsignedToLetter(v, e, u'a', u'z'); });
  };
  EXPECT_EQ(az(0), u"a");
  EXPECT_EQ(az(25), u"z");
  EXPECT_EQ(az(26), u"ba");
  EXPECT_EQ(az(27), u"bb");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToLetter(uint32_t{5}, e, u'0', u'1'); }), u"101");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToLetter(UINT64_MAX, e, u'0', u'1'); }),
            std::u16string(64, u'1'));
  // A base below 2 (one letter, or last before first) writes nothing.
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToLetter(uint32_t{5}, e, u'a', u'a'); }), u"");
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToLetter(uint64_t{5}, e, u'z', u'a'); }), u"");
  EXPECT_EQ(Stream([](XIO& s) { return UnsignedToLetter(s, uint32_t{27}, u'A', u'Z'); }), u"BB");
  EXPECT_EQ(Stream([](XIO& s) { return UnsignedToLetter(s, uint64_t{1}, u'a', u'a'); }), u"");

  // The 32-bit form agrees with the 64-bit one below 65536 and takes its digits from
  // the low 16 bits above.
  std::mt19937 rng(9);
  for (int i = 0; i < 20000; ++i) {
    const uint32_t v = rng() >> (rng() % 32);
    const char16_t first = static_cast<char16_t>(u'a' + rng() % 3);
    const char16_t last = static_cast<char16_t>(first + 1 + rng() % 30);
    const auto w32 = Mem([&](char16_t* e) { return _UnsignedToLetter(v, e, first, last); });
    ASSERT_EQ(w32, Letters32(v, first, last)) << v;
    if (v < 65536) {
      ASSERT_EQ(w32,
                Mem([&](char16_t* e) { return _UnsignedToLetter(uint64_t{v}, e, first, last); }));
    }
  }
  EXPECT_NE(Mem([](char16_t* e) { return _UnsignedToLetter(uint32_t{65537}, e, u'a', u'z'); }),
            az(65537));
}

template <typename T>
int ReadLetters(T& value, const std::u16string& text, char16_t first = u'a', char16_t last = u'z') {
  const char16_t* end = _StringLetterToUnsigned(value, text.c_str(), first, last);
  return end == nullptr ? -1 : static_cast<int>(end - text.c_str());
}

TEST(Letters, Reading) {
  uint32_t v32 = 0;
  uint64_t v64 = 0;
  EXPECT_EQ(ReadLetters(v32, u"  bb1"), 4);
  EXPECT_EQ(v32, 27u);
  EXPECT_EQ(ReadLetters(v64, u"zz"), 2);
  EXPECT_EQ(v64, 675u);
  EXPECT_EQ(ReadLetters(v32, u""), -1);
  EXPECT_EQ(ReadLetters(v32, u"A"), -1);
  EXPECT_EQ(ReadLetters(v32, u"\tb"), -1);
  EXPECT_EQ(ReadLetters(v32, u"b", u'z', u'a'), -1);
  EXPECT_EQ(_StringLetterToUnsigned(v32, nullptr, u'a', u'z'), nullptr);

  // 67 letters wrap freely; a 68th is taken only when it fits; a 69th never is.
  const std::u16string zeros67(67, u'a');
  EXPECT_EQ(ReadLetters(v32, zeros67 + u"b"), 68);
  EXPECT_EQ(v32, 1u);
  EXPECT_EQ(ReadLetters(v32, zeros67 + u"ba"), -1);
  EXPECT_EQ(ReadLetters(v64, zeros67 + u"b."), 68);
  EXPECT_EQ(ReadLetters(v32, std::u16string(67, u'z')), 67);  // wrapped, not refused
  EXPECT_EQ(ReadLetters(v32, std::u16string(68, u'z')), -1);
  EXPECT_EQ(ReadLetters(v64, std::u16string(68, u'z')), -1);
  // Binary letters: the 68th fits exactly when the value so far is small.
  EXPECT_EQ(ReadLetters(v32, std::u16string(36, u'0') + std::u16string(32, u'1'), u'0', u'1'), 68);
  EXPECT_EQ(v32, UINT32_MAX);

  // Round trips (the 32-bit writer only below 65536).
  std::mt19937_64 rng(4);
  for (int i = 0; i < 20000; ++i) {
    const uint64_t v = rng() >> (rng() % 64);
    const char16_t last = static_cast<char16_t>(u'b' + rng() % 40);
    const auto text = Mem([&](char16_t* e) { return _UnsignedToLetter(v, e, u'a', last); });
    ASSERT_EQ(ReadLetters(v64, text, u'a', last), static_cast<int>(text.size()));
    ASSERT_EQ(v64, v);
    const auto small = static_cast<uint32_t>(v & 0xFFFF);
    const auto text32 = Mem([&](char16_t* e) { return _UnsignedToLetter(small, e, u'a', last); });
    ASSERT_EQ(ReadLetters(v32, text32, u'a', last), static_cast<int>(text32.size()));
    ASSERT_EQ(v32, small);
  }
}

}  // namespace
}  // namespace tavi
