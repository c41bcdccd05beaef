//===- aes256.h - AES-256 block cipher and password keys --------*- C++ -*-===//
//
// The AES-256 block cipher of FIPS-197, used block by block (electronic
// codebook: no chaining, no initialisation vector, no padding), keyed from a
// password by the library's own rule, and applied in place over memory.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// XAES256KeyExpansion (raw key) writes the FIPS-197 AES-256 schedule of the 32
// bytes at key32 into the 240 bytes at schedule (15 round keys of 16 bytes).
// Pass the key as a pointer to unsigned bytes or void: a char pointer picks
// the byte-password form below.
TAVI_API void XAES256KeyExpansion(char* schedule, const void* key32);

// XAES256KeyExpansion (byte password) makes the 32 key bytes by walking the
// password cyclically, its terminating zero included ("ab" gives 61 62 00 61
// 62 00 ...), then expands them. No hashing, salt or iteration count.
TAVI_API void XAES256KeyExpansion(char (&schedule)[240], const char* password);

// XAES256KeyExpansion (wide password) is the same walk over UTF-16 units,
// each giving the key byte unit % 255 (not 256: 0x00FF gives 0, 0x0100 gives
// 1). An empty password gives 32 zero bytes. Every other AES operation of the
// library keys itself this way.
TAVI_API void XAES256KeyExpansion(char (&schedule)[240], const char16_t* password);

// XAES256EncryptBlock enciphers the 16 bytes at block in place with a
// schedule from XAES256KeyExpansion (14 rounds).
TAVI_API void XAES256EncryptBlock(void* block, const void* schedule);

// XAES256DecryptBlock deciphers the 16 bytes at block in place.
TAVI_API void XAES256DecryptBlock(void* block, const void* schedule);

// XAES256 enciphers (encrypt true) or deciphers size bytes at data in place
// under the wide password, block by block. Only whole blocks are processed:
// the last size % 16 bytes are left as they are. A size below 16 touches
// nothing and returns true only for 0 (false for 1..15 and for negative
// sizes). Large inputs are processed on several threads.
TAVI_API bool XAES256(void* data, int32_t size, const char16_t* password, bool encrypt);

}  // namespace tavi
