//===- endian.h - Byte-order helpers for the crypt kernels ------*- C++ -*-===//
//
// Alignment-safe loads and stores of 32- and 64-bit words in a fixed byte
// order, whatever the host's order.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tavi::crypt_internal {

inline uint32_t ByteSwap32(uint32_t v) {
  return (v >> 24) | ((v >> 8) & 0x0000FF00u) | ((v << 8) & 0x00FF0000u) | (v << 24);
}

inline uint32_t LoadLE32(const void* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  if constexpr (std::endian::native == std::endian::big) v = ByteSwap32(v);
  return v;
}

inline uint32_t LoadBE32(const void* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  if constexpr (std::endian::native == std::endian::little) v = ByteSwap32(v);
  return v;
}

inline void StoreLE32(void* p, uint32_t v) {
  if constexpr (std::endian::native == std::endian::big) v = ByteSwap32(v);
  std::memcpy(p, &v, 4);
}

inline void StoreBE32(void* p, uint32_t v) {
  if constexpr (std::endian::native == std::endian::little) v = ByteSwap32(v);
  std::memcpy(p, &v, 4);
}

}  // namespace tavi::crypt_internal
