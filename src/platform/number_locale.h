//===- number_locale.h - Separators of a locale's numbers -------*- C++ -*-===//
//
// The decimal, thousands and list separators of a locale named by its numeric
// identifier (LCID), as text the way the platform reports it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::platform {

enum class NumberSymbol { kDecimal, kThousand, kList };

// The identifiers that mean the user's (0x0400) or the system's (0x0800) default
// locale; 0 is taken the same way.
inline constexpr uint32_t kUserDefaultLocale = 0x0400;
inline constexpr uint32_t kSystemDefaultLocale = 0x0800;

// LocaleNumberSymbol writes the symbol and a terminating zero into buffer and
// returns the number of characters written, terminator included. It returns 0,
// leaving buffer unspecified, when the locale is unknown or the text and its
// terminator do not fit in capacity characters. The list separator is ";" where
// the decimal separator is "," and "," otherwise.
int32_t LocaleNumberSymbol(uint32_t locale, NumberSymbol symbol, char16_t* buffer,
                           int32_t capacity);

}  // namespace tavi::platform
