//===- pack_number.h - Variable-length packed numbers -----------*- C++ -*-===//
//
// This file declares the packed-number encodings that the library's formats use for
// counts, lengths and identifiers: small values take one first unit (of 1, 2, 3 or 4
// bytes), larger ones a marker in that unit followed by only as many bytes as they
// need. Stream writers and readers, unchecked memory decoders and bit-stream forms.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;
class XBitStream;

// Families (all little-endian; "n bytes of v" are the n low bytes, lowest first):
//
//   function suffix, value       direct when        otherwise: marker U, then n bytes
//   (none) uint16_t              v <= 253           254 + 1 byte (v <= 255), 255 + 2 bytes
//   (none) uint32_t              v <= 251           U = 251 + n, n = used bytes (1..4)
//   (none) uint64_t              v <= 247           U = 247 + n, n = 1..8
//   16     uint32_t (16-bit U)   v <= 65532         U = 65531 + n, n = 2..4
//   16     uint64_t (16-bit U)   v <= 65528         U = 65527 + n, n = 2..8
//   24     uint64_t (24-bit U)   v <= 0xFFFFF9      U = 0xFFFFF7 + n, n = 3..8
//   32     uint64_t (32-bit U)   v <= 0xFFFFFFFA    U = 0xFFFFFFF7 + n, n = 4..8
//
// n is the used byte count of v (at least the family's minimum), so a value just
// above the direct range still takes the marker and its full bytes. The 32 family
// also takes 32-bit values (the same bytes as the 64-bit form of the value).
//
// Signed values use the unsigned form of the same family and width after the
// library's own sign mapping, which is not zigzag: v >= 0 -> 2v, v < 0 -> 2|v| + 1.
// Decoding an even u gives u / 2, an odd u gives -(u >> 1): -1 is stored as 3, -2 as
// 5, and the code 1 (never written) reads as 0. The smallest value of each signed type
// has no code of its own: its mapping wraps to 1, so it reads back as 0.
//
// Writers send the whole encoding in one _Write and fail only when that fails (the
// error stays in the stream). Readers read the first unit and then exactly the bytes
// a marker announces, never more; a stream that ends early gives false and error
// 0x20000004 (set only when no error is pending), the value then being undefined.
// The overloads for 8-bit types and bool are deleted: they would silently pick the
// signed form through integer promotion.

TAVI_API bool _WritePackNumber(XIO& out, uint16_t value);
TAVI_API bool _WritePackNumber(XIO& out, uint32_t value);
TAVI_API bool _WritePackNumber(XIO& out, uint64_t value);
TAVI_API bool _WritePackNumber(XIO& out, int16_t value);
TAVI_API bool _WritePackNumber(XIO& out, int32_t value);
TAVI_API bool _WritePackNumber(XIO& out, int64_t value);
TAVI_API bool _WritePackNumber16(XIO& out, uint32_t value);
TAVI_API bool _WritePackNumber16(XIO& out, uint64_t value);
TAVI_API bool _WritePackNumber16(XIO& out, int32_t value);
TAVI_API bool _WritePackNumber16(XIO& out, int64_t value);
TAVI_API bool _WritePackNumber24(XIO& out, uint64_t value);
TAVI_API bool _WritePackNumber32(XIO& out, uint32_t value);
TAVI_API bool _WritePackNumber32(XIO& out, uint64_t value);
TAVI_API bool _WritePackNumber32(XIO& out, int32_t value);
TAVI_API bool _WritePackNumber32(XIO& out, int64_t value);
bool _WritePackNumber(XIO&, bool) = delete;
bool _WritePackNumber(XIO&, char) = delete;
bool _WritePackNumber(XIO&, signed char) = delete;
bool _WritePackNumber(XIO&, unsigned char) = delete;

TAVI_API bool _ReadPackNumber(XIO& in, uint16_t& value);
TAVI_API bool _ReadPackNumber(XIO& in, uint32_t& value);
TAVI_API bool _ReadPackNumber(XIO& in, uint64_t& value);
TAVI_API bool _ReadPackNumber(XIO& in, int16_t& value);
TAVI_API bool _ReadPackNumber(XIO& in, int32_t& value);
TAVI_API bool _ReadPackNumber(XIO& in, int64_t& value);
TAVI_API bool _ReadPackNumber16(XIO& in, uint32_t& value);
TAVI_API bool _ReadPackNumber16(XIO& in, uint64_t& value);
TAVI_API bool _ReadPackNumber16(XIO& in, int32_t& value);
TAVI_API bool _ReadPackNumber16(XIO& in, int64_t& value);
TAVI_API bool _ReadPackNumber24(XIO& in, uint64_t& value);
// The 32-bit forms of the 32 family refuse a marker of more than 4 bytes (a value
// that does not fit) with 0x20000004.
TAVI_API bool _ReadPackNumber32(XIO& in, uint32_t& value);
TAVI_API bool _ReadPackNumber32(XIO& in, uint64_t& value);
TAVI_API bool _ReadPackNumber32(XIO& in, int32_t& value);
TAVI_API bool _ReadPackNumber32(XIO& in, int64_t& value);

// GetPackNumber* decode from memory: value from source, *next (when next is not null)
// just past the encoding. No checks: the caller guarantees that a whole encoding lies
// at source (at most 3, 5 or 9 bytes for the 8-bit families, 4, 6 or 10 for the 16
// family, 11 for 24, 12 for 32). The 32-bit form of the 32 family keeps the low 32
// bits of a longer value.
TAVI_API void GetPackNumber(uint16_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber(uint32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber(uint64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber(int16_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber(int32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber(int64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber16(uint32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber16(uint64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber16(int32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber16(int64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber24(uint64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber32(uint32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber32(uint64_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber32(int32_t& value, const void* source, const void** next);
TAVI_API void GetPackNumber32(int64_t& value, const void* source, const void** next);

// Bit-stream forms: a length field of 4 (uint16_t), 5 (uint32_t) or 6 (uint64_t) bits
// holding the used bit count minus 1, then the value's used bits, least significant
// first. 0 is a length field of 0 and one 0 bit. The reader fails on a stream that
// ends early with 0x20000004 in the bit stream (set only when no error is pending,
// after the next stream's error has been imported).
TAVI_API bool WritePackNumber(XBitStream& out, uint16_t value);
TAVI_API bool WritePackNumber(XBitStream& out, uint32_t value);
TAVI_API bool WritePackNumber(XBitStream& out, uint64_t value);
bool WritePackNumber(XBitStream&, bool) = delete;
bool WritePackNumber(XBitStream&, unsigned char) = delete;
TAVI_API bool ReadPackNumber(XBitStream& in, uint16_t& value);
TAVI_API bool ReadPackNumber(XBitStream& in, uint32_t& value);
TAVI_API bool ReadPackNumber(XBitStream& in, uint64_t& value);

// GetUsedBitCount is the position of the highest set bit plus 1, at least 1
// (0 -> 1, 1 -> 1, 2 -> 2, 255 -> 8). GetUsedByteCount is the number of bytes up to
// the highest non-zero one, at least 1 (0 -> 1, 255 -> 1, 256 -> 2).
TAVI_API uint32_t GetUsedBitCount(uint64_t value);
TAVI_API uint32_t GetUsedByteCount(uint64_t value);

}  // namespace tavi
