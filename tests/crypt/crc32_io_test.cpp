//===- crc32_io_test.cpp - The checksumming filter stream -----------------===//
#include <gtest/gtest.h>
#include <zlib.h>

#include "core/internal/endian.h"
#include "crypt/filter_io.h"
#include "crypt/test_data.h"
#include "crypt/test_streams.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/crc32.h"

namespace tavi {
namespace {

using crypt_test::Contents;
using crypt_test::RandomBytes;
using crypt_test::ReadInPieces;
using crypt_test::WriteInPieces;

// The trailer is CRC-32 of the payload, little-endian, after the payload;
// reading the payload back in any pieces and checking succeeds.
TEST(Crc32IO, TrailerRoundTripOverSplitPoints) {
  const std::vector<uint8_t> payload = RandomBytes(3001, 20);
  const uint32_t crc = static_cast<uint32_t>(crc32(0, payload.data(), 3001));
  for (size_t piece : {1u, 7u, 64u, 1000u, 3001u}) {
    XBuffer target;
    XCRC32IO writer(&target);
    writer.Init();
    WriteInPieces(writer, payload, piece);
    ASSERT_TRUE(writer._WriteCRC());
    const std::vector<uint8_t> bytes = Contents(target);
    ASSERT_EQ(bytes.size(), 3005u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.end() - 4), payload);
    const uint8_t expected[4] = {static_cast<uint8_t>(crc), static_cast<uint8_t>(crc >> 8),
                                 static_cast<uint8_t>(crc >> 16), static_cast<uint8_t>(crc >> 24)};
    EXPECT_EQ(std::vector<uint8_t>(bytes.end() - 4, bytes.end()),
              std::vector<uint8_t>(expected, expected + 4));

    XCRC32IO reader(&target);
    reader.Init();
    std::vector<uint8_t> back;
    ASSERT_TRUE(ReadInPieces(reader, back, payload.size(), piece == 3001 ? 13 : piece));
    EXPECT_EQ(back, payload);
    EXPECT_TRUE(reader.CheckCRC());
    EXPECT_TRUE(reader.IsOk());
  }
}

TEST(Crc32IO, AnyFlippedBitFailsTheCheck) {
  const std::vector<uint8_t> payload = RandomBytes(40, 21);
  XBuffer target;
  XCRC32IO writer(&target);
  writer.Init();
  ASSERT_TRUE(writer._Write(payload.data(), 40));
  ASSERT_TRUE(writer._WriteCRC());
  const std::vector<uint8_t> good = Contents(target);
  for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
    std::vector<uint8_t> bad = good;
    bad[bit / 8] ^= static_cast<uint8_t>(1u << (bit % 8));
    XBuffer source;
    ASSERT_TRUE(source._Write(bad.data(), static_cast<uint32_t>(bad.size())));
    XCRC32IO reader(&source);
    reader.Init();
    uint8_t back[40];
    ASSERT_EQ(reader._Read(back, 40), 40u);
    EXPECT_FALSE(reader.CheckCRC()) << bit;
    EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData) << bit;
  }
}

// A missing trailer overwrites the imported downstream error with 0x20000004;
// a short one sets it too.
TEST(Crc32IO, CheckFailureCases) {
  crypt_test::FailingReader empty({});
  XCRC32IO no_trailer(&empty);
  no_trailer.Init();
  EXPECT_FALSE(no_trailer.CheckCRC());
  EXPECT_EQ(no_trailer.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(no_trailer.GetErrorSource(), kErrSourcePlain);

  for (uint32_t have = 1; have < 4; ++have) {
    XBuffer source;
    const uint8_t trailer[4] = {0, 0, 0, 0};  // the CRC of no data is 0
    ASSERT_TRUE(source._Write(trailer, have));
    XCRC32IO reader(&source);
    reader.Init();
    EXPECT_FALSE(reader.CheckCRC()) << have;
    EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData) << have;
  }
}

// Bytes are folded before they are passed on, so a failed write still
// counts in the CRC; a read of nothing imports the downstream error.
TEST(Crc32IO, FoldsBeforeForwardingAndImportsErrors) {
  const std::vector<uint8_t> payload = RandomBytes(300, 22);
  crypt_test::FailingWriter full(100);
  XCRC32IO writer(&full);
  writer.Init();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  EXPECT_FALSE(writer._Write(payload.data() + 100, 200));
  EXPECT_EQ(writer.GetErrorCode(), 112u);
  XBuffer other;
  writer.ToFront(&other);
  ASSERT_TRUE(writer._WriteCRC());
  uint32_t expected = 0;
  XHashCRC32(expected, payload.data(), 300);
  EXPECT_EQ(internal::LoadLE32(other.GetBuffer()), expected);

  crypt_test::FailingReader dry({});
  XCRC32IO reader(&dry);
  reader.Init();
  uint8_t byte;
  EXPECT_EQ(reader._Read(&byte, 1), 0u);
  EXPECT_EQ(reader.GetErrorCode(), 5u);
}

}  // namespace
}  // namespace tavi
