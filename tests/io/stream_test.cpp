//===- stream_test.cpp - Default operations of the abstract stream ---------===//
#include "tavi/io/stream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tavi/core/buffer.h"
#include "tavi/core/string.h"

namespace tavi {
namespace {

// A source of `size` bytes (i % 251) that records the sizes asked of it and cannot
// skip, so the base class's defaults are used.
class Source : public XIO {
 public:
  explicit Source(uint32_t size) : size_(size) {}
  std::vector<uint32_t> reads;

  uint32_t _Read(void* data, uint32_t bytes) override {
    reads.push_back(bytes);
    const uint32_t n = std::min(bytes, size_ - pos_);
    for (uint32_t i = 0; i < n; ++i) static_cast<uint8_t*>(data)[i] = (pos_ + i) % 251;
    pos_ += n;
    return n;
  }
  uint32_t pos() const { return pos_; }

 private:
  uint32_t size_;
  uint32_t pos_ = 0;
};

// A target that records write sizes and can be told to fail.
class Sink : public XIO {
 public:
  std::vector<uint32_t> writes;
  std::string data;
  bool fail = false;

  bool _Write(const void* bytes, uint32_t n) override {
    writes.push_back(n);
    if (fail) {
      SetWinError(112);
      return false;
    }
    data.append(static_cast<const char*>(bytes), n);
    return true;
  }
};

// Counts the pieces the 64-bit forms are split into, without moving data.
class PieceCounter : public XIO {
 public:
  std::vector<uint32_t> pieces;
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
  EXPECT_FALSE(io._Write(c, 2));
  EXPECT_EQ(io.GetErrorCode(), kErrInternal);
  EXPECT_EQ(XError::InternalErrorCode, 1018);
  EXPECT_EQ(io._Read(c, 2), 0u);
  EXPECT_EQ(XError::InternalErrorCode, 1019);
  EXPECT_FALSE(io._UnreadChar(u'x'));
  EXPECT_EQ(XError::InternalErrorCode, 1020);
  EXPECT_TRUE(io._Flush());
  EXPECT_EQ(io.SetData(&io), nullptr);
  EXPECT_EQ(io.GetData(), &io);
  XIO copy(io);
  EXPECT_EQ(copy.GetData(), &io);
  EXPECT_EQ(copy.GetErrorCode(), kErrInternal);
}

TEST(Stream, DefaultSkipConsumesTheRest) {
  // A stream that cannot seek reads until it comes back short, whatever the count.
  Source s(5000);
  EXPECT_TRUE(s._ShiftForward(0));
  EXPECT_FALSE(s._ShiftForward(10));
  EXPECT_EQ(s.pos(), 5000u);
  EXPECT_EQ(s.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(s.reads.front(), 10u);
}

TEST(Stream, ReadAllTo) {
  Source empty(0);
  Sink sink;
  EXPECT_EQ(empty.ReadAllTo(sink), 0u);
  EXPECT_TRUE(empty.IsOk());
  EXPECT_TRUE(sink.IsOk());
  EXPECT_TRUE(sink.writes.empty());

  Source s(2500);
  EXPECT_EQ(s.ReadAllTo(sink), 2500u);
  EXPECT_EQ(sink.writes, (std::vector<uint32_t>{1024, 1024, 452}));

  Source s2(3000);
  Sink failing;
  failing.fail = true;
  EXPECT_EQ(s2.ReadAllTo(failing), 0u);
  EXPECT_EQ(s2.GetErrorCode(), 112u) << "the source takes the target's error";
}

TEST(Stream, ReadThruBfrMovesChunks) {
  Source s(3000);
  Sink sink;
  EXPECT_TRUE(s.ReadThruBfr(sink, 0));
  EXPECT_TRUE(s.reads.empty());
  EXPECT_TRUE(s.ReadThruBfr(sink, 3000));
  EXPECT_EQ(sink.writes, (std::vector<uint32_t>{1024, 1024, 952}));
  EXPECT_EQ(static_cast<uint8_t>(sink.data[2999]), 2999 % 251);

  Source shorter(100);
  Sink target;
  EXPECT_FALSE(shorter.ReadThruBfr(target, 101));
  EXPECT_EQ(shorter.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData) << "the target is told why";
}

TEST(Stream, ReadToUsesOneBlock) {
  Source s(3000);
  Sink sink;
  EXPECT_TRUE(s.ReadTo(sink, 0));
  EXPECT_TRUE(s.ReadTo(sink, 3000));
  EXPECT_EQ(sink.writes, (std::vector<uint32_t>{3000}));
  EXPECT_EQ(s.reads, (std::vector<uint32_t>{3000}));

  Source s2(10);
  Sink failing;
  failing.fail = true;
  EXPECT_FALSE(s2.ReadTo(failing, 10));
  EXPECT_EQ(s2.GetErrorCode(), 112u);
  Source s3(10);
  Sink target;
  target.SetUserError(4);
  EXPECT_FALSE(s3.ReadTo(target, 11));
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData) << "the import overwrites";
}

TEST(Stream, SixtyFourBitFormsSplitIntoPieces) {
  PieceCounter p;
  Sink sink;
  EXPECT_TRUE(p.ReadTo64(sink, 0x100000005ull));
  EXPECT_EQ(p.pieces, (std::vector<uint32_t>{0xFFFFFFFFu, 6}));
  p.pieces.clear();
  EXPECT_TRUE(p.ReadThruBfr64(sink, 0x1FFFFFFFEull));
  EXPECT_EQ(p.pieces, (std::vector<uint32_t>{0xFFFFFFFFu, 0xFFFFFFFFu}));
  p.pieces.clear();
  EXPECT_FALSE(p.ReadThruBfr64(sink, 7));

  Source s(10);
  char out[16];
  EXPECT_EQ(s._Read64(out, 16), 10u);
  Sink w;
  EXPECT_TRUE(w._Write64("abc", 3));
  EXPECT_EQ(w.data, "abc");
}

TEST(Stream, ExactReadsAndTextWriters) {
  Source s(3);
  char out[4];
  EXPECT_FALSE(s.bRead(out, 4));
  EXPECT_EQ(s.GetErrorCode(), kErrEndOfData);

  XBuffer b;
  const char16_t text[] = u"abcdef";
  ASSERT_TRUE(b.WriteStringZone(text, text + 3));
  EXPECT_EQ(b.GetBufferPos(), 6u);
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 7));
  EXPECT_EQ(std::u16string(reinterpret_cast<char16_t*>(b.GetBuffer()), 7), u"xyzxyzx");
  b.ResetBufferPos();
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 0));
  ASSERT_TRUE(b.WriteStringPatern(u"xyz", 3, 3));
  EXPECT_EQ(b.GetBufferPos(), 6u);
}

TEST(Stream, FormatMessageStripsLineBreaks) {
  XString16 s;
  ASSERT_TRUE(s.FormatMessageW(5));
  EXPECT_EQ(std::u16string(s.c_str()), u"Access is denied.");
  XString16 none;
  EXPECT_FALSE(none.FormatMessageW(0x1234567));
  EXPECT_TRUE(none.IsOk());
}

}  // namespace
}  // namespace tavi
