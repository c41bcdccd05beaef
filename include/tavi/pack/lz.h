//===- lz.h - LZ coders of whole memory blocks ------------------*- C++ -*-===//
//
// This file defines the LZ coders: LZX3Code and LZX4Code write a block as a bit
// stream of literal runs and back-references, and LZX3Decode / LZX4Decode (one
// routine under two names) read it back for a known byte count.
//
// Stream layout (bits least significant first): a flag bit T (1: a Huffman tree for
// the literal bytes follows, in the byte coder's pre-order layout); then items until
// the block is complete: 15 bits V and a flag F. F = 0 is a literal run of V bytes
// (0..32767), preceded when T = 1 by a bit R (1: the bytes are Huffman codes, 0: raw
// bytes as the bit stream's byte write places them). F = 1 is a reference to
// distance V + 5 (5..32772) bytes back, with a length of L + 5 from a 5-bit L below
// 31, or M + 36 from a 15-bit M after L = 31. Zero bits pad the last byte. There is
// no header, length or checksum: the caller keeps the byte count.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/stream.h"

namespace tavi {

// Longest distance a reference can reach, and so the largest useful window.
inline constexpr uint64_t kLZWindowMax = 32772;

// LZX3Code codes size bytes of data to out with references reaching at most window
// bytes back (above 32772 taken as 32772), and flushes out. The match search keeps up
// to 256 earlier positions per byte value and scans the data beyond them. The block
// gets a literal tree when the tree and the Huffman-coded runs cost fewer bits than
// raw runs; runs are then split where coding a stretch the other way saves more than
// the 17 bits of another run header. Every reference has distance >= length + 1, so
// it never overlaps the bytes it produces. False when out fails (out holds the
// cause), or 0x20000001 in out without memory.
TAVI_API bool LZX3Code(XIO& out, const uint8_t* data, uint64_t size, uint64_t window);

// LZX4Code writes the same format as LZX3Code with a stronger, faster match finder:
// hash chains over 4-byte prefixes with lazy evaluation, and references taken only
// where they pay for their bits. Same results and failures as LZX3Code.
TAVI_API bool LZX4Code(XIO& out, const uint8_t* data, uint64_t size, uint64_t window);

// LZX3Decode reads a stream of either coder from in until exactly size bytes are
// produced, and writes them to out in pieces as they are decoded. On failure out
// holds the cause: 0x20000004 when the stream ends early or holds a run or reference
// longer than the bytes still wanted, a reference reaching before the start of the
// block or overlapping its own output (length > distance), or a literal tree of more
// than 512 nodes; the error of in or out otherwise. Input is consumed up to the byte
// holding the last bit used. Any input is safe: the decoder keeps a fixed history of
// 32772 bytes, never reads outside the stream's data, and allocates nothing in
// proportion to size.
TAVI_API bool LZX3Decode(XIO& out, XIO& in, int64_t size);
// LZX4Decode is LZX3Decode.
TAVI_API bool LZX4Decode(XIO& out, XIO& in, int64_t size);

}  // namespace tavi
