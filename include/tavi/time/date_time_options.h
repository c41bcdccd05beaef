//===- date_time_options.h - Names and patterns of dates and times -*- C++ -*-===//
//
// strEnvDateTimeOptions carries everything the date and time formatters and
// parsers read: month and weekday names, the AM/PM markers, the first day of the
// week, and the date, time and date-time patterns, compiled once into a small
// program so that formatting never looks at a pattern text again.
//
// Design. A record is either portable (ISO 8601 numeric forms, English names)
// or filled from a locale through ICU (its patterns for the skeletons "yMd",
// "yMMMd", "yMMMMd" and their weekday variants, "jm" for the time, and its
// date-time glue such as "{1}, {0}"). Every date form is chosen by a form
// number: numeric, short month name or long month name, with or without the
// weekday (kDateWeekday). The record is plain data, copied bytewise, allocates
// nothing and has a fixed size; text produced from any record is bounded by
// kMaxDateTimeText characters, which the pattern compiler enforces.
//
// Years are always written in full: a two-letter year field ("yy") of a locale
// pattern is read as the full year, since the calendar runs from year 1 to 8166
// and a two-digit year could not be read back.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "tavi/export.h"

namespace tavi {

// Date forms. A form is one of the three month styles, optionally or-ed with
// kDateWeekday.
inline constexpr uint32_t kDateNumeric = 0;     // 2026-11-23
inline constexpr uint32_t kDateShortMonth = 1;  // 23 Nov 2026
inline constexpr uint32_t kDateLongMonth = 2;   // 23 November 2026
inline constexpr uint32_t kDateWeekday = 4;     // adds the weekday name
inline constexpr uint32_t kDateFormCount = 6;   // index = style + 3 * (weekday ? 1 : 0)

// The longest name kept (longer locale names keep the portable name).
inline constexpr size_t kDateNameCapacity = 31;
// The most instructions and literal characters one compiled pattern holds.
inline constexpr size_t kDatePatternOps = 24;
inline constexpr size_t kDatePatternText = 48;
// The longest text one compiled pattern may produce; longer patterns are refused.
inline constexpr size_t kMaxDatePatternText = 120;
// The longest text any formatter of date_time_text.h writes (date, glue, time).
inline constexpr size_t kMaxDateTimeText = 2 * kMaxDatePatternText + 16;

// strDateName: one counted name (not terminated).
struct strDateName {
  uint8_t Length = 0;
  char16_t Text[kDateNameCapacity] = {};
};

// strDatePattern: a compiled pattern. Each instruction writes either a literal
// from Text or one field; Width is the field's minimum digit count or its name
// style. Built only by Compile; a pattern that failed to compile is empty
// (OpCount 0) and formats as empty text.
struct TAVI_API strDatePattern {
  // Instruction kinds.
  enum : uint8_t {
    kLiteral,
    kYear,
    kMonth,           // numeric
    kMonthName,       // Width 0 short, 1 long (format forms)
    kStandaloneName,  // Width 0 short, 1 long (stand-alone forms)
    kDay,
    kWeekdayName,  // Width 0 short, 1 long
    kHour23,       // H: 0..23
    kHour24,       // k: 1..24
    kHour12,       // h: 1..12
    kHour11,       // K: 0..11
    kMinute,
    kSecond,  // always 0: values are whole minutes
    kAmPm,
    kEra,
  };
  struct Op {
    uint8_t Kind;
    uint8_t Width;
    uint8_t Offset;  // literal: first character in Text
    uint8_t Length;  // literal: character count
  };
  // Which fields the pattern holds.
  enum : uint8_t { kHasDate = 1, kHasTime = 2, kHasWeekday = 4, kHasAmPm = 8, kHas12Hour = 16 };

  uint8_t OpCount = 0;
  uint8_t Fields = 0;
  uint8_t TextLength = 0;
  Op Ops[kDatePatternOps] = {};
  char16_t Text[kDatePatternText] = {};

  // Compile reads a pattern of letters: y year; M and L month (1-2 numeric, 3
  // short name, 4 and more long name); d day; E and c weekday (4 long, else
  // short); H, k, h, K hour; m minute; s second; a, b, B the AM/PM marker; G era.
  // Other ASCII letters are refused; text between single quotes is literal and ''
  // is a quote; everything else is literal. False, leaving the pattern empty,
  // for a refused letter, a U+0000 character, an unterminated quote, a field
  // repeated more than 8 times, or a pattern that exceeds the instruction,
  // literal or output bounds.
  // `length` counts characters; the text need not be terminated.
  bool Compile(const char16_t* pattern, size_t length);
};

// strDateTimeGlue: how a date and a time join into a date-time: Before, then one
// part, Between, the other part, After. TimeFirst puts the time first.
struct strDateTimeGlue {
  uint8_t TimeFirst = 0;
  uint8_t BeforeLength = 0;
  uint8_t BetweenLength = 1;
  uint8_t AfterLength = 0;
  char16_t Text[12] = {u' '};  // Before, Between and After in that order
};

// strEnvDateTimeOptions: the names and compiled patterns of one locale, or the
// portable settings (what the default constructor gives):
//   numeric "yyyy-MM-dd", short "d MMM yyyy", long "d MMMM yyyy", with weekday
//   "EEE yyyy-MM-dd", "EEE d MMM yyyy", "EEEE d MMMM yyyy"; time "HH:mm"; a
//   date-time is the date, one space and the time ("2026-11-23 14:05", the ISO
//   8601 form with the space that RFC 3339 allows; the parsers also take "T");
//   English names; Monday as the first day of the week (ISO 8601); point ".".
struct TAVI_API strEnvDateTimeOptions {
  strDateName Months[12];
  strDateName ShortMonths[12];
  strDateName StandaloneMonths[12];
  strDateName StandaloneShortMonths[12];
  strDateName Weekdays[7];  // Sunday first, as XDateTime::GetDayType numbers them
  strDateName ShortWeekdays[7];
  strDateName AmPm[2];
  strDateName Era;
  strDatePattern Dates[kDateFormCount];
  strDatePattern Time;
  strDateTimeGlue Glue;
  // First day of the week, 0 = Sunday .. 6 = Saturday.
  uint8_t FirstDayOfWeek = 1;
  // The decimal point of durations ("1:02:03.4").
  char16_t DecimalPoint = u'.';
  // The separator of durations, taken from the time pattern (":" when it has none).
  char16_t TimeSeparator = u':';

  strEnvDateTimeOptions() { SetPortable(); }
  // The portable settings, then SetLocale(locale).
  explicit strEnvDateTimeOptions(uint32_t locale);

  // SetPortable restores every field to the portable settings.
  void SetPortable();
  // SetLocale fills the record from a locale identifier (0x0400 = the user's
  // default locale) through ICU's Gregorian calendar data. A name longer than
  // kDateNameCapacity or a pattern that does not compile keeps its previous
  // value. False, changing nothing, when the locale is unknown to ICU.
  bool SetLocale(uint32_t locale);

  // SetDatePattern compiles `pattern` (terminated) for a date form; false,
  // changing nothing, for a form above kDateLongMonth | kDateWeekday or a
  // pattern that does not compile. SetTimePattern does the same for the time.
  bool SetDatePattern(uint32_t form, const char16_t* pattern);
  bool SetTimePattern(const char16_t* pattern);
  // SetGlue takes a pattern such as "{1}, {0}" ({1} the date, {0} the time);
  // false, changing nothing, unless both appear once and the literals fit.
  bool SetGlue(const char16_t* glue);

  // The compiled pattern of a date form (form bits above the weekday flag are
  // ignored).
  const strDatePattern& DatePattern(uint32_t form) const {
    const uint32_t style = (form & 3) > 2 ? 2 : (form & 3);
    return Dates[style + ((form & kDateWeekday) ? 3 : 0)];
  }
};

static_assert(std::is_trivially_copyable_v<strEnvDateTimeOptions>, "options copy bytewise");

// The portable settings, for locale-independent text (file names, logs).
TAVI_API extern const strEnvDateTimeOptions gPortableDateTimeOptions;

}  // namespace tavi
