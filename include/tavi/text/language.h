//===- language.h - Languages, locales and language files ------*- C++ -*-===//
//
// This file declares the language and locale functions: the user's and the
// system's language, a locale's language tag and Windows locale identifier both
// ways, the display name of a language, a language's code pages, and the search
// for the language file of a language.
//
// Locales are named by Windows locale identifiers (LCID: the language identifier
// in the low 16 bits, 0x0407 German, 0x0C07 German (Austria)) and by language
// tags ("de-AT"). Language data come from ICU; the user's locale is the one the
// environment names (LC_ALL, then LC_MESSAGES, then LANG; the root locale, taken
// as English, when none is set).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/core/string.h"
#include "tavi/export.h"
#include "tavi/io/stream.h"

namespace tavi {

// Language identifier that names the user's default language.
inline constexpr uint16_t kLanguageUserDefault = 0x0400;
// Locale identifier that names the system's default locale.
inline constexpr uint32_t kLocaleSystemDefault = 0x0800;

// Kinds of code page of XGetLanguageCodePage.
inline constexpr int32_t kCodePageAnsi = 1;  // the 8-bit code page of the language's text
inline constexpr int32_t kCodePageOem = 3;   // the code page of its console and DOS-era files

// XGetLanguageCodePage returns the code page of the given kind (kCodePageAnsi or
// kCodePageOem) for a Windows language identifier (only the primary language counts;
// 0 and kLanguageUserDefault mean the user's default). A language the library has no
// code page for gives the Western defaults 1252 and 850, or 0 when exact is set.
// An unknown kind gives 0. Double-byte code pages (932, 936, 949, 950) are returned
// as they are, though they have no 8-bit table. This is the library's one table of
// language code pages; the user's ANSI code page of the text functions comes from it.
TAVI_API uint16_t XGetLanguageCodePage(uint16_t language, int32_t kind, bool exact);

// XGetLocaleCodePages gives both code pages of a locale (its language identifier
// decides) in *ansi and *oem; false, with 1252 and 850, when the library has no
// code page for the language.
TAVI_API bool XGetLocaleCodePages(uint32_t locale, uint16_t* ansi, uint16_t* oem);

// XGetUserLocale is the locale identifier of the user's locale (LC_ALL, LC_MESSAGES,
// LANG); XGetSystemLocale that of the system's, which on POSIX is what LANG names.
// A locale Windows has no identifier for gives that of its bare language ("de_XX"
// gives 0x0007); none at all, "C" or "POSIX" give 0x0409 (English, United States).
TAVI_API uint32_t XGetUserLocale();
TAVI_API uint32_t XGetSystemLocale();
// The language identifiers (the low 16 bits) of the same.
TAVI_API uint16_t XGetUserLanguage();
TAVI_API uint16_t XGetSystemLanguage();

// XGetUserLanguageTag writes the language tag of the user's locale ("de-AT", "en"
// when the environment names none) into tag, which has room for capacity code units
// including the terminating 0; false, leaving "" when capacity allows, when it does
// not fit.
TAVI_API bool XGetUserLanguageTag(char16_t* tag, size_t capacity);

// XLocaleToLanguageTag writes the language tag of a locale identifier (0x0C07 gives
// "de-AT"; 0, kLanguageUserDefault and kLocaleSystemDefault the user's and the
// system's tags) into tag as above. False for an identifier ICU does not know or a
// tag that does not fit.
TAVI_API bool XLocaleToLanguageTag(uint32_t locale, char16_t* tag, size_t capacity);

// XLanguageTagToLocale returns the locale identifier of a terminated language tag
// ("de-AT" gives 0x0C07; a bare language gives its neutral identifier, "de"
// 0x0007; '_' is read as '-'), or 0 when the tag is malformed or has no identifier.
TAVI_API uint32_t XLanguageTagToLocale(const char16_t* tag);

// XGetLanguageName appends the name of a locale's language (and region, when the
// identifier has one) as UTF-16 to out, in the language of display_locale (0 for
// the user's): 0x0C07 in 0x0407 is "Deutsch (Österreich)", in 0x0409 "German
// (Austria)". False for an identifier ICU does not know (0x20000019 in out) or when
// out refuses the text (its error imported).
TAVI_API bool XGetLanguageName(XIO& out, uint32_t locale, uint32_t display_locale = 0);

// XFindLanguageFile looks for the language file of a program or library called name
// in folder: "<folder>/<name>.<tag>.lng". It tries the tag as given, then the tag
// with its last subtag taken off, again and again ("de-Latn-AT", "de-Latn", "de"),
// and last "en"; the first file that exists is the answer, written to path. A null
// or empty tag means the user's tag (XGetUserLanguageTag); '_' in a tag is read as
// '-'. False, with path holding the last name tried and the platform's error
// recorded in path, when none exists.
TAVI_API bool XFindLanguageFile(XString16& path, const char16_t* folder, const char16_t* name,
                                const char16_t* tag = nullptr);

}  // namespace tavi
