//===- colour_text.h - Colour values as text and back ------------*- C++ -*-===//
//
// This file declares the text forms of a colour value: the hexadecimal form
// "#rrggbb" of style sheets and the decimal triple "r, g, b" of dialogs and option
// files, written into caller memory or onto a stream and read back from terminated
// UTF-16 text.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// Longest text a colour formatter writes: "255, 255, 255" (13 characters).
inline constexpr uint32_t kColourTextMax = 13;

// _ColourToString writes the colour value as "#rrggbb" (lower-case hexadecimal,
// red first; the top byte of the value is ignored) backwards before `end`, not
// terminated, and returns its first character: 0x00FF8000 is "#0080ff".
TAVI_API char16_t* _ColourToString(uint32_t colour, char16_t* end);
// _ColourToStringEx writes the decimal triple when `separator` is non-zero: the
// steps of red, green and blue separated by the separator and one space ("0, 128,
// 255"; with separator U+0020 just one space). Separator 0 gives the hexadecimal
// form. At most kColourTextMax characters.
TAVI_API char16_t* _ColourToStringEx(uint32_t colour, char16_t* end, char16_t separator);
// XColourToString and XColourToStringEx append the same texts to `out`; false when
// the write fails (the cause is in out's error state).
TAVI_API bool XColourToString(XIO& out, uint32_t colour);
TAVI_API bool XColourToStringEx(XIO& out, uint32_t colour, char16_t separator);

// XColourSeparator returns the separator of the decimal triple for a locale
// identifier (0x0400 = the user's default locale): the locale's list separator,
// which is ";" where the decimal separator is "," and "," elsewhere. An unknown
// locale, or a separator longer than one character, gives the portable ",".
TAVI_API char16_t XColourSeparator(uint32_t locale);

// _StringToColour reads a colour value from terminated text, never past its
// terminator, and returns where reading stopped (just after the colour), or null
// when the text holds no colour; `colour` is changed only on success. It sets no
// error state.
//
// Leading U+0020 spaces are skipped. Then either "#" and exactly six or three
// hexadecimal digits of either case ("#0080ff", "#08f" = "#0088ff"), which must
// not be followed by another hexadecimal digit; or three decimal steps 0 to 255
// separated by `separator` (0 means ","), with spaces allowed around each separator
// ("0, 128, 255"). A step above 255 or a missing step fails.
TAVI_API const char16_t* _StringToColour(uint32_t& colour, const char16_t* text,
                                         char16_t separator);

}  // namespace tavi
