//===- collection_search.cpp - Sorting, searching and iteration ------------===//
//
// Xqsort, the binary searches of XCollection over their ranges, and the iteration
// members that hand the slots to the item-processing functions.
//
//===----------------------------------------------------------------------===//
#include "coll/internal/sort_search.h"
#include "tavi/coll/collection.h"
#include "tavi/thread/parallel.h"

namespace tavi {

namespace {

struct Cmp3 {
  XCompareFunc3 cmp;
  const void* context;
  int operator()(const void* a, const void* b) const { return cmp(a, b, context); }
};

bool BadRange(uint32_t first, uint32_t last, uint32_t count) {
  return first > last || last >= count;
}

}  // namespace

void Xqsort(void** items, uint32_t n, XCompareFunc cmp) {
  internal::QuickSort(items, n, cmp);
}

void Xqsort(void** items, uint32_t n, XCompareFunc3 cmp, const void* context) {
  internal::QuickSort(items, n, Cmp3{cmp, context});
}

// --- SearchIndex ---------------------------------------------------------------------

uint32_t XCollection::SearchIndex(const void* key, XCompareFunc cmp, uint32_t first,
                                  uint32_t last) const {
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchEqual(Items, key, first, last, cmp);
}
uint32_t XCollection::SearchIndex(const void* key, XCompareFunc cmp) const {
  return SearchIndex(key, cmp, 0, Count - 1);
}
uint32_t XCollection::SearchIndex(const void* key, XCompareFunc3 cmp, const void* context,
                                  uint32_t first, uint32_t last) const {
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchEqual(Items, key, first, last, Cmp3{cmp, context});
}
uint32_t XCollection::SearchIndex(const void* key, XCompareFunc3 cmp, const void* context) const {
  return SearchIndex(key, cmp, context, 0, Count - 1);
}
void* XCollection::Search(const void* key, XCompareFunc cmp) const {
  const uint32_t i = SearchIndex(key, cmp);
  return i == kNoIndex ? nullptr : Items[i];
}
void* XCollection::Search(const void* key, XCompareFunc3 cmp, const void* context) const {
  const uint32_t i = SearchIndex(key, cmp, context);
  return i == kNoIndex ? nullptr : Items[i];
}

// --- SearchFirstIndex ----------------------------------------------------------------

uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc cmp, bool& found,
                                       bool insertPosition, uint32_t first, uint32_t last) const {
  found = false;
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchFirst(Items, key, first, last, found, insertPosition, cmp);
}
uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc cmp, bool& found,
                                       bool insertPosition) const {
  return SearchFirstIndex(key, cmp, found, insertPosition, 0, Count - 1);
}
uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc cmp,
                                       bool insertPosition) const {
  bool found;
  return SearchFirstIndex(key, cmp, found, insertPosition, 0, Count - 1);
}
uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context,
                                       bool& found, bool insertPosition, uint32_t first,
                                       uint32_t last) const {
  found = false;
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchFirst(Items, key, first, last, found, insertPosition, Cmp3{cmp, context});
}
uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context,
                                       bool& found, bool insertPosition) const {
  return SearchFirstIndex(key, cmp, context, found, insertPosition, 0, Count - 1);
}
uint32_t XCollection::SearchFirstIndex(const void* key, XCompareFunc3 cmp, const void* context,
                                       bool insertPosition) const {
  bool found;
  return SearchFirstIndex(key, cmp, context, found, insertPosition, 0, Count - 1);
}
void* XCollection::SearchFirst(const void* key, XCompareFunc cmp, bool& found) const {
  const uint32_t i = SearchFirstIndex(key, cmp, found, false);
  return i == kNoIndex ? nullptr : Items[i];
}
void* XCollection::SearchFirst(const void* key, XCompareFunc cmp) const {
  bool found;
  return SearchFirst(key, cmp, found);
}
void* XCollection::SearchFirst(const void* key, XCompareFunc3 cmp, const void* context,
                               bool& found) const {
  const uint32_t i = SearchFirstIndex(key, cmp, context, found, false);
  return i == kNoIndex ? nullptr : Items[i];
}

// --- SearchFirstHigherIndex ----------------------------------------------------------

uint32_t XCollection::SearchFirstHigherIndex(const void* key, XCompareFunc cmp, uint32_t first,
                                             uint32_t last) const {
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchHigher(Items, key, first, last, cmp);
}
uint32_t XCollection::SearchFirstHigherIndex(const void* key, XCompareFunc cmp) const {
  return SearchFirstHigherIndex(key, cmp, 0, Count - 1);
}
uint32_t XCollection::SearchFirstHigherIndex(const void* key, XCompareFunc3 cmp,
                                             const void* context, uint32_t first,
                                             uint32_t last) const {
  if (BadRange(first, last, Count)) return kNoIndex;
  return internal::SearchHigher(Items, key, first, last, Cmp3{cmp, context});
}
uint32_t XCollection::SearchFirstHigherIndex(const void* key, XCompareFunc3 cmp,
                                             const void* context) const {
  return SearchFirstHigherIndex(key, cmp, context, 0, Count - 1);
}

// --- Iteration -----------------------------------------------------------------------

void XCollection::ForEach(XItemFunc1 fn, void** items, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) fn(items[i]);
}
void XCollection::ForEach(XItemFunc2 fn, void** items, uint32_t n, void* context) {
  for (uint32_t i = 0; i < n; ++i) fn(items[i], context);
}
void XCollection::ForEach(XItemFunc1 fn) {
  ForEach(fn, Items, Count);
}
void XCollection::ForEach(XItemFunc2 fn, void* context) {
  ForEach(fn, Items, Count, context);
}

void XCollection::ForEachMT(XItemFunc1 fn, void** items, uint32_t n) {
  XMakeMT(fn, items, n);
}
void XCollection::ForEachMT(XItemFunc2 fn, void** items, uint32_t n, void* context) {
  XMakeMT(fn, context, items, n);
}
void XCollection::ForEachMT(XItemFunc1 fn) {
  XMakeMT(fn, Items, Count);
}
void XCollection::ForEachMT(XItemFunc2 fn, void* context) {
  XMakeMT(fn, context, Items, Count);
}

void XCollection::ForEach(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void** items,
                          uint32_t n, strProgressOptions& options) {
  XMake(title, titleLen, fn, items, n, options);
}
void XCollection::ForEach(const char16_t* title, uint32_t titleLen, XItemFunc1 fn,
                          strProgressOptions& options) {
  XMake(title, titleLen, fn, Items, Count, options);
}
void XCollection::ForEach(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                          void** items, uint32_t n, strProgressOptions& options) {
  XMake(title, titleLen, fn, context, items, n, options);
}
void XCollection::ForEach(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                          strProgressOptions& options) {
  XMake(title, titleLen, fn, context, Items, Count, options);
}
void XCollection::ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void** items,
                            uint32_t n, strProgressOptions& options) {
  XMakeMT(title, titleLen, fn, items, n, options);
}
void XCollection::ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn,
                            strProgressOptions& options) {
  XMakeMT(title, titleLen, fn, Items, Count, options);
}
void XCollection::ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                            void** items, uint32_t n, strProgressOptions& options) {
  XMakeMT(title, titleLen, fn, context, items, n, options);
}
void XCollection::ForEachMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                            strProgressOptions& options) {
  XMakeMT(title, titleLen, fn, context, Items, Count, options);
}

void XCollection::ForEach(int32_t resource, XItemFunc1 fn, void** items, uint32_t n,
                          strProgressOptions& options, XModule instance) {
  XMake(static_cast<uint32_t>(resource), fn, items, n, options, instance);
}
void XCollection::ForEach(int32_t resource, XItemFunc1 fn, strProgressOptions& options,
                          XModule instance) {
  XMake(static_cast<uint32_t>(resource), fn, Items, Count, options, instance);
}
void XCollection::ForEach(int32_t resource, XItemFunc2 fn, void* context, void** items, uint32_t n,
                          strProgressOptions& options, XModule instance) {
  XMake(static_cast<uint32_t>(resource), fn, context, items, n, options, instance);
}
void XCollection::ForEach(int32_t resource, XItemFunc2 fn, void* context,
                          strProgressOptions& options, XModule instance) {
  XMake(static_cast<uint32_t>(resource), fn, context, Items, Count, options, instance);
}
void XCollection::ForEachMT(int32_t resource, XItemFunc1 fn, void** items, uint32_t n,
                            strProgressOptions& options, XModule instance) {
  XMakeMT(static_cast<uint32_t>(resource), fn, items, n, options, instance);
}
void XCollection::ForEachMT(int32_t resource, XItemFunc1 fn, strProgressOptions& options,
                            XModule instance) {
  XMakeMT(static_cast<uint32_t>(resource), fn, Items, Count, options, instance);
}
void XCollection::ForEachMT(int32_t resource, XItemFunc2 fn, void* context, void** items,
                            uint32_t n, strProgressOptions& options, XModule instance) {
  XMakeMT(static_cast<uint32_t>(resource), fn, context, items, n, options, instance);
}
void XCollection::ForEachMT(int32_t resource, XItemFunc2 fn, void* context,
                            strProgressOptions& options, XModule instance) {
  XMakeMT(static_cast<uint32_t>(resource), fn, context, Items, Count, options, instance);
}

}  // namespace tavi
