//===- progress.cpp - Progress records, their chain and their display -----===//
#include "tavi/thread/progress.h"

#include <atomic>
#include <iterator>
#include <mutex>

#include "core/internal/ui.h"
#include "tavi/core/user_interface.h"
#include "thread/internal/progress_clock.h"
#include "time/internal/proc_time.h"

namespace tavi {

namespace internal {

namespace {

std::atomic<uint64_t (*)()> replacementNow{nullptr};
std::atomic<uint64_t> replacementFrequency{0};

}  // namespace

uint64_t ProgressNow() {
  uint64_t (*now)() = replacementNow.load(std::memory_order_acquire);
  return now != nullptr ? now() : ProcTimeNow();
}

uint64_t ProgressFrequency() {
  return replacementNow.load(std::memory_order_acquire) != nullptr
             ? replacementFrequency.load(std::memory_order_relaxed)
             : ProcTimeFrequency();
}

void SetProgressClock(uint64_t (*now)(), uint64_t frequency) {
  replacementFrequency.store(frequency, std::memory_order_relaxed);
  replacementNow.store(now, std::memory_order_release);
}

}  // namespace internal

namespace {

// One lock for every chain: records of one chain may be started, set and
// ended from different threads (nested threaded operations), and the
// display of an outer record is redrawn when an inner one ends.
std::mutex& ProgressMutex() {
  static std::mutex mutex;
  return mutex;
}

uint64_t ShownValue(const strProgress& p) {
  if (p.total == 0) return 100;
  return (p.done + p.total / 200) / p.total * 100;
}

bool AppendNumber(XString16& text, uint64_t n) {
  char16_t digits[20];
  char16_t* first = std::end(digits);
  do {
    *--first = static_cast<char16_t>(u'0' + n % 10);
    n /= 10;
  } while (n != 0);
  return text.Add(first, std::end(digits));
}

// Sets the record's window title to `text`; a failure of the user interface
// is recorded in the record.
bool SetTitle(strProgress& p, const XString16& text) {
  if (!internal::UI(&XUserInterface::set_window_text)(p.window, text.c_str())) {
    p.platformError = true;
    p.platformErrorCode = XGetLastError();
    return false;
  }
  return true;
}

bool SetTitleValueLocked(strProgress& p) {
  XString16 text;
  text.Set(p.title);
  if (p.total == kProgressTotalUnknown) {
    AppendNumber(text, p.done);
  } else {
    AppendNumber(text, ShownValue(p));
    text.Add(u"%");
  }
  return SetTitle(p, text);
}

bool SetTitleResultLocked(strProgress& p) {
  XString16 text;
  text.Set(p.title);
  switch (p.state) {
    case kProgressRunning:
      text.Add(u"done");
      break;
    case kProgressCancelled:
      text.Add(u"cancelled");
      break;
    default:
      text.Add(u"failed");
      break;
  }
  return SetTitle(p, text);
}

void OutputLocked(strProgress& p) {
  if (p.window != nullptr && p.chain != nullptr && *p.chain == &p) SetTitleValueLocked(p);
  p.lastOutput = internal::ProgressNow();
}

void StartLocked(strProgress& p, uint64_t total, strProgressOptions& options) {
  options.cancel.store(false, std::memory_order_relaxed);
  p.window = options.window;
  p.value = options.value;
  p.options = &options;
  p.state = kProgressRunning;
  p.done = 0;
  p.total = total;
  p.shown = 99999;
  p.lastOutput = 0;
  const uint64_t frequency = internal::ProgressFrequency();
  p.interval = frequency / 2 != 0 ? frequency / 2 : 1;
  p.chain = &options.innermost;
  p.prev = nullptr;
  p.next = options.innermost;
  if (p.next != nullptr) p.next->prev = &p;
  options.innermost = &p;
  if (total == kProgressTotalUnknown) OutputLocked(p);
}

void ResetTitle(strProgress& p) {
  p.platformError = false;
  p.platformErrorCode = 0;
  p.title.ResetBufferPos();
}

}  // namespace

void ProgressStart(strProgress& progress, const char16_t* title, uint32_t titleLen, uint64_t total,
                   strProgressOptions& options) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  ResetTitle(progress);
  if (title != nullptr && titleLen != 0 && titleLen <= UINT32_MAX / 2) {
    progress.title.Add(title, titleLen * 2);
  }
  progress.title.Add(u" ");
  StartLocked(progress, total, options);
}

void ProgressStart(strProgress& progress, const TTitleTextBase& title, uint64_t total,
                   strProgressOptions& options) {
  ProgressStart(progress, title.text, title.Len(), total, options);
}

void ProgressStart(strProgress& progress, uint32_t titleId, uint64_t total,
                   strProgressOptions& options, XModule) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  ResetTitle(progress);
  progress.title.Add(static_cast<int32_t>(titleId), static_cast<TStringResource*>(nullptr));
  progress.title.Add(u" ");
  StartLocked(progress, total, options);
}

int32_t ProgressSet(strProgress& progress, uint64_t done) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  progress.done = done;
  if (internal::ProgressNow() - progress.lastOutput >= progress.interval) {
    if (progress.total == kProgressTotalUnknown) {
      OutputLocked(progress);
    } else if (const uint64_t shown = ShownValue(progress); shown != progress.shown) {
      progress.shown = shown;
      OutputLocked(progress);
    }
  }
  if (progress.options != nullptr && progress.options->cancel.load(std::memory_order_relaxed)) {
    progress.state = kProgressCancelled;
  }
  return static_cast<int32_t>(progress.state);
}

bool ProgressEnd(strProgress& progress) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  strProgress* outer = progress.next;
  const bool innermost = progress.chain != nullptr && *progress.chain == &progress;
  if (progress.prev != nullptr) progress.prev->next = outer;
  if (outer != nullptr) outer->prev = progress.prev;
  if (innermost) *progress.chain = outer;
  progress.prev = progress.next = nullptr;
  progress.chain = nullptr;

  if (innermost && outer != nullptr && outer->window != nullptr &&
      outer->window == progress.window) {
    OutputLocked(*outer);
  } else if (progress.window != nullptr) {
    SetTitleResultLocked(progress);
  }
  return progress.state == kProgressRunning;
}

bool ProgressEnd(strProgress& progress, bool ok) {
  if (!ok) {
    std::lock_guard<std::mutex> lock(ProgressMutex());
    progress.state = kProgressFailed;
  }
  return ProgressEnd(progress);
}

void ProgressOutput(strProgress& progress) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  OutputLocked(progress);
}

bool ProgressSetTitleValue(strProgress& progress) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  return SetTitleValueLocked(progress);
}

bool ProgressSetTitleResult(strProgress& progress) {
  std::lock_guard<std::mutex> lock(ProgressMutex());
  return SetTitleResultLocked(progress);
}

}  // namespace tavi
