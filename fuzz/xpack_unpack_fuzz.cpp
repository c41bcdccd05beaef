//===- xpack_unpack_fuzz.cpp - Fuzz unpacking of packed containers --------===//
//
// Gives arbitrary bytes to XPack's unpacking, with drawn record flags (with or
// without the flags word in the stream) and a drawn password (none, empty or a
// word), once from a memory buffer (the in-memory path) and once from a plain
// stream (the filter chain). Both must end alike: true with the same output, or
// false with the same documented cause in the record's stream. The output refuses
// more than 1 MiB, the bound a caller that unpacks untrusted data would set.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/container.h"

namespace {

constexpr uint32_t kOutputLimit = 1u << 20;

// An output buffer that refuses to grow beyond kOutputLimit bytes.
class BoundedOutput : public tavi::XBuffer {
 public:
  bool _Write(const void* data, uint32_t bytes) override {
    if (bytes > kOutputLimit - GetBufferPos()) {
      SetErrorCode(tavi::kErrTooLong);
      return false;
    }
    return XBuffer::_Write(data, bytes);
  }
};

// A stream over fixed bytes that is not a memory buffer.
class PlainSource : public tavi::XIO {
 public:
  PlainSource(const uint8_t* data, size_t size) : data_(data), left_(size) {}
  uint32_t _Read(void* out, uint32_t bytes) override {
    const uint32_t n = bytes < left_ ? bytes : static_cast<uint32_t>(left_);
    if (n != 0) std::memcpy(out, data_, n);
    data_ += n;
    left_ -= n;
    return n;
  }

 private:
  const uint8_t* data_;
  size_t left_;
};

struct Outcome {
  bool ok;
  uint32_t code;
  std::vector<uint8_t> output;
};

Outcome Run(tavi::strXUnpackRecord record, tavi::XIO& source) {
  BoundedOutput output;
  record.stream = &source;
  record.output = &output;
  const bool ok = tavi::XPack(&record);
  const auto* p = static_cast<const uint8_t*>(output.GetBuffer());
  return {ok, source.GetErrorCode(), std::vector<uint8_t>(p, p + output.GetBufferPos())};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint8_t choice = in.Take<uint8_t>();
  static const char16_t* const kPasswords[] = {nullptr, u"", u"pass word", u"\u00FF\u0100"};
  tavi::strXUnpackRecord record;
  record.password = kPasswords[choice & 3];
  // Half the inputs supply the flags in the record (bit 31) and keep them out of the
  // stream; those flags are drawn as a whole word, so forbidden bits occur too.
  if (choice & 4) record.flags = in.Take<uint32_t>() | tavi::kXPackNoFlagsWord;

  tavi::XBuffer memory;
  if (in.size() > 0) FUZZ_ASSERT(memory._Write(in.data(), static_cast<uint32_t>(in.size())));
  PlainSource plain(in.data(), in.size());
  const Outcome a = Run(record, memory);
  const Outcome b = Run(record, plain);
  // How much of a failed decode reached the output is not part of the contract.
  FUZZ_ASSERT(a.ok == b.ok && a.code == b.code && (!a.ok || a.output == b.output));
  FUZZ_ASSERT(memory.GetCurrentPos() <= memory.GetBufferPos());
  if (!a.ok) {
    FUZZ_ASSERT(a.code == tavi::kErrEndOfData || a.code == tavi::kErrLoadEncoding ||
                a.code == tavi::kErrDoesNotFit || a.code == tavi::kErrTooLong);
  }
  return 0;
}
