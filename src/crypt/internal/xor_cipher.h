//===- xor_cipher.h - The XOR cipher filter stream --------------*- C++ -*-===//
//
// XCipherXORIO, a light byte-wise cipher filter used inside the library's
// packed container: each byte is XORed with the next byte of a 256-byte key
// table made from a wide password. It hides data from casual eyes; it is not
// a cipher in any strong sense.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/io/routed.h"

namespace tavi {

// XCipherXORIO XORs every byte written or read through it with key table
// [position], position running 0..255 and wrapping. Writing and reading the
// same bytes with fresh filters of the same password are inverses. Construct
// on the next stream, Init, then write or read.
class XCipherXORIO : public XRoutedIO {
 public:
  XCipherXORIO() = default;
  explicit XCipherXORIO(XIO* next) : XRoutedIO(next) {}
  XCipherXORIO(XIO* next, const char16_t* password) : XRoutedIO(next) { Init(password); }
  XCipherXORIO(const XCipherXORIO& other) = default;
  XCipherXORIO& operator=(const XCipherXORIO& other) = default;
  ~XCipherXORIO() override;

  // Init builds the key table: entry i is ((low 8 bits of the next password
  // unit) - 0x20) XOR i, walking the password cyclically with its
  // terminating zero included. Position := 0.
  void Init(const char16_t* password);

  // _Write XORs the bytes and passes them on (in batches); a failed
  // downstream write imports its error and is false. Size 0 is true.
  bool _Write(const void* data, uint32_t bytes) override;
  // _Read reads from the next stream and XORs what arrived. It returns the
  // count delivered; when the next stream runs dry before bytes, its error is
  // imported and the shorter count returned.
  uint32_t _Read(void* data, uint32_t bytes) override;

  const uint8_t* GetKeyTable() const { return key_; }
  uint32_t GetPosition() const { return position_; }

 private:
  void Apply(const uint8_t* in, uint8_t* out, uint32_t n);

  uint8_t key_[256] = {};
  uint32_t position_ = 0;
};

}  // namespace tavi
