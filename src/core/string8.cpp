//===- string8.cpp - Terminated 8-bit string -------------------------------===//
//
// 8-bit text meets UTF-16 (window text, comparison, case mapping) through the
// user's ANSI code page.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>

#include "core/internal/ui.h"
#include "platform/locale.h"
#include "tavi/core/string.h"

namespace tavi {

namespace {

std::u16string Widen(const char* text) {
  std::u16string wide;
  for (; text != nullptr && *text != 0; ++text)
    wide += platform::AnsiToWide(static_cast<unsigned char>(*text));
  return wide;
}

// Code units without a byte in the code page become '?'.
char Narrow(char16_t c) {
  unsigned char byte;
  return platform::WideToAnsi(c, byte) ? static_cast<char>(byte) : '?';
}

}  // namespace

XString8::XString8(uint32_t id, XModule module) {
  Set(id, module);
}

XString8::~XString8() = default;

bool XString8::_Write(const void* data, uint32_t bytes) {
  if (!XBuffer::_Write(data, bytes)) return false;
  if (GetBuffer() == nullptr && !AllocBuffer(1)) return false;
  if (static_cast<uint64_t>(GetBufferPos()) + 1 <= _ReadableBytes())
    *_GetBufferAt(GetBufferPos()) = 0;
  return true;
}

uint32_t XString8::GetLenght() const {
  const uint32_t bytes = _ReadableBytes();
  const char* text = c_str();
  uint32_t n = 0;
  while (n < bytes && text[n] != 0) ++n;
  return n;
}

int32_t XString8::Compare(const char* text) const {
  if (c_str() == nullptr && text == nullptr) return 0;
  return platform::CompareText(Widen(c_str()).c_str(), Widen(text).c_str());
}

int32_t XString8::Compare(const XString8& other) const {
  return Compare(other.c_str());
}

void XString8::_SetUpper(uint32_t index) {
  char& c = (*this)[index];
  c = Narrow(platform::ToUpper(platform::AnsiToWide(static_cast<unsigned char>(c))));
}

void XString8::_SetLower(uint32_t index) {
  char& c = (*this)[index];
  c = Narrow(platform::ToLower(platform::AnsiToWide(static_cast<unsigned char>(c))));
}

void XString8::SetUpper(uint32_t index) {
  if (index < GetBufferPos()) _SetUpper(index);
}

// Callers rely on SetLower converting to upper case, like SetUpper.
void XString8::SetLower(uint32_t index) {
  SetUpper(index);
}

bool XString8::Add(const char* text) {
  return _Write(text, text != nullptr ? static_cast<uint32_t>(std::strlen(text)) : 0);
}

bool XString8::Set(const char* text) {
  ResetBufferPos();
  return Add(text);
}

bool XString8::Add(uint32_t id, XModule module) {
  return XBuffer::Add(id, module);
}

bool XString8::Set(uint32_t id, XModule module) {
  ResetBufferPos();
  return Add(id, module);
}

bool XString8::WndGetText(XWindow window) {
  XString16 wide;
  if (!wide.WndGetText(window)) {
    ImportErrorCode(wide);
    return false;
  }
  ResetBufferPos();
  const uint32_t units = wide.GetBufferPos() / 2;
  if (!AllocBuffer(units)) return false;
  for (uint32_t i = 0; i < units; ++i) *_GetBufferAt(i) = static_cast<uint8_t>(Narrow(wide[i]));
  _SetBufferPos(units);
  *_GetBufferAt(units) = 0;
  return true;
}

bool XString8::WndSetText(XWindow window) {
  std::u16string wide;
  for (uint32_t i = 0; i < GetBufferPos(); ++i) wide += platform::AnsiToWide(*_GetBufferAt(i));
  if (!internal::UI(&XUserInterface::set_window_text)(window, wide.c_str())) {
    SetWinLastError();
    return false;
  }
  return true;
}

bool XString8::DlgGetItemText(XWindow dialog, int32_t item) {
  XWindow control = DialogItem(dialog, item);
  return control != nullptr && WndGetText(control);
}

bool XString8::DlgSetItemText(XWindow dialog, int32_t item) {
  XWindow control = DialogItem(dialog, item);
  return control != nullptr && WndSetText(control);
}

uint32_t XString8::WndGetTextLength(XWindow window) {
  return internal::UI(&XUserInterface::get_window_text_length)(window);
}

// Clipboard text includes its terminator.
bool XString8::CopyToClipboard(XWindow owner) {
  return _Write(nullptr, 0) && PutOnClipboard(owner, kClipboardText, GetBufferPos() + 1, true);
}

bool XString8::AddClipboardData(XWindow owner) {
  return _Write(nullptr, 0) && PutOnClipboard(owner, kClipboardText, GetBufferPos() + 1, false);
}

uint32_t XRemoveDOSNewLines(char* text, uint32_t length) {
  uint32_t out = 0;
  for (uint32_t i = 0; i < length; ++i) {
    // The byte after the last one is the terminator, so i + 1 may be read.
    if (text[i] == '\r' && text[i + 1] == '\n') continue;
    text[out++] = text[i];
  }
  if (out != length) text[out] = 0;
  return out;
}

}  // namespace tavi
