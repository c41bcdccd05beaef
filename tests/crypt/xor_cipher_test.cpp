//===- xor_cipher_test.cpp - The XOR cipher filter stream -----------------===//
#include "crypt/internal/xor_cipher.h"

#include <gtest/gtest.h>

#include "crypt/filter_io.h"
#include "crypt/test_data.h"
#include "crypt/test_streams.h"

namespace tavi {
namespace {

using crypt_test::Contents;
using crypt_test::Fill;
using crypt_test::RandomBytes;
using crypt_test::ReadInPieces;
using crypt_test::WriteInPieces;

TEST(CipherXOR, KeyTableWalksThePasswordAndItsTerminator) {
  XBuffer target;
  XCipherXORIO cipher(&target, u"ab\u0141");
  const uint8_t* key = cipher.GetKeyTable();
  // Units "a", "b", U+0141 (low byte 0x41), then the terminator.
  const uint8_t low[4] = {0x61, 0x62, 0x41, 0x00};
  for (uint32_t i = 0; i < 256; ++i) {
    EXPECT_EQ(key[i], static_cast<uint8_t>((low[i % 4] - 0x20) ^ i)) << i;
  }
  EXPECT_EQ(key[3], 0xE0 ^ 3);
}

// Zeros written through the filter show the key table, which repeats after
// 256 bytes.
TEST(CipherXOR, PositionWrapsAfter256Bytes) {
  XBuffer target;
  XCipherXORIO cipher(&target, u"wrap");
  WriteInPieces(cipher, std::vector<uint8_t>(600, 0), 77);
  const std::vector<uint8_t> out = Contents(target);
  ASSERT_EQ(out.size(), 600u);
  for (size_t i = 0; i < 600; ++i) ASSERT_EQ(out[i], cipher.GetKeyTable()[i % 256]) << i;
}

TEST(CipherXOR, FreshFiltersRoundTrip) {
  const std::vector<uint8_t> plain = RandomBytes(5000, 50);
  for (size_t piece : {1u, 255u, 256u, 4097u}) {
    XBuffer target;
    XCipherXORIO writer(&target, u"key");
    WriteInPieces(writer, plain, piece);
    XCipherXORIO reader(&target, u"key");
    std::vector<uint8_t> back;
    ASSERT_TRUE(ReadInPieces(reader, back, plain.size(), piece == 1 ? 3 : piece));
    EXPECT_EQ(back, plain) << piece;
  }
}

// A source that runs dry gives the bytes it had, with its error imported.
TEST(CipherXOR, ShortSourceAndFailedWrite) {
  crypt_test::FailingReader source(RandomBytes(10, 51));
  XCipherXORIO reader(&source, u"k");
  uint8_t back[20];
  EXPECT_EQ(reader._Read(back, 20), 10u);
  EXPECT_EQ(reader.GetErrorCode(), 5u);

  crypt_test::FailingWriter full(5);
  XCipherXORIO writer(&full, u"k");
  EXPECT_TRUE(writer._Write(back, 0));
  EXPECT_FALSE(writer._Write(back, 6));
  EXPECT_EQ(writer.GetErrorCode(), 112u);
}

}  // namespace
}  // namespace tavi
