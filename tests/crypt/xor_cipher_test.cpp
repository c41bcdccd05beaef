//===- xor_cipher_test.cpp - The XOR cipher filter stream -----------------===//
#include "crypt/internal/xor_cipher.h"

#include <gtest/gtest.h>

#include <cstring>

#include "crypt/crypt_helpers.h"

namespace tavi {
namespace {

using crypt_test::RandomBytes;

// Entry i of the key table is (low byte of the next password unit - 0x20) XOR i, the walk
// taking in the terminator. Written data is XORed with the table, repeating every 256 bytes
// across writes and batches; a fresh filter reading it back in other pieces restores it.
TEST(CipherXOR, KeyTableWrapAndRoundTrip) {
  test::Sink target;
  XCipherXORIO writer(&target, u"ab\u0141");
  const uint8_t low[4] = {0x61, 0x62, 0x41, 0x00};  // U+0141 contributes 0x41
  uint8_t key[256];
  for (uint32_t i = 0; i < 256; ++i) key[i] = static_cast<uint8_t>((low[i % 4] - 0x20) ^ i);
  EXPECT_EQ(0, std::memcmp(writer.GetKeyTable(), key, 256));
  const std::vector<uint8_t> plain = RandomBytes(5000, 50);
  crypt_test::WriteInPieces(writer, plain, 4097);
  ASSERT_EQ(target.bytes.size(), 5000u);
  for (size_t i = 0; i < 5000; ++i) ASSERT_EQ(target.bytes[i], plain[i] ^ key[i % 256]) << i;
  test::Source source(target.bytes);
  XCipherXORIO reader(&source, u"ab\u0141");
  std::vector<uint8_t> back;
  ASSERT_TRUE(crypt_test::ReadInPieces(reader, back, 5000, 77));
  EXPECT_EQ(back, plain);
}

// A source that runs dry gives the bytes it had, with its error imported; a failed write
// imports the next stream's error.
TEST(CipherXOR, ShortSourceAndFailedWrite) {
  crypt_test::DrySource source(RandomBytes(10, 51));
  XCipherXORIO reader(&source, u"k");
  uint8_t back[20];
  EXPECT_EQ(reader._Read(back, 20), 10u);
  EXPECT_EQ(reader.GetErrorCode(), 5u);

  test::Sink full(1);
  XCipherXORIO writer(&full, u"k");
  EXPECT_TRUE(writer._Write(back, 0));
  EXPECT_EQ(test::Fail(writer._Write(back, 6), writer), kErrTooLong);
}

}  // namespace
}  // namespace tavi
