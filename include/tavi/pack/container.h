//===- container.h - The packed container "XPck" ---------------*- C++ -*-===//
//
// This file declares XPack, the one entry point that turns a memory block into a
// self-describing packed stream (stored, LZ- or Huffman-coded, with optional CRC-32
// and hash trailers and optional AES-256 and XOR ciphers) and back, and the two
// request records it takes.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// The four bytes every request record carries at offset 4.
inline constexpr char kXPackTag[4] = {'X', 'P', 'c', 'k'};

// Operations (offset 8 of a record).
inline constexpr uint32_t kXPackOperationPack = 1;
inline constexpr uint32_t kXPackOperationUnpack = 2;

// Flags. The first four are what a stream can apply; kXPackNoFlagsWord keeps the
// flags word out of the stream (the reader must be given the flags).
inline constexpr uint32_t kXPackCRC = 0x1;                  // CRC-32 trailer
inline constexpr uint32_t kXPackHash = 0x2;                 // 32-byte hash trailer
inline constexpr uint32_t kXPackXOR = 0x1000;               // XOR cipher keyed by the password
inline constexpr uint32_t kXPackAES = 0x2000;               // AES-256 keyed by the password
inline constexpr uint32_t kXPackNoFlagsWord = 0x80000000u;  // flags word not stored
inline constexpr uint32_t kXPackAppliedFlags = kXPackCRC | kXPackHash | kXPackXOR | kXPackAES;

// Methods a packer may try (pack record, offset 36 of the 32-bit layout); 0 stores.
inline constexpr uint32_t kXPackTryHuffman = 0x1;
inline constexpr uint32_t kXPackTryLZ = 0x2;

// Method word at the head of a stream.
inline constexpr uint32_t kXPackStored = 0;
inline constexpr uint32_t kXPackHuffman = 1;
inline constexpr uint32_t kXPackLZ = 2;

// Window of the LZ coder inside the container (both directions).
inline constexpr uint64_t kXPackLZWindow = 4096;

// strXPackRecord asks XPack to pack `size_low` bytes at `data` into `stream`.
// Fields are in the order of the 32-bit layout (there 40 bytes); the pointers take
// their natural size, and record_size must hold sizeof(strXPackRecord), which the
// default member values provide together with the tag and the operation.
struct strXPackRecord {
  uint32_t record_size = sizeof(strXPackRecord);
  char magic[4] = {kXPackTag[0], kXPackTag[1], kXPackTag[2], kXPackTag[3]};
  uint32_t operation = kXPackOperationPack;
  uint32_t flags = 0;     // kXPackCRC | kXPackHash | kXPackXOR | kXPackAES | kXPackNoFlagsWord
  XIO* stream = nullptr;  // destination; receives every error
  const char16_t* password = nullptr;  // required when flags has any of 0x80003000
  const void* data = nullptr;          // the bytes to pack
  uint32_t size_low = 0;               // byte count
  uint32_t size_high = 0;              // must be 0: blocks of 4 GiB and more are refused
  uint32_t methods = 0;                // kXPackTryHuffman | kXPackTryLZ, or 0 to store
};

// strXUnpackRecord asks XPack to unpack one container from `stream` into `output`.
// 32-bit layout: 28 bytes; record_size must hold sizeof(strXUnpackRecord).
struct strXUnpackRecord {
  uint32_t record_size = sizeof(strXUnpackRecord);
  char magic[4] = {kXPackTag[0], kXPackTag[1], kXPackTag[2], kXPackTag[3]};
  uint32_t operation = kXPackOperationUnpack;
  uint32_t flags = 0;                  // with kXPackNoFlagsWord: the flags to use
  XIO* stream = nullptr;               // source; receives every error
  const char16_t* password = nullptr;  // required when the flags in use have a cipher bit
  XIO* output = nullptr;               // receives the unpacked bytes
};

inline constexpr uint32_t kXPackRecordSize = sizeof(strXPackRecord);
inline constexpr uint32_t kXUnpackRecordSize = sizeof(strXUnpackRecord);

// The fields up to the stream pointer lie at the same offsets in both records, so a
// failure can be reported on the stream of any record long enough to hold it.
static_assert(offsetof(strXPackRecord, stream) == offsetof(strXUnpackRecord, stream));
static_assert(offsetof(strXPackRecord, flags) == 12 && offsetof(strXUnpackRecord, flags) == 12);

// XPack carries out the request record at `record` and returns true on success.
//
// A null record, a record whose tag is not "XPck", or an operation other than 1 or 2
// returns false at once, touching nothing. Every other failure leaves its cause in
// the record's stream (when the record is long enough to hold one and it is not
// null).
//
// Packing writes
//   method (4 bytes LE: 0 stored, 1 Huffman, 2 LZ)   straight to the stream
//   flags actually applied (4 bytes LE)               straight, unless kXPackNoFlagsWord
//   then, through hash -> CRC -> AES -> XOR -> stream (each filter only when its flag
//   is set): the byte count as a 16-bit-unit packed number, the payload, the CRC-32
//   of count and payload (4 bytes, enciphered, not hashed), the hash of count and
//   payload (32 bytes), and the final flush (AES writes its last partial block).
// The payload is the shortest of the stored bytes, the LZX3Code stream (window 4096,
// when kXPackTryLZ) and the HufmanCode stream (when kXPackTryHuffman; blocks of 2 GiB
// and more are not offered to it), ties going to the earlier of the three. Huffman coding is
// tried with the byte length of the best so far as its limit, which the Huffman
// coder compares with its estimate in bits: it is chosen only when its whole output,
// tree included, is estimated at fewer bits than the best has bytes.
// Refusals: 0x20000012 for a wrong record size, a null stream or data, a size of 0,
// flags and methods both 0, or a missing password when flags has any of 0x80003000;
// 0x20000014 for a non-zero size_high. A failure while writing leaves the stream's
// own error (imported from the top filter); what was written stays written.
//
// Unpacking reads the method and (unless the record's flags have kXPackNoFlagsWord,
// which then supply bits 0, 1, 12 and 13) the flags word, rebuilds the same chain,
// reads the count, decodes exactly that many bytes into output and checks the
// trailers the flags ask for. Failure codes, all in the record's stream:
//   0x20000012  wrong record size, null stream or output; record flags with
//               kXPackNoFlagsWord holding any bit other than 0, 1, 12, 13 and 31;
//               a cipher flag in use and no password
//   0x2000000e  a method word other than 0, 1 and 2
//   0x20000004  a stored flags word with any bit other than 0, 1, 12 and 13 (bit 31
//               included: a packer never stores it); a stream that ends early; a
//               coded payload that does not decode to the count; a CRC or hash
//               trailer that does not match
//   others      errors of output (a failed write) are imported as they are.
// When the stream is a plain XBuffer, unpacking works on its memory: the container is
// deciphered there in one piece (the whole blocks left after the cursor, when a
// cipher flag is set), decoded from memory and checked; results, errors and the
// final cursor are those of reading through the filters, which other streams do.
// Either way the stream is consumed up to the end of the container, never beyond.
// On hostile input unpacking never reads past what the stream delivers, never
// allocates in proportion to the declared count before the data arrives (bytes move
// through a fixed-size area, the coders keep fixed-size state; the in-memory copy is
// the size of the data already in the buffer), and always ends: every step consumes
// stream bytes or produces output bytes, at most the count. The count is honoured
// even for a tiny payload (a block of one byte value codes to a few bits), so a
// dozen bytes can unpack to 4 GiB: a caller unpacking untrusted data gives an output
// stream that refuses what it will not hold. When unpacking fails, output may hold
// part of the bytes (those decoded before a later check failed, for example).
TAVI_API bool XPack(const void* record);

}  // namespace tavi
