//===- sha256_filter.cpp - Fuzz reading through the hashing filter --------===//
//
// Reads a payload of a drawn length in drawn pieces through XSHA256IO from
// arbitrary bytes, then checks a 256- or 224-bit trailer; a passing check
// must agree with XHashSHA256 of the payload.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/sha256.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const uint32_t length = in.Take<uint16_t>();
  const uint32_t piece = in.Take<uint8_t>() + 1u;
  const bool check224 = in.Take<uint8_t>() & 1;
  tavi::XBuffer source;
  if (in.size() > 0) FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));

  tavi::XSHA256IO reader(&source);
  if (check224) {
    reader.Init224();
  } else {
    reader.Init256();
  }
  std::vector<uint8_t> payload(length);
  uint32_t got = 0;
  while (got < length) {
    const uint32_t want = length - got < piece ? length - got : piece;
    const uint32_t n = reader._Read(payload.data() + got, want);
    FUZZ_ASSERT(n <= want);
    got += n;
    if (n < want) break;
  }
  if (check224) {
    FUZZ_ASSERT(!reader.CheckSHA224());
  } else if (reader.CheckSHA256()) {
    FUZZ_ASSERT(got + 32 <= in.size());
    int32_t digest[8];
    tavi::XHashSHA256(digest, payload.data(), static_cast<int32_t>(got));
    FUZZ_ASSERT(std::memcmp(digest, in.data() + got, 32) == 0);
  } else {
    FUZZ_ASSERT(reader.GetErrorCode() == tavi::kErrEndOfData);
  }
  return 0;
}
