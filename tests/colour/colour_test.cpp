//===- colour_test.cpp - Colour spaces, greys, mixes and differences -------===//
#include "tavi/colour/colour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace tavi {
namespace {

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

TEST(Colour, ChannelsPackAsPlatformWord) {
  EXPECT_EQ(XMakeColour(0x12, 0x34, 0x56), 0x00563412u);
  EXPECT_EQ(XColourRed(0xFF563412u), 0x12);
  EXPECT_EQ(XColourGreen(0xFF563412u), 0x34);
  EXPECT_EQ(XColourBlue(0xFF563412u), 0x56);
  // The top byte is ignored on input and never produced.
  EXPECT_EQ(XRGBToColour(XColourToRGB(0xFF563412u)), 0x00563412u);
}

TEST(Colour, RoundingAndClampingToSteps) {
  EXPECT_EQ(XRGBToColour({0.5 / 255.0 - 1e-9, 1.5 / 255.0, 254.5 / 255.0 - 1e-9}),
            XMakeColour(0, 2, 254));
  EXPECT_EQ(XRGBToColour({-0.5, 1.5, NAN}), XMakeColour(0, 255, 0));
  EXPECT_EQ(XRGBToColour({-INFINITY, INFINITY, 1.0}), XMakeColour(0, 255, 255));
}

TEST(Colour, TransferCurve) {
  EXPECT_EQ(XSRGBToLinear(0), 0);
  EXPECT_DOUBLE_EQ(XSRGBToLinear(1), 1);
  EXPECT_DOUBLE_EQ(XSRGBToLinear(0.04045), 0.04045 / 12.92);
  EXPECT_NEAR(XSRGBToLinear(0.5), 0.21404114, 1e-8);
  EXPECT_DOUBLE_EQ(XLinearToSRGB(0.0031308), 0.0031308 * 12.92);
  EXPECT_DOUBLE_EQ(XLinearToSRGB(1), 1);
  // The two pieces meet (to the precision of the published thresholds).
  EXPECT_NEAR(std::pow((0.04045 + 0.055) / 1.055, 2.4), 0.04045 / 12.92, 1e-7);
  // Mirrored below zero, and the two directions are inverse across the range.
  EXPECT_DOUBLE_EQ(XSRGBToLinear(-0.5), -XSRGBToLinear(0.5));
  EXPECT_DOUBLE_EQ(XLinearToSRGB(-0.2), -XLinearToSRGB(0.2));
  for (double v = -1.25; v <= 1.25; v += 1.0 / 512) {
    EXPECT_NEAR(XLinearToSRGB(XSRGBToLinear(v)), v, 1e-12) << v;
  }
}

TEST(Colour, TablePathEqualsCurvePath) {
  // Colour values go through the table of 256 steps, floating RGB through the
  // curve: both must give the same numbers.
  for (uint32_t s = 0; s < 256; ++s) {
    const uint32_t colours[] = {XMakeColour(s, 0, 0), XMakeColour(0, s, 0), XMakeColour(0, 0, s),
                                XMakeColour(s, 255 - s, s / 2)};
    for (uint32_t c : colours) {
      const strXYZ table = XColourToXYZ(c), curve = XRGBToXYZ(XColourToRGB(c));
      EXPECT_EQ(table.x, curve.x);
      EXPECT_EQ(table.y, curve.y);
      EXPECT_EQ(table.z, curve.z);
    }
  }
  const std::vector<uint32_t> in = GridColours();
  std::vector<strLab> out(in.size());
  XColoursToLab(in.data(), out.data(), static_cast<uint32_t>(in.size()));
  for (size_t i = 0; i < in.size(); ++i) {
    const strLab one = XRGBToLab(XColourToRGB(in[i]));
    EXPECT_EQ(out[i].L, one.L);
    EXPECT_EQ(out[i].a, one.a);
    EXPECT_EQ(out[i].b, one.b);
  }
}

TEST(Colour, PrimariesAndWhiteInXyzAndxyY) {
  // XYZ of the primaries: the four-decimal table of the sRGB standard.
  const std::pair<uint32_t, strXYZ> cases[] = {
      {XMakeColour(255, 0, 0), {0.4124, 0.2126, 0.0193}},
      {XMakeColour(0, 255, 0), {0.3576, 0.7152, 0.1192}},
      {XMakeColour(0, 0, 255), {0.1805, 0.0722, 0.9505}},
      {XMakeColour(255, 255, 255), {0.9505, 1.0000, 1.0890}},
  };
  for (const auto& [colour, want] : cases) {
    const strXYZ got = XColourToXYZ(colour);
    EXPECT_NEAR(got.x, want.x, 1e-4) << std::hex << colour;
    EXPECT_NEAR(got.y, want.y, 1e-4) << std::hex << colour;
    EXPECT_NEAR(got.z, want.z, 1e-4) << std::hex << colour;
  }
  // Chromaticities come out as the ones the primaries and white are defined by.
  const std::tuple<uint32_t, double, double> xy[] = {
      {XMakeColour(255, 0, 0), 0.64, 0.33},
      {XMakeColour(0, 255, 0), 0.30, 0.60},
      {XMakeColour(0, 0, 255), 0.15, 0.06},
      {XMakeColour(255, 255, 255), 0.3127, 0.3290},
      {XMakeColour(128, 128, 128), 0.3127, 0.3290},
      {XMakeColour(0, 0, 0), 0.3127, 0.3290},  // black stays neutral
  };
  for (const auto& [colour, x, y] : xy) {
    const strxyY got = XColourToxyY(colour);
    EXPECT_NEAR(got.x, x, 1e-12) << std::hex << colour;
    EXPECT_NEAR(got.y, y, 1e-12) << std::hex << colour;
  }
  EXPECT_DOUBLE_EQ(XColourToxyY(0xFFFFFF).Y, 1.0);
  EXPECT_EQ(XColourToxyY(0).Y, 0.0);
  // A zero y has no luminance scale: black.
  const strXYZ none = XxyYToXYZ({0.3, 0.0, 0.5});
  EXPECT_EQ(none.x, 0);
  EXPECT_EQ(none.y, 0);
  EXPECT_EQ(none.z, 0);
}

TEST(Colour, LabOfKnownColours) {
  // Published L*a*b* (D65) of the sRGB primaries and secondaries, to 0.01.
  const std::pair<uint32_t, strLab> cases[] = {
      {XMakeColour(255, 255, 255), {100.0, 0.0, 0.0}},
      {XMakeColour(0, 0, 0), {0.0, 0.0, 0.0}},
      {XMakeColour(255, 0, 0), {53.24, 80.09, 67.20}},
      {XMakeColour(0, 255, 0), {87.73, -86.18, 83.18}},
      {XMakeColour(0, 0, 255), {32.30, 79.19, -107.86}},
      {XMakeColour(255, 255, 0), {97.14, -21.55, 94.48}},
      {XMakeColour(0, 255, 255), {91.11, -48.09, -14.13}},
      {XMakeColour(255, 0, 255), {60.32, 98.23, -60.82}},
  };
  for (const auto& [colour, want] : cases) {
    const strLab got = XColourToLab(colour);
    EXPECT_NEAR(got.L, want.L, 0.01) << std::hex << colour;
    EXPECT_NEAR(got.a, want.a, 0.02) << std::hex << colour;
    EXPECT_NEAR(got.b, want.b, 0.02) << std::hex << colour;
  }
  // Greys are exactly neutral, and L* 50 is the familiar 18% grey.
  for (uint32_t s = 0; s < 256; s += 15) {
    const strLab grey = XColourToLab(XMakeColour(s, s, s));
    EXPECT_NEAR(grey.a, 0, 1e-12);
    EXPECT_NEAR(grey.b, 0, 1e-12);
  }
  EXPECT_NEAR(XLabToXYZ({50, 0, 0}).y, 0.184187, 1e-6);
  // The linear piece near black: L* = 903.3 Y.
  EXPECT_NEAR(XXYZToLab({0, 0.001, 0}).L, 24389.0 / 27.0 * 0.001, 1e-9);
}

TEST(Colour, HsbAndHslAgainstReferenceValues) {
  // Reference values from Python's colorsys (hue there as a fraction of a turn).
  struct Case {
    uint32_t colour;
    double h, s_hsb, b, s_hsl, l;
  };
  const Case cases[] = {
      {XMakeColour(255, 128, 0), 0.08366013071895424, 1.0, 1.0, 1.0, 0.5},
      {XMakeColour(18, 52, 86), 0.5833333333333334, 0.7906976744186047, 0.33725490196078434,
       0.653846153846154, 0.20392156862745098},
      {XMakeColour(200, 200, 10), 0.16666666666666666, 0.95, 0.7843137254901961, 0.9047619047619049,
       0.4117647058823529},
      {XMakeColour(1, 2, 3), 0.5833333333333334, 0.6666666666666666, 0.011764705882352941, 0.5,
       0.00784313725490196},
      {XMakeColour(128, 0, 255), 0.7503267973856209, 1.0, 1.0, 1.0, 0.5},
      {XMakeColour(0, 255, 255), 0.5, 1.0, 1.0, 1.0, 0.5},
      {XMakeColour(255, 0, 1), 0.9993464052287582, 1.0, 1.0, 1.0, 0.5},
      {XMakeColour(77, 77, 77), 0.0, 0.0, 0.30196078431372547, 0.0, 0.30196078431372547},
  };
  for (const Case& c : cases) {
    const strHSB hsb = XColourToHSB(c.colour);
    const strHSL hsl = XColourToHSL(c.colour);
    EXPECT_NEAR(hsb.h, c.h * 360.0, 1e-9) << std::hex << c.colour;
    EXPECT_NEAR(hsb.s, c.s_hsb, 1e-12) << std::hex << c.colour;
    EXPECT_NEAR(hsb.b, c.b, 1e-12) << std::hex << c.colour;
    EXPECT_NEAR(hsl.h, c.h * 360.0, 1e-9) << std::hex << c.colour;
    EXPECT_NEAR(hsl.s, c.s_hsl, 1e-12) << std::hex << c.colour;
    EXPECT_NEAR(hsl.l, c.l, 1e-12) << std::hex << c.colour;
    EXPECT_LT(hsb.h, 360.0);
  }
}

TEST(Colour, HueWrapsAndComponentsClamp) {
  EXPECT_EQ(XHSBToColour({-120, 1, 1}), XMakeColour(0, 0, 255));
  EXPECT_EQ(XHSBToColour({720, 1, 1}), XMakeColour(255, 0, 0));
  EXPECT_EQ(XHSBToColour({360, 1, 1}), XMakeColour(255, 0, 0));
  EXPECT_EQ(XHSBToColour({120, 2, 7}), XMakeColour(0, 255, 0));
  EXPECT_EQ(XHSBToColour({NAN, 1, 1}), XMakeColour(255, 0, 0));
  EXPECT_EQ(XHSBToColour({60, NAN, 1}), XMakeColour(255, 255, 255));
  EXPECT_EQ(XHSLToColour({-60, 1, 0.5}), XMakeColour(255, 0, 255));
  EXPECT_EQ(XHSLToColour({30, -1, 0.5}), XMakeColour(128, 128, 128));
  EXPECT_EQ(XHSLToColour({30, 1, 2}), XMakeColour(255, 255, 255));
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
  for (uint32_t c = 0; c < 0x1000000; ++c) ExpectRoundTrips(c);
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
  // Pure green carries 0.7152 of white's luminance, pure blue 0.0722.
  EXPECT_EQ(XGreyLevel(XMakeColour(0, 255, 0)), 220);
  EXPECT_EQ(XGreyLevel(XMakeColour(0, 0, 255)), 76);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(255, 0, 0), kGreyLuma601), 76);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 255, 0), kGreyLuma601), 150);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 0, 255), kGreyLuma601), 29);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(255, 1, 0), kGreyAverage), 85);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(255, 2, 0), kGreyAverage), 86);
  EXPECT_EQ(XGreyLevelEx(XMakeColour(0, 255, 0), 99), XGreyLevel(XMakeColour(0, 255, 0)));
}

TEST(Colour, LighterAndDarker) {
  for (uint32_t c : GridColours()) {
    EXPECT_EQ(XLighterColour(c, 0), c);
    EXPECT_EQ(XDarkerColour(c, 0), c);
    EXPECT_EQ(XLighterColour(c, NAN), c);
    EXPECT_EQ(XLighterColour(c, 1), 0xFFFFFFu);
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
  double last = 0;
  for (double t = 0; t <= 1.0; t += 0.125) {
    const double l = XColourToLab(XLighterColour(XMakeColour(20, 40, 160), t)).L;
    EXPECT_GT(l, last);
    last = l;
  }
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
  EXPECT_EQ(XMixColoursEx(black, white, 0.5, 42), XMakeColour(128, 128, 128));
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
  EXPECT_DOUBLE_EQ(XDeltaE2000Ex(a, b, 1, 3, 5), plain);
  EXPECT_DOUBLE_EQ(XDeltaE2000Ex(a, b, 0, -1, NAN), plain);
  EXPECT_TRUE(std::isnan(XDeltaE2000({NAN, 0, 0}, b)));
  EXPECT_TRUE(std::isnan(XDeltaE2000(a, {50, INFINITY, 0})));
  EXPECT_EQ(XColourDifference(0x123456, 0x123456), 0);
  EXPECT_DOUBLE_EQ(XColourDifference(0x123456, 0x123457),
                   XDeltaE2000(XColourToLab(0x123456), XColourToLab(0x123457)));
  EXPECT_NEAR(XColourDifference(0, 0xFFFFFF), 100.0, 1e-9);
}

}  // namespace
}  // namespace tavi
