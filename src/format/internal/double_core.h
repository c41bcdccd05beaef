//===- double_core.h - Binary/decimal conversion of doubles ----*- C++ -*-===//
//
// The exact core of the double text functions: the shortest decimal that reads
// back to a double, an exact comparison of a double with a decimal, and the
// correctly rounded double nearest to a decimal. The text layout around them lives
// in double_print.cpp and double_parse.cpp.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <cstring>

namespace tavi::format_internal {

#if !defined(__SIZEOF_INT128__)
#error "the double conversions need a 64x64->128-bit multiplication (__int128)"
#endif
__extension__ typedef unsigned __int128 Uint128;

inline uint64_t DoubleBits(double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

inline double BitsDouble(uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// A decimal value: digits * 10^exponent.
struct Decimal {
  uint64_t digits;
  int exponent;
};

// ShortestDecimal returns, for a positive finite non-zero double given by its bits,
// the decimal with the fewest significant digits that reads back to the same double,
// and of those the one nearest to it (ties to an even last digit). The digits carry
// no trailing zeros. At most 17 digits.
Decimal ShortestDecimal(uint64_t bits);

// CompareWithDecimal returns the sign of (double - digits * 10^exponent), exactly, for
// a positive finite double given by its bits.
int CompareWithDecimal(uint64_t bits, uint64_t digits, int exponent);

// DecimalScan describes a decimal read from text. Its first (up to 19) significant
// digits form `first19`, and the value is first19 * 10^exponent when no further
// non-zero digit follows (`more_digits` false); otherwise the value lies strictly
// between first19 and first19 + 1 times 10^exponent. [begin, end) is the text of
// the digits (one point character may sit among them), read again only when the
// 64-bit estimate cannot decide the rounding.
struct DecimalScan {
  const char16_t* begin;
  const char16_t* end;
  uint64_t first19;
  int first19_count;
  bool more_digits;
  int64_t exponent;
};

// Significant digits beyond this count cannot change a rounding: no midpoint between
// two doubles has more than 767 of them.
inline constexpr int kMaxExactDigits = 800;

// NearestDouble returns the bits of the positive double nearest to the decimal (ties
// to an even significand): 0 when it is below half the smallest subnormal, the bits
// of infinity when it is too large.
uint64_t NearestDouble(const DecimalScan& scan);

// NearestDoubleExact is NearestDouble decided with big integers alone (the path the
// fast estimate falls back on), for comparing the two.
uint64_t NearestDoubleExact(const DecimalScan& scan);

// floor(log2(10^e)) as the conversions compute it, for the table checks.
int FloorLog2Pow10ForTests(int e);

}  // namespace tavi::format_internal
