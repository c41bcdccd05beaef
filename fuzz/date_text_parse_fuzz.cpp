//===- date_text_parse_fuzz.cpp - Fuzz the date, time and duration parsers -===//
//
// The first byte chooses the options (portable, or a 12-hour record with packed
// numeric dates and the time first); the rest is UTF-16 text in a block that
// ends exactly at its terminator, so a read beyond it is caught. Every parser
// must stop inside the text, and whatever one reads must format to a text that
// reads back to the same value.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/time/date_time_text.h"

using namespace tavi;

namespace {

const strEnvDateTimeOptions& Options(uint8_t which) {
  static const strEnvDateTimeOptions twelve = [] {
    strEnvDateTimeOptions o;
    o.SetTimePattern(u"h:mm:ss a");
    o.SetDatePattern(kDateNumeric, u"yyyyMMdd");
    o.SetDatePattern(kDateLongMonth | kDateWeekday, u"EEEE', 'd' of 'LLLL y G");
    o.SetGlue(u"{0} 'on' {1}");
    o.DecimalPoint = u',';
    o.TimeSeparator = u'.';
    return o;
  }();
  return (which & 1) ? twelve : gPortableDateTimeOptions;
}

void CheckStop(const char16_t* stop, const char16_t* text, const char16_t* end) {
  FUZZ_ASSERT(stop == nullptr || (stop > text && stop <= end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::InputReader input(data, size);
  const strEnvDateTimeOptions& o = Options(input.Take<uint8_t>());
  const fuzz::UnitText block(input);
  const size_t count = block.size();
  const char16_t* text = block.data();
  const char16_t* end = text + count;
  char16_t out[kMaxDateTimeText + 1];

  strDate date;
  const char16_t* stop = _StringToDate(text, date, o);
  CheckStop(stop, text, end);
  if (stop != nullptr) {
    FUZZ_ASSERT(CheckDate(date) && date.day != 0);
    for (uint32_t form : {0u, 1u, 2u, 4u, 5u, 6u}) {
      char16_t* e = _DateToStringEx(out, date, form, o);
      FUZZ_ASSERT(e != nullptr && e - out <= static_cast<ptrdiff_t>(kMaxDateTimeText));
      *e = 0;
      strDate back;
      FUZZ_ASSERT(_StringToDateEx(out, back, form, o) == e);
      FUZZ_ASSERT(CompareDate(back, date) == 0);
    }
  }

  uint8_t hour, minute;
  stop = _StringToTime(text, hour, minute, o);
  CheckStop(stop, text, end);
  if (stop != nullptr) {
    FUZZ_ASSERT(hour < 24 && minute < 60);
    char16_t* e = _TimeToString(out, hour, minute, o);
    FUZZ_ASSERT(e != nullptr);
    *e = 0;
    uint8_t h2, m2;
    FUZZ_ASSERT(_StringToTime(out, h2, m2, o) == e && h2 == hour && m2 == minute);
  }

  uint32_t value;
  stop = _StringToDateTimeValue(text, value, o);
  CheckStop(stop, text, end);
  if (stop != nullptr) {
    FUZZ_ASSERT(value <= kMaxDateTime);
    char16_t* e = _DateTimeToString(out, value, o);
    FUZZ_ASSERT(e != nullptr);
    *e = 0;
    uint32_t back;
    FUZZ_ASSERT(_StringToDateTimeValue(out, back, o) == e && back == value);
  }

  uint64_t ms;
  stop = _StringToDuration(text, ms, o);
  CheckStop(stop, text, end);
  if (stop != nullptr) {
    char16_t* e = _DurationToString(out, ms, 1000, 3, o);
    FUZZ_ASSERT(e != nullptr && e - out <= 32);
    *e = 0;
    uint64_t back;
    FUZZ_ASSERT(_StringToDuration(out, back, o) == e && back == ms);
  }
  return 0;
}
