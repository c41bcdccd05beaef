//===- time_posix.cpp - Clocks, local time and the time zone on POSIX -----===//
#include <time.h>

#include <atomic>
#include <mutex>

#include "platform/cpu.h"
#include "platform/time.h"

#if defined(__x86_64__) || defined(__i386__)
#include <x86intrin.h>
#endif

namespace tavi::platform {

bool LocalTimeNow(std::tm& out) {
  struct timespec now;
  if (clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
  time_t seconds = now.tv_sec;
  return localtime_r(&seconds, &out) != nullptr;
}

bool LocalTimeFromTimeT(int64_t seconds, std::tm& out) {
  time_t t = static_cast<time_t>(seconds);
  if (static_cast<int64_t>(t) != seconds) return false;
  return localtime_r(&t, &out) != nullptr;
}

namespace {

// Days from 1601-01-01 to a Gregorian date's year, month and day; the inverse of
// the usual era-based day count, shifted so that the year starts in March.
void CivilFromDays(int64_t days, int64_t& year, unsigned& month, unsigned& day) {
  // Shift the epoch from 1601-01-01 to 0000-03-01 (584694 days earlier).
  int64_t z = days + 584694;
  const int64_t era = z / 146097;  // z is never negative here
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = doy - (153 * mp + 2) / 5 + 1;
  month = mp < 10 ? mp + 3 : mp - 9;
  year = static_cast<int64_t>(yoe) + era * 400 + (month <= 2 ? 1 : 0);
}

}  // namespace

bool FileTimeToSystemTime(const XFileTime& fileTime, XSystemTime& out) {
  if (fileTime.value >> 63) return false;
  const uint64_t totalMs = fileTime.value / 10000;
  const uint64_t days = totalMs / 86400000;
  const uint64_t msOfDay = totalMs % 86400000;
  int64_t year;
  unsigned month, day;
  CivilFromDays(static_cast<int64_t>(days), year, month, day);
  out.wYear = static_cast<uint16_t>(year);
  out.wMonth = static_cast<uint16_t>(month);
  out.wDay = static_cast<uint16_t>(day);
  out.wDayOfWeek = static_cast<uint16_t>((days + 1) % 7);  // 1601-01-01 was a Monday
  out.wHour = static_cast<uint16_t>(msOfDay / 3600000);
  out.wMinute = static_cast<uint16_t>(msOfDay / 60000 % 60);
  out.wSecond = static_cast<uint16_t>(msOfDay / 1000 % 60);
  out.wMilliseconds = static_cast<uint16_t>(msOfDay % 1000);
  return true;
}

bool StandardTimeZoneBias(int32_t& minutes) {
  // tzset fills `timezone` with the standard offset in seconds west of UTC,
  // which is the bias with UTC = local + bias.
  tzset();
  minutes = static_cast<int32_t>(timezone / 60);
  return true;
}

uint64_t PerformanceCounter() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
}

uint64_t PerformanceFrequency() {
  return 1000000000u;
}

namespace {

#if defined(__x86_64__) || defined(__i386__)

// The time-stamp counter's rate against PerformanceCounter, measured from two
// pairs of reads at least kSpan apart. A pair counts only when the counter
// reads that bracket the PerformanceCounter read are at most kTightTicks apart
// (a few hundred nanoseconds at any rate the counter runs at), so a thread
// preempted inside a pair cannot skew the rate; the error is then below
// 0.01%.
struct TscScale {
  static constexpr uint64_t kSpan = 10000000;  // 10 ms
  static constexpr uint64_t kTightTicks = 2000;

  std::mutex lock;  // guards the measuring; the rate is read without it
  bool haveBase = false;
  uint64_t tsc0 = 0;  // the first pair; fixed once nsPerTick is set
  uint64_t ns0 = 0;
  std::atomic<uint64_t> nsPerTick{0};  // 32.32 fixed point; 0 until measured

  // Reads PerformanceCounter, and measures the rate when it can.
  uint64_t Measure() {
    const uint64_t before = __rdtsc();
    const uint64_t ns = PerformanceCounter();
    const uint64_t after = __rdtsc();
    std::unique_lock<std::mutex> hold(lock, std::try_to_lock);
    if (!hold.owns_lock() || after - before > kTightTicks) return ns;
    const uint64_t tsc = before + (after - before) / 2;
    if (!haveBase) {
      tsc0 = tsc;
      ns0 = ns;
      haveBase = true;
    } else if (ns - ns0 >= kSpan && tsc > tsc0 && nsPerTick.load(std::memory_order_relaxed) == 0) {
      const double rate = static_cast<double>(ns - ns0) / static_cast<double>(tsc - tsc0);
      nsPerTick.store(static_cast<uint64_t>(rate * 4294967296.0) | 1, std::memory_order_release);
    }
    return ns;
  }
};

// Null when the time-stamp counter is not to be used.
TscScale* Scale() {
  static TscScale* const scale = []() -> TscScale* {
    if (ForcePortableKernels() || !GetCpuFeatures().invariantTsc) return nullptr;
    static TscScale s;
    return &s;
  }();
  return scale;
}

// ticks * nsPerTick / 2^32 without a 128-bit product: both factors are split
// into 32-bit halves, and the low halves' product, the only one that needs
// the shift, keeps just its top part.
uint64_t TicksToNanoseconds(uint64_t ticks, uint64_t nsPerTick) {
  const uint64_t th = ticks >> 32, tl = ticks & 0xFFFFFFFFu;
  const uint64_t mh = nsPerTick >> 32, ml = nsPerTick & 0xFFFFFFFFu;
  return ticks * mh + th * ml + ((tl * ml) >> 32);
}

#endif

}  // namespace

uint64_t FastCounter() {
#if defined(__x86_64__) || defined(__i386__)
  TscScale* s = Scale();
  if (s == nullptr) return PerformanceCounter();
  const uint64_t nsPerTick = s->nsPerTick.load(std::memory_order_acquire);
  if (nsPerTick != 0) return s->ns0 + TicksToNanoseconds(__rdtsc() - s->tsc0, nsPerTick);
  return s->Measure();
#else
  return PerformanceCounter();
#endif
}

uint64_t TickCountMs() {
  return PerformanceCounter() / 1000000u;
}

}  // namespace tavi::platform
