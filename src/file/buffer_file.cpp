//===- buffer_file.cpp - Loading and saving buffers as whole files ---------===//
#include "file/internal/saving.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace tavi {

namespace {

constexpr uint32_t kNoSize = 0xFFFFFFFFu;

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
  return internal::OnNamedFile(name, mode, owner, [&](XFile& file) {
    return reading ? LoadFile(file) : SaveBuffer(file) && file._Flush();
  });
}

bool XBuffer::ExFileMsg(XString16& name, uint16_t mode, XWindow owner) {
  if (ExFile(name, mode, owner)) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), (mode & kFileRead) != 0, owner);
  return false;
}

}  // namespace tavi
