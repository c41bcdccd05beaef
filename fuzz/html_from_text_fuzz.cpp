//===- html_from_text_fuzz.cpp - Fuzz text to HTML and back ---------------===//
//
// Escapes arbitrary UTF-16 with _TextToHtml (within the promised growth) and
// through XTextToHtmlIO in drawn pieces (same result), then reads the HTML back:
// no '<', '&' or '"' of the text may be lost or gained as markup.
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
  const uint32_t piece = in.Take<uint8_t>() % 7 + 1u;
  const size_t units = in.size() / 2;
  std::u16string text(units, 0);
  if (units > 0) std::memcpy(text.data(), in.data(), units * 2);

  std::u16string html(units * tavi::kTextToHtmlGrowth + 1, u'\x5A5A');
  char16_t* end = tavi::_TextToHtml(text.data(), units, html.data());
  const size_t html_units = static_cast<size_t>(end - html.data());
  FUZZ_ASSERT(html_units <= units * tavi::kTextToHtmlGrowth);
  FUZZ_ASSERT(html[units * tavi::kTextToHtmlGrowth] == u'\x5A5A');
  html.resize(html_units);

  tavi::XBuffer target;
  tavi::XTextToHtmlIO filter(&target);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  for (size_t at = 0; at < units * 2; at += piece) {
    const size_t n = units * 2 - at < piece ? units * 2 - at : piece;
    FUZZ_ASSERT(filter._Write(bytes + at, static_cast<uint32_t>(n)));
  }
  FUZZ_ASSERT(filter._Flush());
  FUZZ_ASSERT(target.GetBufferPos() == html_units * 2);
  FUZZ_ASSERT(html_units == 0 || std::memcmp(target.GetBuffer(), html.data(), html_units * 2) == 0);

  // Reading it back keeps every markup character of the text.
  std::u16string back(html_units, 0);
  char16_t* back_end = tavi::_HtmlToText(html.data(), html_units, back.data());
  size_t marks_in = 0, marks_out = 0;
  for (char16_t c : text) marks_in += c == u'<' || c == u'&' || c == u'"' || c == u'>';
  for (const char16_t* p = back.data(); p < back_end; ++p)
    marks_out += *p == u'<' || *p == u'&' || *p == u'"' || *p == u'>';
  FUZZ_ASSERT(marks_in == marks_out);
  return 0;
}
