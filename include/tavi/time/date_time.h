//===- date_time.h - The date-time value class ------------------*- C++ -*-===//
//
// XDateTime holds a local date and time as fields (year, month, day, hour,
// minute) and converts, compares, differences and steps it through the
// calendar of calendar.h.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/time/calendar.h"
#include "tavi/time/system_time.h"

namespace tavi {

// XDateTime: the fields of a strDateTime, in the same order, with no base class
// and no virtual operations. The unchecked constructors and setters (those
// with a leading underscore) store what they are given; the checked setters
// refuse bad input and leave the object unchanged. Every operation is O(1) and
// safe on out-of-range fields (they give the invalid value 0xFFFFFFFF or false).
class TAVI_API XDateTime {
 public:
  // 1 January of year 1, 00:00 (the value 0).
  XDateTime() : XDateTime(1, 1, 1, 0, 0) {}
  XDateTime(uint16_t year, uint8_t month, uint8_t day, uint8_t hour, uint8_t minute)
      : year_(year), month_(month), day_(day), hour_(hour), minute_(minute) {}
  XDateTime(uint16_t year, uint8_t month, uint8_t day) : XDateTime(year, month, day, 0, 0) {}

  uint16_t GetYear() const { return year_; }
  uint8_t GetMonth() const { return month_; }
  uint8_t GetDay() const { return day_; }
  uint8_t GetHour() const { return hour_; }
  uint8_t GetMinute() const { return minute_; }

  // The fields as records.
  strDate AsDate() const { return strDate(year_, month_, day_); }
  strDateTime AsDateTime() const { return strDateTime(year_, month_, day_, hour_, minute_); }

  // GetDateTime returns the value of the whole object, or 0xFFFFFFFF when a
  // field is out of range. GetDate returns the same value, minutes included:
  // callers rely on it carrying the time of day too.
  uint32_t GetDateTime() const;
  uint32_t GetDate() const { return GetDateTime(); }

  // Fill year, month and day (GetDate) and also hour and minute (GetDateTime)
  // of a system time; its other fields are left as they are.
  void GetDate(XSystemTime& out) const;
  void GetDateTime(XSystemTime& out) const;

  // Checked setters: false, changing nothing, on a date that fails CheckDate,
  // an hour above 23 or a minute above 59. SetDate sets the time to 00:00.
  bool SetDate(strDate date);
  bool SetDateTime(const strDateTime& dateTime);
  bool SetTime(uint8_t hour, uint8_t minute);
  bool SetDate(const XSystemTime& time);
  bool SetDateTime(const XSystemTime& time);

  // Unchecked setters; _SetDate sets the time to 00:00.
  void _SetDate(strDate date) { SetFields(date.year, date.month, date.day, 0, 0); }
  void _SetDateTime(const strDateTime& dt) {
    SetFields(dt.year, dt.month, dt.day, dt.hour, dt.minute);
  }
  void _SetTime(uint8_t hour, uint8_t minute) {
    hour_ = hour;
    minute_ = minute;
  }

  // Sets the fields from a value; 0xFFFFFFFF means now. False, changing
  // nothing, for another value above kMaxDateTime or when the local time cannot
  // be had. The assignment form ignores that result.
  bool SetDateTime(uint32_t value);
  XDateTime& operator=(uint32_t value) {
    SetDateTime(value);
    return *this;
  }
  bool SetDateTime(const XDateTime& other) {
    *this = other;
    return true;
  }
  XDateTime(const XDateTime&) = default;
  XDateTime& operator=(const XDateTime&) = default;

  // Today at 00:00; now (local); now in UTC (local plus the standard-time bias
  // of the zone). False, changing nothing, when the local time cannot be had.
  bool SetSystemDate();
  bool SetSystemDateTime();
  bool SetUTCDateTime();

  // Day of the week, 0 = Sunday .. 6 = Saturday; 3 for an invalid date.
  uint32_t GetDayType() const;

  // Field-by-field comparison, this minus the argument (see CompareDateTime).
  int32_t Compare(const strDateTime& other) const;
  int32_t Compare(const XDateTime& other) const;
  // This object's value minus `value`, wrapped to 32 bits; when this object is
  // invalid, the bitwise complement of `value`.
  int32_t Compare(uint32_t value) const;

  // (other - this) in ten-thousandths of a day, from the two values; 0 when
  // either is invalid.
  int64_t GetDayDiff(const XDateTime& other) const;
  int64_t GetDayDiff(uint32_t value) const;
  // GetYearDiff/GetMonthDiff of the free functions from this to the other.
  // A value above kMaxDateTime gives 0.
  int64_t GetYearDiff(const XDateTime& other) const;
  int64_t GetYearDiff(uint32_t value) const;
  int64_t GetMonthDiff(const XDateTime& other) const;
  int64_t GetMonthDiff(uint32_t value) const;

  // Stepping. Each returns false when it would leave the calendar, and some
  // change a field first, which callers may see:
  // - NextDay: at the end of a month the day becomes 1 and the month advances;
  //   from 31 December 8166 it ends as 1 January 8166 and returns false.
  // - NextMonth: the day is clipped to the new month's length when it is 29 or
  //   more; from December 8166 the month becomes 1 and it returns false.
  // - NextYear: the day is not clipped (29 February stays); false at 8166.
  // - PreviousDay: from the first of a month the day becomes the previous
  //   month's length; from 1 January 1 the month becomes 12 and it returns false.
  // - PreviousMonth: the day is not clipped; from January 1 the month becomes 12
  //   and it returns false. PreviousYear: false at year 1.
  // - NextWeeek / PreviousWeeek: seven days on or back, through the value;
  //   false, changing nothing, for an invalid object or when the result would
  //   leave the calendar.
  // Day steps in November 1582 use its length of 21 (see GetMonthDayCount).
  bool NextDay();
  bool NextMonth();
  bool NextYear();
  bool PreviousDay();
  bool PreviousMonth();
  bool PreviousYear();
  bool NextWeeek();
  bool PreviousWeeek();

 private:
  friend TAVI_API uint32_t SetYear(XDateTime& dateTime, uint32_t value);
  friend TAVI_API bool SetMonthDay(XDateTime& dateTime, uint32_t dayOfYear);
  friend TAVI_API bool SetDate(XDateTime& dateTime, uint32_t value);
  friend TAVI_API bool SetDateTime(XDateTime& dateTime, uint32_t value);

  void SetFields(uint16_t year, uint8_t month, uint8_t day, uint8_t hour, uint8_t minute) {
    year_ = year;
    month_ = month;
    day_ = day;
    hour_ = hour;
    minute_ = minute;
  }
  bool IsValid() const;

  uint16_t year_;
  uint8_t month_;
  uint8_t day_;
  uint8_t hour_;
  uint8_t minute_;
};
static_assert(sizeof(XDateTime) == 6);

}  // namespace tavi
