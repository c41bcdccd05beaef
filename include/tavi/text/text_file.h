//===- text_file.h - Text formats and line ends of text files --*- C++ -*-===//
//
// This file defines the format numbers of text files. A text format is either one
// of the Unicode formats below or the number of an 8-bit code page (1252, 850, ...).
// XBuffer loads and saves text files in these formats (LoadTextFile, SaveTextFile,
// ExTextFile in tavi/core/buffer.h):
//
//   Loading reads the whole file, recognises a byte-order mark (testing 00 00 FE FF,
//   FF FE 00 00, FE FF, FF FE, EF BB BF in that order, so FF FE 00 00 is 32-bit),
//   removes it, and converts the text to the buffer's format, followed by a 2-byte
//   zero that is not counted. Big-endian text becomes little-endian unless the
//   buffer asks for it as it is. Text that stays in one 8-bit code page only has its
//   CR LF line ends reduced to LF (XRemoveDOSNewLines, tavi/core/string.h). Into
//   UTF-16 come UTF-8, 32-bit units and 8-bit text; into an 8-bit code page come
//   all of them. A conversion is strict: malformed UTF-8, UTF-16 text of odd length
//   and 32-bit text of a partial unit, a surrogate or a unit above U+10FFFF fail with
//   0x20000004. The result is the format found (the mark's, else the source format
//   used; a big-endian format reports its little-endian twin once turned), or 0.
//
//   Saving writes the mark of 1025 (FF FE), 1030 (EF BB BF) or 33795 (FF FE 00 00)
//   and the text converted to the file's format; 8-bit files get no mark. UTF-16 and
//   8-bit text can be saved in any format but the big-endian ones; other Unicode
//   text only in its own format. Characters an 8-bit target lacks become "?"; an
//   unpaired surrogate written as UTF-8 or 32-bit units becomes U+FFFD. A UTF-16
//   text that begins with U+0000 saved as 1025 reads back as 32-bit units: its file
//   begins FF FE 00 00.
//
// Failure codes (in the file's error state, source 0): 0x2000000E for a format pair
// outside those rules (UTF-8 is produced only from UTF-8) or two code pages without
// a table pair; 0x2000000F for a code page without a table; 0x20000004 for a
// conversion that produced nothing or met malformed text; and the buffer's or the
// file's own error for memory and input/output failures. A refused save writes
// nothing.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// The Unicode text formats.
inline constexpr uint16_t kTextUtf16 = 1025;     // UTF-16 little-endian, the buffer's wide text
inline constexpr uint16_t kTextUtf16BE = 1026;   // UTF-16 big-endian (read only)
inline constexpr uint16_t kTextUtf8 = 1030;      // UTF-8
inline constexpr uint16_t kTextUtf32 = 33795;    // 32-bit units, little-endian
inline constexpr uint16_t kTextUtf32BE = 33796;  // 32-bit units, big-endian (read only)
// The platform's number of UTF-8, accepted everywhere as another name of kTextUtf8.
inline constexpr uint16_t kTextUtf8CodePage = 65001;

// XIsUnicodeTextFormat tells whether format is one of the Unicode formats above
// (65001 included); every other number is an 8-bit code page.
TAVI_API bool XIsUnicodeTextFormat(uint16_t format);

}  // namespace tavi
