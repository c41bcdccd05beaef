//===- sample_text.h - Sample texts for the text benchmarks -----------------===//
//
// Texts of about kTextBytes UTF-8 bytes made of whole repetitions of a sample
// line, and their UTF-16 form, shared by the benchmarks of text conversion,
// search and case mapping.
//
//===----------------------------------------------------------------------===//
#ifndef TAVI_BENCH_SAMPLE_TEXT_H_
#define TAVI_BENCH_SAMPLE_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/internal/utf8.h"

namespace tavi_bench {

inline constexpr size_t kTextBytes = size_t{256} << 10;

// Text of about kTextBytes UTF-8 bytes, made of whole repetitions of the sample.
inline std::string Repeat(const std::string& sample) {
  std::string s;
  while (s.size() + sample.size() <= kTextBytes) s += sample;
  return s;
}

inline const std::string& AsciiText() {
  static const std::string text = Repeat(
      "The quick brown fox jumps over the lazy dog; pack my box with five dozen liquor "
      "jugs. 0123456789 (line end)\r\n");
  return text;
}

// The UTF-16 form of UTF-8 text, faults replaced.
inline std::u16string Wide(const std::string& text) {
  std::u16string wide(text.size(), u'\0');
  wide.resize(tavi::internal::DecodeUtf8Replacing(reinterpret_cast<const uint8_t*>(text.data()),
                                                  text.size(), wide.data()));
  return wide;
}

}  // namespace tavi_bench

#endif  // TAVI_BENCH_SAMPLE_TEXT_H_
