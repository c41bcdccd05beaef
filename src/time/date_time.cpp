//===- date_time.cpp - The date-time value class --------------------------===//
#include "tavi/time/date_time.h"

#include "platform/time.h"

namespace tavi {

namespace {

// Minutes in a week, the step of NextWeeek and PreviousWeeek.
constexpr uint32_t kMinutesPerWeek = 7 * kMinutesPerDay;

}  // namespace

bool XDateTime::IsValid() const {
  return hour_ <= 23 && minute_ <= 59 && CheckDate(AsDate());
}

uint32_t XDateTime::GetDateTime() const {
  return tavi::GetDateTime(AsDateTime());
}

void XDateTime::GetDate(XSystemTime& out) const {
  out.wYear = year_;
  out.wMonth = month_;
  out.wDay = day_;
}

void XDateTime::GetDateTime(XSystemTime& out) const {
  GetDate(out);
  out.wHour = hour_;
  out.wMinute = minute_;
}

bool XDateTime::SetDate(strDate date) {
  if (!CheckDate(date)) return false;
  _SetDate(date);
  return true;
}

bool XDateTime::SetDateTime(const strDateTime& dt) {
  if (dt.hour > 23 || dt.minute > 59 || !CheckDate(dt)) return false;
  _SetDateTime(dt);
  return true;
}

bool XDateTime::SetTime(uint8_t hour, uint8_t minute) {
  if (hour > 23 || minute > 59) return false;
  _SetTime(hour, minute);
  return true;
}

bool XDateTime::SetDate(const XSystemTime& time) {
  if (time.wYear > kLastYear || time.wMonth > 12 || time.wDay > 31) return false;
  return SetDate(
      strDate(time.wYear, static_cast<uint8_t>(time.wMonth), static_cast<uint8_t>(time.wDay)));
}

bool XDateTime::SetDateTime(const XSystemTime& time) {
  if (time.wYear > kLastYear || time.wMonth > 12 || time.wDay > 31 || time.wHour > 23 ||
      time.wMinute > 59) {
    return false;
  }
  return SetDateTime(strDateTime(time.wYear, static_cast<uint8_t>(time.wMonth),
                                 static_cast<uint8_t>(time.wDay), static_cast<uint8_t>(time.wHour),
                                 static_cast<uint8_t>(time.wMinute)));
}

bool XDateTime::SetDateTime(uint32_t value) {
  return tavi::SetDateTime(*this, value);
}

bool XDateTime::SetSystemDate() {
  return tavi::SetDate(*this, kInvalidDateTime);
}

bool XDateTime::SetSystemDateTime() {
  return tavi::SetDateTime(*this, kInvalidDateTime);
}

bool XDateTime::SetUTCDateTime() {
  XDateTime now;
  if (!now.SetSystemDateTime()) return false;
  int32_t bias = 0;
  if (platform::StandardTimeZoneBias(bias) && bias != 0) {
    const int64_t utc = int64_t{now.GetDateTime()} + bias;
    if (utc < 0 || utc > kMaxDateTime) return false;
    now.SetDateTime(static_cast<uint32_t>(utc));
  }
  *this = now;
  return true;
}

uint32_t XDateTime::GetDayType() const {
  return GetDayCount(AsDate()) % 7;
}

int32_t XDateTime::Compare(const strDateTime& other) const {
  return CompareDateTime(AsDate(), AsDateTime().TimeWord(), other, other.TimeWord());
}

int32_t XDateTime::Compare(const XDateTime& other) const {
  return Compare(other.AsDateTime());
}

int32_t XDateTime::Compare(uint32_t value) const {
  const uint32_t mine = GetDateTime();
  if (mine == kInvalidDateTime) return static_cast<int32_t>(~value);
  return static_cast<int32_t>(mine - value);
}

int64_t XDateTime::GetDayDiff(uint32_t value) const {
  const uint32_t mine = GetDateTime();
  if (mine == kInvalidDateTime || value > kMaxDateTime) return 0;
  return (int64_t{value} - int64_t{mine}) * 10000 / kMinutesPerDay;
}

int64_t XDateTime::GetDayDiff(const XDateTime& other) const {
  const uint32_t theirs = other.GetDateTime();
  return theirs == kInvalidDateTime ? 0 : GetDayDiff(theirs);
}

int64_t XDateTime::GetYearDiff(const XDateTime& other) const {
  return tavi::GetYearDiff(AsDate(), AsDateTime().TimeWord(), other.AsDate(),
                           other.AsDateTime().TimeWord());
}

int64_t XDateTime::GetYearDiff(uint32_t value) const {
  XDateTime other;
  if (value > kMaxDateTime || !other.SetDateTime(value)) return 0;
  return GetYearDiff(other);
}

int64_t XDateTime::GetMonthDiff(const XDateTime& other) const {
  return tavi::GetMonthDiff(AsDate(), AsDateTime().TimeWord(), other.AsDate(),
                            other.AsDateTime().TimeWord());
}

int64_t XDateTime::GetMonthDiff(uint32_t value) const {
  XDateTime other;
  if (value > kMaxDateTime || !other.SetDateTime(value)) return 0;
  return GetMonthDiff(other);
}

bool XDateTime::NextDay() {
  if (day_ < GetMonthDayCount(year_, month_)) {
    ++day_;
    return true;
  }
  day_ = 1;
  if (month_ < 12) {
    ++month_;
    return true;
  }
  month_ = 1;
  if (year_ >= kLastYear) return false;
  ++year_;
  return true;
}

bool XDateTime::NextMonth() {
  if (month_ >= 12) {
    month_ = 1;
    if (year_ >= kLastYear) return false;
    ++year_;
    return true;
  }
  ++month_;
  if (day_ >= 29) {
    const uint8_t length = GetMonthDayCount(year_, month_);
    if (day_ > length) day_ = length;
  }
  return true;
}

bool XDateTime::NextYear() {
  if (year_ >= kLastYear) return false;
  ++year_;
  return true;
}

bool XDateTime::PreviousDay() {
  if (day_ > 1) {
    --day_;
    return true;
  }
  if (month_ > 1) {
    --month_;
  } else {
    month_ = 12;
    if (year_ <= kFirstYear) return false;
    --year_;
  }
  day_ = GetMonthDayCount(year_, month_);
  return true;
}

bool XDateTime::PreviousMonth() {
  if (month_ > 1) {
    --month_;
    return true;
  }
  month_ = 12;
  if (year_ <= kFirstYear) return false;
  --year_;
  return true;
}

bool XDateTime::PreviousYear() {
  if (year_ <= kFirstYear) return false;
  --year_;
  return true;
}

bool XDateTime::NextWeeek() {
  const uint32_t value = GetDateTime();
  if (value == kInvalidDateTime || value > kMaxDateTime - kMinutesPerWeek) return false;
  return SetDateTime(value + kMinutesPerWeek);
}

bool XDateTime::PreviousWeeek() {
  const uint32_t value = GetDateTime();
  if (value == kInvalidDateTime || value < kMinutesPerWeek) return false;
  return SetDateTime(value - kMinutesPerWeek);
}

}  // namespace tavi
