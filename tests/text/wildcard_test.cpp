//===- wildcard_test.cpp - Wildcard matching ------------------------------===//
#include "tavi/text/wildcard.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "text/internal/wildcard.h"

namespace tavi {
namespace {

bool Match(const std::u16string& pattern, const std::u16string& text, uint32_t flags = 0) {
  return XWildcardMatch(pattern.data(), pattern.size(), text.data(), text.size(), flags);
}

TEST(Wildcard, Table) {
  // (pattern, text, flags, expected). Plain ASCII patterns of "*", "?", sets and ranges
  // are checked against the model below; here the cases it leaves out.
  const std::vector<std::tuple<std::u16string, std::u16string, uint32_t, bool>> cases = {
      {u"*.txt", u"notes.txt", 0, true},
      {u"*.txt", u"notes.txt.bak", 0, false},
      {u"*.*", u"noext", 0, false},
      {u"*.*", u"noext", kWildcardFileName, true},
      {u"*.*", u"", kWildcardFileName, true},
      {u"*.?", u"noext", kWildcardFileName, false},
      // Sets whose first character is "]", and characters that are only literal in sets.
      {u"[]]", u"]", 0, true},
      {u"[!]]", u"]", 0, false},
      {u"[!]]", u"a", 0, true},
      {u"[*]", u"*", 0, true},
      {u"[*]", u"a", 0, false},
      {u"[[]", u"[", 0, true},
      {u"[abc", u"[abc", 0, true},  // unclosed: ordinary characters
      {u"[]", u"[]", 0, true},
      // Case.
      {u"ABC", u"abc", 0, false},
      {u"ABC", u"abc", kWildcardIgnoreCase, true},
      {u"*.TXT", u"a.txt", kWildcardFileName, false},
      {u"*.TXT", u"a.txt", kWildcardFileName | kWildcardIgnoreCase, true},
      {u"[A-C]", u"b", kWildcardIgnoreCase, true},
      {u"[a-c]", u"B", kWildcardIgnoreCase, true},
      {u"[!a-c]", u"B", kWildcardIgnoreCase, false},
      {u"\u00C4*", u"\u00E4rger", kWildcardIgnoreCase, true},
      // A surrogate pair is one character, a lone surrogate one too.
      {u"?", u"\U0001F600", 0, true},
      {u"??", u"\U0001F600", 0, false},
      {u"a?b",
       u"a\xD800"
       u"b",
       0, true},
      {u"[\U0001F600-\U0001F64F]", u"\U0001F610", 0, true},
      {u"[\U0001F600-\U0001F64F]", u"\U0001F650", 0, false},
  };
  for (const auto& [pattern, text, flags, expected] : cases) {
    EXPECT_EQ(Match(pattern, text, flags), expected)
        << std::string(pattern.begin(), pattern.end()) << " / "
        << std::string(text.begin(), text.end()) << " flags " << flags;
  }
  EXPECT_TRUE(XWildcardMatch(u"f*.c", u"find.c"));
  EXPECT_FALSE(XWildcardMatch(u"f*.c", u"find.h"));
  EXPECT_TRUE(XHasWildcards(u"a[b]"));
  EXPECT_FALSE(XHasWildcards(u"plain.txt"));
}

// The plain model: recursive matching with memo over (pattern, text) positions,
// restricted to ASCII and without case folding.
bool Model(const std::u16string& p, size_t i, const std::u16string& t, size_t j,
           std::vector<int8_t>& memo) {
  int8_t& slot = memo[i * (t.size() + 1) + j];
  if (slot >= 0) return slot != 0;
  bool result;
  if (i == p.size()) {
    result = j == t.size();
  } else if (p[i] == u'*') {
    result = Model(p, i + 1, t, j, memo) || (j < t.size() && Model(p, i, t, j + 1, memo));
  } else if (j == t.size()) {
    result = false;
  } else if (p[i] == u'?') {
    result = Model(p, i + 1, t, j + 1, memo);
  } else if (p[i] == u'[' && p.find(u']', i + 2) != std::u16string::npos) {
    size_t k = i + 1;
    const bool negate = p[k] == u'!';
    if (negate) ++k;
    const size_t close = p.find(u']', k + 1);
    bool in = false;
    for (size_t m = k; m < close;) {
      char16_t low = p[m], high = low;
      if (m + 2 < close && p[m + 1] == u'-') {
        high = p[m + 2];
        m += 3;
      } else {
        ++m;
      }
      in |= t[j] >= low && t[j] <= high;
    }
    result = in != negate && Model(p, close + 1, t, j + 1, memo);
  } else {
    result = p[i] == t[j] && Model(p, i + 1, t, j + 1, memo);
  }
  slot = result ? 1 : 0;
  return result;
}

TEST(Wildcard, AgreesWithPlainModel) {
  std::mt19937 random(7);
  const std::u16string pattern_alphabet = u"ab*?[]!-";
  for (int round = 0; round < 20000; ++round) {
    std::u16string pattern, text;
    for (int n = random() % 9; n > 0; --n) pattern += pattern_alphabet[random() % 8];
    for (int n = random() % 10; n > 0; --n) text += u"ab-]!"[random() % 5];
    // The model reads "[]" and "[!]" sets the simple way; keep to patterns where a
    // set's first character is not ']'.
    if (pattern.find(u"[]") != std::u16string::npos ||
        pattern.find(u"[!]") != std::u16string::npos) {
      continue;
    }
    std::vector<int8_t> memo((pattern.size() + 1) * (text.size() + 1), -1);
    ASSERT_EQ(Match(pattern, text), Model(pattern, 0, text, 0, memo))
        << std::string(pattern.begin(), pattern.end()) << " / "
        << std::string(text.begin(), text.end());
  }
}

TEST(Wildcard, WorkIsLinearInTheText) {
  // Patterns that make a backtracking matcher retry every star at every place (a
  // final star, so that the whole text goes through the automaton):
  // the steps per character stay below the pattern's length, and a text ten times
  // longer takes ten times the steps.
  std::u16string long_pattern;
  for (int i = 0; i < 100; ++i) long_pattern += u"*a";
  long_pattern += u"b*";
  const std::u16string patterns[] = {u"*a*a*a*a*b*", u"*aaaaaaaab*", u"a*a*a*a*a*a*a*a*a*c*",
                                     long_pattern};
  for (const std::u16string& pattern : patterns) {
    uint64_t steps[2] = {0, 0};
    const size_t lengths[2] = {10000, 100000};
    for (int k = 0; k < 2; ++k) {
      const std::u16string text(lengths[k], u'a');
      EXPECT_FALSE(text_internal::WildcardMatchCounted(pattern.data(), pattern.size(), text.data(),
                                                       text.size(), 0, &steps[k]));
      const uint64_t words = (pattern.size() + 1 + 63) / 64;
      EXPECT_LE(steps[k], (pattern.size() + words) * (lengths[k] + 1));
    }
    EXPECT_LE(steps[1], 10 * (steps[0] + pattern.size() * pattern.size()))
        << std::string(pattern.begin(), pattern.end());
  }
}

}  // namespace
}  // namespace tavi
