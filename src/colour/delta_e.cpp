//===- delta_e.cpp - The CIEDE2000 colour difference ---------------------===//
#include <cmath>
#include <initializer_list>
#include <numbers>

#include "tavi/colour/colour.h"

namespace tavi {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;

// Hue angle in degrees, 0 to below 360; 0 for a neutral colour.
double HueDegrees(double b, double a) {
  if (a == 0 && b == 0) return 0;
  const double h = std::atan2(b, a) / kDegree;
  return h < 0 ? h + 360.0 : h;
}

double Pow7(double x) {
  const double x2 = x * x;
  return x2 * x2 * x2 * x;
}

}  // namespace

double XDeltaE2000(const strLab& first, const strLab& second) {
  return XDeltaE2000Ex(first, second, 1.0, 1.0, 1.0);
}

double XDeltaE2000Ex(const strLab& first, const strLab& second, double kL, double kC, double kH) {
  for (double v : {first.L, first.a, first.b, second.L, second.a, second.b}) {
    if (!std::isfinite(v)) return std::nan("");
  }
  if (!(kL > 0)) kL = 1;
  if (!(kC > 0)) kC = 1;
  if (!(kH > 0)) kH = 1;
  constexpr double k25Pow7 = 6103515625.0;  // 25^7

  // a* is stretched by G so that near-neutral colours get hues closer to the eye's.
  const double c1 = std::hypot(first.a, first.b);
  const double c2 = std::hypot(second.a, second.b);
  const double c_mean7 = Pow7((c1 + c2) / 2.0);
  const double g = 0.5 * (1.0 - std::sqrt(c_mean7 / (c_mean7 + k25Pow7)));
  const double a1 = (1.0 + g) * first.a;
  const double a2 = (1.0 + g) * second.a;
  const double cp1 = std::hypot(a1, first.b);
  const double cp2 = std::hypot(a2, second.b);
  const double hp1 = HueDegrees(first.b, a1);
  const double hp2 = HueDegrees(second.b, a2);

  // Differences; the hue difference takes the shorter way round the circle and is
  // 0 when either colour is neutral.
  const double dL = second.L - first.L;
  const double dC = cp2 - cp1;
  double dh = 0;
  const bool neutral = cp1 * cp2 == 0;
  if (!neutral) {
    dh = hp2 - hp1;
    if (dh > 180.0) {
      dh -= 360.0;
    } else if (dh < -180.0) {
      dh += 360.0;
    }
  }
  const double dH = 2.0 * std::sqrt(cp1 * cp2) * std::sin(dh * kDegree / 2.0);

  // Means; the mean hue is taken on the shorter arc as well.
  const double l_mean = (first.L + second.L) / 2.0;
  const double cp_mean = (cp1 + cp2) / 2.0;
  double h_mean = hp1 + hp2;
  if (!neutral) {
    if (std::fabs(hp1 - hp2) <= 180.0) {
      h_mean /= 2.0;
    } else if (h_mean < 360.0) {
      h_mean = (h_mean + 360.0) / 2.0;
    } else {
      h_mean = (h_mean - 360.0) / 2.0;
    }
  }

  const double t = 1.0 - 0.17 * std::cos((h_mean - 30.0) * kDegree) +
                   0.24 * std::cos(2.0 * h_mean * kDegree) +
                   0.32 * std::cos((3.0 * h_mean + 6.0) * kDegree) -
                   0.20 * std::cos((4.0 * h_mean - 63.0) * kDegree);
  const double l50 = (l_mean - 50.0) * (l_mean - 50.0);
  const double sl = 1.0 + 0.015 * l50 / std::sqrt(20.0 + l50);
  const double sc = 1.0 + 0.045 * cp_mean;
  const double sh = 1.0 + 0.015 * cp_mean * t;
  const double d_theta = 30.0 * std::exp(-((h_mean - 275.0) / 25.0) * ((h_mean - 275.0) / 25.0));
  const double cp_mean7 = Pow7(cp_mean);
  const double rc = 2.0 * std::sqrt(cp_mean7 / (cp_mean7 + k25Pow7));
  const double rt = -std::sin(2.0 * d_theta * kDegree) * rc;

  const double tl = dL / (kL * sl);
  const double tc = dC / (kC * sc);
  const double th = dH / (kH * sh);
  return std::sqrt(tl * tl + tc * tc + th * th + rt * tc * th);
}

double XColourDifference(uint32_t first, uint32_t second) {
  return XDeltaE2000(XColourToLab(first), XColourToLab(second));
}

}  // namespace tavi
