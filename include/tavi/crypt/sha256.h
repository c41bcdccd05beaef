//===- sha256.h - The library's 256- and 224-bit hash -----------*- C++ -*-===//
//
// A deliberate variant of SHA-256: the FIPS 180-4 compression function,
// initial values and round constants, but message words taken little-endian,
// the padding byte 0x01 and the message length counted in bytes (32 bits,
// wrapping at 4 GiB). Its digests differ from standard SHA-256 digests and
// are comparable only with digests made by this library. XSHA256IO is the
// filter stream that hashes what passes through it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

// XHashSHA256 hashes size bytes at data into out. Each element of out holds
// four digest bytes in memory order, so out read as 32 bytes is the digest
// (H0's most significant byte first). Whole 64-byte blocks are compressed
// straight from data, which must hold size bytes; a negative size is taken
// as 0 (the digest of no data). Cost: linear; SHA extensions where the
// processor has them.
TAVI_API void XHashSHA256(int32_t (&out)[8], const void* data, int32_t size);

// XHashSHA224 is XHashSHA256 started from the SHA-224 initial values; out
// receives the first 28 digest bytes. It is not a truncation of the 256-bit
// digest of the same data.
TAVI_API void XHashSHA224(int32_t (&out)[7], const void* data, int32_t size);

// XEqualHashSHA256 is true when the two digests are equal word by word.
TAVI_API bool XEqualHashSHA256(const int32_t (&a)[8], const int32_t (&b)[8]);

// XSHA256IO is a pass-through filter that hashes every byte written or read
// through it and writes or checks the digest as a trailer. Writing side:
// construct on the next stream, Init256 or Init224, write, then _WriteSHA256
// or _WriteSHA224 once. Reading side: construct, Init256, read exactly the
// payload, CheckSHA256 once. Finalising consumes the state: Init again before
// further use. The state is undefined until Init.
class TAVI_API XSHA256IO : public XRoutedIO {
 public:
  XSHA256IO() = default;
  explicit XSHA256IO(XIO* next) : XRoutedIO(next) {}
  XSHA256IO(const XSHA256IO& other) = default;
  XSHA256IO& operator=(const XSHA256IO& other) = default;
  ~XSHA256IO() override;

  // _Write passes the bytes on first and hashes them only when the next
  // stream took them; a failure imports the downstream error, nothing hashed.
  bool _Write(const void* data, uint32_t bytes) override;
  // _Read reads from the next stream and hashes what arrived; a result of 0
  // imports the downstream error.
  uint32_t _Read(void* data, uint32_t bytes) override;

  // Init256 / Init224 load the SHA-256 / SHA-224 initial values and empty
  // the block buffer and the byte count.
  void Init256();
  void Init224();
  // AddSHA256 hashes bytes that do not travel through the stream. Whole
  // 64-byte blocks are compressed straight from data; only a partial block
  // is copied. It does not add to the byte count that enters the padding
  // (the stream operations do); a size of 0 or less adds nothing.
  void AddSHA256(const char* data, int32_t size);

  // _WriteSHA256 finalises and writes the 32 digest bytes to the next stream;
  // _WriteSHA224 writes the first 28. A failed write imports the downstream
  // error and is false.
  bool _WriteSHA256();
  bool _WriteSHA224();
  // CheckSHA256 reads 32 bytes straight from the next stream (not hashed),
  // finalises and compares. Any failure sets 0x20000004 (after a read of 0
  // bytes it overwrites the imported downstream error); true only for a
  // whole, equal trailer.
  bool CheckSHA256();
  // CheckSHA224 never reports a match: it reads 28 bytes through this
  // filter's own _Read, so the trailer is hashed before finalising, and
  // returns false. Fewer than 28 bytes set 0x20000004 unless an error is
  // already pending; 28 bytes set no error. SHA-224 trailers are for
  // writing; callers that need a verified hash use SHA-256.
  bool CheckSHA224();

 private:
  void Finalize();
  void Absorb(const void* data, uint32_t bytes);

  uint8_t buffer_[64] = {};
  uint32_t buffered_ = 0;
  uint32_t total_ = 0;
  uint32_t state_[8] = {};
};

}  // namespace tavi
