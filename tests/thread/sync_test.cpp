//===- sync_test.cpp - XMutex, XSemaphore and XCriticalSection ------------===//
#include "tavi/thread/sync.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace tavi {
namespace {

// Runs fn on another thread and returns its result.
template <typename Fn>
auto OnOtherThread(Fn fn) {
  decltype(fn()) result{};
  std::thread([&] { result = fn(); }).join();
  return result;
}

TEST(XMutex, WithoutAHandleEverythingFails) {
  XMutex m;
  EXPECT_FALSE(m.WaitForObject());
  EXPECT_FALSE(m.TryWaitForObject());
  EXPECT_EQ(m._WaitForObject(), kWaitFailed);
  EXPECT_FALSE(m.Release());
  EXPECT_FALSE(m.Destroy());
}

// The owner may acquire again and must release as often; other threads cannot
// acquire meanwhile, nor release it for the owner.
TEST(XMutex, RecursiveAndOwned) {
  XMutex m;
  ASSERT_TRUE(m.Init());
  EXPECT_TRUE(m.TryWaitForObject());
  EXPECT_TRUE(m.WaitForObject());
  EXPECT_FALSE(OnOtherThread([&] { return m.TryWaitForObject(); }));
  EXPECT_FALSE(OnOtherThread([&] { return m.Release(); }));
  EXPECT_TRUE(m.Release());
  EXPECT_FALSE(OnOtherThread([&] { return m.TryWaitForObject(); }));
  EXPECT_TRUE(m.Release());
  EXPECT_FALSE(m.Release());  // no longer owned
  EXPECT_TRUE(OnOtherThread([&] { return m.TryWaitForObject() && m.Release(); }));
  EXPECT_TRUE(m.Destroy());
  EXPECT_FALSE(m.Destroy());
  EXPECT_FALSE(m.TryWaitForObject());
}

// An owner that ends without releasing leaves the mutex abandoned: the next
// waiter acquires it, is told so, and the mutex is normal again afterwards.
TEST(XMutex, AbandonedByAnEndedOwner) {
  XMutex m;
  ASSERT_TRUE(m.Init());
  std::thread([&] { EXPECT_TRUE(m.WaitForObject()); }).join();
  EXPECT_EQ(m._WaitForObject(), kWaitAbandoned0);
  EXPECT_TRUE(m.Release());
  EXPECT_EQ(m._WaitForObject(), kWaitObject0);
  EXPECT_TRUE(m.Release());

  std::thread([&] { EXPECT_TRUE(m.TryWaitForObject()); }).join();
  EXPECT_FALSE(m.WaitForObject());  // acquired, but abandoned
  EXPECT_TRUE(m.Release());
  EXPECT_FALSE(m.Release());
}

TEST(XMutex, CopiesShareOneMutex) {
  XMutex a;
  ASSERT_TRUE(a.Init());
  XMutex b = a;
  XMutex c;
  c = b;
  ASSERT_TRUE(b.WaitForObject());
  EXPECT_FALSE(OnOtherThread([&] { return c.TryWaitForObject(); }));
  EXPECT_TRUE(a.Release());
  EXPECT_TRUE(a.Destroy());
  // The copies still hold the mutex.
  EXPECT_TRUE(OnOtherThread([&] { return c.WaitForObject() && c.Release(); }));
}

// Counting under the lock from several threads loses nothing (and the thread
// sanitizer sees the lock order).
template <typename Lock, typename Unlock>
void CountUnder(Lock lock, Unlock unlock) {
  constexpr int kThreads = 4, kRounds = 2000;
  int counter = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int r = 0; r < kRounds; ++r) {
        lock();
        ++counter;
        unlock();
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(counter, kThreads * kRounds);
}

TEST(XMutex, ExcludesOtherThreads) {
  XMutex m;
  ASSERT_TRUE(m.Init());
  CountUnder([&] { ASSERT_TRUE(m.WaitForObject()); }, [&] { ASSERT_TRUE(m.Release()); });
}

// The semaphore's operations are protected: a signal class exposes them.
class Signal : public XSemaphore {
 public:
  using XSemaphore::Destroy;
  using XSemaphore::Init;
  using XSemaphore::Release;
  using XSemaphore::TryWaitForObject;
  using XSemaphore::WaitForObject;
};

TEST(XSemaphore, BinaryCount) {
  Signal s;
  EXPECT_FALSE(s.TryWaitForObject());
  EXPECT_FALSE(s.Release());
  EXPECT_FALSE(s.Init(2));
  EXPECT_FALSE(s.Init(-1));
  ASSERT_TRUE(s.Init(0));
  EXPECT_FALSE(s.TryWaitForObject());
  EXPECT_TRUE(s.Release());
  EXPECT_FALSE(s.Release());  // already at the maximum of 1
  EXPECT_TRUE(s.TryWaitForObject());
  EXPECT_FALSE(s.TryWaitForObject());
  EXPECT_TRUE(s.Destroy());
  EXPECT_FALSE(s.Destroy());
  EXPECT_FALSE(s.WaitForObject());

  ASSERT_TRUE(s.Init(1));
  EXPECT_TRUE(s.WaitForObject());
  EXPECT_FALSE(s.TryWaitForObject());
  EXPECT_TRUE(s.Destroy());
}

// A waiter on another thread wakes on Release; ping-pong between two threads
// hands the signal back and forth without losing one.
TEST(XSemaphore, SignalsAcrossThreads) {
  Signal ping, pong;
  ASSERT_TRUE(ping.Init(0));
  ASSERT_TRUE(pong.Init(0));
  constexpr int kRounds = 500;
  int seen = 0;
  std::thread other([&] {
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_TRUE(ping.WaitForObject());
      ++seen;
      EXPECT_TRUE(pong.Release());
    }
  });
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_TRUE(ping.Release());
    EXPECT_TRUE(pong.WaitForObject());
    EXPECT_EQ(seen, i + 1);
  }
  other.join();
  EXPECT_TRUE(ping.Destroy());
  EXPECT_TRUE(pong.Destroy());
}

TEST(XCriticalSection, RecursiveAndExclusive) {
  XCriticalSection cs;
  cs.Enter();
  cs.Lock();
  cs.Leave();
  cs.Unlock();
  CountUnder([&] { cs.Enter(); }, [&] { cs.Leave(); });

  // A copy has a lock of its own, so it is free while the original is held.
  XCriticalSection copy(cs);
  copy = cs;
  cs.Enter();
  std::thread([&] {
    copy.Enter();
    copy.Leave();
  }).join();
  cs.Leave();
  cs.Clean();  // the destructor then does nothing more
}

}  // namespace
}  // namespace tavi
