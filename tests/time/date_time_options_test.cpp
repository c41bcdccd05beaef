//===- date_time_options_test.cpp - Pattern compiler and locale records ---===//
#include "tavi/time/date_time_options.h"

#include <gtest/gtest.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <cstring>
#include <string>
#include <tuple>

#include "tavi/time/date_time.h"
#include "tavi/time/date_time_text.h"

namespace tavi {
namespace {

std::u16string Format(const strDatePattern& p, uint32_t value) {
  strEnvDateTimeOptions o;
  o.Dates[0] = p;
  char16_t text[kMaxDateTimeText];
  char16_t* end = _DateToStringEx(text, value, kDateNumeric, o);
  if (end == nullptr) return u"<null>";
  return std::u16string(text, end);
}

TEST(DateTimeOptions, CompilesPatterns) {
  const uint32_t value = GetDateTime(strDateTime(987, 3, 4, 15, 6));  // a Friday
  const std::tuple<const char16_t*, const char16_t*> good[] = {
      {u"y", u"987"},
      {u"yy", u"987"},  // never a two-digit year
      {u"yyyy.M.d", u"0987.3.4"},
      {u"MM/dd", u"03/04"},
      {u"MMM LLLL", u"Mar March"},
      {u"E EEEE c", u"Fri Friday Fri"},
      {u"H:mm k h K a", u"15:06 15 3 3 PM"},
      {u"HH:mm:ss", u"15:06:00"},
      {u"'o''clock' ''G''", u"o'clock 'AD'"},
      {u"d\u00A0MMM — y.", u"4\u00A0Mar — 987."},
      {u"", u""},
  };
  for (const auto& [pattern, text] : good) {
    strDatePattern p;
    ASSERT_TRUE(p.Compile(pattern, std::u16string_view(pattern).size()))
        << std::u16string_view(pattern).size();
    EXPECT_EQ(Format(p, value), text);
  }
  const char16_t* bad[] = {
      u"yyyy Q",           // a letter without a field
      u"d 'unterminated",  // open quote
      u"ddd",              // no day name
      u"HHH",
      u"mmm",
      u"yyyyyyyyy",
      u"EEEE EEEE EEEE EEEE",  // four names at capacity exceed the output bound
      u"'0123456789012345678901234567890123456789012345678'",  // literal store
      u"d.d.d.d.d.d.d.d.d.d.d.d.d",                            // instruction store
  };
  for (const char16_t* pattern : bad) {
    strDatePattern p;
    p.OpCount = 3;
    EXPECT_FALSE(p.Compile(pattern, std::u16string_view(pattern).size())) << int{pattern[0]};
    EXPECT_EQ(p.OpCount, 0);  // left empty
  }
  strDatePattern p;
  EXPECT_FALSE(p.Compile(u"y-\0-d", 5));  // no terminator inside a text
  EXPECT_FALSE(p.Compile(u"'\0'", 3));
  EXPECT_TRUE(p.Compile(u"y-M-dXYZ", 5));  // the length bounds the text
  EXPECT_EQ(Format(p, value), u"987-3-4");
}

TEST(DateTimeOptions, SettersRefuseBadInput) {
  strEnvDateTimeOptions o;
  EXPECT_FALSE(o.SetDatePattern(3, u"y"));
  EXPECT_FALSE(o.SetDatePattern(8, u"y"));
  EXPECT_FALSE(o.SetDatePattern(0, u"Q"));
  EXPECT_FALSE(o.SetTimePattern(nullptr));
  for (const char16_t* glue : {u"{1}", u"{0}{0}{1}", u"{1} '{0}", u"{1} 0123456789012 {0}"}) {
    EXPECT_FALSE(o.SetGlue(glue));
  }
  char16_t text[kMaxDateTimeText];
  const uint32_t v = GetDateTime(strDateTime(2026, 11, 23, 8, 9));
  EXPECT_EQ(std::u16string(text, _DateTimeToString(text, v, o)), u"2026-11-23 08:09");
  ASSERT_TRUE(o.SetGlue(u"[{0}|{1}]"));
  ASSERT_TRUE(o.SetTimePattern(u"H.mm"));
  EXPECT_EQ(o.TimeSeparator, u'.');
  EXPECT_EQ(std::u16string(text, _DateTimeToString(text, v, o)), u"[8.09|2026-11-23]");
  o.SetPortable();
  EXPECT_EQ(std::u16string(text, _DateTimeToString(text, v, o)), u"2026-11-23 08:09");
}

// Locale records against ICU formatting the same skeletons' patterns.
TEST(DateTimeOptions, LocaleFormsMatchIcu) {
  const char* skeletons[] = {"yMd", "yMMMd", "yMMMMd", "yMEd", "yMMMEd", "yMMMMEEEEd", "jm"};
  const uint32_t forms[] = {0, 1, 2, 4, 5, 6};
  const std::tuple<uint32_t, uint8_t> locales[] = {{0x0409, 0}, {0x0407, 1}, {0x040C, 1},
                                                   {0x0419, 1}, {0x0411, 0}, {0x0416, 0}};
  for (const auto& [lcid, firstDay] : locales) {
    char name[64];
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLocaleForLCID(lcid, name, 48, &status);
    std::strcat(name, "@calendar=gregorian");
    SCOPED_TRACE(name);
    strEnvDateTimeOptions o;
    ASSERT_TRUE(o.SetLocale(lcid));
    EXPECT_EQ(o.FirstDayOfWeek, firstDay);
    UDateTimePatternGenerator* generator = udatpg_open(name, &status);
    for (int k = 0; k < 7; ++k) {
      UChar skeleton[16], pattern[128];
      u_uastrcpy(skeleton, skeletons[k]);
      const int32_t n = udatpg_getBestPattern(generator, skeleton, -1, pattern, 128, &status);
      UDateFormat* format =
          udat_open(UDAT_PATTERN, UDAT_PATTERN, name, u"UTC", -1, pattern, n, &status);
      ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
      // Gregorian dates from 1600 to 2400 at uneven steps, every hour of the day.
      const uint32_t first = GetDateTime(strDateTime(1600, 1, 1, 0, 0));
      const uint32_t last = GetDateTime(strDateTime(2400, 1, 1, 0, 0));
      for (uint32_t v = first; v < last; v += 3 * 1440 * 97 + 61) {
        const uint32_t unixDays = v / 1440 - GetDayCount(strDate(1970, 1, 1));
        const UDate when =
            (static_cast<double>(static_cast<int32_t>(unixDays)) * 1440 + v % 1440) * 60000.0;
        UChar icu[128];
        const int32_t m = udat_format(format, when, icu, 128, nullptr, &status);
        char16_t ours[kMaxDateTimeText];
        char16_t* end;
        if (k < 6) {
          end = _DateToStringEx(ours, v, forms[k], o);
        } else {
          XDateTime d;
          d.SetDateTime(v);
          end = _TimeToString(ours, d.GetHour(), d.GetMinute(), o);
        }
        ASSERT_NE(end, nullptr);
        ASSERT_EQ(std::u16string_view(ours, end - ours), std::u16string_view(icu, m))
            << skeletons[k] << " at " << v;
        // And the text reads back.
        *end = 0;
        if (k < 6) {
          strDate back;
          ASSERT_EQ(_StringToDateEx(ours, back, forms[k], o), end) << skeletons[k] << " at " << v;
          ASSERT_EQ(GetDayCount(back), v / 1440);
        } else {
          uint8_t h, mi;
          ASSERT_EQ(_StringToTime(ours, h, mi, o), end) << v;
          ASSERT_EQ(h * 60 + mi, static_cast<int>(v % 1440));
        }
      }
      udat_close(format);
    }
    udatpg_close(generator);
    // Whole date-times read back through the locale's glue.
    for (uint32_t v = 0; v < kMaxDateTime; v += 7777777) {
      char16_t text[kMaxDateTimeText + 1];
      char16_t* end = _DateTimeToStringEx(text, v, kDateLongMonth | kDateWeekday, o);
      *end = 0;
      uint32_t back = 0;
      ASSERT_EQ(_StringToDateTimeValue(text, back, o), end) << v;
      ASSERT_EQ(back, v);
    }
  }
}

TEST(DateTimeOptions, UnknownLocaleChangesNothing) {
  strEnvDateTimeOptions o;
  ASSERT_TRUE(o.SetDatePattern(0, u"d/M/y"));
  EXPECT_FALSE(o.SetLocale(0x7FFF));
  char16_t text[kMaxDateTimeText];
  EXPECT_EQ(std::u16string(text, _DateToString(text, strDate(2026, 11, 23), o)), u"23/11/2026");
  const strEnvDateTimeOptions copy(0x7FFF);  // portable
  EXPECT_EQ(std::u16string(text, _DateToString(text, strDate(2026, 11, 23), copy)), u"2026-11-23");
}

}  // namespace
}  // namespace tavi
