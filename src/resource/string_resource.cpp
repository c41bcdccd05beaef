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

// The three ways of naming strings: a zero-terminated list, a list and a count, or a
// first number and a count.
struct IdList {
  enum class Kind { kTerminated, kCounted, kRange } kind;
  const int32_t* ids;
  int32_t first;
  uint32_t count;

  // Calls step(id) for each ID in order; true when every call returned true. With
  // stop_on_failure the walk ends at the first false.
  template <typename Step>
  bool ForEach(Step step, bool stop_on_failure) const {
    bool ok = true;
    auto visit = [&](int32_t id) {
      if (step(id)) return true;
      ok = false;
      return !stop_on_failure;
    };
    switch (kind) {
      case Kind::kTerminated:
        for (const int32_t* p = ids; p != nullptr && *p != 0; ++p)
          if (!visit(*p)) break;
        break;
      case Kind::kCounted:
        for (uint32_t i = 0; ids != nullptr && i < count; ++i)
          if (!visit(ids[i])) break;
        break;
      case Kind::kRange:
        // The range wraps like the unsigned numbers it is counted in.
        for (uint32_t i = 0; i < count; ++i)
          if (!visit(static_cast<int32_t>(static_cast<uint32_t>(first) + i))) break;
        break;
    }
    return ok;
  }
};

IdList Terminated(const int32_t* ids) {
  return {IdList::Kind::kTerminated, ids, 0, 0};
}
IdList Counted(const int32_t* ids, uint32_t count) {
  return {IdList::Kind::kCounted, ids, 0, count};
}
IdList Range(int32_t first, uint32_t count) {
  return {IdList::Kind::kRange, nullptr, first, count};
}

bool SetItemText(TStringResource& strings, XWindow dialog, int32_t id) {
  XWindow item = internal::UI(&XUserInterface::get_dialog_item)(dialog, id);
  return item == nullptr || internal::UI(&XUserInterface::set_window_text)(item, strings.Get(id));
}

bool SetDlgItems(TStringResource& strings, XWindow dialog, const IdList& list) {
  return list.ForEach([&](int32_t id) { return SetItemText(strings, dialog, id); }, false);
}

bool SetMenu(TStringResource& strings, XMenu menu, const IdList& list) {
  const auto set = internal::UI(&XUserInterface::menu_set_item_text);
  return list.ForEach([&](int32_t id) { return set(menu, id, strings.Get(id)); }, false);
}

bool FillCombo(TStringResource& strings, XWindow combo, const IdList& list, bool reset) {
  if (reset && !internal::UI(&XUserInterface::combo_reset)(combo)) return false;
  const auto add = internal::UI(&XUserInterface::combo_add_string);
  return list.ForEach([&](int32_t id) { return add(combo, strings.Get(id)); }, true);
}

}  // namespace

bool TStringResource::SetDlgItemsText(XWindow dialog, const int32_t* ids) {
  return SetDlgItems(*this, dialog, Terminated(ids));
}

bool TStringResource::SetDlgItemsText(XWindow dialog, const int32_t* ids, uint32_t count) {
  return SetDlgItems(*this, dialog, Counted(ids, count));
}

bool TStringResource::SetDlgItemsText(XWindow dialog, int32_t first, uint32_t count) {
  return SetDlgItems(*this, dialog, Range(first, count));
}

bool TStringResource::SetMenuStrings(XMenu menu, const int32_t* ids) {
  return SetMenu(*this, menu, Terminated(ids));
}

bool TStringResource::SetMenuStrings(XMenu menu, const int32_t* ids, uint32_t count) {
  return SetMenu(*this, menu, Counted(ids, count));
}

bool TStringResource::SetMenuStrings(XMenu menu, int32_t first, uint32_t count) {
  return SetMenu(*this, menu, Range(first, count));
}

bool TStringResource::SetComboBoxList(XWindow combo, const int32_t* ids, bool reset) {
  return FillCombo(*this, combo, Terminated(ids), reset);
}

bool TStringResource::SetComboBoxList(XWindow combo, const int32_t* ids, uint32_t count,
                                      bool reset) {
  return FillCombo(*this, combo, Counted(ids, count), reset);
}

bool TStringResource::SetComboBoxList(XWindow combo, int32_t first, uint32_t count, bool reset) {
  return FillCombo(*this, combo, Range(first, count), reset);
}

bool XSetLibStringResource(TStringResource* resource) {
  if (resource == nullptr) return false;
  XLibStringResource = resource;
  return true;
}

}  // namespace tavi
