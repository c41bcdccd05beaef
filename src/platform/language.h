//===- language.h - Locale names, identifiers and display names -*- C++ -*-===//
//
// The locale data behind the language functions: the locales the environment
// names, locale identifiers and language tags both ways, and display names.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::platform {

// EnvironmentLocale is the locale identifier of the locale the environment names
// for the user (system false: LC_ALL, LC_MESSAGES, LANG) or the system (LANG), that
// of its language when the whole locale has none, 0x0409 when none is named.
uint32_t EnvironmentLocale(bool system);

// EnvironmentLanguageTag writes the language tag of the user's locale ("en" when
// none is named) into tag (capacity bytes, terminated); false when it does not fit.
bool EnvironmentLanguageTag(bool system, char* tag, size_t capacity);

// LocaleLanguageTag writes the tag of a locale identifier; false when unknown or
// when it does not fit.
bool LocaleLanguageTag(uint32_t locale, char* tag, size_t capacity);

// LanguageTagLocale is the identifier of a language tag, 0 when it has none.
uint32_t LanguageTagLocale(const char* tag);

// LocaleDisplayName writes the display name of locale in the language of
// display_locale (0: the user's) into name (capacity code units); returns its
// length, or -1 when a locale is unknown or the name does not fit.
int32_t LocaleDisplayName(uint32_t locale, uint32_t display_locale, char16_t* name,
                          int32_t capacity);

}  // namespace tavi::platform
