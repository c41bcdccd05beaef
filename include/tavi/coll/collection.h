//===- collection.h - The growable collection of item pointers -*- C++ -*-===//
//
// This file defines XCollection, the library's dynamic array of untyped item
// pointers, with sorted insertion, exact binary searches, the predicate families,
// iteration (also on several threads), serialisation, and Xqsort, the quicksort of
// pointer arrays it sorts with.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"
#include "tavi/file/object.h"
#include "tavi/thread/parallel.h"

namespace tavi {

class XIO;
struct strProgressOptions;

// The no-index result of every operation that returns an index.
inline constexpr uint32_t kNoIndex = 0xFFFFFFFFu;
// Growth step of a new collection, in items.
inline constexpr uint32_t kCollectionDelta = 32;

// Comparisons are called as cmp(key, item) or cmp(key, item, context) and return a
// negative number, 0 or a positive number as key sorts before, with or after item.
using XCompareFunc = int (*)(const void* key, const void* item);
using XCompareFunc3 = int (*)(const void* key, const void* item, const void* context);
// Predicates get the item pointer itself (not its slot).
using XPredicate = bool (*)(const void* item);
using XPredicate2 = bool (*)(const void* item, const void* context);

// Xqsort sorts items[0..n) ascending under cmp(a, b): the middle item as pivot, an
// explicit stack of 30 pending ranges (the larger part deferred, so no heap memory and
// no recursion), ranges of 8 items or fewer finished by selection sort. Not stable.
// O(n log n) comparisons on typical data.
TAVI_API void Xqsort(void** items, uint32_t n, XCompareFunc cmp);
TAVI_API void Xqsort(void** items, uint32_t n, XCompareFunc3 cmp, const void* context);

// XCollection is an ordered, growable array of item pointers (null items included).
//
// The collection owns only its slot array; items belong to the caller until one of the
// Free operations destroys them through FreeItem. Whether the items are sorted is the
// caller's business: the searches and sorted insertions assume ascending order under
// the comparison they are given. Indices and counts are 32-bit; kNoIndex means none.
//
// Every operation that inserts, removes, grows, frees or transfers goes through the
// virtual operations (declared below in their fixed order), so a subclass that
// overrides one of them changes every operation built on it. Operations whose names
// begin with an underscore check nothing; their namesakes check indices and fail
// softly (false, null, 0 or kNoIndex), changing nothing.
//
// Copying is shallow: the copy refers to the same slot array as the source. Only one
// of them may be destroyed while they share it, or the array is released twice;
// subclasses that need deep copies provide their own.
class TAVI_API XCollection : public XObject {
 public:
  XCollection() = default;
  XCollection(const XCollection& other) = default;
  XCollection& operator=(const XCollection& other) = default;
  // Releases the slot array; never frees items (call FreeAll first for that).
  ~XCollection() override;

  // Write stores the item count (4 bytes, little-endian) and then every item through
  // WriteItem, stopping with false at the first failure.
  bool Write(XIO& io) override;
  // Read appends stored items to those held. A short count records 0x20000004 (when
  // the stream has no error yet); a count of 0 is true and changes nothing. A
  // non-empty count is refused with 0x80028016 whenever the bitwise complement of
  // Count exceeds it; one that passes that test would bring the total to 2^32-1 items
  // or beyond and is refused with 0x20000001. So the base class reads only empty
  // collections and never allocates for a stored count; subclasses that read items
  // override Read (with ReadItem making each item).
  bool Read(XIO& io) override;

  // --- Access (not virtual) -------------------------------------------------------
  uint32_t GetCount() const { return Count; }
  uint32_t GetItemsDim() const { return ItemsDim; }
  void** GetItems() const { return Items; }
  bool Check(uint32_t index) const { return index < Count; }
  void* At(uint32_t index) const { return index < Count ? Items[index] : nullptr; }
  void* _At(uint32_t index) const { return Items[index]; }
  void* operator[](uint32_t index) const { return Items[index]; }
  bool AtPut(uint32_t index, void* item);
  void _AtPut(uint32_t index, void* item) { Items[index] = item; }
  // IndexOf: first slot holding exactly this pointer, kNoIndex when none.
  uint32_t IndexOf(const void* item) const;
  // Swap exchanges two slots (i == j allowed); false when either is out of range.
  bool Swap(uint32_t i, uint32_t j);
  // InvertOrder reverses the items in place.
  void InvertOrder();
  // DeleteAll empties the collection; frees nothing and keeps the slot array.
  void DeleteAll() { Count = 0; }
  bool _Insert(void* item) { return AtInsert(Count, item); }
  // _AtFree removes slot index and frees the item (unchecked).
  void _AtFree(uint32_t index);
  // The copies insert into target through its Insert(item) / Insert(items, n).
  uint32_t _AtCopy(uint32_t index, XCollection& target);
  bool _Copy(uint32_t first, uint32_t last, XCollection& target);
  bool CopyAll(XCollection& target);
  // MoveAll moves every item to target; false on an empty collection.
  bool MoveAll(XCollection& target);
  // DeleteUnused removes every null slot and returns how many.
  uint32_t DeleteUnused();

  // --- Predicate families over the whole collection ---------------------------------
  uint32_t DeleteWhich(XPredicate2 pred, const void* context);
  uint32_t DeleteWhich(XPredicate pred);
  uint32_t FreeWhich(XPredicate2 pred, const void* context);
  uint32_t FreeWhich(XPredicate pred);
  uint32_t CopyWhich(XPredicate2 pred, XCollection& target, const void* context);
  uint32_t CopyWhich(XPredicate pred, XCollection& target);
  uint32_t MoveWhich(XPredicate2 pred, XCollection& target, const void* context);
  uint32_t MoveWhich(XPredicate pred, XCollection& target);

  // FirstThat / LastThat: the first item from the front / back for which pred holds
  // (null when none); the Index forms return its index (kNoIndex when none). TryDo is
  // true when pred holds for every item (true for none). Each also works over any
  // pointer array.
  void* FirstThat(XPredicate pred) const;
  void* FirstThat(XPredicate2 pred, const void* context) const;
  static void* FirstThat(XPredicate pred, void* const* items, uint32_t n);
  static void* FirstThat(XPredicate2 pred, const void* context, void* const* items, uint32_t n);
  uint32_t FirstThatIndex(XPredicate pred) const;
  uint32_t FirstThatIndex(XPredicate2 pred, const void* context) const;
  static uint32_t FirstThatIndex(XPredicate pred, void* const* items, uint32_t n);
  static uint32_t FirstThatIndex(XPredicate2 pred, const void* context, void* const* items,
                                 uint32_t n);
  void* LastThat(XPredicate pred) const;
  void* LastThat(XPredicate2 pred, const void* context) const;
  static void* LastThat(XPredicate pred, void* const* items, uint32_t n);
  static void* LastThat(XPredicate2 pred, const void* context, void* const* items, uint32_t n);
  uint32_t LastThatIndex(XPredicate pred) const;
  uint32_t LastThatIndex(XPredicate2 pred, const void* context) const;
  static uint32_t LastThatIndex(XPredicate pred, void* const* items, uint32_t n);
  static uint32_t LastThatIndex(XPredicate2 pred, const void* context, void* const* items,
                                uint32_t n);
  bool TryDo(XPredicate pred) const;
  bool TryDo(XPredicate2 pred, const void* context) const;
  static bool TryDo(XPredicate pred, void* const* items, uint32_t n);
  static bool TryDo(XPredicate2 pred, const void* context, void* const* items, uint32_t n);

  // --- Binary searches (items sorted ascending under the same comparison) ----------
  //
  // The ranged forms search first..last and yield kNoIndex when first > last or last
  // is not below Count; the others search the whole collection. Cost: O(log n)
  // comparisons plus at most one.

  // SearchIndex: an item equal to key (any one of a run of equal items), or kNoIndex.
  uint32_t SearchIndex(const void* key, XCompareFunc cmp) const;
  uint32_t SearchIndex(const void* key, XCompareFunc cmp, uint32_t first, uint32_t last) const;
  uint32_t SearchIndex(const void* key, XCompareFunc3 cmp, const void* context) const;
  uint32_t SearchIndex(const void* key, XCompareFunc3 cmp, const void* context, uint32_t first,
                       uint32_t last) const;
  void* Search(const void* key, XCompareFunc cmp) const;
  void* Search(const void* key, XCompareFunc3 cmp, const void* context) const;

  // SearchFirstIndex: the first item equal to key (found true). Otherwise found is
  // false and the result is, with insertPosition, the first item greater than key
  // (where key would be inserted) or kNoIndex when every item is smaller; without
  // insertPosition, kNoIndex.
  uint32_t SearchFirstIndex(const void* key, XCompareFunc cmp, bool& found,
                            bool insertPosition) const;
  uint32_t SearchFirstIndex(const void* key, XCompareFunc cmp, bool& found, bool insertPosition,
                            uint32_t first, uint32_t last) const;
  uint32_t SearchFirstIndex(const void* key, XCompareFunc cmp, bool insertPosition) const;
  uint32_t SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context, bool& found,
                            bool insertPosition) const;
  uint32_t SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context, bool& found,
                            bool insertPosition, uint32_t first, uint32_t last) const;
  uint32_t SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context,
                            bool insertPosition) const;
  void* SearchFirst(const void* key, XCompareFunc cmp, bool& found) const;
  void* SearchFirst(const void* key, XCompareFunc cmp) const;
  void* SearchFirst(const void* key, XCompareFunc3 cmp, const void* context, bool& found) const;

  // SearchFirstHigherIndex: the first item strictly greater than key, or kNoIndex.
  uint32_t SearchFirstHigherIndex(const void* key, XCompareFunc cmp) const;
  uint32_t SearchFirstHigherIndex(const void* key, XCompareFunc cmp, uint32_t first,
                                  uint32_t last) const;
  uint32_t SearchFirstHigherIndex(const void* key, XCompareFunc3 cmp, const void* context) const;
  uint32_t SearchFirstHigherIndex(const void* key, XCompareFunc3 cmp, const void* context,
                                  uint32_t first, uint32_t last) const;

  // SortItems sorts the items with Xqsort.
  void SortItems(XCompareFunc cmp) { Xqsort(Items, Count, cmp); }
  void SortItems(XCompareFunc3 cmp, const void* context) { Xqsort(Items, Count, cmp, context); }

  // --- Iteration ------------------------------------------------------------------
  //
  // ForEach calls fn for every item from index 0 upward, nulls included; the forms
  // with items and n work on that array instead of the collection. The MT and progress
  // forms hand the slots to XMakeMT / XMake (thread/parallel.h) and return nothing:
  // fn must not change the collection, and under MT it runs on several threads.
  void ForEach(XItemFunc1 fn);
  void ForEach(XItemFunc2 fn, void* context);
  static void ForEach(XItemFunc1 fn, void** items, uint32_t n);
  static void ForEach(XItemFunc2 fn, void** items, uint32_t n, void* context);
  void ForEachMT(XItemFunc1 fn);
  void ForEachMT(XItemFunc2 fn, void* context);
  static void ForEachMT(XItemFunc1 fn, void** items, uint32_t n);
  static void ForEachMT(XItemFunc2 fn, void** items, uint32_t n, void* context);
  void ForEach(const char16_t* title, uint32_t titleLen, XItemFunc1 fn,
               strProgressOptions& options);
  static void ForEach(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void** items,
                      uint32_t n, strProgressOptions& options);
  void ForEach(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
               strProgressOptions& options);
  static void ForEach(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                      void** items, uint32_t n, strProgressOptions& options);
  void ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn,
                 strProgressOptions& options);
  static void ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void** items,
                        uint32_t n, strProgressOptions& options);
  void ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                 strProgressOptions& options);
  static void ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                        void** items, uint32_t n, strProgressOptions& options);
  void ForEach(int32_t resource, XItemFunc1 fn, strProgressOptions& options, XModule instance);
  static void ForEach(int32_t resource, XItemFunc1 fn, void** items, uint32_t n,
                      strProgressOptions& options, XModule instance);
  void ForEach(int32_t resource, XItemFunc2 fn, void* context, strProgressOptions& options,
               XModule instance);
  static void ForEach(int32_t resource, XItemFunc2 fn, void* context, void** items, uint32_t n,
                      strProgressOptions& options, XModule instance);
  void ForEachMT(int32_t resource, XItemFunc1 fn, strProgressOptions& options, XModule instance);
  static void ForEachMT(int32_t resource, XItemFunc1 fn, void** items, uint32_t n,
                        strProgressOptions& options, XModule instance);
  void ForEachMT(int32_t resource, XItemFunc2 fn, void* context, strProgressOptions& options,
                 XModule instance);
  static void ForEachMT(int32_t resource, XItemFunc2 fn, void* context, void** items, uint32_t n,
                        strProgressOptions& options, XModule instance);

 protected:
  // --- Item hooks ------------------------------------------------------------------
  // WriteItem writes an item that is an XObject through its own Write.
  virtual bool WriteItem(XIO& io, void* item);
  // ReadItem of the base cannot make items: 0x20000015 (detail 1004) in io, null.
  virtual void* ReadItem(XIO& io);
  // FreeItem destroys a non-null item that is an XObject; null is ignored.
  virtual void FreeItem(void* item);

 public:
  // --- Growth, removal and insertion (virtual, in this order) -----------------------

  // SetItemsDim makes room for n slots: unchanged when ItemsDim >= n; else the new
  // dimension is n rounded up to the next multiple of Delta strictly above n (n
  // itself when Delta is 0). Returns the dimension, 0 when memory or the 32-bit index
  // range runs out (the array is then unchanged). Never shrinks.
  virtual uint32_t SetItemsDim(uint32_t n);
  // AtDelete removes slot index and returns its item (null when out of range).
  virtual void* AtDelete(uint32_t index);
  virtual void* _AtDelete(uint32_t index);
  // Delete(first, last) removes the slots first..last and returns how many (0 when
  // the range is not within the items).
  virtual uint32_t Delete(uint32_t first, uint32_t last);
  // Delete(item) removes the first slot holding item; returns its former index, or
  // kNoIndex when there is none or the pointer was null (the null slot is removed).
  virtual uint32_t Delete(void* item);
  virtual uint32_t _Delete(uint32_t first, uint32_t last);
  // AtFree removes and frees slot index; false for a bad index or a null item.
  virtual bool AtFree(uint32_t index);
  // Free(first, last) frees the items of the range (nulls included, ascending), then
  // removes the slots; returns how many, 0 for a bad range.
  virtual uint32_t Free(uint32_t first, uint32_t last);
  // Free(item) is Delete(item), then FreeItem on success; returns the index.
  virtual uint32_t Free(void* item);
  // FreeAll frees every non-null item and empties the collection; keeps the array.
  virtual void FreeAll();
  // AtInsert(index, items, n) inserts n pointers at index. False when index > Count,
  // items is null or the growth fails (including n 0 on a never-grown collection).
  virtual bool AtInsert(uint32_t index, void** items, uint32_t n);
  virtual bool AtInsert(uint32_t index, void* item);
  // Sorted insertion: before the first equal item when duplicates are allowed, kNoIndex
  // when they are not and one exists. A null item or an empty collection appends
  // without comparing. Returns the index of the new item, or kNoIndex.
  virtual uint32_t Insert(void* item, XCompareFunc3 cmp, void* context, bool duplicates);
  virtual uint32_t Insert(void* item, XCompareFunc cmp, bool duplicates);
  // Insert(items, n) appends n pointers; with a null array or a failed growth it
  // returns whether n was 0.
  virtual bool Insert(void** items, uint32_t n);
  // Insert(item) appends and returns the new index, kNoIndex on failure.
  virtual uint32_t Insert(void* item);
  // _MoveItem lifts the item at from and re-inserts it at to; false when from == to.
  virtual bool _MoveItem(uint32_t from, uint32_t to);
  virtual bool MoveItem(uint32_t from, uint32_t to);
  // Transfers: the target receives through its Insert(item) / Insert(items, n); an
  // item leaves this collection only once the target has taken it.
  virtual uint32_t AtCopy(uint32_t index, XCollection& target);
  virtual bool Copy(uint32_t first, uint32_t last, XCollection& target);
  virtual uint32_t _AtMove(uint32_t index, XCollection& target);
  virtual uint32_t AtMove(uint32_t index, XCollection& target);
  virtual bool _Move(uint32_t first, uint32_t last, XCollection& target);
  virtual uint32_t Move(void* item, XCollection& target);
  virtual bool Move(uint32_t first, uint32_t last, XCollection& target);
  // Ranged predicate families. They check only first <= last (0 when not); last must
  // be below Count. A removal closes the gap and shrinks the range, so every item of
  // the range is tested once. CopyWhich works on any pointer array. CopyWhich and
  // MoveWhich return kNoIndex when the target refuses an item (items moved before
  // stay moved).
  virtual uint32_t DeleteWhich(uint32_t first, uint32_t last, XPredicate2 pred,
                               const void* context);
  virtual uint32_t DeleteWhich(uint32_t first, uint32_t last, XPredicate pred);
  virtual uint32_t FreeWhich(uint32_t first, uint32_t last, XPredicate2 pred, const void* context);
  virtual uint32_t FreeWhich(uint32_t first, uint32_t last, XPredicate pred);
  virtual uint32_t CopyWhich(void** items, uint32_t n, XPredicate2 pred, XCollection& target,
                             const void* context);
  virtual uint32_t CopyWhich(void** items, uint32_t n, XPredicate pred, XCollection& target);
  virtual uint32_t MoveWhich(uint32_t first, uint32_t last, XPredicate2 pred, XCollection& target,
                             const void* context);
  virtual uint32_t MoveWhich(uint32_t first, uint32_t last, XPredicate pred, XCollection& target);

 protected:
  uint32_t Delta = kCollectionDelta;
  uint32_t ItemsDim = 0;
  void** Items = nullptr;
  uint32_t Count = 0;
};

}  // namespace tavi
