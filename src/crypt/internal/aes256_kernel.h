//===- aes256_kernel.h - AES-256 key schedule and block kernels -*- C++ -*-===//
//
// FIPS-197 AES-256: the key expansion, the library's password-to-key rules,
// and electronic-codebook kernels over runs of 16-byte blocks: a portable
// table-driven path, AES-NI, and VAES (four blocks per instruction), chosen
// once from the CPU's features.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::crypt_internal {

inline constexpr size_t kAesKeyBytes = 32;
inline constexpr size_t kAesScheduleBytes = 240;  // 15 round keys of 16 bytes
inline constexpr size_t kAesBlockBytes = 16;

// Aes256ExpandKey writes the FIPS-197 schedule of a raw 32-byte key: round
// key r is bytes 16r..16r+15, each word stored most significant byte first.
void Aes256ExpandKey(const uint8_t* key, uint8_t* schedule);

// The password rules: walk the password cyclically, its terminating zero
// included, one unit per key byte. Wide units give unit % 255; bytes are
// taken unchanged. An empty password gives 32 zero bytes.
void Aes256KeyFromPassword(const char16_t* password, uint8_t* key);
void Aes256KeyFromPassword(const char* password, uint8_t* key);

// A kernel enciphers or deciphers blocks 16-byte blocks from in to out (in
// and out may be the same memory; partial overlap is not allowed) with the
// schedule of Aes256ExpandKey.
using AesBlocksFn = void (*)(const uint8_t* schedule, const uint8_t* in, uint8_t* out,
                             size_t blocks);

void Aes256EncryptPortable(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
void Aes256DecryptPortable(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
#if defined(__x86_64__) || defined(__i386__)
void Aes256EncryptAesNi(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
void Aes256DecryptAesNi(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
void Aes256EncryptVaes(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
void Aes256DecryptVaes(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
#endif

enum class AesPath { kPortable, kAesNi, kVaes };

// Path selection, as for the CRC kernels.
bool AesPathAvailable(AesPath path);
AesPath AesActivePath();
bool SetAesPath(AesPath path);
void ResetAesPath();

// The dispatched kernels.
void Aes256Encrypt(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);
void Aes256Decrypt(const uint8_t* schedule, const uint8_t* in, uint8_t* out, size_t blocks);

}  // namespace tavi::crypt_internal
