//===- bit_stream_test.cpp - Bits and bit fields over a byte stream --------===//
#include "tavi/io/bit_stream.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tavi/core/buffer.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Sink;
using test::Source;

// The bit stream's rules applied one bit and one byte at a time, with no word
// arithmetic: the reference the word-based paths must agree with.
struct Reference {
  uint8_t mask = 1, used = 0, current = 0;
  std::vector<uint8_t> out;  // bytes written
  std::vector<uint8_t> in;   // bytes to read
  size_t pos = 0;

  void SetBit(bool bit) {
    used |= mask;
    if (bit) current |= mask;
    mask = static_cast<uint8_t>(mask << 1);
    if (mask == 0) {
      out.push_back(current);
      current = 0, mask = 1, used = 0;
    }
  }
  bool GetBit(bool& bit) {
    if (used == 0) {
      if (pos == in.size()) return false;
      current = in[pos++], mask = 1, used = 1;
    } else {
      used |= mask;
    }
    bit = (current & mask) != 0;
    if (used == 0xFF) {
      mask = 1, used = 0, current = 0;
    } else {
      mask = static_cast<uint8_t>(mask << 1);
    }
    return true;
  }
  void WriteByte(uint8_t b) {
    if (used == 0) {
      out.push_back(b);
      return;
    }
    current |= b & ~used;
    out.push_back(current);
    current = b & used;
  }
  bool ReadByte(uint8_t& b) {
    if (used == 0) {
      if (pos == in.size()) return false;
      b = in[pos++];
      return true;
    }
    if (pos == in.size()) return false;
    uint8_t r = current & ~used;
    current = in[pos++];
    b = r | (current & used);
    return true;
  }
  void Flush() {
    if (used != 0) out.push_back(current);
    mask = 1, used = 0, current = 0;
  }
};

void ExpectSameState(const XBitStream& s, const Reference& r) {
  EXPECT_EQ(s.GetBitMask(), r.mask);
  EXPECT_EQ(s.GetUsedBits(), r.used);
  EXPECT_EQ(s.GetCurrentByte(), r.current);
}

TEST(BitStream, SingleBitsAndFlush) {
  XBuffer buffer;
  XBitStream bits(&buffer);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(bits.SetBit(true));
  EXPECT_EQ(buffer.GetBufferPos(), 0u);
  ASSERT_TRUE(bits._Flush());
  ASSERT_EQ(buffer.GetBufferPos(), 1u);
  EXPECT_EQ(*buffer._GetBufferAt(0), 0x07);
  EXPECT_TRUE(bits.IsByteAligned());
}

TEST(BitStream, FieldCompletesBytesAtOnce) {
  XBuffer buffer;
  XBitStream bits(&buffer);
  ASSERT_TRUE(bits.SetBits(uint64_t{0x1FF}, 9));
  ASSERT_EQ(buffer.GetBufferPos(), 1u);  // the full byte went out during the call
  EXPECT_EQ(*buffer._GetBufferAt(0), 0xFF);
  EXPECT_EQ(bits.GetUsedBits(), 0x01);
  ASSERT_TRUE(bits._Flush());
  ASSERT_EQ(buffer.GetBufferPos(), 2u);
  EXPECT_EQ(*buffer._GetBufferAt(1), 0x01);
}

TEST(BitStream, ZeroBitFieldReadsNothing) {
  Source source(std::string("\xAA"));
  XBitStream bits(&source);
  uint64_t v = 123;
  EXPECT_TRUE(bits.GetBits(v, 0));
  EXPECT_EQ(v, 0u);
  EXPECT_EQ(source.reads, 0);
}

TEST(BitStream, UnalignedByteWriteKeepsBitPositions) {
  Sink sink;
  XBitStream bits(&sink);
  ASSERT_TRUE(bits.SetBits(uint64_t{0x5}, 3));  // pending 101, used 0x07
  ASSERT_TRUE(bits.SetByte(0xAB));
  EXPECT_EQ(sink.bytes, Bytes({0x05 | 0xA8}));
  EXPECT_EQ(bits.GetUsedBits(), 0x07);
  EXPECT_EQ(bits.GetCurrentByte(), 0x03);
}

TEST(BitStream, FieldsOfEveryWidthAtEveryOffsetRoundTrip) {
  std::mt19937_64 rng(7);
  for (uint32_t offset = 0; offset < 8; ++offset) {
    for (uint32_t width = 1; width <= 64; ++width) {
      const uint64_t value = rng();
      XBuffer buffer;
      XBitStream out(&buffer);
      ASSERT_TRUE(out.SetBits(uint64_t{0x55}, offset));
      ASSERT_TRUE(out.SetBits(value, width));
      ASSERT_TRUE(out.SetBits(uint64_t{1}, 1));
      ASSERT_TRUE(out._Flush());
      EXPECT_EQ(buffer.GetBufferPos(), (offset + width + 1 + 7) / 8);

      XBitStream in(&buffer);
      uint64_t lead, got, marker;
      ASSERT_TRUE(in.GetBits(lead, offset));
      ASSERT_TRUE(in.GetBits(got, width));
      ASSERT_TRUE(in.GetBits(marker, 1));
      const uint64_t mask = width == 64 ? ~uint64_t{0} : (uint64_t{1} << width) - 1;
      EXPECT_EQ(got, value & mask) << "offset " << offset << " width " << width;
      EXPECT_EQ(marker, 1u);
      EXPECT_EQ(lead, 0x55u & ((1u << offset) - 1));
    }
  }
}

TEST(BitStream, BytesAtEveryOffsetAreExactInverses) {
  for (uint32_t offset = 0; offset < 8; ++offset) {
    XBuffer buffer;
    XBitStream out(&buffer);
    std::vector<uint8_t> data(3000);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 37 + offset);
    ASSERT_TRUE(out.SetBits(uint64_t{0}, offset));
    ASSERT_TRUE(out._Write(data.data(), static_cast<uint32_t>(data.size())));
    ASSERT_TRUE(out.SetByte(0x9C));
    ASSERT_TRUE(out._Flush());

    XBitStream in(&buffer);
    uint64_t skip;
    ASSERT_TRUE(in.GetBits(skip, offset));
    std::vector<uint8_t> back(data.size());
    ASSERT_EQ(in._Read(back.data(), static_cast<uint32_t>(back.size())), back.size());
    EXPECT_EQ(back, data) << "offset " << offset;
    uint8_t last;
    ASSERT_TRUE(in.GetByte(last));
    EXPECT_EQ(last, 0x9C);
  }
}

// Random mixes of fields, bits and bytes produce the reference's bytes and state.
TEST(BitStream, AgreesWithBitByBitReference) {
  std::mt19937_64 rng(2024);
  for (int round = 0; round < 200; ++round) {
    Reference ref;
    XBuffer buffer;
    XBitStream bits(&buffer);
    struct Op {
      int kind;
      uint64_t value;
      uint32_t count;
    };
    std::vector<Op> ops;
    for (int i = 0; i < 40; ++i) {
      Op op{static_cast<int>(rng() % 4), rng(), static_cast<uint32_t>(rng() % 70)};
      ops.push_back(op);
      switch (op.kind) {
        case 0:
          ASSERT_TRUE(bits.SetBits(op.value, op.count));
          for (uint32_t b = 0; b < op.count; ++b) ref.SetBit(b < 64 && ((op.value >> b) & 1));
          break;
        case 1:
          ASSERT_TRUE(bits.SetBit(op.value & 1));
          ref.SetBit(op.value & 1);
          break;
        case 2: {
          uint8_t data[5];
          for (auto& d : data) d = static_cast<uint8_t>(rng());
          const uint32_t n = op.count % 6;
          ASSERT_TRUE(bits._Write(data, n));
          for (uint32_t k = 0; k < n; ++k) ref.WriteByte(data[k]);
          break;
        }
        default:
          ASSERT_TRUE(bits.SetBits(&op.value, op.count % 65));
          for (uint32_t b = 0; b < op.count % 65; ++b) ref.SetBit((op.value >> b) & 1);
      }
      ExpectSameState(bits, ref);
      ASSERT_EQ(buffer.GetBufferPos(), ref.out.size());
    }
    ASSERT_TRUE(bits._Flush());
    ref.Flush();
    ASSERT_EQ(std::vector<uint8_t>(buffer._GetBufferAt(0), buffer.GetStringEnd()), ref.out);

    // Read the same bytes back with a different random split, against the reference.
    Reference rd;
    rd.in = ref.out;
    XBitStream reader(&buffer);
    for (;;) {
      const int kind = static_cast<int>(rng() % 3);
      const uint32_t count = static_cast<uint32_t>(rng() % 66);
      if (kind == 0) {
        uint64_t v;
        uint64_t expect = 0;
        bool ok = true;
        for (uint32_t b = 0; b < count && ok; ++b) {
          bool bit;
          ok = rd.GetBit(bit);
          if (ok && bit && b < 64) expect |= uint64_t{1} << b;
        }
        const bool got = reader.GetBits(v, count);
        ASSERT_EQ(got, ok);
        if (!ok) break;
        EXPECT_EQ(v, expect);
      } else if (kind == 1) {
        bool bit, expect;
        const bool ok = rd.GetBit(expect);
        ASSERT_EQ(reader.GetBit(bit), ok);
        if (!ok) break;
        EXPECT_EQ(bit, expect);
      } else {
        uint8_t b, expect;
        const bool ok = rd.ReadByte(expect);
        ASSERT_EQ(reader.GetByte(b), ok);
        if (!ok) break;
        EXPECT_EQ(b, expect);
      }
      ExpectSameState(reader, rd);
      ASSERT_EQ(buffer.GetCurrentPos(), rd.pos);  // never reads ahead
    }
  }
}

TEST(BitStream, WordArraysRoundTrip) {
  const uint64_t words[3] = {0x0123456789ABCDEFull, 0xFEDCBA9876543210ull, 0x3FFFull};
  XBuffer buffer;
  XBitStream out(&buffer);
  ASSERT_TRUE(out.SetBit(true));
  ASSERT_TRUE(out.SetBits(words, 128 + 14));
  ASSERT_TRUE(out._Flush());
  EXPECT_EQ(buffer.GetBufferPos(), (1u + 142 + 7) / 8);

  XBitStream in(&buffer);
  bool first;
  uint64_t back[3] = {1, 1, ~uint64_t{0}};
  ASSERT_TRUE(in.GetBit(first));
  ASSERT_TRUE(in.GetBits(back, 142));
  EXPECT_EQ(back[0], words[0]);
  EXPECT_EQ(back[1], words[1]);
  EXPECT_EQ(back[2], words[2]);  // the rest of the last word is 0
}

TEST(BitStream, FieldsLongerThanAWordCarryZeros) {
  XBuffer buffer;
  XBitStream out(&buffer);
  ASSERT_TRUE(out.SetBits(~uint64_t{0}, 72));
  ASSERT_TRUE(out._Flush());
  ASSERT_EQ(buffer.GetBufferPos(), 9u);
  EXPECT_EQ(*buffer._GetBufferAt(8), 0);
  XBitStream in(&buffer);
  uint64_t v;
  ASSERT_TRUE(in.GetBits(v, 72));
  EXPECT_EQ(v, ~uint64_t{0});
  EXPECT_TRUE(buffer.EoB());
}

TEST(BitStream, ReadingPastTheEndFailsWithTheNextStreamsError) {
  XBuffer buffer;
  buffer._Write("\xFF", 1);
  XBitStream in(&buffer);
  in.SetErrorCode(kErrCheckFailed);
  uint64_t v;
  EXPECT_FALSE(in.GetBits(v, 12));
  EXPECT_TRUE(in.IsOk());  // the next stream's "no error" was imported
  EXPECT_TRUE(buffer.EoB());

  Source source(std::string("\x01\x02", 2));
  XBitStream partial(&source);
  partial.SetErrorCode(kErrCheckFailed);
  EXPECT_FALSE(partial.GetBits(v, 24));  // two of three bytes arrived
  EXPECT_TRUE(partial.IsOk());

  XBitStream ended(&source);
  uint8_t byte;
  EXPECT_FALSE(ended.GetByte(byte));
}

TEST(BitStream, WriteFailuresAreImported) {
  Sink sink;
  sink.fail_at = 1;
  XBitStream bits(&sink);
  EXPECT_TRUE(bits.SetBits(uint64_t{1}, 7));
  EXPECT_FALSE(bits.SetBits(uint64_t{1}, 2));
  EXPECT_EQ(bits.GetErrorCode(), kErrTooLong);

  Sink flush_sink;
  flush_sink.fail_flush = true;
  XBitStream f(&flush_sink);
  f.SetBit(true);
  EXPECT_FALSE(f._Flush());
  EXPECT_EQ(flush_sink.bytes, Bytes({1}));
  EXPECT_EQ(f.GetErrorCode(), kErrTooLong);
}

}  // namespace
}  // namespace tavi
