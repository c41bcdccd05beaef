//===- lab_avx2.cpp - Four colour values to L*a*b* per step with AVX2 -----===//
//
// The scalar conversion spends most of its time in three cube roots per colour.
// Here the cube root of the L*a*b* function is computed for four colours at once:
// a rational first guess within 1.4% over 0.0088..1.2 (the range the cube-root
// branch meets for 8-bit colours, whose tristimulus ratios never exceed 1), then
// three Halley steps y <- y (y^3 + 2t) / (2y^3 + t), each of which triples the
// number of correct digits.
//
//===----------------------------------------------------------------------===//
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>

#include "colour/internal/lab_kernel.h"
#include "colour/internal/srgb.h"

#define TAVI_TARGET_AVX2 __attribute__((target("avx2")))

namespace tavi::colour_internal {

namespace {

constexpr double kDelta = 6.0 / 29.0;

TAVI_TARGET_AVX2 inline __m256d Cbrt(__m256d t) {
  const __m256d two = _mm256_set1_pd(2.0);
  // 0.15 + 0.93 t / (0.3 + t)
  __m256d y = _mm256_add_pd(
      _mm256_set1_pd(0.15),
      _mm256_div_pd(_mm256_mul_pd(_mm256_set1_pd(0.93), t), _mm256_add_pd(_mm256_set1_pd(0.3), t)));
  for (int step = 0; step < 3; ++step) {
    const __m256d y3 = _mm256_mul_pd(_mm256_mul_pd(y, y), y);
    const __m256d num = _mm256_add_pd(y3, _mm256_mul_pd(two, t));
    const __m256d den = _mm256_add_pd(_mm256_mul_pd(two, y3), t);
    y = _mm256_div_pd(_mm256_mul_pd(y, num), den);
  }
  return y;
}

// The L*a*b* function: the cube root above (6/29)^3, its linear continuation below.
TAVI_TARGET_AVX2 inline __m256d LabF(__m256d t) {
  const __m256d linear = _mm256_add_pd(
      _mm256_mul_pd(t, _mm256_set1_pd(1.0 / (3.0 * kDelta * kDelta))), _mm256_set1_pd(4.0 / 29.0));
  const __m256d above = _mm256_cmp_pd(t, _mm256_set1_pd(kDelta * kDelta * kDelta), _CMP_GT_OQ);
  // The cube root of the lanes below the threshold is not used; 1 keeps it tame.
  const __m256d root = Cbrt(_mm256_blendv_pd(_mm256_set1_pd(1.0), t, above));
  return _mm256_blendv_pd(linear, root, above);
}

// Gathers table[index] for four indices. The masked form with a zero source keeps
// every lane defined (the plain form starts from an undefined register).
TAVI_TARGET_AVX2 inline __m256d Gather(const double* table, __m128i index) {
  return _mm256_mask_i32gather_pd(_mm256_setzero_pd(), table, index,
                                  _mm256_castsi256_pd(_mm256_set1_epi64x(-1)), 8);
}

TAVI_TARGET_AVX2 inline __m256d Row(const std::array<double, 3>& m, __m256d r, __m256d g,
                                    __m256d b) {
  return _mm256_add_pd(
      _mm256_add_pd(_mm256_mul_pd(_mm256_set1_pd(m[0]), r), _mm256_mul_pd(_mm256_set1_pd(m[1]), g)),
      _mm256_mul_pd(_mm256_set1_pd(m[2]), b));
}

}  // namespace

TAVI_TARGET_AVX2 void ColoursToLabAvx2(const uint32_t* in, strLab* out, uint32_t count) {
  const double* lin = LinearTable().data();
  const __m128i mask = _mm_set1_epi32(0xFF);
  uint32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
    const __m256d r = Gather(lin, _mm_and_si128(c, mask));
    const __m256d g = Gather(lin, _mm_and_si128(_mm_srli_epi32(c, 8), mask));
    const __m256d b = Gather(lin, _mm_and_si128(_mm_srli_epi32(c, 16), mask));
    const __m256d x = Row(kRgbToXyz[0], r, g, b);
    const __m256d y = Row(kRgbToXyz[1], r, g, b);
    const __m256d z = Row(kRgbToXyz[2], r, g, b);
    const __m256d fx = LabF(_mm256_div_pd(x, _mm256_set1_pd(kWhiteD65.x)));
    const __m256d fy = LabF(y);
    const __m256d fz = LabF(_mm256_div_pd(z, _mm256_set1_pd(kWhiteD65.z)));
    alignas(32) double l[4], a[4], bb[4];
    _mm256_store_pd(l,
                    _mm256_sub_pd(_mm256_mul_pd(_mm256_set1_pd(116.0), fy), _mm256_set1_pd(16.0)));
    _mm256_store_pd(a, _mm256_mul_pd(_mm256_set1_pd(500.0), _mm256_sub_pd(fx, fy)));
    _mm256_store_pd(bb, _mm256_mul_pd(_mm256_set1_pd(200.0), _mm256_sub_pd(fy, fz)));
    for (int k = 0; k < 4; ++k) out[i + k] = {l[k], a[k], bb[k]};
  }
  for (; i < count; ++i) out[i] = XColourToLab(in[i]);
}

}  // namespace tavi::colour_internal

#endif
