//===- buffer_pack.cpp - Buffers saved and loaded as packed containers -----===//
#include "file/internal/saving.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/pack/container.h"

namespace tavi {

bool XBuffer::WriteBufferEx(XIO& target, uint32_t flags, uint32_t param, const char16_t* password) {
  strXPackRecord request;
  request.flags = flags;
  request.stream = &target;
  request.password = password;
  request.data = buffer_;
  request.size_low = buffer_pos_;
  request.methods = param;
  return XPack(&request);
}

bool XBuffer::ReadToBufferEx(XIO& source, uint32_t flags, const char16_t* password) {
  strXUnpackRecord request;
  request.flags = flags;
  request.stream = &source;
  request.password = password;
  request.output = this;
  return XPack(&request);
}

bool XBuffer::SaveFileEx(XString16& name, uint32_t flags, uint32_t param, const char16_t* password,
                         uint16_t mode, XWindow owner) {
  return internal::OnNamedFile(
      name, mode, owner, [&](XFile& file) { return WriteBufferEx(file, flags, param, password); });
}

bool XBuffer::LoadFileEx(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode) {
  return internal::OnNamedFile(name, mode, nullptr, [&](XFile& file) {
    buffer_pos_ = current_pos_ = 0;
    return ReadToBufferEx(file, flags, password);
  });
}

bool XBuffer::SaveFileExMsg(XString16& name, uint32_t flags, uint32_t param,
                            const char16_t* password, uint16_t mode, XWindow owner) {
  if (SaveFileEx(name, flags, param, password, mode, owner)) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), false, owner);
  return false;
}

bool XBuffer::LoadFileExMsg(XString16& name, uint32_t flags, const char16_t* password,
                            uint16_t mode, XWindow owner) {
  if (LoadFileEx(name, flags, password, mode)) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), true, owner);
  return false;
}

}  // namespace tavi
