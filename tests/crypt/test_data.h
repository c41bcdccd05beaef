//===- test_data.h - Random inputs and path lists for the crypt tests -*- C++ -*-===//
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/crc32_kernel.h"
#include "crypt/internal/sha256_kernel.h"

namespace tavi::crypt_test {

inline std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
  std::mt19937 gen(seed);
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(gen());
  return v;
}

// The sizes the oracle tests sweep: every size up to a few blocks of each
// kernel's widest step, and some larger odd ones.
inline std::vector<size_t> SweepSizes() {
  std::vector<size_t> sizes;
  for (size_t n = 0; n <= 600; ++n) sizes.push_back(n);
  for (size_t n : {1023u, 1024u, 1025u, 4095u, 4096u, 4097u, 65536u + 13, (1u << 20) + 7}) {
    sizes.push_back(n);
  }
  return sizes;
}

// Every path of each kernel that this processor can run, portable first.
inline std::vector<crypt_internal::Crc32Path> Crc32Paths() {
  std::vector<crypt_internal::Crc32Path> paths;
  for (auto p : {crypt_internal::Crc32Path::kPortable, crypt_internal::Crc32Path::kPclmul,
                 crypt_internal::Crc32Path::kVpclmul}) {
    if (crypt_internal::Crc32PathAvailable(p)) paths.push_back(p);
  }
  return paths;
}

inline std::vector<crypt_internal::Sha256Path> Sha256Paths() {
  std::vector<crypt_internal::Sha256Path> paths;
  for (auto p : {crypt_internal::Sha256Path::kPortable, crypt_internal::Sha256Path::kShaNi}) {
    if (crypt_internal::Sha256PathAvailable(p)) paths.push_back(p);
  }
  return paths;
}

inline std::vector<crypt_internal::AesPath> AesPaths() {
  std::vector<crypt_internal::AesPath> paths;
  for (auto p : {crypt_internal::AesPath::kPortable, crypt_internal::AesPath::kAesNi,
                 crypt_internal::AesPath::kVaes}) {
    if (crypt_internal::AesPathAvailable(p)) paths.push_back(p);
  }
  return paths;
}

// Restores the automatic choice of every kernel when a test ends.
struct PathReset {
  ~PathReset() {
    crypt_internal::ResetCrc32Path();
    crypt_internal::ResetSha256Path();
    crypt_internal::ResetAesPath();
  }
};

}  // namespace tavi::crypt_test
