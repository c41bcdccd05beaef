//===- text_util.h - Small helpers for UTF-16 text in core -----*- C++ -*-===//
#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>

#include "tavi/core/string.h"

namespace tavi::internal {

// Length of a terminated UTF-16 text in code units; 0 for null.
inline uint32_t TextLength(const char16_t* text) {
  if (text == nullptr) return 0;
  uint32_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

// Appends the code units of a terminated ASCII literal or UTF-16 text to out.
inline bool AppendText(XIO& out, const char16_t* text) {
  return out._Write(text, TextLength(text) * 2);
}

// Appends an integer in decimal, as UTF-16 digits.
template <typename Int>
bool AppendDecimal(XIO& out, Int value) {
  char digits[24];
  auto result = std::to_chars(digits, digits + sizeof digits, value);
  char16_t wide[24];
  uint32_t n = static_cast<uint32_t>(result.ptr - digits);
  for (uint32_t i = 0; i < n; ++i) wide[i] = static_cast<char16_t>(digits[i]);
  return out._Write(wide, n * 2);
}

}  // namespace tavi::internal
