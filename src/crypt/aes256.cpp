//===- aes256.cpp - AES-256 key expansion, block functions, memory form ---===//
#include "tavi/crypt/aes256.h"

#include <cstring>

#include "crypt/internal/aes256_kernel.h"

namespace tavi {

using crypt_internal::kAesKeyBytes;

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
  const auto* sched = reinterpret_cast<const uint8_t*>(schedule);
  auto* bytes = static_cast<uint8_t*>(data);
  const size_t blocks = static_cast<size_t>(size) / 16;
  if (encrypt) {
    crypt_internal::Aes256Encrypt(sched, bytes, bytes, blocks);
  } else {
    crypt_internal::Aes256Decrypt(sched, bytes, bytes, blocks);
  }
  return true;
}

}  // namespace tavi
