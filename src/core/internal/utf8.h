//===- utf8.h - The library's UTF-16 <-> UTF-8 converter -------*- C++ -*-===//
//
// Every conversion between UTF-16 and UTF-8 in the library goes through these
// functions: sized strings, text files and the system boundary (file names,
// system messages). Decoding data is strict: only well-formed UTF-8 is accepted.
// Where text must cross the system boundary whatever it holds, the replacing
// decoder turns each malformed piece into U+FFFD. Encoding writes an unpaired
// surrogate as U+FFFD, so the UTF-16 length of the text is kept.
//
// Runs of ASCII move through a vector path chosen once at run time (AVX2, SSE2)
// beside a portable path of eight code units per step; all paths give identical
// results, which the tests check.
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
// A surrogate without its partner becomes U+FFFD (EF BF BD); a high surrogate at the
// very end is unpaired, so callers that convert in pieces do not split a pair (see
// Utf16PieceLength).
size_t EncodeUtf8(const void* units, size_t count, uint8_t* out);

// Utf16PieceLength is the number of the first at most max (>= 2) of count code units
// that can be converted on their own: max, less one when that would split a pair.
size_t Utf16PieceLength(const void* units, size_t count, size_t max);

enum class Utf8Status {
  kOk,          // every byte was decoded
  kIncomplete,  // stopped before a sequence that needs more bytes than the piece has
  kInvalid,     // malformed UTF-8, or more code units than allowed
};

// DecodeUtf8 decodes the n bytes of in to out (room for max_units code units),
// producing at most max_units code units. Overlong forms, surrogates, code points
// above U+10FFFF and stray continuation bytes are malformed. consumed and produced
// tell how far it got; on kInvalid, in[consumed] starts the offending sequence; on
// kIncomplete the remaining n - consumed bytes (at most 3) are the start of a valid
// sequence and *needed is the number of bytes that complete it. Never reads or
// writes outside the given ranges.
Utf8Status DecodeUtf8(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                      size_t* consumed, size_t* produced, size_t* needed);

// DecodeUtf8Replacing decodes all n bytes to out (room for n code units) and
// returns the code units written. Each maximal malformed piece (the longest prefix
// of a valid sequence, or one byte) becomes one U+FFFD. Only for the system
// boundary; data is decoded with DecodeUtf8.
size_t DecodeUtf8Replacing(const uint8_t* in, size_t n, char16_t* out);

// Utf8SequenceUnits is the number of UTF-16 code units a sequence with this lead byte
// gives (1 or 2), as used to bound how far a reader may read ahead.
inline size_t Utf8SequenceUnits(uint8_t lead) {
  return lead >= 0xF0 ? 2 : 1;
}

// The paths of the ASCII runs. kSse2 is present on every x86-64 processor.
enum class Utf8Path { kPortable, kSse2, kAvx2 };

// Utf8PathAvailable tells whether this processor can run the path; Utf8ActivePath is
// the one in use. SetUtf8Path switches (false, and no change, when the processor
// lacks it) and ResetUtf8Path restores the automatic choice: for tests and
// benchmarks that compare the paths.
bool Utf8PathAvailable(Utf8Path path);
Utf8Path Utf8ActivePath();
bool SetUtf8Path(Utf8Path path);
void ResetUtf8Path();

}  // namespace tavi::internal
