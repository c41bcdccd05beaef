//===- bit_io.h - Bit readers and writers of the coders ---------*- C++ -*-===//
//
// The coders are written once as templates over a bit writer or reader. The plain
// forms go through XBitStream call by call (and walk the tree bit by bit); the fast
// forms move bits through a 64-bit accumulator over memory and decode codes by table.
// Both give the same bytes and consume the same bytes: the fast reader is used only
// where it can read ahead and then give back what it did not use.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/internal/endian.h"
#include "pack/internal/code_tree.h"
#include "tavi/io/bit_stream.h"

namespace tavi::pack_internal {

// BitSink packs bits least significant first into a chunk and hands full chunks to
// the target stream. After a failed write it drops everything; the target keeps its
// error and ok() turns false.
class BitSink {
 public:
  explicit BitSink(XIO& out) : out_(out) {}
  BitSink(const BitSink&) = delete;
  BitSink& operator=(const BitSink&) = delete;

  // Put appends the low n bits of v (n <= 56; v has no bits above them).
  void Put(uint64_t v, uint32_t n) {
    acc_ |= v << bits_;
    bits_ += n;
    internal::StoreLE64(buf_ + pos_, acc_);
    const uint32_t bytes = bits_ >> 3;
    pos_ += bytes;
    acc_ = bytes != 0 ? acc_ >> (8 * bytes) : acc_;  // bits_ < 64: shift < 64
    bits_ &= 7;
    if (pos_ >= kChunk) Drain();
  }
  // PutLong appends up to 64 bits.
  void PutLong(uint64_t v, uint32_t n) {
    if (n > 32) {
      Put(v & 0xFFFFFFFFu, 32);
      v >>= 32;
      n -= 32;
    }
    Put(n == 32 ? v : v & ((uint64_t{1} << n) - 1), n);
  }
  // RawByte writes a byte the way XBitStream::_Write does at the present offset k:
  // its bits keep their positions, so bits k..7 complete the pending byte and bits
  // 0..k-1 start the next one (in stream order: the byte rotated right by k).
  void RawByte(uint8_t b) { Put(std::rotr(b, static_cast<int>(bits_)), 8); }
  void Bytes(const uint8_t* data, size_t n) {
    if (bits_ == 0) {
      for (size_t i = 0; i < n; ++i) Put(data[i], 8);
      return;
    }
    const int k = static_cast<int>(bits_);
    for (size_t i = 0; i < n; ++i) Put(std::rotr(data[i], k), 8);
  }
  // Finish writes the last partial byte (high bits 0) and flushes the target.
  bool Finish() {
    if (bits_ != 0) {
      buf_[pos_++] = static_cast<uint8_t>(acc_);
      acc_ = 0;
      bits_ = 0;
    }
    Drain();
    return ok_ && out_._Flush();
  }
  bool ok() const { return ok_; }

 private:
  static constexpr uint32_t kChunk = 32768;

  void Drain() {
    if (ok_ && pos_ != 0) ok_ = out_._Write(buf_, pos_);
    pos_ = 0;
  }

  XIO& out_;
  uint64_t acc_ = 0;
  uint32_t bits_ = 0;
  uint32_t pos_ = 0;
  bool ok_ = true;
  uint8_t buf_[kChunk + 16];
};

// PlainBitWriter writes through an XBitStream, one call per field.
class PlainBitWriter {
 public:
  explicit PlainBitWriter(XIO& out) : bits_(&out) {}
  void Put(uint64_t v, uint32_t n) {
    if (ok_) ok_ = bits_.SetBits(v, n);
  }
  void PutLong(uint64_t v, uint32_t n) { Put(v, n); }
  void RawByte(uint8_t b) {
    if (ok_) ok_ = bits_._Write(&b, 1);
  }
  void Bytes(const uint8_t* data, size_t n) {
    for (; ok_ && n != 0;) {
      const uint32_t piece = n > 0x10000 ? 0x10000 : static_cast<uint32_t>(n);
      ok_ = bits_._Write(data, piece);
      data += piece;
      n -= piece;
    }
  }
  bool Finish() { return ok_ && bits_._Flush(); }
  bool ok() const { return ok_; }

 private:
  XBitStream bits_;
  bool ok_ = true;
};

// MemBitReader reads bits from memory through a 64-bit accumulator. Past the end it
// fails instead of reading; BytesTaken() is the number of bytes a byte-at-a-time
// reader would have consumed for the bits taken (a started byte counts).
class MemBitReader {
 public:
  MemBitReader(const uint8_t* data, size_t size) : begin_(data), p_(data), end_(data + size) {}

  size_t BytesTaken() const { return (8 * static_cast<size_t>(p_ - begin_) - bits_ + 7) / 8; }

  bool Bit(uint32_t& b) { return Bits(1, b); }
  // Bits takes n <= 32 bits.
  bool Bits(uint32_t n, uint32_t& v) {
    if (bits_ < n) {
      Refill();
      if (bits_ < n) return false;
    }
    v = static_cast<uint32_t>(acc_ & ((uint64_t{1} << n) - 1));
    Consume(n);
    return true;
  }
  bool Bytes(uint8_t* dst, size_t n) {
    if (bits_ % 8 == 0) {
      // Aligned: the whole bytes in the accumulator first, then straight from memory.
      while (n != 0 && bits_ != 0) {
        *dst++ = static_cast<uint8_t>(acc_);
        Consume(8);
        --n;
      }
      if (n == 0) return true;
      if (static_cast<size_t>(end_ - p_) < n) return false;
      std::memcpy(dst, p_, n);
      p_ += n;
      acc_ = 0;  // it held bits of the bytes just skipped
      return true;
    }
    // Unaligned: the inverse of BitSink::RawByte.
    const int k = static_cast<int>(Offset());
    for (size_t i = 0; i < n; ++i) {
      uint32_t v;
      if (!Bits(8, v)) return false;
      dst[i] = std::rotl(static_cast<uint8_t>(v), k);
    }
    return true;
  }
  bool Symbol(const CodeTree& tree, const DecodeTable& table, uint8_t& out) {
    if (table.single) {
      out = table.single_symbol;
      return true;
    }
    if (bits_ < DecodeTable::kBits) Refill();
    const uint32_t e = table.entry[acc_ & kPeekMask];
    const uint32_t len = (e >> 16) & 0xF;
    if (len > bits_) return false;
    Consume(len);
    if (e & DecodeTable::kLeaf) {
      out = static_cast<uint8_t>(e);
      return true;
    }
    int32_t node = static_cast<int32_t>(e & 0x3FF);
    while (!tree.IsLeaf(node)) {
      uint32_t b;
      if (!Bits(1, b)) return false;
      node = tree.child[node][b];
    }
    out = tree.symbol[node];
    return true;
  }
  // Symbols decodes n codes into dst. While at least 8 input bytes are left it
  // refills once per five look-ups of one or two codes each, leaving the loop for a
  // code longer than the table.
  bool Symbols(const CodeTree& tree, const DecodeTable& table, uint8_t* dst, size_t n) {
    if (table.single) {
      std::memset(dst, table.single_symbol, n);
      return true;
    }
    static_assert(5 * DecodeTable::kBits <= 56, "five codes per refill");
    size_t i = 0;
    while (n - i >= 10 && end_ - p_ >= 8) {
      Refill();
      for (int k = 0; k < 5; ++k) {
        const uint32_t e = table.entry[acc_ & kPeekMask];
        if (!(e & DecodeTable::kLeaf)) {
          if (!Symbol(tree, table, dst[i++])) return false;
          break;
        }
        // Both bytes are stored; without a pair the second is overwritten next.
        const uint32_t len = (e >> 20) & 0xF;
        acc_ >>= len;
        bits_ -= len;
        dst[i] = static_cast<uint8_t>(e);
        dst[i + 1] = static_cast<uint8_t>(e >> 8);
        i += 1 + ((e & DecodeTable::kPair) >> 24);
      }
    }
    for (; i < n; ++i) {
      if (!Symbol(tree, table, dst[i])) return false;
    }
    return true;
  }

 private:
  static constexpr uint64_t kPeekMask = (1u << DecodeTable::kBits) - 1;

  // Offset is the bit position within the present byte (0 to 7).
  uint32_t Offset() const { return (8 - bits_ % 8) % 8; }
  void Consume(uint32_t n) {
    acc_ >>= n;
    bits_ -= n;
  }
  void Refill() {
    if (end_ - p_ >= 8) {
      acc_ |= internal::LoadLE64(p_) << bits_;
      p_ += (63 - bits_) >> 3;
      bits_ |= 56;
      return;
    }
    while (bits_ <= 56 && p_ < end_) {
      acc_ |= uint64_t{*p_++} << bits_;
      bits_ += 8;
    }
  }

  const uint8_t* begin_;
  const uint8_t* p_;
  const uint8_t* end_;
  uint64_t acc_ = 0;
  uint32_t bits_ = 0;
};

// PlainBitReader reads through an XBitStream and walks the tree one bit per branch.
class PlainBitReader {
 public:
  explicit PlainBitReader(XBitStream& bits) : bits_(bits) {}

  bool Bit(uint32_t& b) {
    bool bit;
    if (!bits_.GetBit(bit)) return false;
    b = bit ? 1 : 0;
    return true;
  }
  bool Bits(uint32_t n, uint32_t& v) {
    uint64_t value;
    if (!bits_.GetBits(value, n)) return false;
    v = static_cast<uint32_t>(value);
    return true;
  }
  bool Bytes(uint8_t* dst, size_t n) {
    while (n != 0) {
      const uint32_t piece = n > 0x10000 ? 0x10000 : static_cast<uint32_t>(n);
      if (bits_._Read(dst, piece) != piece) return false;
      dst += piece;
      n -= piece;
    }
    return true;
  }
  bool Symbol(const CodeTree& tree, const DecodeTable&, uint8_t& out) {
    int32_t node = tree.root;
    while (!tree.IsLeaf(node)) {
      uint32_t b;
      if (!Bit(b)) return false;
      node = tree.child[node][b];
    }
    out = tree.symbol[node];
    return true;
  }
  bool Symbols(const CodeTree& tree, const DecodeTable& table, uint8_t* dst, size_t n) {
    for (size_t i = 0; i < n; ++i) {
      if (!Symbol(tree, table, dst[i])) return false;
    }
    return true;
  }

 private:
  XBitStream& bits_;
};

// Outcome of reading a tree: kOk, kShort (the bits ran out) or kTooLarge (more than
// 512 nodes).
enum class TreeRead { kOk, kShort, kTooLarge };

// ReadCodeTree reads a pre-order tree (1: branch, then left and right; 0: leaf, then
// its byte) of at most 512 nodes, numbering nodes in pre-order (root 0). It keeps its
// own stack, so a hostile tree cannot exhaust the call stack.
template <typename Reader>
TreeRead ReadCodeTree(Reader& in, CodeTree& tree) {
  tree.nodes = 0;
  tree.root = 0;
  // Pending child slots, filled in pre-order: (parent, side); parent -1 is the root.
  struct Slot {
    int16_t parent;
    uint8_t side;
  };
  Slot stack[CodeTree::kMaxNodes + 1];
  uint32_t top = 0;
  stack[top++] = {-1, 0};
  while (top != 0) {
    const Slot slot = stack[--top];
    if (tree.nodes == CodeTree::kMaxNodes) return TreeRead::kTooLarge;
    uint32_t bit;
    if (!in.Bit(bit)) return TreeRead::kShort;
    const auto id = static_cast<int16_t>(tree.nodes++);
    if (slot.parent >= 0) tree.child[slot.parent][slot.side] = id;
    tree.child[id][0] = tree.child[id][1] = -1;
    tree.symbol[id] = 0;
    if (bit) {
      tree.child[id][0] = 0;  // marks a branch until its children are read
      stack[top++] = {id, 1};
      stack[top++] = {id, 0};
    } else {
      uint8_t sym;
      if (!in.Bytes(&sym, 1)) return TreeRead::kShort;
      tree.symbol[id] = sym;
    }
  }
  return TreeRead::kOk;
}

// WriteCodeTree writes a built tree in pre-order.
template <typename Writer>
void WriteCodeTree(Writer& out, const CodeTree& tree) {
  int32_t stack[CodeTree::kMaxNodes];
  uint32_t top = 0;
  stack[top++] = tree.root;
  while (top != 0) {
    const int32_t node = stack[--top];
    if (tree.IsLeaf(node)) {
      out.Put(0, 1);
      out.RawByte(tree.symbol[node]);
    } else {
      out.Put(1, 1);
      stack[top++] = tree.child[node][1];
      stack[top++] = tree.child[node][0];
    }
  }
}

}  // namespace tavi::pack_internal
