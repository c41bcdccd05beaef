//===- file_functions.cpp - Opening files and operations on file names -----===//
#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "platform/locale.h"
#include "tavi/core/user_interface.h"
#include "tavi/file/file.h"
#include "tavi/time/calendar.h"

namespace tavi {

namespace {

uint32_t Units(const XString16& name) {
  return name.GetBufferPos() / 2;
}

uint32_t Length(const char16_t* text) {
  uint32_t n = 0;
  if (text != nullptr) {
    while (text[n] != 0) ++n;
  }
  return n;
}

// Records a failed platform call in name; false.
bool Failed(XString16& name) {
  name.SetWinLastError();
  return false;
}

// Existence test of the open steps: true when the file exists. A failed test
// records its errno in name and counts as "missing".
bool ExistsForOpen(XString16& name) {
  const int error = platform::PathExists(name.c_str(), Units(name));
  if (error == 0) return true;
  name.SetErrno(error);
  return false;
}

// Asks the user whether the existing file name may be replaced.
bool ConfirmOverwrite(const XString16& name, XWindow owner) {
  XString16 question;
  question.Add(kStrOverwriteBefore, nullptr);
  question.Add(name.c_str(), name.GetBufferPos());
  question.Add(kStrOverwriteAfter, nullptr);
  return XErrorMessage(question.c_str(), owner, static_cast<int32_t>(kMbYesNo | kMbIconQuestion)) ==
         kIdYes;
}

}  // namespace

XFileHandle XFileOpen(XString16& name, uint16_t mode, XWindow owner) {
  const bool writing = (mode & kFileWrite) != 0;
  if (writing && (mode & kFileBackup) != 0) {
    if (ExistsForOpen(name)) {
      std::u16string backup(name.c_str(), Units(name));
      backup += u".bck";
      // The rename replaces an older backup in one step, so the file is never
      // without either its old content or its backup.
      if (!platform::RenameReplacing(name.c_str(), Units(name), backup.data(),
                                     static_cast<uint32_t>(backup.size()))) {
        return Failed(name), nullptr;
      }
    }
  } else if (writing && (mode & kFileConfirm) != 0) {
    if (ExistsForOpen(name)) {
      if (!ConfirmOverwrite(name, owner)) {
        name.SetErrorCode(platform::kErrorCancelled);
        return nullptr;
      }
      if (!platform::DeleteFile(name.c_str(), Units(name))) return Failed(name), nullptr;
    }
  }

  platform::OpenRequest request;
  request.read = (mode & kFileRead) != 0;
  request.write = writing;
  request.read_only = (mode & kFileReadOnly) != 0;
  switch (mode & 3) {
    case 2:
      request.disposition = platform::kCreateAlways;
      break;
    case 3:
      request.disposition = platform::kOpenAlways;
      break;
    default:
      request.disposition = platform::kOpenExisting;
      break;
  }
  // Truncation of an existing file: "open always" becomes "truncate existing"; the
  // other dispositions become a value the platform refuses.
  if ((mode & kFileTruncate) != 0 && ExistsForOpen(name)) request.disposition |= 5;

  XFileHandle handle = platform::OpenFile(name.c_str(), Units(name), request);
  if (handle == nullptr) Failed(name);
  return handle;
}

bool XFileClose(XFileHandle handle) {
  return handle == nullptr || platform::CloseFile(handle);
}

int32_t XFileRead(XFileHandle handle, void* buffer, int32_t bytes) {
  if (handle == nullptr || bytes < 0) {
    platform::SetLastError(handle == nullptr ? platform::kErrorInvalidHandle
                                             : platform::kErrorInvalidParameter);
    return -1;
  }
  return static_cast<int32_t>(platform::ReadFile(handle, buffer, static_cast<uint32_t>(bytes)));
}

bool XFileWrite(XFileHandle handle, const void* buffer, int32_t bytes) {
  if (handle == nullptr || bytes < 0) {
    platform::SetLastError(handle == nullptr ? platform::kErrorInvalidHandle
                                             : platform::kErrorInvalidParameter);
    return false;
  }
  return platform::WriteFile(handle, buffer, static_cast<uint32_t>(bytes));
}

bool XFileExist(XString16& name) {
  const int error = platform::PathExists(name.c_str(), Units(name));
  if (error == 0) return true;
  name.SetErrno(error);
  return false;
}

bool XFileDelete(XString16& name) {
  return platform::DeleteFile(name.c_str(), Units(name)) || Failed(name);
}

bool XFileCopy(XString16& from, const char16_t* to) {
  return platform::CopyFile(from.c_str(), Units(from), to, Length(to)) || Failed(from);
}

bool XFileMove(XString16& from, const char16_t* to) {
  return platform::MoveFile(from.c_str(), Units(from), to, Length(to)) || Failed(from);
}

bool XFileCheckExtensionLen(const char16_t* name, int32_t name_length, const char16_t* extension,
                            int32_t extension_length) {
  if (name == nullptr || extension == nullptr || extension_length < 0 ||
      name_length <= extension_length) {
    return false;
  }
  return platform::CompareTextN(name + (name_length - extension_length), extension_length,
                                extension, extension_length) == 0;
}

bool XFileCheckExtension(XString16& name, const char16_t* extension, int32_t extension_bytes,
                         bool add) {
  if (extension == nullptr || extension_bytes < 0) return false;
  const auto units = static_cast<int32_t>(Units(name));
  const int32_t extension_units = extension_bytes / 2;
  if (units >= extension_units &&
      platform::CompareTextN(name.c_str() + (units - extension_units), extension_units, extension,
                             extension_units) == 0) {
    return true;
  }
  return add && name.Add(extension, static_cast<uint32_t>(extension_bytes));
}

bool XGetFileTime(const char16_t* name, uint32_t* created, uint32_t* accessed, uint32_t* written) {
  platform::OpenRequest request;
  request.read = true;
  XFileHandle file = platform::OpenFile(name, Length(name), request);
  if (file == nullptr) return false;
  XFileTime times[3];
  const bool ok = platform::FileTimes(file, times[0], times[1], times[2]);
  platform::DiscardFile(file);
  if (!ok) return false;
  uint32_t* out[3] = {created, accessed, written};
  for (int i = 0; i < 3; ++i) {
    if (out[i] == nullptr) continue;
    *out[i] = GetDateTime(times[i]);
    if (*out[i] == 0) return false;
  }
  return true;
}

}  // namespace tavi
