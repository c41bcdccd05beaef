//===- crc32.h - CRC-32 checksum --------------------------------*- C++ -*-===//
//
// The 32-bit CRC of ISO-HDLC / IEEE 802.3 over a memory block.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

// XHashCRC32 sets crc to the CRC-32 of size bytes at data (reflected
// polynomial 0x04C11DB7, register preset to 0xFFFFFFFF and inverted at the
// end; "123456789" gives 0xCBF43926) and returns true.
// Empty input: with data null and size 0 it returns true and crc is
// 0xFFFFFFFF; a data pointer with size 0, or a null pointer with size > 0,
// returns false and leaves crc at 0xFFFFFFFF (nothing is read).
// Cost: linear; carry-less-multiply folding where the processor has it.
TAVI_API bool XHashCRC32(uint32_t& crc, const void* data, uint32_t size);

}  // namespace tavi
