//===- saving.cpp - Backing out of a failed named save ---------------------===//
#include "file/internal/saving.h"

#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "tavi/core/string.h"

namespace tavi::internal {

bool BackupWillBeMade(const XString16& name, uint16_t mode) {
  if ((mode & (kFileBackup | kFileWrite)) != (kFileBackup | kFileWrite)) return false;
  if (mode & kFileRead) return false;
  return platform::PathExists(name.c_str(), name.GetBufferPos() / 2) == 0;
}

void FinishFailedSave(XString16& name, XFile& file, bool restore_backup) {
  name.ImportErrorCode(file);
  file.Close();
  if (file.IsOpened()) {
    // The handle cannot be closed cleanly; let it go without its unwritten bytes.
    platform::DiscardFile(file.LeaveFile());
  }
  if (!restore_backup) return;
  // The partial file goes and the backup takes its place again. Errors here are not
  // reported: the save's own error is the cause.
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

}  // namespace tavi::internal
