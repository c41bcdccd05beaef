//===- thread.cpp - XThread, XAutoThread and XWaitForThread ---------------===//
#include "tavi/thread/thread.h"

#include "core/internal/ui.h"
#include "platform/thread.h"
#include "tavi/core/user_interface.h"
#include "tavi/resource/string_resource.h"

namespace tavi {

bool XThread::Run(XThreadRoutine routine, void* context, int32_t priority) {
  XPlatformThread* thread = platform::CreateThread(routine, context);
  if (thread == nullptr) return false;
  handle_ = thread;
  platform::SetThreadPriority(handle_, priority);
  return true;
}

bool XThread::WaitForObject() {
  return platform::WaitThread(handle_, platform::kWaitInfinite) == platform::kWaitSignalled;
}

bool XThread::TryWaitForObject() {
  return TryWaitForObject(0);
}

bool XThread::TryWaitForObject(uint32_t milliseconds) {
  return platform::WaitThread(handle_, milliseconds) == platform::kWaitSignalled;
}

bool XThread::SetThreadPriority(int32_t priority) {
  return platform::SetThreadPriority(handle_, priority);
}

bool XThread::GetThreadResult(uint32_t& exitCode) {
  return platform::GetThreadExitCode(handle_, exitCode);
}

uint32_t XThread::WaitForEnd() {
  if (handle_ == nullptr ||
      platform::WaitThread(handle_, platform::kWaitInfinite) != platform::kWaitSignalled) {
    return platform::kWaitFailed;
  }
  uint32_t code;
  if (!platform::GetThreadExitCode(handle_, code)) code = 0xFFFFFFFF;
  platform::CloseThread(handle_);
  handle_ = nullptr;
  return code;
}

XAutoThread& XAutoThread::operator=(const XAutoThread& other) {
  word_ = other.word_;
  return *this;
}

bool XWaitForThread(XThread& thread, uint32_t textId, XWindow window) {
  if (!thread.TryWaitForObject()) {
    if (textId != 0) {
      const char16_t* text = XLibStringResource != nullptr
                                 ? XLibStringResource->Get(static_cast<int32_t>(textId))
                                 : kMissingStringText;
      internal::UI (&XUserInterface::set_window_text)(window, text);
    }
    if (!thread.WaitForObject()) return false;
  }
  // The exit code is read as the wait's last step; whether it could be read
  // does not change the answer.
  uint32_t code;
  thread.GetThreadResult(code);
  return true;
}

}  // namespace tavi
