//===- crypt_helpers.h - Inputs and streams shared by the crypt tests -*- C++ -*-===//
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/crc32_kernel.h"
#include "crypt/internal/sha256_kernel.h"
#include "io/test_streams.h"
#include "tavi/core/error.h"

namespace tavi::crypt_test {

inline std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed) {
  std::mt19937 gen(seed);
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(gen());
  return v;
}

// Every size up to a few steps of each kernel's widest loop, and some larger odd ones.
inline std::vector<size_t> SweepSizes() {
  std::vector<size_t> sizes(601);
  std::iota(sizes.begin(), sizes.end(), 0);
  sizes.insert(sizes.end(), {1023, 1024, 1025, 4095, 4096, 4097, 65536 + 13, (1u << 20) + 7});
  return sizes;
}

// Restores the automatic choice of every kernel when a test that forced paths ends.
struct PathReset {
  ~PathReset() {
    crypt_internal::ResetCrc32Path();
    crypt_internal::ResetSha256Path();
    crypt_internal::ResetAesPath();
  }
};

// A Source that fails with platform error 5 once it is dry, where Source merely ends.
class DrySource : public test::Source {
 public:
  using Source::Source;
  uint32_t _Read(void* data, uint32_t n) override {
    const uint32_t got = Source::_Read(data, n);
    if (got == 0) SetWinError(5);
    return got;
  }
};

inline void WriteInPieces(XIO& out, const std::vector<uint8_t>& data, size_t piece) {
  for (size_t at = 0; at < data.size(); at += piece) {
    const size_t n = std::min(piece, data.size() - at);
    ASSERT_TRUE(out._Write(data.data() + at, static_cast<uint32_t>(n))) << at;
  }
}

// Reads total bytes in pieces; false at the first short read.
inline bool ReadInPieces(XIO& in, std::vector<uint8_t>& into, size_t total, size_t piece) {
  into.assign(total, 0);
  for (size_t at = 0; at < total; at += piece) {
    const uint32_t n = static_cast<uint32_t>(std::min(piece, total - at));
    if (in._Read(into.data() + at, n) != n) return false;
  }
  return true;
}

// What a fresh filter F writes for data written in pieces, between init and finish.
template <typename F>
std::vector<uint8_t> WrittenThrough(const std::vector<uint8_t>& data, size_t piece,
                                    void (F::*init)(), bool (F::*finish)()) {
  test::Sink sink;
  F writer(&sink);
  (writer.*init)();
  WriteInPieces(writer, data, piece);
  EXPECT_TRUE((writer.*finish)());
  return sink.bytes;
}

// Reads the payload of `stream` (its first `payload` bytes, in two reads) through a fresh filter F
// over a DrySource, which must pass it on unchanged, then runs check: ~0 when it passes, else the
// error it left.
template <typename F>
uint32_t CheckedRead(const std::vector<uint8_t>& stream, size_t payload, void (F::*init)(),
                     bool (F::*check)()) {
  DrySource source(stream);
  F reader(&source);
  (reader.*init)();
  std::vector<uint8_t> back;
  EXPECT_TRUE(ReadInPieces(reader, back, payload, payload / 2 + 1));
  EXPECT_TRUE(std::equal(back.begin(), back.end(), stream.begin()));
  return test::Fail((reader.*check)(), reader);
}

}  // namespace tavi::crypt_test
