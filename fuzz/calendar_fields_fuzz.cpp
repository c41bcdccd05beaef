//===- calendar_fields.cpp - Fuzz the calendar with arbitrary fields ------===//
//
// Feeds arbitrary dates, times and values to every calendar operation: none
// may crash or overflow, and every valid date must survive a round trip
// through its value.
//
//===----------------------------------------------------------------------===//
#include "fuzz_helpers.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"

using namespace tavi;

namespace {

strDateTime TakeDateTime(fuzz::InputReader& in) {
  const uint16_t year = in.Take<uint16_t>();
  const uint8_t month = in.Take<uint8_t>();
  const uint8_t day = in.Take<uint8_t>();
  const uint8_t hour = in.Take<uint8_t>();
  const uint8_t minute = in.Take<uint8_t>();
  return strDateTime(year, month, day, hour, minute);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::InputReader in(data, size);
  const strDateTime a = TakeDateTime(in);
  const strDateTime b = TakeDateTime(in);
  const uint32_t value = in.Take<uint32_t>();
  const uint8_t step = in.Take<uint8_t>();

  XDateTime d;
  d._SetDateTime(a);
  const uint32_t v = d.GetDateTime();
  if (v != kInvalidDateTime) {
    FUZZ_ASSERT(v <= kMaxDateTime);
    XDateTime back;
    FUZZ_ASSERT(back.SetDateTime(v));
    FUZZ_ASSERT(back.GetDateTime() == v);
  }
  (void)GetDayOfYearCount(a);
  (void)GetDayDiff(a, b);
  (void)GetYearDiff(a, a.TimeWord(), b, b.TimeWord());
  (void)GetMonthDiff(a, a.TimeWord(), b, b.TimeWord());
  (void)_GetYearDiff(a, a.TimeWord(), b, b.TimeWord());
  (void)_GetMonthDiff(a, a.TimeWord(), b, b.TimeWord());
  (void)GetMonthDayCount(a.day, a, b);
  (void)GetMonthDayCount(b.day, value, v);
  (void)d.Compare(value);
  (void)d.GetDayDiff(value);
  (void)d.GetYearDiff(value);
  (void)d.GetMonthDiff(value);
  (void)d.GetDayType();

  if (value != kInvalidDateTime) {
    XDateTime fromValue;
    FUZZ_ASSERT(fromValue.SetDateTime(value) == (value <= kMaxDateTime));
    if (value <= kMaxDateTime) FUZZ_ASSERT(fromValue.GetDateTime() == value);
  }

  for (unsigned i = 0; i < 8; ++i) {
    switch ((step >> i) & 7) {
      case 0:
        d.NextDay();
        break;
      case 1:
        d.PreviousDay();
        break;
      case 2:
        d.NextMonth();
        break;
      case 3:
        d.PreviousMonth();
        break;
      case 4:
        d.NextYear();
        break;
      case 5:
        d.PreviousYear();
        break;
      case 6:
        d.NextWeeek();
        break;
      default:
        d.PreviousWeeek();
        break;
    }
  }
  (void)d.GetDateTime();
  return 0;
}
