//===- colour.h - Colour values, colour spaces and differences --*- C++ -*-===//
//
// This file declares the colour value of the platform, its floating-point form and
// the conversions between RGB, HSB, HSL, CIE XYZ, xyY and CIE L*a*b*, together with
// grey levels, lighter, darker and mixed colours and the CIEDE2000 difference.
//
// Design
// ------
// * A colour value is a uint32_t laid out 0x00BBGGRR, the platform's colour word.
//   Functions that take one ignore its top byte; functions that make one leave it 0.
// * Every space is computed in double precision from a floating-point RGB record
//   (strRGB, each channel 0 to 1, the sRGB-encoded value that the screen receives).
//   Conversions never fail and set no error state: they are plain functions of
//   their input. Converting to a colour value rounds each channel to the nearest of
//   its 256 steps after clamping to 0..1, so any colour a conversion can describe
//   comes back as a valid colour value; NaN channels become 0.
// * RGB is sRGB: the primaries and the D65 white of IEC 61966-2-1, with the exact
//   piecewise transfer curve of that standard (linear segment below 0.04045, power
//   2.4 with offset above). The RGB <-> XYZ matrix is derived in double precision
//   from the chromaticities of the primaries and of the white point (x 0.3127,
//   y 0.3290) rather than taken from the standard's four-decimal table, so that the
//   two directions are inverses to rounding and white maps to Y = 1.
// * XYZ is scaled so that the white of the display has Y = 1 (not 100).
// * L*a*b* is relative to the same D65 white (Xn = 0.3127 / 0.3290, Yn = 1,
//   Zn = (1 - 0.3127 - 0.3290) / 0.3290), with no chromatic adaptation: sRGB white
//   is L* 100, a* 0, b* 0 to rounding. Values differ from L*a*b* relative to D50 (the
//   ICC profile connection space) for every colour but the greys.
// * Every colour value survives RGB -> space -> RGB unchanged for every space here.
// * Hues are in degrees, 0 <= h < 360; a hue outside that range is wrapped on
//   input. Saturation, brightness and lightness are 0 to 1 and clamped on input.
//   Greys have hue 0 and saturation 0.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// Floating-point sRGB: each channel 0 (none) to 1 (full), as sent to the screen.
// Conversions from other spaces may return values outside 0..1 for colours that
// sRGB cannot show; XRGBToColour clamps them.
struct strRGB {
  double r = 0;
  double g = 0;
  double b = 0;
};

// Hue (degrees, 0 to below 360), saturation and brightness (value), 0 to 1.
struct strHSB {
  double h = 0;
  double s = 0;
  double b = 0;
};

// Hue (degrees, 0 to below 360), saturation and lightness, 0 to 1.
struct strHSL {
  double h = 0;
  double s = 0;
  double l = 0;
};

// CIE 1931 tristimulus values; the white of the display has Y = 1.
struct strXYZ {
  double x = 0;
  double y = 0;
  double z = 0;
};

// Chromaticity x, y and luminance Y. Black (Y = 0) carries the chromaticity of the
// white point so that it stays a neutral colour.
struct strxyY {
  double x = 0;
  double y = 0;
  double Y = 0;
};

// CIE 1976 L*a*b* relative to D65: L 0 (black) to 100 (white), a and b around 0.
struct strLab {
  double L = 0;
  double a = 0;
  double b = 0;
};

// Chromaticity of the D65 white point and the white of L*a*b* derived from it.
inline constexpr double kWhiteD65x = 0.3127;
inline constexpr double kWhiteD65y = 0.3290;
inline constexpr strXYZ kWhiteD65 = {kWhiteD65x / kWhiteD65y, 1.0,
                                     (1.0 - kWhiteD65x - kWhiteD65y) / kWhiteD65y};

// ---- Colour values ----

// XMakeColour packs three 8-bit channels into a colour value 0x00BBGGRR.
constexpr uint32_t XMakeColour(uint8_t red, uint8_t green, uint8_t blue) {
  return uint32_t{red} | (uint32_t{green} << 8) | (uint32_t{blue} << 16);
}
constexpr uint8_t XColourRed(uint32_t colour) {
  return static_cast<uint8_t>(colour);
}
constexpr uint8_t XColourGreen(uint32_t colour) {
  return static_cast<uint8_t>(colour >> 8);
}
constexpr uint8_t XColourBlue(uint32_t colour) {
  return static_cast<uint8_t>(colour >> 16);
}

// XColourToRGB gives each channel as step / 255.
TAVI_API strRGB XColourToRGB(uint32_t colour);
// XRGBToColour clamps each channel to 0..1 (NaN to 0) and rounds it to the nearest
// of 256 steps (halves away from zero).
TAVI_API uint32_t XRGBToColour(const strRGB& rgb);

// ---- The sRGB transfer curve ----

// XSRGBToLinear turns an encoded channel into linear light: v / 12.92 up to 0.04045,
// ((v + 0.055) / 1.055)^2.4 above. XLinearToSRGB is its inverse: 12.92 l up to
// 0.0031308, 1.055 l^(1/2.4) - 0.055 above. Negative inputs are mirrored
// (f(-v) = -f(v)) so that out-of-gamut values keep their sign and stay finite.
TAVI_API double XSRGBToLinear(double value);
TAVI_API double XLinearToSRGB(double value);

// ---- Conversions of floating-point RGB ----

// HSB (also called HSV) and HSL are the usual hexcone forms of the RGB cube.
// Inputs outside 0..1 are accepted; the results then fall outside their ranges.
TAVI_API strHSB XRGBToHSB(const strRGB& rgb);
TAVI_API strRGB XHSBToRGB(const strHSB& hsb);
TAVI_API strHSL XRGBToHSL(const strRGB& rgb);
TAVI_API strRGB XHSLToRGB(const strHSL& hsl);

// XRGBToXYZ linearises the channels and applies the sRGB matrix; XXYZToRGB applies
// its inverse and encodes, returning out-of-gamut colours outside 0..1.
TAVI_API strXYZ XRGBToXYZ(const strRGB& rgb);
TAVI_API strRGB XXYZToRGB(const strXYZ& xyz);

// XXYZToxyY divides by X + Y + Z; when that sum is 0 the chromaticity of D65 is
// returned with Y = 0. XxyYToXYZ returns black when y is 0.
TAVI_API strxyY XXYZToxyY(const strXYZ& xyz);
TAVI_API strXYZ XxyYToXYZ(const strxyY& xyY);

// XXYZToLab and XLabToXYZ use the CIE formula with its exact constants (the cube
// root above (6/29)^3, its linear continuation below) and the D65 white above.
TAVI_API strLab XXYZToLab(const strXYZ& xyz);
TAVI_API strXYZ XLabToXYZ(const strLab& lab);
TAVI_API strLab XRGBToLab(const strRGB& rgb);
TAVI_API strRGB XLabToRGB(const strLab& lab);

// ---- Conversions of colour values ----

// The same conversions starting from or ending in a colour value. The forward ones
// take linear light from a table of the 256 steps (the same numbers XSRGBToLinear
// gives), so converting many colours costs no power function per channel.
TAVI_API strHSB XColourToHSB(uint32_t colour);
TAVI_API uint32_t XHSBToColour(const strHSB& hsb);
TAVI_API strHSL XColourToHSL(uint32_t colour);
TAVI_API uint32_t XHSLToColour(const strHSL& hsl);
TAVI_API strXYZ XColourToXYZ(uint32_t colour);
TAVI_API uint32_t XXYZToColour(const strXYZ& xyz);
TAVI_API strxyY XColourToxyY(uint32_t colour);
TAVI_API uint32_t XxyYToColour(const strxyY& xyY);
TAVI_API strLab XColourToLab(uint32_t colour);
TAVI_API uint32_t XLabToColour(const strLab& lab);

// XColoursToLab converts count colour values to L*a*b*; `in` and `out` hold count
// items and do not overlap. On processors with AVX2 it converts four colours at a
// time with its own cube root: results then agree with XColourToLab to within 1e-12
// (not bit for bit), and every colour still comes back through XLabToColour.
TAVI_API void XColoursToLab(const uint32_t* in, strLab* out, uint32_t count);

// ---- Grey, lighter, darker, mixed ----

// Ways of measuring a grey level (XGreyLevelEx).
inline constexpr int32_t kGreyLuminance = 0;  // grey of the same CIE luminance Y (and L*)
inline constexpr int32_t kGreyLuma601 = 1;    // 0.299 R + 0.587 G + 0.114 B on encoded steps
inline constexpr int32_t kGreyAverage = 2;    // (R + G + B) / 3 on encoded steps

// XGreyLevel returns the step (0..255) of the grey that has the colour's luminance:
// the luminance is computed in linear light and encoded back, so XMakeColour(g, g, g)
// looks as bright as the colour. Greys return their own level.
TAVI_API uint8_t XGreyLevel(uint32_t colour);
// XGreyLevelEx measures with one of the kGrey methods; an unknown method acts as
// kGreyLuminance. Results are rounded to the nearest step.
TAVI_API uint8_t XGreyLevelEx(uint32_t colour, int32_t method);
// XGreyColour returns the grey of XGreyLevel as a colour value.
TAVI_API uint32_t XGreyColour(uint32_t colour);

// XLighterColour moves the colour towards white by `amount` (0 to 1, clamped; NaN
// is 0) along a straight line in L*a*b*: amount 0 returns the colour, 1 returns
// white, 0.5 lies halfway in lightness and chroma. XDarkerColour moves towards
// black the same way. Hue is kept until the end point.
TAVI_API uint32_t XLighterColour(uint32_t colour, double amount);
TAVI_API uint32_t XDarkerColour(uint32_t colour, double amount);

// Spaces in which XMixColoursEx mixes.
inline constexpr int32_t kMixEncoded = 0;  // the sRGB steps, as alpha blending on screen does
inline constexpr int32_t kMixLinear = 1;   // linear light, as overlapping lights add up
inline constexpr int32_t kMixLab = 2;      // L*a*b*, perceptually even steps

// XMixColours returns first * (1 - weight) + second * weight in encoded sRGB, channel
// by channel and rounded; weight is clamped to 0..1 (NaN is 0), so weight 0 returns
// first and 1 returns second. XMixColoursEx mixes in one of the kMix spaces; an
// unknown space acts as kMixEncoded.
TAVI_API uint32_t XMixColours(uint32_t first, uint32_t second, double weight);
TAVI_API uint32_t XMixColoursEx(uint32_t first, uint32_t second, double weight, int32_t space);

// ---- Colour difference ----

// XDeltaE2000 returns the CIEDE2000 colour difference of two L*a*b* colours with
// the parametric factors kL = kC = kH = 1. XDeltaE2000Ex takes the factors (a
// factor of 0 or less acts as 1). The difference is symmetric, 0 for equal colours,
// and about 1 for a just-noticeable difference. Non-finite inputs give NaN, and so
// may values far outside the L*a*b* range (beyond about 1e43); nothing traps.
TAVI_API double XDeltaE2000(const strLab& first, const strLab& second);
TAVI_API double XDeltaE2000Ex(const strLab& first, const strLab& second, double kL, double kC,
                              double kH);
// XColourDifference is XDeltaE2000 of two colour values.
TAVI_API double XColourDifference(uint32_t first, uint32_t second);

}  // namespace tavi
