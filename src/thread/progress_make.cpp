//===- progress_make.cpp - XMake and XMakeMT with progress and cancel -----===//
#include <mutex>

#include "tavi/thread/parallel.h"
#include "tavi/thread/progress.h"
#include "thread/internal/work_queue.h"

namespace tavi {

namespace {

using internal::Bound1;
using internal::Bound2;
using internal::Bound3;

// The title of a titled form: a text with its length, or a string ID.
struct Title {
  const char16_t* text;
  uint32_t length;
  uint32_t id;
  void Start(strProgress& progress, uint64_t total, strProgressOptions& options) const {
    if (text != nullptr) {
      ProgressStart(progress, text, length, total, options);
    } else {
      ProgressStart(progress, id, total, options, nullptr);
    }
  }
};

Title TextTitle(const char16_t* text, uint32_t length) {
  // A null text is an empty title (the ID form is never chosen by a text).
  return Title{text != nullptr ? text : u"", text != nullptr ? length : 0, 0};
}
Title TextTitle(const TTitleTextBase& title) {
  return TextTitle(title.text, title.Len());
}
Title IdTitle(uint32_t id) {
  return Title{nullptr, 0, id};
}

template <typename Fn>
bool MakeWithProgress(const Title& title, Fn fn, void* const* items, uint32_t count,
                      strProgressOptions& options) {
  if (count == 0) return true;
  strProgress progress;
  title.Start(progress, count, options);
  for (uint32_t i = 0; i < count; ++i) {
    fn(items[i]);
    if (ProgressSet(progress, uint64_t{i} + 1) != kProgressRunning) break;
  }
  return ProgressEnd(progress);
}

// The calling thread starts alone, calling ProgressSet after each item as the
// sequential form does. When work is left after the solo time, helpers join and
// items are handed out in runs (at most kProgressRun items, so that progress
// moves); before each hand-out the worker reports under the lock the items it
// finished since its last one. A cancel request is also read before every item,
// so a cancelled call finishes at most the item each worker is on.
constexpr uint32_t kProgressRun = 1024;

template <typename Fn>
bool MakeWithProgressThreaded(const Title& title, Fn fn, void* const* items, uint32_t count,
                              strProgressOptions& options) {
  const uint32_t threads = internal::ThreadsFor(count);
  if (threads <= 1) return MakeWithProgress(title, fn, items, count, options);
  strProgress progress;
  title.Start(progress, count, options);
  uint32_t start;
  const bool over = internal::RunSolo(fn.Key(), count, start, [&](uint32_t first, uint32_t end) {
    for (uint32_t i = first; i < end; ++i) {
      void* item = items[i];
      if (item == nullptr) return false;
      fn(item);
      if (ProgressSet(progress, uint64_t{i} + 1) != kProgressRunning) return false;
    }
    return true;
  });
  if (over) return ProgressEnd(progress);
  internal::WorkQueue queue(start, count, threads);
  uint64_t done = start;
  auto worker = [&] {
    uint32_t finished = 0;
    for (;;) {
      uint32_t first, run;
      {
        std::lock_guard<std::mutex> lock(queue.mutex());
        done += finished;
        if (ProgressSet(progress, done) != kProgressRunning) queue.StopLocked();
        if (!queue.TakeRunLocked(first, run, kProgressRun)) return;
      }
      finished = 0;
      for (uint32_t i = first; i < first + run; ++i) {
        if (options.cancel.load(std::memory_order_relaxed)) break;
        void* item = items[i];
        if (item == nullptr) {
          std::lock_guard<std::mutex> lock(queue.mutex());
          done += finished;
          ProgressSet(progress, done);
          return;
        }
        fn(item);
        ++finished;
      }
    }
  };
  internal::RunTeam(fn.Key(), threads, queue, worker);
  return ProgressEnd(progress);
}

}  // namespace

bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void* const* items,
           uint32_t count, strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title, titleLen), Bound1<void>{fn}, items, count, options);
}
bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
           void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title, titleLen), Bound2<void>{fn, context}, items, count,
                          options);
}
bool XMake(const char16_t* title, uint32_t titleLen, XItemFunc3 fn, void* context1, void* context2,
           void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title, titleLen), Bound3<void>{fn, context1, context2}, items,
                          count, options);
}
bool XMake(uint32_t titleId, XItemFunc1 fn, void* const* items, uint32_t count,
           strProgressOptions& options, XModule) {
  return MakeWithProgress(IdTitle(titleId), Bound1<void>{fn}, items, count, options);
}
bool XMake(uint32_t titleId, XItemFunc2 fn, void* context, void* const* items, uint32_t count,
           strProgressOptions& options, XModule) {
  return MakeWithProgress(IdTitle(titleId), Bound2<void>{fn, context}, items, count, options);
}
bool XMake(uint32_t titleId, XItemFunc3 fn, void* context1, void* context2, void* const* items,
           uint32_t count, strProgressOptions& options, XModule) {
  return MakeWithProgress(IdTitle(titleId), Bound3<void>{fn, context1, context2}, items, count,
                          options);
}

bool XMake(const TTitleTextBase& title, XItemFunc1 fn, void* const* items, uint32_t count,
           strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title), Bound1<void>{fn}, items, count, options);
}
bool XMake(const TTitleTextBase& title, XItemFunc2 fn, void* context, void* const* items,
           uint32_t count, strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title), Bound2<void>{fn, context}, items, count, options);
}
bool XMake(const TTitleTextBase& title, XItemFunc3 fn, void* context1, void* context2,
           void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgress(TextTitle(title), Bound3<void>{fn, context1, context2}, items, count,
                          options);
}

bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc1 fn, void* const* items,
             uint32_t count, strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title, titleLen), Bound1<void>{fn}, items, count,
                                  options);
}
bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc2 fn, void* context,
             void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title, titleLen), Bound2<void>{fn, context}, items,
                                  count, options);
}
bool XMakeMT(const char16_t* title, uint32_t titleLen, XItemFunc3 fn, void* context1,
             void* context2, void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title, titleLen), Bound3<void>{fn, context1, context2},
                                  items, count, options);
}
bool XMakeMT(uint32_t titleId, XItemFunc1 fn, void* const* items, uint32_t count,
             strProgressOptions& options, XModule) {
  return MakeWithProgressThreaded(IdTitle(titleId), Bound1<void>{fn}, items, count, options);
}
bool XMakeMT(uint32_t titleId, XItemFunc2 fn, void* context, void* const* items, uint32_t count,
             strProgressOptions& options, XModule) {
  return MakeWithProgressThreaded(IdTitle(titleId), Bound2<void>{fn, context}, items, count,
                                  options);
}
bool XMakeMT(uint32_t titleId, XItemFunc3 fn, void* context1, void* context2, void* const* items,
             uint32_t count, strProgressOptions& options, XModule) {
  return MakeWithProgressThreaded(IdTitle(titleId), Bound3<void>{fn, context1, context2}, items,
                                  count, options);
}

bool XMakeMT(const TTitleTextBase& title, XItemFunc1 fn, void* const* items, uint32_t count,
             strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title), Bound1<void>{fn}, items, count, options);
}
bool XMakeMT(const TTitleTextBase& title, XItemFunc2 fn, void* context, void* const* items,
             uint32_t count, strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title), Bound2<void>{fn, context}, items, count,
                                  options);
}
bool XMakeMT(const TTitleTextBase& title, XItemFunc3 fn, void* context1, void* context2,
             void* const* items, uint32_t count, strProgressOptions& options) {
  return MakeWithProgressThreaded(TextTitle(title), Bound3<void>{fn, context1, context2}, items,
                                  count, options);
}

}  // namespace tavi
