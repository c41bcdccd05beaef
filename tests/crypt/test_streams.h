//===- test_streams.h - Streams that fail on purpose, for the crypt tests -*- C++ -*-===//
#pragma once

#include <cstring>
#include <vector>

#include "tavi/core/error.h"
#include "tavi/io/stream.h"

namespace tavi::crypt_test {

// Accepts writes until limit bytes have been taken, then fails a write with
// platform error 112 (disk full) and keeps nothing of it.
class FailingWriter : public XIO {
 public:
  explicit FailingWriter(size_t limit) : limit_(limit) {}
  bool _Write(const void* data, uint32_t bytes) override {
    if (bytes > limit_ - taken.size()) {
      SetWinError(112);
      return false;
    }
    const auto* p = static_cast<const uint8_t*>(data);
    taken.insert(taken.end(), p, p + bytes);
    return true;
  }
  std::vector<uint8_t> taken;

 private:
  size_t limit_;
};

// Delivers its bytes, then fails every read with platform error 5.
class FailingReader : public XIO {
 public:
  explicit FailingReader(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}
  uint32_t _Read(void* data, uint32_t bytes) override {
    const size_t n = std::min<size_t>(bytes, bytes_.size() - at_);
    if (n == 0) {
      SetWinError(5);
      return 0;
    }
    std::memcpy(data, bytes_.data() + at_, n);
    at_ += n;
    return static_cast<uint32_t>(n);
  }

 private:
  std::vector<uint8_t> bytes_;
  size_t at_ = 0;
};

}  // namespace tavi::crypt_test
