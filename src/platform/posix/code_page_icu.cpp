//===- code_page_icu.cpp - 8-bit code pages and languages through ICU ------===//
//
// A code page's table comes from an ICU converter, converting each byte alone
// with substitution turned off, so a byte without a character shows as an error
// rather than as ICU's substitute. Languages come from ICU's LCID mapping.
//
//===----------------------------------------------------------------------===//
#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/uloc.h>

#include <cstdio>
#include <cstring>

#include "platform/code_page.h"

namespace tavi::platform {

namespace {

// ICU names a platform code page in one of these ways; the first that opens wins.
UConverter* OpenCodePage(uint32_t code_page) {
  char name[32];
  const auto try_open = [&name](UConverter*& out) {
    UErrorCode status = U_ZERO_ERROR;
    out = ucnv_open(name, &status);
    // An ambiguous alias is fine: ICU then opens the platform vendor's table.
    if (U_FAILURE(status)) {
      if (out != nullptr) ucnv_close(out);
      out = nullptr;
    }
    return out != nullptr;
  };
  UConverter* conv = nullptr;
  if (code_page >= 28591 && code_page <= 28606) {
    std::snprintf(name, sizeof name, "ISO-8859-%u", code_page - 28590);
    if (try_open(conv)) return conv;
  }
  if (code_page == 20866 || code_page == 21866) {
    std::snprintf(name, sizeof name, "KOI8-%c", code_page == 20866 ? 'R' : 'U');
    if (try_open(conv)) return conv;
  }
  if (code_page == 10000) {
    std::snprintf(name, sizeof name, "macintosh");
    if (try_open(conv)) return conv;
  }
  for (const char* pattern : {"windows-%u", "ibm-%u", "cp%u"}) {
    std::snprintf(name, sizeof name, pattern, code_page);
    if (try_open(conv)) return conv;
  }
  return nullptr;
}

}  // namespace

bool CodePageToUnicode(uint32_t code_page, char16_t* table) {
  UConverter* conv = OpenCodePage(code_page);
  if (conv == nullptr) return false;
  if (ucnv_getMaxCharSize(conv) != 1 || ucnv_getMinCharSize(conv) != 1) {
    ucnv_close(conv);
    return false;
  }
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setToUCallBack(conv, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  for (int i = 0; i < 256; ++i) {
    const char byte = static_cast<char>(i);
    UChar out[4] = {};
    UErrorCode s = U_ZERO_ERROR;
    ucnv_reset(conv);
    const int32_t n = ucnv_toUChars(conv, out, 4, &byte, 1, &s);
    table[i] = (U_SUCCESS(s) && n == 1) ? out[0] : char16_t{0xFFFD};
  }
  ucnv_close(conv);
  return true;
}

bool LanguageCode(uint16_t language, char* name, size_t size) {
  char locale[ULOC_FULLNAME_CAPACITY] = {};
  UErrorCode status = U_ZERO_ERROR;
  if (language == 0 || language == 0x0400) {
    std::snprintf(locale, sizeof locale, "%s", uloc_getDefault());
  } else {
    uloc_getLocaleForLCID(language, locale, sizeof locale, &status);
    if (U_FAILURE(status) || locale[0] == 0) return false;
  }
  status = U_ZERO_ERROR;
  const int32_t n = uloc_getLanguage(locale, name, static_cast<int32_t>(size), &status);
  return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING && n > 0;
}

}  // namespace tavi::platform
