//===- local_buffer.cpp - Buffer over local memory and edit controls -------===//
#include "tavi/core/local_buffer.h"

#include <cstring>

#include "core/internal/ui.h"

namespace tavi {

using internal::UI;

namespace {

constexpr int32_t kDetachWithoutHandle = 1001;
constexpr int32_t kGiveWithoutHandle = 1002;
// Room kept after the text of a control's block, as for an owned block.
constexpr uint32_t kSpareBytes = 4;

}  // namespace

WLocalBuffer::~WLocalBuffer() {
  if (!GetBufferAttached()) FreeBuffer();
}

bool WLocalBuffer::_BufferRealloc(uint32_t size) {
  XLocalMemory handle;
  if (handle_ == nullptr) {
    handle = XLocalAlloc(kLocalMoveable, size + kSpareBytes);
  } else {
    XLocalUnlock(handle_);
    handle = XLocalReAlloc(handle_, size + kSpareBytes, kLocalMoveable);
    if (handle == nullptr) handle = handle_;  // unchanged; relocked below
  }
  void* block = handle != nullptr ? XLocalLock(handle) : nullptr;
  if (handle == nullptr || block == nullptr || XLocalSize(handle) < size + kSpareBytes) {
    SetWinLastError();
    if (handle_ == nullptr && handle != nullptr) XLocalFree(handle);
    _SetBlock(handle_ != nullptr ? block : nullptr);
    return false;
  }
  handle_ = handle;
  _SetBlock(block);
  return true;
}

void WLocalBuffer::_BufferFree() {
  if (handle_ == nullptr) return;
  XLocalUnlock(handle_);
  XLocalFree(handle_);
  handle_ = nullptr;
  _SetBlock(nullptr);
}

bool WLocalBuffer::ShareTextHandle(XWindow edit, eShareTextHandle mode) {
  FreeBuffer();
  handle_ = nullptr;
  const uint32_t length = UI(&XUserInterface::get_window_text_length)(edit);
  if (length == 0) return UI(&XUserInterface::is_window)(edit);
  if (length > 0x7FFFFFF0u) {
    SetErrorCode(kErrDoesNotFit);
    return false;
  }
  const uint32_t bytes = 2 * length;
  XLocalMemory handle = UI(&XUserInterface::edit_get_handle)(edit);
  if (handle == nullptr) {
    SetWinLastError();
    return false;
  }
  // A control's block holds its text and terminator; make sure the spare bytes that
  // every owned block has are there too, whatever the host gave.
  if (XLocalSize(handle) < bytes + kSpareBytes) {
    XLocalMemory grown =
        XLocalReAlloc(handle, bytes + kSpareBytes, kLocalMoveable | kLocalZeroInit);
    if (grown == nullptr) {
      SetWinLastError();
      return false;
    }
    if (grown != handle && !UI(&XUserInterface::edit_set_handle)(edit, grown)) {
      SetWinLastError();
      return false;
    }
    handle = grown;
  }
  void* block = XLocalLock(handle);
  if (block == nullptr) {
    SetWinLastError();
    return false;
  }
  handle_ = handle;
  _SetBlock(block);
  _SetAllocated(bytes);
  _SetBufferPos(bytes);
  _SetCurrentPos(0);
  while (GetBufferPos() > 2 && *_GetStringAt(GetBufferPos() / 2 - 1) == 0)
    _SetBufferPos(GetBufferPos() - 2);
  _SetAttached(mode != kShareTextOwn);
  if (mode == kShareTextTake) {
    XLocalMemory fresh = XLocalAlloc(kLocalMoveable, 0);
    if (fresh == nullptr || !UI(&XUserInterface::edit_set_handle)(edit, fresh)) {
      SetWinLastError();
      XLocalFree(fresh);
      return false;
    }
  }
  return true;
}

bool WLocalBuffer::DetachTextHandle() {
  if (GetBufferAttached() && handle_ != nullptr) {
    XLocalUnlock(handle_);
    handle_ = nullptr;
    DiscardBuffer();
    return true;
  }
  if (GetBufferSize() == 0) return !GetBufferAttached();
  SetInternalError(kDetachWithoutHandle);
  return false;
}

bool WLocalBuffer::GiveTextHandle(XWindow edit, bool redraw) {
  if (handle_ == nullptr) {
    SetInternalError(kGiveWithoutHandle);
    return false;
  }
  if (!GetBufferAttached()) _EndAsString();
  if (!XLocalUnlock(handle_) && XGetLastError() != 0) {
    SetWinLastError();
    return false;
  }
  XLocalMemory present = UI(&XUserInterface::edit_get_handle)(edit);
  if (present == handle_) {
    XLocalLock(handle_);
    return false;
  }
  if (!UI(&XUserInterface::edit_set_handle)(edit, handle_)) {
    SetWinLastError();
    XLocalLock(handle_);
    return false;
  }
  if (present != nullptr) XLocalFree(present);
  handle_ = nullptr;
  DiscardBuffer();
  if (redraw) UI (&XUserInterface::invalidate_window)(edit, true);
  return true;
}

}  // namespace tavi
