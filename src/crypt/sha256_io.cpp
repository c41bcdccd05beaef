//===- sha256_io.cpp - The hashing filter stream --------------------------===//
#include <cstring>

#include "crypt/internal/sha256_kernel.h"
#include "tavi/crypt/sha256.h"

namespace tavi {

XSHA256IO::~XSHA256IO() = default;

void XSHA256IO::Init256() {
  std::memcpy(state_, crypt_internal::kSha256Init, sizeof(state_));
  buffered_ = 0;
  total_ = 0;
}

void XSHA256IO::Init224() {
  std::memcpy(state_, crypt_internal::kSha224Init, sizeof(state_));
  buffered_ = 0;
  total_ = 0;
}

void XSHA256IO::AddSHA256(const char* data, int32_t size) {
  if (size <= 0) return;
  const auto* p = reinterpret_cast<const uint8_t*>(data);
  uint32_t n = static_cast<uint32_t>(size);
  if (buffered_ > 0) {
    const uint32_t room = 64 - buffered_;
    if (n < room) {
      std::memcpy(buffer_ + buffered_, p, n);
      buffered_ += n;
      return;
    }
    std::memcpy(buffer_ + buffered_, p, room);
    crypt_internal::Sha256Compress(state_, buffer_, 1);
    buffered_ = 0;
    p += room;
    n -= room;
  }
  crypt_internal::Sha256Compress(state_, p, n / 64);
  p += n & ~63u;
  n &= 63u;
  std::memcpy(buffer_, p, n);
  buffered_ = n;
}

// Hashes bytes that travelled through the stream and adds them to the byte count;
// counts beyond the signed range of AddSHA256 are hashed in pieces.
void XSHA256IO::Absorb(const void* data, uint32_t bytes) {
  const auto* p = static_cast<const char*>(data);
  for (uint32_t left = bytes; left > 0;) {
    const uint32_t piece = left < 0x40000000u ? left : 0x40000000u;
    AddSHA256(p, static_cast<int32_t>(piece));
    p += piece;
    left -= piece;
  }
  total_ += bytes;
}

bool XSHA256IO::_Write(const void* data, uint32_t bytes) {
  if (!XRoutedIO::_Write(data, bytes)) return false;
  Absorb(data, bytes);
  return true;
}

uint32_t XSHA256IO::_Read(void* data, uint32_t bytes) {
  const uint32_t got = XRoutedIO::_Read(data, bytes);
  Absorb(data, got);
  return got;
}

void XSHA256IO::Finalize() {
  crypt_internal::Sha256Finalize(state_, buffer_, buffered_, total_);
}

bool XSHA256IO::_WriteSHA256() {
  if (Next() == nullptr) return false;
  Finalize();
  return XRoutedIO::_Write(state_, 32);
}

bool XSHA256IO::_WriteSHA224() {
  if (Next() == nullptr) return false;
  Finalize();
  return XRoutedIO::_Write(state_, 28);
}

bool XSHA256IO::CheckSHA256() {
  XIO* next = Next();
  if (next == nullptr) return false;
  uint32_t trailer[8];
  const uint32_t got = next->_Read(trailer, 32);
  if (got == 0) ImportErrorCode(*next);
  if (got != 32) {
    SetErrorCode(kErrEndOfData);
    return false;
  }
  Finalize();
  for (int i = 0; i < 8; ++i) {
    if (trailer[i] != state_[i]) {
      SetErrorCode(kErrEndOfData);
      return false;
    }
  }
  return true;
}

bool XSHA256IO::CheckSHA224() {
  uint8_t trailer[28];
  if (XSHA256IO::_Read(trailer, 28) < 28) {
    SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  Finalize();
  return false;
}

}  // namespace tavi
