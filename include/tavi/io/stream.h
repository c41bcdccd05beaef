//===- stream.h - The abstract byte stream ---------------------*- C++ -*-===//
//
// This file defines XIO, the byte stream that memory buffers, files and filter
// chains all are. Serialisation code is written once against XIO.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/error.h"
#include "tavi/export.h"

namespace tavi {

class XString16;
class XString8;
class TTitleTextBase;

// XIO is the abstract byte stream. Concrete streams override the primitive slots
// (_Write, _Read, _UnreadChar, and _ShiftForward where they can skip); the transfer
// operations are written in terms of them.
//
// Contract of the primitives: _Write takes every byte or fails with the reason in
// the error state; _Read returns how many bytes it delivered (a short count is the
// end of data, not an error); _ReadChar delivers one UTF-16 code unit.
//
// Transfers leave the cause of a failure in both streams: a read fault is set in
// the source and copied into the target, a write fault is copied from the target
// into the source.
class TAVI_API XIO : public XError {
 public:
  XIO() = default;
  XIO(const XIO& other) = default;
  XIO& operator=(const XIO& other) = default;
  ~XIO() override;

  // _Write appends bytes; the base class has no target: internal error 1018, false.
  virtual bool _Write(const void* data, uint32_t bytes);
  // _Read delivers up to bytes; the base class has no source: internal error 1019, 0.
  virtual uint32_t _Read(void* data, uint32_t bytes);
  // _ReadChar reads one UTF-16 code unit: true when both bytes arrived.
  virtual bool _ReadChar(char16_t& c);
  // _UnreadChar pushes a code unit back; the base class cannot: internal error 1020.
  virtual bool _UnreadChar(char16_t c);
  // _Flush pushes data held inside the stream on to its target; true in the base.
  virtual bool _Flush();
  // _ShiftForward skips bytes. The base class reads and discards in 1024-byte rounds
  // until a read comes back short, so it consumes the rest of the stream whatever the
  // count, then fails with 0x20000004. Streams that can skip override it.
  virtual bool _ShiftForward(uint32_t bytes);
  // ReadAllTo copies everything left to target in 1024-byte rounds; returns the count
  // moved, or 0 when a write fails (this stream then holds the target's error).
  virtual uint32_t ReadAllTo(XIO& target);
  // ReadThruBfr copies exactly bytes to target through a 1024-byte area.
  virtual bool ReadThruBfr(XIO& target, uint32_t bytes);
  // ReadThruBfr64 is ReadThruBfr for counts beyond 32 bits (pieces of 2^32-1 bytes).
  virtual bool ReadThruBfr64(XIO& target, uint64_t bytes);
  // ReadTo copies exactly bytes in one read and one write through a heap block (counts
  // beyond 16 MiB move in pieces of that size, so an untrusted count is never
  // allocated at once); when the block cannot be had it falls back to ReadThruBfr.
  virtual bool ReadTo(XIO& target, uint32_t bytes);
  // ReadTo64 is ReadTo for counts beyond 32 bits (pieces of 2^32-1 bytes).
  virtual bool ReadTo64(XIO& target, uint64_t bytes);

  // The owner's untyped pointer; the library never interprets it.
  void* GetData() const { return data_; }
  // SetData replaces the owner's pointer and returns the previous one.
  void* SetData(void* data) {
    void* old = data_;
    data_ = data;
    return old;
  }

  // _Write64 writes counts beyond 32 bits in pieces of 2^32-1 bytes, stopping at
  // the first failed piece.
  bool _Write64(const void* data, uint64_t bytes);
  // _Read64 reads counts beyond 32 bits in pieces; stops after a short piece and
  // returns the total delivered.
  uint64_t _Read64(void* data, uint64_t bytes);
  // bRead reads exactly bytes; a short read sets 0x20000004 (when no error is
  // pending) and returns false.
  bool bRead(void* data, uint32_t bytes);
  // WriteStringZone writes the code units from begin to end (byte distance rounded
  // down to even).
  bool WriteStringZone(const char16_t* begin, const char16_t* end);
  // WriteStringPatern writes total_length characters made of pattern repeated: whole
  // copies while more than a pattern's length is left, then the pattern's first
  // remaining characters. Stops with false at the first failed write.
  bool WriteStringPatern(const char16_t* pattern, uint32_t pattern_length, uint32_t total_length);
  // FormatMessageW appends the platform's message for a platform error code, without
  // trailing line breaks. False, with no error set, when the code has no text.
  bool FormatMessageW(uint32_t code);

  // Write(XString16&) / Write(XString8&) write the data length in bytes as a 4-byte
  // little-endian number, then the data bytes (no terminator).
  bool Write(const XString16& text);
  bool Write(const XString8& text);
  // Read(XString16&) / Read(XString8&) read the layout of Write into text and
  // terminate it. A length larger than the data that follows is refused with
  // 0x20000004 without allocating that length first.
  bool Read(XString16& text);
  bool Read(XString8& text);
  // Write(TTitleText&) writes the title's byte length as a 4-byte little-endian number,
  // then its bytes (the layout of Write(XString16&)).
  bool Write(const TTitleTextBase& title);
  // Read(TTitleText&) reads that layout into title as an owned, terminated text. A short
  // length sets 0x20000004 when no error is pending; a short text sets 0x20000004;
  // memory failure sets 0x20000001. A length larger than the data that follows is
  // refused without allocating that length first (the text grows as data arrives).
  bool Read(TTitleTextBase& title);

 private:
  void* data_ = nullptr;
};

}  // namespace tavi
