//===- parallel_test.cpp - XMake, XMakeArray, XCheck, XEnum, single and MT ===//
#include "tavi/thread/parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "platform/time.h"
#include "thread/internal/work_queue.h"

namespace tavi {
namespace {

// Sets the worker count for one test and restores it after.
struct ScopedWorkers {
  explicit ScopedWorkers(uint32_t count) : old(XSetWorkerCount(count)) {}
  ~ScopedWorkers() { XSetWorkerCount(old); }
  const uint32_t old;
};

// Sets how long the calling thread works alone before helpers join. With 0 they
// join after the first item, so small arrays take the threaded paths; with the
// normal time, quick calls finish alone.
struct ScopedSolo {
  explicit ScopedSolo(int64_t ns) : old(internal::SetSoloNanoseconds(ns)) {}
  ~ScopedSolo() { internal::SetSoloNanoseconds(old); }
  const int64_t old;
};
constexpr int64_t kHelpersAtOnce = 0;
constexpr int64_t kNormalSolo = internal::kSoloNanoseconds;

// Items are Cells: the functions add to `calls`, the predicates test `key`.
// The array forms run over every other Cell (elements of two Cells).
struct Cell {
  std::atomic<uint32_t> calls{0};
  uint32_t key = 0;
};
constexpr uint32_t kPair = 2 * sizeof(Cell);

std::vector<void*> PointersTo(std::vector<Cell>& cells) {
  std::vector<void*> items;
  for (Cell& c : cells) items.push_back(&c);
  return items;
}
constexpr auto Arg = [](void* p) { return *static_cast<uint32_t*>(p); };
constexpr auto At = [](void* item) -> Cell& { return *static_cast<Cell*>(item); };
constexpr XItemFunc1 Touch = [](void* item) { At(item).calls += 1; };
constexpr XItemFunc2 TouchBy = [](void* item, void* add) { At(item).calls += Arg(add); };
constexpr XItemFunc3 TouchBy2 = [](void* item, void* a, void* b) {
  At(item).calls += Arg(a) * Arg(b);
};
constexpr XItemPred1 KeyIsOdd = [](void* item) { return At(item).key % 2 == 1; };
constexpr XItemPred2 KeyAbove = [](void* item, void* limit) { return At(item).key > Arg(limit); };
constexpr XItemPred3 KeyMatches = [](void* item, void* divisor, void* remainder) {
  return At(item).key % Arg(divisor) == Arg(remainder);
};

TEST(Parallel, WorkerCountStartsAtTheProcessorCountAndClamps) {
  const uint32_t initial = XGetWorkerCount();
  EXPECT_EQ(initial, std::clamp<uint32_t>(std::thread::hardware_concurrency(), 1, 16));
  EXPECT_EQ(XSetWorkerCount(40), initial);
  EXPECT_EQ(XSetWorkerCount(0), 16u);
  EXPECT_EQ(XSetWorkerCount(initial), 1u);
}

// The single-threaded forms, reference for the threaded ones: index order,
// null items passed on, the first stop or null, contexts passed unchanged.
TEST(Parallel, SingleThreadedForms) {
  static std::vector<void*> seen;
  seen.clear();
  std::vector<Cell> cells(10);
  auto ptrs = PointersTo(cells);
  ptrs[2] = nullptr;
  XMake([](void* item) { seen.push_back(item); }, ptrs.data(), 10);
  EXPECT_EQ(seen, ptrs);
  ptrs[2] = &cells[2];
  for (uint32_t i = 0; i < 10; ++i) cells[i].key = i * 2;
  cells[6].key = 13;
  cells[8].key = 15;
  uint32_t limit = 9, divisor = 5, remainder = 3;
  EXPECT_EQ(XCheck(KeyIsOdd, ptrs.data(), 10), &cells[6]);
  EXPECT_EQ(XCheck(KeyIsOdd, ptrs.data(), 6), nullptr);
  EXPECT_EQ(XEnum(KeyIsOdd, ptrs.data(), 10), &cells[0]);
  EXPECT_EQ(XCheck(KeyAbove, &limit, ptrs.data(), 10), &cells[5]);
  EXPECT_EQ(XEnum(KeyAbove, &limit, ptrs.data(), 10), &cells[0]);
  EXPECT_EQ(XCheck(KeyMatches, &divisor, &remainder, ptrs.data(), 10), &cells[4]);  // key 8
  EXPECT_EQ(XEnum(KeyMatches, &divisor, &remainder, ptrs.data(), 10), &cells[0]);
  EXPECT_EQ(XEnum(KeyIsOdd, ptrs.data(), 0), nullptr);
}

// Every form, single-threaded and threaded, calls each item once with its
// contexts, and the threaded searches find what the single-threaded ones find,
// on random worker counts and on arrays of every size around the run lengths.
TEST(Parallel, ThreadedFormsAgreeWithSingleThreaded) {
  std::mt19937 rng(12345);
  for (int round = 0; round < 80; ++round) {
    const uint32_t workers = 1 + rng() % 16;
    ScopedWorkers scoped(workers);
    ScopedSolo solo(round % 2 ? kHelpersAtOnce : kNormalSolo);
    const uint32_t count = round < 40 ? static_cast<uint32_t>(round / 2) : rng() % 2000;
    SCOPED_TRACE(testing::Message() << "workers " << workers << " count " << count);

    std::vector<Cell> cells(count);
    for (Cell& c : cells) c.key = static_cast<uint32_t>(rng() % 1000);
    auto ptrs = PointersTo(cells);
    void* const* p = ptrs.data();
    const uint32_t pairs = (count + 1) / 2;
    uint32_t two = 2, three = 3;
    XMake(Touch, p, count);
    XMake(TouchBy, &two, p, count);
    XMake(TouchBy2, &two, &three, p, count);
    XMakeMT(Touch, p, count);
    XMakeMT(TouchBy, &two, p, count);
    XMakeMT(TouchBy2, &two, &three, p, count);
    XMakeArray(Touch, cells.data(), pairs, kPair);
    XMakeArray(TouchBy, &two, cells.data(), pairs, kPair);
    XMakeArray(TouchBy2, &two, &three, cells.data(), pairs, kPair);
    XMakeArrayMT(Touch, cells.data(), pairs, kPair);
    XMakeArrayMT(TouchBy, &two, cells.data(), pairs, kPair);
    XMakeArrayMT(TouchBy2, &two, &three, cells.data(), pairs, kPair);
    for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(cells[i].calls, i % 2 ? 18u : 36u) << i;

    // Sparse, dense and absent matches.
    for (uint32_t divisor : {1u, 7u, 997u, 5000u}) {
      uint32_t remainder = static_cast<uint32_t>(rng() % divisor);
      uint32_t limit = 1000 - divisor % 1000;
      ASSERT_EQ(XCheckMT(KeyMatches, &divisor, &remainder, p, count),
                XCheck(KeyMatches, &divisor, &remainder, p, count));
      ASSERT_EQ(XEnumMT(KeyMatches, &divisor, &remainder, p, count),
                XEnum(KeyMatches, &divisor, &remainder, p, count));
      ASSERT_EQ(XCheckMT(KeyAbove, &limit, p, count), XCheck(KeyAbove, &limit, p, count));
      ASSERT_EQ(XEnumMT(KeyAbove, &limit, p, count), XEnum(KeyAbove, &limit, p, count));
    }
    ASSERT_EQ(XCheckMT(KeyIsOdd, p, count), XCheck(KeyIsOdd, p, count));
    ASSERT_EQ(XEnumMT(KeyIsOdd, p, count), XEnum(KeyIsOdd, p, count));
  }
}

// Workers holding matches meet before they answer, and the match at 777
// answers first: later matches are stored after it, and the lowest must win.
// Several workers meet, each at most once.
TEST(Parallel, ThreadedSearchReturnsTheLowestOfManyMatchesOrNull) {
  ScopedWorkers scoped(8);
  ScopedSolo solo(kHelpersAtOnce);
  std::vector<Cell> cells(20000);
  for (uint32_t i = 777; i < cells.size(); i += 3) cells[i].key = i == 777 ? 1 : 3;
  auto ptrs = PointersTo(cells);
  static std::atomic<uint32_t> met;
  constexpr XItemPred1 meetThenAnswer = [](void* item) {
    if (At(item).key == 0) return false;
    ++met;
    for (int wait = 0; met < 2 && wait < 1000; ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (At(item).key == 3) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return true;
  };
  for (int repeat = 0; repeat < 5; ++repeat) {
    met = 0;
    ASSERT_EQ(XCheckMT(meetThenAnswer, ptrs.data(), 20000), &cells[777]);
    EXPECT_GE(met, 2u);
    EXPECT_LE(met, 8u);
  }
  for (Cell& c : cells) c.key = 2;
  EXPECT_EQ(XCheckMT(KeyIsOdd, ptrs.data(), 20000), nullptr);
}

// A null item is the terminator of the threaded pointer forms: the worker that
// takes it ends, skipping the rest of its run, fn never sees it, and every item
// before it is still done.
// With one worker the threaded form is the single-threaded one and passes null on.
TEST(Parallel, NullItemEndsAWorkerInThreadedForms) {
  for (uint32_t workers : {4u, 1u}) {
    ScopedWorkers scoped(workers);
    for (uint32_t nullAt : {0u, 2u, 500u, 999u}) {
      for (int64_t soloTime : {kHelpersAtOnce, kNormalSolo}) {
        ScopedSolo solo(soloTime);
        SCOPED_TRACE(testing::Message()
                     << workers << " workers, null at " << nullAt << ", solo " << soloTime);
        static std::atomic<uint32_t> nulls;
        nulls = 0;
        std::vector<Cell> cells(1000);
        auto ptrs = PointersTo(cells);
        ptrs[nullAt] = nullptr;
        XMakeMT([](void* item) { item ? Touch(item) : void(++nulls); }, ptrs.data(), 1000);
        EXPECT_EQ(nulls, workers == 1 ? 1u : 0u);
        for (uint32_t i = 0; i < 1000; ++i) {
          const bool done = i != nullAt && (i < nullAt || workers == 1);
          ASSERT_TRUE(done ? cells[i].calls == 1 : cells[i].calls <= 1) << i;
        }
        // A null at 0 ends the calling thread before any helper joins.
        EXPECT_EQ(cells[1].calls, workers > 1 && nullAt == 0 ? 0u : 1u);
      }
    }
  }
}

// --- When the calling thread reads the clock and starts helpers -------------
//
// The solo start runs on a clock the items drive: each item moves it on by the
// time it stands for, and every read is counted.

std::atomic<uint64_t> fakeNow{0};
std::atomic<uint32_t> clockReads{0};

struct ScopedFakeClock {
  ScopedFakeClock() {
    fakeNow = 1000000;
    clockReads = 0;
    internal::ForgetItemCosts();
    internal::soloClock.store([] {
      ++clockReads;
      return fakeNow.load();
    });
  }
  ~ScopedFakeClock() {
    internal::soloClock.store(nullptr);
    internal::ForgetItemCosts();
  }
};

uint32_t ReadsFor(const std::function<void()>& call) {
  clockReads = 0;
  call();
  return clockReads;
}

// An unknown function is timed over its first item; once its items are known
// to be quick, a call that fits in the unchecked stretch reads no clock, and a
// longer one reads twice (where the stretch ends and at the end, which keeps
// the remembered cost up to date). Every item is still done once.
TEST(ParallelSolo, QuickItemsReadTheClockRarely) {
  ScopedWorkers workers(2);
  ScopedSolo solo(kNormalSolo);
  ScopedFakeClock clock;
  std::vector<Cell> cells(1000);
  auto ptrs = PointersTo(cells);
  constexpr XItemFunc1 twoNs = [](void* item) {
    fakeNow += 2;
    Touch(item);
  };
  const uintptr_t key = reinterpret_cast<uintptr_t>(twoNs);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(twoNs, ptrs.data(), 16); }), 2u);
  EXPECT_EQ(internal::RememberedCost(key).ns, 2u);
  EXPECT_EQ(internal::RememberedCost(key).unchecked, internal::kMaxUnchecked);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(twoNs, ptrs.data(), 4); }), 0u);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(twoNs, ptrs.data(), 64); }), 0u);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(twoNs, ptrs.data(), 65); }), 2u);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(twoNs, ptrs.data(), 1000); }), 2u);
  EXPECT_EQ(ReadsFor([&] { XMakeArrayMT(twoNs, cells.data(), 30, sizeof(Cell)); }), 0u);
  for (uint32_t i = 0; i < 1000; ++i) {
    ASSERT_EQ(cells[i].calls, 1u + (i < 65) + (i < 64) + (i < 30) + (i < 16) + (i < 4)) << i;
  }

  // Searches and the titled form use the same start (the first call, timed
  // from its first item, reads after 1 and 17 items: blocks grow at most
  // sixteenfold).
  constexpr XItemPred1 twoNsOdd = [](void* item) {
    fakeNow += 2;
    return KeyIsOdd(item);
  };
  cells[40].key = 1;
  void* found = nullptr;
  EXPECT_EQ(ReadsFor([&] { found = XCheckMT(twoNsOdd, ptrs.data(), 50); }), 3u);
  EXPECT_EQ(found, &cells[40]);
  EXPECT_EQ(ReadsFor([&] { found = XCheckMT(twoNsOdd, ptrs.data(), 50); }), 0u);
  EXPECT_EQ(found, &cells[40]);
  EXPECT_EQ(ReadsFor([&] { found = XEnumMT(twoNsOdd, ptrs.data(), 50); }), 0u);
  EXPECT_EQ(found, &cells[0]);
  strProgressOptions options;
  bool ok = false;
  EXPECT_EQ(ReadsFor([&] { ok = XMakeMT(u"t", 1, twoNs, ptrs.data(), 64, options); }), 0u);
  EXPECT_TRUE(ok);
}

// A cost remembered too high (a slow first item) makes the next call read
// after a few items; reading once more at its end measures the real rate, and
// the call after that reads none.
TEST(ParallelSolo, ACostRememberedTooHighIsMeasuredAgain) {
  ScopedWorkers workers(2);
  ScopedSolo solo(kNormalSolo);
  ScopedFakeClock clock;
  std::vector<Cell> cells(64);
  auto ptrs = PointersTo(cells);
  constexpr XItemFunc1 threeNs = [](void* item) {
    fakeNow += 3;
    Touch(item);
  };
  const uintptr_t key = reinterpret_cast<uintptr_t>(threeNs);
  internal::RememberCost(key, 100);
  EXPECT_EQ(internal::RememberedCost(key).unchecked, 5u);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(threeNs, ptrs.data(), 50); }), 2u);
  EXPECT_EQ(internal::RememberedCost(key).ns, 3u);
  EXPECT_EQ(ReadsFor([&] { XMakeMT(threeNs, ptrs.data(), 64); }), 0u);
  for (uint32_t i = 0; i < 64; ++i) ASSERT_EQ(cells[i].calls, i < 50 ? 2u : 1u) << i;
}

// A call that has run for the solo time still finishes alone when, at the rate
// seen, less than that is left: three items of 100 us all run on the calling
// thread.
TEST(ParallelSolo, LittleWorkLeftFinishesAlone) {
  ScopedWorkers workers(2);
  ScopedSolo solo(kNormalSolo);
  ScopedFakeClock clock;
  static std::vector<std::thread::id> ranOn;
  ranOn.clear();
  constexpr XItemFunc1 hundredUs = [](void*) {
    fakeNow += 100000;
    ranOn.push_back(std::this_thread::get_id());
  };
  int item;
  const std::vector<void*> items(3, &item);
  XMakeMT(hundredUs, items.data(), 3);
  EXPECT_EQ(ranOn, std::vector<std::thread::id>(3, std::this_thread::get_id()));
}

// Items that take longer than the solo time: the first call runs its first
// item alone and then gets a helper; the call's time per item is remembered,
// so the next call starts the helper before its first item, and the two
// threads meet while that item still runs. Items wait (at most two seconds,
// which only a failure reaches) until two threads have been inside at once.
struct Meeting {
  std::atomic<uint32_t> inside{0};
  std::atomic<bool> met{false};
  std::atomic<bool> firstItemDone{false};
  std::atomic<bool> metDuringFirstItem{false};
  bool waitOnFirst = true;
};
Meeting meeting;

TEST(ParallelSolo, LongItemsGetHelpersBeforeTheFirstItemOnceKnown) {
  ScopedWorkers workers(2);
  ScopedSolo solo(kNormalSolo);
  ScopedFakeClock clock;
  std::vector<Cell> cells(4);
  auto ptrs = PointersTo(cells);
  constexpr XItemFunc1 oneMs = [](void* item) {
    const bool first = !meeting.firstItemDone && meeting.inside == 0;
    fakeNow += 1000000;
    if (first && !meeting.waitOnFirst) {
      meeting.firstItemDone = true;
    } else {
      if (++meeting.inside >= 2 && !meeting.met.exchange(true)) {
        meeting.metDuringFirstItem = !meeting.firstItemDone;
      }
      const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
      while (!meeting.met && std::chrono::steady_clock::now() < limit) std::this_thread::yield();
      --meeting.inside;
      meeting.firstItemDone = true;
    }
    Touch(item);
  };
  meeting.waitOnFirst = false;
  XMakeMT(oneMs, ptrs.data(), 4);
  EXPECT_TRUE(meeting.met);
  EXPECT_FALSE(meeting.metDuringFirstItem);
  EXPECT_GE(internal::RememberedCost(reinterpret_cast<uintptr_t>(oneMs)).ns, 1000000u);

  meeting.inside = 0;
  meeting.met = false;
  meeting.firstItemDone = false;
  meeting.waitOnFirst = true;
  XMakeMT(oneMs, ptrs.data(), 4);
  EXPECT_TRUE(meeting.met);
  EXPECT_TRUE(meeting.metDuringFirstItem);
  for (const Cell& c : cells) EXPECT_EQ(c.calls, 2u);
}

// The solo clock reads the performance counter's timeline: over a sleep it
// advances by at least the sleep and by no more than the counter read around
// it (a thousandth allowed for its measured rate).
TEST(ParallelSolo, FastCounterFollowsThePerformanceCounter) {
  for (int round = 0; round < 3; ++round) {  // reads 10 ms apart measure the rate
    platform::FastCounter();
    std::this_thread::sleep_for(std::chrono::milliseconds(11));
  }
  for (int round = 0; round < 3; ++round) {
    const uint64_t p0 = platform::PerformanceCounter();
    const uint64_t f0 = platform::FastCounter();
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    const uint64_t f1 = platform::FastCounter();
    const uint64_t p1 = platform::PerformanceCounter();
    ASSERT_GT(f1, f0);
    EXPECT_GE(f1 - f0, 2997000u);
    EXPECT_LE(f1 - f0, (p1 - p0) + (p1 - p0) / 1000);
  }
}

}  // namespace
}  // namespace tavi
