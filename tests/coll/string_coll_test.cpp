//===- string_coll_test.cpp - The sorted collection of wide texts ----------===//
#include "tavi/coll/string_coll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/text/text_file.h"

namespace tavi {
namespace {

using test::ScratchDir;
using test::Slurp;
using test::Str;

// Owns its items, so every test frees what it made.
class Strings : public TStringColl {
 public:
  ~Strings() override { FreeAll(); }
};

// The texts of the items; "<none>" for an item without text.
std::vector<std::u16string> Texts(const TStringColl& c) {
  std::vector<std::u16string> v;
  for (uint32_t i = 0; i < c.GetCount(); ++i) {
    const TTitleText* t = c._StrAt(i);
    v.push_back(t->text ? std::u16string(t->text, t->size / 2) : u"<none>");
  }
  return v;
}

bool IsSorted(const TStringColl& c) {
  for (uint32_t i = 1; i < c.GetCount(); ++i) {
    if (CompareTitleText(c._At(i - 1), c._At(i)) > 0) return false;
  }
  return true;
}

TEST(StringColl, StrAddKeepsOrderAndRefusesDuplicates) {
  Strings c;
  EXPECT_EQ(c.StrAdd(u"mango"), 0u);
  EXPECT_EQ(c.StrAdd(u"zebra"), 1u);  // after every item: the former count
  EXPECT_EQ(c.StrAdd(u"apple"), 0u);
  EXPECT_EQ(c.StrAdd(u"mango"), kNoIndex);
  EXPECT_NE(c.StrAdd(u"Mango"), kNoIndex);  // other case, other text
  EXPECT_EQ(c.GetCount(), 4u);
  // The length only says how much is stored; the place comes from the whole text.
  const uint32_t at = c.StrAdd(u"kiwi fruit", 8, false);
  ASSERT_NE(at, kNoIndex);
  EXPECT_EQ(Texts(c)[at], u"kiwi");
  EXPECT_EQ(c.StrAdd(u"kiwi"), kNoIndex);
  EXPECT_EQ(c.StrAdd(static_cast<const char16_t*>(nullptr)), kNoIndex);

  std::mt19937 rng(3);
  for (int i = 0; i < 300; ++i) {
    std::u16string w;
    for (int k = 0; k < 1 + static_cast<int>(rng() % 4); ++k) w += u"aAbB-é"[rng() % 6];
    c.StrAdd(w.c_str());
  }
  EXPECT_TRUE(IsSorted(c));
  for (uint32_t i = 0; i < c.GetCount(); ++i) {
    EXPECT_EQ(c.StrIndex(c._CharAt(i)), i);
    EXPECT_EQ(c.StrIndex(*c._StrAt(i)), i);
  }
  EXPECT_FALSE(c.StrIsInList(u"not there"));
  EXPECT_TRUE(c.StrIsInList(u"zebra"));
}

TEST(StringColl, CreationForms) {
  Strings c;
  EXPECT_FALSE(c.StrInsert(static_cast<const char16_t*>(nullptr)));
  EXPECT_FALSE(c.StrInsertAt(0, nullptr, 0, false));
  EXPECT_FALSE(c.StrInsertAt(1, u"x", 2, false));
  EXPECT_TRUE(c.StrInsert(u"b"));
  EXPECT_TRUE(c.StrInsertAt(0, u"a", 2, false));
  TTitleText title;
  title.Set(u"c", 2, false);
  EXPECT_TRUE(c.StrInsert(title));
  EXPECT_TRUE(c.StrInsert(Str(u"dd")));
  EXPECT_EQ(Texts(c), (std::vector<std::u16string>{u"a", u"b", u"c", u"dd"}));
  EXPECT_NE(c._CharAt(2), title.text);  // a copy, not the caller's memory
}

TEST(StringColl, PrefixIndex) {
  Strings c;
  EXPECT_EQ(c.PrefixIndex(u"a", 0), kNoIndex);
  for (const char16_t* w : {u"b", u"abd", u"a", u"abc", u"ab"}) c.StrAdd(w);
  EXPECT_EQ(c.PrefixIndex(u"zz", 0), 0u);  // an empty prefix matches the first item
  EXPECT_EQ(Texts(c)[c.PrefixIndex(u"ab")], u"ab");
  EXPECT_EQ(Texts(c)[c.PrefixIndex(u"abx", 4)], u"ab");
  EXPECT_EQ(Texts(c)[c.PrefixIndex(u"abc")], u"abc");
  EXPECT_EQ(c.PrefixIndex(u"c"), kNoIndex);
  TTitleText key;
  key.Set(u"abd", 6, false);
  EXPECT_EQ(Texts(c)[c.PrefixIndex(key)], u"abd");
}

struct LinesCase {
  const char16_t* text;
  std::vector<std::u16string> items;
};

TEST(StringColl, ConvertLines) {
  const LinesCase cases[] = {
      {u"a\r\nb\n\nc", {u"a", u"b", u"<none>", u"c"}},
      {u"a\n", {u"a"}},
      {u"", {}},
      {u"\n", {u"<none>"}},
      {u"\r\n\r", {u"<none>", u"\r"}},
      {u"x\ry\n", {u"x\ry"}},
  };
  for (const LinesCase& t : cases) {
    Strings c;
    EXPECT_TRUE(c.ConvertLines(t.text));
    EXPECT_EQ(Texts(c), t.items) << std::string(t.text, t.text + std::u16string(t.text).size());
  }
  Strings c;
  EXPECT_TRUE(c.ConvertLines(nullptr));
  EXPECT_EQ(c.GetCount(), 0u);
}

std::u16string Written(TStringColl& c) {
  XBuffer out;
  EXPECT_TRUE(c.SaveLines(out));
  return std::u16string(static_cast<const char16_t*>(out.GetBuffer()), out.GetBufferPos() / 2);
}

TEST(StringColl, SaveLinesAndEnumStrings) {
  Strings c;
  EXPECT_EQ(Written(c), u"");
  c.StrInsert(u"a");
  EXPECT_EQ(Written(c), u"a");
  c.ConvertLines(u"\nb");
  EXPECT_EQ(Written(c), u"a\r\n\r\nb");
  int seen = 0;
  auto stop_at_b = [](TTitleText* t, const void* n) {
    ++*static_cast<int*>(const_cast<void*>(n));
    return t->text == nullptr || t->text[0] != u'b';
  };
  EXPECT_FALSE(c.EnumStrings(stop_at_b, &seen));
  EXPECT_EQ(seen, 3);
  Strings empty;
  EXPECT_TRUE(empty.EnumStrings(stop_at_b, &seen));
  EXPECT_EQ(seen, 3);
}

TEST(StringColl, TextFilesRoundTrip) {
  ScratchDir dir;
  for (uint16_t format : {kTextUtf16, kTextUtf8, uint16_t{1252}}) {
    SCOPED_TRACE(format);
    Strings c;
    c.ConvertLines(u"pear\n\napple\nfig");
    XString16 name = Str(dir.Name(u"list.txt"));
    EXPECT_EQ(c.ExTextFile(name, kFileWrite | kFileCreateAlways, format, nullptr), format);
    Strings back;
    back.StrInsert(u"kept");
    EXPECT_EQ(back.ExTextFile(name, kFileRead, format, nullptr), format);
    EXPECT_EQ(Texts(back),
              (std::vector<std::u16string>{u"kept", u"pear", u"<none>", u"apple", u"fig"}));
    Strings sorted;
    EXPECT_EQ(sorted.LoadSortTextFile(name, kFileRead, format), format);
    EXPECT_TRUE(IsSorted(sorted));
    EXPECT_EQ(Texts(sorted)[0], u"<none>");
  }
  // Saved UTF-16 text: byte-order mark, CR LF between items, none at the end.
  Strings two;
  two.ConvertLines(u"a\nb");
  XString16 name = Str(dir.Name(u"two.txt"));
  ASSERT_NE(two.ExTextFile(name, kFileWrite | kFileCreateAlways, kTextUtf16, nullptr), 0);
  EXPECT_EQ(Slurp(dir / u"two.txt"), std::string("\xFF\xFE"
                                                 "a\0\r\0\n\0b\0",
                                                 10));

  XString16 missing = Str(dir.Name(u"missing.txt"));
  Strings none;
  EXPECT_EQ(none.LoadSortTextFile(missing, kFileRead, kTextUtf16), 0);
  EXPECT_TRUE(missing.IsError());
  EXPECT_EQ(none.GetCount(), 0u);
}

TEST(StringColl, ItemsSerialiseAsSizedStrings) {
  Strings c;
  c.ConvertLines(u"ab\n\nc");
  XBuffer out;
  ASSERT_TRUE(c.Write(out));
  const uint8_t expected[] = {3, 0, 0, 0, 2, 'a', 0, 'b', 0, 0, 1, 'c', 0};
  ASSERT_EQ(out.GetBufferPos(), sizeof(expected));
  EXPECT_EQ(std::memcmp(out.GetBuffer(), expected, sizeof(expected)), 0);
}

}  // namespace
}  // namespace tavi
