//===- huffman_round_trip_fuzz.cpp - Huffman code, then decode -------------===//
//
// The input is the data. Both paths must write the same stream, and decoding it must
// give the data back and consume exactly the stream.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/huffman.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using tavi::pack_internal::CoderPath;
  if (size > 0x100000) return 0;
  const auto n = static_cast<int32_t>(size);
  tavi::XBuffer fast;
  tavi::XBuffer plain;
  const bool coded = tavi::HufmanCode(fast, data, n, 0xFFFFFFFF);
  tavi::pack_internal::SetCoderPath(CoderPath::kPlain);
  FUZZ_ASSERT(tavi::HufmanCode(plain, data, n, 0xFFFFFFFF) == coded);
  tavi::pack_internal::ResetCoderPath();
  FUZZ_ASSERT(fast.GetBufferPos() == plain.GetBufferPos());
  FUZZ_ASSERT(fast.GetBufferPos() == 0 ||
              std::memcmp(fast.GetBuffer(), plain.GetBuffer(), fast.GetBufferPos()) == 0);
  if (!coded) return 0;
  tavi::XBuffer out;
  FUZZ_ASSERT(tavi::HufmanDecode(out, fast, n));
  FUZZ_ASSERT(fast.GetCurrentPos() == fast.GetBufferPos());
  FUZZ_ASSERT(out.GetBufferPos() == size && std::memcmp(out.GetBuffer(), data, size) == 0);
  return 0;
}
