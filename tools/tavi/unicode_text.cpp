//===- unicode_text.cpp - Text at the program's edges ----------------------===//
//
// UTF-16 <-> UTF-8 through the library's converter, and error messages.
//
//===----------------------------------------------------------------------===//
#include "unicode_text.h"

#include <cstdint>
#include <vector>

#include "core/internal/utf8.h"

namespace tavi::cli {

std::string Utf8Of(const char16_t* text, size_t units) {
  std::string out(units * internal::kUtf8PerUnit, '\0');
  out.resize(internal::EncodeUtf8(text, units, reinterpret_cast<uint8_t*>(out.data())));
  return out;
}

std::string Utf8Of(const XString16& text) {
  if (text.GetBufferPos() == 0) return {};
  return Utf8Of(text.c_str(), text.GetBufferPos() / 2);
}

XString16 Utf16NameOf(std::string_view text) {
  std::vector<char16_t> units(text.size() + 1);
  const size_t n = internal::DecodeUtf8Replacing(reinterpret_cast<const uint8_t*>(text.data()),
                                                 text.size(), units.data());
  XString16 name;
  name._Write(units.data(), static_cast<uint32_t>(n * 2));
  return name;
}

std::string LibraryMessage(const XError& error) {
  XError pending;
  pending.ImportErrorCode(error);
  XString16 message;
  message.EmptyString();
  pending.AddErrorMessage(message);
  std::string text = Utf8Of(message);
  while (!text.empty() && (text.back() == '.' || text.back() == '\n' || text.back() == ' '))
    text.pop_back();
  return text;
}

}  // namespace tavi::cli
