//===- number_locale_icu.cpp - Number separators through ICU --------------===//
//
// Maps a locale identifier to an ICU locale and reads the separators from ICU's
// decimal-format symbols.
//
//===----------------------------------------------------------------------===//
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include "platform/number_locale.h"
#include "platform/posix/icu_locale.h"

namespace tavi::platform {

namespace {

// Reads one symbol into text; its length in characters, or -1.
int32_t IcuSymbol(const char* name, UNumberFormatSymbol which, char16_t* text, int32_t capacity) {
  UErrorCode status = U_ZERO_ERROR;
  UNumberFormat* format = unum_open(UNUM_DECIMAL, nullptr, 0, name, nullptr, &status);
  if (U_FAILURE(status)) return -1;
  int32_t n = unum_getSymbol(format, which, text, capacity, &status);
  unum_close(format);
  if (U_FAILURE(status) || n >= capacity) return -1;
  return n;
}

}  // namespace

int32_t LocaleNumberSymbol(uint32_t locale, NumberSymbol symbol, char16_t* buffer,
                           int32_t capacity) {
  char name[ULOC_FULLNAME_CAPACITY];
  if (buffer == nullptr || capacity <= 0 || !IcuLocaleName(locale, name, sizeof name)) return 0;
  char16_t text[32];
  int32_t n;
  if (symbol == NumberSymbol::kList) {
    n = IcuSymbol(name, UNUM_DECIMAL_SEPARATOR_SYMBOL, text, 32);
    if (n < 0) return 0;
    text[0] = (n == 1 && text[0] == u',') ? u';' : u',';
    n = 1;
  } else {
    n = IcuSymbol(name,
                  symbol == NumberSymbol::kDecimal ? UNUM_DECIMAL_SEPARATOR_SYMBOL
                                                   : UNUM_GROUPING_SEPARATOR_SYMBOL,
                  text, 32);
    if (n < 0) return 0;
  }
  if (n + 1 > capacity) return 0;
  for (int32_t i = 0; i < n; ++i) buffer[i] = text[i];
  buffer[n] = 0;
  return n + 1;
}

}  // namespace tavi::platform
