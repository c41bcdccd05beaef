//===- string_resource.cpp - String resource interface and library table ---===//
#include "tavi/resource/string_resource.h"

#include "core/internal/ui.h"
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

namespace {

bool SetItemText(TStringResource& strings, XWindow dialog, int32_t id) {
  XWindow item = internal::UI(&XUserInterface::get_dialog_item)(dialog, id);
  return item == nullptr || internal::UI(&XUserInterface::set_window_text)(item, strings.Get(id));
}

}  // namespace

bool TStringResource::SetDlgItemsText(XWindow dialog, const int32_t* ids) {
  bool ok = true;
  for (; ids != nullptr && *ids != 0; ++ids) ok = SetItemText(*this, dialog, *ids) && ok;
  return ok;
}

bool TStringResource::SetDlgItemsText(XWindow dialog, const int32_t* ids, uint32_t count) {
  bool ok = true;
  for (uint32_t i = 0; ids != nullptr && i < count; ++i) {
    ok = SetItemText(*this, dialog, ids[i]) && ok;
  }
  return ok;
}

bool TStringResource::SetDlgItemsText(XWindow dialog, int32_t first, uint32_t count) {
  bool ok = true;
  for (uint32_t i = 0; i < count; ++i) {
    ok = SetItemText(*this, dialog, static_cast<int32_t>(static_cast<uint32_t>(first) + i)) && ok;
  }
  return ok;
}

bool XSetLibStringResource(TStringResource* resource) {
  if (resource == nullptr) return false;
  XLibStringResource = resource;
  return true;
}

}  // namespace tavi
