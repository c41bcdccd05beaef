//===- date_time_text_test.cpp - Dates, times and durations as text -------===//
#include "tavi/time/date_time_text.h"

#include <gtest/gtest.h>
#include <unicode/ucal.h>
#include <unicode/udat.h>

#include <string>
#include <tuple>

#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/time/date_time.h"

namespace tavi {
namespace {

// Runs an in-memory formatter; "<null>" when it refuses. Fails the test when it
// writes beyond the text it returns.
template <typename Format>
std::u16string Mem(Format format) {
  char16_t buffer[kMaxDateTimeText + 8];
  std::fill(std::begin(buffer), std::end(buffer), u'#');
  const char16_t* end = format(buffer);
  if (end == nullptr) {
    EXPECT_EQ(buffer[0], u'#');
    return u"<null>";
  }
  EXPECT_LE(end - buffer, static_cast<ptrdiff_t>(kMaxDateTimeText));
  EXPECT_EQ(*end, u'#');
  return std::u16string(static_cast<const char16_t*>(buffer), end);
}

std::u16string Date(strDate d, uint32_t form,
                    const strEnvDateTimeOptions& o = gPortableDateTimeOptions) {
  return Mem([&](char16_t* out) { return _DateToStringEx(out, d, form, o); });
}

std::u16string DateTime(uint32_t value, uint32_t form = kDateNumeric,
                        const strEnvDateTimeOptions& o = gPortableDateTimeOptions) {
  return Mem([&](char16_t* out) { return _DateTimeToStringEx(out, value, form, o); });
}

uint32_t Value(uint16_t y, uint8_t m, uint8_t d, uint8_t h = 0, uint8_t mi = 0) {
  return GetDateTime(strDateTime(y, m, d, h, mi));
}

TEST(DateTimeText, PortableForms) {
  const std::tuple<strDate, uint32_t, const char16_t*> cases[] = {
      {{2026, 11, 23}, kDateNumeric, u"2026-11-23"},
      {{2026, 11, 23}, kDateShortMonth, u"23 Nov 2026"},
      {{2026, 11, 23}, kDateLongMonth, u"23 November 2026"},
      {{2026, 11, 23}, kDateNumeric | kDateWeekday, u"Mon 2026-11-23"},
      {{2026, 11, 22}, kDateLongMonth | kDateWeekday, u"Sunday 22 November 2026"},
      {{1, 1, 1}, kDateNumeric, u"0001-01-01"},
      {{1, 1, 1}, kDateShortMonth | kDateWeekday, u"Sun 1 Jan 0001"},  // day 0 is a Sunday
      {{1582, 11, 4}, kDateNumeric | kDateWeekday, u"Sun 1582-11-04"},
      {{1582, 11, 15}, kDateNumeric | kDateWeekday, u"Mon 1582-11-15"},  // the next day
  };
  for (const auto& [d, form, text] : cases) {
    EXPECT_EQ(Date(d, form), text) << d.year << "-" << int{d.month} << "-" << int{d.day};
  }
  EXPECT_EQ(Mem([](char16_t* o) { return _DateToString(o, strDate(987, 6, 5)); }), u"0987-06-05");
  EXPECT_EQ(Mem([](char16_t* o) { return _TimeToString(o, 0, 0); }), u"00:00");
  EXPECT_EQ(Mem([](char16_t* o) { return _TimeToString(o, 23, 59); }), u"23:59");
  EXPECT_EQ(DateTime(kMaxDateTime), u"8166-12-31 23:59");
  EXPECT_EQ(DateTime(0, kDateLongMonth | kDateWeekday), u"Sunday 1 January 0001 00:00");
  EXPECT_EQ(DateTime(Value(2026, 11, 23, 14, 5)), u"2026-11-23 14:05");
  EXPECT_EQ(Mem([](char16_t* o) { return _DateToStringEx(o, Value(2026, 1, 2, 3, 4), 1, {}); }),
            u"2 Jan 2026");
  EXPECT_EQ(Mem([](char16_t* o) { return _DateTimeToString(o, strDateTime(1582, 10, 31, 9, 7)); }),
            u"1582-10-31 09:07");
}

TEST(DateTimeText, InvalidInputWritesNothing) {
  const strDate bad[] = {{1582, 11, 10}, {1582, 11, 0}, {2023, 2, 29}, {0, 1, 1},
                         {8167, 1, 1},   {2026, 13, 1}, {2026, 4, 31}, {2026, 1, 0}};
  for (const strDate& d : bad) {
    EXPECT_EQ(Date(d, kDateLongMonth), u"<null>") << d.year << "-" << int{d.month};
  }
  EXPECT_EQ(DateTime(kMaxDateTime + 1), u"<null>");
  EXPECT_EQ(DateTime(kInvalidDateTime), u"<null>");  // not "now" here
  EXPECT_EQ(Mem([](char16_t* o) { return _TimeToString(o, 24, 0); }), u"<null>");
  EXPECT_EQ(Mem([](char16_t* o) { return _TimeToString(o, 0, 60); }), u"<null>");
  EXPECT_EQ(Mem([](char16_t* o) { return _DateTimeToString(o, strDateTime(2026, 1, 1, 0, 60)); }),
            u"<null>");

  XBuffer out;
  EXPECT_FALSE(XDateToString(out, strDate(2023, 2, 29)));
  EXPECT_EQ(out.GetErrorCode(), kErrOutOfRange);
  EXPECT_EQ(out.GetBufferPos(), 0u);
}

TEST(DateTimeText, StreamFormsAppend) {
  XBuffer out;
  ASSERT_TRUE(XDateToString(out, strDate(2026, 11, 23)));
  ASSERT_TRUE(out._Write(u"|", 2));
  ASSERT_TRUE(XTimeToString(out, 7, 30));
  ASSERT_TRUE(out._Write(u"|", 2));
  ASSERT_TRUE(XDateTimeToStringEx(out, Value(2026, 11, 23, 7, 30), kDateShortMonth,
                                  gPortableDateTimeOptions));
  ASSERT_TRUE(out._Write(u"|", 2));
  ASSERT_TRUE(XDateTimeToString(out, strDateTime(2026, 11, 23, 7, 30)));
  const std::u16string text(static_cast<const char16_t*>(out.GetBuffer()), out.GetBufferPos() / 2);
  EXPECT_EQ(text, u"2026-11-23|07:30|23 Nov 2026 07:30|2026-11-23 07:30");
}

std::string Narrow(const char16_t* b, const char16_t* e) {
  return std::string(b, e);
}

// Every day of the calendar, walked day by day beside ICU's Julian/Gregorian
// calendar. Two differences are stepped over: our calendar has no leap day in
// year 4 (the first is year 8) where ICU has 29 February 4, and ICU's reform
// falls a month earlier (4 October 1582 is followed by 15 October), so the 31
// days from 5 October to 4 November 1582 carry different names in the two;
// both then meet again at 15 November 1582. From 1 March 4 on the weekdays
// agree too (day 0 is a Sunday here and ICU's 1 January 1 a Saturday, which
// the missing leap day evens out).
TEST(DateTimeText, EveryDayAgreesWithIcu) {
  UErrorCode status = U_ZERO_ERROR;
  UDateFormat* format = udat_open(UDAT_PATTERN, UDAT_PATTERN, "en_US@calendar=gregorian", u"UTC",
                                  -1, u"EEE yyyy-MM-dd", -1, &status);
  ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  UCalendar* calendar = ucal_open(u"UTC", -1, "en_US", UCAL_GREGORIAN, &status);
  ucal_clear(calendar);
  ucal_set(calendar, UCAL_ERA, 1);
  ucal_setDate(calendar, 1, UCAL_JANUARY, 1, &status);
  ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  udat_setCalendar(format, calendar);

  const uint32_t leapDay4 = GetDayCount(strDate(4, 3, 1));
  const uint32_t renamedFrom = GetDayCount(strDate(1582, 10, 5));
  const uint32_t renamedTo = GetDayCount(strDate(1582, 11, 4));
  const uint32_t lastDay = kMaxDateTime / kMinutesPerDay;
  uint32_t mismatches = 0;
  for (uint32_t day = 0; day <= lastDay && mismatches < 5; ++day) {
    if (day == leapDay4) ucal_add(calendar, UCAL_DATE, 1, &status);  // 29 February 4
    UChar icu[64];
    const int32_t n =
        udat_format(format, ucal_getMillis(calendar, &status), icu, 64, nullptr, &status);
    char16_t ours[kMaxDateTimeText];
    const char16_t* end = _DateToStringEx(ours, day * kMinutesPerDay, kDateNumeric | kDateWeekday,
                                          gPortableDateTimeOptions);
    ASSERT_NE(end, nullptr);
    const int skip = day < leapDay4 ? 4 : 0;  // "Sun "
    if ((day < renamedFrom || day > renamedTo) &&
        std::u16string_view(icu + skip, n - skip) !=
            std::u16string_view(ours + skip, end - ours - skip)) {
      ADD_FAILURE() << "day " << day << " differs: " << Narrow(icu, icu + n) << " / "
                    << Narrow(ours, end);
      ++mismatches;
    }
    ucal_add(calendar, UCAL_DATE, 1, &status);
  }
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  ucal_close(calendar);
  udat_close(format);
}

TEST(DateTimeText, ParsesPortableTexts) {
  const std::tuple<const char16_t*, int, strDate> good[] = {
      {u"  2026-11-23 rest", 12, {2026, 11, 23}},
      {u"26-1-2", 6, {26, 1, 2}},  // years are read as written
      {u"23 nOVEMBER 2026", 16, {2026, 11, 23}},
      {u"23 November 2026", 16, {2026, 11, 23}},  // the longest name wins
      {u"Mon 2026-11-23", 14, {2026, 11, 23}},
      {u"monday 23 nov 2026", 18, {2026, 11, 23}},
      {u"4 Nov 1582", 10, {1582, 11, 4}},
      {u"8166-12-31x", 10, {8166, 12, 31}},
      {u"20261123", 0, {}},        // no separator: the year takes four digits, then "-" fails
      {u"Tue 2026-11-23", 0, {}},  // wrong weekday
      {u"2026-11-31", 0, {}},
      {u"1582-11-10", 0, {}},
      {u"1582-11-00", 0, {}},
      {u"8167-01-01", 0, {}},
      {u"2026-11", 0, {}},
      {u"", 0, {}},
      {u"Nov 23 2026", 0, {}},
  };
  for (const auto& [text, used, want] : good) {
    strDate d(7, 7, 7);
    const char16_t* end = _StringToDate(text, d);
    if (used == 0) {
      EXPECT_EQ(end, nullptr) << std::u16string_view(text).size();
      EXPECT_EQ(d.year, 7);  // untouched
      continue;
    }
    ASSERT_NE(end, nullptr) << used;
    EXPECT_EQ(end - text, used);
    EXPECT_EQ(CompareDate(d, want), 0) << d.year << "-" << int{d.month} << "-" << int{d.day};
  }
  strDate d;
  EXPECT_EQ(_StringToDateEx(u"23 Nov 2026", d, kDateNumeric, gPortableDateTimeOptions), nullptr);
  EXPECT_EQ(_StringToDate(nullptr, d), nullptr);

  uint8_t h = 99, m = 99;
  ASSERT_NE(_StringToTime(u"7:05", h, m), nullptr);
  EXPECT_EQ(h, 7);
  EXPECT_EQ(m, 5);
  EXPECT_EQ(_StringToTime(u"24:00", h, m), nullptr);
  EXPECT_EQ(_StringToTime(u"12:60", h, m), nullptr);
  EXPECT_EQ(_StringToTime(u"12", h, m), nullptr);

  strDateTime dt;
  const char16_t* t1 = u"2026-11-23T14:05Z";
  EXPECT_EQ(_StringToDateTime(t1, dt), t1 + 16);  // ISO "T" in place of the space
  EXPECT_EQ(GetDateTime(dt), Value(2026, 11, 23, 14, 5));
  const char16_t* t2 = u"Sunday 22 November 2026 \u00A0 0:00";
  EXPECT_EQ(_StringToDateTime(t2, dt), t2 + std::u16string_view(t2).size());
  uint32_t value = 0;
  EXPECT_NE(_StringToDateTimeValue(u"8166-12-31 23:59", value), nullptr);
  EXPECT_EQ(value, kMaxDateTime);
  EXPECT_EQ(_StringToDateTime(u"2026-11-23", dt), nullptr);
  EXPECT_EQ(_StringToDateTime(u"2026-11-23 x", dt), nullptr);
}

TEST(DateTimeText, CustomPatternsAndTwelveHourClock) {
  strEnvDateTimeOptions o;
  ASSERT_TRUE(o.SetTimePattern(u"h:mm:ss a"));
  ASSERT_TRUE(o.SetDatePattern(kDateNumeric, u"yyyyMMdd"));
  ASSERT_TRUE(o.SetDatePattern(kDateLongMonth | kDateWeekday, u"EEEE', the 'd' of 'LLLL y G"));
  ASSERT_TRUE(o.SetGlue(u"{0} '{'on'}' {1}"));
  const std::tuple<uint8_t, const char16_t*> hours[] = {
      {0, u"12:07:00 AM"}, {11, u"11:07:00 AM"}, {12, u"12:07:00 PM"}, {23, u"11:07:00 PM"}};
  for (const auto& [hour, text] : hours) {
    EXPECT_EQ(Mem([&](char16_t* out) { return _TimeToString(out, hour, 7, o); }), text);
    uint8_t h = 99, m = 99;
    ASSERT_NE(_StringToTime(text, h, m, o), nullptr) << hour;
    EXPECT_EQ(h, hour);
    EXPECT_EQ(m, 7);
  }
  uint8_t h, m;
  EXPECT_EQ(_StringToTime(u"11:07:00", h, m, o), nullptr);    // no marker
  EXPECT_EQ(_StringToTime(u"0:07:00 AM", h, m, o), nullptr);  // h runs 1..12
  EXPECT_EQ(_StringToTime(u"1:07:60 PM", h, m, o), nullptr);
  EXPECT_NE(_StringToTime(u"1:07:59pm", h, m, o), nullptr);  // seconds read and dropped
  EXPECT_EQ(h, 13);

  EXPECT_EQ(DateTime(Value(2026, 11, 23, 18, 30), kDateNumeric, o), u"6:30:00 PM {on} 20261123");
  EXPECT_EQ(DateTime(Value(2026, 11, 23, 18, 30), kDateLongMonth | kDateWeekday, o),
            u"6:30:00 PM {on} Monday, the 23 of November 2026 AD");
  strDateTime dt;
  const char16_t* text = u"6:30:00 PM {on} 20261123";
  EXPECT_EQ(_StringToDateTime(text, dt, o), text + 24);
  EXPECT_EQ(GetDateTime(dt), Value(2026, 11, 23, 18, 30));
  strDate d;
  EXPECT_NE(_StringToDate(u"00010101", d, o), nullptr);  // packed fields take their widths
  EXPECT_EQ(d.year, 1);
  EXPECT_EQ(_StringToDate(u"202611", d, o), nullptr);
}

// Every form of sampled values across the calendar reads back to the same
// value, for the portable record and a 12-hour locale pattern.
TEST(DateTimeText, RoundTrips) {
  strEnvDateTimeOptions twelve;
  ASSERT_TRUE(twelve.SetTimePattern(u"hh.mm a"));
  ASSERT_TRUE(twelve.SetGlue(u"{1}, {0}"));
  for (const strEnvDateTimeOptions* o :
       {&gPortableDateTimeOptions, static_cast<const strEnvDateTimeOptions*>(&twelve)}) {
    for (uint64_t v = 0; v <= kMaxDateTime; v += 999983) {
      const auto value = static_cast<uint32_t>(v);
      for (uint32_t form : {0u, 1u, 2u, 4u, 5u, 6u}) {
        char16_t text[kMaxDateTimeText + 1];
        char16_t* end = _DateTimeToStringEx(text, value, form, *o);
        ASSERT_NE(end, nullptr);
        *end = 0;
        uint32_t back = 0;
        ASSERT_EQ(_StringToDateTimeValue(text, back, *o), end) << value << " form " << form;
        ASSERT_EQ(back, value) << value << " form " << form;
      }
    }
  }
}

TEST(DateTimeText, Durations) {
  const std::tuple<uint64_t, uint64_t, uint8_t, const char16_t*> cases[] = {
      {3723400, 1000, 1, u"1:02:03.4"},
      {3723499, 1000, 1, u"1:02:03.4"},  // truncated, not rounded
      {123000, 1000, 0, u"2:03"},
      {5, 1, 2, u"0:05.00"},
      {59999, 1000, 3, u"0:59.999"},
      {3600000000000, 1000000000, 0, u"1:00:00"},
      {360000000, 1000, 9, u"100:00:00.000"},  // decimals above 3 give 3
      {UINT64_MAX, 1, 0, u"5124095576030431:00:15"},
      {UINT64_MAX, UINT64_MAX / 2, 3, u"0:02.000"},
      {UINT64_MAX - 1, UINT64_MAX, 3, u"0:00.999"},  // frequencies too fast to scale exactly
  };
  for (const auto& [ticks, frequency, decimals, text] : cases) {
    EXPECT_EQ(Mem([&](char16_t* out) {
                return _DurationToString(out, ticks, frequency, decimals, gPortableDateTimeOptions);
              }),
              text)
        << ticks << "/" << frequency;
  }
  EXPECT_EQ(Mem([](char16_t* o) { return _DurationToString(o, 5, 0, 0); }), u"<null>");
  strEnvDateTimeOptions o;
  o.TimeSeparator = u'.';
  o.DecimalPoint = u',';
  EXPECT_EQ(Mem([&](char16_t* out) { return _DurationToString(out, 3723400, 1000, 2, o); }),
            u"1.02.03,40");

  const std::tuple<const char16_t*, int, uint64_t> reads[] = {
      {u"1:02:03.4", 9, 3723400},
      {u"2:03", 4, 123000},
      {u"75:00", 5, 4500000},
      {u"7", 1, 7000},
      {u"0:05.12345", 10, 5123},
      {u"1:60", 1, 1000},        // a bad second part is not read
      {u"1:2:3:4", 5, 3723000},  // three parts at most
      {u"1:02.", 4, 62000},      // a point with no digit is not read
      {u"18446744073709551", 17, 18446744073709551000u},
      {u"18446744073709552", 0, 0},  // overflows as milliseconds
      {u"", 0, 0},
      {u":05", 0, 0},
  };
  for (const auto& [text, used, ms] : reads) {
    uint64_t got = 42;
    const char16_t* end = _StringToDuration(text, got);
    if (used == 0) {
      EXPECT_EQ(end, nullptr) << std::u16string_view(text).size();
      EXPECT_EQ(got, 42u);
      continue;
    }
    ASSERT_NE(end, nullptr) << ms;
    EXPECT_EQ(end - text, used) << ms;
    EXPECT_EQ(got, ms);
  }

  XBuffer out;
  const uint64_t f = XGetProcTimeFrequency();
  ASSERT_GT(f, 0u);
  ASSERT_TRUE(XProcTimeToString(out, f * 61 + f / 2, 1));
  EXPECT_EQ(std::u16string(static_cast<const char16_t*>(out.GetBuffer()), out.GetBufferPos() / 2),
            u"1:01.5");
}

}  // namespace
}  // namespace tavi
