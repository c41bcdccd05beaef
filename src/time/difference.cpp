//===- difference.cpp - Comparing and differencing dates ------------------===//
#include "tavi/time/calendar.h"

namespace tavi {

namespace {

uint8_t HourOf(uint16_t time) {
  return static_cast<uint8_t>(time);
}
uint8_t MinuteOf(uint16_t time) {
  return static_cast<uint8_t>(time >> 8);
}

bool IsValid(strDate date, uint16_t time) {
  return HourOf(time) <= 23 && MinuteOf(time) <= 59 && CheckDate(date);
}

// Minutes from the start of the year or month to the date and time.
int64_t MinutesIntoDay(uint16_t time) {
  return int64_t{HourOf(time)} * 60 + MinuteOf(time);
}
int64_t MinutesIntoYear(strDate date, uint16_t time) {
  return int64_t{GetDayOfYearCount(date)} * kMinutesPerDay + MinutesIntoDay(time);
}
int64_t MinutesIntoMonth(strDate date, uint16_t time) {
  return (int64_t{date.day} - 1) * kMinutesPerDay + MinutesIntoDay(time);
}

}  // namespace

int32_t CompareDate(strDate a, strDate b) {
  if (a.year != b.year) return int32_t{a.year} - int32_t{b.year};
  if (a.month != b.month) return int32_t{a.month} - int32_t{b.month};
  return int32_t{a.day} - int32_t{b.day};
}

int32_t CompareDateTime(strDate a, uint16_t aTime, strDate b, uint16_t bTime) {
  if (const int32_t byDate = CompareDate(a, b); byDate != 0) return byDate;
  if (HourOf(aTime) != HourOf(bTime)) return int32_t{HourOf(aTime)} - int32_t{HourOf(bTime)};
  return int32_t{MinuteOf(aTime)} - int32_t{MinuteOf(bTime)};
}

int32_t GetDayDiff(strDate a, strDate b) {
  const uint32_t from = GetDayCount(a);
  const uint32_t to = GetDayCount(b);
  if (from == kInvalidDateTime || to == kInvalidDateTime) return 0;
  return static_cast<int32_t>(int64_t{to} - int64_t{from});
}

int64_t _GetYearDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime) {
  if (!IsValid(a, aTime) || !IsValid(b, bTime)) return 0;
  const int64_t yearA = int64_t{GetYearDayCount(a.year)} * kMinutesPerDay;
  const int64_t intoA = MinutesIntoYear(a, aTime);
  const int64_t intoB = MinutesIntoYear(b, bTime);
  if (a.year == b.year) return (intoB - intoA) * 10000 / yearA;
  const int64_t yearB = int64_t{GetYearDayCount(b.year)} * kMinutesPerDay;
  return (int64_t{b.year} - a.year - 1) * 10000 + (yearA - intoA) * 10000 / yearA +
         intoB * 10000 / yearB;
}

int64_t _GetMonthDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime) {
  if (!IsValid(a, aTime) || !IsValid(b, bTime)) return 0;
  const int64_t monthA = int64_t{GetMonthDayCount(a.year, a.month)} * kMinutesPerDay;
  const int64_t intoA = MinutesIntoMonth(a, aTime);
  const int64_t intoB = MinutesIntoMonth(b, bTime);
  if (a.year == b.year && a.month == b.month) return (intoB - intoA) * 10000 / monthA;
  const int64_t monthB = int64_t{GetMonthDayCount(b.year, b.month)} * kMinutesPerDay;
  const int64_t monthsBetween = (int64_t{b.year} - a.year) * 12 + b.month - a.month - 1;
  return monthsBetween * 10000 + (monthA - intoA) * 10000 / monthA + intoB * 10000 / monthB;
}

int64_t GetYearDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime) {
  if (CompareDateTime(a, aTime, b, bTime) > 0) return -_GetYearDiff(b, bTime, a, aTime);
  return _GetYearDiff(a, aTime, b, bTime);
}

int64_t GetMonthDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime) {
  if (CompareDateTime(a, aTime, b, bTime) > 0) return -_GetMonthDiff(b, bTime, a, aTime);
  return _GetMonthDiff(a, aTime, b, bTime);
}

}  // namespace tavi
