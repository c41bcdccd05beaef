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

// WildcardMatchCounted matches like XWildcardMatch and adds its steps to *steps
// (when steps is not null): one per live pattern element tried against a
// character and one per 64-bit state word handled.
bool WildcardMatchCounted(const char16_t* pattern, size_t pattern_chars, const char16_t* text,
                          size_t text_chars, uint32_t flags, uint64_t* steps);

}  // namespace tavi::text_internal
