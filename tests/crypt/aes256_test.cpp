//===- aes256_test.cpp - AES-256 keys, kernels, memory and stream forms, filter ---===//
#include "tavi/crypt/aes256.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>
#include <tuple>

#include "crypt/crypt_helpers.h"

namespace tavi {
namespace {

using crypt_internal::AesPath;
using crypt_test::RandomBytes;
using Bytes = std::vector<uint8_t>;

// OpenSSL's AES-256-ECB without padding as the oracle.
Bytes OpenSslEcb(const uint8_t* key, const Bytes& in) {
  EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
  EVP_EncryptInit_ex(ctx, EVP_aes_256_ecb(), nullptr, key, nullptr);
  EVP_CIPHER_CTX_set_padding(ctx, 0);
  Bytes out(in.size() + 16);
  int len = 0;
  EVP_EncryptUpdate(ctx, out.data(), &len, in.data(), static_cast<int>(in.size()));
  EVP_CIPHER_CTX_free(ctx);
  out.resize(static_cast<size_t>(len));
  return out;
}

// What the stream function and the filter write: whole blocks enciphered one by one; a tail
// of t bytes laid over the last enciphered block (zeros when there is none) and that block
// enciphered again. XAES256Encrypt keeps t bytes of the last block, the filter all 16.
Bytes EcbWithTail(const char16_t* password, const Bytes& plain) {
  uint8_t key[32];
  crypt_internal::Aes256KeyFromPassword(password, key);
  const size_t whole = plain.size() / 16 * 16;
  Bytes out = OpenSslEcb(key, Bytes(plain.begin(), plain.begin() + whole));
  if (whole == plain.size()) return out;
  Bytes last = whole ? Bytes(out.end() - 16, out.end()) : Bytes(16, 0);
  std::copy(plain.begin() + whole, plain.end(), last.begin());
  last = OpenSslEcb(key, last);
  out.insert(out.end(), last.begin(), last.end());
  return out;
}

// FIPS-197 appendix C.3: key 00 01 02 .. 1f, plain text 00 11 22 .. ff.
constexpr char kFipsCipher[] = "\x8e\xa2\xb7\xca\x51\x67\x45\xbf\xea\xfc\x49\x90\x4b\x49\x60\x89";

// Every kernel against the FIPS vector, and against OpenSSL on a random key over many block
// counts (the wide kernels' groups of 4, 8 and 16 blocks and their remainders), from one
// buffer to another and back in place.
TEST(Aes256, EveryPathMatchesOpenSsl) {
  crypt_test::PathReset reset;
  uint8_t fips_key[32], fips_plain[16];
  for (uint8_t i = 0; i < 32; ++i) fips_key[i] = i;
  for (uint8_t i = 0; i < 16; ++i) fips_plain[i] = static_cast<uint8_t>(0x11 * i);
  char fips[240];
  XAES256KeyExpansion(fips, static_cast<const void*>(fips_key));
  const Bytes key = RandomBytes(32, 9);
  uint8_t schedule[240];
  crypt_internal::Aes256ExpandKey(key.data(), schedule);
  for (AesPath path : {AesPath::kPortable, AesPath::kAesNi, AesPath::kVaes}) {
    if (!crypt_internal::SetAesPath(path)) continue;
    SCOPED_TRACE(static_cast<int>(path));
    uint8_t block[16];
    std::memcpy(block, fips_plain, 16);
    XAES256EncryptBlock(block, fips);
    EXPECT_EQ(0, std::memcmp(block, kFipsCipher, 16));
    XAES256DecryptBlock(block, fips);
    EXPECT_EQ(0, std::memcmp(block, fips_plain, 16));
    for (size_t blocks : {1u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 31u, 32u, 33u, 36u, 100u, 1027u}) {
      const Bytes plain = RandomBytes(16 * blocks, static_cast<uint32_t>(blocks));
      Bytes out(plain.size());
      crypt_internal::Aes256Encrypt(schedule, plain.data(), out.data(), blocks);
      ASSERT_EQ(out, OpenSslEcb(key.data(), plain)) << blocks;
      crypt_internal::Aes256Decrypt(schedule, out.data(), out.data(), blocks);
      ASSERT_EQ(out, plain) << blocks;
    }
  }
}

// A password gives the key bytes by walking it cyclically, its terminating zero included;
// wide units are taken modulo 255, not 256. Each password form keys as the raw form does
// with those bytes.
TEST(Aes256, PasswordKeys) {
  const std::tuple<const char16_t*, const char*, Bytes> cases[] = {
      {u"ab", nullptr, {0x61, 0x62, 0}},
      {u"", nullptr, {0}},
      {u"\u00FF\u0100\u4E2D", nullptr, {0, 1, 0x7B, 0}},
      {nullptr, "xyz\xff", {'x', 'y', 'z', 0xFF, 0}}};
  for (const auto& [wide, narrow, cycle] : cases) {
    uint8_t key[32];
    for (size_t k = 0; k < 32; ++k) key[k] = cycle[k % cycle.size()];
    char raw[240], from_password[240];
    XAES256KeyExpansion(raw, static_cast<const void*>(key));
    wide ? XAES256KeyExpansion(from_password, wide) : XAES256KeyExpansion(from_password, narrow);
    EXPECT_EQ(0, std::memcmp(raw, from_password, 240)) << cycle.size();
  }
}

// The in-place form enciphers whole blocks only, on several threads when large; below 16
// bytes it touches nothing and accepts only 0.
TEST(Aes256, InPlaceMemoryForm) {
  EXPECT_FALSE(XAES256(nullptr, -16, u"pw", true));
  for (size_t n : {0u, 15u, 40u, 5 * 65536u + 100}) {
    SCOPED_TRACE(n);
    Bytes data = RandomBytes(n, 11);
    const Bytes original = data;
    Bytes expected = original;
    const Bytes head = EcbWithTail(u"pw", Bytes(data.begin(), data.end() - n % 16));
    std::copy(head.begin(), head.end(), expected.begin());
    EXPECT_EQ(XAES256(data.data(), static_cast<int32_t>(n), u"pw", true), n != 15);
    EXPECT_EQ(data, expected);
    EXPECT_EQ(XAES256(data.data(), static_cast<int32_t>(n), u"pw", false), n != 15);
    EXPECT_EQ(data, original);
  }
}

// XAES256Encrypt stores the tail truncated, so it cannot be deciphered: XAES256Decrypt
// writes the whole blocks, then fails with 0x20000004 in the input, imported by the output.
// Multiples of 16 round-trip exactly, across the functions' batches.
TEST(Aes256Stream, EncryptAndDecrypt) {
  for (size_t n : {5u, 20u, 48u, 16400u, 40005u}) {
    SCOPED_TRACE(n);
    const Bytes plain = RandomBytes(n, static_cast<uint32_t>(n));
    test::Sink cipher;
    ASSERT_TRUE(XAES256Encrypt(cipher, u"key", plain.data(), static_cast<int32_t>(n)));
    Bytes expected = EcbWithTail(u"key", plain);
    expected.resize(n);
    ASSERT_EQ(cipher.bytes, expected);

    test::Source in(cipher.bytes);
    test::Sink back;
    const size_t whole = n / 16 * 16;
    EXPECT_EQ(test::Fail(XAES256Decrypt(back, u"key", in, static_cast<int32_t>(n)), back),
              whole == n ? ~0u : kErrEndOfData);
    EXPECT_EQ(back.bytes, Bytes(plain.begin(), plain.begin() + whole));
    EXPECT_EQ(in.GetErrorCode(), whole == n ? 0 : kErrEndOfData);
  }
}

// Size 0 does nothing and a negative size is refused with 0x20000014 in out; a failed write
// stops at once (no tail written after it) with the cause in out. An input that fails keeps its
// own error and the output imports it, after the whole blocks that came before.
TEST(Aes256Stream, SizesAndFailures) {
  const Bytes data = RandomBytes(40005, 15);
  for (bool encrypt : {true, false}) {
    SCOPED_TRACE(encrypt);
    test::Source in(data);
    const auto run = [&](XIO& out, int32_t size) {
      return encrypt ? XAES256Encrypt(out, u"pw", data.data(), size)
                     : XAES256Decrypt(out, u"pw", in, size);
    };
    test::Sink out, full(2);
    EXPECT_TRUE(run(out, 0));
    EXPECT_EQ(test::Fail(run(out, -1), out), kErrOutOfRange);
    EXPECT_TRUE(out.writes.empty() && in.reads.empty());
    EXPECT_EQ(test::Fail(run(full, 40005), full), kErrTooLong);
    EXPECT_EQ(full.writes.size(), 2u);
  }
  crypt_test::DrySource in(RandomBytes(32, 14));
  test::Sink out;
  EXPECT_EQ(test::Fail(XAES256Decrypt(out, u"pw", in, 64), out), 5u);
  EXPECT_EQ(out.GetErrorSource(), kErrSourcePlatform);
  EXPECT_EQ(in.GetErrorCode(), 5u);
  EXPECT_EQ(out.bytes.size(), 32u);
}

// The filter writes the same bytes whatever the split into writes: whole blocks as they
// complete, a partial last block only at _Flush. Reads in any pieces restore the data and
// leave the rest of the last block waiting.
TEST(CipherAES256, RoundTripOverSplitPoints) {
  for (size_t size : {5u, 16u, 21u, 4096u, 40000u}) {
    const Bytes plain = RandomBytes(size, static_cast<uint32_t>(size));
    const Bytes expected = EcbWithTail(u"split", plain);
    for (size_t piece : {1u, 5u, 15u, 16u, 17u, 1000u, 20000u, 40000u}) {
      SCOPED_TRACE(testing::Message() << "size " << size << " piece " << piece);
      test::Sink target;
      XCipherAES256 writer(&target);
      writer.Init(u"split");
      crypt_test::WriteInPieces(writer, plain, piece);
      EXPECT_EQ(target.bytes.size(), size / 16 * 16);
      ASSERT_TRUE(writer._Flush());
      EXPECT_EQ(writer.GetBufferedCount(), size % 16);  // _Flush does not empty the buffer
      ASSERT_EQ(target.bytes, expected);

      test::Source source(target.bytes);
      XCipherAES256 reader(&source);
      reader.Init(u"split");
      Bytes back;
      ASSERT_TRUE(crypt_test::ReadInPieces(reader, back, size, piece == 40000 ? 3 : piece));
      EXPECT_EQ(back, plain);
      EXPECT_EQ(reader.GetBufferedCount(), (16 - size % 16) % 16);
      EXPECT_TRUE(reader.IsOk());
    }
  }
}

// A stream that ends inside a block reads as 0 with 0x20000004, even when some bytes were
// already delivered; an error imported from a read of nothing is kept instead.
TEST(CipherAES256, StreamEndingInsideABlock) {
  const Bytes cipher = EcbWithTail(u"pw", RandomBytes(32, 41));
  for (size_t keep : {0u, 8u, 16u, 24u}) {
    test::Source ends(Bytes(cipher.begin(), cipher.begin() + keep));
    crypt_test::DrySource fails(Bytes(cipher.begin(), cipher.begin() + keep));
    for (XIO* source : {static_cast<XIO*>(&ends), static_cast<XIO*>(&fails)}) {
      SCOPED_TRACE(testing::Message() << "keep " << keep << " fails " << (source == &fails));
      XCipherAES256 reader(source);
      reader.Init(u"pw");
      uint8_t back[20];
      EXPECT_EQ(test::Fail(reader._Read(back, 20) != 0, reader),
                source == &fails && keep % 16 == 0 ? 5u : kErrEndOfData);
    }
  }
}

// The state record (the waiting partial block) goes out enciphered without changing the
// buffered count, and reads back as one block; a missing record fails like a short read of
// the filter.
TEST(CipherAES256, StateRecords) {
  test::Sink target;
  XCipherAES256 writer(&target);
  writer.Init(u"state");
  ASSERT_TRUE(writer._Write("xyz", 3));
  ASSERT_TRUE(writer.EncryptAndWriteState());
  EXPECT_EQ(writer.GetBufferedCount(), 3u);
  test::Source source(target.bytes);
  XCipherAES256 reader(&source);
  reader.Init(u"state");
  XAESState state;
  ASSERT_TRUE(reader.ReadAndDecryptState(&state));
  EXPECT_EQ(0, std::memcmp(state.bytes, "xyz", 3));
  EXPECT_EQ(test::Fail(reader.ReadAndDecryptState(&state), reader), kErrEndOfData);
  crypt_test::DrySource dry(Bytes{});
  XCipherAES256 dry_reader(&dry);
  EXPECT_EQ(test::Fail(dry_reader.ReadAndDecryptState(&state), dry_reader), 5u);
}

// A failed write, of whole blocks or of the partial block at _Flush, imports the cause.
TEST(CipherAES256, WriteFailuresImportTheCause) {
  const Bytes plain = RandomBytes(100, 42);
  for (uint32_t size : {100u, 3u}) {
    test::Sink full(1);
    XCipherAES256 writer(&full);
    writer.Init(u"pw");
    EXPECT_EQ(test::Fail(writer._Write(plain.data(), size) && writer._Flush(), writer),
              kErrTooLong);
  }
}

}  // namespace
}  // namespace tavi
