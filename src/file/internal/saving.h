//===- saving.h - Opening, closing and backing out of a named save -*- C++ -*-===//
//
// The by-name save and load paths of XObject and XBuffer share this: open a local
// file, run the operation, close, and on failure move the error into the name and
// put an existing file's backup back in place.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/file/file.h"

namespace tavi::internal {

// OnNamedFile opens name with mode and owner, calls work(file), and closes the
// file (a close failure fails the call, since a save's last bytes go out there).
// On failure name takes the file's error (unless the open itself failed: then name
// already holds it), a handle that cannot be closed is dropped, and when mode
// writes with kFileBackup over an existing file, the partial new file is removed
// and the backup renamed back to name.
template <typename Work>
bool OnNamedFile(XString16& name, uint16_t mode, XWindow owner, Work&& work);

// The pieces the template is built of, defined in saving.cpp.
bool BackupWillBeMade(const XString16& name, uint16_t mode);
void FinishFailedSave(XString16& name, XFile& file, bool restore_backup);

template <typename Work>
bool OnNamedFile(XString16& name, uint16_t mode, XWindow owner, Work&& work) {
  const bool had_file = BackupWillBeMade(name, mode);
  XFile file;
  if (!file.Open(name, mode, owner)) return false;
  if (work(file) && file.Close()) return true;
  FinishFailedSave(name, file, had_file);
  return false;
}

}  // namespace tavi::internal
