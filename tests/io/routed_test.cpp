//===- routed_test.cpp - Routed chain, counter and tee ---------------------===//
#include "tavi/io/routed.h"

#include <gtest/gtest.h>

#include <functional>

#include "test_streams.h"

namespace tavi {
namespace {

using test::Bytes;
using test::Fail;
using test::Sink;

TEST(RoutedIO, ForwardsEveryPrimitive) {
  XBuffer buffer;
  XRoutedIO routed(&buffer);
  ASSERT_TRUE(routed._Write("abcd", 4));
  char16_t c = 0;
  ASSERT_TRUE(routed._ReadChar(c) && routed._ShiftForward(1));
  EXPECT_EQ(c, u'a' | (u'b' << 8));
  char rest[4] = {};
  EXPECT_EQ(routed._Read(rest, 4), 1u);
  EXPECT_EQ(rest[0], 'd');
  EXPECT_TRUE(routed._UnreadChar(u'x'));  // the buffer takes back its last 2 bytes
  EXPECT_EQ(buffer.GetBufferPos(), 2u);
  EXPECT_TRUE(routed._Flush());
}

TEST(RoutedIO, ImportsTheNextStreamsErrorOnFailure) {
  Sink sink(1);
  XRoutedIO routed(&sink);
  EXPECT_EQ(Fail(routed._Write("x", 1), routed), kErrTooLong);
  XBuffer buffer;
  XRoutedIO reader(&buffer);
  EXPECT_EQ(Fail(reader._ShiftForward(3), reader), kErrEndOfData);
  // A read of 0 bytes at the plain end of data copies "no error" and clears the
  // error this stream held.
  buffer.ResetError();
  reader.SetErrorCode(kErrCheckFailed);
  char b;
  EXPECT_EQ(reader._Read(&b, 1), 0u);
  EXPECT_TRUE(reader.IsOk());

  XRoutedIO alone;
  char16_t c;
  const std::function<bool()> calls[] = {
      [&] { return alone._Write("x", 1); }, [&] { return alone._Read(&c, 1) != 0; },
      [&] { return alone._ReadChar(c); },   [&] { return alone._UnreadChar(c); },
      [&] { return alone._Flush(); },       [&] { return alone._ShiftForward(1); },
  };
  for (const auto& call : calls) {
    alone.ResetError();
    XError::InternalErrorCode = 0;
    EXPECT_EQ(Fail(call(), alone), kErrInternal) << "without a next stream";
    EXPECT_EQ(XError::InternalErrorCode, kInternalNoNextStream);
  }
}

TEST(RoutedIO, HookAndBreakHookRebuildTheChain) {
  XBuffer target;
  XRoutedIO head(&target);
  XCounterIO counter;
  ASSERT_TRUE(counter.Hook(&head));  // head -> counter -> target
  EXPECT_TRUE(head.GetNext() == &counter && counter.GetNext() == &target);
  ASSERT_TRUE(head._Write("abc", 3));
  ASSERT_TRUE(counter.BreakHook(&head));  // head -> target
  EXPECT_TRUE(head.GetNext() == &target && counter.GetNext() == nullptr);
  ASSERT_TRUE(head._Write("de", 2));
  EXPECT_EQ(counter.bytes_written, 3u);
  EXPECT_EQ(target.GetBufferPos(), 5u);
}

TEST(CounterIO, CountsBothDirectionsUpToTheLimit) {
  XBuffer buffer;
  XCounterIO counter(&buffer);
  ASSERT_TRUE(counter._Write("hello", 5));
  char out[8];
  EXPECT_EQ(counter._Read(out, 8), 5u);
  EXPECT_EQ(counter._Read(out, 8), 0u);
  EXPECT_TRUE(counter.bytes_written == 5 && counter.bytes_read == 5);
  Sink failing(1);
  XCounterIO raised(&failing);
  EXPECT_EQ(Fail(raised._Write("abc", 3), raised), kErrTooLong);
  EXPECT_EQ(raised.bytes_written, 3u) << "a failed forward stays counted";

  // Counters never overflow: a write that would is refused and forwarded nowhere.
  Sink sink;
  XCounterIO full(&sink);
  full.bytes_written = UINT64_MAX - 10;
  EXPECT_EQ(Fail(full._Write("01234567890", 11), full), kErrCounterLimit);
  EXPECT_TRUE(sink.writes.empty() && full.bytes_written == UINT64_MAX - 10);
  EXPECT_TRUE(full._Write("0123456789", 10));
  EXPECT_EQ(full.bytes_written, UINT64_MAX);
  // A read that would is reported as nothing, yet delivered.
  test::Source source(std::string("abc"));
  XCounterIO reader(&source);
  reader.bytes_read = UINT64_MAX - 1;
  EXPECT_EQ(reader._Read(out, 3), 0u);
  EXPECT_EQ(reader.GetErrorCode(), kErrCounterLimit);
  EXPECT_EQ(out[2], 'c');
}

TEST(DoubleOutIO, WritesAndFlushesBothTargets) {
  Sink first, second;
  XDoubleOutIO tee(&first, &second);
  ASSERT_TRUE(tee._Write("ab", 2) && tee._Flush());
  EXPECT_TRUE(first.bytes == Bytes({'a', 'b'}) && second.bytes == first.bytes);
  EXPECT_TRUE(first.flushes == 1 && second.flushes == 1);
  second.fail_at = 2;
  second.fail_code = kErrCheckFailed;
  EXPECT_EQ(Fail(tee._Write("c", 1), tee), kErrCheckFailed);
  EXPECT_EQ(first.bytes.size(), 3u) << "the first target took it already";
  first.fail_flush = true;
  EXPECT_FALSE(tee._Flush());
  EXPECT_EQ(second.flushes, 1) << "the second is not flushed after the first failed";

  XBuffer data;
  data._Write("xy", 2);
  char out[2];
  EXPECT_EQ(XDoubleOutIO(&data, &second)._Read(out, 2), 2u) << "reading uses the first target";
  XDoubleOutIO half(&data, nullptr);
  EXPECT_EQ(Fail(half._Write("z", 1), half), kErrInternal);
  EXPECT_EQ(data.GetBufferPos(), 2u) << "refused before the first target was touched";
}

}  // namespace
}  // namespace tavi
