//===- calendar_test.cpp - Leap years, day counts, checks, differences ----===//
#include "tavi/time/calendar.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tavi {
namespace {

constexpr uint32_t kBad = kInvalidDateTime;

// Years 1 to 7 have no leap year; then Julian every fourth year up to 1582.
TEST(Calendar, YearsJulianThenGregorian) {
  const std::tuple<uint16_t, bool, uint32_t> years[] = {
      {0, false, 0},      {4, false, 365},   {8, true, 366},    {1500, true, 366},
      {1582, false, 355}, {1584, true, 366}, {1600, true, 366}, {1700, false, 365},
      {2023, false, 365}, {2024, true, 366}};
  for (const auto& [year, leap, days] : years) {
    SCOPED_TRACE(year);
    EXPECT_EQ(IsLeapYear(year), leap);
    EXPECT_EQ(GetYearDayCount(year), days);
  }
  uint32_t counted = 0;
  for (uint32_t y = 1; y <= kLastYear; ++y) {
    ASSERT_EQ(GetLeapYearCount(static_cast<uint16_t>(y)), counted) << y;
    if (IsLeapYear(static_cast<uint16_t>(y))) ++counted;
  }
  EXPECT_EQ(GetMonthDayCount(2024, 0), 0);
  EXPECT_EQ(GetMonthDayCount(2024, 13), 0);
  // November 1582 keeps the length 21 that the day steppers walk.
  EXPECT_EQ(GetMonthDayCount(1582, 11), 21);
}

// GetDayCount of a date is defined exactly when CheckDate passes it. Day 0 of
// November 1582 passes, as 31 October; 15 November follows 4 November.
TEST(Calendar, DayCountsAndChecks) {
  const std::tuple<uint16_t, uint8_t, uint8_t, uint32_t> dates[] = {
      {1, 1, 1, 0},           {1582, 10, 31, 577762},  {1582, 11, 0, 577762},
      {1582, 11, 4, 577766},  {1582, 11, 5, kBad},     {1582, 11, 14, kBad},
      {1582, 11, 15, 577767}, {1582, 11, 30, 577782},  {1582, 11, 31, kBad},
      {1582, 12, 1, 577783},  {1583, 1, 1, 577814},    {2024, 2, 29, 738945},
      {2026, 11, 15, 739935}, {8166, 12, 31, 2982570}, {0, 1, 1, kBad},
      {8167, 1, 1, kBad},     {2023, 13, 1, kBad},     {2023, 6, 31, kBad},
      {2023, 6, 0, kBad},     {2023, 2, 29, kBad},     {1700, 2, 29, kBad}};
  for (const auto& [year, month, day, days] : dates) {
    SCOPED_TRACE(testing::Message() << year << "-" << +month << "-" << +day);
    EXPECT_EQ(GetDayCount(strDate(year, month, day)), days);
    EXPECT_EQ(CheckDate(strDate(year, month, day)), days != kBad);
  }
  EXPECT_EQ(GetDayCount(8167), kBad);
  EXPECT_EQ(GetDayCount(2000, 13), kBad);
  // The day of the year ignores the gap.
  EXPECT_EQ(GetDayOfYearCount(strDate(1582, 11, 15)), 318u);
  EXPECT_EQ(GetDayOfYearCount(strDate(2024, 12, 31)), 365u);
  EXPECT_EQ(GetDayOfYearCount(strDate(2023, 0, 1)), kBad);
}

// Comparisons give the difference of the first field that differs; day
// differences skip the gap of 1582. Year and month differences come in
// ten-thousandths: each partial year or month is measured in minutes against
// its own length and truncated. Invalid dates give 0.
TEST(Calendar, ComparisonsAndDifferences) {
  const strDate d(2024, 3, 1);
  EXPECT_EQ(CompareDate(strDate(2024, 1, 31), d), -2);
  EXPECT_EQ(CompareDateTime(d, MakeTimeWord(10, 0), d, MakeTimeWord(7, 59)), 3);
  EXPECT_EQ(CompareDateTime(d, MakeTimeWord(7, 5), d, MakeTimeWord(7, 59)), -54);
  EXPECT_EQ(GetDayDiff(strDate(2025, 1, 1), strDate(2024, 1, 1)), -366);
  EXPECT_EQ(GetDayDiff(strDate(1582, 11, 4), strDate(1582, 11, 15)), 1);
  EXPECT_EQ(GetDayDiff(strDate(2023, 2, 29), strDate(2023, 3, 1)), 0);
  using Diff = int64_t (*)(strDate, uint16_t, strDate, uint16_t);
  const uint16_t noon = MakeTimeWord(12, 0);
  const std::tuple<Diff, strDate, uint16_t, strDate, uint16_t, int64_t> cases[] = {
      {GetYearDiff, {2023, 1, 1}, 0, {2023, 7, 1}, 0, 4958},
      {GetYearDiff, {2023, 7, 1}, 0, {2023, 1, 1}, 0, -4958},
      {GetYearDiff, {2020, 1, 1}, 0, {2023, 1, 1}, 0, 30000},
      // 184/365 of 2023 and 182/366 of 2024.
      {GetYearDiff, {2023, 7, 1}, 0, {2024, 7, 1}, 0, 5041 + 4972},
      {GetYearDiff, {2023, 1, 1}, 0, {2023, 1, 1}, noon, 13},
      {GetYearDiff, {2023, 2, 30}, 0, {2024, 1, 1}, 0, 0},
      {GetYearDiff, {2023, 1, 1}, MakeTimeWord(24, 0), {2024, 1, 1}, 0, 0},
      {GetMonthDiff, {2023, 3, 15}, noon, {2023, 4, 15}, noon, 5322 + 4833},
      {GetMonthDiff, {2023, 4, 15}, noon, {2023, 3, 15}, noon, -10155},
      {GetMonthDiff, {2023, 3, 1}, 0, {2023, 3, 16}, noon, 5000},
      {GetMonthDiff, {2022, 12, 1}, 0, {2024, 1, 1}, 0, 130000},
      {GetMonthDiff, {2022, 12, 1}, 0, {2022, 12, 1}, MakeTimeWord(0, 60), 0}};
  int row = 0;
  for (const auto& [diff, a, aTime, b, bTime, expected] : cases) {
    SCOPED_TRACE(row++);
    EXPECT_EQ(diff(a, aTime, b, bTime), expected);
  }
}

// How many times a day of the month comes round in a range; the missing 10
// November 1582 does not count.
TEST(Calendar, MonthDayOccurrences) {
  const std::tuple<uint8_t, strDate, strDate, uint32_t> cases[] = {
      {31, {2023, 1, 1}, {2023, 12, 31}, 7},     {29, {2023, 1, 1}, {2023, 12, 31}, 11},
      {29, {2024, 1, 1}, {2024, 12, 31}, 12},    {15, {2023, 1, 15}, {2023, 3, 14}, 2},
      {15, {2023, 1, 16}, {2023, 2, 14}, 0},     {15, {2023, 1, 15}, {2023, 1, 15}, 1},
      {1, {1, 1, 1}, {8166, 12, 31}, 8166 * 12}, {10, {1582, 10, 1}, {1582, 12, 31}, 2},
      {15, {1582, 10, 1}, {1582, 12, 31}, 3},    {1, {2023, 5, 2}, {2023, 5, 1}, 0},
      {0, {2023, 1, 1}, {2023, 12, 31}, 0},      {32, {2023, 1, 1}, {2023, 12, 31}, 0},
      {1, {2023, 2, 30}, {2023, 12, 31}, kBad}};
  int row = 0;
  for (const auto& [day, from, to, expected] : cases) {
    SCOPED_TRACE(row++);
    EXPECT_EQ(GetMonthDayCount(day, from, to), expected);
  }
  // The value form takes the dates of two values, times ignored.
  const uint32_t from = 738521u * kMinutesPerDay + 600;  // 1 January 2023 10:00
  const uint32_t to = 738885u * kMinutesPerDay + 1439;   // 31 December 2023 23:59
  EXPECT_EQ(GetMonthDayCount(31, from, to), 7u);
  EXPECT_EQ(GetMonthDayCount(31, from, kMaxDateTime + 1), kBad);
}

}  // namespace
}  // namespace tavi
