//===- utf8_sse2.cpp - SSE2 path of the UTF-8 converter -------------------===//
//
// The converter loops of utf8_body.h with ASCII runs moved 16 code units per step.
// A step widens or narrows the whole block and reports the ASCII prefix from the
// sign bits (bytes) or the bits above 0x7F (code units). SSE2 is part of x86-64,
// so this file needs no target attribute.
//
//===----------------------------------------------------------------------===//
#include "core/internal/utf8_x86.h"

#if TAVI_UTF8_X86

#include <emmintrin.h>

#include <cstring>

#include "core/internal/utf8_body.h"

namespace tavi::internal {

namespace {

using utf8_detail::DecodeBody;
using utf8_detail::EncodeBody;

struct Sse2Block {
  static constexpr size_t kBlock = 16;

  static TAVI_UTF8_INLINE size_t Widen(const uint8_t* in, char16_t* out) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(v, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(v, zero));
    const auto high = static_cast<unsigned>(_mm_movemask_epi8(v));
    return high == 0 ? 16 : static_cast<size_t>(__builtin_ctz(high));
  }

  static TAVI_UTF8_INLINE size_t Narrow(const uint8_t* units, uint8_t* out) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + 16));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(a, b));
    const __m128i high = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    const __m128i ascii = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(a, high), zero),
                                          _mm_cmpeq_epi16(_mm_and_si128(b, high), zero));
    const unsigned other = ~static_cast<unsigned>(_mm_movemask_epi8(ascii)) & 0xFFFF;
    return other == 0 ? 16 : static_cast<size_t>(__builtin_ctz(other));
  }
};

}  // namespace

Utf8Status DecodeUtf8Sse2(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                          size_t* consumed, size_t* produced, size_t* needed) {
  return DecodeBody<Sse2Block>(in, n, out, max_units, consumed, produced, needed);
}

size_t EncodeUtf8Sse2(const uint8_t* units, size_t count, uint8_t* out) {
  return EncodeBody<Sse2Block>(units, count, out);
}

}  // namespace tavi::internal

#endif  // TAVI_UTF8_X86
