//===- lz_round_trip_fuzz.cpp - LZ code, then decode -----------------------===//
//
// The first byte picks the coder (bit 0) and the window (the next two bytes, scaled);
// the rest is the data. Both paths must write the same stream, and decoding it must
// give the data back and consume exactly the stream.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/lz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using tavi::pack_internal::CoderPath;
  tavi::fuzz::InputReader input(data, size);
  const uint8_t mode = input.Take<uint8_t>();
  const uint64_t window = input.Take<uint16_t>();
  if (input.size() > 0x100000) return 0;
  const auto coder = (mode & 1) ? tavi::LZX4Code : tavi::LZX3Code;
  tavi::XBuffer fast;
  tavi::XBuffer plain;
  FUZZ_ASSERT(coder(fast, input.data(), input.size(), window));
  tavi::pack_internal::SetCoderPath(CoderPath::kPlain);
  FUZZ_ASSERT(coder(plain, input.data(), input.size(), window));
  tavi::pack_internal::ResetCoderPath();
  FUZZ_ASSERT(fast.GetBufferPos() == plain.GetBufferPos());
  FUZZ_ASSERT(std::memcmp(fast.GetBuffer(), plain.GetBuffer(), fast.GetBufferPos()) == 0);
  tavi::XBuffer out;
  FUZZ_ASSERT(tavi::LZX3Decode(out, fast, static_cast<int64_t>(input.size())));
  FUZZ_ASSERT(fast.GetCurrentPos() == fast.GetBufferPos());
  FUZZ_ASSERT(out.GetBufferPos() == input.size());
  FUZZ_ASSERT(input.size() == 0 || std::memcmp(out.GetBuffer(), input.data(), input.size()) == 0);
  return 0;
}
