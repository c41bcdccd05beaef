//===- aes256_stream.cpp - AES-256 from memory to a stream and back -------===//
//
// Both functions move whole blocks in batches through a stack area, so a
// large input costs one kernel call and one stream call per batch rather
// than one per 16-byte block; the bytes written are those of the block-by-
// block definition.
//
//===----------------------------------------------------------------------===//
#include <cstring>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/block_reader.h"
#include "tavi/crypt/aes256.h"
#include "tavi/io/stream.h"

namespace tavi {
namespace {

constexpr uint32_t kBatchBytes = 16 * 1024;

}  // namespace

bool XAES256Encrypt(XIO& out, const char16_t* password, const void* data, int32_t size) {
  if (size == 0) return true;
  if (size < 0) {
    out.SetErrorCode(kErrOutOfRange);
    return false;
  }
  char schedule[240];
  XAES256KeyExpansion(schedule, password);
  const auto* sched = reinterpret_cast<const uint8_t*>(schedule);
  const auto* in = static_cast<const uint8_t*>(data);
  uint32_t whole = static_cast<uint32_t>(size) & ~15u;
  const uint32_t tail = static_cast<uint32_t>(size) & 15u;

  alignas(64) uint8_t batch[kBatchBytes];
  uint8_t work[16] = {};  // the last enciphered block, under the tail
  bool ok = true;
  while (whole > 0) {
    const uint32_t n = whole < kBatchBytes ? whole : kBatchBytes;
    crypt_internal::Aes256Encrypt(sched, in, batch, n / 16);
    std::memcpy(work, batch + n - 16, 16);
    ok = out._Write(batch, n);
    if (!ok) return false;
    in += n;
    whole -= n;
  }
  if (tail > 0) {
    std::memcpy(work, in, tail);
    crypt_internal::Aes256Encrypt(sched, work, work, 1);
    ok = out._Write(work, tail);
  }
  return ok;
}

bool XAES256Decrypt(XIO& out, const char16_t* password, XIO& in, int32_t size) {
  if (size == 0) return true;
  if (size < 0) {
    out.SetErrorCode(kErrOutOfRange);
    return false;
  }
  char schedule[240];
  XAES256KeyExpansion(schedule, password);
  const auto* sched = reinterpret_cast<const uint8_t*>(schedule);
  uint32_t remaining = static_cast<uint32_t>(size);  // plain bytes still to write

  alignas(64) uint8_t batch[kBatchBytes];
  while (remaining > 0) {
    const uint32_t want_plain = remaining < kBatchBytes ? remaining : kBatchBytes;
    const uint32_t want = (want_plain + 15) & ~15u;  // whole enciphered blocks
    const uint32_t got = crypt_internal::ReadWholeBlocks(in, batch, want).got;
    const uint32_t blocks = (got < want ? got : want) / 16;
    crypt_internal::Aes256Decrypt(sched, batch, batch, blocks);
    const uint32_t plain = blocks * 16 < want_plain ? blocks * 16 : want_plain;
    if (plain > 0 && !out._Write(batch, plain)) return false;
    if (got < want) {
      if (in.IsOk()) in.SetErrorCode(kErrEndOfData);
      out.ImportErrorCode(in);
      return false;
    }
    remaining -= want_plain;
  }
  return true;
}

}  // namespace tavi
