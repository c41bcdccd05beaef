//===- routed_test.cpp - Routed chain, counter and tee ---------------------===//
#include "tavi/io/routed.h"

#include <gtest/gtest.h>

#include "tavi/core/buffer.h"
#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Sink;
using test::Source;

TEST(RoutedIO, ForwardsEveryPrimitive) {
  XBuffer buffer;
  XRoutedIO routed(&buffer);
  ASSERT_TRUE(routed._Write("abcd", 4));
  char16_t c = 0;
  ASSERT_TRUE(routed._ReadChar(c));
  EXPECT_EQ(c, u'a' | (u'b' << 8));
  ASSERT_TRUE(routed._ShiftForward(1));
  char rest[4] = {};
  EXPECT_EQ(routed._Read(rest, 4), 1u);
  EXPECT_EQ(rest[0], 'd');
  EXPECT_TRUE(routed._UnreadChar(u'x'));  // the buffer takes back its last 2 bytes
  EXPECT_EQ(buffer.GetBufferPos(), 2u);
  EXPECT_TRUE(routed._Flush());
}

TEST(RoutedIO, ImportsTheNextStreamsErrorOnFailure) {
  Sink sink;
  sink.fail_at = 1;
  XRoutedIO routed(&sink);
  EXPECT_FALSE(routed._Write("x", 1));
  EXPECT_EQ(routed.GetErrorCode(), kErrTooLong);

  XBuffer buffer;
  XRoutedIO reader(&buffer);
  EXPECT_FALSE(reader._ShiftForward(3));
  EXPECT_EQ(reader.GetErrorCode(), kErrEndOfData);

  // A read of 0 bytes at the plain end of data copies "no error" and clears the
  // error this stream held.
  buffer.ResetError();
  reader.SetErrorCode(kErrCheckFailed);
  char b;
  EXPECT_EQ(reader._Read(&b, 1), 0u);
  EXPECT_TRUE(reader.IsOk());
}

TEST(RoutedIO, WithoutNextStreamEveryPrimitiveFailsWithInternalError) {
  XRoutedIO routed;
  char16_t c;
  char b;
  EXPECT_FALSE(routed._Write("x", 1));
  EXPECT_EQ(routed.GetErrorCode(), kErrInternal);
  EXPECT_EQ(XError::InternalErrorCode.load(), kInternalNoNextStream);
  routed.ResetError();
  EXPECT_EQ(routed._Read(&b, 1), 0u);
  EXPECT_EQ(routed.GetErrorCode(), kErrInternal);
  EXPECT_FALSE(routed._ReadChar(c));
  EXPECT_FALSE(routed._UnreadChar(c));
  EXPECT_FALSE(routed._Flush());
  EXPECT_FALSE(routed._ShiftForward(1));
  EXPECT_EQ(routed.GetErrorCode(), kErrInternal);
}

TEST(RoutedIO, HookAndBreakHookRebuildTheChain) {
  XBuffer target;
  XRoutedIO head(&target);
  XCounterIO counter;
  ASSERT_TRUE(counter.Hook(&head));  // head -> counter -> target
  EXPECT_EQ(head.GetNext(), &counter);
  EXPECT_EQ(counter.GetNext(), &target);
  ASSERT_TRUE(head._Write("abc", 3));
  EXPECT_EQ(counter.bytes_written, 3u);

  ASSERT_TRUE(counter.BreakHook(&head));  // head -> target
  EXPECT_EQ(head.GetNext(), &target);
  EXPECT_EQ(counter.GetNext(), nullptr);
  ASSERT_TRUE(head._Write("de", 2));
  EXPECT_EQ(counter.bytes_written, 3u);

  ASSERT_TRUE(counter.Hook(&head));  // restored
  ASSERT_TRUE(head._Write("f", 1));
  EXPECT_EQ(counter.bytes_written, 4u);
  EXPECT_EQ(target.GetBufferPos(), 6u);
}

TEST(CounterIO, CountsBothDirections) {
  XBuffer buffer;
  XCounterIO counter(&buffer);
  ASSERT_TRUE(counter._Write("hello", 5));
  char out[8];
  EXPECT_EQ(counter._Read(out, 8), 5u);
  EXPECT_EQ(counter._Read(out, 8), 0u);
  EXPECT_EQ(counter.bytes_written, 5u);
  EXPECT_EQ(counter.bytes_read, 5u);
}

TEST(CounterIO, RefusesToOverflowItsCounters) {
  Sink sink;
  XCounterIO counter(&sink);
  counter.bytes_written = UINT64_MAX - 10;
  EXPECT_FALSE(counter._Write("01234567890", 11));
  EXPECT_EQ(counter.GetErrorCode(), kErrCounterLimit);
  EXPECT_EQ(sink.writes, 0);  // nothing forwarded
  EXPECT_EQ(counter.bytes_written, UINT64_MAX - 10);
  counter.ResetError();
  EXPECT_TRUE(counter._Write("0123456789", 10));
  EXPECT_EQ(counter.bytes_written, UINT64_MAX);

  Source source(std::string("abc"));
  XCounterIO reader(&source);
  reader.bytes_read = UINT64_MAX - 1;
  char out[3] = {};
  EXPECT_EQ(reader._Read(out, 3), 0u);  // reported as nothing, yet delivered
  EXPECT_EQ(reader.GetErrorCode(), kErrCounterLimit);
  EXPECT_EQ(out[2], 'c');
}

TEST(CounterIO, FailedForwardKeepsTheCountRaised) {
  Sink sink;
  sink.fail_at = 1;
  XCounterIO counter(&sink);
  EXPECT_FALSE(counter._Write("abc", 3));
  EXPECT_EQ(counter.bytes_written, 3u);
  EXPECT_EQ(counter.GetErrorCode(), kErrTooLong);
}

TEST(DoubleOutIO, WritesAndFlushesBothTargets) {
  Sink first, second;
  XDoubleOutIO tee(&first, &second);
  ASSERT_TRUE(tee._Write("ab", 2));
  ASSERT_TRUE(tee._Flush());
  EXPECT_EQ(first.bytes, Bytes({'a', 'b'}));
  EXPECT_EQ(second.bytes, Bytes({'a', 'b'}));
  EXPECT_EQ(first.flushes, 1);
  EXPECT_EQ(second.flushes, 1);

  second.fail_at = 2;
  second.fail_code = kErrCheckFailed;
  EXPECT_FALSE(tee._Write("c", 1));  // the first target took it already
  EXPECT_EQ(first.bytes.size(), 3u);
  EXPECT_EQ(tee.GetErrorCode(), kErrCheckFailed);

  first.fail_flush = true;
  EXPECT_FALSE(tee._Flush());
  EXPECT_EQ(second.flushes, 1);  // the second is not flushed after the first failed
}

TEST(DoubleOutIO, ReadsFromTheFirstAndNeedsASecond) {
  XBuffer first;
  first._Write("xy", 2);
  XBuffer second;
  XDoubleOutIO tee(&first, &second);
  char out[2];
  EXPECT_EQ(tee._Read(out, 2), 2u);

  XDoubleOutIO half(&first, nullptr);
  EXPECT_FALSE(half._Write("z", 1));
  EXPECT_EQ(half.GetErrorCode(), kErrInternal);
  EXPECT_EQ(first.GetBufferPos(), 2u);  // refused before the first target was touched
}

TEST(RoutedIO, CopiesCarryTheNextStream) {
  XBuffer buffer;
  XCounterIO counter(&buffer);
  counter.bytes_written = 7;
  XCounterIO copy(counter);
  EXPECT_EQ(copy.GetNext(), &buffer);
  EXPECT_EQ(copy.bytes_written, 7u);
}

}  // namespace
}  // namespace tavi
