//===- stream_test.cpp - Default operations of the abstract stream ---------===//
#include "tavi/io/stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tavi/core/string.h"
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

TEST(Stream, ChunkedTransfers) {
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
}

TEST(Stream, ReadToUsesOneBlock) {
  test::Source s = Pattern(3000), s2 = Pattern(10), s3 = Pattern(10);
  Sink sink, failing(1), target;
  EXPECT_TRUE(s.ReadTo(sink, 0));
  EXPECT_TRUE(s.ReadTo(sink, 3000));
  EXPECT_EQ(sink.writes, Sizes{3000});
  EXPECT_EQ(s.reads, Sizes{3000});
  EXPECT_EQ(Fail(s2.ReadTo(failing, 10), s2), kErrTooLong);
  target.SetUserError(4);
  EXPECT_FALSE(s3.ReadTo(target, 11));
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData) << "the import overwrites";
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
  EXPECT_TRUE(sink._Write64("abc", 3));
  EXPECT_EQ(sink.writes, Sizes{3});
}

TEST(Stream, ExactReadsAndTextWriters) {
  test::Source s = Pattern(3);
  char out[4];
  EXPECT_EQ(Fail(s.bRead(out, 4), s), kErrEndOfData);

  XString16 b;
  const char16_t text[] = u"abcdef";
  ASSERT_TRUE(b.WriteStringZone(text, text + 3));
  EXPECT_EQ(std::u16string(b.c_str()), u"abc");
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 7));
  EXPECT_EQ(std::u16string(b.c_str()), u"xyzxyzx");
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 0) && b.WriteStringPatern(u"xyz", 3, 3));
  EXPECT_EQ(std::u16string(b.c_str()), u"xyz");

  ASSERT_TRUE(b.FormatMessageW(5));
  EXPECT_EQ(std::u16string(b.c_str()), u"xyzAccess is denied.") << "no line breaks";
  EXPECT_FALSE(b.FormatMessageW(0x1234567));
  EXPECT_TRUE(b.IsOk());
}

}  // namespace
}  // namespace tavi
