//===- work_queue.h - Handing out array positions to worker threads -*- C++ -*-===//
//
// The shared work record of one threaded call, the calling thread's solo start,
// the starting and joining of its helpers, and the item sources and bound
// callbacks that the XMake family is built from.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace tavi::internal {

// WorkQueue hands out the positions first..count-1 in increasing order under
// one mutex. TakeRun gives runs of remaining / (4 * threads) positions, at least
// one: long runs while much is left keep the lock out of the per-item cost,
// and runs shrink towards the end so that the threads finish together.
class WorkQueue {
 public:
  WorkQueue(uint32_t first, uint32_t count, uint32_t threads)
      : next_(first), remaining_(count - first), divisor_(std::max<uint32_t>(1, threads) * 4) {}

  std::mutex& mutex() { return mutex_; }

  // The Locked members expect mutex() to be held.
  // TakeRunLocked gives a run of at most maxRun positions.
  bool TakeRunLocked(uint32_t& first, uint32_t& count, uint32_t maxRun = UINT32_MAX) {
    if (remaining_ == 0) return false;
    count = std::clamp<uint32_t>(remaining_ / divisor_, 1, maxRun);
    first = next_;
    next_ += count;
    remaining_ -= count;
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
  uint32_t next_;
  uint32_t remaining_;
  uint32_t divisor_;
};

// RunWorkersImpl runs worker(context) on up to `threads` threads, the calling
// thread being one of them. The calling thread starts one helper and works;
// each helper starts the next before it works, so the caller pays for one
// thread start only. When the calling thread's worker returns the team closes:
// helpers that have not begun by then never begin (nothing is left for them),
// and the call returns once every helper that began has returned. A helper
// thread that cannot be created is left out; the calling thread always works.
void RunWorkersImpl(uint32_t threads, void (*worker)(void*), void* context);

template <typename Worker>
void RunWorkers(uint32_t threads, Worker& worker) {
  RunWorkersImpl(
      threads, [](void* w) { (*static_cast<Worker*>(w))(); }, &worker);
}

// The number of threads a threaded call over `count` items uses.
uint32_t ThreadsFor(uint32_t count);

// How long the calling thread works alone before helpers are started. Starting
// a thread costs the caller some 10-30 us; alone for at least five times that,
// a call that ends up with helpers has already done enough work for their start
// to add at most a fifth, and a call that finishes alone never starts one.
inline constexpr int64_t kSoloNanoseconds = 150000;

// The solo time in force; tests set 0 so that helpers join after the first item
// and the threaded paths run on small arrays too.
inline std::atomic<int64_t> soloNanoseconds{kSoloNanoseconds};
inline int64_t SetSoloNanoseconds(int64_t ns) {
  return soloNanoseconds.exchange(ns, std::memory_order_relaxed);
}

// RunSolo calls step(i) for i = 0, 1, ... on the calling thread until step
// answers false or all `count` positions are done (true: the call is over), or
// until the solo time has passed (false, with `next` the first position not
// yet done). The clock is read between blocks of positions sized from the rate
// seen so far to about a quarter of the solo time, and at most sixteen times
// the positions done. The first block is one item, so a few heavy items get
// helpers after the first; cheap items pay two to four clock reads per call
// (some 50-100 ns, the whole cost of the MT form over a quick call), and an
// item far slower than those before it delays the helpers by at most one block.
template <typename Step>
bool RunSolo(uint32_t count, uint32_t& next, Step step) {
  using Clock = std::chrono::steady_clock;
  const int64_t solo = soloNanoseconds.load(std::memory_order_relaxed);
  const Clock::time_point start = Clock::now();
  uint32_t i = 0;
  uint64_t block = 1;
  for (;;) {
    const uint32_t end = count - i <= block ? count : i + static_cast<uint32_t>(block);
    for (; i < end; ++i) {
      if (!step(i)) return true;
    }
    if (i == count) return true;
    const int64_t elapsed =
        std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
    if (elapsed >= solo) {
      next = i;
      return false;
    }
    const uint64_t byRate = uint64_t{i} * static_cast<uint64_t>(solo / 4) /
                            static_cast<uint64_t>(std::max<int64_t>(elapsed, 1));
    block = std::clamp<uint64_t>(byRate, 1, uint64_t{i} * 16);
  }
}

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
  uint32_t start;
  const bool over = RunSolo(count, start, [&](uint32_t i) {
    void* item = items.At(i);
    if (Items::kNullEnds && item == nullptr) return false;
    fn(item);
    return true;
  });
  if (over) return;
  WorkQueue queue(start, count, threads);
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

// As SearchSequential on several threads (after the calling thread's solo
// start, which either finishes the search or leaves every position below
// `start` examined without a hit). The hit is the lowest position found
// so far; a worker goes on through its run only below it, and nothing more is
// handed out once a hit is stored. Every position below the final hit has then
// been examined, so the result is the single-threaded one.
template <typename Pred>
void* SearchThreaded(void* const* items, uint32_t count, Pred pred, bool stopOn) {
  const uint32_t threads = ThreadsFor(count);
  if (threads <= 1) return SearchSequential(items, count, pred, stopOn);
  constexpr uint32_t kNoHit = UINT32_MAX;
  uint32_t soloHit = kNoHit;
  uint32_t start;
  const bool over = RunSolo(count, start, [&](uint32_t i) {
    void* item = items[i];
    if (item == nullptr) return false;
    if (pred(item) != stopOn) return true;
    soloHit = i;
    return false;
  });
  if (over) return soloHit == kNoHit ? nullptr : items[soloHit];
  WorkQueue queue(start, count, threads);
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
