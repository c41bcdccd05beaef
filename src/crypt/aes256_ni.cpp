//===- aes256_ni.cpp - AES-256 with AES-NI and VAES -----------------------===//
//
// Electronic-codebook kernels: every block is independent, so the AES-NI path
// keeps eight blocks in flight to cover the round instruction's latency, and
// the VAES path runs eight 512-bit registers of four blocks each.
// Deciphering uses the equivalent inverse cipher (InvMixColumns applied to the
// middle round keys), made once per call.
//
//===----------------------------------------------------------------------===//
#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/target.h"

#if TAVI_CRYPT_X86
#include <immintrin.h>

namespace tavi::crypt_internal {
namespace {

TAVI_TARGET_AESNI inline __m128i Load(const uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

TAVI_TARGET_AESNI inline void Store(uint8_t* p, __m128i v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

TAVI_TARGET_AESNI inline void LoadEncKeys(const uint8_t* schedule, __m128i (&rk)[15]) {
  TAVI_UNROLL(16)
  for (int r = 0; r < 15; ++r) rk[r] = Load(schedule + 16 * r);
}

TAVI_TARGET_AESNI inline void LoadDecKeys(const uint8_t* schedule, __m128i (&dk)[15]) {
  dk[0] = Load(schedule + 16 * 14);
  TAVI_UNROLL(13)
  for (int r = 1; r < 14; ++r) dk[r] = _mm_aesimc_si128(Load(schedule + 16 * (14 - r)));
  dk[14] = Load(schedule);
}

template <bool kEncrypt>
TAVI_TARGET_AESNI inline void BlocksNi(const __m128i (&k)[15], const uint8_t* in, uint8_t* out,
                                       size_t blocks) {
  constexpr int kLanes = 8;
  for (; blocks >= kLanes; blocks -= kLanes, in += 16 * kLanes, out += 16 * kLanes) {
    __m128i b[kLanes];
    TAVI_UNROLL(8)
    for (int i = 0; i < kLanes; ++i) b[i] = _mm_xor_si128(Load(in + 16 * i), k[0]);
    TAVI_UNROLL(13)
    for (int r = 1; r < 14; ++r) {
      TAVI_UNROLL(8)
      for (int i = 0; i < kLanes; ++i) {
        b[i] = kEncrypt ? _mm_aesenc_si128(b[i], k[r]) : _mm_aesdec_si128(b[i], k[r]);
      }
    }
    TAVI_UNROLL(8)
    for (int i = 0; i < kLanes; ++i) {
      Store(out + 16 * i,
            kEncrypt ? _mm_aesenclast_si128(b[i], k[14]) : _mm_aesdeclast_si128(b[i], k[14]));
    }
  }
  for (; blocks > 0; --blocks, in += 16, out += 16) {
    __m128i b = _mm_xor_si128(Load(in), k[0]);
    TAVI_UNROLL(13)
    for (int r = 1; r < 14; ++r)
      b = kEncrypt ? _mm_aesenc_si128(b, k[r]) : _mm_aesdec_si128(b, k[r]);
    Store(out, kEncrypt ? _mm_aesenclast_si128(b, k[14]) : _mm_aesdeclast_si128(b, k[14]));
  }
}

template <bool kEncrypt>
TAVI_TARGET_VAES inline __m512i Round512(__m512i b, __m512i k) {
  if constexpr (kEncrypt) return _mm512_aesenc_epi128(b, k);
  return _mm512_aesdec_epi128(b, k);
}

template <bool kEncrypt>
TAVI_TARGET_VAES inline __m512i LastRound512(__m512i b, __m512i k) {
  if constexpr (kEncrypt) return _mm512_aesenclast_epi128(b, k);
  return _mm512_aesdeclast_epi128(b, k);
}

// Whole groups of four blocks go through 512-bit registers; the last zero to
// three blocks through the 128-bit path.
template <bool kEncrypt>
TAVI_TARGET_VAES inline void BlocksVaes(const __m128i (&k)[15], const uint8_t* in, uint8_t* out,
                                        size_t blocks) {
  __m512i wk[15];
  TAVI_UNROLL(16)
  for (int r = 0; r < 15; ++r) wk[r] = _mm512_maskz_broadcast_i32x4(0xFFFF, k[r]);
  constexpr int kLanes = 8;  // registers of four blocks
  for (; blocks >= 4 * kLanes; blocks -= 4 * kLanes, in += 64 * kLanes, out += 64 * kLanes) {
    __m512i b[kLanes];
    TAVI_UNROLL(8)
    for (int i = 0; i < kLanes; ++i)
      b[i] = _mm512_xor_si512(_mm512_loadu_si512(in + 64 * i), wk[0]);
    TAVI_UNROLL(13)
    for (int r = 1; r < 14; ++r) {
      TAVI_UNROLL(8)
      for (int i = 0; i < kLanes; ++i) b[i] = Round512<kEncrypt>(b[i], wk[r]);
    }
    TAVI_UNROLL(8)
    for (int i = 0; i < kLanes; ++i) {
      _mm512_storeu_si512(out + 64 * i, LastRound512<kEncrypt>(b[i], wk[14]));
    }
  }
  for (; blocks >= 4; blocks -= 4, in += 64, out += 64) {
    __m512i b = _mm512_xor_si512(_mm512_loadu_si512(in), wk[0]);
    TAVI_UNROLL(13)
    for (int r = 1; r < 14; ++r) b = Round512<kEncrypt>(b, wk[r]);
    _mm512_storeu_si512(out, LastRound512<kEncrypt>(b, wk[14]));
  }
  BlocksNi<kEncrypt>(k, in, out, blocks);
}

}  // namespace

TAVI_TARGET_AESNI void Aes256EncryptAesNi(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                                          size_t blocks) {
  __m128i k[15];
  LoadEncKeys(schedule, k);
  BlocksNi<true>(k, in, out, blocks);
}

TAVI_TARGET_AESNI void Aes256DecryptAesNi(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                                          size_t blocks) {
  __m128i k[15];
  LoadDecKeys(schedule, k);
  BlocksNi<false>(k, in, out, blocks);
}

TAVI_TARGET_VAES void Aes256EncryptVaes(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                                        size_t blocks) {
  __m128i k[15];
  LoadEncKeys(schedule, k);
  BlocksVaes<true>(k, in, out, blocks);
}

TAVI_TARGET_VAES void Aes256DecryptVaes(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                                        size_t blocks) {
  __m128i k[15];
  LoadDecKeys(schedule, k);
  BlocksVaes<false>(k, in, out, blocks);
}

}  // namespace tavi::crypt_internal

#endif  // TAVI_CRYPT_X86
