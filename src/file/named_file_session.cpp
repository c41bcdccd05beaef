//===- named_file_session.cpp - The frame of by-name file members ----------===//
#include "file/internal/named_file_session.h"

#include <string>

#include "platform/errors.h"
#include "platform/file.h"

namespace tavi::internal {

namespace {

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

}  // namespace

NamedFileSession::NamedFileSession(XString16& name, uint16_t mode)
    : name_(name), mode_(mode), had_file_(false) {
  const bool backup = (mode & (kFileBackup | kFileWrite)) == (kFileBackup | kFileWrite);
  had_file_ =
      backup && !Reading() && platform::PathExists(name.c_str(), name.GetBufferPos() / 2) == 0;
}

bool NamedFileSession::Finish(bool ok) {
  if (ok && file_.Close()) return true;
  name_.ImportErrorCode(file_);
  file_.Close();
  if (file_.IsOpened()) {
    // The handle cannot be closed cleanly; let it go without its unwritten bytes.
    platform::DiscardFile(file_.LeaveFile());
  }
  if (had_file_) RestoreBackup(name_);
  return false;
}

}  // namespace tavi::internal
