//===- text_posix.cpp - UTF-8 conversions at the system boundary -----------===//
#include <string>

#include "platform/text.h"

namespace tavi::platform {

std::string Utf16ToUtf8(const char16_t* text, size_t count) {
  std::string out;
  out.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    uint32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < count && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = 0xFFFD;
    }
    if (cp < 0x80) {
      out += static_cast<char>(cp);
    } else if (cp < 0x800) {
      out += static_cast<char>(0xC0 | (cp >> 6));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
      out += static_cast<char>(0xE0 | (cp >> 12));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (cp >> 18));
      out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (cp & 0x3F));
    }
  }
  return out;
}

std::u16string Utf8ToUtf16(const char* text, size_t count) {
  std::u16string out;
  out.reserve(count);
  const auto* s = reinterpret_cast<const unsigned char*>(text);
  size_t i = 0;
  while (i < count) {
    unsigned char b = s[i];
    uint32_t cp = 0xFFFD;
    size_t len = 1;
    if (b < 0x80) {
      cp = b;
    } else {
      size_t need = b >= 0xF0 && b <= 0xF4 ? 3 : b >= 0xE0 ? 2 : b >= 0xC2 && b < 0xE0 ? 1 : 0;
      if (need != 0) {
        uint32_t v = b & (0x3F >> need);
        size_t k = 1;
        for (; k <= need && i + k < count && (s[i + k] & 0xC0) == 0x80; ++k) {
          v = (v << 6) | (s[i + k] & 0x3F);
        }
        if (k == need + 1) {
          static constexpr uint32_t kMin[] = {0, 0x80, 0x800, 0x10000};
          if (v >= kMin[need] && v <= 0x10FFFF && !(v >= 0xD800 && v <= 0xDFFF)) cp = v;
          len = need + 1;
        } else {
          len = k;
        }
      }
    }
    if (cp >= 0x10000) {
      out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<char16_t>(cp);
    }
    i += len;
  }
  return out;
}

}  // namespace tavi::platform
