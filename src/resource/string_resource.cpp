//===- string_resource.cpp - String resource interface and library table ---===//
#include "tavi/resource/string_resource.h"

#include "tavi/core/buffer.h"

namespace tavi {

TStringResource::~TStringResource() = default;

bool TStringResource::SetBuffer(XBuffer& buffer, int32_t id) {
  if (_SetBuffer(buffer, id)) return true;
  buffer.ResetBufferPos();
  return buffer.Add(kMissingStringText);
}

const char16_t* TStringResource::Get(int32_t id) {
  const char16_t* text = _Get(id);
  return text != nullptr ? text : kMissingStringText;
}

TStringResource* XLibStringResource = XBuiltinStringResource();

bool XSetLibStringResource(TStringResource* resource) {
  if (resource == nullptr) return false;
  XLibStringResource = resource;
  return true;
}

}  // namespace tavi
