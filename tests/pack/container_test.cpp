//===- container_test.cpp - The packed container ---------------------------===//
#include "tavi/pack/container.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "crypt/internal/xor_cipher.h"
#include "io/test_streams.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/aes256.h"
#include "tavi/crypt/crc32.h"
#include "tavi/crypt/sha256.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Data;
using Vec = std::vector<uint8_t>;

struct Result {
  bool ok;
  uint32_t error;
  Vec bytes;
};

Result Pack(const Vec& data, uint32_t flags, uint32_t methods,
            const char16_t* password = u"pass word") {
  XBuffer out;
  strXPackRecord r;
  r.flags = flags;
  r.stream = &out;
  r.password = password;
  r.data = data.data();
  r.size_low = static_cast<uint32_t>(data.size());
  r.methods = methods;
  const bool ok = XPack(&r);
  return {ok, out.GetErrorCode(), Data(out)};
}

// Unpacks stream; error is the stream's error, bytes what reached the output. A memory
// buffer as the stream takes the in-memory path, any other stream the filter chain.
Result Unpack(const Vec& stream, uint32_t flags = 0, const char16_t* password = u"pass word",
              bool from_memory = true) {
  XBuffer memory, out;
  test::Source other(stream);
  if (!stream.empty()) memory._Write(stream.data(), static_cast<uint32_t>(stream.size()));
  XIO& in = from_memory ? static_cast<XIO&>(memory) : other;
  strXUnpackRecord r;
  r.flags = flags;
  r.stream = &in;
  r.password = password;
  r.output = &out;
  const bool ok = XPack(&r);
  return {ok, in.GetErrorCode(), Data(out)};
}

// Unpacks through both paths, which must agree, and returns the result.
Result UnpackBoth(const Vec& stream, uint32_t flags = 0, const char16_t* password = u"pass word") {
  const Result memory = Unpack(stream, flags, password, true);
  const Result chain = Unpack(stream, flags, password, false);
  EXPECT_EQ(memory.ok, chain.ok);
  EXPECT_EQ(memory.error, chain.error);
  EXPECT_EQ(memory.bytes, chain.bytes);
  return memory;
}

uint32_t Word(const Vec& v, size_t at) {
  return v[at] | v[at + 1] << 8 | v[at + 2] << 16 | uint32_t(v[at + 3]) << 24;
}

Vec Cat(std::initializer_list<Vec> parts) {
  Vec all;
  for (const Vec& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

Vec CrcOf(const Vec& v) {
  uint32_t crc = 0;
  XHashCRC32(crc, v.data(), static_cast<uint32_t>(v.size()));
  return Bytes({int(crc & 0xFF), int(crc >> 8 & 0xFF), int(crc >> 16 & 0xFF), int(crc >> 24)});
}

Vec HashOf(const Vec& v) {
  int32_t digest[8];
  XHashSHA256(digest, v.data(), static_cast<int32_t>(v.size()));
  const auto* p = reinterpret_cast<const uint8_t*>(digest);
  return Vec(p, p + 32);
}

// Kinds of data: one repeated value, English-like text, two values at random,
// random bytes, and random bytes of which three stretches in four repeat earlier ones.
Vec Make(int kind, size_t size, uint32_t seed = 1) {
  std::mt19937 rng(seed);
  Vec v(size);
  size_t distance = 0;
  static const char kText[] = "the quick brown fox jumps over the lazy dog, then packs its bags. ";
  for (size_t i = 0; i < size; ++i) {
    switch (kind) {
      case 0:
        v[i] = 'z';
        break;
      case 1:
        v[i] = static_cast<uint8_t>(kText[(i * 7 + i / 61) % (sizeof kText - 1)]);
        break;
      case 2:
        v[i] = (rng() & 1) ? 'a' : 'b';
        break;
      case 3:
        v[i] = static_cast<uint8_t>(rng());
        break;
      default:
        if (i % 64 == 0) distance = (i > 300 && rng() % 4 != 0) ? 5 + rng() % 296 : 0;
        v[i] = distance ? v[i - distance] : static_cast<uint8_t>(rng());
        break;
    }
  }
  return v;
}

TEST(XPack, StoredLayoutByteForByte) {
  const Vec data = Make(3, 21);
  const Vec counted = Cat({Bytes({21, 0}), data});
  const Vec body = Cat({counted, CrcOf(counted), HashOf(counted)});
  // Method 0, flags 3, the count as a 16-bit-unit packed number, the bytes, the CRC of
  // count and bytes, the hash of count and bytes.
  EXPECT_EQ(Pack(data, 0x3, 0).bytes, Cat({Bytes({0, 0, 0, 0, 3, 0, 0, 0}), body}));
  // Without the flags word the reader must be given the flags.
  const Result bare = Pack(data, 0x80000003, 0);
  EXPECT_EQ(bare.bytes, Cat({Bytes({0, 0, 0, 0}), body}));
  EXPECT_EQ(Unpack(bare.bytes, 0x80000003).bytes, data);
  EXPECT_FALSE(Unpack(bare.bytes).ok);
  // A count beyond 65532 takes a marker unit and the count's two bytes.
  const Vec big = Make(3, 65533);
  const Vec big_packed = Pack(big, 0x80000001, 0).bytes;
  EXPECT_EQ(Vec(big_packed.begin() + 4, big_packed.begin() + 10),
            Bytes({0xFD, 0xFF, 0xFD, 0xFF, big[0], big[1]}));
}

// Huffman gets the best length in bytes as its limit in bits: it wins over stored
// bytes only for a block of one value (a 9-bit tree and codes of 0 bits: the leaf's
// flag bit 0, then its byte, which keeps its bit positions at the bit offset).
TEST(XPack, MethodChoice) {
  EXPECT_EQ(Pack(Make(0, 1000), 0, 1).bytes,
            Bytes({1, 0, 0, 0, 0, 0, 0, 0, 0xE8, 0x03, 0x7A, 0x00}));
  const struct {
    int kind;
    uint32_t methods, method;
  } cases[] = {{3, 3, 0}, {1, 1, 0}, {2, 1, 0}, {0, 3, 1}, {1, 2, 2}, {1, 3, 2}, {4, 3, 2}};
  for (const auto& c : cases) {
    const Result r = Pack(Make(c.kind, 5000), 0x1, c.methods);
    EXPECT_EQ(Word(r.bytes, 0), c.method) << c.kind << " " << c.methods;
    EXPECT_EQ(Unpack(r.bytes).bytes, Make(c.kind, 5000));
  }
}

TEST(XPack, FiltersChainFromTheStreamUp) {
  // count + payload + CRC make two whole AES blocks; XOR sits below AES.
  const Vec data = Make(1, 26);
  const Vec counted = Cat({Bytes({26, 0}), data});
  Vec expected = Cat({counted, CrcOf(counted)});
  ASSERT_TRUE(XAES256(expected.data(), 32, u"pw", true));
  XCipherXORIO xor_filter;
  xor_filter.Init(u"pw");
  for (size_t i = 0; i < expected.size(); ++i) expected[i] ^= xor_filter.GetKeyTable()[i];
  const Result packed = Pack(data, 0x3001, 0, u"pw");
  EXPECT_EQ(packed.bytes, Cat({Bytes({0, 0, 0, 0, 1, 0x30, 0, 0}), expected}));
}

TEST(XPack, RoundTripsEveryMethodAndFlagCombination) {
  for (int kind = 0; kind < 5; ++kind) {
    for (size_t size : {1, 17, 3000}) {
      const Vec data = Make(kind, size);
      for (uint32_t methods = 0; methods < 4; ++methods) {
        for (uint32_t f = 0; f < 32; ++f) {
          const uint32_t flags = (f & 3) | (f & 12) << 10 | (f & 16) << 27;
          if (flags == 0 && methods == 0) continue;
          SCOPED_TRACE(testing::Message() << kind << " " << size << " " << methods << " " << flags);
          const Result packed = Pack(data, flags, methods);
          ASSERT_TRUE(packed.ok);
          EXPECT_EQ(UnpackBoth(packed.bytes, flags & 0x80000000 ? flags : 0).bytes, data);
        }
      }
    }
  }
}

TEST(XPack, RoundTripsSizesAndKinds) {
  for (int kind = 0; kind < 5; ++kind) {
    for (size_t size : {2, 10, 11, 15, 16, 100, 4095, 4097, 40000, 200000}) {
      SCOPED_TRACE(testing::Message() << kind << " " << size);
      const Vec data = Make(kind, size, static_cast<uint32_t>(size));
      const Result packed = Pack(data, 0x2003, 3);
      ASSERT_TRUE(packed.ok);
      EXPECT_LE(packed.bytes.size(), size + 8 + 6 + 36 + 15);
      const Result back = Unpack(packed.bytes);
      EXPECT_TRUE(back.ok);
      EXPECT_EQ(back.bytes, data);
    }
  }
}

TEST(XPack, ContainersReadBackToBackWithoutReadingAhead) {
  const Vec a = Make(1, 5000), b = Make(4, 7000), c = Make(0, 999);
  const Vec all = Cat(
      {Pack(a, 0x1, 3).bytes, Pack(b, 0x2002, 3).bytes, Pack(c, 0x1001, 3).bytes, Bytes({0xEE})});
  XBuffer memory, out;
  memory._Write(all.data(), static_cast<uint32_t>(all.size()));
  test::Source other(all);
  for (XIO* in : {static_cast<XIO*>(&memory), static_cast<XIO*>(&other)}) {
    out.ResetBufferPos();
    strXUnpackRecord r;
    r.stream = in;
    r.password = u"pass word";
    r.output = &out;
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(XPack(&r));
    EXPECT_EQ(Data(out), Cat({a, b, c}));
  }
  EXPECT_EQ(memory.GetBufferPos() - memory.GetCurrentPos(), 1u);
  EXPECT_EQ(other.Left(), 1u);
}

TEST(XPack, PackRefusals) {
  const Vec data = Make(1, 50);
  const std::vector<std::pair<std::function<void(strXPackRecord&)>, uint32_t>> cases = {
      {[](strXPackRecord& r) { r.record_size = 40; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.password = nullptr; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.flags = 0x80000000, r.password = nullptr; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.data = nullptr; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.size_low = 0; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.flags = 0, r.methods = 0; }, kErrDoesNotFit},
      {[](strXPackRecord& r) { r.size_high = 1; }, kErrOutOfRange},
      {[](strXPackRecord& r) { r.magic[3] = 'K'; }, 0},
      {[](strXPackRecord& r) { r.operation = 3; }, 0},
      {[](strXPackRecord& r) { r.record_size = 8; }, 0},
  };
  for (const auto& [change, code] : cases) {
    XBuffer out;
    strXPackRecord r;
    r.flags = 0x2003;
    r.stream = &out;
    r.password = u"pw";
    r.data = data.data();
    r.size_low = 50;
    change(r);
    EXPECT_FALSE(XPack(&r));
    EXPECT_EQ(out.GetErrorCode(), code);
    EXPECT_EQ(out.GetBufferPos(), 0u);
  }
  EXPECT_FALSE(XPack(nullptr));
}

TEST(XPack, UnpackRefusals) {
  const Vec good = Pack(Make(1, 50), 0x3, 3).bytes;
  const Vec aes = Pack(Make(1, 50), 0x2001, 0).bytes;
  struct Case {
    Vec stream;
    uint32_t flags;
    const char16_t* password;
    uint32_t code;
  };
  const std::vector<Case> cases = {
      {Cat({Bytes({3, 0, 0, 0}), Vec(good.begin() + 4, good.end())}), 0, u"p", kErrLoadEncoding},
      {Cat({Bytes({0, 0, 0, 1}), Vec(good.begin() + 4, good.end())}), 0, u"p", kErrLoadEncoding},
      {Bytes({0, 0, 0, 0, 4, 0, 0, 0, 0, 0}), 0, u"p", kErrEndOfData},
      {Bytes({0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0}), 0, u"p", kErrEndOfData},
      {aes, 0, nullptr, kErrDoesNotFit},
      {aes, 0x80001000, nullptr, kErrDoesNotFit},
      {good, 0x80000004, u"p", kErrDoesNotFit},
      {Bytes({0, 0, 0}), 0, u"p", kErrEndOfData},
      {Bytes({0, 0, 0, 0, 3, 0}), 0, u"p", kErrEndOfData},
  };
  for (const Case& c : cases) {
    const Result r = UnpackBoth(c.stream, c.flags, c.password);
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.error, c.code);
    EXPECT_TRUE(r.bytes.empty());
  }
  XBuffer in;
  strXUnpackRecord r;
  r.stream = &in;
  EXPECT_FALSE(XPack(&r));  // no output
  EXPECT_EQ(in.GetErrorCode(), kErrDoesNotFit);
}

// Every truncation and every payload bit flip of a protected stream fails with
// 0x20000004: an early end, a count that no longer fits, or a trailer mismatch.
TEST(XPack, DamagedStreamsFailWithEndOfData) {
  for (uint32_t flags : {0x1u, 0x2u, 0x2001u, 0x1002u}) {
    for (int kind : {0, 4}) {
      const Vec good = Pack(Make(kind, 600), flags, 3).bytes;
      for (size_t cut = 0; cut < good.size(); ++cut) {
        const Result r = UnpackBoth(Vec(good.begin(), good.begin() + cut));
        ASSERT_FALSE(r.ok) << cut;
        ASSERT_EQ(r.error, kErrEndOfData) << cut;
      }
      for (size_t bit = 64; bit < good.size() * 8; ++bit) {
        Vec bad = good;
        bad[bit / 8] ^= uint8_t(1u << bit % 8);
        const Result r = UnpackBoth(bad);
        ASSERT_FALSE(r.ok) << flags << " " << kind << " " << bit;
        ASSERT_EQ(r.error, kErrEndOfData) << bit;
      }
    }
  }
  EXPECT_EQ(Unpack(Pack(Make(1, 99), 0x2001, 3).bytes, 0, u"pass Word").error, kErrEndOfData);
}

TEST(XPack, FailuresReachTheRecordStream) {
  const Vec data = Make(1, 3000);
  for (size_t fail_at = 1; fail_at < 6; ++fail_at) {
    test::Sink sink(fail_at);
    strXPackRecord r;
    r.flags = 0x1003;
    r.stream = &sink;
    r.password = u"pw";
    r.data = data.data();
    r.size_low = 3000;
    r.methods = 3;
    EXPECT_FALSE(XPack(&r));
    EXPECT_EQ(sink.GetErrorCode(), kErrTooLong) << fail_at;
  }
  const Vec packed = Pack(data, 0x1, 0).bytes;
  XBuffer in;
  in._Write(packed.data(), static_cast<uint32_t>(packed.size()));
  test::Sink out(1);
  strXUnpackRecord u;
  u.stream = &in;
  u.output = &out;
  EXPECT_FALSE(XPack(&u));
  EXPECT_EQ(in.GetErrorCode(), kErrTooLong);
}

}  // namespace
}  // namespace tavi
