//===- coder_paths_agree.h - Both coder paths decode alike ------*- C++ -*-===//
//
// The decode fuzz targets share this body: the first two bytes are the byte count
// to decode, the rest is the stream. The fast decoder over memory and the plain one
// over XBitStream must agree on the result, the error, the bytes and the input
// consumed, and a failure is always end of data.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <vector>

#include "fuzz_helpers.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"

namespace tavi::fuzz {

struct DecodeResult {
  bool ok;
  uint32_t error;
  uint32_t consumed;
  std::vector<uint8_t> bytes;
};

// decode is called as decode(out, in, count), count the byte count to produce.
template <typename Decoder>
DecodeResult DecodeWith(Decoder decode, pack_internal::CoderPath path, const uint8_t* data,
                        size_t size, int32_t count) {
  pack_internal::SetCoderPath(path);
  XBuffer in;
  in.AttachBuffer(const_cast<uint8_t*>(data), static_cast<uint32_t>(size + 1), true);
  in._SetBufferPos(static_cast<uint32_t>(size));
  XBuffer out;
  const bool ok = decode(out, in, count);
  const auto* p = static_cast<const uint8_t*>(out.GetBuffer());
  pack_internal::ResetCoderPath();
  return {ok, out.GetErrorCode(), in.GetCurrentPos(),
          p == nullptr ? std::vector<uint8_t>{} : std::vector<uint8_t>(p, p + out.GetBufferPos())};
}

template <typename Decoder>
int CoderPathsAgree(Decoder decode, const uint8_t* data, size_t size) {
  InputReader input(data, size);
  const auto count = static_cast<int32_t>(input.Take<uint16_t>());
  if (input.size() > 0xFFFF) return 0;
  using pack_internal::CoderPath;
  const DecodeResult fast = DecodeWith(decode, CoderPath::kFast, input.data(), input.size(), count);
  const DecodeResult plain =
      DecodeWith(decode, CoderPath::kPlain, input.data(), input.size(), count);
  FUZZ_ASSERT(fast.ok == plain.ok && fast.error == plain.error);
  if (fast.ok) {
    FUZZ_ASSERT(fast.bytes == plain.bytes && fast.consumed == plain.consumed);
    FUZZ_ASSERT(fast.bytes.size() == static_cast<size_t>(count));
  } else {
    FUZZ_ASSERT(fast.error == kErrEndOfData);
  }
  return 0;
}

}  // namespace tavi::fuzz
