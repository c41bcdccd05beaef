//===- aes256.cpp - AES-256 key expansion, block functions, memory form ---===//
#include "tavi/crypt/aes256.h"

#include <cstring>

#include "crypt/internal/aes256_kernel.h"
#include "tavi/thread/parallel.h"

namespace tavi {

using crypt_internal::kAesKeyBytes;

namespace {

// XAES256 hands the worker threads runs of blocks of this size (a compromise
// between the hand-out cost per run and an even share of the work); the
// blocks behind the last whole run are done by the calling thread.
constexpr uint32_t kParallelChunk = 64 * 1024;

struct CipherJob {
  const uint8_t* schedule;
  bool encrypt;
};

void CipherChunk(void* chunk, void* context) {
  const auto* job = static_cast<const CipherJob*>(context);
  auto* bytes = static_cast<uint8_t*>(chunk);
  if (job->encrypt) {
    crypt_internal::Aes256Encrypt(job->schedule, bytes, bytes, kParallelChunk / 16);
  } else {
    crypt_internal::Aes256Decrypt(job->schedule, bytes, bytes, kParallelChunk / 16);
  }
}

}  // namespace

void XAES256KeyExpansion(char* schedule, const void* key32) {
  crypt_internal::Aes256ExpandKey(static_cast<const uint8_t*>(key32),
                                  reinterpret_cast<uint8_t*>(schedule));
}

void XAES256KeyExpansion(char (&schedule)[240], const char* password) {
  uint8_t key[kAesKeyBytes];
  crypt_internal::Aes256KeyFromPassword(password, key);
  crypt_internal::Aes256ExpandKey(key, reinterpret_cast<uint8_t*>(schedule));
}

void XAES256KeyExpansion(char (&schedule)[240], const char16_t* password) {
  uint8_t key[kAesKeyBytes];
  crypt_internal::Aes256KeyFromPassword(password, key);
  crypt_internal::Aes256ExpandKey(key, reinterpret_cast<uint8_t*>(schedule));
}

void XAES256EncryptBlock(void* block, const void* schedule) {
  auto* b = static_cast<uint8_t*>(block);
  crypt_internal::Aes256Encrypt(static_cast<const uint8_t*>(schedule), b, b, 1);
}

void XAES256DecryptBlock(void* block, const void* schedule) {
  auto* b = static_cast<uint8_t*>(block);
  crypt_internal::Aes256Decrypt(static_cast<const uint8_t*>(schedule), b, b, 1);
}

bool XAES256(void* data, int32_t size, const char16_t* password, bool encrypt) {
  if (size < 16) return size == 0;
  char schedule[240];
  XAES256KeyExpansion(schedule, password);
  CipherJob job{reinterpret_cast<const uint8_t*>(schedule), encrypt};
  auto* bytes = static_cast<uint8_t*>(data);
  const uint32_t chunks = static_cast<uint32_t>(size) / kParallelChunk;
  if (chunks > 1) XMakeArrayMT(&CipherChunk, &job, bytes, chunks, kParallelChunk);
  const uint32_t done = chunks > 1 ? chunks * kParallelChunk : 0;
  const size_t blocks = (static_cast<uint32_t>(size) - done) / 16;
  if (encrypt) {
    crypt_internal::Aes256Encrypt(job.schedule, bytes + done, bytes + done, blocks);
  } else {
    crypt_internal::Aes256Decrypt(job.schedule, bytes + done, bytes + done, blocks);
  }
  return true;
}

}  // namespace tavi
