//===- html_to_text_fuzz.cpp - Fuzz HTML to text, whole and in pieces -----===//
//
// Converts arbitrary UTF-16 as HTML with _HtmlToText (the text must fit in the
// input's length) and again through XHtmlToTextIO written in drawn pieces, which
// may split code units; both must give the same text.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/text/html.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const uint32_t seed = in.Take<uint32_t>();
  const size_t units = in.size() / 2;
  std::u16string html(units, 0);
  if (units > 0) std::memcpy(html.data(), in.data(), units * 2);

  // One spare unit past the end catches a write beyond the promised room.
  std::u16string whole(units + 1, u'\x5A5A');
  char16_t* end = tavi::_HtmlToText(html.data(), units, whole.data());
  FUZZ_ASSERT(end >= whole.data() && static_cast<size_t>(end - whole.data()) <= units);
  FUZZ_ASSERT(whole[units] == u'\x5A5A');
  whole.resize(static_cast<size_t>(end - whole.data()));

  tavi::XBuffer target;
  tavi::XHtmlToTextIO filter(&target);
  const auto* bytes = reinterpret_cast<const uint8_t*>(html.data());
  uint32_t state = seed | 1;
  size_t at = 0;
  while (at < units * 2) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    size_t n = state % 9;
    if (n > units * 2 - at) n = units * 2 - at;
    FUZZ_ASSERT(filter._Write(bytes + at, static_cast<uint32_t>(n)));
    at += n;
  }
  FUZZ_ASSERT(filter._Flush());
  FUZZ_ASSERT(target.GetBufferPos() == whole.size() * 2);
  FUZZ_ASSERT(whole.empty() ||
              std::memcmp(target.GetBuffer(), whole.data(), whole.size() * 2) == 0);
  return 0;
}
