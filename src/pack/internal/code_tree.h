//===- code_tree.h - Byte code trees as plain arrays ------------*- C++ -*-===//
//
// The Huffman tree of the byte coder held in flat arrays: the build rule from 256
// counts, the codes it gives, and a look-up table that decodes short codes in one
// step. The node objects of XHufmanIO and the buffer coders are both made from it,
// so every path writes the same tree and the same codes.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi::pack_internal {

// A full binary tree of at most 512 nodes. Node 0 is the root when the tree was read
// from a stream (nodes numbered in pre-order); a built tree keeps its root in root.
// A leaf has child[0] == -1 and its byte in symbol; a read tree may repeat a byte.
struct CodeTree {
  static constexpr uint32_t kMaxNodes = 512;
  int16_t child[kMaxNodes][2];
  uint8_t symbol[kMaxNodes];
  uint32_t nodes = 0;
  int32_t root = -1;

  bool IsLeaf(int32_t n) const { return child[n][0] < 0; }
};

// The codes of a built tree, per byte value: the root-to-leaf path with the root's
// choice in bit 0 (the order the bit stream sends them), and its length. Bytes that
// do not occur have length 0; so does the only byte of a one-leaf tree.
struct CodeTable {
  uint64_t code[256];
  uint8_t length[256];
  uint32_t max_length;
};

// BuildCodeTree builds the tree for 256 byte counts. Records are sorted by count,
// largest first; equal counts keep ascending byte order (a stable sort of the
// records taken in byte order), which makes the tree, and so the output, the same on
// every platform. Then the last two records merge into a branch (left: the larger
// or equal one, right: the other) until one is left, each merged record moving
// forward past records with strictly smaller counts.
//
// Fails (false) when the largest count is not greater than the smallest, which is
// the case for no data and for data holding all 256 values equally often. Codes
// longer than 64 bits cannot arise from counts that fit 64 bits in total; the
// builder refuses them rather than truncate.
bool BuildCodeTree(const uint64_t counts[256], CodeTree& tree, CodeTable& table);

// TreeBits is the tree's size in the stream: 9 bits per leaf, 1 per branch.
uint64_t TreeBits(const CodeTree& tree);

// EstimateBits is the coded size of the data the counts describe: the tree plus
// every byte's code length, in 64-bit arithmetic.
uint64_t EstimateBits(const uint64_t counts[256], const CodeTree& tree, const CodeTable& table);

// CountBytes adds the byte values of data to counts (four interleaved histograms).
void CountBytes(const uint8_t* data, uint64_t size, uint64_t counts[256]);

// DecodeTable maps the next kBits bits of a stream (first bit in bit 0) to the leaf
// they lead to and the bits its code takes, and, when the code after it also ends
// within those bits, to that second leaf as well; codes longer than kBits map to the
// node reached after kBits bits, from which decoding goes on bit by bit.
struct DecodeTable {
  static constexpr uint32_t kBits = 11;
  // Entry: bits 0-7 the first symbol (leaf) or bits 0-9 the node index (long code),
  // bits 8-15 the second symbol, bits 16-19 the bits of the first code, bits 20-23 the
  // bits of both codes (of the first alone without a second), bit 24 set when there is
  // a second symbol, bit 31 set for a leaf.
  static constexpr uint32_t kLeaf = 0x80000000u;
  static constexpr uint32_t kPair = 0x01000000u;
  uint32_t entry[1u << kBits];
  // One-leaf tree: every symbol is that leaf's byte and takes no bits.
  bool single = false;
  uint8_t single_symbol = 0;
};

void BuildDecodeTable(const CodeTree& tree, DecodeTable& table);

}  // namespace tavi::pack_internal
