//===- system_time_test.cpp - Dates from the clock, time_t and file times -===//
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <string>

#include "platform/time.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"

namespace tavi {
namespace {

// Sets TZ for the life of the object and restores the previous zone after.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    if (const char* old = getenv("TZ")) {
      had_ = true;
      old_ = old;
    }
    setenv("TZ", zone, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    if (had_) {
      setenv("TZ", old_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  bool had_ = false;
  std::string old_;
};

uint32_t ValueOf(uint16_t y, uint8_t m, uint8_t d, uint8_t h = 0, uint8_t mi = 0) {
  return GetDateTime(strDateTime(y, m, d, h, mi));
}

TEST(SystemTime, FileTimesAreBrokenDownInUtc) {
  EXPECT_EQ(GetDateTime(XFileTime{kFileTimeOfUnixEpoch}), ValueOf(1970, 1, 1));
  EXPECT_EQ(GetDateTime(XFileTime{0}), ValueOf(1601, 1, 1));
  // 2024-02-29 13:45:59.999 UTC.
  const uint64_t leapDay = kFileTimeOfUnixEpoch + (1709214359ull * 1000 + 999) * 10000;
  XSystemTime st;
  ASSERT_TRUE(platform::FileTimeToSystemTime(XFileTime{leapDay}, st));
  EXPECT_EQ(st.wYear, 2024);
  EXPECT_EQ(st.wMonth, 2);
  EXPECT_EQ(st.wDay, 29);
  EXPECT_EQ(st.wDayOfWeek, 4);  // a Thursday
  EXPECT_EQ(st.wHour, 13);
  EXPECT_EQ(st.wMinute, 45);
  EXPECT_EQ(st.wSecond, 59);
  EXPECT_EQ(st.wMilliseconds, 999);
  EXPECT_EQ(GetDateTime(XFileTime{leapDay}), ValueOf(2024, 2, 29, 13, 45));
  // Counts with the top bit set cannot be converted; the largest one that can
  // lies in year 30828, beyond the calendar.
  EXPECT_EQ(GetDateTime(XFileTime{1ull << 63}), 0u);
  ASSERT_TRUE(platform::FileTimeToSystemTime(XFileTime{(1ull << 63) - 1}, st));
  EXPECT_EQ(st.wYear, 30828);
  EXPECT_EQ(GetDateTime(XFileTime{(1ull << 63) - 1}), kInvalidDateTime);
}

TEST(SystemTime, TimeTIsConvertedToLocalTime) {
  const int64_t epoch = 0;
  const int64_t later = 1709214359;  // 2024-02-29 13:45:59 UTC
  {
    ScopedTimeZone utc("UTC0");
    EXPECT_EQ(GetDateTime(&epoch), ValueOf(1970, 1, 1));
    EXPECT_EQ(GetDateTime(&later), ValueOf(2024, 2, 29, 13, 45));
    // Times outside the calendar (year 11476, and before year 1).
    const int64_t farFuture = 300000000000;
    const int64_t farPast = -62200000000;
    EXPECT_EQ(GetDateTime(&farFuture), kInvalidDateTime);
    EXPECT_EQ(GetDateTime(&farPast), kInvalidDateTime);
  }
  {
    ScopedTimeZone east("XST-5:30");  // 5 h 30 min east of Greenwich
    EXPECT_EQ(GetDateTime(&later), ValueOf(2024, 2, 29, 19, 15));
  }
  EXPECT_EQ(GetDateTime(static_cast<const int64_t*>(nullptr)), 0u);
}

TEST(SystemTime, TodayIsAMidnightAndNowFollowsTheClock) {
  const uint32_t today = XGetSystemDate();
  EXPECT_NE(today, 0u);
  EXPECT_EQ(today % kMinutesPerDay, 0u);

  const int64_t before = static_cast<int64_t>(time(nullptr));
  const uint32_t now = XGetSystemDateTime();
  const int64_t after = static_cast<int64_t>(time(nullptr));
  EXPECT_GE(now, GetDateTime(&before));
  EXPECT_LE(now, GetDateTime(&after));

  XDateTime d;
  ASSERT_TRUE(d.SetSystemDate());
  EXPECT_EQ(d.GetHour(), 0);
  EXPECT_EQ(d.GetMinute(), 0);
  EXPECT_LE(d.GetDateTime(), XGetSystemDate());
  ASSERT_TRUE(d.SetDateTime(kInvalidDateTime));  // "now"
  EXPECT_GE(d.GetDateTime(), now);

  std::tm tm;
  ASSERT_TRUE(SetCurrLocalTime(tm));
  EXPECT_GE(tm.tm_year + 1900, 2024);
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

  ScopedTimeZone east("XST-2");
  ASSERT_TRUE(local.SetSystemDateTime());
  ASSERT_TRUE(utc.SetUTCDateTime());
  EXPECT_LE(local.GetDateTime() - utc.GetDateTime(), 121u);
  EXPECT_GE(local.GetDateTime() - utc.GetDateTime(), 120u);
}

}  // namespace
}  // namespace tavi
