//===- integer_parse.cpp - Text to integers -------------------------------===//
//
// The decimal parsers take four digits per step while four are there, which
// shortens the multiply chain; a character is looked at only after the one before it was
// found to be a digit, so reading never passes the terminator.
//
//===----------------------------------------------------------------------===//
#include <limits>
#include <type_traits>

#include "format/internal/digits.h"
#include "tavi/format/integer_text.h"

namespace tavi {

namespace {

using internal::DecimalDigit;

inline const char16_t* SkipSpaces(const char16_t* p) {
  while (*p == u' ') ++p;
  return p;
}

// Accumulates up to `left` more digits into value (wrapping), four per step while
// four are there. Returns the position after the last digit taken; `left` is
// decreased by the count.
template <typename U>
const char16_t* TakeDigits(U& value, const char16_t* p, uint32_t& left) {
  U v = value;
  while (left >= 4) {
    const uint32_t d0 = DecimalDigit(p[0]);
    if (d0 > 9) break;
    const uint32_t d1 = DecimalDigit(p[1]);
    if (d1 > 9) break;
    const uint32_t d2 = DecimalDigit(p[2]);
    if (d2 > 9) break;
    const uint32_t d3 = DecimalDigit(p[3]);
    if (d3 > 9) break;
    v = static_cast<U>(v * 10000 + ((d0 * 10 + d1) * 100 + (d2 * 10 + d3)));
    p += 4;
    left -= 4;
  }
  // Fewer than four digits are left (or allowed): one at a time.
  for (uint32_t d; left != 0 && (d = DecimalDigit(*p)) <= 9; ++p, --left) {
    v = static_cast<U>(v * 10 + d);
  }
  value = v;
  return p;
}

template <typename U>
const char16_t* ParseDecimal(U& value, const char16_t* text) {
  const char16_t* p = SkipSpaces(text);
  const uint32_t first = DecimalDigit(*p);
  if (first > 9) return nullptr;
  U v = static_cast<U>(first);
  uint32_t left = 19;  // twenty digits are taken without an overflow test
  p = TakeDigits(v, p + 1, left);
  value = v;
  if (left != 0) return p;  // stopped by a non-digit
  const uint32_t d = DecimalDigit(*p);
  if (d > 9) return p;
  // The twenty-first digit must fit; a twenty-second is always refused.
  constexpr U kMax = std::numeric_limits<U>::max();
  const bool fits = sizeof(U) == 8 ? (v <= kMax / 10 && v * 10 <= kMax - d) : (v < kMax / 10);
  if (!fits) return nullptr;
  v = static_cast<U>(v * 10 + d);
  value = v;
  ++p;
  return DecimalDigit(*p) <= 9 ? nullptr : p;
}

// The digit value of c in radix, or radix (not a digit) when it has none.
template <bool kUpperCase>
inline uint32_t RadixDigit(char16_t c, uint32_t radix) {
  uint32_t d = DecimalDigit(c);
  if (d > 9) {
    if (radix <= 10) return radix;
    if (c >= u'a')
      d = static_cast<uint32_t>(c - u'a') + 10;
    else if (kUpperCase && c >= u'A' && c <= u'Z')
      d = static_cast<uint32_t>(c - u'A') + 10;
    else
      return radix;
  }
  return d < radix ? d : radix;
}

template <typename U, bool kUpperCase>
const char16_t* ParseRadix(U& value, const char16_t* text, uint32_t radix) {
  const char16_t* p = SkipSpaces(text);
  uint32_t d = RadixDigit<kUpperCase>(*p, radix);
  if (d >= radix) return nullptr;  // a radix of 0 ends here, before any division
  U v = static_cast<U>(d);
  const U limit = std::numeric_limits<U>::max() / radix;
  for (++p; (d = RadixDigit<kUpperCase>(*p, radix)) < radix; ++p) {
    if (v > limit) break;
    v = static_cast<U>(v * radix + d);
  }
  value = v;
  return p;
}

template <typename S>
const char16_t* ParseSigned(S& value, const char16_t* text) {
  using U = std::make_unsigned_t<S>;
  const char16_t* p = SkipSpaces(text);
  const bool negative = *p == u'-';
  if (negative) ++p;
  U magnitude = 0;
  p = ParseDecimal(magnitude, p);
  if (p == nullptr) return nullptr;
  if (magnitude > static_cast<U>(std::numeric_limits<S>::max())) return nullptr;
  value = negative ? static_cast<S>(-static_cast<S>(magnitude)) : static_cast<S>(magnitude);
  return p;
}

template <typename U>
const char16_t* PlainDecimalOf(U& value, const char16_t* p) {
  constexpr U kMax = std::numeric_limits<U>::max();
  while (*p == u' ') ++p;
  if (DecimalDigit(*p) > 9) return nullptr;
  U v = 0;
  for (uint32_t n = 0, d; (d = DecimalDigit(*p)) <= 9; ++p, ++n) {
    if (n == 21) return nullptr;
    if (n == 20 && !(sizeof(U) == 8 ? v <= kMax / 10 && v * 10 <= kMax - d : v < kMax / 10))
      return nullptr;
    v = static_cast<U>(v * 10 + d);
  }
  value = v;
  return p;
}

}  // namespace

namespace internal {

const char16_t* PlainDecimal(uint64_t& value, const char16_t* text) {
  return PlainDecimalOf(value, text);
}
const char16_t* PlainDecimal(uint32_t& value, const char16_t* text) {
  return PlainDecimalOf(value, text);
}

}  // namespace internal

const char16_t* _StringToUnsigned(uint64_t& value, const char16_t* text) {
  return ParseDecimal(value, text);
}
const char16_t* _StringToUnsigned(uint32_t& value, const char16_t* text) {
  return ParseDecimal(value, text);
}
const char16_t* _StringToUnsigned(uint64_t& value, const char16_t* text, uint8_t radix) {
  return ParseRadix<uint64_t, true>(value, text, radix);
}
const char16_t* _StringToUnsigned(uint32_t& value, const char16_t* text, uint8_t radix) {
  return ParseRadix<uint32_t, false>(value, text, radix);
}
const char16_t* _StringToSigned(int64_t& value, const char16_t* text) {
  return ParseSigned(value, text);
}
const char16_t* _StringToSigned(int32_t& value, const char16_t* text) {
  return ParseSigned(value, text);
}

}  // namespace tavi
