//===- string_test.cpp - Terminated wide and byte strings ------------------===//
#include "tavi/core/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tavi {
namespace {

std::u16string Str(const XString16& s) {
  return s.c_str();
}

TEST(String16, EveryWriteIsTerminated) {
  XString16 s;
  ASSERT_TRUE(s._Write(nullptr, 0));
  ASSERT_NE(s.GetBuffer(), nullptr) << "a write of 0 bytes yields an empty terminated text";
  EXPECT_EQ(s.GetLenght(), 0u);
  ASSERT_TRUE(s._Write(u"abc", 6));
  s._UnreadChar(0);
  ASSERT_TRUE(s._Write(u"Z", 2));
  EXPECT_EQ(Str(s), u"abZ");
  EXPECT_EQ(s.GetBufferPos(), 6u) << "the terminator is not part of the data";

  // The length stops at an embedded 0, not at the data end.
  const char16_t data[] = {u'A', 0, u'B'};
  s.Set(data, uint32_t{sizeof data});
  EXPECT_EQ(s.GetLenght(), 1u);
  EXPECT_EQ(XString16().GetLenght(), 0u);
  // An attached text without a terminator is measured within its block only.
  char16_t block[3] = {u'x', u'y', u'z'};
  XString16 attached;
  attached.AttachBuffer(block, sizeof block, true);
  EXPECT_LE(attached.GetLenght(), 3u);
}

TEST(String16, CompareIsLinguisticAndPutsMissingTextsFirst) {
  XString16 none, s;
  EXPECT_EQ(none.Compare(static_cast<const char16_t*>(nullptr)), 0);
  EXPECT_EQ(none.Compare(u""), -1);
  s.Set(u"apple");
  EXPECT_EQ(s.Compare(static_cast<const char16_t*>(nullptr)), 1);
  EXPECT_EQ(s.Compare(none), 1);
  EXPECT_EQ(s.Compare(u"apple"), 0);
  // Code units put "Banana" first ('B' < 'a'); a linguistic order does not.
  EXPECT_EQ(s.Compare(u"Banana"), -1);
  EXPECT_EQ(s.Compare(u"Apple"), -1) << "case-sensitive: lower case first";
  s.Set(u"\u00e9t\u00e9");
  EXPECT_EQ(s.Compare(u"ete"), 1);
  EXPECT_EQ(s.Compare(u"f"), -1);
}

TEST(String16, SetLowerConvertsToUpperCase) {
  // Callers rely on SetLower and SetUpper being the same upper-casing operation;
  // _SetLower is the one that lowers.
  XString16 s;
  s.Set(u"ab\u00e4");
  s.SetLower(0);
  s.SetUpper(2);
  EXPECT_EQ(Str(s), u"Ab\u00c4");
  s._SetLower(0);
  EXPECT_EQ(Str(s), u"ab\u00c4");
  s.SetUpper(3);  // at the data end: nothing happens
  EXPECT_EQ(s[3], 0);

  XString8 n;
  n.Set("abc");
  n.SetLower(1);
  EXPECT_STREQ(n.c_str(), "aBc");
  n._SetLower(1);
  EXPECT_STREQ(n.c_str(), "abc");
  n.SetUpper(3);
  EXPECT_EQ(n[3], 0);
}

TEST(String8, TwinsCountBytes) {
  XString8 s;
  ASSERT_TRUE(s.Set("hello"));
  ASSERT_TRUE(s.Add(" world"));
  EXPECT_STREQ(s.c_str(), "hello world");
  EXPECT_EQ(s.GetBufferPos(), 11u);
  EXPECT_EQ(s.GetLenght(), 11u);
  s.Set("abc");
  EXPECT_EQ(XString8().Compare(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(s.Compare("abd"), -1);
  EXPECT_EQ(s.Compare("ABC"), -1);
  EXPECT_EQ(s.Compare("abc"), 0);

  char text[] = "a\r\nb\rc\r\n\r\n";
  EXPECT_EQ(std::string(text, XRemoveDOSNewLines(text, sizeof text - 1)), "a\nb\rc\n\n");
  char plain[] = "abc\r";
  EXPECT_EQ(XRemoveDOSNewLines(plain, 4), 4u) << "a final lone carriage return stays";
}

TEST(StreamStrings, LengthPrefixedLayoutRoundTrips) {
  XString16 text;
  text.Set(u"AB");
  XString8 bytes;
  bytes.Set("bytes");
  XBuffer stream;
  ASSERT_TRUE(stream.Write(text) && stream.Write(bytes));
  const uint8_t layout[] = {4, 0, 0, 0, 'A', 0, 'B', 0, 5, 0, 0, 0, 'b', 'y', 't', 'e', 's'};
  ASSERT_EQ(stream.GetBufferPos(), sizeof layout);
  EXPECT_EQ(std::memcmp(stream.GetBuffer(), layout, sizeof layout), 0);
  XString16 text2;
  XString8 bytes2;
  ASSERT_TRUE(stream.Read(text2) && stream.Read(bytes2));
  EXPECT_EQ(Str(text2), u"AB");
  EXPECT_EQ(text2.GetBufferPos(), 4u);
  EXPECT_STREQ(bytes2.c_str(), "bytes");

  // Short data fails; a length far beyond the data is refused without allocating it.
  stream._Write("\x03\x00", 2);
  EXPECT_FALSE(stream.Read(text2));
  EXPECT_EQ(stream.GetErrorCode(), kErrEndOfData);
  XBuffer hostile;
  hostile._Write(
      "\x00\xFF\xFF\xFF"
      "abcdef",
      10);
  EXPECT_FALSE(hostile.Read(bytes2));
  EXPECT_EQ(hostile.GetErrorCode(), kErrEndOfData);
  EXPECT_LT(bytes2.GetBufferSize(), 4u << 20);
  EXPECT_STREQ(bytes2.c_str(), "abcdef");
}

}  // namespace
}  // namespace tavi
