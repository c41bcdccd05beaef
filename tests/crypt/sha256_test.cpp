//===- sha256_test.cpp - The library's hash, its kernels and its filter ---===//
#include "tavi/crypt/sha256.h"

// The oracle is OpenSSL's raw SHA-256 compression, which these tests feed by hand; it is
// marked deprecated in OpenSSL 3 but is the only public way in.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>
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
// the little-endian words the variant uses.
std::vector<uint8_t> Reference(const uint32_t (&init)[8], const uint8_t* data, size_t n,
                               uint64_t counted) {
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
  return digest;
}

template <size_t N>
std::vector<uint8_t> Bytes(const int32_t (&words)[N]) {
  std::vector<uint8_t> v(4 * N);
  std::memcpy(v.data(), words, v.size());
  return v;
}

// The payload followed by its one-shot digest: all 32 bytes, or the 28 of the 224-bit hash.
std::vector<uint8_t> WithDigest(std::vector<uint8_t> v, bool wide) {
  int32_t digest256[8];
  int32_t digest224[7];
  XHashSHA256(digest256, v.data(), static_cast<int32_t>(v.size()));
  XHashSHA224(digest224, v.data(), static_cast<int32_t>(v.size()));
  for (uint8_t b : wide ? Bytes(digest256) : Bytes(digest224)) v.push_back(b);
  return v;
}

// Both digests on every path against the reference over many sizes and start offsets, and
// each compression path against the portable one from an arbitrary state.
TEST(Sha256, EveryPathMatchesReference) {
  crypt_test::PathReset reset;
  const std::vector<uint8_t> data = RandomBytes((1u << 20) + 64, 4);
  const std::array<uint32_t, 8> seed = {1, 0xFFFFFFFF, 0x80000000, 7, 0x12345678, 0, 42, 99};
  for (Sha256Path path : {Sha256Path::kPortable, Sha256Path::kShaNi}) {
    if (!crypt_internal::SetSha256Path(path)) continue;
    for (size_t n : crypt_test::SweepSizes()) {
      SCOPED_TRACE(testing::Message() << "path " << static_cast<int>(path) << " size " << n);
      const uint8_t* p = data.data() + n % 13;
      int32_t out256[8];
      int32_t out224[7];
      XHashSHA256(out256, p, static_cast<int32_t>(n));
      XHashSHA224(out224, p, static_cast<int32_t>(n));
      ASSERT_EQ(Bytes(out256), Reference(crypt_internal::kSha256Init, p, n, n));
      std::vector<uint8_t> expected224 = Reference(crypt_internal::kSha224Init, p, n, n);
      expected224.resize(28);
      ASSERT_EQ(Bytes(out224), expected224);
      std::array<uint32_t, 8> expected = seed;
      std::array<uint32_t, 8> actual = seed;
      crypt_internal::Sha256CompressPortable(expected.data(), p, n / 64);
      crypt_internal::Sha256Compress(actual.data(), p, n / 64);
      ASSERT_EQ(expected, actual);
    }
  }
}

// A negative size reads nothing and hashes as empty; equality looks at every word.
TEST(Sha256, NegativeSizeAndEquality) {
  int32_t empty[8];
  int32_t negative[8];
  XHashSHA256(empty, nullptr, 0);
  XHashSHA256(negative, "abc", -5);
  EXPECT_TRUE(XEqualHashSHA256(empty, negative));
  for (int i = 0; i < 8; ++i) {
    int32_t other[8];
    std::memcpy(other, empty, sizeof(other));
    other[i] ^= 0x100;
    EXPECT_FALSE(XEqualHashSHA256(empty, other)) << i;
  }
}

// Written in any pieces, the trailer is the one-shot digest (its first 28 bytes after
// Init224); read back in pieces, the 256-bit trailer checks.
TEST(Sha256IO, TrailerRoundTripOverSplitPoints) {
  const std::vector<uint8_t> payload = RandomBytes(1000, 30);
  const std::vector<uint8_t> with256 = WithDigest(payload, true);
  const std::vector<uint8_t> with224 = WithDigest(payload, false);
  for (size_t piece : {1u, 63u, 64u, 65u, 127u, 128u, 1000u}) {
    SCOPED_TRACE(piece);
    for (bool wide : {true, false}) {
      test::Sink target;
      XSHA256IO writer(&target);
      wide ? writer.Init256() : writer.Init224();
      crypt_test::WriteInPieces(writer, payload, piece);
      ASSERT_TRUE(wide ? writer._WriteSHA256() : writer._WriteSHA224());
      EXPECT_EQ(target.bytes, wide ? with256 : with224);
    }
    test::Source source(with256);
    XSHA256IO reader(&source);
    reader.Init256();
    std::vector<uint8_t> back;
    ASSERT_TRUE(crypt_test::ReadInPieces(reader, back, 1000, piece));
    EXPECT_EQ(back, payload);
    EXPECT_TRUE(reader.CheckSHA256());
    EXPECT_TRUE(reader.IsOk());
  }
}

// A changed payload or trailer byte, a short trailer or none fails with 0x20000004, which
// overwrites the error a failed read of the trailer imported.
TEST(Sha256IO, CheckFailures) {
  const std::vector<uint8_t> payload = RandomBytes(70, 33);
  const std::vector<uint8_t> good = WithDigest(payload, true);
  std::vector<std::vector<uint8_t>> bad;
  for (size_t flip : {0u, 69u, 70u, 101u}) {
    bad.push_back(good);
    bad.back()[flip] ^= 0x10;
  }
  bad.emplace_back(good.begin(), good.end() - 1);
  bad.push_back(payload);
  for (size_t i = 0; i < bad.size(); ++i) {
    SCOPED_TRACE(i);
    crypt_test::DrySource source(bad[i]);
    XSHA256IO reader(&source);
    reader.Init256();
    uint8_t back[70];
    ASSERT_EQ(reader._Read(back, 70), 70u);
    EXPECT_FALSE(reader.CheckSHA256());
    EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData);
    EXPECT_EQ(reader.GetErrorSource(), kErrSourcePlain);
  }
}

// The 224-bit check hashes its own trailer and so never matches: callers rely on it failing
// without an error for a whole trailer. A short trailer sets 0x20000004; an error imported
// from a read of nothing is kept.
TEST(Sha256IO, Sha224CheckNeverMatches) {
  const std::vector<uint8_t> payload = RandomBytes(100, 32);
  const std::vector<uint8_t> whole = WithDigest(payload, false);
  const struct {
    size_t trailer;
    uint32_t error;
  } cases[] = {{28, 0}, {27, kErrEndOfData}, {0, 5}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.trailer);
    crypt_test::DrySource source(std::vector<uint8_t>(whole.begin(), whole.end() - 28 + c.trailer));
    XSHA256IO reader(&source);
    reader.Init224();
    uint8_t back[100];
    ASSERT_EQ(reader._Read(back, 100), 100u);
    EXPECT_FALSE(reader.CheckSHA224());
    EXPECT_EQ(reader.GetErrorCode(), c.error);
  }
}

// Bytes are hashed only once the next stream took them. AddSHA256 hashes without counting:
// the padding carries only the byte count of the stream operations.
TEST(Sha256IO, WhatIsHashedAndCounted) {
  const std::vector<uint8_t> payload = RandomBytes(300, 34);
  test::Sink full;
  full.fail_at = 2;
  XSHA256IO writer(&full);
  writer.Init256();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  EXPECT_FALSE(writer._Write(payload.data() + 100, 150));
  EXPECT_EQ(writer.GetErrorCode(), kErrTooLong);
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
