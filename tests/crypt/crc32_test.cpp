//===- crc32_test.cpp - CRC-32 function and kernels -----------------------===//
#include "tavi/crypt/crc32.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <thread>

#include "crypt/test_data.h"

namespace tavi {
namespace {

using crypt_internal::Crc32Path;
using crypt_test::PathReset;
using crypt_test::RandomBytes;

uint32_t ZlibCrc(const uint8_t* p, size_t n) {
  return static_cast<uint32_t>(crc32(0, p, static_cast<uInt>(n)));
}

TEST(Crc32, CheckValueOnEveryPath) {
  PathReset reset;
  for (Crc32Path path : crypt_test::Crc32Paths()) {
    ASSERT_TRUE(crypt_internal::SetCrc32Path(path));
    uint32_t crc = 0;
    EXPECT_TRUE(XHashCRC32(crc, "123456789", 9));
    EXPECT_EQ(crc, 0xCBF43926u) << static_cast<int>(path);
  }
}

TEST(Crc32, EmptyInputRules) {
  uint32_t crc = 0;
  EXPECT_TRUE(XHashCRC32(crc, nullptr, 0));
  EXPECT_EQ(crc, 0xFFFFFFFFu);
  crc = 0;
  const char byte = 'x';
  EXPECT_FALSE(XHashCRC32(crc, &byte, 0));
  EXPECT_EQ(crc, 0xFFFFFFFFu);
  crc = 0;
  EXPECT_FALSE(XHashCRC32(crc, nullptr, 5));
  EXPECT_EQ(crc, 0xFFFFFFFFu);
}

TEST(Crc32, TableIsTheReflectedTable) {
  const auto& t = crypt_internal::Crc32Table();
  EXPECT_EQ(t.table[0][0], 0u);
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t c = i;
    for (int k = 0; k < 8; ++k) c = (c & 1) ? (c >> 1) ^ 0xEDB88320u : c >> 1;
    ASSERT_EQ(t.table[0][i], c) << i;
  }
}

// Every path against zlib over many sizes and start offsets, so the folding
// loops, their hand-over points and the byte tails all run.
TEST(Crc32, EveryPathMatchesZlib) {
  PathReset reset;
  const std::vector<uint8_t> data = RandomBytes((1u << 20) + 64, 1);
  for (Crc32Path path : crypt_test::Crc32Paths()) {
    ASSERT_TRUE(crypt_internal::SetCrc32Path(path));
    for (size_t n : crypt_test::SweepSizes()) {
      const size_t offset = n % 17;
      uint32_t crc = 0;
      XHashCRC32(crc, n ? data.data() + offset : nullptr, static_cast<uint32_t>(n));
      ASSERT_EQ(crc, n ? ZlibCrc(data.data() + offset, n) : 0xFFFFFFFFu)
          << "path " << static_cast<int>(path) << " size " << n;
    }
  }
}

// A register carried across pieces equals one pass over the whole, whatever
// the split points, on every path.
TEST(Crc32, SplitUpdatesEqualOneUpdate) {
  PathReset reset;
  const std::vector<uint8_t> data = RandomBytes(5000, 2);
  const uint32_t whole = ZlibCrc(data.data(), data.size());
  for (Crc32Path path : crypt_test::Crc32Paths()) {
    ASSERT_TRUE(crypt_internal::SetCrc32Path(path));
    for (size_t piece : {1u, 15u, 16u, 63u, 64u, 255u, 256u, 257u, 1000u, 4999u}) {
      uint32_t reg = 0xFFFFFFFFu;
      for (size_t at = 0; at < data.size(); at += piece) {
        reg = crypt_internal::Crc32Update(reg, data.data() + at, std::min(piece, data.size() - at));
      }
      ASSERT_EQ(reg ^ 0xFFFFFFFFu, whole) << "path " << static_cast<int>(path) << " " << piece;
    }
  }
}

TEST(Crc32, ConcurrentFirstUseAgrees) {
  const std::vector<uint8_t> data = RandomBytes(3000, 3);
  const uint32_t expected = ZlibCrc(data.data(), data.size());
  uint32_t results[4] = {};
  std::vector<std::thread> threads;
  for (auto& r : results) {
    threads.emplace_back([&data, &r] { XHashCRC32(r, data.data(), 3000); });
  }
  for (auto& t : threads) t.join();
  for (uint32_t r : results) EXPECT_EQ(r, expected);
}

}  // namespace
}  // namespace tavi
