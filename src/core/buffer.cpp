//===- buffer.cpp - Growable buffer: memory, positions and stream slots ----===//
#include "tavi/core/buffer.h"

#include <cstdlib>
#include <cstring>

namespace tavi {

namespace {

// Every owned block is this much longer than its usable size, so a terminator fits.
constexpr uint32_t kSpareBytes = 4;
constexpr uint64_t kMaxSize = 0xFFFFFFFFu;

}  // namespace

XBuffer::~XBuffer() {
  if (attached_ == 0 && buffer_ != nullptr) std::free(buffer_);
}

bool XBuffer::_BufferRealloc(uint32_t size) {
  void* block = std::realloc(buffer_, static_cast<size_t>(size) + kSpareBytes);
  if (block == nullptr) return false;
  buffer_ = static_cast<uint8_t*>(block);
  return true;
}

void XBuffer::_BufferFree() {
  std::free(buffer_);
  buffer_ = nullptr;
}

bool XBuffer::AllocBuffer(uint32_t size) {
  // A buffer without a block (for instance one reset after being attached) always
  // gets a block, whatever its recorded size.
  const bool has_block = buffer_ != nullptr;
  if (size <= allocated_ && (has_block || size == 0)) return true;
  if (attached_ != 0) return false;
  const uint32_t step = granularity_ - size % granularity_;
  uint32_t new_size;
  if (static_cast<uint64_t>(size) + step <= 0xFFFFFFFDu) {
    new_size = size + step;
  } else if (size >= 0xFFFFFFFEu) {
    SetErrorCode(kErrOutOfRange);
    return false;
  } else {
    new_size = size;
  }
  if (new_size == allocated_ && has_block) return true;
  if (!_BufferRealloc(new_size)) {
    SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  allocated_ = new_size;
  return true;
}

bool XBuffer::GrowBuffer(uint32_t extra) {
  if (static_cast<uint64_t>(extra) + allocated_ > kMaxSize) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  return AllocBuffer(buffer_pos_ + extra);
}

void* XBuffer::ReserveBufferMem(uint32_t bytes) {
  if (!GrowBuffer(bytes)) return nullptr;
  void* reserved = buffer_ + buffer_pos_;
  buffer_pos_ += bytes;
  return reserved;
}

bool XBuffer::AllocString(uint32_t chars) {
  return AllocBuffer(2 * chars);
}

bool XBuffer::GrowString(uint32_t chars) {
  return GrowBuffer(2 * chars);
}

void XBuffer::FreeBuffer() {
  if (attached_ == 0 && buffer_ != nullptr) _BufferFree();
  buffer_ = nullptr;
  attached_ = 0;
  allocated_ = buffer_pos_ = current_pos_ = 0;
}

void XBuffer::DiscardBuffer() {
  buffer_ = nullptr;
  attached_ = 0;
  allocated_ = buffer_pos_ = current_pos_ = 0;
}

bool XBuffer::ResetBuffer() {
  if (attached_ != 0) {
    attached_ = 0;
    buffer_ = nullptr;
  }
  buffer_pos_ = current_pos_ = 0;
  return true;
}

void XBuffer::AssumeBuffer(XBuffer& other) {
  if (&other == this) return;
  FreeBuffer();
  buffer_ = other.buffer_;
  attached_ = other.attached_;
  allocated_ = other.allocated_;
  buffer_pos_ = other.buffer_pos_;
  current_pos_ = other.current_pos_;
  other.buffer_ = nullptr;
  other.attached_ = 0;
  other.allocated_ = other.buffer_pos_ = other.current_pos_ = 0;
}

void XBuffer::TakeBlock(void* block, uint32_t size, bool full, bool attached) {
  FreeBuffer();
  buffer_ = static_cast<uint8_t*>(block);
  attached_ = attached ? 1 : 0;
  // One less than the bytes given, while the data end is the full count: the
  // terminator of a text of size bytes then still lies inside the block. A block of
  // no bytes has no usable byte either.
  allocated_ = size != 0 ? size - 1 : 0;
  buffer_pos_ = full ? size : 0;
  current_pos_ = 0;
}

void XBuffer::AssumeBuffer(void* block, uint32_t size, bool full) {
  TakeBlock(block, size, full, false);
}

void XBuffer::AttachBuffer(void* block, uint32_t size, bool full) {
  TakeBlock(block, size, full, true);
}

namespace {

uint32_t TextBytes(const char16_t* text) {
  uint32_t n = 0;
  while (text[n] != 0) ++n;
  return 2 * n;
}

}  // namespace

void XBuffer::AttachString(char16_t* text) {
  AttachBuffer(text, TextBytes(text), true);
}

void XBuffer::AssumeString(char16_t* text) {
  AssumeBuffer(text, TextBytes(text), true);
}

bool XBuffer::SetBufferPos(uint32_t pos) {
  if (pos > allocated_) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  buffer_pos_ = pos;
  ClampCurrentPos();
  return true;
}

bool XBuffer::ShiftBufferPos(int32_t delta) {
  const int64_t result = static_cast<int64_t>(buffer_pos_) + delta;
  if (result < 0 || result > static_cast<int64_t>(kMaxSize)) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  buffer_pos_ = static_cast<uint32_t>(result);
  return true;
}

bool XBuffer::SetCurrentPos(uint32_t pos) {
  if (current_pos_ > buffer_pos_) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  current_pos_ = pos;
  return true;
}

bool XBuffer::ShiftCurrentPos(int32_t delta) {
  if (current_pos_ > buffer_pos_) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  current_pos_ += static_cast<uint32_t>(delta);
  return true;
}

bool XBuffer::ResetCurrentPos() {
  if (current_pos_ > buffer_pos_) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  current_pos_ = 0;
  return true;
}

bool XBuffer::SetStringPos(uint32_t chars) {
  return SetBufferPos(2 * chars);
}

bool XBuffer::ShiftStringPos(int32_t chars) {
  const int64_t bytes = 2 * static_cast<int64_t>(chars);
  if (bytes < INT32_MIN || bytes > INT32_MAX) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  return ShiftBufferPos(static_cast<int32_t>(bytes));
}

bool XBuffer::GrowForWrite(uint32_t bytes) {
  if (static_cast<uint64_t>(bytes) + allocated_ > kMaxSize) {
    SetErrorCode(kErrOutOfRange);
    return false;
  }
  return AllocBuffer(buffer_pos_ + bytes);
}

bool XBuffer::_Write(const void* data, uint32_t bytes) {
  // Data taken from this buffer's own block (a copy sharing it, or an append of the
  // buffer to itself) must be found again after the block has moved.
  const auto* source = static_cast<const uint8_t*>(data);
  const bool inside = buffer_ != nullptr && source >= buffer_ && source < buffer_ + allocated_;
  const size_t offset = inside ? static_cast<size_t>(source - buffer_) : 0;
  if (!GrowForWrite(bytes)) return false;
  if (bytes != 0) {
    std::memmove(buffer_ + buffer_pos_, inside ? buffer_ + offset : source, bytes);
    buffer_pos_ += bytes;
  }
  return true;
}

uint32_t XBuffer::_Read(void* data, uint32_t bytes) {
  if (current_pos_ >= buffer_pos_ || bytes == 0) return 0;
  const uint32_t left = buffer_pos_ - current_pos_;
  const uint32_t n = bytes < left ? bytes : left;
  std::memcpy(data, buffer_ + current_pos_, n);
  current_pos_ += n;
  return n;
}

bool XBuffer::_UnreadChar(char16_t) {
  // In a buffer, unreading takes back the last written code unit (the data end).
  if (buffer_pos_ < 2) {
    SetErrorCode(kErrCannotUnread);
    return false;
  }
  buffer_pos_ -= 2;
  return true;
}

bool XBuffer::_ShiftForward(uint32_t bytes) {
  if (current_pos_ > buffer_pos_ || buffer_pos_ - current_pos_ < bytes) {
    SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  current_pos_ += bytes;
  return true;
}

bool XBuffer::ReadTo(XIO& target, uint32_t bytes) {
  if (bytes == 0) return true;
  const uint32_t left = current_pos_ < buffer_pos_ ? buffer_pos_ - current_pos_ : 0;
  const uint32_t at = current_pos_;
  current_pos_ += left < bytes ? left : bytes;
  if (left < bytes) {
    SetSafeErrorCode(kErrEndOfData);
    target.ImportErrorCode(*this);
    return false;
  }
  if (!target._Write(buffer_ + at, bytes)) {
    ImportErrorCode(target);
    return false;
  }
  return true;
}

uint32_t XBuffer::_ReadToBuffer(XIO& source, uint32_t bytes) {
  if (!GrowForWrite(bytes)) {
    source.ImportErrorCode(*this);
    return 0;
  }
  if (bytes == 0) return 0;
  const uint32_t n = source._Read(buffer_ + buffer_pos_, bytes);
  buffer_pos_ += n;
  return n;
}

bool XBuffer::ReadToBuffer(XIO& source, uint32_t bytes) {
  if (_ReadToBuffer(source, bytes) == bytes) return true;
  SetSafeErrorCode(kErrEndOfData);
  source.ImportErrorCode(*this);
  return false;
}

bool XBuffer::SaveBuffer(XIO& target) {
  return target._Write(buffer_, buffer_pos_);
}

}  // namespace tavi
