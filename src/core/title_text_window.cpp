//===- title_text_window.cpp - Window and clipboard text of titles ---------===//
//
// Thin wrappers over the user-interface table for title texts.
//
//===----------------------------------------------------------------------===//
#include <string>

#include "core/internal/ui.h"
#include "tavi/core/title_text.h"
#include "tavi/core/user_interface.h"

namespace tavi {

using internal::UI;

namespace {

// Longest window text taken, in code units: its bytes and terminator fit 32 bits.
constexpr uint32_t kMaxWindowText = 0x7FFFFFFEu;

// The title's text with a terminator: an attached text need not have one, so it is
// copied.
std::u16string Terminated(const TTitleTextBase& title) {
  if (title.text == nullptr) return std::u16string();
  return std::u16string(title.text, title.Len());
}

}  // namespace

bool TTitleTextBase::WndTextGet(XWindow window) {
  const uint32_t length = UI(&XUserInterface::get_window_text_length)(window);
  if (length > kMaxWindowText) return false;
  if (length == 0) {
    Free();
    return true;
  }
  if (!AllocBuffer(2 * length)) return false;
  const uint32_t copied = UI(&XUserInterface::get_window_text)(window, text, length + 1);
  size = 2 * (copied < length ? copied : length);
  Terminate();
  return true;
}

bool TTitleTextBase::DlgItmTextGet(XWindow dialog, int32_t item) {
  XWindow control = UI(&XUserInterface::get_dialog_item)(dialog, item);
  return control != nullptr && WndTextGet(control);
}

bool TTitleTextBase::WndTextSet(XWindow window) {
  const std::u16string copy = Terminated(*this);
  return UI(&XUserInterface::set_window_text)(window, copy.c_str());
}

bool TTitleTextBase::DlgItmTextSet(XWindow dialog, int32_t item) {
  XWindow control = UI(&XUserInterface::get_dialog_item)(dialog, item);
  return control != nullptr && WndTextSet(control);
}

uint32_t TTitleTextBase::WndGetTextLength(XWindow window) {
  return UI(&XUserInterface::get_window_text_length)(window);
}

uint32_t TTitleTextBase::WndGetTextSize(XWindow window) {
  return 2 * WndGetTextLength(window);
}

bool TTitleTextBase::CopyToClipboard(XWindow owner) {
  const std::u16string copy = Terminated(*this);
  return UI(&XUserInterface::clipboard_set)(owner, kClipboardUnicodeText, copy.c_str(),
                                            static_cast<uint32_t>(copy.size() * 2 + 2), true);
}

}  // namespace tavi
