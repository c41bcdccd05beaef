//===- sized_record.h - Sized strings and sized records ---------*- C++ -*-===//
//
// This file declares the sized-string encodings of streams (a packed length and the
// text), the sized records of memory (XSizedRecord: a 32-bit size, then a body that
// refers to its strings by offset) and the functions that move both between records
// and streams.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;
class XBuffer;

// XSizedRecord is a view of a record in memory: its first 4 bytes are its size in
// bytes, that field included (little-endian); the next record of a run follows
// directly. Variable parts are found by offset from the record start (0 means
// absent). A string inside a record is a 32-bit byte count followed by the bytes; its
// offset points at the bytes. The class is never constructed: point it at memory
// (XSizedRecord::At). None of the members check the memory they are pointed at.
class TAVI_API XSizedRecord {
 public:
  XSizedRecord() = delete;
  XSizedRecord(const XSizedRecord&) = delete;
  XSizedRecord& operator=(const XSizedRecord&) = delete;

  static XSizedRecord* At(void* record) { return static_cast<XSizedRecord*>(record); }
  static const XSizedRecord* At(const void* record) {
    return static_cast<const XSizedRecord*>(record);
  }

  // GetSize is the size field.
  uint32_t GetSize() const;
  // SetSize stores the buffer position (the length of the record built in buffer from
  // byte 0) in the first 4 bytes of the block. A position below 4 gives 0x20000014 in
  // the buffer and false.
  static bool SetSize(XBuffer& buffer);

  // GetData is record start + offset, null for offset 0; _GetData does not test.
  uint8_t* GetData(uint32_t offset) { return offset != 0 ? _GetData(offset) : nullptr; }
  const uint8_t* GetData(uint32_t offset) const { return offset != 0 ? _GetData(offset) : nullptr; }
  uint8_t* _GetData(uint32_t offset) { return Bytes() + offset; }
  const uint8_t* _GetData(uint32_t offset) const { return Bytes() + offset; }
  // The buffer forms take the record built in a buffer's block.
  static uint8_t* GetData(const XBuffer& buffer, uint32_t offset);
  static uint8_t* _GetData(const XBuffer& buffer, uint32_t offset);
  // GetStringSize is the byte count stored just before the string at offset, 0 for
  // offset 0; _GetStringSize does not test.
  uint32_t GetStringSize(uint32_t offset) const { return offset != 0 ? _GetStringSize(offset) : 0; }
  uint32_t _GetStringSize(uint32_t offset) const;
  // GetNextRecord is record start + size.
  XSizedRecord* GetNextRecord() { return At(Bytes() + GetSize()); }
  const XSizedRecord* GetNextRecord() const { return At(Bytes() + GetSize()); }

 private:
  uint8_t* Bytes() { return reinterpret_cast<uint8_t*>(this); }
  const uint8_t* Bytes() const { return reinterpret_cast<const uint8_t*>(this); }

  uint8_t size_[4];
};

static_assert(sizeof(XSizedRecord) == 4 && alignof(XSizedRecord) == 1);

// --- Sized strings in streams ---------------------------------------------------
//
// A wide sized string is the packed number (8-bit unit, uint32_t family) of its count
// of UTF-16 code units, then the code units as they are (2 bytes each) or, with the
// UTF-8 flag, the text in UTF-8 (an unpaired surrogate becomes U+FFFD, so the count
// still holds). An 8-bit sized string is the packed byte count, then the bytes.
//
// Readers read exactly the string and nothing after it. They fail with 0x20000004 in
// the source (set only when no error is pending) when the data ends early or, for the
// UTF-8 form, is not well-formed UTF-8 or gives a different number of code units than
// the count. A count larger than the data is found out as the data runs short: the
// readers never allocate for a count before the data is there (growth is by steps of
// at most 1 MiB). A failed reader writes part of the text to a stream target; the
// buffer forms take back what they appended.

// XWriteSizedString writes bytes / 2 code units of text (a null text as an empty one).
TAVI_API bool XWriteSizedString(XIO& out, const char16_t* text, uint32_t bytes, bool utf8);
// XWriteSizedString writes bytes bytes of 8-bit text.
TAVI_API bool XWriteSizedString(XIO& out, const char* text, uint32_t bytes);
// XWriteSizedString16 / 8 write the string stored in record at offset; offset 0 writes
// an empty sized string (the single byte 0).
TAVI_API bool XWriteSizedString16(XIO& out, uint32_t offset, const uint8_t* record, bool utf8);
TAVI_API bool XWriteSizedString8(XIO& out, uint32_t offset, const uint8_t* record);

// XReadSizedString16 / 8 read a sized string from source and write its text to target
// (code units in host order, or bytes). A target that fails passes its error to the
// source.
TAVI_API bool XReadSizedString16(XIO& source, XIO& target, bool utf8);
TAVI_API bool XReadSizedString8(XIO& source, XIO& target);
// The buffer forms append the string to a record being built in record, as a 32-bit
// byte count and the bytes, and set offset to where the bytes start. An empty string
// appends nothing and sets offset 0 (absent). A string that would carry the record
// past 2^32-1 bytes fails with 0x20000011.
TAVI_API bool XReadSizedString16(XBuffer& record, XIO& source, uint32_t& offset, bool utf8);
TAVI_API bool XReadSizedString8(XBuffer& record, XIO& source, uint32_t& offset);

// XAddSizedString appends a string to a record being built in record (32-bit byte
// count, then the bytes) and sets offset to where the bytes start; a null or empty
// text appends nothing and sets offset 0. The forms without a length take a
// terminated text. A string that would carry the record past 2^32-1 bytes gives
// 0x20000011 in record and false.
TAVI_API bool XAddSizedString(XBuffer& record, uint32_t& offset, const char16_t* text);
TAVI_API bool XAddSizedString(XBuffer& record, uint32_t& offset, const char16_t* text,
                              uint32_t bytes);
TAVI_API bool XAddSizedString(XBuffer& record, uint32_t& offset, const char* text);
TAVI_API bool XAddSizedString(XBuffer& record, uint32_t& offset, const char* text, uint32_t bytes);

// --- Sized records in streams ---------------------------------------------------

// XWriteSizedRecord(out, record) writes the record's bytes (its size field says how
// many); a null record is written as the 32-bit value 0. A size field below 4 is
// refused with 0x20000014 in out.
TAVI_API bool XWriteSizedRecord(XIO& out, const XSizedRecord* record);
// XWriteSizedRecord(out, offset, base) writes the record at base + offset; offset 0 is
// written as the 32-bit value 4 (an empty record of just its size field). The two
// forms encode a missing record differently (0 against 4); readers take both.
TAVI_API bool XWriteSizedRecord(XIO& out, uint32_t offset, const uint8_t* base);

// XReadSizedRecord(buffer, in) reads a record as the whole content of buffer: the
// 32-bit size, then size - 4 further bytes. A size of 0 (a missing record) leaves
// just that zero field in the buffer; a size of 1 to 3 is malformed (0x20000004).
// XReadSizedRecord(buffer, offset, in) appends the record and sets offset to its
// start; a missing record appends nothing and sets offset 0. Errors go to in: short
// data 0x20000004 (when no error is pending), a record that would carry the buffer
// past 2^32-1 bytes 0x20000011, memory failures those of the buffer. A failed read
// takes back what it appended.
TAVI_API bool XReadSizedRecord(XBuffer& buffer, XIO& in);
TAVI_API bool XReadSizedRecord(XBuffer& buffer, uint32_t& offset, XIO& in);

}  // namespace tavi
