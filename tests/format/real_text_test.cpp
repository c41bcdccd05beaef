//===- real_text_test.cpp - Fixed-point reals to text and back -------------===//
#include "tavi/format/real_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "io/test_streams.h"
#include "text_helpers.h"

namespace tavi {
namespace {

TEST(RealText, Examples) {
  const std::tuple<int64_t, int8_t, bool, const char16_t*> cases[] = {
      {1250, 2, false, u"12.5"},
      {1250, 2, true, u"12.50"},
      {1200, 2, false, u"12"},
      {-5, 2, false, u"-0.05"},
      {0, 2, false, u"0"},
      {0, 2, true, u"0.00"},
      {1020, 3, false, u"1.02"},
      {INT64_MIN, 10, false, u"-922337203.6854775808"},
      {INT64_MAX, 12, false, u"922337203.6854775807"},  // decimals above 10 act as 10
      {-7, -3, true, u"-7"},
  };
  for (const auto& [value, decimals, keep, text] : cases) {
    auto mem = [&](char16_t* e) { return _RealToString(value, decimals, keep, e, u'.'); };
    EXPECT_EQ(test::Mem(mem), text);
    EXPECT_EQ(test::Stream([&](XIO& o) { return XRealToString(o, value, decimals, keep, u'.'); }),
              text);
  }
  char16_t b[8];
  EXPECT_EQ(_RealToStringEx(-125, 1, false, b + 8, u','), b + 2);
  EXPECT_EQ(std::u16string(b + 2), u"-12,5");
  test::Sink sink(1);
  EXPECT_FALSE(XRealToString(sink, 1, 0, false, u'.'));
}

TEST(RealParse, Examples) {
  // text, decimals, group separator, free first character, then value and
  // characters read (nothing for null)
  const std::tuple<const char16_t*, int8_t, char16_t, char16_t, std::optional<int64_t>, int>
      cases[] = {
          {u"1 234.5", 2, u' ', 0, 123450, 7},
          {u"12.345", 2, 0, 0, 1234, 6},
          {u".5", 2, 0, 0, 50, 2},
          {u"1.239", 2, 0, 0, 123, 5},
          {u"1,000", 0, u',', 0, 1000, 5},
          {u",5", 0, u',', 0, {}, 0},
          {u"0,5", 0, u',', 0, 0, 1},      // no separator before a non-zero value,
          {u"1,a", 0, u',', 0, 1, 1},      // nor before a non-digit,
          {u"1.5,3", 2, u',', 0, 150, 3},  // nor in the fraction
          {u"1.2.3", 2, 0, 0, 120, 3},
          {u"  -.5x", 1, 0, 0, -5, 5},
          {u"- 5", 0, 0, 0, {}, 0},
          {u"+5", 0, 0, 0, {}, 0},
          {u"abc", 2, 0, u'x', 0, 0},  // a free first character lifts only the first check
          {u"7", 20, 0, 0, 70000000000, 1},
      };
  for (const auto& [text, decimals, group, first_free, value, stop] : cases) {
    int64_t got = -1;
    const char16_t* end = _StringToReal(got, decimals, text, u'.', first_free, group);
    EXPECT_EQ(end ? std::optional(std::pair(got, end - text)) : std::nullopt,
              value ? std::optional(std::pair(*value, ptrdiff_t{stop})) : std::nullopt)
        << test::Narrow(text);
  }
}

TEST(RealParse, RandomValuesReadBack) {
  std::mt19937_64 rng(5);
  for (int i = 0; i < 5000; ++i) {
    const auto value = static_cast<int64_t>(rng() >> (rng() % 64)) * (rng() % 2 ? 1 : -1);
    const auto decimals = static_cast<int8_t>(rng() % 11);
    const bool keep = rng() % 2 != 0;
    const char16_t point = rng() % 2 ? u'.' : u',';
    const std::u16string text =
        test::Mem([&](char16_t* e) { return _RealToString(value, decimals, keep, e, point); });
    int64_t back = 0;
    const char16_t* stop = _StringToReal(back, decimals, text.c_str(), point, 0, u'\u00A0');
    EXPECT_TRUE(stop && *stop == 0 && back == value) << test::Narrow(text);
  }
}

}  // namespace
}  // namespace tavi
