//===- sized_record_test.cpp - Sized strings and records -------------------===//
#include "tavi/io/sized_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/internal/endian.h"
#include "io/internal/utf8.h"
#include "tavi/core/buffer.h"
#include "tavi/io/pack_number.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Sink;
using test::Source;

std::vector<uint8_t> Data(const XBuffer& b) {
  return std::vector<uint8_t>(b._GetBufferAt(0), b.GetStringEnd());
}

std::u16string Wide(const XBuffer& b) {
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}

TEST(SizedString, MissingStringsAndRecords) {
  XBuffer out;
  ASSERT_TRUE(XWriteSizedString16(out, 0, nullptr, true));
  EXPECT_EQ(Data(out), Bytes({0}));
  out.ResetBufferPos();
  ASSERT_TRUE(XWriteSizedRecord(out, nullptr));
  EXPECT_EQ(Data(out), Bytes({0, 0, 0, 0}));
  out.ResetBufferPos();
  ASSERT_TRUE(XWriteSizedRecord(out, 0, nullptr));
  EXPECT_EQ(Data(out), Bytes({4, 0, 0, 0}));
}

TEST(SizedString, Utf8StoresTheUtf16Count) {
  XBuffer out;
  ASSERT_TRUE(XWriteSizedString(out, u"\u00E9", 2, true));
  EXPECT_EQ(Data(out), Bytes({1, 0xC3, 0xA9}));

  // A pair counts two code units; an unpaired surrogate becomes U+FFFD, one unit.
  const char16_t text[] = u"a\U0001F600\xD800z";
  out.ResetBufferPos();
  ASSERT_TRUE(XWriteSizedString(out, text, 10, true));
  EXPECT_EQ(Data(out), Bytes({5, 'a', 0xF0, 0x9F, 0x98, 0x80, 0xEF, 0xBF, 0xBD, 'z'}));
  XBuffer back;
  ASSERT_TRUE(XReadSizedString16(out, back, true));
  EXPECT_EQ(Wide(back), u"a\U0001F600\uFFFDz");
}

TEST(SizedString, RawAndByteForms) {
  XBuffer out;
  ASSERT_TRUE(XWriteSizedString(out, u"hi", 5, false));  // an odd byte is dropped
  EXPECT_EQ(Data(out), Bytes({2, 'h', 0, 'i', 0}));
  out.ResetBufferPos();
  ASSERT_TRUE(XWriteSizedString(out, "bytes", 5));
  ASSERT_TRUE(XWriteSizedString(out, static_cast<const char*>(nullptr), 9));
  EXPECT_EQ(Data(out), Bytes({5, 'b', 'y', 't', 'e', 's', 0}));
  XBuffer back;
  ASSERT_TRUE(XReadSizedString8(out, back));
  ASSERT_TRUE(XReadSizedString8(out, back));
  EXPECT_EQ(Data(back), Bytes({'b', 'y', 't', 'e', 's'}));
}

// Long texts of every kind of code point, in both forms, written back to back: each
// reader takes exactly its own string.
TEST(SizedString, RoundTripsWithoutReadingAhead) {
  std::mt19937 rng(9);
  for (int round = 0; round < 60; ++round) {
    std::u16string text;
    const size_t length = rng() % 3000;
    while (text.size() < length) {
      switch (rng() % 5) {
        case 0:
          text += static_cast<char16_t>('A' + rng() % 26);
          break;
        case 1:
          text += static_cast<char16_t>(0x80 + rng() % 0x780);
          break;
        case 2:
          text += static_cast<char16_t>(0xE000 + rng() % 0x1000);
          break;
        case 3:
          text += u"\U00010348";
          break;
        default:
          text += u"plain ascii run ";
      }
    }
    const bool utf8 = round % 2 == 0;
    XBuffer stream;
    ASSERT_TRUE(
        XWriteSizedString(stream, text.data(), static_cast<uint32_t>(2 * text.size()), utf8));
    ASSERT_TRUE(XWriteSizedString(stream, u"next", 8, utf8));
    stream._Write("#", 1);
    // The byte-at-a-time source shows any read beyond the string.
    Source source(Data(stream));
    XBuffer first, second;
    ASSERT_TRUE(XReadSizedString16(source, first, utf8));
    EXPECT_EQ(Wide(first), text);
    ASSERT_TRUE(XReadSizedString16(source, second, utf8));
    EXPECT_EQ(Wide(second), u"next");
    EXPECT_EQ(source.Left(), 1u);
  }
}

TEST(SizedString, MalformedUtf8IsRefused) {
  const std::vector<std::vector<uint8_t>> bad = {
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
    EXPECT_FALSE(XReadSizedString16(source, out, true));
    EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  }
}

// A buffer that remembers the largest block it was asked for.
class RecordingBuffer : public XBuffer {
 public:
  uint32_t largest = 0;

 protected:
  bool _BufferRealloc(uint32_t size) override {
    if (size > largest) largest = size;
    return XBuffer::_BufferRealloc(size);
  }
};

TEST(SizedString, HugeCountsFailWithoutAllocatingThem) {
  // Counts of 2^32-1 code units with a few bytes behind them.
  const std::vector<uint8_t> huge = Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 'a', 0, 'b', 0});
  for (bool utf8 : {false, true}) {
    Source source(huge);
    XBuffer out;
    EXPECT_FALSE(XReadSizedString16(source, out, utf8));
    EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);

    Source again(Bytes({0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 'a', 0, 'b', 0}));
    RecordingBuffer record;
    record._Write("HEAD", 4);
    uint32_t offset = 77;
    EXPECT_FALSE(XReadSizedString16(record, again, offset, utf8));
    EXPECT_EQ(again.GetErrorCode(), kErrEndOfData);
    EXPECT_EQ(record.GetBufferPos(), 4u);  // what was appended is taken back
    EXPECT_EQ(offset, 77u);
    EXPECT_LE(record.largest, (1u << 20) + 64);
  }
  Source bytes(Bytes({0xFF, 0x00, 0xFF, 0xFF, 0xFF, 'x'}));
  RecordingBuffer record;
  uint32_t offset;
  EXPECT_FALSE(XReadSizedString8(record, bytes, offset));
  EXPECT_EQ(bytes.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(record.GetBufferPos(), 0u);
  EXPECT_LE(record.largest, (1u << 20) + 64);

  // A wide count whose bytes cannot follow the record in 32 bits.
  Source wide(huge);
  XBuffer small;
  EXPECT_FALSE(XReadSizedString16(small, wide, offset, false));
  EXPECT_EQ(wide.GetErrorCode(), kErrTooLong);
}

TEST(SizedString, TargetFailureReachesTheSource) {
  XBuffer stream;
  XWriteSizedString(stream, u"abc", 6, true);
  Sink sink;
  sink.fail_at = 1;
  EXPECT_FALSE(XReadSizedString16(stream, sink, true));
  EXPECT_EQ(stream.GetErrorCode(), kErrTooLong);
}

// A record: size field, two string offsets, then the strings.
struct Layout {
  static constexpr uint32_t kName = 4;
  static constexpr uint32_t kNote = 8;
};

void BuildRecord(XBuffer& record, const char16_t* name, const char* note) {
  record.ResetBufferPos();
  ASSERT_NE(record.ReserveBufferMem(12), nullptr);
  uint32_t name_offset, note_offset;
  ASSERT_TRUE(XAddSizedString(record, name_offset, name));
  ASSERT_TRUE(XAddSizedString(record, note_offset, note));
  internal::StoreLE32(record._GetBufferAt(Layout::kName), name_offset);
  internal::StoreLE32(record._GetBufferAt(Layout::kNote), note_offset);
  ASSERT_TRUE(XSizedRecord::SetSize(record));
}

TEST(SizedRecord, MemoryAccess) {
  XBuffer record;
  BuildRecord(record, u"name", nullptr);
  const XSizedRecord* r = XSizedRecord::At(record.GetBuffer());
  EXPECT_EQ(r->GetSize(), 12u + 4 + 8);
  const uint32_t name = internal::LoadLE32(r->_GetData(Layout::kName));
  EXPECT_EQ(name, 16u);
  EXPECT_EQ(r->GetStringSize(name), 8u);
  EXPECT_EQ(std::memcmp(r->GetData(name), u"name", 8), 0);
  EXPECT_EQ(r->GetData(0), nullptr);
  EXPECT_EQ(r->GetStringSize(0), 0u);
  EXPECT_EQ(XSizedRecord::GetData(record, 0), nullptr);
  EXPECT_EQ(XSizedRecord::GetData(record, name), record._GetBufferAt(name));
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(r->GetNextRecord()), record.GetStringEnd());

  XBuffer tiny;
  tiny._Write("ab", 2);
  EXPECT_FALSE(XSizedRecord::SetSize(tiny));
  EXPECT_EQ(tiny.GetErrorCode(), kErrOutOfRange);
}

TEST(SizedRecord, StreamRoundTripOfRecordsAndTheirStrings) {
  XBuffer record;
  BuildRecord(record, u"caf\u00E9", "note");
  XBuffer stream;
  ASSERT_TRUE(XWriteSizedRecord(stream, XSizedRecord::At(record.GetBuffer())));
  ASSERT_TRUE(XWriteSizedRecord(stream, nullptr));
  ASSERT_TRUE(XWriteSizedRecord(stream, 0, nullptr));
  const XSizedRecord* r = XSizedRecord::At(record.GetBuffer());
  const uint32_t name = internal::LoadLE32(r->_GetData(Layout::kName));
  const uint32_t note = internal::LoadLE32(r->_GetData(Layout::kNote));
  ASSERT_TRUE(XWriteSizedString16(stream, name, record._GetBufferAt(0), true));
  ASSERT_TRUE(XWriteSizedString8(stream, note, record._GetBufferAt(0)));
  ASSERT_TRUE(XWriteSizedString8(stream, 0, record._GetBufferAt(0)));

  XBuffer work;
  ASSERT_TRUE(XReadSizedRecord(work, stream));
  EXPECT_EQ(Data(work), Data(record));
  ASSERT_TRUE(XReadSizedRecord(work, stream));  // the missing record: a zero size field
  EXPECT_EQ(Data(work), Bytes({0, 0, 0, 0}));

  XBuffer built;
  built._Write("....", 4);
  uint32_t offset = 99;
  ASSERT_TRUE(XReadSizedRecord(built, offset, stream));  // the empty record of size 4
  EXPECT_EQ(offset, 4u);
  EXPECT_EQ(built.GetBufferPos(), 8u);
  uint32_t name_back, note_back, none = 5;
  ASSERT_TRUE(XReadSizedString16(built, stream, name_back, true));
  ASSERT_TRUE(XReadSizedString8(built, stream, note_back));
  ASSERT_TRUE(XReadSizedString8(built, stream, none));
  EXPECT_EQ(none, 0u);
  const XSizedRecord* b = XSizedRecord::At(built.GetBuffer());
  EXPECT_EQ(b->GetStringSize(name_back), 8u);
  EXPECT_EQ(std::memcmp(b->GetData(name_back), u"caf\u00E9", 8), 0);
  EXPECT_EQ(b->GetStringSize(note_back), 4u);
  EXPECT_EQ(std::memcmp(b->GetData(note_back), "note", 4), 0);
  EXPECT_TRUE(stream.EoB());

  uint32_t missing = 7;
  XBuffer zero;
  zero._Write("\0\0\0\0", 4);
  ASSERT_TRUE(XReadSizedRecord(built, missing, zero));
  EXPECT_EQ(missing, 0u);
}

TEST(SizedRecord, BadSizesAreRefused) {
  for (uint8_t size : {1, 2, 3}) {
    Source source(Bytes({size, 0, 0, 0, 'x', 'y'}));
    XBuffer work;
    EXPECT_FALSE(XReadSizedRecord(work, source));
    EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  }
  Source shortsize(Bytes({8, 0}));
  XBuffer work;
  EXPECT_FALSE(XReadSizedRecord(work, shortsize));
  EXPECT_EQ(shortsize.GetErrorCode(), kErrEndOfData);

  // A size near 4 GiB with little behind it: refused as the data runs out.
  Source hostile(Bytes({0xFE, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8}));
  XBuffer built;
  built._Write("abc", 3);
  uint32_t offset = 1;
  EXPECT_FALSE(XReadSizedRecord(built, offset, hostile));
  EXPECT_EQ(hostile.GetErrorCode(), kErrTooLong);  // cannot follow 3 bytes in 32 bits
  EXPECT_EQ(built.GetBufferPos(), 3u);
  Source hostile2(Bytes({0xF0, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8}));
  RecordingBuffer empty;
  EXPECT_FALSE(XReadSizedRecord(empty, hostile2));
  EXPECT_EQ(hostile2.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(empty.GetBufferPos(), 0u);
  EXPECT_LE(empty.largest, (1u << 20) + 64);

  XBuffer out;
  uint8_t broken[4] = {2, 0, 0, 0};
  EXPECT_FALSE(XWriteSizedRecord(out, XSizedRecord::At(broken)));
  EXPECT_EQ(out.GetErrorCode(), kErrOutOfRange);
}

TEST(SizedRecord, AddSizedStringForms) {
  XBuffer record;
  record._Write("\0\0\0\0", 4);
  uint32_t a, b, c, d;
  ASSERT_TRUE(XAddSizedString(record, a, u"xy", 4));
  ASSERT_TRUE(XAddSizedString(record, b, "abc", 2));
  ASSERT_TRUE(XAddSizedString(record, c, u""));
  ASSERT_TRUE(XAddSizedString(record, d, static_cast<const char*>(nullptr)));
  EXPECT_EQ(a, 8u);
  EXPECT_EQ(b, 16u);
  EXPECT_EQ(c, 0u);
  EXPECT_EQ(d, 0u);
  EXPECT_EQ(Data(record), Bytes({0, 0, 0, 0, 4, 0, 0, 0, 'x', 0, 'y', 0, 2, 0, 0, 0, 'a', 'b'}));

  XBuffer attached;
  uint8_t block[8];
  attached.AttachBuffer(block, 8, false);
  uint32_t e;
  EXPECT_FALSE(XAddSizedString(attached, e, "too long for this", 17));
}

TEST(Utf8, EncoderAndDecoderAgreeOnRandomText) {
  std::mt19937 rng(1);
  for (int round = 0; round < 200; ++round) {
    std::u16string text;
    for (int i = rng() % 40; i > 0; --i) {
      const uint32_t cp = rng() % 3 == 0 ? rng() % 0x80 : rng() % 0x110000;
      if (cp >= 0xD800 && cp < 0xE000) continue;
      if (cp >= 0x10000) {
        text += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
      } else {
        text += static_cast<char16_t>(cp);
      }
    }
    std::vector<uint8_t> utf8(3 * text.size() + 1);
    const size_t n = internal::EncodeUtf8(reinterpret_cast<const uint8_t*>(text.data()),
                                          text.size(), utf8.data());
    std::u16string back(n, u'\0');
    size_t consumed, produced, needed;
    ASSERT_EQ(internal::DecodeUtf8(utf8.data(), n, back.data(), back.size(), &consumed, &produced,
                                   &needed),
              internal::Utf8Status::kOk);
    back.resize(produced);
    EXPECT_EQ(back, text);
    EXPECT_EQ(consumed, n);
  }
}

}  // namespace
}  // namespace tavi
