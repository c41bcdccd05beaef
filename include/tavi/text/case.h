//===- case.h - Upper, lower and title case, and case folding -*- C++ -*-===//
//
// This file declares the case functions of wide text: the mapping of whole strings to
// upper, lower and title case by Unicode's full mappings, in which the length can
// change ("ß" becomes "SS", "ŉ" becomes "ʼN"), and the simple case folding that
// case-insensitive search and comparison (search.h) use. Mappings follow no
// particular language (no Turkish dotless i). Upper and lower case of text that is
// all ASCII take a fast path that gives the same result.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// XFoldCase returns the simple case folding of a code unit (itself for surrogates);
// XFoldCodePoint that of any code point. Folding maps the case forms of a letter to
// one of them ("A" and "a" to "a", "Σ", "σ" and "ς" to "σ").
TAVI_API char16_t XFoldCase(char16_t c);
TAVI_API uint32_t XFoldCodePoint(uint32_t c);

enum class XCaseMapping : uint8_t { kUpper, kLower, kTitle };

// Most code units the mapping of one code unit gives: _MapCase needs room for
// kCaseMaxGrowth code units per unit of text.
inline constexpr uint32_t kCaseMaxGrowth = 3;

// _MapCase writes the mapping of units code units of text to out, which has room for
// kCaseMaxGrowth * units code units, and returns the end of what it wrote, or null
// when the mapping failed. Title case capitalises the first letter of each word and
// lowers the rest. Unpaired surrogates pass unchanged. text and out do not overlap.
TAVI_API char16_t* _MapCase(XCaseMapping mapping, const char16_t* text, uint32_t units,
                            char16_t* out);
// XMapCase appends the mapping to target (in host-order UTF-16), in pieces cut
// between words, so it needs no memory in proportion to the text. False with the
// cause in target (kErrConversion for a failed mapping, or target's write error).
TAVI_API bool XMapCase(XIO& target, XCaseMapping mapping, const char16_t* text, uint32_t units);

// Shorthands of XMapCase.
TAVI_API bool XToUpper(XIO& target, const char16_t* text, uint32_t units);
TAVI_API bool XToLower(XIO& target, const char16_t* text, uint32_t units);
TAVI_API bool XToTitle(XIO& target, const char16_t* text, uint32_t units);

}  // namespace tavi
