//===- colour_mix.cpp - Grey levels, lighter, darker and mixed colours ----===//
#include <cmath>

#include "colour/internal/srgb.h"
#include "tavi/colour/colour.h"

namespace tavi {

using namespace colour_internal;

namespace {

// Lerp moves from a towards b by t (0..1); t = 0 gives a exactly.
double Lerp(double a, double b, double t) {
  return a + (b - a) * t;
}

strLab Lerp(const strLab& a, const strLab& b, double t) {
  return {Lerp(a.L, b.L, t), Lerp(a.a, b.a, t), Lerp(a.b, b.b, t)};
}

}  // namespace

uint8_t XGreyLevel(uint32_t colour) {
  const auto& lin = LinearTable();
  const auto& y = kRgbToXyz[1];
  const double luminance = y[0] * lin[XColourRed(colour)] + y[1] * lin[XColourGreen(colour)] +
                           y[2] * lin[XColourBlue(colour)];
  return static_cast<uint8_t>(ToStep(XLinearToSRGB(luminance)));
}

uint8_t XGreyLevelEx(uint32_t colour, int32_t method) {
  const uint32_t r = XColourRed(colour), g = XColourGreen(colour), b = XColourBlue(colour);
  switch (method) {
    case kGreyLuma601:
      // Weights in thousandths keep the sum exact; +500 rounds to nearest.
      return static_cast<uint8_t>((299 * r + 587 * g + 114 * b + 500) / 1000);
    case kGreyAverage:
      // A third never ends in a half, so adding 1 before dividing rounds to nearest.
      return static_cast<uint8_t>((r + g + b + 1) / 3);
    default:
      return XGreyLevel(colour);
  }
}

uint32_t XGreyColour(uint32_t colour) {
  const uint8_t level = XGreyLevel(colour);
  return XMakeColour(level, level, level);
}

uint32_t XLighterColour(uint32_t colour, double amount) {
  return XLabToColour(Lerp(XColourToLab(colour), strLab{100.0, 0.0, 0.0}, Clamp01(amount)));
}

uint32_t XDarkerColour(uint32_t colour, double amount) {
  return XLabToColour(Lerp(XColourToLab(colour), strLab{0.0, 0.0, 0.0}, Clamp01(amount)));
}

uint32_t XMixColours(uint32_t first, uint32_t second, double weight) {
  return XMixColoursEx(first, second, weight, kMixEncoded);
}

uint32_t XMixColoursEx(uint32_t first, uint32_t second, double weight, int32_t space) {
  const double t = Clamp01(weight);
  switch (space) {
    case kMixLinear: {
      const auto& lin = LinearTable();
      auto mix = [&](uint8_t a, uint8_t b) {
        return ToStep(XLinearToSRGB(Lerp(lin[a], lin[b], t)));
      };
      return mix(XColourRed(first), XColourRed(second)) |
             (mix(XColourGreen(first), XColourGreen(second)) << 8) |
             (mix(XColourBlue(first), XColourBlue(second)) << 16);
    }
    case kMixLab:
      return XLabToColour(Lerp(XColourToLab(first), XColourToLab(second), t));
    default: {
      auto mix = [&](uint8_t a, uint8_t b) { return ToStep(Lerp(a, b, t) / 255.0); };
      return mix(XColourRed(first), XColourRed(second)) |
             (mix(XColourGreen(first), XColourGreen(second)) << 8) |
             (mix(XColourBlue(first), XColourBlue(second)) << 16);
    }
  }
}

}  // namespace tavi
