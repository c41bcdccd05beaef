//===- aes256_test.cpp - AES-256 keys, block functions and kernels --------===//
#include "tavi/crypt/aes256.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>

#include "crypt/test_data.h"

namespace tavi {
namespace {

using crypt_internal::AesPath;
using crypt_test::PathReset;
using crypt_test::RandomBytes;

// OpenSSL's AES-256-ECB without padding as the oracle.
std::vector<uint8_t> OpenSslEcb(const uint8_t* key, const std::vector<uint8_t>& in, bool encrypt) {
  EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
  EVP_CipherInit_ex(ctx, EVP_aes_256_ecb(), nullptr, key, nullptr, encrypt ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(ctx, 0);
  std::vector<uint8_t> out(in.size() + 16);
  int len = 0;
  EVP_CipherUpdate(ctx, out.data(), &len, in.data(), static_cast<int>(in.size()));
  EVP_CIPHER_CTX_free(ctx);
  out.resize(static_cast<size_t>(len));
  return out;
}

std::vector<uint8_t> KeyOf(const char16_t* password) {
  std::vector<uint8_t> key(32);
  crypt_internal::Aes256KeyFromPassword(password, key.data());
  return key;
}

// FIPS-197 appendix C.3.
constexpr uint8_t kFipsKey[32] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0a,
                                  0x0b, 0x0c, 0x0d, 0x0e, 0x0f, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15,
                                  0x16, 0x17, 0x18, 0x19, 0x1a, 0x1b, 0x1c, 0x1d, 0x1e, 0x1f};
constexpr uint8_t kFipsPlain[16] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77,
                                    0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
constexpr uint8_t kFipsCipher[16] = {0x8e, 0xa2, 0xb7, 0xca, 0x51, 0x67, 0x45, 0xbf,
                                     0xea, 0xfc, 0x49, 0x90, 0x4b, 0x49, 0x60, 0x89};

TEST(Aes256, FipsVectorOnEveryPath) {
  PathReset reset;
  char schedule[240];
  XAES256KeyExpansion(schedule, static_cast<const void*>(kFipsKey));
  for (AesPath path : crypt_test::AesPaths()) {
    ASSERT_TRUE(crypt_internal::SetAesPath(path));
    uint8_t block[16];
    std::memcpy(block, kFipsPlain, 16);
    XAES256EncryptBlock(block, schedule);
    EXPECT_EQ(0, std::memcmp(block, kFipsCipher, 16)) << static_cast<int>(path);
    XAES256DecryptBlock(block, schedule);
    EXPECT_EQ(0, std::memcmp(block, kFipsPlain, 16)) << static_cast<int>(path);
  }
}

TEST(Aes256, WidePasswordKeyRule) {
  const std::vector<uint8_t> ab = KeyOf(u"ab");
  for (size_t i = 0; i < 32; ++i) {
    const uint8_t expected[3] = {0x61, 0x62, 0x00};
    EXPECT_EQ(ab[i], expected[i % 3]) << i;
  }
  EXPECT_EQ(KeyOf(u""), std::vector<uint8_t>(32, 0));
  // Units are taken modulo 255, not 256.
  const std::vector<uint8_t> odd = KeyOf(u"\u00FF\u0100\u4E2D");
  EXPECT_EQ(odd[0], 0x00);
  EXPECT_EQ(odd[1], 0x01);
  EXPECT_EQ(odd[2], 0x7B);
  EXPECT_EQ(odd[3], 0x00);  // the terminator
  EXPECT_EQ(odd[4], 0x00);  // the walk starts again
  EXPECT_EQ(odd[5], 0x01);
}

TEST(Aes256, BytePasswordKeyRuleAndExpansionForms) {
  uint8_t key[32];
  crypt_internal::Aes256KeyFromPassword("xyz\xff", key);
  const uint8_t expected[5] = {'x', 'y', 'z', 0xFF, 0x00};
  for (size_t i = 0; i < 32; ++i) EXPECT_EQ(key[i], expected[i % 5]) << i;

  // Each password form equals the raw form applied to its key bytes.
  char from_password[240];
  char from_key[240];
  XAES256KeyExpansion(from_password, "xyz\xff");
  XAES256KeyExpansion(from_key, static_cast<const void*>(key));
  EXPECT_EQ(0, std::memcmp(from_password, from_key, 240));
  const std::vector<uint8_t> wide_key = KeyOf(u"pass\u4E2D");
  XAES256KeyExpansion(from_password, u"pass\u4E2D");
  XAES256KeyExpansion(from_key, static_cast<const void*>(wide_key.data()));
  EXPECT_EQ(0, std::memcmp(from_password, from_key, 240));
}

// Every kernel against OpenSSL on random keys and many block counts, both
// in place and from one buffer to another.
TEST(Aes256, EveryPathMatchesOpenSsl) {
  PathReset reset;
  const std::vector<uint8_t> key = RandomBytes(32, 9);
  uint8_t schedule[240];
  crypt_internal::Aes256ExpandKey(key.data(), schedule);
  for (AesPath path : crypt_test::AesPaths()) {
    ASSERT_TRUE(crypt_internal::SetAesPath(path));
    for (size_t blocks : {1u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 31u, 32u, 33u, 36u, 100u, 1027u}) {
      const std::vector<uint8_t> plain = RandomBytes(16 * blocks, static_cast<uint32_t>(blocks));
      const std::vector<uint8_t> cipher = OpenSslEcb(key.data(), plain, true);
      std::vector<uint8_t> out(plain.size());
      crypt_internal::Aes256Encrypt(schedule, plain.data(), out.data(), blocks);
      ASSERT_EQ(out, cipher) << "path " << static_cast<int>(path) << " blocks " << blocks;
      crypt_internal::Aes256Decrypt(schedule, out.data(), out.data(), blocks);
      ASSERT_EQ(out, plain) << "path " << static_cast<int>(path) << " blocks " << blocks;
    }
  }
}

TEST(Aes256, InPlaceMemoryForm) {
  std::vector<uint8_t> data = RandomBytes(40, 10);
  const std::vector<uint8_t> original = data;

  EXPECT_TRUE(XAES256(data.data(), 0, u"pw", true));
  EXPECT_FALSE(XAES256(data.data(), 15, u"pw", true));
  EXPECT_FALSE(XAES256(data.data(), -16, u"pw", true));
  EXPECT_EQ(data, original);

  // Whole blocks only: 40 bytes change in their first 32.
  ASSERT_TRUE(XAES256(data.data(), 40, u"pw", true));
  const std::vector<uint8_t> head(original.begin(), original.begin() + 32);
  EXPECT_EQ(std::vector<uint8_t>(data.begin(), data.begin() + 32),
            OpenSslEcb(KeyOf(u"pw").data(), head, true));
  EXPECT_EQ(0, std::memcmp(data.data() + 32, original.data() + 32, 8));
  ASSERT_TRUE(XAES256(data.data(), 40, u"pw", false));
  EXPECT_EQ(data, original);
}

TEST(Aes256, InPlaceMemoryFormLargeRoundTrip) {
  std::vector<uint8_t> data = RandomBytes((1u << 20) + 21, 11);
  const std::vector<uint8_t> original = data;
  const int32_t size = static_cast<int32_t>(data.size());
  ASSERT_TRUE(XAES256(data.data(), size, u"secret", true));
  const std::vector<uint8_t> whole(original.begin(), original.end() - 5);
  EXPECT_EQ(std::vector<uint8_t>(data.begin(), data.end() - 5),
            OpenSslEcb(KeyOf(u"secret").data(), whole, true));
  ASSERT_TRUE(XAES256(data.data(), size, u"secret", false));
  EXPECT_EQ(data, original);
}

}  // namespace
}  // namespace tavi
