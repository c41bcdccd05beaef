//===- search.h - Finding and counting strings in text ---------*- C++ -*-===//
//
// This file declares the search functions over wide text (UTF-16 code units) and
// byte strings: the first and last occurrence and the number of occurrences of a
// string, and the case-insensitive search and comparison of wide text by simple
// case folding (case.h).
//
// All positions and lengths of wide text count code units. kTextNotFound
// (0xFFFFFFFF) is the result that means no match. A search reads only the given
// ranges, allocates nothing and ends on any input: the forward searches filter
// candidate positions by the first and last unit of the string, 32 bytes per step
// on processors with AVX2, so that typical text costs one pass; a text built to
// match every filter costs at worst the product of the two lengths.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

inline constexpr uint32_t kTextNotFound = 0xFFFFFFFF;

// XFindText returns the position of the first occurrence of what in text, or
// kTextNotFound. An empty what is found at 0.
TAVI_API uint32_t XFindText(const char16_t* text, uint32_t units, const char16_t* what,
                            uint32_t what_units);
// XFindLastText returns the position of the last occurrence (an empty what: units).
TAVI_API uint32_t XFindLastText(const char16_t* text, uint32_t units, const char16_t* what,
                                uint32_t what_units);
// XCountText counts the occurrences that do not overlap, taken from the front ("aa"
// occurs twice in "aaaaa"); an empty what counts 0.
TAVI_API uint32_t XCountText(const char16_t* text, uint32_t units, const char16_t* what,
                             uint32_t what_units);

// The same over bytes.
TAVI_API uint32_t XFindBytes(const void* data, uint32_t bytes, const void* what,
                             uint32_t what_bytes);
TAVI_API uint32_t XFindLastBytes(const void* data, uint32_t bytes, const void* what,
                                 uint32_t what_bytes);
TAVI_API uint32_t XCountBytes(const void* data, uint32_t bytes, const void* what,
                              uint32_t what_bytes);

// XFindTextNoCase is XFindText with both texts compared by simple case folding
// (XFoldCase: "STRASSE" does not match "straße", "ΣΑΣ" matches "σας"). Simple folding
// keeps the length of the text, so the match has what_units code units.
TAVI_API uint32_t XFindTextNoCase(const char16_t* text, uint32_t units, const char16_t* what,
                                  uint32_t what_units);
// XCompareTextNoCase compares the simply folded texts by code point: negative, 0 or
// positive. An unpaired surrogate compares as its own value.
TAVI_API int32_t XCompareTextNoCase(const char16_t* a, uint32_t a_units, const char16_t* b,
                                    uint32_t b_units);

}  // namespace tavi
