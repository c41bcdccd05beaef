//===- numbering.h - Roman numerals and letter numbering -------*- C++ -*-===//
//
// This file declares the two numbering schemes besides decimal: Roman numerals in
// the library's own additive notation (44 is "xxxxiv") and letter numbering over a
// chosen alphabet (a, b, ... z, ba, bb, ...), each written and read.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// Characters an in-memory Roman writer may need (92999 takes 104, a decimal 20).
inline constexpr uint32_t kRomanTextCapacity = 112;
// Characters an in-memory letter writer may need (64 binary digits).
inline constexpr uint32_t kLetterTextCapacity = 64;

// _UnsignedToRomanSmall / _UnsignedToRomanCapital write value as a Roman numeral in
// lower / upper case backwards, ending just before end, and return its first
// character (no terminator). 0 gives an empty text (the result is end); a value of
// 93000 or more is written in decimal.
//
// The notation is additive: thousands repeat ("mmm"), and a subtractive pair (cm, cd,
// xc, xl, ix, iv) is used only when the whole remainder equals it, so 44 is "xxxxiv",
// 1994 "mdcccclxxxxiv" and 1900 "mcm".
TAVI_API char16_t* _UnsignedToRomanSmall(uint32_t value, char16_t* end);
TAVI_API char16_t* _UnsignedToRomanSmall(uint64_t value, char16_t* end);
TAVI_API char16_t* _UnsignedToRomanCapital(uint32_t value, char16_t* end);
TAVI_API char16_t* _UnsignedToRomanCapital(uint64_t value, char16_t* end);
// Stream forms: false when the write fails.
TAVI_API bool XUnsignedToRomanSmall(XIO& stream, uint32_t value);
TAVI_API bool XUnsignedToRomanSmall(XIO& stream, uint64_t value);
TAVI_API bool XUnsignedToRomanCapital(XIO& stream, uint32_t value);
TAVI_API bool XUnsignedToRomanCapital(XIO& stream, uint64_t value);

// _StringRomanToUnsigned reads a Roman numeral or a decimal number from terminated
// text (no spaces skipped) and returns where it stopped. Text starting with a digit is
// read by _StringToUnsigned (null only when that number overflows). Otherwise letters
// of either case are summed (M 1000, D 500, C 100, L 50, X 10, V 5, I 1, wrapping
// around on absurd lengths); a pair CD, CM, XL, XC, IV or IX adds 400, 900, 40, 90, 4
// or 9 and ends the numeral after it, so what the writer produces reads back. Text
// that starts with neither gives 0 and its own start; a null text gives null.
TAVI_API const char16_t* _StringRomanToUnsigned(uint32_t& value, const char16_t* text);
TAVI_API const char16_t* _StringRomanToUnsigned(uint64_t& value, const char16_t* text);

// _UnsignedToLetter writes value positionally in base last - first + 1, with first as
// the digit 0 (a..z: 0 is "a", 25 "z", 26 "ba"), backwards ending just before end, and
// returns the first character. A base below 2 gives an empty text.
//
// The 32-bit form takes each digit from the low 16 bits of the value (the remainder
// of value & 0xFFFF by the base) while the quotient uses the whole value; texts made by
// earlier versions depend on it, so values of 65536 and more do not read back. The
// 64-bit form uses the whole value.
TAVI_API char16_t* _UnsignedToLetter(uint32_t value, char16_t* end, char16_t first, char16_t last);
TAVI_API char16_t* _UnsignedToLetter(uint64_t value, char16_t* end, char16_t first, char16_t last);
// Stream forms: false when the write fails.
TAVI_API bool UnsignedToLetter(XIO& stream, uint32_t value, char16_t first, char16_t last);
TAVI_API bool UnsignedToLetter(XIO& stream, uint64_t value, char16_t first, char16_t last);

// _StringLetterToUnsigned reads letter numbering over first..last from terminated text
// and returns the position of the first character outside the alphabet, or null. It
// skips U+0020 spaces; the first character must lie in first..last. That letter and
// up to 66 more are accumulated as value * base + digit, wrapping around; one more is
// taken only if value * base + digit still fits the width, and any letter after that
// gives null, as does that one when it does not fit. A null text gives null.
TAVI_API const char16_t* _StringLetterToUnsigned(uint32_t& value, const char16_t* text,
                                                 char16_t first, char16_t last);
TAVI_API const char16_t* _StringLetterToUnsigned(uint64_t& value, const char16_t* text,
                                                 char16_t first, char16_t last);

}  // namespace tavi
