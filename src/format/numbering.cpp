//===- numbering.cpp - Roman numerals and letter numbering ----------------===//
#include "tavi/format/numbering.h"

#include "tavi/format/integer_text.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

// Roman numerals stop at this value; from it up the decimal digits are written.
constexpr uint64_t kRomanLimit = 93000;

// Writes the numeral of value (below kRomanLimit) forwards from p and returns the
// end. letters = "mdclxvi" in the wanted case.
char16_t* WriteRoman(char16_t* p, uint32_t r, const char16_t* letters) {
  const char16_t m = letters[0], d = letters[1], c = letters[2], l = letters[3], x = letters[4],
                 v = letters[5], i = letters[6];
  struct Pair {
    uint32_t value;
    char16_t first, second;
  };
  const Pair pairs[] = {{900, c, m}, {400, c, d}, {90, x, c}, {40, x, l}, {9, i, x}, {4, i, v}};
  const struct {
    uint32_t value;
    char16_t letter;
  } singles[] = {{500, d}, {100, c}, {50, l}, {10, x}, {5, v}};

  while (r >= 1000) {
    *p++ = m;
    r -= 1000;
  }
  while (r != 0) {
    // A subtractive pair only when the whole remainder is that pair.
    bool done = false;
    for (const Pair& pair : pairs) {
      if (r == pair.value) {
        *p++ = pair.first;
        *p++ = pair.second;
        done = true;
        break;
      }
    }
    if (done) break;
    bool took = false;
    for (const auto& single : singles) {
      if (r >= single.value) {
        *p++ = single.letter;
        r -= single.value;
        took = true;
        break;
      }
    }
    if (!took) {
      for (; r != 0; --r) *p++ = i;
    }
  }
  return p;
}

template <typename T>
char16_t* ToRoman(T value, char16_t* end, const char16_t* letters) {
  if (value >= kRomanLimit) return _UnsignedToString(value, end);
  char16_t text[kRomanTextCapacity];
  const char16_t* stop = WriteRoman(text, static_cast<uint32_t>(value), letters);
  char16_t* first = end - (stop - text);
  for (char16_t *from = text, *to = first; from != stop;) *to++ = *from++;
  return first;
}

bool WriteToStream(XIO& stream, const char16_t* first, const char16_t* end) {
  if (first == end) return true;
  return stream._Write(first, static_cast<uint32_t>(end - first) * 2);
}

constexpr char16_t kSmall[] = u"mdclxvi";
constexpr char16_t kCapital[] = u"MDCLXVI";

uint32_t RomanValue(char16_t c) {
  switch (c | 0x20) {  // ASCII lower case; other characters stay unmatched
    case u'm':
      return 1000;
    case u'd':
      return 500;
    case u'c':
      return 100;
    case u'l':
      return 50;
    case u'x':
      return 10;
    case u'v':
      return 5;
    case u'i':
      return 1;
    default:
      return 0;
  }
}

bool IsLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

template <typename T>
const char16_t* ReadRoman(T& value, const char16_t* text) {
  if (text == nullptr) return nullptr;
  if (*text >= u'0' && *text <= u'9') return _StringToUnsigned(value, text);
  value = 0;
  const char16_t* p = text;
  for (;; ++p) {
    // Only Latin letters count: c | 0x20 must not turn other characters into letters.
    const uint32_t here = IsLetter(*p) ? RomanValue(*p) : 0;
    if (here == 0) return p;
    const uint32_t next = IsLetter(p[1]) ? RomanValue(p[1]) : 0;
    if ((here == 100 || here == 10 || here == 1) && (next == 5 * here || next == 10 * here)) {
      value = static_cast<T>(value + next - here);
      return p + 2;
    }
    value = static_cast<T>(value + here);
  }
}

template <typename T>
char16_t* ToLetter(T value, char16_t* end, char16_t first, char16_t last) {
  const int32_t base = static_cast<int32_t>(last) - static_cast<int32_t>(first) + 1;
  if (base < 2) return end;
  char16_t* p = end;
  do {
    uint32_t digit;
    if constexpr (sizeof(T) == 4) {
      digit = (value & 0xFFFF) % static_cast<uint32_t>(base);
    } else {
      digit = static_cast<uint32_t>(value % static_cast<uint64_t>(base));
    }
    *--p = static_cast<char16_t>(first + digit);
    value /= static_cast<T>(base);
  } while (value != 0);
  return p;
}

template <typename T>
const char16_t* ReadLetters(T& value, const char16_t* text, char16_t first, char16_t last) {
  const auto in_range = [first, last](char16_t c) { return c >= first && c <= last && c != 0; };
  if (text == nullptr) return nullptr;
  const char16_t* p = text;
  while (*p == u' ') ++p;
  if (!in_range(*p)) return nullptr;
  const T base = static_cast<T>(static_cast<uint32_t>(last - first) + 1);
  value = static_cast<T>(*p++ - first);
  // The first letter and 66 more wrap around freely.
  for (int taken = 1; taken < 67 && in_range(*p); ++taken, ++p)
    value = static_cast<T>(value * base + static_cast<T>(*p - first));
  if (!in_range(*p)) return p;
  T product;
  if (__builtin_mul_overflow(value, base, &product) ||
      __builtin_add_overflow(product, static_cast<T>(*p - first), &value))
    return nullptr;
  ++p;
  return in_range(*p) ? nullptr : p;
}

}  // namespace

char16_t* _UnsignedToRomanSmall(uint32_t value, char16_t* end) {
  return ToRoman(value, end, kSmall);
}
char16_t* _UnsignedToRomanSmall(uint64_t value, char16_t* end) {
  return ToRoman(value, end, kSmall);
}
char16_t* _UnsignedToRomanCapital(uint32_t value, char16_t* end) {
  return ToRoman(value, end, kCapital);
}
char16_t* _UnsignedToRomanCapital(uint64_t value, char16_t* end) {
  return ToRoman(value, end, kCapital);
}

bool XUnsignedToRomanSmall(XIO& stream, uint32_t value) {
  char16_t text[kRomanTextCapacity];
  char16_t* end = text + kRomanTextCapacity;
  return WriteToStream(stream, _UnsignedToRomanSmall(value, end), end);
}
bool XUnsignedToRomanSmall(XIO& stream, uint64_t value) {
  char16_t text[kRomanTextCapacity];
  char16_t* end = text + kRomanTextCapacity;
  return WriteToStream(stream, _UnsignedToRomanSmall(value, end), end);
}
bool XUnsignedToRomanCapital(XIO& stream, uint32_t value) {
  char16_t text[kRomanTextCapacity];
  char16_t* end = text + kRomanTextCapacity;
  return WriteToStream(stream, _UnsignedToRomanCapital(value, end), end);
}
bool XUnsignedToRomanCapital(XIO& stream, uint64_t value) {
  char16_t text[kRomanTextCapacity];
  char16_t* end = text + kRomanTextCapacity;
  return WriteToStream(stream, _UnsignedToRomanCapital(value, end), end);
}

const char16_t* _StringRomanToUnsigned(uint32_t& value, const char16_t* text) {
  return ReadRoman(value, text);
}
const char16_t* _StringRomanToUnsigned(uint64_t& value, const char16_t* text) {
  return ReadRoman(value, text);
}

char16_t* _UnsignedToLetter(uint32_t value, char16_t* end, char16_t first, char16_t last) {
  return ToLetter(value, end, first, last);
}
char16_t* _UnsignedToLetter(uint64_t value, char16_t* end, char16_t first, char16_t last) {
  return ToLetter(value, end, first, last);
}

bool UnsignedToLetter(XIO& stream, uint32_t value, char16_t first, char16_t last) {
  char16_t text[kLetterTextCapacity];
  char16_t* end = text + kLetterTextCapacity;
  return WriteToStream(stream, _UnsignedToLetter(value, end, first, last), end);
}
bool UnsignedToLetter(XIO& stream, uint64_t value, char16_t first, char16_t last) {
  char16_t text[kLetterTextCapacity];
  char16_t* end = text + kLetterTextCapacity;
  return WriteToStream(stream, _UnsignedToLetter(value, end, first, last), end);
}

const char16_t* _StringLetterToUnsigned(uint32_t& value, const char16_t* text, char16_t first,
                                        char16_t last) {
  return ReadLetters(value, text, first, last);
}
const char16_t* _StringLetterToUnsigned(uint64_t& value, const char16_t* text, char16_t first,
                                        char16_t last) {
  return ReadLetters(value, text, first, last);
}

}  // namespace tavi
