//===- wildcard.h - The wildcard matcher's step count ----------*- C++ -*-===//
//
// The matcher behind XWildcardMatch with a count of the word steps it took, so
// that tests can show that the work stays linear in the text.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::text_internal {

// WildcardMatchCounted matches like XWildcardMatch and adds the number of 64-bit
// state-word operations it made to *steps (when steps is not null).
bool WildcardMatchCounted(const char16_t* pattern, size_t pattern_chars, const char16_t* text,
                          size_t text_chars, uint32_t flags, uint64_t* steps);

}  // namespace tavi::text_internal
