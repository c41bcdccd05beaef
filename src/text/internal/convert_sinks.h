//===- convert_sinks.h - Output areas of the piecewise converter -*- C++ -*-===//
//
// Where converted text goes: any stream (through a staging block on the stack) or,
// as a fast path, the memory of a plain XBuffer.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <typeinfo>

#include "tavi/core/buffer.h"
#include "tavi/io/stream.h"
#include "text/internal/convert_core.h"

namespace tavi::text_internal {

// Stages output and writes it to a stream when the block fills and at Drain.
class StreamSink {
 public:
  static constexpr size_t kBlock = 16384;
  static_assert(kBlock >= internal::kUtf8PerUnit * Converter::kPiece + 16);

  explicit StreamSink(XIO& target) : target_(target) {}
  uint8_t* Room(size_t bytes) {
    if (fill_ + bytes > kBlock && !Drain()) return nullptr;
    return block_ + fill_;
  }
  bool Commit(size_t bytes) {
    fill_ += bytes;
    return true;
  }
  bool Drain() {
    if (fill_ == 0) return true;
    const bool ok = target_._Write(block_, static_cast<uint32_t>(fill_));
    fill_ = 0;
    failed_ |= !ok;
    return ok;
  }
  bool Failed() const { return failed_; }

 private:
  XIO& target_;
  size_t fill_ = 0;
  bool failed_ = false;
  uint8_t block_[kBlock];
};

// Converts straight into a buffer's memory.
class BufferSink {
 public:
  explicit BufferSink(XBuffer& target) : target_(target) {}
  uint8_t* Room(size_t bytes) {
    if (!target_.GrowBuffer(static_cast<uint32_t>(bytes))) {
      target_.SetSafeErrorCode(kErrNoMemory);
      failed_ = true;
      return nullptr;
    }
    return target_.GetStringEnd();
  }
  bool Commit(size_t bytes) {
    target_._SetBufferPos(target_.GetBufferPos() + static_cast<uint32_t>(bytes));
    return true;
  }
  bool Failed() const { return failed_; }

 private:
  XBuffer& target_;
  bool failed_ = false;
};

// The stream as a plain growable XBuffer (not a string, which has its own _Write,
// and not an attached block, which cannot grow), or null.
inline XBuffer* PlainBuffer(XIO* stream) {
  if (stream == nullptr || typeid(*stream) != typeid(XBuffer)) return nullptr;
  auto* buffer = static_cast<XBuffer*>(stream);
  return buffer->GetBufferAttached() ? nullptr : buffer;
}

}  // namespace tavi::text_internal
