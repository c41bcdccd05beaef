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
#include "tavi/text/language.h"

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

struct AnsiTable {
  uint32_t code_page = 1252;
  std::array<char16_t, 256> to_wide{};
};

const AnsiTable& UserAnsiTable() {
  static const AnsiTable table = [] {
    AnsiTable t;
    // The library's one table of language code pages decides; a double-byte code
    // page has no byte table, so the Western one stands in for it.
    t.code_page = XGetLanguageCodePage(kLanguageUserDefault, kCodePageAnsi, false);
    if (t.code_page == 932 || t.code_page == 936 || t.code_page == 949 || t.code_page == 950)
      t.code_page = 1252;
    char name[32];
    std::snprintf(name, sizeof name, "windows-%u", t.code_page);
    UErrorCode status = U_ZERO_ERROR;
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
