//===- find_file.cpp - Folder searches and walks ---------------------------===//
#include "tavi/file/find_file.h"

#include "platform/errors.h"
#include "platform/file.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace tavi {

namespace {

uint32_t Length(const char16_t* text) {
  uint32_t n = 0;
  if (text != nullptr) {
    while (text[n] != 0) ++n;
  }
  return n;
}

bool IsDotName(const char16_t* name) {
  return name[0] == u'.' && (name[1] == 0 || (name[1] == u'.' && name[2] == 0));
}

}  // namespace

XFindFile::XFindFile(const XFindFile& other)
    : XError(other), handle_(other.handle_), data_(other.data_) {
  if (handle_ != nullptr) platform::RetainSearch(handle_);
}

XFindFile& XFindFile::operator=(const XFindFile& other) {
  if (this == &other) return *this;
  if (other.handle_ != nullptr) platform::RetainSearch(other.handle_);
  if (handle_ != nullptr) FindClose();
  XError::operator=(other);
  handle_ = other.handle_;
  data_ = other.data_;
  return *this;
}

XFindFile::~XFindFile() {
  if (handle_ != nullptr) FindClose();
}

const char16_t* XFindFile::FindFirst(const char16_t* pattern) {
  if (handle_ != nullptr) FindClose();
  handle_ = platform::FindFirst(pattern, Length(pattern), data_);
  if (handle_ == nullptr) {
    SetWinLastError();
    return nullptr;
  }
  if (IsDirectory() && IsDotName(data_.name)) return FindNext();
  return data_.name;
}

const char16_t* XFindFile::FindNext() {
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return nullptr;
  }
  for (;;) {
    if (!platform::FindNext(handle_, data_)) {
      SetWinLastError();
      if (GetErrorCode() == platform::kErrorNoMoreFiles) ResetError();
      return nullptr;
    }
    if (!(IsDirectory() && IsDotName(data_.name))) return data_.name;
  }
}

bool XFindFile::FindClose() {
  if (handle_ == nullptr) return false;
  const bool ok = platform::FindClose(handle_);
  handle_ = nullptr;
  if (!ok) SetWinLastError();
  return ok;
}

const char16_t* XFindFile::FindFirstDir(const char16_t* pattern) {
  const char16_t* name = FindFirst(pattern);
  while (name != nullptr && !IsDirectory()) name = FindNext();
  return name;
}

const char16_t* XFindFile::FindNextDir() {
  const char16_t* name = FindNext();
  while (name != nullptr && !IsDirectory()) name = FindNext();
  return name;
}

const char16_t* XFindFile::FindFirstFileW(const char16_t* pattern) {
  const char16_t* name = FindFirst(pattern);
  while (name != nullptr && IsDirectory()) name = FindNext();
  return name;
}

const char16_t* XFindFile::FindNextFileW() {
  const char16_t* name = FindNext();
  while (name != nullptr && IsDirectory()) name = FindNext();
  return name;
}

bool XFindFile::ForEachDir(const char16_t* pattern, bool (*fn)(char16_t* name, const void* context),
                           const void* context) {
  for (const char16_t* name = FindFirstDir(pattern); name != nullptr; name = FindNextDir()) {
    if (!fn(data_.name, context)) return false;
  }
  return true;
}

bool XFindFile::ForEachFile(XString16& directory, const char16_t* pattern, int32_t pattern_bytes,
                            bool (*fn)(XString16* path, const void* context), bool recursive,
                            const void* context) {
  const uint32_t length = directory.GetBufferPos();
  // Cuts the working path back to the folder this walk was given.
  auto cut = [&directory, length] {
    if (directory.GetBufferPos() <= length) return;
    if (directory.GetCurrentPos() > length) directory._SetCurrentPos(length);
    directory._SetBufferPos(length);
    directory._EndAsString();
  };
  auto finish = [&cut](bool result) {
    cut();
    return result;
  };
  static constexpr char16_t kDivider[1] = {XPathDivider};

  if (recursive) {
    cut();
    if (!directory.Add(u"*")) return finish(false);
    for (const char16_t* name = FindFirstDir(directory.c_str()); name != nullptr;
         name = FindNextDir()) {
      // Links to folders are not followed: a link to a parent would never end.
      if ((data_.attributes & kFileAttributeReparse) != 0) continue;
      cut();
      if (!directory.Add(name) || !directory.Add(kDivider, 2u)) return finish(false);
      XFindFile sub;
      if (!sub.ForEachFile(directory, pattern, pattern_bytes, fn, true, context)) {
        directory.ImportErrorCode(sub);
        return finish(sub.GetErrorCode() == platform::kErrorFileNotFound);
      }
    }
  }

  cut();
  if (pattern == nullptr || pattern_bytes < 0 ||
      !directory.Add(pattern, static_cast<uint32_t>(pattern_bytes))) {
    return finish(false);
  }
  for (const char16_t* name = FindFirstFileW(directory.c_str()); name != nullptr;
       name = FindNextFileW()) {
    cut();
    if (!directory.Add(name)) return finish(false);
    if (!fn(&directory, context)) return finish(false);
  }

  cut();
  const uint32_t code = GetErrorCode();
  if (code == 0 || code == platform::kErrorFileNotFound || code == platform::kErrorPathNotFound) {
    return true;
  }
  directory.ImportErrorCode(*this);
  return false;
}

}  // namespace tavi
