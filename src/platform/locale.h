//===- locale.h - Collation, case mapping and the ANSI code page -*- C++ -*-===//
//
// Locale services for the user's locale (taken from the environment; the root
// locale when none is set).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::platform {

// CompareText orders two terminated UTF-16 texts by the user's locale, linguistic
// and case-sensitive: -1, 0 or 1.
int CompareText(const char16_t* a, const char16_t* b);
// CompareTextN orders counted UTF-16 texts the same way.
int CompareTextN(const char16_t* a, int32_t a_count, const char16_t* b, int32_t b_count);
// Simple upper/lower case mapping of one code unit.
char16_t ToUpper(char16_t c);
char16_t ToLower(char16_t c);

// UserAnsiCodePage is the 8-bit code page of the user's language (1252 when unknown).
uint32_t UserAnsiCodePage();
// AnsiToWide maps a byte of the user's ANSI code page to UTF-16 (bytes without a
// character give U+FFFD).
char16_t AnsiToWide(unsigned char c);
// WideToAnsi maps a code unit back; false when the code page has no such character.
bool WideToAnsi(char16_t c, unsigned char& out);

}  // namespace tavi::platform
