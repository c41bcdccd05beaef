//===- srgb.h - sRGB matrices and the linear-light table ---------*- C++ -*-===//
//
// The RGB <-> XYZ matrices of sRGB, derived at compile time from the chromaticities
// of the primaries and the D65 white, and the table of linear light for the 256
// steps of a colour channel. Shared by the conversions, the grey levels and the
// mixes.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <array>
#include <cstdint>

#include "tavi/colour/colour.h"

namespace tavi::colour_internal {

using Matrix3 = std::array<std::array<double, 3>, 3>;

constexpr Matrix3 Inverse(const Matrix3& m) {
  const double c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
  const double c01 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
  const double c02 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
  const double det = m[0][0] * c00 + m[0][1] * c01 + m[0][2] * c02;
  Matrix3 r{};
  r[0][0] = c00 / det;
  r[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) / det;
  r[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) / det;
  r[1][0] = c01 / det;
  r[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) / det;
  r[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) / det;
  r[2][0] = c02 / det;
  r[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) / det;
  r[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) / det;
  return r;
}

// Columns are the XYZ of the red, green and blue primaries (x, y given, Y = 1),
// scaled so that full red + green + blue gives the white point.
constexpr Matrix3 DeriveRgbToXyz() {
  constexpr double px[3] = {0.64, 0.30, 0.15};
  constexpr double py[3] = {0.33, 0.60, 0.06};
  Matrix3 p{};
  for (int i = 0; i < 3; ++i) {
    p[0][i] = px[i] / py[i];
    p[1][i] = 1.0;
    p[2][i] = (1.0 - px[i] - py[i]) / py[i];
  }
  const Matrix3 inv = Inverse(p);
  const double w[3] = {kWhiteD65.x, kWhiteD65.y, kWhiteD65.z};
  double s[3] = {};
  for (int i = 0; i < 3; ++i) s[i] = inv[i][0] * w[0] + inv[i][1] * w[1] + inv[i][2] * w[2];
  Matrix3 m{};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c) m[r][c] = p[r][c] * s[c];
  return m;
}

inline constexpr Matrix3 kRgbToXyz = DeriveRgbToXyz();
inline constexpr Matrix3 kXyzToRgb = Inverse(kRgbToXyz);

// The derived matrix agrees with the four-decimal table of the sRGB standard.
static_assert(kRgbToXyz[0][0] > 0.41235 && kRgbToXyz[0][0] < 0.41245);
static_assert(kRgbToXyz[1][1] > 0.71515 && kRgbToXyz[1][1] < 0.71525);
static_assert(kRgbToXyz[2][2] > 0.95045 && kRgbToXyz[2][2] < 0.95055);

// LinearTable()[step] is XSRGBToLinear(step / 255.0).
const std::array<double, 256>& LinearTable();

// ToStep clamps to 0..1 (NaN to 0) and rounds to the nearest of 256 steps.
inline uint32_t ToStep(double v) {
  if (!(v > 0)) return 0;
  if (v >= 1) return 255;
  return static_cast<uint32_t>(v * 255.0 + 0.5);
}

// Clamp01 clamps to 0..1 with NaN to 0.
inline double Clamp01(double v) {
  return !(v > 0) ? 0.0 : v > 1 ? 1.0 : v;
}

}  // namespace tavi::colour_internal
