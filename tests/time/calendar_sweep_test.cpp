//===- calendar_sweep_test.cpp - Properties over every day of the calendar ===//
#include <gtest/gtest.h>

#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"

namespace tavi {
namespace {

constexpr uint32_t kLastDay = kMaxDateTime / kMinutesPerDay;  // 31 December 8166

bool InNovember1582(const XDateTime& d) {
  return d.GetYear() == 1582 && d.GetMonth() == 11;
}

// Walks every day from 1 January 1 to 31 December 8166 with NextDay beside the
// day number, and checks that the fields, the value and the weekday agree.
// In November 1582 the walk jumps the gap itself: NextDay steps through the
// missing days by the month length of 21 there (pinned down in date_time_test).
TEST(CalendarSweep, EveryDayRoundTripsAndStepsByOneDay) {
  XDateTime walker(1, 1, 1);
  uint32_t weekday = 0;
  for (uint32_t n = 0; n <= kLastDay; ++n) {
    const uint32_t value = n * kMinutesPerDay;
    XDateTime fromValue;
    ASSERT_TRUE(fromValue.SetDateTime(value)) << n;
    ASSERT_EQ(fromValue.GetDateTime(), value) << n;
    ASSERT_TRUE(CheckDate(fromValue.AsDate())) << n;
    ASSERT_EQ(fromValue.GetDayType(), weekday) << n;
    weekday = (weekday + 1) % 7;

    ASSERT_EQ(walker.Compare(fromValue), 0) << n;
    if (InNovember1582(walker) && (walker.GetDay() == 4 || walker.GetDay() >= 21)) {
      walker = value + kMinutesPerDay;
    } else {
      ASSERT_EQ(walker.NextDay(), n != kLastDay) << n;
    }
  }
}

// Every minute of a few days either side of each year boundary converts back
// to itself; the sweep above covers midnights only.
TEST(CalendarSweep, MinutesRoundTripAroundYearEnds) {
  for (uint32_t year = 2; year <= kLastYear; year += 7) {
    const uint32_t start = GetDayCount(static_cast<uint16_t>(year)) * kMinutesPerDay;
    for (uint32_t v = start - 2 * kMinutesPerDay; v < start + 2 * kMinutesPerDay; v += 13) {
      XDateTime d;
      ASSERT_TRUE(d.SetDateTime(v));
      ASSERT_EQ(d.GetDateTime(), v);
      ASSERT_EQ(d.GetHour(), v / 60 % 24);
      ASSERT_EQ(d.GetMinute(), v % 60);
    }
  }
}

TEST(CalendarSweep, WeeksAndMonthsCoverTheCalendar) {
  XDateTime d(1, 1, 1, 6, 30);
  uint32_t weeks = 0;
  while (d.NextWeeek()) ++weeks;
  EXPECT_EQ(weeks, kLastDay / 7);
  EXPECT_EQ(d.GetDayType(), 0u);  // every step lands on a Sunday like 1 January 1
  while (d.PreviousWeeek()) --weeks;
  EXPECT_EQ(weeks, 0u);
  EXPECT_EQ(d.Compare(XDateTime(1, 1, 1, 6, 30)), 0);

  XDateTime m(1, 1, 1);
  uint32_t months = 0;
  while (m.NextMonth()) ++months;
  EXPECT_EQ(months, kLastYear * 12u - 1);
}

}  // namespace
}  // namespace tavi
