//===- huffman.h - Static byte Huffman coder --------------------*- C++ -*-===//
//
// This file defines the byte-oriented Huffman coder: HufmanCode and HufmanDecode for
// whole memory blocks, and XHufmanIO, the bit-stream filter that holds the code tree
// and codes or decodes the bytes going through it.
//
// Stream layout: the tree in pre-order (a branch is bit 1 followed by its left and
// right subtrees, a leaf is bit 0 followed by its byte), then the code of every data
// byte (root-to-leaf path, 0 = left, 1 = right), then zero bits to the next byte
// boundary. Bits go least significant first. No byte count is stored: the reader
// must know it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/buffer.h"
#include "tavi/export.h"
#include "tavi/io/bit_stream.h"

namespace tavi {

// Internal error details (code 0x20000015) of XHufmanIO.
inline constexpr int32_t kInternalHufmanNoTree = 1008;      // write before a tree was built
inline constexpr int32_t kInternalHufmanWriteState = 1009;  // write while reading the tree
inline constexpr int32_t kInternalHufmanReadState = 1010;   // read while writing the tree

// Largest number of nodes a tree read from a stream may have (256 leaves and 255
// branches fit; one more node is refused with 0x20000004).
inline constexpr uint32_t kHufmanNodeBudget = 512;

class XHufmanIO;

// XHufmanTreeNode is a node of the code tree; it knows its parent (null at the root).
// The concrete nodes are XHufmanBranch and XHufmanNode; both are heap objects owned by
// the XHufmanIO whose tree they belong to, and free themselves with Destroy.
class TAVI_API XHufmanTreeNode {
 public:
  XHufmanTreeNode() = default;
  XHufmanTreeNode(const XHufmanTreeNode&) = delete;
  XHufmanTreeNode& operator=(const XHufmanTreeNode&) = delete;

  // WritePath writes the root-to-node path of child (a branch) or of this leaf; the
  // root writes nothing. False when the bit stream's next stream fails.
  virtual bool WritePath(XBitStream& bits, XHufmanTreeNode* child) = 0;
  // DecodeSymbol follows one code from this node and stores the leaf's byte; false
  // when a bit cannot be read.
  virtual bool DecodeSymbol(XBitStream& bits, uint8_t& symbol) = 0;
  // WriteSubtree writes this subtree in pre-order.
  virtual bool WriteSubtree(XHufmanIO& io) = 0;
  // ReadSubtree reads this node's content (a branch: both children; a leaf: its
  // byte), counting every node read against budget.
  virtual bool ReadSubtree(XHufmanIO& io, uint32_t& budget) = 0;
  // CodeLength is the number of bits from the root to this node's code.
  virtual uint32_t CodeLength() = 0;
  // SubtreeBits is the size of this subtree in the stream: 9 bits per leaf, 1 per
  // branch.
  virtual uint64_t SubtreeBits() = 0;
  // Destroy frees this subtree (the node included).
  virtual void Destroy() = 0;

  XHufmanTreeNode* parent = nullptr;

 protected:
  virtual ~XHufmanTreeNode();
};

// XHufmanBranch is an inner node: bit 0 of a code leads left, bit 1 right.
class TAVI_API XHufmanBranch : public XHufmanTreeNode {
 public:
  XHufmanBranch() = default;

  bool WritePath(XBitStream& bits, XHufmanTreeNode* child) override;
  bool DecodeSymbol(XBitStream& bits, uint8_t& symbol) override;
  bool WriteSubtree(XHufmanIO& io) override;
  bool ReadSubtree(XHufmanIO& io, uint32_t& budget) override;
  uint32_t CodeLength() override;
  uint64_t SubtreeBits() override;
  void Destroy() override;

  XHufmanTreeNode* left = nullptr;
  XHufmanTreeNode* right = nullptr;

 protected:
  ~XHufmanBranch() override;
};

// XHufmanNodeBase holds a leaf's byte.
class TAVI_API XHufmanNodeBase {
 public:
  uint8_t symbol = 0;
};

// XHufmanNode is a leaf. A leaf that is the root has a code of 0 bits: decoding it
// reads nothing.
class TAVI_API XHufmanNode : public XHufmanNodeBase, public XHufmanTreeNode {
 public:
  XHufmanNode() = default;

  bool WritePath(XBitStream& bits, XHufmanTreeNode* child) override;
  bool DecodeSymbol(XBitStream& bits, uint8_t& symbol) override;
  bool WriteSubtree(XHufmanIO& io) override;
  bool ReadSubtree(XHufmanIO& io, uint32_t& budget) override;
  uint32_t CodeLength() override;
  uint64_t SubtreeBits() override;
  void Destroy() override;

 protected:
  ~XHufmanNode() override;
};

// XHufmanIO codes the bytes written through it and decodes the bytes read through it,
// with one tree per object.
//
// Writing: BuildTree makes the tree from 256 byte counts; the first _Write then sends
// the tree (state 1) and every write after it sends the codes of its bytes (state 3);
// _Flush (XBitStream's) ends the stream on a byte boundary. A write without a tree
// fails with 0x20000015, internal detail 1008; a write while a tree is being read,
// with detail 1009.
//
// Reading: the first _Read reads the tree from the next stream (state 2, at most 512
// nodes: more is 0x20000004, a short stream leaves 0 with the next stream's state
// imported, memory failure 0x20000001), then decodes the request, and returns 1, not
// the number of bytes, on success; later reads return the number of bytes decoded and
// stop at the first code that cannot be read. A read while writing the tree fails with
// 0x20000015, detail 1010. Hostile trees are safe: reading keeps a node budget, and
// trees that repeat a byte decode to whatever their leaves hold.
class TAVI_API XHufmanIO : public XBitStream {
 public:
  // States of the coder.
  enum : uint32_t { kFresh = 0, kWritingTree = 1, kReadingTree = 2, kCoding = 3 };

  // One code table entry: the code's bits in the code store (the root's choice in
  // bit 0 of the first byte) and their number. A byte that does not occur has length
  // 0 and a null pointer.
  struct CodeEntry {
    const uint8_t* bits = nullptr;
    uint32_t length = 0;
  };

  XHufmanIO() = default;
  explicit XHufmanIO(XIO* next) : XBitStream(next) {}
  XHufmanIO(const XHufmanIO&) = delete;
  XHufmanIO& operator=(const XHufmanIO&) = delete;
  ~XHufmanIO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;

  // BuildTree replaces any tree with one built from counts (one per byte value) and
  // computes the codes. Records of equal count keep ascending byte order, so the tree
  // is the same on every platform. Fails (state 2) when the largest count is not
  // greater than the smallest (no data, or all 256 values equally often); memory
  // failure sets 0x20000001. On success the state is 0 (fresh, tree kept).
  bool BuildTree(const uint64_t counts[256]);
  // EstimateBits is the coded size of the counted data in bits: the tree plus every
  // byte's code. Only meaningful after a successful BuildTree with the same counts.
  uint64_t EstimateBits(const uint64_t counts[256]);

  uint32_t GetState() const { return state_; }
  XHufmanTreeNode* GetRoot() const { return root_; }
  const CodeEntry& GetCode(uint8_t symbol) const { return codes_[symbol]; }

  // Raw forms used by the tree nodes while the tree travels (states 1 and 2).
  bool WriteTreeByte(uint8_t byte) { return XBitStream::_Write(&byte, 1); }
  bool ReadTreeByte(uint8_t& byte) { return XBitStream::_Read(&byte, 1) == 1; }
  // ReadNode reads one node under parent (null for the root) against budget.
  XHufmanTreeNode* ReadNode(XHufmanTreeNode* parent, uint32_t& budget);

 private:
  void FreeTree();

  XBuffer code_store_;
  CodeEntry codes_[256];
  XHufmanNode** leaves_ = nullptr;
  XHufmanBranch** branches_ = nullptr;
  XHufmanTreeNode* root_ = nullptr;
  uint32_t state_ = kFresh;
};

// HufmanCode counts the size bytes of data, builds their tree and, when the estimated
// coded size in bits is below limit, writes the coded stream to out and flushes it.
// Returns false without writing anything when the tree cannot be built (no data, or
// all 256 values equally often) or when the estimate is not below limit; false after
// a partial stream when out fails (out holds the cause). The output depends only on
// the data: the same bytes on every platform. A negative size is no data.
TAVI_API bool HufmanCode(XIO& out, const void* data, int32_t size, uint32_t limit);

// HufmanDecode reads a stream written by HufmanCode from in and writes exactly size
// decoded bytes to out. On failure out holds the cause: 0x20000004 when the stream
// ends early or its tree has more than 512 nodes, 0x20000001 without memory, or the
// error of in or out. Input is consumed up to the byte holding the last bit used,
// never beyond. Any input is safe: decoding never reads outside the stream's data and
// allocates nothing in proportion to size.
TAVI_API bool HufmanDecode(XIO& out, XIO& in, int32_t size);

}  // namespace tavi
