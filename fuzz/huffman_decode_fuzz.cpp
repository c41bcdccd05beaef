//===- huffman_decode_fuzz.cpp - Fuzz the Huffman decoder ------------------===//
//
// The table decoder over memory and the node-by-node decoder over a plain stream
// must agree on arbitrary streams (see coder_paths_agree.h).
//
//===----------------------------------------------------------------------===//
#include "coder_paths_agree.h"
#include "tavi/pack/huffman.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return tavi::fuzz::CoderPathsAgree(tavi::HufmanDecode, data, size);
}
