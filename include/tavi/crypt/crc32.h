//===- crc32.h - CRC-32 checksum and checksumming filter --------*- C++ -*-===//
//
// The 32-bit CRC of ISO-HDLC / IEEE 802.3 over a memory block, and XCRC32IO,
// the filter stream that checksums what passes through it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

// XHashCRC32 sets crc to the CRC-32 of size bytes at data (reflected
// polynomial 0x04C11DB7, register preset to 0xFFFFFFFF and inverted at the
// end; "123456789" gives 0xCBF43926) and returns true.
// Empty input: with data null and size 0 it returns true and crc is
// 0xFFFFFFFF; a data pointer with size 0, or a null pointer with size > 0,
// returns false and leaves crc at 0xFFFFFFFF (nothing is read).
// Cost: linear; carry-less-multiply folding where the processor has it.
TAVI_API bool XHashCRC32(uint32_t& crc, const void* data, uint32_t size);

// XCRC32IO is a pass-through filter that folds every byte written or read
// through it into a running CRC-32 and writes or checks the CRC as a 4-byte
// little-endian trailer. Writing side: construct on the next stream, Init,
// write, _WriteCRC once. Reading side: construct, Init, read exactly the
// payload, CheckCRC once. The register is undefined until Init.
class TAVI_API XCRC32IO : public XRoutedIO {
 public:
  XCRC32IO() = default;
  explicit XCRC32IO(XIO* next) : XRoutedIO(next) {}
  XCRC32IO(const XCRC32IO& other) = default;
  XCRC32IO& operator=(const XCRC32IO& other) = default;
  ~XCRC32IO() override;

  // _Write folds the bytes first, then passes them on; a failed downstream
  // write imports the downstream error (the bytes stay folded) and is false.
  bool _Write(const void* data, uint32_t bytes) override;
  // _Read reads from the next stream and folds exactly the bytes delivered;
  // a result of 0 imports the downstream error.
  uint32_t _Read(void* data, uint32_t bytes) override;

  // Init builds the CRC table if needed and presets the register.
  void Init();
  // _WriteCRC writes the inverted register, least significant byte first,
  // to the next stream; the trailer itself is not folded.
  bool _WriteCRC();
  // CheckCRC reads 4 bytes straight from the next stream (not folded) and
  // compares them with the inverted register. Any failure sets 0x20000004:
  // after a read of 0 bytes it overwrites the imported downstream error; a
  // read of 1 to 3 bytes or a different value sets it too. True only for a
  // whole, equal trailer, with the error state untouched.
  bool CheckCRC();

 private:
  uint32_t crc_ = 0xFFFFFFFFu;
};

}  // namespace tavi
