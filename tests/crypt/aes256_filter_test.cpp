//===- aes256_filter_test.cpp - The AES-256 filter stream -----------------===//
#include <gtest/gtest.h>

#include <cstring>

#include "crypt/filter_io.h"
#include "crypt/test_data.h"
#include "crypt/test_streams.h"
#include "tavi/crypt/aes256.h"

namespace tavi {
namespace {

using crypt_test::Contents;
using crypt_test::Fill;
using crypt_test::RandomBytes;
using crypt_test::ReadInPieces;
using crypt_test::WriteInPieces;

std::vector<uint8_t> Ecb(const char16_t* password, std::vector<uint8_t> data) {
  XAES256(data.data(), static_cast<int32_t>(data.size()), password, true);
  return data;
}

// Five bytes make one enciphered block at _Flush; reading them back leaves
// the other eleven deciphered bytes waiting in the filter.
TEST(CipherAES256, PartialBlockFlushAndRead) {
  XBuffer target;
  XCipherAES256 writer(&target);
  writer.Init(u"pw");
  ASSERT_TRUE(writer._Write("hello", 5));
  EXPECT_EQ(target.GetBufferPos(), 0u);
  ASSERT_TRUE(writer._Flush());
  EXPECT_EQ(target.GetBufferPos(), 16u);

  XCipherAES256 reader(&target);
  reader.Init(u"pw");
  char back[5];
  ASSERT_EQ(reader._Read(back, 5), 5u);
  EXPECT_EQ(0, std::memcmp(back, "hello", 5));
  EXPECT_EQ(reader.GetBufferedCount(), 11u);
}

// Output bytes do not depend on how the data was split into writes, whole
// blocks are plain ECB, and reads in any pieces restore the data.
TEST(CipherAES256, RoundTripOverSplitPoints) {
  for (size_t size : {16u, 21u, 4096u, 40000u}) {
    const std::vector<uint8_t> plain = RandomBytes(size, static_cast<uint32_t>(size));
    std::vector<uint8_t> first_output;
    for (size_t piece : {1u, 5u, 15u, 16u, 17u, 1000u, 20000u, 40000u}) {
      XBuffer target;
      XCipherAES256 writer(&target);
      writer.Init(u"split");
      WriteInPieces(writer, plain, piece);
      ASSERT_TRUE(writer._Flush());
      const std::vector<uint8_t> out = Contents(target);
      ASSERT_EQ(out.size(), (size + 15) / 16 * 16);
      if (first_output.empty()) {
        first_output = out;
        const size_t whole = size / 16 * 16;
        EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + whole),
                  Ecb(u"split", std::vector<uint8_t>(plain.begin(), plain.begin() + whole)));
      } else {
        EXPECT_EQ(out, first_output) << size << " " << piece;
      }

      XCipherAES256 reader(&target);
      reader.Init(u"split");
      std::vector<uint8_t> back;
      ASSERT_TRUE(ReadInPieces(reader, back, size, piece == 40000 ? 3 : piece));
      EXPECT_EQ(back, plain) << size << " " << piece;
      EXPECT_TRUE(reader.IsOk());
    }
  }
}

// Whole-block payloads written through the filter equal XAES256Encrypt.
TEST(CipherAES256, AgreesWithTheStreamFunction) {
  const std::vector<uint8_t> plain = RandomBytes(4800, 40);
  XBuffer by_filter;
  XCipherAES256 writer(&by_filter);
  writer.Init(u"same");
  ASSERT_TRUE(writer._Write(plain.data(), 4800));
  ASSERT_TRUE(writer._Flush());
  XBuffer by_function;
  ASSERT_TRUE(XAES256Encrypt(by_function, u"same", plain.data(), 4800));
  EXPECT_EQ(Contents(by_filter), Contents(by_function));
}

// A stream that ends inside a block reads as 0 with 0x20000004, even when
// bytes were already delivered; an empty source's own error is kept.
TEST(CipherAES256, StreamEndingInsideABlock) {
  const std::vector<uint8_t> plain = RandomBytes(32, 41);
  XBuffer target;
  XCipherAES256 writer(&target);
  writer.Init(u"pw");
  ASSERT_TRUE(writer._Write(plain.data(), 32));
  std::vector<uint8_t> cipher = Contents(target);

  for (size_t keep : {0u, 8u, 16u, 24u}) {
    XBuffer source;
    Fill(source, std::vector<uint8_t>(cipher.begin(), cipher.begin() + keep));
    XCipherAES256 reader(&source);
    reader.Init(u"pw");
    uint8_t back[32];
    EXPECT_EQ(reader._Read(back, 20), 0u) << keep;
    EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData) << keep;
  }

  crypt_test::FailingReader dry({});
  XCipherAES256 reader(&dry);
  reader.Init(u"pw");
  uint8_t byte;
  EXPECT_EQ(reader._Read(&byte, 1), 0u);
  EXPECT_EQ(reader.GetErrorCode(), 5u);
}

TEST(CipherAES256, StateRecords) {
  XBuffer target;
  XCipherAES256 writer(&target);
  writer.Init(u"state");
  ASSERT_TRUE(writer._Write("0123456789abcdef", 16));
  ASSERT_TRUE(writer._Write("xyz", 3));
  EXPECT_EQ(writer.GetBufferedCount(), 3u);
  // The record goes out enciphered and the buffered count stays.
  ASSERT_TRUE(writer.EncryptAndWriteState());
  EXPECT_EQ(writer.GetBufferedCount(), 3u);
  EXPECT_EQ(target.GetBufferPos(), 32u);

  XCipherAES256 reader(&target);
  reader.Init(u"state");
  XAESState first;
  XAESState second;
  ASSERT_TRUE(reader.ReadAndDecryptState(&first));
  EXPECT_EQ(0, std::memcmp(first.bytes, "0123456789abcdef", 16));
  ASSERT_TRUE(reader.ReadAndDecryptState(&second));
  EXPECT_EQ(0, std::memcmp(second.bytes, "xyz", 3));
  EXPECT_FALSE(reader.ReadAndDecryptState(&second));
  EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData);
}

TEST(CipherAES256, WriteFailuresImportTheCause) {
  const std::vector<uint8_t> plain = RandomBytes(100, 42);
  crypt_test::FailingWriter full(48);
  XCipherAES256 writer(&full);
  writer.Init(u"pw");
  EXPECT_FALSE(writer._Write(plain.data(), 100));
  EXPECT_EQ(writer.GetErrorCode(), 112u);

  crypt_test::FailingWriter none(0);
  XCipherAES256 flusher(&none);
  flusher.Init(u"pw");
  ASSERT_TRUE(flusher._Write(plain.data(), 3));
  EXPECT_FALSE(flusher._Flush());
  EXPECT_EQ(flusher.GetErrorCode(), 112u);
}

}  // namespace
}  // namespace tavi
