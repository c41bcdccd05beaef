//===- string_resource.cpp - String resource interface and library table ---===//
#include "tavi/resource/string_resource.h"

#include "tavi/core/buffer.h"
#include "tavi/core/title_text.h"

namespace tavi {

TStringResource::~TStringResource() = default;

bool TStringResource::SetBuffer(XBuffer& buffer, int32_t id) {
  if (_SetBuffer(buffer, id)) return true;
  buffer.ResetBufferPos();
  return buffer.Add(kMissingStringText);
}

bool TStringResource::Attach(TTitleTextBase& title, int32_t id) {
  if (_Attach(title, id)) return true;
  return title.Set(kMissingStringText, sizeof kMissingStringText - 2, true);
}

const char16_t* TStringResource::Get(int32_t id) {
  const char16_t* text = _Get(id);
  return text != nullptr ? text : kMissingStringText;
}

bool XSetLibStringResource(TStringResource* resource) {
  if (resource == nullptr) return false;
  XLibStringResource = resource;
  return true;
}

}  // namespace tavi
