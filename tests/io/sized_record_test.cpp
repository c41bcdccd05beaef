//===- sized_record_test.cpp - Sized strings and records -------------------===//
#include "tavi/io/sized_record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "core/internal/endian.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Data;
using test::Fail;
using test::Sink;
using test::Source;

std::u16string Wide(const XBuffer& b) {
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}

// A buffer that remembers the largest block it was asked for.
class RecordingBuffer : public XBuffer {
 public:
  uint32_t largest = 0;

 protected:
  bool _BufferRealloc(uint32_t size) override {
    largest = std::max(largest, size);
    return XBuffer::_BufferRealloc(size);
  }
};

// Readers never allocate much more than a growth step ahead of the data.
constexpr uint32_t kMostAllocated = (1u << 20) + 64;

// The bytes a write produced; the buffer is emptied for the next one.
std::vector<uint8_t> Out(bool ok, XBuffer& out) {
  EXPECT_TRUE(ok);
  const std::vector<uint8_t> bytes = Data(out);
  out.ResetBufferPos();
  return bytes;
}

TEST(SizedString, ByteExamples) {
  XBuffer o;
  // Missing strings and the two encodings of a missing record.
  EXPECT_EQ(Out(XWriteSizedString16(o, 0, nullptr, true), o), Bytes({0}));
  EXPECT_EQ(Out(XWriteSizedRecord(o, nullptr), o), Bytes({0, 0, 0, 0}));
  EXPECT_EQ(Out(XWriteSizedRecord(o, 0, nullptr), o), Bytes({4, 0, 0, 0}));
  // The UTF-8 form stores the UTF-16 count: a pair counts two code units, an unpaired
  // surrogate becomes U+FFFD, one unit.
  EXPECT_EQ(Out(XWriteSizedString(o, u"\u00E9", 2, true), o), Bytes({1, 0xC3, 0xA9}));
  EXPECT_EQ(Out(XWriteSizedString(o, u"a\U0001F600\xD800z", 10, true), o),
            Bytes({5, 'a', 0xF0, 0x9F, 0x98, 0x80, 0xEF, 0xBF, 0xBD, 'z'}));
  // An odd byte is dropped; a null text is an empty string.
  EXPECT_EQ(Out(XWriteSizedString(o, u"hi", 5, false), o), Bytes({2, 'h', 0, 'i', 0}));
  EXPECT_EQ(Out(XWriteSizedString(o, "bytes", 5), o), Bytes({5, 'b', 'y', 't', 'e', 's'}));
  EXPECT_EQ(Out(XWriteSizedString(o, static_cast<const char*>(nullptr), 9), o), Bytes({0}));
}

// Random texts of every kind of code point, in both forms, written back to back:
// each reader takes exactly its own string.
TEST(SizedString, RoundTripsWithoutReadingAhead) {
  std::mt19937 rng(9);
  for (int round = 0; round < 100; ++round) {
    std::u16string text;
    for (size_t length = rng() % 3000; text.size() < length;) {
      const uint32_t kind = rng() % 5;
      const uint32_t cp = kind == 0   ? rng() % 0x80
                          : kind == 1 ? 0x80 + rng() % 0x780
                          : kind == 2 ? rng() % 0x10000
                                      : 0x10000 + rng() % 0x100000;
      if (kind == 4) {
        text += u"plain ascii run ";  // the eight-unit fast paths
      } else if (cp >= 0x10000) {
        text += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
      } else if (cp < 0xD800 || cp >= 0xE000) {
        text += static_cast<char16_t>(cp);
      }
    }
    const bool utf8 = round % 2 == 0;
    XBuffer stream;
    ASSERT_TRUE(
        XWriteSizedString(stream, text.data(), static_cast<uint32_t>(2 * text.size()), utf8));
    ASSERT_TRUE(XWriteSizedString(stream, u"next", 8, utf8) && XWriteSizedString(stream, "8", 1));
    stream._Write("#", 1);
    Source source(Data(stream));
    XBuffer first, second, third;
    ASSERT_TRUE(XReadSizedString16(source, first, utf8) &&
                XReadSizedString16(source, second, utf8) && XReadSizedString8(source, third));
    EXPECT_EQ(Wide(first), text);
    EXPECT_EQ(Wide(second), u"next");
    EXPECT_EQ(Data(third), Bytes({'8'}));
    EXPECT_EQ(source.Left(), 1u);
  }
}

TEST(SizedString, MalformedUtf8IsRefused) {
  const std::vector<uint8_t> bad[] = {
      Bytes({1, 0x80}),                    // lone continuation byte
      Bytes({1, 0xC0, 0x80}),              // overlong
      Bytes({1, 0xED, 0xA0, 0x80}),        // encoded surrogate
      Bytes({1, 0xF4, 0x90, 0x80, 0x80}),  // above U+10FFFF
      Bytes({1, 0xF0, 0x9F, 0x98, 0x80}),  // a pair where one unit is left
      Bytes({2, 0xC3, 0x41}),              // bad continuation
      Bytes({3, 'a', 'b'}),                // ends early
      Bytes({2, 0xE2, 0x82}),              // cut sequence
  };
  for (const auto& bytes : bad) {
    Source source(bytes);
    XBuffer out;
    EXPECT_EQ(Fail(XReadSizedString16(source, out, true), source), kErrEndOfData);
  }
}

// A record: size field, the offsets of a wide name and of an 8-bit note, then the strings.
void BuildRecord(XBuffer& record, const char16_t* name, const char* note) {
  ASSERT_NE(record.ReserveBufferMem(12), nullptr);
  uint32_t name_offset, note_offset;
  ASSERT_TRUE(XAddSizedString(record, name_offset, name));
  ASSERT_TRUE(XAddSizedString(record, note_offset, note));
  internal::StoreLE32(record._GetBufferAt(4), name_offset);
  internal::StoreLE32(record._GetBufferAt(8), note_offset);
  ASSERT_TRUE(XSizedRecord::SetSize(record));
}

TEST(SizedRecord, MemoryAccessAndStreamRoundTrip) {
  XBuffer record;
  BuildRecord(record, u"caf\u00E9", "note");
  const uint8_t* base = record._GetBufferAt(0);
  const XSizedRecord* r = XSizedRecord::At(base);
  EXPECT_EQ(r->GetSize(), 12u + 4 + 8 + 4 + 4);
  const uint32_t name = internal::LoadLE32(base + 4), note = internal::LoadLE32(base + 8);
  EXPECT_EQ(name, 16u);
  EXPECT_EQ(r->GetStringSize(name), 8u);
  EXPECT_EQ(std::memcmp(r->GetData(name), u"caf\u00E9", 8), 0);
  EXPECT_TRUE(r->GetData(0) == nullptr && r->GetStringSize(0) == 0);
  EXPECT_EQ(XSizedRecord::GetData(record, 0), nullptr);
  EXPECT_EQ(XSizedRecord::GetData(record, note), record._GetBufferAt(28));
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(r->GetNextRecord()), record.GetStringEnd());

  XBuffer stream;
  ASSERT_TRUE(XWriteSizedRecord(stream, r) && XWriteSizedRecord(stream, nullptr) &&
              XWriteSizedRecord(stream, 0, nullptr));
  ASSERT_TRUE(XWriteSizedString16(stream, name, base, true) &&
              XWriteSizedString8(stream, note, base) && XWriteSizedString8(stream, 0, base));
  XBuffer work;
  ASSERT_TRUE(XReadSizedRecord(work, stream));
  EXPECT_EQ(Data(work), Data(record));
  ASSERT_TRUE(XReadSizedRecord(work, stream));
  EXPECT_EQ(Data(work), Bytes({0, 0, 0, 0})) << "the missing record: a zero size field";

  XBuffer built;
  built._Write("....", 4);
  uint32_t offset = 99;
  ASSERT_TRUE(XReadSizedRecord(built, offset, stream));  // the empty record of size 4
  EXPECT_EQ(offset, 4u);
  uint32_t name2, note2, none = 5;
  ASSERT_TRUE(XReadSizedString16(built, stream, name2, true) &&
              XReadSizedString8(built, stream, note2) && XReadSizedString8(built, stream, none));
  EXPECT_TRUE(name2 == 12 && note2 == 24 && none == 0 && stream.EoB());
  // Size fields and strings as the record holds them.
  EXPECT_EQ(std::vector<uint8_t>(built._GetBufferAt(8), built.GetStringEnd()),
            std::vector<uint8_t>(base + 12, base + 32));

  Source zero(Bytes({0, 0, 0, 0}));
  ASSERT_TRUE(XReadSizedRecord(built, offset, zero));
  EXPECT_EQ(offset, 0u) << "a missing record appends nothing";
  EXPECT_EQ(built.GetBufferPos(), 28u);
  built.SetBufferPos(3);
  EXPECT_EQ(Fail(XSizedRecord::SetSize(built), built), kErrOutOfRange);
}

TEST(SizedRecord, BadSizesAreRefused) {
  for (uint8_t size : {1, 2, 3}) {
    Source source(Bytes({size, 0, 0, 0, 'x', 'y'}));
    XBuffer work;
    EXPECT_EQ(Fail(XReadSizedRecord(work, source), source), kErrEndOfData);
    EXPECT_EQ(source.Left(), 2u) << "refused before the body is read";
  }
  Source short_size(Bytes({8, 0}));
  XBuffer work;
  EXPECT_EQ(Fail(XReadSizedRecord(work, short_size), short_size), kErrEndOfData);
  XBuffer out;
  uint8_t broken[4] = {2, 0, 0, 0};
  EXPECT_EQ(Fail(XWriteSizedRecord(out, XSizedRecord::At(broken)), out), kErrOutOfRange);
  // A target that fails passes its error to the source.
  XBuffer stream;
  XWriteSizedString(stream, u"abc", 6, true);
  Sink sink(1);
  EXPECT_EQ(Fail(XReadSizedString16(stream, sink, true), stream), kErrTooLong);
}

// Hostile counts and sizes with a few bytes behind them are refused before or as the
// data runs out: what was appended is taken back, and no block grows much beyond the
// data that arrived.
TEST(SizedRecord, HostileCountsAndSizesAreRefused) {
  uint32_t offset = 77;
  const auto units_max = Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a', 0, 'b', 0});  // 2^32-1
  const auto units_1g = Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 'a', 0, 'b', 0});
  const struct {
    std::function<bool(XBuffer&, XIO&)> read;
    std::vector<uint8_t> bytes;
    uint32_t error, end;
  } kCases[] = {
      {[](XBuffer& r, XIO& s) { return XReadSizedString16(s, r, false); }, units_max, kErrEndOfData,
       4},
      {[](XBuffer& r, XIO& s) { return XReadSizedString16(s, r, true); }, units_max, kErrEndOfData,
       4},
      {[&](XBuffer& r, XIO& s) { return XReadSizedString16(r, s, offset, false); }, units_1g,
       kErrEndOfData, 4},
      {[&](XBuffer& r, XIO& s) { return XReadSizedString16(r, s, offset, true); }, units_1g,
       kErrEndOfData, 4},
      {[&](XBuffer& r, XIO& s) { return XReadSizedString8(r, s, offset); },
       Bytes({0xFF, 0x00, 0xFF, 0xFF, 0xFF, 'x'}), kErrEndOfData, 4},
      // The record's 4 bytes and these no longer fit 32 bits.
      {[&](XBuffer& r, XIO& s) { return XReadSizedString16(r, s, offset, false); }, units_max,
       kErrTooLong, 4},
      {[&](XBuffer& r, XIO& s) { return XReadSizedRecord(r, offset, s); },
       Bytes({0xFC, 0xFF, 0xFF, 0xFF, 1, 2}), kErrTooLong, 4},
      {[&](XBuffer& r, XIO& s) { return XReadSizedRecord(r, offset, s); },
       Bytes({0xFB, 0xFF, 0xFF, 0xFF, 1, 2}), kErrEndOfData, 4},
      {[](XBuffer& r, XIO& s) { return XReadSizedRecord(r, s); },  // starts at byte 0
       Bytes({0xF0, 0xFF, 0xFF, 0xFF, 1, 2}), kErrEndOfData, 0},
  };
  for (size_t i = 0; i < std::size(kCases); ++i) {
    SCOPED_TRACE(i);
    RecordingBuffer record;
    record._Write("HEAD", 4);
    Source source(kCases[i].bytes);
    EXPECT_EQ(Fail(kCases[i].read(record, source), source), kCases[i].error);
    EXPECT_EQ(record.GetBufferPos(), kCases[i].end);
    EXPECT_LE(record.largest, kMostAllocated);
  }
  EXPECT_EQ(offset, 77u);
}

TEST(SizedRecord, AddSizedStringForms) {
  XBuffer record;
  record._Write("\0\0\0\0", 4);
  uint32_t a, b, c, d;
  ASSERT_TRUE(XAddSizedString(record, a, u"xy", 4) && XAddSizedString(record, b, "abc", 2) &&
              XAddSizedString(record, c, u"") &&
              XAddSizedString(record, d, static_cast<const char*>(nullptr)));
  EXPECT_EQ(std::vector<uint32_t>({a, b, c, d}), std::vector<uint32_t>({8, 16, 0, 0}));
  EXPECT_EQ(Data(record), Bytes({0, 0, 0, 0, 4, 0, 0, 0, 'x', 0, 'y', 0, 2, 0, 0, 0, 'a', 'b'}));

  XBuffer attached;
  uint8_t block[8];
  attached.AttachBuffer(block, 8, false);
  uint32_t e;
  EXPECT_FALSE(XAddSizedString(attached, e, "too long for this", 17));
}

}  // namespace
}  // namespace tavi
