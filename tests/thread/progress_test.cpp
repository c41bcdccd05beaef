//===- progress_test.cpp - Progress display, nesting and cancellation -----===//
#include "tavi/thread/progress.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "tavi/core/user_interface.h"
#include "tavi/thread/parallel.h"
#include "thread/internal/progress_clock.h"

namespace tavi {
namespace {

XWindow FakeWindow(uintptr_t n) {
  return reinterpret_cast<XWindow>(n);
}

// Records every window title the library sets and drives the progress clock
// (ticking 1000 times a second, so the output interval is 500 ticks).
class ProgressTest : public testing::Test {
 protected:
  struct Title {
    XWindow window;
    std::u16string text;
    bool operator==(const Title&) const = default;
  };

  static std::mutex mutex;
  static std::vector<Title> titles;
  static std::atomic<bool> failTitles;
  static std::atomic<uint64_t> now;
  static std::atomic<uint64_t> autoStep;

  static bool SetWindowText(XWindow window, const char16_t* text) {
    if (failTitles) {
      XSetLastError(1400);
      return false;
    }
    std::lock_guard<std::mutex> lock(mutex);
    titles.push_back({window, text});
    return true;
  }
  static uint64_t Now() { return now.fetch_add(autoStep); }

  void SetUp() override {
    titles.clear();
    failTitles = false;
    now = 1000000;
    autoStep = 0;
    table_.set_window_text = SetWindowText;
    previous_ = XSetUserInterface(&table_);
    internal::SetProgressClock(Now, 1000);
  }
  void TearDown() override {
    internal::SetProgressClock(nullptr, 0);
    XSetUserInterface(previous_);
  }

  std::vector<std::u16string> TitlesOf(XWindow window) {
    std::lock_guard<std::mutex> lock(mutex);
    std::vector<std::u16string> out;
    for (const Title& t : titles) {
      if (t.window == window) out.push_back(t.text);
    }
    return out;
  }
  size_t TitleCount() {
    std::lock_guard<std::mutex> lock(mutex);
    return titles.size();
  }

  XUserInterface table_{};
  const XUserInterface* previous_ = nullptr;
  XWindow window_ = FakeWindow(0x1000);
};

std::mutex ProgressTest::mutex;
std::vector<ProgressTest::Title> ProgressTest::titles;
std::atomic<bool> ProgressTest::failTitles;
std::atomic<uint64_t> ProgressTest::now;
std::atomic<uint64_t> ProgressTest::autoStep;

using Titles = std::vector<std::u16string>;

TEST_F(ProgressTest, KnownTotalIsThrottledAndShowsOnlyChanges) {
  strProgressOptions options;
  options.window = window_;
  options.value = 77;
  strProgress p;
  ProgressStart(p, u"Copying", 7, 1000, options);
  EXPECT_EQ(p.value, 77u);
  EXPECT_EQ(p.interval, 500u);
  EXPECT_TRUE(TitleCount() == 0);

  EXPECT_EQ(ProgressSet(p, 10), kProgressRunning);  // first value: shown
  EXPECT_EQ(TitlesOf(window_), (Titles{u"Copying 0%"}));
  now += 499;
  ProgressSet(p, 996);  // within the half second: nothing
  now += 1;
  ProgressSet(p, 500);  // half a second on, but the value is still 0
  EXPECT_EQ(TitlesOf(window_).size(), 1u);
  now += 500;
  // The shown value is ((done + total / 200) / total) * 100: quotient first,
  // so it stays 0 until done reaches total - total / 200 and then jumps to 100.
  ProgressSet(p, 994);
  EXPECT_EQ(TitlesOf(window_).size(), 1u);
  ProgressSet(p, 995);
  EXPECT_EQ(TitlesOf(window_), (Titles{u"Copying 0%", u"Copying 100%"}));
  EXPECT_EQ(p.done, 995u);

  EXPECT_TRUE(ProgressEnd(p));
  EXPECT_EQ(TitlesOf(window_).back(), u"Copying done");
  EXPECT_EQ(options.innermost, nullptr);
}

TEST_F(ProgressTest, UnknownTotalShowsTheCountAtStartAndEveryHalfSecond) {
  strProgressOptions options;
  options.window = window_;
  strProgress p;
  ProgressStart(p, u"Scanning", 8, kProgressTotalUnknown, options);
  EXPECT_EQ(TitlesOf(window_), (Titles{u"Scanning 0"}));
  ProgressSet(p, 5);
  now += 500;
  ProgressSet(p, 6);
  ProgressSet(p, 7);
  now += 500;
  ProgressSet(p, 7);
  EXPECT_EQ(TitlesOf(window_), (Titles{u"Scanning 0", u"Scanning 6", u"Scanning 7"}));
  EXPECT_TRUE(ProgressEnd(p));
}

TEST_F(ProgressTest, ZeroTotalShowsAHundredPercentAndNoWindowNothing) {
  strProgressOptions options;
  options.window = window_;
  strProgress p;
  ProgressStart(p, u"Nothing", 7, 0, options);
  ProgressSet(p, 0);
  ProgressEnd(p);
  EXPECT_EQ(TitlesOf(window_), (Titles{u"Nothing 100%", u"Nothing done"}));

  strProgressOptions quiet;
  ProgressStart(p, u"Quiet", 5, kProgressTotalUnknown, quiet);
  now += 1000;
  ProgressSet(p, 3);
  EXPECT_TRUE(ProgressEnd(p));
  EXPECT_EQ(TitleCount(), 2u);
}

TEST_F(ProgressTest, CancelAndFailureShowInTheStateAndFinalTitle) {
  strProgressOptions options;
  options.window = window_;
  options.cancel = true;
  strProgress p;
  ProgressStart(p, u"Job", 3, 10, options);
  EXPECT_FALSE(options.cancel);  // cleared by the start
  EXPECT_EQ(ProgressSet(p, 1), kProgressRunning);
  options.cancel = true;
  EXPECT_EQ(ProgressSet(p, 2), kProgressCancelled);
  EXPECT_FALSE(ProgressEnd(p));
  EXPECT_EQ(TitlesOf(window_).back(), u"Job cancelled");

  strProgress q;
  ProgressStart(q, u"Job", 3, 10, options);
  EXPECT_FALSE(ProgressEnd(q, false));
  EXPECT_EQ(q.state, kProgressFailed);
  EXPECT_EQ(TitlesOf(window_).back(), u"Job failed");
  strProgress r;
  ProgressStart(r, u"Job", 3, 10, options);
  EXPECT_TRUE(ProgressEnd(r, true));
}

TEST_F(ProgressTest, TitleFailuresAreRecordedAndDoNotStopTheWork) {
  failTitles = true;
  strProgressOptions options;
  options.window = window_;
  strProgress p;
  ProgressStart(p, u"T", 1, 4, options);
  EXPECT_EQ(ProgressSet(p, 4), kProgressRunning);
  EXPECT_TRUE(p.platformError);
  EXPECT_EQ(p.platformErrorCode, 1400u);
  EXPECT_FALSE(ProgressSetTitleValue(p));
  EXPECT_TRUE(ProgressEnd(p));
}

// Nested records under one options object: only the innermost draws, and when
// it ends the outer one is drawn again at once in the same window.
TEST_F(ProgressTest, NestedRecordsDrawInnermostOnly) {
  strProgressOptions options;
  options.window = window_;
  strProgress outer, inner;
  ProgressStart(outer, u"Outer", 5, 4, options);
  ProgressSet(outer, 0);
  ProgressStart(inner, u"Inner", 5, kProgressTotalUnknown, options);
  EXPECT_EQ(options.innermost, &inner);
  EXPECT_EQ(inner.next, &outer);
  EXPECT_EQ(outer.prev, &inner);
  now += 500;
  ProgressSet(outer, 4);  // not innermost: computes, but does not draw
  ProgressSet(inner, 9);
  EXPECT_TRUE(ProgressEnd(inner));
  EXPECT_EQ(options.innermost, &outer);
  EXPECT_EQ(outer.prev, nullptr);
  EXPECT_TRUE(ProgressEnd(outer));
  EXPECT_EQ(TitlesOf(window_),
            (Titles{u"Outer 0%", u"Inner 0", u"Inner 9", u"Outer 100%", u"Outer done"}));
  EXPECT_EQ(options.innermost, nullptr);

  // An inner record in another window ends with its own final title.
  const XWindow other = FakeWindow(0x2000);
  ProgressStart(outer, u"Outer", 5, 4, options);
  options.window = other;
  ProgressStart(inner, u"Inner", 5, 4, options);
  ProgressEnd(inner);
  EXPECT_EQ(TitlesOf(other), (Titles{u"Inner done"}));
  ProgressEnd(outer);
}

TEST_F(ProgressTest, TitleFromTheStringTableOrATitleText) {
  strProgressOptions options;
  options.window = window_;
  strProgress p;
  ProgressStart(p, 500000101, kProgressTotalUnknown, options, nullptr);
  ProgressEnd(p);
  ProgressStart(p, 1, kProgressTotalUnknown, options, nullptr);
  ProgressEnd(p);
  TTitleText title;  // a title text need not be terminated
  ASSERT_TRUE(title.Set(u"Named!", 10, false));
  ProgressStart(p, title, kProgressTotalUnknown, options);
  ProgressEnd(p);
  EXPECT_EQ(TitlesOf(window_),
            (Titles{u"Error 0", u"Error done", u"??? 0", u"??? done", u"Named 0", u"Named done"}));
}

struct Counter {
  std::atomic<uint32_t> calls{0};
  uint32_t cancelAt = UINT32_MAX;
  strProgressOptions* options = nullptr;
};

void CountAndMaybeCancel(void*, void* context) {
  Counter& c = *static_cast<Counter*>(context);
  if (c.calls.fetch_add(1) + 1 == c.cancelAt) c.options->cancel = true;
}

TEST_F(ProgressTest, MakeWithProgressRunsEveryItemAndEndsDone) {
  autoStep = 500;  // every clock read is half a second later
  for (uint32_t workers : {1u, 2u, 7u}) {
    const uint32_t old = XSetWorkerCount(workers);
    titles.clear();
    std::vector<int> values(300);
    std::vector<void*> items;
    for (int& v : values) items.push_back(&v);
    Counter counter;
    strProgressOptions options;
    options.window = window_;
    EXPECT_TRUE(XMake(u"Seq", 3, CountAndMaybeCancel, &counter, items.data(), 300, options));
    EXPECT_EQ(counter.calls.load(), 300u);
    EXPECT_EQ(TitlesOf(window_), (Titles{u"Seq 0%", u"Seq 100%", u"Seq done"}));

    titles.clear();
    counter.calls = 0;
    EXPECT_TRUE(XMakeMT(u"Par", 3, CountAndMaybeCancel, &counter, items.data(), 300, options));
    EXPECT_EQ(counter.calls.load(), 300u);
    // Every item is counted by the end, so the last value shown is 100%.
    EXPECT_EQ(TitlesOf(window_), (Titles{u"Par 0%", u"Par 100%", u"Par done"}));
    XSetWorkerCount(old);
  }
}

TEST_F(ProgressTest, CancellingStopsTheWork) {
  for (uint32_t workers : {1u, 4u}) {
    const uint32_t old = XSetWorkerCount(workers);
    std::vector<int> values(5000);
    std::vector<void*> items;
    for (int& v : values) items.push_back(&v);
    strProgressOptions options;
    options.window = window_;
    Counter counter;
    counter.options = &options;
    counter.cancelAt = 10;
    // Sequentially ProgressSet follows each item, so the 10th is the last.
    EXPECT_FALSE(XMake(u"S", 1, CountAndMaybeCancel, &counter, items.data(), 5000, options));
    EXPECT_EQ(counter.calls.load(), 10u);
    EXPECT_EQ(TitlesOf(window_).back(), u"S cancelled");

    // Threaded, the items already handed out still finish: at most one more
    // per worker.
    counter.calls = 0;
    EXPECT_FALSE(XMakeMT(u"P", 1, CountAndMaybeCancel, &counter, items.data(), 5000, options));
    EXPECT_GE(counter.calls.load(), 10u);
    EXPECT_LE(counter.calls.load(), 10u + workers);
    EXPECT_EQ(TitlesOf(window_).back(), u"P cancelled");
    XSetWorkerCount(old);
  }
}

void Nothing(void*) {}

TEST_F(ProgressTest, NoItemsLeavesTheOptionsAlone) {
  strProgressOptions options;
  options.window = window_;
  options.cancel = true;
  EXPECT_TRUE(XMake(u"X", 1, Nothing, nullptr, 0, options));
  EXPECT_TRUE(XMakeMT(u"X", 1, Nothing, nullptr, 0, options));
  EXPECT_TRUE(XMake(7u, Nothing, nullptr, 0, options, nullptr));
  EXPECT_TRUE(XMakeMT(7u, Nothing, nullptr, 0, options, nullptr));
  EXPECT_TRUE(options.cancel);
  EXPECT_EQ(TitleCount(), 0u);
}

TEST_F(ProgressTest, TitledFormsOfEveryArity) {
  const uint32_t old = XSetWorkerCount(3);
  std::vector<int> values(50, 0);
  std::vector<void*> items;
  for (int& v : values) items.push_back(&v);
  strProgressOptions options;
  int one = 1, two = 2;
  auto add1 = [](void* item) { ++*static_cast<int*>(item); };
  auto add2 = [](void* item, void* c) { *static_cast<int*>(item) += *static_cast<int*>(c); };
  auto add3 = [](void* item, void* a, void* b) {
    *static_cast<int*>(item) += *static_cast<int*>(a) * *static_cast<int*>(b);
  };
  EXPECT_TRUE(XMake(u"a", 1, add1, items.data(), 50, options));
  EXPECT_TRUE(XMake(u"a", 1, add3, &one, &two, items.data(), 50, options));
  EXPECT_TRUE(XMake(500000101u, add2, &two, items.data(), 50, options, nullptr));
  EXPECT_TRUE(XMakeMT(u"a", 1, add2, &two, items.data(), 50, options));
  EXPECT_TRUE(XMakeMT(500000101u, add1, items.data(), 50, options, nullptr));
  EXPECT_TRUE(XMakeMT(500000101u, add3, &one, &two, items.data(), 50, options, nullptr));
  TTitleText title;
  ASSERT_TRUE(title.Set(u"Titled", 12, false));
  EXPECT_TRUE(XMake(title, add2, &two, items.data(), 50, options));
  EXPECT_TRUE(XMakeMT(title, add3, &one, &two, items.data(), 50, options));
  for (int v : values) EXPECT_EQ(v, 14);
  XSetWorkerCount(old);
}

}  // namespace
}  // namespace tavi
