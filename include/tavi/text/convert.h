//===- convert.h - Conversions between UTF-8, UTF-16 and code pages -*- C++ -*-===//
//
// This file declares the library's text conversions between UTF-8, UTF-16 (host
// order, the library's wide text) and the 8-bit code pages of code_page.h. Each
// conversion has two forms: the X form appends the converted text to a stream and
// returns a boolean; the _ form writes into caller memory and returns the end of
// what it wrote. They share one engine with the converting filter of convert_io.h
// and the UTF-8 converter of the text files, so all give the same output.
//
// Substitution: whatever the target cannot hold becomes one "?" (in the target's
// encoding): a malformed UTF-8 piece (the longest prefix of a valid sequence, or one
// byte), an incomplete character at the end of the text, an unpaired surrogate, a
// byte the source code page leaves undefined, a character the target code page lacks
// (a character outside the BMP counts as one). With kConvertStrict the first such
// fault stops the conversion instead: the X form sets kErrConversion (0x2000000B)
// in the target stream and returns false, the _ form returns null.
//
// A code page without a table (see XSetChar16LUT) fails with kErrSaveEncoding
// (0x2000000F) in the X forms and null in the _ forms, before anything is written.
// Hostile input is safe: no form reads past the given length, writes past the room
// stated below, or allocates in proportion to the input.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// Conversion flags.
inline constexpr uint32_t kConvertStrict = 1;  // fail on the first fault instead of "?"

// The _ forms need room for the largest output their input can give:
//   _Utf8ToUtf16, _CodePageToUtf16: one code unit per input byte;
//   _Utf16ToUtf8: three bytes per code unit; _CodePageToUtf8: three bytes per byte;
//   _Utf16ToCodePage: one byte per code unit; _Utf8ToCodePage, _CodePageToCodePage:
//   one byte per byte.
// Wide lengths are counted in code units.

// _Utf8ToUtf16 converts bytes bytes of UTF-8 to out; returns the end of the code units
// written, or null (kConvertStrict and a fault).
TAVI_API char16_t* _Utf8ToUtf16(const char* text, uint32_t bytes, char16_t* out,
                                uint32_t flags = 0);
// _Utf16ToUtf8 converts units code units of UTF-16 to UTF-8.
TAVI_API char* _Utf16ToUtf8(const char16_t* text, uint32_t units, char* out, uint32_t flags = 0);
// _CodePageToUtf16 converts text of an 8-bit code page to UTF-16; null also when the
// code page has no table.
TAVI_API char16_t* _CodePageToUtf16(uint16_t code_page, const char* text, uint32_t bytes,
                                    char16_t* out, uint32_t flags = 0);
// _Utf16ToCodePage converts UTF-16 to an 8-bit code page.
TAVI_API char* _Utf16ToCodePage(uint16_t code_page, const char16_t* text, uint32_t units, char* out,
                                uint32_t flags = 0);
// _Utf8ToCodePage and _CodePageToUtf8 go between UTF-8 and an 8-bit code page.
TAVI_API char* _Utf8ToCodePage(uint16_t code_page, const char* text, uint32_t bytes, char* out,
                               uint32_t flags = 0);
TAVI_API char* _CodePageToUtf8(uint16_t code_page, const char* text, uint32_t bytes, char* out,
                               uint32_t flags = 0);
// _CodePageToCodePage converts between two 8-bit code pages.
TAVI_API char* _CodePageToCodePage(uint16_t target_code_page, uint16_t source_code_page,
                                   const char* text, uint32_t bytes, char* out, uint32_t flags = 0);

// The X forms append to target, in pieces, needing no memory in proportion to the
// text. False with the cause in target: kErrConversion, kErrSaveEncoding, or
// target's own write error; output before a fault may have been written.
TAVI_API bool XUtf8ToUtf16(XIO& target, const char* text, uint32_t bytes, uint32_t flags = 0);
TAVI_API bool XUtf16ToUtf8(XIO& target, const char16_t* text, uint32_t units, uint32_t flags = 0);
TAVI_API bool XCodePageToUtf16(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                               uint32_t flags = 0);
TAVI_API bool XUtf16ToCodePage(XIO& target, uint16_t code_page, const char16_t* text,
                               uint32_t units, uint32_t flags = 0);
TAVI_API bool XUtf8ToCodePage(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                              uint32_t flags = 0);
TAVI_API bool XCodePageToUtf8(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                              uint32_t flags = 0);
TAVI_API bool XCodePageToCodePage(XIO& target, uint16_t target_code_page, uint16_t source_code_page,
                                  const char* text, uint32_t bytes, uint32_t flags = 0);

// XConvertText is the general form: source_format and target_format are text-format
// numbers of text_file.h (kTextUtf16, kTextUtf8 or 65001) or 8-bit code pages; bytes
// counts the source's bytes. Other Unicode formats fail with kErrLoadEncoding
// (0x2000000E).
TAVI_API bool XConvertText(XIO& target, uint16_t target_format, uint16_t source_format,
                           const void* text, uint32_t bytes, uint32_t flags = 0);

}  // namespace tavi
