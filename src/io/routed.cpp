//===- routed.cpp - Forwarding filter base, counter and tee ----------------===//
#include "tavi/io/routed.h"

namespace tavi {

XRoutedIO::~XRoutedIO() = default;

XIO* XRoutedIO::Next() {
  if (next_ == nullptr) SetInternalError(kInternalNoNextStream);
  return next_;
}

bool XRoutedIO::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (next->_Write(data, bytes)) return true;
  ImportErrorCode(*next);
  return false;
}

uint32_t XRoutedIO::_Read(void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return 0;
  const uint32_t n = next->_Read(data, bytes);
  if (n == 0) ImportErrorCode(*next);
  return n;
}

bool XRoutedIO::_ReadChar(char16_t& c) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (next->_ReadChar(c)) return true;
  ImportErrorCode(*next);
  return false;
}

bool XRoutedIO::_UnreadChar(char16_t c) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (next->_UnreadChar(c)) return true;
  ImportErrorCode(*next);
  return false;
}

bool XRoutedIO::_Flush() {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (next->_Flush()) return true;
  ImportErrorCode(*next);
  return false;
}

bool XRoutedIO::_ShiftForward(uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (next->_ShiftForward(bytes)) return true;
  ImportErrorCode(*next);
  return false;
}

bool XRoutedIO::Hook(XRoutedIO* previous) {
  next_ = previous->next_;
  previous->next_ = this;
  return true;
}

bool XRoutedIO::BreakHook(XRoutedIO* previous) {
  previous->next_ = next_;
  next_ = nullptr;
  return true;
}

XCounterIO::~XCounterIO() = default;

bool XCounterIO::_Write(const void* data, uint32_t bytes) {
  if (bytes > UINT64_MAX - bytes_written) {
    SetErrorCode(kErrCounterLimit);
    return false;
  }
  bytes_written += bytes;
  return XRoutedIO::_Write(data, bytes);
}

uint32_t XCounterIO::_Read(void* data, uint32_t bytes) {
  const uint32_t n = XRoutedIO::_Read(data, bytes);
  if (n == 0) return 0;
  if (n > UINT64_MAX - bytes_read) {
    SetErrorCode(kErrCounterLimit);
    return 0;
  }
  bytes_read += n;
  return n;
}

XDoubleOutIO::~XDoubleOutIO() = default;

bool XDoubleOutIO::_Write(const void* data, uint32_t bytes) {
  if (second_ == nullptr) {
    SetInternalError(kInternalNoNextStream);
    return false;
  }
  if (!XRoutedIO::_Write(data, bytes)) return false;
  if (second_->_Write(data, bytes)) return true;
  ImportErrorCode(*second_);
  return false;
}

bool XDoubleOutIO::_Flush() {
  if (second_ == nullptr) {
    SetInternalError(kInternalNoNextStream);
    return false;
  }
  if (!XRoutedIO::_Flush()) return false;
  if (second_->_Flush()) return true;
  ImportErrorCode(*second_);
  return false;
}

}  // namespace tavi
