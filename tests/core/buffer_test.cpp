//===- buffer_test.cpp - Growth, positions and stream slots of XBuffer -----===//
#include "tavi/core/buffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace tavi {
namespace {

// Records the sizes asked of the block allocator without allocating anything.
class RecordingBuffer : public XBuffer {
 public:
  using XBuffer::XBuffer;
  std::vector<uint32_t> requests;
  bool fail = false;

 protected:
  bool _BufferRealloc(uint32_t size) override {
    requests.push_back(size);
    return !fail && XBuffer::_BufferRealloc(size);
  }
};

TEST(BufferGrowth, StepsOfTheGranularity) {
  XBuffer b;
  ASSERT_TRUE(b.AllocBuffer(1));
  EXPECT_EQ(b.GetBufferSize(), 32u);
  ASSERT_TRUE(b.AllocBuffer(32));
  EXPECT_EQ(b.GetBufferSize(), 32u) << "a size that fits never reallocates";
  ASSERT_TRUE(b.AllocBuffer(33));
  EXPECT_EQ(b.GetBufferSize(), 64u);
  ASSERT_TRUE(b.AllocBuffer(10));
  EXPECT_EQ(b.GetBufferSize(), 64u) << "never shrinks";

  XBuffer exact;
  ASSERT_TRUE(exact.AllocBuffer(32));
  EXPECT_EQ(exact.GetBufferSize(), 64u) << "a multiple of the granularity gets a full step";

  XBuffer g7(7);
  ASSERT_TRUE(g7.AllocBuffer(15));
  EXPECT_EQ(g7.GetBufferSize(), 21u);
  EXPECT_EQ(XBuffer(0).GetGranularity(), 1u);
  XBuffer g1(0);
  ASSERT_TRUE(g1.AllocBuffer(5));
  EXPECT_EQ(g1.GetBufferSize(), 6u);
}

TEST(BufferGrowth, OwnedBlocksKeepFourSpareBytes) {
  RecordingBuffer b;
  ASSERT_TRUE(b.AllocBuffer(1));
  ASSERT_TRUE(b.AllocBuffer(40));
  EXPECT_EQ(b.requests, (std::vector<uint32_t>{32, 64}));
  // The spare bytes take a terminator right after the last usable byte.
  std::memset(b.GetBuffer(), 'x', 64 + 4);
}

TEST(BufferGrowth, SizesNearTheLimit) {
  RecordingBuffer b;
  b.fail = true;  // nothing is really allocated
  EXPECT_FALSE(b.AllocBuffer(0xFFFFFFF0u));
  EXPECT_EQ(b.requests, (std::vector<uint32_t>{0xFFFFFFF0u})) << "no rounding near the limit";
  EXPECT_EQ(b.GetErrorCode(), kErrNoMemory);
  EXPECT_EQ(b.GetBufferSize(), 0u);

  RecordingBuffer c;
  EXPECT_FALSE(c.AllocBuffer(0xFFFFFFFEu));
  EXPECT_EQ(c.GetErrorCode(), kErrOutOfRange);
  EXPECT_TRUE(c.requests.empty());
  c.ResetError();
  EXPECT_FALSE(c.AllocBuffer(0xFFFFFFFFu));
  EXPECT_EQ(c.GetErrorCode(), kErrOutOfRange);

  RecordingBuffer d;
  d.fail = true;
  d.SetWinError(5);
  EXPECT_FALSE(d.AllocBuffer(10));
  EXPECT_EQ(d.GetErrorCode(), 5u) << "out of memory is set only when no error is pending";
}

TEST(BufferGrowth, GrowAndReserveTestTheAllocatedSize) {
  XBuffer b;
  ASSERT_TRUE(b._Write("abc", 3));
  // The overflow test adds the allocated size (32), the request adds the data end (3).
  EXPECT_FALSE(b.GrowBuffer(0xFFFFFFFFu - 31));
  EXPECT_EQ(b.GetErrorCode(), kErrOutOfRange);
  b.ResetError();
  ASSERT_TRUE(b.GrowBuffer(29));
  EXPECT_EQ(b.GetBufferSize(), 32u);
  ASSERT_TRUE(b.GrowBuffer(30));
  EXPECT_EQ(b.GetBufferSize(), 64u);

  auto* p = static_cast<uint8_t*>(b.ReserveBufferMem(5));
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p, b._GetBufferAt(3));
  EXPECT_EQ(b.GetBufferPos(), 8u);
}

TEST(BufferAttach, SizeMinusOneAndNoGrowth) {
  char block[10] = "123456789";
  XBuffer b;
  b.AttachBuffer(block, 10, true);
  EXPECT_EQ(b.GetBufferSize(), 9u);
  EXPECT_EQ(b.GetBufferPos(), 10u);
  EXPECT_EQ(b.GetCurrentPos(), 0u);
  EXPECT_TRUE(b.GetBufferAttached());
  EXPECT_FALSE(b._Write("x", 1));
  EXPECT_TRUE(b.IsOk()) << "an attached block fails to grow without an error";

  // Reset forgets the block but keeps its recorded size; the next write allocates.
  ASSERT_TRUE(b.ResetBuffer());
  EXPECT_EQ(b.GetBuffer(), nullptr);
  EXPECT_EQ(b.GetBufferSize(), 9u);
  EXPECT_FALSE(b.GetBufferAttached());
  ASSERT_TRUE(b._Write("xy", 2));
  EXPECT_NE(b.GetBuffer(), static_cast<void*>(block));
  EXPECT_EQ(std::memcmp(b.GetBuffer(), "xy", 2), 0);
  EXPECT_EQ(std::memcmp(block, "123456789", 10), 0);

  XBuffer half;
  half.AttachBuffer(block, 10, false);
  EXPECT_EQ(half.GetBufferPos(), 0u);
  EXPECT_TRUE(half._Write("abcdefghi", 9));
  EXPECT_FALSE(half._Write("j", 1));
  half.FreeBuffer();  // attached: not freed
  EXPECT_EQ(block[0], 'a');
}

TEST(BufferAttach, AssumeTakesOwnership) {
  auto* block = static_cast<char*>(std::malloc(8));
  std::memcpy(block, "abcdefgh", 8);
  XBuffer b;
  b.AssumeBuffer(block, 8, true);
  EXPECT_FALSE(b.GetBufferAttached());
  EXPECT_EQ(b.GetBufferSize(), 7u);
  ASSERT_TRUE(b._Write("i", 1));  // grows the assumed block
  EXPECT_EQ(std::memcmp(b.GetBuffer(), "abcdefghi", 9), 0);

  XBuffer other;
  ASSERT_TRUE(other._Write("zz", 2));
  other.SetErrorCode(kErrEndOfData);
  other._SetCurrentPos(1);
  b.AssumeBuffer(other);
  EXPECT_EQ(b.GetBufferPos(), 2u);
  EXPECT_EQ(b.GetCurrentPos(), 1u);
  EXPECT_EQ(other.GetBuffer(), nullptr);
  EXPECT_EQ(other.GetBufferPos(), 0u);
  EXPECT_EQ(other.GetBufferSize(), 0u);
  EXPECT_EQ(other.GetErrorCode(), kErrEndOfData) << "the error stays with its object";
}

TEST(BufferCopy, CopiesShareTheBlock) {
  XBuffer a;
  ASSERT_TRUE(a._Write("hello", 5));
  XBuffer b = a;
  EXPECT_EQ(a.GetBuffer(), b.GetBuffer());
  // Give the copy's ownership away so that only one side frees the block.
  b.DiscardBufferOwnership();
  static_cast<char*>(a.GetBuffer())[0] = 'j';
  EXPECT_EQ(static_cast<char*>(b.GetBuffer())[0], 'j');
  EXPECT_EQ(b.GetBufferPos(), 5u);
  EXPECT_FALSE(b.AllocBuffer(100)) << "the side without ownership never grows the block";

  XBuffer c;
  c = a;
  c.DiscardBuffer();
  EXPECT_EQ(c.GetBuffer(), nullptr);
  EXPECT_NE(a.GetBuffer(), nullptr);
}

TEST(BufferCopy, AppendingOwnDataSurvivesReallocation) {
  XBuffer a;
  ASSERT_TRUE(a._Write("0123456789abcdefghijklmnopqrstu", 31));
  // The source lies in the block that the write reallocates.
  ASSERT_TRUE(a._Write(a.GetBuffer(), 31));
  ASSERT_TRUE(a._Write(a._GetBufferAt(10), 40));
  EXPECT_EQ(std::memcmp(a._GetBufferAt(31), "0123456789abcdefghijklmnopqrstu", 31), 0);
  EXPECT_EQ(std::memcmp(a._GetBufferAt(62), a._GetBufferAt(10), 40), 0);
}

TEST(BufferPositions, DataEndChecks) {
  XBuffer b;
  ASSERT_TRUE(b._Write("0123456789", 10));
  ASSERT_TRUE(b.SetCurrentPos(8));
  ASSERT_TRUE(b.SetBufferPos(5));
  EXPECT_EQ(b.GetCurrentPos(), 5u) << "the cursor is lowered with the data end";
  EXPECT_FALSE(b.SetBufferPos(33));
  EXPECT_EQ(b.GetErrorCode(), kErrOutOfRange);
  EXPECT_EQ(b.GetBufferPos(), 5u);
  b.ResetError();

  EXPECT_TRUE(b.ShiftBufferPos(-5));
  EXPECT_FALSE(b.ShiftBufferPos(-1));
  EXPECT_EQ(b.GetBufferPos(), 0u);
  b.ResetError();
  EXPECT_TRUE(b.ShiftBufferPos(100)) << "the data end may pass the allocation";
  EXPECT_EQ(b.GetCurrentPos(), 5u) << "and the cursor is not adjusted";
  b._SetBufferPos(0xFFFFFFF0u);
  EXPECT_FALSE(b.ShiftBufferPos(0x10));
  EXPECT_TRUE(b.ShiftBufferPos(0x0F));
  b._SetBufferPos(10);
  EXPECT_TRUE(b.SetStringPos(3));
  EXPECT_EQ(b.GetBufferPos(), 6u);
  EXPECT_TRUE(b.ShiftStringPos(-1));
  EXPECT_EQ(b.GetBufferPos(), 4u);
}

TEST(BufferPositions, CursorChecksTestTheOldValue) {
  // Callers park the cursor anywhere; the next checked call notices it.
  XBuffer b;
  ASSERT_TRUE(b._Write("0123456789", 10));
  EXPECT_TRUE(b.SetCurrentPos(1000));
  EXPECT_EQ(b.GetCurrentPos(), 1000u);
  EXPECT_FALSE(b.ResetCurrentPos());
  EXPECT_EQ(b.GetErrorCode(), kErrOutOfRange);
  b.ResetError();
  EXPECT_FALSE(b.SetCurrentPos(0));
  EXPECT_FALSE(b.ShiftCurrentPos(-995));
  b._SetCurrentPos(9);
  EXPECT_TRUE(b.ShiftCurrentPos(50));
  EXPECT_EQ(b.GetCurrentPos(), 59u);
  char c;
  EXPECT_EQ(b._Read(&c, 1), 0u) << "a cursor beyond the data reads nothing";
  b._SetCurrentPos(3);
  EXPECT_TRUE(b.ResetCurrentPos());
  EXPECT_EQ(b.GetCurrentPos(), 0u);
}

TEST(BufferStream, ReadsAndSkips) {
  XBuffer b;
  ASSERT_TRUE(b._Write("0123456789", 10));
  char out[100];
  ASSERT_TRUE(b._ShiftForward(0));
  EXPECT_EQ(b._Read(out, 4), 4u);
  EXPECT_EQ(b._Read(out, 100), 6u);
  EXPECT_TRUE(b.IsOk()) << "a short read is the end of data, not an error";
  EXPECT_TRUE(b.EoB());

  b._SetCurrentPos(8);
  EXPECT_FALSE(b._ShiftForward(3));
  EXPECT_EQ(b.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(b.GetCurrentPos(), 8u);
  b.ResetError();
  EXPECT_TRUE(b._ShiftForward(2));
  EXPECT_TRUE(b.EoB());
}

TEST(BufferStream, UnreadTakesBackTheLastWrittenUnit) {
  XBuffer b;
  ASSERT_TRUE(b._Write("a", 1));
  EXPECT_FALSE(b._UnreadChar(u'x'));
  EXPECT_EQ(b.GetErrorCode(), kErrCannotUnread);
  XBuffer c;
  ASSERT_TRUE(c._Write("abcd", 4));
  EXPECT_TRUE(c._UnreadChar(u'x'));
  EXPECT_EQ(c.GetBufferPos(), 2u);
  EXPECT_EQ(c.GetCurrentPos(), 0u);
}

TEST(BufferStream, ReadToBufferAndSave) {
  XBuffer source;
  ASSERT_TRUE(source._Write("abcdef", 6));
  XBuffer target;
  ASSERT_TRUE(target._Write("x", 1));
  EXPECT_TRUE(target.ReadToBuffer(source, 4));
  EXPECT_EQ(target.GetBufferPos(), 5u);
  EXPECT_FALSE(target.ReadToBuffer(source, 4));
  EXPECT_EQ(target.GetBufferPos(), 7u) << "what arrived is kept";
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(source.GetErrorCode(), kErrEndOfData) << "the source is told too";

  char fixed[4];
  XBuffer small;
  small.AttachBuffer(fixed, 4, false);
  source.ResetError();
  source.ResetCurrentPos();
  EXPECT_EQ(small._ReadToBuffer(source, 10), 0u);
  EXPECT_TRUE(source.IsOk()) << "a silent growth failure passes on no error";

  XBuffer saved;
  target._SetCurrentPos(3);
  ASSERT_TRUE(target.SaveBuffer(saved));
  EXPECT_EQ(saved.GetBufferPos(), 7u) << "the whole data, wherever the cursor is";
  EXPECT_EQ(std::memcmp(saved.GetBuffer(), "xabcdef", 7), 0);
}

TEST(BufferStream, FreeAndDiscard) {
  XBuffer b;
  ASSERT_TRUE(b._Write("abc", 3));
  void* block = b.GetBuffer();
  b.DiscardBuffer();
  EXPECT_EQ(b.GetBuffer(), nullptr);
  EXPECT_EQ(b.GetBufferSize(), 0u);
  std::free(block);
  ASSERT_TRUE(b._Write("abc", 3));
  b.FreeBuffer();
  EXPECT_EQ(b.GetBufferPos(), 0u);
  EXPECT_EQ(b.GetBuffer(), nullptr);
  EXPECT_TRUE(b.FreeUnusedBuffer());
}

}  // namespace
}  // namespace tavi

namespace tavi {
namespace {

TEST(BufferStream, ReadToMovesExactlyTheCount) {
  XBuffer source;
  ASSERT_TRUE(source._Write("0123456789", 10));
  XBuffer target;
  ASSERT_TRUE(source.ReadTo(target, 4));
  EXPECT_EQ(source.GetCurrentPos(), 4u);
  ASSERT_TRUE(source.ReadTo(source, 6)) << "a buffer may copy to itself";
  EXPECT_EQ(std::memcmp(source.GetBuffer(), "0123456789456789", 16), 0);
  EXPECT_FALSE(source.ReadTo(target, 7));
  EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(target.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(target.GetBufferPos(), 4u) << "nothing is written on a short read";
  EXPECT_TRUE(source.EoB());
}

}  // namespace
}  // namespace tavi
