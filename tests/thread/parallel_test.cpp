//===- parallel_test.cpp - XMake, XMakeArray, XCheck, XEnum, single and MT ===//
#include "tavi/thread/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace tavi {
namespace {

// Sets the worker count for one test and restores it after.
class ScopedWorkers {
 public:
  explicit ScopedWorkers(uint32_t count) : old_(XSetWorkerCount(count)) {}
  ~ScopedWorkers() { XSetWorkerCount(old_); }

 private:
  uint32_t old_;
};

struct Cell {
  std::atomic<uint32_t> calls{0};
  uint32_t key = 0;
};

std::vector<void*> PointersTo(std::vector<Cell>& cells) {
  std::vector<void*> items;
  for (Cell& c : cells) items.push_back(&c);
  return items;
}

void Touch(void* item) {
  static_cast<Cell*>(item)->calls.fetch_add(1);
}
void TouchBy(void* item, void* add) {
  static_cast<Cell*>(item)->calls.fetch_add(*static_cast<uint32_t*>(add));
}
void TouchBy2(void* item, void* add, void* times) {
  static_cast<Cell*>(item)->calls.fetch_add(*static_cast<uint32_t*>(add) *
                                            *static_cast<uint32_t*>(times));
}

// Items are Cells; a predicate context is {divisor, remainder}.
bool KeyMatches(void* item, void* divisor, void* remainder) {
  return static_cast<Cell*>(item)->key % *static_cast<uint32_t*>(divisor) ==
         *static_cast<uint32_t*>(remainder);
}
bool KeyIsOdd(void* item) {
  return static_cast<Cell*>(item)->key % 2 == 1;
}
bool KeyAbove(void* item, void* limit) {
  return static_cast<Cell*>(item)->key > *static_cast<uint32_t*>(limit);
}

TEST(WorkerCount, StartsAtTheProcessorCountAndClamps) {
  const uint32_t initial = XGetWorkerCount();
  const uint32_t processors = std::thread::hardware_concurrency();
  EXPECT_EQ(initial, std::min<uint32_t>(std::max<uint32_t>(processors, 1), 16));
  EXPECT_EQ(XSetWorkerCount(40), initial);
  EXPECT_EQ(XGetWorkerCount(), 16u);
  XSetWorkerCount(0);
  EXPECT_EQ(XGetWorkerCount(), 1u);
  XSetWorkerCount(initial);
}

TEST(Parallel, SingleThreadedFormsVisitInOrderWithTheirContexts) {
  std::vector<int> order;
  int values[4] = {10, 11, 12, 13};
  void* items[4] = {&values[0], &values[1], nullptr, &values[3]};
  static std::vector<int>* seen;
  seen = &order;
  XMake([](void* item) { seen->push_back(item ? *static_cast<int*>(item) : -1); }, items, 4);
  // The single-threaded form passes null items on.
  EXPECT_EQ(order, (std::vector<int>{10, 11, -1, 13}));

  std::vector<Cell> cells(5);
  auto ptrs = PointersTo(cells);
  uint32_t three = 3, two = 2;
  XMake(TouchBy, &three, ptrs.data(), 5);
  XMake(TouchBy2, &three, &two, ptrs.data(), 5);
  XMake(Touch, ptrs.data(), 0);
  for (Cell& c : cells) EXPECT_EQ(c.calls.load(), 9u);
}

TEST(Parallel, ArrayFormsAddressEveryElement) {
  // Elements of 7 bytes: element i holds i in its first byte.
  std::vector<uint8_t> bytes(7 * 100);
  for (uint32_t i = 0; i < 100; ++i) bytes[7 * i] = static_cast<uint8_t>(i);
  uint32_t sum = 0, count = 0;
  XMakeArray(
      [](void* e, void* s, void* n) {
        *static_cast<uint32_t*>(s) += *static_cast<uint8_t*>(e);
        ++*static_cast<uint32_t*>(n);
      },
      &sum, &count, bytes.data(), 100, 7);
  EXPECT_EQ(sum, 4950u);
  EXPECT_EQ(count, 100u);
  XMakeArray([](void* e) { *static_cast<uint8_t*>(e) = 0xEE; }, bytes.data(), 100, 7);
  for (uint32_t i = 0; i < 100; ++i) EXPECT_EQ(bytes[7 * i], 0xEE);
  EXPECT_EQ(bytes[1], 0);  // between elements nothing is touched
}

TEST(Parallel, SearchesFindTheFirstStopOrNull) {
  std::vector<Cell> cells(10);
  for (uint32_t i = 0; i < 10; ++i) cells[i].key = i * 2;  // all even
  auto ptrs = PointersTo(cells);
  EXPECT_EQ(XCheck(KeyIsOdd, ptrs.data(), 10), nullptr);
  EXPECT_EQ(XEnum(KeyIsOdd, ptrs.data(), 10), &cells[0]);
  cells[6].key = 13;
  cells[8].key = 15;
  EXPECT_EQ(XCheck(KeyIsOdd, ptrs.data(), 10), &cells[6]);
  uint32_t limit = 9;
  EXPECT_EQ(XCheck(KeyAbove, &limit, ptrs.data(), 10), &cells[5]);
  EXPECT_EQ(XEnum(KeyAbove, &limit, ptrs.data(), 10), &cells[0]);
  uint32_t divisor = 5, remainder = 3;
  EXPECT_EQ(XCheck(KeyMatches, &divisor, &remainder, ptrs.data(), 10), &cells[4]);  // key 8
  EXPECT_EQ(XEnum(KeyMatches, &divisor, &remainder, ptrs.data(), 10), &cells[0]);
  EXPECT_EQ(XCheck(KeyIsOdd, ptrs.data(), 0), nullptr);
  EXPECT_EQ(XEnum(KeyIsOdd, ptrs.data(), 0), nullptr);
}

// The threaded forms must do exactly what the single-threaded ones do, on
// every worker count and on arrays of every size around the run lengths.
TEST(Parallel, ThreadedFormsAgreeWithSingleThreaded) {
  std::mt19937 rng(12345);
  for (int round = 0; round < 40; ++round) {
    const uint32_t workers = 1 + rng() % 16;
    ScopedWorkers scoped(workers);
    const uint32_t count = round < 20 ? static_cast<uint32_t>(round) : rng() % 2000;
    SCOPED_TRACE(testing::Message() << "workers " << workers << " count " << count);

    std::vector<Cell> cells(count);
    for (Cell& c : cells) c.key = static_cast<uint32_t>(rng() % 1000);
    auto ptrs = PointersTo(cells);
    uint32_t one = 1, two = 2;
    XMakeMT(Touch, ptrs.data(), count);
    XMakeMT(TouchBy, &two, ptrs.data(), count);
    XMakeMT(TouchBy2, &two, &two, ptrs.data(), count);
    for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(cells[i].calls.load(), 7u) << i;

    std::vector<uint32_t> elements(count * 3);
    XMakeArrayMT([](void* e) { ++*static_cast<uint32_t*>(e); }, elements.data(), count, 12);
    XMakeArrayMT([](void* e, void* c) { *static_cast<uint32_t*>(e) += *static_cast<uint32_t*>(c); },
                 &two, elements.data(), count, 12);
    XMakeArrayMT(
        [](void* e, void* a, void* b) {
          static_cast<uint32_t*>(e)[1] += *static_cast<uint32_t*>(a) + *static_cast<uint32_t*>(b);
        },
        &one, &two, elements.data(), count, 12);
    for (uint32_t i = 0; i < count; ++i) {
      ASSERT_EQ(elements[3 * i], 3u) << i;
      ASSERT_EQ(elements[3 * i + 1], 3u) << i;
      ASSERT_EQ(elements[3 * i + 2], 0u) << i;
    }

    // Sparse, dense and absent matches.
    for (uint32_t divisor : {1u, 7u, 997u, 5000u}) {
      uint32_t remainder = static_cast<uint32_t>(rng() % divisor);
      ASSERT_EQ(XCheckMT(KeyMatches, &divisor, &remainder, ptrs.data(), count),
                XCheck(KeyMatches, &divisor, &remainder, ptrs.data(), count));
      ASSERT_EQ(XEnumMT(KeyMatches, &divisor, &remainder, ptrs.data(), count),
                XEnum(KeyMatches, &divisor, &remainder, ptrs.data(), count));
      uint32_t limit = 1000 - divisor % 1000;
      ASSERT_EQ(XCheckMT(KeyAbove, &limit, ptrs.data(), count),
                XCheck(KeyAbove, &limit, ptrs.data(), count));
      ASSERT_EQ(XEnumMT(KeyAbove, &limit, ptrs.data(), count),
                XEnum(KeyAbove, &limit, ptrs.data(), count));
    }
    ASSERT_EQ(XCheckMT(KeyIsOdd, ptrs.data(), count), XCheck(KeyIsOdd, ptrs.data(), count));
    ASSERT_EQ(XEnumMT(KeyIsOdd, ptrs.data(), count), XEnum(KeyIsOdd, ptrs.data(), count));
  }
}

TEST(Parallel, ThreadedSearchReturnsTheLowestOfManyMatches) {
  ScopedWorkers scoped(8);
  std::vector<Cell> cells(20000);
  for (uint32_t i = 0; i < cells.size(); ++i) cells[i].key = i >= 777 && i % 3 == 0 ? 1 : 0;
  auto ptrs = PointersTo(cells);
  for (int repeat = 0; repeat < 20; ++repeat) {
    ASSERT_EQ(XCheckMT(KeyIsOdd, ptrs.data(), 20000), &cells[777]);
  }
  // Nothing matches: null, as in the single-threaded form.
  for (Cell& c : cells) c.key = 2;
  EXPECT_EQ(XCheckMT(KeyIsOdd, ptrs.data(), 20000), nullptr);
  EXPECT_EQ(XEnumMT(KeyIsOdd, ptrs.data(), 19999), &cells[0]);
}

TEST(Parallel, ThreadedFormsUseSeveralThreads) {
  ScopedWorkers scoped(4);
  static std::mutex mutex;
  static std::set<std::thread::id> ids;
  ids.clear();
  std::vector<Cell> cells(64);
  auto ptrs = PointersTo(cells);
  XMakeMT(
      [](void*) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::lock_guard<std::mutex> lock(mutex);
        ids.insert(std::this_thread::get_id());
      },
      ptrs.data(), 64);
  EXPECT_GE(ids.size(), 2u);
  EXPECT_LE(ids.size(), 4u);
}

// A null item is the terminator of the threaded pointer forms: the worker that
// takes it ends, and fn never sees it.
TEST(Parallel, NullItemEndsAWorkerInThreadedForms) {
  ScopedWorkers scoped(4);
  for (uint32_t nullAt : {0u, 2u, 500u, 999u}) {
    std::vector<Cell> cells(1000);
    auto ptrs = PointersTo(cells);
    ptrs[nullAt] = nullptr;
    static std::atomic<uint32_t> nulls;
    nulls = 0;
    XMakeMT(
        [](void* item) {
          if (item == nullptr) {
            ++nulls;
          } else {
            Touch(item);
          }
        },
        ptrs.data(), 1000);
    EXPECT_EQ(nulls.load(), 0u);
    for (Cell& c : cells) ASSERT_LE(c.calls.load(), 1u);
    // Items handed out before the null are all processed by someone.
    for (uint32_t i = 0; i < nullAt; ++i) ASSERT_EQ(cells[i].calls.load(), 1u) << i;
  }
  // With one worker the threaded form is the single-threaded one and passes
  // null on.
  ScopedWorkers single(1);
  void* items[3] = {nullptr, nullptr, nullptr};
  static std::atomic<uint32_t> calls;
  calls = 0;
  XMakeMT([](void*) { ++calls; }, items, 3);
  EXPECT_EQ(calls.load(), 3u);
}

}  // namespace
}  // namespace tavi
