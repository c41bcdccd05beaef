//===- collection_test.cpp - The collection of item pointers ---------------===//
#include "tavi/coll/collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/file/file_header.h"
#include "tavi/thread/progress.h"

namespace tavi {
namespace {

// Items are pointers into a vector of ints; the comparisons look at the ints.
int CmpInt(const void* a, const void* b) {
  const int x = *static_cast<const int*>(a);
  const int y = *static_cast<const int*>(b);
  return x < y ? -1 : (x > y ? 1 : 0);
}
int CmpIntCtx(const void* a, const void* b, const void* ctx) {
  ++*static_cast<int*>(const_cast<void*>(ctx));
  return CmpInt(a, b);
}
int Val(const void* p) {
  return *static_cast<const int*>(p);
}
bool IsEven(const void* p) {
  return p != nullptr && Val(p) % 2 == 0;
}
bool Above(const void* p, const void* limit) {
  return Val(p) > *static_cast<const int*>(limit);
}

// A collection that exposes its growth step and counts what passes through the hooks.
class Probe : public XCollection {
 public:
  explicit Probe(uint32_t delta = kCollectionDelta) { Delta = delta; }
  // Holds a pointer to each int of the store, in order.
  explicit Probe(std::vector<int>& store) {
    for (int& x : store) Insert(&x);
  }
  ~Probe() override { DeleteAll(); }
  uint32_t SetItemsDim(uint32_t n) override {
    return fail_growth ? 0 : XCollection::SetItemsDim(n);
  }
  bool AtInsert(uint32_t index, void* item) override {
    ++single_inserts;
    return XCollection::AtInsert(index, item);
  }
  uint32_t Insert(void* item) override {
    if (refuse_after == 0) return kNoIndex;
    --refuse_after;
    return XCollection::Insert(item);
  }
  using XCollection::AtInsert;
  using XCollection::Insert;
  void FreeItem(void* item) override { freed.push_back(item); }
  bool fail_growth = false;
  int single_inserts = 0;
  uint32_t refuse_after = 0xFFFFFFFFu;
  std::vector<void*> freed;
};

std::vector<int> Values(const XCollection& c) {
  std::vector<int> v;
  for (uint32_t i = 0; i < c.GetCount(); ++i) v.push_back(c._At(i) ? Val(c._At(i)) : -1);
  return v;
}

TEST(Collection, GrowthInDeltaSteps) {
  Probe c;
  EXPECT_EQ(c.GetCount(), 0u);
  EXPECT_EQ(c.GetItemsDim(), 0u);
  EXPECT_EQ(c.GetItems(), nullptr);
  std::vector<int> store(33);
  for (int i = 0; i < 33; ++i) {
    EXPECT_EQ(c.Insert(&store[i]), static_cast<uint32_t>(i));
    EXPECT_EQ(c.GetItemsDim(), i < 32 ? 32u : 64u) << i;
  }
  // A request that is already a multiple still gains a whole step.
  EXPECT_EQ(c.SetItemsDim(64), 64u);
  EXPECT_EQ(c.SetItemsDim(65), 96u);
  EXPECT_EQ(c.SetItemsDim(10), 96u);

  Probe exact(0);
  EXPECT_EQ(exact.SetItemsDim(5), 5u);
  // 0 is also the failure value: inserting nothing into a never-grown collection fails.
  Probe fresh(0);
  int x = 1;
  void* one[1] = {&x};
  EXPECT_FALSE(fresh.AtInsert(0, one, 0));
  EXPECT_TRUE(fresh.Insert(one, 0));
  EXPECT_FALSE(fresh.AtInsert(0, nullptr, 1));
}

TEST(Collection, FailedGrowthChangesNothing) {
  Probe c;
  c.fail_growth = true;
  int x = 1;
  void* items[2] = {&x, &x};
  EXPECT_EQ(c.Insert(&x), kNoIndex);
  EXPECT_FALSE(c.AtInsert(0, items, 2));
  EXPECT_FALSE(c.Insert(items, 2));
  EXPECT_TRUE(c.Insert(items, 0));
  EXPECT_EQ(c.Insert(&x, CmpInt, true), kNoIndex);
  EXPECT_EQ(c.GetCount(), 0u);
  EXPECT_EQ(c.GetItems(), nullptr);
}

TEST(Collection, PositionalEdits) {
  std::vector<int> s = {0, 1, 2, 3, 4};
  Probe c(s);
  EXPECT_EQ(c.At(5), nullptr);
  EXPECT_FALSE(c.AtPut(5, &s[0]));
  EXPECT_TRUE(c.Swap(4, 4));
  EXPECT_FALSE(c.Swap(0, 5));
  EXPECT_FALSE(c.MoveItem(2, 2));
  EXPECT_FALSE(c.MoveItem(0, 5));
  EXPECT_TRUE(c.MoveItem(0, 3));
  EXPECT_EQ(Values(c), (std::vector<int>{1, 2, 3, 0, 4}));
  EXPECT_TRUE(c.MoveItem(4, 1));
  EXPECT_EQ(Values(c), (std::vector<int>{1, 4, 2, 3, 0}));
  c.InvertOrder();
  EXPECT_EQ(Values(c), (std::vector<int>{0, 3, 2, 4, 1}));
  EXPECT_TRUE(c.AtInsert(5, &s[2]));
  EXPECT_FALSE(c.AtInsert(7, &s[2]));
  c.InvertOrder();
  EXPECT_EQ(Values(c), (std::vector<int>{2, 1, 4, 2, 3, 0}));
  void* two[2] = {&s[3], &s[4]};
  EXPECT_TRUE(c.AtInsert(1, two, 2));
  EXPECT_EQ(Values(c), (std::vector<int>{2, 3, 4, 1, 4, 2, 3, 0}));
  EXPECT_EQ(c.Delete(2, 8), 0u);
  EXPECT_EQ(c.Delete(3, 2), 0u);
  EXPECT_EQ(c.Delete(2, 4), 3u);
  EXPECT_EQ(Values(c), (std::vector<int>{2, 3, 2, 3, 0}));
  EXPECT_EQ(c.AtDelete(5), nullptr);
  EXPECT_EQ(c.AtDelete(4), &s[0]);
}

TEST(Collection, DeleteByPointerAndNulls) {
  std::vector<int> s = {7, 8};
  Probe c;
  c.Insert(&s[0]);
  c.Insert(nullptr);
  c.Insert(&s[1]);
  c.Insert(&s[0]);
  EXPECT_EQ(c.IndexOf(&s[0]), 0u);
  EXPECT_EQ(c.Delete(&s[0]), 0u);  // only the first occurrence
  EXPECT_EQ(c.IndexOf(&s[0]), 2u);
  EXPECT_EQ(c.Delete(nullptr), kNoIndex);  // the null slot is gone all the same
  EXPECT_EQ(c.GetCount(), 2u);
  EXPECT_EQ(c.Delete(&s[0] + 5), kNoIndex);
  c.Insert(nullptr);
  EXPECT_FALSE(c.AtFree(2));  // null item: removed, nothing freed
  EXPECT_EQ(c.GetCount(), 2u);
  EXPECT_TRUE(c.freed.empty());
  EXPECT_EQ(c.DeleteUnused(), 0u);
}

TEST(Collection, FreeFamilies) {
  std::vector<int> s = {1, 2, 3, 4, 6};
  Probe c(s);
  c.AtInsert(1, nullptr);
  // Free(first, last) frees every slot of the range, nulls included, in order.
  EXPECT_EQ(c.Free(0, 2), 3u);
  EXPECT_EQ(c.freed, (std::vector<void*>{&s[0], nullptr, &s[1]}));
  EXPECT_EQ(c.Free(2, 5), 0u);
  EXPECT_EQ(c.Free(&s[3]), 1u);
  EXPECT_EQ(c.freed.back(), &s[3]);
  EXPECT_EQ(c.FreeWhich(IsEven), 1u);
  EXPECT_EQ(c.freed.back(), &s[4]);
  c.freed.clear();
  c.Insert(nullptr);
  c.Insert(&s[1]);
  const uint32_t dim = c.GetItemsDim();
  c.FreeAll();
  EXPECT_EQ(c.freed, (std::vector<void*>{&s[2], &s[1]}));
  EXPECT_EQ(c.GetCount(), 0u);
  EXPECT_EQ(c.GetItemsDim(), dim);
}

TEST(Collection, PredicateWalkShrinksTheRange) {
  std::vector<int> s = {2, 4, 1, 6, 8, 3, 10};
  Probe c(s);
  EXPECT_EQ(c.DeleteWhich(0, 1, IsEven), 2u);  // every item of the range matches
  EXPECT_EQ(Values(c), (std::vector<int>{1, 6, 8, 3, 10}));
  // Adjacent matches are each tested once; the walk ends at the shrunken last.
  EXPECT_EQ(c.DeleteWhich(1, 3, IsEven), 2u);
  EXPECT_EQ(Values(c), (std::vector<int>{1, 3, 10}));
  EXPECT_EQ(c.DeleteWhich(2, 1, IsEven), 0u);
  Probe target;
  int limit = 2;
  EXPECT_EQ(c.MoveWhich(Above, target, &limit), 2u);
  EXPECT_EQ(Values(c), (std::vector<int>{1}));
  EXPECT_EQ(Values(target), (std::vector<int>{3, 10}));
  EXPECT_EQ(target.CopyWhich(IsEven, c), 1u);
  EXPECT_EQ(Values(c), (std::vector<int>{1, 10}));
  c.Insert(nullptr);
  EXPECT_EQ(c.DeleteUnused(), 1u);
}

TEST(Collection, RefusedTransfersKeepItems) {
  std::vector<int> s = {2, 4, 6};
  Probe c(s);
  Probe target;
  target.refuse_after = 1;
  // The second item is refused: the first stays moved, the rest stays here.
  EXPECT_EQ(c.MoveWhich(IsEven, target), kNoIndex);
  EXPECT_EQ(Values(c), (std::vector<int>{4, 6}));
  EXPECT_EQ(Values(target), (std::vector<int>{2}));
  EXPECT_EQ(c.AtMove(0, target), kNoIndex);
  EXPECT_EQ(c.Move(&s[2], target), kNoIndex);
  EXPECT_EQ(c.CopyWhich(IsEven, target), kNoIndex);
  EXPECT_EQ(Values(c), (std::vector<int>{4, 6}));
  target.refuse_after = 10;
  EXPECT_EQ(c.AtMove(1, target), 1u);
  EXPECT_EQ(c.Move(&s[1], target), 2u);
  EXPECT_EQ(c.GetCount(), 0u);
  EXPECT_FALSE(c.MoveAll(target));
  Probe never;
  EXPECT_TRUE(never.CopyAll(target));
  EXPECT_TRUE(target.Move(0, 1, c));
  EXPECT_EQ(Values(c), (std::vector<int>{2, 6}));
  EXPECT_TRUE(c.Copy(0, 1, target));
  EXPECT_FALSE(c.Copy(0, 2, target));
  EXPECT_EQ(c.AtCopy(2, target), kNoIndex);
  EXPECT_EQ(Values(target), (std::vector<int>{4, 2, 6}));
}

TEST(Collection, OperationsCallThroughTheSlots) {
  std::vector<int> s = {5, 1, 3};
  Probe c;
  c.Insert(&s[0]);
  c._Insert(&s[1]);
  c.Insert(&s[2], CmpInt, false);
  EXPECT_EQ(c.single_inserts, 3);
  Probe target;
  c.AtCopy(0, target);
  c.AtMove(0, target);
  EXPECT_EQ(target.single_inserts, 2);
}

TEST(Collection, Scans) {
  std::vector<int> s = {1, 4, 3, 6};
  Probe none, c(s);
  EXPECT_EQ(none.FirstThat(IsEven), nullptr);
  EXPECT_TRUE(none.TryDo(IsEven));  // true for no items
  int limit = 3;
  EXPECT_EQ(c.FirstThat(Above, &limit), &s[1]);
  EXPECT_EQ(c.LastThatIndex(IsEven), 3u);
  EXPECT_FALSE(c.TryDo(Above, &limit));
}

// --- Searching ------------------------------------------------------------------------

struct SearchCase {
  int key;
  uint32_t first, higher;  // SearchFirstIndex with insert position, SearchFirstHigherIndex
  bool found;
};

TEST(Collection, SearchExamples) {
  std::vector<int> s = {10, 20, 20, 30};
  Probe c(s);
  const SearchCase cases[] = {
      {20, 1, 3, true}, {25, 3, 3, false},       {35, kNoIndex, kNoIndex, false},
      {5, 0, 0, false}, {30, 3, kNoIndex, true}, {10, 0, 1, true}};
  for (const SearchCase& t : cases) {
    SCOPED_TRACE(t.key);
    bool found = !t.found;
    EXPECT_EQ(c.SearchFirstIndex(&t.key, CmpInt, found, true), t.first);
    EXPECT_EQ(found, t.found);
    EXPECT_EQ(c.SearchFirstIndex(&t.key, CmpInt, false), t.found ? t.first : kNoIndex);
    EXPECT_EQ(c.SearchFirstHigherIndex(&t.key, CmpInt), t.higher);
  }
  // Subranges against the standard bounds are the fuzz target's work; here the
  // context forms, an empty collection and a reversed range.
  const int twenty = 20;
  int calls = 0;
  EXPECT_EQ(c.SearchFirstHigherIndex(&twenty, CmpIntCtx, &calls), 3u);
  EXPECT_EQ(c.SearchIndex(&twenty, CmpIntCtx, &calls, 3, 3), kNoIndex);
  EXPECT_GT(calls, 0);
  Probe empty;
  bool found = true;
  EXPECT_EQ(empty.SearchIndex(&twenty, CmpInt), kNoIndex);
  EXPECT_EQ(empty.SearchFirstIndex(&twenty, CmpInt, found, true), kNoIndex);
  EXPECT_FALSE(found);
  EXPECT_EQ(c.SearchIndex(&twenty, CmpInt, 3, 2), kNoIndex);
}

TEST(Collection, SortedInsertion) {
  std::vector<int> s = {20, 10, 20, 30, 20};
  Probe c;
  for (int i = 0; i < 4; ++i) c.Insert(&s[i], CmpInt, true);
  EXPECT_EQ(Values(c), (std::vector<int>{10, 20, 20, 30}));
  // A new equal item goes in front of the existing equal items.
  EXPECT_EQ(c.Insert(&s[4], CmpInt, true), 1u);
  EXPECT_EQ(c._At(1), &s[4]);
  EXPECT_EQ(c.Insert(&s[0], CmpInt, false), kNoIndex);
  EXPECT_EQ(c.GetCount(), 5u);
  int calls = 0;
  int big = 99;
  EXPECT_EQ(c.Insert(&big, CmpIntCtx, &calls, false), 5u);
  EXPECT_GT(calls, 0);
  // A null item is appended without any comparison.
  calls = 0;
  EXPECT_EQ(c.Insert(nullptr, CmpIntCtx, &calls, false), 6u);
  EXPECT_EQ(calls, 0);
}

// --- Sorting --------------------------------------------------------------------------

// A plain rendering of the sort, recursion for the pending ranges: the library's sort
// must produce the same permutation, equal items included.
void ReferenceSort(void** a, long lo, long hi) {
  while (hi - lo + 1 > 8) {
    const long size = hi - lo + 1;
    std::swap(a[lo + size / 2], a[lo]);
    long i = lo + 1;
    long j = hi;
    for (;;) {
      while (i <= hi && CmpInt(a[i], a[lo]) <= 0) ++i;
      while (j > lo && CmpInt(a[j], a[lo]) >= 0) --j;
      if (i > j) break;
      std::swap(a[i], a[j]);
    }
    std::swap(a[lo], a[j]);
    if (j - lo >= hi - j) {
      ReferenceSort(a, j + 1, hi);
      hi = j - 1;
    } else {
      ReferenceSort(a, lo, j - 1);
      lo = j + 1;
    }
  }
  for (; hi > lo; --hi) {
    long m = lo;
    for (long p = lo + 1; p <= hi; ++p) {
      if (CmpInt(a[p], a[m]) > 0) m = p;
    }
    std::swap(a[m], a[hi]);
  }
}

TEST(Xqsort, SamePermutationAsThePlainAlgorithm) {
  std::mt19937 rng(11);
  // Many equal items, random, ascending, descending, all equal.
  const std::function<int(int)> shapes[] = {[&](int) { return static_cast<int>(rng() % 7); },
                                            [&](int) { return static_cast<int>(rng()); },
                                            [](int i) { return i; }, [](int i) { return -i; },
                                            [](int) { return 5; }};
  for (uint32_t n : {0u, 1u, 2u, 3u, 8u, 9u, 10u, 17u, 64u, 1000u, 4099u}) {
    for (size_t shape = 0; shape < std::size(shapes); ++shape) {
      std::vector<int> s(n);
      for (uint32_t i = 0; i < n; ++i) s[i] = shapes[shape](static_cast<int>(i));
      std::vector<void*> a(n), b(n);
      for (uint32_t i = 0; i < n; ++i) a[i] = b[i] = &s[i];
      Xqsort(a.data(), n, CmpInt);
      if (n > 0) ReferenceSort(b.data(), 0, static_cast<long>(n) - 1);
      EXPECT_EQ(a, b) << n << " shape " << shape;
      int calls = 0;
      for (uint32_t i = 0; i < n; ++i) b[i] = &s[i];
      Xqsort(b.data(), n, CmpIntCtx, &calls);
      EXPECT_EQ(a, b);
    }
  }
}

// --- Iteration ------------------------------------------------------------------------

std::atomic<long> g_sum{0};
void AddItem(void* p) {
  g_sum += Val(p);
}
void AddItemTimes(void* p, void* k) {
  g_sum += Val(p) * *static_cast<int*>(k);
}

TEST(Collection, ForEachFormsVisitEveryItem) {
  std::vector<int> s(100);
  for (int i = 0; i < 100; ++i) s[i] = i + 1;
  Probe c(s);
  int k = 2;
  g_sum = 0;
  c.ForEach(AddItem);
  c.ForEach(AddItemTimes, &k);
  c.ForEachMT(AddItem);
  c.ForEachMT(AddItemTimes, &k);
  EXPECT_EQ(g_sum.load(), 6 * 5050);
  strProgressOptions options;
  g_sum = 0;
  c.ForEach(u"t", 1, AddItem, options);
  c.ForEachMT(u"t", 1, AddItemTimes, &k, options);
  XCollection::ForEach(AddItem, c.GetItems(), 10);
  EXPECT_EQ(g_sum.load(), 3 * 5050 + 55);
}

// --- Serialisation --------------------------------------------------------------------

TEST(Collection, SerialisedCount) {
  Probe c;
  XBuffer out;
  ASSERT_TRUE(c.Write(out));
  ASSERT_EQ(out.GetBufferPos(), 4u);
  EXPECT_EQ(std::memcmp(out.GetBuffer(), "\0\0\0\0", 4), 0);
  EXPECT_TRUE(c.Read(out));
  EXPECT_EQ(c.GetItemsDim(), 0u);

  struct Case {
    std::vector<uint8_t> bytes;
    uint32_t held;
    uint32_t error;
  };
  const Case cases[] = {
      {{1, 0, 0, 0}, 0, kErrForeignBufferTooSmall},
      {{0xFE, 0xFF, 0xFF, 0xFF}, 0, kErrForeignBufferTooSmall},
      {{0xFF, 0xFF, 0xFF, 0xFF}, 0, kErrNoMemory},
      {{0xFB, 0xFF, 0xFF, 0xFF}, 4, kErrNoMemory},
      {{0xFF, 0xFF, 0xFF, 0xFF}, 4, kErrNoMemory},
      {{1, 0, 0}, 0, kErrEndOfData},
      {{}, 3, kErrEndOfData},
  };
  int x = 0;
  for (const Case& t : cases) {
    Probe r;
    for (uint32_t i = 0; i < t.held; ++i) r.Insert(&x);
    const uint32_t dim = r.GetItemsDim();
    XBuffer in;
    in._Write(t.bytes.data(), static_cast<uint32_t>(t.bytes.size()));
    EXPECT_FALSE(r.Read(in));
    EXPECT_EQ(in.GetErrorCode(), t.error);
    EXPECT_EQ(r.GetCount(), t.held);
    EXPECT_EQ(r.GetItemsDim(), dim);  // nothing allocated for the stored count
  }
  // A short count keeps an error that was already pending.
  XBuffer in;
  in.SetErrorCode(kErrTooLong);
  EXPECT_FALSE(c.Read(in));
  EXPECT_EQ(in.GetErrorCode(), kErrTooLong);
}

// --- Saving and loading through the object pipeline ---------------------------------

// An item that stores one 32-bit number.
class Num : public XObject {
 public:
  explicit Num(uint32_t v) : v(v) {}
  bool Write(XIO& io) override { return io._Write(&v, 4); }
  uint32_t v;
};

// A collection of numbers with its own header and an item-reading Read, as the
// collections that are saved to files have.
class NumColl : public XCollection {
 public:
  ~NumColl() override { FreeAll(); }
  bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kId, flags);
    return header.Write(file);
  }
  bool ReadFileHeader(XFile& file, XFileHeader256& header) override {
    return header.Read(file) && header.IsFor(kId);
  }
  bool Read(XIO& io) override {
    uint32_t n = 0;
    if (io._Read(&n, 4) != 4) return false;
    for (uint32_t i = 0; i < n; ++i) {
      void* item = ReadItem(io);
      if (item == nullptr || Insert(item) == kNoIndex) return false;
    }
    return true;
  }
  std::vector<uint32_t> Numbers() const {
    std::vector<uint32_t> v;
    for (uint32_t i = 0; i < Count; ++i) v.push_back(static_cast<Num*>(Items[i])->v);
    return v;
  }

 protected:
  void* ReadItem(XIO& io) override {
    uint32_t v;
    return io._Read(&v, 4) == 4 ? new Num(v) : nullptr;
  }

 private:
  static constexpr uint32_t kId = 0x4E554D53;
};

bool GivePassword(XString16& password, void*) {
  return password.Set(u"secret", uint32_t{12});
}

TEST(Collection, SaveAndLoadRawAndPacked) {
  test::ScratchDir dir;
  NumColl c;
  for (uint32_t v : {7u, 0u, 0xFFFFFFFFu, 42u}) c.Insert(new Num(v));
  for (uint32_t flags : {0u, kFileHeaderCompressed | kFileHeaderCrypted}) {
    SCOPED_TRACE(flags);
    XString16 name = test::Str(dir.Name(u"nums.bin"));
    ASSERT_TRUE(c.SaveFile(name, flags, u"secret", kFileWrite | kFileCreateAlways, nullptr));
    NumColl back;
    ASSERT_TRUE(back.LoadFile(name, GivePassword, nullptr, kFileRead));
    EXPECT_EQ(back.Numbers(), c.Numbers());
  }
  // The body alone, by name and without a header.
  XString16 name = test::Str(dir.Name(u"body.bin"));
  ASSERT_TRUE(c.SaveFile(name, kFileWrite | kFileCreateAlways, nullptr));
  NumColl back;
  ASSERT_TRUE(back.LoadFile(name, kFileRead));
  EXPECT_EQ(back.Numbers(), c.Numbers());
  // The count, then each item as its own Write makes it.
  EXPECT_EQ(test::Slurp(dir / u"body.bin"),
            std::string("\4\0\0\0\7\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\x2A\0\0\0", 20));
  // The base class reads back only an empty collection.
  XCollection empty;
  ASSERT_TRUE(empty.SaveFile(name, kFileWrite | kFileCreateAlways, nullptr));
  EXPECT_TRUE(empty.LoadFile(name, kFileRead));
  ASSERT_TRUE(c.SaveFile(name, kFileWrite | kFileCreateAlways, nullptr));
  EXPECT_FALSE(empty.LoadFile(name, kFileRead));
  EXPECT_EQ(name.GetErrorCode(), kErrForeignBufferTooSmall);
  EXPECT_EQ(empty.GetCount(), 0u);
}

}  // namespace
}  // namespace tavi
