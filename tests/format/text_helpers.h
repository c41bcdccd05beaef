//===- text_helpers.h - Running the number formatters in tests -*- C++ -*-===//
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tavi/core/buffer.h"

namespace tavi::test {

// Runs an in-memory formatter against the end of a guarded buffer and returns its
// text; fails the test when anything before the text's start was touched.
template <typename Format>
std::u16string Mem(Format format) {
  char16_t buffer[512];
  std::fill(buffer, buffer + 512, u'#');
  const char16_t* first = format(buffer + 512);
  EXPECT_EQ(std::u16string_view(buffer, first - buffer).find_first_not_of(u'#'),
            std::u16string::npos);
  return std::u16string(first, static_cast<const char16_t*>(buffer + 512));
}

// Runs a stream formatter into a buffer: its text, or "<failed>".
template <typename Format>
std::u16string Stream(Format format) {
  XBuffer out;
  if (!format(out)) return u"<failed>";
  return std::u16string(static_cast<const char16_t*>(out.GetBuffer()),
                        reinterpret_cast<const char16_t*>(out.GetStringEnd()));
}

// ASCII both ways; code units above 0x7E show as "?".
inline std::u16string Wide(std::string_view s) {
  return std::u16string(s.begin(), s.end());
}
inline std::string Narrow(std::u16string_view text) {
  std::string s;
  for (char16_t c : text) s += c < 0x7F ? static_cast<char>(c) : '?';
  return s;
}

}  // namespace tavi::test
