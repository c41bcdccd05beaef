//===- bit_stream_test.cpp - Bits and bit fields over a byte stream --------===//
#include "tavi/io/bit_stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <tuple>
#include <vector>

#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Data;
using test::Sink;

// The bit stream's rules applied one bit and one byte at a time, with no word
// arithmetic: the reference the word-based paths must agree with.
struct Reference {
  uint8_t mask = 1, used = 0, current = 0;
  std::vector<uint8_t> out;  // bytes written
  std::vector<uint8_t> in;   // bytes to read
  size_t pos = 0;

  void Reset() { mask = 1, used = 0, current = 0; }
  void SetBit(bool bit) {
    used |= mask;
    if (bit) current |= mask;
    mask = static_cast<uint8_t>(mask << 1);
    if (mask == 0) out.push_back(current), Reset();
  }
  bool GetBit(bool& bit) {
    if (used == 0) {
      if (pos == in.size()) return false;
      current = in[pos++], mask = 1, used = 1;
    } else {
      used |= mask;
    }
    bit = (current & mask) != 0;
    if (used == 0xFF) return Reset(), true;
    mask = static_cast<uint8_t>(mask << 1);
    return true;
  }
  // A byte keeps its bit positions: its free positions complete the pending byte,
  // its used positions start the next one.
  void WriteByte(uint8_t b) {
    out.push_back(static_cast<uint8_t>(current | (b & ~used)));
    current = b & used;
  }
  bool ReadByte(uint8_t& b) {
    if (pos == in.size()) return false;
    const uint8_t next = in[pos++];
    b = used != 0 ? static_cast<uint8_t>((current & ~used) | (next & used)) : next;
    if (used != 0) current = next;
    return true;
  }
  void Flush() {
    if (used != 0) out.push_back(current);
    Reset();
  }
};

// The pending state: next bit mask, used positions and pending byte.
using State = std::tuple<int, int, int>;
State StateOf(const XBitStream& s) {
  return {s.GetBitMask(), s.GetUsedBits(), s.GetCurrentByte()};
}
State StateOf(const Reference& r) {
  return {r.mask, r.used, r.current};
}

TEST(BitStream, ByteExamples) {
  Sink sink;
  XBitStream bits(&sink);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(bits.SetBit(true));
  EXPECT_TRUE(sink.bytes.empty()) << "a partial byte stays pending";
  EXPECT_EQ(StateOf(bits), State(0x08, 0x07, 0x07));
  ASSERT_TRUE(bits._Flush());
  EXPECT_EQ(StateOf(bits), State(0x01, 0, 0));
  // The full byte goes out during the call.
  ASSERT_TRUE(bits.SetBits(uint64_t{0x1FF}, 9));
  EXPECT_EQ(sink.bytes, Bytes({0x07, 0xFF}));
  EXPECT_EQ(StateOf(bits), State(0x02, 0x01, 0x01));
  ASSERT_TRUE(bits.SetBits(uint64_t{0x2}, 2) && bits.SetByte(0xAB));  // pending 101, used 0x07
  EXPECT_EQ(StateOf(bits), State(0x08, 0x07, 0x03));
  ASSERT_TRUE(bits._Flush());
  EXPECT_EQ(sink.bytes, Bytes({0x07, 0xFF, 0x05 | 0xA8, 0x03}));
}

// Fields of widths 1 to 64 back to back start at every offset for each width; the
// byte run and a word array of 142 bits then start at the offset of the lead field.
TEST(BitStream, FieldsBytesAndWordsAtEveryOffsetRoundTrip) {
  std::mt19937_64 rng(7);
  std::vector<uint8_t> data(3000);  // more than one round of the 1024-byte area
  const uint64_t words[3] = {0x0123456789ABCDEFull, 0xFEDCBA9876543210ull, 0x3FFFull};
  for (uint32_t offset = 0; offset < 8; ++offset) {
    SCOPED_TRACE(offset);
    uint64_t values[65];
    for (uint64_t& v : values) v = rng();
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 37 + offset);
    XBuffer buffer;
    XBitStream out(&buffer);
    ASSERT_TRUE(out.SetBits(uint64_t{0x55}, offset));
    for (uint32_t width = 1; width <= 64; ++width) ASSERT_TRUE(out.SetBits(values[width], width));
    ASSERT_TRUE(out._Write(data.data(), 3000) && out.SetByte(0x9C) && out.SetBits(words, 142) &&
                out._Flush());
    EXPECT_EQ(buffer.GetBufferPos(), (offset + 64 * 65 / 2 + 8 * 3001 + 142 + 7) / 8);

    XBitStream in(&buffer);
    uint64_t got;
    ASSERT_TRUE(in.GetBits(got, offset));
    EXPECT_EQ(got, 0x55u & ((1u << offset) - 1));
    for (uint32_t width = 1; width <= 64; ++width) {
      ASSERT_TRUE(in.GetBits(got, width));
      EXPECT_EQ(got, width == 64 ? values[width] : values[width] & ((uint64_t{1} << width) - 1));
    }
    std::vector<uint8_t> back(data.size());
    uint8_t last;
    uint64_t back_words[3] = {1, 1, ~uint64_t{0}};  // the rest of the last word becomes 0
    ASSERT_EQ(in._Read(back.data(), 3000), 3000u);
    ASSERT_TRUE(in.GetByte(last) && in.GetBits(back_words, 142));
    EXPECT_TRUE(back == data && last == 0x9C);
    EXPECT_EQ(std::vector<uint64_t>(back_words, back_words + 3),
              std::vector<uint64_t>(words, words + 3));
  }
}

// Random mixes of fields (empty and longer than a word too), bits and bytes produce the
// reference's bytes and state, and read back the same way split differently.
TEST(BitStream, AgreesWithBitByBitReference) {
  std::mt19937_64 rng(2024);
  for (int round = 0; round < 200; ++round) {
    Reference ref;
    XBuffer buffer;
    XBitStream bits(&buffer);
    for (int i = 0; i < 40; ++i) {
      uint64_t value = rng();
      const auto count = static_cast<uint32_t>(rng() % 70);
      switch (rng() % 4) {
        case 0:
          ASSERT_TRUE(bits.SetBits(value, count));
          for (uint32_t b = 0; b < count; ++b) ref.SetBit(b < 64 && ((value >> b) & 1));
          break;
        case 1:
          ASSERT_TRUE(bits.SetBit(value & 1));
          ref.SetBit(value & 1);
          break;
        case 2: {
          uint8_t data[8];
          std::memcpy(data, &value, 8);
          ASSERT_TRUE(bits._Write(data, count % 6));
          for (uint32_t k = 0; k < count % 6; ++k) ref.WriteByte(data[k]);
          break;
        }
        default:
          ASSERT_TRUE(bits.SetBits(&value, count % 65));
          for (uint32_t b = 0; b < count % 65; ++b) ref.SetBit((value >> b) & 1);
      }
      EXPECT_EQ(StateOf(bits), StateOf(ref));
      ASSERT_EQ(Data(buffer), ref.out);
    }
    ASSERT_TRUE(bits._Flush());
    ref.Flush();
    ASSERT_EQ(Data(buffer), ref.out);

    Reference rd;
    rd.in = ref.out;
    XBitStream reader(&buffer);
    for (;;) {
      const auto count = static_cast<uint32_t>(rng() % 66);
      bool ok = true, got_ok, bit = false;
      uint64_t got = 0, expect = 0;
      uint8_t byte = 0, expect_byte = 0;
      switch (rng() % 3) {
        case 0:
          for (uint32_t b = 0; b < count && ok; ++b) {
            ok = rd.GetBit(bit);
            if (ok && bit && b < 64) expect |= uint64_t{1} << b;
          }
          got_ok = reader.GetBits(got, count);
          break;
        case 1:
          ok = rd.GetBit(bit);
          expect = bit;
          got_ok = reader.GetBit(bit);
          got = bit;
          break;
        default:
          ok = rd.ReadByte(expect_byte);
          expect = expect_byte;
          got_ok = reader.GetByte(byte);
          got = byte;
      }
      ASSERT_EQ(got_ok, ok);
      if (!ok) break;
      EXPECT_EQ(got, expect);
      EXPECT_EQ(StateOf(reader), StateOf(rd));
      ASSERT_EQ(buffer.GetCurrentPos(), rd.pos) << "never reads ahead";
    }
  }
}

TEST(BitStream, FailuresComeFromTheNextStream) {
  XBuffer buffer;
  buffer._Write("\xFF", 1);
  XBitStream in(&buffer);
  in.SetErrorCode(kErrCheckFailed);
  uint64_t v;
  EXPECT_FALSE(in.GetBits(v, 12));
  EXPECT_TRUE(in.IsOk()) << "the next stream's \"no error\" was imported";
  EXPECT_TRUE(buffer.EoB());
  test::Source source(std::string("\x01\x02", 2));
  XBitStream partial(&source);
  partial.SetErrorCode(kErrCheckFailed);
  EXPECT_FALSE(partial.GetBits(v, 24)) << "two of three bytes arrived";
  EXPECT_TRUE(partial.IsOk());
  uint8_t byte;
  EXPECT_FALSE(XBitStream(&source).GetByte(byte));

  Sink sink(1);
  XBitStream bits(&sink);
  EXPECT_TRUE(bits.SetBits(uint64_t{1}, 7));
  EXPECT_EQ(test::Fail(bits.SetBits(uint64_t{1}, 2), bits), kErrTooLong);
  Sink flush_sink;
  flush_sink.fail_flush = true;
  XBitStream f(&flush_sink);
  f.SetBit(true);
  EXPECT_EQ(test::Fail(f._Flush(), f), kErrTooLong);
  EXPECT_EQ(flush_sink.bytes, Bytes({1}));
}

}  // namespace
}  // namespace tavi
