//===- case_test.cpp - Case mapping and folding -----------------------------===//
#include "tavi/text/case.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <random>
#include <string>

#include "io/test_streams.h"
#include "tavi/core/buffer.h"

namespace tavi {
namespace {

std::u16string Icu(XCaseMapping mapping, const std::u16string& in) {
  std::u16string out(3 * in.size() + 1, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  const auto cap = static_cast<int32_t>(out.size());
  const auto n = static_cast<int32_t>(in.size());
  int32_t length = mapping == XCaseMapping::kUpper
                       ? u_strToUpper(out.data(), cap, in.data(), n, "", &status)
                   : mapping == XCaseMapping::kLower
                       ? u_strToLower(out.data(), cap, in.data(), n, "", &status)
                       : u_strToTitle(out.data(), cap, in.data(), n, nullptr, "", &status);
  EXPECT_TRUE(U_SUCCESS(status));
  out.resize(static_cast<size_t>(length));
  return out;
}

std::u16string Mapped(XCaseMapping mapping, const std::u16string& in) {
  std::u16string out(kCaseMaxGrowth * in.size() + 1, u'\0');
  char16_t* end = _MapCase(mapping, in.data(), static_cast<uint32_t>(in.size()), out.data());
  EXPECT_NE(end, nullptr);
  out.resize(end == nullptr ? 0 : static_cast<size_t>(end - out.data()));
  return out;
}

std::u16string Streamed(XCaseMapping mapping, const std::u16string& in) {
  XBuffer out;
  EXPECT_TRUE(XMapCase(out, mapping, in.data(), static_cast<uint32_t>(in.size())));
  return {reinterpret_cast<const char16_t*>(out._GetBufferAt(0)), out.GetBufferPos() / 2};
}

TEST(Case, SimpleFoldingOfTheWholeBmpMatchesIcu) {
  for (uint32_t c = 0; c < 0x10000; ++c) {
    if (c >= 0xD800 && c < 0xE000) {
      ASSERT_EQ(XFoldCase(static_cast<char16_t>(c)), c);
      continue;
    }
    const auto simple =
        static_cast<char16_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
    ASSERT_EQ(XFoldCase(static_cast<char16_t>(c)), simple) << std::hex << c;
    // Where the full folding is one unit, the simple one is the same.
    const char16_t one = static_cast<char16_t>(c);
    char16_t full[4];
    UErrorCode status = U_ZERO_ERROR;
    if (u_strFoldCase(full, 4, &one, 1, U_FOLD_CASE_DEFAULT, &status) == 1) {
      ASSERT_EQ(XFoldCase(one), full[0]) << std::hex << c;
    }
  }
  EXPECT_EQ(XFoldCodePoint(0x10400), 0x10428u);
  EXPECT_EQ(XFoldCodePoint(0x110000), 0x110000u);
}

TEST(Case, WholeBmpMappingsMatchIcu) {
  // Every BMP character with a space after each 61st, so that the pieces of the
  // stream form are cut between words as in real text.
  std::u16string all;
  for (uint32_t c = 1; c < 0x10000; ++c) {
    if (c >= 0xD800 && c < 0xE000) continue;
    all += static_cast<char16_t>(c);
    if (c % 61 == 0) all += u' ';
  }
  for (XCaseMapping mapping : {XCaseMapping::kUpper, XCaseMapping::kLower, XCaseMapping::kTitle}) {
    const std::u16string expected = Icu(mapping, all);
    EXPECT_EQ(Mapped(mapping, all), expected);
    EXPECT_EQ(Streamed(mapping, all), expected);
  }
}

TEST(Case, LengthChangesAndTheAsciiPath) {
  // Growth within the bound, and the final sigma (which the sweep above never puts
  // at a word's end).
  EXPECT_EQ(Mapped(XCaseMapping::kUpper, u"\u0390"), u"\u0399\u0308\u0301");
  EXPECT_EQ(Mapped(XCaseMapping::kLower, u"\u039F\u0394\u039F\u03A3"), u"\u03BF\u03B4\u03BF\u03C2");
  EXPECT_EQ(Mapped(XCaseMapping::kUpper, u""), u"");
  // ASCII texts (fast path) against ICU, all 128 characters in random orders.
  std::mt19937 rng(9);
  for (int round = 0; round < 200; ++round) {
    std::u16string s(rng() % 80, u'\0');
    for (char16_t& c : s) c = static_cast<char16_t>(rng() % 128);
    for (XCaseMapping mapping : {XCaseMapping::kUpper, XCaseMapping::kLower})
      ASSERT_EQ(Mapped(mapping, s), Icu(mapping, s)) << round;
  }
  // A long word without spaces is still cut, between pairs, and a failing target
  // reports its error.
  std::u16string emoji;
  for (int i = 0; i < 3000; ++i) emoji += u"\U00010428";
  EXPECT_EQ(Streamed(XCaseMapping::kUpper, emoji), Icu(XCaseMapping::kUpper, emoji));
  test::Sink failing(1);
  EXPECT_EQ(test::Fail(XToUpper(failing, u"abc", 3), failing), kErrTooLong);
}

}  // namespace
}  // namespace tavi
