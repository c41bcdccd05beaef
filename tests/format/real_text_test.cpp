//===- real_text_test.cpp - Fixed-point reals to text and back -------------===//
#include "tavi/format/real_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>

#include "io/test_streams.h"
#include "text_helpers.h"

namespace tavi {
namespace {

using test::Mem;
using test::Stream;

TEST(RealText, Examples) {
  struct Case {
    int64_t value;
    int8_t decimals;
    bool keep_zeros;
    const char16_t* text;
  };
  const Case cases[] = {
      {1250, 2, false, u"12.5"},
      {1250, 2, true, u"12.50"},
      {1200, 2, false, u"12"},
      {1200, 2, true, u"12.00"},
      {-5, 2, false, u"-0.05"},
      {0, 2, false, u"0"},
      {0, 2, true, u"0.00"},
      {1250, 0, true, u"1250"},
      {1020, 3, false, u"1.02"},
      {INT64_MIN, 10, false, u"-922337203.6854775808"},
      {INT64_MAX, 12, false, u"922337203.6854775807"},  // decimals above 10 act as 10
      {-7, -3, false, u"-7"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    EXPECT_EQ(
        Mem([&](char16_t* e) { return _RealToString(c.value, c.decimals, c.keep_zeros, e, u'.'); }),
        c.text);
    EXPECT_EQ(
        Stream([&](XIO& o) { return XRealToString(o, c.value, c.decimals, c.keep_zeros, u'.'); }),
        c.text);
  }
  char16_t b[8];
  const char16_t* first = _RealToStringEx(-125, 1, false, b + 8, u',');
  EXPECT_EQ(std::u16string(first), u"-12,5");
  EXPECT_EQ(first, b + 2);
  test::Sink sink(1);
  EXPECT_FALSE(XRealToString(sink, 1, 0, false, u'.'));
}

struct ParseCase {
  const char16_t* text;
  int8_t decimals;
  char16_t group;
  std::optional<int64_t> value;
  size_t stop = 0;
  char16_t first_free = 0;
};

TEST(RealParse, Examples) {
  const ParseCase cases[] = {
      {u"1 234.5", 2, u' ', 123450, 7},
      {u"12.345", 2, 0, 1234, 6},
      {u".5", 2, 0, 50, 2},
      {u"1.239", 2, 0, 123, 5},
      {u"1,000", 0, u',', 1000, 5},
      {u",5", 0, u',', {}},
      {u"0,5", 0, u',', 0, 1},      // no separator before a non-zero value
      {u"1,a", 0, u',', 1, 1},      // nor before a non-digit
      {u"1.5,3", 2, u',', 150, 3},  // nor in the fraction
      {u"1.2.3", 2, 0, 120, 3},
      {u"  -3", 1, 0, -30, 4},
      {u"-.5x", 1, 0, -5, 3},
      {u"- 5", 0, 0, {}},
      {u"+5", 0, 0, {}},
      {u"", 0, 0, {}},
      {u"abc", 2, 0, 0, 0, u'x'},  // a free first character lifts only the first check
      {u"7", 20, 0, 70000000000, 1},
  };
  for (const ParseCase& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    int64_t value = -1;
    const char16_t* stop = _StringToReal(value, c.decimals, c.text, u'.', c.first_free, c.group);
    if (!c.value) {
      EXPECT_EQ(stop, nullptr);
      continue;
    }
    ASSERT_NE(stop, nullptr);
    EXPECT_EQ(value, *c.value);
    EXPECT_EQ(stop - c.text, static_cast<ptrdiff_t>(c.stop));
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
        Mem([&](char16_t* e) { return _RealToString(value, decimals, keep, e, point); });
    int64_t back = 0;
    const char16_t* stop = _StringToReal(back, decimals, text.c_str(), point, 0, u'\u00A0');
    ASSERT_NE(stop, nullptr) << test::Narrow(text);
    EXPECT_EQ(*stop, 0);
    EXPECT_EQ(back, value) << test::Narrow(text);
  }
}

}  // namespace
}  // namespace tavi
