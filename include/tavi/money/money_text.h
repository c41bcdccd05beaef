//===- money_text.h - Amounts of money to text and back ---------*- C++ -*-===//
//
// This file declares the formatters and the parser of amounts. An amount is a
// real: a signed 64-bit integer holding the amount times 10^decimals, decimals
// 0 to 10 passed with each call (1250 with 2 decimals is 12.50). The layout comes
// from a strEnvMoneyOptions record (money_options.h).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/money/money_options.h"

namespace tavi {

class XIO;

// What stands beside the number.
enum eMoneyShow : uint8_t {
  kMoneyShowSymbol = 0,  // the options' symbol
  kMoneyShowCode = 1,    // the ISO code, always set apart from the number by a space
  kMoneyShowNone = 2,    // the number and its sign only
};

// The most characters an in-memory money formatter writes.
inline constexpr uint32_t kMoneyTextMax = 64;

// _MoneyToString writes an amount with `decimals` fraction digits as the options
// say, backwards before `end` (not terminated), and returns its first character;
// the text is at most kMoneyTextMax characters. The amount is shown with the
// options' Decimals: extra digits are rounded half to even (as ICU and banks do:
// 0.125 shows as "0.12", 0.135 as "0.14"), missing ones are written as zeros. An
// amount that rounds to zero is written without a sign. `decimals` and the
// options' Decimals outside 0..10 are taken as the nearest end of that range; an
// options record with a group size of 0 writes no groups. Never fails.
TAVI_API char16_t* _MoneyToString(int64_t value, int8_t decimals, char16_t* end,
                                  const strEnvMoneyOptions& options);
// _MoneyToStringEx is _MoneyToString with the choice of what stands beside the
// number.
TAVI_API char16_t* _MoneyToStringEx(int64_t value, int8_t decimals, char16_t* end,
                                    const strEnvMoneyOptions& options, eMoneyShow show);
// XMoneyToString and XMoneyToStringEx append the same text to `out` with one
// write; false when the write fails (the cause is in out's error state).
TAVI_API bool XMoneyToString(XIO& out, int64_t value, int8_t decimals,
                             const strEnvMoneyOptions& options);
TAVI_API bool XMoneyToStringEx(XIO& out, int64_t value, int8_t decimals,
                               const strEnvMoneyOptions& options, eMoneyShow show);

// _StringToMoney reads an amount from terminated text into `value` with
// `decimals` fraction digits and returns the position after the last character
// that belongs to it, or null. It reads what the formatters write for the same
// options in any of the negative forms and with the symbol, the ISO code or
// neither, on either side of the number:
//   - leading spaces (U+0020, U+00A0, U+202F) are skipped;
//   - a sign is "-", U+2212 or the options' MinusSign, in front, next to the
//     number on either side, or at the back; or the amount is in parentheses;
//   - the symbol or the code may be separated from the number by one space;
//   - the options' group separator is accepted between digits of the integer part
//     (any of the three spaces when it is a space), the options' point starts the
//     fraction.
// Fraction digits beyond `decimals` are accepted only while they are zeros: an
// amount is never cut short silently. The result is null when no digit is found,
// when a fraction digit would be lost, when a "(" is not closed, or when the
// amount does not fit 64 bits; `value` is then unspecified. It never reads past
// the terminator and sets no error state.
TAVI_API const char16_t* _StringToMoney(int64_t& value, int8_t decimals, const char16_t* text,
                                        const strEnvMoneyOptions& options);

}  // namespace tavi
