//===- progress.h - Progress display and cancellation -----------*- C++ -*-===//
//
// Progress records for long operations: a running count shown in a window's
// title through the user-interface table, throttled, nestable, and stopped by
// a cancel flag that the caller's user interface sets.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <atomic>
#include <cstdint>

#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

struct strProgress;

// The "unknown total" marker of ProgressStart.
inline constexpr uint64_t kProgressTotalUnknown = ~uint64_t{0};

// Progress states.
inline constexpr uint32_t kProgressRunning = 0;
inline constexpr uint32_t kProgressFailed = 1;
inline constexpr uint32_t kProgressCancelled = 2;

// strProgressOptions belongs to the caller and outlives every operation that
// uses it. `cancel` may be set from any thread (ProgressStart clears it; the
// next ProgressSet sees it). `window` is where progress is shown (null: no
// display); `value` is copied into each progress record for the caller's own
// use. `innermost` is the head of the chain of nested records running under
// these options; it starts null and only the progress functions change it.
struct strProgressOptions {
  std::atomic<bool> cancel{false};
  XWindow window = nullptr;
  uint32_t value = 0;
  strProgress* innermost = nullptr;
};

// strProgress is one running operation, usually in the caller's frame, from
// ProgressStart to its one ProgressEnd. The fields are the display's working
// state; callers read `done`, `total` and `state` but set nothing directly.
struct TAVI_API strProgress {
  XWindow window = nullptr;
  uint32_t value = 0;
  strProgressOptions* options = nullptr;
  strProgress** chain = nullptr;   // the options' innermost slot
  XString16 title;                 // the title followed by one space
  bool platformError = false;      // setting the window title failed...
  uint32_t platformErrorCode = 0;  // ...with this platform error
  uint64_t done = 0;
  uint64_t total = 0;
  uint64_t shown = 99999;       // last shown value; starts out of range so the first differs
  uint64_t lastOutput = 0;      // timer ticks of the last output
  uint64_t interval = 1;        // timer ticks between outputs (half a second)
  strProgress* prev = nullptr;  // the next inner record of the chain
  strProgress* next = nullptr;  // the next outer record of the chain
  uint32_t state = kProgressRunning;
};

// ProgressStart begins an operation of `total` units (kProgressTotalUnknown when
// not known): clears the options' cancel flag, takes the title (titleLen code
// units; a space is added after it), resets the counts, and makes the record the
// innermost of the options' chain. With an unknown total the title is shown at
// once. The title-text form takes the title's text. The ID form takes the title from the library's
// string table (XLibStringResource; "???" when the ID is missing): modules carry no string tables
// on this platform, so `module` selects nothing.
TAVI_API void ProgressStart(strProgress& progress, const char16_t* title, uint32_t titleLen,
                            uint64_t total, strProgressOptions& options);
TAVI_API void ProgressStart(strProgress& progress, const TTitleTextBase& title, uint64_t total,
                            strProgressOptions& options);
TAVI_API void ProgressStart(strProgress& progress, uint32_t titleId, uint64_t total,
                            strProgressOptions& options, XModule module);

// ProgressSet records `done` units and returns the state: kProgressRunning, or
// kProgressCancelled once the options' cancel flag is seen. At most every half
// second it computes the shown value and writes the title when the value
// changed (always, with an unknown total). The shown value is
// ((done + total / 200) / total) * 100 in integer arithmetic, quotient first: it
// reads 0 until done reaches total - total / 200 and then 100, and display code
// relies on that order of operations. A total of 0 shows 100. Cost: a clock read
// and a process-wide lock; safe to call from several threads on one record only
// when they serialise the calls (the threaded XMake forms do). Titles are set
// through the user-interface table with that lock held, so the host's
// set_window_text must not call back into these functions.
TAVI_API int32_t ProgressSet(strProgress& progress, uint64_t done);

// ProgressEnd unlinks the record. When it was the innermost and the next outer
// record shows progress in the same window, that record's title is shown again
// at once; otherwise the record's window (if any) gets the final title. True
// when the state is kProgressRunning. The two-argument form first sets
// kProgressFailed when ok is false.
TAVI_API bool ProgressEnd(strProgress& progress);
TAVI_API bool ProgressEnd(strProgress& progress, bool ok);

// The display steps, for callers that draw progress themselves.
// ProgressOutput shows the value when the record is the innermost of its chain
// and has a window, and takes the output time in every case.
TAVI_API void ProgressOutput(strProgress& progress);
// ProgressSetTitleValue sets the window title to the title followed by the
// value: "<shown>%" with a known total, the done count with an unknown one.
// ProgressSetTitleResult sets it to the title followed by "done", "failed" or
// "cancelled" for the state. Both record a failure of the user interface in
// platformError/platformErrorCode and return false.
TAVI_API bool ProgressSetTitleValue(strProgress& progress);
TAVI_API bool ProgressSetTitleResult(strProgress& progress);

}  // namespace tavi
