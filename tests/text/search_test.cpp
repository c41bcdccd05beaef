//===- search_test.cpp - Finding and counting strings ----------------------===//
#include "tavi/text/search.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "text/internal/search_kernel.h"

namespace tavi {
namespace {

using text_internal::SearchPath;

uint32_t Expect(size_t npos_or_index) {
  return npos_or_index == std::u16string_view::npos ? kTextNotFound
                                                    : static_cast<uint32_t>(npos_or_index);
}

// Counts non-overlapping occurrences with the standard find.
template <typename View>
uint32_t CountReference(View text, View what) {
  if (what.empty()) return 0;
  uint32_t count = 0;
  for (size_t at = text.find(what); at != View::npos; at = text.find(what, at + what.size()))
    ++count;
  return count;
}

class SearchPaths : public testing::TestWithParam<SearchPath> {
 protected:
  void SetUp() override {
    if (!text_internal::SetSearchPath(GetParam())) GTEST_SKIP() << "path not available";
  }
  void TearDown() override { text_internal::ResetSearchPath(); }
};

// Texts over a small alphabet make many partial matches; lengths cross the 32-byte
// steps of the vector path, and matches fall at both ends.
TEST_P(SearchPaths, MatchesTheStandardSearch) {
  std::mt19937 rng(3);
  for (int round = 0; round < 4000; ++round) {
    const size_t n = rng() % 100;
    const size_t m = 1 + rng() % (round % 3 == 0 ? 3 : 40);
    const char16_t base = round % 2 ? u'a' : u'\u4E00';  // high bytes differ from low bytes
    std::u16string text(n, u'\0');
    std::u16string what(m, u'\0');
    for (char16_t& c : text) c = static_cast<char16_t>(base + rng() % 3);
    for (char16_t& c : what) c = static_cast<char16_t>(base + rng() % 3);
    if (n >= m && rng() % 2) text.replace(rng() % 2 ? n - m : 0, m, what);
    const std::u16string_view t(text), w(what);
    const auto un = static_cast<uint32_t>(n);
    const auto um = static_cast<uint32_t>(m);
    ASSERT_EQ(XFindText(text.data(), un, what.data(), um), Expect(t.find(w))) << round;
    ASSERT_EQ(XFindLastText(text.data(), un, what.data(), um), Expect(t.rfind(w))) << round;
    ASSERT_EQ(XCountText(text.data(), un, what.data(), um), CountReference(t, w)) << round;

    std::string bytes(n, '\0');
    std::string pattern(m, '\0');
    for (char& c : bytes) c = static_cast<char>('x' + rng() % 3);
    for (char& c : pattern) c = static_cast<char>('x' + rng() % 3);
    if (n >= m && rng() % 2) bytes.replace(rng() % 2 ? n - m : 0, m, pattern);
    const std::string_view b(bytes), p(pattern);
    ASSERT_EQ(XFindBytes(bytes.data(), un, pattern.data(), um), Expect(b.find(p))) << round;
    ASSERT_EQ(XFindLastBytes(bytes.data(), un, pattern.data(), um), Expect(b.rfind(p))) << round;
    ASSERT_EQ(XCountBytes(bytes.data(), un, pattern.data(), um), CountReference(b, p)) << round;
  }
}

TEST_P(SearchPaths, EdgesOfTheArguments) {
  const std::u16string text = u"abcabcab";
  EXPECT_EQ(XFindText(text.data(), 8, u"", 0), 0u);
  EXPECT_EQ(XFindLastText(text.data(), 8, u"", 0), 8u);
  EXPECT_EQ(XCountText(text.data(), 8, u"", 0), 0u);
  EXPECT_EQ(XFindText(text.data(), 8, u"abcabcabc", 9), kTextNotFound);
  EXPECT_EQ(XFindText(text.data(), 0, u"a", 1), kTextNotFound);
  EXPECT_EQ(XCountText(u"aaaaa", 5, u"aa", 2), 2u);
  // A match that ends exactly at the text's end, after a whole vector step.
  std::string bytes(64, '.');
  bytes += "needle";
  EXPECT_EQ(XFindBytes(bytes.data(), 70, "needle", 6), 64u);
  EXPECT_EQ(XFindBytes(bytes.data(), 69, "needle", 6), kTextNotFound);
  EXPECT_EQ(XFindLastBytes(bytes.data(), 70, ".n", 2), 63u);
}

INSTANTIATE_TEST_SUITE_P(Paths, SearchPaths,
                         testing::Values(SearchPath::kPortable, SearchPath::kAvx2));

// A plain model: fold each code point with ICU and compare.
std::u32string FoldedCodePoints(std::u16string_view s) {
  std::u32string out;
  for (size_t i = 0; i < s.size(); ++i) {
    uint32_t c = s[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < s.size() && (s[i + 1] & 0xFC00) == 0xDC00)
      c = 0x10000 + ((c - 0xD800) << 10) + (s[++i] - 0xDC00u);
    out += static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT));
  }
  return out;
}

TEST(SearchNoCase, FindsAndComparesByFolding) {
  const std::u16string text = u"Die STRA\u00DFE und \u03A3\u0391\u03A3 \U00010400x";
  auto find = [&](std::u16string_view what) {
    return XFindTextNoCase(text.data(), static_cast<uint32_t>(text.size()), what.data(),
                           static_cast<uint32_t>(what.size()));
  };
  EXPECT_EQ(find(u"stra\u00DFe"), 4u);
  EXPECT_EQ(find(u"strasse"), kTextNotFound);   // simple folding keeps ß
  EXPECT_EQ(find(u"\u03C3\u03B1\u03C2"), 15u);  // final sigma folds like sigma
  EXPECT_EQ(find(u"\U00010428X"), 19u);         // Deseret, outside the BMP
  EXPECT_EQ(find(u""), 0u);

  // Against the model on random texts of letters with case forms.
  const std::vector<char16_t> letters = {u'a',      u'A',      u'\u00DF', u'\u1E9E',
                                         u'\u03A3', u'\u03C2', u'\u03C3', u'K',
                                         u'\u212A', 0xD801,    0xDC00,    0xDC28};
  std::mt19937 rng(5);
  for (int round = 0; round < 3000; ++round) {
    std::u16string a(rng() % 6, u'\0');
    std::u16string b(rng() % 6, u'\0');
    for (char16_t& c : a) c = letters[rng() % letters.size()];
    for (char16_t& c : b) c = letters[rng() % letters.size()];
    const int32_t got = XCompareTextNoCase(a.data(), static_cast<uint32_t>(a.size()), b.data(),
                                           static_cast<uint32_t>(b.size()));
    const int expected = FoldedCodePoints(a).compare(FoldedCodePoints(b));
    ASSERT_EQ(got < 0, expected < 0) << round;
    ASSERT_EQ(got == 0, expected == 0) << round;
  }
}

}  // namespace
}  // namespace tavi
