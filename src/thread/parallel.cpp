//===- parallel.cpp - XMake, XMakeArray, XCheck, XEnum and their MT forms -===//
#include "tavi/thread/parallel.h"

#include <array>
#include <atomic>
#include <system_error>
#include <thread>

#include "thread/internal/work_queue.h"

namespace tavi {

namespace {

std::atomic<uint32_t>& WorkerCountSlot() {
  static std::atomic<uint32_t> count{
      std::clamp<uint32_t>(std::thread::hardware_concurrency(), 1, kMaxWorkerCount)};
  return count;
}

}  // namespace

uint32_t XGetWorkerCount() {
  return WorkerCountSlot().load(std::memory_order_relaxed);
}

uint32_t XSetWorkerCount(uint32_t count) {
  return WorkerCountSlot().exchange(std::clamp<uint32_t>(count, 1, kMaxWorkerCount),
                                    std::memory_order_relaxed);
}

namespace internal {

uint32_t ThreadsFor(uint32_t count) {
  return std::min(XGetWorkerCount(), count);
}

void RunWorkersImpl(uint32_t threads, void (*worker)(void*), void* context) {
  std::array<std::thread, kMaxWorkerCount> helpers;
  const uint32_t started = std::min(threads, kMaxWorkerCount);
  for (uint32_t i = 1; i < started; ++i) {
    try {
      helpers[i] = std::thread(worker, context);
    } catch (const std::system_error&) {
      // A thread that cannot be created is simply absent.
    }
  }
  worker(context);
  for (std::thread& helper : helpers) {
    if (helper.joinable()) helper.join();
  }
}

}  // namespace internal

using internal::Bound1;
using internal::Bound2;
using internal::Bound3;
using internal::ElementItems;
using internal::PointerItems;

void XMake(XItemFunc1 fn, void* const* items, uint32_t count) {
  internal::MakeSequential(PointerItems{items}, count, Bound1<void>{fn});
}
void XMake(XItemFunc2 fn, void* context, void* const* items, uint32_t count) {
  internal::MakeSequential(PointerItems{items}, count, Bound2<void>{fn, context});
}
void XMake(XItemFunc3 fn, void* context1, void* context2, void* const* items, uint32_t count) {
  internal::MakeSequential(PointerItems{items}, count, Bound3<void>{fn, context1, context2});
}

void XMakeArray(XItemFunc1 fn, void* base, uint32_t count, uint32_t elementSize) {
  internal::MakeSequential(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                           Bound1<void>{fn});
}
void XMakeArray(XItemFunc2 fn, void* context, void* base, uint32_t count, uint32_t elementSize) {
  internal::MakeSequential(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                           Bound2<void>{fn, context});
}
void XMakeArray(XItemFunc3 fn, void* context1, void* context2, void* base, uint32_t count,
                uint32_t elementSize) {
  internal::MakeSequential(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                           Bound3<void>{fn, context1, context2});
}

void* XCheck(XItemPred1 pred, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound1<bool>{pred}, true);
}
void* XCheck(XItemPred2 pred, void* context, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound2<bool>{pred, context}, true);
}
void* XCheck(XItemPred3 pred, void* context1, void* context2, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound3<bool>{pred, context1, context2}, true);
}

void* XEnum(XItemPred1 pred, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound1<bool>{pred}, false);
}
void* XEnum(XItemPred2 pred, void* context, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound2<bool>{pred, context}, false);
}
void* XEnum(XItemPred3 pred, void* context1, void* context2, void* const* items, uint32_t count) {
  return internal::SearchSequential(items, count, Bound3<bool>{pred, context1, context2}, false);
}

void XMakeMT(XItemFunc1 fn, void* const* items, uint32_t count) {
  internal::MakeThreaded(PointerItems{items}, count, Bound1<void>{fn});
}
void XMakeMT(XItemFunc2 fn, void* context, void* const* items, uint32_t count) {
  internal::MakeThreaded(PointerItems{items}, count, Bound2<void>{fn, context});
}
void XMakeMT(XItemFunc3 fn, void* context1, void* context2, void* const* items, uint32_t count) {
  internal::MakeThreaded(PointerItems{items}, count, Bound3<void>{fn, context1, context2});
}

void XMakeArrayMT(XItemFunc1 fn, void* base, uint32_t count, uint32_t elementSize) {
  internal::MakeThreaded(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                         Bound1<void>{fn});
}
void XMakeArrayMT(XItemFunc2 fn, void* context, void* base, uint32_t count, uint32_t elementSize) {
  internal::MakeThreaded(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                         Bound2<void>{fn, context});
}
void XMakeArrayMT(XItemFunc3 fn, void* context1, void* context2, void* base, uint32_t count,
                  uint32_t elementSize) {
  internal::MakeThreaded(ElementItems{static_cast<uint8_t*>(base), elementSize}, count,
                         Bound3<void>{fn, context1, context2});
}

void* XCheckMT(XItemPred1 pred, void* const* items, uint32_t count) {
  return internal::SearchThreaded(items, count, Bound1<bool>{pred}, true);
}
void* XCheckMT(XItemPred2 pred, void* context, void* const* items, uint32_t count) {
  return internal::SearchThreaded(items, count, Bound2<bool>{pred, context}, true);
}
void* XCheckMT(XItemPred3 pred, void* context1, void* context2, void* const* items,
               uint32_t count) {
  return internal::SearchThreaded(items, count, Bound3<bool>{pred, context1, context2}, true);
}

void* XEnumMT(XItemPred1 pred, void* const* items, uint32_t count) {
  return internal::SearchThreaded(items, count, Bound1<bool>{pred}, false);
}
void* XEnumMT(XItemPred2 pred, void* context, void* const* items, uint32_t count) {
  return internal::SearchThreaded(items, count, Bound2<bool>{pred, context}, false);
}
void* XEnumMT(XItemPred3 pred, void* context1, void* context2, void* const* items, uint32_t count) {
  return internal::SearchThreaded(items, count, Bound3<bool>{pred, context1, context2}, false);
}

}  // namespace tavi
