//===- system_time_test.cpp - Dates from the clock, time_t and file times -===//
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <optional>
#include <string>

#include "platform/time.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"

namespace tavi {
namespace {

// Sets TZ for the life of the object and restores the previous zone after.
struct ScopedTimeZone {
  explicit ScopedTimeZone(const char* zone) {
    if (const char* old = getenv("TZ")) previous = old;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    previous ? setenv("TZ", previous->c_str(), 1) : unsetenv("TZ");
    tzset();
  }
  std::optional<std::string> previous;
};

constexpr uint32_t k1601 = 584389u * 1440;     // 1 January 1601
constexpr uint32_t k1970 = 719163u * 1440;     // 1 January 1970
constexpr uint32_t kLeapDay = 738945u * 1440;  // 29 February 2024

TEST(SystemTime, FileTimesAreBrokenDownInUtc) {
  // 2024-02-29 13:45:59.999 UTC, a Thursday.
  const uint64_t leapDay = kFileTimeOfUnixEpoch + (1709214359ull * 1000 + 999) * 10000;
  XSystemTime st;
  ASSERT_TRUE(platform::FileTimeToSystemTime(XFileTime{leapDay}, st));
  EXPECT_EQ(st.wDayOfWeek, 4);
  EXPECT_EQ(st.wSecond * 1000 + st.wMilliseconds, 59999);
  EXPECT_EQ(GetDateTime(XFileTime{leapDay}), kLeapDay + 13 * 60 + 45);
  EXPECT_EQ(GetDateTime(XFileTime{kFileTimeOfUnixEpoch}), k1970);
  EXPECT_EQ(GetDateTime(XFileTime{0}), k1601);
  // Counts with the top bit set cannot be converted; the largest one that can
  // lies in year 30828, beyond the calendar.
  EXPECT_EQ(GetDateTime(XFileTime{1ull << 63}), 0u);
  EXPECT_EQ(GetDateTime(XFileTime{(1ull << 63) - 1}), kInvalidDateTime);
}

TEST(SystemTime, TimeTIsConvertedToLocalTime) {
  // The epoch, 2024-02-29 13:45:59 UTC, a time in year 11476 and one before year 1.
  const int64_t times[] = {0, 1709214359, 300000000000, -62200000000};
  {
    ScopedTimeZone utc("UTC0");
    EXPECT_EQ(GetDateTime(&times[0]), k1970);
    EXPECT_EQ(GetDateTime(&times[1]), kLeapDay + 13 * 60 + 45);
    EXPECT_EQ(GetDateTime(&times[2]), kInvalidDateTime);
    EXPECT_EQ(GetDateTime(&times[3]), kInvalidDateTime);
  }
  ScopedTimeZone east("XST-5:30");  // 5 h 30 min east of Greenwich
  EXPECT_EQ(GetDateTime(&times[1]), kLeapDay + 19 * 60 + 15);
  EXPECT_EQ(GetDateTime(static_cast<const int64_t*>(nullptr)), 0u);
}

TEST(SystemTime, NowFollowsTheClockAndTodayIsItsMidnight) {
  const int64_t before = static_cast<int64_t>(time(nullptr));
  const uint32_t now = XGetSystemDateTime();
  const int64_t after = static_cast<int64_t>(time(nullptr));
  EXPECT_GE(now, GetDateTime(&before));
  EXPECT_LE(now, GetDateTime(&after));
  const uint32_t today = XGetSystemDate();  // now's midnight, or the next one just passed
  EXPECT_EQ(today % kMinutesPerDay, 0u);
  EXPECT_LT(now, today + kMinutesPerDay);
  EXPECT_LE(today, XGetSystemDateTime());
  XDateTime d;
  ASSERT_TRUE(d.SetSystemDate());
  EXPECT_EQ(d.GetDateTime() % kMinutesPerDay, 0u);
  ASSERT_TRUE(d.SetDateTime(kInvalidDateTime));  // "now"
  EXPECT_GE(d.GetDateTime(), now);
}

TEST(SystemTime, UtcAddsTheStandardBias) {
  ScopedTimeZone zone("EST5EDT");  // standard bias of 300 minutes, daylight not used
  int32_t bias = 0;
  ASSERT_TRUE(platform::StandardTimeZoneBias(bias));
  EXPECT_EQ(bias, 300);
  XDateTime local, utc;
  for (int attempt = 0; attempt < 3; ++attempt) {
    ASSERT_TRUE(local.SetSystemDateTime());
    ASSERT_TRUE(utc.SetUTCDateTime());
    if (utc.GetDateTime() - local.GetDateTime() == 300) break;  // same minute
  }
  EXPECT_EQ(utc.GetDateTime() - local.GetDateTime(), 300u);
}

}  // namespace
}  // namespace tavi
