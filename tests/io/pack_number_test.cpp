//===- pack_number_test.cpp - Packed numbers -------------------------------===//
#include "tavi/io/pack_number.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "tavi/core/buffer.h"
#include "tavi/io/bit_stream.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Source;

template <typename Write>
std::vector<uint8_t> Encode(Write write) {
  XBuffer buffer;
  EXPECT_TRUE(write(buffer));
  return std::vector<uint8_t>(buffer._GetBufferAt(0), buffer.GetStringEnd());
}

TEST(PackNumber, ByteExamples) {
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint32_t{100}); }), Bytes({0x64}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint32_t{252}); }), Bytes({0xFC, 0xFC}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint32_t{300}); }),
            Bytes({0xFD, 0x2C, 0x01}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint32_t{70000}); }),
            Bytes({0xFE, 0x70, 0x11, 0x01}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint32_t{0xFFFFFFFF}); }),
            Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint16_t{253}); }), Bytes({0xFD}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint16_t{254}); }), Bytes({0xFE, 0xFE}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint16_t{300}); }),
            Bytes({0xFF, 0x2C, 0x01}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint64_t{248}); }), Bytes({0xF8, 0xF8}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, uint64_t{1} << 40); }),
            Bytes({0xFD, 0, 0, 0, 0, 0, 0x01}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber16(o, uint32_t{65532}); }),
            Bytes({0xFC, 0xFF}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber16(o, uint32_t{65533}); }),
            Bytes({0xFD, 0xFF, 0xFD, 0xFF}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber(o, int32_t{-3}); }), Bytes({0x07}));
  EXPECT_EQ(Encode([](XIO& o) { return _WritePackNumber32(o, uint64_t{0xFFFFFFFB}); }),
            Bytes({0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF}));
}

// One family: how to write and read a value of it, its last direct value and the
// largest value of its type.
struct Family {
  const char* name;
  std::function<bool(XIO&, uint64_t)> write;
  std::function<bool(XIO&, uint64_t&)> read;
  std::function<void(uint64_t&, const void*, const void**)> get;
  uint64_t direct_max;
  uint64_t type_max;
  uint32_t unit;
  uint32_t min_n;
};

template <typename T>
Family Make(const char* name, bool (*w)(XIO&, T), bool (*r)(XIO&, T&),
            void (*g)(T&, const void*, const void**), uint64_t direct_max, uint32_t unit,
            uint32_t min_n) {
  return Family{name,
                [w](XIO& o, uint64_t v) { return w(o, static_cast<T>(v)); },
                [r](XIO& i, uint64_t& v) {
                  T t;
                  const bool ok = r(i, t);
                  v = t;
                  return ok;
                },
                [g](uint64_t& v, const void* s, const void** n) {
                  T t;
                  g(t, s, n);
                  v = t;
                },
                direct_max,
                std::numeric_limits<T>::max(),
                unit,
                min_n};
}

std::vector<Family> Families() {
  return {
      Make<uint16_t>("8/short", _WritePackNumber, _ReadPackNumber, GetPackNumber, 253, 1, 1),
      Make<uint32_t>("8/long", _WritePackNumber, _ReadPackNumber, GetPackNumber, 251, 1, 1),
      Make<uint64_t>("8/int64", _WritePackNumber, _ReadPackNumber, GetPackNumber, 247, 1, 1),
      Make<uint32_t>("16/long", _WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65532, 2,
                     2),
      Make<uint64_t>("16/int64", _WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65528, 2,
                     2),
      Make<uint64_t>("24/int64", _WritePackNumber24, _ReadPackNumber24, GetPackNumber24, 0xFFFFF9,
                     3, 3),
      Make<uint32_t>("32/long", _WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA,
                     4, 4),
      Make<uint64_t>("32/int64", _WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA,
                     4, 4),
  };
}

uint32_t UsedBytes(uint64_t v) {
  uint32_t n = 1;
  while (n < 8 && (v >> (8 * n)) != 0) ++n;
  return n;
}

// Writes v, checks its length against the family's rule, reads it back from the
// stream and from memory.
void RoundTrip(const Family& f, uint64_t v) {
  SCOPED_TRACE(testing::Message() << f.name << " value " << v);
  XBuffer buffer;
  ASSERT_TRUE(f.write(buffer, v));
  const uint32_t expected = v <= f.direct_max ? f.unit : f.unit + std::max(UsedBytes(v), f.min_n);
  ASSERT_EQ(buffer.GetBufferPos(), expected);
  buffer._Write("!", 1);  // the reader must stop before this
  uint64_t back = ~v;
  ASSERT_TRUE(f.read(buffer, back));
  EXPECT_EQ(back, v);
  EXPECT_EQ(buffer.GetCurrentPos(), expected);
  const void* next = nullptr;
  uint64_t got = ~v;
  f.get(got, buffer.GetBuffer(), &next);
  EXPECT_EQ(got, v);
  EXPECT_EQ(static_cast<const uint8_t*>(next), buffer._GetBufferAt(expected));
}

TEST(PackNumber, EveryFamilyAcrossItsBoundaries) {
  for (const Family& f : Families()) {
    for (uint64_t v : {uint64_t{0}, uint64_t{1}, f.direct_max - 1, f.direct_max, f.direct_max + 1,
                       f.direct_max + 2, f.type_max}) {
      if (v <= f.type_max) RoundTrip(f, v);
    }
    // Every byte-count boundary of the marker form.
    for (uint32_t bits = 8; bits < 64; bits += 8) {
      const uint64_t edge = uint64_t{1} << bits;
      if (edge - 1 <= f.type_max && edge - 1 > f.direct_max) RoundTrip(f, edge - 1);
      if (edge <= f.type_max && edge > f.direct_max) RoundTrip(f, edge);
    }
  }
}

TEST(PackNumber, RandomValuesRoundTrip) {
  std::mt19937_64 rng(11);
  for (const Family& f : Families()) {
    for (int i = 0; i < 2000; ++i) {
      const uint64_t v = (rng() >> (rng() % 64)) & f.type_max;
      RoundTrip(f, v);
    }
  }
}

TEST(PackNumber, ShortStreamsFailWithEndOfData) {
  for (const Family& f : Families()) {
    XBuffer full;
    ASSERT_TRUE(f.write(full, f.type_max));
    for (uint32_t cut = 0; cut < full.GetBufferPos(); ++cut) {
      SCOPED_TRACE(testing::Message() << f.name << " cut at " << cut);
      Source source(std::vector<uint8_t>(full._GetBufferAt(0), full._GetBufferAt(cut)));
      uint64_t v;
      EXPECT_FALSE(f.read(source, v));
      EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
      EXPECT_EQ(source.Left(), 0u);
    }
    Source pending(std::vector<uint8_t>{});
    pending.SetErrorCode(kErrCheckFailed);
    uint64_t v;
    EXPECT_FALSE(f.read(pending, v));
    EXPECT_EQ(pending.GetErrorCode(), kErrCheckFailed);  // an earlier error is kept
  }
  // The marker of four following bytes, then nothing.
  Source marker(Bytes({0xFF}));
  uint32_t v;
  EXPECT_FALSE(_ReadPackNumber(marker, v));
  EXPECT_EQ(marker.GetErrorCode(), kErrEndOfData);
}

TEST(PackNumber, ThirtyTwoBitFormsRefuseLongerValues) {
  Source source(Bytes({0xFC, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5}));  // marker of 5 bytes
  uint32_t v;
  EXPECT_FALSE(_ReadPackNumber32(source, v));
  EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  const uint8_t bytes[] = {0xFC, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5};
  uint64_t wide;
  GetPackNumber32(wide, bytes, nullptr);
  EXPECT_EQ(wide, 0x0504030201u);
}

TEST(PackNumber, SignedMapping) {
  auto code = [](auto write) {
    XBuffer b;
    write(b);
    return std::vector<uint8_t>(b._GetBufferAt(0), b.GetStringEnd());
  };
  EXPECT_EQ(code([](XIO& o) { _WritePackNumber(o, int32_t{0}); }), Bytes({0}));
  EXPECT_EQ(code([](XIO& o) { _WritePackNumber(o, int32_t{-1}); }), Bytes({3}));
  EXPECT_EQ(code([](XIO& o) { _WritePackNumber(o, int64_t{-2}); }), Bytes({5}));
  EXPECT_EQ(code([](XIO& o) { _WritePackNumber(o, int16_t{5}); }), Bytes({10}));
  EXPECT_EQ(code([](XIO& o) { _WritePackNumber16(o, int32_t{-1}); }), Bytes({3, 0}));

  Source one(Bytes({1}));
  int32_t v = 99;
  ASSERT_TRUE(_ReadPackNumber(one, v));
  EXPECT_EQ(v, 0);  // the code 1 is never written and reads as 0

  // The smallest value wraps to the code 1 and so reads back as 0.
  XBuffer b;
  ASSERT_TRUE(_WritePackNumber(b, std::numeric_limits<int64_t>::min()));
  int64_t back = 1;
  ASSERT_TRUE(_ReadPackNumber(b, back));
  EXPECT_EQ(back, 0);
}

TEST(PackNumber, SignedRoundTripsInEveryFamily) {
  std::mt19937_64 rng(5);
  for (int i = 0; i < 3000; ++i) {
    const auto v64 = static_cast<int64_t>(rng() >> (rng() % 64)) * ((i & 1) ? -1 : 1);
    const auto v32 = static_cast<int32_t>(v64 >> 32);
    const auto v16 = static_cast<int16_t>(v64 >> 48);
    XBuffer b;
    ASSERT_TRUE(_WritePackNumber(b, v16));
    ASSERT_TRUE(_WritePackNumber(b, v32));
    ASSERT_TRUE(_WritePackNumber(b, v64));
    ASSERT_TRUE(_WritePackNumber16(b, v32));
    ASSERT_TRUE(_WritePackNumber16(b, v64));
    ASSERT_TRUE(_WritePackNumber32(b, v32));
    ASSERT_TRUE(_WritePackNumber32(b, v64));
    int16_t r16;
    int32_t r32a, r32b, r32c;
    int64_t r64a, r64b, r64c;
    ASSERT_TRUE(_ReadPackNumber(b, r16));
    ASSERT_TRUE(_ReadPackNumber(b, r32a));
    ASSERT_TRUE(_ReadPackNumber(b, r64a));
    ASSERT_TRUE(_ReadPackNumber16(b, r32b));
    ASSERT_TRUE(_ReadPackNumber16(b, r64b));
    ASSERT_TRUE(_ReadPackNumber32(b, r32c));
    ASSERT_TRUE(_ReadPackNumber32(b, r64c));
    EXPECT_EQ(r16, v16);
    EXPECT_EQ(r32a, v32);
    EXPECT_EQ(r32b, v32);
    EXPECT_EQ(r32c, v32);
    EXPECT_EQ(r64a, v64);
    EXPECT_EQ(r64b, v64);
    EXPECT_EQ(r64c, v64);
    const void* p = b.GetBuffer();
    int16_t g16;
    int32_t g32;
    int64_t g64;
    GetPackNumber(g16, p, &p);
    GetPackNumber(g32, p, &p);
    GetPackNumber(g64, p, &p);
    EXPECT_EQ(g16, v16);
    EXPECT_EQ(g32, v32);
    EXPECT_EQ(g64, v64);
    GetPackNumber16(g32, p, &p);
    GetPackNumber16(g64, p, &p);
    GetPackNumber32(g32, p, &p);
    GetPackNumber32(g64, p, &p);
    EXPECT_EQ(g64, v64);
    EXPECT_EQ(p, static_cast<const void*>(b.GetStringEnd()));
  }
}

TEST(PackNumber, UsedCounts) {
  EXPECT_EQ(GetUsedBitCount(0), 1u);
  EXPECT_EQ(GetUsedBitCount(1), 1u);
  EXPECT_EQ(GetUsedBitCount(2), 2u);
  EXPECT_EQ(GetUsedBitCount(255), 8u);
  EXPECT_EQ(GetUsedBitCount(~uint64_t{0}), 64u);
  EXPECT_EQ(GetUsedByteCount(0), 1u);
  EXPECT_EQ(GetUsedByteCount(255), 1u);
  EXPECT_EQ(GetUsedByteCount(256), 2u);
  EXPECT_EQ(GetUsedByteCount(~uint64_t{0}), 8u);
}

TEST(PackNumber, BitForms) {
  XBuffer buffer;
  XBitStream out(&buffer);
  ASSERT_TRUE(WritePackNumber(out, uint32_t{0}));  // 5-bit length 0, one 0 bit
  ASSERT_TRUE(WritePackNumber(out, uint16_t{5}));  // length 2 in 4 bits, then 101
  ASSERT_TRUE(out._Flush());
  // Bits 0-5 are 0; bits 6-9 hold the length 2 (bit 7 set); bits 10-12 hold 101.
  ASSERT_EQ(buffer.GetBufferPos(), 2u);
  EXPECT_EQ(*buffer._GetBufferAt(0), 0x80);
  EXPECT_EQ(*buffer._GetBufferAt(1), 0x14);

  XBuffer empty;
  XBitStream none(&empty);
  uint32_t v;
  EXPECT_FALSE(ReadPackNumber(none, v));
  EXPECT_EQ(none.GetErrorCode(), kErrEndOfData);
  XBuffer cut;
  cut._Write("\x3F\xFF", 2);  // a length field of 63 announces 64 bits; 10 are left
  XBitStream short_value(&cut);
  uint64_t w;
  EXPECT_FALSE(ReadPackNumber(short_value, w));
  EXPECT_EQ(short_value.GetErrorCode(), kErrEndOfData);
}

TEST(PackNumber, BitFormsRoundTripAtEveryOffset) {
  std::mt19937_64 rng(3);
  for (uint32_t offset = 0; offset < 8; ++offset) {
    XBuffer buffer;
    XBitStream out(&buffer);
    ASSERT_TRUE(out.SetBits(uint64_t{0}, offset));
    std::vector<uint64_t> values;
    for (int i = 0; i < 300; ++i) values.push_back(rng() >> (rng() % 64));
    values.push_back(0);
    values.push_back(~uint64_t{0});
    for (uint64_t v : values) {
      ASSERT_TRUE(WritePackNumber(out, static_cast<uint16_t>(v)));
      ASSERT_TRUE(WritePackNumber(out, static_cast<uint32_t>(v)));
      ASSERT_TRUE(WritePackNumber(out, v));
    }
    ASSERT_TRUE(out._Flush());
    XBitStream in(&buffer);
    uint64_t skip;
    ASSERT_TRUE(in.GetBits(skip, offset));
    for (uint64_t v : values) {
      uint16_t a;
      uint32_t b;
      uint64_t c;
      ASSERT_TRUE(ReadPackNumber(in, a));
      ASSERT_TRUE(ReadPackNumber(in, b));
      ASSERT_TRUE(ReadPackNumber(in, c));
      EXPECT_EQ(a, static_cast<uint16_t>(v));
      EXPECT_EQ(b, static_cast<uint32_t>(v));
      EXPECT_EQ(c, v);
    }
    EXPECT_TRUE(buffer.EoB());
  }
}

}  // namespace
}  // namespace tavi
