//===- date_time_test.cpp - XDateTime conversions, setters and stepping ---===//
#include "tavi/time/date_time.h"

#include <gtest/gtest.h>

namespace tavi {
namespace {

void ExpectFields(const XDateTime& d, uint16_t y, uint8_t m, uint8_t day, uint8_t h = 0,
                  uint8_t mi = 0) {
  EXPECT_EQ(d.GetYear(), y);
  EXPECT_EQ(d.GetMonth(), m);
  EXPECT_EQ(d.GetDay(), day);
  EXPECT_EQ(d.GetHour(), h);
  EXPECT_EQ(d.GetMinute(), mi);
}

TEST(DateTime, ValueOfKnownMoments) {
  EXPECT_EQ(XDateTime(8166, 12, 31, 23, 59).GetDateTime(), 4294902239u);
  EXPECT_EQ(XDateTime(2026, 11, 15).GetDateTime(), 739935u * 1440);
  EXPECT_EQ(XDateTime(1, 1, 1).GetDateTime(), 0u);
  // GetDate keeps the time of day in its result.
  EXPECT_EQ(XDateTime(2026, 11, 15, 10, 30).GetDate(), 739935u * 1440 + 630);
  EXPECT_EQ(XDateTime().GetDateTime(), 0u);
}

TEST(DateTime, InvalidFieldsGiveTheInvalidValue) {
  EXPECT_EQ(XDateTime(2026, 11, 15, 24, 0).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(2026, 11, 15, 0, 60).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(2026, 2, 29).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(0, 1, 1).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(8167, 1, 1).GetDateTime(), kInvalidDateTime);
}

TEST(DateTime, DayOfWeek) {
  EXPECT_EQ(XDateTime(2026, 11, 15).GetDayType(), 0u);  // Sunday
  EXPECT_EQ(XDateTime(2026, 11, 16).GetDayType(), 1u);
  EXPECT_EQ(XDateTime(1, 1, 1).GetDayType(), 0u);
  EXPECT_EQ(XDateTime(2000, 1, 1).GetDayType(), 6u);  // a Saturday
  // 4 November 1582 is a Sunday and the next day, 15 November, a Monday.
  EXPECT_EQ(XDateTime(1582, 11, 4).GetDayType(), 0u);
  EXPECT_EQ(XDateTime(1582, 11, 15).GetDayType(), 1u);
  EXPECT_EQ(XDateTime(2026, 2, 30).GetDayType(), 3u);  // invalid date
}

TEST(DateTime, ValueSettersDecomposeAndRefuseOutOfRange) {
  XDateTime d;
  ASSERT_TRUE(d.SetDateTime(739935u * 1440 + 13 * 60 + 7));
  ExpectFields(d, 2026, 11, 15, 13, 7);
  ASSERT_TRUE(d.SetDateTime(kMaxDateTime));
  ExpectFields(d, 8166, 12, 31, 23, 59);
  EXPECT_FALSE(d.SetDateTime(kMaxDateTime + 1));
  ExpectFields(d, 8166, 12, 31, 23, 59);
  d = kMaxDateTime + 60;  // refused, unchanged
  ExpectFields(d, 8166, 12, 31, 23, 59);

  ASSERT_TRUE(SetDate(d, 739935u * 1440 + 13 * 60 + 7));
  ExpectFields(d, 2026, 11, 15);

  // The two halves of the decomposition.
  XDateTime parts;
  const uint32_t dayOfYear = SetYear(parts, GetDayCount(strDate(1582, 11, 15)) * 1440);
  EXPECT_EQ(parts.GetYear(), 1582);
  EXPECT_EQ(dayOfYear, 308u);
  ASSERT_TRUE(SetMonthDay(parts, dayOfYear));
  EXPECT_EQ(parts.GetMonth(), 11);
  EXPECT_EQ(parts.GetDay(), 15);
  EXPECT_TRUE(SetMonthDay(parts, 307));
  EXPECT_EQ(parts.GetDay(), 4);
  EXPECT_FALSE(SetMonthDay(parts, 355));
  EXPECT_EQ(SetYear(parts, kMaxDateTime + 1), kInvalidDateTime);
  EXPECT_EQ(parts.GetYear(), 1582);
}

TEST(DateTime, CheckedSettersChangeNothingOnBadInput) {
  XDateTime d(2024, 5, 6, 7, 8);
  EXPECT_FALSE(d.SetDate(strDate(2023, 2, 29)));
  EXPECT_FALSE(d.SetDateTime(strDateTime(2024, 1, 1, 24, 0)));
  EXPECT_FALSE(d.SetDateTime(strDateTime(2024, 1, 1, 0, 60)));
  EXPECT_FALSE(d.SetTime(23, 60));
  XSystemTime st{};
  st.wYear = 2024;
  st.wMonth = 256 + 1;  // must not be narrowed to January
  st.wDay = 1;
  EXPECT_FALSE(d.SetDate(st));
  EXPECT_FALSE(d.SetDateTime(st));
  ExpectFields(d, 2024, 5, 6, 7, 8);

  EXPECT_TRUE(d.SetDate(strDate(2024, 2, 29)));
  ExpectFields(d, 2024, 2, 29);
  EXPECT_TRUE(d.SetTime(23, 59));
  EXPECT_TRUE(d.SetDateTime(strDateTime(1582, 11, 15, 1, 2)));
  ExpectFields(d, 1582, 11, 15, 1, 2);

  // The unchecked setters store anything.
  d._SetDateTime(strDateTime(9000, 14, 40, 30, 70));
  ExpectFields(d, 9000, 14, 40, 30, 70);
  d._SetDate(strDate(2024, 2, 30));
  ExpectFields(d, 2024, 2, 30);
}

TEST(DateTime, SystemTimeFields) {
  XSystemTime st{};
  st.wYear = 2026;
  st.wMonth = 11;
  st.wDay = 15;
  st.wHour = 9;
  st.wMinute = 41;
  st.wSecond = 59;
  EXPECT_EQ(GetDate(st), 739935u * 1440);
  EXPECT_EQ(GetDateTime(st), 739935u * 1440 + 9 * 60 + 41);
  XDateTime d;
  ASSERT_TRUE(d.SetDate(st));
  ExpectFields(d, 2026, 11, 15);
  ASSERT_TRUE(d.SetDateTime(st));
  ExpectFields(d, 2026, 11, 15, 9, 41);

  XSystemTime out{};
  out.wSecond = 33;
  XDateTime(2001, 2, 3, 4, 5).GetDate(out);
  EXPECT_EQ(out.wYear, 2001);
  EXPECT_EQ(out.wMonth, 2);
  EXPECT_EQ(out.wDay, 3);
  EXPECT_EQ(out.wHour, 0);
  XDateTime(2001, 2, 3, 4, 5).GetDateTime(out);
  EXPECT_EQ(out.wHour, 4);
  EXPECT_EQ(out.wMinute, 5);
  EXPECT_EQ(out.wSecond, 33);

  st.wHour = 24;
  EXPECT_EQ(GetDateTime(st), kInvalidDateTime);
  EXPECT_EQ(GetDate(st), 739935u * 1440);
  st.wYear = 8167;
  EXPECT_EQ(GetDate(st), kInvalidDateTime);
}

TEST(DateTime, Compare) {
  const XDateTime d(2024, 5, 6, 7, 8);
  EXPECT_EQ(d.Compare(XDateTime(2024, 5, 6, 7, 8)), 0);
  EXPECT_EQ(d.Compare(XDateTime(2024, 5, 6, 9, 8)), -2);
  EXPECT_EQ(d.Compare(strDateTime(2020, 12, 31, 0, 0)), 4);
  const uint32_t value = d.GetDateTime();
  EXPECT_EQ(d.Compare(value), 0);
  EXPECT_EQ(d.Compare(value - 90), 90);
  EXPECT_EQ(d.Compare(value + 5), -5);
  // An invalid object answers with the complement of the argument.
  EXPECT_EQ(XDateTime(2024, 2, 30).Compare(12345u), static_cast<int32_t>(~12345u));
}

TEST(DateTime, Differences) {
  const XDateTime a(2024, 1, 1);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2024, 1, 2)), 10000);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2024, 1, 1, 6, 0)), 2500);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2023, 12, 31, 23, 59)), -6);  // -1/1440 day
  EXPECT_EQ(a.GetDayDiff(a.GetDateTime() + 2 * 1440), 20000);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2024, 2, 30)), 0);
  EXPECT_EQ(XDateTime(2024, 2, 30).GetDayDiff(a), 0);

  const XDateTime march(2023, 3, 15, 12, 0), april(2023, 4, 15, 12, 0);
  EXPECT_EQ(march.GetMonthDiff(april), 10155);
  EXPECT_EQ(april.GetMonthDiff(march), -10155);
  EXPECT_EQ(march.GetMonthDiff(april.GetDateTime()), 10155);
  EXPECT_EQ(XDateTime(2023, 1, 1).GetYearDiff(XDateTime(2023, 7, 1)), 4958);
  EXPECT_EQ(XDateTime(2023, 1, 1).GetYearDiff(XDateTime(2023, 7, 1).GetDateTime()), 4958);
  EXPECT_EQ(march.GetYearDiff(kInvalidDateTime), 0);
}

TEST(DateTime, StepExamples) {
  XDateTime d(2023, 1, 31);
  ASSERT_TRUE(d.NextMonth());
  ExpectFields(d, 2023, 2, 28);
  d = XDateTime(2024, 1, 30);
  ASSERT_TRUE(d.NextMonth());
  ExpectFields(d, 2024, 2, 29);
  d = XDateTime(2024, 2, 29);
  ASSERT_TRUE(d.NextYear());
  ExpectFields(d, 2025, 2, 29);  // not clipped
  d = XDateTime(2024, 3, 31);
  ASSERT_TRUE(d.PreviousMonth());
  ExpectFields(d, 2024, 2, 31);  // not clipped
  d = XDateTime(2023, 12, 31, 5, 6);
  ASSERT_TRUE(d.NextDay());
  ExpectFields(d, 2024, 1, 1, 5, 6);
  ASSERT_TRUE(d.PreviousDay());
  ExpectFields(d, 2023, 12, 31, 5, 6);
  d = XDateTime(2024, 3, 1);
  ASSERT_TRUE(d.PreviousDay());
  ExpectFields(d, 2024, 2, 29);
  d = XDateTime(2023, 12, 15);
  ASSERT_TRUE(d.NextMonth());
  ExpectFields(d, 2024, 1, 15);
  ASSERT_TRUE(d.PreviousMonth());
  ExpectFields(d, 2023, 12, 15);
  ASSERT_TRUE(d.PreviousYear());
  ExpectFields(d, 2022, 12, 15);
  d = XDateTime(2026, 11, 15, 8, 0);
  ASSERT_TRUE(d.NextWeeek());
  ExpectFields(d, 2026, 11, 22, 8, 0);
  ASSERT_TRUE(d.PreviousWeeek());
  ASSERT_TRUE(d.PreviousWeeek());
  ExpectFields(d, 2026, 11, 8, 8, 0);
}

// At the ends of the calendar some steps change a field before they refuse;
// callers see those fields.
TEST(DateTime, StepsAtTheEndsOfTheCalendar) {
  XDateTime d(8166, 12, 31, 23, 59);
  EXPECT_FALSE(d.NextDay());
  ExpectFields(d, 8166, 1, 1, 23, 59);
  d = XDateTime(8166, 12, 31);
  EXPECT_FALSE(d.NextMonth());
  ExpectFields(d, 8166, 1, 31);
  d = XDateTime(8166, 6, 1);
  EXPECT_FALSE(d.NextYear());
  ExpectFields(d, 8166, 6, 1);

  d = XDateTime(1, 1, 1);
  EXPECT_FALSE(d.PreviousDay());
  ExpectFields(d, 1, 12, 1);
  d = XDateTime(1, 1, 20);
  EXPECT_FALSE(d.PreviousMonth());
  ExpectFields(d, 1, 12, 20);
  d = XDateTime(1, 5, 5);
  EXPECT_FALSE(d.PreviousYear());
  ExpectFields(d, 1, 5, 5);

  // Week steps refuse without change when the result would leave the calendar.
  d = XDateTime(8166, 12, 25, 0, 0);
  EXPECT_FALSE(d.NextWeeek());
  ExpectFields(d, 8166, 12, 25);
  d = XDateTime(8166, 12, 24, 23, 59);
  EXPECT_TRUE(d.NextWeeek());
  ExpectFields(d, 8166, 12, 31, 23, 59);
  d = XDateTime(1, 1, 7, 23, 59);
  EXPECT_FALSE(d.PreviousWeeek());
  d = XDateTime(1, 1, 8, 0, 0);
  EXPECT_TRUE(d.PreviousWeeek());
  ExpectFields(d, 1, 1, 1);
  d = XDateTime(2024, 2, 30);
  EXPECT_FALSE(d.NextWeeek());
  EXPECT_FALSE(d.PreviousWeeek());
  d = XDateTime(2024, 2, 3, 24, 0);
  EXPECT_FALSE(d.NextWeeek());
}

// Day steps in November 1582 run by its length of 21: from the 4th they reach
// the non-existent 5th, and from the 21st and later they go to 1 December.
TEST(DateTime, DayStepsThroughTheReformMonth) {
  XDateTime d(1582, 11, 4);
  ASSERT_TRUE(d.NextDay());
  ExpectFields(d, 1582, 11, 5);
  EXPECT_EQ(d.GetDateTime(), kInvalidDateTime);
  d = XDateTime(1582, 11, 21);
  ASSERT_TRUE(d.NextDay());
  ExpectFields(d, 1582, 12, 1);
  d = XDateTime(1582, 11, 25);
  ASSERT_TRUE(d.NextDay());
  ExpectFields(d, 1582, 12, 1);
  d = XDateTime(1582, 12, 1);
  ASSERT_TRUE(d.PreviousDay());
  ExpectFields(d, 1582, 11, 21);
  d = XDateTime(1582, 10, 31);
  ASSERT_TRUE(d.NextMonth());
  ExpectFields(d, 1582, 11, 21);
  // Week steps go through the value and so jump the gap exactly.
  d = XDateTime(1582, 11, 1);
  ASSERT_TRUE(d.NextWeeek());
  ExpectFields(d, 1582, 11, 18);
}

}  // namespace
}  // namespace tavi
