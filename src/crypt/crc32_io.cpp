//===- crc32_io.cpp - The checksumming filter stream ----------------------===//
#include "core/internal/endian.h"
#include "crypt/internal/crc32_kernel.h"
#include "tavi/crypt/crc32.h"

namespace tavi {

XCRC32IO::~XCRC32IO() = default;

void XCRC32IO::Init() {
  crypt_internal::Crc32Table();
  crc_ = 0xFFFFFFFFu;
}

bool XCRC32IO::_Write(const void* data, uint32_t bytes) {
  if (GetNext() != nullptr) crc_ = crypt_internal::Crc32Update(crc_, data, bytes);
  return XRoutedIO::_Write(data, bytes);
}

uint32_t XCRC32IO::_Read(void* data, uint32_t bytes) {
  const uint32_t got = XRoutedIO::_Read(data, bytes);
  if (got != 0) crc_ = crypt_internal::Crc32Update(crc_, data, got);
  return got;
}

bool XCRC32IO::_WriteCRC() {
  uint8_t trailer[4];
  internal::StoreLE32(trailer, crc_ ^ 0xFFFFFFFFu);
  return XRoutedIO::_Write(trailer, 4);
}

bool XCRC32IO::CheckCRC() {
  XIO* next = Next();
  if (next == nullptr) return false;
  uint8_t trailer[4];
  const uint32_t got = next->_Read(trailer, 4);
  if (got == 0) ImportErrorCode(*next);
  if (got != 4 || internal::LoadLE32(trailer) != (crc_ ^ 0xFFFFFFFFu)) {
    SetErrorCode(kErrEndOfData);
    return false;
  }
  return true;
}

}  // namespace tavi
