//===- big_number.h - Exact integer arithmetic for decimal text -*- C++ -*-===//
//
// A fixed-capacity unsigned big integer with the few operations that exact decimal
// conversion needs: multiplication by small factors and powers of five, shifts, and
// comparison. The double reader and printer fall back on it when the fast 128-bit
// estimate cannot decide a rounding.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::format_internal {

// BigNumber holds up to kLimbs 32-bit limbs (least significant first). An operation
// whose result would not fit sets the overflow flag and leaves the value unspecified
// (never memory outside the object). The double conversions stay below 5000 bits: at
// most 801 significant digits, powers of five up to 5^1146 and shifts up to 2^2200.
class BigNumber {
 public:
  static constexpr int kLimbs = 400;  // 12800 bits

  BigNumber() = default;
  explicit BigNumber(uint64_t value) { Set(value); }

  void Set(uint64_t value);
  // MultiplyAdd sets this to this * factor + addend.
  void MultiplyAdd(uint32_t factor, uint32_t addend);
  // MultiplyPow5 multiplies by 5^count.
  void MultiplyPow5(uint32_t count);
  // ShiftLeft multiplies by 2^count.
  void ShiftLeft(uint32_t count);
  // BitLength is the position of the highest set bit plus one (0 for zero).
  uint32_t BitLength() const;
  bool IsZero() const { return size_ == 0; }
  bool Overflowed() const { return overflow_; }

  // Compare returns -1, 0 or 1 as a is below, equal to or above b.
  static int Compare(const BigNumber& a, const BigNumber& b);

 private:
  uint32_t limbs_[kLimbs];
  int size_ = 0;
  bool overflow_ = false;
};

// CompareScaled compares a * 5^a5 * 2^a2 with b * 5^b5 * 2^b2 for signed exponents:
// the negative powers are moved to the other side first, so only products are formed.
int CompareScaled(BigNumber a, int a5, int a2, BigNumber b, int b5, int b2);

}  // namespace tavi::format_internal
