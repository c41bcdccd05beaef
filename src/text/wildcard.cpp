//===- wildcard.cpp - Wildcard patterns for names and texts ---------------===//
//
// The pattern is compiled into a list of elements (characters, '?', sets, stars)
// and the text is run through it as a bit-parallel automaton: bit i of the state
// says that the first i elements have matched the text read so far. Every way
// through the pattern is followed at once, so nothing is ever tried twice.
//
//===----------------------------------------------------------------------===//
#include "tavi/text/wildcard.h"

#include <vector>

#include "platform/locale.h"
#include "text/internal/wildcard.h"

namespace tavi {
namespace {

enum class Kind : uint8_t { kChar, kAny, kSet, kStar };

struct Element {
  Kind kind;
  bool negate = false;
  char32_t c = 0;      // kChar
  uint32_t first = 0;  // kSet: ranges [first, last) of the pattern's range list
  uint32_t last = 0;
};

struct Range {
  char32_t low, high;
};

bool IsLead(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool IsTrail(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

// Next reads the character at s[i] (a whole surrogate pair counts as one) and
// moves i past it.
char32_t Next(const char16_t* s, size_t length, size_t& i) {
  const char16_t c = s[i++];
  if (IsLead(c) && i < length && IsTrail(s[i])) {
    return 0x10000 + ((char32_t(c) - 0xD800) << 10) + (s[i++] - 0xDC00);
  }
  return c;
}

char32_t Lower(char32_t c) {
  return c < 0x10000 ? platform::ToLower(static_cast<char16_t>(c)) : c;
}
char32_t Upper(char32_t c) {
  return c < 0x10000 ? platform::ToUpper(static_cast<char16_t>(c)) : c;
}

class Pattern {
 public:
  Pattern(const char16_t* p, size_t n, bool ignore_case) : ignore_case_(ignore_case) {
    size_t i = 0;
    while (i < n) {
      const size_t at = i;
      const char32_t c = Next(p, n, i);
      if (c == U'*') {
        if (elements_.empty() || elements_.back().kind != Kind::kStar)
          elements_.push_back({Kind::kStar});
      } else if (c == U'?') {
        elements_.push_back({Kind::kAny});
      } else if (c == U'[' && ParseSet(p, n, i)) {
      } else {
        i = at;
        elements_.push_back({Kind::kChar, false, Fold(Next(p, n, i))});
      }
    }
    const size_t states = elements_.size() + 1;
    words_ = (states + 63) / 64;
    star_.assign(words_, 0);
    for (size_t e = 0; e < elements_.size(); ++e) {
      if (elements_[e].kind == Kind::kStar) star_[e / 64] |= uint64_t{1} << (e % 64);
    }
    // Masks of the ASCII characters are worked out once; others on demand.
    ascii_.assign(128 * words_, 0);
    for (char32_t c = 0; c < 128; ++c) FillMask(c, &ascii_[c * words_]);
  }

  bool Match(const char16_t* text, size_t n, uint64_t* steps) const {
    std::vector<uint64_t> state(words_, 0), mask(words_, 0);
    state[0] = 1;
    Close(state);
    uint64_t count = words_;
    size_t i = 0;
    bool alive = true;
    while (i < n && alive) {
      const char32_t c = Next(text, n, i);
      const uint64_t* m = c < 128 ? &ascii_[c * words_] : mask.data();
      if (c >= 128) {
        FillMask(c, mask.data());
        count += elements_.size();
      }
      // state' = ((state & match) << 1) | (state & star), then close over stars.
      uint64_t carry = 0;
      alive = false;
      for (size_t w = 0; w < words_; ++w) {
        const uint64_t moved = state[w] & m[w];
        const uint64_t next = (moved << 1) | carry | (state[w] & star_[w]);
        carry = moved >> 63;
        state[w] = next;
      }
      Close(state);
      for (size_t w = 0; w < words_; ++w) alive |= state[w] != 0;
      count += words_;
    }
    if (steps != nullptr) *steps += count;
    const size_t accept = elements_.size();
    return alive && (state[accept / 64] >> (accept % 64) & 1) != 0;
  }

 private:
  char32_t Fold(char32_t c) const { return ignore_case_ ? Lower(c) : c; }

  // ParseSet reads a set whose '[' is just behind i; false, with i unchanged,
  // when no ']' closes it.
  bool ParseSet(const char16_t* p, size_t n, size_t& i) {
    size_t j = i;
    Element e{Kind::kSet};
    if (j < n && p[j] == u'!') {
      e.negate = true;
      ++j;
    }
    size_t close = j;
    if (close < n && p[close] == u']') ++close;  // a leading ']' is a member
    while (close < n && p[close] != u']') ++close;
    if (close >= n) return false;
    e.first = static_cast<uint32_t>(ranges_.size());
    while (j < close) {
      const char32_t low = Next(p, close, j);
      char32_t high = low;
      if (j + 1 < close && p[j] == u'-') {
        ++j;
        high = Next(p, close, j);
      }
      ranges_.push_back({low, high});
    }
    e.last = static_cast<uint32_t>(ranges_.size());
    elements_.push_back(e);
    i = close + 1;
    return true;
  }

  bool InSet(const Element& e, char32_t c) const {
    bool in = false;
    for (uint32_t r = e.first; r < e.last && !in; ++r) {
      const Range& range = ranges_[r];
      in = c >= range.low && c <= range.high;
      if (!in && ignore_case_) {
        const char32_t lower = Lower(c), upper = Upper(c);
        in = (lower >= range.low && lower <= range.high) ||
             (upper >= range.low && upper <= range.high);
      }
    }
    return in != e.negate;
  }

  void FillMask(char32_t c, uint64_t* mask) const {
    const char32_t folded = Fold(c);
    for (size_t w = 0; w < words_; ++w) mask[w] = 0;
    for (size_t e = 0; e < elements_.size(); ++e) {
      const Element& el = elements_[e];
      bool hit = false;
      switch (el.kind) {
        case Kind::kChar:
          hit = el.c == folded;
          break;
        case Kind::kAny:
          hit = true;
          break;
        case Kind::kSet:
          hit = InSet(el, c);
          break;
        case Kind::kStar:
          break;
      }
      if (hit) mask[e / 64] |= uint64_t{1} << (e % 64);
    }
  }

  // Close adds the state after every reached star (a star may match nothing).
  // Stars never follow each other, so one pass is enough.
  void Close(std::vector<uint64_t>& state) const {
    uint64_t carry = 0;
    for (size_t w = 0; w < words_; ++w) {
      const uint64_t at_star = state[w] & star_[w];
      const uint64_t add = (at_star << 1) | carry;
      carry = at_star >> 63;
      state[w] |= add;
    }
  }

  bool ignore_case_;
  std::vector<Element> elements_;
  std::vector<Range> ranges_;
  size_t words_ = 1;
  std::vector<uint64_t> star_;
  std::vector<uint64_t> ascii_;
};

size_t Length(const char16_t* s) {
  size_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

}  // namespace

namespace text_internal {

bool WildcardMatchCounted(const char16_t* pattern, size_t pattern_chars, const char16_t* text,
                          size_t text_chars, uint32_t flags, uint64_t* steps) {
  if ((flags & kWildcardFileName) != 0 && pattern_chars == 3 && pattern[0] == u'*' &&
      pattern[1] == u'.' && pattern[2] == u'*') {
    return true;
  }
  const Pattern compiled(pattern, pattern_chars, (flags & kWildcardIgnoreCase) != 0);
  return compiled.Match(text, text_chars, steps);
}

}  // namespace text_internal

bool XWildcardMatch(const char16_t* pattern, size_t pattern_chars, const char16_t* text,
                    size_t text_chars, uint32_t flags) {
  return text_internal::WildcardMatchCounted(pattern, pattern_chars, text, text_chars, flags,
                                             nullptr);
}

bool XWildcardMatch(const char16_t* pattern, const char16_t* text, uint32_t flags) {
  return XWildcardMatch(pattern, Length(pattern), text, Length(text), flags);
}

bool XHasWildcards(const char16_t* pattern) {
  for (; *pattern != 0; ++pattern) {
    if (*pattern == u'*' || *pattern == u'?' || *pattern == u'[') return true;
  }
  return false;
}

}  // namespace tavi
