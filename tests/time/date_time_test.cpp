//===- date_time_test.cpp - XDateTime conversions, setters and stepping ---===//
#include "tavi/time/date_time.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace tavi {
namespace {

// "Y-M-D h:m" of the raw fields, so that out-of-range fields show too.
std::string Show(const XDateTime& d) {
  char text[40];
  std::snprintf(text, sizeof(text), "%u-%u-%u %u:%u", d.GetYear(), d.GetMonth(), d.GetDay(),
                d.GetHour(), d.GetMinute());
  return text;
}

TEST(DateTime, ValuesOfFields) {
  EXPECT_EQ(XDateTime(8166, 12, 31, 23, 59).GetDateTime(), 4294902239u);
  EXPECT_EQ(XDateTime(2026, 11, 15).GetDateTime(), 739935u * 1440);
  EXPECT_EQ(XDateTime().GetDateTime(), 0u);
  // GetDate keeps the time of day in its result.
  EXPECT_EQ(XDateTime(2026, 11, 15, 10, 30).GetDate(), 739935u * 1440 + 630);
  EXPECT_EQ(XDateTime(2026, 11, 15, 24, 0).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(2026, 11, 15, 0, 60).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(2026, 2, 29).GetDateTime(), kInvalidDateTime);
  EXPECT_EQ(XDateTime(8167, 1, 1).GetDateTime(), kInvalidDateTime);
}

TEST(DateTime, DayOfWeek) {
  EXPECT_EQ(XDateTime(2026, 11, 15).GetDayType(), 0u);  // a Sunday
  EXPECT_EQ(XDateTime(2000, 1, 1).GetDayType(), 6u);    // a Saturday
  // 4 November 1582 is a Sunday and the next day, 15 November, a Monday.
  EXPECT_EQ(XDateTime(1582, 11, 4).GetDayType(), 0u);
  EXPECT_EQ(XDateTime(1582, 11, 15).GetDayType(), 1u);
  EXPECT_EQ(XDateTime(2026, 2, 30).GetDayType(), 3u);  // invalid date
}

TEST(DateTime, ValueSettersDecomposeAndRefuseOutOfRange) {
  XDateTime d;
  ASSERT_TRUE(d.SetDateTime(739935u * 1440 + 13 * 60 + 7));
  EXPECT_EQ(Show(d), "2026-11-15 13:7");
  ASSERT_TRUE(SetDate(d, 739935u * 1440 + 13 * 60 + 7));
  EXPECT_EQ(Show(d), "2026-11-15 0:0");
  ASSERT_TRUE(d.SetDateTime(kMaxDateTime));
  EXPECT_FALSE(d.SetDateTime(kMaxDateTime + 1));
  d = kMaxDateTime + 60;  // refused as well
  EXPECT_EQ(Show(d), "8166-12-31 23:59");

  // The two halves of the decomposition, across the reform gap.
  XDateTime parts;
  const uint32_t dayOfYear = SetYear(parts, GetDayCount(strDate(1582, 11, 15)) * 1440);
  EXPECT_EQ(dayOfYear, 308u);
  ASSERT_TRUE(SetMonthDay(parts, dayOfYear));
  EXPECT_EQ(Show(parts), "1582-11-15 0:0");
  ASSERT_TRUE(SetMonthDay(parts, 307));
  EXPECT_EQ(Show(parts), "1582-11-4 0:0");
  EXPECT_FALSE(SetMonthDay(parts, 355));
  EXPECT_EQ(SetYear(parts, kMaxDateTime + 1), kInvalidDateTime);
  EXPECT_EQ(Show(parts), "1582-11-4 0:0");
}

TEST(DateTime, CheckedSettersChangeNothingOnBadInput) {
  XDateTime d(2024, 5, 6, 7, 8);
  EXPECT_FALSE(d.SetDate(strDate(2023, 2, 29)));
  EXPECT_FALSE(d.SetDateTime(strDateTime(2024, 1, 1, 24, 0)));
  EXPECT_FALSE(d.SetTime(23, 60));
  XSystemTime st{};
  st.wYear = 2024;
  st.wMonth = 256 + 1;  // must not be narrowed to January
  st.wDay = 1;
  EXPECT_FALSE(d.SetDate(st));
  EXPECT_FALSE(d.SetDateTime(st));
  EXPECT_EQ(Show(d), "2024-5-6 7:8");

  st = XSystemTime{2026, 11, 0, 15, 9, 41, 59, 0};
  EXPECT_EQ(GetDate(st), 739935u * 1440);
  EXPECT_EQ(GetDateTime(st), 739935u * 1440 + 9 * 60 + 41);
  ASSERT_TRUE(d.SetDateTime(st));
  EXPECT_EQ(Show(d), "2026-11-15 9:41");
  ASSERT_TRUE(d.SetDate(st));
  EXPECT_EQ(Show(d), "2026-11-15 0:0");
  st.wHour = 24;
  EXPECT_EQ(GetDateTime(st), kInvalidDateTime);
  EXPECT_EQ(GetDate(st), 739935u * 1440);

  XSystemTime out{};
  out.wSecond = 33;
  XDateTime(2001, 2, 3, 4, 5).GetDate(out);
  EXPECT_EQ(out.wDay, 3);
  EXPECT_EQ(out.wHour, 0);
  XDateTime(2001, 2, 3, 4, 5).GetDateTime(out);
  EXPECT_EQ(out.wMinute, 5);
  EXPECT_EQ(out.wSecond, 33);

  // The unchecked setters store anything.
  d._SetDateTime(strDateTime(9000, 14, 40, 30, 70));
  EXPECT_EQ(Show(d), "9000-14-40 30:70");
}

TEST(DateTime, CompareAndDifferences) {
  const XDateTime d(2024, 5, 6, 7, 8);
  EXPECT_EQ(d.Compare(XDateTime(2024, 5, 6, 9, 8)), -2);
  EXPECT_EQ(d.Compare(strDateTime(2020, 12, 31, 0, 0)), 4);
  EXPECT_EQ(d.Compare(d.GetDateTime() - 90), 90);
  // An invalid object answers with the complement of the argument.
  EXPECT_EQ(XDateTime(2024, 2, 30).Compare(12345u), static_cast<int32_t>(~12345u));

  const XDateTime a(2024, 1, 1);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2024, 1, 2)), 10000);
  EXPECT_EQ(a.GetDayDiff(a.GetDateTime() + 360), 2500);
  EXPECT_EQ(a.GetDayDiff(XDateTime(2023, 12, 31, 23, 59)), -6);  // -1/1440 day
  EXPECT_EQ(a.GetDayDiff(XDateTime(2024, 2, 30)), 0);
  const XDateTime march(2023, 3, 15, 12, 0), april(2023, 4, 15, 12, 0);
  EXPECT_EQ(april.GetMonthDiff(march), -10155);
  EXPECT_EQ(march.GetMonthDiff(april.GetDateTime()), 10155);
  EXPECT_EQ(XDateTime(2023, 1, 1).GetYearDiff(XDateTime(2023, 7, 1).GetDateTime()), 4958);
  EXPECT_EQ(march.GetYearDiff(kInvalidDateTime), 0);
}

struct Step {
  XDateTime from;
  bool (XDateTime::*step)();
  bool result;
  const char* to;
};

// Each step from a start, with its result and the fields it leaves. At the
// ends of the calendar some steps change a field before they refuse, and
// callers see those fields. Day steps in November 1582 use its length of 21.
TEST(DateTime, Steps) {
  using D = XDateTime;
  const Step steps[] = {
      {D(2023, 1, 31), &D::NextMonth, true, "2023-2-28 0:0"},
      {D(2024, 1, 30), &D::NextMonth, true, "2024-2-29 0:0"},
      {D(2023, 12, 15), &D::NextMonth, true, "2024-1-15 0:0"},
      {D(2024, 2, 29), &D::NextYear, true, "2025-2-29 0:0"},       // not clipped
      {D(2024, 3, 31), &D::PreviousMonth, true, "2024-2-31 0:0"},  // not clipped
      {D(2024, 1, 15), &D::PreviousMonth, true, "2023-12-15 0:0"},
      {D(2023, 12, 31, 5, 6), &D::NextDay, true, "2024-1-1 5:6"},
      {D(2024, 3, 1), &D::PreviousDay, true, "2024-2-29 0:0"},
      {D(2024, 1, 1, 5, 6), &D::PreviousDay, true, "2023-12-31 5:6"},
      {D(2023, 12, 15), &D::PreviousYear, true, "2022-12-15 0:0"},
      {D(2026, 11, 15, 8, 0), &D::NextWeeek, true, "2026-11-22 8:0"},
      {D(2026, 11, 1, 8, 0), &D::PreviousWeeek, true, "2026-10-25 8:0"},
      // The ends of the calendar.
      {D(8166, 12, 31, 23, 59), &D::NextDay, false, "8166-1-1 23:59"},
      {D(8166, 12, 31), &D::NextMonth, false, "8166-1-31 0:0"},
      {D(8166, 6, 1), &D::NextYear, false, "8166-6-1 0:0"},
      {D(1, 1, 1), &D::PreviousDay, false, "1-12-1 0:0"},
      {D(1, 1, 20), &D::PreviousMonth, false, "1-12-20 0:0"},
      {D(1, 5, 5), &D::PreviousYear, false, "1-5-5 0:0"},
      // Week steps refuse, changing nothing, when they would leave the calendar.
      {D(8166, 12, 25, 0, 0), &D::NextWeeek, false, "8166-12-25 0:0"},
      {D(8166, 12, 24, 23, 59), &D::NextWeeek, true, "8166-12-31 23:59"},
      {D(1, 1, 7, 23, 59), &D::PreviousWeeek, false, "1-1-7 23:59"},
      {D(1, 1, 8, 0, 0), &D::PreviousWeeek, true, "1-1-1 0:0"},
      {D(2024, 2, 30), &D::NextWeeek, false, "2024-2-30 0:0"},
      {D(2024, 2, 3, 24, 0), &D::PreviousWeeek, false, "2024-2-3 24:0"},
      // November 1582: from the 4th the next day is the missing 5th, from the
      // 21st on it is 1 December; week steps go through the value and jump the gap.
      {D(1582, 11, 4), &D::NextDay, true, "1582-11-5 0:0"},
      {D(1582, 11, 25), &D::NextDay, true, "1582-12-1 0:0"},
      {D(1582, 12, 1), &D::PreviousDay, true, "1582-11-21 0:0"},
      {D(1582, 10, 31), &D::NextMonth, true, "1582-11-21 0:0"},
      {D(1582, 11, 1), &D::NextWeeek, true, "1582-11-18 0:0"},
  };
  for (const Step& s : steps) {
    XDateTime d = s.from;
    SCOPED_TRACE(Show(s.from));
    EXPECT_EQ((d.*s.step)(), s.result);
    EXPECT_EQ(Show(d), s.to);
  }
}

}  // namespace
}  // namespace tavi
