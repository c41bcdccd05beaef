//===- errors.h - Platform error numbers and their texts -------*- C++ -*-===//
//
// Platform errors keep the Windows numbering on every system, so that a code means
// the same everywhere. This header maps C runtime errno values onto those numbers,
// keeps the calling thread's last error, and gives the texts of both kinds.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <string>

namespace tavi::platform {

// Platform error numbers the layer produces.
inline constexpr uint32_t kErrorSuccess = 0;
inline constexpr uint32_t kErrorInvalidFunction = 1;
inline constexpr uint32_t kErrorFileNotFound = 2;
inline constexpr uint32_t kErrorPathNotFound = 3;
inline constexpr uint32_t kErrorTooManyOpenFiles = 4;
inline constexpr uint32_t kErrorAccessDenied = 5;
inline constexpr uint32_t kErrorInvalidHandle = 6;
inline constexpr uint32_t kErrorNotEnoughMemory = 8;
inline constexpr uint32_t kErrorOutOfMemory = 14;
inline constexpr uint32_t kErrorNotSameDevice = 17;
inline constexpr uint32_t kErrorNoMoreFiles = 18;
inline constexpr uint32_t kErrorWriteProtect = 19;
inline constexpr uint32_t kErrorSharingViolation = 32;
inline constexpr uint32_t kErrorLockViolation = 33;
inline constexpr uint32_t kErrorHandleEof = 38;
inline constexpr uint32_t kErrorNotSupported = 50;
inline constexpr uint32_t kErrorFileExists = 80;
inline constexpr uint32_t kErrorInvalidParameter = 87;
inline constexpr uint32_t kErrorBrokenPipe = 109;
inline constexpr uint32_t kErrorDiskFull = 112;
inline constexpr uint32_t kErrorInsufficientBuffer = 122;
inline constexpr uint32_t kErrorInvalidName = 123;
inline constexpr uint32_t kErrorNegativeSeek = 131;
inline constexpr uint32_t kErrorDirNotEmpty = 145;
inline constexpr uint32_t kErrorBusy = 170;
inline constexpr uint32_t kErrorAlreadyExists = 183;
inline constexpr uint32_t kErrorFilenameExcedRange = 206;
inline constexpr uint32_t kErrorFileTooLarge = 223;
inline constexpr uint32_t kErrorDirectory = 267;
inline constexpr uint32_t kErrorNotLocked = 158;
inline constexpr uint32_t kErrorIoDevice = 1117;
inline constexpr uint32_t kErrorCancelled = 1223;
inline constexpr uint32_t kErrorNotFound = 1168;
inline constexpr uint32_t kErrorResourceNameNotFound = 1814;
inline constexpr uint32_t kErrorTimeout = 1460;

// The calling thread's last platform error.
uint32_t LastError();
void SetLastError(uint32_t code);

// ErrorFromErrno maps a C runtime errno value to its platform error number.
uint32_t ErrorFromErrno(int error);
// SetLastErrorFromErrno records the mapping of the current errno as the last error.
void SetLastErrorFromErrno();

// PlatformMessage gives the text of a platform error number; false for a number
// without a text of its own.
bool PlatformMessage(uint32_t code, std::u16string& text);
// ErrnoMessage gives the C runtime's text for an errno value; false when the runtime
// has none.
bool ErrnoMessage(int error, std::u16string& text);

}  // namespace tavi::platform
