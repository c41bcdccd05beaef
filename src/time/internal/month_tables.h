//===- month_tables.h - Days before each month ------------------*- C++ -*-===//
//
// The cumulative month tables of the three kinds of year: common, leap, and
// 1582, whose November lost ten days to the calendar reform.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::internal {

inline constexpr uint16_t kReformYear = 1582;
inline constexpr uint8_t kReformMonth = 11;
// In November 1582 the days 5 to 14 do not exist.
inline constexpr uint8_t kFirstMissingDay = 5;
inline constexpr uint8_t kFirstDayAfterGap = 15;

inline constexpr uint16_t kCommonYearTable[12] = {0,   31,  59,  90,  120, 151,
                                                  181, 212, 243, 273, 304, 334};
inline constexpr uint16_t kLeapYearTable[12] = {0,   31,  60,  91,  121, 152,
                                                182, 213, 244, 274, 305, 335};
inline constexpr uint16_t kReformYearTable[12] = {0,   31,  59,  90,  120, 151,
                                                  181, 212, 243, 273, 304, 324};

// The table of the year's kind (common, leap or 1582).
const uint16_t* MonthTable(uint16_t year);

}  // namespace tavi::internal
