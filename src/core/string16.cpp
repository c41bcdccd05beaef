//===- string16.cpp - Terminated UTF-16 string -----------------------------===//
#include <cstring>

#include "platform/locale.h"
#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"

namespace tavi {

XString16::XString16(uint32_t id, XModule module) {
  Set(id, module);
}

XString16::~XString16() = default;

bool XString16::_Write(const void* data, uint32_t bytes) {
  if (!XBuffer::_Write(data, bytes)) return false;
  if (GetBuffer() == nullptr && !AllocBuffer(1)) return false;
  // The terminator goes where the block has room for it (always in an owned block).
  if (static_cast<uint64_t>(GetBufferPos()) + 2 <= _ReadableBytes()) _EndAsString();
  return true;
}

uint32_t XString16::GetLenght() const {
  const uint32_t units = _ReadableBytes() / 2;
  const char16_t* text = c_str();
  uint32_t n = 0;
  while (n < units && text[n] != 0) ++n;
  return n;
}

int32_t XString16::Compare(const char16_t* text) const {
  if (GetBuffer() == nullptr) return text != nullptr ? -1 : 0;
  if (text == nullptr) return 1;
  return platform::CompareText(c_str(), text);
}

int32_t XString16::Compare(const XString16& other) const {
  return Compare(other.c_str());
}

void XString16::_SetUpper(uint32_t index) {
  char16_t* c = _GetStringAt(index);
  *c = platform::ToUpper(*c);
}

void XString16::_SetLower(uint32_t index) {
  char16_t* c = _GetStringAt(index);
  *c = platform::ToLower(*c);
}

void XString16::SetUpper(uint32_t index) {
  if (index < GetBufferPos() / 2) _SetUpper(index);
}

// Callers rely on SetLower converting to upper case, like SetUpper.
void XString16::SetLower(uint32_t index) {
  SetUpper(index);
}

// Clipboard text includes its terminator.
bool XString16::CopyToClipboard(XWindow owner) {
  return EndAsString() && PutOnClipboard(owner, kClipboardUnicodeText, GetBufferPos() + 2, true);
}

bool XString16::AddClipboardData(XWindow owner) {
  return EndAsString() && PutOnClipboard(owner, kClipboardUnicodeText, GetBufferPos() + 2, false);
}

}  // namespace tavi
