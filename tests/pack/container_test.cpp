//===- container_test.cpp - The packed container ---------------------------===//
#include "tavi/pack/container.h"

#include <gtest/gtest.h>

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
  bool ok = false;
  uint32_t error = 0;
  Vec bytes;
};

strXPackRecord Request(XIO* out, const Vec& data, uint32_t flags, uint32_t methods,
                       const char16_t* password = u"pw") {
  strXPackRecord r;
  r.flags = flags, r.stream = out, r.password = password, r.methods = methods;
  r.data = data.data(), r.size_low = static_cast<uint32_t>(data.size());
  return r;
}

Result Pack(const Vec& data, uint32_t flags, uint32_t methods) {
  XBuffer out;
  const strXPackRecord r = Request(&out, data, flags, methods);
  const bool ok = XPack(&r);
  return {ok, out.GetErrorCode(), Data(out)};
}

// Unpacks stream from a memory buffer (the in-memory path) and from another stream
// (the filter chain): both must end alike. error is the stream's, bytes the output's.
Result Unpack(const Vec& stream, uint32_t flags = 0, const char16_t* password = u"pw") {
  Result results[2];
  for (int path = 0; path < 2; ++path) {
    XBuffer memory, out;
    if (!stream.empty()) memory._Write(stream.data(), static_cast<uint32_t>(stream.size()));
    test::Source other(stream);
    XIO& in = path == 0 ? static_cast<XIO&>(memory) : other;
    strXUnpackRecord r;
    r.flags = flags, r.stream = &in, r.password = password, r.output = &out;
    const bool ok = XPack(&r);
    results[path] = {ok, in.GetErrorCode(), Data(out)};
  }
  EXPECT_EQ(results[0].ok, results[1].ok);
  EXPECT_EQ(results[0].error, results[1].error);
  if (results[0].ok) {
    EXPECT_EQ(results[0].bytes, results[1].bytes);
  }
  return results[0];
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

// Kinds of data: 0 one repeated value, 1 English-like text, 2 two values at random,
// 3 random bytes, 4 random bytes of which three stretches in four repeat earlier ones.
Vec Make(int kind, size_t size, uint32_t seed = 1) {
  static const char kText[] = "the quick brown fox jumps over the lazy dog, then packs its bags. ";
  std::mt19937 rng(seed);
  Vec v(size);
  size_t distance = 0;
  for (size_t i = 0; i < size; ++i) {
    if (kind == 4 && i % 64 == 0) distance = (i > 300 && rng() % 4 != 0) ? 5 + rng() % 296 : 0;
    v[i] = kind == 0   ? 'z'
           : kind == 1 ? kText[(i * 7 + i / 61) % (sizeof kText - 1)]
           : kind == 2 ? "ab"[rng() & 1]
           : distance  ? v[i - distance]
                       : static_cast<uint8_t>(rng());
  }
  return v;
}

TEST(XPack, StoredLayoutByteForByte) {
  const Vec data = Make(3, 21);
  const Vec counted = Cat({Bytes({21, 0}), data});
  int32_t digest[8];
  XHashSHA256(digest, counted.data(), static_cast<int32_t>(counted.size()));
  const auto* hash = reinterpret_cast<const uint8_t*>(digest);
  const Vec body = Cat({counted, CrcOf(counted), Vec(hash, hash + 32)});
  // Method 0, flags 3, the count as a 16-bit-unit packed number, the bytes, the CRC
  // and the hash of count and bytes.
  EXPECT_EQ(Pack(data, 0x3, 0).bytes, Cat({Bytes({0, 0, 0, 0, 3, 0, 0, 0}), body}));
  // Without the flags word the reader must be given the flags.
  const Result bare = Pack(data, 0x80000003, 0);
  EXPECT_EQ(bare.bytes, Cat({Bytes({0, 0, 0, 0}), body}));
  EXPECT_EQ(Unpack(bare.bytes, 0x80000003).bytes, data);
  EXPECT_FALSE(Unpack(bare.bytes).ok);
}

// Huffman gets the best length in bytes as its limit in bits: it beats stored bytes
// only for a block of one value (a 9-bit tree, codes of 0 bits; the leaf's flag bit 0,
// then its byte, which keeps its bit positions at the bit offset).
TEST(XPack, MethodChoice) {
  EXPECT_EQ(Pack(Make(0, 1000), 0, 1).bytes, Bytes({1, 0, 0, 0, 0, 0, 0, 0, 0xE8, 3, 0x7A, 0}));
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
  // Count, payload and CRC fill two AES blocks; the XOR filter sits below AES.
  const Vec data = Make(1, 26);
  const Vec counted = Cat({Bytes({26, 0}), data});
  Vec expected = Cat({counted, CrcOf(counted)});
  ASSERT_TRUE(XAES256(expected.data(), 32, u"pw", true));
  XCipherXORIO xor_filter;
  xor_filter.Init(u"pw");
  for (size_t i = 0; i < expected.size(); ++i) expected[i] ^= xor_filter.GetKeyTable()[i];
  EXPECT_EQ(Pack(data, 0x3001, 0).bytes, Cat({Bytes({0, 0, 0, 0, 1, 0x30, 0, 0}), expected}));
}

TEST(XPack, RoundTrips) {
  for (int kind = 0; kind < 5; ++kind) {
    // Every method set and flag combination, with and without the flags word.
    for (size_t size : {17, 3000}) {
      for (uint32_t methods = 0; methods < 4; ++methods) {
        for (uint32_t f = methods == 0; f < 32; ++f) {
          const uint32_t flags = (f & 3) | (f & 12) << 10 | (f & 16) << 27;
          SCOPED_TRACE(testing::Message() << kind << " " << size << " " << methods << " " << flags);
          const Result packed = Pack(Make(kind, size), flags, methods);
          ASSERT_TRUE(packed.ok);
          EXPECT_EQ(Unpack(packed.bytes, flags & 0x80000000 ? flags : 0).bytes, Make(kind, size));
        }
      }
    }
    // Sizes around the coders' and the cipher's boundaries.
    for (size_t size : {1, 2, 10, 11, 15, 16, 4095, 4097, 40000, 200000}) {
      const Vec data = Make(kind, size, static_cast<uint32_t>(size));
      const Result packed = Pack(data, 0x2003, 3);
      EXPECT_LE(packed.bytes.size(), size + 8 + 6 + 36 + 15) << kind << " " << size;
      EXPECT_EQ(Unpack(packed.bytes).bytes, data) << kind << " " << size;
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
    r.stream = in, r.password = u"pw", r.output = &out;
    for (int i = 0; i < 3; ++i) ASSERT_TRUE(XPack(&r));
    EXPECT_EQ(Data(out), Cat({a, b, c}));
  }
  EXPECT_EQ(memory.GetBufferPos() - memory.GetCurrentPos(), 1u);
  EXPECT_EQ(other.Left(), 1u);
}

TEST(XPack, Refusals) {
  const Vec data = Make(1, 50);
  using Change = void (*)(strXPackRecord&);
  const std::pair<Change, uint32_t> pack_cases[] = {
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
  for (const auto& [change, code] : pack_cases) {
    XBuffer out;
    strXPackRecord r = Request(&out, data, 0x2003, 0);
    change(r);
    EXPECT_FALSE(XPack(&r));
    EXPECT_EQ(test::Data(out).size(), 0u);
    EXPECT_EQ(out.GetErrorCode(), code);
  }
  EXPECT_FALSE(XPack(nullptr));

  const Vec good = Pack(data, 0x3, 3).bytes, aes = Pack(data, 0x2001, 0).bytes;
  const Vec tail(good.begin() + 4, good.end());
  const struct {
    Vec stream;
    uint32_t flags;
    const char16_t* password;
    uint32_t code;
  } unpack_cases[] = {
      {Cat({Bytes({3, 0, 0, 0}), tail}), 0, u"pw", kErrLoadEncoding},
      {Cat({Bytes({0, 0, 0, 1}), tail}), 0, u"pw", kErrLoadEncoding},
      {Bytes({0, 0, 0, 0, 4, 0, 0, 0, 0, 0}), 0, u"pw", kErrEndOfData},     // stored bit 2
      {Bytes({0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0}), 0, u"pw", kErrEndOfData},  // stored bit 31
      {aes, 0, nullptr, kErrDoesNotFit},
      {aes, 0x80001000, nullptr, kErrDoesNotFit},
      {good, 0x80000004, u"pw", kErrDoesNotFit},
      {Bytes({0, 0, 0}), 0, u"pw", kErrEndOfData},
      {Bytes({0, 0, 0, 0, 3, 0}), 0, u"pw", kErrEndOfData},
  };
  for (const auto& c : unpack_cases) {
    const Result r = Unpack(c.stream, c.flags, c.password);
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
    for (int kind : {0, 4}) {  // Huffman- and LZ-coded
      const Vec good = Pack(Make(kind, 600), flags, 3).bytes;
      for (size_t cut = 0; cut < good.size(); ++cut) {
        ASSERT_EQ(Unpack(Vec(good.begin(), good.begin() + cut)).error, kErrEndOfData) << cut;
      }
      for (size_t bit = 64; bit < good.size() * 8; ++bit) {
        Vec bad = good;
        bad[bit / 8] ^= uint8_t(1u << bit % 8);
        const Result r = Unpack(bad);
        ASSERT_FALSE(r.ok) << flags << " " << kind << " " << bit;
        ASSERT_EQ(r.error, kErrEndOfData) << bit;
      }
    }
  }
  EXPECT_EQ(Unpack(Pack(Make(1, 99), 0x2001, 3).bytes, 0, u"pW").error, kErrEndOfData);
}

TEST(XPack, FailuresReachTheRecordStream) {
  const Vec data = Make(1, 3000);
  for (size_t fail_at = 1; fail_at < 6; ++fail_at) {  // head, count, payload, CRC, hash
    test::Sink sink(fail_at);
    const strXPackRecord r = Request(&sink, data, 0x1003, 3);
    EXPECT_FALSE(XPack(&r));
    EXPECT_EQ(sink.GetErrorCode(), kErrTooLong) << fail_at;
  }
  const Vec packed = Pack(data, 0x1, 0).bytes;
  XBuffer in;
  in._Write(packed.data(), static_cast<uint32_t>(packed.size()));
  test::Sink out(1);
  strXUnpackRecord u;
  u.stream = &in, u.output = &out;
  EXPECT_FALSE(XPack(&u));
  EXPECT_EQ(in.GetErrorCode(), kErrTooLong);
}

}  // namespace
}  // namespace tavi
