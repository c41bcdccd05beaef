//===- stream_strings_fuzz.cpp - Length-prefixed strings from any input ----===//
//
// Reads XString16 and XString8 values from arbitrary bytes until the input ends.
// Each read either succeeds with exactly the announced length or fails with an
// error set; the string stays terminated and within the input's size.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/string.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  tavi::XBuffer in;
  in._Write(data, static_cast<uint32_t>(size));
  for (int round = 0; !in.EoB() && round < 64; ++round) {
    const uint32_t before = in.GetCurrentPos();
    tavi::XString16 wide;
    tavi::XString8 narrow;
    const bool ok = round % 2 ? in.Read(narrow) : in.Read(wide);
    tavi::XBuffer& s = round % 2 ? static_cast<tavi::XBuffer&>(narrow) : wide;
    FUZZ_ASSERT(s.GetBufferPos() <= size);
    if (ok) {
      uint32_t length;
      std::memcpy(&length, data + before, 4);
      FUZZ_ASSERT(s.GetBufferPos() == length);
      FUZZ_ASSERT(std::memcmp(s.GetBuffer(), data + before + 4, length) == 0);
    } else {
      FUZZ_ASSERT(in.IsError());
      break;
    }
  }
  return 0;
}
