//===- proc_time.cpp - The process timer ----------------------------------===//
#include "time/internal/proc_time.h"

#include "platform/time.h"

namespace tavi::internal {

uint64_t ProcTimeFrequency() {
  static const uint64_t frequency = platform::PerformanceFrequency();
  return frequency;
}

uint64_t ProcTimeNow() {
  return ProcTimeFrequency() > 1 ? platform::PerformanceCounter() : platform::TickCountMs();
}

}  // namespace tavi::internal
