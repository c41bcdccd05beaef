//===- progress_test.cpp - Progress display, nesting and cancellation -----===//
#include "tavi/thread/progress.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "core/fake_ui.h"
#include "tavi/thread/parallel.h"
#include "thread/internal/progress_clock.h"
#include "thread/internal/work_queue.h"

namespace tavi {
namespace {

using test::Fake;
using Titles = std::vector<std::u16string>;

// Every window title the library sets, in order: it sets them with its progress
// lock held, so the calls never overlap.
Titles shown;
std::atomic<uint64_t> now;       // the progress clock, 1000 ticks a second
std::atomic<uint64_t> autoStep;  // ticks added by every read of the clock

// Installs the fake user interface with windows 1 and 2 (window 3 does not
// exist), records the titles it is given, and drives the progress clock: the
// output interval is 500 ticks.
class ProgressTest : public testing::Test {
 protected:
  void SetUp() override {
    Fake().windows = {{1, u""}, {2, u""}};
    shown.clear();
    now = 1000000;
    autoStep = 0;
    table_ = test::FakeTable();
    table_.set_window_text = [](XWindow w, const char16_t* text) {
      shown.push_back(text);
      return test::FakeTable().set_window_text(w, text);
    };
    XSetUserInterface(&table_);
    internal::SetProgressClock([] { return now.fetch_add(autoStep); }, 1000);
    options_.window = test::Window(1);
  }
  void TearDown() override {
    internal::SetProgressClock(nullptr, 0);
    internal::SetSoloNanoseconds(internal::kSoloNanoseconds);
    XSetWorkerCount(workers_);
  }

  test::ScopedFakeUi fake_;
  XUserInterface table_;
  strProgressOptions options_;
  strProgress p_;
  const uint32_t workers_ = XGetWorkerCount();
};

// With a known total the shown value is ((done + total / 200) / total) * 100,
// quotient first: it stays 0 until done reaches total - total / 200 and then
// jumps to 100. It is shown at most every half second, and only when it
// changed. An unknown total shows the count at the start and then every half
// second, changed or not; a total of 0 shows 100%; without a window nothing is
// shown. A missing string ID gives the title "???".
TEST_F(ProgressTest, TitlesAreThrottledAndShowOnlyChanges) {
  ProgressStart(p_, u"Copying", 7, 1000, options_);
  EXPECT_EQ(ProgressSet(p_, 10), kProgressRunning);  // the first value: shown
  now += 499;
  ProgressSet(p_, 996);  // within the half second: not shown
  now += 1;
  ProgressSet(p_, 994);  // still 0: not shown
  EXPECT_EQ(shown.size(), 1u);
  ProgressSet(p_, 995);
  EXPECT_TRUE(ProgressEnd(p_));
  ProgressStart(p_, u"Scan", 4, kProgressTotalUnknown, options_);
  ProgressSet(p_, 5);
  now += 500;
  ProgressSet(p_, 6);
  ProgressSet(p_, 7);
  now += 500;
  ProgressSet(p_, 7);
  EXPECT_TRUE(ProgressEnd(p_));
  ProgressStart(p_, 1, 0, options_, nullptr);
  ProgressSet(p_, 0);
  ProgressEnd(p_);
  strProgressOptions quiet;
  ProgressStart(p_, u"Quiet", 5, kProgressTotalUnknown, quiet);
  now += 1000;
  ProgressSet(p_, 3);
  EXPECT_TRUE(ProgressEnd(p_));
  EXPECT_EQ(shown, (Titles{u"Copying 0%", u"Copying 100%", u"Copying done", u"Scan 0", u"Scan 6",
                           u"Scan 7", u"Scan done", u"??? 100%", u"??? done"}));
}

// The final title tells done, failed or cancelled. Titles come as text, as a
// string ID of the library's table, or as a title text (not terminated).
TEST_F(ProgressTest, CancelAndFailureShowInTheStateAndFinalTitle) {
  options_.cancel = true;
  ProgressStart(p_, u"Job", 3, 10, options_);
  EXPECT_FALSE(options_.cancel);  // cleared by the start
  EXPECT_EQ(ProgressSet(p_, 1), kProgressRunning);
  options_.cancel = true;
  EXPECT_EQ(ProgressSet(p_, 2), kProgressCancelled);
  EXPECT_FALSE(ProgressEnd(p_));
  ProgressStart(p_, 500000101, 10, options_, nullptr);
  EXPECT_FALSE(ProgressEnd(p_, false));
  TTitleText title;
  ASSERT_TRUE(title.Set(u"Named!", 10, false));
  ProgressStart(p_, title, 10, options_);
  EXPECT_TRUE(ProgressEnd(p_, true));
  EXPECT_EQ(shown, (Titles{u"Job 0%", u"Job cancelled", u"Error failed", u"Named done"}));

  // A window that refuses its title is recorded, and the work goes on.
  options_.window = test::Window(3);
  ProgressStart(p_, u"T", 1, 4, options_);
  EXPECT_EQ(ProgressSet(p_, 4), kProgressRunning);
  EXPECT_TRUE(p_.platformError);
  EXPECT_EQ(p_.platformErrorCode, 1400u);
  EXPECT_FALSE(ProgressSetTitleValue(p_));
  EXPECT_TRUE(ProgressEnd(p_));
}

// Nested records under one options object: only the innermost draws, and when
// it ends the outer one is drawn again at once in the same window. An inner
// record in another window ends with its own final title.
TEST_F(ProgressTest, NestedRecordsDrawInnermostOnly) {
  strProgress inner;
  ProgressStart(p_, u"Outer", 5, 4, options_);
  ProgressSet(p_, 0);
  ProgressStart(inner, u"Inner", 5, kProgressTotalUnknown, options_);
  now += 500;
  ProgressSet(p_, 4);  // not innermost: computes, but does not draw
  ProgressSet(inner, 9);
  EXPECT_TRUE(ProgressEnd(inner));
  EXPECT_TRUE(ProgressEnd(p_));
  EXPECT_EQ(options_.innermost, nullptr);
  EXPECT_EQ(shown, (Titles{u"Outer 0%", u"Inner 0", u"Inner 9", u"Outer 100%", u"Outer done"}));

  ProgressStart(p_, u"Outer", 5, 4, options_);
  options_.window = test::Window(2);
  ProgressStart(inner, u"Inner", 5, 4, options_);
  ProgressEnd(inner);
  EXPECT_EQ(Fake().windows[2], u"Inner done");
  EXPECT_EQ(Fake().windows[1], u"Outer done");
  ProgressEnd(p_);
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

// Sequentially ProgressSet follows each item. Threaded, an item is counted when
// its worker asks for the next one, so every item is counted by the end (with
// fewer than 200 items only the full count shows 100%); on cancel the items
// already handed out still finish, at most one more per worker.
TEST_F(ProgressTest, MakeWithProgressCountsEveryItemAndStopsOnCancel) {
  autoStep = 500;  // every clock read is half a second on: every change shows
  int item;
  const std::vector<void*> items(199, &item);
  const int64_t normalSolo = internal::kSoloNanoseconds;
  // Rounds with a solo time of 0 let helpers join after the first item; with
  // the normal one, 199 quick items finish on the calling thread alone.
  for (const auto& [workers, solo] :
       {std::pair<uint32_t, int64_t>{1, 0}, {2, 0}, {7, 0}, {2, normalSolo}, {7, normalSolo}}) {
    SCOPED_TRACE(testing::Message() << workers << " workers, solo " << solo);
    internal::SetSoloNanoseconds(solo);
    XSetWorkerCount(workers);
    shown.clear();
    Counter counter;
    counter.options = &options_;
    EXPECT_TRUE(XMake(u"Seq", 3, CountAndMaybeCancel, &counter, items.data(), 199, options_));
    EXPECT_TRUE(XMakeMT(u"Par", 3, CountAndMaybeCancel, &counter, items.data(), 199, options_));
    EXPECT_EQ(counter.calls, 398u);
    EXPECT_EQ(shown,
              (Titles{u"Seq 0%", u"Seq 100%", u"Seq done", u"Par 0%", u"Par 100%", u"Par done"}));

    counter.calls = 0;
    counter.cancelAt = 10;
    EXPECT_FALSE(XMake(u"S", 1, CountAndMaybeCancel, &counter, items.data(), 199, options_));
    EXPECT_EQ(counter.calls, 10u);
    EXPECT_EQ(shown.back(), u"S cancelled");
    counter.calls = 0;
    EXPECT_FALSE(XMakeMT(u"P", 1, CountAndMaybeCancel, &counter, items.data(), 199, options_));
    EXPECT_LE(counter.calls - 10u, workers);  // 10 to 10 + workers; fewer wraps round
    EXPECT_EQ(shown.back(), u"P cancelled");
  }
}

// No items: true at once, the options untouched. Otherwise each form passes
// its contexts on (the text form with two is run above); every item here is
// the same counter.
TEST_F(ProgressTest, TitledFormsOfEveryArity) {
  options_.cancel = true;
  EXPECT_TRUE(XMake(u"X", 1, CountAndMaybeCancel, nullptr, nullptr, 0, options_));
  EXPECT_TRUE(XMakeMT(7u, CountAndMaybeCancel, nullptr, nullptr, 0, options_, nullptr));
  EXPECT_TRUE(options_.cancel && shown.empty());
  XSetWorkerCount(3);
  std::atomic<int> sum{0};
  const std::vector<void*> items(50, &sum);
  int one = 1, two = 2;
  auto add1 = [](void* s) { *static_cast<std::atomic<int>*>(s) += 1; };
  auto add2 = [](void* s, void* c) { *static_cast<std::atomic<int>*>(s) += *static_cast<int*>(c); };
  auto add3 = [](void* s, void* a, void* b) {
    *static_cast<std::atomic<int>*>(s) += *static_cast<int*>(a) * *static_cast<int*>(b);
  };
  EXPECT_TRUE(XMake(u"a", 1, add1, items.data(), 50, options_));
  EXPECT_TRUE(XMake(u"a", 1, add3, &one, &two, items.data(), 50, options_));
  EXPECT_TRUE(XMake(500000101u, add2, &two, items.data(), 50, options_, nullptr));
  EXPECT_TRUE(XMakeMT(500000101u, add1, items.data(), 50, options_, nullptr));
  EXPECT_TRUE(XMakeMT(500000101u, add3, &one, &two, items.data(), 50, options_, nullptr));
  TTitleText title;
  ASSERT_TRUE(title.Set(u"Titled", 12, false));
  EXPECT_TRUE(XMake(title, add2, &two, items.data(), 50, options_));
  EXPECT_TRUE(XMakeMT(title, add3, &one, &two, items.data(), 50, options_));
  EXPECT_EQ(sum, 50 * 12);
}

}  // namespace
}  // namespace tavi
