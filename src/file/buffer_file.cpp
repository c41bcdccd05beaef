//===- buffer_file.cpp - Loading and saving buffers as whole files ---------===//
#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace tavi {

namespace {

constexpr uint32_t kNoSize = 0xFFFFFFFFu;

// After a failed save in backup mode: the partial file goes and the backup takes
// its place again. Errors here are not reported; the save's own error is the cause.
void RestoreBackup(const XString16& name) {
  const uint32_t units = name.GetBufferPos() / 2;
  std::u16string backup(name.c_str(), units);
  backup += u".bck";
  if (platform::PathExists(backup.data(), static_cast<uint32_t>(backup.size())) != 0) return;
  const uint32_t kept = platform::LastError();
  platform::DeleteFile(name.c_str(), units);
  platform::RenameReplacing(backup.data(), static_cast<uint32_t>(backup.size()), name.c_str(),
                            units);
  platform::SetLastError(kept);
}

// Reads bytes from file like ReadToBuffer, except that a read fault of the file stays
// the reported cause (in both objects) instead of becoming "end of data".
bool ReadFromFile(XBuffer& buffer, XFile& file, uint32_t bytes) {
  const bool clean = file.IsOk();
  if (buffer._ReadToBuffer(file, bytes) == bytes) return true;
  if (clean && file.IsError()) {
    buffer.ImportErrorCode(file);
    return false;
  }
  buffer.SetSafeErrorCode(kErrEndOfData);
  file.ImportErrorCode(buffer);
  return false;
}

}  // namespace

bool XBuffer::LoadFile(XFile& file) {
  buffer_pos_ = current_pos_ = 0;
  const uint32_t size = file.GetSize();
  if (size == kNoSize) return false;
  return ReadFromFile(*this, file, size);
}

bool XBuffer::LoadRestOfFile(XFile& file) {
  buffer_pos_ = current_pos_ = 0;
  const uint32_t size = file.GetSize();
  if (size == kNoSize) return false;
  const uint32_t position = file.GetPos();
  if (position == kNoSize) return false;
  return ReadFromFile(*this, file, position < size ? size - position : 0);
}

bool XBuffer::ExFile(XString16& name, uint16_t mode, XWindow owner) {
  const bool reading = (mode & kFileRead) != 0;
  const bool backup = (mode & (kFileBackup | kFileWrite)) == (kFileBackup | kFileWrite);
  // Whether the open below will move an existing file to its backup.
  const bool had_file =
      backup && !reading && platform::PathExists(name.c_str(), name.GetBufferPos() / 2) == 0;
  XFile file;
  if (!file.Open(name, mode, owner)) return false;
  const bool ok = reading ? LoadFile(file) : SaveBuffer(file) && file._Flush();
  if (ok && file.Close()) return true;
  name.ImportErrorCode(file);
  file.Close();
  if (file.IsOpened()) {
    // The handle cannot be closed cleanly; let it go without its unwritten bytes.
    platform::DiscardFile(file.LeaveFile());
  }
  if (had_file) RestoreBackup(name);
  return false;
}

bool XBuffer::ExFileMsg(XString16& name, uint16_t mode, XWindow owner) {
  if (ExFile(name, mode, owner)) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), (mode & kFileRead) != 0, owner);
  return false;
}

}  // namespace tavi
