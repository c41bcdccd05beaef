//===- calendar_test.cpp - Leap years, day counts, checks, differences ----===//
#include "tavi/time/calendar.h"

#include <gtest/gtest.h>

namespace tavi {
namespace {

TEST(Calendar, LeapYearsJulianThenGregorian) {
  // Years 1 to 7 have no leap year, year 4 included.
  for (uint16_t y = 1; y <= 7; ++y) EXPECT_FALSE(IsLeapYear(y)) << y;
  EXPECT_TRUE(IsLeapYear(8));
  EXPECT_TRUE(IsLeapYear(1500));  // Julian: every fourth year
  EXPECT_FALSE(IsLeapYear(1582));
  EXPECT_TRUE(IsLeapYear(1584));
  EXPECT_TRUE(IsLeapYear(1600));
  EXPECT_FALSE(IsLeapYear(1700));
  EXPECT_TRUE(IsLeapYear(2000));
  EXPECT_FALSE(IsLeapYear(2023));
  EXPECT_TRUE(IsLeapYear(2024));
}

TEST(Calendar, LeapYearCountMatchesCountingOneByOne) {
  uint32_t counted = 0;
  for (uint32_t y = 1; y <= kLastYear; ++y) {
    ASSERT_EQ(GetLeapYearCount(static_cast<uint16_t>(y)), counted) << y;
    if (IsLeapYear(static_cast<uint16_t>(y))) ++counted;
  }
  EXPECT_EQ(GetLeapYearCount(1583), 394u);
}

TEST(Calendar, YearAndMonthLengths) {
  EXPECT_EQ(GetYearDayCount(0), 0u);
  EXPECT_EQ(GetYearDayCount(1582), 355u);
  EXPECT_EQ(GetYearDayCount(2024), 366u);
  EXPECT_EQ(GetYearDayCount(2023), 365u);

  const uint8_t common[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (uint8_t m = 1; m <= 12; ++m) EXPECT_EQ(GetMonthDayCount(2023, m), common[m - 1]) << +m;
  EXPECT_EQ(GetMonthDayCount(2024, 2), 29);
  EXPECT_EQ(GetMonthDayCount(1900, 2), 28);
  EXPECT_EQ(GetMonthDayCount(1500, 2), 29);
  EXPECT_EQ(GetMonthDayCount(2024, 0), 0);
  EXPECT_EQ(GetMonthDayCount(2024, 13), 0);
  // November 1582 keeps the length 21 that the day steppers walk.
  EXPECT_EQ(GetMonthDayCount(1582, 11), 21);
}

TEST(Calendar, DayCountsOfKnownDates) {
  EXPECT_EQ(GetDayCount(1), 0u);
  EXPECT_EQ(GetDayCount(1583), kFirstGregorianYearDayCount);
  EXPECT_EQ(GetDayCount(strDate(1583, 1, 1)), 577814u);
  EXPECT_EQ(GetDayCount(strDate(2026, 11, 15)), 739935u);
  EXPECT_EQ(GetDayCount(2026, 11), 739935u - 14);
  EXPECT_EQ(GetDayCount(strDate(8166, 12, 31)) * kMinutesPerDay + 23 * 60 + 59, kMaxDateTime);
  // 15 November 1582 directly follows 4 November 1582.
  EXPECT_EQ(GetDayCount(strDate(1582, 11, 15)), GetDayCount(strDate(1582, 11, 4)) + 1);
  EXPECT_EQ(GetDayCount(strDate(1582, 12, 1)), GetDayCount(strDate(1582, 11, 30)) + 1);
  EXPECT_EQ(GetDayCount(strDate(1583, 1, 1)) - GetDayCount(strDate(1582, 1, 1)), 355u);
}

TEST(Calendar, DayCountsRefuseBadArguments) {
  EXPECT_EQ(GetDayCount(0), kInvalidDateTime);
  EXPECT_EQ(GetDayCount(8167), kInvalidDateTime);
  EXPECT_EQ(GetDayCount(2000, 0), kInvalidDateTime);
  EXPECT_EQ(GetDayCount(2000, 13), kInvalidDateTime);
  EXPECT_EQ(GetDayCount(strDate(2023, 2, 29)), kInvalidDateTime);
  EXPECT_EQ(GetDayCount(strDate(1582, 11, 10)), kInvalidDateTime);
}

TEST(Calendar, CheckDateAroundTheReform) {
  EXPECT_TRUE(CheckDate(strDate(1582, 11, 4)));
  EXPECT_FALSE(CheckDate(strDate(1582, 11, 5)));
  EXPECT_FALSE(CheckDate(strDate(1582, 11, 10)));
  EXPECT_FALSE(CheckDate(strDate(1582, 11, 14)));
  EXPECT_TRUE(CheckDate(strDate(1582, 11, 15)));
  EXPECT_TRUE(CheckDate(strDate(1582, 11, 30)));
  EXPECT_FALSE(CheckDate(strDate(1582, 11, 31)));
  // Day 0 of November 1582 passes, and counts as 31 October.
  EXPECT_TRUE(CheckDate(strDate(1582, 11, 0)));
  EXPECT_EQ(GetDayCount(strDate(1582, 11, 0)), GetDayCount(strDate(1582, 10, 31)));

  EXPECT_TRUE(CheckDate(strDate(8166, 12, 31)));
  EXPECT_FALSE(CheckDate(strDate(0, 1, 1)));
  EXPECT_FALSE(CheckDate(strDate(8167, 1, 1)));
  EXPECT_FALSE(CheckDate(strDate(2023, 13, 1)));
  EXPECT_FALSE(CheckDate(strDate(2023, 6, 31)));
  EXPECT_FALSE(CheckDate(strDate(2023, 6, 0)));
  EXPECT_TRUE(CheckDate(strDate(2024, 2, 29)));
  EXPECT_FALSE(CheckDate(strDate(1700, 2, 29)));
}

TEST(Calendar, DayOfYearIgnoresTheGap) {
  EXPECT_EQ(GetDayOfYearCount(strDate(2023, 1, 1)), 0u);
  EXPECT_EQ(GetDayOfYearCount(strDate(2024, 12, 31)), 365u);
  EXPECT_EQ(GetDayOfYearCount(strDate(1582, 11, 15)), 318u);
  EXPECT_EQ(GetDayOfYearCount(strDate(1582, 12, 1)), 324u);
  EXPECT_EQ(GetDayOfYearCount(strDate(2023, 0, 1)), kInvalidDateTime);
}

TEST(Calendar, DateWordLayout) {
  EXPECT_EQ(strDate(2026, 11, 15).ToWord(), 2026u | 11u << 16 | 15u << 24);
  EXPECT_EQ(strDate::FromWord(2026u | 11u << 16 | 15u << 24).day, 15);
  EXPECT_EQ(strDateTime(2026, 11, 15, 13, 45).TimeWord(), 13 | 45 << 8);
}

TEST(Calendar, CompareGoesFieldByField) {
  EXPECT_EQ(CompareDate(strDate(2025, 1, 1), strDate(2024, 12, 31)), 1);
  EXPECT_EQ(CompareDate(strDate(2024, 1, 31), strDate(2024, 3, 1)), -2);
  const strDate d(2024, 3, 1);
  EXPECT_EQ(CompareDateTime(d, MakeTimeWord(10, 0), d, MakeTimeWord(7, 59)), 3);
  EXPECT_EQ(CompareDateTime(d, MakeTimeWord(7, 5), d, MakeTimeWord(7, 59)), -54);
  EXPECT_EQ(CompareDateTime(d, MakeTimeWord(7, 5), d, MakeTimeWord(7, 5)), 0);
}

TEST(Calendar, DayDifferences) {
  EXPECT_EQ(GetDayDiff(strDate(2024, 1, 1), strDate(2025, 1, 1)), 366);
  EXPECT_EQ(GetDayDiff(strDate(2025, 1, 1), strDate(2024, 1, 1)), -366);
  EXPECT_EQ(GetDayDiff(strDate(1582, 11, 4), strDate(1582, 11, 15)), 1);
  EXPECT_EQ(GetDayDiff(strDate(1, 1, 1), strDate(8166, 12, 31)), 2982570);
  EXPECT_EQ(GetDayDiff(strDate(2023, 2, 29), strDate(2023, 3, 1)), 0);
}

TEST(Calendar, YearDifferenceInTenThousandths) {
  const uint16_t midnight = MakeTimeWord(0, 0);
  EXPECT_EQ(GetYearDiff(strDate(2023, 1, 1), midnight, strDate(2023, 7, 1), midnight), 4958);
  EXPECT_EQ(GetYearDiff(strDate(2023, 7, 1), midnight, strDate(2023, 1, 1), midnight), -4958);
  EXPECT_EQ(GetYearDiff(strDate(2023, 7, 1), midnight, strDate(2023, 7, 1), midnight), 0);
  EXPECT_EQ(GetYearDiff(strDate(2020, 1, 1), midnight, strDate(2023, 1, 1), midnight), 30000);
  // Across years: the rest of a's year plus the part of b's year, each truncated.
  // 1 July 2023 to 1 July 2024: 184/365 of 2023 and 182/366 of 2024.
  EXPECT_EQ(GetYearDiff(strDate(2023, 7, 1), midnight, strDate(2024, 7, 1), midnight),
            184 * 10000 / 365 + 182 * 10000 / 366);
  // Times of day count in minutes.
  EXPECT_EQ(GetYearDiff(strDate(2023, 1, 1), midnight, strDate(2023, 1, 1), MakeTimeWord(12, 0)),
            720 * 10000 / (365 * 1440));
  EXPECT_EQ(GetYearDiff(strDate(2023, 2, 30), midnight, strDate(2024, 1, 1), midnight), 0);
  EXPECT_EQ(GetYearDiff(strDate(2023, 1, 1), MakeTimeWord(24, 0), strDate(2024, 1, 1), midnight),
            0);
}

TEST(Calendar, MonthDifferenceInTenThousandths) {
  const uint16_t noon = MakeTimeWord(12, 0);
  EXPECT_EQ(GetMonthDiff(strDate(2023, 3, 15), noon, strDate(2023, 4, 15), noon), 10155);
  EXPECT_EQ(GetMonthDiff(strDate(2023, 4, 15), noon, strDate(2023, 3, 15), noon), -10155);
  EXPECT_EQ(GetMonthDiff(strDate(2023, 3, 1), 0, strDate(2023, 3, 16), noon),
            (15 * 1440 + 720) * 10000 / (31 * 1440));
  EXPECT_EQ(GetMonthDiff(strDate(2022, 12, 1), 0, strDate(2024, 1, 1), 0), 130000);
  EXPECT_EQ(GetMonthDiff(strDate(2022, 12, 1), 0, strDate(2022, 12, 1), MakeTimeWord(0, 60)), 0);
  // The raw form does the same work for ordered arguments.
  EXPECT_EQ(_GetMonthDiff(strDate(2023, 3, 15), noon, strDate(2023, 4, 15), noon), 10155);
  EXPECT_EQ(_GetYearDiff(strDate(2023, 1, 1), 0, strDate(2023, 7, 1), 0), 4958);
}

TEST(Calendar, MonthDayOccurrencesOverARange) {
  // The 31st comes round in January, March, May, July, August, October and
  // December.
  EXPECT_EQ(GetMonthDayCount(31, strDate(2023, 1, 1), strDate(2023, 12, 31)), 7u);
  EXPECT_EQ(GetMonthDayCount(29, strDate(2023, 1, 1), strDate(2023, 12, 31)), 11u);
  EXPECT_EQ(GetMonthDayCount(29, strDate(2024, 1, 1), strDate(2024, 12, 31)), 12u);
  EXPECT_EQ(GetMonthDayCount(15, strDate(2023, 1, 15), strDate(2023, 3, 14)), 2u);
  EXPECT_EQ(GetMonthDayCount(15, strDate(2023, 1, 16), strDate(2023, 3, 15)), 2u);
  EXPECT_EQ(GetMonthDayCount(15, strDate(2023, 1, 16), strDate(2023, 2, 14)), 0u);
  EXPECT_EQ(GetMonthDayCount(1, strDate(1, 1, 1), strDate(8166, 12, 31)), 8166u * 12);
  EXPECT_EQ(GetMonthDayCount(1, strDate(2023, 5, 1), strDate(2023, 5, 1)), 1u);
  // The days 5 to 14 of November 1582 never come round; the 15th does.
  EXPECT_EQ(GetMonthDayCount(10, strDate(1582, 10, 1), strDate(1582, 12, 31)), 2u);
  EXPECT_EQ(GetMonthDayCount(15, strDate(1582, 10, 1), strDate(1582, 12, 31)), 3u);
  // Empty and bad ranges.
  EXPECT_EQ(GetMonthDayCount(1, strDate(2023, 5, 2), strDate(2023, 5, 1)), 0u);
  EXPECT_EQ(GetMonthDayCount(0, strDate(2023, 1, 1), strDate(2023, 12, 31)), 0u);
  EXPECT_EQ(GetMonthDayCount(32, strDate(2023, 1, 1), strDate(2023, 12, 31)), 0u);
  EXPECT_EQ(GetMonthDayCount(1, strDate(2023, 2, 30), strDate(2023, 12, 31)), kInvalidDateTime);

  // The value form takes the dates of two values.
  const uint32_t from = GetDayCount(strDate(2023, 1, 1)) * kMinutesPerDay + 600;
  const uint32_t to = GetDayCount(strDate(2023, 12, 31)) * kMinutesPerDay + 1439;
  EXPECT_EQ(GetMonthDayCount(31, from, to), 7u);
  EXPECT_EQ(GetMonthDayCount(31, from, kInvalidDateTime), kInvalidDateTime);
  EXPECT_EQ(GetMonthDayCount(31, from, kMaxDateTime + 1), kInvalidDateTime);
}

}  // namespace
}  // namespace tavi
