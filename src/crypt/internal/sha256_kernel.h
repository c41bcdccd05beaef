//===- sha256_kernel.h - Compression of the library's hash ------*- C++ -*-===//
//
// The SHA-256 compression function with the message words taken from the
// block in little-endian order (the library's hash variant), a portable path
// and a SHA-NI path chosen once from the CPU's features, and the
// finalisation shared by the one-shot functions and the hashing filter.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::crypt_internal {

// The initial hash values of SHA-256 and SHA-224.
inline constexpr uint32_t kSha256Init[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                            0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
inline constexpr uint32_t kSha224Init[8] = {0xc1059ed8, 0x367cd507, 0x3070dd17, 0xf70e5939,
                                            0xffc00b31, 0x68581511, 0x64f98fa7, 0xbefa4fa4};
// The 64 round constants.
extern const uint32_t kSha256K[64];

// Each compression function runs nblocks 64-byte blocks through the state.
void Sha256CompressPortable(uint32_t state[8], const uint8_t* blocks, size_t nblocks);
#if defined(__x86_64__) || defined(__i386__)
void Sha256CompressShaNi(uint32_t state[8], const uint8_t* blocks, size_t nblocks);
#endif

enum class Sha256Path { kPortable, kShaNi };

// Path selection, as for the CRC kernels: tests and benchmarks force a path,
// Reset restores the automatic choice.
bool Sha256PathAvailable(Sha256Path path);
Sha256Path Sha256ActivePath();
bool SetSha256Path(Sha256Path path);
void ResetSha256Path();

// Sha256Compress runs the blocks through the active path.
void Sha256Compress(uint32_t state[8], const uint8_t* blocks, size_t nblocks);

// Sha256Finalize pads the buffered tail (buffered < 64 bytes in buffer, which
// it overwrites) with the byte 0x01, zeros and the byte count total as a
// big-endian 64-bit number whose high word is 0, compresses the last block or
// two, and leaves the digest bytes in the memory of state (each word most
// significant byte first).
void Sha256Finalize(uint32_t state[8], uint8_t buffer[64], uint32_t buffered, uint32_t total);

}  // namespace tavi::crypt_internal
