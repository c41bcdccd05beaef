//===- aes256_filter.cpp - The AES-256 filter stream ----------------------===//
//
// Writes encipher whole blocks into a stack batch and hand the next stream
// one batch per call; reads decipher in the caller's memory. The bytes that
// travel are those of enciphering block by block.
//
//===----------------------------------------------------------------------===//
#include <cstring>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/block_reader.h"
#include "tavi/crypt/aes256.h"

namespace tavi {
namespace {

constexpr uint32_t kBatchBytes = 16 * 1024;

const uint8_t* Schedule(const char* schedule) {
  return reinterpret_cast<const uint8_t*>(schedule);
}

}  // namespace

XCipherAES256::~XCipherAES256() = default;

void XCipherAES256::Init(const char16_t* password) {
  XAES256KeyExpansion(schedule_, password);
  buffered_ = 0;
}

bool XCipherAES256::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  const auto* p = static_cast<const uint8_t*>(data);
  uint32_t n = bytes;
  if (buffered_ > 0 && n < 16 - buffered_) {
    std::memcpy(state_.bytes + buffered_, p, n);
    buffered_ += n;
    return true;
  }
  alignas(64) uint8_t batch[kBatchBytes];
  uint32_t used = 0;
  if (buffered_ > 0) {
    // Complete the waiting block; it leads the first batch.
    const uint32_t take = 16 - buffered_;
    std::memcpy(batch, state_.bytes, buffered_);
    std::memcpy(batch + buffered_, p, take);
    crypt_internal::Aes256Encrypt(Schedule(schedule_), batch, batch, 1);
    used = 16;
    p += take;
    n -= take;
  }
  for (;;) {
    const uint32_t room = (kBatchBytes - used) / 16;
    const uint32_t blocks = n / 16 < room ? n / 16 : room;
    crypt_internal::Aes256Encrypt(Schedule(schedule_), p, batch + used, blocks);
    used += 16 * blocks;
    p += 16 * blocks;
    n -= 16 * blocks;
    if (used == 0) break;
    // The block buffer keeps the last enciphered block: it is the filler
    // behind a later partial block.
    std::memcpy(state_.bytes, batch + used - 16, 16);
    if (!next->_Write(batch, used)) {
      ImportErrorCode(*next);
      return false;
    }
    used = 0;
    if (n < 16) break;
  }
  std::memcpy(state_.bytes, p, n);
  buffered_ = n;
  return true;
}

uint32_t XCipherAES256::_Read(void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return 0;
  auto* out = static_cast<uint8_t*>(data);
  uint32_t want = bytes;
  if (buffered_ > 0) {
    const uint32_t k = buffered_;
    if (want <= k) {
      std::memcpy(out, state_.bytes + 16 - k, want);
      buffered_ = k - want;
      return bytes;
    }
    std::memcpy(out, state_.bytes + 16 - k, k);
    buffered_ = 0;
    out += k;
    want -= k;
  }
  const uint32_t whole = want & ~15u;
  crypt_internal::BlockRead read = crypt_internal::ReadWholeBlocks(*next, out, whole);
  if (read.got == whole) {
    crypt_internal::Aes256Decrypt(Schedule(schedule_), out, out, whole / 16);
    const uint32_t tail = want & 15u;
    if (tail == 0) return bytes;
    read = crypt_internal::ReadWholeBlocks(*next, state_.bytes, 16);
    if (read.got == 16) {
      crypt_internal::Aes256Decrypt(Schedule(schedule_), state_.bytes, state_.bytes, 1);
      std::memcpy(out + whole, state_.bytes, tail);
      buffered_ = 16 - tail;
      return bytes;
    }
  }
  if (read.ended_empty) ImportErrorCode(*next);
  SetSafeErrorCode(kErrEndOfData);
  return 0;
}

bool XCipherAES256::_Flush() {
  if (buffered_ == 0) return true;
  return EncryptAndWriteState();
}

bool XCipherAES256::EncryptAndWriteState() {
  if (Next() == nullptr) return false;
  crypt_internal::Aes256Encrypt(Schedule(schedule_), state_.bytes, state_.bytes, 1);
  return XRoutedIO::_Write(state_.bytes, 16);
}

bool XCipherAES256::ReadAndDecryptState(XAESState* state) {
  XIO* next = Next();
  if (next == nullptr) return false;
  const crypt_internal::BlockRead read = crypt_internal::ReadWholeBlocks(*next, state->bytes, 16);
  if (read.got != 16) {
    if (read.ended_empty) ImportErrorCode(*next);
    SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  crypt_internal::Aes256Decrypt(Schedule(schedule_), state->bytes, state->bytes, 1);
  return true;
}

}  // namespace tavi
