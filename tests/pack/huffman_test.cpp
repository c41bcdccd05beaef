//===- huffman_test.cpp - Static byte Huffman coder ------------------------===//
#include "tavi/pack/huffman.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "coder_test_data.h"
#include "io/test_streams.h"

namespace tavi {
namespace {

using pack_internal::CoderPath;
using test::BitList;
using test::Contents;
using test::Kind;
using test::MakeData;
using test::PathScope;
using test::Vec;

std::vector<uint8_t> Code(const std::vector<uint8_t>& data, uint32_t limit = 0xFFFFFFFF,
                          bool* ok = nullptr) {
  XBuffer out;
  const bool r = HufmanCode(out, data.data(), static_cast<int32_t>(data.size()), limit);
  if (ok != nullptr) *ok = r;
  return Contents(out);
}

std::tuple<bool, uint32_t, uint32_t> Decode(const std::vector<uint8_t>& stream, int32_t size,
                                            std::vector<uint8_t>* decoded = nullptr) {
  return test::DecodeWith(HufmanDecode, stream, size, decoded);
}

TEST(Huffman, ByteExamples) {
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    // One byte value: a one-leaf tree (bit 0, the byte) and codes of no bits.
    EXPECT_EQ(Code(Vec("AAAAA")), BitList().Bit(0).Byte('A').bytes());
    // Counts 3 and 1: the frequent byte is the left child (code 0).
    EXPECT_EQ(
        Code(Vec("ABAA")),
        BitList().Bit(1).Bit(0).Byte('A').Bit(0).Byte('B').Bit(0).Bit(1).Bit(0).Bit(0).bytes());
    // Equal counts keep ascending byte order: 'a' left, 'b' right, whatever the data
    // order.
    EXPECT_EQ(Code(Vec("ba")),
              BitList().Bit(1).Bit(0).Byte('a').Bit(0).Byte('b').Bit(1).Bit(0).bytes());
    // Counts 4, 2, 1, 1: the merged (c, d) record of count 2 stays behind b's equal
    // count, so b and (c, d) merge next with b on the left. Codes: a 0, b 10, c 110,
    // d 111 (root's choice first).
    EXPECT_EQ(Code(Vec("aaaabbcd")), BitList()
                                         .Bit(1)
                                         .Bit(0)
                                         .Byte('a')
                                         .Bit(1)
                                         .Bit(0)
                                         .Byte('b')
                                         .Bit(1)
                                         .Bit(0)
                                         .Byte('c')
                                         .Bit(0)
                                         .Byte('d')
                                         .Field(0, 4)
                                         .Field(0b01, 2)
                                         .Field(0b01, 2)
                                         .Field(0b011, 3)
                                         .Field(0b111, 3)
                                         .bytes());
  }
}

TEST(Huffman, RefusalsWriteNothing) {
  std::vector<uint8_t> all(512);
  for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<uint8_t>(i);
  const std::vector<uint8_t> abaa = Vec("ABAA");
  // Tree 2 leaves + 1 branch = 19 bits, codes 4 bits: estimate 23.
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    bool ok = true;
    EXPECT_TRUE(Code({}, 0xFFFFFFFF, &ok).empty());
    EXPECT_FALSE(ok);
    EXPECT_TRUE(Code(all, 0xFFFFFFFF, &ok).empty());
    EXPECT_FALSE(ok);
    EXPECT_TRUE(Code(abaa, 23, &ok).empty());
    EXPECT_FALSE(ok);
    EXPECT_EQ(Code(abaa, 24, &ok).size(), 3u);
    EXPECT_TRUE(ok);
  }
}

TEST(Huffman, RoundTripsAndPathsAgree) {
  const size_t sizes[] = {1, 2, 3, 7, 8, 9, 63, 64, 65, 1000, 4097, 65535, 65536, 65537, 300000};
  for (Kind kind : {Kind::kText, Kind::kSkewed, Kind::kRandom, Kind::kRuns}) {
    for (size_t size : sizes) {
      SCOPED_TRACE(testing::Message() << "kind " << int(kind) << " size " << size);
      std::vector<uint8_t> data = MakeData(kind, size, static_cast<uint32_t>(size));
      std::vector<uint8_t> coded[2];
      for (int p = 0; p < 2; ++p) {
        PathScope scope(test::kBothPaths[p]);
        bool ok = false;
        coded[p] = Code(data, 0xFFFFFFFF, &ok);
        if (!ok) {
          // Only data with every value equally often is refused.
          EXPECT_TRUE(coded[p].empty());
          continue;
        }
      }
      ASSERT_EQ(coded[0], coded[1]);
      if (coded[0].empty()) continue;
      // Trailing bytes after the stream stay unread.
      std::vector<uint8_t> stream = coded[0];
      stream.push_back(0xEE);
      for (CoderPath path : test::kBothPaths) {
        PathScope scope(path);
        std::vector<uint8_t> decoded;
        EXPECT_EQ(Decode(stream, static_cast<int32_t>(size), &decoded),
                  std::make_tuple(true, 0u, static_cast<uint32_t>(coded[0].size())));
        EXPECT_EQ(decoded, data);
      }
    }
  }
}

TEST(Huffman, OneLeafTreeReadsNoCodeBits) {
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    // Nine tree bits; then any number of bytes decodes without reading further.
    std::vector<uint8_t> decoded;
    EXPECT_EQ(Decode({0x40, 0x01}, 100000, &decoded), std::make_tuple(true, 0u, 2u));
    EXPECT_EQ(decoded, std::vector<uint8_t>(100000, 'A'));
  }
}

// A chain of branches, each with a leaf on its right: n branches, n + 1 leaves.
std::vector<uint8_t> ChainTree(uint32_t branches) {
  BitList bits;
  for (uint32_t i = 0; i < branches; ++i) bits.Bit(1);
  for (uint32_t i = 0; i <= branches; ++i) bits.Bit(0).Byte(static_cast<uint8_t>(i));
  // Codes: the deepest leaf (byte 0) is reached by zeros only.
  bits.Field(0, 64).Field(0, 64).Field(0, 64).Field(0, 64);
  return bits.bytes();
}

TEST(Huffman, HostileStreams) {
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    // 511 nodes are the most a tree may have; 513 are refused.
    std::vector<uint8_t> decoded;
    EXPECT_EQ(std::get<0>(Decode(ChainTree(255), 1, &decoded)), true);
    EXPECT_EQ(decoded, std::vector<uint8_t>{0});
    EXPECT_EQ(std::get<1>(Decode(ChainTree(256), 1)), kErrEndOfData);
    // Truncation anywhere fails with end of data.
    const std::vector<uint8_t> data = MakeData(Kind::kSkewed, 3000, 7);
    const std::vector<uint8_t> stream = Code(data);
    for (size_t cut : {size_t{0}, size_t{1}, size_t{5}, stream.size() / 2, stream.size() - 1}) {
      const std::vector<uint8_t> part(stream.begin(), stream.begin() + cut);
      EXPECT_EQ(std::get<1>(Decode(part, 3000)), kErrEndOfData) << cut;
    }
    // Too many bytes asked: the padding decodes to a few bytes, then the data ends.
    EXPECT_EQ(std::get<1>(Decode(stream, 3000 + 8 * 200)), kErrEndOfData);
    EXPECT_EQ(Decode(stream, 0), std::make_tuple(true, 0u, 0u));
    EXPECT_EQ(std::get<1>(Decode(stream, -1)), kErrOutOfRange);
  }
}

TEST(HufmanIO, StatesAndFilterUse) {
  const std::vector<uint8_t> data = MakeData(Kind::kText, 5000, 5);
  uint64_t counts[256] = {};
  for (uint8_t b : data) ++counts[b];

  // Written in pieces through the filter: the same stream as the buffer function.
  XBuffer out;
  XHufmanIO writer(&out);
  ASSERT_TRUE(writer.BuildTree(counts));
  EXPECT_EQ(writer.GetState(), XHufmanIO::kFresh);
  ASSERT_TRUE(writer._Write(data.data(), 1000));
  EXPECT_EQ(writer.GetState(), XHufmanIO::kCoding);
  ASSERT_TRUE(writer._Write(data.data() + 1000, 4000));
  ASSERT_TRUE(writer._Flush());
  EXPECT_EQ(Contents(out), Code(data));
  EXPECT_EQ(writer.EstimateBits(counts), [&] {
    uint64_t bits = 0;
    for (uint32_t s = 0; s < 256; ++s) bits += counts[s] * writer.GetCode(uint8_t(s)).length;
    return bits + writer.GetRoot()->SubtreeBits();
  }());

  // Reading: the first read takes the tree and answers 1; later reads give counts.
  XHufmanIO reader(&out);
  std::vector<uint8_t> back(5000);
  EXPECT_EQ(reader._Read(back.data(), 10), 1u);
  EXPECT_EQ(reader._Read(back.data() + 10, 4990), 4990u);
  EXPECT_EQ(back, data);

  // A write without a tree, a write while the tree is read, a read while it is written.
  XBuffer sink;
  XHufmanIO fresh(&sink);
  EXPECT_FALSE(fresh._Write("x", 1));
  EXPECT_EQ(std::make_tuple(fresh.GetErrorCode(), XError::InternalErrorCode.load()),
            std::make_tuple(kErrInternal, kInternalHufmanNoTree));

  // A reader whose tree read failed stays in state 2, where writes are refused.
  XBuffer empty;
  XHufmanIO failed(&empty);
  EXPECT_EQ(failed._Read(back.data(), 1), 0u);
  EXPECT_EQ(failed.GetState(), XHufmanIO::kReadingTree);
  EXPECT_FALSE(failed._Write("x", 1));
  EXPECT_EQ(std::make_tuple(failed.GetErrorCode(), XError::InternalErrorCode.load()),
            std::make_tuple(kErrInternal, kInternalHufmanWriteState));

  // A tree being written is state 1: a read from a leaf's write fails with 1010.
  class ReadingSink : public XBuffer {
   public:
    XHufmanIO* io = nullptr;
    uint32_t got = 99;
    bool _Write(const void* d, uint32_t n) override {
      if (io != nullptr && io->GetState() == XHufmanIO::kWritingTree) {
        uint8_t b;
        got = io->_Read(&b, 1);
      }
      return XBuffer::_Write(d, n);
    }
  } reading_sink;
  XHufmanIO writing(&reading_sink);
  reading_sink.io = &writing;
  ASSERT_TRUE(writing.BuildTree(counts));
  EXPECT_TRUE(writing._Write(data.data(), 100));
  EXPECT_EQ(reading_sink.got, 0u);
  EXPECT_EQ(std::make_tuple(writing.GetErrorCode(), XError::InternalErrorCode.load()),
            std::make_tuple(kErrInternal, kInternalHufmanReadState));
}

TEST(Huffman, DownstreamFailureIsReported) {
  const std::vector<uint8_t> data = MakeData(Kind::kText, 200000, 9);
  for (CoderPath path : test::kBothPaths) {
    PathScope scope(path);
    test::Sink sink(2);
    EXPECT_FALSE(HufmanCode(sink, data.data(), static_cast<int32_t>(data.size()), 0xFFFFFFFF));
    EXPECT_EQ(sink.GetErrorCode(), kErrTooLong);
  }
}

}  // namespace
}  // namespace tavi
