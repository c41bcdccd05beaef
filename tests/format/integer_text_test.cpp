//===- integer_text_test.cpp - Integers to text and back -------------------===//
#include "tavi/format/integer_text.h"

#include <gtest/gtest.h>

#include <charconv>
#include <optional>
#include <random>

#include "format/internal/digits.h"
#include "io/test_streams.h"
#include "text_helpers.h"

namespace tavi {
namespace {

using test::Mem;
using test::Stream;

template <typename T>
std::u16string Std(T value, int radix = 10) {
  char text[80];
  return test::Wide(
      std::string_view(text, std::to_chars(text, text + 80, value, radix).ptr - text));
}
template <typename T>
std::u16string Un(T v, uint16_t min, uint8_t radix) {
  return Mem([&](char16_t* e) { return _UnsignedToString(v, min, e, radix); });
}
template <typename T>
std::u16string Sig(T v, uint16_t min = 0, uint8_t radix = 10) {
  return Mem([&](char16_t* e) { return _SignedToString(v, min, e, radix); });
}

TEST(IntegerText, Examples) {
  EXPECT_EQ(Mem([](char16_t* e) { return _UnsignedToString(uint32_t{0}, e); }), u"0");
  EXPECT_EQ(Mem([](char16_t* e) { return _SignedToString(INT32_MIN, e); }), u"-2147483648");
  EXPECT_EQ(Sig(INT64_MIN), u"-9223372036854775808");
  EXPECT_EQ(Sig(INT64_MIN, 0, 2), u"-1" + std::u16string(63, u'0'));
  EXPECT_EQ(Sig(int32_t{-255}, 4, 16), u"-00ff");  // the sign is not a digit
  EXPECT_EQ(Un(uint32_t{255}, 4, 16), u"00ff");
  EXPECT_EQ(Un(uint64_t{255}, 1, 16), u"ff");
  EXPECT_EQ(Un(uint32_t{35}, 0, 36), u"z");
  EXPECT_EQ(Un(uint64_t{42}, 3, 1), u"042");  // radices without digits fall back to decimal
  EXPECT_EQ(Un(uint32_t{42}, 0, 0), u"42");
}

// Every form and width against std::to_chars (which includes the fast decimal path
// against the plain one), and every text read back.
TEST(IntegerText, AllFormsAgreeWithTheStandardLibraryAndReadBack) {
  std::vector<uint64_t> values = {0,           9,           10,       99,        100,
                                  4294967295u, 4294967296u, 99999999, 100000000, UINT64_MAX};
  std::mt19937_64 rng(7);
  for (int i = 0; i < 3000; ++i) values.push_back(rng() >> (rng() % 64));
  for (const uint64_t v : values) {
    SCOPED_TRACE(v);
    const auto v32 = static_cast<uint32_t>(v);
    const auto s64 = static_cast<int64_t>(v);
    const auto s32 = static_cast<int32_t>(v);
    const auto radix = static_cast<uint8_t>(2 + v % 35);
    const auto min = static_cast<uint16_t>(v % 70);
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToString(v, e); }), Std(v));
    EXPECT_EQ(Mem([&](char16_t* e) { return internal::PlainDigits(v, e, 10); }), Std(v));
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v); }), Std(v));
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v32); }), Std(v32));
    EXPECT_EQ(Mem([&](char16_t* e) { return _UnsignedToString(v, e, radix); }), Std(v, radix));
    EXPECT_EQ(Stream([&](XIO& o) { return XUnsignedToString(o, v32, radix); }), Std(v32, radix));
    EXPECT_EQ(Stream([&](XIO& o) { return XSignedToString(o, s64); }), Std(s64));
    std::u16string mag = Std(s32 < 0 ? 0u - v32 : v32, radix);
    mag = (s32 < 0 ? u"-" : u"") + std::u16string(min > mag.size() ? min - mag.size() : 0, u'0') +
          mag;
    EXPECT_EQ(Sig(s32, min, radix), mag);
    EXPECT_EQ(Stream([&](XIO& o) { return XSignedToString(o, s32, min, radix); }), mag);

    uint64_t u = 0;
    uint32_t u32 = 0;
    int64_t i64 = 0;
    int32_t i32 = 0;
    EXPECT_TRUE(_StringToUnsigned(u, Std(v).c_str()) && u == v);
    EXPECT_TRUE(_StringToUnsigned(u, Std(v, radix).c_str(), radix) && u == v);
    EXPECT_TRUE(_StringToUnsigned(u32, Std(v32, radix).c_str(), radix) && u32 == v32);
    EXPECT_TRUE(s64 == INT64_MIN || (_StringToSigned(i64, Std(s64).c_str()) && i64 == s64));
    EXPECT_TRUE(s32 == INT32_MIN || (_StringToSigned(i32, Std(s32).c_str()) && i32 == s32));
  }
}

TEST(IntegerText, StreamPaddingBeyondTheStackGoesInPieces) {
  EXPECT_EQ(Stream([](XIO& o) { return XSignedToString(o, int64_t{-7}, 300, 10); }),
            u"-" + std::u16string(299, u'0') + u"7");
  test::Sink sink(2);  // the sign goes out, the padding fails
  EXPECT_FALSE(XSignedToString(sink, int64_t{-7}, 300, 10));
  EXPECT_EQ(sink.GetErrorCode(), kErrTooLong);
}

TEST(IntegerParse, DecimalMatchesAOneDigitReferenceOnRandomText) {
  std::mt19937 rng(11);
  const char16_t alphabet[] = u"0000123456789 x-";
  for (int i = 0; i < 20000; ++i) {
    std::u16string text(rng() % 26, u'0');
    for (char16_t& c : text) c = alphabet[rng() % (rng() % 4 ? 13 : 16)];
    uint64_t a = 0, b = 0;
    uint32_t a32 = 0, b32 = 0;
    const char16_t* stop = _StringToUnsigned(a, text.c_str());
    const char16_t* stop32 = _StringToUnsigned(a32, text.c_str());
    ASSERT_EQ(stop, internal::PlainDecimal(b, text.c_str())) << test::Narrow(text);
    ASSERT_EQ(stop32, internal::PlainDecimal(b32, text.c_str())) << test::Narrow(text);
    EXPECT_TRUE((!stop || a == b) && (!stop32 || a32 == b32)) << test::Narrow(text);
  }
}

// Each case: text, then the value and the characters read, or nothing for null.
struct ParseCase {
  const char16_t* text;
  std::optional<uint64_t> value;
  ptrdiff_t stop = 0;
};

template <typename T, typename... Radix>
void CheckParses(std::initializer_list<ParseCase> cases, Radix... radix) {
  for (const ParseCase& c : cases) {
    T value{};
    const char16_t* stop;
    if constexpr (std::is_signed_v<T>)
      stop = _StringToSigned(value, c.text);
    else
      stop = _StringToUnsigned(value, c.text, radix...);
    const auto got =
        stop ? std::optional(std::pair(static_cast<uint64_t>(value), stop - c.text)) : std::nullopt;
    const auto want = c.value ? std::optional(std::pair(*c.value, c.stop)) : std::nullopt;
    EXPECT_EQ(got, want) << test::Narrow(c.text);
  }
}

TEST(IntegerParse, DecimalWrapAndOverflowRules) {
  CheckParses<uint64_t>({{u"   42x", 42, 5},
                         {u"+1", {}},
                         {u"-1", {}},
                         {u"", {}},
                         {u"\t1", {}},
                         {u"18446744073709551616", 0, 20},  // twenty digits wrap
                         {u"018446744073709551615", UINT64_MAX, 21},
                         {u"018446744073709551616", {}},  // a twenty-first digit must fit
                         {u"0018446744073709551615", {}}});
  CheckParses<uint32_t>({{u"4294967296", 0, 10},
                         {u"000000000004294967289", 4294967289u, 21},
                         {u"000000000004294967295", {}}});  // 429496729 is already too much
  CheckParses<int64_t>({{u"-9223372036854775808", {}},
                        {u"-9223372036854775807", static_cast<uint64_t>(-INT64_MAX), 20},
                        {u"+5", {}}});
  CheckParses<int32_t>({{u"-2147483648", {}}, {u"4294967295", {}}, {u" -42;", uint64_t(-42), 4}});
}

TEST(IntegerParse, RadixStopsBeforeOverflowWithoutFailing) {
  CheckParses<uint64_t>(
      {{u" fF", 255, 3}, {u"10000000000000000", 0x1000000000000000, 16}, {u"g", {}}}, uint8_t{16});
  CheckParses<uint32_t>({{u"Ff", {}}, {u"fF", 15, 1}, {u"100000000", 0x10000000, 8}}, uint8_t{16});
  CheckParses<uint64_t>({{u"1012", 5, 3}, {u"2", {}}}, uint8_t{2});
  CheckParses<uint64_t>({{u"zZ!", 35 * 36 + 35, 2}}, uint8_t{36});
  CheckParses<uint64_t>({{u"0", {}}}, uint8_t{0});
}

}  // namespace
}  // namespace tavi
