//===- language.cpp - Languages, locales and language files ---------------===//
#include "tavi/text/language.h"

#include <cstring>
#include <string>

#include "platform/code_page.h"
#include "platform/language.h"
#include "tavi/core/error.h"
#include "tavi/file/file.h"

namespace tavi {

namespace {

struct LanguageCodePages {
  const char* language;  // ISO 639
  uint16_t ansi;
  uint16_t oem;
};

// The Windows ANSI and OEM code pages of languages, after the platform's own
// national-language tables. Languages not listed take the Western defaults (1252
// and 850) unless the caller asks for an exact answer.
constexpr LanguageCodePages kLanguages[] = {
    {"de", 1252, 850}, {"fr", 1252, 850}, {"es", 1252, 850}, {"it", 1252, 850},  {"nl", 1252, 850},
    {"sv", 1252, 850}, {"fi", 1252, 850}, {"nn", 1252, 850}, {"ca", 1252, 850},  {"eu", 1252, 850},
    {"gl", 1252, 850}, {"ga", 1252, 850}, {"id", 1252, 850}, {"ms", 1252, 850},  {"af", 1252, 850},
    {"fo", 1252, 850}, {"en", 1252, 437}, {"cs", 1250, 852}, {"pl", 1250, 852},  {"hu", 1250, 852},
    {"sk", 1250, 852}, {"sl", 1250, 852}, {"hr", 1250, 852}, {"ro", 1250, 852},  {"sq", 1250, 852},
    {"bs", 1250, 852}, {"ru", 1251, 866}, {"uk", 1251, 866}, {"be", 1251, 866},  {"bg", 1251, 866},
    {"sr", 1251, 855}, {"mk", 1251, 866}, {"kk", 1251, 866}, {"el", 1253, 737},  {"tr", 1254, 857},
    {"az", 1254, 857}, {"he", 1255, 862}, {"ar", 1256, 720}, {"fa", 1256, 720},  {"ur", 1256, 720},
    {"lt", 1257, 775}, {"lv", 1257, 775}, {"et", 1257, 775}, {"vi", 1258, 1258}, {"th", 874, 874},
    {"ja", 932, 932},  {"zh", 936, 936},  {"ko", 949, 949},  {"pt", 1252, 850},  {"is", 1252, 861},
    {"da", 1252, 850}, {"nb", 1252, 850},
};

}  // namespace

uint16_t XGetLanguageCodePage(uint16_t language, int32_t kind, bool exact) {
  if (kind != kCodePageAnsi && kind != kCodePageOem) return 0;
  char code[16];
  if (platform::LanguageCode(language, code, sizeof code)) {
    for (const LanguageCodePages& entry : kLanguages) {
      if (std::strcmp(entry.language, code) == 0)
        return kind == kCodePageAnsi ? entry.ansi : entry.oem;
    }
  }
  if (exact) return 0;
  return kind == kCodePageAnsi ? 1252 : 850;
}

bool XGetLocaleCodePages(uint32_t locale, uint16_t* ansi, uint16_t* oem) {
  const uint16_t language = static_cast<uint16_t>(locale & 0xFFFF);
  const uint16_t exact = XGetLanguageCodePage(language, kCodePageAnsi, true);
  *ansi = XGetLanguageCodePage(language, kCodePageAnsi, false);
  *oem = XGetLanguageCodePage(language, kCodePageOem, false);
  return exact != 0;
}

uint32_t XGetUserLocale() {
  return platform::EnvironmentLocale(false);
}

uint32_t XGetSystemLocale() {
  return platform::EnvironmentLocale(true);
}

uint16_t XGetUserLanguage() {
  return static_cast<uint16_t>(XGetUserLocale() & 0xFFFF);
}

uint16_t XGetSystemLanguage() {
  return static_cast<uint16_t>(XGetSystemLocale() & 0xFFFF);
}

namespace {

// Widen copies an ASCII tag into tag (capacity code units with the 0).
bool Widen(const char* narrow, char16_t* tag, size_t capacity) {
  const size_t n = std::strlen(narrow);
  if (n + 1 > capacity) {
    if (capacity > 0) tag[0] = 0;
    return false;
  }
  for (size_t i = 0; i <= n; ++i) tag[i] = static_cast<unsigned char>(narrow[i]);
  return true;
}

constexpr size_t kTagCapacity = 96;

}  // namespace

bool XGetUserLanguageTag(char16_t* tag, size_t capacity) {
  char narrow[kTagCapacity];
  if (!platform::EnvironmentLanguageTag(false, narrow, sizeof narrow)) {
    if (capacity > 0) tag[0] = 0;
    return false;
  }
  return Widen(narrow, tag, capacity);
}

bool XLocaleToLanguageTag(uint32_t locale, char16_t* tag, size_t capacity) {
  char narrow[kTagCapacity];
  if (!platform::LocaleLanguageTag(locale, narrow, sizeof narrow)) {
    if (capacity > 0) tag[0] = 0;
    return false;
  }
  return Widen(narrow, tag, capacity);
}

uint32_t XLanguageTagToLocale(const char16_t* tag) {
  char narrow[kTagCapacity];
  size_t n = 0;
  for (; tag[n] != 0; ++n) {
    const char16_t c = tag[n];
    if (n + 1 >= sizeof narrow || c >= 0x80) return 0;
    narrow[n] = c == u'_' ? '-' : static_cast<char>(c);
  }
  narrow[n] = 0;
  if (n == 0) return 0;
  return platform::LanguageTagLocale(narrow);
}

bool XGetLanguageName(XIO& out, uint32_t locale, uint32_t display_locale) {
  char16_t name[256];
  const int32_t n = platform::LocaleDisplayName(locale, display_locale, name, 256);
  if (n < 0) {
    out.SetSafeErrorCode(kErrNoLocale);
    return false;
  }
  return out._Write(name, static_cast<uint32_t>(n) * sizeof(char16_t));
}

bool XFindLanguageFile(XString16& path, const char16_t* folder, const char16_t* name,
                       const char16_t* tag) {
  // The tag in use: the caller's or the user's, with '_' read as '-'.
  std::u16string current;
  if (tag != nullptr && tag[0] != 0) {
    for (; *tag != 0; ++tag) current += *tag == u'_' ? u'-' : *tag;
  } else {
    char16_t user[kTagCapacity];
    if (XGetUserLanguageTag(user, kTagCapacity)) current = user;
  }
  auto try_tag = [&](const std::u16string& candidate) {
    path.EmptyString();
    path.Add(folder);
    const uint32_t units = path.GetBufferPos() / sizeof(char16_t);
    if (units > 0 && path.c_str()[units - 1] != XPathDivider) {
      const char16_t divider[2] = {XPathDivider, 0};
      path.Add(divider);
    }
    path.Add(name);
    path.Add(u".");
    path.Add(candidate.c_str());
    path.Add(u".lng");
    return XFileExist(path);
  };
  while (!current.empty()) {
    if (try_tag(current)) return true;
    const size_t dash = current.rfind(u'-');
    if (dash == std::u16string::npos) break;
    current.resize(dash);
  }
  if (current == u"en") return false;  // already tried
  return try_tag(u"en");
}

}  // namespace tavi
