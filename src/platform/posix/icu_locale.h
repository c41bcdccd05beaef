//===- icu_locale.h - Locale identifiers to ICU locale names ----*- C++ -*-===//
//
// The locale services that go through ICU name a locale by its Windows-style
// identifier; this turns one into the ICU locale name they open formats with.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <unicode/uloc.h>

#include <cstdint>

#include "platform/number_locale.h"

namespace tavi::platform {

// IcuLocaleName writes the ICU name for a locale identifier into name (capacity
// bytes, terminated); 0 and the user and system default identifiers give ICU's
// default locale. False when ICU does not know the identifier.
inline bool IcuLocaleName(uint32_t locale, char* name, int32_t capacity) {
  if (locale == 0 || locale == kUserDefaultLocale || locale == kSystemDefaultLocale) {
    const char* def = uloc_getDefault();
    int32_t i = 0;
    for (; def[i] != 0 && i + 1 < capacity; ++i) name[i] = def[i];
    name[i] = 0;
    return true;
  }
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = uloc_getLocaleForLCID(locale, name, capacity, &status);
  return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING && n > 0;
}

}  // namespace tavi::platform
