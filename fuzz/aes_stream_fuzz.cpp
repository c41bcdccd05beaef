//===- aes_stream.cpp - Fuzz AES-256 deciphering from arbitrary streams ---===//
//
// Draws a plain size and a password from the input and deciphers the rest
// with XAES256Decrypt; then checks that whole blocks round-trip through
// XAES256Encrypt and XAES256 in place.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/aes256.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const int32_t plain_size = static_cast<int16_t>(in.Take<uint16_t>());
  const size_t password_units = in.Take<uint8_t>() % 8;
  std::u16string password;
  for (size_t i = 0; i < password_units; ++i) password.push_back(in.Take<uint16_t>());

  tavi::XBuffer source;
  if (in.size() > 0) {
    FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));
  }
  tavi::XBuffer plain;
  const bool ok = tavi::XAES256Decrypt(plain, password.c_str(), source, plain_size);
  if (ok) {
    FUZZ_ASSERT(plain_size >= 0);
    FUZZ_ASSERT(plain.GetBufferPos() == static_cast<uint32_t>(plain_size));
  } else {
    FUZZ_ASSERT(plain.IsError());
  }

  const uint32_t whole = static_cast<uint32_t>(in.size()) & ~15u;
  tavi::XBuffer cipher;
  FUZZ_ASSERT(
      tavi::XAES256Encrypt(cipher, password.c_str(), in.data(), static_cast<int32_t>(whole)));
  FUZZ_ASSERT(cipher.GetBufferPos() == whole);
  std::vector<uint8_t> copy(in.data(), in.data() + whole);
  FUZZ_ASSERT(tavi::XAES256(copy.data(), static_cast<int32_t>(whole), password.c_str(), true));
  FUZZ_ASSERT(whole == 0 || std::memcmp(copy.data(), cipher.GetBuffer(), whole) == 0);
  FUZZ_ASSERT(tavi::XAES256(copy.data(), static_cast<int32_t>(whole), password.c_str(), false));
  FUZZ_ASSERT(whole == 0 || std::memcmp(copy.data(), in.data(), whole) == 0);
  return 0;
}
