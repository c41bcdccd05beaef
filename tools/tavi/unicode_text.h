//===- unicode_text.h - Text at the program's edges ------------*- C++ -*-===//
//
// The program speaks UTF-8 on its command line and its output and UTF-16 with
// the library. These helpers cross between the two with the library's own
// converter, so characters outside the Basic Multilingual Plane come out as
// proper four-byte sequences.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavi/core/error.h"
#include "tavi/core/string.h"

namespace tavi::cli {

// Utf8Of encodes units UTF-16 code units; an unpaired surrogate becomes U+FFFD.
std::string Utf8Of(const char16_t* text, size_t units);
std::string Utf8Of(const XString16& text);

// Utf16NameOf turns a command-line argument (UTF-8; malformed bytes become U+FFFD)
// into the terminated UTF-16 name the library's file functions take.
XString16 Utf16NameOf(std::string_view text);

// LibraryMessage is the library's message for the error in UTF-8, without the
// final full stop, so that it fits in "tavi <command>: <subject>: <message>".
std::string LibraryMessage(const XError& error);

}  // namespace tavi::cli
