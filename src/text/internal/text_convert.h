//===- text_convert.h - Text-file conversions on memory --------*- C++ -*-===//
//
// The two halves of text-file loading and saving that do not touch a file: the
// conversion of a file's whole content held in a buffer, and the writing of a
// buffer's text in a file format to any stream. XBuffer's text-file members wrap
// them with the file reading, flushing and error routing.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi {
class XBuffer;
class XError;
class XIO;
}  // namespace tavi

namespace tavi::text_internal {

// ConvertLoadedText takes buffer's data as the bytes of a text file, recognises and
// removes a byte-order mark and converts the text to buffer_format, ending it with an
// uncounted 2-byte zero. Returns the format found, or 0 with the cause in report
// (the buffer's own error is imported for memory failures). Formats of 0 take the
// user's code pages (source: OEM, buffer: ANSI).
uint16_t ConvertLoadedText(XBuffer& buffer, uint16_t source_format, uint16_t buffer_format,
                           XError& report);

// WriteText writes the size bytes of text, which is in buffer_format, to target in
// file_format: mark first, then the converted text. Nothing is written when the pair
// cannot be converted. False on failure, with the cause in target.
bool WriteText(XIO& target, const uint8_t* text, uint32_t size, uint16_t file_format,
               uint16_t buffer_format);

}  // namespace tavi::text_internal
