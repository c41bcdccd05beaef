//===- parallel.cpp - XMake, XMakeArray, XCheck, XEnum and their MT forms -===//
#include "tavi/thread/parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "thread/internal/work_queue.h"

namespace tavi {

namespace internal {

std::atomic<uint32_t> workerCount{0};

namespace {
uint32_t ProcessorWorkers() {
  return std::clamp<uint32_t>(std::thread::hardware_concurrency(), 1, kMaxWorkerCount);
}
}  // namespace

uint32_t FirstWorkerCount() {
  uint32_t expected = 0;
  workerCount.compare_exchange_strong(expected, ProcessorWorkers(), std::memory_order_relaxed);
  return workerCount.load(std::memory_order_relaxed);
}

}  // namespace internal

uint32_t XGetWorkerCount() {
  return internal::ThreadsFor(UINT32_MAX);
}

uint32_t XSetWorkerCount(uint32_t count) {
  const uint32_t old = internal::workerCount.exchange(
      std::clamp<uint32_t>(count, 1, kMaxWorkerCount), std::memory_order_relaxed);
  return old != 0 ? old : internal::ProcessorWorkers();
}

namespace internal {

namespace {

// The part of a team that helpers may touch after the calling thread has
// returned: it is shared by the caller and every helper thread and freed by
// whichever lets go last. worker and context are used only while the team is
// open.
struct Team {
  std::mutex lock;
  std::condition_variable idle;
  void (*worker)(void*);
  void* context;
  uint32_t toStart;     // helpers still to be started
  uint32_t active = 0;  // helpers inside worker()
  bool closed = false;
  std::atomic<uint32_t> refs;

  void Unref() {
    if (refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
};

void HelperMain(Team* team);

// Starts one helper holding a reference the caller has already added.
void StartHelper(Team* team) {
  try {
    std::thread(HelperMain, team).detach();
  } catch (const std::system_error&) {
    team->Unref();  // a thread that cannot be created is simply absent
  }
}

void HelperMain(Team* team) {
  bool startNext = false;
  {
    std::lock_guard<std::mutex> hold(team->lock);
    if (!team->closed && team->toStart > 0) {
      --team->toStart;
      team->refs.fetch_add(1, std::memory_order_relaxed);
      startNext = true;
    }
  }
  // The next helper is started before this one registers, so that the calling
  // thread never waits for a thread start.
  if (startNext) StartHelper(team);
  bool work;
  {
    std::lock_guard<std::mutex> hold(team->lock);
    work = !team->closed;
    if (work) ++team->active;
  }
  if (work) {
    team->worker(team->context);
    bool last;
    {
      std::lock_guard<std::mutex> hold(team->lock);
      last = --team->active == 0 && team->closed;
    }
    if (last) team->idle.notify_all();
  }
  team->Unref();
}

}  // namespace

void RunWorkersImpl(uint32_t threads, void (*worker)(void*), void* context) {
  Team* team = threads > 1 ? new (std::nothrow) Team : nullptr;
  if (team == nullptr) return worker(context);
  team->worker = worker;
  team->context = context;
  team->toStart = std::min(threads, kMaxWorkerCount) - 2;  // the first one is started here
  team->refs.store(2, std::memory_order_relaxed);
  StartHelper(team);
  worker(context);
  {
    std::unique_lock<std::mutex> hold(team->lock);
    team->closed = true;
    team->idle.wait(hold, [team] { return team->active == 0; });
  }
  team->Unref();
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
