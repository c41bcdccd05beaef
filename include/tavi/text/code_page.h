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

namespace tavi {

// Language identifier that names the user's default language.
inline constexpr uint16_t kLanguageUserDefault = 0x0400;

// Kinds of code page of XGetLanguageCodePage.
inline constexpr int32_t kCodePageAnsi = 1;  // the 8-bit code page of the language's text
inline constexpr int32_t kCodePageOem = 3;   // the code page of its console and DOS-era files

// XGetLanguageCodePage returns the code page of the given kind (kCodePageAnsi or
// kCodePageOem) for a Windows language identifier (only the primary language counts;
// 0 and kLanguageUserDefault mean the user's default). A language the library has no
// code page for gives the Western defaults 1252 and 850, or 0 when exact is set.
// An unknown kind gives 0. Double-byte code pages (932, 936, 949, 950) are returned
// as they are, though they have no 8-bit table.
TAVI_API uint16_t XGetLanguageCodePage(uint16_t language, int32_t kind, bool exact);

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
