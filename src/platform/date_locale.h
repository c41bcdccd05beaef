//===- date_locale.h - A locale's calendar names and patterns ---*- C++ -*-===//
//
// The Gregorian month and weekday names, AM/PM markers, era name, first day of
// the week and date and time patterns of a locale named by its numeric
// identifier, as the platform's locale data gives them.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tavi::platform {

struct DateLocaleTexts {
  std::u16string months[12];
  std::u16string shortMonths[12];
  std::u16string standaloneMonths[12];
  std::u16string standaloneShortMonths[12];
  std::u16string weekdays[7];  // Sunday first
  std::u16string shortWeekdays[7];
  std::u16string amPm[2];
  std::u16string era;  // of the years after Christ
  // The locale's best pattern for each skeleton asked for, in that order.
  std::u16string patterns[8];
  // How a date ({1}) and a time ({0}) join, such as "{1}, {0}".
  std::u16string glue;
  // 0 = Sunday .. 6 = Saturday.
  uint8_t firstDayOfWeek = 0;
  std::u16string decimal;
};

// LoadDateLocale fills `out` for a locale identifier (0, 0x0400 and 0x0800 mean
// the default locale), with one pattern for each of the first `count` (at most
// 8) skeletons. False when the locale is unknown or its data cannot be had.
bool LoadDateLocale(uint32_t locale, const char* const* skeletons, size_t count,
                    DateLocaleTexts& out);

}  // namespace tavi::platform
