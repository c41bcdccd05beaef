//===- crc32_clmul.cpp - CRC-32 by carry-less-multiply folding ------------===//
//
// Folds the data into 128-bit (PCLMULQDQ) or 512-bit (VPCLMULQDQ) lanes, then
// reduces the last lane to the 32-bit register with a Barrett reduction.
// The constants are x^n mod P(x) for the folding distances n, bit-reflected
// and shifted left by one because the data are reflected; they were computed
// with a polynomial-arithmetic script and are checked by the tests, which
// compare every path with the table-driven one.
//
//===----------------------------------------------------------------------===//
#include "crypt/internal/crc32_kernel.h"
#include "crypt/internal/target.h"

#if TAVI_CRYPT_X86
#include <immintrin.h>

namespace tavi::crypt_internal {
namespace {

// Folding distances: the low 64 bits of a lane lie further from the end of
// the data than the high 64 bits, so they take the larger power.
constexpr long long kFold2048Lo = 0x11542778a;  // x^(2048+32)
constexpr long long kFold2048Hi = 0x1322d1430;  // x^(2048-32)
constexpr long long kFold512Lo = 0x154442bd4;   // x^(512+32)
constexpr long long kFold512Hi = 0x1c6e41596;   // x^(512-32)
constexpr long long kFold128Lo = 0x1751997d0;   // x^(128+32)
constexpr long long kFold128Hi = 0x0ccaa009e;   // x^(128-32)
constexpr long long kFold64 = 0x163cd6124;      // x^64
constexpr long long kPoly = 0x1db710641;        // P(x), reflected
constexpr long long kMu = 0x1f7011641;          // floor(x^64 / P(x)), reflected

TAVI_TARGET_PCLMUL inline __m128i Fold128(__m128i x, __m128i k) {
  return _mm_xor_si128(_mm_clmulepi64_si128(x, k, 0x00), _mm_clmulepi64_si128(x, k, 0x11));
}

TAVI_TARGET_PCLMUL inline __m128i Load128(const uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Reduces a 128-bit lane (the register folded into the data) to the register.
TAVI_TARGET_PCLMUL inline uint32_t Reduce128(__m128i x) {
  const __m128i mask32 = _mm_set_epi32(0, -1, 0, -1);
  // 128 -> 96 bits: the low half times x^96, plus the high half.
  x = _mm_xor_si128(_mm_clmulepi64_si128(x, _mm_set_epi64x(kFold128Hi, 0), 0x10),
                    _mm_srli_si128(x, 8));
  // 96 -> 64 bits: the low 32 bits times x^64, plus the rest.
  const __m128i rest = _mm_srli_si128(x, 4);
  x = _mm_clmulepi64_si128(_mm_and_si128(x, mask32), _mm_set_epi64x(0, kFold64), 0x00);
  x = _mm_xor_si128(x, rest);
  // Barrett reduction 64 -> 32 bits.
  const __m128i poly_mu = _mm_set_epi64x(kMu, kPoly);
  __m128i t = _mm_clmulepi64_si128(_mm_and_si128(x, mask32), poly_mu, 0x10);
  t = _mm_clmulepi64_si128(_mm_and_si128(t, mask32), poly_mu, 0x00);
  x = _mm_xor_si128(x, t);
  return static_cast<uint32_t>(_mm_extract_epi32(x, 1));
}

// Folds one lane into the following 16-byte pieces, then reduces; the tail
// of fewer than 16 bytes goes through the table.
TAVI_TARGET_PCLMUL inline uint32_t Finish128(__m128i x, const uint8_t* p, size_t n) {
  const __m128i k128 = _mm_set_epi64x(kFold128Hi, kFold128Lo);
  while (n >= 16) {
    x = _mm_xor_si128(Fold128(x, k128), Load128(p));
    p += 16;
    n -= 16;
  }
  return Crc32UpdatePortable(Reduce128(x), p, n);
}

}  // namespace

TAVI_TARGET_PCLMUL uint32_t Crc32UpdatePclmul(uint32_t reg, const uint8_t* p, size_t n) {
  if (n < 64) return Crc32UpdatePortable(reg, p, n);
  __m128i x0 = _mm_xor_si128(Load128(p), _mm_cvtsi32_si128(static_cast<int>(reg)));
  __m128i x1 = Load128(p + 16);
  __m128i x2 = Load128(p + 32);
  __m128i x3 = Load128(p + 48);
  p += 64;
  n -= 64;
  const __m128i k512 = _mm_set_epi64x(kFold512Hi, kFold512Lo);
  while (n >= 64) {
    x0 = _mm_xor_si128(Fold128(x0, k512), Load128(p));
    x1 = _mm_xor_si128(Fold128(x1, k512), Load128(p + 16));
    x2 = _mm_xor_si128(Fold128(x2, k512), Load128(p + 32));
    x3 = _mm_xor_si128(Fold128(x3, k512), Load128(p + 48));
    p += 64;
    n -= 64;
  }
  const __m128i k128 = _mm_set_epi64x(kFold128Hi, kFold128Lo);
  __m128i x = _mm_xor_si128(Fold128(x0, k128), x1);
  x = _mm_xor_si128(Fold128(x, k128), x2);
  x = _mm_xor_si128(Fold128(x, k128), x3);
  return Finish128(x, p, n);
}

namespace {

TAVI_TARGET_VPCLMUL inline __m512i Load512(const uint8_t* p) {
  return _mm512_loadu_si512(reinterpret_cast<const void*>(p));
}

// Folds each 128-bit lane of z forward by the distance of k and adds next.
TAVI_TARGET_VPCLMUL inline __m512i Fold512(__m512i z, __m512i k, __m512i next) {
  return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(z, k, 0x00),
                                   _mm512_clmulepi64_epi128(z, k, 0x11), next, 0x96);
}

}  // namespace

TAVI_TARGET_VPCLMUL uint32_t Crc32UpdateVpclmul(uint32_t reg, const uint8_t* p, size_t n) {
  if (n < 256) return Crc32UpdatePclmul(reg, p, n);
  __m512i z0 = _mm512_xor_si512(Load512(p),
                                _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(reg))));
  __m512i z1 = Load512(p + 64);
  __m512i z2 = Load512(p + 128);
  __m512i z3 = Load512(p + 192);
  p += 256;
  n -= 256;
  const __m512i k2048 =
      _mm512_maskz_broadcast_i32x4(0xFFFF, _mm_set_epi64x(kFold2048Hi, kFold2048Lo));
  while (n >= 256) {
    z0 = Fold512(z0, k2048, Load512(p));
    z1 = Fold512(z1, k2048, Load512(p + 64));
    z2 = Fold512(z2, k2048, Load512(p + 128));
    z3 = Fold512(z3, k2048, Load512(p + 192));
    p += 256;
    n -= 256;
  }
  const __m512i k512 = _mm512_maskz_broadcast_i32x4(0xFFFF, _mm_set_epi64x(kFold512Hi, kFold512Lo));
  __m512i z = Fold512(z0, k512, z1);
  z = Fold512(z, k512, z2);
  z = Fold512(z, k512, z3);
  while (n >= 64) {
    z = Fold512(z, k512, Load512(p));
    p += 64;
    n -= 64;
  }
  const __m128i k128 = _mm_set_epi64x(kFold128Hi, kFold128Lo);
  __m128i x = _mm_xor_si128(Fold128(_mm512_maskz_extracti32x4_epi32(0xF, z, 0), k128),
                            _mm512_maskz_extracti32x4_epi32(0xF, z, 1));
  x = _mm_xor_si128(Fold128(x, k128), _mm512_maskz_extracti32x4_epi32(0xF, z, 2));
  x = _mm_xor_si128(Fold128(x, k128), _mm512_maskz_extracti32x4_epi32(0xF, z, 3));
  return Finish128(x, p, n);
}

}  // namespace tavi::crypt_internal

#endif  // TAVI_CRYPT_X86
