//===- system_time.h - System time records ---------------------*- C++ -*-===//
//
// The broken-down system time record and the 64-bit file time that the calendar
// converts from, with the same fields and meaning on every platform.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi {

// XSystemTime is a broken-down time: the full year (1601..30827 for times that
// came from a file time), month 1..12, day of the week 0 (Sunday)..6, day 1..31,
// hour 0..23, minute 0..59, second 0..59 and millisecond 0..999. Readers check
// the fields they use; nothing here is validated on construction.
struct XSystemTime {
  uint16_t wYear;
  uint16_t wMonth;
  uint16_t wDayOfWeek;
  uint16_t wDay;
  uint16_t wHour;
  uint16_t wMinute;
  uint16_t wSecond;
  uint16_t wMilliseconds;
};

// XFileTime is a moment in UTC counted in 100-nanosecond units since 00:00 on
// 1 January 1601 (Gregorian). Counts with the top bit set are not valid times.
struct XFileTime {
  uint64_t value;
};

// The file time of 00:00 UTC on 1 January 1970, the epoch of time_t.
inline constexpr uint64_t kFileTimeOfUnixEpoch = 116444736000000000ull;

}  // namespace tavi
