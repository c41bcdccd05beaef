//===- buffer_window.cpp - Window text and clipboard members of XBuffer ----===//
//
// Thin members over the host's user-interface table: window and dialog-item text,
// and clipboard data including the registered HTML format with its offset header.
//
//===----------------------------------------------------------------------===//
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "core/internal/ui.h"
#include "tavi/core/buffer.h"

namespace tavi {

using internal::UI;

namespace {

// Longest window text a buffer takes, in code units (its bytes and a terminator
// must fit a 32-bit size).
constexpr uint32_t kMaxWindowText = 0x7FFFFFFDu;

constexpr char16_t kHtmlFormatName[] = u"HTML Format";

void AppendToBuffer(void* context, const void* data, uint32_t bytes) {
  static_cast<XBuffer*>(context)->_Write(data, bytes);
}

// Finds "name:" followed by decimal digits in the header of clipboard HTML.
bool HeaderOffset(std::string_view html, std::string_view name, uint32_t& value) {
  const size_t at = html.find(name);
  if (at == std::string_view::npos) return false;
  const char* begin = html.data() + at + name.size();
  const auto result = std::from_chars(begin, html.data() + html.size(), value);
  return result.ec == std::errc() && result.ptr != begin;
}

}  // namespace

bool XBuffer::WndGetText(XWindow window) {
  const uint32_t length = UI(&XUserInterface::get_window_text_length)(window);
  if (length > kMaxWindowText) {
    SetErrorCode(kErrDoesNotFit);
    return false;
  }
  ResetBufferPos();
  if (!AllocString(length + 1)) return false;
  const uint32_t copied = UI(&XUserInterface::get_window_text)(window, _GetStringAt(0), length + 1);
  buffer_pos_ = 2 * (copied <= length ? copied : length);
  _EndAsString();
  return true;
}

bool XBuffer::WndSetText(XWindow window) {
  if (!EndAsString()) return false;
  if (!UI(&XUserInterface::set_window_text)(window, _GetStringAt(0))) {
    SetWinLastError();
    return false;
  }
  return true;
}

XWindow XBuffer::DialogItem(XWindow dialog, int32_t item) {
  XWindow control = UI(&XUserInterface::get_dialog_item)(dialog, item);
  if (control == nullptr) SetWinLastError();
  return control;
}

bool XBuffer::DlgGetItemText(XWindow dialog, int32_t item) {
  XWindow control = DialogItem(dialog, item);
  return control != nullptr && WndGetText(control);
}

bool XBuffer::DlgSetItemText(XWindow dialog, int32_t item) {
  XWindow control = DialogItem(dialog, item);
  return control != nullptr && WndSetText(control);
}

bool XBuffer::PutOnClipboard(XWindow owner, uint32_t format, uint32_t bytes, bool empty_first) {
  if (!UI(&XUserInterface::clipboard_set)(owner, format, buffer_, bytes, empty_first)) {
    SetWinLastError();
    return false;
  }
  return true;
}

bool XBuffer::CopyToClipboard(XWindow owner, uint32_t format) {
  return PutOnClipboard(owner, format, buffer_pos_, true);
}

bool XBuffer::AddClipboardData(XWindow owner, uint32_t format) {
  return PutOnClipboard(owner, format, buffer_pos_, false);
}

bool XBuffer::AddClipboardFormatName(uint32_t format) {
  char16_t name[256];
  const uint32_t n = UI(&XUserInterface::clipboard_format_name)(format, name, 256);
  if (n == 0 || n >= 256) {
    SetWinLastError();
    return false;
  }
  return Add(name, 2 * n);
}

bool XBuffer::GetHTMLFormat(XWindow owner) {
  const uint32_t format = UI(&XUserInterface::clipboard_register_format)(kHtmlFormatName);
  XBuffer raw;
  if (format == 0 || !UI(&XUserInterface::clipboard_get)(owner, format, AppendToBuffer, &raw)) {
    SetWinLastError();
    return false;
  }
  if (raw.IsError()) {
    ImportErrorCode(raw);
    return false;
  }
  // Keep the fragment when the header names a sound one, else the whole data.
  std::string_view html(static_cast<const char*>(raw.GetBuffer()), raw.GetBufferPos());
  uint32_t start = 0;
  uint32_t end = 0;
  if (HeaderOffset(html, "StartFragment:", start) && HeaderOffset(html, "EndFragment:", end) &&
      start <= end && end <= html.size()) {
    html = html.substr(start, end - start);
  }
  ResetBufferPos();
  return _Write(html.data(), static_cast<uint32_t>(html.size())) && EndAsString();
}

bool XBuffer::AddHTMLClipboardData(XWindow owner) {
  static constexpr char kPrefix[] = "<html><body>\r\n<!--StartFragment-->";
  static constexpr char kSuffix[] = "<!--EndFragment-->\r\n</body></html>";
  static constexpr char kHeader[] =
      "Version:0.9\r\nStartHTML:%010u\r\nEndHTML:%010u\r\n"
      "StartFragment:%010u\r\nEndFragment:%010u\r\n";
  // Every offset field holds ten digits, so the header's length is fixed.
  const uint64_t header = std::snprintf(nullptr, 0, kHeader, 0u, 0u, 0u, 0u);
  const uint64_t start_fragment = header + sizeof kPrefix - 1;
  const uint64_t end_fragment = start_fragment + buffer_pos_;
  const uint64_t end_html = end_fragment + sizeof kSuffix - 1;
  if (end_html > 0xFFFFFFFEu) {
    SetErrorCode(kErrTooLong);
    return false;
  }
  const uint32_t format = UI(&XUserInterface::clipboard_register_format)(kHtmlFormatName);
  if (format == 0) {
    SetWinLastError();
    return false;
  }
  XBuffer html;
  char head[160];
  std::snprintf(head, sizeof head, kHeader, static_cast<unsigned>(header),
                static_cast<unsigned>(end_html), static_cast<unsigned>(start_fragment),
                static_cast<unsigned>(end_fragment));
  const char zero = 0;
  if (!html.AllocBuffer(static_cast<uint32_t>(end_html) + 1) ||
      !html._Write(head, static_cast<uint32_t>(header)) ||
      !html._Write(kPrefix, sizeof kPrefix - 1) || !html._Write(buffer_, buffer_pos_) ||
      !html._Write(kSuffix, sizeof kSuffix - 1) || !html._Write(&zero, 1)) {
    ImportErrorCode(html);
    return false;
  }
  if (!UI(&XUserInterface::clipboard_set)(owner, format, html.GetBuffer(), html.GetBufferPos(),
                                          false)) {
    SetWinLastError();
    return false;
  }
  return true;
}

bool XBuffer::IsClipboardFormatAvailable(const uint32_t* formats) {
  for (; formats != nullptr && *formats != 0; ++formats) {
    if (UI(&XUserInterface::clipboard_has_format)(*formats)) return true;
  }
  return false;
}

bool XBuffer::IsClipboardFormatAvailable(const uint32_t* formats, uint32_t count) {
  for (uint32_t i = 0; formats != nullptr && i < count; ++i) {
    if (UI(&XUserInterface::clipboard_has_format)(formats[i])) return true;
  }
  return false;
}

bool XBuffer::IsClipboardNativeTextFormatAvailable() {
  return UI(&XUserInterface::clipboard_has_format)(kClipboardUnicodeText);
}

}  // namespace tavi
