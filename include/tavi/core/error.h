//===- error.h - Error state carried by streams and objects ----*- C++ -*-===//
//
// This file defines XError, the error record that every stream, buffer and
// serialisable object carries, the library's error codes, and the functions that
// turn an error into a message for the user.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <atomic>
#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

class XIO;
class XString16;

// Error sources: what an error code means.
inline constexpr int32_t kErrSourcePlain = 0;     // library code, or platform code below 0x20000000
inline constexpr int32_t kErrSourcePlatform = 1;  // platform error number (Windows numbering)
inline constexpr int32_t kErrSourceErrno = 2;     // C runtime errno value
inline constexpr int32_t kErrSourceUser = 3;      // application-defined code

// Library error codes. All have bit 29 set, so they never collide with platform codes.
inline constexpr uint32_t kErrLibraryBase = 0x20000000u;
inline constexpr uint32_t kErrNoMemory = 0x20000001u;         // allocation failed
inline constexpr uint32_t kErrEndOfData = 0x20000004u;        // input ended early or is malformed
inline constexpr uint32_t kErrCannotUnread = 0x20000005u;     // a character could not be put back
inline constexpr uint32_t kErrOptionNumber = 0x20000007u;     // option-file number refused
inline constexpr uint32_t kErrOptionText = 0x20000008u;       // option-file text or folder refused
inline constexpr uint32_t kErrConversion = 0x2000000Bu;       // text conversion or export failed
inline constexpr uint32_t kErrCheckFailed = 0x2000000Du;      // unit or container check failed
inline constexpr uint32_t kErrLoadEncoding = 0x2000000Eu;     // text load met an unknown encoding
inline constexpr uint32_t kErrSaveEncoding = 0x2000000Fu;     // text save met an unknown encoding
inline constexpr uint32_t kErrCreateDirectory = 0x20000010u;  // a folder could not be created
inline constexpr uint32_t kErrTooLong = 0x20000011u;          // too long for its field
inline constexpr uint32_t kErrDoesNotFit = 0x20000012u;       // a text does not fit its target
inline constexpr uint32_t kErrCounterLimit = 0x20000013u;     // a byte counter reached its limit
inline constexpr uint32_t kErrOutOfRange = 0x20000014u;       // position or length out of range
inline constexpr uint32_t kErrInternal = 0x20000015u;         // detail in XError::InternalErrorCode
inline constexpr uint32_t kErrNotFound = 0x20000016u;         // the item asked for was not found
inline constexpr uint32_t kErrUser = 0x20000018u;             // user error (message of source 3)
inline constexpr uint32_t kErrNoLocale = 0x20000019u;         // locale not available
inline constexpr uint32_t kErrUnknown = 0x2000001Au;          // unknown error
// A foreign code that is reported with the text of library code 0x20000002.
inline constexpr uint32_t kErrForeignBufferTooSmall = 0x80028016u;

// Caption of error message boxes and the generic file messages (library strings).
inline constexpr int32_t kStrErrorCaption = 500000101;
inline constexpr int32_t kStrFileWriteFailed = 540000001;
inline constexpr int32_t kStrFileReadFailed = 540000002;

// Message-box style of error messages (error icon).
inline constexpr int32_t kMessageBoxIconError = 16;

// XError holds an error code and the source that says what the code means.
//
// Operations of the library return a result and leave the reason for a failure
// here. The "Safe" setters change nothing while an error is pending, so the first
// cause of a sequence of operations is the one kept. The message operations
// consume the error: after them code and source are 0.
class TAVI_API XError {
 public:
  // Detail number of the latest internal error raised anywhere in the process.
  // Shared by all objects and threads; only ever overwritten, never reset.
  static std::atomic<int32_t> InternalErrorCode;

  XError() = default;
  XError(const XError& other) = default;
  XError& operator=(const XError& other) = default;
  virtual ~XError();

  // ImportErrorCode copies other's code and source into this object (overwriting).
  virtual void ImportErrorCode(const XError& other);
  // AddErrorMessage appends the message of the pending error to text and clears the
  // error (code and source become 0 whatever happens). Returns the last append's result.
  virtual bool AddErrorMessage(XString16& text);
  // ErrorMessage shows the pending error in a message box (through the user-interface
  // table) and returns the box's result. Clears the error.
  virtual int32_t ErrorMessage(XWindow owner);

  // FormatErrorMessage writes the message of the pending error to out (no terminator).
  // When the message cannot be built, out takes the failure and false is returned.
  bool FormatErrorMessage(XIO& out);

  void SetErrorCode(uint32_t code) { Set(code, kErrSourcePlain); }
  void SetSafeErrorCode(uint32_t code) {
    if (IsOk()) Set(code, kErrSourcePlain);
  }
  // SetInternalError sets code 0x20000015 and records detail in InternalErrorCode.
  void SetInternalError(int32_t detail);
  // SetSafeIntrnalError is SetInternalError when no error is pending; otherwise it
  // leaves both this object and InternalErrorCode untouched.
  void SetSafeIntrnalError(int32_t detail) {
    if (IsOk()) SetInternalError(detail);
  }
  // SetWinLastError takes the calling thread's last platform error (source 1).
  void SetWinLastError();
  void SetWinError(int32_t code) { Set(static_cast<uint32_t>(code), kErrSourcePlatform); }
  // SetErrno takes the current errno (source 2).
  void SetErrno();
  void SetErrno(int32_t code) { Set(static_cast<uint32_t>(code), kErrSourceErrno); }
  void SetSafeErrno() {
    if (IsOk()) SetErrno();
  }
  void SetUserError(uint32_t code) { Set(code, kErrSourceUser); }
  void SetSafeUserError(uint32_t code) {
    if (IsOk()) Set(code, kErrSourceUser);
  }
  void SetError(uint32_t code, int32_t source) { Set(code, source); }

  uint32_t GetErrorCode() const { return error_code_; }
  int32_t GetErrorSource() const { return error_source_; }
  // GetUserError returns the code of a user error (source 3), else 0.
  uint32_t GetUserError() const { return error_source_ == kErrSourceUser ? error_code_ : 0; }
  bool IsError() const { return error_code_ != 0; }
  bool IsOk() const { return error_code_ == 0; }
  // ResetError clears the code but keeps the source: IsOk() becomes true while
  // GetErrorSource() still tells where the last error came from.
  void ResetError() { error_code_ = 0; }

 private:
  void Set(uint32_t code, int32_t source) {
    error_code_ = code;
    error_source_ = source;
  }

  uint32_t error_code_ = 0;
  int32_t error_source_ = 0;
};

// XFileErrorMessage shows a file error in a message box: error's message (which it
// clears) or, without a pending error, the generic read or write failure text, then
// ` ("name")` where name is `name_bytes` bytes of name. Returns the box's result.
TAVI_API int32_t XFileErrorMessage(XError& error, const char16_t* name, uint32_t name_bytes,
                                   bool reading, XWindow owner);

// XErrorMessage shows text in a message box captioned with the library's error
// caption, through the user-interface table; returns the box's result.
TAVI_API int32_t XErrorMessage(const char16_t* text, XWindow owner, int32_t style);

}  // namespace tavi
