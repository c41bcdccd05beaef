//===- string_test.cpp - Terminated wide and byte strings ------------------===//
#include "tavi/core/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tavi {
namespace {

TEST(String16, EveryWriteIsTerminated) {
  XString16 s;
  ASSERT_TRUE(s._Write(nullptr, 0));
  ASSERT_NE(s.GetBuffer(), nullptr) << "a write of 0 bytes yields an empty terminated text";
  EXPECT_EQ(s.GetLenght(), 0u);
  ASSERT_TRUE(s._Write(u"abc", 6));
  EXPECT_EQ(s[3], 0);
  EXPECT_EQ(std::u16string(s.c_str()), u"abc");
  s._UnreadChar(0);
  ASSERT_TRUE(s._Write(u"Z", 2));
  EXPECT_EQ(std::u16string(s.c_str()), u"abZ");
  // The terminator is not part of the data.
  EXPECT_EQ(s.GetBufferPos(), 6u);
}

TEST(String16, LengthStopsAtAnEmbeddedZero) {
  XString16 s;
  const char16_t data[] = {u'A', 0, u'B'};
  ASSERT_TRUE(s._Write(data, sizeof data));
  EXPECT_EQ(s.GetLenght(), 1u);
  EXPECT_EQ(s.GetBufferPos(), 6u);
  EXPECT_EQ(XString16().GetLenght(), 0u);

  // An attached text without a terminator is measured within its block only.
  char16_t block[3] = {u'x', u'y', u'z'};
  XString16 attached;
  attached.AttachBuffer(block, sizeof block, true);
  EXPECT_LE(attached.GetLenght(), 3u);
}

TEST(String16, CompareHandlesMissingTexts) {
  XString16 none;
  EXPECT_EQ(none.Compare(static_cast<const char16_t*>(nullptr)), 0);
  EXPECT_EQ(none.Compare(u""), -1);
  XString16 s;
  s.Set(u"a");
  EXPECT_EQ(s.Compare(static_cast<const char16_t*>(nullptr)), 1);
  EXPECT_EQ(s.Compare(none), 1);
  EXPECT_EQ(s.Compare(u"a"), 0);
}

TEST(String16, CompareIsLinguistic) {
  XString16 lower;
  lower.Set(u"apple");
  // Code units put "Banana" first ('B' < 'a'); a linguistic order does not.
  EXPECT_EQ(lower.Compare(u"Banana"), -1);
  EXPECT_EQ(lower.Compare(u"Apple"), -1) << "case-sensitive: lower case first";
  XString16 accented;
  accented.Set(u"\u00e9t\u00e9");
  EXPECT_EQ(accented.Compare(u"ete"), 1);
  EXPECT_EQ(accented.Compare(u"f"), -1);
}

TEST(String16, SetLowerConvertsToUpperCase) {
  // Callers rely on SetLower and SetUpper being the same upper-casing operation;
  // _SetLower is the one that lowers.
  XString16 s;
  s.Set(u"abc");
  s.SetLower(0);
  EXPECT_EQ(std::u16string(s.c_str()), u"Abc");
  s.SetUpper(2);
  EXPECT_EQ(std::u16string(s.c_str()), u"AbC");
  s._SetLower(0);
  EXPECT_EQ(std::u16string(s.c_str()), u"abC");
  s.SetUpper(3);  // at the data end: nothing happens
  EXPECT_EQ(s[3], 0);
  XString16 sharp;
  sharp.Set(u"\u00e4");
  sharp.SetUpper(0);
  EXPECT_EQ(sharp[0], u'\u00c4');
}

TEST(String8, TwinsCountBytes) {
  XString8 s;
  ASSERT_TRUE(s.Set("hello"));
  EXPECT_EQ(s.GetBufferPos(), 5u);
  EXPECT_EQ(s[5], 0);
  ASSERT_TRUE(s.Add(" world"));
  EXPECT_STREQ(s.c_str(), "hello world");
  EXPECT_EQ(s.GetLenght(), 11u);
  EXPECT_EQ(s.GetAvailableString(), s.GetBufferSize() - 11);
  EXPECT_EQ(s.GetStringEnd(), s.c_str() + 11);
  ASSERT_TRUE(s.SetStringPos(5));
  EXPECT_EQ(s.GetBufferPos(), 5u);
  ASSERT_TRUE(s.AllocString(100));
  EXPECT_GE(s.GetBufferSize(), 100u);

  s.Set("abc");
  s.SetLower(1);
  EXPECT_STREQ(s.c_str(), "aBc");
  s._SetLower(1);
  EXPECT_STREQ(s.c_str(), "abc");

  XString8 none;
  EXPECT_EQ(none.Compare(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(s.Compare("abd"), -1);
  EXPECT_EQ(s.Compare("ABC"), -1);
  EXPECT_EQ(s.Compare("abc"), 0);
}

TEST(String8, RemoveDosNewLines) {
  char text[] = "a\r\nb\rc\r\n\r\n";
  const uint32_t n = XRemoveDOSNewLines(text, sizeof text - 1);
  EXPECT_EQ(n, 7u);
  EXPECT_EQ(std::string(text, n), "a\nb\rc\n\n");
  char plain[] = "abc\r";
  EXPECT_EQ(XRemoveDOSNewLines(plain, 4), 4u) << "a final lone carriage return stays";
}

TEST(StreamStrings, LengthPrefixedRoundTrip) {
  XString16 text;
  text.Set(u"h\u00e9llo");
  XString8 bytes;
  bytes.Set("bytes");
  XBuffer stream;
  ASSERT_TRUE(stream.Write(text));
  ASSERT_TRUE(stream.Write(bytes));
  EXPECT_EQ(stream.GetBufferPos(), 4u + 10 + 4 + 5);
  XString16 text2;
  XString8 bytes2;
  ASSERT_TRUE(stream.Read(text2));
  ASSERT_TRUE(stream.Read(bytes2));
  EXPECT_FALSE(text2.IsDifferent(text));
  EXPECT_STREQ(bytes2.c_str(), "bytes");
}

TEST(StreamStrings, ReadsTheDocumentedLayout) {
  const uint8_t bytes[] = {4, 0, 0, 0, 0x41, 0, 0x42, 0};
  XBuffer in;
  in._Write(bytes, sizeof bytes);
  XString16 s;
  ASSERT_TRUE(in.Read(s));
  EXPECT_EQ(std::u16string(s.c_str()), u"AB");
  EXPECT_EQ(s.GetBufferPos(), 4u);
}

TEST(StreamStrings, TruncatedAndHostileLengths) {
  XBuffer in;
  in._Write("\x03\x00", 2);
  XString16 s;
  EXPECT_FALSE(in.Read(s));
  EXPECT_EQ(in.GetErrorCode(), kErrEndOfData);

  // A length far beyond the data is refused without allocating it.
  XBuffer hostile;
  hostile._Write(
      "\x00\xFF\xFF\xFF"
      "abcdef",
      10);
  XString8 t;
  EXPECT_FALSE(hostile.Read(t));
  EXPECT_EQ(hostile.GetErrorCode(), kErrEndOfData);
  EXPECT_LT(t.GetBufferSize(), 4u << 20);
  EXPECT_STREQ(t.c_str(), "abcdef");
}

}  // namespace
}  // namespace tavi
