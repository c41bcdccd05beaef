//===- crc32_kernel.h - CRC-32 kernels and their dispatch -------*- C++ -*-===//
//
// The reflected CRC-32 (polynomial 0x04C11DB7) over a raw register: callers
// start at 0xFFFFFFFF and invert at the end. One portable path (slicing by 8)
// and carry-less-multiply folding paths, chosen once from the CPU's features.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::crypt_internal {

// The lookup tables: table[0] is the classic byte-at-a-time table; table[k]
// advances a byte that sits k bytes further from the end of an 8-byte group.
struct Crc32Tables {
  uint32_t table[8][256];
};

// Crc32Table builds the tables on first use (once, under the guard of a
// function-local static) and returns them; no caller ever sees them half built.
const Crc32Tables& Crc32Table();

// Each update function folds n bytes into the raw register and returns it.
uint32_t Crc32UpdatePortable(uint32_t reg, const uint8_t* data, size_t n);
#if defined(__x86_64__) || defined(__i386__)
uint32_t Crc32UpdatePclmul(uint32_t reg, const uint8_t* data, size_t n);
uint32_t Crc32UpdateVpclmul(uint32_t reg, const uint8_t* data, size_t n);
#endif

enum class Crc32Path { kPortable, kPclmul, kVpclmul };

// Crc32PathAvailable tells whether this processor can run the path.
bool Crc32PathAvailable(Crc32Path path);
// Crc32ActivePath is the path Crc32Update uses now.
Crc32Path Crc32ActivePath();
// SetCrc32Path makes Crc32Update use the given path (false, and no change,
// when the processor lacks it); ResetCrc32Path restores the automatic choice.
// Meant for tests and benchmarks that compare the paths.
bool SetCrc32Path(Crc32Path path);
void ResetCrc32Path();

// Crc32Update folds n bytes through the active path.
uint32_t Crc32Update(uint32_t reg, const void* data, size_t n);

}  // namespace tavi::crypt_internal
