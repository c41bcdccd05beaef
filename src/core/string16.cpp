//===- string16.cpp - Terminated UTF-16 string -----------------------------===//
#include <cstring>

#include "platform/locale.h"
#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"

namespace tavi {

namespace {

// Bytes of the block that may be read: an owned block has 4 spare bytes after its
// allocation, an attached one the single byte the size-minus-one rule leaves.
uint32_t ReadableBytes(const XBuffer& b) {
  if (b.GetBuffer() == nullptr) return 0;
  return b.GetBufferSize() + (b.GetBufferAttached() ? 1u : 4u);
}

}  // namespace

XString16::XString16(uint32_t id, XModule module) {
  Set(id, module);
}

XString16::~XString16() = default;

bool XString16::_Write(const void* data, uint32_t bytes) {
  if (!XBuffer::_Write(data, bytes)) return false;
  if (GetBuffer() == nullptr && !AllocBuffer(1)) return false;
  // The terminator goes where the block has room for it (always in an owned block).
  if (static_cast<uint64_t>(GetBufferPos()) + 2 <= ReadableBytes(*this)) _EndAsString();
  return true;
}

uint32_t XString16::GetLenght() const {
  const uint32_t units = ReadableBytes(*this) / 2;
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

bool XString16::CopyToClipboard(XWindow owner) {
  if (!EndAsString()) return false;
  ShiftBufferPos(2);
  const bool ok = XBuffer::CopyToClipboard(owner, kClipboardUnicodeText);
  ShiftBufferPos(-2);
  return ok;
}

bool XString16::AddClipboardData(XWindow owner) {
  if (!EndAsString()) return false;
  ShiftBufferPos(2);
  const bool ok = XBuffer::AddClipboardData(owner, kClipboardUnicodeText);
  ShiftBufferPos(-2);
  return ok;
}

}  // namespace tavi
