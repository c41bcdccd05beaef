//===- sort_search.h - Quicksort and binary searches of pointer arrays -*- C++ -*-===//
//
// The bodies of Xqsort and of the three binary searches of XCollection, written once
// as templates over the comparison so that the two-argument and the context forms
// share them and the compiler can inline the call-through at each site.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tavi::internal {

inline constexpr uint32_t kNoIndex = 0xFFFFFFFFu;

// Ranges of this many items or fewer are finished by selection sort.
inline constexpr size_t kSelectionLimit = 8;
// Pending ranges kept by the sort. The larger part of every partition is the one
// deferred, so each deferred range is at most half of its parent: a range above
// kSelectionLimit items needs fewer than 30 halvings of 2^32.
inline constexpr int kSortStack = 30;

// QuickSort orders items[0..n) ascending under cmp(a, b). Middle item as pivot, an
// explicit stack of pending ranges, selection sort for short ranges. Not stable.
template <typename Cmp>
void QuickSort(void** items, uint32_t n, Cmp cmp) {
  if (n < 2) return;
  struct Range {
    void** lo;
    void** hi;  // inclusive
  };
  Range stack[kSortStack];
  int depth = 0;
  void** lo = items;
  void** hi = items + (n - 1);
  for (;;) {
    const size_t size = static_cast<size_t>(hi - lo) + 1;
    if (size > kSelectionLimit) {
      std::swap(lo[size / 2], lo[0]);
      void* const pivot = lo[0];
      void** up = lo + 1;
      void** down = hi;
      for (;;) {
        while (up <= hi && cmp(*up, pivot) <= 0) ++up;
        while (down > lo && cmp(*down, pivot) >= 0) --down;
        if (up >= down) break;
        // Both items now stand on their right sides, so the scans may resume past them.
        std::swap(*up, *down);
        ++up;
        --down;
      }
      std::swap(*lo, *down);
      // Parts lo..down-1 and down+1..hi.
      const size_t below = static_cast<size_t>(down - lo);
      const size_t above = static_cast<size_t>(hi - down);
      Range low{lo, down - 1};
      Range high{down + 1, hi};
      const bool low_larger = below >= above;
      const Range& larger = low_larger ? low : high;
      const Range& smaller = low_larger ? high : low;
      const size_t larger_size = low_larger ? below : above;
      const size_t smaller_size = low_larger ? above : below;
      if (larger_size >= 2) stack[depth++] = larger;
      if (smaller_size >= 2) {
        lo = smaller.lo;
        hi = smaller.hi;
        continue;
      }
    } else {
      // Selection sort from the top: the first of equal maxima goes last.
      while (hi > lo) {
        void** max = lo;
        for (void** p = lo + 1; p <= hi; ++p) {
          if (cmp(*p, *max) > 0) max = p;
        }
        std::swap(*max, *hi);
        --hi;
      }
    }
    if (depth == 0) return;
    --depth;
    lo = stack[depth].lo;
    hi = stack[depth].hi;
  }
}

// SearchEqual: the index of an item equal to key in items[first..last], the one the
// bisection meets first; kNoIndex when none. Requires first <= last.
template <typename Cmp>
uint32_t SearchEqual(void* const* items, const void* key, uint32_t first, uint32_t last, Cmp cmp) {
  uint32_t lo = first;
  uint32_t hi = last;
  uint32_t mid = lo + (hi - lo) / 2;
  while (mid != lo) {
    const int r = cmp(key, items[mid]);
    if (r == 0) return mid;
    if (r > 0) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
    }
    mid = lo + (hi - lo) / 2;
  }
  const int r = cmp(key, items[mid]);
  if (r == 0) return mid;
  if (r < 0) return kNoIndex;
  if (lo != hi && cmp(key, items[mid + 1]) == 0) return mid + 1;
  return kNoIndex;
}

// SearchFirst: the first item equal to key in items[first..last] (found true); else,
// with insert_position, the first greater item, kNoIndex when all are smaller.
// Requires first <= last.
template <typename Cmp>
uint32_t SearchFirst(void* const* items, const void* key, uint32_t first, uint32_t last,
                     bool& found, bool insert_position, Cmp cmp) {
  found = false;
  uint32_t lo = first;
  uint32_t hi = last;
  uint32_t mid = lo + (hi - lo) / 2;
  while (mid > lo) {
    const int r = cmp(key, items[mid]);
    if (r <= 0) {
      hi = mid - 1;
      if (r == 0) found = true;
    } else {
      lo = mid + 1;
    }
    mid = lo + (hi - lo) / 2;
  }
  int r = cmp(key, items[mid]);
  if (r > 0 && mid < hi) {
    ++mid;
    r = cmp(key, items[mid]);
  }
  if (r == 0) {
    found = true;
    return mid;
  }
  if (found) return mid + 1;  // an equal item lies just above
  if (r < 0) return insert_position ? mid : kNoIndex;
  if (!insert_position || mid >= last) return kNoIndex;
  return mid + 1;
}

// SearchHigher: the first item strictly greater than key in items[first..last],
// kNoIndex when none. Bisects on upper middles. Requires first <= last.
template <typename Cmp>
uint32_t SearchHigher(void* const* items, const void* key, uint32_t first, uint32_t last, Cmp cmp) {
  uint32_t lo = first;
  uint32_t hi = last;
  uint32_t mid = hi - (hi - lo) / 2;
  while (mid != hi) {
    if (cmp(key, items[mid]) >= 0) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
    }
    mid = hi - (hi - lo) / 2;
  }
  int r = cmp(key, items[mid]);
  if (r < 0) {
    if (lo != hi) {
      --mid;
      r = cmp(key, items[mid]);
    }
    if (r < 0) return mid;
  }
  return mid < last ? mid + 1 : kNoIndex;
}

}  // namespace tavi::internal
