//===- stream.cpp - Default operations of the abstract byte stream ---------===//
#include "tavi/io/stream.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include "core/internal/endian.h"
#include "platform/errors.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"

namespace tavi {

namespace {

// Size of the stack area used by the chunked transfers.
constexpr uint32_t kTransferChunk = 1024;
// Largest heap block of ReadTo.
constexpr uint32_t kReadToBlockLimit = 16u << 20;
// Largest piece of the 64-bit forms.
constexpr uint64_t kMaxPiece = 0xFFFFFFFFu;
// Read step of Read(XString16&) for lengths the stream may not hold: the string grows
// as data arrives instead of trusting the length prefix.
constexpr uint32_t kStringReadStep = 1u << 20;

// Internal error details of the base class's primitives.
constexpr int32_t kNoWrite = 1018;
constexpr int32_t kNoRead = 1019;
constexpr int32_t kNoUnread = 1020;

}  // namespace

XIO::~XIO() = default;

bool XIO::_Write(const void*, uint32_t) {
  SetInternalError(kNoWrite);
  return false;
}

uint32_t XIO::_Read(void*, uint32_t) {
  SetInternalError(kNoRead);
  return 0;
}

bool XIO::_ReadChar(char16_t& c) {
  return _Read(&c, 2) == 2;
}

bool XIO::_UnreadChar(char16_t) {
  SetInternalError(kNoUnread);
  return false;
}

bool XIO::_Flush() {
  return true;
}

bool XIO::_ShiftForward(uint32_t bytes) {
  if (bytes == 0) return true;
  // The count is deliberately not reduced between rounds: a stream that cannot
  // seek is read until it delivers less than asked.
  uint8_t scratch[kTransferChunk];
  const uint32_t chunk = bytes < kTransferChunk ? bytes : kTransferChunk;
  while (_Read(scratch, chunk) == chunk) {
  }
  SetSafeErrorCode(kErrEndOfData);
  return false;
}

uint32_t XIO::ReadAllTo(XIO& target) {
  uint8_t chunk[kTransferChunk];
  uint32_t total = 0;
  for (uint32_t n = _Read(chunk, kTransferChunk); n != 0; n = _Read(chunk, kTransferChunk)) {
    if (!target._Write(chunk, n)) {
      ImportErrorCode(target);
      return 0;
    }
    total += n;
  }
  return total;
}

// Copies exactly bytes to target through area, a piece of area_size at a time. A
// short read is this stream's end of data (the target is told); a failed write is
// the target's error (this stream takes it).
static bool CopyThrough(XIO& source, XIO& target, uint32_t bytes, uint8_t* area,
                        uint32_t area_size) {
  while (bytes != 0) {
    const uint32_t n = bytes < area_size ? bytes : area_size;
    if (source._Read(area, n) != n) {
      source.SetSafeErrorCode(kErrEndOfData);
      target.ImportErrorCode(source);
      return false;
    }
    if (!target._Write(area, n)) {
      source.ImportErrorCode(target);
      return false;
    }
    bytes -= n;
  }
  return true;
}

bool XIO::ReadThruBfr(XIO& target, uint32_t bytes) {
  uint8_t chunk[kTransferChunk];
  return CopyThrough(*this, target, bytes, chunk, kTransferChunk);
}

bool XIO::ReadThruBfr64(XIO& target, uint64_t bytes) {
  for (; bytes > kMaxPiece; bytes -= kMaxPiece) {
    if (!ReadThruBfr(target, static_cast<uint32_t>(kMaxPiece))) return false;
  }
  return ReadThruBfr(target, static_cast<uint32_t>(bytes));
}

bool XIO::ReadTo(XIO& target, uint32_t bytes) {
  if (bytes == 0) return true;
  // One block of the whole count gives one read and one write. A count beyond
  // kReadToBlockLimit (which may come from untrusted data) is not allocated at once:
  // it moves through a block of that limit instead.
  const uint32_t size = bytes <= kReadToBlockLimit ? bytes : kReadToBlockLimit;
  auto* block = static_cast<uint8_t*>(std::malloc(size));
  if (block == nullptr) return ReadThruBfr(target, bytes);
  const bool ok = CopyThrough(*this, target, bytes, block, size);
  std::free(block);
  return ok;
}

bool XIO::ReadTo64(XIO& target, uint64_t bytes) {
  for (; bytes > kMaxPiece; bytes -= kMaxPiece) {
    if (!ReadTo(target, static_cast<uint32_t>(kMaxPiece))) return false;
  }
  return ReadTo(target, static_cast<uint32_t>(bytes));
}

bool XIO::_Write64(const void* data, uint64_t bytes) {
  const auto* p = static_cast<const uint8_t*>(data);
  for (; bytes > kMaxPiece; bytes -= kMaxPiece, p += kMaxPiece) {
    if (!_Write(p, static_cast<uint32_t>(kMaxPiece))) return false;
  }
  return _Write(p, static_cast<uint32_t>(bytes));
}

uint64_t XIO::_Read64(void* data, uint64_t bytes) {
  auto* p = static_cast<uint8_t*>(data);
  uint64_t total = 0;
  while (bytes != 0) {
    const uint32_t piece = static_cast<uint32_t>(bytes > kMaxPiece ? kMaxPiece : bytes);
    const uint32_t n = _Read(p, piece);
    total += n;
    if (n != piece) break;
    p += n;
    bytes -= n;
  }
  return total;
}

bool XIO::bRead(void* data, uint32_t bytes) {
  if (_Read(data, bytes) == bytes) return true;
  SetSafeErrorCode(kErrEndOfData);
  return false;
}

bool XIO::WriteStringZone(const char16_t* begin, const char16_t* end) {
  const auto distance =
      reinterpret_cast<const uint8_t*>(end) - reinterpret_cast<const uint8_t*>(begin);
  return _Write(begin, static_cast<uint32_t>(distance) & ~1u);
}

bool XIO::WriteStringPatern(const char16_t* pattern, uint32_t pattern_length,
                            uint32_t total_length) {
  if (pattern_length == 0) return total_length == 0;
  while (total_length > pattern_length) {
    if (!_Write(pattern, pattern_length * 2)) return false;
    total_length -= pattern_length;
  }
  return total_length == 0 || _Write(pattern, total_length * 2);
}

bool XIO::FormatMessageW(uint32_t code) {
  std::u16string text;
  if (!platform::PlatformMessage(code, text)) return false;
  while (!text.empty() && (text.back() == u'\r' || text.back() == u'\n')) text.pop_back();
  return _Write(text.data(), static_cast<uint32_t>(text.size() * 2));
}

namespace {

bool WriteSized(XIO& out, const XBuffer& text) {
  uint8_t prefix[4];
  internal::StoreLE32(prefix, text.GetBufferPos());
  return out._Write(prefix, 4) && out._Write(text.GetBuffer(), text.GetBufferPos());
}

// Reads a 4-byte length and that many bytes into text. Large lengths are not
// trusted: the string grows step by step as the data actually arrives.
bool ReadSized(XIO& in, XBuffer& text) {
  uint8_t prefix[4];
  if (in._Read(prefix, 4) != 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t length = internal::LoadLE32(prefix);
  text.ResetBufferPos();
  uint32_t done = 0;
  while (done < length) {
    const uint32_t step = length - done < kStringReadStep ? length - done : kStringReadStep;
    if (!text.AllocBuffer(done + step)) {
      if (text.IsOk()) text.SetErrorCode(kErrOutOfRange);
      in.ImportErrorCode(text);
      return false;
    }
    const uint32_t n = in._Read(text._GetBufferAt(done), step);
    done += n;
    text._SetBufferPos(done);
    if (n != step) {
      text.EndAsString();
      in.SetSafeErrorCode(kErrEndOfData);
      return false;
    }
  }
  return text.EndAsString();
}

}  // namespace

bool XIO::Write(const XString16& text) {
  return WriteSized(*this, text);
}
bool XIO::Write(const XString8& text) {
  return WriteSized(*this, text);
}
bool XIO::Read(XString16& text) {
  return ReadSized(*this, text);
}
bool XIO::Read(XString8& text) {
  return ReadSized(*this, text);
}

bool XIO::Write(const TTitleTextBase& title) {
  uint8_t prefix[4];
  internal::StoreLE32(prefix, title.size);
  return _Write(prefix, 4) && (title.size == 0 || _Write(title.text, title.size));
}

bool XIO::Read(TTitleTextBase& title) {
  uint8_t prefix[4];
  if (_Read(prefix, 4) != 4) {
    SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t length = internal::LoadLE32(prefix);
  if (length == 0) {
    title.Free();
    title.StateClean(kTitleAttached);
    return true;
  }
  // Large lengths are not trusted: the text grows step by step (AllocBuffer keeps the
  // content) as the data actually arrives.
  // What arrived before a failure stays, as a terminated text of whole code units.
  uint32_t done = 0;
  auto finish = [&](uint32_t size) {
    if (title.text == nullptr) return;
    title.size = size;
    std::memset(reinterpret_cast<uint8_t*>(title.text) + size, 0, 2);
  };
  while (done < length) {
    const uint32_t step = length - done < kStringReadStep ? length - done : kStringReadStep;
    if (!title.AllocBuffer(done + step)) {
      finish(done & ~1u);
      SetErrorCode(kErrNoMemory);
      return false;
    }
    const uint32_t n = _Read(reinterpret_cast<uint8_t*>(title.text) + done, step);
    done += n;
    if (n != step) {
      finish(done & ~1u);
      SetErrorCode(kErrEndOfData);
      return false;
    }
  }
  finish(length);
  return true;
}

}  // namespace tavi
