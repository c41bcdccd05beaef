//===- xpack_unpack_fuzz.cpp - Fuzz unpacking of packed containers --------===//
//
// Gives arbitrary bytes to XPack's unpacking, with drawn record flags (with or
// without the flags word in the stream) and a drawn password (none, empty or a
// word). The output refuses more than 1 MiB, the bound a caller that unpacks
// untrusted data would set. Unpacking must end with true, or with false and one of
// the documented causes in the record's stream.
//
//===----------------------------------------------------------------------===//
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

  tavi::XBuffer source;
  if (in.size() > 0) FUZZ_ASSERT(source._Write(in.data(), static_cast<uint32_t>(in.size())));
  BoundedOutput output;
  record.stream = &source;
  record.output = &output;
  if (tavi::XPack(&record)) {
    FUZZ_ASSERT(source.GetCurrentPos() <= source.GetBufferPos());
    return 0;
  }
  const uint32_t code = source.GetErrorCode();
  FUZZ_ASSERT(code == tavi::kErrEndOfData || code == tavi::kErrLoadEncoding ||
              code == tavi::kErrDoesNotFit || code == tavi::kErrTooLong);
  return 0;
}
