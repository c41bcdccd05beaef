//===- aes256_kernel.cpp - AES-256 tables, key schedule, portable path ----===//
//
// The portable path is the classic four-table round (each table entry is a
// column of MixColumns applied to an S-box output); deciphering uses the
// equivalent inverse cipher with InvMixColumns applied to the round keys.
// All tables are computed at compile time from the field arithmetic.
//
//===----------------------------------------------------------------------===//
#include <array>
#include <atomic>

#include "core/internal/endian.h"
#include "core/internal/kernel_choice.h"
#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/target.h"
#include "platform/cpu.h"

namespace tavi::crypt_internal {

using internal::KernelChoice;
using internal::LoadBE32;
using internal::LoadLE32;
using internal::StoreBE32;
using internal::StoreLE32;

namespace {

constexpr uint32_t Mul2(uint32_t x) {
  return ((x << 1) ^ ((x & 0x80) ? 0x1B : 0)) & 0xFF;
}

constexpr uint32_t Mul(uint32_t x, uint32_t y) {
  uint32_t r = 0;
  for (; y != 0; y >>= 1, x = Mul2(x)) {
    if (y & 1) r ^= x;
  }
  return r;
}

constexpr uint32_t Rotl8(uint32_t x, int n) {
  return ((x << n) | (x >> (8 - n))) & 0xFF;
}
constexpr uint32_t Rotr32(uint32_t x, int n) {
  return (x >> n) | (x << (32 - n));
}

// The S-box: multiplicative inverse in GF(2^8) followed by the affine map.
constexpr std::array<uint8_t, 256> MakeSbox() {
  std::array<uint8_t, 256> s{};
  for (uint32_t x = 0; x < 256; ++x) {
    // x^254 is the inverse of x (and 0 for 0): x^255 = 1 in the field.
    uint32_t inv = 1;
    for (uint32_t bit = 0x80; bit != 0; bit >>= 1) {
      inv = Mul(inv, inv);
      if (254 & bit) inv = Mul(inv, x);
    }
    s[x] = static_cast<uint8_t>(inv ^ Rotl8(inv, 1) ^ Rotl8(inv, 2) ^ Rotl8(inv, 3) ^
                                Rotl8(inv, 4) ^ 0x63);
  }
  return s;
}

constexpr std::array<uint8_t, 256> kSbox = MakeSbox();

constexpr std::array<uint8_t, 256> MakeInvSbox() {
  std::array<uint8_t, 256> s{};
  for (uint32_t x = 0; x < 256; ++x) s[kSbox[x]] = static_cast<uint8_t>(x);
  return s;
}

constexpr std::array<uint8_t, 256> kInvSbox = MakeInvSbox();

struct RoundTables {
  uint32_t t[4][256];
};

// Encryption: t[0][x] = (2s, s, s, 3s) as a big-endian word, s = S(x);
// t[k] is t[0] rotated right by 8k bits.
constexpr RoundTables MakeEncTables() {
  RoundTables r{};
  for (uint32_t x = 0; x < 256; ++x) {
    const uint32_t s = kSbox[x];
    const uint32_t w = (Mul(s, 2) << 24) | (s << 16) | (s << 8) | Mul(s, 3);
    for (int k = 0; k < 4; ++k) r.t[k][x] = k == 0 ? w : Rotr32(w, 8 * k);
  }
  return r;
}

// Decryption: t[0][x] = (14s, 9s, 13s, 11s), s = S^-1(x).
constexpr RoundTables MakeDecTables() {
  RoundTables r{};
  for (uint32_t x = 0; x < 256; ++x) {
    const uint32_t s = kInvSbox[x];
    const uint32_t w = (Mul(s, 14) << 24) | (Mul(s, 9) << 16) | (Mul(s, 13) << 8) | Mul(s, 11);
    for (int k = 0; k < 4; ++k) r.t[k][x] = k == 0 ? w : Rotr32(w, 8 * k);
  }
  return r;
}

alignas(64) constexpr RoundTables kEnc = MakeEncTables();
alignas(64) constexpr RoundTables kDec = MakeDecTables();

constexpr uint32_t SubWord(uint32_t w) {
  return (uint32_t{kSbox[w >> 24]} << 24) | (uint32_t{kSbox[(w >> 16) & 0xFF]} << 16) |
         (uint32_t{kSbox[(w >> 8) & 0xFF]} << 8) | kSbox[w & 0xFF];
}

// InvMixColumns of one column, through the decryption tables: t(S(x))
// applies InvMixColumns to the byte x.
uint32_t InvMixColumn(uint32_t w) {
  return kDec.t[0][kSbox[w >> 24]] ^ kDec.t[1][kSbox[(w >> 16) & 0xFF]] ^
         kDec.t[2][kSbox[(w >> 8) & 0xFF]] ^ kDec.t[3][kSbox[w & 0xFF]];
}

inline uint32_t Byte(uint32_t w, int index) {
  return (w >> (24 - 8 * index)) & 0xFF;
}

}  // namespace

void Aes256ExpandKey(const uint8_t* key, uint8_t* schedule) {
  uint32_t w[60];
  for (int i = 0; i < 8; ++i) w[i] = LoadBE32(key + 4 * i);
  uint32_t rcon = 0x01;
  for (int i = 8; i < 60; ++i) {
    uint32_t temp = w[i - 1];
    if (i % 8 == 0) {
      temp = SubWord((temp << 8) | (temp >> 24)) ^ (rcon << 24);
      rcon = Mul2(rcon);
    } else if (i % 8 == 4) {
      temp = SubWord(temp);
    }
    w[i] = w[i - 8] ^ temp;
  }
  for (int i = 0; i < 60; ++i) StoreBE32(schedule + 4 * i, w[i]);
}

void Aes256KeyFromPassword(const char16_t* password, uint8_t* key) {
  const char16_t* p = password;
  for (size_t i = 0; i < kAesKeyBytes; ++i) {
    key[i] = static_cast<uint8_t>(static_cast<uint32_t>(*p) % 255);
    p = (*p == 0) ? password : p + 1;
  }
}

void Aes256KeyFromPassword(const char* password, uint8_t* key) {
  const char* p = password;
  for (size_t i = 0; i < kAesKeyBytes; ++i) {
    key[i] = static_cast<uint8_t>(*p);
    p = (*p == 0) ? password : p + 1;
  }
}

void Aes256EncryptPortable(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                           size_t blocks) {
  uint32_t rk[60];
  for (int i = 0; i < 60; ++i) rk[i] = LoadBE32(schedule + 4 * i);
  const auto& t = kEnc.t;
  for (; blocks > 0; --blocks, in += 16, out += 16) {
    uint32_t s0 = LoadBE32(in) ^ rk[0];
    uint32_t s1 = LoadBE32(in + 4) ^ rk[1];
    uint32_t s2 = LoadBE32(in + 8) ^ rk[2];
    uint32_t s3 = LoadBE32(in + 12) ^ rk[3];
    for (int r = 1; r < 14; ++r) {
      const uint32_t* k = rk + 4 * r;
      const uint32_t t0 =
          t[0][s0 >> 24] ^ t[1][Byte(s1, 1)] ^ t[2][Byte(s2, 2)] ^ t[3][s3 & 0xFF] ^ k[0];
      const uint32_t t1 =
          t[0][s1 >> 24] ^ t[1][Byte(s2, 1)] ^ t[2][Byte(s3, 2)] ^ t[3][s0 & 0xFF] ^ k[1];
      const uint32_t t2 =
          t[0][s2 >> 24] ^ t[1][Byte(s3, 1)] ^ t[2][Byte(s0, 2)] ^ t[3][s1 & 0xFF] ^ k[2];
      const uint32_t t3 =
          t[0][s3 >> 24] ^ t[1][Byte(s0, 1)] ^ t[2][Byte(s1, 2)] ^ t[3][s2 & 0xFF] ^ k[3];
      s0 = t0;
      s1 = t1;
      s2 = t2;
      s3 = t3;
    }
    const uint32_t* k = rk + 56;
    auto last = [](uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
      return (uint32_t{kSbox[a >> 24]} << 24) | (uint32_t{kSbox[Byte(b, 1)]} << 16) |
             (uint32_t{kSbox[Byte(c, 2)]} << 8) | kSbox[d & 0xFF];
    };
    StoreBE32(out, last(s0, s1, s2, s3) ^ k[0]);
    StoreBE32(out + 4, last(s1, s2, s3, s0) ^ k[1]);
    StoreBE32(out + 8, last(s2, s3, s0, s1) ^ k[2]);
    StoreBE32(out + 12, last(s3, s0, s1, s2) ^ k[3]);
  }
}

void Aes256DecryptPortable(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                           size_t blocks) {
  // Round keys of the equivalent inverse cipher: reversed order, with
  // InvMixColumns applied to all but the first and the last.
  uint32_t dk[60];
  for (int r = 0; r < 15; ++r) {
    for (int c = 0; c < 4; ++c) {
      const uint32_t w = LoadBE32(schedule + 16 * (14 - r) + 4 * c);
      dk[4 * r + c] = (r == 0 || r == 14) ? w : InvMixColumn(w);
    }
  }
  const auto& t = kDec.t;
  for (; blocks > 0; --blocks, in += 16, out += 16) {
    uint32_t s0 = LoadBE32(in) ^ dk[0];
    uint32_t s1 = LoadBE32(in + 4) ^ dk[1];
    uint32_t s2 = LoadBE32(in + 8) ^ dk[2];
    uint32_t s3 = LoadBE32(in + 12) ^ dk[3];
    for (int r = 1; r < 14; ++r) {
      const uint32_t* k = dk + 4 * r;
      const uint32_t t0 =
          t[0][s0 >> 24] ^ t[1][Byte(s3, 1)] ^ t[2][Byte(s2, 2)] ^ t[3][s1 & 0xFF] ^ k[0];
      const uint32_t t1 =
          t[0][s1 >> 24] ^ t[1][Byte(s0, 1)] ^ t[2][Byte(s3, 2)] ^ t[3][s2 & 0xFF] ^ k[1];
      const uint32_t t2 =
          t[0][s2 >> 24] ^ t[1][Byte(s1, 1)] ^ t[2][Byte(s0, 2)] ^ t[3][s3 & 0xFF] ^ k[2];
      const uint32_t t3 =
          t[0][s3 >> 24] ^ t[1][Byte(s2, 1)] ^ t[2][Byte(s1, 2)] ^ t[3][s0 & 0xFF] ^ k[3];
      s0 = t0;
      s1 = t1;
      s2 = t2;
      s3 = t3;
    }
    const uint32_t* k = dk + 56;
    auto last = [](uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
      return (uint32_t{kInvSbox[a >> 24]} << 24) | (uint32_t{kInvSbox[Byte(b, 1)]} << 16) |
             (uint32_t{kInvSbox[Byte(c, 2)]} << 8) | kInvSbox[d & 0xFF];
    };
    StoreBE32(out, last(s0, s3, s2, s1) ^ k[0]);
    StoreBE32(out + 4, last(s1, s0, s3, s2) ^ k[1]);
    StoreBE32(out + 8, last(s2, s1, s0, s3) ^ k[2]);
    StoreBE32(out + 12, last(s3, s2, s1, s0) ^ k[3]);
  }
}

namespace {

struct AesKernel {
  AesBlocksFn encrypt;
  AesBlocksFn decrypt;
};

constexpr AesKernel kPortableKernel{&Aes256EncryptPortable, &Aes256DecryptPortable};
#if TAVI_CRYPT_X86
constexpr AesKernel kAesNiKernel{&Aes256EncryptAesNi, &Aes256DecryptAesNi};
constexpr AesKernel kVaesKernel{&Aes256EncryptVaes, &Aes256DecryptVaes};
#endif

const AesKernel* PathKernel(AesPath path) {
#if TAVI_CRYPT_X86
  if (path == AesPath::kAesNi) return &kAesNiKernel;
  if (path == AesPath::kVaes) return &kVaesKernel;
#else
  (void)path;
#endif
  return &kPortableKernel;
}

KernelChoice<AesPath, const AesKernel*>& Choice() {
  static KernelChoice<AesPath, const AesKernel*> choice(
      {AesPath::kVaes, AesPath::kAesNi}, AesPath::kPortable, PathKernel, AesPathAvailable);
  return choice;
}

}  // namespace

bool AesPathAvailable(AesPath path) {
  const platform::CpuFeatures& f = platform::GetCpuFeatures();
  switch (path) {
    case AesPath::kPortable:
      return true;
    case AesPath::kAesNi:
      return TAVI_CRYPT_X86 && f.sse41 && f.aes;
    case AesPath::kVaes:
      return TAVI_CRYPT_X86 && f.sse41 && f.aes && f.avx2 && f.avx512f && f.avx512vl && f.vaes;
  }
  return false;
}

AesPath AesActivePath() {
  return Choice().Active();
}

bool SetAesPath(AesPath path) {
  return Choice().Set(path);
}

void ResetAesPath() {
  Choice().Reset();
}

void Aes256Encrypt(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks) {
  if (blocks > 0) Choice().Get()->encrypt(schedule, in, out, blocks);
}

void Aes256Decrypt(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks) {
  if (blocks > 0) Choice().Get()->decrypt(schedule, in, out, blocks);
}

}  // namespace tavi::crypt_internal
