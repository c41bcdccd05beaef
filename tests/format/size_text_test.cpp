//===- size_text_test.cpp - Byte sizes, ratios and speeds as text ----------===//
#include "tavi/format/size_text.h"

#include <gtest/gtest.h>

#include "io/test_streams.h"
#include "text_helpers.h"
#include "time/internal/proc_time.h"

namespace tavi {
namespace {

using test::Stream;

std::u16string Bytes(uint64_t bytes, char16_t point = u'.') {
  return Stream([&](XIO& o) { return XWriteSize(o, bytes, point); });
}
std::u16string Size(uint64_t value, uint64_t divisor) {
  return Stream([&](XIO& o) { return XWriteSize(o, value, divisor, u'.'); });
}

TEST(SizeText, ByteCountsAndDivisors) {
  EXPECT_EQ(Bytes(1023), u"1023.00 B");
  EXPECT_EQ(Bytes(1024), u"1024.00 B");  // a level is taken only above 1024 units
  EXPECT_EQ(Bytes(1025), u"1.00 kB");
  EXPECT_EQ(Bytes(1536, u','), u"1,50 kB");
  EXPECT_EQ(Bytes(1048576), u"1024.00 kB");
  EXPECT_EQ(Bytes(1073741824), u"1024.00 MB");
  EXPECT_EQ(Bytes(2147483648), u"2.00 TB");            // the third step is labelled TB
  EXPECT_EQ(Bytes(uint64_t{1} << 41), u"2048.00 TB");  // no level beyond the table
  EXPECT_EQ(Bytes(184467440737095516), u"171798691.83 TB");
  EXPECT_EQ(Bytes(UINT64_MAX), u"17179869183.99 TB");  // through divisor 1
  EXPECT_EQ(Size(12005, 1000), u"12.005 B");
  EXPECT_EQ(Size(7, 1), u"7.0 B");
  EXPECT_EQ(Size(101, 50), u"2.01 B");  // the remainder takes the width of divisor - 1
  EXPECT_EQ(Size(3000000, 1000), u"2.92 kB");
  EXPECT_EQ(Size(UINT64_MAX, UINT64_MAX), u"1.00000000000000000000 B");
  XBuffer out;
  EXPECT_FALSE(XWriteSize(out, 5, 0, u'.'));
  EXPECT_EQ(out.GetErrorCode(), kErrTooLong);
}

TEST(SizeText, Percents) {
  const std::tuple<uint32_t, uint32_t, const char16_t*> cases[] = {
      {7, 0, u"7"},
      {15, 10, u"1.05"},  // one decimal, still padded to two digits
      {1234, 100, u"12.34"},
      {1, 3, u"0.33"},
      {42949672, 7, u"6135667.42"},
      {42949673, 7, u"6135667.05"},  // value * 100 would not fit: one decimal
      {429496729, 7, u"61356675.05"},
      {429496730, 7, u"61356675"},  // value * 10 would not fit: none
  };
  for (const auto& [value, scale, text] : cases) {
    EXPECT_EQ(Stream([&](XIO& o) { return XWritePercents(o, value, scale, u'.'); }), text)
        << value << "/" << scale;
  }
  auto pct = [](uint64_t part, uint64_t whole) {
    return Stream([&](XIO& o) { return XWriteSizePercents(o, part, whole, u'.'); });
  };
  EXPECT_EQ(pct(1, 3), u"33.33");
  EXPECT_EQ(pct(5, 5), u"100.00");
  EXPECT_EQ(pct(UINT64_MAX / 3, UINT64_MAX), u"33.33");
  EXPECT_EQ(pct(UINT64_MAX, UINT64_MAX / 2), u"200.00");
  XBuffer out;  // the whole vanishes while the part is scaled down
  EXPECT_FALSE(XWriteSizePercents(out, UINT64_MAX, 9, u'.'));
  EXPECT_EQ(out.GetErrorCode(), kErrOutOfRange);
}

TEST(SizeText, Speed) {
  const auto second = static_cast<int64_t>(internal::ProcTimeFrequency());
  auto speed = [](int64_t ticks, uint64_t bytes) {
    return Stream([&](XIO& o) { return WriteSpeed(o, ticks, bytes, u'.'); });
  };
  EXPECT_EQ(speed(second, 1536), u"1.50 kB/s");
  EXPECT_EQ(speed(second * 2, 2048), u"1024.0000 B/s");  // divisor 2000 ms: four places
  EXPECT_EQ(speed(second / 2, uint64_t{3} << 20), u"6.00 MB/s");
  EXPECT_EQ(speed(second / 1000 - 1, 1000), u"\u2013");  // below one millisecond
  EXPECT_EQ(speed(-second, 1000), u"\u2013");
  EXPECT_EQ(speed(second, UINT64_MAX), u"17179869183.99 TB/s");
  EXPECT_EQ(speed(second / 100, UINT64_MAX), u"\u2013");  // 10 ms scale down to nothing
  test::Sink sink(2);                                     // the size goes out, "/s" fails
  EXPECT_FALSE(WriteSpeed(sink, second, 1, u'.'));
}

}  // namespace
}  // namespace tavi
