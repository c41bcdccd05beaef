//===- crc32_test.cpp - CRC-32, its kernels and the checksumming filter ---===//
#include "tavi/crypt/crc32.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "crypt/crypt_helpers.h"

namespace tavi {
namespace {

using crypt_internal::Crc32Path;
using crypt_test::RandomBytes;

// zlib's crc32 takes the CRC of the data before as its start value.
uint32_t ZlibCrc(uint32_t start, const uint8_t* p, size_t n) {
  return static_cast<uint32_t>(crc32(start, p, static_cast<uInt>(n)));
}

std::vector<uint8_t> LittleEndian(uint32_t v) {
  return {static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8), static_cast<uint8_t>(v >> 16),
          static_cast<uint8_t>(v >> 24)};
}

// Every path against zlib over many sizes and start offsets, so the folding loops, their
// hand-over points and the byte tails all run, both from the preset register and from the
// register that earlier data leaves (as the filter carries it from write to write).
TEST(Crc32, EveryPathMatchesZlib) {
  crypt_test::PathReset reset;
  const std::vector<uint8_t> data = RandomBytes((1u << 20) + 64, 1);
  for (Crc32Path path : {Crc32Path::kPortable, Crc32Path::kPclmul, Crc32Path::kVpclmul}) {
    if (!crypt_internal::SetCrc32Path(path)) continue;
    uint32_t check = 0;
    EXPECT_TRUE(XHashCRC32(check, "123456789", 9));
    EXPECT_EQ(check, 0xCBF43926u) << "path " << static_cast<int>(path);
    for (size_t n : crypt_test::SweepSizes()) {
      SCOPED_TRACE(testing::Message() << "path " << static_cast<int>(path) << " size " << n);
      const uint8_t* p = data.data() + n % 17;
      uint32_t crc = 0;
      XHashCRC32(crc, n ? p : nullptr, static_cast<uint32_t>(n));
      ASSERT_EQ(crc, n ? ZlibCrc(0, p, n) : 0xFFFFFFFFu);
      const uint32_t before = 0x9E3779B9u * static_cast<uint32_t>(n + 1);
      ASSERT_EQ(crypt_internal::Crc32Update(~before, p, n) ^ ~0u, ZlibCrc(before, p, n));
    }
  }
}

// Null with size 0 is the only accepted empty input; all give 0xFFFFFFFF.
TEST(Crc32, EmptyAndNullInput) {
  uint32_t a = 0, b = 0, c = 0;
  EXPECT_TRUE(XHashCRC32(a, nullptr, 0));
  EXPECT_FALSE(XHashCRC32(b, "x", 0));
  EXPECT_FALSE(XHashCRC32(c, nullptr, 5));
  EXPECT_EQ(a & b & c, 0xFFFFFFFFu);
}

// The trailer is the payload's CRC-32, little-endian, whatever the write pieces, and checks when
// read back. Any flipped bit, a trailer of 1 to 3 bytes or none fails with 0x20000004, which
// overwrites the error a failed read of the trailer imported.
TEST(Crc32IO, TrailerWriteAndCheck) {
  const std::vector<uint8_t> payload = RandomBytes(100, 20);
  std::vector<uint8_t> good = payload;
  for (uint8_t b : LittleEndian(ZlibCrc(0, payload.data(), 100))) good.push_back(b);
  for (size_t piece : {1u, 7u, 64u, 100u}) {
    EXPECT_EQ(crypt_test::WrittenThrough(payload, piece, &XCRC32IO::Init, &XCRC32IO::_WriteCRC),
              good);
  }
  const auto check = [](const std::vector<uint8_t>& stream) {
    return crypt_test::CheckedRead(stream, 100, &XCRC32IO::Init, &XCRC32IO::CheckCRC);
  };
  EXPECT_EQ(check(good), ~0u);
  for (size_t bit = 0; bit < 8 * good.size(); ++bit) {
    std::vector<uint8_t> bad = good;
    bad[bit / 8] ^= static_cast<uint8_t>(1u << (bit % 8));
    ASSERT_EQ(check(bad), kErrEndOfData) << bit;
  }
  for (size_t cut = 1; cut <= 4; ++cut)
    EXPECT_EQ(check({good.begin(), good.end() - cut}), kErrEndOfData);
}

// Bytes are folded before they are passed on, so a write that fails still counts in the CRC;
// failures on either side import the next stream's error.
TEST(Crc32IO, FoldsBeforeForwardingAndImportsErrors) {
  const std::vector<uint8_t> payload = RandomBytes(300, 22);
  test::Sink full(2);
  XCRC32IO writer(&full);
  writer.Init();
  ASSERT_TRUE(writer._Write(payload.data(), 100));
  EXPECT_EQ(test::Fail(writer._Write(payload.data() + 100, 200), writer), kErrTooLong);
  test::Sink other;
  writer.ToFront(&other);
  ASSERT_TRUE(writer._WriteCRC());
  EXPECT_EQ(other.bytes, LittleEndian(ZlibCrc(0, payload.data(), 300)));

  crypt_test::DrySource dry(std::vector<uint8_t>{});
  XCRC32IO reader(&dry);
  reader.Init();
  uint8_t byte;
  EXPECT_EQ(test::Fail(reader._Read(&byte, 1) != 0, reader), 5u);
}

}  // namespace
}  // namespace tavi
