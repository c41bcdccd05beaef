//===- stream_test.cpp - Default operations and sized forms of the stream --===//
#include "tavi/io/stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Fail;
using test::Sink;
using Sizes = std::vector<uint32_t>;

// A source of n bytes (i % 251) that cannot skip, so the base class's defaults are used.
test::Source Pattern(uint32_t n) {
  std::vector<uint8_t> bytes(n);
  for (uint32_t i = 0; i < n; ++i) bytes[i] = static_cast<uint8_t>(i % 251);
  return test::Source(bytes);
}

// Records the pieces the 64-bit forms are split into, without moving data.
class PieceCounter : public XIO {
 public:
  Sizes pieces;
  bool ReadTo(XIO&, uint32_t bytes) override {
    pieces.push_back(bytes);
    return true;
  }
  bool ReadThruBfr(XIO&, uint32_t bytes) override {
    pieces.push_back(bytes);
    return bytes != 7;
  }
};

TEST(Stream, BasePrimitivesAreInternalErrors) {
  XIO io;
  char c[2] = {};
  EXPECT_EQ(Fail(io._Write(c, 2), io), kErrInternal);
  EXPECT_EQ(XError::InternalErrorCode, 1018);
  EXPECT_EQ(io._Read(c, 2), 0u);
  EXPECT_EQ(XError::InternalErrorCode, 1019);
  EXPECT_FALSE(io._UnreadChar(u'x'));
  EXPECT_EQ(XError::InternalErrorCode, 1020);
  EXPECT_TRUE(io._Flush());
}

TEST(Stream, DefaultSkipConsumesTheRest) {
  // A stream that cannot seek reads until it comes back short, whatever the count.
  test::Source s = Pattern(5000);
  EXPECT_TRUE(s._ShiftForward(0));
  EXPECT_EQ(Fail(s._ShiftForward(10), s), kErrEndOfData);
  EXPECT_EQ(s.Left(), 0u);
  EXPECT_EQ(s.reads.front(), 10u);
}

TEST(Stream, ChunkedAndSingleBlockTransfers) {
  test::Source empty = Pattern(0), s = Pattern(2500), t = Pattern(3000), u = Pattern(3000);
  Sink sink, target, failing(1);
  EXPECT_EQ(empty.ReadAllTo(sink), 0u);
  EXPECT_TRUE(empty.IsOk() && sink.IsOk() && sink.writes.empty());
  EXPECT_EQ(s.ReadAllTo(sink), 2500u);
  EXPECT_EQ(sink.writes, (Sizes{1024, 1024, 452}));
  EXPECT_EQ(u.ReadAllTo(failing), 0u);
  EXPECT_EQ(u.GetErrorCode(), kErrTooLong) << "the source takes the target's error";

  EXPECT_TRUE(t.ReadThruBfr(target, 0));
  EXPECT_TRUE(t.reads.empty());
  EXPECT_TRUE(t.ReadThruBfr(target, 3000));
  EXPECT_EQ(target.writes, (Sizes{1024, 1024, 952}));
  EXPECT_EQ(target.bytes[2999], 2999 % 251);
  EXPECT_EQ(Fail(t.ReadThruBfr(target, 1), t), kErrEndOfData);
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData) << "the target is told why";

  // ReadTo moves the whole count through one block.
  test::Source r = Pattern(3000), r2 = Pattern(10), r3 = Pattern(10);
  Sink one;
  EXPECT_TRUE(r.ReadTo(one, 0) && r.ReadTo(one, 3000));
  EXPECT_EQ(one.writes, Sizes{3000});
  EXPECT_EQ(r.reads, Sizes{3000});
  EXPECT_EQ(Fail(r2.ReadTo(failing, 10), r2), kErrTooLong);
  one.SetUserError(4);
  EXPECT_FALSE(r3.ReadTo(one, 11));
  EXPECT_EQ(one.GetErrorCode(), kErrEndOfData) << "the import overwrites";
}

TEST(Stream, SixtyFourBitFormsSplitIntoPieces) {
  PieceCounter p;
  Sink sink;
  EXPECT_TRUE(p.ReadTo64(sink, 0x100000005ull));
  EXPECT_TRUE(p.ReadThruBfr64(sink, 0x1FFFFFFFEull));
  EXPECT_EQ(p.pieces, (Sizes{0xFFFFFFFFu, 6, 0xFFFFFFFFu, 0xFFFFFFFFu}));
  EXPECT_FALSE(p.ReadThruBfr64(sink, 7));
  test::Source s = Pattern(10);
  char out[16];
  EXPECT_EQ(s._Read64(out, 16), 10u);
  EXPECT_EQ(Fail(s.bRead(out, 1), s), kErrEndOfData);
  EXPECT_TRUE(sink._Write64("abc", 3));
  EXPECT_EQ(sink.writes, Sizes{3});
}

TEST(Stream, TextWriters) {
  XString16 b;
  const char* text = reinterpret_cast<const char*>(u"abcdef");
  // The zone's byte distance is rounded down to whole code units.
  ASSERT_TRUE(b.WriteStringZone(reinterpret_cast<const char16_t*>(text),
                                reinterpret_cast<const char16_t*>(text + 7)));
  EXPECT_EQ(std::u16string(b.c_str()), u"abc");
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 7));
  EXPECT_EQ(std::u16string(b.c_str()), u"xyzxyzx");
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 0) && b.WriteStringPatern(u"xyz", 3, 3));
  ASSERT_TRUE(b.FormatMessageW(5));
  EXPECT_EQ(std::u16string(b.c_str()), u"xyzAccess is denied.") << "no line breaks";
  EXPECT_FALSE(b.FormatMessageW(0x1234567));
  EXPECT_TRUE(b.IsOk());
}

TEST(Stream, LengthPrefixedStrings) {
  XString16 text;
  text.Set(u"AB");
  XString8 bytes;
  bytes.Set("bytes");
  XBuffer stream;
  ASSERT_TRUE(stream.Write(text) && stream.Write(bytes));
  const uint8_t layout[] = {4, 0, 0, 0, 'A', 0, 'B', 0, 5, 0, 0, 0, 'b', 'y', 't', 'e', 's'};
  ASSERT_EQ(test::Data(stream), std::vector<uint8_t>(layout, layout + sizeof layout));
  ASSERT_TRUE(stream.Read(text) && stream.Read(bytes));
  EXPECT_EQ(std::u16string(text.c_str()), u"AB");
  EXPECT_EQ(text.GetBufferPos(), 4u);
  EXPECT_STREQ(bytes.c_str(), "bytes");

  // Short data fails; a length far beyond the data is refused without allocating it.
  stream._Write("\x03\x00", 2);
  EXPECT_EQ(Fail(stream.Read(text), stream), kErrEndOfData);
  test::Source hostile(test::Bytes({0, 0xFF, 0xFF, 0xFF, 'a', 'b', 'c', 'd', 'e', 'f'}));
  EXPECT_EQ(Fail(hostile.Read(bytes), hostile), kErrEndOfData);
  EXPECT_LT(bytes.GetBufferSize(), 4u << 20);
  EXPECT_STREQ(bytes.c_str(), "abcdef");
}

TEST(Stream, LengthPrefixedTitles) {
  TTitleText title;
  title.Set(u"Title", 10, true);
  XBuffer buffer;
  ASSERT_TRUE(buffer.Write(title) && buffer.Write(TTitleText()));
  ASSERT_EQ(buffer.GetBufferPos(), 4u + 10u + 4u);
  EXPECT_EQ(std::memcmp(buffer.GetBuffer(), "\x0A\0\0\0T\0", 6), 0);

  // What is read is owned, an empty text too.
  for (const char16_t* expected : {u"Title", u""}) {
    title.Set(u"static", 12, true);
    ASSERT_TRUE(buffer.Read(title));
    EXPECT_FALSE(title.IsAttached());
    EXPECT_EQ(std::u16string(title.text ? title.text : u""), expected);
  }
  EXPECT_EQ(Fail(buffer.Read(title), buffer), kErrEndOfData);  // no length left

  const struct {
    std::string bytes;
    uint32_t pending, error;
  } kBad[] = {
      {std::string("\x06\0\0\0a\0", 6), 0, kErrEndOfData},  // short text
      // A length near 4 GiB with a few bytes behind it fails at the end of the data.
      {std::string("\xF0\xFF\xFF\xFF", 4) + std::string(100, 'x'), 0, kErrEndOfData},
      {std::string("\x01\0", 2), kErrTooLong, kErrTooLong},  // a pending error is kept
  };
  for (const auto& c : kBad) {
    SCOPED_TRACE(c.bytes.size());
    XBuffer source;
    source._Write(c.bytes.data(), static_cast<uint32_t>(c.bytes.size()));
    if (c.pending != 0) source.SetErrorCode(c.pending);
    EXPECT_EQ(Fail(source.Read(title), source), c.error);
    // What arrived stays as a terminated text of whole code units.
    if (title.text != nullptr) {
      EXPECT_EQ(title.text[title.size / 2], 0);
    }
  }
  EXPECT_EQ(title.size, 100u);
}

}  // namespace
}  // namespace tavi
