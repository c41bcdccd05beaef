//===- text_posix.cpp - UTF-8 conversions at the system boundary -----------===//
//
// System calls take and give UTF-8 that may not be well formed (file names are
// bytes on POSIX), so the boundary replaces what it cannot convert instead of
// failing. Both directions use the library's one converter.
//
//===----------------------------------------------------------------------===//
#include <string>

#include "core/internal/utf8.h"
#include "platform/text.h"

namespace tavi::platform {

std::string Utf16ToUtf8(const char16_t* text, size_t count) {
  std::string out(internal::kUtf8PerUnit * count, '\0');
  out.resize(internal::EncodeUtf8(text, count, reinterpret_cast<uint8_t*>(out.data())));
  return out;
}

std::u16string Utf8ToUtf16(const char* text, size_t count) {
  std::u16string out(count, u'\0');
  out.resize(
      internal::DecodeUtf8Replacing(reinterpret_cast<const uint8_t*>(text), count, out.data()));
  return out;
}

}  // namespace tavi::platform
