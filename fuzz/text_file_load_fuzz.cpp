//===- text_file_load_fuzz.cpp - Fuzz the loading of text files ------------===//
//
// The first two bytes choose a source and a buffer format (Unicode formats, code
// pages with and without a table); the rest is the file's content, converted as
// LoadTextFile converts a file it has read. A load either fails with a reason or
// gives terminated text of the buffer format, never more than the conversion can
// make of the input. Text loaded as UTF-16 from UTF-8 or UTF-16 is saved back in
// its format and must give the input again, byte for byte.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "text/internal/text_convert.h"

namespace {

constexpr uint16_t kFormats[] = {1025, 1026, 1030, 33795, 33796, 65001, 1252,
                                 850,  437,  1251, 1250,  932,   4242,  28591};
constexpr size_t kFormatCount = sizeof kFormats / sizeof kFormats[0];

bool HasMark(const uint8_t* data, size_t size) {
  return (size >= 2 &&
          ((data[0] == 0xFF && data[1] == 0xFE) || (data[0] == 0xFE && data[1] == 0xFF))) ||
         (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) ||
         (size >= 4 && data[0] == 0 && data[1] == 0 && data[2] == 0xFE && data[3] == 0xFF);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint16_t source = kFormats[in.Take<uint8_t>() % kFormatCount];
  const uint16_t wanted = kFormats[in.Take<uint8_t>() % kFormatCount];
  const uint8_t* text = in.data();
  const auto bytes = static_cast<uint32_t>(in.size());

  tavi::XBuffer buffer;
  FUZZ_ASSERT(buffer._Write(text, bytes));
  tavi::XError report;
  const uint16_t found = tavi::text_internal::ConvertLoadedText(buffer, source, wanted, report);
  if (found == 0) {
    FUZZ_ASSERT(report.IsError());
    return 0;
  }
  FUZZ_ASSERT(report.IsOk());
  const uint32_t loaded = buffer.GetBufferPos();
  // UTF-16 from 8-bit text doubles it; every other conversion only shrinks.
  FUZZ_ASSERT(loaded <= 2ull * bytes);
  FUZZ_ASSERT(buffer.GetBufferSize() >= loaded + 2);
  FUZZ_ASSERT(buffer._GetBufferAt(loaded)[0] == 0 && buffer._GetBufferAt(loaded)[1] == 0);

  // Lossless pairs come back exactly when saved in the format found.
  if (wanted == 1025 && (found == 1030 || found == 65001) &&
      HasMark(text, bytes) == (found == 1030)) {
    tavi::XBuffer saved;
    FUZZ_ASSERT(tavi::text_internal::WriteText(saved, buffer._GetBufferAt(0), loaded, 1030, 1025));
    const uint32_t skip = found == 1030 ? 0 : 3;  // the save writes a mark the input lacked
    FUZZ_ASSERT(saved.GetBufferPos() - skip == bytes);
    FUZZ_ASSERT(std::memcmp(saved._GetBufferAt(skip), text, bytes) == 0);
  }
  return 0;
}
