//===- utf8_avx2.cpp - AVX2 path of the UTF-8 converter -------------------===//
//
// The converter loops of utf8_body.h with ASCII runs moved 32 code units per step,
// compiled for AVX2 as a whole (the loops and the block steps inline into each
// other, so they must share the instruction set). Called only after the
// dispatcher has seen AVX2 at run time.
//
//===----------------------------------------------------------------------===//
#include "core/internal/utf8_x86.h"

#if TAVI_UTF8_X86

#include <immintrin.h>

#include <cstring>

// Everything below, and only that, is compiled for AVX2.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "core/internal/utf8_body.h"

namespace tavi::internal {

namespace {

using utf8_detail::DecodeBody;
using utf8_detail::EncodeBody;

struct Avx2Block {
  static constexpr size_t kBlock = 32;

  static TAVI_UTF8_INLINE size_t Widen(const uint8_t* in, char16_t* out) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                        _mm256_cvtepu8_epi16(_mm256_castsi256_si128(v)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + 16),
                        _mm256_cvtepu8_epi16(_mm256_extracti128_si256(v, 1)));
    const auto high = static_cast<unsigned>(_mm256_movemask_epi8(v));
    return high == 0 ? 32 : static_cast<size_t>(__builtin_ctz(high));
  }

  static TAVI_UTF8_INLINE size_t Narrow(const uint8_t* units, uint8_t* out) {
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units + 32));
    // The packs work within 128-bit lanes; the permute puts the quarters in order.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                        _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
    const __m256i high = _mm256_set1_epi16(static_cast<short>(0xFF80));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i ascii = _mm256_permute4x64_epi64(
        _mm256_packs_epi16(_mm256_cmpeq_epi16(_mm256_and_si256(a, high), zero),
                           _mm256_cmpeq_epi16(_mm256_and_si256(b, high), zero)),
        0xD8);
    const unsigned other = ~static_cast<unsigned>(_mm256_movemask_epi8(ascii));
    return other == 0 ? 32 : static_cast<size_t>(__builtin_ctz(other));
  }
};

}  // namespace

Utf8Status DecodeUtf8Avx2(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                          size_t* consumed, size_t* produced, size_t* needed) {
  return DecodeBody<Avx2Block>(in, n, out, max_units, consumed, produced, needed);
}

size_t EncodeUtf8Avx2(const uint8_t* units, size_t count, uint8_t* out) {
  return EncodeBody<Avx2Block>(units, count, out);
}

}  // namespace tavi::internal

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

#endif  // TAVI_UTF8_X86
