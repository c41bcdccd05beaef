//===- title_text_test.cpp - Owned and attached title texts ----------------===//
#include "tavi/core/title_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "core/fake_ui.h"
#include "tavi/core/string.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

std::u16string TextOf(const TTitleTextBase& t) {
  return t.text ? std::u16string(t.text, t.Len()) : std::u16string();
}

// What a call returned, whether the title is then attached, and its text. An own text
// must be terminated.
constexpr bool kOwned = false, kAttached = true;
using Shape = std::tuple<bool, bool, std::u16string>;
Shape After(bool ok, const TTitleTextBase& t) {
  if (t.text != nullptr && !t.IsAttached()) {
    EXPECT_EQ(t.text[t.Len()], 0) << "an own text is terminated";
  }
  return {ok, t.IsAttached(), TextOf(t)};
}
Shape ShapeOf(const TTitleTextBase& t) {
  return After(true, t);
}

TTitleText Owned(const char16_t* s) {
  TTitleText t;
  t.Set(s, static_cast<uint32_t>(2 * std::char_traits<char16_t>::length(s)), false);
  return t;
}

TEST(TitleText, SetCopiesOrAttaches) {
  char16_t source[] = u"abc";
  TTitleText t;
  EXPECT_EQ(After(t.Set(source, 6, false), t), Shape(true, kOwned, u"abc"));
  EXPECT_NE(t.text, source);
  // The owned copy is freed (asan checks); copying again makes the title owning.
  EXPECT_EQ(After(t.Set(source, 4, true), t), Shape(true, kAttached, u"ab"));
  EXPECT_EQ(t.text, source);
  EXPECT_EQ(After(t.Set(source, 2, false), t), Shape(true, kOwned, u"a"));

  EXPECT_TRUE(t.Set(u"xyz", 0, false)) << "size 0: an empty title";
  EXPECT_EQ(t.text, nullptr);
  ASSERT_TRUE(t.Set(u"xyz", 6, false));
  EXPECT_FALSE(t.Set(nullptr, 6, false)) << "a null text with a size empties and fails";
  EXPECT_TRUE(t.text == nullptr && t.size == 0);
  EXPECT_FALSE(t.Set(nullptr, 6, true));

  const char16_t* text = u"hello world";
  EXPECT_EQ(After(t.Set(text + 6, text + 11), t), Shape(true, kOwned, u"world"));
  EXPECT_FALSE(t.Set(text, static_cast<const char16_t*>(nullptr)) || t.Set(text + 3, text));
  const char16_t* list[] = {u"ab", u"", u"cd", nullptr};
  EXPECT_EQ(After(t.Set(list), t), Shape(true, kOwned, u"abcd"));
  // The source may be the title's own text.
  EXPECT_EQ(After(t.Set(t.text + 1, 4, false), t), Shape(true, kOwned, u"bc"));
}

TEST(TitleText, AssignmentSharesAttachedAndCopiesOwned) {
  const char16_t* text = u"hello";
  TTitleText attached, owned = Owned(u"bc"), u;
  attached.Set(text, 10, true);
  u = attached;
  EXPECT_EQ(ShapeOf(u), Shape(true, kAttached, u"hello"));
  EXPECT_EQ(u.text, text);
  u = owned;
  EXPECT_EQ(ShapeOf(u), Shape(true, kOwned, u"bc"));
  EXPECT_NE(u.text, owned.text);

  XString16 s;
  s.Set(u"buffer");
  EXPECT_EQ(After(u.Set(s), u), Shape(true, kOwned, u"buffer")) << "an owning buffer is copied";
  EXPECT_TRUE(u.Set(s, true));
  EXPECT_EQ(static_cast<void*>(u.text), s.GetBuffer());

  std::vector<TTitleText> titles;
  for (int i = 0; i < 50; ++i) titles.push_back(Owned(u"item"));  // relocations move
  titles[1] = std::move(titles[0]);
  EXPECT_EQ(titles[0].text, nullptr);
  for (size_t i = 1; i < titles.size(); ++i) EXPECT_EQ(TextOf(titles[i]), u"item");
}

TEST(TitleText, AssumeMovesOwnership) {
  auto* other = new TTitleText(Owned(u"owned"));
  TTitleText t = Owned(u"old");
  t.Assume(*other);
  // The other keeps pointing at the text, and must not free it: t still uses it.
  EXPECT_EQ(ShapeOf(*other), Shape(true, kAttached, u"owned"));
  delete other;
  EXPECT_EQ(ShapeOf(t), Shape(true, kOwned, u"owned"));

  TTitleText a, b;
  a.Set(u"static", 12, true);
  b.Assume(a);
  EXPECT_TRUE(a.IsAttached() && b.IsAttached()) << "assuming an attached text keeps both so";

  XString16 s;
  s.Set(u"taken");
  t.Assume(s);
  EXPECT_EQ(ShapeOf(t), Shape(true, kOwned, u"taken"));
  EXPECT_TRUE(s.GetBufferAttached()) << "the buffer will not free it any more";

  // Assume(text, bytes) leaves the attached bit alone: an attached title stays so.
  char16_t local[] = u"local";
  a.EmptyString();
  a.Assume(local, 10);
  EXPECT_EQ(ShapeOf(a), Shape(true, kAttached, u"local"));

  // A bare base never frees; a TTitleText that assumes its block does.
  char16_t* block;
  {
    TTitleTextBase base;
    base.Set(u"kept", 8, false);
    block = base.text;
  }
  TTitleText owner;
  owner.Assume(block, 8);
  EXPECT_EQ(ShapeOf(owner), Shape(true, kOwned, u"kept"));
}

TEST(TitleText, EmptyFreeAllocAndShorten) {
  // An emptied title is marked attached; Free keeps the attached bit as it was.
  TTitleText t = Owned(u"abc");
  t.EmptyString();
  EXPECT_EQ(ShapeOf(t), Shape(true, kAttached, u""));
  EXPECT_EQ(t.text, nullptr);
  t.Set(u"abc", 6, false);
  t.Free();
  EXPECT_EQ(ShapeOf(t), Shape(true, kOwned, u""));
  char16_t local[] = u"abcdef";
  t.Set(local, 6, true);
  t.Free();  // attached: nothing freed
  EXPECT_EQ(ShapeOf(t), Shape(true, kAttached, u""));
  EXPECT_EQ(t.text, nullptr);

  EXPECT_FALSE(t.AllocBuffer(0));
  t.Set(local, 12, true);
  ASSERT_TRUE(t.AllocBuffer(8));  // forgets the foreign text and becomes owning
  EXPECT_TRUE(!t.IsAttached() && t.size == 0 && t.text != local && local[0] == u'a');
  ASSERT_TRUE(t.ReserveMem(6));
  std::memcpy(t.text, u"xyz", 6);
  EXPECT_EQ(ShapeOf(t), Shape(true, kOwned, u"xyz")) << "reserved and terminated";
  EXPECT_EQ(After(t.SetLen(3), t), Shape(false, kOwned, u"xyz")) << "only shorter lengths";
  EXPECT_EQ(After(t.SetLen(1), t), Shape(true, kOwned, u"x"));
  EXPECT_FALSE(t.SetLen(0x80000001u));

  // Shortening an attached text changes the size only, never the foreign memory.
  static const char16_t kConst[] = u"constant";
  TTitleText c;
  c.Set(kConst, 16, true);
  EXPECT_EQ(After(c.SetSize(4), c), Shape(true, kAttached, u"co"));
  EXPECT_EQ(kConst[2], u'n');
}

TEST(TitleText, AlignmentKeepsItsOddities) {
  TTitleText t;
  t.MultiLineSet(true);
  t.AlignSet(kTitleAlignRight);  // replaces multi-line
  EXPECT_TRUE(t.IsRightAligned());
  t.AlignSet(kTitleAlignCenter | 0x10);  // bits outside the field are set as well
  EXPECT_TRUE(t.IsCenterAligned());
  EXPECT_EQ(t.StateIsAny(0xFF), 0x10u);
  t.MultiLineSet(false);
  EXPECT_TRUE(t.IsLeftAligned());
  t.StateSet(kTitleBold | kTitleTruncated, true);
  t.StateSet(kTitleBold | 0x10, false);
  EXPECT_TRUE(!t.IsBold() && t.IsTruncated() && t.StateIsNotAny(0x10));
}

TEST(TitleText, ReadSlotAndStringResourceAttach) {
  XBuffer source;
  source._Write("a\0b\0", 4);
  TTitleText t;
  ASSERT_TRUE(t.Read(source, 8)) << "a short read is not reported";
  EXPECT_EQ(TextOf(t), std::u16string(u"ab\0\0", 4));
  EXPECT_FALSE(t.Read(source, 4)) << "nothing arrived";
  EXPECT_TRUE(source.IsOk());
  EXPECT_FALSE(t.Read(source, 0));
  EXPECT_EQ(source.GetErrorCode(), kErrNoMemory);

  TStringResource* table = XBuiltinStringResource();
  EXPECT_EQ(After(table->_Attach(t, static_cast<int32_t>(kErrNoMemory)), t),
            Shape(true, kAttached, u"Not enough memory."));
  EXPECT_EQ(t.text, table->_Get(static_cast<int32_t>(kErrNoMemory))) << "not a copy";
  EXPECT_FALSE(table->_Attach(t, 12345));
  EXPECT_EQ(After(table->Attach(t, 12345), t), Shape(true, kAttached, u"???"));
}

TEST(TitleText, Comparisons) {
  const TTitleText none, a = Owned(u"a"), b = Owned(u"b"), ab = Owned(u"ab"), upper = Owned(u"A");
  const auto bytes = [](uintptr_t n) { return reinterpret_cast<const void*>(n); };
  using V = std::vector<int>;
  // A missing text sorts first; the order is case-sensitive.
  EXPECT_EQ((V{CompareTitleText(&none, &none), CompareTitleText(&none, &a),
               CompareTitleText(&a, &none), CompareTitleText(&a, &b), CompareTitleText(&b, &a),
               CompareTitleText(&a, &ab), CompareTitleText(&a, &upper) != 0}),
            (V{0, -1, 1, -1, 1, -1, 1}));
  EXPECT_EQ((V{CompareTitleChars(u"b", &b), CompareTitleChars(nullptr, &b),
               CompareTitleChars(nullptr, &none), CompareTitleChars(u"", &none)}),
            (V{0, -1, 0, 1}));
  // The prefix forms compare only the first text's length (for chars, a byte count).
  EXPECT_EQ((V{ComparePrefixTitleText(&a, &ab), ComparePrefixTitleText(&ab, &a),
               ComparePrefixTitleChars(u"abc", &ab, bytes(4)),
               ComparePrefixTitleChars(u"abc", &ab, bytes(6)),
               ComparePrefixTitleChars(u"b", &ab, bytes(2))}),
            (V{0, 1, 0, 1, 1}));
  EXPECT_EQ((V{CheckTitleText(&none, &none), CheckTitleText(&none, &a), CheckTitleText(&ab, &ab),
               CheckTitleText(&a, &ab), CheckTitleChars(&ab, u"ab"), CheckTitleChars(&ab, nullptr),
               CheckTitleChars(&none, nullptr)}),
            (V{1, 0, 1, 0, 1, 0, 1}));
}

TEST(TitleText, WindowAndClipboardText) {
  test::ScopedFakeUi ui;
  const XWindow window = test::Window(5);
  test::Fake().windows[5] = u"Caption";
  test::Fake().windows[5 * 100 + 3] = u"Item";
  TTitleText t;
  EXPECT_EQ(t.WndGetTextSize(window), 14u);
  ASSERT_TRUE(t.DlgItmTextGet(window, 3));
  EXPECT_EQ(TextOf(t), u"Item");

  static const char16_t kLong[] = u"attached text";
  t.Set(kLong, 16, true);  // an attached text is cut to its size when handed out
  ASSERT_TRUE(t.WndTextSet(window));
  EXPECT_EQ(test::Fake().windows[5], u"attached");
  ASSERT_TRUE(t.CopyToClipboard(window));
  EXPECT_EQ(test::Fake().clipboard[kClipboardUnicodeText],
            std::string(reinterpret_cast<const char*>(u"attached"), 18));
  test::Fake().windows[5].clear();
  ASSERT_TRUE(t.WndTextGet(window));
  EXPECT_TRUE(t.IsEmpty());
}

}  // namespace
}  // namespace tavi
