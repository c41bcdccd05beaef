//===- xor_filter.cpp - Fuzz reading through the XOR cipher filter --------===//
//
// Reads arbitrary bytes through XCipherXORIO in drawn pieces; writing what
// was read through a fresh filter of the same password must give the input
// back.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>
#include <vector>

#include "crypt/internal/xor_cipher.h"
#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const uint32_t piece = in.Take<uint16_t>() % 1024 + 1u;
  std::u16string password;
  for (size_t i = in.Take<uint8_t>() % 6; i > 0; --i) password.push_back(in.Take<uint16_t>());

  tavi::XBuffer source;
  if (in.size() > 0) FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));
  tavi::XCipherXORIO reader(&source, password.c_str());
  std::vector<uint8_t> plain(in.size() + 7);
  uint32_t got = 0;
  for (;;) {
    const uint32_t n = reader._Read(plain.data() + got, piece);
    got += n;
    if (n < piece || got + piece > plain.size()) break;
  }
  FUZZ_ASSERT(got <= in.size());

  tavi::XBuffer again;
  tavi::XCipherXORIO writer(&again, password.c_str());
  FUZZ_ASSERT(writer._Write(plain.data(), got));
  FUZZ_ASSERT(again.GetBufferPos() == got);
  FUZZ_ASSERT(got == 0 || std::memcmp(again.GetBuffer(), in.data(), got) == 0);
  return 0;
}
