//===- text_file_save_fuzz.cpp - Fuzz the saving of text files -------------===//
//
// The first two bytes choose a file and a buffer format; the rest is the buffer's
// text, written as SaveTextFile writes it. A refused pair writes nothing. Well-formed
// UTF-16 text saved as UTF-16, UTF-8 or 32-bit units loads back exactly (except
// UTF-16 text that begins with U+0000, whose file begins with the 32-bit mark).
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

// Even length and every surrogate in a pair.
bool WellFormedUtf16(const uint8_t* text, size_t bytes) {
  if (bytes % 2 != 0) return false;
  for (size_t i = 0; i < bytes; i += 2) {
    const unsigned u = text[i] | (text[i + 1] << 8);
    if ((u & 0xFC00) == 0xDC00) return false;
    if ((u & 0xFC00) == 0xD800) {
      if (i + 4 > bytes || ((text[i + 2] | (text[i + 3] << 8)) & 0xFC00) != 0xDC00) return false;
      i += 2;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint16_t file_format = kFormats[in.Take<uint8_t>() % kFormatCount];
  const uint16_t buffer_format = kFormats[in.Take<uint8_t>() % kFormatCount];
  const uint8_t* text = in.data();
  const auto bytes = static_cast<uint32_t>(in.size());

  tavi::XBuffer file;
  if (!tavi::text_internal::WriteText(file, text, bytes, file_format, buffer_format)) {
    FUZZ_ASSERT(file.IsError());
    FUZZ_ASSERT(file.GetBufferPos() == 0);
    return 0;
  }
  // A mark of at most 4 bytes, then at most 4 bytes per input byte (8-bit to 32-bit).
  FUZZ_ASSERT(file.GetBufferPos() <= 4 + 4ull * bytes);
  const bool unicode_file = file_format == 1025 || file_format == 1030 || file_format == 33795;
  // UTF-16 text that starts with U+0000 reads back as 32-bit units: FF FE 00 00 is
  // the 32-bit mark, tested first.
  const bool looks_32bit = file_format == 1025 && bytes >= 2 && text[0] == 0 && text[1] == 0;
  if (buffer_format == 1025 && unicode_file && !looks_32bit && WellFormedUtf16(text, bytes)) {
    tavi::XError report;
    const uint16_t found =
        tavi::text_internal::ConvertLoadedText(file, file_format, buffer_format, report);
    FUZZ_ASSERT(found == file_format);
    FUZZ_ASSERT(file.GetBufferPos() == bytes);
    FUZZ_ASSERT(bytes == 0 || std::memcmp(file.GetBuffer(), text, bytes) == 0);
  }
  return 0;
}
