//===- real_text.h - Fixed-point reals to text and back ---------*- C++ -*-===//
//
// This file declares the conversions of "reals": signed 64-bit integers that hold
// a number multiplied by 10^d, where d (0 to 10, see gRealDividers) is passed with
// every call and never stored. 12.5 with two decimals is the integer 1250.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// _RealToString writes value as a decimal number with `decimals` fraction digits
// backwards before `end` (not terminated) and returns its first character. Without
// keep_zeros trailing fraction zeros are left out, and the point too when nothing
// is left of the fraction: 1250 with 2 decimals is "12.5" (keep_zeros: "12.50"),
// 1200 is "12" ("12.00"), -5 is "-0.05", 0 is "0". `decimals` outside 0..10 is
// taken as the nearest end of that range. The text is at most 22 characters.
TAVI_API char16_t* _RealToString(int64_t value, int8_t decimals, bool keep_zeros, char16_t* end,
                                 char16_t point);
// _RealToStringEx stores a terminator at end - 1 and writes the text before it.
TAVI_API char16_t* _RealToStringEx(int64_t value, int8_t decimals, bool keep_zeros, char16_t* end,
                                   char16_t point);
// XRealToString appends the same text to `out`; false when the write fails (the
// cause is in out's error state).
TAVI_API bool XRealToString(XIO& out, int64_t value, int8_t decimals, bool keep_zeros,
                            char16_t point);

// _StringToReal reads a real with `decimals` fraction digits from terminated text,
// never past its terminator, and returns where reading stopped, or null. It sets no
// error state.
//
// Leading U+0020 spaces and one "-" are taken; then the text must begin with a
// digit or `point` unless first_char_free is non-zero (which only lifts that
// check). Digits accumulate; fraction digits beyond `decimals` are consumed and
// ignored (truncation), and missing ones are made up by scaling. The first
// `point` starts the fraction. `group_separator` (when non-zero) is skipped
// between digits of the integer part once the value is non-zero. Anything else,
// a second point or a separator in the fraction ends reading. Overflow wraps:
// there is no overflow test. "1 234.5" with separator " " and 2 decimals gives
// 123450; "12.345" gives 1234; ".5" gives 50.
TAVI_API const char16_t* _StringToReal(int64_t& value, int8_t decimals, const char16_t* text,
                                       char16_t point, char16_t first_char_free,
                                       char16_t group_separator);

}  // namespace tavi
