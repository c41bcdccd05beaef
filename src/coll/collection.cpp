//===- collection.cpp - The growable collection of item pointers ----------===//
//
// XCollection: growth, positional edits, transfers, the predicate families and
// serialisation. Every compound operation reaches the primitive edits through the
// virtual slots so that subclasses can change them in one place.
//
//===----------------------------------------------------------------------===//
#include "tavi/coll/collection.h"

#include <cstdlib>
#include <cstring>

#include "coll/internal/sort_search.h"
#include "core/internal/endian.h"
#include "tavi/core/error.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

// Shifts n slots from src to dst (the ranges may overlap).
void MoveSlots(void** dst, void** src, uint32_t n) {
  if (n != 0) std::memmove(dst, src, size_t{n} * sizeof(void*));
}

bool IsNull(const void* item) {
  return item == nullptr;
}

}  // namespace

XCollection::~XCollection() {
  std::free(Items);
}

// --- Access --------------------------------------------------------------------------

bool XCollection::AtPut(uint32_t index, void* item) {
  if (index >= Count) return false;
  Items[index] = item;
  return true;
}

uint32_t XCollection::IndexOf(const void* item) const {
  for (uint32_t i = 0; i < Count; ++i) {
    if (Items[i] == item) return i;
  }
  return kNoIndex;
}

bool XCollection::Swap(uint32_t i, uint32_t j) {
  if (i >= Count || j >= Count) return false;
  void* t = Items[i];
  Items[i] = Items[j];
  Items[j] = t;
  return true;
}

void XCollection::InvertOrder() {
  for (uint32_t k = Count / 2; k >= 1; --k) {
    void* t = Items[k - 1];
    Items[k - 1] = Items[Count - k];
    Items[Count - k] = t;
  }
}

void XCollection::_AtFree(uint32_t index) {
  FreeItem(_AtDelete(index));
}

uint32_t XCollection::_AtCopy(uint32_t index, XCollection& target) {
  return target.Insert(Items[index]);
}

bool XCollection::_Copy(uint32_t first, uint32_t last, XCollection& target) {
  return target.Insert(Items + first, last - first + 1);
}

bool XCollection::CopyAll(XCollection& target) {
  return target.Insert(Items, Count);
}

bool XCollection::MoveAll(XCollection& target) {
  return Move(0, Count - 1, target);
}

uint32_t XCollection::DeleteUnused() {
  if (Count == 0) return 0;
  return DeleteWhich(0, Count - 1, IsNull);
}

// --- Growth --------------------------------------------------------------------------

uint32_t XCollection::SetItemsDim(uint32_t n) {
  if (ItemsDim >= n) return ItemsDim;
  uint64_t dim = n;
  if (Delta != 0) dim = uint64_t{n} + (Delta - n % Delta);
  // The dimension must stay a 32-bit count.
  if (dim > 0xFFFFFFFFu) return 0;
  void* grown = std::realloc(Items, static_cast<size_t>(dim) * sizeof(void*));
  if (grown == nullptr) return 0;
  Items = static_cast<void**>(grown);
  ItemsDim = static_cast<uint32_t>(dim);
  return ItemsDim;
}

// --- Removal -------------------------------------------------------------------------

void* XCollection::AtDelete(uint32_t index) {
  if (index >= Count) return nullptr;
  return _AtDelete(index);
}

void* XCollection::_AtDelete(uint32_t index) {
  void* item = Items[index];
  MoveSlots(Items + index, Items + index + 1, Count - index - 1);
  --Count;
  return item;
}

uint32_t XCollection::Delete(uint32_t first, uint32_t last) {
  if (first > last || last >= Count) return 0;
  return _Delete(first, last);
}

uint32_t XCollection::Delete(void* item) {
  const uint32_t index = IndexOf(item);
  if (index == kNoIndex) return kNoIndex;
  return _AtDelete(index) != nullptr ? index : kNoIndex;
}

uint32_t XCollection::_Delete(uint32_t first, uint32_t last) {
  const uint32_t n = last - first + 1;
  MoveSlots(Items + first, Items + last + 1, Count - last - 1);
  Count -= n;
  return n;
}

bool XCollection::AtFree(uint32_t index) {
  void* item = AtDelete(index);
  if (item == nullptr) return false;
  FreeItem(item);
  return true;
}

uint32_t XCollection::Free(uint32_t first, uint32_t last) {
  if (first > last || last >= Count) return 0;
  for (uint32_t i = first; i <= last; ++i) FreeItem(Items[i]);
  return _Delete(first, last);
}

uint32_t XCollection::Free(void* item) {
  const uint32_t index = Delete(item);
  if (index != kNoIndex) FreeItem(item);
  return index;
}

void XCollection::FreeAll() {
  for (uint32_t i = 0; i < Count; ++i) {
    if (Items[i] != nullptr) {
      FreeItem(Items[i]);
      Items[i] = nullptr;
    }
  }
  Count = 0;
}

// --- Insertion -----------------------------------------------------------------------

bool XCollection::AtInsert(uint32_t index, void** items, uint32_t n) {
  if (index > Count || items == nullptr) return false;
  if (uint64_t{Count} + n > 0xFFFFFFFFu) return false;
  if (SetItemsDim(Count + n) == 0) return false;
  MoveSlots(Items + index + n, Items + index, Count - index);
  MoveSlots(Items + index, items, n);
  Count += n;
  return true;
}

bool XCollection::AtInsert(uint32_t index, void* item) {
  if (index > Count) return false;
  if (Count == 0xFFFFFFFFu || SetItemsDim(Count + 1) == 0) return false;
  MoveSlots(Items + index + 1, Items + index, Count - index);
  Items[index] = item;
  ++Count;
  return true;
}

uint32_t XCollection::Insert(void* item, XCompareFunc3 cmp, void* context, bool duplicates) {
  uint32_t position = Count;
  if (item != nullptr && Count != 0) {
    bool found = false;
    const uint32_t at = SearchFirstIndex(item, cmp, context, found, true, 0, Count - 1);
    if (found && !duplicates) return kNoIndex;
    if (at != kNoIndex) position = at;
  }
  return AtInsert(position, item) ? position : kNoIndex;
}

uint32_t XCollection::Insert(void* item, XCompareFunc cmp, bool duplicates) {
  uint32_t position = Count;
  if (item != nullptr && Count != 0) {
    bool found = false;
    const uint32_t at = SearchFirstIndex(item, cmp, found, true, 0, Count - 1);
    if (found && !duplicates) return kNoIndex;
    if (at != kNoIndex) position = at;
  }
  return AtInsert(position, item) ? position : kNoIndex;
}

bool XCollection::Insert(void** items, uint32_t n) {
  if (items == nullptr) return n == 0;
  if (uint64_t{Count} + n > 0xFFFFFFFFu || SetItemsDim(Count + n) == 0) return n == 0;
  MoveSlots(Items + Count, items, n);
  Count += n;
  return true;
}

uint32_t XCollection::Insert(void* item) {
  return AtInsert(Count, item) ? Count - 1 : kNoIndex;
}

bool XCollection::_MoveItem(uint32_t from, uint32_t to) {
  if (from == to) return false;
  void* item = Items[from];
  if (from < to) {
    MoveSlots(Items + from, Items + from + 1, to - from);
  } else {
    MoveSlots(Items + to + 1, Items + to, from - to);
  }
  Items[to] = item;
  return true;
}

bool XCollection::MoveItem(uint32_t from, uint32_t to) {
  if (from >= Count || to >= Count) return false;
  return _MoveItem(from, to);
}

// --- Transfers -----------------------------------------------------------------------

uint32_t XCollection::AtCopy(uint32_t index, XCollection& target) {
  if (index >= Count) return kNoIndex;
  return target.Insert(Items[index]);
}

bool XCollection::Copy(uint32_t first, uint32_t last, XCollection& target) {
  if (first > last || last >= Count) return false;
  return target.Insert(Items + first, last - first + 1);
}

uint32_t XCollection::_AtMove(uint32_t index, XCollection& target) {
  const uint32_t at = target.Insert(Items[index]);
  if (at == kNoIndex) return kNoIndex;
  _AtDelete(index);
  return at;
}

uint32_t XCollection::AtMove(uint32_t index, XCollection& target) {
  if (index >= Count) return kNoIndex;
  return _AtMove(index, target);
}

bool XCollection::_Move(uint32_t first, uint32_t last, XCollection& target) {
  if (!target.Insert(Items + first, last - first + 1)) return false;
  return _Delete(first, last) != 0;
}

uint32_t XCollection::Move(void* item, XCollection& target) {
  const uint32_t index = IndexOf(item);
  if (index == kNoIndex) return kNoIndex;
  const uint32_t at = target.Insert(item);
  if (at == kNoIndex) return kNoIndex;
  _AtDelete(index);
  return at;
}

bool XCollection::Move(uint32_t first, uint32_t last, XCollection& target) {
  if (!Copy(first, last, target)) return false;
  return _Delete(first, last) != 0;
}

// --- Predicate families ----------------------------------------------------------------
//
// The removing walks test Items[i]; a removal closes the gap, so i stays and the range
// end moves down by one.

namespace {

template <typename Pred, typename OnMatch>
uint32_t RemoveWalk(XCollection& c, uint32_t first, uint32_t last, Pred pred, OnMatch on_match) {
  if (first > last) return 0;
  uint32_t removed = 0;
  uint32_t i = first;
  for (;;) {
    if (pred(c._At(i))) {
      if (!on_match(i)) return kNoIndex;
      ++removed;
      if (i == last) break;
      --last;
    } else {
      ++i;
    }
    if (i > last) break;
  }
  return removed;
}

}  // namespace

uint32_t XCollection::DeleteWhich(uint32_t first, uint32_t last, XPredicate2 pred,
                                  const void* context) {
  return RemoveWalk(
      *this, first, last, [&](const void* item) { return pred(item, context); },
      [&](uint32_t i) {
        _AtDelete(i);
        return true;
      });
}

uint32_t XCollection::DeleteWhich(uint32_t first, uint32_t last, XPredicate pred) {
  return RemoveWalk(*this, first, last, pred, [&](uint32_t i) {
    _AtDelete(i);
    return true;
  });
}

uint32_t XCollection::FreeWhich(uint32_t first, uint32_t last, XPredicate2 pred,
                                const void* context) {
  return RemoveWalk(
      *this, first, last, [&](const void* item) { return pred(item, context); },
      [&](uint32_t i) {
        FreeItem(_AtDelete(i));
        return true;
      });
}

uint32_t XCollection::FreeWhich(uint32_t first, uint32_t last, XPredicate pred) {
  return RemoveWalk(*this, first, last, pred, [&](uint32_t i) {
    FreeItem(_AtDelete(i));
    return true;
  });
}

uint32_t XCollection::CopyWhich(void** items, uint32_t n, XPredicate2 pred, XCollection& target,
                                const void* context) {
  uint32_t copied = 0;
  for (uint32_t i = 0; i < n; ++i) {
    if (pred(items[i], context)) {
      if (target.Insert(items[i]) == kNoIndex) return kNoIndex;
      ++copied;
    }
  }
  return copied;
}

uint32_t XCollection::CopyWhich(void** items, uint32_t n, XPredicate pred, XCollection& target) {
  uint32_t copied = 0;
  for (uint32_t i = 0; i < n; ++i) {
    if (pred(items[i])) {
      if (target.Insert(items[i]) == kNoIndex) return kNoIndex;
      ++copied;
    }
  }
  return copied;
}

uint32_t XCollection::MoveWhich(uint32_t first, uint32_t last, XPredicate2 pred,
                                XCollection& target, const void* context) {
  return RemoveWalk(
      *this, first, last, [&](const void* item) { return pred(item, context); },
      [&](uint32_t i) {
        if (target.Insert(Items[i]) == kNoIndex) return false;
        _AtDelete(i);
        return true;
      });
}

uint32_t XCollection::MoveWhich(uint32_t first, uint32_t last, XPredicate pred,
                                XCollection& target) {
  return RemoveWalk(*this, first, last, pred, [&](uint32_t i) {
    if (target.Insert(Items[i]) == kNoIndex) return false;
    _AtDelete(i);
    return true;
  });
}

uint32_t XCollection::DeleteWhich(XPredicate2 pred, const void* context) {
  return Count == 0 ? 0 : DeleteWhich(0, Count - 1, pred, context);
}
uint32_t XCollection::DeleteWhich(XPredicate pred) {
  return Count == 0 ? 0 : DeleteWhich(0, Count - 1, pred);
}
uint32_t XCollection::FreeWhich(XPredicate2 pred, const void* context) {
  return Count == 0 ? 0 : FreeWhich(0, Count - 1, pred, context);
}
uint32_t XCollection::FreeWhich(XPredicate pred) {
  return Count == 0 ? 0 : FreeWhich(0, Count - 1, pred);
}
uint32_t XCollection::CopyWhich(XPredicate2 pred, XCollection& target, const void* context) {
  return Count == 0 ? 0 : CopyWhich(Items, Count, pred, target, context);
}
uint32_t XCollection::CopyWhich(XPredicate pred, XCollection& target) {
  return Count == 0 ? 0 : CopyWhich(Items, Count, pred, target);
}
uint32_t XCollection::MoveWhich(XPredicate2 pred, XCollection& target, const void* context) {
  return Count == 0 ? 0 : MoveWhich(0, Count - 1, pred, target, context);
}
uint32_t XCollection::MoveWhich(XPredicate pred, XCollection& target) {
  return Count == 0 ? 0 : MoveWhich(0, Count - 1, pred, target);
}

// --- Scans ---------------------------------------------------------------------------

uint32_t XCollection::FirstThatIndex(XPredicate pred, void* const* items, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    if (pred(items[i])) return i;
  }
  return kNoIndex;
}
uint32_t XCollection::FirstThatIndex(XPredicate2 pred, const void* context, void* const* items,
                                     uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    if (pred(items[i], context)) return i;
  }
  return kNoIndex;
}
uint32_t XCollection::LastThatIndex(XPredicate pred, void* const* items, uint32_t n) {
  for (uint32_t i = n; i > 0; --i) {
    if (pred(items[i - 1])) return i - 1;
  }
  return kNoIndex;
}
uint32_t XCollection::LastThatIndex(XPredicate2 pred, const void* context, void* const* items,
                                    uint32_t n) {
  for (uint32_t i = n; i > 0; --i) {
    if (pred(items[i - 1], context)) return i - 1;
  }
  return kNoIndex;
}
bool XCollection::TryDo(XPredicate pred, void* const* items, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    if (!pred(items[i])) return false;
  }
  return true;
}
bool XCollection::TryDo(XPredicate2 pred, const void* context, void* const* items, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    if (!pred(items[i], context)) return false;
  }
  return true;
}

void* XCollection::FirstThat(XPredicate pred, void* const* items, uint32_t n) {
  const uint32_t i = FirstThatIndex(pred, items, n);
  return i == kNoIndex ? nullptr : items[i];
}
void* XCollection::FirstThat(XPredicate2 pred, const void* context, void* const* items,
                             uint32_t n) {
  const uint32_t i = FirstThatIndex(pred, context, items, n);
  return i == kNoIndex ? nullptr : items[i];
}
void* XCollection::LastThat(XPredicate pred, void* const* items, uint32_t n) {
  const uint32_t i = LastThatIndex(pred, items, n);
  return i == kNoIndex ? nullptr : items[i];
}
void* XCollection::LastThat(XPredicate2 pred, const void* context, void* const* items, uint32_t n) {
  const uint32_t i = LastThatIndex(pred, context, items, n);
  return i == kNoIndex ? nullptr : items[i];
}

void* XCollection::FirstThat(XPredicate pred) const {
  return FirstThat(pred, Items, Count);
}
void* XCollection::FirstThat(XPredicate2 pred, const void* context) const {
  return FirstThat(pred, context, Items, Count);
}
uint32_t XCollection::FirstThatIndex(XPredicate pred) const {
  return FirstThatIndex(pred, Items, Count);
}
uint32_t XCollection::FirstThatIndex(XPredicate2 pred, const void* context) const {
  return FirstThatIndex(pred, context, Items, Count);
}
void* XCollection::LastThat(XPredicate pred) const {
  return LastThat(pred, Items, Count);
}
void* XCollection::LastThat(XPredicate2 pred, const void* context) const {
  return LastThat(pred, context, Items, Count);
}
uint32_t XCollection::LastThatIndex(XPredicate pred) const {
  return LastThatIndex(pred, Items, Count);
}
uint32_t XCollection::LastThatIndex(XPredicate2 pred, const void* context) const {
  return LastThatIndex(pred, context, Items, Count);
}
bool XCollection::TryDo(XPredicate pred) const {
  return TryDo(pred, Items, Count);
}
bool XCollection::TryDo(XPredicate2 pred, const void* context) const {
  return TryDo(pred, context, Items, Count);
}

// --- Item hooks ----------------------------------------------------------------------

bool XCollection::WriteItem(XIO& io, void* item) {
  return static_cast<XObject*>(item)->Write(io);
}

void* XCollection::ReadItem(XIO& io) {
  io.SetInternalError(1004);
  return nullptr;
}

void XCollection::FreeItem(void* item) {
  delete static_cast<XObject*>(item);
}

// --- Serialisation ---------------------------------------------------------------------

bool XCollection::Write(XIO& io) {
  uint8_t count[4];
  internal::StoreLE32(count, Count);
  if (!io._Write(count, 4)) return false;
  for (uint32_t i = 0; i < Count; ++i) {
    if (!WriteItem(io, Items[i])) return false;
  }
  return true;
}

bool XCollection::Read(XIO& io) {
  uint8_t bytes[4];
  if (io._Read(bytes, 4) != 4) {
    io.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t stored = internal::LoadLE32(bytes);
  if (stored == 0) return true;
  // Kept exactly this way round: it refuses every non-empty count that would keep the
  // total below 2^32-1, so this class reads only empty collections.
  if (~Count > stored) {
    io.SetErrorCode(kErrForeignBufferTooSmall);
    return false;
  }
  // A count that passes brings the total to 2^32-1 items or beyond, more than the
  // 32-bit index range holds (2^32-1 is the no-index value): refused as out of memory
  // before anything is allocated, so no item is ever read here.
  io.SetErrorCode(kErrNoMemory);
  return false;
}

}  // namespace tavi
