//===- double_parse_fuzz.cpp - Fuzz the double reader ----------------------===//
//
// The first byte chooses the point characters and whether the rest is read as
// UTF-16 or one byte per character (which reaches number syntax much sooner). The
// text sits in a block that ends at its terminator, so any read beyond it is caught.
// A successful read must stop inside the text, agree with the C library's reader on
// the characters taken (points mapped to "."), and print back to the same double.
//
//===----------------------------------------------------------------------===//
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/format/double_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto mode = input.Take<uint8_t>();
  const bool wide = (mode & 1) != 0;
  const char16_t point = (mode & 2) != 0 ? u',' : u'.';
  const char16_t alt = (mode & 4) != 0 ? (point == u'.' ? u',' : u'.') : 0;
  const tavi::fuzz::UnitText block(input, wide);
  const size_t count = block.size();
  const char16_t* text = block.data();

  double value = 0;
  const char16_t* stop = tavi::_StringToDouble(value, text, point, alt);
  if (stop == nullptr) return 0;
  FUZZ_ASSERT(stop > text && stop <= text + count);
  FUZZ_ASSERT(std::isfinite(value));

  // The same characters through strtod (every character taken is ASCII).
  std::string ascii;
  for (const char16_t* p = text; p != stop; ++p) {
    FUZZ_ASSERT(*p < 0x80);
    ascii += (*p == point || (alt != 0 && *p == alt)) ? '.' : static_cast<char>(*p);
  }
  char* end = nullptr;
  const double expected = std::strtod(ascii.c_str(), &end);
  FUZZ_ASSERT(end == ascii.c_str() + ascii.size());
  FUZZ_ASSERT(std::memcmp(&expected, &value, sizeof value) == 0);

  // And back: the shortest text reads as the same double.
  char16_t printed[tavi::kDoubleTextCapacity + 1];
  uint32_t length = 0;
  tavi::_DoubleToString(length, value, printed, -1, true, false, 64, u'.');
  printed[length / 2] = 0;
  double again = 0;
  FUZZ_ASSERT(tavi::_StringToDouble(again, printed, u'.', 0) == printed + length / 2);
  FUZZ_ASSERT(again == value);
  return 0;
}
