//===- block_framing_fuzz.cpp - Fuzz reading the frames of tavi pack files -===//
//
// Reads arbitrary bytes as the record and block frames that follow a packed
// file's header, and unpacks every frame the reader accepts, with or without a
// password. Whatever the bytes, the reader keeps each block within the record's
// block size and the total within the record's size, and an accepted block
// unpacks to exactly its declared size or fails with a cause.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <vector>

#include "fuzz_helpers.h"
#include "pack_format.h"
#include "tavi/pack/container.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tavi::cli;
  if (size < kRecordSize) return 0;
  PackRecord record;
  tavi::XError error;
  if (!DecodeRecord(data, record, error)) {
    FUZZ_ASSERT(error.GetErrorCode() == tavi::kErrEndOfData);
    return 0;
  }
  // Large blocks are valid but make slow runs: a tiny container may expand to its
  // full block size.
  record.block_size = std::min<uint32_t>(record.block_size, 1u << 16);
  MemorySource source(data + kRecordSize, size - kRecordSize);
  BlockReader reader(source, record);
  const char16_t password[] = u"secret";
  Frame frame;
  std::vector<uint8_t> out;
  uint64_t total = 0;
  for (int blocks = 0; blocks < 64; ++blocks) {
    const BlockReader::Status status = reader.Next(frame);
    if (status == BlockReader::kBad) {
      FUZZ_ASSERT(reader.error().IsError());
      break;
    }
    if (status == BlockReader::kEnd) {
      FUZZ_ASSERT(record.size == kSizeUnknown || reader.total() == record.size);
      break;
    }
    FUZZ_ASSERT(frame.raw_size > 0 && frame.raw_size <= record.block_size);
    FUZZ_ASSERT(frame.packed.size() <= frame.raw_size + kMaxContainerOverhead);
    total += frame.raw_size;
    FUZZ_ASSERT(record.size == kSizeUnknown || total <= record.size);
    tavi::XError block_error;
    const bool ciphered = (record.xpack_flags & (tavi::kXPackAES | tavi::kXPackXOR)) != 0;
    if (UnpackBlock(frame, record, ciphered ? password : nullptr, out, block_error)) {
      FUZZ_ASSERT(out.size() == frame.raw_size);
    } else {
      FUZZ_ASSERT(block_error.IsError());
    }
  }
  return 0;
}
