//===- colour_parse_fuzz.cpp - Fuzz the colour text parser ---------------===//
//
// Draws the separator, then reads the rest as UTF-16 text ending exactly at its
// terminator: reading must stop inside it, leave the colour alone on failure, and
// a colour read must come back the same through both text forms.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/colour/colour.h"
#include "tavi/colour/colour_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto separator = input.Take<char16_t>();

  const tavi::fuzz::UnitText block(input);
  const size_t count = block.size();

  uint32_t colour = 0xFF000000u;
  const char16_t* stop = tavi::_StringToColour(colour, block.data(), separator);
  if (stop == nullptr) {
    FUZZ_ASSERT(colour == 0xFF000000u);
    return 0;
  }
  FUZZ_ASSERT(stop > block.data() && stop <= block.data() + count);
  FUZZ_ASSERT(colour <= 0xFFFFFFu);

  // Both text forms read back to the same colour, up to their ends.
  for (char16_t form : {char16_t{0}, char16_t{u','}}) {
    char16_t text[tavi::kColourTextMax + 1];
    text[tavi::kColourTextMax] = 0;
    const char16_t* first = tavi::_ColourToStringEx(colour, text + tavi::kColourTextMax, form);
    FUZZ_ASSERT(first >= text);
    uint32_t back = 0;
    FUZZ_ASSERT(tavi::_StringToColour(back, first, form) == text + tavi::kColourTextMax);
    FUZZ_ASSERT(back == colour);
  }

  // The colour also survives every colour space.
  FUZZ_ASSERT(tavi::XLabToColour(tavi::XColourToLab(colour)) == colour);
  FUZZ_ASSERT(tavi::XHSLToColour(tavi::XColourToHSL(colour)) == colour);
  return 0;
}
