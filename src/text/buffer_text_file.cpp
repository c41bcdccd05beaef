//===- buffer_text_file.cpp - XBuffer's text-file members ------------------===//
#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/text/code_page.h"
#include "text/internal/text_convert.h"

namespace tavi {

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

bool XBuffer::SaveTextFile(XFile& file, uint16_t file_format, uint16_t buffer_format) {
  if (!text_internal::WriteText(file, _GetBufferAt(0), GetBufferPos(), file_format, buffer_format))
    return false;
  return file._Flush();
}

uint16_t XBuffer::LoadTextFile(XFile& file, uint16_t source_format, uint16_t buffer_format) {
  if (!LoadFile(file)) return 0;
  return text_internal::ConvertLoadedText(*this, source_format, buffer_format, file);
}

uint16_t XBuffer::ExTextFile(XString16& name, uint16_t format, uint16_t buffer_format,
                             uint16_t mode, XWindow owner) {
  const bool reading = (mode & kFileRead) != 0;
  const bool backup = (mode & (kFileBackup | kFileWrite)) == (kFileBackup | kFileWrite);
  const bool had_file =
      backup && !reading && platform::PathExists(name.c_str(), name.GetBufferPos() / 2) == 0;
  if (!reading && format == 0)
    format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageOem, false);
  XFile file;
  if (!file.Open(name, mode, owner)) return 0;
  uint16_t result = 0;
  if (reading) {
    result = LoadTextFile(file, format, buffer_format);
  } else if (SaveTextFile(file, format, buffer_format)) {
    result = format;
  }
  if (result != 0 && file.Close()) return result;
  name.ImportErrorCode(file);
  file.Close();
  if (file.IsOpened()) {
    // The handle cannot be closed cleanly; let it go without its unwritten bytes.
    platform::DiscardFile(file.LeaveFile());
  }
  if (had_file) RestoreBackup(name);
  return 0;
}

uint16_t XBuffer::ExTextFileMsg(XString16& name, uint16_t format, uint16_t buffer_format,
                                uint16_t mode, XWindow owner) {
  const uint16_t result = ExTextFile(name, format, buffer_format, mode, owner);
  if (result == 0)
    XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), (mode & kFileRead) != 0, owner);
  return result;
}

}  // namespace tavi
