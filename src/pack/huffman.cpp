//===- huffman.cpp - Static byte Huffman coder -----------------------------===//
//
// The node classes and XHufmanIO follow the coder's state machine call by call; the
// buffer functions HufmanCode and HufmanDecode run either that plain path or the fast
// one (accumulator writer, table decoder over memory), which gives the same bytes.
//
//===----------------------------------------------------------------------===//
#include "tavi/pack/huffman.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "core/internal/endian.h"
#include "core/internal/kernel_choice.h"
#include "pack/internal/bit_io.h"
#include "pack/internal/code_tree.h"
#include "pack/internal/coder_path.h"

namespace tavi {

using pack_internal::CoderPath;

namespace pack_internal {

namespace {

bool AnyPathUsable(CoderPath) {
  return true;
}
CoderPath SamePath(CoderPath p) {
  return p;
}

internal::KernelChoice<CoderPath, CoderPath>& Choice() {
  static internal::KernelChoice<CoderPath, CoderPath> choice({CoderPath::kFast}, CoderPath::kPlain,
                                                             SamePath, AnyPathUsable);
  return choice;
}

}  // namespace

CoderPath CoderActivePath() {
  return Choice().Get();
}
void SetCoderPath(CoderPath path) {
  Choice().Set(path);
}
void ResetCoderPath() {
  Choice().Reset();
}

}  // namespace pack_internal

// --- Tree nodes -------------------------------------------------------------

XHufmanTreeNode::~XHufmanTreeNode() = default;
XHufmanBranch::~XHufmanBranch() = default;
XHufmanNode::~XHufmanNode() = default;

bool XHufmanBranch::WritePath(XBitStream& bits, XHufmanTreeNode* child) {
  if (parent != nullptr && !parent->WritePath(bits, this)) return false;
  return bits.SetBit(child == right);
}

bool XHufmanBranch::DecodeSymbol(XBitStream& bits, uint8_t& symbol) {
  bool bit;
  if (!bits.GetBit(bit)) return false;
  XHufmanTreeNode* next = bit ? right : left;
  return next != nullptr && next->DecodeSymbol(bits, symbol);
}

bool XHufmanBranch::WriteSubtree(XHufmanIO& io) {
  return io.SetBit(true) && left->WriteSubtree(io) && right->WriteSubtree(io);
}

bool XHufmanBranch::ReadSubtree(XHufmanIO& io, uint32_t& budget) {
  left = io.ReadNode(this, budget);
  if (left == nullptr) return false;
  right = io.ReadNode(this, budget);
  return right != nullptr;
}

uint32_t XHufmanBranch::CodeLength() {
  return parent != nullptr ? parent->CodeLength() + 1 : 1;
}

uint64_t XHufmanBranch::SubtreeBits() {
  return left->SubtreeBits() + right->SubtreeBits() + 1;
}

void XHufmanBranch::Destroy() {
  if (left != nullptr) left->Destroy();
  if (right != nullptr) right->Destroy();
  delete this;
}

bool XHufmanNode::WritePath(XBitStream& bits, XHufmanTreeNode*) {
  return parent == nullptr || parent->WritePath(bits, this);
}

bool XHufmanNode::DecodeSymbol(XBitStream&, uint8_t& out) {
  out = symbol;
  return true;
}

bool XHufmanNode::WriteSubtree(XHufmanIO& io) {
  return io.SetBit(false) && io.WriteTreeByte(symbol);
}

bool XHufmanNode::ReadSubtree(XHufmanIO& io, uint32_t&) {
  return io.ReadTreeByte(symbol);
}

uint32_t XHufmanNode::CodeLength() {
  return parent != nullptr ? parent->CodeLength() : 0;
}

uint64_t XHufmanNode::SubtreeBits() {
  return 9;
}

void XHufmanNode::Destroy() {
  delete this;
}

// --- XHufmanIO ----------------------------------------------------------------

XHufmanIO::~XHufmanIO() {
  FreeTree();
}

void XHufmanIO::FreeTree() {
  if (root_ != nullptr) root_->Destroy();
  root_ = nullptr;
  std::free(leaves_);
  std::free(branches_);
  leaves_ = nullptr;
  branches_ = nullptr;
  for (auto& c : codes_) c = CodeEntry{};
}

bool XHufmanIO::BuildTree(const uint64_t counts[256]) {
  FreeTree();
  state_ = kReadingTree;
  auto tree = std::make_unique<pack_internal::CodeTree>();
  auto table = std::make_unique<pack_internal::CodeTable>();
  if (!pack_internal::BuildCodeTree(counts, *tree, *table)) return false;

  // The array tree numbers its leaves first, then its branches in the order they
  // were made; the node objects are made in the same order.
  const uint32_t leaves = (tree->nodes + 1) / 2;
  leaves_ = static_cast<XHufmanNode**>(std::calloc(leaves, sizeof(XHufmanNode*)));
  branches_ = static_cast<XHufmanBranch**>(std::calloc(leaves, sizeof(XHufmanBranch*)));
  XHufmanTreeNode* nodes[pack_internal::CodeTree::kMaxNodes] = {};
  bool ok = leaves_ != nullptr && branches_ != nullptr;
  for (uint32_t i = 0; ok && i < tree->nodes; ++i) {
    if (tree->IsLeaf(static_cast<int32_t>(i))) {
      auto* leaf = new (std::nothrow) XHufmanNode;
      ok = leaf != nullptr;
      if (ok) leaf->symbol = tree->symbol[i];
      if (ok) leaves_[i] = leaf;
      nodes[i] = leaf;
    } else {
      auto* branch = new (std::nothrow) XHufmanBranch;
      ok = branch != nullptr;
      if (ok) {
        branch->left = nodes[tree->child[i][0]];
        branch->right = nodes[tree->child[i][1]];
        branch->left->parent = branch;
        branch->right->parent = branch;
        branches_[i - leaves] = branch;
      }
      nodes[i] = branch;
    }
  }
  if (!ok) {
    // Free what was made: every node made so far is either a branch's child or free.
    for (uint32_t i = 0; i < tree->nodes; ++i) {
      if (nodes[i] != nullptr && nodes[i]->parent == nullptr) nodes[i]->Destroy();
    }
    std::free(leaves_);
    std::free(branches_);
    leaves_ = nullptr;
    branches_ = nullptr;
    SetErrorCode(kErrNoMemory);
    return false;
  }
  root_ = nodes[tree->root];

  // Codes: each leaf writes its path into the code store, which starts every code on
  // a byte boundary; positions become pointers once the store has stopped growing.
  code_store_.ResetBufferPos();
  uint32_t position[256] = {};
  for (uint32_t i = 0; i < leaves; ++i) {
    XHufmanNode* leaf = leaves_[i];
    const uint8_t s = leaf->symbol;
    codes_[s].length = leaf->CodeLength();
    position[s] = code_store_.GetBufferPos();
    XBitStream temp(&code_store_);
    if (!leaf->WritePath(temp, nullptr) || !temp._Flush()) {
      ImportErrorCode(code_store_);
      FreeTree();
      return false;
    }
  }
  for (uint32_t i = 0; i < leaves; ++i) {
    const uint8_t s = leaves_[i]->symbol;
    codes_[s].bits = code_store_._GetBufferAt(position[s]);
  }
  state_ = kFresh;
  return true;
}

uint64_t XHufmanIO::EstimateBits(const uint64_t counts[256]) {
  if (root_ == nullptr) return 0;
  uint64_t bits = root_->SubtreeBits();
  for (uint32_t s = 0; s < 256; ++s) bits += counts[s] * codes_[s].length;
  state_ = kFresh;
  return bits;
}

XHufmanTreeNode* XHufmanIO::ReadNode(XHufmanTreeNode* parent, uint32_t& budget) {
  if (budget == 0) {
    SetErrorCode(kErrEndOfData);
    return nullptr;
  }
  --budget;
  bool bit;
  if (!GetBit(bit)) return nullptr;
  XHufmanTreeNode* node = nullptr;
  if (bit) {
    node = new (std::nothrow) XHufmanBranch;
  } else {
    node = new (std::nothrow) XHufmanNode;
  }
  if (node == nullptr) {
    SetErrorCode(kErrNoMemory);
    return nullptr;
  }
  node->parent = parent;
  if (!node->ReadSubtree(*this, budget)) {
    node->Destroy();
    return nullptr;
  }
  return node;
}

bool XHufmanIO::_Write(const void* data, uint32_t bytes) {
  switch (state_) {
    case kFresh:
      if (root_ == nullptr) {
        SetSafeIntrnalError(kInternalHufmanNoTree);
        return false;
      }
      state_ = kWritingTree;
      if (!root_->WriteSubtree(*this)) return false;
      state_ = kCoding;
      [[fallthrough]];
    case kCoding: {
      const auto* in = static_cast<const uint8_t*>(data);
      for (uint32_t i = 0; i < bytes; ++i) {
        const CodeEntry& c = codes_[in[i]];
        // The code's bytes, read whole 64-bit words at a time.
        for (uint32_t done = 0; done < c.length; done += 64) {
          const uint32_t n = c.length - done < 64 ? c.length - done : 64;
          uint8_t word[8] = {};
          std::memcpy(word, c.bits + done / 8, (n + 7) / 8);
          if (!SetBits(internal::LoadLE64(word), n)) return false;
        }
      }
      return true;
    }
    case kWritingTree:
      return XBitStream::_Write(data, bytes);
    default:
      SetSafeIntrnalError(kInternalHufmanWriteState);
      return false;
  }
}

uint32_t XHufmanIO::_Read(void* data, uint32_t bytes) {
  switch (state_) {
    case kFresh: {
      state_ = kReadingTree;
      uint32_t budget = kHufmanNodeBudget;
      root_ = ReadNode(nullptr, budget);
      if (root_ == nullptr) return 0;
      state_ = kCoding;
      _Read(data, bytes);
      return 1;
    }
    case kReadingTree:
      return XBitStream::_Read(data, bytes);
    case kCoding: {
      if (root_ == nullptr) return XBitStream::_Read(data, bytes);
      auto* out = static_cast<uint8_t*>(data);
      uint32_t i = 0;
      for (; i < bytes; ++i) {
        if (!root_->DecodeSymbol(*this, out[i])) break;
      }
      return i;
    }
    default:
      SetSafeIntrnalError(kInternalHufmanReadState);
      return 0;
  }
}

// --- Buffer functions ---------------------------------------------------------

namespace {

using pack_internal::BitSink;
using pack_internal::CodeTable;
using pack_internal::CodeTree;
using pack_internal::DecodeTable;
using pack_internal::MemBitReader;

bool CodePlain(XIO& out, const uint8_t* data, uint32_t size, uint32_t limit,
               const uint64_t counts[256]) {
  XHufmanIO io(&out);
  if (!io.BuildTree(counts)) {
    if (io.IsError()) out.ImportErrorCode(io);
    return false;
  }
  if (io.EstimateBits(counts) >= limit) return false;
  return io._Write(data, size) && io._Flush();
}

bool CodeFast(XIO& out, const uint8_t* data, uint32_t size, uint32_t limit,
              const uint64_t counts[256]) {
  auto tree = std::make_unique<CodeTree>();
  auto table = std::make_unique<CodeTable>();
  if (!pack_internal::BuildCodeTree(counts, *tree, *table)) return false;
  if (pack_internal::EstimateBits(counts, *tree, *table) >= limit) return false;
  auto sink = std::make_unique<BitSink>(out);
  pack_internal::WriteCodeTree(*sink, *tree);
  if (table->max_length <= 56) {
    // Codes paired into one field when two fit, halving the stores.
    uint64_t code[256];
    uint32_t length[256];
    for (uint32_t s = 0; s < 256; ++s) {
      code[s] = table->code[s];
      length[s] = table->length[s];
    }
    uint32_t i = 0;
    if (table->max_length <= 28) {
      for (; i + 2 <= size; i += 2) {
        const uint8_t a = data[i];
        const uint8_t b = data[i + 1];
        sink->Put(code[a] | (code[b] << length[a]), length[a] + length[b]);
      }
    }
    for (; i < size; ++i) sink->Put(code[data[i]], length[data[i]]);
  } else {
    for (uint32_t i = 0; i < size; ++i) {
      sink->PutLong(table->code[data[i]], table->length[data[i]]);
    }
  }
  return sink->Finish();
}

// Decodes from memory: the tree, then size bytes in chunks written to out. The
// read cursor of in ends after the byte holding the last bit used.
bool DecodeFast(XIO& out, XBuffer& in, uint32_t size) {
  const uint32_t start = in.GetCurrentPos();
  const uint32_t end = in.GetBufferPos();
  const uint32_t avail = start <= end ? end - start : 0;
  MemBitReader reader(in._GetCurrentBuffer(), avail);
  auto tree = std::make_unique<CodeTree>();
  const pack_internal::TreeRead got = pack_internal::ReadCodeTree(reader, *tree);
  if (got != pack_internal::TreeRead::kOk) {
    in._SetCurrentPos(start + avail);
    out.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  auto table = std::make_unique<DecodeTable>();
  pack_internal::BuildDecodeTable(*tree, *table);
  constexpr uint32_t kChunk = 65536;
  const uint32_t area_size = size < kChunk ? size : kChunk;
  std::unique_ptr<uint8_t[]> area(new (std::nothrow) uint8_t[area_size]);
  if (!area) {
    out.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  while (size != 0) {
    const uint32_t n = size < kChunk ? size : kChunk;
    if (!reader.Symbols(*tree, *table, area.get(), n)) {
      in._SetCurrentPos(start + avail);
      out.SetSafeErrorCode(kErrEndOfData);
      return false;
    }
    if (!out._Write(area.get(), n)) {
      in._SetCurrentPos(start + static_cast<uint32_t>(reader.BytesTaken()));
      return false;
    }
    size -= n;
  }
  in._SetCurrentPos(start + static_cast<uint32_t>(reader.BytesTaken()));
  return true;
}

}  // namespace

bool HufmanCode(XIO& out, const void* data, int32_t size, uint32_t limit) {
  if (size < 0) size = 0;
  const auto* bytes = static_cast<const uint8_t*>(data);
  const auto n = static_cast<uint32_t>(size);
  uint64_t counts[256] = {};
  pack_internal::CountBytes(bytes, n, counts);
  if (pack_internal::CoderActivePath() == CoderPath::kPlain) {
    return CodePlain(out, bytes, n, limit, counts);
  }
  return CodeFast(out, bytes, n, limit, counts);
}

bool HufmanDecode(XIO& out, XIO& in, int32_t size) {
  if (size < 0) {
    out.SetSafeErrorCode(kErrOutOfRange);
    return false;
  }
  if (size == 0) return true;
  if (pack_internal::CoderActivePath() == CoderPath::kFast) {
    // Only a plain buffer: a derived stream may read differently from its memory.
    if (typeid(in) == typeid(XBuffer)) {
      auto* memory = static_cast<XBuffer*>(&in);
      return DecodeFast(out, *memory, static_cast<uint32_t>(size));
    }
  }
  // The first read of an XHufmanIO reads the tree and returns 1 rather than a byte
  // count, so the tree is read by a read of nothing before the copy.
  XHufmanIO io(&in);
  if (io._Read(nullptr, 0) == 0) {
    io.SetSafeErrorCode(kErrEndOfData);
    out.ImportErrorCode(io);
    return false;
  }
  return io.ReadThruBfr(out, static_cast<uint32_t>(size));
}

}  // namespace tavi
