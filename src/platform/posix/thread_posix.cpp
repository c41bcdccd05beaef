//===- thread_posix.cpp - Threads and robust mutexes on POSIX -------------===//
#include <errno.h>
#include <pthread.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>

#include "platform/thread.h"

namespace tavi {

// A thread record is shared by its handle and by the running thread; whichever
// lets go last frees it, so a handle may be closed while the thread runs.
struct XPlatformThread {
  platform::ThreadRoutine routine;
  void* context;
  std::mutex lock;
  std::condition_variable ended;
  bool finished = false;
  uint32_t exitCode = platform::kStillActive;
  pid_t tid = 0;            // set by the thread when it starts
  int baseNice = 0;         // the creator's nice value
  bool pendingSet = false;  // a priority asked for before the thread started
  int pendingNice = 0;
  std::atomic<int> refs{2};

  void Unref() {
    if (refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
};

// The owner and its count of acquisitions are kept beside the mutex so that a
// release by a thread that does not own it is refused without asking the
// mutex (unlocking a mutex one does not hold is an error the thread checkers
// report, even where the system refuses it cleanly).
struct XPlatformMutex {
  pthread_mutex_t mutex;
  std::atomic<pthread_t> owner{};  // meaningful while depth > 0
  std::atomic<bool> owned{false};
  uint32_t depth = 0;  // changed only by the owner
  std::atomic<int> refs{1};
};

}  // namespace tavi

namespace tavi::platform {

namespace {

void* ThreadStart(void* arg) {
  auto* t = static_cast<XPlatformThread*>(arg);
  {
    std::lock_guard<std::mutex> hold(t->lock);
    t->tid = gettid();
    if (t->pendingSet) setpriority(PRIO_PROCESS, static_cast<id_t>(t->tid), t->pendingNice);
  }
  const uint32_t code = t->routine(t->context);
  {
    std::lock_guard<std::mutex> hold(t->lock);
    t->exitCode = code;
    t->finished = true;
  }
  t->ended.notify_all();
  t->Unref();
  return nullptr;
}

// The nice offset of a priority level; false for a level that does not exist.
bool NiceOffset(int32_t priority, int& offset) {
  switch (priority) {
    case -15:
      offset = 19;
      return true;
    case -2:
      offset = 10;
      return true;
    case -1:
      offset = 5;
      return true;
    case 0:
      offset = 0;
      return true;
    case 1:
      offset = -5;
      return true;
    case 2:
      offset = -10;
      return true;
    case 15:
      offset = -20;
      return true;
    default:
      return false;
  }
}

}  // namespace

XPlatformThread* CreateThread(ThreadRoutine routine, void* context) {
  auto* t = new (std::nothrow) XPlatformThread;
  if (t == nullptr) return nullptr;
  t->routine = routine;
  t->context = context;
  errno = 0;
  const int nice = getpriority(PRIO_PROCESS, 0);
  t->baseNice = errno == 0 ? nice : 0;
  pthread_attr_t attr;
  if (pthread_attr_init(&attr) != 0) {
    delete t;
    return nullptr;
  }
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  pthread_t id;
  const int rc = pthread_create(&id, &attr, ThreadStart, t);
  pthread_attr_destroy(&attr);
  if (rc != 0) {
    delete t;
    return nullptr;
  }
  return t;
}

uint32_t WaitThread(XPlatformThread* thread, uint32_t milliseconds) {
  if (thread == nullptr) return kWaitFailed;
  std::unique_lock<std::mutex> hold(thread->lock);
  if (milliseconds == kWaitInfinite) {
    thread->ended.wait(hold, [thread] { return thread->finished; });
    return kWaitSignalled;
  }
  const bool done = thread->ended.wait_for(hold, std::chrono::milliseconds(milliseconds),
                                           [thread] { return thread->finished; });
  return done ? kWaitSignalled : kWaitTimeout;
}

bool GetThreadExitCode(XPlatformThread* thread, uint32_t& exitCode) {
  if (thread == nullptr) return false;
  std::lock_guard<std::mutex> hold(thread->lock);
  exitCode = thread->finished ? thread->exitCode : kStillActive;
  return true;
}

bool SetThreadPriority(XPlatformThread* thread, int32_t priority) {
  int offset;
  if (thread == nullptr || !NiceOffset(priority, offset)) return false;
  const int nice = std::clamp(thread->baseNice + offset, -20, 19);
  std::lock_guard<std::mutex> hold(thread->lock);
  if (thread->finished) return false;
  if (thread->tid == 0) {
    // Not started yet: the thread applies it first thing. Lowering is always
    // allowed; a raise may be refused then, as it would be now.
    thread->pendingSet = true;
    thread->pendingNice = nice;
    return nice >= thread->baseNice;
  }
  return setpriority(PRIO_PROCESS, static_cast<id_t>(thread->tid), nice) == 0;
}

bool CloseThread(XPlatformThread* thread) {
  if (thread == nullptr) return false;
  thread->Unref();
  return true;
}

XPlatformMutex* CreateMutex() {
  auto* m = new (std::nothrow) XPlatformMutex;
  if (m == nullptr) return nullptr;
  pthread_mutexattr_t attr;
  bool ok = pthread_mutexattr_init(&attr) == 0;
  if (ok) {
    ok = pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE) == 0 &&
         pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST) == 0 &&
         pthread_mutex_init(&m->mutex, &attr) == 0;
    pthread_mutexattr_destroy(&attr);
  }
  if (!ok) {
    delete m;
    return nullptr;
  }
  return m;
}

uint32_t WaitMutex(XPlatformMutex* mutex, uint32_t milliseconds) {
  if (mutex == nullptr) return kWaitFailed;
  int rc;
  if (milliseconds == 0) {
    rc = pthread_mutex_trylock(&mutex->mutex);
  } else if (milliseconds == kWaitInfinite) {
    rc = pthread_mutex_lock(&mutex->mutex);
  } else {
    struct timespec until;
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += milliseconds / 1000;
    until.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (until.tv_nsec >= 1000000000) {
      until.tv_nsec -= 1000000000;
      ++until.tv_sec;
    }
    rc = pthread_mutex_timedlock(&mutex->mutex, &until);
  }
  const pthread_t self = pthread_self();
  switch (rc) {
    case 0:
      if (mutex->owned.load(std::memory_order_relaxed) &&
          pthread_equal(mutex->owner.load(std::memory_order_relaxed), self)) {
        ++mutex->depth;
      } else {
        mutex->owner.store(self, std::memory_order_relaxed);
        mutex->owned.store(true, std::memory_order_relaxed);
        mutex->depth = 1;
      }
      return kWaitSignalled;
    case EOWNERDEAD:
      // The owner ended holding it: we own it now (once, whatever its count
      // was); make it usable again.
      pthread_mutex_consistent(&mutex->mutex);
      mutex->owner.store(self, std::memory_order_relaxed);
      mutex->owned.store(true, std::memory_order_relaxed);
      mutex->depth = 1;
      return kWaitAbandoned;
    case EBUSY:
    case ETIMEDOUT:
      return kWaitTimeout;
    default:
      return kWaitFailed;
  }
}

bool ReleaseMutex(XPlatformMutex* mutex) {
  if (mutex == nullptr || !mutex->owned.load(std::memory_order_relaxed) ||
      !pthread_equal(mutex->owner.load(std::memory_order_relaxed), pthread_self())) {
    return false;
  }
  if (--mutex->depth == 0) mutex->owned.store(false, std::memory_order_relaxed);
  return pthread_mutex_unlock(&mutex->mutex) == 0;
}

bool RetainMutex(XPlatformMutex* mutex) {
  if (mutex == nullptr) return false;
  mutex->refs.fetch_add(1, std::memory_order_relaxed);
  return true;
}

bool CloseMutex(XPlatformMutex* mutex) {
  if (mutex == nullptr) return false;
  if (mutex->refs.fetch_sub(1, std::memory_order_acq_rel) != 1) return true;
  pthread_mutex_destroy(&mutex->mutex);
  delete mutex;
  return true;
}

}  // namespace tavi::platform
