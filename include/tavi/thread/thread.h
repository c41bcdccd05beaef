//===- thread.h - Threads: start, wait, exit code ---------------*- C++ -*-===//
//
// XThread is a thin, copyable holder of a platform thread handle: it starts a
// thread function, waits for it and reads its exit code. XWaitForThread waits
// for a thread while a window shows a status text.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

struct XPlatformThread;

// A thread function: receives the context given to Run; its result is the
// thread's exit code.
using XThreadRoutine = uint32_t (*)(void* context);

// The exit code GetThreadResult reads while the thread still runs.
inline constexpr uint32_t kThreadStillActive = 259;

// Thread priority levels for Run and SetThreadPriority.
inline constexpr int32_t kThreadPriorityIdle = -15;
inline constexpr int32_t kThreadPriorityLowest = -2;
inline constexpr int32_t kThreadPriorityBelowNormal = -1;
inline constexpr int32_t kThreadPriorityNormal = 0;
inline constexpr int32_t kThreadPriorityAboveNormal = 1;
inline constexpr int32_t kThreadPriorityHighest = 2;
inline constexpr int32_t kThreadPriorityTimeCritical = 15;

// XThread holds the handle of one thread, or none. Copies share the handle
// (it is not duplicated), and the destructor does not close it: WaitForEnd is
// the one operation that closes it, so call it on one copy only. The object
// does not guard its own field;
// start and end it from one thread. No error state is kept.
class TAVI_API XThread {
 public:
  XThread() = default;

  // Run starts routine(context) at once on a new thread with the default stack
  // size and sets `priority` (whether that takes is not checked: raising it may
  // need privileges). False when the thread cannot be created. A handle already
  // held is overwritten, not closed.
  bool Run(XThreadRoutine routine, void* context, int32_t priority);
  // WaitForObject waits without limit; true only when the thread has ended
  // (false with no handle).
  bool WaitForObject();
  // TryWaitForObject: true when the thread has already ended (or ends within
  // `milliseconds`).
  bool TryWaitForObject();
  bool TryWaitForObject(uint32_t milliseconds);
  // SetThreadPriority sets one of the kThreadPriority levels; false for another
  // value, an ended thread, no handle, or a raise the process may not make.
  bool SetThreadPriority(int32_t priority);
  // GetThreadResult reads the exit code (kThreadStillActive while the thread
  // runs); false with no handle.
  bool GetThreadResult(uint32_t& exitCode);
  // WaitForEnd waits without limit, closes and forgets the handle and returns
  // the exit code; 0xFFFFFFFF when there is no handle.
  uint32_t WaitForEnd();

  // The platform handle; null when none is held.
  XPlatformThread* Handle() const { return handle_; }

 private:
  XPlatformThread* handle_ = nullptr;
};

// XAutoThread holds one word; assignment copies it, and that is all it does.
class TAVI_API XAutoThread {
 public:
  XAutoThread() = default;
  XAutoThread(const XAutoThread& other) = default;
  XAutoThread& operator=(const XAutoThread& other);

 private:
  uint32_t word_ = 0;
};

// XWaitForThread returns true at once when the thread has already ended (the
// window is not touched). Otherwise, when textId is not 0, it sets the window's
// text to the library string textId ("???" when there is none), through the
// host's user-interface table, and waits without limit; false when that wait
// fails (for instance with no handle). The handle is not closed.
TAVI_API bool XWaitForThread(XThread& thread, uint32_t textId, XWindow window);

}  // namespace tavi
