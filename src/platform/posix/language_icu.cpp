//===- language_icu.cpp - Locale names and display names through ICU ------===//
#include <unicode/uloc.h>

#include <cstdlib>
#include <cstring>

#include "platform/language.h"
#include "platform/posix/icu_locale.h"

namespace tavi::platform {
namespace {

constexpr uint32_t kEnglishUs = 0x0409;

// PosixLocale reads the locale name the environment gives for messages (or, for
// the system, LANG alone) and turns "de_AT.UTF-8@euro" into the ICU name "de_AT".
// False for none, "C" and "POSIX".
bool PosixLocale(bool system, char* name, size_t capacity) {
  const char* value = nullptr;
  const char* const user_order[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
  for (const char* variable : user_order) {
    if (system && std::strcmp(variable, "LANG") != 0) continue;
    const char* v = std::getenv(variable);
    if (v != nullptr && v[0] != 0) {
      value = v;
      break;
    }
  }
  if (value == nullptr || std::strcmp(value, "C") == 0 || std::strncmp(value, "C.", 2) == 0 ||
      std::strcmp(value, "POSIX") == 0) {
    return false;
  }
  size_t n = 0;
  while (value[n] != 0 && value[n] != '.' && value[n] != '@' && n + 1 < capacity) {
    name[n] = value[n];
    ++n;
  }
  name[n] = 0;
  return n > 0;
}

uint32_t LocaleOf(const char* icu_name) {
  uint32_t lcid = uloc_getLCID(icu_name);
  if (lcid == 0) {
    char language[ULOC_LANG_CAPACITY] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(icu_name, language, sizeof language, &status);
    if (U_SUCCESS(status)) lcid = uloc_getLCID(language);
  }
  return lcid;
}

bool TagOf(const char* icu_name, char* tag, size_t capacity) {
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n =
      uloc_toLanguageTag(icu_name, tag, static_cast<int32_t>(capacity), /*strict=*/false, &status);
  return U_SUCCESS(status) && status != U_STRING_NOT_TERMINATED_WARNING && n > 0 &&
         static_cast<size_t>(n) < capacity;
}

}  // namespace

uint32_t EnvironmentLocale(bool system) {
  char name[ULOC_FULLNAME_CAPACITY];
  if (!PosixLocale(system, name, sizeof name)) return kEnglishUs;
  const uint32_t lcid = LocaleOf(name);
  return lcid != 0 ? lcid : kEnglishUs;
}

bool EnvironmentLanguageTag(bool system, char* tag, size_t capacity) {
  char name[ULOC_FULLNAME_CAPACITY];
  if (!PosixLocale(system, name, sizeof name)) {
    if (capacity < 3) return false;
    std::memcpy(tag, "en", 3);
    return true;
  }
  return TagOf(name, tag, capacity);
}

bool LocaleLanguageTag(uint32_t locale, char* tag, size_t capacity) {
  if (locale == 0 || locale == 0x0400) return EnvironmentLanguageTag(false, tag, capacity);
  if (locale == 0x0800) return EnvironmentLanguageTag(true, tag, capacity);
  char name[ULOC_FULLNAME_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = uloc_getLocaleForLCID(locale, name, sizeof name, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING || n <= 0) return false;
  return TagOf(name, tag, capacity);
}

uint32_t LanguageTagLocale(const char* tag) {
  char name[ULOC_FULLNAME_CAPACITY];
  int32_t parsed = 0;
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = uloc_forLanguageTag(tag, name, sizeof name, &parsed, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING || n <= 0) return 0;
  if (tag[parsed] != 0) return 0;  // trailing text that is not part of a tag
  return uloc_getLCID(name);
}

int32_t LocaleDisplayName(uint32_t locale, uint32_t display_locale, char16_t* name,
                          int32_t capacity) {
  char which[ULOC_FULLNAME_CAPACITY], in[ULOC_FULLNAME_CAPACITY];
  if (locale == 0 || locale == 0x0400 || locale == 0x0800)
    locale = EnvironmentLocale(locale == 0x0800);
  if (display_locale == 0 || display_locale == 0x0400 || display_locale == 0x0800)
    display_locale = EnvironmentLocale(display_locale == 0x0800);
  if (!IcuLocaleName(locale, which, sizeof which) || !IcuLocaleName(display_locale, in, sizeof in))
    return -1;
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = uloc_getDisplayName(which, in, name, capacity, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING || n <= 0) return -1;
  return n;
}

}  // namespace tavi::platform
