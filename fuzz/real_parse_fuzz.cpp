//===- real_parse_fuzz.cpp - Fuzz the real parser and the displays ---------===//
//
// Draws the decimals, point, group separator and free first character, then reads
// the rest as UTF-16 text ending exactly at its terminator: reading must stop
// inside it. The same drawn numbers feed the size, ratio and speed displays, which
// must never fail on a good stream except for their zero divisors.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/format/real_text.h"
#include "tavi/format/size_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto decimals = input.Take<int8_t>();
  const auto point = input.Take<char16_t>();
  const auto group = input.Take<char16_t>();
  const auto first_free = static_cast<char16_t>(input.Take<uint8_t>() & 1);
  const auto a = input.Take<uint64_t>();
  const auto b = input.Take<uint64_t>();

  const tavi::fuzz::UnitText block(input);
  const size_t count = block.size();
  int64_t value = 0;
  const char16_t* stop =
      tavi::_StringToReal(value, decimals, block.data(), point, first_free, group);
  FUZZ_ASSERT(stop == nullptr || (stop >= block.data() && stop <= block.data() + count));

  tavi::XBuffer out;
  FUZZ_ASSERT(tavi::XWriteSize(out, a, b, point) == (b != 0));
  FUZZ_ASSERT(tavi::XWriteSize(out, a, point));
  FUZZ_ASSERT(tavi::XWritePercents(out, static_cast<uint32_t>(a), static_cast<uint32_t>(b), point));
  tavi::XWriteSizePercents(out, a, b, point);
  FUZZ_ASSERT(tavi::WriteSpeed(out, static_cast<int64_t>(b), a, point));
  return 0;
}
