//===- crc32_kernel.cpp - CRC-32 table, portable path and dispatch --------===//
//
// The portable path reads 8 bytes per step through eight derived tables
// (slicing by 8); the folding paths live in crc32_clmul.cpp.
//
//===----------------------------------------------------------------------===//
#include <atomic>

#include "core/internal/endian.h"
#include "core/internal/kernel_choice.h"
#include "crypt/internal/crc32_kernel.h"
#include "crypt/internal/target.h"
#include "platform/cpu.h"

namespace tavi::crypt_internal {

using internal::KernelChoice;
using internal::LoadBE32;
using internal::LoadLE32;
using internal::StoreBE32;
using internal::StoreLE32;

namespace {

uint32_t Mirror32(uint32_t v) {
  uint32_t r = 0;
  for (int bit = 0; bit < 32; ++bit) r |= ((v >> bit) & 1u) << (31 - bit);
  return r;
}

uint32_t Mirror8(uint32_t v) {
  uint32_t r = 0;
  for (int bit = 0; bit < 8; ++bit) r |= ((v >> bit) & 1u) << (7 - bit);
  return r;
}

// Entry i of the byte table: the byte mirrored, run MSB-first through the
// polynomial 0x04C11DB7 for 8 steps, and the result mirrored back. This is the
// same table that shifting right with 0xEDB88320 produces.
void BuildTables(Crc32Tables& t) {
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t reg = Mirror8(i) << 24;
    for (int step = 0; step < 8; ++step) {
      reg = (reg & 0x80000000u) ? (reg << 1) ^ 0x04C11DB7u : reg << 1;
    }
    t.table[0][i] = Mirror32(reg);
  }
  for (int k = 1; k < 8; ++k) {
    for (uint32_t i = 0; i < 256; ++i) {
      const uint32_t prev = t.table[k - 1][i];
      t.table[k][i] = (prev >> 8) ^ t.table[0][prev & 0xFF];
    }
  }
}

using Crc32Fn = uint32_t (*)(uint32_t, const uint8_t*, size_t);

Crc32Fn PathFunction(Crc32Path path) {
  switch (path) {
#if defined(__x86_64__) || defined(__i386__)
    case Crc32Path::kPclmul:
      return &Crc32UpdatePclmul;
    case Crc32Path::kVpclmul:
      return &Crc32UpdateVpclmul;
#endif
    default:
      return &Crc32UpdatePortable;
  }
}

KernelChoice<Crc32Path, Crc32Fn>& Choice() {
  static KernelChoice<Crc32Path, Crc32Fn> choice({Crc32Path::kVpclmul, Crc32Path::kPclmul},
                                                 Crc32Path::kPortable, PathFunction,
                                                 Crc32PathAvailable);
  return choice;
}

}  // namespace

const Crc32Tables& Crc32Table() {
  static const Crc32Tables* const tables = [] {
    static Crc32Tables storage;
    BuildTables(storage);
    return &storage;
  }();
  return *tables;
}

uint32_t Crc32UpdatePortable(uint32_t reg, const uint8_t* data, size_t n) {
  const auto& t = Crc32Table().table;
  while (n >= 8) {
    const uint32_t lo = LoadLE32(data) ^ reg;
    const uint32_t hi = LoadLE32(data + 4);
    reg = t[7][lo & 0xFF] ^ t[6][(lo >> 8) & 0xFF] ^ t[5][(lo >> 16) & 0xFF] ^ t[4][lo >> 24] ^
          t[3][hi & 0xFF] ^ t[2][(hi >> 8) & 0xFF] ^ t[1][(hi >> 16) & 0xFF] ^ t[0][hi >> 24];
    data += 8;
    n -= 8;
  }
  while (n-- > 0) reg = (reg >> 8) ^ t[0][(reg ^ *data++) & 0xFF];
  return reg;
}

bool Crc32PathAvailable(Crc32Path path) {
  const platform::CpuFeatures& f = platform::GetCpuFeatures();
  switch (path) {
    case Crc32Path::kPortable:
      return true;
    case Crc32Path::kPclmul:
      return TAVI_CRYPT_X86 && f.sse41 && f.pclmul;
    case Crc32Path::kVpclmul:
      return TAVI_CRYPT_X86 && f.sse41 && f.pclmul && f.avx2 && f.avx512f && f.avx512vl &&
             f.vpclmulqdq;
  }
  return false;
}

Crc32Path Crc32ActivePath() {
  return Choice().Active();
}

bool SetCrc32Path(Crc32Path path) {
  return Choice().Set(path);
}

void ResetCrc32Path() {
  Choice().Reset();
}

uint32_t Crc32Update(uint32_t reg, const void* data, size_t n) {
  return Choice().Get()(reg, static_cast<const uint8_t*>(data), n);
}

}  // namespace tavi::crypt_internal
