//===- date_time_text.h - Dates, times and durations as text ----*- C++ -*-===//
//
// Formatters and parsers for dates, times and date-times on the calendar's
// records and minute count, and for durations measured by the process timer,
// all driven by a strEnvDateTimeOptions record.
//
// Design. Formatting runs the record's compiled pattern over the fields: no
// pattern is parsed, nothing is allocated and no locale service is called, so a
// date-time costs about as much as writing its digits. The `_` forms write into
// caller memory and return an end pointer (room for kMaxDateTimeText characters
// is always enough; the text is not terminated); the `X` forms append the same
// text to a stream. The parsers read terminated UTF-16 text, never past its
// terminator, and return where they stopped or null. Dates before 15 November
// 1582 are Julian and the days 5 to 14 November 1582 do not exist, exactly as
// the calendar of calendar.h counts them.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time_options.h"

namespace tavi {

class XIO;

// --- Formatting into caller memory ---------------------------------------------
//
// Each writes from `out` and returns one past the last character written, or
// null (writing nothing) when the date fails CheckDate or has day 0, the hour
// is above 23 or the minute above 59. The value forms take a minute count; a
// value above kMaxDateTime (0xFFFFFFFF included: it is not "now" here) gives
// null. `form` is a date form of date_time_options.h.

// _DateToString writes the numeric date form; _DateToStringEx any form.
TAVI_API char16_t* _DateToString(char16_t* out, strDate date,
                                 const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API char16_t* _DateToStringEx(char16_t* out, strDate date, uint32_t form,
                                   const strEnvDateTimeOptions& options);
TAVI_API char16_t* _DateToStringEx(char16_t* out, uint32_t value, uint32_t form,
                                   const strEnvDateTimeOptions& options);
// _TimeToString writes the time pattern.
TAVI_API char16_t* _TimeToString(char16_t* out, uint8_t hour, uint8_t minute,
                                 const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
// _DateTimeToString writes the numeric date and the time joined by the glue;
// _DateTimeToStringEx takes the date form.
TAVI_API char16_t* _DateTimeToString(
    char16_t* out, const strDateTime& dateTime,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API char16_t* _DateTimeToString(
    char16_t* out, uint32_t value, const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API char16_t* _DateTimeToStringEx(char16_t* out, const strDateTime& dateTime, uint32_t form,
                                       const strEnvDateTimeOptions& options);
TAVI_API char16_t* _DateTimeToStringEx(char16_t* out, uint32_t value, uint32_t form,
                                       const strEnvDateTimeOptions& options);

// --- Formatting onto a stream ---------------------------------------------------
//
// The same texts appended to `out`. False when a write failed (the cause is in
// out's error state) or when the date or time is invalid: then nothing is
// written and 0x20000014 (out of range) is set in out's error state when no
// error is pending there.
TAVI_API bool XDateToString(XIO& out, strDate date,
                            const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API bool XDateToStringEx(XIO& out, strDate date, uint32_t form,
                              const strEnvDateTimeOptions& options);
TAVI_API bool XTimeToString(XIO& out, uint8_t hour, uint8_t minute,
                            const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API bool XDateTimeToString(XIO& out, const strDateTime& dateTime,
                                const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API bool XDateTimeToString(XIO& out, uint32_t value,
                                const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API bool XDateTimeToStringEx(XIO& out, uint32_t value, uint32_t form,
                                  const strEnvDateTimeOptions& options);

// --- Parsing --------------------------------------------------------------------
//
// Leading U+0020 spaces are skipped. Numbers are ASCII digits: a field followed
// directly by another number field takes exactly its pattern width, otherwise
// up to its largest width (4 for the year, 2 for the others). Names match
// without regard to case; at a month name both the short and the long names of
// both forms are tried, and the longest that matches is taken. A white-space
// character of the pattern (space, U+00A0, U+2009, U+202F) matches any run of
// them, empty included; other literals match exactly. Years are read as written
// ("26" is the year 26). A weekday that is read must be the date's weekday; a
// 12-hour field needs its AM/PM marker; seconds are read (0..59) and dropped.
// The date must pass CheckDate with a day of at least 1. On success the result
// points at the first character not consumed and the output is written; on
// failure the result is null and the output is left unchanged.

// _StringToDateEx reads one date form; _StringToDate tries the forms in the
// order numeric, short month, long month, then the same with the weekday, and
// takes the first that reads.
TAVI_API const char16_t* _StringToDate(
    const char16_t* text, strDate& date,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API const char16_t* _StringToDateEx(const char16_t* text, strDate& date, uint32_t form,
                                         const strEnvDateTimeOptions& options);
// _StringToTime reads the time pattern.
TAVI_API const char16_t* _StringToTime(
    const char16_t* text, uint8_t& hour, uint8_t& minute,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
// _StringToDateTime reads a date (any form, as _StringToDate), the glue and the
// time. Where the glue between date and time is white space, a single "T" or
// "t" is taken in its place (ISO 8601).
TAVI_API const char16_t* _StringToDateTime(
    const char16_t* text, strDateTime& dateTime,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
// _StringToDateTimeValue: the same, giving the minute count.
TAVI_API const char16_t* _StringToDateTimeValue(
    const char16_t* text, uint32_t& value,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);

// --- Durations and the process timer -------------------------------------------

// XInitProcTime reads the timer frequency (the library does so when loaded);
// XGetProcTime returns the timer's tick count now; XGetProcTimeFrequency its
// ticks per second (never 0).
TAVI_API void XInitProcTime();
TAVI_API uint64_t XGetProcTime();
TAVI_API uint64_t XGetProcTimeFrequency();

// _DurationToString writes `ticks` of a clock of `frequency` ticks per second
// as hours, minutes and seconds: "1:02:03.4" with one decimal, "2:03" below an
// hour (minutes are then not padded), "0:05" for five seconds. The fraction has
// `decimals` digits (0 to 3; more are taken as 3) and is truncated, not
// rounded, so a running display never shows a second before it has passed. The
// separator and point come from the options (TimeSeparator, DecimalPoint). A
// frequency of 0 gives null; otherwise the text is at most 32 characters.
TAVI_API char16_t* _DurationToString(
    char16_t* out, uint64_t ticks, uint64_t frequency, uint8_t decimals,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
TAVI_API bool XDurationToString(XIO& out, uint64_t ticks, uint64_t frequency, uint8_t decimals,
                                const strEnvDateTimeOptions& options = gPortableDateTimeOptions);
// XProcTimeToString writes a tick count of the process timer (a difference of
// two XGetProcTime readings) as _DurationToString does.
TAVI_API bool XProcTimeToString(XIO& out, uint64_t ticks, uint8_t decimals,
                                const strEnvDateTimeOptions& options = gPortableDateTimeOptions);

// _StringToDuration reads the text of _DurationToString back: [[h:]m:]s with an
// optional fraction of up to three digits (more digits are read and dropped),
// into milliseconds. Minutes and seconds after a separator must be below 60;
// the leading part may be any size that keeps the result within 64 bits. Null
// when no number starts the text or the result would overflow.
TAVI_API const char16_t* _StringToDuration(
    const char16_t* text, uint64_t& milliseconds,
    const strEnvDateTimeOptions& options = gPortableDateTimeOptions);

}  // namespace tavi
