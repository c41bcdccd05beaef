//===- huffman_decode_fuzz.cpp - Fuzz the Huffman decoder ------------------===//
//
// The first two bytes are the byte count to decode, the rest is the stream. The
// table decoder over memory and the node-by-node decoder over a plain stream must
// agree on the result, the error, the bytes and the input consumed.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <vector>

#include "fuzz_helpers.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/huffman.h"

namespace {

struct Result {
  bool ok;
  uint32_t error;
  uint32_t consumed;
  std::vector<uint8_t> bytes;
};

Result Run(tavi::pack_internal::CoderPath path, const uint8_t* data, size_t size, int32_t count) {
  tavi::pack_internal::SetCoderPath(path);
  tavi::XBuffer in;
  in.AttachBuffer(const_cast<uint8_t*>(data), static_cast<uint32_t>(size + 1), true);
  in._SetBufferPos(static_cast<uint32_t>(size));
  tavi::XBuffer out;
  const bool ok = tavi::HufmanDecode(out, in, count);
  const auto* p = static_cast<const uint8_t*>(out.GetBuffer());
  tavi::pack_internal::ResetCoderPath();
  return {ok, out.GetErrorCode(), in.GetCurrentPos(),
          p == nullptr ? std::vector<uint8_t>{} : std::vector<uint8_t>(p, p + out.GetBufferPos())};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto count = static_cast<int32_t>(input.Take<uint16_t>());
  if (input.size() > 0xFFFF) return 0;
  const Result fast = Run(tavi::pack_internal::CoderPath::kFast, input.data(), input.size(), count);
  const Result plain =
      Run(tavi::pack_internal::CoderPath::kPlain, input.data(), input.size(), count);
  FUZZ_ASSERT(fast.ok == plain.ok && fast.error == plain.error);
  if (fast.ok) {
    FUZZ_ASSERT(fast.bytes == plain.bytes && fast.consumed == plain.consumed);
    FUZZ_ASSERT(fast.bytes.size() == static_cast<size_t>(count));
  } else {
    FUZZ_ASSERT(fast.error == tavi::kErrEndOfData);
  }
  return 0;
}
