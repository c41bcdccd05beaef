//===- lz_decode_fuzz.cpp - Fuzz the LZ decoder ----------------------------===//
//
// The decoder over memory and the decoder over XBitStream must agree on arbitrary
// streams (see coder_paths_agree.h).
//
//===----------------------------------------------------------------------===//
#include "coder_paths_agree.h"
#include "tavi/pack/lz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return tavi::fuzz::CoderPathsAgree(tavi::LZX4Decode, data, size);
}
