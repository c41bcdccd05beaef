//===- count_safe.h - Saturating counters and checked 64-bit arithmetic -*- C++ -*-===//
//
// strCountSafe, an unsigned 64-bit count that saturates at all ones instead
// of wrapping, and signed 64-bit arithmetic that saturates and says whether
// the stored result is exact.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// strCountSafe holds an unsigned 64-bit count. All ones marks an overflow, and
// every operation that would reach or pass it stores all ones and returns
// false; an overflowed count stays overflowed. O(1) except Factorial (O(n)).
struct TAVI_API strCountSafe {
  static constexpr uint64_t kOverflow = ~uint64_t{0};

  uint64_t value = 0;

  // Set stores v; false when v is the overflow mark.
  bool Set(uint64_t v);
  bool operator=(uint64_t v) { return Set(v); }
  operator uint64_t() const { return value; }
  bool IsOverflow() const { return value == kOverflow; }

  // Add: overflow when value >= all ones - v (so a sum equal to all ones is one).
  bool Add(uint64_t v);
  bool operator+=(uint64_t v) { return Add(v); }
  // Multiply: overflow when value >= all ones / v, a test that also refuses
  // some products just below the limit. Multiplying by 0 gives 0.
  bool Multiply(uint64_t v);
  bool operator*=(uint64_t v) { return Multiply(v); }
  // Factorial stores n! (1 for n < 2); 20! is the largest that fits.
  bool Factorial(uint32_t n);
  // AddFactorial adds n!; overflow when n! overflows or value >= all ones - n!.
  bool AddFactorial(uint32_t n);
};

// Result codes of the Safe functions.
inline constexpr int32_t kSafeExact = 1;      // the stored result is exact
inline constexpr int32_t kSafeInexact = 0;    // stored, but a remainder was dropped
inline constexpr int32_t kSafeOverMax = -2;   // saturated to INT64_MAX
inline constexpr int32_t kSafeUnderMin = -3;  // saturated to INT64_MIN

// SafeSum stores a + b, SafeDif a - b, saturating at the limits of int64_t.
TAVI_API int32_t SafeSum(int64_t& result, int64_t a, int64_t b);
TAVI_API int32_t SafeDif(int64_t& result, int64_t a, int64_t b);

// SafeMulti stores a * b, saturating (kSafeExact or a saturation code).
TAVI_API int32_t SafeMulti(int64_t& result, int64_t a, int64_t b);

// SafeDiv stores a / b truncated toward zero: kSafeExact without remainder,
// kSafeInexact with one. Division by 0 saturates towards the sign of a
// (kSafeOverMax or kSafeUnderMin); 0 / 0 stores 0 and returns kSafeInexact.
// INT64_MIN / -1 saturates to INT64_MAX.
TAVI_API int32_t SafeDiv(int64_t& result, int64_t a, int64_t b);

// SafeConversion stores value * multiplier / divisor, as for a change of unit
// (bytes to kilobytes, timer ticks to milliseconds). The product is kept in
// 128 bits, so only the final quotient can overflow; rounding and codes as for
// SafeDiv.
TAVI_API int32_t SafeConversion(int64_t& result, int64_t value, int64_t multiplier,
                                int64_t divisor);

// SafeLinear stores a * x + b, with the product kept in 128 bits so that a sum
// that comes back into range is exact; kSafeExact or a saturation code.
TAVI_API int32_t SafeLinear(int64_t& result, int64_t a, int64_t x, int64_t b);

}  // namespace tavi
