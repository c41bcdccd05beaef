//===- convert_io.h - The converting filter stream -------------*- C++ -*-===//
//
// This file defines XConvertIO, a filter stream that converts text between UTF-8,
// UTF-16 and 8-bit code pages as it passes: bytes written in the source format reach
// the next stream in the target format, and bytes read from the next stream in the
// source format arrive in the target format.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <memory>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

namespace text_internal {
class Converter;
}

// XConvertIO converts the text that goes through it from source_format to
// target_format (text-format numbers: kTextUtf16, kTextUtf8 or 65001, or an 8-bit
// code page). The result does not depend on how the input is split between calls:
// a character cut between two writes (or reads) waits, at most three bytes, until
// the rest arrives. _Flush converts what still waits (an incomplete character
// becomes "?", see convert.h) and flushes the next stream.
//
// Faults are handled as in convert.h: one "?" each, or with kConvertStrict a
// failure with kErrConversion (0x2000000B); the stream then refuses data until
// SetFormats is called again. Formats the stream cannot convert (other Unicode
// formats: kErrLoadEncoding; code pages without a table: kErrSaveEncoding) make
// every data operation fail with that code. Failures of the next stream are
// imported as for every routed stream.
//
// Writing sends the converted text on in pieces of a few KiB and holds back only a
// cut character; into an XBuffer it converts straight into the buffer's memory.
// Reading keeps the converted text of one piece of input that the caller has not
// taken yet; a strict-mode fault drops what that piece gave before the fault.
// A stream is used for one direction at a time.
class TAVI_API XConvertIO : public XRoutedIO {
 public:
  // The default stream converts UTF-8 to UTF-16 and has no next stream.
  XConvertIO();
  XConvertIO(XIO* next, uint16_t target_format, uint16_t source_format, uint32_t flags = 0);
  XConvertIO(const XConvertIO& other);
  XConvertIO& operator=(const XConvertIO& other);
  ~XConvertIO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  bool _Flush() override;

  // SetFormats chooses the formats and flags, drops what waits and clears the
  // stream's own error. False with the code in the stream for unusable formats.
  bool SetFormats(uint16_t target_format, uint16_t source_format, uint32_t flags = 0);
  // Pending tells whether part of a character waits for the rest.
  bool Pending() const;

 private:
  bool Usable();
  // Fail records a failed conversion step: the converter's own fault, which makes the
  // stream unusable, or else the next stream's error. Always false.
  bool Fail(const XError& fault, XIO& next);

  std::unique_ptr<text_internal::Converter> converter_;
  uint32_t setup_error_ = 0;
  bool failed_ = false;
  // Read direction: converted bytes not yet delivered, and whether the next stream
  // has ended.
  std::unique_ptr<uint8_t[]> ready_;
  uint32_t ready_size_ = 0;
  uint32_t ready_pos_ = 0;
  bool source_ended_ = false;
};

}  // namespace tavi
