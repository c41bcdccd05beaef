//===- aes_filter.cpp - Fuzz reading through the AES-256 filter -----------===//
//
// Deciphers arbitrary bytes through XCipherAES256 in drawn pieces, with a
// state record read in between; whenever a read succeeds its bytes must equal
// XAES256Decrypt of the same input.
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
  const uint32_t length = in.Take<uint16_t>() % 4096;
  const uint32_t piece = in.Take<uint8_t>() + 1u;
  const bool state_first = in.Take<uint8_t>() & 1;
  std::u16string password;
  for (size_t i = in.Take<uint8_t>() % 4; i > 0; --i) password.push_back(in.Take<uint16_t>());

  tavi::XBuffer source;
  if (in.size() > 0) FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));
  tavi::XCipherAES256 reader(&source);
  reader.Init(password.c_str());
  size_t skip = 0;
  if (state_first) {
    tavi::XAESState record;
    if (!reader.ReadAndDecryptState(&record)) return 0;
    skip = 16;
  }

  std::vector<uint8_t> plain(length);
  uint32_t got = 0;
  while (got < length) {
    const uint32_t want = length - got < piece ? length - got : piece;
    const uint32_t n = reader._Read(plain.data() + got, want);
    if (n == 0) {
      FUZZ_ASSERT(reader.IsError());
      return 0;
    }
    FUZZ_ASSERT(n == want);
    got += n;
  }
  tavi::XBuffer cipher;
  tavi::XBuffer expected;
  if (in.size() > skip) {
    FUZZ_ASSERT(cipher._Write(in.data() + skip, static_cast<uint32_t>(in.size() - skip)));
  }
  FUZZ_ASSERT(tavi::XAES256Decrypt(expected, password.c_str(), cipher, static_cast<int32_t>(got)));
  FUZZ_ASSERT(got == 0 || std::memcmp(expected.GetBuffer(), plain.data(), got) == 0);
  return 0;
}
