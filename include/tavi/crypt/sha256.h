//===- sha256.h - The library's 256- and 224-bit hash -----------*- C++ -*-===//
//
// A deliberate variant of SHA-256: the FIPS 180-4 compression function,
// initial values and round constants, but message words taken little-endian,
// the padding byte 0x01 and the message length counted in bytes (32 bits,
// wrapping at 4 GiB). Its digests differ from standard SHA-256 digests and
// are comparable only with digests made by this library.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// XHashSHA256 hashes size bytes at data into out. Each element of out holds
// four digest bytes in memory order, so out read as 32 bytes is the digest
// (H0's most significant byte first). Whole 64-byte blocks are compressed
// straight from data. No argument checks: data must hold size bytes, and a
// negative size is the caller's fault. Cost: linear; SHA extensions where
// the processor has them.
TAVI_API void XHashSHA256(int32_t (&out)[8], const void* data, int32_t size);

// XHashSHA224 is XHashSHA256 started from the SHA-224 initial values; out
// receives the first 28 digest bytes. It is not a truncation of the 256-bit
// digest of the same data.
TAVI_API void XHashSHA224(int32_t (&out)[7], const void* data, int32_t size);

// XEqualHashSHA256 is true when the two digests are equal word by word.
TAVI_API bool XEqualHashSHA256(const int32_t (&a)[8], const int32_t (&b)[8]);

}  // namespace tavi
