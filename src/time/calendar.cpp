//===- calendar.cpp - Leap years, day counts and date checks --------------===//
#include "tavi/time/calendar.h"

#include "tavi/time/date_time.h"
#include "time/internal/month_tables.h"

namespace tavi {

using internal::kFirstDayAfterGap;
using internal::kFirstMissingDay;
using internal::kReformMonth;
using internal::kReformYear;

namespace internal {

const uint16_t* MonthTable(uint16_t year) {
  if (year == kReformYear) return kReformYearTable;
  return IsLeapYear(year) ? kLeapYearTable : kCommonYearTable;
}

}  // namespace internal

namespace {

// Julian leap years before year y (8, 12, ... below y); none below 9.
uint32_t JulianLeapYearsBefore(uint32_t y) {
  return y >= 9 ? (y - 5) / 4 : 0;
}

// Gregorian leap years from 1583 to y - 1.
uint32_t GregorianLeapYearsBefore(uint32_t y) {
  if (y < 1584) return 0;
  return (y - 1201) / 400 - (y - 1501) / 100 + (y - 1581) / 4;
}

}  // namespace

bool IsLeapYear(uint16_t year) {
  if (year <= kReformYear) return year >= 8 && year % 4 == 0;
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

uint32_t GetLeapYearCount(uint16_t year) {
  if (year > kReformYear) return 394 + GregorianLeapYearsBefore(year);
  return JulianLeapYearsBefore(year);
}

uint32_t GetYearDayCount(uint16_t year) {
  if (year == 0) return 0;
  if (year == kReformYear) return 355;
  return IsLeapYear(year) ? 366 : 365;
}

uint8_t GetMonthDayCount(uint16_t year, uint8_t month) {
  if (month < 1 || month > 12) return 0;
  if (month == 2) return IsLeapYear(year) ? 29 : 28;
  if (year == kReformYear && month == kReformMonth) return 21;
  const unsigned m = month < 8 ? month + 1u : month;
  return m % 2 == 0 ? 31 : 30;
}

uint32_t GetDayCount(uint16_t year) {
  if (year == 0 || year > kLastYear) return kInvalidDateTime;
  if (year <= kReformYear) return (year - 1u) * 365u + JulianLeapYearsBefore(year);
  return (year - 1583u) * 365u + GregorianLeapYearsBefore(year) + kFirstGregorianYearDayCount;
}

uint32_t GetDayCount(uint16_t year, uint8_t month) {
  if (month < 1 || month > 12) return kInvalidDateTime;
  const uint32_t yearStart = GetDayCount(year);
  if (yearStart == kInvalidDateTime) return kInvalidDateTime;
  return yearStart + internal::MonthTable(year)[month - 1];
}

uint32_t GetDayCount(strDate date) {
  if (!CheckDate(date)) return kInvalidDateTime;
  const uint32_t monthStart = GetDayCount(date.year, date.month);
  if (date.year == kReformYear && date.month == kReformMonth && date.day >= kFirstMissingDay) {
    return monthStart + date.day - 11u;
  }
  // A day of 0 (which CheckDate lets through in November 1582) is the last day
  // of the month before.
  return monthStart + date.day - 1u;
}

uint32_t GetDayOfYearCount(strDate date) {
  if (date.month < 1 || date.month > 12) return kInvalidDateTime;
  return internal::MonthTable(date.year)[date.month - 1] + date.day - 1u;
}

bool CheckDate(strDate date) {
  if (date.year < kFirstYear || date.year > kLastYear) return false;
  if (date.month < 1 || date.month > 12) return false;
  if (date.year == kReformYear && date.month == kReformMonth) {
    return date.day < kFirstMissingDay || (date.day >= kFirstDayAfterGap && date.day <= 30);
  }
  return date.day >= 1 && date.day <= GetMonthDayCount(date.year, date.month);
}

uint32_t GetMonthDayCount(uint8_t day, strDate from, strDate to) {
  if (!CheckDate(from) || !CheckDate(to)) return kInvalidDateTime;
  if (day < 1 || day > 31 || CompareDate(from, to) > 0) return 0;
  uint32_t count = 0;
  uint16_t year = from.year;
  uint8_t month = from.month;
  for (;;) {
    const strDate candidate(year, month, day);
    if (CheckDate(candidate) && CompareDate(candidate, from) >= 0 &&
        CompareDate(candidate, to) <= 0) {
      ++count;
    }
    if (year == to.year && month == to.month) break;
    if (++month > 12) {
      month = 1;
      ++year;
    }
  }
  return count;
}

uint32_t GetMonthDayCount(uint8_t day, uint32_t from, uint32_t to) {
  if (from > kMaxDateTime || to > kMaxDateTime) return kInvalidDateTime;
  XDateTime a, b;
  SetDate(a, from);
  SetDate(b, to);
  return GetMonthDayCount(day, a.AsDate(), b.AsDate());
}

}  // namespace tavi
