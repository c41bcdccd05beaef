//===- work_queue.h - Handing out array positions to worker threads -*- C++ -*-===//
//
// The shared work record of one threaded call, the calling thread's solo start
// and the item costs it remembers between calls, the starting and joining of
// its helpers, and the item sources, loops and bound callbacks that the XMake
// family is built from.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "platform/time.h"

namespace tavi::internal {

// WorkQueue hands out the positions first..count-1 in increasing order under
// one mutex. TakeRun gives runs of remaining / (4 * threads) positions, at least
// one: long runs while much is left keep the lock out of the per-item cost,
// and runs shrink towards the end so that the threads finish together.
class WorkQueue {
 public:
  WorkQueue(uint32_t first, uint32_t count, uint32_t threads)
      : first_(first),
        next_(first),
        remaining_(count - first),
        divisor_(std::max<uint32_t>(1, threads) * 4) {}

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

  // The number of positions handed out so far.
  uint32_t HandedOut() {
    std::lock_guard<std::mutex> lock(mutex_);
    return next_ - first_;
  }

 private:
  std::mutex mutex_;
  uint32_t first_;
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

// The process-wide worker count, 0 until first read; FirstWorkerCount sets it
// to the processor count (at most 16) unless it has been set, and returns it.
extern std::atomic<uint32_t> workerCount;
uint32_t FirstWorkerCount();

// The number of threads a threaded call over `count` items uses.
inline uint32_t ThreadsFor(uint32_t count) {
  uint32_t workers = workerCount.load(std::memory_order_relaxed);
  if (workers == 0) workers = FirstWorkerCount();
  return std::min(workers, count);
}

// How long the calling thread works alone before helpers are started. Starting
// a thread costs the caller some 10-30 us; alone for at least five times that,
// a call that ends up with helpers has already done enough work for their start
// to add at most a fifth, and a call that finishes alone never starts one.
inline constexpr int64_t kSoloNanoseconds = 150000;

// The solo time in force; tests set 0 so that helpers join after the first item
// (or at once, for a function whose cost is remembered) and the threaded paths
// run on small arrays too.
inline std::atomic<int64_t> soloNanoseconds{kSoloNanoseconds};
inline int64_t SetSoloNanoseconds(int64_t ns) {
  return soloNanoseconds.exchange(ns, std::memory_order_relaxed);
}

// The clock of the solo start, in nanoseconds: platform::FastCounter, or a
// clock that tests drive (null restores FastCounter).
inline std::atomic<uint64_t (*)()> soloClock{nullptr};
inline uint64_t SoloNow() {
  uint64_t (*clock)() = soloClock.load(std::memory_order_relaxed);
  return clock != nullptr ? clock() : platform::FastCounter();
}

// --- Remembered item costs ------------------------------------------------
//
// A quick call must not pay for clock reads that cost as much as its items, and
// a call over long items should have helpers before its first item is done.
// Neither can be told from inside a call without reading the clock, so the cost
// of one item is remembered per caller's function from the calls that measured
// it. 256 slots are picked by a hash of the function's address; each holds in
// one word a 24-bit tag of the hash, the number of items to run before the
// first clock read, and the nanoseconds per item (at most 2^32 - 1). Functions
// that share a slot displace each other and a colliding tag gives a wrong
// estimate; either only moves the clock reads, never what is done.

// The work a call with a known cost does before its first clock read: a clock
// read then costs at most a few percent of the call.
inline constexpr uint64_t kUncheckedNanoseconds = 512;
// At most this many items run before the first clock read, which bounds the
// delay for a function whose items have become much slower than remembered.
inline constexpr uint32_t kMaxUnchecked = 64;

struct ItemCost {
  uint32_t ns;         // 0: not known
  uint32_t unchecked;  // items before the first clock read
};

inline constexpr uint32_t kCostSlots = 256;
inline std::atomic<uint64_t> itemCostSlots[kCostSlots];

inline uint64_t CostHash(uintptr_t key) {
  return key * 0x9E3779B97F4A7C15ull;
}
inline std::atomic<uint64_t>& CostSlot(uint64_t hash) {
  return itemCostSlots[hash >> 56];
}
inline uint64_t CostTag(uint64_t hash) {
  return (hash >> 24) & 0xFFFFFFu;
}

inline ItemCost RememberedCost(uintptr_t key) {
  const uint64_t hash = CostHash(key);
  const uint64_t word = CostSlot(hash).load(std::memory_order_relaxed);
  if (word >> 40 != CostTag(hash)) return ItemCost{0, 1};
  return ItemCost{static_cast<uint32_t>(word), static_cast<uint32_t>(word >> 32) & 0xFFu};
}

// Forgets every remembered cost (for tests that start from an unknown cost).
inline void ForgetItemCosts() {
  for (std::atomic<uint64_t>& slot : itemCostSlots) slot.store(0, std::memory_order_relaxed);
}

// Remembers `ns` per item for key, unless the remembered cost is within a
// factor of two of it (so that steady calls do not keep writing the slot).
inline void RememberCost(uintptr_t key, uint64_t ns) {
  ns = std::clamp<uint64_t>(ns, 1, UINT32_MAX);
  const ItemCost known = RememberedCost(key);
  if (known.ns != 0 && ns <= uint64_t{known.ns} * 2 && ns * 2 >= known.ns) return;
  const uint64_t unchecked = std::clamp<uint64_t>(kUncheckedNanoseconds / ns, 1, kMaxUnchecked);
  const uint64_t hash = CostHash(key);
  CostSlot(hash).store(CostTag(hash) << 40 | unchecked << 32 | ns, std::memory_order_relaxed);
}

// KnownQuick is true when all `count` items of key's function are known to run
// before RunSolo's first clock read; the call then runs them as one range,
// which is all RunSolo would do, without its bookkeeping.
inline bool KnownQuick(uintptr_t key, uint32_t count) {
  const ItemCost known = RememberedCost(key);
  return count <= known.unchecked && known.ns != 0 &&
         known.ns < soloNanoseconds.load(std::memory_order_relaxed);
}

// RunSolo runs the positions 0 .. count - 1 on the calling thread through
// range(first, end), which does [first, end) and answers false when the call
// is over before end (a null item, a hit, a cancel). RunSolo answers true when
// the call is over (range answered false, or every position is done), and
// false when the solo time has passed first and about as much work is left
// (or a quarter of it with eight times as much left), with `next` the first
// position not yet done: helpers are then to be started.
//
// With the item cost of `key` unknown, the clock is read before the first item
// and after it; with it known, the first read comes after the items that take
// kUncheckedNanoseconds (at most kMaxUnchecked), whose time is taken to be the
// remembered one, so a quick call reads no clock at all; and when one item is
// known to take the whole solo time, helpers start before the first item.
// Later reads come after blocks sized from the rate seen so far to about a
// quarter of the solo time, and at most sixteen times the positions done, so an
// item far slower than those before it delays the helpers by at most one block.
// Every pair of reads measures the rate, which is remembered for later calls.
template <typename Range>
bool RunSolo(uintptr_t key, uint32_t count, uint32_t& next, Range range) {
  const uint64_t solo =
      static_cast<uint64_t>(std::max<int64_t>(soloNanoseconds.load(std::memory_order_relaxed), 0));
  const ItemCost known = RememberedCost(key);
  if (known.ns != 0 && known.ns >= solo) {
    next = 0;
    return false;
  }
  uint64_t rate = known.ns;  // nanoseconds per item
  uint64_t elapsed = 0;      // the call's time up to the last read, in part estimated
  uint64_t lastRead = 0;     // that read, at position readAt
  uint32_t readAt = 0;
  uint32_t reads = 0;
  uint32_t end = known.unchecked;
  if (known.ns == 0) {
    lastRead = SoloNow();
    reads = 1;
  }
  uint32_t i = 0;
  for (;;) {
    end = std::min(end, count);
    if (!range(i, end)) return true;
    const bool last = end == count;
    // A call that ends after a single read reads once more, so that a
    // remembered cost that was too high (the first item of a first call
    // often is slow) is measured again and the next call reads less.
    if (last && (reads != 1 || known.ns == 0)) return true;
    i = end;
    const uint64_t now = SoloNow();
    if (reads++ != 0) {
      const uint64_t span = now > lastRead ? now - lastRead : 0;
      elapsed += span;
      rate = span / (i - readAt);
      RememberCost(key, rate);
    } else {
      elapsed = uint64_t{i} * known.ns;
    }
    lastRead = now;
    readAt = i;
    if (last) return true;
    // Helpers join once the call has run for the solo time and, at the rate
    // seen, as much work is left: with less left, a helper's start would take
    // about as long as the share of work it could take over. With eight times
    // that left, a quarter of the solo time is enough: the start is then paid
    // for by the work still to come.
    const uint64_t left = uint64_t{count - i} * rate;
    if (elapsed >= solo ? left >= solo : elapsed >= solo / 4 && left >= solo * 8) {
      next = i;
      return false;
    }
    const uint64_t block =
        std::clamp<uint64_t>(solo / 4 / std::max<uint64_t>(rate, 1), 1, uint64_t{i} * 16);
    end = count - i <= block ? count : i + static_cast<uint32_t>(block);
  }
}

// RunTeam runs worker on `threads` threads over the positions of `queue` and
// then remembers for key the cost per item the call showed: its time times the
// threads over the positions handed out (an upper bound when helpers joined
// late, which only makes later calls read the clock sooner).
template <typename Worker>
void RunTeam(uintptr_t key, uint32_t threads, WorkQueue& queue, Worker& worker) {
  const uint64_t start = SoloNow();
  RunWorkers(threads, worker);
  const uint64_t end = SoloNow();
  const uint32_t handed = queue.HandedOut();
  if (handed != 0 && end > start) RememberCost(key, (end - start) * threads / handed);
}

// Item sources: an array of item pointers, in which a null item ends a worker
// of the threaded forms, or an array of fixed-size elements, never null.
struct PointerItems {
  void* const* items;
  static constexpr bool kMayBeNull = true;
  void* At(uint32_t i) const { return items[i]; }
};
struct ElementItems {
  uint8_t* base;
  uint32_t elementSize;
  static constexpr bool kMayBeNull = false;
  void* At(uint32_t i) const { return base + size_t{i} * elementSize; }
};

// The caller's function bound to its contexts, for each arity.
template <typename R>
struct Bound1 {
  R (*fn)(void*);
  R operator()(void* item) const { return fn(item); }
  uintptr_t Key() const { return reinterpret_cast<uintptr_t>(fn); }
};
template <typename R>
struct Bound2 {
  R (*fn)(void*, void*);
  void* context;
  R operator()(void* item) const { return fn(item, context); }
  uintptr_t Key() const { return reinterpret_cast<uintptr_t>(fn); }
};
template <typename R>
struct Bound3 {
  R (*fn)(void*, void*, void*);
  void* context1;
  void* context2;
  R operator()(void* item) const { return fn(item, context1, context2); }
  uintptr_t Key() const { return reinterpret_cast<uintptr_t>(fn); }
};

// The item loops. The single-threaded forms and the calling thread's solo
// start run the same out-of-line loop, so that a threaded call done alone runs
// its items exactly as fast as the single-threaded form; the two differ only
// in nullEnds.

// MakeRange calls fn on the items at first .. end - 1. With nullEnds, a null
// item ends the loop: it answers false, fn not called on it.
template <typename Items, typename Fn>
[[gnu::noinline]] bool MakeRange(Items items, uint32_t first, uint32_t end, Fn fn, bool nullEnds) {
  for (uint32_t i = first; i < end; ++i) {
    void* item = items.At(i);
    if (Items::kMayBeNull && nullEnds && item == nullptr) return false;
    fn(item);
  }
  return true;
}

// SearchRange gives the first position in first .. end - 1 whose item's
// predicate answers stopOn, or (with nullEnds) whose item is null; end when
// there is none.
template <typename Pred>
[[gnu::noinline]] uint32_t SearchRange(void* const* items, uint32_t first, uint32_t end, Pred pred,
                                       bool stopOn, bool nullEnds) {
  for (uint32_t i = first; i < end; ++i) {
    void* item = items[i];
    if (nullEnds && item == nullptr) return i;
    if (pred(item) == stopOn) return i;
  }
  return end;
}

template <typename Items, typename Fn>
void MakeSequential(Items items, uint32_t count, Fn fn) {
  MakeRange(items, 0, count, fn, false);
}

// The threaded forms are split in two: a small front that runs the calls which
// need no clock as one range, and the out-of-line rest, whose frame the small
// calls then never set up.
template <typename Items, typename Fn>
[[gnu::noinline]] void MakeThreadedTimed(Items items, uint32_t count, uint32_t threads, Fn fn) {
  uint32_t start;
  const bool over = RunSolo(fn.Key(), count, start, [items, fn](uint32_t first, uint32_t end) {
    return MakeRange(items, first, end, fn, true);
  });
  if (over) return;
  WorkQueue queue(start, count, threads);
  auto worker = [&] {
    uint32_t first, run;
    while (queue.TakeRun(first, run)) {
      if (!MakeRange(items, first, first + run, fn, true)) return;
    }
  };
  RunTeam(fn.Key(), threads, queue, worker);
}

template <typename Items, typename Fn>
void MakeThreaded(Items items, uint32_t count, Fn fn) {
  const uint32_t threads = ThreadsFor(count);
  if (threads <= 1) return MakeSequential(items, count, fn);
  if (KnownQuick(fn.Key(), count)) {
    MakeRange(items, 0, count, fn, true);
    return;
  }
  MakeThreadedTimed(items, count, threads, fn);
}

// The first item whose predicate answers `stopOn`, or null.
template <typename Pred>
void* SearchSequential(void* const* items, uint32_t count, Pred pred, bool stopOn) {
  const uint32_t at = SearchRange(items, 0, count, pred, stopOn, false);
  return at < count ? items[at] : nullptr;
}

// As SearchSequential on several threads (after the calling thread's solo
// start, which either finishes the search or leaves every position below
// `start` examined without a hit). The hit is the lowest position found
// so far; a worker goes on through its run only below it, and nothing more is
// handed out once a hit is stored. Every position below the final hit has then
// been examined, so the result is the single-threaded one.
template <typename Pred>
[[gnu::noinline]] void* SearchThreadedTimed(void* const* items, uint32_t count, uint32_t threads,
                                            Pred pred, bool stopOn) {
  void* soloHit = nullptr;
  uint32_t start;
  const bool over = RunSolo(
      pred.Key(), count, start, [items, pred, stopOn, &soloHit](uint32_t first, uint32_t end) {
        const uint32_t at = SearchRange(items, first, end, pred, stopOn, true);
        if (at == end) return true;
        soloHit = items[at];
        return false;
      });
  if (over) return soloHit;
  constexpr uint32_t kNoHit = UINT32_MAX;
  WorkQueue queue(start, count, threads);
  std::atomic<uint32_t> hit{kNoHit};
  // A worker searches its run in stretches of kStretch through SearchRange,
  // each cut at the hit found so far.
  constexpr uint32_t kStretch = 64;
  auto worker = [&] {
    uint32_t first, run;
    while (queue.TakeRun(first, run)) {
      const uint32_t end = first + run;
      for (uint32_t i = first; i < end;) {
        const uint32_t stop =
            std::min({end, i + std::min(kStretch, end - i), hit.load(std::memory_order_relaxed)});
        if (stop <= i) return;
        const uint32_t at = SearchRange(items, i, stop, pred, stopOn, true);
        if (at < stop) {
          if (items[at] == nullptr) return;
          std::lock_guard<std::mutex> lock(queue.mutex());
          if (at < hit.load(std::memory_order_relaxed)) hit.store(at, std::memory_order_relaxed);
          queue.StopLocked();
          return;
        }
        i = stop;
      }
    }
  };
  RunTeam(pred.Key(), threads, queue, worker);
  const uint32_t found = hit.load(std::memory_order_relaxed);
  return found == kNoHit ? nullptr : items[found];
}

template <typename Pred>
void* SearchThreaded(void* const* items, uint32_t count, Pred pred, bool stopOn) {
  const uint32_t threads = ThreadsFor(count);
  if (threads <= 1) return SearchSequential(items, count, pred, stopOn);
  if (KnownQuick(pred.Key(), count)) {
    const uint32_t at = SearchRange(items, 0, count, pred, stopOn, true);
    return at < count ? items[at] : nullptr;  // a null item gives null either way
  }
  return SearchThreadedTimed(items, count, threads, pred, stopOn);
}

}  // namespace tavi::internal
