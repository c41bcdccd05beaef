//===- double_text.h - Doubles to text and back ----------------*- C++ -*-===//
//
// This file declares the double formatters (in memory and to a stream) and the
// double reader. Digits are exact: automatic precision prints the shortest decimal
// that reads back to the same double whenever the print width allows it, and the
// reader rounds correctly (to nearest, ties to even), whatever the number of digits.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/format/number_options.h"

namespace tavi {

class XIO;

// eDoublePrint chooses the notation of a double. Any value from 5 up behaves as
// edpFixed.
enum eDoublePrint : uint8_t {
  // Exponent notation for magnitudes above 1e14 or below 1e-14 (zero excepted),
  // fixed otherwise; automatic precision takes at most 205 fraction digits.
  edpAuto = 0,
  // As edpAuto, with automatic precision capped at 36 fraction digits.
  edpAutoShort = 1,
  // Fixed notation.
  edpFixed = 2,
  // Exponent notation, automatic precision capped at 36 fraction digits.
  edpExponentShort = 3,
  // Exponent notation, automatic precision capped at 36 fraction digits.
  edpExponent = 4,
};

// The characters an in-memory double formatter may write: sign, 309 integer digits,
// point, 205 fraction digits and an exponent part, with room to spare.
inline constexpr uint32_t kDoubleTextCapacity = 528;

// _DoubleToString writes value forwards from buffer (which must hold
// kDoubleTextCapacity characters; no terminator is written), stores the length of the
// text in bytes and returns buffer.
//
// NaN gives "NaN" and either infinity "INF". A negative value (not -0.0) starts with
// "-". Fixed notation writes the integer digits, exponent notation one digit; then,
// when fraction digits are written, `point` and the digits; exponent notation ends
// with "e", "+" or "-" and the decimal exponent ("1.5e+20").
//
// decimals >= 0 asks for exactly that many fraction digits. decimals < 0
// is automatic precision: as many as fit in `width` characters counting what is
// already written and keeping one character for the point (six for the point and
// the exponent part in exponent notation), at most 36 when `exponent` or
// `shortFraction` is set and 205 otherwise; trailing zeros are dropped, and so is a
// point with no digit after it.
//
// Digits and rounding: the digits are those of the shortest decimal that reads back
// to value, followed by zeros where more are asked for (0.1 with 20 decimals is
// "0.10000000000000000000", and 2^60 with none "1152921504606847000", not the binary
// value's exact expansion). When fewer are asked for, the text is value rounded to
// nearest at the last digit written, an exact tie going to an even digit (0.125 with
// two decimals is "0.12", 0.375 is "0.38"; 0.15 is "0.1" as the double lies below
// 0.15). So with enough width, automatic precision reads back with _StringToDouble
// to the same double.
TAVI_API char16_t* _DoubleToString(uint32_t& length, double value, char16_t* buffer,
                                   int8_t decimals, bool exponent, bool shortFraction,
                                   uint8_t width, char16_t point);
// The same with the notation chosen by `print` (see eDoublePrint), options.PrintWidth
// as width and options.PointMark() as point.
TAVI_API char16_t* _DoubleToString(uint32_t& length, double value, char16_t* buffer,
                                   eDoublePrint print, int8_t decimals,
                                   const strEnvNumberOptions& options);
// XDoubleToString appends the text of _DoubleToString to stream with one _Write;
// false when the write fails (the stream's error state tells why).
TAVI_API bool XDoubleToString(XIO& stream, double value, int8_t decimals, bool exponent,
                              bool shortFraction, uint8_t width, char16_t point);
TAVI_API bool XDoubleToString(XIO& stream, double value, eDoublePrint print, int8_t decimals,
                              const strEnvNumberOptions& options);

// _StringToDouble reads a double from terminated text and returns the position where
// reading stopped, or null. It skips U+0020 spaces, takes an optional "-", then digits
// with at most one decimal point (`point`, or `altPoint` when it is not 0), then an
// optional exponent: "e" or "E", an optional sign and at least one digit. The value is
// rounded correctly to the nearest double; one that underflows becomes zero (with the
// sign read).
//
// Null, with value unspecified and no error state set anywhere, when: the text does
// not start (after spaces and "-") with a digit or a point; no digit comes before the
// exponent or the end; a second point follows before any digit; "e" is not followed by
// exponent digits; the exponent exceeds +308; or the value overflows. Group separators
// are not accepted. Reading never goes past the terminator, and the work is linear in
// the length of the text read, with memory independent of it.
TAVI_API const char16_t* _StringToDouble(double& value, const char16_t* text, char16_t point,
                                         char16_t altPoint);

}  // namespace tavi
