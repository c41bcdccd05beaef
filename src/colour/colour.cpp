//===- colour.cpp - Conversions between the colour spaces ----------------===//
#include "tavi/colour/colour.h"

#include <cmath>

#include "colour/internal/lab_kernel.h"
#include "colour/internal/srgb.h"

namespace tavi {

using namespace colour_internal;

namespace {

// Constants of the L*a*b* function: (6/29)^3 is where the cube root meets its
// linear continuation, whose slope is 1 / (3 (6/29)^2).
constexpr double kDelta = 6.0 / 29.0;
constexpr double kDelta3 = kDelta * kDelta * kDelta;
constexpr double kLinearSlope = 1.0 / (3.0 * kDelta * kDelta);

double LabF(double t) {
  return t > kDelta3 ? std::cbrt(t) : t * kLinearSlope + 4.0 / 29.0;
}
double LabFInverse(double f) {
  return f > kDelta ? f * f * f : (f - 4.0 / 29.0) / kLinearSlope;
}

// WrapHue brings a hue into 0 <= h < 360; NaN and infinities become 0.
double WrapHue(double h) {
  if (!std::isfinite(h)) return 0;
  h = std::fmod(h, 360.0);
  if (h < 0) h += 360.0;
  return h >= 360.0 ? 0.0 : h;
}

strXYZ LinearToXyz(double r, double g, double b) {
  const auto& m = kRgbToXyz;
  return {m[0][0] * r + m[0][1] * g + m[0][2] * b, m[1][0] * r + m[1][1] * g + m[1][2] * b,
          m[2][0] * r + m[2][1] * g + m[2][2] * b};
}

// Hue of the hexcone models from the largest channel, the spread and the channels.
double HexconeHue(const strRGB& c, double max, double delta) {
  if (delta == 0) return 0;
  double h;
  if (max == c.r) {
    h = (c.g - c.b) / delta;
  } else if (max == c.g) {
    h = (c.b - c.r) / delta + 2.0;
  } else {
    h = (c.r - c.g) / delta + 4.0;
  }
  return WrapHue(h * 60.0);
}

// RGB of a hexcone colour with chroma c at hue h, offset by m.
strRGB FromHexcone(double h, double c, double m) {
  const double sector = WrapHue(h) / 60.0;
  const double x = c * (1.0 - std::fabs(std::fmod(sector, 2.0) - 1.0));
  double r = 0, g = 0, b = 0;
  switch (static_cast<int>(sector)) {
    case 0:
      r = c, g = x;
      break;
    case 1:
      r = x, g = c;
      break;
    case 2:
      g = c, b = x;
      break;
    case 3:
      g = x, b = c;
      break;
    case 4:
      r = x, b = c;
      break;
    default:
      r = c, b = x;
      break;
  }
  return {r + m, g + m, b + m};
}

}  // namespace

const std::array<double, 256>& colour_internal::LinearTable() {
  static const std::array<double, 256> table = [] {
    std::array<double, 256> t{};
    for (int i = 0; i < 256; ++i) t[i] = XSRGBToLinear(i / 255.0);
    return t;
  }();
  return table;
}

strRGB XColourToRGB(uint32_t colour) {
  return {XColourRed(colour) / 255.0, XColourGreen(colour) / 255.0, XColourBlue(colour) / 255.0};
}

uint32_t XRGBToColour(const strRGB& rgb) {
  return ToStep(rgb.r) | (ToStep(rgb.g) << 8) | (ToStep(rgb.b) << 16);
}

double XSRGBToLinear(double value) {
  if (value < 0) return -XSRGBToLinear(-value);
  return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double XLinearToSRGB(double value) {
  if (value < 0) return -XLinearToSRGB(-value);
  return value <= 0.0031308 ? value * 12.92 : 1.055 * std::pow(value, 1.0 / 2.4) - 0.055;
}

strHSB XRGBToHSB(const strRGB& rgb) {
  const double max = std::fmax(rgb.r, std::fmax(rgb.g, rgb.b));
  const double min = std::fmin(rgb.r, std::fmin(rgb.g, rgb.b));
  const double delta = max - min;
  return {HexconeHue(rgb, max, delta), max == 0 ? 0.0 : delta / max, max};
}

strRGB XHSBToRGB(const strHSB& hsb) {
  const double s = Clamp01(hsb.s), v = Clamp01(hsb.b);
  const double c = v * s;
  return FromHexcone(hsb.h, c, v - c);
}

strHSL XRGBToHSL(const strRGB& rgb) {
  const double max = std::fmax(rgb.r, std::fmax(rgb.g, rgb.b));
  const double min = std::fmin(rgb.r, std::fmin(rgb.g, rgb.b));
  const double delta = max - min;
  const double l = (max + min) / 2.0;
  const double s = delta == 0 ? 0.0 : delta / (1.0 - std::fabs(max + min - 1.0));
  return {HexconeHue(rgb, max, delta), s, l};
}

strRGB XHSLToRGB(const strHSL& hsl) {
  const double s = Clamp01(hsl.s), l = Clamp01(hsl.l);
  const double c = (1.0 - std::fabs(2.0 * l - 1.0)) * s;
  return FromHexcone(hsl.h, c, l - c / 2.0);
}

strXYZ XRGBToXYZ(const strRGB& rgb) {
  return LinearToXyz(XSRGBToLinear(rgb.r), XSRGBToLinear(rgb.g), XSRGBToLinear(rgb.b));
}

strRGB XXYZToRGB(const strXYZ& xyz) {
  const auto& m = kXyzToRgb;
  return {XLinearToSRGB(m[0][0] * xyz.x + m[0][1] * xyz.y + m[0][2] * xyz.z),
          XLinearToSRGB(m[1][0] * xyz.x + m[1][1] * xyz.y + m[1][2] * xyz.z),
          XLinearToSRGB(m[2][0] * xyz.x + m[2][1] * xyz.y + m[2][2] * xyz.z)};
}

strxyY XXYZToxyY(const strXYZ& xyz) {
  const double sum = xyz.x + xyz.y + xyz.z;
  if (sum == 0) return {kWhiteD65x, kWhiteD65y, xyz.y};
  return {xyz.x / sum, xyz.y / sum, xyz.y};
}

strXYZ XxyYToXYZ(const strxyY& xyY) {
  if (xyY.y == 0) return {};
  const double scale = xyY.Y / xyY.y;
  return {xyY.x * scale, xyY.Y, (1.0 - xyY.x - xyY.y) * scale};
}

strLab XXYZToLab(const strXYZ& xyz) {
  const double fx = LabF(xyz.x / kWhiteD65.x);
  const double fy = LabF(xyz.y);
  const double fz = LabF(xyz.z / kWhiteD65.z);
  return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
}

strXYZ XLabToXYZ(const strLab& lab) {
  const double fy = (lab.L + 16.0) / 116.0;
  const double fx = fy + lab.a / 500.0;
  const double fz = fy - lab.b / 200.0;
  return {kWhiteD65.x * LabFInverse(fx), LabFInverse(fy), kWhiteD65.z * LabFInverse(fz)};
}

strLab XRGBToLab(const strRGB& rgb) {
  return XXYZToLab(XRGBToXYZ(rgb));
}
strRGB XLabToRGB(const strLab& lab) {
  return XXYZToRGB(XLabToXYZ(lab));
}

strHSB XColourToHSB(uint32_t colour) {
  return XRGBToHSB(XColourToRGB(colour));
}
uint32_t XHSBToColour(const strHSB& hsb) {
  return XRGBToColour(XHSBToRGB(hsb));
}
strHSL XColourToHSL(uint32_t colour) {
  return XRGBToHSL(XColourToRGB(colour));
}
uint32_t XHSLToColour(const strHSL& hsl) {
  return XRGBToColour(XHSLToRGB(hsl));
}

strXYZ XColourToXYZ(uint32_t colour) {
  const auto& lin = LinearTable();
  return LinearToXyz(lin[XColourRed(colour)], lin[XColourGreen(colour)], lin[XColourBlue(colour)]);
}

uint32_t XXYZToColour(const strXYZ& xyz) {
  return XRGBToColour(XXYZToRGB(xyz));
}
strxyY XColourToxyY(uint32_t colour) {
  return XXYZToxyY(XColourToXYZ(colour));
}
uint32_t XxyYToColour(const strxyY& xyY) {
  return XXYZToColour(XxyYToXYZ(xyY));
}
strLab XColourToLab(uint32_t colour) {
  return XXYZToLab(XColourToXYZ(colour));
}
uint32_t XLabToColour(const strLab& lab) {
  return XXYZToColour(XLabToXYZ(lab));
}

void XColoursToLab(const uint32_t* in, strLab* out, uint32_t count) {
  ColoursToLab(in, out, count);
}

}  // namespace tavi
