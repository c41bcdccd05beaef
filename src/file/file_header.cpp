//===- file_header.cpp - Reading and writing the 32-byte file header -------===//
#include "tavi/file/file_header.h"

#include <cstring>

#include "core/internal/endian.h"
#include "tavi/core/error.h"
#include "tavi/io/stream.h"

namespace tavi {

void XFileHeader256::SetForWriting(uint32_t id, uint32_t flag_set) {
  XFileHeader::SetForWriting(id, flag_set);
  std::memset(extra, 0, sizeof(extra));
}

bool XFileHeader256::Write(XIO& out) const {
  uint8_t bytes[kSize];
  internal::StoreLE32(bytes, identifier);
  internal::StoreLE32(bytes + 4, marker);
  internal::StoreLE32(bytes + 8, reserved);
  internal::StoreLE32(bytes + 12, flags);
  std::memcpy(bytes + 16, extra, sizeof(extra));
  return out._Write(bytes, kSize);
}

bool XFileHeader256::Read(XIO& in) {
  uint8_t bytes[kSize];
  if (in._Read(bytes, kSize) != kSize) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  identifier = internal::LoadLE32(bytes);
  marker = internal::LoadLE32(bytes + 4);
  reserved = internal::LoadLE32(bytes + 8);
  flags = internal::LoadLE32(bytes + 12);
  std::memcpy(extra, bytes + 16, sizeof(extra));
  return true;
}

}  // namespace tavi
