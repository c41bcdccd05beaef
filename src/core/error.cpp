//===- error.cpp - Error state and error messages --------------------------===//
#include "tavi/core/error.h"

#include <cerrno>
#include <string>

#include "core/internal/text_util.h"
#include "core/internal/ui.h"
#include "platform/errors.h"
#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"
#include "tavi/resource/string_resource.h"

namespace tavi {

std::atomic<int32_t> XError::InternalErrorCode{0};

XError::~XError() = default;

void XError::ImportErrorCode(const XError& other) {
  error_code_ = other.error_code_;
  error_source_ = other.error_source_;
}

void XError::SetInternalError(int32_t detail) {
  InternalErrorCode.store(detail, std::memory_order_relaxed);
  Set(kErrInternal, kErrSourcePlain);
}

void XError::SetWinLastError() {
  Set(platform::LastError(), kErrSourcePlatform);
}

void XError::SetErrno() {
  Set(static_cast<uint32_t>(errno), kErrSourceErrno);
}

namespace {

// Appends library string id through the library's string table; a missing string
// shows as the placeholder text, a failed write fails.
bool AppendLibraryString(XString16& text, uint32_t id) {
  TStringResource* table = XLibStringResource;
  if (table != nullptr) {
    if (table->_Write(text, static_cast<int32_t>(id))) return true;
    if (table->_Get(static_cast<int32_t>(id)) != nullptr) return false;
  }
  return internal::AppendText(text, kMissingStringText);
}

bool HasOwnLibraryText(uint32_t code) {
  return code == 0x20000001u || (code >= 0x20000003u && code <= 0x20000005u) ||
         (code >= 0x20000007u && code <= 0x20000014u) || code == kErrNotFound;
}

}  // namespace

bool XError::AddErrorMessage(XString16& text) {
  const uint32_t code = error_code_;
  const int32_t source = error_source_;
  // Reading the message consumes the error, whatever follows.
  error_code_ = 0;
  error_source_ = 0;

  if (source == kErrSourceErrno) {
    std::u16string message;
    if (platform::ErrnoMessage(static_cast<int>(code), message)) {
      return text._Write(message.data(), static_cast<uint32_t>(message.size() * 2));
    }
    // The fallback shows the (already cleared) code field, so it always reads 0.
    return internal::AppendText(text, u"Error (") && internal::AppendDecimal(text, error_code_) &&
           internal::AppendText(text, u")");
  }
  if (source == kErrSourceUser) return AppendLibraryString(text, kErrUser);

  if (code < kErrLibraryBase) return text.FormatMessageW(code);
  if (code == kErrInternal) {
    return AppendLibraryString(text, kErrInternal) && internal::AppendText(text, u" (") &&
           internal::AppendDecimal(text, InternalErrorCode.load(std::memory_order_relaxed)) &&
           internal::AppendText(text, u")");
  }
  if (HasOwnLibraryText(code)) return AppendLibraryString(text, code);
  if (code == kErrForeignBufferTooSmall) return AppendLibraryString(text, 0x20000002u);
  return AppendLibraryString(text, kErrUnknown);
}

bool XError::FormatErrorMessage(XIO& out) {
  XString16 message;
  if (!AddErrorMessage(message)) {
    out.ImportErrorCode(message);
    return false;
  }
  return out._Write(message.GetBuffer(), message.GetBufferPos());
}

int32_t XError::ErrorMessage(XWindow owner) {
  XString16 message;
  AddErrorMessage(message);
  return XErrorMessage(message.c_str(), owner, kMessageBoxIconError);
}

int32_t XFileErrorMessage(XError& error, const char16_t* name, uint32_t name_bytes, bool reading,
                          XWindow owner) {
  XString16 text;
  text.EmptyString();
  if (error.IsError()) {
    error.AddErrorMessage(text);
  } else {
    AppendLibraryString(text, reading ? kStrFileReadFailed : kStrFileWriteFailed);
  }
  internal::AppendText(text, u" (\"");
  if (name != nullptr) text._Write(name, name_bytes);
  internal::AppendText(text, u"\")");
  return XErrorMessage(text.c_str(), owner, kMessageBoxIconError);
}

int32_t XErrorMessage(const char16_t* text, XWindow owner, int32_t style) {
  TStringResource* table = XLibStringResource;
  const char16_t* caption = table != nullptr ? table->Get(kStrErrorCaption) : kMissingStringText;
  return internal::UI(&XUserInterface::message_box)(owner, text != nullptr ? text : u"", caption,
                                                    static_cast<uint32_t>(style));
}

}  // namespace tavi
