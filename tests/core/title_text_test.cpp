//===- title_text_test.cpp - Owned and attached title texts ----------------===//
#include "tavi/core/title_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
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

// Whether the text is attached, and the text itself; an own text must be terminated.
using Shape = std::tuple<bool, std::u16string>;
Shape ShapeOf(const TTitleTextBase& t) {
  if (t.text != nullptr && !t.IsAttached()) {
    EXPECT_EQ(t.text[t.Len()], 0) << "an own text is terminated";
  }
  return {t.IsAttached(), TextOf(t)};
}

TTitleText Owned(const char16_t* s) {
  TTitleText t;
  t.Set(s, static_cast<uint32_t>(2 * std::char_traits<char16_t>::length(s)), false);
  return t;
}

TEST(TitleText, SetCopiesOrAttaches) {
  char16_t source[] = u"abc";
  TTitleText t;
  ASSERT_TRUE(t.Set(source, 6, false));
  EXPECT_EQ(ShapeOf(t), Shape(false, u"abc"));
  EXPECT_NE(t.text, source);
  ASSERT_TRUE(t.Set(source, 4, true));  // the owned copy is freed (asan checks)
  EXPECT_EQ(ShapeOf(t), Shape(true, u"ab"));
  EXPECT_EQ(t.text, source);
  ASSERT_TRUE(t.Set(source, 2, false));
  EXPECT_EQ(ShapeOf(t), Shape(false, u"a")) << "copying again makes it owning";

  EXPECT_TRUE(t.Set(u"xyz", 0, false)) << "size 0: an empty title";
  EXPECT_EQ(t.text, nullptr);
  ASSERT_TRUE(t.Set(u"xyz", 6, false));
  EXPECT_FALSE(t.Set(nullptr, 6, false)) << "a null text with a size empties and fails";
  EXPECT_EQ(t.text, nullptr);
  EXPECT_EQ(t.size, 0u);
  EXPECT_FALSE(t.Set(nullptr, 6, true));
}

TEST(TitleText, SetFromRangesListsBuffersAndOthers) {
  const char16_t* text = u"hello world";
  TTitleText t;
  EXPECT_TRUE(t.Set(text + 6, text + 11));
  EXPECT_EQ(TextOf(t), u"world");
  EXPECT_FALSE(t.Set(text, static_cast<const char16_t*>(nullptr)));
  EXPECT_FALSE(t.Set(text + 3, text));
  const char16_t* list[] = {u"ab", u"", u"cd", nullptr};
  EXPECT_TRUE(t.Set(list));
  EXPECT_EQ(ShapeOf(t), Shape(false, u"abcd"));
  EXPECT_TRUE(t.Set(t.text + 1, 4, false)) << "the source may be the title's own text";
  EXPECT_EQ(ShapeOf(t), Shape(false, u"bc"));

  // Assignment shares an attached source and copies an owning one.
  TTitleText attached, u;
  attached.Set(text, 10, true);
  u = attached;
  EXPECT_EQ(ShapeOf(u), Shape(true, u"hello"));
  EXPECT_EQ(u.text, text);
  u = t;
  EXPECT_EQ(ShapeOf(u), Shape(false, u"bc"));
  EXPECT_NE(u.text, t.text);

  XString16 s;
  s.Set(u"buffer");
  EXPECT_TRUE(t.Set(s));
  EXPECT_EQ(ShapeOf(t), Shape(false, u"buffer")) << "an owning buffer is copied";
  EXPECT_TRUE(t.Set(s, true));
  EXPECT_EQ(static_cast<void*>(t.text), s.GetBuffer());
}

TEST(TitleText, AssumeMovesOwnership) {
  auto* other = new TTitleText(Owned(u"owned"));
  TTitleText t = Owned(u"old");
  t.Assume(*other);
  EXPECT_EQ(ShapeOf(*other), Shape(true, u"owned")) << "the other keeps pointing at the text";
  delete other;  // must not free it: t still uses it
  EXPECT_EQ(ShapeOf(t), Shape(false, u"owned"));

  TTitleText a, b;
  a.Set(u"static", 12, true);
  b.Assume(a);
  EXPECT_TRUE(a.IsAttached() && b.IsAttached()) << "assuming an attached text keeps both so";

  XString16 s;
  s.Set(u"taken");
  t.Assume(s);
  EXPECT_EQ(ShapeOf(t), Shape(false, u"taken"));
  EXPECT_TRUE(s.GetBufferAttached()) << "the buffer will not free it any more";

  // Assume(text, bytes) leaves the attached bit alone: an attached title stays so.
  char16_t local[] = u"local";
  a.EmptyString();
  a.Assume(local, 10);
  EXPECT_EQ(ShapeOf(a), Shape(true, u"local"));

  // A bare base never frees; a TTitleText that assumes its block does.
  char16_t* block;
  {
    TTitleTextBase base;
    base.Set(u"kept", 8, false);
    block = base.text;
  }
  TTitleText owner;
  owner.Assume(block, 8);
  EXPECT_EQ(ShapeOf(owner), Shape(false, u"kept"));
}

TEST(TitleText, MovesLeaveNoDoubleOwner) {
  std::vector<TTitleText> titles;
  for (int i = 0; i < 50; ++i) titles.push_back(Owned(u"item"));  // relocations move
  titles[1] = std::move(titles[0]);
  EXPECT_EQ(titles[0].text, nullptr);
  for (size_t i = 1; i < titles.size(); ++i) EXPECT_EQ(TextOf(titles[i]), u"item");
}

TEST(TitleText, EmptyAndFreeKeepTheirAttachedBits) {
  TTitleText t = Owned(u"abc");
  t.EmptyString();
  EXPECT_EQ(ShapeOf(t), Shape(true, u"")) << "an emptied title is marked attached";
  EXPECT_EQ(t.text, nullptr);
  t.Set(u"abc", 6, false);
  t.Free();
  EXPECT_EQ(ShapeOf(t), Shape(false, u""));
  char16_t local[] = u"abc";
  t.Set(local, 6, true);
  t.Free();  // attached: nothing freed, the bit stays
  EXPECT_EQ(ShapeOf(t), Shape(true, u""));
  EXPECT_EQ(t.text, nullptr);
}

TEST(TitleText, AllocReserveAndShorten) {
  TTitleText t;
  EXPECT_FALSE(t.AllocBuffer(0));
  char16_t local[] = u"abcdef";
  t.Set(local, 12, true);
  ASSERT_TRUE(t.AllocBuffer(8));  // forgets the foreign text and becomes owning
  EXPECT_FALSE(t.IsAttached());
  EXPECT_EQ(t.size, 0u);
  EXPECT_NE(t.text, local);
  EXPECT_EQ(local[0], u'a');
  ASSERT_TRUE(t.ReserveMem(6));
  std::memcpy(t.text, u"xyz", 6);
  EXPECT_EQ(ShapeOf(t), Shape(false, u"xyz")) << "reserved and terminated";
  EXPECT_FALSE(t.SetLen(3)) << "not shorter: false, unchanged";
  EXPECT_EQ(t.size, 6u);
  EXPECT_TRUE(t.SetLen(1));
  EXPECT_EQ(ShapeOf(t), Shape(false, u"x"));
  EXPECT_FALSE(t.SetLen(0x80000001u));

  // Shortening an attached text changes the size only, never the foreign memory.
  static const char16_t kConst[] = u"constant";
  TTitleText c;
  c.Set(kConst, 16, true);
  EXPECT_TRUE(c.SetSize(4));
  EXPECT_EQ(kConst[2], u'n');
  EXPECT_EQ(c.Len(), 2u);
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
  EXPECT_FALSE(t.IsBold());
  EXPECT_TRUE(t.IsTruncated());
  EXPECT_TRUE(t.StateIsNotAny(0x10));
}

TEST(TitleText, ReadSlot) {
  XBuffer source;
  source._Write("a\0b\0", 4);
  TTitleText t;
  ASSERT_TRUE(t.Read(source, 8)) << "a short read is not reported";
  EXPECT_EQ(TextOf(t), std::u16string(u"ab\0\0", 4));
  EXPECT_FALSE(t.Read(source, 4)) << "nothing arrived";
  EXPECT_TRUE(source.IsOk());
  EXPECT_FALSE(t.Read(source, 0));
  EXPECT_EQ(source.GetErrorCode(), kErrNoMemory);
}

TEST(TitleText, StreamRoundTrip) {
  XBuffer buffer;
  ASSERT_TRUE(buffer.Write(Owned(u"Title")));
  ASSERT_TRUE(buffer.Write(TTitleText()));
  ASSERT_EQ(buffer.GetBufferPos(), 4u + 10u + 4u);
  EXPECT_EQ(std::memcmp(buffer.GetBuffer(), "\x0A\0\0\0T\0", 6), 0);

  TTitleText in;
  in.Set(u"static", 12, true);
  ASSERT_TRUE(buffer.Read(in));
  EXPECT_EQ(ShapeOf(in), Shape(false, u"Title"));
  in.Set(u"static", 12, true);
  ASSERT_TRUE(buffer.Read(in));
  EXPECT_EQ(ShapeOf(in), Shape(false, u"")) << "an empty text read is not attached either";
  EXPECT_FALSE(buffer.Read(in));  // no length left
  EXPECT_EQ(buffer.GetErrorCode(), kErrEndOfData);

  const struct {
    std::string bytes;
    uint32_t pending, error;
  } kBad[] = {
      {std::string("\x06\0\0\0a\0", 6), 0, kErrEndOfData},  // short text
      // A length near 4 GiB with a few bytes behind it fails at the end of the data.
      {std::string("\xF0\xFF\xFF\xFF", 4) + std::string(100, 'x'), 0, kErrEndOfData},
      {std::string("\x01\0", 2), kErrTooLong, kErrTooLong},  // a pending error is kept
  };
  for (const auto& c : kBad) {
    SCOPED_TRACE(c.bytes.size());
    XBuffer source;
    source._Write(c.bytes.data(), static_cast<uint32_t>(c.bytes.size()));
    if (c.pending != 0) source.SetErrorCode(c.pending);
    EXPECT_FALSE(source.Read(in));
    EXPECT_EQ(source.GetErrorCode(), c.error);
    // What arrived stays as a terminated text of whole code units.
    if (in.text != nullptr) {
      EXPECT_EQ(in.text[in.size / 2], 0);
    }
  }
  EXPECT_EQ(in.size, 100u);
}

TEST(TitleText, BufferAddAndSet) {
  XString16 s;
  ASSERT_TRUE(s.Set(Owned(u"ab")));
  ASSERT_TRUE(s.Add(Owned(u"xy")));
  EXPECT_EQ(std::u16string(s.c_str()), u"abxy");
  // A title attached to the buffer's own block.
  s.Set(u"0123456789");
  TTitleText view;
  view.Set(s._GetStringAt(2), 6, true);
  ASSERT_TRUE(s.Add(view));
  EXPECT_EQ(std::u16string(s.c_str()), u"0123456789234");
  view.Set(s._GetStringAt(4), 4, true);
  ASSERT_TRUE(s.Set(view));
  EXPECT_EQ(std::u16string(s.c_str()), u"45");
}

TEST(TitleText, StringResourceAttach) {
  TStringResource* table = XBuiltinStringResource();
  TTitleText t = Owned(u"owned");
  ASSERT_TRUE(table->_Attach(t, static_cast<int32_t>(kErrNoMemory)));
  EXPECT_EQ(ShapeOf(t), Shape(true, u"Not enough memory."));
  EXPECT_EQ(t.text, table->_Get(static_cast<int32_t>(kErrNoMemory))) << "not a copy";
  EXPECT_FALSE(table->_Attach(t, 12345));
  EXPECT_TRUE(table->Attach(t, 12345));
  EXPECT_EQ(TextOf(t), u"???");
}

TEST(TitleText, Comparisons) {
  const TTitleText none, a = Owned(u"a"), b = Owned(u"b"), ab = Owned(u"ab"), upper = Owned(u"A");
  const auto bytes = [](uintptr_t n) { return reinterpret_cast<const void*>(n); };
  // A missing text sorts first, comparison is case-sensitive, prefix forms compare only
  // the first text's length.
  const int kResults[][2] = {{CompareTitleText(&none, &none), 0},
                             {CompareTitleText(&none, &a), -1},
                             {CompareTitleText(&a, &none), 1},
                             {CompareTitleText(&a, &b), -1},
                             {CompareTitleText(&b, &a), 1},
                             {CompareTitleText(&a, &ab), -1},
                             {CompareTitleText(&a, &upper) != 0, 1},
                             {CompareTitleChars(u"b", &b), 0},
                             {CompareTitleChars(nullptr, &b), -1},
                             {CompareTitleChars(nullptr, &none), 0},
                             {CompareTitleChars(u"", &none), 1},
                             {ComparePrefixTitleText(&a, &ab), 0},
                             {ComparePrefixTitleText(&ab, &a), 1},
                             {ComparePrefixTitleChars(u"abc", &ab, bytes(4)), 0},
                             {ComparePrefixTitleChars(u"abc", &ab, bytes(6)), 1},
                             {ComparePrefixTitleChars(u"b", &ab, bytes(2)), 1},
                             {CheckTitleText(&none, &none), 1},
                             {CheckTitleText(&none, &a), 0},
                             {CheckTitleText(&ab, &ab), 1},
                             {CheckTitleText(&a, &ab), 0},
                             {CheckTitleChars(&ab, u"ab"), 1},
                             {CheckTitleChars(&ab, nullptr), 0},
                             {CheckTitleChars(&none, nullptr), 1}};
  for (size_t i = 0; i < std::size(kResults); ++i) EXPECT_EQ(kResults[i][0], kResults[i][1]) << i;
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
