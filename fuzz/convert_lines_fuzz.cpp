//===- convert_lines_fuzz.cpp - Fuzz splitting text into lines --------------===//
//
// The input is UTF-16 text (pairs of bytes, little-endian), cut at its first zero.
// The items must be exactly the lines of a plain model: split at LF, a CR before the
// LF dropped, no empty item after a final LF. Joining them again with SaveLines must
// give the text with its CR LF line ends and without a final line end.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/coll/string_coll.h"
#include "tavi/core/buffer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::u16string text;
  for (size_t i = 0; i + 1 < size; i += 2) {
    const auto c = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    if (c == 0) break;
    text.push_back(c);
  }
  std::vector<std::u16string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t lf = text.find(u'\n', start);
    if (lf == std::u16string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    size_t end = lf;
    if (end > start && text[end - 1] == u'\r') --end;
    lines.push_back(text.substr(start, end - start));
    start = lf + 1;
  }

  tavi::TStringColl c;
  FUZZ_ASSERT(c.ConvertLines(text.c_str()));
  FUZZ_ASSERT(c.GetCount() == lines.size());
  std::u16string joined;
  for (uint32_t i = 0; i < c.GetCount(); ++i) {
    const tavi::TTitleText* t = c._StrAt(i);
    FUZZ_ASSERT(t->size == lines[i].size() * 2);
    FUZZ_ASSERT(lines[i].empty() ? t->text == nullptr
                                 : std::u16string(t->text, t->size / 2) == lines[i]);
    if (i != 0) joined += u"\r\n";
    joined += lines[i];
  }
  tavi::XBuffer out;
  FUZZ_ASSERT(c.SaveLines(out));
  FUZZ_ASSERT(out.GetBufferPos() == joined.size() * 2);
  FUZZ_ASSERT(joined.empty() || std::u16string(static_cast<const char16_t*>(out.GetBuffer()),
                                               joined.size()) == joined);
  c.FreeAll();
  return 0;
}
