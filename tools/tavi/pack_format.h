//===- pack_format.h - The file layout of tavi pack ------------*- C++ -*-===//
//
// A packed file is the library's 32-byte common file header, a 32-byte record of
// the original file (size, modification time, block size, packing settings), then
// the data in blocks, each one framed by its unpacked and packed sizes and holding
// one packed container, and a frame of two zero sizes at the end.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "tavi/core/error.h"
#include "tavi/file/file_header.h"

namespace tavi::cli {

// Common file header: identifier "TAVP" (the bytes 54 41 56 50), the marker "1234",
// the format version in the reserved word, and the header flags (compressed when a
// method other than storing is allowed, enciphered with a cipher).
inline constexpr uint32_t kPackIdentifier = 0x50564154u;
inline constexpr uint32_t kPackFormatVersion = 1;
inline constexpr size_t kHeaderSize = XFileHeader256::kSize;
inline constexpr size_t kRecordSize = 32;
inline constexpr size_t kFrameSize = 8;

// Block sizes accepted on both sides: 4 KiB to 64 MiB; 1 MiB by default.
inline constexpr uint32_t kMinBlockSize = 4096;
inline constexpr uint32_t kMaxBlockSize = 64u << 20;
inline constexpr uint32_t kDefaultBlockSize = 1u << 20;
// What a container may add to its block: method and flags words, the count, the
// CRC and hash trailers, and the cipher's last block.
inline constexpr uint32_t kMaxContainerOverhead = 128;
// The size field of a record written while the input's size was not known.
inline constexpr uint64_t kSizeUnknown = ~uint64_t{0};

// The record after the header: the original size (kSizeUnknown when packed from a
// stream of unknown length), its modification time in seconds and nanoseconds since
// 1970, the block size, and the container flags and methods every block used.
struct PackRecord {
  uint64_t size = 0;
  int64_t mtime_sec = 0;
  uint32_t mtime_nsec = 0;
  uint32_t block_size = kDefaultBlockSize;
  uint32_t xpack_flags = 0;
  uint32_t methods = 0;
};

// The header's 32 bytes, written and read through the library's header record.
void EncodeHeader(const XFileHeader256& header, uint8_t out[kHeaderSize]);
XFileHeader256 DecodeHeader(const uint8_t in[kHeaderSize]);
void EncodeRecord(const PackRecord& record, uint8_t out[kRecordSize]);
// False (error 0x20000004) when the block size is out of range, the nanoseconds
// reach a second, or the flags or methods hold bits a packer never sets.
bool DecodeRecord(const uint8_t in[kRecordSize], PackRecord& record, XError& error);
void EncodeFrame(uint32_t raw_size, uint32_t packed_size, uint8_t out[kFrameSize]);

// Where the reader takes its bytes: returns how many it delivered, fewer only at
// the end; a read fault is recorded in `error` and ends the data.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  virtual size_t Read(void* data, size_t bytes, XError& error) = 0;
};

class MemorySource : public ByteSource {
 public:
  MemorySource(const uint8_t* data, size_t size) : data_(data), left_(size) {}
  size_t Read(void* data, size_t bytes, XError& error) override;

 private:
  const uint8_t* data_;
  size_t left_;
};

class StdioSource : public ByteSource {
 public:
  explicit StdioSource(std::FILE* file) : file_(file) {}
  size_t Read(void* data, size_t bytes, XError& error) override;

 private:
  std::FILE* file_;
};

// One framed block: its unpacked size and its packed container.
struct Frame {
  uint32_t raw_size = 0;
  std::vector<uint8_t> packed;
};

// BlockReader walks the frames that follow the record. Next fills `frame` and
// returns kBlock, returns kEnd after the closing frame once it has checked that
// nothing follows and that the sizes add up to the record's, or kBad with the cause
// in error(): 0x20000004 for a frame that ends early, sizes out of bounds (a block
// larger than the record's block size, a container too large for its block, a
// packed size of 0 for a non-empty block), data after the closing frame, or a total
// that differs from the record. Packed bytes are read in steps of at most 1 MiB, so
// memory follows the data that arrived, not the sizes a frame declares.
class BlockReader {
 public:
  enum Status { kBlock, kEnd, kBad };
  BlockReader(ByteSource& source, const PackRecord& record) : source_(source), record_(record) {}
  Status Next(Frame& frame);
  const XError& error() const { return error_; }
  uint64_t total() const { return total_; }

 private:
  bool ReadExactly(void* data, size_t bytes);
  ByteSource& source_;
  PackRecord record_;
  XError error_;
  uint64_t total_ = 0;
  bool ended_ = false;
};

// Packs `size` bytes (1 to the maximum block size) with the record's flags and
// methods into `out`, replacing its content; false with the container's error.
bool PackBlock(const uint8_t* data, uint32_t size, const PackRecord& record,
               const char16_t* password, std::vector<uint8_t>& out, XError& error);

// Unpacks one frame's container into `out` (replacing its content): the container
// must carry the record's flags word, take exactly the frame's packed bytes and give
// exactly its unpacked size. False with the container's error, or 0x20000004 for a
// flags word or size that differs. A ciphered container is deciphered in place.
bool UnpackBlock(Frame& frame, const PackRecord& record, const char16_t* password,
                 std::vector<uint8_t>& out, XError& error);

}  // namespace tavi::cli
