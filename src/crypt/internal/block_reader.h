//===- block_reader.h - Reading runs of cipher blocks -----------*- C++ -*-===//
//
// The cipher functions read many blocks with few stream calls, yet must
// leave the source in the state that reading one block at a time would: this
// helper stops exactly where such a reader would have stopped.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/io/stream.h"

namespace tavi::crypt_internal {

struct BlockRead {
  uint32_t got;      // bytes delivered
  bool ended_empty;  // the read that stopped delivered nothing
};

// ReadWholeBlocks reads up to want bytes (a multiple of 16) from in. It stops
// at a read that delivers nothing or leaves the count inside a block, as a
// reader of single blocks would, so in's error state afterwards is the one
// such a reader finds.
inline BlockRead ReadWholeBlocks(XIO& in, uint8_t* to, uint32_t want) {
  uint32_t got = 0;
  while (got < want) {
    const uint32_t n = in._Read(to + got, want - got);
    if (n == 0) return {got, true};
    got += n;
    if (got % 16 != 0) break;
  }
  return {got, false};
}

}  // namespace tavi::crypt_internal
