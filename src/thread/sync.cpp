//===- sync.cpp - XMutex, XSemaphore and XCriticalSection -----------------===//
#include "tavi/thread/sync.h"

#include <condition_variable>
#include <mutex>
#include <new>

#include "platform/thread.h"

namespace tavi {

// --- XMutex -------------------------------------------------------------------

XMutex::XMutex(const XMutex& other) : handle_(other.handle_) {
  platform::RetainMutex(handle_);
}

XMutex& XMutex::operator=(const XMutex& other) {
  if (handle_ != other.handle_) {
    platform::RetainMutex(other.handle_);
    platform::CloseMutex(handle_);
    handle_ = other.handle_;
  }
  return *this;
}

XMutex::~XMutex() {
  platform::CloseMutex(handle_);
}

bool XMutex::Init() {
  XPlatformMutex* mutex = platform::CreateMutex();
  if (mutex == nullptr) return false;
  handle_ = mutex;
  return true;
}

bool XMutex::WaitForObject() {
  return _WaitForObject() == kWaitObject0;
}

bool XMutex::TryWaitForObject() {
  return platform::WaitMutex(handle_, 0) == kWaitObject0;
}

uint32_t XMutex::_WaitForObject() {
  return platform::WaitMutex(handle_, platform::kWaitInfinite);
}

bool XMutex::Release() {
  return platform::ReleaseMutex(handle_);
}

bool XMutex::Destroy() {
  const bool closed = platform::CloseMutex(handle_);
  handle_ = nullptr;
  return closed;
}

// --- XSemaphore ---------------------------------------------------------------

struct XPlatformSemaphore {
  std::mutex lock;
  std::condition_variable raised;
  bool signalled = false;
};

bool XSemaphore::Init(int32_t initialCount) {
  if (initialCount < 0 || initialCount > 1) return false;
  auto* semaphore = new (std::nothrow) XPlatformSemaphore;
  if (semaphore == nullptr) return false;
  semaphore->signalled = initialCount == 1;
  handle_ = semaphore;
  return true;
}

bool XSemaphore::WaitForObject() {
  if (handle_ == nullptr) return false;
  std::unique_lock<std::mutex> hold(handle_->lock);
  handle_->raised.wait(hold, [this] { return handle_->signalled; });
  handle_->signalled = false;
  return true;
}

bool XSemaphore::TryWaitForObject() {
  if (handle_ == nullptr) return false;
  std::lock_guard<std::mutex> hold(handle_->lock);
  if (!handle_->signalled) return false;
  handle_->signalled = false;
  return true;
}

bool XSemaphore::Release() {
  if (handle_ == nullptr) return false;
  {
    std::lock_guard<std::mutex> hold(handle_->lock);
    if (handle_->signalled) return false;  // the count is at its maximum
    handle_->signalled = true;
  }
  handle_->raised.notify_one();
  return true;
}

bool XSemaphore::Destroy() {
  if (handle_ == nullptr) return false;
  delete handle_;
  handle_ = nullptr;
  return true;
}

// --- XCriticalSection ---------------------------------------------------------

namespace {

using RecursiveLock = std::recursive_mutex;
static_assert(sizeof(RecursiveLock) <= 64);
static_assert(alignof(RecursiveLock) <= alignof(std::max_align_t));

RecursiveLock& LockIn(unsigned char* record) {
  return *std::launder(reinterpret_cast<RecursiveLock*>(record));
}

}  // namespace

XCriticalSection::XCriticalSection() {
  new (record_) RecursiveLock;
  live_ = true;
}

XCriticalSection::XCriticalSection(const XCriticalSection&) : XCriticalSection() {}

XCriticalSection& XCriticalSection::operator=(const XCriticalSection&) {
  return *this;
}

XCriticalSection::~XCriticalSection() {
  Clean();
}

void XCriticalSection::Enter() {
  LockIn(record_).lock();
}

void XCriticalSection::Leave() {
  LockIn(record_).unlock();
}

void XCriticalSection::Clean() {
  if (!live_) return;
  LockIn(record_).~RecursiveLock();
  live_ = false;
}

}  // namespace tavi
