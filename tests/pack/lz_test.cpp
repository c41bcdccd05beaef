//===- lz_test.cpp - LZ coders and decoder ---------------------------------===//
#include "tavi/pack/lz.h"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

#include "coder_test_data.h"
#include "io/test_streams.h"
#include "pack/internal/lz_io.h"
#include "tavi/crypt/crc32.h"
#include "tavi/io/bit_stream.h"

namespace tavi {
namespace {

using pack_internal::CoderPath;
using test::BitList;
using test::Contents;
using test::Kind;
using test::MakeData;
using test::PathScope;

using Coder = bool (*)(XIO&, const uint8_t*, uint64_t, uint64_t);
constexpr Coder kCoders[] = {LZX3Code, LZX4Code};

std::vector<uint8_t> Code(Coder coder, const std::vector<uint8_t>& data,
                          uint64_t window = kLZWindowMax) {
  XBuffer out;
  EXPECT_TRUE(coder(out, data.data(), data.size(), window));
  return Contents(out);
}

std::tuple<bool, uint32_t, uint32_t> Decode(const std::vector<uint8_t>& stream, int64_t size,
                                            std::vector<uint8_t>* decoded = nullptr) {
  return test::DecodeWith(LZX4Decode, stream, size, decoded);
}

// An item of a stream, read by a plain model of the format over XBitStream.
struct Item {
  bool ref;
  uint32_t v;       // run length or distance
  uint32_t length;  // reference length
  bool coded;       // run of Huffman codes
};

// Parses the items of a stream of size bytes (the literal bytes are skipped).
std::vector<Item> Items(const std::vector<uint8_t>& stream, uint64_t size, bool* tree = nullptr) {
  XBuffer in;
  in._Write(stream.data(), static_cast<uint32_t>(stream.size()));
  XBitStream bits(&in);
  std::vector<Item> items;
  uint64_t t = 0;
  EXPECT_TRUE(bits.GetBits(t, 1));
  if (tree != nullptr) *tree = t != 0;
  // The tree as (is branch, left, right) nodes for walking the codes.
  std::vector<std::tuple<bool, int, int>> nodes;
  std::function<int()> read_node = [&]() -> int {
    bool branch = false;
    EXPECT_TRUE(bits.GetBit(branch));
    const int id = static_cast<int>(nodes.size());
    nodes.emplace_back(branch, -1, -1);
    if (branch) {
      const int l = read_node();
      const int r = read_node();
      nodes[id] = {true, l, r};
    } else {
      uint8_t b;
      EXPECT_TRUE(bits.GetByte(b));
    }
    return id;
  };
  if (t) read_node();
  while (size != 0) {
    uint64_t v = 0, f = 0, x = 0;
    const bool good = bits.GetBits(v, 15) && bits.GetBits(f, 1);
    EXPECT_TRUE(good);
    if (!good) break;
    if (f == 0) {
      if (t) {
        EXPECT_TRUE(bits.GetBits(x, 1));
      }
      items.push_back({false, uint32_t(v), 0, x != 0});
      for (uint64_t i = 0; i < v; ++i) {
        if (x) {
          int n = 0;
          while (std::get<0>(nodes[n])) {
            bool b = false;
            EXPECT_TRUE(bits.GetBit(b));
            n = b ? std::get<2>(nodes[n]) : std::get<1>(nodes[n]);
          }
        } else {
          uint8_t b;
          EXPECT_TRUE(bits.GetByte(b));
        }
      }
      if (v > size) break;
      size -= v;
    } else {
      uint64_t l = 0, m = 0;
      EXPECT_TRUE(bits.GetBits(l, 5));
      if (l == 31) {
        EXPECT_TRUE(bits.GetBits(m, 15));
      }
      const uint32_t length = l == 31 ? uint32_t(m + 36) : uint32_t(l + 5);
      items.push_back({true, uint32_t(v + 5), length, false});
      if (length > size) break;
      size -= length;
    }
  }
  return items;
}

TEST(LZ, ByteExamples) {
  for (Coder coder : kCoders) {
    for (CoderPath path : test::kBothPaths) {
      PathScope scope(path);
      // One byte: no tree pays off; one raw run (its byte at bit offset 1).
      EXPECT_EQ(Code(coder, {'x'}), BitList().Bit(0).Field(1, 15).Bit(0).Byte('x').bytes());
      // Nothing: the flag bit and its padding.
      EXPECT_EQ(Code(coder, {}), std::vector<uint8_t>{0});
    }
  }
}

TEST(LZ, ReferenceRules) {
  // 10 bytes or fewer: literals only, however repetitive.
  for (Coder coder : kCoders) {
    for (const Item& item : Items(Code(coder, std::vector<uint8_t>(10, 'a')), 10)) {
      EXPECT_FALSE(item.ref);
    }
    // 100 equal bytes: no reference overlaps its output. (LZX4Code may rightly keep
    // them literal: with a one-leaf tree a literal costs no bits.)
    const std::vector<Item> items = Items(Code(coder, std::vector<uint8_t>(100, 'a')), 100);
    bool any_ref = coder == LZX4Code;
    for (const Item& item : items) {
      if (!item.ref) continue;
      any_ref = true;
      EXPECT_GE(item.v, item.length + 1);
      EXPECT_GE(item.v, 5u);
    }
    EXPECT_TRUE(any_ref);
  }
  // References of 35 and 36 bytes: the 5-bit field and the escape.
  for (uint32_t len : {35u, 36u, 1000u}) {
    std::vector<uint8_t> data = MakeData(Kind::kRandom, 60, len);
    const std::vector<uint8_t> copy(data.begin(), data.begin() + len % 60);
    std::vector<uint8_t> piece = MakeData(Kind::kRandom, len, 99);
    data.insert(data.end(), piece.begin(), piece.end());
    data.push_back(0x55);
    data.insert(data.end(), piece.begin(), piece.end());
    data.push_back(0xAA);
    for (Coder coder : kCoders) {
      const std::vector<uint8_t> stream = Code(coder, data);
      bool found = false;
      for (const Item& item : Items(stream, data.size())) {
        if (item.ref && item.length == len && item.v == len + 1) found = true;
      }
      EXPECT_TRUE(found) << len << " x" << (coder == LZX4Code);
      std::vector<uint8_t> decoded;
      EXPECT_TRUE(std::get<0>(Decode(stream, int64_t(data.size()), &decoded)));
      EXPECT_EQ(decoded, data);
    }
  }
}

TEST(LZ, RunsSplitAtFifteenBits) {
  // Random bytes leave long literal stretches: runs of 32767 at most.
  const std::vector<uint8_t> data = MakeData(Kind::kRandom, 70000, 4);
  for (Coder coder : kCoders) {
    bool tree = true;
    const std::vector<Item> items = Items(Code(coder, data), data.size(), &tree);
    EXPECT_FALSE(tree);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].v, 32767u);
    EXPECT_EQ(items[2].v, 70000u - 2 * 32767u);
  }
  // Text in a block with a tree: runs are coded; a stretch of bytes the tree codes
  // badly is worth a raw run when it is long enough.
  std::vector<uint8_t> mixed(3000, 'e');
  for (size_t i = 0; i < mixed.size(); ++i) mixed[i] = "etaoin"[i * 7 % 6];
  std::vector<uint8_t> rare = MakeData(Kind::kRandom, 400, 5);
  mixed.insert(mixed.begin() + 1500, rare.begin(), rare.end());
  bool tree = false;
  const std::vector<Item> items = Items(Code(LZX3Code, mixed, 0), mixed.size(), &tree);
  EXPECT_TRUE(tree);
  std::vector<bool> coded;
  for (const Item& item : items) coded.push_back(item.coded);
  EXPECT_EQ(coded, (std::vector<bool>{true, false, true}));
}

TEST(LZ, RoundTripsPathsAndCoders) {
  const size_t sizes[] = {0, 1, 5, 10, 11, 12, 100, 4096, 32772, 32773, 100000};
  for (Kind kind : {Kind::kText, Kind::kSkewed, Kind::kRandom, Kind::kRuns, Kind::kRepeats}) {
    for (size_t size : sizes) {
      const std::vector<uint8_t> data = MakeData(kind, size, static_cast<uint32_t>(size) + 1);
      for (uint64_t window : {uint64_t{0}, uint64_t{4096}, uint64_t{1} << 40}) {
        for (Coder coder : kCoders) {
          SCOPED_TRACE(testing::Message() << "kind " << int(kind) << " size " << size << " window "
                                          << window << " x" << (coder == LZX4Code));
          std::vector<uint8_t> coded[2];
          for (int p = 0; p < 2; ++p) {
            PathScope scope(test::kBothPaths[p]);
            coded[p] = Code(coder, data, window);
          }
          ASSERT_EQ(coded[0], coded[1]);
          std::vector<uint8_t> stream = coded[0];
          stream.push_back(0xEE);
          for (CoderPath path : test::kBothPaths) {
            PathScope scope(path);
            std::vector<uint8_t> decoded;
            ASSERT_EQ(Decode(stream, int64_t(size), &decoded),
                      std::make_tuple(true, 0u, uint32_t(coded[0].size())));
            ASSERT_EQ(decoded, data);
          }
        }
      }
    }
  }
}

TEST(LZ, HostileStreams) {
  const std::vector<uint8_t> data = MakeData(Kind::kRepeats, 5000, 8);
  const std::vector<uint8_t> stream = Code(LZX4Code, data);
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    // Asking for more than the stream holds, truncation, and crafted references.
    EXPECT_EQ(std::get<1>(Decode(stream, 5001)), kErrEndOfData);
    for (size_t cut : {size_t{0}, size_t{1}, stream.size() / 2, stream.size() - 1}) {
      EXPECT_EQ(std::get<1>(Decode({stream.begin(), stream.begin() + cut}, 5000)), kErrEndOfData);
    }
    const auto before_start = BitList().Bit(0).Field(1, 15).Bit(0).Byte('a').Field(0, 15).Bit(1);
    EXPECT_EQ(std::get<1>(Decode(BitList(before_start).Field(0, 5).bytes(), 6)), kErrEndOfData);
    BitList overlap = BitList().Bit(0).Field(6, 15).Bit(0);
    for (char c : std::string("abcdef")) overlap.Byte(uint8_t(c));
    std::vector<uint8_t> decoded;
    // Length 6 at distance 6 is allowed; length 7 at distance 6 overlaps.
    EXPECT_TRUE(std::get<0>(
        Decode(BitList(overlap).Field(1, 15).Bit(1).Field(1, 5).bytes(), 12, &decoded)));
    EXPECT_EQ(decoded, test::Vec("abcdefabcdef"));
    EXPECT_EQ(std::get<1>(Decode(BitList(overlap).Field(1, 15).Bit(1).Field(2, 5).bytes(), 13)),
              kErrEndOfData);
    // A run longer than the bytes still wanted.
    EXPECT_EQ(std::get<1>(Decode(BitList().Bit(0).Field(2, 15).Bit(0).Field(0, 16).bytes(), 1)),
              kErrEndOfData);
    EXPECT_EQ(std::get<1>(Decode(stream, -1)), kErrOutOfRange);
  }
}

// The coders' output depends on nothing but the data and the window: these digests
// hold on every platform and catch any change to the searches or the writer.
TEST(LZ, OutputIsReproducible) {
  const std::vector<uint8_t> data = MakeData(Kind::kRepeats, 50000, 21);
  std::vector<uint32_t> sums;
  for (Coder coder : kCoders) {
    for (uint64_t window : {uint64_t{4096}, kLZWindowMax}) {
      const std::vector<uint8_t> stream = Code(coder, data, window);
      uint32_t crc = 0;
      XHashCRC32(crc, stream.data(), uint32_t(stream.size()));
      sums.push_back(crc);
    }
  }
  EXPECT_EQ(sums, (std::vector<uint32_t>{0x413FE5F9, 0xE3EB5B3E, 0x73165090, 0xA207F71A}));
}

TEST(LZ, FilterBlocks) {
  const std::vector<uint8_t> a = MakeData(Kind::kText, 3000, 1);
  const std::vector<uint8_t> b = MakeData(Kind::kRuns, 7, 2);
  XBuffer chain;
  XLZ3IO writer(&chain, 4096);
  ASSERT_TRUE(writer._Write(a.data(), uint32_t(a.size())));
  ASSERT_TRUE(writer._Write(b.data(), uint32_t(b.size())));
  EXPECT_LT(chain.GetBufferPos(), a.size());
  XLZ3IO reader(&chain, 4096);
  std::vector<uint8_t> back_a(a.size()), back_b(b.size()), more(1);
  EXPECT_EQ(reader._Read(back_a.data(), uint32_t(a.size())), a.size());
  EXPECT_EQ(reader._Read(back_b.data(), uint32_t(b.size())), b.size());
  EXPECT_EQ(std::make_tuple(back_a, back_b), std::make_tuple(a, b));
  EXPECT_EQ(reader._Read(more.data(), 1), 0u);
  EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData);
  // A failing target: the filter holds its error.
  test::Sink sink(1);
  XLZ3IO failing(&sink);
  EXPECT_FALSE(failing._Write(a.data(), uint32_t(a.size())));
  EXPECT_EQ(failing.GetErrorCode(), kErrTooLong);
}

}  // namespace
}  // namespace tavi
