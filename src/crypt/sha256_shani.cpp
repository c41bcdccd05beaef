//===- sha256_shani.cpp - Hash compression with the SHA extensions --------===//
//
// The usual SHA-NI round structure, except that the message words are loaded
// as they lie in memory (little-endian) with no byte shuffle, which is how the
// library's hash variant takes them.
//
//===----------------------------------------------------------------------===//
#include <utility>

#include "crypt/internal/sha256_kernel.h"
#include "crypt/internal/target.h"

#if TAVI_CRYPT_X86
#include <immintrin.h>

namespace tavi::crypt_internal {
namespace {

// Four rounds with the words w of group g (rounds 4g..4g+3).
TAVI_TARGET_SHANI inline void Rounds4(__m128i& abef, __m128i& cdgh, __m128i w, int g) {
  __m128i msg = _mm_add_epi32(w, _mm_load_si128(reinterpret_cast<const __m128i*>(kSha256K) + g));
  cdgh = _mm_sha256rnds2_epu32(cdgh, abef, msg);
  msg = _mm_shuffle_epi32(msg, 0x0E);
  abef = _mm_sha256rnds2_epu32(abef, cdgh, msg);
}

// Group G's rounds and its share of the message schedule: words of group
// G+1 are completed from the current and previous groups, and the previous
// group's words get their first schedule step for group G+3.
template <int G>
TAVI_TARGET_SHANI inline void Group(__m128i& abef, __m128i& cdgh, __m128i (&m)[4]) {
  Rounds4(abef, cdgh, m[G & 3], G);
  if constexpr (G >= 3 && G <= 14) {
    __m128i& next = m[(G + 1) & 3];
    next = _mm_add_epi32(next, _mm_alignr_epi8(m[G & 3], m[(G + 3) & 3], 4));
    next = _mm_sha256msg2_epu32(next, m[G & 3]);
  }
  if constexpr (G >= 1 && G <= 12) {
    m[(G + 3) & 3] = _mm_sha256msg1_epu32(m[(G + 3) & 3], m[G & 3]);
  }
}

template <int... G>
TAVI_TARGET_SHANI inline void AllGroups(__m128i& abef, __m128i& cdgh, __m128i (&m)[4],
                                        std::integer_sequence<int, G...>) {
  (Group<G>(abef, cdgh, m), ...);
}

}  // namespace

TAVI_TARGET_SHANI void Sha256CompressShaNi(uint32_t state[8], const uint8_t* blocks,
                                           size_t nblocks) {
  // The round instructions keep the state as the pairs ABEF and CDGH.
  __m128i dcba = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state));
  __m128i hgfe = _mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4));
  const __m128i cdab = _mm_shuffle_epi32(dcba, 0xB1);
  const __m128i efgh = _mm_shuffle_epi32(hgfe, 0x1B);
  __m128i abef = _mm_alignr_epi8(cdab, efgh, 8);
  __m128i cdgh = _mm_blend_epi16(efgh, cdab, 0xF0);

  for (; nblocks > 0; --nblocks, blocks += 64) {
    const __m128i abef_saved = abef;
    const __m128i cdgh_saved = cdgh;
    const __m128i* in = reinterpret_cast<const __m128i*>(blocks);
    __m128i m[4] = {_mm_loadu_si128(in), _mm_loadu_si128(in + 1), _mm_loadu_si128(in + 2),
                    _mm_loadu_si128(in + 3)};
    AllGroups(abef, cdgh, m, std::make_integer_sequence<int, 16>());
    abef = _mm_add_epi32(abef, abef_saved);
    cdgh = _mm_add_epi32(cdgh, cdgh_saved);
  }

  const __m128i feba = _mm_shuffle_epi32(abef, 0x1B);
  const __m128i dchg = _mm_shuffle_epi32(cdgh, 0xB1);
  dcba = _mm_blend_epi16(feba, dchg, 0xF0);
  hgfe = _mm_alignr_epi8(dchg, feba, 8);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), dcba);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), hgfe);
}

}  // namespace tavi::crypt_internal

#endif  // TAVI_CRYPT_X86
