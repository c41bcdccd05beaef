//===- string.h - Terminated wide and byte strings -------------*- C++ -*-===//
//
// This file defines XString16 (UTF-16 text) and XString8 (8-bit text): buffers that
// keep a terminator directly after their data after every write, so that the block
// can be handed to anything that expects a terminated string.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/buffer.h"
#include "tavi/export.h"

namespace tavi {

// XString16 is an XBuffer of UTF-16 text with a 0 code unit after the data (not
// counted in the data). Copies share the block, as for XBuffer.
class TAVI_API XString16 : public XBuffer {
 public:
  XString16() = default;
  explicit XString16(uint32_t granularity) : XBuffer(granularity) {}
  // Constructs with the text of the module's string resource id (see XBuffer::Add).
  XString16(uint32_t id, XModule module);
  XString16(const XString16& other) = default;
  XString16& operator=(const XString16& other) = default;
  ~XString16() override;

  // _Write appends as XBuffer does and then stores the terminator; a write of 0 bytes
  // to a string without a block allocates one, so the result is an empty text.
  bool _Write(const void* data, uint32_t bytes) override;

  // GetLenght counts the code units before the first 0 in the block (not the data
  // length: an embedded 0 ends it); 0 without a block.
  uint32_t GetLenght() const;
  char16_t& operator[](uint32_t index) { return *_GetStringAt(index); }
  char16_t operator[](uint32_t index) const { return *_GetStringAt(index); }
  const char16_t* c_str() const { return reinterpret_cast<const char16_t*>(GetBuffer()); }

  // Compare orders by the user's locale (linguistic, case-sensitive): -1, 0 or 1.
  // Without a block: -1 when text exists, else 0; a null text: 1.
  int32_t Compare(const char16_t* text) const;
  int32_t Compare(const XString16& other) const;
  // IsDifferent is true when the data differs in length or any byte.
  bool IsDifferent(const XString16& other) const { return XBuffer::IsDifferent(other); }

  // _SetUpper / _SetLower map the code unit at index in place, unchecked.
  void _SetUpper(uint32_t index);
  void _SetLower(uint32_t index);
  // SetUpper and SetLower are one and the same checked operation and both convert to
  // upper case; callers that want lower case use _SetLower. Nothing happens for an
  // index at or beyond the data end.
  void SetUpper(uint32_t index);
  void SetLower(uint32_t index);

  // CopyToClipboard / AddClipboardData put the text on the clipboard as UTF-16 text.
  bool CopyToClipboard(XWindow owner);
  bool AddClipboardData(XWindow owner);
  using XBuffer::AddClipboardData;
  using XBuffer::CopyToClipboard;
};

// XString8 is the 8-bit twin of XString16: a 0 byte after the data, counts in bytes.
// 8-bit text is in the user's ANSI code page where it meets UTF-16 (window text,
// comparison, case mapping).
class TAVI_API XString8 : public XBuffer {
 public:
  XString8() = default;
  explicit XString8(uint32_t granularity) : XBuffer(granularity) {}
  XString8(uint32_t id, XModule module);
  XString8(const XString8& other) = default;
  XString8& operator=(const XString8& other) = default;
  ~XString8() override;

  // _Write appends as XBuffer does and then stores the 0 byte.
  bool _Write(const void* data, uint32_t bytes) override;

  // GetLenght counts the bytes before the first 0 in the block; 0 without a block.
  uint32_t GetLenght() const;
  char& operator[](uint32_t index) { return *reinterpret_cast<char*>(_GetBufferAt(index)); }
  char operator[](uint32_t index) const { return *reinterpret_cast<char*>(_GetBufferAt(index)); }
  const char* c_str() const { return reinterpret_cast<const char*>(GetBuffer()); }

  // Compare orders by the user's locale: -1, 0 or 1; 0 when both are null.
  int32_t Compare(const char* text) const;
  int32_t Compare(const XString8& other) const;
  bool IsDifferent(const XString8& other) const { return XBuffer::IsDifferent(other); }

  void _SetUpper(uint32_t index);
  void _SetLower(uint32_t index);
  // As for XString16, both checked forms convert to upper case.
  void SetUpper(uint32_t index);
  void SetLower(uint32_t index);

  // Byte twins of the XBuffer text members.
  bool Add(const char* text);
  bool Set(const char* text);
  bool Add(uint32_t id, XModule module);
  bool Set(uint32_t id, XModule module);
  bool AllocString(uint32_t bytes) { return AllocBuffer(bytes); }
  bool GrowString(uint32_t bytes) { return GrowBuffer(bytes); }
  bool SetStringPos(uint32_t bytes) { return SetBufferPos(bytes); }
  uint32_t GetAvailableString() const { return GetBufferSize() - GetBufferPos(); }
  char* GetStringEnd() const { return reinterpret_cast<char*>(XBuffer::GetStringEnd()); }
  bool WndGetText(XWindow window);
  bool WndSetText(XWindow window);
  bool DlgGetItemText(XWindow dialog, int32_t item);
  bool DlgSetItemText(XWindow dialog, int32_t item);
  // WndGetTextLength is the length of the window's text in bytes of 8-bit text.
  uint32_t WndGetTextLength(XWindow window);

  // CopyToClipboard / AddClipboardData put the text on the clipboard as 8-bit text.
  bool CopyToClipboard(XWindow owner);
  bool AddClipboardData(XWindow owner);
  using XBuffer::AddClipboardData;
  using XBuffer::CopyToClipboard;
};

// XRemoveDOSNewLines removes, in place, every carriage return directly followed by a
// line feed (lone carriage returns stay) and returns the new length. The byte after
// the last one is looked at, so text must be terminated.
TAVI_API uint32_t XRemoveDOSNewLines(char* text, uint32_t length);

}  // namespace tavi
