//===- language_tag_fuzz.cpp - Fuzz language tags and the file search -----===//
//
// Reads arbitrary UTF-16 as a language tag: a tag that names a locale must give
// a tag back for that locale, and the language-file search in a folder that does
// not exist must try the tag's fallbacks and end on English without finding one.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/core/string.h"
#include "tavi/text/language.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::u16string tag(size / 2, 0);
  if (!tag.empty()) std::memcpy(tag.data(), data, tag.size() * 2);
  for (char16_t& c : tag) {
    if (c == 0) c = u'-';
  }

  const uint32_t locale = tavi::XLanguageTagToLocale(tag.c_str());
  if (locale != 0) {
    char16_t back[96];
    FUZZ_ASSERT(tavi::XLocaleToLanguageTag(locale, back, 96));
  }

  tavi::XString16 path;
  FUZZ_ASSERT(!tavi::XFindLanguageFile(path, u"/nonexistent-tavi-folder", u"app", tag.c_str()));
  const std::u16string name(path.c_str(), path.GetBufferPos() / 2);
  const std::u16string english = u".en.lng";
  FUZZ_ASSERT(name.size() >= english.size() &&
              name.compare(name.size() - english.size(), english.size(), english) == 0);
  return 0;
}
