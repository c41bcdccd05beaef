//===- pack_format.cpp - The file layout of tavi pack ----------------------===//
//
// Encoding and checking of the header, the record and the block frames, and the
// packing and unpacking of one block through the library's packed container.
//
//===----------------------------------------------------------------------===//
#include "pack_format.h"

#include <algorithm>
#include <cstring>

#include "tavi/core/buffer.h"
#include "tavi/pack/container.h"

namespace tavi::cli {

namespace {

void Put32(uint8_t* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}
void Put64(uint8_t* p, uint64_t v) {
  for (int i = 0; i < 8; ++i) p[i] = static_cast<uint8_t>(v >> (8 * i));
}
uint32_t Get32(const uint8_t* p) {
  uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = (v << 8) | p[i];
  return v;
}
uint64_t Get64(const uint8_t* p) {
  return Get32(p) | (uint64_t{Get32(p + 4)} << 32);
}

constexpr uint32_t kReadStep = 1u << 20;

// Collects the unpacked bytes of one block and refuses more than the frame declares.
class BoundedSink : public XIO {
 public:
  BoundedSink(std::vector<uint8_t>& out, uint32_t limit) : out_(out), limit_(limit) {}
  bool _Write(const void* data, uint32_t bytes) override {
    if (bytes > limit_ - out_.size()) {
      SetSafeErrorCode(kErrEndOfData);
      return false;
    }
    const auto* p = static_cast<const uint8_t*>(data);
    out_.insert(out_.end(), p, p + bytes);
    return true;
  }

 private:
  std::vector<uint8_t>& out_;
  uint32_t limit_;
};

}  // namespace

void EncodeHeader(const XFileHeader256& header, uint8_t out[kHeaderSize]) {
  XBuffer buffer;
  std::memset(out, 0, kHeaderSize);
  if (header.Write(buffer) && buffer.GetBufferPos() == kHeaderSize)
    std::memcpy(out, buffer.GetBuffer(), kHeaderSize);
}

XFileHeader256 DecodeHeader(const uint8_t in[kHeaderSize]) {
  XBuffer buffer;
  buffer.AttachBuffer(const_cast<uint8_t*>(in), kHeaderSize, true);
  XFileHeader256 header;
  header.Read(buffer);
  buffer.DiscardBuffer();
  return header;
}

void EncodeRecord(const PackRecord& record, uint8_t out[kRecordSize]) {
  Put64(out, record.size);
  Put64(out + 8, static_cast<uint64_t>(record.mtime_sec));
  Put32(out + 16, record.mtime_nsec);
  Put32(out + 20, record.block_size);
  Put32(out + 24, record.xpack_flags);
  Put32(out + 28, record.methods);
}

bool DecodeRecord(const uint8_t in[kRecordSize], PackRecord& record, XError& error) {
  record.size = Get64(in);
  record.mtime_sec = static_cast<int64_t>(Get64(in + 8));
  record.mtime_nsec = Get32(in + 16);
  record.block_size = Get32(in + 20);
  record.xpack_flags = Get32(in + 24);
  record.methods = Get32(in + 28);
  if (record.block_size < kMinBlockSize || record.block_size > kMaxBlockSize ||
      record.mtime_nsec >= 1000000000u || (record.xpack_flags & ~kXPackAppliedFlags) != 0 ||
      (record.methods & ~(kXPackTryHuffman | kXPackTryLZ)) != 0) {
    error.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  return true;
}

void EncodeFrame(uint32_t raw_size, uint32_t packed_size, uint8_t out[kFrameSize]) {
  Put32(out, raw_size);
  Put32(out + 4, packed_size);
}

size_t MemorySource::Read(void* data, size_t bytes, XError&) {
  const size_t n = std::min(bytes, left_);
  if (n != 0) std::memcpy(data, data_, n);
  data_ += n;
  left_ -= n;
  return n;
}

size_t StdioSource::Read(void* data, size_t bytes, XError& error) {
  const size_t n = std::fread(data, 1, bytes, file_);
  if (n < bytes && std::ferror(file_)) error.SetSafeErrno();
  return n;
}

bool BlockReader::ReadExactly(void* data, size_t bytes) {
  if (source_.Read(data, bytes, error_) == bytes) return true;
  error_.SetSafeErrorCode(kErrEndOfData);
  return false;
}

BlockReader::Status BlockReader::Next(Frame& frame) {
  if (ended_ || error_.IsError()) {
    error_.SetSafeErrorCode(kErrEndOfData);
    return kBad;
  }
  uint8_t head[kFrameSize];
  if (!ReadExactly(head, kFrameSize)) return kBad;
  const uint32_t raw_size = Get32(head);
  const uint32_t packed_size = Get32(head + 4);
  if (raw_size == 0) {
    uint8_t extra;
    if (packed_size != 0 || source_.Read(&extra, 1, error_) != 0 || error_.IsError() ||
        (record_.size != kSizeUnknown && total_ != record_.size)) {
      error_.SetSafeErrorCode(kErrEndOfData);
      return kBad;
    }
    ended_ = true;
    return kEnd;
  }
  if (raw_size > record_.block_size || packed_size == 0 ||
      packed_size > raw_size + kMaxContainerOverhead ||
      (record_.size != kSizeUnknown && raw_size > record_.size - total_)) {
    error_.SetSafeErrorCode(kErrEndOfData);
    return kBad;
  }
  frame.raw_size = raw_size;
  frame.packed.clear();
  while (frame.packed.size() < packed_size) {
    const size_t have = frame.packed.size();
    const size_t step = std::min<size_t>(kReadStep, packed_size - have);
    frame.packed.resize(have + step);
    if (!ReadExactly(frame.packed.data() + have, step)) return kBad;
  }
  total_ += raw_size;
  return kBlock;
}

bool PackBlock(const uint8_t* data, uint32_t size, const PackRecord& record,
               const char16_t* password, std::vector<uint8_t>& out, XError& error) {
  XBuffer buffer(size / 2 + 4096);
  strXPackRecord request;
  request.flags = record.xpack_flags;
  request.stream = &buffer;
  request.password = password;
  request.data = data;
  request.size_low = size;
  request.methods = record.methods;
  if (!buffer.AllocBuffer(size + kMaxContainerOverhead) || !XPack(&request)) {
    error.ImportErrorCode(buffer);
    if (error.IsOk()) error.SetErrorCode(kErrInternal);
    return false;
  }
  const auto* p = static_cast<const uint8_t*>(buffer.GetBuffer());
  out.assign(p, p + buffer.GetBufferPos());
  return true;
}

bool UnpackBlock(Frame& frame, const PackRecord& record, const char16_t* password,
                 std::vector<uint8_t>& out, XError& error) {
  out.clear();
  // The flags word follows the method word; a container whose flags differ from the
  // record's could drop the trailers that the record promises.
  if (frame.packed.size() < 8 || Get32(frame.packed.data() + 4) != record.xpack_flags) {
    error.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  XBuffer source;
  source.AttachBuffer(frame.packed.data(), static_cast<uint32_t>(frame.packed.size()), true);
  BoundedSink sink(out, frame.raw_size);
  strXUnpackRecord request;
  request.stream = &source;
  request.password = password;
  request.output = &sink;
  const bool ok = XPack(&request);
  const uint32_t consumed = source.GetCurrentPos();
  source.DiscardBuffer();
  if (!ok) {
    error.ImportErrorCode(source);
    if (error.IsOk()) error.SetErrorCode(kErrEndOfData);
    return false;
  }
  if (consumed != frame.packed.size() || out.size() != frame.raw_size) {
    error.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  return true;
}

}  // namespace tavi::cli
