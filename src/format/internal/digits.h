//===- digits.h - Digit writers shared by the number formatters -*- C++ -*-===//
//
// The plain one-digit-per-step writer and reader beside the fast decimal ones,
// exposed so that tests can compare them.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::internal {

// Writes value backwards before end, one digit per division, in radix 2..255
// (digits above 9 continue from "a"); returns the first character.
char16_t* PlainDigits(uint64_t value, char16_t* end, uint32_t radix);
// Writes value in decimal backwards before end, two digits per step.
char16_t* FastDecimal(uint32_t value, char16_t* end);
char16_t* FastDecimal(uint64_t value, char16_t* end);

// PlainDecimal reads decimal text one digit per step by the same rules as the
// decimal _StringToUnsigned; the parsers' tests and fuzz targets compare with it.
const char16_t* PlainDecimal(uint64_t& value, const char16_t* text);
const char16_t* PlainDecimal(uint32_t& value, const char16_t* text);

// The value of a character as a digit 0..9, or a number above 9.
inline uint32_t DecimalDigit(char16_t c) {
  return static_cast<uint32_t>(c) - u'0';
}

}  // namespace tavi::internal
