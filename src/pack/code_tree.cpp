//===- code_tree.cpp - Byte code trees as plain arrays ---------------------===//
//
// The build rule works on 256 frequency records exactly as the node-object coder
// does; only the nodes are array slots. Leaves are numbered first (in record order),
// branches after them in the order they are made.
//
//===----------------------------------------------------------------------===//
#include "pack/internal/code_tree.h"

#include <algorithm>
#include <cstring>

namespace tavi::pack_internal {

namespace {

struct Record {
  uint64_t count;
  uint8_t symbol;
  int16_t node;
};

// Fills the table entries below node: prefix holds the depth bits taken so far.
void FillTable(const CodeTree& tree, int32_t node, uint32_t prefix, uint32_t depth,
               DecodeTable& table) {
  constexpr uint32_t kBits = DecodeTable::kBits;
  if (tree.IsLeaf(node) || depth == kBits) {
    const uint32_t value =
        tree.IsLeaf(node) ? (DecodeTable::kLeaf | tree.symbol[node]) : static_cast<uint32_t>(node);
    const uint32_t e = value | (depth << 16);
    for (uint32_t high = 0; high < (1u << (kBits - depth)); ++high) {
      table.entry[prefix | (high << depth)] = e;
    }
    return;
  }
  FillTable(tree, tree.child[node][0], prefix, depth + 1, table);
  FillTable(tree, tree.child[node][1], prefix | (1u << depth), depth + 1, table);
}

}  // namespace

bool BuildCodeTree(const uint64_t counts[256], CodeTree& tree, CodeTable& table) {
  Record rec[256];
  for (uint32_t s = 0; s < 256; ++s) rec[s] = {counts[s], static_cast<uint8_t>(s), -1};
  std::stable_sort(rec, rec + 256,
                   [](const Record& a, const Record& b) { return a.count > b.count; });
  if (rec[0].count <= rec[255].count) return false;
  uint32_t n = 0;
  while (n < 256 && rec[n].count != 0) ++n;

  tree.nodes = 0;
  for (uint32_t i = 0; i < n; ++i) {
    const auto id = static_cast<int16_t>(tree.nodes++);
    tree.child[id][0] = tree.child[id][1] = -1;
    tree.symbol[id] = rec[i].symbol;
    rec[i].node = id;
  }
  for (; n > 1; --n) {
    Record& a = rec[n - 2];
    const Record& b = rec[n - 1];
    const auto id = static_cast<int16_t>(tree.nodes++);
    tree.child[id][0] = a.node;
    tree.child[id][1] = b.node;
    tree.symbol[id] = 0;
    a.count += b.count;
    a.node = id;
    // A merged record moves ahead of strictly smaller counts only.
    for (uint32_t i = n - 2; i > 0 && rec[i].count > rec[i - 1].count; --i) {
      std::swap(rec[i], rec[i - 1]);
    }
  }
  tree.root = rec[0].node;

  // Codes by a walk from the root, keeping the path bits.
  std::memset(table.length, 0, sizeof table.length);
  std::memset(table.code, 0, sizeof table.code);
  table.max_length = 0;
  struct Step {
    int32_t node;
    uint32_t depth;
    uint64_t path;
  };
  Step stack[CodeTree::kMaxNodes];
  uint32_t top = 0;
  stack[top++] = {tree.root, 0, 0};
  while (top != 0) {
    const Step s = stack[--top];
    if (tree.IsLeaf(s.node)) {
      if (s.depth > 64) return false;
      table.code[tree.symbol[s.node]] = s.path;
      table.length[tree.symbol[s.node]] = static_cast<uint8_t>(s.depth);
      table.max_length = std::max(table.max_length, s.depth);
      continue;
    }
    const uint64_t right_bit = s.depth < 64 ? uint64_t{1} << s.depth : 0;
    stack[top++] = {tree.child[s.node][1], s.depth + 1, s.path | right_bit};
    stack[top++] = {tree.child[s.node][0], s.depth + 1, s.path};
  }
  return true;
}

uint64_t TreeBits(const CodeTree& tree) {
  const uint64_t leaves = (tree.nodes + 1) / 2;
  return 9 * leaves + (tree.nodes - leaves);
}

uint64_t EstimateBits(const uint64_t counts[256], const CodeTree& tree, const CodeTable& table) {
  uint64_t bits = TreeBits(tree);
  for (uint32_t s = 0; s < 256; ++s) bits += counts[s] * table.length[s];
  return bits;
}

void CountBytes(const uint8_t* data, uint64_t size, uint64_t counts[256]) {
  // Short stretches (the literals between references) are not worth the set-up.
  if (size < 1024) {
    for (uint64_t i = 0; i < size; ++i) ++counts[data[i]];
    return;
  }
  // Four histograms in 32-bit counters, folded into the 64-bit ones every 2^31 bytes
  // so that no counter can wrap.
  uint32_t h[4][256];
  while (size != 0) {
    const uint64_t piece = size < (uint64_t{1} << 31) ? size : (uint64_t{1} << 31);
    std::memset(h, 0, sizeof h);
    uint64_t i = 0;
    for (; i + 4 <= piece; i += 4) {
      ++h[0][data[i]];
      ++h[1][data[i + 1]];
      ++h[2][data[i + 2]];
      ++h[3][data[i + 3]];
    }
    for (; i < piece; ++i) ++h[0][data[i]];
    for (uint32_t s = 0; s < 256; ++s) {
      counts[s] += uint64_t{h[0][s]} + h[1][s] + h[2][s] + h[3][s];
    }
    data += piece;
    size -= piece;
  }
}

void BuildDecodeTable(const CodeTree& tree, DecodeTable& table) {
  const int32_t root = tree.root;
  table.single = tree.IsLeaf(root);
  table.single_symbol = tree.symbol[root];
  if (table.single) return;
  FillTable(tree, root, 0, 0, table);
  // Pairs: the bits after a short code, looked up in the single-code entries, give
  // the second code when it ends within the kBits bits.
  constexpr uint32_t kSize = 1u << DecodeTable::kBits;
  uint32_t single[kSize];
  std::memcpy(single, table.entry, sizeof single);
  for (uint32_t i = 0; i < kSize; ++i) {
    const uint32_t e = single[i];
    if (!(e & DecodeTable::kLeaf)) continue;
    const uint32_t first = (e >> 16) & 0xF;
    const uint32_t e2 = single[i >> first];
    const uint32_t second = (e2 >> 16) & 0xF;
    if ((e2 & DecodeTable::kLeaf) && first + second <= DecodeTable::kBits) {
      table.entry[i] = e | ((e2 & 0xFF) << 8) | ((first + second) << 20) | DecodeTable::kPair;
    } else {
      table.entry[i] = e | (first << 20);
    }
  }
}

}  // namespace tavi::pack_internal
