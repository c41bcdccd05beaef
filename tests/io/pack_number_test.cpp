//===- pack_number_test.cpp - Packed numbers -------------------------------===//
#include "tavi/io/pack_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <tuple>
#include <type_traits>
#include <vector>

#include "tavi/io/bit_stream.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Data;
using test::Source;

template <typename T>
std::vector<uint8_t> Enc(bool (*write)(XIO&, T), T value) {
  XBuffer buffer;
  EXPECT_TRUE(write(buffer, value));
  return Data(buffer);
}

TEST(PackNumber, ByteExamples) {
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber, 100), Bytes({0x64}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber, 252), Bytes({0xFC, 0xFC}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber, 300), Bytes({0xFD, 0x2C, 0x01}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber, 70000), Bytes({0xFE, 0x70, 0x11, 0x01}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber, 0xFFFFFFFF), Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(Enc<uint16_t>(_WritePackNumber, 253), Bytes({0xFD}));
  EXPECT_EQ(Enc<uint16_t>(_WritePackNumber, 254), Bytes({0xFE, 0xFE}));
  EXPECT_EQ(Enc<uint16_t>(_WritePackNumber, 300), Bytes({0xFF, 0x2C, 0x01}));
  EXPECT_EQ(Enc<uint64_t>(_WritePackNumber, 248), Bytes({0xF8, 0xF8}));
  EXPECT_EQ(Enc<uint64_t>(_WritePackNumber, uint64_t{1} << 40), Bytes({0xFD, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber16, 65532), Bytes({0xFC, 0xFF}));
  EXPECT_EQ(Enc<uint32_t>(_WritePackNumber16, 65533), Bytes({0xFD, 0xFF, 0xFD, 0xFF}));
  EXPECT_EQ(Enc<uint64_t>(_WritePackNumber32, 0xFFFFFFFB),
            Bytes({0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF}));
  // Signed values: v >= 0 -> 2v, v < 0 -> 2|v| + 1 (not zigzag).
  EXPECT_EQ(Enc<int32_t>(_WritePackNumber, 0), Bytes({0}));
  EXPECT_EQ(Enc<int32_t>(_WritePackNumber, -1), Bytes({3}));
  EXPECT_EQ(Enc<int64_t>(_WritePackNumber, -2), Bytes({5}));
  EXPECT_EQ(Enc<int32_t>(_WritePackNumber, -3), Bytes({7}));
  EXPECT_EQ(Enc<int16_t>(_WritePackNumber, 5), Bytes({10}));
  EXPECT_EQ(Enc<int32_t>(_WritePackNumber16, -1), Bytes({3, 0}));
}

TEST(PackNumber, TheSignedCodeOneReadsAsZero) {
  // The code 1 is never written: the smallest value of each signed type wraps to it
  // and so reads back as 0.
  EXPECT_EQ(Enc<int64_t>(_WritePackNumber, std::numeric_limits<int64_t>::min()), Bytes({1}));
  EXPECT_EQ(Enc<int32_t>(_WritePackNumber32, std::numeric_limits<int32_t>::min()),
            Bytes({1, 0, 0, 0}));
  Source one(Bytes({1}));
  int32_t v = 99;
  ASSERT_TRUE(_ReadPackNumber(one, v));
  EXPECT_EQ(v, 0);
}

// The sign mapping in the width of T (the identity for unsigned types), as a reference.
template <typename T>
uint64_t CodeOf(T v) {
  if constexpr (std::is_unsigned_v<T>) {
    return v;
  } else {
    const uint64_t code = v >= 0 ? 2 * uint64_t(v) : 2 * uint64_t(-(v + 1)) + 3;
    return static_cast<std::make_unsigned_t<T>>(code);
  }
}
template <typename T>
T ValueOf(uint64_t code) {
  if constexpr (std::is_unsigned_v<T>) {
    return static_cast<T>(code);
  } else {
    const auto half = static_cast<T>(code >> 1);
    return (code & 1) != 0 ? static_cast<T>(-half) : half;
  }
}

uint32_t UsedBytes(uint64_t v) {
  uint32_t n = 1;
  while (n < 8 && (v >> (8 * n)) != 0) ++n;
  return n;
}

// One family and type, seen through the unsigned codes it stores. Each code near the
// family's boundaries (the last direct code, every byte-count step of the marker form,
// the largest code) and many random ones are written with the length the rule gives
// (a first unit of `unit` bytes; above direct_max a marker and the used bytes, at
// least `unit` of them), read back from a stream without reading ahead, and decoded
// from memory. Every cut of the longest code fails with the end of data.
template <typename T>
void CheckFamily(bool (*write)(XIO&, T), bool (*read)(XIO&, T&),
                 void (*get)(T&, const void*, const void**), uint64_t direct_max, uint32_t unit) {
  SCOPED_TRACE(testing::Message() << "unit " << unit << ", " << (std::is_signed_v<T> ? "" : "u")
                                  << "int" << 8 * sizeof(T));
  const uint64_t code_max = std::numeric_limits<std::make_unsigned_t<T>>::max();
  std::vector<uint64_t> codes = {0, 1, direct_max - 1, direct_max, direct_max + 1, direct_max + 2};
  for (uint32_t bits = 8; bits <= 64; bits += 8) {
    codes.insert(codes.end(), {(uint64_t{1} << (bits - 1) << 1) - 1, uint64_t{1} << (bits % 64)});
  }
  std::mt19937_64 rng(11);
  for (int i = 0; i < 2000; ++i) codes.push_back(rng() >> (rng() % 64));
  for (uint64_t code : codes) {
    code &= code_max;
    if (std::is_signed_v<T> && code == 1) continue;  // never written
    SCOPED_TRACE(testing::Message() << "code " << code);
    XBuffer buffer;
    ASSERT_TRUE(write(buffer, ValueOf<T>(code)));
    const uint32_t size = code <= direct_max ? unit : unit + std::max(UsedBytes(code), unit);
    ASSERT_EQ(buffer.GetBufferPos(), size);
    buffer._Write("!", 1);  // the reader must stop before this
    T back{};
    ASSERT_TRUE(read(buffer, back));
    EXPECT_EQ(CodeOf(back), code);
    EXPECT_EQ(buffer.GetCurrentPos(), size);
    const void* next = nullptr;
    get(back, buffer.GetBuffer(), &next);
    EXPECT_EQ(CodeOf(back), code);
    EXPECT_EQ(next, static_cast<const void*>(buffer._GetBufferAt(size)));
  }
  XBuffer full;
  ASSERT_TRUE(write(full, ValueOf<T>(code_max)));
  for (uint32_t cut = 0; cut < full.GetBufferPos(); ++cut) {
    Source source(std::vector<uint8_t>(full._GetBufferAt(0), full._GetBufferAt(cut)));
    T v;
    EXPECT_EQ(test::Fail(read(source, v), source), kErrEndOfData) << "cut at " << cut;
    EXPECT_EQ(source.Left(), 0u);
  }
  Source pending(std::string{});
  pending.SetErrorCode(kErrCheckFailed);
  T v;
  EXPECT_EQ(test::Fail(read(pending, v), pending), kErrCheckFailed) << "an error is kept";
}

TEST(PackNumber, EveryFamilyAcrossItsBoundaries) {
  CheckFamily<uint16_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 253, 1);
  CheckFamily<int16_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 253, 1);
  CheckFamily<uint32_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 251, 1);
  CheckFamily<int32_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 251, 1);
  CheckFamily<uint64_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 247, 1);
  CheckFamily<int64_t>(_WritePackNumber, _ReadPackNumber, GetPackNumber, 247, 1);
  CheckFamily<uint32_t>(_WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65532, 2);
  CheckFamily<int32_t>(_WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65532, 2);
  CheckFamily<uint64_t>(_WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65528, 2);
  CheckFamily<int64_t>(_WritePackNumber16, _ReadPackNumber16, GetPackNumber16, 65528, 2);
  CheckFamily<uint64_t>(_WritePackNumber24, _ReadPackNumber24, GetPackNumber24, 0xFFFFF9, 3);
  CheckFamily<uint32_t>(_WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA, 4);
  CheckFamily<int32_t>(_WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA, 4);
  CheckFamily<uint64_t>(_WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA, 4);
  CheckFamily<int64_t>(_WritePackNumber32, _ReadPackNumber32, GetPackNumber32, 0xFFFFFFFA, 4);
}

TEST(PackNumber, ThirtyTwoBitFormsRefuseLongerValues) {
  const std::vector<uint8_t> bytes = Bytes({0xFC, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5});  // 5 bytes
  Source source(bytes), signed_source(bytes);
  uint32_t v;
  int32_t s;
  EXPECT_EQ(test::Fail(_ReadPackNumber32(source, v), source), kErrEndOfData);
  EXPECT_EQ(test::Fail(_ReadPackNumber32(signed_source, s), signed_source), kErrEndOfData);
  uint64_t wide;
  GetPackNumber32(wide, bytes.data(), nullptr);
  EXPECT_EQ(wide, 0x0504030201u);
}

TEST(PackNumber, UsedCounts) {
  const struct {
    uint64_t value;
    uint32_t bits, bytes;
  } kCases[] = {{0, 1, 1}, {1, 1, 1}, {2, 2, 1}, {255, 8, 1}, {256, 9, 2}, {~0ull, 64, 8}};
  for (const auto& c : kCases) {
    EXPECT_EQ(GetUsedBitCount(c.value), c.bits) << c.value;
    EXPECT_EQ(GetUsedByteCount(c.value), c.bytes) << c.value;
  }
}

TEST(PackNumber, BitForms) {
  // Bits 0-5: the 5-bit length 0 and one 0 bit; bits 6-9: the length 2 of a 16-bit
  // form (bit 7 set); bits 10-12: 101.
  XBuffer example;
  XBitStream bits(&example);
  ASSERT_TRUE(WritePackNumber(bits, uint32_t{0}) && WritePackNumber(bits, uint16_t{5}));
  ASSERT_TRUE(bits._Flush());
  EXPECT_EQ(Data(example), Bytes({0x80, 0x14}));

  std::mt19937_64 rng(3);
  std::vector<uint64_t> values = {0, ~uint64_t{0}};
  for (int i = 0; i < 300; ++i) values.push_back(rng() >> (rng() % 64));
  for (uint32_t offset = 0; offset < 8; ++offset) {
    XBuffer buffer;
    XBitStream out(&buffer);
    ASSERT_TRUE(out.SetBits(uint64_t{0}, offset));
    for (uint64_t v : values) {
      ASSERT_TRUE(WritePackNumber(out, static_cast<uint16_t>(v)) &&
                  WritePackNumber(out, static_cast<uint32_t>(v)) && WritePackNumber(out, v));
    }
    ASSERT_TRUE(out._Flush());
    XBitStream in(&buffer);
    uint64_t skip;
    ASSERT_TRUE(in.GetBits(skip, offset));
    for (uint64_t v : values) {
      std::tuple<uint16_t, uint32_t, uint64_t> got;
      ASSERT_TRUE(ReadPackNumber(in, std::get<0>(got)) && ReadPackNumber(in, std::get<1>(got)) &&
                  ReadPackNumber(in, std::get<2>(got)));
      EXPECT_EQ(got, std::make_tuple(static_cast<uint16_t>(v), static_cast<uint32_t>(v), v));
    }
    EXPECT_TRUE(buffer.EoB());
  }
  XBuffer cut;
  XBitStream reader(&cut);
  uint64_t w;
  EXPECT_EQ(test::Fail(ReadPackNumber(reader, w), reader), kErrEndOfData);  // nothing at all
  reader.ResetError();
  cut._Write("\x3F\xFF", 2);  // a length field of 63 announces 64 bits; 10 are left
  EXPECT_EQ(test::Fail(ReadPackNumber(reader, w), reader), kErrEndOfData);
}

}  // namespace
}  // namespace tavi
