//===- work_queue.h - Handing out array positions to worker threads -*- C++ -*-===//
//
// The shared work record of one threaded call, the starting and joining of its
// workers, and the item sources and bound callbacks that the XMake family is
// built from.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace tavi::internal {

// WorkQueue hands out the positions 0..count-1 in increasing order under one
// mutex. TakeRun gives runs of remaining / (4 * threads) positions, at least
// one: long runs while much is left keep the lock out of the per-item cost,
// and runs shrink towards the end so that the threads finish together.
class WorkQueue {
 public:
  WorkQueue(uint32_t count, uint32_t threads)
      : remaining_(count), divisor_(std::max<uint32_t>(1, threads) * 4) {}

  std::mutex& mutex() { return mutex_; }

  // The Locked members expect mutex() to be held.
  bool TakeRunLocked(uint32_t& first, uint32_t& count) {
    if (remaining_ == 0) return false;
    count = std::max<uint32_t>(1, remaining_ / divisor_);
    first = next_;
    next_ += count;
    remaining_ -= count;
    return true;
  }
  bool TakeOneLocked(uint32_t& position) {
    if (remaining_ == 0) return false;
    position = next_++;
    --remaining_;
    return true;
  }
  // After StopLocked nothing more is handed out.
  void StopLocked() { remaining_ = 0; }

  bool TakeRun(uint32_t& first, uint32_t& count) {
    std::lock_guard<std::mutex> lock(mutex_);
    return TakeRunLocked(first, count);
  }

 private:
  std::mutex mutex_;
  uint32_t next_ = 0;
  uint32_t remaining_;
  uint32_t divisor_;
};

// RunWorkersImpl runs worker(context) on `threads` threads, the calling thread
// being one of them, and returns when all have returned. A thread that cannot
// be created is left out; the calling thread always works.
void RunWorkersImpl(uint32_t threads, void (*worker)(void*), void* context);

template <typename Worker>
void RunWorkers(uint32_t threads, Worker& worker) {
  RunWorkersImpl(
      threads, [](void* w) { (*static_cast<Worker*>(w))(); }, &worker);
}

// The number of threads a threaded call over `count` items uses.
uint32_t ThreadsFor(uint32_t count);

// Item sources: an array of item pointers, in which a null item ends a worker,
// or an array of fixed-size elements.
struct PointerItems {
  void* const* items;
  static constexpr bool kNullEnds = true;
  void* At(uint32_t i) const { return items[i]; }
};
struct ElementItems {
  uint8_t* base;
  uint32_t elementSize;
  static constexpr bool kNullEnds = false;
  void* At(uint32_t i) const { return base + size_t{i} * elementSize; }
};

// The caller's function bound to its contexts, for each arity.
template <typename R>
struct Bound1 {
  R (*fn)(void*);
  R operator()(void* item) const { return fn(item); }
};
template <typename R>
struct Bound2 {
  R (*fn)(void*, void*);
  void* context;
  R operator()(void* item) const { return fn(item, context); }
};
template <typename R>
struct Bound3 {
  R (*fn)(void*, void*, void*);
  void* context1;
  void* context2;
  R operator()(void* item) const { return fn(item, context1, context2); }
};

template <typename Items, typename Fn>
void MakeSequential(const Items& items, uint32_t count, Fn fn) {
  for (uint32_t i = 0; i < count; ++i) fn(items.At(i));
}

template <typename Items, typename Fn>
void MakeThreaded(const Items& items, uint32_t count, Fn fn) {
  const uint32_t threads = ThreadsFor(count);
  if (threads <= 1) return MakeSequential(items, count, fn);
  WorkQueue queue(count, threads);
  auto worker = [&] {
    uint32_t first, run;
    while (queue.TakeRun(first, run)) {
      for (uint32_t i = first; i < first + run; ++i) {
        void* item = items.At(i);
        if (Items::kNullEnds && item == nullptr) return;
        fn(item);
      }
    }
  };
  RunWorkers(threads, worker);
}

// The first item whose predicate answers `stopOn`, or null.
template <typename Pred>
void* SearchSequential(void* const* items, uint32_t count, Pred pred, bool stopOn) {
  for (uint32_t i = 0; i < count; ++i) {
    if (pred(items[i]) == stopOn) return items[i];
  }
  return nullptr;
}

// As SearchSequential on several threads. The hit is the lowest position found
// so far; a worker goes on through its run only below it, and nothing more is
// handed out once a hit is stored. Every position below the final hit has then
// been examined, so the result is the single-threaded one.
template <typename Pred>
void* SearchThreaded(void* const* items, uint32_t count, Pred pred, bool stopOn) {
  const uint32_t threads = ThreadsFor(count);
  if (threads <= 1) return SearchSequential(items, count, pred, stopOn);
  constexpr uint32_t kNoHit = UINT32_MAX;
  WorkQueue queue(count, threads);
  std::atomic<uint32_t> hit{kNoHit};
  auto worker = [&] {
    uint32_t first, run;
    while (queue.TakeRun(first, run)) {
      for (uint32_t i = first; i < first + run; ++i) {
        if (hit.load(std::memory_order_relaxed) < i) return;
        void* item = items[i];
        if (item == nullptr) return;
        if (pred(item) == stopOn) {
          std::lock_guard<std::mutex> lock(queue.mutex());
          if (i < hit.load(std::memory_order_relaxed)) hit.store(i, std::memory_order_relaxed);
          queue.StopLocked();
          return;
        }
      }
    }
  };
  RunWorkers(threads, worker);
  const uint32_t found = hit.load(std::memory_order_relaxed);
  return found == kNoHit ? nullptr : items[found];
}

}  // namespace tavi::internal
