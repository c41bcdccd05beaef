//===- progress_clock.h - The timer that throttles progress -----*- C++ -*-===//
//
// Progress output is throttled by the process timer; tests replace it with a
// clock they drive, so that throttling is checked without waiting.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::internal {

// ProgressNow and ProgressFrequency read the replacement clock when one is
// set, else the process timer.
uint64_t ProgressNow();
uint64_t ProgressFrequency();

// SetProgressClock makes `now` (ticking `frequency` times a second) the clock
// of every later progress call; a null `now` restores the process timer. Set it
// while no progress operation runs.
void SetProgressClock(uint64_t (*now)(), uint64_t frequency);

}  // namespace tavi::internal
