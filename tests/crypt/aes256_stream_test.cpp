//===- aes256_stream_test.cpp - AES-256 between memory and streams --------===//
#include <gtest/gtest.h>

#include <cstring>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/test_data.h"
#include "crypt/test_streams.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/aes256.h"

namespace tavi {
namespace {

using crypt_test::RandomBytes;

std::vector<uint8_t> Contents(const XBuffer& b) {
  const auto* p = static_cast<const uint8_t*>(b.GetBuffer());
  return std::vector<uint8_t>(p, p + b.GetBufferPos());
}

std::vector<uint8_t> EcbBlocks(const char16_t* password, std::vector<uint8_t> data) {
  uint8_t key[32];
  uint8_t schedule[240];
  crypt_internal::Aes256KeyFromPassword(password, key);
  crypt_internal::Aes256ExpandKey(key, schedule);
  crypt_internal::Aes256EncryptPortable(schedule, data.data(), data.data(), data.size() / 16);
  return data;
}

// Multiples of 16 round-trip exactly, across the function's batch size.
TEST(Aes256Stream, RoundTripOfWholeBlocks) {
  for (size_t n : {16u, 48u, 16384u, 16400u, 50000u}) {
    const std::vector<uint8_t> plain = RandomBytes(n, static_cast<uint32_t>(n));
    XBuffer cipher;
    ASSERT_TRUE(XAES256Encrypt(cipher, u"key", plain.data(), static_cast<int32_t>(n)));
    ASSERT_EQ(Contents(cipher), EcbBlocks(u"key", plain)) << n;
    XBuffer back;
    ASSERT_TRUE(XAES256Decrypt(back, u"key", cipher, static_cast<int32_t>(n))) << n;
    EXPECT_EQ(Contents(back), plain) << n;
  }
}

// 20 bytes: one block, then a 4-byte tail enciphered over the first block's
// cipher text and cut to 4 bytes. Deciphering needs a second whole block,
// so it fails with 0x20000004 in the input, imported by the output.
TEST(Aes256Stream, TruncatedTail) {
  const std::vector<uint8_t> plain = RandomBytes(20, 12);
  XBuffer cipher;
  ASSERT_TRUE(XAES256Encrypt(cipher, u"pw", plain.data(), 20));
  const std::vector<uint8_t> out = Contents(cipher);
  ASSERT_EQ(out.size(), 20u);
  std::vector<uint8_t> first(plain.begin(), plain.begin() + 16);
  first = EcbBlocks(u"pw", first);
  EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 16), first);
  std::vector<uint8_t> last = first;
  std::memcpy(last.data(), plain.data() + 16, 4);
  last = EcbBlocks(u"pw", last);
  EXPECT_EQ(std::vector<uint8_t>(out.begin() + 16, out.end()),
            std::vector<uint8_t>(last.begin(), last.begin() + 4));

  XBuffer back;
  EXPECT_FALSE(XAES256Decrypt(back, u"pw", cipher, 20));
  EXPECT_EQ(cipher.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(back.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(Contents(back), std::vector<uint8_t>(plain.begin(), plain.begin() + 16));
}

TEST(Aes256Stream, ShortInputOnly) {
  const std::vector<uint8_t> plain = RandomBytes(5, 13);
  XBuffer cipher;
  ASSERT_TRUE(XAES256Encrypt(cipher, u"pw", plain.data(), 5));
  EXPECT_EQ(cipher.GetBufferPos(), 5u);
  XBuffer empty;
  EXPECT_TRUE(XAES256Encrypt(empty, u"pw", plain.data(), 0));
  EXPECT_TRUE(XAES256Decrypt(empty, u"pw", cipher, 0));
  EXPECT_EQ(empty.GetBufferPos(), 0u);
  EXPECT_FALSE(XAES256Encrypt(empty, u"pw", plain.data(), -1));
  EXPECT_EQ(empty.GetErrorCode(), kErrOutOfRange);
}

// An input that fails keeps its own error, and the output imports it; one
// that merely ends inside a block gets 0x20000004.
TEST(Aes256Stream, DecryptImportsTheInputsError) {
  crypt_test::FailingReader in(RandomBytes(32, 14));
  XBuffer out;
  EXPECT_FALSE(XAES256Decrypt(out, u"pw", in, 64));
  EXPECT_EQ(in.GetErrorCode(), 5u);
  EXPECT_EQ(out.GetErrorCode(), 5u);
  EXPECT_EQ(out.GetErrorSource(), kErrSourcePlatform);
  EXPECT_EQ(out.GetBufferPos(), 32u);

  crypt_test::FailingReader ends_inside(RandomBytes(40, 14));
  XBuffer out2;
  EXPECT_FALSE(XAES256Decrypt(out2, u"pw", ends_inside, 64));
  EXPECT_EQ(ends_inside.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(out2.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(out2.GetBufferPos(), 32u);
}

TEST(Aes256Stream, WriteFailuresStop) {
  const std::vector<uint8_t> plain = RandomBytes(40000, 15);
  crypt_test::FailingWriter sink(100);
  EXPECT_FALSE(XAES256Encrypt(sink, u"pw", plain.data(), 40000));
  EXPECT_EQ(sink.GetErrorCode(), 112u);

  XBuffer cipher;
  ASSERT_TRUE(XAES256Encrypt(cipher, u"pw", plain.data(), 40000));
  crypt_test::FailingWriter plain_sink(100);
  EXPECT_FALSE(XAES256Decrypt(plain_sink, u"pw", cipher, 40000));
  EXPECT_EQ(plain_sink.GetErrorCode(), 112u);
}

}  // namespace
}  // namespace tavi
