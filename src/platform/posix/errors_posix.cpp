//===- errors_posix.cpp - errno mapping and error texts on POSIX -----------===//
#include <cerrno>
#include <cstring>
#include <string>

#include "platform/errors.h"
#include "platform/text.h"
#include "tavi/core/user_interface.h"

namespace tavi::platform {

namespace {

thread_local uint32_t t_last_error = 0;

struct ErrnoMapping {
  int error;
  uint32_t code;
};

constexpr ErrnoMapping kErrnoMap[] = {
    {EPERM, kErrorAccessDenied},
    {ENOENT, kErrorFileNotFound},
    {EIO, kErrorIoDevice},
    {ENXIO, kErrorFileNotFound},
    {E2BIG, kErrorInvalidParameter},
    {EBADF, kErrorInvalidHandle},
    {EAGAIN, kErrorBusy},
    {ENOMEM, kErrorNotEnoughMemory},
    {EACCES, kErrorAccessDenied},
    {EFAULT, kErrorInvalidParameter},
    {EBUSY, kErrorBusy},
    {EEXIST, kErrorAlreadyExists},
    {EXDEV, kErrorNotSameDevice},
    {ENODEV, kErrorPathNotFound},
    {ENOTDIR, kErrorPathNotFound},
    {EISDIR, kErrorAccessDenied},
    {EINVAL, kErrorInvalidParameter},
    {ENFILE, kErrorTooManyOpenFiles},
    {EMFILE, kErrorTooManyOpenFiles},
    {ETXTBSY, kErrorSharingViolation},
    {EFBIG, kErrorDiskFull},
    {ENOSPC, kErrorDiskFull},
    {ESPIPE, kErrorInvalidParameter},
    {EROFS, kErrorWriteProtect},
    {EPIPE, kErrorBrokenPipe},
    {ENAMETOOLONG, kErrorFilenameExcedRange},
    {ENOTEMPTY, kErrorDirNotEmpty},
    {ELOOP, kErrorInvalidName},
    {ENOSYS, kErrorNotSupported},
    {ENOTSUP, kErrorNotSupported},
    {ETIMEDOUT, kErrorTimeout},
    {ECANCELED, kErrorCancelled},
    {EDQUOT, kErrorDiskFull},
};

struct MessageEntry {
  uint32_t code;
  const char16_t* text;
};

// Texts of the platform error numbers this layer can produce, sorted by number.
// Several end in a line break, as system messages do; callers strip them.
constexpr MessageEntry kMessages[] = {
    {kErrorSuccess, u"The operation completed successfully.\r\n"},
    {kErrorInvalidFunction, u"Incorrect function.\r\n"},
    {kErrorFileNotFound, u"The system cannot find the file specified.\r\n"},
    {kErrorPathNotFound, u"The system cannot find the path specified.\r\n"},
    {kErrorTooManyOpenFiles, u"The system cannot open the file.\r\n"},
    {kErrorAccessDenied, u"Access is denied.\r\n"},
    {kErrorInvalidHandle, u"The handle is invalid.\r\n"},
    {kErrorNotEnoughMemory,
     u"Not enough memory resources are available to process this command.\r\n"},
    {kErrorOutOfMemory,
     u"Not enough memory resources are available to complete this operation.\r\n"},
    {kErrorNotSameDevice, u"The system cannot move the file to a different disk drive.\r\n"},
    {kErrorNoMoreFiles, u"There are no more files.\r\n"},
    {kErrorWriteProtect, u"The media is write protected.\r\n"},
    {kErrorSharingViolation,
     u"The process cannot access the file because it is being used by another process.\r\n"},
    {kErrorLockViolation,
     u"The process cannot access the file because another process has locked a portion of the "
     u"file.\r\n"},
    {kErrorHandleEof, u"Reached the end of the file.\r\n"},
    {kErrorNotSupported, u"The request is not supported.\r\n"},
    {kErrorFileExists, u"The file exists.\r\n"},
    {kErrorInvalidParameter, u"The parameter is incorrect.\r\n"},
    {kErrorBrokenPipe, u"The pipe has been ended.\r\n"},
    {kErrorDiskFull, u"There is not enough space on the disk.\r\n"},
    {kErrorInsufficientBuffer, u"The data area passed to a system call is too small.\r\n"},
    {kErrorInvalidName, u"The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {kErrorNegativeSeek,
     u"An attempt was made to move the file pointer before the beginning of the file.\r\n"},
    {kErrorDirNotEmpty, u"The directory is not empty.\r\n"},
    {kErrorNotLocked, u"The segment is already unlocked.\r\n"},
    {kErrorBusy, u"The requested resource is in use.\r\n"},
    {kErrorAlreadyExists, u"Cannot create a file when that file already exists.\r\n"},
    {kErrorFilenameExcedRange, u"The filename or extension is too long.\r\n"},
    {kErrorFileTooLarge, u"The file size exceeds the limit allowed and cannot be saved.\r\n"},
    {kErrorDirectory, u"The directory name is invalid.\r\n"},
    {kErrorIoDevice, u"The request could not be performed because of an I/O device error.\r\n"},
    {kErrorNotFound, u"Element not found.\r\n"},
    {kErrorCancelled, u"The operation was canceled by the user.\r\n"},
    {kErrorTimeout, u"This operation returned because the timeout period expired.\r\n"},
    {kErrorResourceNameNotFound,
     u"The specified resource name cannot be found in the image file.\r\n"},
};

}  // namespace

uint32_t LastError() {
  return t_last_error;
}

void SetLastError(uint32_t code) {
  t_last_error = code;
}

uint32_t ErrorFromErrno(int error) {
  if (error == 0) return kErrorSuccess;
  for (const ErrnoMapping& m : kErrnoMap) {
    if (m.error == error) return m.code;
  }
  return kErrorInvalidFunction;
}

void SetLastErrorFromErrno() {
  SetLastError(ErrorFromErrno(errno));
}

bool PlatformMessage(uint32_t code, std::u16string& text) {
  for (const MessageEntry& m : kMessages) {
    if (m.code == code) {
      text = m.text;
      return true;
    }
  }
  return false;
}

bool ErrnoMessage(int error, std::u16string& text) {
  char buffer[256];
  // The XSI strerror_r returns 0 on success; the GNU one returns the text.
#if defined(__GLIBC__) && defined(_GNU_SOURCE)
  errno = 0;
  const char* message = strerror_r(error, buffer, sizeof buffer);
  if (message == nullptr) return false;
  std::string unknown = "Unknown error " + std::to_string(error);
  if (unknown == message) return false;
#else
  if (strerror_r(error, buffer, sizeof buffer) != 0) return false;
  const char* message = buffer;
#endif
  text = Utf8ToUtf16(message, std::strlen(message));
  return true;
}

}  // namespace tavi::platform

namespace tavi {

void XSetLastError(uint32_t code) {
  platform::SetLastError(code);
}

uint32_t XGetLastError() {
  return platform::LastError();
}

}  // namespace tavi
