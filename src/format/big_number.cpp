//===- big_number.cpp - Exact integer arithmetic for decimal text ---------===//
#include "format/internal/big_number.h"

namespace tavi::format_internal {

void BigNumber::Set(uint64_t value) {
  size_ = 0;
  overflow_ = false;
  while (value != 0) {
    limbs_[size_++] = static_cast<uint32_t>(value);
    value >>= 32;
  }
}

void BigNumber::MultiplyAdd(uint32_t factor, uint32_t addend) {
  uint64_t carry = addend;
  for (int i = 0; i < size_; ++i) {
    const uint64_t product = uint64_t{limbs_[i]} * factor + carry;
    limbs_[i] = static_cast<uint32_t>(product);
    carry = product >> 32;
  }
  if (carry != 0) {
    if (size_ == kLimbs) {
      overflow_ = true;
      return;
    }
    limbs_[size_++] = static_cast<uint32_t>(carry);
  }
}

void BigNumber::MultiplyPow5(uint32_t count) {
  // 5^13 is the largest power of five below 2^32.
  constexpr uint32_t kPow5_13 = 1220703125;
  for (; count >= 13 && !overflow_; count -= 13) MultiplyAdd(kPow5_13, 0);
  uint32_t rest = 1;
  for (; count > 0; --count) rest *= 5;
  if (rest != 1) MultiplyAdd(rest, 0);
}

void BigNumber::ShiftLeft(uint32_t count) {
  if (size_ == 0) return;
  const int words = static_cast<int>(count / 32);
  const uint32_t bits = count % 32;
  const int top = size_ + words + (bits != 0 ? 1 : 0);
  if (words >= kLimbs || top > kLimbs) {
    overflow_ = true;
    return;
  }
  if (bits == 0) {
    for (int i = size_ - 1; i >= 0; --i) limbs_[i + words] = limbs_[i];
  } else {
    limbs_[size_ + words] = limbs_[size_ - 1] >> (32 - bits);
    for (int i = size_ - 1; i > 0; --i)
      limbs_[i + words] = (limbs_[i] << bits) | (limbs_[i - 1] >> (32 - bits));
    limbs_[words] = limbs_[0] << bits;
  }
  for (int i = 0; i < words; ++i) limbs_[i] = 0;
  size_ = top;
  while (size_ > 0 && limbs_[size_ - 1] == 0) --size_;
}

uint32_t BigNumber::BitLength() const {
  if (size_ == 0) return 0;
  return static_cast<uint32_t>(size_ - 1) * 32 +
         (32 - static_cast<uint32_t>(__builtin_clz(limbs_[size_ - 1])));
}

int BigNumber::Compare(const BigNumber& a, const BigNumber& b) {
  if (a.size_ != b.size_) return a.size_ < b.size_ ? -1 : 1;
  for (int i = a.size_ - 1; i >= 0; --i) {
    if (a.limbs_[i] != b.limbs_[i]) return a.limbs_[i] < b.limbs_[i] ? -1 : 1;
  }
  return 0;
}

int CompareScaled(BigNumber a, int a5, int a2, BigNumber b, int b5, int b2) {
  const int common5 = a5 < b5 ? a5 : b5;
  const int common2 = a2 < b2 ? a2 : b2;
  a.MultiplyPow5(static_cast<uint32_t>(a5 - common5));
  a.ShiftLeft(static_cast<uint32_t>(a2 - common2));
  b.MultiplyPow5(static_cast<uint32_t>(b5 - common5));
  b.ShiftLeft(static_cast<uint32_t>(b2 - common2));
  return BigNumber::Compare(a, b);
}

}  // namespace tavi::format_internal
