//===- date_text_pattern_fuzz.cpp - Fuzz the pattern compiler and glue -----===//
//
// Compiles arbitrary UTF-16 as a date pattern, a time pattern and a glue, then
// formats a value drawn from the input with the result: the compiler must
// refuse or accept without reading past the pattern, and no text may exceed
// kMaxDateTimeText. Whatever the compiled patterns write must not crash the
// parsers that read it back.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/time/date_time_text.h"

using namespace tavi;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::InputReader input(data, size);
  const uint32_t value = input.Take<uint32_t>();
  const uint8_t slot = input.Take<uint8_t>() % kDateFormCount;
  const fuzz::UnitText block(input);
  const size_t count = block.size();
  const char16_t* text = block.data();

  strEnvDateTimeOptions o;
  strDatePattern p;
  const bool compiled = p.Compile(text, count);
  FUZZ_ASSERT(compiled || p.OpCount == 0);
  FUZZ_ASSERT(p.OpCount <= kDatePatternOps && p.TextLength <= kDatePatternText);
  o.Dates[slot] = p;
  o.Time = p;
  o.SetGlue(text);

  char16_t out[kMaxDateTimeText + 1];
  const uint32_t form = slot % 3 | (slot >= 3 ? kDateWeekday : 0);
  char16_t* end = _DateTimeToStringEx(out, value, form, o);
  FUZZ_ASSERT((end == nullptr) == (value > kMaxDateTime));
  if (end != nullptr) {
    FUZZ_ASSERT(end - out <= static_cast<ptrdiff_t>(kMaxDateTimeText));
    *end = 0;
    uint32_t back;
    const char16_t* stop = _StringToDateTimeValue(out, back, o);
    FUZZ_ASSERT(stop == nullptr || stop <= end);
    strDate d;
    stop = _StringToDate(out, d, o);
    FUZZ_ASSERT(stop == nullptr || stop <= end);
  }
  return 0;
}
