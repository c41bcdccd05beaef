//===- double_round_trip_fuzz.cpp - Fuzz double printing and reading back --===//
//
// Eight bytes are the double; the next bytes choose decimals, notation, width and
// point. The text must fit the advertised capacity and read back: exactly when the
// precision is automatic and the width ample, and otherwise to the double nearest
// to the digits printed (checked with the C library's reader). Fixed decimals are
// the exact value rounded half to even where the shortest decimal has more digits.
//
//===----------------------------------------------------------------------===//
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/format/double_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto bits = input.Take<uint64_t>();
  const auto decimals = static_cast<int8_t>(input.Take<uint8_t>());
  const auto flags = input.Take<uint8_t>();
  const auto width = input.Take<uint8_t>();
  const bool exponent = (flags & 1) != 0;
  const bool short_fraction = (flags & 2) != 0;
  const char16_t point = (flags & 4) != 0 ? u',' : u'.';
  double value;
  std::memcpy(&value, &bits, sizeof value);

  char16_t text[tavi::kDoubleTextCapacity + 1];
  uint32_t length = 0;
  FUZZ_ASSERT(tavi::_DoubleToString(length, value, text, decimals, exponent, short_fraction, width,
                                    point) == text);
  FUZZ_ASSERT(length % 2 == 0 && length / 2 <= tavi::kDoubleTextCapacity);
  text[length / 2] = 0;
  if (!std::isfinite(value)) return 0;

  std::string ascii;
  for (uint32_t i = 0; i < length / 2; ++i) ascii += text[i] == point ? '.' : char(text[i]);
  double back = 0;
  const char16_t* stop = tavi::_StringToDouble(back, text, point, 0);
  const double expected = std::strtod(ascii.c_str(), nullptr);
  if (std::isinf(expected)) {
    // Digits rounded up past the largest double ("2e+308" at width 1) do not read.
    FUZZ_ASSERT(stop == nullptr);
    return 0;
  }
  FUZZ_ASSERT(stop == text + length / 2);
  FUZZ_ASSERT(std::memcmp(&back, &expected, sizeof back) == 0 || (back == 0 && expected == 0));

  // Ample width: the shortest decimal, which reads back exactly.
  if (decimals < 0) {
    const double magnitude = std::fabs(value);
    const bool ample =
        exponent ? width >= 26
                 : magnitude == 0 || (magnitude >= 1e-3 && magnitude < 1e17 && width >= 44);
    if (ample) FUZZ_ASSERT(back == value);
  }

  // Fixed decimals against printf's exact rounding, or the shortest decimal padded.
  if (decimals >= 0 && !exponent && value != 0 && std::fabs(value) < 0x1p53) {
    char shortest[400];
    char* end =
        std::to_chars(shortest, shortest + sizeof shortest, value, std::chars_format::fixed).ptr;
    std::string s(shortest, end);
    if (s == "-0") s = "0";
    const size_t dot = s.find('.');
    const int have = dot == std::string::npos ? 0 : static_cast<int>(s.size() - dot - 1);
    std::string reference;
    if (decimals >= have) {
      reference = s + (decimals > 0 && have == 0 ? "." : "") + std::string(decimals - have, '0');
    } else {
      char printed[400];
      std::snprintf(printed, sizeof printed, "%.*f", decimals, value);
      reference = printed;
    }
    FUZZ_ASSERT(ascii == reference);
  }
  return 0;
}
