//===- buffer_text_test.cpp - Wide-text members of XBuffer -----------------===//
#include <gtest/gtest.h>

#include <string>

#include "tavi/core/buffer.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

std::u16string Data(const XBuffer& b) {
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}

// The text members keep a 0 code unit right after the data.
void ExpectTerminated(const XBuffer& b) {
  ASSERT_NE(b.GetBuffer(), nullptr);
  EXPECT_EQ(*b._GetStringAt(b.GetBufferPos() / 2), 0);
}

XBuffer Text(const char16_t* s) {
  XBuffer b;
  b.Set(s);
  return b;
}

TEST(BufferText, EmptyAndEndAsString) {
  XBuffer b;
  ASSERT_TRUE(b.EmptyString());
  EXPECT_EQ(b.GetBufferSize(), 32u);
  EXPECT_EQ(b.GetBufferPos(), 0u);
  ExpectTerminated(b);

  ASSERT_TRUE(b._Write(u"ab", 4));
  ASSERT_TRUE(b.EndAsString());
  EXPECT_EQ(b.GetBufferPos(), 4u);
  ExpectTerminated(b);

  char16_t block[1];
  XBuffer attached;
  attached.AttachBuffer(block, 2, false);
  attached.ResetBuffer();
  attached.DiscardBufferOwnership();
  EXPECT_FALSE(attached.EmptyString()) << "an attached buffer without a block cannot empty";
  attached.DiscardBuffer();
}

TEST(BufferText, AddAndSetForms) {
  XBuffer b;
  ASSERT_TRUE(b.Set(u"abc"));
  ASSERT_TRUE(b.Add(u"defg", 4u));  // byte count: two characters
  ASSERT_TRUE(b.Add(u"xyz" + 1, u"xyz" + 3));
  XBuffer other = Text(u"!");
  ASSERT_TRUE(b.Add(other));
  const char16_t* list[] = {u"1", u"23", nullptr};
  ASSERT_TRUE(b.Add(list));
  EXPECT_EQ(Data(b), u"abcdeyz!123");
  ExpectTerminated(b);

  const char16_t* rest = b.Set(u"key=value", u'=');
  EXPECT_EQ(Data(b), u"key");
  ASSERT_NE(rest, nullptr);
  EXPECT_EQ(std::u16string(rest), u"value");
  EXPECT_EQ(b.Add(rest, u'='), nullptr) << "no separator: the text ended";
  EXPECT_EQ(Data(b), u"keyvalue");

  ASSERT_TRUE(b.Set(0x20000004, nullptr));
  EXPECT_EQ(Data(b), XLibStringResource->Get(0x20000004));
  ASSERT_TRUE(b.Set(12345, nullptr));
  EXPECT_EQ(Data(b), u"???");
  ASSERT_TRUE(b.Set(b));
  EXPECT_EQ(Data(b), u"???");
}

TEST(BufferText, SetFromACopySharingTheBlock) {
  XBuffer a = Text(u"shared");
  XBuffer b = a;
  b.DiscardBufferOwnership();
  ASSERT_TRUE(a.Set(b));
  EXPECT_EQ(Data(a), u"shared");
}

TEST(BufferText, RemoveEndCharsNeverEmptiesOneCharacter) {
  XBuffer b = Text(u"  ");
  EXPECT_EQ(b.RemoveEndChars(u' '), 1);
  EXPECT_EQ(b.GetBufferPos(), 2u);
  XBuffer c = Text(u"ab...");
  EXPECT_EQ(c.RemoveEndChars(u'.'), 3);
  EXPECT_EQ(Data(c), u"ab");
  ExpectTerminated(c);
  XBuffer d = Text(u".");
  EXPECT_EQ(d.RemoveEndChars(u'.'), 0);
}

TEST(BufferText, CutLast) {
  XBuffer b = Text(u"dir/sub/file");
  b._SetCurrentPos(20);
  EXPECT_TRUE(b.CutLast(u'/'));
  EXPECT_EQ(Data(b), u"dir/sub");
  EXPECT_EQ(b.GetCurrentPos(), 14u);
  EXPECT_FALSE(b.CutLast(u'?'));
  XBuffer empty;
  EXPECT_FALSE(empty.CutLast(u'/'));
}

TEST(BufferText, Replacements) {
  XBuffer b = Text(u"a--b---c");
  EXPECT_EQ(b.RemoveMultiChars(u'-'), 3u);
  EXPECT_EQ(Data(b), u"a-b-c");
  EXPECT_EQ(b.RemoveChar(u'-'), 2u);
  EXPECT_EQ(Data(b), u"abc");
  ExpectTerminated(b);
  EXPECT_EQ(b.ReplaceChar(u'b', u'B'), 1u);
  EXPECT_EQ(b.ReplaceChars(u"ac", u'_'), 2u);
  EXPECT_EQ(Data(b), u"_B_");

  XBuffer s = Text(u"one two one");
  EXPECT_EQ(s.ReplaceString(u"one", 6, u"three", 10), 2u);
  EXPECT_EQ(Data(s), u"three two three");
  EXPECT_EQ(s.ReplaceStringToChar(u"three", 10, u'3'), 2u);
  EXPECT_EQ(Data(s), u"3 two 3");
  EXPECT_EQ(s.ReplaceStringIC(u"TWO", 6, u"", 0), 1u);
  EXPECT_EQ(Data(s), u"3  3");
  EXPECT_EQ(s.ReplaceString(u"", 0, u"x", 2), 0u);

  XBuffer soft = Text(u"wrapped\r\r\nline\r\nend");
  EXPECT_EQ(soft.ReplaceSoftReturns(), 1u);
  EXPECT_EQ(Data(soft), u"wrappedline\r\nend");
}

TEST(BufferText, UnquotedReplacementsSkipQuotedText) {
  XBuffer b = Text(u"a,b,\"c,d\",e");
  EXPECT_EQ(b.ReplaceUnquotedChar(u',', u';', u'"', u'"'), 3u);
  EXPECT_EQ(Data(b), u"a;b;\"c,d\";e");

  XBuffer c = Text(u"x=1 [x=2] x=3 [x=4");
  EXPECT_EQ(c.ReplaceUnquotedString(u"x=", 4, u"y:", 4, u'[', u']'), 2u);
  EXPECT_EQ(Data(c), u"y:1 [x=2] y:3 [x=4") << "an open quote protects the rest";
  EXPECT_EQ(c.ReplaceUnquotedStringIC(u"Y:", 4, u"", 0, u'[', u']'), 2u);
  EXPECT_EQ(c.ReplaceUnquotedStringToChar(u"1 ", 4, u'#', u'[', u']'), 1u);
  EXPECT_EQ(Data(c), u"#[x=2] 3 [x=4");
  EXPECT_EQ(c.ReplaceUnquotedChars(u"3x", u'.', u'[', u']'), 1u);
}

TEST(BufferText, Cuts) {
  XBuffer b = Text(u"key: value: more");
  EXPECT_TRUE(b.CutTo(u':'));
  EXPECT_EQ(Data(b), u" value: more");
  EXPECT_FALSE(b.CutTo(u'#'));
  EXPECT_TRUE(b.CutRTo(u':'));
  EXPECT_EQ(Data(b), u" more");
  EXPECT_TRUE(b.Cut(1u));
  EXPECT_EQ(Data(b), u"more");
  EXPECT_TRUE(b.Cut(b._GetStringAt(1), b._GetStringAt(3)));
  EXPECT_EQ(Data(b), u"me");
  ExpectTerminated(b);
  EXPECT_FALSE(b.Cut(b._GetStringAt(2), b._GetStringAt(1)));
  EXPECT_FALSE(b.Cut(b._GetStringAt(0), b._GetStringAt(3)));
  EXPECT_TRUE(b.Cut(100u));
  EXPECT_EQ(b.GetBufferPos(), 0u);
}

TEST(BufferText, CompareIsBytewise) {
  XBuffer a = Text(u"abc");
  XBuffer b = Text(u"abd");
  XBuffer prefix = Text(u"ab");
  EXPECT_EQ(a.Compare(b), -1);
  EXPECT_EQ(b.Compare(a), 1);
  EXPECT_EQ(prefix.Compare(a), -1);
  EXPECT_EQ(a.Compare(prefix), 1);
  EXPECT_EQ(a.Compare(u"abc", 6), 0);
  EXPECT_FALSE(a.IsDifferent(u"abc", 6));
  EXPECT_TRUE(a.IsDifferent(prefix));
  XBuffer none;
  EXPECT_EQ(none.Compare(nullptr, 0), 0);
}

TEST(BufferText, ModuleTexts) {
  XBuffer b;
  EXPECT_FALSE(b.Add(1u, XModule{}));
  EXPECT_EQ(b.GetErrorSource(), kErrSourcePlatform);
  XBuffer path;
  ASSERT_TRUE(path.GetModuleFileNameW(nullptr));
  EXPECT_NE(Data(path).find(u"tavi_core_tests"), std::u16string::npos);
}

}  // namespace
}  // namespace tavi
