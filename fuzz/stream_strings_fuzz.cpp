//===- stream_strings_fuzz.cpp - Length-prefixed strings from any input ----===//
//
// Reads XString16, XString8 and title-text values from arbitrary bytes until the
// input ends. Each read either succeeds with exactly the announced length or fails
// with an error set; what was read stays terminated and within the input's size.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 20)) return 0;
  tavi::XBuffer in;
  in._Write(data, static_cast<uint32_t>(size));
  for (int round = 0; !in.EoB() && round < 64; ++round) {
    const uint32_t before = in.GetCurrentPos();
    tavi::XString16 wide;
    tavi::XString8 narrow;
    tavi::TTitleText title;
    bool ok;
    const void* got;
    uint32_t got_size;
    if (round % 3 == 2) {
      ok = in.Read(title);
      got = title.text;
      got_size = title.size;
      if (title.text != nullptr) {
        const auto* end = reinterpret_cast<const uint8_t*>(title.text) + title.size;
        FUZZ_ASSERT(end[0] == 0 && end[1] == 0);
      }
    } else {
      tavi::XBuffer& s = round % 3 ? static_cast<tavi::XBuffer&>(narrow) : wide;
      ok = round % 3 ? in.Read(narrow) : in.Read(wide);
      got = s.GetBuffer();
      got_size = s.GetBufferPos();
    }
    FUZZ_ASSERT(got_size <= size);
    if (ok) {
      uint32_t length;
      std::memcpy(&length, data + before, 4);
      FUZZ_ASSERT(got_size == length);
      FUZZ_ASSERT(length == 0 || std::memcmp(got, data + before + 4, length) == 0);
    } else {
      FUZZ_ASSERT(in.IsError());
      break;
    }
  }
  return 0;
}
