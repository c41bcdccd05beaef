//===- locale_icu.cpp - Locale services through ICU ------------------------===//
//
// Collation and case mapping for the user's locale, and the user's 8-bit ANSI code
// page as a 256-entry table built once from an ICU converter.
//
//===----------------------------------------------------------------------===//
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

#include "platform/locale.h"

namespace tavi::platform {

namespace {

// The user's locale for collation; the root locale when the environment names none.
const char* CollationLocale() {
  const char* name = uloc_getDefault();
  if (name == nullptr || std::strcmp(name, "en_US_POSIX") == 0 || std::strcmp(name, "c") == 0)
    return "";
  return name;
}

struct CollatorCloser {
  void operator()(UCollator* c) const { ucol_close(c); }
};

// One collator per thread: collators are cheap to use but not to open.
UCollator* ThreadCollator() {
  thread_local std::unique_ptr<UCollator, CollatorCloser> collator;
  if (!collator) {
    UErrorCode status = U_ZERO_ERROR;
    UCollator* c = ucol_open(CollationLocale(), &status);
    if (U_FAILURE(status)) {
      status = U_ZERO_ERROR;
      c = ucol_open("", &status);
    }
    if (c != nullptr) ucol_setStrength(c, UCOL_TERTIARY);
    collator.reset(c);
  }
  return collator.get();
}

int Sign(int v) {
  return v < 0 ? -1 : v > 0 ? 1 : 0;
}

// Fallback order when no collator can be opened: code units.
int CompareUnits(const char16_t* a, int32_t an, const char16_t* b, int32_t bn) {
  int32_t n = an < bn ? an : bn;
  for (int32_t i = 0; i < n; ++i) {
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  return Sign(an - bn);
}

int32_t Length(const char16_t* s) {
  int32_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

struct LanguageCodePage {
  const char* language;
  uint32_t code_page;
};

// Windows ANSI code page of each language that does not use 1252.
constexpr LanguageCodePage kAnsiCodePages[] = {
    {"cs", 1250}, {"pl", 1250}, {"hu", 1250}, {"sk", 1250}, {"sl", 1250}, {"hr", 1250},
    {"ro", 1250}, {"sq", 1250}, {"bs", 1250}, {"ru", 1251}, {"uk", 1251}, {"be", 1251},
    {"bg", 1251}, {"sr", 1251}, {"mk", 1251}, {"kk", 1251}, {"el", 1253}, {"tr", 1254},
    {"az", 1254}, {"he", 1255}, {"ar", 1256}, {"fa", 1256}, {"ur", 1256}, {"lt", 1257},
    {"lv", 1257}, {"et", 1257}, {"vi", 1258}, {"th", 874},
};

struct AnsiTable {
  uint32_t code_page = 1252;
  std::array<char16_t, 256> to_wide{};
};

const AnsiTable& UserAnsiTable() {
  static const AnsiTable table = [] {
    AnsiTable t;
    char language[16] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(uloc_getDefault(), language, sizeof language, &status);
    for (const LanguageCodePage& entry : kAnsiCodePages) {
      if (U_SUCCESS(status) && std::strcmp(entry.language, language) == 0)
        t.code_page = entry.code_page;
    }
    char name[32];
    std::snprintf(name, sizeof name, "windows-%u", t.code_page);
    status = U_ZERO_ERROR;
    UConverter* conv = ucnv_open(name, &status);
    for (int i = 0; i < 256; ++i) {
      char byte = static_cast<char>(i);
      UChar out[4] = {};
      UErrorCode s = U_ZERO_ERROR;
      int32_t n = conv ? ucnv_toUChars(conv, out, 4, &byte, 1, &s) : 0;
      t.to_wide[i] = (conv && U_SUCCESS(s) && n == 1) ? out[0] : (conv ? u'\uFFFD' : char16_t(i));
    }
    t.to_wide[0] = 0;
    if (conv) ucnv_close(conv);
    return t;
  }();
  return table;
}

}  // namespace

int CompareText(const char16_t* a, const char16_t* b) {
  return CompareTextN(a, Length(a), b, Length(b));
}

int CompareTextN(const char16_t* a, int32_t a_count, const char16_t* b, int32_t b_count) {
  UCollator* c = ThreadCollator();
  if (c == nullptr) return CompareUnits(a, a_count, b, b_count);
  UCollationResult r = ucol_strcoll(c, a, a_count, b, b_count);
  return r == UCOL_LESS ? -1 : r == UCOL_GREATER ? 1 : 0;
}

char16_t ToUpper(char16_t c) {
  return static_cast<char16_t>(u_toupper(c));
}

char16_t ToLower(char16_t c) {
  return static_cast<char16_t>(u_tolower(c));
}

uint32_t UserAnsiCodePage() {
  return UserAnsiTable().code_page;
}

char16_t AnsiToWide(unsigned char c) {
  return UserAnsiTable().to_wide[c];
}

bool WideToAnsi(char16_t c, unsigned char& out) {
  const auto& table = UserAnsiTable().to_wide;
  for (int i = 0; i < 256; ++i) {
    if (table[i] == c) {
      out = static_cast<unsigned char>(i);
      return true;
    }
  }
  return false;
}

}  // namespace tavi::platform
