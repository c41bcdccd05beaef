//===- lz_io.cpp - The LZ filter stream ------------------------------------===//
//
// Each write is one coded block and each read one decoded block; the block sizes are
// the caller's to repeat.
//
//===----------------------------------------------------------------------===//
#include "pack/internal/lz_io.h"

#include "tavi/core/buffer.h"

namespace tavi {

XLZ3IO::~XLZ3IO() = default;

bool XLZ3IO::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (LZX3Code(*next, static_cast<const uint8_t*>(data), bytes, window)) return true;
  ImportErrorCode(*next);
  return false;
}

uint32_t XLZ3IO::_Read(void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return 0;
  // The caller's area, as a buffer the decoder appends to.
  XBuffer target;
  // An attached block keeps one byte for a terminator: offer one more than is
  // written (the decoder never writes past bytes).
  target.AttachBuffer(data, bytes == 0xFFFFFFFFu ? bytes : bytes + 1, false);
  if (LZX3Decode(target, *next, bytes) && target.GetBufferPos() == bytes) return bytes;
  ImportErrorCode(target.IsError() ? static_cast<const XError&>(target) : *next);
  if (IsOk()) SetErrorCode(kErrEndOfData);
  return 0;
}

}  // namespace tavi
