//===- colour_convert_fuzz.cpp - Fuzz the colour conversions with any numbers ===//
//
// Reads the input as doubles (any bit pattern: NaN, infinities, huge and tiny
// values) and feeds them to every conversion towards a colour value and to the
// difference: nothing may trap, colour values keep their top byte 0, hues stay in
// 0..360 and the difference is symmetric. Any bytes left are colour values for
// the block conversion to L*a*b*.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/colour/colour.h"

namespace {

double TakeDouble(tavi::fuzz::InputReader& input) {
  const uint64_t bits = input.Take<uint64_t>();
  double v;
  std::memcpy(&v, &bits, sizeof v);
  return v;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tavi;
  fuzz::InputReader input(data, size);
  const double a = TakeDouble(input), b = TakeDouble(input), c = TakeDouble(input);
  const double d = TakeDouble(input), e = TakeDouble(input), f = TakeDouble(input);
  const uint32_t colour = input.Take<uint32_t>();

  const uint32_t results[] = {
      XRGBToColour({a, b, c}),
      XHSBToColour({a, b, c}),
      XHSLToColour({a, b, c}),
      XXYZToColour({a, b, c}),
      XxyYToColour({a, b, c}),
      XLabToColour({a, b, c}),
      XLighterColour(colour, a),
      XDarkerColour(colour, a),
      XMixColoursEx(colour, static_cast<uint32_t>(size), a, static_cast<int32_t>(colour >> 24) % 4),
  };
  for (uint32_t r : results) FUZZ_ASSERT(r <= 0xFFFFFFu);

  const strHSB hsb = XRGBToHSB({a, b, c});
  const strHSL hsl = XRGBToHSL({a, b, c});
  FUZZ_ASSERT(std::isnan(hsb.h) || (hsb.h >= 0 && hsb.h < 360));
  FUZZ_ASSERT(std::isnan(hsl.h) || (hsl.h >= 0 && hsl.h < 360));

  const double d1 = XDeltaE2000({a, b, c}, {d, e, f});
  const double d2 = XDeltaE2000({d, e, f}, {a, b, c});
  FUZZ_ASSERT((std::isnan(d1) && std::isnan(d2)) || d1 == d2 || std::fabs(d1 - d2) <= 1e-9 * d1);
  FUZZ_ASSERT(!(d1 < 0));
  // The rest of the input, as colour values, through the block conversion: it
  // agrees with the single one and every colour comes back.
  uint32_t block[9];
  const uint32_t n = static_cast<uint32_t>(std::min<size_t>(input.size() / 4, 9));
  for (uint32_t i = 0; i < n; ++i) block[i] = input.Take<uint32_t>() & 0xFFFFFFu;
  strLab labs[9];
  XColoursToLab(block, labs, n);
  for (uint32_t i = 0; i < n; ++i) {
    const strLab one = XColourToLab(block[i]);
    FUZZ_ASSERT(std::fabs(labs[i].L - one.L) <= 1e-12 && std::fabs(labs[i].a - one.a) <= 1e-12 &&
                std::fabs(labs[i].b - one.b) <= 1e-12);
    FUZZ_ASSERT(XLabToColour(labs[i]) == block[i]);
  }
  return 0;
}
