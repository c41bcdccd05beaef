//===- wildcard.cpp - Wildcard patterns for names and texts ---------------===//
//
// The pattern is compiled into a list of elements (characters, '?', sets, stars)
// and the text is run through it as a bit-parallel automaton: bit i of the state
// says that the first i elements have matched the text read so far. Every way
// through the pattern is followed at once, so nothing is ever tried twice.
//
//===----------------------------------------------------------------------===//
#include "tavi/text/wildcard.h"

#include <memory>

#include "platform/locale.h"
#include "text/internal/wildcard.h"

namespace tavi {
namespace {

enum class Kind : uint8_t { kChar, kAny, kSet, kStar };

struct Element {
  Kind kind = Kind::kChar;
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

// Room kept on the stack; longer patterns take their arrays from the heap.
constexpr size_t kLocalUnits = 48;

class Pattern {
 public:
  Pattern(const char16_t* p, size_t n, bool ignore_case) : ignore_case_(ignore_case) {
    // Every code unit gives at most one element and one range.
    if (n > kLocalUnits) {
      heap_elements_.reset(new Element[n]);
      heap_ranges_.reset(new Range[n]);
      elements_ = heap_elements_.get();
      ranges_ = heap_ranges_.get();
    }
    size_t i = 0;
    while (i < n) {
      const size_t at = i;
      const char32_t c = Next(p, n, i);
      if (c == U'*') {
        if (count_ == 0 || elements_[count_ - 1].kind != Kind::kStar)
          elements_[count_++] = {Kind::kStar, false, 0, 0, 0};
      } else if (c == U'?') {
        elements_[count_++] = {Kind::kAny, false, 0, 0, 0};
      } else if (c == U'[' && ParseSet(p, n, i)) {
      } else {
        i = at;
        elements_[count_++] = {Kind::kChar, false, Fold(Next(p, n, i)), 0, 0};
      }
    }
    words_ = (count_ + 1 + 63) / 64;
    if (words_ > 2) heap_words_.reset(new uint64_t[3 * words_]);
    uint64_t* words = words_ > 2 ? heap_words_.get() : local_words_;
    star_ = words;
    state_ = words + words_;
    next_ = words + 2 * words_;
    for (size_t w = 0; w < words_; ++w) star_[w] = 0;
    for (size_t e = 0; e < count_; ++e) {
      if (elements_[e].kind == Kind::kStar) star_[e / 64] |= uint64_t{1} << (e % 64);
    }
  }

  // Match compares the elements before the first star and after the last one
  // directly with the start and the end of the text; only the text between them
  // goes through the automaton, from the first star to the last.
  bool Match(const char16_t* text, size_t n, uint64_t* steps) {
    size_t first = 0;
    while (first < count_ && elements_[first].kind != Kind::kStar) ++first;
    size_t begin = 0;
    uint64_t direct = 0;
    for (size_t e = 0; e < first; ++e, ++direct) {
      if (begin >= n) return Done(steps, direct, false);
      const char32_t c = Next(text, n, begin);
      if (!Takes(elements_[e], c, Fold(c))) return Done(steps, direct, false);
    }
    if (first == count_) return Done(steps, direct, begin == n);
    size_t last = count_ - 1;
    while (elements_[last].kind != Kind::kStar) --last;
    size_t end = n;
    for (size_t e = count_ - 1; e > last; --e, ++direct) {
      if (end <= begin) return Done(steps, direct, false);
      const char32_t c = Previous(text, begin, end);
      if (!Takes(elements_[e], c, Fold(c))) return Done(steps, direct, false);
    }
    if (first == last) return Done(steps, direct, true);
    return Run(text + begin, end - begin, first, last, steps, direct);
  }

 private:
  static bool Done(uint64_t* steps, uint64_t count, bool result) {
    if (steps != nullptr) *steps += count;
    return result;
  }

  // Previous reads the character that ends just before text[end] (not before
  // text[begin]) and moves end back over it.
  static char32_t Previous(const char16_t* text, size_t begin, size_t& end) {
    const char16_t c = text[--end];
    if (IsTrail(c) && end > begin && IsLead(text[end - 1])) {
      const char16_t lead = text[--end];
      return 0x10000 + ((char32_t(lead) - 0xD800) << 10) + (c - 0xDC00);
    }
    return c;
  }

  // Run is the automaton over text, starting in the state of star element first
  // and accepting in that of star element last.
  bool Run(const char16_t* text, size_t n, size_t first, size_t last, uint64_t* steps,
           uint64_t count) {
    for (size_t w = 0; w < words_; ++w) state_[w] = 0;
    state_[first / 64] = uint64_t{1} << (first % 64);
    Close(state_);
    count += words_;
    size_t i = 0;
    bool alive = true;
    while (i < n && alive) {
      const char32_t c = Next(text, n, i);
      const char32_t folded = Fold(c);
      // next = the states after every live non-star element that takes c, plus the
      // live stars (which take c and stay); then closed over stars.
      for (size_t w = 0; w < words_; ++w) next_[w] = state_[w] & star_[w];
      for (size_t w = 0; w < words_; ++w) {
        uint64_t live = state_[w] & ~star_[w];
        while (live != 0) {
          const size_t e = w * 64 + static_cast<size_t>(__builtin_ctzll(live));
          live &= live - 1;
          ++count;
          if (e < count_ && Takes(elements_[e], c, folded)) {
            next_[(e + 1) / 64] |= uint64_t{1} << ((e + 1) % 64);
          }
        }
      }
      Close(next_);
      alive = false;
      for (size_t w = 0; w < words_; ++w) {
        state_[w] = next_[w];
        alive |= state_[w] != 0;
      }
      count += words_;
    }
    if (steps != nullptr) *steps += count;
    return alive && (state_[last / 64] >> (last % 64) & 1) != 0;
  }

  char32_t Fold(char32_t c) const { return ignore_case_ ? Lower(c) : c; }

  bool Takes(const Element& e, char32_t c, char32_t folded) const {
    switch (e.kind) {
      case Kind::kChar:
        return e.c == folded;
      case Kind::kAny:
        return true;
      case Kind::kSet:
        return InSet(e, c);
      case Kind::kStar:
        break;
    }
    return false;
  }

  // ParseSet reads a set whose '[' is just behind i; false, with i unchanged,
  // when no ']' closes it.
  bool ParseSet(const char16_t* p, size_t n, size_t& i) {
    size_t j = i;
    Element e{Kind::kSet, false, 0, 0, 0};
    if (j < n && p[j] == u'!') {
      e.negate = true;
      ++j;
    }
    size_t close = j;
    if (close < n && p[close] == u']') ++close;  // a leading ']' is a member
    while (close < n && p[close] != u']') ++close;
    if (close >= n) return false;
    e.first = static_cast<uint32_t>(range_count_);
    while (j < close) {
      const char32_t low = Next(p, close, j);
      char32_t high = low;
      if (j + 1 < close && p[j] == u'-') {
        ++j;
        high = Next(p, close, j);
      }
      ranges_[range_count_++] = {low, high};
    }
    e.last = static_cast<uint32_t>(range_count_);
    elements_[count_++] = e;
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

  // Close adds the state after every reached star (a star may match nothing).
  // Stars never follow each other, so one pass is enough.
  void Close(uint64_t* state) const {
    uint64_t carry = 0;
    for (size_t w = 0; w < words_; ++w) {
      const uint64_t at_star = state[w] & star_[w];
      const uint64_t add = (at_star << 1) | carry;
      carry = at_star >> 63;
      state[w] |= add;
    }
  }

  bool ignore_case_;
  // Raw storage, so that nothing is cleared before it is written.
  alignas(Element) unsigned char local_elements_[kLocalUnits * sizeof(Element)];
  alignas(Range) unsigned char local_ranges_[kLocalUnits * sizeof(Range)];
  uint64_t local_words_[6];
  std::unique_ptr<Element[]> heap_elements_;
  std::unique_ptr<Range[]> heap_ranges_;
  std::unique_ptr<uint64_t[]> heap_words_;
  Element* elements_ = reinterpret_cast<Element*>(local_elements_);
  Range* ranges_ = reinterpret_cast<Range*>(local_ranges_);
  size_t count_ = 0;
  size_t range_count_ = 0;
  size_t words_ = 1;
  uint64_t* star_ = nullptr;
  uint64_t* state_ = nullptr;
  uint64_t* next_ = nullptr;
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
  Pattern compiled(pattern, pattern_chars, (flags & kWildcardIgnoreCase) != 0);
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
