//===- code_page.h - 8-bit code pages and locale languages -----*- C++ -*-===//
//
// The raw material of the library's code-page tables: what each byte of a
// single-byte code page means in UTF-16, and the language of a Windows language
// identifier. The text layer builds and caches its tables from these.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::platform {

// CodePageToUnicode fills table[256] with the UTF-16 character of each byte of the
// code page (U+FFFD for a byte the code page leaves undefined). False when the
// platform has no converter for the number or the code page is not single-byte.
bool CodePageToUnicode(uint32_t code_page, char16_t* table);

// LanguageCode writes the ISO 639 code ("de", "haw") of a Windows language
// identifier into name (room for size bytes, terminated); 0 and 0x0400 name the
// user's default locale. False when the identifier is unknown.
bool LanguageCode(uint16_t language, char* name, size_t size);

}  // namespace tavi::platform
