//===- integer_parse_fuzz.cpp - Fuzz the integer parsers -------------------===//
//
// The first byte chooses a radix; the rest is UTF-16 text, copied into a block
// that ends exactly at its terminator so that any read beyond it is caught. Every
// parser must stop inside the text, and the decimal parsers must agree with the
// library's one-digit-per-step reading of the wrap and overflow rules.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "format/internal/digits.h"
#include "fuzz_helpers.h"
#include "tavi/format/integer_text.h"

namespace {

template <typename U>
void CheckDecimal(const char16_t* text, const char16_t* end) {
  U value = 0, expected = 0;
  const char16_t* stop = tavi::_StringToUnsigned(value, text);
  FUZZ_ASSERT(stop == tavi::internal::PlainDecimal(expected, text));
  if (stop != nullptr) FUZZ_ASSERT(value == expected && stop <= end);
}

void CheckStop(const char16_t* stop, const char16_t* text, const char16_t* end) {
  FUZZ_ASSERT(stop == nullptr || (stop > text && stop <= end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto radix = input.Take<uint8_t>();
  const tavi::fuzz::UnitText block(input);
  const size_t count = block.size();
  const char16_t* text = block.data();
  const char16_t* end = text + count;
  CheckDecimal<uint64_t>(text, end);
  CheckDecimal<uint32_t>(text, end);
  uint64_t u64;
  uint32_t u32;
  int64_t s64;
  int32_t s32;
  CheckStop(tavi::_StringToUnsigned(u64, text, radix), text, end);
  CheckStop(tavi::_StringToUnsigned(u32, text, radix), text, end);
  const char16_t* stop = tavi::_StringToSigned(s64, text);
  CheckStop(stop, text, end);
  if (stop != nullptr && s64 > 0) FUZZ_ASSERT(tavi::_StringToUnsigned(u64, text) == stop);
  CheckStop(tavi::_StringToSigned(s32, text), text, end);
  return 0;
}
