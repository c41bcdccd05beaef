//===- filter_io.h - Piecewise stream helpers for the filter tests -*- C++ -*-===//
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tavi/core/buffer.h"

namespace tavi::crypt_test {

inline std::vector<uint8_t> Contents(const XBuffer& b) {
  const auto* p = static_cast<const uint8_t*>(b.GetBuffer());
  return std::vector<uint8_t>(p, p + b.GetBufferPos());
}

inline void Fill(XBuffer& b, const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return;
  ASSERT_TRUE(b._Write(bytes.data(), static_cast<uint32_t>(bytes.size())));
}

// Writes data through out in pieces of the given size.
inline void WriteInPieces(XIO& out, const std::vector<uint8_t>& data, size_t piece) {
  for (size_t at = 0; at < data.size(); at += piece) {
    const size_t n = std::min(piece, data.size() - at);
    ASSERT_TRUE(out._Write(data.data() + at, static_cast<uint32_t>(n))) << at;
  }
}

// Reads total bytes from in in pieces; false at the first short read.
inline bool ReadInPieces(XIO& in, std::vector<uint8_t>& into, size_t total, size_t piece) {
  into.assign(total, 0);
  for (size_t at = 0; at < total; at += piece) {
    const uint32_t n = static_cast<uint32_t>(std::min(piece, total - at));
    if (in._Read(into.data() + at, n) != n) return false;
  }
  return true;
}

}  // namespace tavi::crypt_test
