//===- integer_text.h - Integers to text and back ---------------*- C++ -*-===//
//
// This file declares the integer formatters, which write 32- and 64-bit values in
// any radix from 2 to 36 into caller memory or onto a stream, and the parsers that
// read them back from terminated UTF-16 text.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// In-memory formatters. `end` is one past the last character the caller lets the
// formatter write: the text is written backwards so that it ends just before `end`,
// is not terminated, and the result points at its first character (its length is
// end - result). The caller provides room for the longest text: 20 characters for
// 64-bit decimal, 64 for 64-bit binary, one more for a sign, and at least the
// minimum digit count for the padded forms.
//
// Digits above 9 are the lower-case letters from "a". Zero gives "0". Signed forms
// put "-" in front of the magnitude, which for the most negative value is formed by
// two's-complement negation, so it prints in full; the sign does not count toward
// a minimum digit count. A radix outside 2..36 formats in decimal.
//
// Decimal formatting takes two digits per step from a pair table and works on
// 32-bit pieces of eight digits, so a 64-bit value costs at most two 64-bit
// divisions.
TAVI_API char16_t* _UnsignedToString(uint32_t value, char16_t* end);
TAVI_API char16_t* _UnsignedToString(uint64_t value, char16_t* end);
TAVI_API char16_t* _UnsignedToString(uint32_t value, char16_t* end, uint8_t radix);
TAVI_API char16_t* _UnsignedToString(uint64_t value, char16_t* end, uint8_t radix);
// The padded forms put leading "0" in front up to min_digits digits.
TAVI_API char16_t* _UnsignedToString(uint32_t value, uint16_t min_digits, char16_t* end,
                                     uint8_t radix);
TAVI_API char16_t* _UnsignedToString(uint64_t value, uint16_t min_digits, char16_t* end,
                                     uint8_t radix);
TAVI_API char16_t* _SignedToString(int32_t value, char16_t* end);
TAVI_API char16_t* _SignedToString(int64_t value, char16_t* end);
TAVI_API char16_t* _SignedToString(int32_t value, uint16_t min_digits, char16_t* end,
                                   uint8_t radix);
TAVI_API char16_t* _SignedToString(int64_t value, uint16_t min_digits, char16_t* end,
                                   uint8_t radix);

// Stream formatters: the same text appended to `out`, formatted on the stack (long
// zero padding goes out in pieces). True when every write succeeded; otherwise
// false with the cause in out's error state.
TAVI_API bool XUnsignedToString(XIO& out, uint32_t value);
TAVI_API bool XUnsignedToString(XIO& out, uint64_t value);
TAVI_API bool XUnsignedToString(XIO& out, uint32_t value, uint8_t radix);
TAVI_API bool XUnsignedToString(XIO& out, uint64_t value, uint8_t radix);
TAVI_API bool XUnsignedToString(XIO& out, uint32_t value, uint16_t min_digits, uint8_t radix);
TAVI_API bool XUnsignedToString(XIO& out, uint64_t value, uint16_t min_digits, uint8_t radix);
TAVI_API bool XSignedToString(XIO& out, int32_t value);
TAVI_API bool XSignedToString(XIO& out, int64_t value);
TAVI_API bool XSignedToString(XIO& out, int32_t value, uint16_t min_digits, uint8_t radix);
TAVI_API bool XSignedToString(XIO& out, int64_t value, uint16_t min_digits, uint8_t radix);

// Parsers. Each reads a terminated UTF-16 text, never past its terminator, sets
// no error state, and returns a pointer to the first character it did not consume
// (the terminator or whatever stopped it), or null when the text does not begin
// with a number or the number overflows as below. On failure `value` may have been
// partly written.
//
// Decimal (_StringToUnsigned without radix, both widths): leading U+0020 spaces
// are skipped (no other white space, no sign). The first twenty digits accumulate
// with wrap-around in the result's width and are never refused, so the 32-bit form
// reads "4294967296" as 0; a twenty-first digit is taken only when value * 10 +
// digit still fits (64 bits: value <= 1844674407370955161 and no carry; 32 bits:
// value < 429496729), else null; a twenty-second digit gives null.
TAVI_API const char16_t* _StringToUnsigned(uint64_t& value, const char16_t* text);
TAVI_API const char16_t* _StringToUnsigned(uint32_t& value, const char16_t* text);
// Radix: spaces skipped, then digits "0".."9" and, above radix 10, letters from
// "a" for 10 (the 64-bit form also accepts upper case). The first character must
// be a digit of the radix, else null. Before each further digit, a value already
// above the width's maximum divided by the radix ends reading there, without
// failure. A radix of 0 accepts no digit; the radix is not otherwise checked.
TAVI_API const char16_t* _StringToUnsigned(uint64_t& value, const char16_t* text, uint8_t radix);
TAVI_API const char16_t* _StringToUnsigned(uint32_t& value, const char16_t* text, uint8_t radix);
// Signed decimal: spaces, an optional "-" (no "+"), then the unsigned decimal form
// of the same width. A magnitude with the top bit set gives null, so the most
// negative value cannot be read.
TAVI_API const char16_t* _StringToSigned(int64_t& value, const char16_t* text);
TAVI_API const char16_t* _StringToSigned(int32_t& value, const char16_t* text);

}  // namespace tavi
