//===- colour_test.cpp - Colour spaces, greys, mixes and differences -------===//
#include "tavi/colour/colour.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include "colour/internal/lab_kernel.h"

namespace tavi {
namespace {

using Triple = std::array<double, 3>;

// Tri gives the three numbers of any colour record, in order.
template <typename Record>
Triple Tri(const Record& r) {
  const auto [a, b, c] = r;
  return {a, b, c};
}

void ExpectNear(const Triple& got, const Triple& want, double tolerance) {
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(got[i], want[i], tolerance) << "component " << i;
}

// Every colour whose channels are all in `steps`: a grid through the cube that
// keeps the extremes and the steps next to them.
std::vector<uint32_t> GridColours() {
  std::vector<uint8_t> steps = {0, 1, 2, 3, 127, 128, 252, 253, 254, 255};
  for (int s = 5; s < 250; s += 6) steps.push_back(static_cast<uint8_t>(s));
  std::vector<uint32_t> colours;
  for (uint8_t r : steps)
    for (uint8_t g : steps)
      for (uint8_t b : steps) colours.push_back(XMakeColour(r, g, b));
  return colours;
}

TEST(Colour, StepsAndTransferCurve) {
  // Rounding to the nearest step, clamping, NaN to 0, and the top byte left 0.
  EXPECT_EQ(XRGBToColour({0.5 / 255.0 - 1e-9, 1.5 / 255.0, 254.5 / 255.0 - 1e-9}),
            XMakeColour(0, 2, 254));
  EXPECT_EQ(XRGBToColour({-INFINITY, 1.5, NAN}), XMakeColour(0, 255, 0));

  EXPECT_EQ(XSRGBToLinear(0), 0);
  EXPECT_DOUBLE_EQ(XSRGBToLinear(1), 1);
  EXPECT_DOUBLE_EQ(XSRGBToLinear(0.04045), 0.04045 / 12.92);
  EXPECT_NEAR(XSRGBToLinear(0.5), 0.21404114, 1e-8);
  EXPECT_DOUBLE_EQ(XLinearToSRGB(0.0031308), 0.0031308 * 12.92);
  EXPECT_DOUBLE_EQ(XLinearToSRGB(1), 1);
  // Mirrored below zero, so out-of-gamut values keep their sign.
  EXPECT_DOUBLE_EQ(XSRGBToLinear(-0.5), -XSRGBToLinear(0.5));
  EXPECT_DOUBLE_EQ(XLinearToSRGB(-0.2), -XLinearToSRGB(0.2));
}

TEST(Colour, TableAndBlockPathsAgree) {
  // Colour values take linear light from the table of 256 steps, floating RGB from
  // the curve: both give the same numbers. Block conversions agree with the single
  // one on every path (exactly on the portable one) and still round-trip. The grid
  // has a size that leaves a tail after the blocks of four.
  const std::vector<uint32_t> in = GridColours();
  ASSERT_NE(in.size() % 4, 0u);
  std::vector<strLab> out(in.size());
  for (auto path : {colour_internal::LabPath::kPortable, colour_internal::LabPath::kAvx2}) {
    if (!colour_internal::SetLabPath(path)) continue;
    SCOPED_TRACE(static_cast<int>(path));
    XColoursToLab(in.data(), out.data(), static_cast<uint32_t>(in.size()));
    const double tolerance = path == colour_internal::LabPath::kPortable ? 0 : 1e-12;
    size_t bad = 0;
    for (size_t i = 0; i < in.size(); ++i) {
      const strLab one = XRGBToLab(XColourToRGB(in[i]));
      bad += std::fabs(out[i].L - one.L) > tolerance || std::fabs(out[i].a - one.a) > tolerance ||
             std::fabs(out[i].b - one.b) > tolerance || XLabToColour(out[i]) != in[i] ||
             Tri(XColourToXYZ(in[i])) != Tri(XRGBToXYZ(XColourToRGB(in[i])));
    }
    EXPECT_EQ(bad, 0u);
  }
  colour_internal::ResetLabPath();
}

TEST(Colour, KnownValues) {
  // XYZ: the four-decimal table of the sRGB standard. L*a*b*: published D65 values.
  // xy: the chromaticities the primaries and white are defined by.
  struct Case {
    uint32_t colour;
    Triple xyz, lab;
    double x, y;
  };
  const Case cases[] = {
      {0xFFFFFF, {0.9505, 1.0000, 1.0890}, {100.0, 0.0, 0.0}, 0.3127, 0.3290},
      {0x000000, {0, 0, 0}, {0, 0, 0}, 0.3127, 0.3290},  // black stays neutral
      {0x0000FF, {0.4124, 0.2126, 0.0193}, {53.24, 80.09, 67.20}, 0.64, 0.33},
      {0x00FF00, {0.3576, 0.7152, 0.1192}, {87.73, -86.18, 83.18}, 0.30, 0.60},
      {0xFF0000, {0.1805, 0.0722, 0.9505}, {32.30, 79.19, -107.86}, 0.15, 0.06},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.colour);
    ExpectNear(Tri(XColourToXYZ(c.colour)), c.xyz, 1e-4);
    ExpectNear(Tri(XColourToLab(c.colour)), c.lab, 0.02);
    const strxyY xyY = XColourToxyY(c.colour);
    EXPECT_NEAR(xyY.x, c.x, 1e-4);
    EXPECT_NEAR(xyY.y, c.y, 1e-4);
    EXPECT_EQ(xyY.Y, c.xyz[1] == 0 ? 0 : XColourToXYZ(c.colour).y);
  }
  // Exact chromaticity of red; a zero y in xyY has no luminance scale: black.
  EXPECT_NEAR(XColourToxyY(0x0000FF).x, 0.64, 1e-12);
  EXPECT_EQ(Tri(XxyYToXYZ({0.3, 0.0, 0.5})), (Triple{0, 0, 0}));
  // Greys are neutral; L* 50 is the familiar 18% grey; L* = 903.3 Y near black.
  for (uint32_t s = 0; s < 256; s += 15) {
    const strLab grey = XColourToLab(XMakeColour(s, s, s));
    ExpectNear({grey.a, grey.b, 0}, {0, 0, 0}, 1e-12);
  }
  EXPECT_NEAR(XLabToXYZ({50, 0, 0}).y, 0.184187, 1e-6);
  EXPECT_NEAR(XXYZToLab({0, 0.001, 0}).L, 24389.0 / 27.0 * 0.001, 1e-9);

  // HSB and HSL from Python's colorsys (hue there as a fraction of a turn).
  const std::tuple<uint32_t, Triple, Triple> hexcone[] = {
      {XMakeColour(255, 128, 0), {0.0836601307, 1, 1}, {0.0836601307, 1, 0.5}},
      {XMakeColour(18, 52, 86),
       {0.5833333333, 0.7906976744, 0.3372549020},
       {0.5833333333, 0.6538461538, 0.2039215686}},
      {XMakeColour(200, 200, 10),
       {1 / 6.0, 0.95, 0.7843137255},
       {1 / 6.0, 0.9047619048, 0.4117647059}},
      {XMakeColour(255, 0, 1), {0.9993464052, 1, 1}, {0.9993464052, 1, 0.5}},
      {XMakeColour(77, 77, 77), {0, 0, 0.3019607843}, {0, 0, 0.3019607843}},
  };
  for (auto [colour, hsb, hsl] : hexcone) {
    SCOPED_TRACE(colour);
    hsb[0] *= 360, hsl[0] *= 360;
    ExpectNear(Tri(XColourToHSB(colour)), hsb, 1e-7);
    ExpectNear(Tri(XColourToHSL(colour)), hsl, 1e-7);
  }
}

TEST(Colour, HueWrapsAndComponentsClamp) {
  EXPECT_EQ(XHSBToColour({-120, 1, 1}), XMakeColour(0, 0, 255));
  EXPECT_EQ(XHSBToColour({720, 2, 7}), XMakeColour(255, 0, 0));
  EXPECT_EQ(XHSBToColour({NAN, 1, 1}), XMakeColour(255, 0, 0));
  EXPECT_EQ(XHSBToColour({60, NAN, 1}), XMakeColour(255, 255, 255));
  EXPECT_EQ(XHSLToColour({-60, 1, 0.5}), XMakeColour(255, 0, 255));
  EXPECT_EQ(XHSLToColour({30, -1, 2}), XMakeColour(255, 255, 255));
  // Out-of-gamut L*a*b* is clipped channel by channel, never wrapped.
  EXPECT_EQ(XLabToColour({50, 300, 0}) & 0xFF, 255u);
  EXPECT_EQ(XLabToColour({150, 0, 0}), XMakeColour(255, 255, 255));
  EXPECT_EQ(XLabToColour({-10, 0, 0}), XMakeColour(0, 0, 0));
}

// RoundTrips checks that colour -> space -> colour returns the colour.
void ExpectRoundTrips(uint32_t c) {
  ASSERT_EQ(XHSBToColour(XColourToHSB(c)), c) << std::hex << c;
  ASSERT_EQ(XHSLToColour(XColourToHSL(c)), c) << std::hex << c;
  ASSERT_EQ(XXYZToColour(XColourToXYZ(c)), c) << std::hex << c;
  ASSERT_EQ(XxyYToColour(XColourToxyY(c)), c) << std::hex << c;
  ASSERT_EQ(XLabToColour(XColourToLab(c)), c) << std::hex << c;
  ASSERT_EQ(XRGBToColour(XColourToRGB(c)), c) << std::hex << c;
}

TEST(Colour, RoundTripsThroughEverySpace) {
  for (uint32_t c : GridColours()) ExpectRoundTrips(c);
  uint32_t x = 0x9E3779B9u;
  for (int i = 0; i < 100000; ++i) {
    x = x * 1664525u + 1013904223u;
    ExpectRoundTrips(x >> 8);
  }
}

#if TAVI_EXPENSIVE_TESTS
TEST(Colour, RoundTripsEveryColour) {
  std::vector<uint32_t> all(0x1000000);
  for (uint32_t c = 0; c < 0x1000000; ++c) ExpectRoundTrips(all[c] = c);
  std::vector<strLab> labs(all.size());
  XColoursToLab(all.data(), labs.data(), 0x1000000);
  for (uint32_t c = 0; c < 0x1000000; ++c) ASSERT_EQ(XLabToColour(labs[c]), c) << std::hex << c;
}
#endif

TEST(Colour, GreyLevels) {
  for (uint32_t s = 0; s < 256; ++s) {
    const uint32_t grey = XMakeColour(s, s, s);
    for (int32_t method : {kGreyLuminance, kGreyLuma601, kGreyAverage}) {
      EXPECT_EQ(XGreyLevelEx(grey, method), s) << s << " " << method;
    }
    EXPECT_EQ(XGreyColour(grey), grey);
  }
  // The grey has the colour's luminance to within half a step.
  for (uint32_t c : GridColours()) {
    const double y = XColourToXYZ(c).y;
    const uint8_t level = XGreyLevel(c);
    EXPECT_LE(XSRGBToLinear((level - 0.5) / 255.0), y + 1e-12) << std::hex << c;
    EXPECT_GE(XSRGBToLinear((level + 0.5) / 255.0), y - 1e-12) << std::hex << c;
  }
  // Pure green carries 0.7152 of white's luminance.
  EXPECT_EQ(XGreyLevel(XMakeColour(0, 255, 0)), 220);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 255, 0), kGreyLuma601), 150);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 0, 255), kGreyLuma601), 29);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(255, 1, 0), kGreyAverage), 85);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 255, 0), 99), XGreyLevel(XMakeColour(0, 255, 0)));
}

TEST(Colour, LighterAndDarker) {
  for (uint32_t c : GridColours()) {
    EXPECT_EQ(XLighterColour(c, NAN), c);
    EXPECT_EQ(XDarkerColour(c, 0), c);
    EXPECT_EQ(XLighterColour(c, 5), 0xFFFFFFu);
    EXPECT_EQ(XDarkerColour(c, 1), 0u);
  }
  // Lightness moves in even steps of L* and the hue stays.
  const uint32_t orange = XMakeColour(230, 120, 20);
  const strLab base = XColourToLab(orange);
  const strLab half = XColourToLab(XLighterColour(orange, 0.5));
  EXPECT_NEAR(half.L, (base.L + 100) / 2, 0.5);
  EXPECT_NEAR(std::atan2(half.b, half.a), std::atan2(base.b, base.a), 0.02);
  const strLab dark = XColourToLab(XDarkerColour(orange, 0.25));
  EXPECT_NEAR(dark.L, base.L * 0.75, 0.5);
  EXPECT_NEAR(std::atan2(dark.b, dark.a), std::atan2(base.b, base.a), 0.02);
}

TEST(Colour, Mixes) {
  const uint32_t black = 0, white = 0xFFFFFF;
  for (int32_t space : {kMixEncoded, kMixLinear, kMixLab}) {
    for (uint32_t c : GridColours()) {
      EXPECT_EQ(XMixColoursEx(c, white, 0, space), c) << space;
      EXPECT_EQ(XMixColoursEx(black, c, 1, space), c) << space;
      EXPECT_EQ(XMixColoursEx(c, c, 0.37, space), c) << space;
    }
    EXPECT_EQ(XMixColoursEx(black, white, -3, space), black) << space;
    EXPECT_EQ(XMixColoursEx(black, white, 3, space), white) << space;
    EXPECT_EQ(XMixColoursEx(black, white, NAN, space), black) << space;
  }
  // Halfway between black and white: half the steps, half the light, half of L*.
  EXPECT_EQ(XMixColours(black, white, 0.5), XMakeColour(128, 128, 128));
  EXPECT_EQ(XMixColoursEx(black, white, 0.5, kMixLinear), XMakeColour(188, 188, 188));
  EXPECT_EQ(XMixColoursEx(black, white, 0.5, kMixLab), XMakeColour(119, 119, 119));
  // Channels mix independently in the encoded and linear spaces.
  EXPECT_EQ(XMixColours(XMakeColour(255, 0, 100), XMakeColour(0, 255, 200), 0.25),
            XMakeColour(191, 64, 125));
  EXPECT_EQ(XMixColoursEx(XMakeColour(255, 0, 0), XMakeColour(0, 0, 255), 0.5, kMixLinear),
            XMakeColour(188, 0, 188));
}

TEST(Colour, DeltaE2000PublishedPairs) {
  // The 34 test pairs of Sharma, Wu and Dalal (2005), with their CIEDE2000 values.
  struct Pair {
    strLab first, second;
    double delta;
  };
  const Pair pairs[] = {
      {{50.0000, 2.6772, -79.7751}, {50.0000, 0.0000, -82.7485}, 2.0425},
      {{50.0000, 3.1571, -77.2803}, {50.0000, 0.0000, -82.7485}, 2.8615},
      {{50.0000, 2.8361, -74.0200}, {50.0000, 0.0000, -82.7485}, 3.4412},
      {{50.0000, -1.3802, -84.2814}, {50.0000, 0.0000, -82.7485}, 1.0000},
      {{50.0000, -1.1848, -84.8006}, {50.0000, 0.0000, -82.7485}, 1.0000},
      {{50.0000, -0.9009, -85.5211}, {50.0000, 0.0000, -82.7485}, 1.0000},
      {{50.0000, 0.0000, 0.0000}, {50.0000, -1.0000, 2.0000}, 2.3669},
      {{50.0000, -1.0000, 2.0000}, {50.0000, 0.0000, 0.0000}, 2.3669},
      {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0009}, 7.1792},
      {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0010}, 7.1792},
      {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0011}, 7.2195},
      {{50.0000, 2.4900, -0.0010}, {50.0000, -2.4900, 0.0012}, 7.2195},
      {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0009, -2.4900}, 4.8045},
      {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0010, -2.4900}, 4.8045},
      {{50.0000, -0.0010, 2.4900}, {50.0000, 0.0011, -2.4900}, 4.7461},
      {{50.0000, 2.5000, 0.0000}, {50.0000, 0.0000, -2.5000}, 4.3065},
      {{50.0000, 2.5000, 0.0000}, {73.0000, 25.0000, -18.0000}, 27.1492},
      {{50.0000, 2.5000, 0.0000}, {61.0000, -5.0000, 29.0000}, 22.8977},
      {{50.0000, 2.5000, 0.0000}, {56.0000, -27.0000, -3.0000}, 31.9030},
      {{50.0000, 2.5000, 0.0000}, {58.0000, 24.0000, 15.0000}, 19.4535},
      {{50.0000, 2.5000, 0.0000}, {50.0000, 3.1736, 0.5854}, 1.0000},
      {{50.0000, 2.5000, 0.0000}, {50.0000, 3.2972, 0.0000}, 1.0000},
      {{50.0000, 2.5000, 0.0000}, {50.0000, 1.8634, 0.5757}, 1.0000},
      {{50.0000, 2.5000, 0.0000}, {50.0000, 3.2592, 0.3350}, 1.0000},
      {{60.2574, -34.0099, 36.2677}, {60.4626, -34.1751, 39.4387}, 1.2644},
      {{63.0109, -31.0961, -5.8663}, {62.8187, -29.7946, -4.0864}, 1.2630},
      {{61.2901, 3.7196, -5.3901}, {61.4292, 2.2480, -4.9620}, 1.8731},
      {{35.0831, -44.1164, 3.7933}, {35.0232, -40.0716, 1.5901}, 1.8645},
      {{22.7233, 20.0904, -46.6940}, {23.0331, 14.9730, -42.5619}, 2.0373},
      {{36.4612, 47.8580, 18.3852}, {36.2715, 50.5065, 21.2231}, 1.4146},
      {{90.8027, -2.0831, 1.4410}, {91.1528, -1.6435, 0.0447}, 1.4441},
      {{90.9257, -0.5406, -0.9208}, {88.6381, -0.8985, -0.7239}, 1.5381},
      {{6.7747, -0.2908, -2.4247}, {5.8714, -0.0985, -2.2286}, 0.6377},
      {{2.0776, 0.0795, -1.1350}, {0.9033, -0.0636, -0.5514}, 0.9082},
  };
  int index = 0;
  for (const Pair& p : pairs) {
    ++index;
    EXPECT_NEAR(XDeltaE2000(p.first, p.second), p.delta, 0.5e-4) << "pair " << index;
    EXPECT_DOUBLE_EQ(XDeltaE2000(p.second, p.first), XDeltaE2000(p.first, p.second));
    EXPECT_EQ(XDeltaE2000(p.first, p.first), 0);
  }
}

TEST(Colour, DeltaE2000Factors) {
  // With a pure lightness difference only kL counts; factors of 0 or less act as 1.
  const strLab a{40, 10, 10}, b{44, 10, 10};
  const double plain = XDeltaE2000(a, b);
  EXPECT_DOUBLE_EQ(XDeltaE2000Ex(a, b, 2, 1, 1), plain / 2);
  EXPECT_DOUBLE_EQ(XDeltaE2000Ex(a, b, 0, -1, NAN), plain);
  EXPECT_TRUE(std::isnan(XDeltaE2000({NAN, 0, 0}, b)));
  EXPECT_TRUE(std::isnan(XDeltaE2000(a, {50, INFINITY, 0})));
  EXPECT_NEAR(XColourDifference(0, 0xFFFFFF), 100.0, 1e-9);
}

}  // namespace
}  // namespace tavi
