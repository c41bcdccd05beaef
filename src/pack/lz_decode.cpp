//===- lz_decode.cpp - The LZ decoder --------------------------------------===//
//
// One routine for both coders' streams. Output is assembled in a history area that
// keeps the last 32772 bytes ahead of the bytes being decoded and is handed to the
// target in pieces, so memory stays bounded whatever the announced size.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "pack/internal/bit_io.h"
#include "pack/internal/code_tree.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/lz.h"

namespace tavi {

namespace {

using pack_internal::CodeTree;
using pack_internal::DecodeTable;

enum class Outcome { kOk, kBadInput, kWriteFailed, kNoMemory };

// Bytes kept beyond the history for the items being decoded; at least the longest
// reference (32803 bytes) so that one item always fits.
constexpr uint64_t kWorkArea = 256 * 1024;

template <typename Reader>
Outcome DecodeBlock(Reader& in, XIO& out, uint64_t size) {
  uint32_t flag;
  if (!in.Bit(flag)) return Outcome::kBadInput;
  std::unique_ptr<CodeTree> tree;
  std::unique_ptr<DecodeTable> table;
  if (flag) {
    tree.reset(new (std::nothrow) CodeTree);
    table.reset(new (std::nothrow) DecodeTable);
    if (!tree || !table) return Outcome::kNoMemory;
    if (pack_internal::ReadCodeTree(in, *tree) != pack_internal::TreeRead::kOk) {
      return Outcome::kBadInput;
    }
    pack_internal::BuildDecodeTable(*tree, *table);
  }
  if (size == 0) return Outcome::kOk;

  // The whole block fits when it is small; otherwise history plus work area.
  const uint64_t area = size < kLZWindowMax + kWorkArea ? size : kLZWindowMax + kWorkArea;
  std::unique_ptr<uint8_t[]> hist(new (std::nothrow) uint8_t[area]);
  if (!hist) return Outcome::kNoMemory;
  uint64_t pos = 0;       // end of the decoded bytes in hist
  uint64_t written = 0;   // hist bytes before this index have gone to out
  uint64_t produced = 0;  // bytes of the block decoded so far
  uint64_t remaining = size;

  // Makes room for n more bytes: hands the new bytes to out and keeps the history.
  auto room = [&](uint64_t n) {
    if (pos + n <= area) return true;
    if (!out._Write(hist.get() + written, static_cast<uint32_t>(pos - written))) return false;
    const uint64_t keep = pos < kLZWindowMax ? pos : kLZWindowMax;
    std::memmove(hist.get(), hist.get() + pos - keep, keep);
    pos = written = keep;
    return true;
  };

  while (remaining != 0) {
    uint32_t head;
    if (!in.Bits(16, head)) return Outcome::kBadInput;
    const uint32_t v = head & 0x7FFF;
    if ((head >> 15) == 0) {
      uint32_t coded = 0;
      if (flag && !in.Bit(coded)) return Outcome::kBadInput;
      if (v > remaining) return Outcome::kBadInput;
      if (!room(v)) return Outcome::kWriteFailed;
      const bool ok =
          coded ? in.Symbols(*tree, *table, hist.get() + pos, v) : in.Bytes(hist.get() + pos, v);
      if (!ok) return Outcome::kBadInput;
      pos += v;
      produced += v;
      remaining -= v;
      continue;
    }
    uint32_t l;
    if (!in.Bits(5, l)) return Outcome::kBadInput;
    uint32_t length = l + 5;
    if (l == 31) {
      uint32_t m;
      if (!in.Bits(15, m)) return Outcome::kBadInput;
      length = m + 36;
    }
    const uint32_t distance = v + 5;
    // References the coders never write: longer than what is left, reaching before
    // the block, or overlapping the bytes they produce.
    if (length > remaining || distance > produced || length > distance) {
      return Outcome::kBadInput;
    }
    if (!room(length)) return Outcome::kWriteFailed;
    std::memcpy(hist.get() + pos, hist.get() + pos - distance, length);
    pos += length;
    produced += length;
    remaining -= length;
  }
  if (pos != written && !out._Write(hist.get() + written, static_cast<uint32_t>(pos - written))) {
    return Outcome::kWriteFailed;
  }
  return Outcome::kOk;
}

bool Report(Outcome outcome, XIO& out, const XError& source) {
  switch (outcome) {
    case Outcome::kOk:
      return true;
    case Outcome::kBadInput:
      if (out.IsOk()) {
        if (source.IsError()) {
          out.ImportErrorCode(source);
        } else {
          out.SetErrorCode(kErrEndOfData);
        }
      }
      return false;
    case Outcome::kNoMemory:
      out.SetSafeErrorCode(kErrNoMemory);
      return false;
    case Outcome::kWriteFailed:
      return false;
  }
  return false;
}

}  // namespace

bool LZX3Decode(XIO& out, XIO& in, int64_t size) {
  if (size < 0) {
    out.SetSafeErrorCode(kErrOutOfRange);
    return false;
  }
  const auto n = static_cast<uint64_t>(size);
  if (pack_internal::CoderActivePath() == pack_internal::CoderPath::kFast) {
    // Only a plain buffer: a derived stream may read differently from its memory.
    if (typeid(in) == typeid(XBuffer)) {
      auto* memory = static_cast<XBuffer*>(&in);
      // Straight from memory; the read cursor then moves past the bytes used.
      const uint32_t start = memory->GetCurrentPos();
      const uint32_t end = memory->GetBufferPos();
      const uint32_t avail = start <= end ? end - start : 0;
      pack_internal::MemBitReader reader(memory->_GetCurrentBuffer(), avail);
      const Outcome outcome = DecodeBlock(reader, out, n);
      memory->_SetCurrentPos(outcome == Outcome::kBadInput
                                 ? start + avail
                                 : start + static_cast<uint32_t>(reader.BytesTaken()));
      return Report(outcome, out, *memory);
    }
  }
  XBitStream bits(&in);
  pack_internal::PlainBitReader reader(bits);
  return Report(DecodeBlock(reader, out, n), out, bits);
}

bool LZX4Decode(XIO& out, XIO& in, int64_t size) {
  return LZX3Decode(out, in, size);
}

}  // namespace tavi
