//===- case_map.h - Unicode case mapping and folding -----------*- C++ -*-===//
//
// Locale-independent case operations on UTF-16 text: whole-string mappings whose
// length can change (the German sharp s becomes "SS") and the simple folding of
// one code point used by case-insensitive search and comparison.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::platform {

enum class CaseMapping { kUpper, kLower, kTitle };

// MapCase writes the mapping of count code units to out (capacity code units) and
// returns the length of the result, which is larger than capacity when out was too
// small (out's content is then undefined), or -1 for an internal failure. Title
// case starts each word (by the root locale's word breaks) with its title form.
int32_t MapCase(CaseMapping mapping, const char16_t* text, int32_t count, char16_t* out,
                int32_t capacity);

// SimpleFold returns the simple case folding of a code point (itself when it has
// none); a code point of the BMP folds into the BMP and one outside it stays outside.
uint32_t SimpleFold(uint32_t code_point);

}  // namespace tavi::platform
