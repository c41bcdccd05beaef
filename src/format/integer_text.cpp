//===- integer_text.cpp - Integers to text --------------------------------===//
//
// Decimal digits come two at a time from a table of the hundred pairs "00".."99";
// a 64-bit value is cut into pieces of eight digits so that the pairs are produced
// with 32-bit arithmetic. Other radices go one digit per division (shifts for 16).
//
//===----------------------------------------------------------------------===//
#include <array>
#include <cstring>
#include <type_traits>

#include "format/internal/digits.h"
#include "tavi/format/integer_text.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace internal {

namespace {

// kPairs[2n], kPairs[2n + 1] are the two decimal digits of n (0..99).
constexpr std::array<char16_t, 200> kPairs = [] {
  std::array<char16_t, 200> pairs{};
  for (int n = 0; n < 100; ++n) {
    pairs[2 * n] = static_cast<char16_t>(u'0' + n / 10);
    pairs[2 * n + 1] = static_cast<char16_t>(u'0' + n % 10);
  }
  return pairs;
}();

inline void PutPair(char16_t* at, uint32_t n) {
  std::memcpy(at, &kPairs[2 * n], 2 * sizeof(char16_t));
}

// Writes exactly eight digits (with leading zeros) before end.
inline char16_t* EightDigits(uint32_t value, char16_t* end) {
  const uint32_t high = value / 10000;
  const uint32_t low = value - high * 10000;
  const uint32_t hh = high / 100, hl = high - hh * 100;
  const uint32_t lh = low / 100, ll = low - lh * 100;
  end -= 8;
  PutPair(end, hh);
  PutPair(end + 2, hl);
  PutPair(end + 4, lh);
  PutPair(end + 6, ll);
  return end;
}

inline char16_t Digit(uint32_t d) {
  return static_cast<char16_t>(d < 10 ? u'0' + d : u'a' + (d - 10));
}

}  // namespace

char16_t* FastDecimal(uint32_t value, char16_t* end) {
  while (value >= 100) {
    const uint32_t q = value / 100;
    end -= 2;
    PutPair(end, value - q * 100);
    value = q;
  }
  if (value >= 10) {
    end -= 2;
    PutPair(end, value);
  } else {
    *--end = static_cast<char16_t>(u'0' + value);
  }
  return end;
}

char16_t* FastDecimal(uint64_t value, char16_t* end) {
  while (value > 0xFFFFFFFFu) {
    const uint64_t q = value / 100000000;
    end = EightDigits(static_cast<uint32_t>(value - q * 100000000), end);
    value = q;
  }
  return FastDecimal(static_cast<uint32_t>(value), end);
}

char16_t* PlainDigits(uint64_t value, char16_t* end, uint32_t radix) {
  do {
    *--end = Digit(static_cast<uint32_t>(value % radix));
    value /= radix;
  } while (value != 0);
  return end;
}

}  // namespace internal

namespace {

template <typename U>
char16_t* Radix(U value, char16_t* end, uint8_t radix) {
  if (radix == 16) {
    do {
      const uint32_t d = static_cast<uint32_t>(value & 15);
      *--end = static_cast<char16_t>(d < 10 ? u'0' + d : u'a' + (d - 10));
      value >>= 4;
    } while (value != 0);
    return end;
  }
  if (radix < 2 || radix > 36 || radix == 10) return internal::FastDecimal(value, end);
  return internal::PlainDigits(value, end, radix);
}

template <typename U>
char16_t* Padded(U value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  char16_t* p = Radix(value, end, radix);
  char16_t* const stop = end - min_digits;
  while (p > stop) *--p = u'0';
  return p;
}

template <typename S>
char16_t* SignedPadded(S value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  using U = std::make_unsigned_t<S>;
  const U magnitude = value < 0 ? static_cast<U>(0 - static_cast<U>(value)) : static_cast<U>(value);
  char16_t* p = Padded(magnitude, min_digits, end, radix);
  if (value < 0) *--p = u'-';
  return p;
}

// Room for a 64-bit value in binary with its sign, and for the zero padding that is
// formatted in place rather than sent in pieces.
constexpr uint32_t kStackChars = 160;

bool WriteText(XIO& out, const char16_t* begin, const char16_t* end) {
  return out._Write(begin, static_cast<uint32_t>(end - begin) * sizeof(char16_t));
}

// Writes sign, padding and digits. Short padding is formatted in one piece; long
// padding goes out from the ten-zero pattern between sign and digits.
template <typename U>
bool WritePadded(XIO& out, bool negative, U magnitude, uint16_t min_digits, uint8_t radix) {
  char16_t text[kStackChars];
  char16_t* const end = text + kStackChars;
  if (min_digits <= kStackChars - 1) {
    char16_t* p = Padded(magnitude, min_digits, end, radix);
    if (negative) *--p = u'-';
    return WriteText(out, p, end);
  }
  char16_t* p = Radix(magnitude, end, radix);
  const uint32_t digits = static_cast<uint32_t>(end - p);
  if (negative && !out._Write(u"-", sizeof(char16_t))) return false;
  if (!out.WriteStringPatern(u"0000000000", 10, min_digits - digits)) return false;
  return WriteText(out, p, end);
}

template <typename S>
bool WriteSigned(XIO& out, S value, uint16_t min_digits, uint8_t radix) {
  using U = std::make_unsigned_t<S>;
  const U magnitude = value < 0 ? static_cast<U>(0 - static_cast<U>(value)) : static_cast<U>(value);
  return WritePadded(out, value < 0, magnitude, min_digits, radix);
}

}  // namespace

char16_t* _UnsignedToString(uint32_t value, char16_t* end) {
  return internal::FastDecimal(value, end);
}
char16_t* _UnsignedToString(uint64_t value, char16_t* end) {
  return internal::FastDecimal(value, end);
}
char16_t* _UnsignedToString(uint32_t value, char16_t* end, uint8_t radix) {
  return Radix(value, end, radix);
}
char16_t* _UnsignedToString(uint64_t value, char16_t* end, uint8_t radix) {
  return Radix(value, end, radix);
}
char16_t* _UnsignedToString(uint32_t value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  return Padded(value, min_digits, end, radix);
}
char16_t* _UnsignedToString(uint64_t value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  return Padded(value, min_digits, end, radix);
}
char16_t* _SignedToString(int32_t value, char16_t* end) {
  return SignedPadded(value, 0, end, 10);
}
char16_t* _SignedToString(int64_t value, char16_t* end) {
  return SignedPadded(value, 0, end, 10);
}
char16_t* _SignedToString(int32_t value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  return SignedPadded(value, min_digits, end, radix);
}
char16_t* _SignedToString(int64_t value, uint16_t min_digits, char16_t* end, uint8_t radix) {
  return SignedPadded(value, min_digits, end, radix);
}

bool XUnsignedToString(XIO& out, uint32_t value) {
  char16_t text[12];
  return WriteText(out, internal::FastDecimal(value, text + 12), text + 12);
}
bool XUnsignedToString(XIO& out, uint64_t value) {
  char16_t text[24];
  return WriteText(out, internal::FastDecimal(value, text + 24), text + 24);
}
bool XUnsignedToString(XIO& out, uint32_t value, uint8_t radix) {
  return WritePadded(out, false, value, 0, radix);
}
bool XUnsignedToString(XIO& out, uint64_t value, uint8_t radix) {
  return WritePadded(out, false, value, 0, radix);
}
bool XUnsignedToString(XIO& out, uint32_t value, uint16_t min_digits, uint8_t radix) {
  return WritePadded(out, false, value, min_digits, radix);
}
bool XUnsignedToString(XIO& out, uint64_t value, uint16_t min_digits, uint8_t radix) {
  return WritePadded(out, false, value, min_digits, radix);
}
bool XSignedToString(XIO& out, int32_t value) {
  return WriteSigned(out, value, 0, 10);
}
bool XSignedToString(XIO& out, int64_t value) {
  return WriteSigned(out, value, 0, 10);
}
bool XSignedToString(XIO& out, int32_t value, uint16_t min_digits, uint8_t radix) {
  return WriteSigned(out, value, min_digits, radix);
}
bool XSignedToString(XIO& out, int64_t value, uint16_t min_digits, uint8_t radix) {
  return WriteSigned(out, value, min_digits, radix);
}

}  // namespace tavi
