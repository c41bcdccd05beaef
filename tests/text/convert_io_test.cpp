//===- convert_io_test.cpp - The converting filter stream ------------------===//
#include "tavi/text/convert_io.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "io/test_streams.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/text/convert.h"
#include "tavi/text/text_file.h"

namespace tavi {
namespace {

using test::Data;

// Text in each format, with characters each target lacks and broken pieces.
std::vector<uint8_t> Sample(uint16_t format) {
  if (format == kTextUtf8) {
    const std::string s =
        "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xD0\x96 \x80 \xE2\x82 end\r\n";
    std::string all;
    for (int i = 0; i < 300; ++i) all += s;
    return {all.begin(), all.end()};
  }
  if (format == kTextUtf16) {
    const std::u16string s = u"caf\u00E9 \u20AC \U0001F600 \u0416 \xD800 x\xDC00 end\r\n";
    std::u16string all;
    for (int i = 0; i < 300; ++i) all += s;
    const auto* p = reinterpret_cast<const uint8_t*>(all.data());
    return {p, p + 2 * all.size()};
  }
  std::vector<uint8_t> all;
  for (int i = 0; i < 2000; ++i) all.push_back(static_cast<uint8_t>(i * 37 + 11));
  return all;
}

// The whole input converted in one call: what every split must give.
std::vector<uint8_t> OneShot(uint16_t target, uint16_t source, const std::vector<uint8_t>& in) {
  XBuffer out;
  EXPECT_TRUE(XConvertText(out, target, source, in.data(), static_cast<uint32_t>(in.size())));
  return Data(out);
}

constexpr uint16_t kFormats[] = {kTextUtf8, kTextUtf16, 1252, 850};

TEST(ConvertIO, AnySplitOfWritesAndReadsGivesTheOneShotResult) {
  std::mt19937 rng(11);
  for (uint16_t source : kFormats) {
    for (uint16_t target : kFormats) {
      SCOPED_TRACE(testing::Message() << source << " -> " << target);
      const std::vector<uint8_t> in = Sample(source);
      const std::vector<uint8_t> expected = OneShot(target, source, in);
      for (int round = 0; round < 4; ++round) {
        // Round 0 goes byte by byte; the others in random pieces. Writes go into a
        // plain buffer (converted in place) and into another stream (staged).
        const auto piece = [&](size_t left) {
          return static_cast<uint32_t>(round == 0 ? 1 : std::min<size_t>(left, rng() % 9 + 1));
        };
        XBuffer buffer;
        test::Sink sink;
        XConvertIO to_buffer(&buffer, target, source);
        XConvertIO to_sink(&sink, target, source);
        for (size_t i = 0; i < in.size();) {
          const uint32_t n = piece(in.size() - i);
          ASSERT_TRUE(to_buffer._Write(in.data() + i, n));
          ASSERT_TRUE(to_sink._Write(in.data() + i, n));
          i += n;
        }
        ASSERT_TRUE(to_buffer._Flush());
        ASSERT_TRUE(to_sink._Flush());
        EXPECT_FALSE(to_buffer.Pending());
        ASSERT_EQ(Data(buffer), expected);
        ASSERT_EQ(sink.bytes, expected);
        EXPECT_EQ(sink.flushes, 1);

        test::Source from(in);
        XConvertIO reader(&from, target, source);
        std::vector<uint8_t> got;
        uint8_t bytes[16];
        for (uint32_t n; (n = reader._Read(bytes, piece(16))) != 0;)
          got.insert(got.end(), bytes, bytes + n);
        EXPECT_TRUE(reader.IsOk());
        ASSERT_EQ(got, expected);
      }
    }
  }
}

TEST(ConvertIO, CutCharacterWaitsUntilTheRestOrTheFlush) {
  XBuffer out;
  XConvertIO filter(&out, kTextUtf16, kTextUtf8);
  ASSERT_TRUE(filter._Write("\xE2", 1));
  ASSERT_TRUE(filter._Write("\x82", 1));
  EXPECT_TRUE(filter.Pending());
  EXPECT_EQ(out.GetBufferPos(), 0u);
  ASSERT_TRUE(filter._Write("\xAC\xF0\x9F", 3));
  EXPECT_EQ(out.GetBufferPos(), 2u);
  ASSERT_TRUE(filter._Flush());  // the cut emoji becomes one "?"
  EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(out._GetBufferAt(0)), 2), u"\u20AC?");

  // A surrogate pair split between writes of UTF-16, and an odd byte.
  XBuffer utf8;
  XConvertIO narrow(&utf8, kTextUtf8, kTextUtf16);
  const std::u16string pair = u"\U0001F600";
  const auto* p = reinterpret_cast<const uint8_t*>(pair.data());
  ASSERT_TRUE(narrow._Write(p, 3));
  EXPECT_TRUE(narrow.Pending());
  ASSERT_TRUE(narrow._Write(p + 3, 1));
  ASSERT_TRUE(narrow._Write("A", 1));
  ASSERT_TRUE(narrow._Flush());
  EXPECT_EQ(Data(utf8), test::Bytes({0xF0, 0x9F, 0x98, 0x80, '?'}));
}

TEST(ConvertIO, StrictModeStopsAtTheFirstFault) {
  XBuffer out;
  XConvertIO filter(&out, 1252, kTextUtf8, kConvertStrict);
  ASSERT_TRUE(filter._Write("ab", 2));
  EXPECT_EQ(test::Fail(filter._Write("\xE4\xB8\xAD", 3), filter), kErrConversion);  // 中
  // The stream stays failed until it is set up again.
  EXPECT_EQ(test::Fail(filter._Write("c", 1), filter), kErrConversion);
  ASSERT_TRUE(filter.SetFormats(1252, kTextUtf8, kConvertStrict));
  ASSERT_TRUE(filter._Write("\xE2", 1));
  EXPECT_EQ(test::Fail(filter._Flush(), filter), kErrConversion);  // cut at the end
  EXPECT_EQ(Data(out), test::Bytes({'a', 'b'}));

  test::Source from(std::string("ok\xFF"));
  XConvertIO reader(&from, kTextUtf16, kTextUtf8, kConvertStrict);
  char16_t units[8];
  EXPECT_EQ(reader._Read(units, sizeof units), 0u);
  EXPECT_EQ(reader.GetErrorCode(), kErrConversion);
}

TEST(ConvertIO, UnusableFormatsAndFailingNextStream) {
  XBuffer out;
  XConvertIO no_table(&out, 4242, kTextUtf16);
  EXPECT_EQ(no_table.GetErrorCode(), kErrSaveEncoding);
  EXPECT_EQ(test::Fail(no_table._Write("a\0", 2), no_table), kErrSaveEncoding);
  XConvertIO big_endian(&out, kTextUtf16BE, kTextUtf8);
  EXPECT_EQ(test::Fail(big_endian._Write("a", 1), big_endian), kErrLoadEncoding);
  EXPECT_EQ(out.GetBufferPos(), 0u);

  test::Sink failing(1);
  XConvertIO filter(&failing, kTextUtf16, kTextUtf8);
  EXPECT_EQ(test::Fail(filter._Write("abc", 3), filter), kErrTooLong);
  test::Sink flush_fails;
  flush_fails.fail_flush = true;
  XConvertIO flushing(&flush_fails, kTextUtf16, kTextUtf8);
  EXPECT_EQ(test::Fail(flushing._Flush(), flushing), kErrTooLong);

  XConvertIO unhooked;
  EXPECT_EQ(test::Fail(unhooked._Write("a", 1), unhooked), kErrInternal);

  // A string target has its own _Write, which the filter goes through.
  XString16 text;
  XConvertIO to_string(&text, kTextUtf16, kTextUtf8);
  ASSERT_TRUE(to_string._Write("h\xC3\xA9", 3));
  EXPECT_EQ(text.GetBufferPos(), 4u);
}

}  // namespace
}  // namespace tavi
