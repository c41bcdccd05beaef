//===- buffer_text_file.cpp - XBuffer's text-file members ------------------===//
#include "file/internal/saving.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/text/code_page.h"
#include "text/internal/text_convert.h"

namespace tavi {

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
  if (!reading && format == 0)
    format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageOem, false);
  uint16_t result = 0;
  const bool ok = internal::OnNamedFile(name, mode, owner, [&](XFile& file) {
    if (reading) {
      result = LoadTextFile(file, format, buffer_format);
    } else if (SaveTextFile(file, format, buffer_format)) {
      result = format;
    }
    return result != 0;
  });
  return ok ? result : 0;
}

uint16_t XBuffer::ExTextFileMsg(XString16& name, uint16_t format, uint16_t buffer_format,
                                uint16_t mode, XWindow owner) {
  const uint16_t result = ExTextFile(name, format, buffer_format, mode, owner);
  if (result == 0)
    XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), (mode & kFileRead) != 0, owner);
  return result;
}

}  // namespace tavi
