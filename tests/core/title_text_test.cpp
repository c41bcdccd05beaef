//===- title_text_test.cpp - Owned and attached title texts ----------------===//
#include "tavi/core/title_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/fake_ui.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

std::u16string TextOf(const TTitleTextBase& t) {
  return t.text ? std::u16string(t.text, t.Len()) : std::u16string();
}

// A stream that delivers a fixed byte string and then ends.
class FixedSource : public XIO {
 public:
  explicit FixedSource(std::string bytes) : bytes_(std::move(bytes)) {}
  uint32_t _Read(void* data, uint32_t n) override {
    const size_t left = bytes_.size() - pos_;
    const uint32_t k = static_cast<uint32_t>(n < left ? n : left);
    std::memcpy(data, bytes_.data() + pos_, k);
    pos_ += k;
    return k;
  }

 private:
  std::string bytes_;
  size_t pos_ = 0;
};

TEST(TitleText, SetCopiesOrAttaches) {
  char16_t source[] = u"abc";
  TTitleText t;
  ASSERT_TRUE(t.Set(source, 6, false));
  EXPECT_FALSE(t.IsAttached());
  EXPECT_NE(t.text, source);
  EXPECT_EQ(t.text[3], 0);  // the object's own copy is terminated
  EXPECT_EQ(t.Len(), 3u);

  ASSERT_TRUE(t.Set(source, 4, true));  // the owned copy is freed (asan checks)
  EXPECT_TRUE(t.IsAttached());
  EXPECT_EQ(t.text, source);
  EXPECT_EQ(t.size, 4u);

  // Copying again makes it owning.
  ASSERT_TRUE(t.Set(source, 2, false));
  EXPECT_FALSE(t.IsAttached());
  EXPECT_EQ(TextOf(t), u"a");
}

TEST(TitleText, SetEmptyAndNull) {
  TTitleText t;
  ASSERT_TRUE(t.Set(u"xyz", 6, false));
  EXPECT_TRUE(t.Set(u"xyz", 0, false));  // size 0: empty title, true
  EXPECT_TRUE(t.IsEmpty());
  EXPECT_EQ(t.text, nullptr);

  ASSERT_TRUE(t.Set(u"xyz", 6, false));
  EXPECT_FALSE(t.Set(nullptr, 6, false));  // null text with a size: false, emptied
  EXPECT_EQ(t.text, nullptr);
  EXPECT_EQ(t.size, 0u);
  EXPECT_FALSE(t.Set(nullptr, 6, true));  // attaching nothing is refused the same way
}

TEST(TitleText, SetFromRangesListsAndOthers) {
  const char16_t* text = u"hello world";
  TTitleText t;
  EXPECT_TRUE(t.Set(text + 6, text + 11));
  EXPECT_EQ(TextOf(t), u"world");
  EXPECT_FALSE(t.Set(text, static_cast<const char16_t*>(nullptr)));
  EXPECT_FALSE(t.Set(text + 3, text));

  const char16_t* list[] = {u"ab", u"", u"cd", nullptr};
  EXPECT_TRUE(t.Set(list));
  EXPECT_EQ(TextOf(t), u"abcd");
  EXPECT_EQ(t.text[4], 0);

  // The source may be the title's own text.
  EXPECT_TRUE(t.Set(t.text + 1, 4, false));
  EXPECT_EQ(TextOf(t), u"bc");

  // Assignment shares an attached source and copies an owning one.
  TTitleText attached;
  attached.Set(text, 10, true);
  TTitleText u;
  u = attached;
  EXPECT_TRUE(u.IsAttached());
  EXPECT_EQ(u.text, text);
  u = t;
  EXPECT_FALSE(u.IsAttached());
  EXPECT_NE(u.text, t.text);
  EXPECT_EQ(TextOf(u), u"bc");
}

TEST(TitleText, SetFromBuffer) {
  XString16 s;
  s.Set(u"buffer");
  TTitleText t;
  EXPECT_TRUE(t.Set(s));  // an owning buffer is copied
  EXPECT_FALSE(t.IsAttached());
  EXPECT_EQ(TextOf(t), u"buffer");
  EXPECT_TRUE(t.Set(s, true));
  EXPECT_TRUE(t.IsAttached());
  EXPECT_EQ(static_cast<void*>(t.text), s.GetBuffer());
}

TEST(TitleText, AssumeMovesOwnership) {
  auto* other = new TTitleText;
  ASSERT_TRUE(other->Set(u"owned", 10, false));
  TTitleText t;
  t.Set(u"old", 6, false);
  t.Assume(*other);
  EXPECT_FALSE(t.IsAttached());
  EXPECT_TRUE(other->IsAttached());
  EXPECT_EQ(other->text, t.text);  // the other keeps pointing at the text
  delete other;                    // must not free it: t still uses it
  EXPECT_EQ(TextOf(t), u"owned");

  // Assuming an attached text keeps both attached.
  TTitleText a;
  a.Set(u"static", 12, true);
  TTitleText b;
  b.Assume(a);
  EXPECT_TRUE(a.IsAttached());
  EXPECT_TRUE(b.IsAttached());
}

TEST(TitleText, AssumeBufferAndRawText) {
  XString16 s;
  s.Set(u"taken");
  TTitleText t;
  t.Assume(s);
  EXPECT_FALSE(t.IsAttached());
  EXPECT_TRUE(s.GetBufferAttached());  // the buffer will not free it any more
  EXPECT_EQ(TextOf(t), u"taken");
  EXPECT_EQ(t.text[5], 0);

  // Assume(text, bytes) leaves the attached bit alone: an attached title stays so.
  char16_t local[] = u"local";
  TTitleText a;
  a.EmptyString();
  a.Assume(local, 10);
  EXPECT_TRUE(a.IsAttached());
  EXPECT_EQ(a.text, local);
}

TEST(TitleText, MovesLeaveNoDoubleOwner) {
  std::vector<TTitleText> titles;
  for (int i = 0; i < 50; ++i) {
    titles.emplace_back();
    titles.back().Set(u"item", 8, false);
  }
  for (const auto& t : titles) EXPECT_EQ(TextOf(t), u"item");
  TTitleText moved(std::move(titles[0]));
  EXPECT_EQ(titles[0].text, nullptr);
  titles[1] = std::move(moved);
  EXPECT_EQ(moved.text, nullptr);
  EXPECT_EQ(TextOf(titles[1]), u"item");
}

TEST(TitleText, EmptyFreeCleanDiscard) {
  TTitleText t;
  t.Set(u"abc", 6, false);
  t.EmptyString();
  EXPECT_TRUE(t.IsAttached());  // an emptied title is marked attached
  EXPECT_EQ(t.text, nullptr);
  EXPECT_EQ(t.size, 0u);

  t.Set(u"abc", 6, false);
  t.Free();
  EXPECT_FALSE(t.IsAttached());
  EXPECT_EQ(t.text, nullptr);

  char16_t local[] = u"abc";
  t.Set(local, 6, true);
  t.Free();  // attached: nothing freed, the bit stays
  EXPECT_TRUE(t.IsAttached());

  TTitleText d;
  d.Set(u"abc", 6, false);
  char16_t* keep = d.text;
  d.Discard();
  EXPECT_EQ(d.text, nullptr);
  std::free(keep);

  TTitleText c;
  c.Set(u"abc", 6, false);
  c.Clean();
  c.text = nullptr;  // Clean leaves the freed pointer; the owner overwrites it
}

TEST(TitleText, AllocReserveAndShorten) {
  TTitleText t;
  EXPECT_FALSE(t.AllocBuffer(0));
  char16_t local[] = u"abcdef";
  t.Set(local, 12, true);
  ASSERT_TRUE(t.AllocBuffer(8));  // forgets the foreign text and becomes owning
  EXPECT_FALSE(t.IsAttached());
  EXPECT_NE(t.text, local);
  EXPECT_EQ(t.size, 0u);
  EXPECT_EQ(local[0], u'a');

  ASSERT_TRUE(t.ReserveMem(6));
  EXPECT_EQ(t.size, 6u);
  EXPECT_EQ(t.text[3], 0);
  std::memcpy(t.text, u"xyz", 6);

  EXPECT_FALSE(t.SetLen(3));  // not shorter: false, unchanged
  EXPECT_EQ(t.size, 6u);
  EXPECT_TRUE(t.SetLen(1));
  EXPECT_EQ(TextOf(t), u"x");
  EXPECT_EQ(t.text[1], 0);
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
  EXPECT_EQ(TTitleTextBase::SizeSafe(nullptr), 0u);
}

TEST(TitleText, BaseNeverFrees) {
  char16_t* block;
  {
    TTitleTextBase base;
    base.Set(u"kept", 8, false);
    block = base.text;
  }
  // The base left the block alone; a TTitleText that assumes it frees it.
  TTitleText owner;
  owner.Assume(block, 8);
  EXPECT_EQ(TextOf(owner), u"kept");
}

TEST(TitleText, ReadSlot) {
  FixedSource source(std::string("a\0b\0", 4));
  TTitleText t;
  ASSERT_TRUE(t.Read(source, 8));  // a short read is not reported: size stays 8
  EXPECT_EQ(t.size, 8u);
  EXPECT_EQ(TextOf(t), std::u16string(u"ab\0\0", 4));
  EXPECT_FALSE(t.Read(source, 4));  // nothing arrived
  EXPECT_TRUE(source.IsOk());
  EXPECT_FALSE(t.Read(source, 0));
  EXPECT_EQ(source.GetErrorCode(), kErrNoMemory);
}

TEST(TitleText, StreamRoundTrip) {
  XBuffer buffer;
  TTitleText out;
  out.Set(u"Title", 10, false);
  ASSERT_TRUE(buffer.Write(out));
  TTitleText empty;
  ASSERT_TRUE(buffer.Write(empty));
  ASSERT_EQ(buffer.GetBufferPos(), 4u + 10u + 4u);
  EXPECT_EQ(std::memcmp(buffer.GetBuffer(), "\x0A\0\0\0T\0", 6), 0);

  TTitleText in;
  in.Set(u"static", 12, true);
  ASSERT_TRUE(buffer.Read(in));
  EXPECT_FALSE(in.IsAttached());
  EXPECT_EQ(TextOf(in), u"Title");
  EXPECT_EQ(in.text[5], 0);
  ASSERT_TRUE(buffer.Read(in));
  EXPECT_TRUE(in.IsEmpty());
  EXPECT_FALSE(buffer.Read(in));  // no length left
  EXPECT_EQ(buffer.GetErrorCode(), kErrEndOfData);
}

TEST(TitleText, StreamReadRefusesShortAndHostileLengths) {
  FixedSource short_text(std::string("\x06\0\0\0a\0", 6));
  TTitleText t;
  EXPECT_FALSE(short_text.Read(t));
  EXPECT_EQ(short_text.GetErrorCode(), kErrEndOfData);

  // A length near 4 GiB with a few bytes behind it fails at the end of the data.
  FixedSource hostile(std::string("\xF0\xFF\xFF\xFF", 4) + std::string(100, 'x'));
  EXPECT_FALSE(hostile.Read(t));
  EXPECT_EQ(hostile.GetErrorCode(), kErrEndOfData);

  FixedSource no_length(std::string("\x01\0", 2));
  no_length.SetErrorCode(kErrTooLong);
  EXPECT_FALSE(no_length.Read(t));
  EXPECT_EQ(no_length.GetErrorCode(), kErrTooLong);  // a pending error is kept
}

TEST(TitleText, BufferAddAndSet) {
  TTitleText t;
  t.Set(u"xy", 4, false);
  XString16 s;
  s.Set(u"ab");
  ASSERT_TRUE(s.Add(t));
  EXPECT_EQ(std::u16string(s.c_str()), u"abxy");
  ASSERT_TRUE(s.Set(t));
  EXPECT_EQ(std::u16string(s.c_str()), u"xy");

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

class ShortResource : public TStringResource {
 public:
  const char16_t* _Get(int32_t id) override { return id == 7 ? u"seven" : nullptr; }
  bool _Write(XIO&, int32_t) override { return false; }
  bool _SetBuffer(XBuffer&, int32_t) override { return false; }
  bool _Attach(TTitleTextBase& title, int32_t id) override {
    const char16_t* text = _Get(id);
    return text != nullptr && title.Set(text, 10, true);
  }
};

TEST(TitleText, StringResourceAttach) {
  TStringResource* table = XBuiltinStringResource();
  TTitleText t;
  t.Set(u"owned", 10, false);
  ASSERT_TRUE(table->_Attach(t, static_cast<int32_t>(kErrNoMemory)));
  EXPECT_TRUE(t.IsAttached());
  EXPECT_EQ(t.text, table->_Get(static_cast<int32_t>(kErrNoMemory)));  // not a copy
  EXPECT_EQ(TextOf(t), u"Not enough memory.");

  EXPECT_FALSE(table->_Attach(t, 12345));
  EXPECT_TRUE(table->Attach(t, 12345));
  EXPECT_EQ(TextOf(t), u"???");

  ShortResource mine;
  EXPECT_TRUE(mine.Attach(t, 7));
  EXPECT_EQ(TextOf(t), u"seven");
  EXPECT_TRUE(mine.Attach(t, 8));
  EXPECT_EQ(TextOf(t), u"???");
}

TEST(TitleText, Comparisons) {
  TTitleText empty1, empty2, a, b, ab, upper;
  a.Set(u"a", 2, false);
  b.Set(u"b", 2, false);
  ab.Set(u"ab", 4, false);
  upper.Set(u"A", 2, false);

  EXPECT_EQ(CompareTitleText(&empty1, &empty2), 0);
  EXPECT_EQ(CompareTitleText(&empty1, &a), -1);
  EXPECT_EQ(CompareTitleText(&a, &empty1), 1);
  EXPECT_EQ(CompareTitleText(&a, &b), -1);
  EXPECT_EQ(CompareTitleText(&b, &a), 1);
  EXPECT_EQ(CompareTitleText(&a, &ab), -1);
  EXPECT_NE(CompareTitleText(&a, &upper), 0);  // case-sensitive

  EXPECT_EQ(CompareTitleChars(u"b", &b), 0);
  EXPECT_EQ(CompareTitleChars(nullptr, &b), -1);
  EXPECT_EQ(CompareTitleChars(nullptr, &empty1), 0);
  EXPECT_EQ(CompareTitleChars(u"", &empty1), 1);

  EXPECT_EQ(ComparePrefixTitleText(&a, &ab), 0);  // a's length bounds both sides
  EXPECT_EQ(ComparePrefixTitleText(&ab, &a), 1);
  EXPECT_EQ(ComparePrefixTitleChars(u"abc", &ab, reinterpret_cast<const void*>(4)), 0);
  EXPECT_EQ(ComparePrefixTitleChars(u"abc", &ab, reinterpret_cast<const void*>(6)), 1);
  EXPECT_EQ(ComparePrefixTitleChars(u"b", &ab, reinterpret_cast<const void*>(2)), 1);

  EXPECT_TRUE(CheckTitleText(&empty1, &empty2));
  EXPECT_FALSE(CheckTitleText(&empty1, &a));
  EXPECT_TRUE(CheckTitleText(&ab, &ab));
  EXPECT_FALSE(CheckTitleText(&a, &ab));
  EXPECT_TRUE(CheckTitleChars(&ab, u"ab"));
  EXPECT_FALSE(CheckTitleChars(&ab, nullptr));
  EXPECT_TRUE(CheckTitleChars(&empty1, nullptr));
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
