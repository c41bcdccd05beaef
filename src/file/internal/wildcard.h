//===- wildcard.h - The library's wildcard matcher -------------*- C++ -*-===//
//
// Matching of names against the wildcard patterns of folder searches.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>

namespace tavi::internal {

// WildcardMatch is true when name matches pattern, both counted UTF-16 texts.
// '*' matches any run of characters (also none), '?' exactly one character (a
// surrogate pair counts as one), every other code unit itself (so matching is
// case-sensitive). The pattern "*.*" matches every name, with or without a dot.
// Runs in O(pattern * name) time at worst, without recursion, whatever the input.
bool WildcardMatch(const char16_t* pattern, size_t pattern_length, const char16_t* name,
                   size_t name_length);

}  // namespace tavi::internal
