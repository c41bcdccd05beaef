//===- sha256_test.cpp - The library's hash, its kernels and its filter ---===//
#include "tavi/crypt/sha256.h"

// The oracle is OpenSSL's raw SHA-256 compression, which these tests feed by hand; it is
// marked deprecated in OpenSSL 3 but is the only public way in.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <algorithm>
#include <cstring>

#include "core/internal/endian.h"
#include "crypt/crypt_helpers.h"

namespace tavi {
namespace {

using crypt_internal::Sha256Path;
using crypt_test::RandomBytes;

// The variant built independently of the library: pad the message with 0x01, zeros and the
// byte count `counted` (big-endian, 64 bits), then run each block through standard SHA-256
// compression with every word byte-swapped, so that the standard big-endian word load reads
// the little-endian words the variant uses. The digest is cut to `keep` bytes.
std::vector<uint8_t> Reference(const uint32_t (&init)[8], const uint8_t* data, size_t n,
                               uint64_t counted, size_t keep = 32) {
  std::vector<uint8_t> msg(data, data + n);
  msg.push_back(0x01);
  while (msg.size() % 64 != 56) msg.push_back(0);
  for (int i = 7; i >= 0; --i) msg.push_back(static_cast<uint8_t>(counted >> (8 * i)));
  SHA256_CTX ctx;
  SHA256_Init(&ctx);
  std::memcpy(ctx.h, init, sizeof(ctx.h));
  for (size_t at = 0; at < msg.size(); at += 64) {
    for (size_t w = at; w < at + 64; w += 4) std::reverse(msg.begin() + w, msg.begin() + w + 4);
    SHA256_Transform(&ctx, &msg[at]);
  }
  std::vector<uint8_t> digest(32);
  for (int i = 0; i < 8; ++i) internal::StoreBE32(&digest[4 * i], ctx.h[i]);
  digest.resize(keep);
  return digest;
}

template <size_t N>
std::vector<uint8_t> Bytes(const int32_t (&words)[N]) {
  std::vector<uint8_t> v(4 * N);
  std::memcpy(v.data(), words, v.size());
  return v;
}

// The payload followed by the first `keep` bytes of its digest from init.
std::vector<uint8_t> WithDigest(std::vector<uint8_t> v, const uint32_t (&init)[8], size_t keep) {
  const std::vector<uint8_t> digest = Reference(init, v.data(), v.size(), v.size(), keep);
  v.insert(v.end(), digest.begin(), digest.end());
  return v;
}

// Both digests on every path against the reference over many sizes and start offsets.
TEST(Sha256, EveryPathMatchesReference) {
  crypt_test::PathReset reset;
  const std::vector<uint8_t> data = RandomBytes((1u << 20) + 64, 4);
  for (Sha256Path path : {Sha256Path::kPortable, Sha256Path::kShaNi}) {
    if (!crypt_internal::SetSha256Path(path)) continue;
    for (size_t n : crypt_test::SweepSizes()) {
      SCOPED_TRACE(testing::Message() << "path " << static_cast<int>(path) << " size " << n);
      const uint8_t* p = data.data() + n % 13;
      int32_t out256[8], out224[7];
      XHashSHA256(out256, p, static_cast<int32_t>(n));
      XHashSHA224(out224, p, static_cast<int32_t>(n));
      ASSERT_EQ(Bytes(out256), Reference(crypt_internal::kSha256Init, p, n, n));
      ASSERT_EQ(Bytes(out224), Reference(crypt_internal::kSha224Init, p, n, n, 28));
    }
  }
}

// A negative size reads nothing and hashes as empty; equality looks at every word.
TEST(Sha256, NegativeSizeAndEquality) {
  int32_t empty[8], negative[8];
  XHashSHA256(empty, nullptr, 0);
  XHashSHA256(negative, "abc", -5);
  EXPECT_TRUE(XEqualHashSHA256(empty, negative));
  for (int i = 0; i < 8; ++i) {
    negative[i] ^= 0x100;
    EXPECT_FALSE(XEqualHashSHA256(empty, negative)) << i;
    negative[i] ^= 0x100;
  }
}

// Written in any pieces, the trailer is the one-shot digest (its first 28 bytes after Init224).
// Read back, the 256-bit trailer checks; a changed payload or trailer byte, a short trailer or
// none fails with 0x20000004, which overwrites the error a failed read of the trailer imported.
// The 224-bit check hashes its own trailer and so never matches: callers rely on it failing
// without an error for a whole trailer. A short one sets 0x20000004; an error imported from a
// read of nothing is kept.
TEST(Sha256IO, TrailerWriteAndCheck) {
  using Stream = std::vector<uint8_t>;
  using F = XSHA256IO;
  const Stream payload = RandomBytes(300, 30);
  const Stream with256 = WithDigest(payload, crypt_internal::kSha256Init, 32);
  const Stream with224 = WithDigest(payload, crypt_internal::kSha224Init, 28);
  for (size_t piece : {1u, 63u, 64u, 65u, 130u, 300u}) {
    EXPECT_EQ(crypt_test::WrittenThrough(payload, piece, &F::Init256, &F::_WriteSHA256), with256);
    EXPECT_EQ(crypt_test::WrittenThrough(payload, piece, &F::Init224, &F::_WriteSHA224), with224);
  }
  const auto check = [](const Stream& stream, bool wide) {
    return wide ? crypt_test::CheckedRead(stream, 300, &F::Init256, &F::CheckSHA256)
                : crypt_test::CheckedRead(stream, 300, &F::Init224, &F::CheckSHA224);
  };
  EXPECT_EQ(check(with256, true), ~0u);
  for (size_t at : {0u, 299u, 300u, 331u}) {
    Stream bad = with256;
    bad[at] ^= 0x10;
    EXPECT_EQ(check(bad, true), kErrEndOfData) << at;
  }
  EXPECT_EQ(check(Stream(with256.begin(), with256.end() - 1), true), kErrEndOfData);
  EXPECT_EQ(check(payload, true), kErrEndOfData);
  EXPECT_EQ(check(with224, false), 0u);
  EXPECT_EQ(check(Stream(with224.begin(), with224.end() - 1), false), kErrEndOfData);
  EXPECT_EQ(check(payload, false), 5u);
}

// Bytes are hashed only once the next stream took them. AddSHA256 hashes without counting:
// the padding carries only the byte count of the stream operations.
TEST(Sha256IO, WhatIsHashedAndCounted) {
  const std::vector<uint8_t> payload = RandomBytes(300, 34);
  test::Sink full(2);
  XSHA256IO writer(&full);
  writer.Init256();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  EXPECT_EQ(test::Fail(writer._Write(payload.data() + 100, 150), writer), kErrTooLong);
  test::Sink other;
  writer.ToFront(&other);
  writer.AddSHA256(reinterpret_cast<const char*>(payload.data() + 250), 30);
  ASSERT_TRUE(writer._Write(payload.data() + 280, 20));
  ASSERT_TRUE(writer._WriteSHA256());
  std::vector<uint8_t> hashed(payload.begin(), payload.begin() + 100);
  hashed.insert(hashed.end(), payload.begin() + 250, payload.end());
  EXPECT_EQ(std::vector<uint8_t>(other.bytes.begin() + 20, other.bytes.end()),
            Reference(crypt_internal::kSha256Init, hashed.data(), 150, 120));
}

}  // namespace
}  // namespace tavi
