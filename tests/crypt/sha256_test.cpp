//===- sha256_test.cpp - The library's hash and its kernels ---------------===//
#include "tavi/crypt/sha256.h"

// The oracle is OpenSSL's raw SHA-256 compression, which these tests feed by
// hand; it is marked deprecated in OpenSSL 3 but is the only public way in.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <cstring>

#include "core/internal/endian.h"
#include "crypt/test_data.h"

namespace tavi {
namespace {

using crypt_internal::Sha256Path;
using crypt_test::PathReset;
using crypt_test::RandomBytes;

// The variant built independently of the library: pad the message with 0x01,
// zeros and its byte count (big-endian, 64 bits), then run each block through
// standard SHA-256 compression with every word byte-swapped, which makes the
// standard big-endian word load read the little-endian words the variant uses.
std::vector<uint8_t> ReferenceDigest(const uint32_t (&init)[8], const uint8_t* data, size_t n) {
  std::vector<uint8_t> msg(data, data + n);
  msg.push_back(0x01);
  while (msg.size() % 64 != 56) msg.push_back(0);
  const uint64_t length = n;
  for (int i = 7; i >= 0; --i) msg.push_back(static_cast<uint8_t>(length >> (8 * i)));
  SHA256_CTX ctx;
  SHA256_Init(&ctx);
  std::memcpy(ctx.h, init, sizeof(ctx.h));
  for (size_t at = 0; at < msg.size(); at += 64) {
    uint8_t block[64];
    for (int w = 0; w < 16; ++w) {
      const uint32_t v = internal::ByteSwap(internal::LoadLE32(&msg[at + 4 * w]));
      std::memcpy(block + 4 * w, &v, 4);
    }
    SHA256_Transform(&ctx, block);
  }
  std::vector<uint8_t> digest(32);
  for (int i = 0; i < 8; ++i) internal::StoreBE32(&digest[4 * i], ctx.h[i]);
  return digest;
}

std::vector<uint8_t> Bytes(const int32_t* words, size_t count) {
  std::vector<uint8_t> v(4 * count);
  std::memcpy(v.data(), words, v.size());
  return v;
}

TEST(Sha256, EveryPathMatchesReference) {
  PathReset reset;
  const std::vector<uint8_t> data = RandomBytes((1u << 20) + 64, 4);
  for (Sha256Path path : crypt_test::Sha256Paths()) {
    ASSERT_TRUE(crypt_internal::SetSha256Path(path));
    for (size_t n : crypt_test::SweepSizes()) {
      const uint8_t* p = data.data() + n % 13;
      int32_t out[8];
      XHashSHA256(out, p, static_cast<int32_t>(n));
      ASSERT_EQ(Bytes(out, 8), ReferenceDigest(crypt_internal::kSha256Init, p, n))
          << "path " << static_cast<int>(path) << " size " << n;
    }
  }
}

TEST(Sha256, EmptyMessageIsOneBlockOfOneThenZeros) {
  uint32_t state[8];
  std::memcpy(state, crypt_internal::kSha256Init, sizeof(state));
  uint8_t block[64] = {0x01};
  crypt_internal::Sha256CompressPortable(state, block, 1);
  int32_t out[8];
  XHashSHA256(out, nullptr, 0);
  for (int i = 0; i < 8; ++i) {
    uint8_t be[4];
    internal::StoreBE32(be, state[i]);
    EXPECT_EQ(std::memcmp(be, reinterpret_cast<uint8_t*>(out) + 4 * i, 4), 0) << i;
  }
  // Not the standard digest of the empty message (e3b0c442...).
  EXPECT_NE(reinterpret_cast<uint8_t*>(out)[0], 0xE3);
  // A negative size reads nothing and hashes as empty.
  int32_t negative[8];
  XHashSHA256(negative, "abc", -5);
  EXPECT_TRUE(XEqualHashSHA256(out, negative));
}

// 55 bytes leave room for the 0x01 byte and the length in one last block; 56
// push the length into a second block. Both agree with the reference.
TEST(Sha256, FinalisationBlockBoundary) {
  const std::vector<uint8_t> data = RandomBytes(130, 5);
  for (size_t n : {55u, 56u, 63u, 64u, 119u, 120u}) {
    int32_t out[8];
    XHashSHA256(out, data.data(), static_cast<int32_t>(n));
    EXPECT_EQ(Bytes(out, 8), ReferenceDigest(crypt_internal::kSha256Init, data.data(), n)) << n;
  }
}

TEST(Sha256, Sha224HasItsOwnInitialValues) {
  const std::vector<uint8_t> data = RandomBytes(300, 6);
  for (size_t n : {0u, 1u, 55u, 56u, 64u, 300u}) {
    int32_t out224[7];
    int32_t out256[8];
    XHashSHA224(out224, data.data(), static_cast<int32_t>(n));
    XHashSHA256(out256, data.data(), static_cast<int32_t>(n));
    std::vector<uint8_t> expected = ReferenceDigest(crypt_internal::kSha224Init, data.data(), n);
    expected.resize(28);
    EXPECT_EQ(Bytes(out224, 7), expected) << n;
    EXPECT_NE(std::memcmp(out224, out256, 28), 0) << n;
  }
}

TEST(Sha256, EqualComparesAllWords) {
  int32_t a[8];
  int32_t b[8];
  XHashSHA256(a, "abc", 3);
  XHashSHA256(b, "abc", 3);
  EXPECT_TRUE(XEqualHashSHA256(a, b));
  for (int i = 0; i < 8; ++i) {
    int32_t c[8];
    std::memcpy(c, a, sizeof(c));
    c[i] ^= 0x100;
    EXPECT_FALSE(XEqualHashSHA256(a, c)) << i;
  }
}

// The accelerated compression against the portable one from arbitrary
// states, over runs of blocks.
TEST(Sha256, CompressionPathsAgree) {
  const std::vector<uint8_t> data = RandomBytes(64 * 40, 7);
  const std::vector<uint8_t> seed = RandomBytes(32, 8);
  for (Sha256Path path : crypt_test::Sha256Paths()) {
    PathReset reset;
    ASSERT_TRUE(crypt_internal::SetSha256Path(path));
    for (size_t blocks : {1u, 2u, 3u, 40u}) {
      uint32_t expected[8];
      uint32_t actual[8];
      std::memcpy(expected, seed.data(), 32);
      std::memcpy(actual, seed.data(), 32);
      crypt_internal::Sha256CompressPortable(expected, data.data(), blocks);
      crypt_internal::Sha256Compress(actual, data.data(), blocks);
      ASSERT_EQ(0, std::memcmp(expected, actual, 32)) << static_cast<int>(path) << " " << blocks;
    }
  }
}

}  // namespace
}  // namespace tavi
