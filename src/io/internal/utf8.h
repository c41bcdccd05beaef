//===- utf8.h - UTF-16 <-> UTF-8 for sized strings -------------*- C++ -*-===//
//
// The conversions of the UTF-8 form of sized wide strings. Encoding is the standard
// one, with an unpaired surrogate written as U+FFFD (so the UTF-16 count of the text
// is kept). Decoding is strict: only well-formed UTF-8 is accepted, and it works on
// pieces of a stream, stopping before a sequence that the piece does not complete.
// Both have an ASCII fast path of eight code units per step.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::internal {

// Most UTF-8 bytes one UTF-16 code unit can give.
inline constexpr size_t kUtf8PerUnit = 3;

// EncodeUtf8 converts count code units stored at units (host order, any alignment) to
// out, which has room for kUtf8PerUnit * count bytes, and returns the bytes written.
// A high surrogate at the very end is unpaired: callers that convert in pieces do not
// split a pair (see Utf16PieceLength).
size_t EncodeUtf8(const uint8_t* units, size_t count, uint8_t* out);

// Utf16PieceLength is the number of the first at most max (>= 2) of count code units
// that can be converted on their own: max, less one when that would split a pair.
size_t Utf16PieceLength(const uint8_t* units, size_t count, size_t max);

enum class Utf8Status {
  kOk,          // every byte was decoded
  kIncomplete,  // stopped before a sequence that needs more bytes than the piece has
  kInvalid,     // malformed UTF-8, or more code units than allowed
};

// DecodeUtf8 decodes bytes of in to out (room for n code units), producing at most
// max_units code units. consumed and produced tell how far it got; on kIncomplete the
// remaining n - consumed bytes (at most 3) are the start of a valid sequence and
// *needed is the number of bytes that complete it.
Utf8Status DecodeUtf8(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                      size_t* consumed, size_t* produced, size_t* needed);

// Utf8SequenceUnits is the number of UTF-16 code units a sequence with this lead byte
// gives (1 or 2), as used to bound how far a reader may read ahead.
inline size_t Utf8SequenceUnits(uint8_t lead) {
  return lead >= 0xF0 ? 2 : 1;
}

}  // namespace tavi::internal
