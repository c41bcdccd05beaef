//===- code_page.h - 8-bit code-page tables and language code pages -*- C++ -*-===//
//
// This file declares the library's tables of 8-bit code pages: for each byte the
// UTF-16 character it stands for, and from two such tables the map that converts
// text between two code pages. Tables are built once per code page from the
// platform's converters and cached for the life of the process; every function
// here is safe to call from several threads.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/text/language.h"

namespace tavi {

// The language code pages (XGetLanguageCodePage) are declared in language.h.

// XSetChar16LUT fills lut[256] with the UTF-16 character of each byte of the 8-bit
// code page (U+FFFD for a byte the code page leaves undefined; byte 0 is always
// U+0000). False, leaving lut as it was, for a number without an 8-bit table:
// unknown numbers, double-byte and UTF code pages, and the library's Unicode text
// formats (1025, 1026, 1030, 33795, 33796).
TAVI_API bool XSetChar16LUT(uint16_t code_page, char16_t* lut);

// XChar8ConvertLUTs builds the tables of both code pages and from them map[256]:
// the byte of target_code_page for each byte of source_code_page, "?" where the
// target lacks the character. False, leaving map as it was, when either code page
// has no table.
TAVI_API bool XChar8ConvertLUTs(uint16_t target_code_page, uint16_t source_code_page, uint8_t* map);

}  // namespace tavi
