//===- string_test.cpp - Terminated wide and byte strings ------------------===//
#include "tavi/core/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/fake_ui.h"

namespace tavi {
namespace {

using test::Fake;
using test::Window;

using V = std::vector<int>;

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
  const char16_t* null = nullptr;
  XString16 none, s, accented;
  s.Set(u"apple");
  accented.Set(u"\u00e9t\u00e9");
  // Code units would put "Banana" first ('B' < 'a'); a linguistic order does not, and
  // it is case-sensitive with lower case first.
  EXPECT_EQ((V{none.Compare(null), none.Compare(u""), s.Compare(null), s.Compare(none),
               s.Compare(u"apple"), s.Compare(u"Banana"), s.Compare(u"Apple"),
               accented.Compare(u"ete"), accented.Compare(u"f")}),
            (V{0, -1, 1, 1, 0, -1, -1, 1, -1}));
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

  XString8 n;
  n.Set("abc");
  n.SetLower(1);
  EXPECT_STREQ(n.c_str(), "aBc");
  n._SetLower(1);
  EXPECT_STREQ(n.c_str(), "abc");
}

TEST(String8, TwinsCountBytes) {
  XString8 s;
  ASSERT_TRUE(s.Set("hello") && s.Add(" world"));
  EXPECT_STREQ(s.c_str(), "hello world");
  EXPECT_EQ(s.GetLenght(), 11u);
  s.Set("abc");
  EXPECT_EQ((V{XString8().Compare(static_cast<const char*>(nullptr)), s.Compare("abd"),
               s.Compare("ABC"), s.Compare("abc")}),
            (V{0, -1, -1, 0}));

  char text[] = "a\r\nb\rc\r\n\r\n";
  EXPECT_EQ(std::string(text, XRemoveDOSNewLines(text, sizeof text - 1)), "a\nb\rc\n\n");
  char plain[] = "abc\r";
  EXPECT_EQ(XRemoveDOSNewLines(plain, 4), 4u) << "a final lone carriage return stays";
}

TEST(StringWindows, WindowAndDialogItemText) {
  test::ScopedFakeUi ui;
  Fake().windows[1] = u"caption";
  XString16 s;
  ASSERT_TRUE(s.WndGetText(Window(1)));
  EXPECT_EQ(Str(s), u"caption");
  EXPECT_EQ(s.GetBufferPos(), 14u);
  EXPECT_FALSE(s.WndSetText(Window(2)));
  EXPECT_EQ(s.GetErrorSource(), kErrSourcePlatform);
  // Dialog items are the controls the table names (dialog 3, item 4: window 304).
  Fake().windows[304] = u"item";
  ASSERT_TRUE(s.DlgGetItemText(Window(3), 4));
  EXPECT_EQ(Str(s), u"item");
  s.Set(u"changed");
  ASSERT_TRUE(s.DlgSetItemText(Window(3), 4));
  EXPECT_EQ(Fake().windows[304], u"changed");

  XString8 narrow;
  Fake().windows[5] = u"gr\u00fc\u00dfe \u4e16";
  ASSERT_TRUE(narrow.WndGetText(Window(5)));
  EXPECT_STREQ(narrow.c_str(),
               "gr\xfc\xdf"
               "e ?")
      << "no byte for the last character";
  EXPECT_EQ(narrow.WndGetTextLength(Window(5)), 7u);
  ASSERT_TRUE(narrow.WndSetText(Window(5)));
  EXPECT_EQ(Fake().windows[5], u"gr\u00fc\u00dfe ?");
}

TEST(StringWindows, ClipboardTextKeepsItsTerminator) {
  test::ScopedFakeUi ui;
  XString16 wide;
  wide.Set(u"hi");
  ASSERT_TRUE(wide.CopyToClipboard(nullptr));
  EXPECT_EQ(Fake().clipboard[kClipboardUnicodeText], std::string("h\0i\0\0\0", 6));
  EXPECT_EQ(wide.GetBufferPos(), 4u);
  XString8 narrow;
  narrow.Set("yo");
  ASSERT_TRUE(narrow.AddClipboardData(nullptr));
  EXPECT_EQ(Fake().clipboard[kClipboardText], std::string("yo\0", 3));
  EXPECT_EQ(Fake().clipboard.size(), 2u) << "adding keeps the other formats";
  ASSERT_TRUE(narrow.CopyToClipboard(nullptr));
  EXPECT_EQ(Fake().clipboard.size(), 1u);
}

}  // namespace
}  // namespace tavi
