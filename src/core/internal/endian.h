//===- endian.h - Little-endian loads and stores ---------------*- C++ -*-===//
//
// Persistent integers are little-endian on every host (the hash works on big-endian
// words). These helpers read and write them byte by byte through memcpy: alignment-safe, and folded
// into single moves by the compiler on little-endian hosts.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tavi::internal {

template <typename T>
inline T ByteSwap(T v) {
  if constexpr (sizeof(T) == 2) return static_cast<T>(__builtin_bswap16(v));
  if constexpr (sizeof(T) == 4) return static_cast<T>(__builtin_bswap32(v));
  if constexpr (sizeof(T) == 8) return static_cast<T>(__builtin_bswap64(v));
  return v;
}

template <typename T>
inline T LoadLE(const void* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  if constexpr (std::endian::native == std::endian::big) v = ByteSwap(v);
  return v;
}

template <typename T>
inline void StoreLE(void* p, T v) {
  if constexpr (std::endian::native == std::endian::big) v = ByteSwap(v);
  std::memcpy(p, &v, sizeof v);
}

template <typename T>
inline T LoadBE(const void* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  if constexpr (std::endian::native == std::endian::little) v = ByteSwap(v);
  return v;
}

template <typename T>
inline void StoreBE(void* p, T v) {
  if constexpr (std::endian::native == std::endian::little) v = ByteSwap(v);
  std::memcpy(p, &v, sizeof v);
}

inline uint16_t LoadLE16(const void* p) {
  return LoadLE<uint16_t>(p);
}
inline uint32_t LoadLE32(const void* p) {
  return LoadLE<uint32_t>(p);
}
inline uint64_t LoadLE64(const void* p) {
  return LoadLE<uint64_t>(p);
}
inline void StoreLE16(void* p, uint16_t v) {
  StoreLE(p, v);
}
inline void StoreLE32(void* p, uint32_t v) {
  StoreLE(p, v);
}
inline void StoreLE64(void* p, uint64_t v) {
  StoreLE(p, v);
}
inline uint32_t LoadBE32(const void* p) {
  return LoadBE<uint32_t>(p);
}
inline void StoreBE32(void* p, uint32_t v) {
  StoreBE(p, v);
}

}  // namespace tavi::internal
