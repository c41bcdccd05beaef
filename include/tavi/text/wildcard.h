//===- wildcard.h - Wildcard patterns for names and texts ------*- C++ -*-===//
//
// This file declares the library's one wildcard matcher, used by folder searches
// and open to callers for texts of any kind.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// Flags of XWildcardMatch.
inline constexpr uint32_t kWildcardIgnoreCase = 1;  // letters match either case
inline constexpr uint32_t kWildcardFileName = 2;    // "*.*" matches every name

// XWildcardMatch is true when the whole text matches the whole pattern. Both are
// counted UTF-16 texts (lengths in code units). In the pattern:
//   *        any run of characters, none included;
//   ?        exactly one character (a surrogate pair is one character, and a
//            lone surrogate in the pattern matches only a lone one in the text);
//   [a-z0]   one character of the set: single characters and ranges;
//   [!a-z]   one character not in the set.
// A ']' right after "[" or "[!" belongs to the set ("[]]", "[!]]"); a '-' first or
// last is itself; a range written backwards ("[z-a]") is empty. A '[' without a
// closing ']' is an ordinary character, as is every other code unit, so there is no
// escape character: "[*]" matches a star and "[[]" a bracket.
//
// kWildcardIgnoreCase compares by simple case mapping (a character in a set matches
// when it, its lower or its upper case form is in the set). kWildcardFileName adds
// the folder-search rule that "*.*" matches every name, also names without a dot;
// otherwise file names follow the same rules, case-sensitive unless asked.
//
// The matcher never backtracks: it follows every way through the pattern at once,
// so its time is linear in the text for a given pattern (per character at most one
// step per pattern element plus one per 64 elements) and it allocates nothing for
// patterns of up to 48 code units, memory in proportion to the pattern beyond.
// Any input is safe; nothing is an error.
TAVI_API bool XWildcardMatch(const char16_t* pattern, size_t pattern_chars, const char16_t* text,
                             size_t text_chars, uint32_t flags = 0);

// The same for terminated texts.
TAVI_API bool XWildcardMatch(const char16_t* pattern, const char16_t* text, uint32_t flags = 0);

// XHasWildcards is true when the terminated pattern holds '*', '?' or '[', that is,
// when it can match more than the one text it spells.
TAVI_API bool XHasWildcards(const char16_t* pattern);

}  // namespace tavi
