//===- sha256.cpp - One-shot forms of the library's hash ------------------===//
#include "tavi/crypt/sha256.h"

#include <cstring>

#include "crypt/internal/sha256_kernel.h"

namespace tavi {
namespace {

void HashWith(const uint32_t (&init)[8], uint32_t (&state)[8], const void* data, int32_t size) {
  std::memcpy(state, init, sizeof(state));
  const auto* bytes = static_cast<const uint8_t*>(data);
  const uint32_t length = size > 0 ? static_cast<uint32_t>(size) : 0;  // nothing to read
  crypt_internal::Sha256Compress(state, bytes, length / 64);
  uint8_t block[64];
  const uint32_t tail = length % 64;
  if (tail > 0) std::memcpy(block, bytes + (length - tail), tail);
  crypt_internal::Sha256Finalize(state, block, tail, length);
}

}  // namespace

void XHashSHA256(int32_t (&out)[8], const void* data, int32_t size) {
  uint32_t state[8];
  HashWith(crypt_internal::kSha256Init, state, data, size);
  std::memcpy(out, state, 32);
}

void XHashSHA224(int32_t (&out)[7], const void* data, int32_t size) {
  uint32_t state[8];
  HashWith(crypt_internal::kSha224Init, state, data, size);
  std::memcpy(out, state, 28);
}

bool XEqualHashSHA256(const int32_t (&a)[8], const int32_t (&b)[8]) {
  for (int i = 0; i < 8; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

}  // namespace tavi
