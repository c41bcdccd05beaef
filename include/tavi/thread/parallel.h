//===- parallel.h - Applying a function to every item of an array ---*- C++ -*-===//
//
// XMake, XMakeArray, XCheck and XEnum apply a caller's function or predicate to
// every item of an array of item pointers or of fixed-size elements, in index
// order; their MT forms spread the items over worker threads, and the titled
// forms show progress and can be cancelled.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/title_text.h"
#include "tavi/core/types.h"
#include "tavi/export.h"
#include "tavi/thread/progress.h"

namespace tavi {

// The caller's functions, in three arities: the item alone, or the item and
// one or two context pointers passed unchanged to every call.
using XItemFunc1 = void (*)(void* item);
using XItemFunc2 = void (*)(void* item, void* context);
using XItemFunc3 = void (*)(void* item, void* context1, void* context2);
using XItemPred1 = bool (*)(void* item);
using XItemPred2 = bool (*)(void* item, void* context);
using XItemPred3 = bool (*)(void* item, void* context1, void* context2);

// The largest number of worker threads.
inline constexpr uint32_t kMaxWorkerCount = 16;

// XGetWorkerCount returns the process-wide worker count: the processor count,
// at most 16, read on first use. XSetWorkerCount replaces it (clamped to
// 1..16) and returns the previous count; a count of 1 makes every MT form run
// single-threaded. Both are safe to call from any thread.
TAVI_API uint32_t XGetWorkerCount();
TAVI_API uint32_t XSetWorkerCount(uint32_t count);

// --- Single-threaded forms ----------------------------------------------------
//
// XMake calls fn on items[0] .. items[count - 1] in order (null items included).
// XMakeArray calls fn on base + i * elementSize for i from 0 to count - 1.
// XCheck returns the first item for which pred is true, XEnum the first for
// which it is false; both return null when there is none or count is 0.

TAVI_API void XMake(XItemFunc1 fn, void* const* items, uint32_t count);
TAVI_API void XMake(XItemFunc2 fn, void* context, void* const* items, uint32_t count);
TAVI_API void XMake(XItemFunc3 fn, void* context1, void* context2, void* const* items,
                    uint32_t count);

TAVI_API void XMakeArray(XItemFunc1 fn, void* base, uint32_t count, uint32_t elementSize);
TAVI_API void XMakeArray(XItemFunc2 fn, void* context, void* base, uint32_t count,
                         uint32_t elementSize);
TAVI_API void XMakeArray(XItemFunc3 fn, void* context1, void* context2, void* base, uint32_t count,
                         uint32_t elementSize);

TAVI_API void* XCheck(XItemPred1 pred, void* const* items, uint32_t count);
TAVI_API void* XCheck(XItemPred2 pred, void* context, void* const* items, uint32_t count);
TAVI_API void* XCheck(XItemPred3 pred, void* context1, void* context2, void* const* items,
                      uint32_t count);

TAVI_API void* XEnum(XItemPred1 pred, void* const* items, uint32_t count);
TAVI_API void* XEnum(XItemPred2 pred, void* context, void* const* items, uint32_t count);
TAVI_API void* XEnum(XItemPred3 pred, void* context1, void* context2, void* const* items,
                     uint32_t count);

// --- Threaded forms -----------------------------------------------------------
//
// The MT forms run on up to N = min(XGetWorkerCount(), count) threads and
// return when all have ended; with N <= 1 they are the single-threaded forms.
// The calling thread starts on the items at once and alone, through the same
// loop as the single-threaded form; it starts helper threads only once it has
// worked for a short time (about 150 us) and about as much work is left. The
// time one item of fn or pred takes is remembered from call to call (per
// function, in a small process-wide table), so a call whose items are known to
// be quick reads no clock at all and costs what the single-threaded form costs,
// and a call whose items are each known to take that long starts its helpers
// before its first item; otherwise the clock is read after the first item and
// then at growing intervals. fn and pred run concurrently and must be safe for
// that. Items are handed out in increasing index order, in runs that shrink as
// the array is used up (at most one lock per run, one small allocation per call
// that starts helpers, never per item; the solo start takes no lock and
// allocates nothing); the order in which calls finish is not defined. Helper threads that have not
// begun by the time the calling thread runs out of work are not waited for: they find nothing to do
// and end.
//
// In the pointer forms run on two or more threads, a null item ends the worker
// that takes it: null is the array's terminator for the threaded forms, so fn
// never sees it, and the items that worker had been handed after it are
// skipped; when that worker is the calling thread, everything not yet handed
// to a helper is skipped too. Every item before the null is done. With N <= 1
// the single-threaded form passes null items to fn like any other.
// XCheckMT / XEnumMT return the lowest-indexed item that stops the search, the
// same item as the single-threaded form for arrays without null items, and
// null when nothing matches.

TAVI_API void XMakeMT(XItemFunc1 fn, void* const* items, uint32_t count);
TAVI_API void XMakeMT(XItemFunc2 fn, void* context, void* const* items, uint32_t count);
TAVI_API void XMakeMT(XItemFunc3 fn, void* context1, void* context2, void* const* items,
                      uint32_t count);

TAVI_API void XMakeArrayMT(XItemFunc1 fn, void* base, uint32_t count, uint32_t elementSize);
TAVI_API void XMakeArrayMT(XItemFunc2 fn, void* context, void* base, uint32_t count,
                           uint32_t elementSize);
TAVI_API void XMakeArrayMT(XItemFunc3 fn, void* context1, void* context2, void* base,
                           uint32_t count, uint32_t elementSize);

TAVI_API void* XCheckMT(XItemPred1 pred, void* const* items, uint32_t count);
TAVI_API void* XCheckMT(XItemPred2 pred, void* context, void* const* items, uint32_t count);
TAVI_API void* XCheckMT(XItemPred3 pred, void* context1, void* context2, void* const* items,
                        uint32_t count);

TAVI_API void* XEnumMT(XItemPred1 pred, void* const* items, uint32_t count);
TAVI_API void* XEnumMT(XItemPred2 pred, void* context, void* const* items, uint32_t count);
TAVI_API void* XEnumMT(XItemPred3 pred, void* context1, void* context2, void* const* items,
                       uint32_t count);

// --- Forms with progress ------------------------------------------------------
//
// The titled forms run fn over the items with a progress record titled by
// `title` (titleLen code units), by a title text, or by the string `titleId`
// (see ProgressStart),
// counting one unit per item; they stop early when the options' cancel flag is
// set and return ProgressEnd's result: true unless cancelled. A count of 0
// returns true without touching the options. The sequential forms call
// ProgressSet after each item, and so do the MT forms while the calling thread
// works alone. Once helpers have joined, the MT forms hand out runs of at most
// 1024 items and call ProgressSet under the hand-out lock before each one,
// counting the items the worker finished since its previous hand-out; once it
// reports cancellation no further run is handed out, and every worker also
// reads the cancel flag before each item, so a cancelled call finishes at most
// the item each worker is on. A null item ends its worker in the MT forms, as
// above.

TAVI_API bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void* const* items,
                    uint32_t count, strProgressOptions& options);
TAVI_API bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                    void* const* items, uint32_t count, strProgressOptions& options);
TAVI_API bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc3 fn, void* context1,
                    void* context2, void* const* items, uint32_t count,
                    strProgressOptions& options);
TAVI_API bool XMake(uint32_t titleId, XItemFunc1 fn, void* const* items, uint32_t count,
                    strProgressOptions& options, XModule module);
TAVI_API bool XMake(uint32_t titleId, XItemFunc2 fn, void* context, void* const* items,
                    uint32_t count, strProgressOptions& options, XModule module);
TAVI_API bool XMake(uint32_t titleId, XItemFunc3 fn, void* context1, void* context2,
                    void* const* items, uint32_t count, strProgressOptions& options,
                    XModule module);

TAVI_API bool XMake(const TTitleTextBase& title, XItemFunc1 fn, void* const* items, uint32_t count,
                    strProgressOptions& options);
TAVI_API bool XMake(const TTitleTextBase& title, XItemFunc2 fn, void* context, void* const* items,
                    uint32_t count, strProgressOptions& options);
TAVI_API bool XMake(const TTitleTextBase& title, XItemFunc3 fn, void* context1, void* context2,
                    void* const* items, uint32_t count, strProgressOptions& options);

TAVI_API bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void* const* items,
                      uint32_t count, strProgressOptions& options);
TAVI_API bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
                      void* const* items, uint32_t count, strProgressOptions& options);
TAVI_API bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc3 fn, void* context1,
                      void* context2, void* const* items, uint32_t count,
                      strProgressOptions& options);
TAVI_API bool XMakeMT(uint32_t titleId, XItemFunc1 fn, void* const* items, uint32_t count,
                      strProgressOptions& options, XModule module);
TAVI_API bool XMakeMT(uint32_t titleId, XItemFunc2 fn, void* context, void* const* items,
                      uint32_t count, strProgressOptions& options, XModule module);
TAVI_API bool XMakeMT(uint32_t titleId, XItemFunc3 fn, void* context1, void* context2,
                      void* const* items, uint32_t count, strProgressOptions& options,
                      XModule module);

TAVI_API bool XMakeMT(const TTitleTextBase& title, XItemFunc1 fn, void* const* items,
                      uint32_t count, strProgressOptions& options);
TAVI_API bool XMakeMT(const TTitleTextBase& title, XItemFunc2 fn, void* context, void* const* items,
                      uint32_t count, strProgressOptions& options);
TAVI_API bool XMakeMT(const TTitleTextBase& title, XItemFunc3 fn, void* context1, void* context2,
                      void* const* items, uint32_t count, strProgressOptions& options);

}  // namespace tavi
