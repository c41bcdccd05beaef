//===- xor_cipher_test.cpp - The XOR cipher filter stream -----------------===//
#include "crypt/internal/xor_cipher.h"

#include <gtest/gtest.h>

#include <cstring>

#include "crypt/crypt_helpers.h"

namespace tavi {
namespace {

using crypt_test::RandomBytes;

// Entry i of the key table is (low byte of the next password unit - 0x20) XOR i, the walk
// taking in the terminator; zeros written through the filter show the table, repeating
// after 256 bytes.
TEST(CipherXOR, KeyTableAndWrap) {
  test::Sink target;
  XCipherXORIO cipher(&target, u"ab\u0141");
  const uint8_t low[4] = {0x61, 0x62, 0x41, 0x00};  // U+0141 contributes 0x41
  uint8_t key[256];
  for (uint32_t i = 0; i < 256; ++i) key[i] = static_cast<uint8_t>((low[i % 4] - 0x20) ^ i);
  EXPECT_EQ(0, std::memcmp(cipher.GetKeyTable(), key, 256));
  crypt_test::WriteInPieces(cipher, std::vector<uint8_t>(600, 0), 77);
  ASSERT_EQ(target.bytes.size(), 600u);
  for (size_t i = 0; i < 600; ++i) ASSERT_EQ(target.bytes[i], key[i % 256]) << i;
}

TEST(CipherXOR, FreshFiltersRoundTrip) {
  const std::vector<uint8_t> plain = RandomBytes(5000, 50);
  for (size_t piece : {1u, 255u, 256u, 4097u}) {
    SCOPED_TRACE(piece);
    test::Sink target;
    XCipherXORIO writer(&target, u"key");
    crypt_test::WriteInPieces(writer, plain, piece);
    EXPECT_NE(target.bytes, plain);
    test::Source source(target.bytes);
    XCipherXORIO reader(&source, u"key");
    std::vector<uint8_t> back;
    ASSERT_TRUE(crypt_test::ReadInPieces(reader, back, plain.size(), piece == 1 ? 3 : piece));
    EXPECT_EQ(back, plain);
  }
}

// A source that runs dry gives the bytes it had, with its error imported; a failed write
// imports the next stream's error.
TEST(CipherXOR, ShortSourceAndFailedWrite) {
  crypt_test::DrySource source(RandomBytes(10, 51));
  XCipherXORIO reader(&source, u"k");
  uint8_t back[20];
  EXPECT_EQ(reader._Read(back, 20), 10u);
  EXPECT_EQ(reader.GetErrorCode(), 5u);

  test::Sink full;
  full.fail_at = 1;
  XCipherXORIO writer(&full, u"k");
  EXPECT_TRUE(writer._Write(back, 0));
  EXPECT_FALSE(writer._Write(back, 6));
  EXPECT_EQ(writer.GetErrorCode(), kErrTooLong);
}

}  // namespace
}  // namespace tavi
