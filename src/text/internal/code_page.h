//===- code_page.h - Cached tables of 8-bit code pages ---------*- C++ -*-===//
//
// One table per 8-bit code page, built on first use and kept for the life of the
// process: the UTF-16 character of each byte, and (built on its first use) the
// byte of each UTF-16 code unit.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

namespace tavi::text_internal {

class CodePageTable {
 public:
  explicit CodePageTable(const char16_t* to_wide);

  // The UTF-16 character of each byte (U+FFFD where the code page has none).
  const char16_t* ToWide() const { return to_wide_; }
  // The byte of each UTF-16 code unit; the code page's "?" for units it lacks,
  // U+FFFD and the surrogates included.
  const uint8_t* FromWide() const;
  // The code page's byte for "?".
  uint8_t Question() const { return question_; }

 private:
  char16_t to_wide_[256];
  uint8_t question_ = '?';
  mutable std::once_flag from_wide_once_;
  mutable std::unique_ptr<uint8_t[]> from_wide_;
};

// FindCodePage returns the table of an 8-bit code page, or null when it has none
// (see XSetChar16LUT).
const CodePageTable* FindCodePage(uint16_t code_page);

}  // namespace tavi::text_internal
