//===- crc32_filter.cpp - Fuzz reading through the CRC-32 filter ----------===//
//
// Reads a payload of a drawn length in drawn pieces through XCRC32IO from
// arbitrary bytes, then checks the trailer; a passing check must agree with
// XHashCRC32 of the payload.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/crc32.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const uint32_t length = in.Take<uint16_t>();
  const uint32_t piece = in.Take<uint8_t>() + 1u;
  tavi::XBuffer source;
  if (in.size() > 0) FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));

  tavi::XCRC32IO reader(&source);
  reader.Init();
  std::vector<uint8_t> payload(length);
  uint32_t got = 0;
  while (got < length) {
    const uint32_t want = length - got < piece ? length - got : piece;
    const uint32_t n = reader._Read(payload.data() + got, want);
    FUZZ_ASSERT(n <= want);
    got += n;
    if (n < want) break;
  }
  if (reader.CheckCRC()) {
    FUZZ_ASSERT(got + 4 <= in.size());
    // The filter's CRC of no bytes is 0 (XHashCRC32 keeps 0xFFFFFFFF for it).
    uint32_t crc = 0;
    if (got > 0) tavi::XHashCRC32(crc, payload.data(), got);
    uint32_t trailer = 0;
    for (int i = 3; i >= 0; --i) trailer = (trailer << 8) | in.data()[got + i];
    FUZZ_ASSERT(trailer == crc);
  } else {
    FUZZ_ASSERT(reader.GetErrorCode() == tavi::kErrEndOfData);
  }
  return 0;
}
