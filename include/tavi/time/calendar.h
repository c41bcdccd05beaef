//===- calendar.h - Calendar arithmetic on the minute count -----*- C++ -*-===//
//
// The date and date-time records, the 32-bit minute count that stands for a
// local date and time, and the free functions that check, convert, compare and
// difference them. The calendar runs from 1 January of year 1 to 31 December
// 8166; it is Julian up to 4 November 1582 and Gregorian from 15 November 1582.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <ctime>

#include "tavi/export.h"
#include "tavi/time/system_time.h"

namespace tavi {

class XDateTime;

// The minute count ("date-time value") is the number of minutes from 00:00 on
// 1 January of year 1. A date alone is the value of its midnight.
inline constexpr uint32_t kInvalidDateTime = 0xFFFFFFFF;
// 31 December 8166, 23:59: the largest valid value.
inline constexpr uint32_t kMaxDateTime = 4294902239u;
inline constexpr uint16_t kFirstYear = 1;
inline constexpr uint16_t kLastYear = 8166;
inline constexpr uint32_t kMinutesPerDay = 1440;
// Day count of 1 January 1583, the first day of the first Gregorian year.
inline constexpr uint32_t kFirstGregorianYearDayCount = 577814;

// strDate is a calendar date. Seen as one 32-bit word (ToWord) the year is in
// the low 16 bits, the month in bits 16-23 and the day in bits 24-31; that word
// does not order dates numerically, so comparisons go field by field. The
// default constructor leaves the fields undefined; the other stores them as
// given, without checking.
struct strDate {
  uint16_t year;
  uint8_t month;
  uint8_t day;

  strDate() = default;
  constexpr strDate(uint16_t y, uint8_t m, uint8_t d) : year(y), month(m), day(d) {}

  constexpr uint32_t ToWord() const {
    return uint32_t{year} | uint32_t{month} << 16 | uint32_t{day} << 24;
  }
  static constexpr strDate FromWord(uint32_t word) {
    return strDate(static_cast<uint16_t>(word), static_cast<uint8_t>(word >> 16),
                   static_cast<uint8_t>(word >> 24));
  }
};
static_assert(sizeof(strDate) == 4);

// strDateTime is a date followed by an hour (0..23) and a minute (0..59). The
// hour-minute word taken by CompareDateTime and the difference functions has
// the hour in the low byte and the minute in the high byte (TimeWord).
struct strDateTime : strDate {
  uint8_t hour;
  uint8_t minute;

  strDateTime() = default;
  constexpr strDateTime(uint16_t y, uint8_t m, uint8_t d, uint8_t h, uint8_t mi)
      : strDate(y, m, d), hour(h), minute(mi) {}

  constexpr uint16_t TimeWord() const {
    return static_cast<uint16_t>(uint16_t{hour} | uint16_t{minute} << 8);
  }
};
static_assert(sizeof(strDateTime) == 6);

// Builds the hour-minute word of CompareDateTime and the difference functions.
constexpr uint16_t MakeTimeWord(uint8_t hour, uint8_t minute) {
  return static_cast<uint16_t>(uint16_t{hour} | uint16_t{minute} << 8);
}

// --- Years and months ---------------------------------------------------------

// IsLeapYear: Julian up to 1582, where years 1 to 7 have no leap year and then
// every fourth year is one (8, 12, ...); Gregorian from 1583.
TAVI_API bool IsLeapYear(uint16_t year);

// GetLeapYearCount returns the number of leap years before `year`.
TAVI_API uint32_t GetLeapYearCount(uint16_t year);

// GetYearDayCount returns 0 for year 0, 355 for 1582 (the reform year), 366
// for a leap year and 365 otherwise.
TAVI_API uint32_t GetYearDayCount(uint16_t year);

// GetMonthDayCount returns the days of a month: 28 or 29 for February, 30 or
// 31 otherwise, and 0 for a month outside 1..12. November 1582 gives 21: that
// is the length the day steppers use (NextDay walks 1..21 and then goes to 1
// December), although only the days 1-4 and 15-30 of that month are dates.
TAVI_API uint8_t GetMonthDayCount(uint16_t year, uint8_t month);

// GetMonthDayCount(day, from, to) counts the dates from `from` to `to`, both
// included, whose day of the month is `day`: how many times "the 31st" or "the
// 15th" comes round in the range. Months that lack the day (30 February, the
// 5th-14th of November 1582) do not count. Returns 0 when `day` is outside
// 1..31 or `from` is later than `to`, and 0xFFFFFFFF when either end fails
// CheckDate. Cost: linear in the number of months spanned (at most ~98,000).
TAVI_API uint32_t GetMonthDayCount(uint8_t day, strDate from, strDate to);

// The same over the dates of two date-time values (their times are ignored).
// Values above kMaxDateTime give 0xFFFFFFFF.
TAVI_API uint32_t GetMonthDayCount(uint8_t day, uint32_t from, uint32_t to);

// --- Day counts ---------------------------------------------------------------

// GetDayCount returns the number of days from 1 January of year 1 to 1 January
// of `year`, to the first of the month, or to the date itself; 0xFFFFFFFF for a
// year outside 1..8166, a month outside 1..12, or a date that fails CheckDate.
// The days 5 to 14 of November 1582 do not exist: 15 November follows 4 November.
TAVI_API uint32_t GetDayCount(uint16_t year);
TAVI_API uint32_t GetDayCount(uint16_t year, uint8_t month);
TAVI_API uint32_t GetDayCount(strDate date);

// GetDayOfYearCount returns the 0-based day of the year from the month lengths
// of the year's kind, without correcting for the November 1582 gap (so 15
// November 1582 gives 318). The fields are not checked: a month outside 1..12
// gives 0xFFFFFFFF.
TAVI_API uint32_t GetDayOfYearCount(strDate date);

// CheckDate: year 1..8166, month 1..12, 1 <= day <= month length; in November
// 1582 the day must be below 5 or from 15 to 30. A day of 0 in November 1582
// passes, and callers rely on that staying so.
TAVI_API bool CheckDate(strDate date);

// --- Conversions to the minute count ------------------------------------------

// GetDate returns the value of the midnight of a system time's date;
// GetDateTime adds its hour and minute. 0xFFFFFFFF for a bad date, an hour
// above 23 or a minute above 59 (seconds are ignored).
TAVI_API uint32_t GetDate(const XSystemTime& time);
TAVI_API uint32_t GetDateTime(const XSystemTime& time);
TAVI_API uint32_t GetDateTime(const strDateTime& dateTime);

// GetDateTime of a file time: the file time's UTC date and time (no zone is
// applied); 0 when the file time cannot be broken into fields, 0xFFFFFFFF when
// its year lies beyond 8166.
TAVI_API uint32_t GetDateTime(const XFileTime& fileTime);

// GetDateTime of a time_t (seconds since 1970-01-01 00:00 UTC) in local time;
// 0 for a null pointer or when the local time cannot be had.
TAVI_API uint32_t GetDateTime(const int64_t* timeT);

// XGetSystemDateTime returns the local date and time now, 0 when the local time
// cannot be had; XGetSystemDate returns today's midnight (a multiple of 1440).
TAVI_API uint32_t XGetSystemDateTime();
TAVI_API uint32_t XGetSystemDate();

// SetCurrLocalTime fills `tm` with the current local time; false on failure.
TAVI_API bool SetCurrLocalTime(std::tm& tm);

// --- Conversions from the minute count ----------------------------------------

// SetYear stores the year of `value` in `dateTime` and returns the 0-based day
// within that year in day-count terms (15 November 1582 is day 308); for a value
// above kMaxDateTime it returns 0xFFFFFFFF and changes nothing.
TAVI_API uint32_t SetYear(XDateTime& dateTime, uint32_t value);

// SetMonthDay stores the month and day of the 0-based `dayOfYear` of the
// object's year (as returned by SetYear); false, changing nothing, when the year
// is outside the calendar or the day lies beyond the year's end.
TAVI_API bool SetMonthDay(XDateTime& dateTime, uint32_t dayOfYear);

// SetDate stores the date of `value` with the time 00:00; SetDateTime stores
// date, hour and minute. 0xFFFFFFFF means now. False, changing nothing, for
// other values above kMaxDateTime or when the local time cannot be had.
TAVI_API bool SetDate(XDateTime& dateTime, uint32_t value);
TAVI_API bool SetDateTime(XDateTime& dateTime, uint32_t value);

// --- Comparisons and differences ----------------------------------------------

// CompareDate and CompareDateTime return the difference (first minus second)
// of the first field that differs, in the order year, month, day, hour,
// minute; 0 when all are equal. The times are hour-minute words.
TAVI_API int32_t CompareDate(strDate a, strDate b);
TAVI_API int32_t CompareDateTime(strDate a, uint16_t aTime, strDate b, uint16_t bTime);

// GetDayDiff returns the number of days from a to b (positive when b is
// later); 0 when either date fails CheckDate.
TAVI_API int32_t GetDayDiff(strDate a, strDate b);

// GetYearDiff and GetMonthDiff return the fractional number of years or months
// from a to b in ten-thousandths: 0 when equal, negative when b is earlier.
// Each partial year or month is measured in minutes against its own length and
// truncated, so 1 January to 1 July 00:00 of a common year is 4958, and 15 March
// 12:00 to 15 April 12:00 is 5322 + 4833 = 10155 months/10000. Invalid dates,
// hours or minutes give 0.
TAVI_API int64_t GetYearDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime);
TAVI_API int64_t GetMonthDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime);

// _GetYearDiff and _GetMonthDiff do the work for a not later than b; for a
// later than b the result is meaningless (but finite). Invalid fields give 0.
TAVI_API int64_t _GetYearDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime);
TAVI_API int64_t _GetMonthDiff(strDate a, uint16_t aTime, strDate b, uint16_t bTime);

}  // namespace tavi
