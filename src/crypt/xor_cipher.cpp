//===- xor_cipher.cpp - The XOR cipher filter stream ----------------------===//
#include "crypt/internal/xor_cipher.h"

namespace tavi {
namespace {

constexpr uint32_t kBatchBytes = 4096;

}  // namespace

XCipherXORIO::~XCipherXORIO() = default;

void XCipherXORIO::Init(const char16_t* password) {
  const char16_t* p = password;
  for (uint32_t i = 0; i < 256; ++i) {
    key_[i] = static_cast<uint8_t>(((*p & 0xFF) - 0x20) ^ i);
    p = (*p == 0) ? password : p + 1;
  }
  position_ = 0;
}

void XCipherXORIO::Apply(const uint8_t* in, uint8_t* out, uint32_t n) {
  for (uint32_t i = 0; i < n; ++i) {
    if (position_ > 255) position_ = 0;
    out[i] = in[i] ^ key_[position_++];
  }
}

bool XCipherXORIO::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  const auto* p = static_cast<const uint8_t*>(data);
  uint8_t batch[kBatchBytes];
  while (bytes > 0) {
    const uint32_t n = bytes < kBatchBytes ? bytes : kBatchBytes;
    Apply(p, batch, n);
    if (!next->_Write(batch, n)) {
      ImportErrorCode(*next);
      return false;
    }
    p += n;
    bytes -= n;
  }
  return true;
}

uint32_t XCipherXORIO::_Read(void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return 0;
  auto* out = static_cast<uint8_t*>(data);
  uint32_t got = 0;
  while (got < bytes) {
    const uint32_t n = next->_Read(out + got, bytes - got);
    if (n == 0) {
      ImportErrorCode(*next);
      break;
    }
    got += n;
  }
  Apply(out, out, got);
  return got;
}

}  // namespace tavi
