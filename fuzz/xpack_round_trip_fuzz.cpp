//===- xpack_round_trip_fuzz.cpp - Pack then unpack must give the input ---===//
//
// Packs the input with drawn methods, flags and password, unpacks the result with
// the same password (and the flags, when the stream does not carry them) and
// requires the input back. Refused requests must fail with their documented code.
//
//===----------------------------------------------------------------------===//
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/container.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint8_t choice = in.Take<uint8_t>();
  const uint8_t password = in.Take<uint8_t>();
  static const char16_t* const kPasswords[] = {u"", u"pass word", u"\u00FF\u0100", u"x"};
  const uint32_t flags = (choice & 0x3) | ((choice & 0xC) << 10) | ((choice & 0x10) << 27);
  const uint32_t methods = (choice >> 5) & 3;  // bit 7 is left unused

  tavi::XBuffer packed;
  tavi::strXPackRecord pack;
  pack.flags = flags;
  pack.methods = methods;
  pack.stream = &packed;
  pack.password = kPasswords[password & 3];
  pack.data = in.data();
  pack.size_low = static_cast<uint32_t>(in.size());
  if (!tavi::XPack(&pack)) {
    FUZZ_ASSERT(packed.GetErrorCode() == tavi::kErrDoesNotFit);
    FUZZ_ASSERT(in.size() == 0 || (flags == 0 && methods == 0));
    return 0;
  }
  FUZZ_ASSERT(in.size() > 0);

  tavi::XBuffer unpacked;
  tavi::strXUnpackRecord unpack;
  unpack.flags = (flags & tavi::kXPackNoFlagsWord) ? flags : 0;
  unpack.stream = &packed;
  unpack.password = pack.password;
  unpack.output = &unpacked;
  FUZZ_ASSERT(tavi::XPack(&unpack));
  FUZZ_ASSERT(packed.EoB());
  FUZZ_ASSERT(unpacked.GetBufferPos() == in.size());
  FUZZ_ASSERT(std::memcmp(unpacked.GetBuffer(), in.data(), in.size()) == 0);
  return 0;
}
