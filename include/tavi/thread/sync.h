//===- sync.h - Mutexes, binary semaphores and critical sections -*- C++ -*-===//
//
// XMutex, XSemaphore and XCriticalSection: thin holders of the platform's
// synchronisation objects. They keep no error state; every operation answers
// with a boolean or a wait result. None guards its own fields: set one up and
// destroy it from one thread while no other thread uses it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/export.h"

namespace tavi {

struct XPlatformMutex;
struct XPlatformSemaphore;

// The results of _WaitForObject.
inline constexpr uint32_t kWaitObject0 = 0;          // acquired
inline constexpr uint32_t kWaitAbandoned0 = 0x80;    // acquired; the owner ended holding it
inline constexpr uint32_t kWaitTimeout = 258;        // not acquired in time
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;  // no handle, or the wait failed

// XMutex is a recursive mutex that remembers its owner thread, so that a
// waiter can tell when the owner ended without releasing it. Copies share the
// one mutex; each copy's destructor or Destroy closes its hold, and the mutex
// is freed with the last (so a copy never holds a dangling handle).
class TAVI_API XMutex {
 public:
  XMutex() = default;
  XMutex(const XMutex& other);
  XMutex& operator=(const XMutex& other);
  ~XMutex();

  // Init creates an unnamed mutex, not owned; true when created. A handle
  // already held is overwritten, not closed.
  bool Init();
  // WaitForObject waits without limit, TryWaitForObject does not wait; both are
  // true only when the mutex was acquired normally (false for an abandoned
  // mutex, which is then owned all the same, a time-out or no handle).
  bool WaitForObject();
  bool TryWaitForObject();
  // _WaitForObject waits without limit and returns the wait result as it is:
  // kWaitObject0, kWaitAbandoned0 (acquired) or kWaitFailed.
  uint32_t _WaitForObject();
  // Release releases one acquisition; false when this thread does not own it.
  bool Release();
  // Destroy closes a held handle and forgets it; true only when one was held.
  bool Destroy();

 private:
  XPlatformMutex* handle_ = nullptr;
};

// XSemaphore is a binary signal: a count of 0 or 1. Its operations are
// protected, for derived classes that expose them. The destructor does not
// close the handle; Destroy does.
class TAVI_API XSemaphore {
 protected:
  XSemaphore() = default;

  // Init creates an unnamed semaphore with the count initialCount (0 or 1; other
  // values fail) and a maximum of 1; true when created. A handle already held is
  // overwritten, not closed.
  bool Init(int32_t initialCount);
  // WaitForObject waits without limit for the count to be 1 and takes it to 0;
  // TryWaitForObject does so only when it is 1 now. False with no handle.
  bool WaitForObject();
  bool TryWaitForObject();
  // Release sets the count to 1 and wakes a waiter; false when it is 1 already.
  bool Release();
  // Destroy closes the handle; no thread may be waiting. The handle is gone
  // afterwards, so every later operation fails; true when one was held.
  bool Destroy();

 private:
  XPlatformSemaphore* handle_ = nullptr;
};

// XCriticalSection is a recursive lock within the process: the thread that
// entered it must leave it, once per entry. The lock lives inside the object,
// so copying or assigning one leaves each object with its own lock.
class TAVI_API XCriticalSection {
 public:
  XCriticalSection();
  XCriticalSection(const XCriticalSection&);
  XCriticalSection& operator=(const XCriticalSection&);
  ~XCriticalSection();

  void Enter();
  void Lock() { Enter(); }
  void Leave();
  void Unlock() { Leave(); }
  // Clean deletes the lock as the destructor would; the object must not be
  // entered afterwards (the destructor then does nothing more).
  void Clean();

 private:
  alignas(std::max_align_t) unsigned char record_[64];
  bool live_ = false;
};

}  // namespace tavi
