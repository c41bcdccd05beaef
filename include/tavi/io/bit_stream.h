//===- bit_stream.h - Bits and bit fields over a byte stream ----*- C++ -*-===//
//
// This file defines XBitStream, the filter that reads and writes single bits and bit
// fields (least significant bit first) through its next stream. The packed numbers'
// bit forms and the Huffman coder are built on it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

// XBitStream packs bits into bytes, least significant bit first: the first bit
// written is bit 0 of the first byte. Its state is the pending byte (current byte),
// the mask of the next bit position and the mask of the positions already used;
// the stream is byte-aligned when no position is used.
//
// Full bytes go to the next stream as soon as a call completes them; a partial byte
// stays pending until more bits complete it or _Flush writes it (its unused high
// bits 0). Reading consumes bytes of the next stream only as the bits asked for need
// them, never ahead.
//
// Bytes written with _Write and read with _Read at any bit offset keep their bit
// positions: the bits of a byte at the free positions complete the pending byte and
// its bits at the used positions start the next one, so writing and reading bytes at
// the same offset are exact inverses.
//
// Cost: a field of up to 64 bits takes at most one call of the next stream, none
// while it fits the pending byte; an unaligned run of bytes one call per 1024 bytes.
// Bits move through a 64-bit word, not one by one (the small-field paths are inline).
// Readers fail (false) when the next stream runs out, with the next stream's error
// imported; what was consumed before the failure is gone and the value is undefined.
class TAVI_API XBitStream : public XRoutedIO {
 public:
  XBitStream() = default;
  explicit XBitStream(XIO* next) : XRoutedIO(next) {}
  XBitStream(const XBitStream& other) = default;
  XBitStream& operator=(const XBitStream& other) = default;
  ~XBitStream() override;

  // Byte transfer at the present bit offset (forwarded as they are when aligned).
  // _Read returns the number of bytes produced; it imports the next stream's error
  // when the next stream ran out.
  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  // _Flush writes a pending partial byte, realigns the stream and flushes the next
  // stream. It is meant for writing: on a stream being read it would write the
  // partly consumed byte.
  bool _Flush() override;

  // SetBit appends one bit; a byte it completes goes to the next stream.
  bool SetBit(bool bit);
  // GetBit takes the next bit, reading a byte from the next stream when none is
  // pending (false when none arrives).
  bool GetBit(bool& bit);
  // SetBits appends the low count bits of value, least significant first. Bits beyond
  // the 64 of value are 0.
  bool SetBits(uint64_t value, uint32_t count) {
    // Fast path: the field fits the pending byte without completing it.
    const uint32_t k = static_cast<uint32_t>(std::countr_zero(mask_));
    if (count >= 8 - k) return SetBitsSlow(value, count);
    current_ = static_cast<uint8_t>(current_ | ((value & ((1u << count) - 1)) << k));
    mask_ = static_cast<uint8_t>(mask_ << count);
    used_ = static_cast<uint8_t>(mask_ - 1);
    return true;
  }
  // Any other integer (a literal 0 included, which would otherwise also match the
  // word-array form) is taken as its uint64_t conversion.
  template <std::integral T>
  bool SetBits(T value, uint32_t count) {
    return SetBits(static_cast<uint64_t>(value), count);
  }
  // GetBits reads count bits into value, the first bit read as bit 0. value is 0 for
  // count 0 (true without reading); bits beyond 64 are read and dropped.
  bool GetBits(uint64_t& value, uint32_t count) {
    // Fast path: the pending byte holds more bits than the field takes.
    const uint32_t k = static_cast<uint32_t>(std::countr_zero(mask_));
    if (used_ == 0 || count >= 8 - k) return GetBitsSlow(value, count);
    value = (current_ >> k) & ((1u << count) - 1);
    mask_ = static_cast<uint8_t>(mask_ << count);
    used_ = static_cast<uint8_t>(mask_ - 1);
    return true;
  }
  // The word-array forms move a bit string longer than 64 bits: word 0 first, each
  // word least significant bit first, the last word partly when count is not a
  // multiple of 64.
  bool SetBits(const uint64_t* words, uint32_t count);
  bool GetBits(uint64_t* words, uint32_t count);
  // SetByte / GetByte move one byte at the present bit offset; GetByte is true only
  // when the byte arrived.
  bool SetByte(uint8_t byte) { return _Write(&byte, 1); }
  bool GetByte(uint8_t& byte) { return _Read(&byte, 1) == 1; }

  // State, for derived coders and tests.
  uint8_t GetBitMask() const { return mask_; }
  uint8_t GetUsedBits() const { return used_; }
  uint8_t GetCurrentByte() const { return current_; }
  bool IsByteAligned() const { return used_ == 0; }

 private:
  bool SetBitsSlow(uint64_t value, uint32_t count);
  bool GetBitsSlow(uint64_t& value, uint32_t count);
  // Number of used bit positions of the pending byte (0 to 7).
  uint32_t UsedCount() const { return static_cast<uint32_t>(std::countr_zero(mask_)); }
  // Sets the state to k used positions holding byte (k 0 resets to aligned).
  void SetPending(uint32_t k, uint8_t byte);

  uint8_t mask_ = 1;
  uint8_t used_ = 0;
  uint8_t current_ = 0;
};

}  // namespace tavi
