//===- bit_stream.cpp - Bits and bit fields over a byte stream -------------===//
//
// State: current_ is the pending byte, used_ the mask of its consumed (reading) or
// filled (writing) positions, always the low k bits for k = 0..7, and mask_ = 1 << k
// the next position. Multi-bit operations compute every byte a field completes in a
// 64-bit word and move them in one call of the next stream; the bytes and the final
// state are those of setting or getting the bits one by one.
//
//===----------------------------------------------------------------------===//
#include "tavi/io/bit_stream.h"

#include "core/internal/endian.h"

namespace tavi {

namespace {

// Size of the stack area that unaligned byte writes are assembled in.
constexpr uint32_t kChunk = 1024;

uint64_t LowBits(uint64_t v, uint32_t count) {
  return count >= 64 ? v : v & ((uint64_t{1} << count) - 1);
}

}  // namespace

XBitStream::~XBitStream() = default;

void XBitStream::SetPending(uint32_t k, uint8_t byte) {
  if (k == 0) {
    mask_ = 1;
    used_ = 0;
    current_ = 0;
    return;
  }
  mask_ = static_cast<uint8_t>(1u << k);
  used_ = static_cast<uint8_t>((1u << k) - 1);
  current_ = byte;
}

bool XBitStream::SetBit(bool bit) {
  used_ |= mask_;
  if (bit) current_ |= mask_;
  mask_ = static_cast<uint8_t>(mask_ << 1);
  if (mask_ != 0) return true;
  const uint8_t full = current_;
  SetPending(0, 0);
  return XRoutedIO::_Write(&full, 1);
}

bool XBitStream::GetBit(bool& bit) {
  if (used_ == 0) {
    uint8_t byte;
    if (XRoutedIO::_Read(&byte, 1) != 1) return false;
    current_ = byte;
    mask_ = 1;
    used_ = 1;
  } else {
    used_ |= mask_;
  }
  bit = (current_ & mask_) != 0;
  if (used_ == 0xFF) {
    SetPending(0, 0);
  } else {
    mask_ = static_cast<uint8_t>(mask_ << 1);
  }
  return true;
}

bool XBitStream::SetBitsSlow(uint64_t value, uint32_t count) {
  if (count > 64) {
    if (!SetBits(value, 64)) return false;
    for (count -= 64; count > 64; count -= 64) {
      if (!SetBits(0, 64)) return false;
    }
    return SetBits(0, count);
  }
  if (count == 0) return true;
  uint64_t v = LowBits(value, count);
  const uint32_t k = UsedCount();
  if (k + count < 8) {
    SetPending(k + count, static_cast<uint8_t>(current_ | (v << k)));
    return true;
  }
  // The pending byte completed by the first 8 - k bits, then whole bytes of the rest.
  uint8_t out[1 + 8];
  out[0] = static_cast<uint8_t>(current_ | (v << k));
  const uint32_t first = 8 - k;
  v >>= first;
  const uint32_t rest = count - first;  // at most 63
  const uint32_t whole = rest / 8;      // at most 7
  internal::StoreLE64(out + 1, v);
  const uint32_t tail = rest - 8 * whole;
  SetPending(tail, static_cast<uint8_t>(LowBits(v >> (8 * whole), tail)));
  return XRoutedIO::_Write(out, 1 + whole);
}

bool XBitStream::GetBitsSlow(uint64_t& value, uint32_t count) {
  value = 0;
  if (count > 64) {
    if (!GetBits(value, 64)) return false;
    uint64_t dropped;
    for (count -= 64; count > 64; count -= 64) {
      if (!GetBits(dropped, 64)) return false;
    }
    return GetBits(dropped, count);
  }
  if (count == 0) return true;
  const uint32_t k = UsedCount();
  const uint32_t avail = k != 0 ? 8 - k : 0;
  uint64_t v = avail != 0 ? static_cast<uint64_t>(current_ >> k) : 0;
  if (count < avail) {
    value = LowBits(v, count);
    SetPending(k + count, current_);
    return true;
  }
  // The pending byte is used up; read exactly the bytes the rest of the field needs.
  SetPending(0, 0);
  if (count == avail) {
    value = v;
    return true;
  }
  const uint32_t need = count - avail;
  const uint32_t bytes = (need + 7) / 8;  // at most 8
  uint8_t in[8] = {};
  const uint32_t got = XRoutedIO::_Read(in, bytes);
  if (got != bytes) {
    // Read bit by bit, the byte after the last one would have come back empty.
    if (got != 0) ImportErrorCode(*next_);
    return false;
  }
  v |= internal::LoadLE64(in) << avail;
  value = LowBits(v, count);
  const uint32_t last_bits = need - 8 * (bytes - 1);  // 1 to 8
  if (last_bits < 8) SetPending(last_bits, in[bytes - 1]);
  return true;
}

bool XBitStream::SetBits(const uint64_t* words, uint32_t count) {
  if (count == 0) return true;
  for (; count > 64; count -= 64, ++words) {
    if (!SetBits(*words, 64)) return false;
  }
  return SetBits(*words, count);
}

bool XBitStream::GetBits(uint64_t* words, uint32_t count) {
  if (count == 0) return true;
  for (; count > 64; count -= 64, ++words) {
    if (!GetBits(*words, 64)) return false;
  }
  return GetBits(*words, count);
}

bool XBitStream::_Write(const void* data, uint32_t bytes) {
  if (used_ == 0) return XRoutedIO::_Write(data, bytes);
  const auto* in = static_cast<const uint8_t*>(data);
  const uint8_t used = used_;
  const auto free_bits = static_cast<uint8_t>(~used);
  uint8_t out[kChunk];
  while (bytes != 0) {
    const uint32_t n = bytes < kChunk ? bytes : kChunk;
    uint8_t current = current_;
    for (uint32_t i = 0; i < n; ++i) {
      out[i] = static_cast<uint8_t>(current | (in[i] & free_bits));
      current = static_cast<uint8_t>(in[i] & used);
    }
    current_ = current;
    if (!XRoutedIO::_Write(out, n)) return false;
    in += n;
    bytes -= n;
  }
  return true;
}

uint32_t XBitStream::_Read(void* data, uint32_t bytes) {
  if (used_ == 0) return XRoutedIO::_Read(data, bytes);
  if (bytes == 0) return 0;
  // Each byte produced takes one byte of the next stream: read them all at once and
  // shift them through the pending byte in place.
  const uint32_t got = XRoutedIO::_Read(data, bytes);
  if (got != bytes && got != 0) ImportErrorCode(*next_);
  auto* p = static_cast<uint8_t*>(data);
  const uint8_t used = used_;
  const auto free_bits = static_cast<uint8_t>(~used);
  uint8_t current = current_;
  for (uint32_t i = 0; i < got; ++i) {
    const uint8_t next = p[i];
    p[i] = static_cast<uint8_t>((current & free_bits) | (next & used));
    current = next;
  }
  current_ = current;
  return got;
}

bool XBitStream::_Flush() {
  if (used_ != 0) {
    const uint8_t pending = current_;
    if (!XRoutedIO::_Write(&pending, 1)) return false;
  }
  SetPending(0, 0);
  return XRoutedIO::_Flush();
}

}  // namespace tavi
