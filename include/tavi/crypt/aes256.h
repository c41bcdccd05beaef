//===- aes256.h - AES-256 block cipher and password keys --------*- C++ -*-===//
//
// The AES-256 block cipher of FIPS-197, used block by block (electronic
// codebook: no chaining, no initialisation vector, no padding), keyed from a
// password by the library's own rule, applied in place over memory, between
// memory and streams, and by XCipherAES256, the enciphering filter stream.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

// XAES256KeyExpansion (raw key) writes the FIPS-197 AES-256 schedule of the 32
// bytes at key32 into the 240 bytes at schedule (15 round keys of 16 bytes).
// Pass the key as a pointer to unsigned bytes or void: a char pointer picks
// the byte-password form below.
TAVI_API void XAES256KeyExpansion(char* schedule, const void* key32);

// XAES256KeyExpansion (byte password) makes the 32 key bytes by walking the
// password cyclically, its terminating zero included ("ab" gives 61 62 00 61
// 62 00 ...), then expands them. No hashing, salt or iteration count.
TAVI_API void XAES256KeyExpansion(char (&schedule)[240], const char* password);

// XAES256KeyExpansion (wide password) is the same walk over UTF-16 units,
// each giving the key byte unit % 255 (not 256: 0x00FF gives 0, 0x0100 gives
// 1). An empty password gives 32 zero bytes. Every other AES operation of the
// library keys itself this way.
TAVI_API void XAES256KeyExpansion(char (&schedule)[240], const char16_t* password);

// XAES256EncryptBlock enciphers the 16 bytes at block in place with a
// schedule from XAES256KeyExpansion (14 rounds).
TAVI_API void XAES256EncryptBlock(void* block, const void* schedule);

// XAES256DecryptBlock deciphers the 16 bytes at block in place.
TAVI_API void XAES256DecryptBlock(void* block, const void* schedule);

// XAES256 enciphers (encrypt true) or deciphers size bytes at data in place
// under the wide password, block by block. Only whole blocks are processed:
// the last size % 16 bytes are left as they are. A size below 16 touches
// nothing and returns true only for 0 (false for 1..15 and for negative
// sizes). Large inputs are processed on several threads.
TAVI_API bool XAES256(void* data, int32_t size, const char16_t* password, bool encrypt);

// XAES256Encrypt enciphers size bytes at data under the wide password and
// writes them to out. Whole blocks come out as 16 enciphered bytes each. A
// tail of t = size % 16 bytes is copied over the start of the last enciphered
// block (zeros when size < 16), that block is enciphered again and only its
// first t bytes are written: the tail is stored truncated and cannot be
// deciphered, so a round trip is exact only for multiples of 16.
// size 0 writes nothing and returns true; a negative size sets 0x20000014 in
// out and returns false. Returns false as soon as a write to out fails (out
// holds the cause). Output is handed to out in batches of whole blocks.
TAVI_API bool XAES256Encrypt(XIO& out, const char16_t* password, const void* data, int32_t size);

// XAES256Decrypt reads ceil(size / 16) enciphered blocks from in, deciphers
// them under the wide password and writes size bytes to out (of the last
// block only its first size % 16 bytes when that is not 0). When in delivers
// less than a whole block, the blocks before it are written, in's error is
// set to 0x20000004 unless in already holds one, out imports in's error and
// the result is false. A failed write returns false with the cause in out.
// size 0 returns true; a negative size sets 0x20000014 in out, false.
TAVI_API bool XAES256Decrypt(XIO& out, const char16_t* password, XIO& in, int32_t size);

// XAESState is one 16-byte cipher block: the filter's block buffer, and the
// record that EncryptAndWriteState / ReadAndDecryptState move enciphered.
union XAESState {
  uint8_t bytes[16];
  uint32_t words[4];
  uint64_t quads[2];
};
static_assert(sizeof(XAESState) == 16);

// XCipherAES256 is a pass-through filter that enciphers what is written
// through it and deciphers what is read, block by block under a key made from
// a wide password. Writing: construct on the next stream, Init, write, then
// _Flush exactly once. Reading: construct, Init, read exactly the plain length
// the writer wrote (the stream does not record it). A wrong password gives
// wrong bytes and no error; integrity is the business of the CRC and hash
// filters chained with it.
class TAVI_API XCipherAES256 : public XRoutedIO {
 public:
  XCipherAES256() = default;
  explicit XCipherAES256(XIO* next) : XRoutedIO(next) {}
  XCipherAES256(const XCipherAES256& other) = default;
  XCipherAES256& operator=(const XCipherAES256& other) = default;
  ~XCipherAES256() override;

  // Init keys the filter from the password (XAES256KeyExpansion, wide form)
  // and empties the block buffer.
  void Init(const char16_t* password);

  // _Write enciphers whole blocks and passes them on, in batches of whole
  // blocks; up to 15 bytes wait in the block buffer for the next write or
  // _Flush. A failed downstream write imports its error and is false.
  bool _Write(const void* data, uint32_t bytes) override;
  // _Read delivers exactly bytes deciphered bytes and returns bytes, or 0 on
  // failure. Whole blocks are read and deciphered in the caller's memory; a
  // partial block is read into the block buffer, which keeps the rest for the
  // next read. A stream that ends inside a block sets 0x20000004 (unless an
  // error is pending, such as the downstream error imported after a read of
  // 0 bytes) and gives 0, even when some bytes were already delivered.
  uint32_t _Read(void* data, uint32_t bytes) override;
  // _Flush enciphers a partly filled block buffer (its filler is whatever
  // the buffer held) and writes its 16 bytes. It neither empties the buffer
  // nor flushes the next stream: call it once, at the end of writing. True
  // when nothing waited.
  bool _Flush() override;

  // EncryptAndWriteState enciphers the block buffer in place and writes its
  // 16 bytes to the next stream; the buffered count is not changed.
  bool EncryptAndWriteState();
  // ReadAndDecryptState reads 16 bytes from the next stream into state and
  // deciphers them there. Fewer than 16 bytes set 0x20000004 unless an error
  // is pending (after a read of 0 bytes, the imported downstream error).
  bool ReadAndDecryptState(XAESState* state);

  // The number of bytes waiting in the block buffer: plain bytes not yet
  // written on the writing side, deciphered bytes not yet delivered on the
  // reading side.
  uint32_t GetBufferedCount() const { return buffered_; }

 private:
  XAESState state_ = {};
  uint32_t buffered_ = 0;
  char schedule_[240] = {};
};

}  // namespace tavi
