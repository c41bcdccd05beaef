//===- buffer_test.cpp - Growth, positions and stream slots of XBuffer -----===//
#include "tavi/core/buffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <tuple>
#include <vector>

namespace tavi {
namespace {

using Sizes = std::vector<uint32_t>;
// Allocated size, data end and read cursor.
using State = std::tuple<uint32_t, uint32_t, uint32_t>;

State StateOf(const XBuffer& b) {
  return {b.GetBufferSize(), b.GetBufferPos(), b.GetCurrentPos()};
}

// The error a call that must fail left behind (~0 when it succeeded).
uint32_t Fail(bool ok, const XError& e) {
  return ok ? ~0u : e.GetErrorCode();
}

// Records the sizes asked of the block allocator; with fail set nothing is allocated.
class RecordingBuffer : public XBuffer {
 public:
  using XBuffer::XBuffer;
  Sizes requests;
  bool fail = false;

 protected:
  bool _BufferRealloc(uint32_t size) override {
    requests.push_back(size);
    return !fail && XBuffer::_BufferRealloc(size);
  }
};

TEST(BufferGrowth, StepsOfTheGranularity) {
  // Each row grows a fresh buffer through its requests in order.
  const struct {
    uint32_t granularity;
    Sizes requests, reallocs;
  } kCases[] = {
      {32, {1, 32}, {32}},          // a size that fits never reallocates
      {32, {1, 40, 10}, {32, 64}},  // never shrinks
      {32, {32}, {64}},             // a multiple of the granularity gets a full step
      {7, {15}, {21}},
      {0, {5}, {6}},  // granularity 0 is 1
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.granularity << " " << c.requests.back());
    RecordingBuffer b(c.granularity);
    for (uint32_t r : c.requests) ASSERT_TRUE(b.AllocBuffer(r));
    EXPECT_EQ(b.requests, c.reallocs);
    EXPECT_EQ(b.GetBufferSize(), c.reallocs.back());
    // Owned blocks keep 4 spare bytes, so a terminator fits after the last usable one.
    std::memset(b.GetBuffer(), 'x', b.GetBufferSize() + 4);
  }
}

TEST(BufferGrowth, SizesNearTheLimit) {
  RecordingBuffer b;
  b.fail = true;
  EXPECT_EQ(Fail(b.AllocBuffer(0xFFFFFFF0u), b), kErrNoMemory);
  EXPECT_EQ(b.requests, Sizes{0xFFFFFFF0u}) << "no rounding near the limit";
  EXPECT_EQ(b.GetBufferSize(), 0u);
  b.SetWinError(5);
  EXPECT_EQ(Fail(b.AllocBuffer(10), b), 5u) << "out of memory only when no error is pending";
  for (uint32_t size : {0xFFFFFFFEu, 0xFFFFFFFFu}) {
    RecordingBuffer c;
    EXPECT_EQ(Fail(c.AllocBuffer(size), c), kErrOutOfRange);
    EXPECT_TRUE(c.requests.empty());
  }
}

TEST(BufferGrowth, GrowAndReserveTestTheAllocatedSize) {
  XBuffer b;
  ASSERT_TRUE(b._Write("abc", 3));
  // The overflow test adds the allocated size (32), the request adds the data end (3).
  EXPECT_EQ(Fail(b.GrowBuffer(0xFFFFFFFFu - 31), b), kErrOutOfRange);
  ASSERT_TRUE(b.GrowBuffer(29));
  EXPECT_EQ(b.GetBufferSize(), 32u);
  ASSERT_TRUE(b.GrowBuffer(30));
  EXPECT_EQ(b.ReserveBufferMem(5), b._GetBufferAt(3));
  EXPECT_EQ(StateOf(b), State(64, 8, 0));
}

TEST(BufferAttach, SizeMinusOneAndNoGrowth) {
  char block[10] = "123456789";
  XBuffer b;
  b.AttachBuffer(block, 10, true);
  EXPECT_EQ(StateOf(b), State(9, 10, 0));
  EXPECT_FALSE(b._Write("x", 1));
  EXPECT_TRUE(b.IsOk()) << "an attached block fails to grow without an error";
  // Reset forgets the block but keeps its recorded size; the next write allocates.
  ASSERT_TRUE(b.ResetBuffer());
  EXPECT_EQ(b.GetBuffer(), nullptr);
  EXPECT_EQ(StateOf(b), State(9, 0, 0));
  ASSERT_TRUE(b._Write("xy", 2));
  EXPECT_EQ(std::memcmp(block, "123456789", 10), 0);

  XBuffer half;
  half.AttachBuffer(block, 10, false);
  EXPECT_EQ(StateOf(half), State(9, 0, 0));
  EXPECT_TRUE(half._Write("abcdefghi", 9));
  EXPECT_FALSE(half._Write("j", 1));
  half.FreeBuffer();  // attached: not freed (asan checks)
  EXPECT_EQ(block[0], 'a');

  XBuffer none;
  none.AttachBuffer(block, 0, false);
  EXPECT_EQ(StateOf(none), State(0, 0, 0)) << "a block of no bytes has no usable byte";
  EXPECT_FALSE(none.AllocBuffer(1));
}

TEST(BufferAttach, AssumeTakesOwnership) {
  auto* block = static_cast<char*>(std::malloc(8));
  std::memcpy(block, "abcdefgh", 8);
  XBuffer b;
  b.AssumeBuffer(block, 8, true);
  EXPECT_EQ(StateOf(b), State(7, 8, 0));
  ASSERT_TRUE(b._Write("i", 1));  // grows the assumed block
  EXPECT_EQ(std::memcmp(b.GetBuffer(), "abcdefghi", 9), 0);

  XBuffer other;
  ASSERT_TRUE(other._Write("zz", 2));
  other.SetErrorCode(kErrEndOfData);
  other._SetCurrentPos(1);
  b.AssumeBuffer(other);
  EXPECT_EQ(StateOf(b), State(32, 2, 1));
  EXPECT_EQ(other.GetBuffer(), nullptr);
  EXPECT_EQ(StateOf(other), State(0, 0, 0));
  EXPECT_EQ(other.GetErrorCode(), kErrEndOfData) << "the error stays with its object";
}

TEST(BufferCopy, CopiesShareTheBlockAndDiscardForgetsIt) {
  XBuffer a;
  ASSERT_TRUE(a._Write("hello", 5));
  XBuffer b = a;
  b.DiscardBufferOwnership();  // only one side may free the block
  static_cast<char*>(a.GetBuffer())[0] = 'j';
  EXPECT_EQ(static_cast<char*>(b.GetBuffer())[0], 'j');
  EXPECT_FALSE(b.AllocBuffer(100)) << "the side without ownership never grows the block";

  void* block = a.GetBuffer();
  a.DiscardBuffer();
  EXPECT_EQ(a.GetBuffer(), nullptr);
  EXPECT_EQ(StateOf(a), State(0, 0, 0));
  std::free(block);  // a must not free it again
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
  EXPECT_EQ(Fail(b.SetBufferPos(33), b), kErrOutOfRange);
  EXPECT_TRUE(b.ShiftBufferPos(-5));
  EXPECT_EQ(Fail(b.ShiftBufferPos(-1), b), kErrOutOfRange);
  EXPECT_TRUE(b.ShiftBufferPos(100)) << "the data end may pass the allocation";
  EXPECT_EQ(StateOf(b), State(32, 100, 5)) << "and the cursor is not adjusted";
  b._SetBufferPos(0xFFFFFFF0u);
  EXPECT_FALSE(b.ShiftBufferPos(0x10));
  EXPECT_TRUE(b.ShiftBufferPos(0x0F));
  b._SetBufferPos(10);
  EXPECT_TRUE(b.SetStringPos(3));
  EXPECT_TRUE(b.ShiftStringPos(-1));
  EXPECT_EQ(b.GetBufferPos(), 4u);
}

TEST(BufferPositions, CursorChecksTestTheOldValue) {
  // Callers park the cursor anywhere; the next checked call notices it.
  XBuffer b;
  ASSERT_TRUE(b._Write("0123456789", 10));
  EXPECT_TRUE(b.SetCurrentPos(1000));
  EXPECT_EQ(Fail(b.ResetCurrentPos(), b), kErrOutOfRange);
  EXPECT_FALSE(b.SetCurrentPos(0));
  EXPECT_FALSE(b.ShiftCurrentPos(-995));
  EXPECT_EQ(b.GetCurrentPos(), 1000u);
  b._SetCurrentPos(9);
  EXPECT_TRUE(b.ShiftCurrentPos(50));
  EXPECT_EQ(b.GetCurrentPos(), 59u);
  char c;
  EXPECT_EQ(b._Read(&c, 1), 0u) << "a cursor beyond the data reads nothing";
  b._SetCurrentPos(3);
  EXPECT_TRUE(b.ResetCurrentPos());
  EXPECT_EQ(b.GetCurrentPos(), 0u);
}

TEST(BufferStream, ReadsSkipsAndUnreads) {
  XBuffer b;
  ASSERT_TRUE(b._Write("0123456789", 10));
  char out[100];
  EXPECT_EQ(b._Read(out, 4), 4u);
  EXPECT_EQ(b._Read(out, 100), 6u);
  EXPECT_TRUE(b.IsOk()) << "a short read is the end of data, not an error";
  b._SetCurrentPos(8);
  EXPECT_EQ(Fail(b._ShiftForward(3), b), kErrEndOfData);
  EXPECT_EQ(b.GetCurrentPos(), 8u);
  EXPECT_TRUE(b._ShiftForward(2));
  EXPECT_TRUE(b.EoB());
  // Unreading takes back the last written code unit, not the cursor.
  EXPECT_TRUE(b._UnreadChar(u'x'));
  EXPECT_EQ(StateOf(b), State(32, 8, 10));
  b._SetBufferPos(1);
  EXPECT_EQ(Fail(b._UnreadChar(u'x'), b), kErrCannotUnread);
}

TEST(BufferStream, TransfersToAndFromOtherStreams) {
  XBuffer source;
  ASSERT_TRUE(source._Write("abcdef", 6));
  XBuffer target;
  ASSERT_TRUE(target._Write("x", 1));
  EXPECT_TRUE(target.ReadToBuffer(source, 4));
  EXPECT_EQ(Fail(target.ReadToBuffer(source, 4), target), kErrEndOfData);
  EXPECT_EQ(target.GetBufferPos(), 7u) << "what arrived is kept";
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

  // ReadTo moves exactly the count, to another buffer or to itself.
  ASSERT_TRUE(saved.ReadTo(source, 4));
  ASSERT_TRUE(saved.ReadTo(saved, 3));
  EXPECT_EQ(std::memcmp(saved.GetBuffer(), "xabcdefdef", 10), 0);
  EXPECT_EQ(Fail(saved.ReadTo(source, 4), saved), kErrEndOfData);
  EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(source.GetBufferPos(), 10u) << "nothing is written on a short read";
  EXPECT_TRUE(saved.EoB()) << "what was left is consumed";
}

}  // namespace
}  // namespace tavi
