//===- test_streams.h - Small streams for the stream tests -----*- C++ -*-===//
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tavi/core/buffer.h"

namespace tavi::test {

// Delivers a fixed byte string, then ends (a short count, no error). Records the
// sizes asked of it.
class Source : public XIO {
 public:
  explicit Source(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  explicit Source(const std::string& bytes) : bytes_(bytes.begin(), bytes.end()) {}
  uint32_t _Read(void* data, uint32_t n) override {
    reads.push_back(n);
    const auto k = static_cast<uint32_t>(std::min<size_t>(n, Left()));
    if (k != 0) std::memcpy(data, bytes_.data() + pos_, k);
    pos_ += k;
    return k;
  }
  size_t Left() const { return bytes_.size() - pos_; }
  std::vector<uint32_t> reads;

 private:
  std::vector<uint8_t> bytes_;
  size_t pos_ = 0;
};

// Collects what is written and the size of each write. From write number fail_at
// (counted from 1) on, and in _Flush when fail_flush is set, it fails with fail_code.
class Sink : public XIO {
 public:
  explicit Sink(size_t fail_from = 0) : fail_at(fail_from) {}
  bool _Write(const void* data, uint32_t n) override {
    writes.push_back(n);
    if (fail_at != 0 && writes.size() >= fail_at) {
      SetErrorCode(fail_code);
      return false;
    }
    bytes.insert(bytes.end(), static_cast<const uint8_t*>(data),
                 static_cast<const uint8_t*>(data) + n);
    return true;
  }
  bool _Flush() override {
    ++flushes;
    if (fail_flush) SetErrorCode(fail_code);
    return !fail_flush;
  }
  std::vector<uint8_t> bytes;
  std::vector<uint32_t> writes;
  int flushes = 0;
  size_t fail_at = 0;
  bool fail_flush = false;
  uint32_t fail_code = kErrTooLong;
};

inline std::vector<uint8_t> Bytes(std::initializer_list<int> list) {
  return std::vector<uint8_t>(list.begin(), list.end());
}

// The error a call that must fail left in e (~0 when the call succeeded).
inline uint32_t Fail(bool ok, const XError& e) {
  return ok ? ~0u : e.GetErrorCode();
}

// The data of a buffer (byte 0 to the data end).
inline std::vector<uint8_t> Data(const XBuffer& b) {
  return std::vector<uint8_t>(b._GetBufferAt(0), b.GetStringEnd());
}

}  // namespace tavi::test
