//===- text.h - UTF-8 at the system boundary -------------------*- C++ -*-===//
//
// The library keeps text in UTF-16; system calls take UTF-8. These conversions are
// used where text crosses that boundary (file names, system messages).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <string>

namespace tavi::platform {

// Utf16ToUtf8 converts count code units; an unpaired surrogate becomes U+FFFD.
std::string Utf16ToUtf8(const char16_t* text, size_t count);
// Utf8ToUtf16 converts count bytes; an invalid sequence becomes U+FFFD.
std::u16string Utf8ToUtf16(const char* text, size_t count);

}  // namespace tavi::platform
