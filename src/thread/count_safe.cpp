//===- count_safe.cpp - Saturating counters and checked arithmetic --------===//
#include "tavi/thread/count_safe.h"

#include <limits>

#include "thread/internal/wide_int.h"

namespace tavi {

namespace {

constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
constexpr int64_t kMin = std::numeric_limits<int64_t>::min();

// Stores a 128-bit result, saturated when it does not fit.
int32_t StoreSaturated(int64_t& result, internal::Int128 value, int32_t exactCode) {
  if (value.FitsInt64()) {
    result = value.ToInt64();
    return exactCode;
  }
  if (value.IsNegative()) {
    result = kMin;
    return kSafeUnderMin;
  }
  result = kMax;
  return kSafeOverMax;
}

// numerator / divisor truncated toward zero; see SafeDiv for the codes.
int32_t Divide(int64_t& result, internal::Int128 numerator, int64_t divisor) {
  const bool negative = numerator.IsNegative();
  if (divisor == 0) {
    if (numerator.hi == 0 && numerator.lo == 0) {
      result = 0;
      return kSafeInexact;
    }
    result = negative ? kMin : kMax;
    return negative ? kSafeUnderMin : kSafeOverMax;
  }
  uint64_t remainder;
  internal::Int128 quotient =
      internal::DivideUnsigned(numerator.Abs(), internal::Magnitude(divisor), remainder);
  if (negative != (divisor < 0)) quotient = quotient.Negated();
  return StoreSaturated(result, quotient, remainder == 0 ? kSafeExact : kSafeInexact);
}

}  // namespace

bool strCountSafe::Set(uint64_t v) {
  value = v;
  return v != kOverflow;
}

bool strCountSafe::Add(uint64_t v) {
  if (value >= kOverflow - v) {
    value = kOverflow;
    return false;
  }
  value += v;
  return true;
}

bool strCountSafe::Multiply(uint64_t v) {
  if (v == 0) {
    // 0 times anything fits, but an overflow stays one.
    if (value == kOverflow) return false;
    value = 0;
    return true;
  }
  if (value >= kOverflow / v) {
    value = kOverflow;
    return false;
  }
  value *= v;
  return true;
}

bool strCountSafe::Factorial(uint32_t n) {
  value = 1;
  for (uint32_t k = n; k >= 2; --k) {
    if (!Multiply(k)) return false;
  }
  return value != kOverflow;
}

bool strCountSafe::AddFactorial(uint32_t n) {
  strCountSafe factorial;
  if (factorial.Factorial(n) && value < kOverflow - factorial.value) {
    value += factorial.value;
    return true;
  }
  value = kOverflow;
  return false;
}

int32_t SafeSum(int64_t& result, int64_t a, int64_t b) {
  if (b >= 0) {
    if (a > kMax - b) {
      result = kMax;
      return kSafeOverMax;
    }
    result = a + b;
    return kSafeExact;
  }
  if (a >= 0) {
    result = a + b;
    return kSafeExact;
  }
  if (b == kMin) {
    result = kMin;
    return kSafeUnderMin;
  }
  return SafeDif(result, a, -b);
}

int32_t SafeDif(int64_t& result, int64_t a, int64_t b) {
  if (b >= 0) {
    if (a < b + kMin) {
      result = kMin;
      return kSafeUnderMin;
    }
    result = a - b;
    return kSafeExact;
  }
  if (a < 0 || a <= kMax + b) {
    result = a - b;
    return kSafeExact;
  }
  result = kMax;
  return kSafeOverMax;
}

int32_t SafeMulti(int64_t& result, int64_t a, int64_t b) {
  return StoreSaturated(result, internal::Multiply(a, b), kSafeExact);
}

int32_t SafeDiv(int64_t& result, int64_t a, int64_t b) {
  return Divide(result, internal::Int128::From(a), b);
}

int32_t SafeConversion(int64_t& result, int64_t value, int64_t multiplier, int64_t divisor) {
  return Divide(result, internal::Multiply(value, multiplier), divisor);
}

int32_t SafeLinear(int64_t& result, int64_t a, int64_t x, int64_t b) {
  return StoreSaturated(result, internal::Multiply(a, x).Plus(internal::Int128::From(b)),
                        kSafeExact);
}

}  // namespace tavi
