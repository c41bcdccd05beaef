//===- text_helpers.h - Running the number formatters in tests -*- C++ -*-===//
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tavi/core/buffer.h"

namespace tavi::test {

// Runs an in-memory formatter against the end of a guarded buffer and returns its
// text; fails the test when anything before the returned start was touched.
template <typename Format>
std::u16string Mem(Format format) {
  constexpr size_t kSize = 512;
  char16_t buffer[kSize];
  for (char16_t& c : buffer) c = u'#';
  const char16_t* first = format(buffer + kSize);
  EXPECT_TRUE(first >= buffer && first <= buffer + kSize);
  for (const char16_t* p = buffer; p < first; ++p) {
    if (*p != u'#') {
      ADD_FAILURE() << "written before the text's start";
      break;
    }
  }
  return std::u16string(first, static_cast<const char16_t*>(buffer + kSize));
}

// Runs a stream formatter into a buffer and returns its text ("<failed>" when it
// returned false).
template <typename Format>
std::u16string Stream(Format format) {
  XBuffer out;
  if (!format(out)) return u"<failed>";
  const auto* begin = static_cast<const char16_t*>(out.GetBuffer());
  return std::u16string(begin, reinterpret_cast<const char16_t*>(out.GetStringEnd()));
}

inline std::u16string Wide(const std::string& ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

// The text with every code unit above 0x7E shown as "?", for failure messages.
inline std::string Narrow(std::u16string_view text) {
  std::string s;
  for (char16_t c : text) s += c < 0x7F ? static_cast<char>(c) : '?';
  return s;
}

}  // namespace tavi::test
