//===- file.cpp - File streams and named files -----------------------------===//
#include "tavi/file/file.h"

#include "platform/errors.h"
#include "platform/file.h"

namespace tavi {

namespace {

constexpr uint32_t kNoPosition = 0xFFFFFFFFu;

}  // namespace

XFile::XFile(const XFile& other) : XIO(other), handle_(other.handle_) {
  if (handle_ != nullptr) platform::RetainFile(handle_);
}

XFile& XFile::operator=(const XFile& other) {
  if (this == &other) return *this;
  if (other.handle_ != nullptr) platform::RetainFile(other.handle_);
  if (handle_ != nullptr && !Close()) platform::DiscardFile(LeaveFile());
  XIO::operator=(other);
  handle_ = other.handle_;
  return *this;
}

XFile::~XFile() {
  if (handle_ != nullptr && !Close()) {
    // Nobody is left to retry the close: release the handle anyway.
    platform::DiscardFile(handle_);
    handle_ = nullptr;
  }
}

bool XFile::_Write(const void* data, uint32_t bytes) {
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return false;
  }
  if (platform::WriteFile(handle_, data, bytes)) return true;
  SetWinLastError();
  return false;
}

uint32_t XFile::_Read(void* data, uint32_t bytes) {
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return 0;
  }
  const int64_t n = platform::ReadFile(handle_, data, bytes);
  if (n >= 0) return static_cast<uint32_t>(n);
  SetWinLastError();
  return 0;
}

bool XFile::_UnreadChar(char16_t) {
  return MovePos(-2, 1, true) != kNoPosition;
}

bool XFile::_Flush() {
  if (handle_ == nullptr) return true;
  if (platform::FlushFile(handle_)) return true;
  SetWinLastError();
  return false;
}

bool XFile::_ShiftForward(uint32_t bytes) {
  if (bytes > 0x7FFFFFFFu) {
    SetErrorCode(kErrDoesNotFit);
    return false;
  }
  return MovePos(static_cast<int32_t>(bytes), 1, true) != kNoPosition;
}

bool XFile::Open(const char16_t* name, uint16_t mode, XWindow owner) {
  XString16 text;
  if (name != nullptr && name[0] != 0) {
    uint32_t units = 0;
    while (name[units] != 0) ++units;
    // Refers to the caller's text without copying it; the attached block is never
    // written to.
    text.AttachString(const_cast<char16_t*>(name), units * 2);
  }
  return Open(text, mode, owner);
}

bool XFile::Open(XString16& name, uint16_t mode, XWindow owner) {
  if (!Close()) return false;
  handle_ = XFileOpen(name, mode, owner);
  if (handle_ != nullptr) return true;
  ImportErrorCode(name);
  return false;
}

XFileHandle XFile::LeaveFile() {
  XFileHandle handle = handle_;
  handle_ = nullptr;
  return handle;
}

XFileHandle XFile::AssumeFile(XFile& other) {
  if (!Close()) return nullptr;
  handle_ = other.LeaveFile();
  return handle_;
}

bool XFile::Close() {
  if (handle_ == nullptr) return true;
  if (!platform::CloseFile(handle_)) {
    SetWinLastError();
    return false;
  }
  handle_ = nullptr;
  SetError(0, kErrSourcePlain);
  return true;
}

uint32_t XFile::SetPos(int32_t distance, int32_t method) {
  return MovePos(distance, method, false);
}

uint32_t XFile::MovePos(int32_t distance, int32_t method, bool keep_read_ahead) {
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return kNoPosition;
  }
  // Positions are 32-bit: a move to 4 GiB or beyond is refused before it happens.
  uint64_t base = 0;
  const bool known = method == 1   ? platform::FilePosition(handle_, base)
                     : method == 2 ? platform::FileSize(handle_, base)
                                   : true;
  if (!known) {
    SetWinLastError();
    return kNoPosition;
  }
  if (static_cast<int64_t>(base) + distance >= int64_t{kNoPosition}) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidParameter));
    return kNoPosition;
  }
  uint64_t position = 0;
  if (!platform::SeekFile(handle_, distance, method, position, keep_read_ahead)) {
    SetWinLastError();
    return kNoPosition;
  }
  return static_cast<uint32_t>(position);
}

uint32_t XFile::GetPos() {
  uint64_t position = 0;
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return kNoPosition;
  }
  if (!platform::FilePosition(handle_, position)) {
    SetWinLastError();
    return kNoPosition;
  }
  if (position >= kNoPosition) {
    SetWinError(static_cast<int32_t>(platform::kErrorFileTooLarge));
    return kNoPosition;
  }
  return static_cast<uint32_t>(position);
}

uint32_t XFile::GetSize() {
  uint64_t size = 0;
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return kNoPosition;
  }
  if (!platform::FileSize(handle_, size)) {
    SetWinLastError();
    return kNoPosition;
  }
  if (size >= kNoPosition) {
    SetWinError(static_cast<int32_t>(platform::kErrorFileTooLarge));
    return kNoPosition;
  }
  return static_cast<uint32_t>(size);
}

bool XFile::Eof() {
  const uint32_t size = GetSize();
  if (size == kNoPosition) {
    // Keep the size's error; a position that cannot be had either counts as the end.
    XError kept = *this;
    const bool no_position = GetPos() == kNoPosition;
    ImportErrorCode(kept);
    return no_position;
  }
  return GetPos() == size;
}

bool XFile::SetEndOfFile() {
  if (handle_ == nullptr) {
    SetWinError(static_cast<int32_t>(platform::kErrorInvalidHandle));
    return false;
  }
  if (platform::TruncateFile(handle_)) return true;
  SetWinLastError();
  return false;
}

// --- XNamedFile ---------------------------------------------------------------------

XNamedFile::XNamedFile(const XNamedFile& other) : XFile(other) {
  name_.Set(other.name_);
}

XNamedFile& XNamedFile::operator=(const XNamedFile& other) {
  if (this == &other) return *this;
  XFile::operator=(other);
  name_.Set(other.name_);
  return *this;
}

XNamedFile::~XNamedFile() = default;

bool XNamedFile::Open(XString16& name, uint16_t mode, XWindow owner) {
  if (!SetFileName(name)) return false;
  if (!Close()) return false;
  handle_ = XFileOpen(name, mode, owner);
  if (handle_ != nullptr) return true;
  ImportErrorCode(name);
  return false;
}

bool XNamedFile::Open(uint16_t mode, XWindow owner) {
  if (!Close()) return false;
  handle_ = XFileOpen(name_, mode, owner);
  if (handle_ != nullptr) return true;
  ImportErrorCode(name_);
  return false;
}

bool XNamedFile::SetFileName(const char16_t* text, int32_t bytes) {
  if (!Close()) return false;
  if (text == nullptr || bytes <= 0) {
    SetErrorCode(kErrTooLong);
    return false;
  }
  if (text == name_.c_str()) return true;  // the kept name itself
  name_.EmptyString();
  if (name_._Write(text, static_cast<uint32_t>(bytes))) return true;
  ImportErrorCode(name_);
  return false;
}

bool XNamedFile::SetFileName(const XString16& name) {
  return SetFileName(name.c_str(), static_cast<int32_t>(name.GetBufferPos()));
}

const char16_t* XNamedFile::GetFileName() const {
  return name_.GetBufferPos() >= 2 ? name_.c_str() : nullptr;
}

const char16_t* XNamedFile::GetFileName(int32_t& bytes) const {
  bytes = static_cast<int32_t>(name_.GetBufferPos());
  return GetFileName();
}

const char16_t* XNamedFile::GetExtension() const {
  const char16_t* name = GetFileName();
  if (name == nullptr) return nullptr;
  for (uint32_t i = name_.GetBufferPos() / 2; i-- > 0;) {
    if (name[i] == u'.') return name + i;
  }
  return nullptr;
}

const char16_t* XNamedFile::GetFileTitleW() const {
  const char16_t* name = GetFileName();
  if (name == nullptr) return nullptr;
  for (uint32_t i = name_.GetBufferPos() / 2; i-- > 0;) {
    if (name[i] == XPathDivider) return name + i;
  }
  return name;
}

}  // namespace tavi
