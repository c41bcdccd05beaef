//===- date_time_test.cpp - XDateTime conversions, setters and stepping ---===//
#include "tavi/time/date_time.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <tuple>

namespace tavi {
namespace {

constexpr uint32_t kBad = kInvalidDateTime;
constexpr uint32_t kLastDay = kMaxDateTime / kMinutesPerDay;  // 31 December 8166

// "Y-M-D h:m" of the raw fields, so that out-of-range fields show too.
std::string Show(const XDateTime& d) {
  char text[40];
  std::snprintf(text, sizeof(text), "%u-%u-%u %u:%u", d.GetYear(), d.GetMonth(), d.GetDay(),
                d.GetHour(), d.GetMinute());
  return text;
}

// The weekday comes from the date alone and is 3 for an invalid date. (The
// whole-calendar walk below checks the weekday of every other day.)
TEST(DateTime, ValuesAndWeekdays) {
  const std::tuple<XDateTime, uint32_t, uint32_t> cases[] = {
      {{8166, 12, 31, 23, 59}, 4294902239u, 3},
      {{2026, 11, 15, 10, 30}, 739935u * 1440 + 630, 0},  // a Sunday
      {{2026, 11, 15, 24, 0}, kBad, 0},
      {{2026, 11, 15, 0, 60}, kBad, 0},
      {{2026, 2, 29}, kBad, 3},
      {{8167, 1, 1}, kBad, 3}};
  for (const auto& [d, value, weekday] : cases) {
    SCOPED_TRACE(Show(d));
    EXPECT_EQ(d.GetDateTime(), value);
    EXPECT_EQ(d.GetDayType(), weekday);
  }
}

TEST(DateTime, SettersRefuseBadInputAndChangeNothing) {
  XDateTime d;
  const auto after = [&d](bool ok) { return (ok ? "" : "refused: ") + Show(d); };
  EXPECT_EQ(after(SetDate(d, 739935u * 1440 + 13 * 60 + 7)), "2026-11-15 0:0");
  XSystemTime st{2026, 11, 0, 15, 9, 41, 59, 0};
  EXPECT_EQ(GetDateTime(st), 739935u * 1440 + 9 * 60 + 41);
  EXPECT_EQ(after(d.SetDateTime(st)), "2026-11-15 9:41");
  EXPECT_EQ(after(d.SetDate(st)), "2026-11-15 0:0");
  st.wHour = 24;
  EXPECT_EQ(GetDateTime(st), kBad);
  EXPECT_EQ(GetDate(st), 739935u * 1440);

  EXPECT_EQ(after(d.SetDateTime(kMaxDateTime)), "8166-12-31 23:59");
  EXPECT_FALSE(d.SetDateTime(kMaxDateTime + 1));
  d = kMaxDateTime + 60;
  EXPECT_FALSE(d.SetDate(strDate(2023, 2, 29)));
  EXPECT_FALSE(d.SetDateTime(strDateTime(2024, 1, 1, 24, 0)));
  EXPECT_FALSE(d.SetTime(23, 60));
  st = XSystemTime{2024, 256 + 1, 0, 1, 0, 0, 0, 0};  // the month must not be narrowed to 1
  EXPECT_FALSE(d.SetDate(st));
  EXPECT_FALSE(d.SetDateTime(st));
  EXPECT_EQ(GetDate(st), kBad);
  EXPECT_EQ(Show(d), "8166-12-31 23:59");

  EXPECT_EQ(SetYear(d, 577767u * 1440), 308u);  // 15 November 1582
  EXPECT_FALSE(SetMonthDay(d, 355));
  EXPECT_EQ(SetYear(d, kMaxDateTime + 1), kBad);
  EXPECT_EQ(Show(d), "1582-12-31 23:59");
}

TEST(DateTime, CompareAndDifferences) {
  const XDateTime d(2024, 5, 6, 7, 8);
  EXPECT_EQ(d.Compare(XDateTime(2024, 5, 6, 9, 8)), -2);
  EXPECT_EQ(d.Compare(d.GetDateTime() - 90), 90);
  // An invalid object answers with the complement of the argument.
  EXPECT_EQ(XDateTime(2024, 2, 30).Compare(12345u), static_cast<int32_t>(~12345u));
  EXPECT_EQ(d.GetDayDiff(XDateTime(2024, 5, 7, 7, 8)), 10000);
  EXPECT_EQ(d.GetDayDiff(XDateTime(2024, 5, 6, 7, 7)), -6);  // -1/1440 day
  EXPECT_EQ(d.GetDayDiff(XDateTime(2024, 2, 30)), 0);
  const XDateTime march(2023, 3, 15, 12, 0), april(2023, 4, 15, 12, 0);
  EXPECT_EQ(march.GetMonthDiff(april.GetDateTime()), 10155);
  EXPECT_EQ(april.GetYearDiff(march), -849);  // 31 days of 365
  EXPECT_EQ(march.GetYearDiff(kInvalidDateTime), 0);
}

// Each step from a start, with its result and the fields it leaves. At the
// ends of the calendar some steps change a field before they refuse, and
// callers see those fields. Day steps in November 1582 use its length of 21.
TEST(DateTime, Steps) {
  using D = XDateTime;
  const std::tuple<XDateTime, bool (XDateTime::*)(), bool, const char*> steps[] = {
      {D(2023, 1, 29), &D::NextMonth, true, "2023-2-28 0:0"},
      {D(2024, 1, 30), &D::NextMonth, true, "2024-2-29 0:0"},
      {D(2023, 12, 15), &D::NextMonth, true, "2024-1-15 0:0"},
      {D(2024, 2, 29), &D::NextYear, true, "2025-2-29 0:0"},       // not clipped
      {D(2024, 3, 31), &D::PreviousMonth, true, "2024-2-31 0:0"},  // not clipped
      {D(2024, 1, 15), &D::PreviousMonth, true, "2023-12-15 0:0"},
      {D(2024, 3, 1), &D::PreviousDay, true, "2024-2-29 0:0"},
      {D(2024, 1, 1, 5, 6), &D::PreviousDay, true, "2023-12-31 5:6"},
      {D(2023, 12, 15), &D::PreviousYear, true, "2022-12-15 0:0"},
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
      // November 1582: from the 4th the next day is the missing 5th, from the
      // 21st on it is 1 December; week steps go through the value and jump the gap.
      {D(1582, 11, 4), &D::NextDay, true, "1582-11-5 0:0"},
      {D(1582, 11, 25), &D::NextDay, true, "1582-12-1 0:0"},
      {D(1582, 12, 1), &D::PreviousDay, true, "1582-11-21 0:0"},
      {D(1582, 10, 31), &D::NextMonth, true, "1582-11-21 0:0"},
      {D(1582, 11, 1), &D::NextWeeek, true, "1582-11-18 0:0"},
  };
  for (const auto& [from, step, result, to] : steps) {
    XDateTime d = from;
    SCOPED_TRACE(Show(from));
    EXPECT_EQ((d.*step)(), result);
    EXPECT_EQ(Show(d), to);
  }
}

// Every day of the calendar, walked with NextDay beside its day number n: the
// value n * 1440 plus a time of day that changes from day to day converts to
// fields and back, its date is the walker's, and the weekday cycles from the
// Sunday 1 January 1. NextDay walks November 1582 by its length of 21, so the
// walk jumps the gap through the value.
TEST(DateTime, EveryDayOfTheCalendar) {
  XDateTime walker(1, 1, 1);
  for (uint32_t n = 0; n <= kLastDay; ++n) {
    const uint32_t value = n * kMinutesPerDay + n * 7 % kMinutesPerDay;
    XDateTime d;
    ASSERT_TRUE(d.SetDateTime(value)) << n;
    ASSERT_EQ(d.GetDateTime(), value) << n;
    ASSERT_TRUE(CheckDate(d.AsDate())) << n;
    ASSERT_EQ(d.GetDayType(), n % 7) << n;
    ASSERT_EQ(CompareDate(walker.AsDate(), d.AsDate()), 0) << n;
    if (walker.GetYear() == 1582 && walker.GetMonth() == 11 &&
        (walker.GetDay() == 4 || walker.GetDay() >= 21)) {
      walker = (n + 1) * kMinutesPerDay;
    } else {
      ASSERT_EQ(walker.NextDay(), n != kLastDay) << n;
    }
  }
}

}  // namespace
}  // namespace tavi
