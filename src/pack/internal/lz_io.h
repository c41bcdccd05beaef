//===- lz_io.h - The LZ filter stream ---------------------------*- C++ -*-===//
//
// XLZ3IO codes every write as one LZ block and decodes every read as one block, for
// the packed container. It is not part of the public interface.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/io/routed.h"
#include "tavi/pack/lz.h"

namespace tavi {

// XLZ3IO: _Write(data, n) codes the n bytes with LZX3Code on the next stream and the
// filter's window; _Read(buf, n) decodes one block of exactly n bytes from the next
// stream into buf and returns n, or 0 with the cause in this stream. A reader must
// read with the sizes the writer wrote.
class XLZ3IO : public XRoutedIO {
 public:
  XLZ3IO() = default;
  explicit XLZ3IO(XIO* next, uint64_t window = kLZWindowMax) : XRoutedIO(next), window(window) {}
  ~XLZ3IO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;

  uint64_t window = kLZWindowMax;
};

}  // namespace tavi
