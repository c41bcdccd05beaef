//===- time.h - Clocks, local time and the time zone ------------*- C++ -*-===//
//
// The platform's time services: the local time of the C library, time_t and
// file-time conversions, the time-zone bias and the high-resolution counter.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <ctime>

#include "tavi/time/system_time.h"

namespace tavi::platform {

// LocalTimeNow fills `out` with the current local time as the C library's
// localtime gives it (tm_year counts from 1900, tm_mon from 0). False when the
// clock or the time-zone conversion fails; `out` is then unspecified.
bool LocalTimeNow(std::tm& out);

// LocalTimeFromTimeT converts seconds since 1970-01-01 00:00 UTC to local time.
// False when the value cannot be represented.
bool LocalTimeFromTimeT(int64_t seconds, std::tm& out);

// FileTimeToSystemTime breaks a UTC file time into calendar fields (Gregorian,
// UTC, no zone applied). False for counts with the top bit set.
bool FileTimeToSystemTime(const XFileTime& fileTime, XSystemTime& out);

// StandardTimeZoneBias gives the bias of the local zone's standard time in
// minutes, so that UTC = local + bias (a zone east of Greenwich has a negative
// bias). Daylight saving is not included. False when it cannot be had.
bool StandardTimeZoneBias(int32_t& minutes);

// PerformanceCounter is a monotonic tick count; PerformanceFrequency its ticks
// per second (never 0 on POSIX, where ticks are nanoseconds).
uint64_t PerformanceCounter();
uint64_t PerformanceFrequency();

// FastCounter reads PerformanceCounter's timeline (nanoseconds) for a few
// nanoseconds and no system call where the processor has an invariant
// time-stamp counter: that counter scaled by its rate, measured against
// PerformanceCounter over the first 10 ms or so of use. Until then, without
// such a counter, or when TAVI_FORCE_PORTABLE is set, it is PerformanceCounter
// itself. The counters of different cores are taken to be in step, as the
// kernel takes them for its own clock; callers that compare reads from
// different cores treat a difference below zero as zero.
uint64_t FastCounter();

// TickCountMs is a monotonic millisecond clock.
uint64_t TickCountMs();

}  // namespace tavi::platform
