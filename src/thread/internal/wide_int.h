//===- wide_int.h - Signed 128-bit intermediates ----------------*- C++ -*-===//
//
// A minimal signed 128-bit integer (two's complement in two words) for the
// checked arithmetic: products of two 64-bit values, sums, division by a 64-bit
// value, and the test whether a result fits 64 bits. Portable C++, no
// compiler extensions.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::internal {

struct Int128 {
  uint64_t hi = 0;
  uint64_t lo = 0;

  static Int128 From(int64_t v) {
    return Int128{v < 0 ? ~uint64_t{0} : 0, static_cast<uint64_t>(v)};
  }
  bool IsNegative() const { return (hi >> 63) != 0; }
  bool FitsInt64() const { return hi == (static_cast<int64_t>(lo) < 0 ? ~uint64_t{0} : 0); }
  int64_t ToInt64() const { return static_cast<int64_t>(lo); }

  Int128 Negated() const {
    const uint64_t nlo = ~lo + 1;
    return Int128{~hi + (nlo == 0 ? 1 : 0), nlo};
  }
  Int128 Abs() const { return IsNegative() ? Negated() : *this; }
  Int128 Plus(Int128 other) const {
    const uint64_t sum = lo + other.lo;
    return Int128{hi + other.hi + (sum < lo ? 1 : 0), sum};
  }
};

// The magnitude of v as an unsigned value (2^63 for INT64_MIN).
inline uint64_t Magnitude(int64_t v) {
  return v < 0 ? ~static_cast<uint64_t>(v) + 1 : static_cast<uint64_t>(v);
}

// The full product of two unsigned 64-bit values.
inline Int128 MultiplyUnsigned(uint64_t a, uint64_t b) {
  const uint64_t aLo = a & 0xFFFFFFFF, aHi = a >> 32;
  const uint64_t bLo = b & 0xFFFFFFFF, bHi = b >> 32;
  const uint64_t ll = aLo * bLo, lh = aLo * bHi, hl = aHi * bLo, hh = aHi * bHi;
  const uint64_t middle = (ll >> 32) + (lh & 0xFFFFFFFF) + (hl & 0xFFFFFFFF);
  return Int128{hh + (lh >> 32) + (hl >> 32) + (middle >> 32), (middle << 32) | (ll & 0xFFFFFFFF)};
}

inline Int128 Multiply(int64_t a, int64_t b) {
  const Int128 magnitude = MultiplyUnsigned(Magnitude(a), Magnitude(b));
  return (a < 0) != (b < 0) ? magnitude.Negated() : magnitude;
}

// Divides a non-negative 128-bit value by d (not 0), shifting one bit at a time.
inline Int128 DivideUnsigned(Int128 n, uint64_t d, uint64_t& remainder) {
  Int128 quotient;
  uint64_t rem = 0;
  for (int bit = 127; bit >= 0; --bit) {
    const uint64_t next = bit >= 64 ? (n.hi >> (bit - 64)) & 1 : (n.lo >> bit) & 1;
    const bool carry = (rem >> 63) != 0;
    rem = (rem << 1) | next;
    if (carry || rem >= d) {
      rem -= d;
      if (bit >= 64) {
        quotient.hi |= uint64_t{1} << (bit - 64);
      } else {
        quotient.lo |= uint64_t{1} << bit;
      }
    }
  }
  remainder = rem;
  return quotient;
}

}  // namespace tavi::internal
