//===- sha256_io_test.cpp - The hashing filter stream ---------------------===//
#include <gtest/gtest.h>

#include <cstring>

#include "crypt/filter_io.h"
#include "crypt/internal/sha256_kernel.h"
#include "crypt/test_data.h"
#include "crypt/test_streams.h"
#include "tavi/crypt/sha256.h"

namespace tavi {
namespace {

using crypt_test::Contents;
using crypt_test::Fill;
using crypt_test::RandomBytes;
using crypt_test::ReadInPieces;
using crypt_test::WriteInPieces;

std::vector<uint8_t> Digest256(const std::vector<uint8_t>& data) {
  int32_t out[8];
  XHashSHA256(out, data.data(), static_cast<int32_t>(data.size()));
  std::vector<uint8_t> v(32);
  std::memcpy(v.data(), out, 32);
  return v;
}

// Pieces of any size give the digest of one XHashSHA256 call, as trailer,
// and reading back in pieces checks.
TEST(Sha256IO, PiecesGiveTheOneShotDigest) {
  const std::vector<uint8_t> payload = RandomBytes(1000, 30);
  const std::vector<uint8_t> digest = Digest256(payload);
  for (size_t piece : {1u, 63u, 64u, 65u, 127u, 128u, 1000u}) {
    XBuffer target;
    XSHA256IO writer(&target);
    writer.Init256();
    WriteInPieces(writer, payload, piece);
    ASSERT_TRUE(writer._WriteSHA256());
    const std::vector<uint8_t> bytes = Contents(target);
    ASSERT_EQ(bytes.size(), 1032u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 1000), payload);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 1000, bytes.end()), digest) << piece;

    XSHA256IO reader(&target);
    reader.Init256();
    std::vector<uint8_t> back;
    ASSERT_TRUE(ReadInPieces(reader, back, 1000, piece));
    EXPECT_EQ(back, payload);
    EXPECT_TRUE(reader.CheckSHA256()) << piece;
    EXPECT_TRUE(reader.IsOk());
  }
}

TEST(Sha256IO, Sha224TrailerIsTheOneShotSha224) {
  const std::vector<uint8_t> payload = RandomBytes(100, 31);
  XBuffer target;
  XSHA256IO writer(&target);
  writer.Init224();
  WriteInPieces(writer, payload, 33);
  ASSERT_TRUE(writer._WriteSHA224());
  int32_t expected[7];
  XHashSHA224(expected, payload.data(), 100);
  const std::vector<uint8_t> bytes = Contents(target);
  ASSERT_EQ(bytes.size(), 128u);
  EXPECT_EQ(0, std::memcmp(bytes.data() + 100, expected, 28));
}

// The 224-bit check hashes its own trailer and so never matches; callers
// rely on it failing without an error for a complete trailer.
TEST(Sha256IO, Sha224CheckNeverMatches) {
  const std::vector<uint8_t> payload = RandomBytes(100, 32);
  XBuffer target;
  XSHA256IO writer(&target);
  writer.Init224();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  ASSERT_TRUE(writer._WriteSHA224());

  XSHA256IO reader(&target);
  reader.Init224();
  uint8_t back[100];
  ASSERT_EQ(reader._Read(back, 100), 100u);
  EXPECT_FALSE(reader.CheckSHA224());
  EXPECT_TRUE(reader.IsOk());

  // A short trailer sets 0x20000004; an imported downstream error is kept.
  XBuffer short_source;
  Fill(short_source, std::vector<uint8_t>(27, 0));
  XSHA256IO short_reader(&short_source);
  short_reader.Init224();
  EXPECT_FALSE(short_reader.CheckSHA224());
  EXPECT_EQ(short_reader.GetErrorCode(), kErrEndOfData);
  crypt_test::FailingReader dry({});
  XSHA256IO dry_reader(&dry);
  dry_reader.Init224();
  EXPECT_FALSE(dry_reader.CheckSHA224());
  EXPECT_EQ(dry_reader.GetErrorCode(), 5u);
}

TEST(Sha256IO, CheckFailureCases) {
  const std::vector<uint8_t> payload = RandomBytes(70, 33);
  XBuffer target;
  XSHA256IO writer(&target);
  writer.Init256();
  ASSERT_TRUE(writer._Write(payload.data(), 70));
  ASSERT_TRUE(writer._WriteSHA256());
  const std::vector<uint8_t> good = Contents(target);

  for (size_t flip : {0u, 69u, 70u, 101u}) {  // payload and trailer bytes
    std::vector<uint8_t> bad = good;
    bad[flip] ^= 0x10;
    XBuffer source;
    Fill(source, bad);
    XSHA256IO reader(&source);
    reader.Init256();
    uint8_t back[70];
    ASSERT_EQ(reader._Read(back, 70), 70u);
    EXPECT_FALSE(reader.CheckSHA256()) << flip;
    EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData) << flip;
  }

  XBuffer truncated;
  Fill(truncated, std::vector<uint8_t>(good.begin(), good.end() - 1));
  XSHA256IO short_reader(&truncated);
  short_reader.Init256();
  uint8_t back[70];
  ASSERT_EQ(short_reader._Read(back, 70), 70u);
  EXPECT_FALSE(short_reader.CheckSHA256());
  EXPECT_EQ(short_reader.GetErrorCode(), kErrEndOfData);

  crypt_test::FailingReader dry({});
  XSHA256IO dry_reader(&dry);
  dry_reader.Init256();
  EXPECT_FALSE(dry_reader.CheckSHA256());
  EXPECT_EQ(dry_reader.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(dry_reader.GetErrorSource(), kErrSourcePlain);
}

// Bytes are hashed only once the next stream took them.
TEST(Sha256IO, ForwardsBeforeHashing) {
  const std::vector<uint8_t> payload = RandomBytes(300, 34);
  crypt_test::FailingWriter full(100);
  XSHA256IO writer(&full);
  writer.Init256();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  EXPECT_FALSE(writer._Write(payload.data() + 100, 150));
  EXPECT_EQ(writer.GetErrorCode(), 112u);
  XBuffer other;
  writer.ToFront(&other);
  ASSERT_TRUE(writer._Write(payload.data() + 250, 50));
  ASSERT_TRUE(writer._WriteSHA256());
  std::vector<uint8_t> hashed(payload.begin(), payload.begin() + 100);
  hashed.insert(hashed.end(), payload.begin() + 250, payload.end());
  const std::vector<uint8_t> bytes = Contents(other);
  EXPECT_EQ(std::vector<uint8_t>(bytes.end() - 32, bytes.end()), Digest256(hashed));
}

// AddSHA256 hashes without counting: the padding carries only the stream's
// byte count.
TEST(Sha256IO, AddDoesNotCount) {
  XBuffer target;
  XSHA256IO writer(&target);
  writer.Init256();
  writer.AddSHA256("abc", 3);
  ASSERT_TRUE(writer._WriteSHA256());
  uint32_t state[8];
  std::memcpy(state, crypt_internal::kSha256Init, sizeof(state));
  uint8_t block[64] = {'a', 'b', 'c'};
  crypt_internal::Sha256Finalize(state, block, 3, 0);
  EXPECT_EQ(0, std::memcmp(target.GetBuffer(), state, 32));
}

}  // namespace
}  // namespace tavi
