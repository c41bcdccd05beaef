//===- search_avx2.cpp - AVX2 path of the forward searches ----------------===//
//
// Candidate positions are those where both the first and the last unit of the
// string match; one step compares 32 bytes at both ends and verifies each candidate
// with memcmp. Compiled for AVX2 and called only after the dispatcher has seen it.
//
//===----------------------------------------------------------------------===//
#include <cstring>

#include "text/internal/search_kernel.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#define TAVI_AVX2 __attribute__((target("avx2")))

namespace tavi::text_internal {

namespace {

TAVI_AVX2 size_t FindBytesAvx2(const uint8_t* h, size_t n, const uint8_t* w, size_t m) {
  if (m > n) return SIZE_MAX;
  const __m256i first = _mm256_set1_epi8(static_cast<char>(w[0]));
  const __m256i last = _mm256_set1_epi8(static_cast<char>(w[m - 1]));
  size_t i = 0;
  // Candidates i .. i+31 need bytes up to i + 31 + m - 1 < n.
  for (; i + 32 + m - 1 <= n; i += 32) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(h + i));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(h + i + m - 1));
    auto mask = static_cast<uint32_t>(_mm256_movemask_epi8(
        _mm256_and_si256(_mm256_cmpeq_epi8(a, first), _mm256_cmpeq_epi8(b, last))));
    while (mask != 0) {
      const auto bit = static_cast<size_t>(__builtin_ctz(mask));
      if (m <= 2 || std::memcmp(h + i + bit + 1, w + 1, m - 2) == 0) return i + bit;
      mask &= mask - 1;
    }
  }
  const size_t rest = FindBytesPortable(h + i, n - i, w, m);
  return rest == SIZE_MAX ? SIZE_MAX : i + rest;
}

TAVI_AVX2 size_t FindUnitsAvx2(const char16_t* h, size_t n, const char16_t* w, size_t m) {
  if (m > n) return SIZE_MAX;
  const __m256i first = _mm256_set1_epi16(static_cast<short>(w[0]));
  const __m256i last = _mm256_set1_epi16(static_cast<short>(w[m - 1]));
  size_t i = 0;
  for (; i + 16 + m - 1 <= n; i += 16) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(h + i));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(h + i + m - 1));
    // Two mask bits per unit.
    auto mask = static_cast<uint32_t>(_mm256_movemask_epi8(
        _mm256_and_si256(_mm256_cmpeq_epi16(a, first), _mm256_cmpeq_epi16(b, last))));
    while (mask != 0) {
      const auto bit = static_cast<size_t>(__builtin_ctz(mask));
      const size_t at = i + bit / 2;
      if (m <= 2 || std::memcmp(h + at + 1, w + 1, 2 * (m - 2)) == 0) return at;
      mask &= ~(3u << bit);
    }
  }
  const size_t rest = FindUnitsPortable(h + i, n - i, w, m);
  return rest == SIZE_MAX ? SIZE_MAX : i + rest;
}

}  // namespace

SearchKernels Avx2SearchKernels() {
  return {FindBytesAvx2, FindUnitsAvx2};
}

}  // namespace tavi::text_internal

#else

namespace tavi::text_internal {
SearchKernels Avx2SearchKernels() {
  return {nullptr, nullptr};
}
}  // namespace tavi::text_internal

#endif
