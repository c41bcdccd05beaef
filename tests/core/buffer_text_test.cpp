//===- buffer_text_test.cpp - Wide-text members of XBuffer -----------------===//
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tavi/core/buffer.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

// The data as text; the text members also keep a 0 code unit right after it.
std::u16string Data(const XBuffer& b) {
  if (b.GetBuffer() != nullptr) {
    EXPECT_EQ(*b._GetStringAt(b.GetBufferPos() / 2), 0) << "terminated";
  }
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}

// The count an edit returned and the text it left.
using Edit = std::pair<uint32_t, std::u16string>;
Edit After(uint32_t count, const XBuffer& b) {
  return {count, Data(b)};
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
  EXPECT_EQ(Data(b), u"");
  ASSERT_TRUE(b._Write(u"ab", 4));
  ASSERT_TRUE(b.EndAsString());
  EXPECT_EQ(Data(b), u"ab");

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
  ASSERT_TRUE(b.Add(Text(u"!")));
  const char16_t* list[] = {u"1", u"23", nullptr};
  ASSERT_TRUE(b.Add(list));
  EXPECT_EQ(Data(b), u"abcdeyz!123");

  const char16_t* rest = b.Set(u"key=value", u'=');
  EXPECT_EQ(Data(b), u"key");
  EXPECT_EQ(std::u16string(rest), u"value");
  EXPECT_EQ(b.Add(rest, u'='), nullptr) << "no separator: the text ended";
  EXPECT_EQ(Data(b), u"keyvalue");

  ASSERT_TRUE(b.Set(0x20000004, nullptr));
  EXPECT_EQ(Data(b), XLibStringResource->Get(0x20000004));
  ASSERT_TRUE(b.Set(12345, nullptr));
  EXPECT_EQ(Data(b), u"???");
  // Setting from itself or from a copy that shares the block keeps the text.
  ASSERT_TRUE(b.Set(b));
  XBuffer shared = b;
  shared.DiscardBufferOwnership();
  ASSERT_TRUE(b.Set(shared));
  EXPECT_EQ(Data(b), u"???");

  EXPECT_FALSE(b.Add(1u, XModule{}));
  EXPECT_EQ(b.GetErrorSource(), kErrSourcePlatform);
  ASSERT_TRUE(b.GetModuleFileNameW(nullptr));
  EXPECT_NE(Data(b).find(u"tavi_core_tests"), std::u16string::npos);
}

TEST(BufferText, Replacements) {
  XBuffer b = Text(u"a--b---c");
  EXPECT_EQ(After(b.RemoveMultiChars(u'-'), b), Edit(3, u"a-b-c"));
  EXPECT_EQ(After(b.RemoveChar(u'-'), b), Edit(2, u"abc"));
  EXPECT_EQ(After(b.ReplaceChar(u'b', u'B'), b), Edit(1, u"aBc"));
  EXPECT_EQ(After(b.ReplaceChars(u"ac", u'_'), b), Edit(2, u"_B_"));

  XBuffer s = Text(u"one two one");
  EXPECT_EQ(After(s.ReplaceString(u"one", 6, u"three", 10), s), Edit(2, u"three two three"));
  EXPECT_EQ(After(s.ReplaceStringToChar(u"three", 10, u'3'), s), Edit(2, u"3 two 3"));
  EXPECT_EQ(After(s.ReplaceStringIC(u"TWO", 6, u"", 0), s), Edit(1, u"3  3"));
  EXPECT_EQ(s.ReplaceString(u"", 0, u"x", 2), 0u);
  // A fixed block that cannot hold the longer result keeps its text.
  char16_t fixed[5] = u"3  3";
  XBuffer f;
  f.AttachBuffer(fixed, 8, true);
  EXPECT_EQ(After(f.ReplaceString(u"3", 2, u"33", 4), f), Edit(0, u"3  3"));
  XBuffer soft = Text(u"wrapped\r\r\nline\r\nend");
  EXPECT_EQ(After(soft.ReplaceSoftReturns(), soft), Edit(1, u"wrappedline\r\nend"));

  // The unquoted forms leave quoted text alone; an open quote protects the rest.
  XBuffer q = Text(u"a,b,\"c,d\",e");
  EXPECT_EQ(After(q.ReplaceUnquotedChar(u',', u';', u'"', u'"'), q), Edit(3, u"a;b;\"c,d\";e"));
  XBuffer c = Text(u"x=1 [x=2] x=3 [x=4");
  EXPECT_EQ(After(c.ReplaceUnquotedString(u"x=", 4, u"y:", 4, u'[', u']'), c),
            Edit(2, u"y:1 [x=2] y:3 [x=4"));
  EXPECT_EQ(c.ReplaceUnquotedStringIC(u"Y:", 4, u"", 0, u'[', u']'), 2u);
  EXPECT_EQ(After(c.ReplaceUnquotedStringToChar(u"1 ", 4, u'#', u'[', u']'), c),
            Edit(1, u"#[x=2] 3 [x=4"));
  EXPECT_EQ(After(c.ReplaceUnquotedChars(u"3x", u'.', u'[', u']'), c), Edit(1, u"#[x=2] . [x=4"));
}

TEST(BufferText, Cuts) {
  XBuffer b = Text(u"  ");
  EXPECT_EQ(After(b.RemoveEndChars(u' '), b), Edit(1, u" ")) << "one character always stays";
  b.Set(u"ab...");
  EXPECT_EQ(After(b.RemoveEndChars(u'.'), b), Edit(3, u"ab"));

  b.Set(u"dir/sub/file");
  b._SetCurrentPos(20);
  EXPECT_TRUE(b.CutLast(u'/'));
  EXPECT_EQ(Data(b), u"dir/sub");
  EXPECT_EQ(b.GetCurrentPos(), 14u) << "the cursor is lowered with the data end";
  EXPECT_FALSE(b.CutLast(u'?'));
  EXPECT_FALSE(XBuffer().CutLast(u'/'));

  b.Set(u"key: value: more");
  EXPECT_TRUE(b.CutTo(u':'));
  EXPECT_EQ(Data(b), u" value: more");
  EXPECT_FALSE(b.CutTo(u'#'));
  EXPECT_TRUE(b.CutRTo(u':'));
  EXPECT_TRUE(b.Cut(1u));
  EXPECT_EQ(Data(b), u"more");
  EXPECT_TRUE(b.Cut(b._GetStringAt(1), b._GetStringAt(3)));
  EXPECT_EQ(Data(b), u"me");
  EXPECT_FALSE(b.Cut(b._GetStringAt(2), b._GetStringAt(1)));
  EXPECT_FALSE(b.Cut(b._GetStringAt(0), b._GetStringAt(3)));
  EXPECT_TRUE(b.Cut(100u));
  EXPECT_EQ(b.GetBufferPos(), 0u);
}

TEST(BufferText, CompareIsBytewise) {
  XBuffer a = Text(u"abc");
  XBuffer prefix = Text(u"ab");
  EXPECT_EQ(a.Compare(Text(u"abd")), -1);
  EXPECT_EQ(Text(u"abd").Compare(a), 1);
  EXPECT_EQ(prefix.Compare(a), -1);
  EXPECT_EQ(a.Compare(prefix), 1);
  EXPECT_EQ(a.Compare(u"abc", 6), 0);
  EXPECT_FALSE(a.IsDifferent(u"abc", 6));
  EXPECT_TRUE(a.IsDifferent(prefix));
  EXPECT_EQ(XBuffer().Compare(nullptr, 0), 0);
}

}  // namespace
}  // namespace tavi
