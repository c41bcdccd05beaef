//===- real_round_trip_fuzz.cpp - Reals to text and back -------------------===//
//
// Draws a value, its decimals, whether zeros are kept and the point; the text of
// every form must read back to the same value, and the terminated form must match
// the plain one.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/format/real_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto value = input.Take<int64_t>();
  const auto decimals = static_cast<int8_t>(input.Take<uint8_t>() % 11);
  const auto flags = input.Take<uint8_t>();
  const bool keep_zeros = (flags & 1) != 0;
  const char16_t point = (flags & 2) != 0 ? u',' : u'.';

  char16_t plain[40];
  char16_t* const end = plain + 39;
  *end = 0;
  const char16_t* first = tavi::_RealToString(value, decimals, keep_zeros, end, point);
  FUZZ_ASSERT(first >= plain && end - first <= 22);
  char16_t ex[40];
  const char16_t* ex_first = tavi::_RealToStringEx(value, decimals, keep_zeros, ex + 40, point);
  FUZZ_ASSERT(ex[39] == 0 && ex + 39 - ex_first == end - first);
  FUZZ_ASSERT(std::memcmp(first, ex_first, static_cast<size_t>(end - first) * 2) == 0);

  int64_t back = ~value;
  FUZZ_ASSERT(tavi::_StringToReal(back, decimals, first, point, 0, u' ') == end);
  FUZZ_ASSERT(back == value);
  return 0;
}
