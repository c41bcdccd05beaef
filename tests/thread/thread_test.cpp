//===- thread_test.cpp - XThread, XAutoThread and XWaitForThread ----------===//
#include "tavi/thread/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "core/fake_ui.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

// A thread routine that waits for `go` and then returns `result`.
struct Gate {
  std::atomic<bool> go{false};
  std::atomic<bool> started{false};
  uint32_t result = 7;
};
uint32_t GatedRoutine(void* context) {
  auto& gate = *static_cast<Gate*>(context);
  gate.started = true;
  while (!gate.go) std::this_thread::yield();
  return gate.result;
}

TEST(XThread, WithoutAThreadEveryOperationFails) {
  XThread t;
  uint32_t code = 1;
  EXPECT_EQ(t.WaitForEnd(), kNone);
  EXPECT_FALSE(t.WaitForObject());
  EXPECT_FALSE(t.TryWaitForObject());
  EXPECT_FALSE(t.TryWaitForObject(5));
  EXPECT_FALSE(t.GetThreadResult(code));
  EXPECT_EQ(code, 1u);
  EXPECT_FALSE(t.SetThreadPriority(kThreadPriorityNormal));
}

// While the routine runs the waits time out and the exit code is the
// still-active value; afterwards they succeed and the code is the routine's.
TEST(XThread, LifecycleAndExitCode) {
  Gate gate;
  XThread t;
  ASSERT_TRUE(t.Run(GatedRoutine, &gate, kThreadPriorityNormal));
  ASSERT_NE(t.Handle(), nullptr);
  uint32_t code = 0;
  EXPECT_FALSE(t.TryWaitForObject());
  EXPECT_FALSE(t.TryWaitForObject(10));
  ASSERT_TRUE(t.GetThreadResult(code));
  EXPECT_EQ(code, kThreadStillActive);
  // Lowering the priority is always allowed; unknown levels are refused.
  EXPECT_TRUE(t.SetThreadPriority(kThreadPriorityBelowNormal));
  EXPECT_FALSE(t.SetThreadPriority(3));

  gate.go = true;
  EXPECT_TRUE(t.WaitForObject());
  EXPECT_TRUE(t.TryWaitForObject());
  ASSERT_TRUE(t.GetThreadResult(code));
  EXPECT_EQ(code, 7u);
  EXPECT_FALSE(t.SetThreadPriority(kThreadPriorityNormal));  // ended
  EXPECT_EQ(t.WaitForEnd(), 7u);
  EXPECT_EQ(t.Handle(), nullptr);
  EXPECT_EQ(t.WaitForEnd(), kNone);
}

// Window 1 exists in the fake user interface; setting its text can release a
// waiting routine so that the order of events is fixed.
Gate* releaseOnText = nullptr;
std::u16string lastText;
int textCalls = 0;

class XWaitForThreadTest : public testing::Test {
 protected:
  void SetUp() override {
    test::Fake().windows = {{1, u"before"}};
    lastText.clear();
    textCalls = 0;
    table_ = test::FakeTable();
    table_.set_window_text = [](XWindow, const char16_t* text) {
      lastText = text;
      ++textCalls;
      if (releaseOnText != nullptr) releaseOnText->go = true;
      return true;
    };
    XSetUserInterface(&table_);
  }
  void TearDown() override { releaseOnText = nullptr; }

  test::ScopedFakeUi fake_;
  XUserInterface table_;
};

TEST_F(XWaitForThreadTest, FinishedThreadLeavesTheWindowAlone) {
  Gate gate;
  gate.go = true;
  XThread t;
  ASSERT_TRUE(t.Run(GatedRoutine, &gate, kThreadPriorityNormal));
  ASSERT_TRUE(t.WaitForObject());
  EXPECT_TRUE(XWaitForThread(t, 500000101, test::Window(1)));
  EXPECT_EQ(textCalls, 0);
  EXPECT_NE(t.Handle(), nullptr);  // not closed
  EXPECT_EQ(t.WaitForEnd(), 7u);
}

// A running thread: the window shows the library string (or "???" for an ID
// without one) and the call returns once the thread has ended.
TEST_F(XWaitForThreadTest, RunningThreadShowsTheTextAndWaits) {
  const std::u16string known = XLibStringResource->Get(500000101);
  for (const auto& [id, expected] :
       {std::pair<uint32_t, std::u16string>{500000101, known}, {0x7FFFFFF0, u"???"}}) {
    Gate gate;
    releaseOnText = &gate;
    XThread t;
    ASSERT_TRUE(t.Run(GatedRoutine, &gate, kThreadPriorityNormal));
    EXPECT_TRUE(XWaitForThread(t, id, test::Window(1)));
    EXPECT_EQ(lastText, expected);
    EXPECT_TRUE(t.TryWaitForObject());
    EXPECT_EQ(t.WaitForEnd(), 7u);
  }
  EXPECT_EQ(textCalls, 2);
}

TEST_F(XWaitForThreadTest, NoTextIdAndNoThread) {
  Gate gate;
  XThread t;
  ASSERT_TRUE(t.Run(GatedRoutine, &gate, kThreadPriorityNormal));
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    gate.go = true;
  });
  EXPECT_TRUE(XWaitForThread(t, 0, test::Window(1)));
  opener.join();
  EXPECT_EQ(textCalls, 0);
  EXPECT_EQ(t.WaitForEnd(), 7u);

  XThread none;
  EXPECT_FALSE(XWaitForThread(none, 0, test::Window(1)));
}

}  // namespace
}  // namespace tavi
