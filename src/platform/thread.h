//===- thread.h - Threads and mutexes of the operating system ---*- C++ -*-===//
//
// The platform's threads (start, wait with a time limit, exit code, priority)
// and its owner-tracked mutexes, with the wait results and exit codes that the
// library's thread classes report on every platform.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi {
// The records behind the handles of XThread and XMutex; defined by the platform.
struct XPlatformThread;
struct XPlatformMutex;
}  // namespace tavi

namespace tavi::platform {

// Wait results.
inline constexpr uint32_t kWaitSignalled = 0;
inline constexpr uint32_t kWaitAbandoned = 0x80;
inline constexpr uint32_t kWaitTimeout = 258;
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;
// A time limit of kWaitInfinite waits for ever.
inline constexpr uint32_t kWaitInfinite = 0xFFFFFFFF;
// The exit code a thread reports while it runs.
inline constexpr uint32_t kStillActive = 259;

using ThreadRoutine = uint32_t (*)(void* context);

// CreateThread starts routine(context) at once on a new thread with the default
// stack size; null when the thread cannot be created. The handle stays valid
// until CloseThread, whether or not the thread still runs.
XPlatformThread* CreateThread(ThreadRoutine routine, void* context);
// WaitThread waits up to `milliseconds` for the thread to end: kWaitSignalled,
// kWaitTimeout, or kWaitFailed for a null handle.
uint32_t WaitThread(XPlatformThread* thread, uint32_t milliseconds);
// GetThreadExitCode gives the routine's result, or kStillActive while it runs;
// false for a null handle.
bool GetThreadExitCode(XPlatformThread* thread, uint32_t& exitCode);
// SetThreadPriority takes the priority levels -15 (idle), -2..2 (lowest to
// highest around normal 0) and 15 (time critical) and maps them onto the
// scheduler's nice value relative to the process. False for other values, a
// null or ended thread, or a raise the process may not make.
bool SetThreadPriority(XPlatformThread* thread, int32_t priority);
// CloseThread gives the handle up; a running thread goes on. False for null.
bool CloseThread(XPlatformThread* thread);

// CreateMutex makes a recursive mutex that remembers its owner thread: when the
// owner ends while holding it, the next waiter acquires it with kWaitAbandoned.
// Null when it cannot be created.
XPlatformMutex* CreateMutex();
// WaitMutex acquires the mutex within `milliseconds` (0 tests without
// waiting): kWaitSignalled, kWaitAbandoned (acquired; the previous owner
// ended without releasing it), kWaitTimeout, or kWaitFailed.
uint32_t WaitMutex(XPlatformMutex* mutex, uint32_t milliseconds);
// ReleaseMutex releases one acquisition; false when the calling thread does not
// own the mutex or the handle is null.
bool ReleaseMutex(XPlatformMutex* mutex);
// RetainMutex adds a holder to the handle (for a copy); CloseMutex removes one
// and frees the mutex with the last. No thread may be waiting on it then.
// Both are false for null.
bool RetainMutex(XPlatformMutex* mutex);
bool CloseMutex(XPlatformMutex* mutex);

}  // namespace tavi::platform
