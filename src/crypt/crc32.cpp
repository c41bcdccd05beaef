//===- crc32.cpp - CRC-32 over memory -------------------------------------===//
#include "tavi/crypt/crc32.h"

#include "crypt/internal/crc32_kernel.h"

namespace tavi {

bool XHashCRC32(uint32_t& crc, const void* data, uint32_t size) {
  crypt_internal::Crc32Table();
  crc = 0xFFFFFFFFu;
  if (data == nullptr || size == 0) return data == nullptr && size == 0;
  crc = crypt_internal::Crc32Update(0xFFFFFFFFu, data, size) ^ 0xFFFFFFFFu;
  return true;
}

}  // namespace tavi
