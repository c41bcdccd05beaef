//===- test_streams.h - Small streams for the stream tests -----*- C++ -*-===//
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tavi/io/stream.h"

namespace tavi::test {

// Delivers a fixed byte string, then ends (a short count, no error). Counts the reads.
class Source : public XIO {
 public:
  explicit Source(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  explicit Source(const std::string& bytes) : bytes_(bytes.begin(), bytes.end()) {}
  uint32_t _Read(void* data, uint32_t n) override {
    ++reads;
    const size_t left = bytes_.size() - pos_;
    const uint32_t k = static_cast<uint32_t>(n < left ? n : left);
    if (k != 0) std::memcpy(data, bytes_.data() + pos_, k);
    pos_ += k;
    return k;
  }
  size_t Position() const { return pos_; }
  size_t Left() const { return bytes_.size() - pos_; }
  int reads = 0;

 private:
  std::vector<uint8_t> bytes_;
  size_t pos_ = 0;
};

// Collects what is written; fails (with error fail_code) from write number fail_at on.
class Sink : public XIO {
 public:
  bool _Write(const void* data, uint32_t n) override {
    ++writes;
    if (fail_at != 0 && writes >= fail_at) {
      SetErrorCode(fail_code);
      return false;
    }
    const auto* p = static_cast<const uint8_t*>(data);
    bytes.insert(bytes.end(), p, p + n);
    return true;
  }
  bool _Flush() override {
    ++flushes;
    if (fail_flush) {
      SetErrorCode(fail_code);
      return false;
    }
    return true;
  }
  std::vector<uint8_t> bytes;
  int writes = 0;
  int flushes = 0;
  int fail_at = 0;
  bool fail_flush = false;
  uint32_t fail_code = kErrTooLong;
};

inline std::vector<uint8_t> Bytes(std::initializer_list<int> list) {
  std::vector<uint8_t> v;
  for (int b : list) v.push_back(static_cast<uint8_t>(b));
  return v;
}

}  // namespace tavi::test
