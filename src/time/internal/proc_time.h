//===- proc_time.h - The process timer --------------------------*- C++ -*-===//
//
// The high-resolution timer that progress and speed displays measure with.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::internal {

// ProcTimeFrequency returns the timer's ticks per second, read from the
// platform on first use and kept for the life of the process.
uint64_t ProcTimeFrequency();

// ProcTimeNow returns the timer's tick count: the performance counter when its
// frequency is above 1, else the millisecond clock.
uint64_t ProcTimeNow();

}  // namespace tavi::internal
