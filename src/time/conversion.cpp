//===- conversion.cpp - Between the minute count and calendar fields ------===//
#include <ctime>

#include "platform/time.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"
#include "time/internal/month_tables.h"

namespace tavi {

namespace {

// The value of a date and time given as wide fields; 0xFFFFFFFF when any is
// out of range. Wider than the records so that system times and tm fields are
// checked before they are narrowed.
uint32_t ValueOfFields(uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
                       uint32_t minute) {
  if (year > kLastYear || month > 12 || day > 31 || hour > 23 || minute > 59) {
    return kInvalidDateTime;
  }
  const uint32_t days = GetDayCount(
      strDate(static_cast<uint16_t>(year), static_cast<uint8_t>(month), static_cast<uint8_t>(day)));
  if (days == kInvalidDateTime) return kInvalidDateTime;
  return days * kMinutesPerDay + hour * 60 + minute;
}

uint32_t ValueOfTm(const std::tm& tm) {
  const int64_t year = int64_t{tm.tm_year} + 1900;
  if (year < 0 || year > kLastYear || tm.tm_mon < 0 || tm.tm_mday < 0 || tm.tm_hour < 0 ||
      tm.tm_min < 0) {
    return kInvalidDateTime;
  }
  return ValueOfFields(static_cast<uint32_t>(year), static_cast<uint32_t>(tm.tm_mon) + 1,
                       static_cast<uint32_t>(tm.tm_mday), static_cast<uint32_t>(tm.tm_hour),
                       static_cast<uint32_t>(tm.tm_min));
}

// The local date and time now; 0xFFFFFFFF when it cannot be had or lies
// outside the calendar.
uint32_t LocalNow() {
  std::tm tm;
  if (!SetCurrLocalTime(tm)) return kInvalidDateTime;
  return ValueOfTm(tm);
}

// The calendar year that holds day number n (n at most the last day of 8166).
uint16_t YearOfDay(uint32_t n) {
  uint32_t year;
  if (n < kFirstGregorianYearDayCount + 1) {
    const uint32_t guess = n / 365 + 1;
    const uint32_t leapDays = guess >= 9 ? (guess - 5) / 4 : 0;
    year = (n - leapDays) / 365 + 1;
  } else {
    const uint32_t guess = (n - kFirstGregorianYearDayCount) / 365 + 1583;
    const uint32_t leapDays = GetLeapYearCount(static_cast<uint16_t>(guess)) - 394;
    year = (n - leapDays - kFirstGregorianYearDayCount) / 365 + 1583;
  }
  // The estimate is at most one year early; step over the year's end.
  if (n - GetDayCount(static_cast<uint16_t>(year)) >=
      GetYearDayCount(static_cast<uint16_t>(year))) {
    ++year;
  }
  return static_cast<uint16_t>(year);
}

}  // namespace

uint32_t GetDate(const XSystemTime& time) {
  return ValueOfFields(time.wYear, time.wMonth, time.wDay, 0, 0);
}

uint32_t GetDateTime(const XSystemTime& time) {
  return ValueOfFields(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute);
}

uint32_t GetDateTime(const strDateTime& dt) {
  return ValueOfFields(dt.year, dt.month, dt.day, dt.hour, dt.minute);
}

uint32_t GetDateTime(const XFileTime& fileTime) {
  XSystemTime time;
  if (!platform::FileTimeToSystemTime(fileTime, time)) return 0;
  return GetDateTime(time);
}

uint32_t GetDateTime(const int64_t* timeT) {
  std::tm tm;
  if (timeT == nullptr || !platform::LocalTimeFromTimeT(*timeT, tm)) return 0;
  return ValueOfTm(tm);
}

bool SetCurrLocalTime(std::tm& tm) {
  return platform::LocalTimeNow(tm);
}

uint32_t XGetSystemDateTime() {
  const uint32_t now = LocalNow();
  return now == kInvalidDateTime ? 0 : now;
}

uint32_t XGetSystemDate() {
  const uint32_t now = XGetSystemDateTime();
  return now - now % kMinutesPerDay;
}

uint32_t SetYear(XDateTime& dateTime, uint32_t value) {
  if (value > kMaxDateTime) return kInvalidDateTime;
  const uint32_t n = value / kMinutesPerDay;
  const uint16_t year = YearOfDay(n);
  dateTime.year_ = year;
  return n - GetDayCount(year);
}

bool SetMonthDay(XDateTime& dateTime, uint32_t dayOfYear) {
  const uint16_t year = dateTime.year_;
  if (year < kFirstYear || year > kLastYear || dayOfYear >= GetYearDayCount(year)) return false;
  const uint16_t* table = internal::MonthTable(year);
  // Months have at most 31 days, so r / 31 + 1 is the month or the one before.
  uint32_t month = dayOfYear / 31 + 1;
  if (month < 12 && table[month] <= dayOfYear) ++month;
  uint32_t day = dayOfYear - table[month - 1] + 1;
  if (year == internal::kReformYear && month == internal::kReformMonth &&
      day >= internal::kFirstMissingDay) {
    day += internal::kFirstDayAfterGap - internal::kFirstMissingDay;
  }
  dateTime.month_ = static_cast<uint8_t>(month);
  dateTime.day_ = static_cast<uint8_t>(day);
  return true;
}

bool SetDateTime(XDateTime& dateTime, uint32_t value) {
  if (value == kInvalidDateTime) value = LocalNow();
  if (value > kMaxDateTime) return false;
  XDateTime result;
  SetMonthDay(result, SetYear(result, value));
  result.hour_ = static_cast<uint8_t>(value / 60 % 24);
  result.minute_ = static_cast<uint8_t>(value % 60);
  dateTime = result;
  return true;
}

bool SetDate(XDateTime& dateTime, uint32_t value) {
  if (value == kInvalidDateTime) value = LocalNow();
  if (value > kMaxDateTime) return false;
  return SetDateTime(dateTime, value - value % kMinutesPerDay);
}

}  // namespace tavi
