//===- string_resource_coll_test.cpp - String tables and language files ----===//
#include "tavi/resource/string_resource_coll.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/fake_ui.h"
#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/title_text.h"
#include "tavi/core/user_interface.h"

namespace tavi {
namespace {

XBuffer Wide(const std::u16string& text) {
  XBuffer b;
  EXPECT_TRUE(b.Add(text.data(), static_cast<uint32_t>(text.size() * 2)));
  return b;
}

std::u16string Text(TStringResource& r, int32_t id) {
  const char16_t* t = r._Get(id);
  return t == nullptr ? u"<none>" : std::u16string(t);
}

TEST(LanguageFile, LinesValuesAndEscapes) {
  struct Case {
    const char16_t* file;
    bool ok;
    std::map<int32_t, std::u16string> want;
  } cases[] = {
      {u"; comment\n12=Hello\n13=\"  two  \"\n14=a\\tb\n",
       true,
       {{12, u"Hello"}, {13, u"  two  "}, {14, u"a\tb"}}},
      // CR LF, no final line end, escapes, unknown escape and trailing backslash kept.
      {u"1=x\\\\y\\n\\r\\q\r\n2=end\\", true, {{1, u"x\\y\n\r\\q"}, {2, u"end\\"}}},
      // The last quote closes; text after it is dropped; a lone quote stays.
      {u"3=\"a\"b\"c\n4=\"open\n5=\"\n6=\" x \" # note",
       true,
       {{3, u"a\"b"}, {4, u"\"open"}, {5, u"\""}, {6, u" x "}}},
      // Escapes are decoded after unquoting.
      {u"7=\"\\\"q\\\"\"", true, {{7, u"\\\"q\\\""}}},
      // Range ends and lines that are comments.
      {u"1=lo\n2147483646=hi\n 5=x\n5 = x\n5x=y\n=z\n",
       true,
       {{1, u"lo"}, {2147483646, u"hi"}, {5, u"<none>"}}},
      {u"2147483647=x\n9=ok", false, {{9, u"ok"}}},
      // Digit runs that pass 2^32 must not wrap back into the range (4294967297 is 1).
      {u"4294967297=x\n9999999999=y\n9=ok", false, {{1, u"<none>"}, {9, u"ok"}}},
      // An empty value fails the load, also when only the quotes are there.
      {u"8=\"\"\r\n9=ok", false, {{8, u"<none>"}, {9, u"ok"}}},
      // Only comments: nothing loaded is a failure too.
      {u"# nothing\n\n", false, {}},
      {u"", false, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.file, c.file + std::char_traits<char16_t>::length(c.file)));
    TTextFileStringResource r;
    XBuffer b = Wide(c.file);
    EXPECT_EQ(r.AddResources(b), c.ok);
    for (const auto& [id, text] : c.want) EXPECT_EQ(Text(r, id), text) << id;
  }
}

TEST(LanguageFile, DuplicateShowsOneBoxAndKeepsFirst) {
  test::ScopedFakeUi ui;
  TTextFileStringResource r;
  XBuffer b = Wide(u"20=first\n20=second\n21=x\n");
  EXPECT_FALSE(r.AddResources(b));
  ASSERT_EQ(test::Fake().boxes.size(), 1u);
  EXPECT_EQ(test::Fake().boxes[0].text, u"Duplicated ID: 20\r\n\r\nsecond");
  EXPECT_EQ(test::Fake().boxes[0].caption, u"Resource string error");
  EXPECT_EQ(test::Fake().boxes[0].style, kMbIconError);
  EXPECT_EQ(Text(r, 20), u"first");
  EXPECT_EQ(r.GetCount(), 2u);
}

// The walk hands over every line, numbered, with the verdict the load reached; the
// stored strings are exactly the lines it calls added.
TEST(LanguageFile, LineVerdictsFollowTheLoad) {
  using V = XLanguageLineVerdict;
  struct Seen {
    uint32_t number;
    V verdict;
    int32_t id;
    std::u16string digits, value;
    bool operator==(const Seen&) const = default;
  };
  static std::vector<Seen> seen;
  seen.clear();
  auto sink = [](void* context, const XLanguageFileLine& line) {
    EXPECT_EQ(context, &seen);
    seen.push_back({line.number, line.verdict, line.id,
                    std::u16string(line.digits, line.digit_count),
                    line.value != nullptr ? std::u16string(line.value, line.value_units) : u"-"});
  };
  test::ScopedFakeUi ui;
  TTextFileStringResource r;
  XBuffer b = Wide(
      u"# c\r\n\r\n12=\"a\\tb\"\r\n0=x\n99999999999=y\n5 = x\n77\n14=\n15=\"\"\n12=again\n"
      u"013=last");
  EXPECT_FALSE(r.AddResources(b, sink, &seen));
  const std::vector<Seen> want = {
      {1, V::kComment, 0, u"", u"-"},
      {2, V::kComment, 0, u"", u"-"},
      {3, V::kAdded, 12, u"12", u"a\tb"},
      {4, V::kIdOutOfRange, 0, u"0", u"x"},
      {5, V::kIdOutOfRange, 0x7FFFFFFF, u"99999999999", u"y"},
      {6, V::kDigitsComment, 5, u"5", u"-"},
      {7, V::kDigitsComment, 77, u"77", u"-"},
      {8, V::kEmptyValue, 14, u"14", u""},
      {9, V::kEmptyValue, 15, u"15", u""},
      {10, V::kDuplicate, 12, u"12", u"again"},
      {11, V::kAdded, 13, u"013", u"last"},
  };
  EXPECT_EQ(seen.size(), want.size());
  for (size_t i = 0; i < std::min(seen.size(), want.size()); ++i) {
    SCOPED_TRACE(i + 1);
    EXPECT_TRUE(seen[i] == want[i]) << static_cast<int>(seen[i].verdict) << " id " << seen[i].id;
  }
  EXPECT_EQ(r.GetCount(), 2u);
  EXPECT_EQ(Text(r, 12), u"a\tb");
  EXPECT_EQ(Text(r, 13), u"last");
  EXPECT_EQ(test::Fake().boxes.size(), 1u);  // the duplicate is still shown

  // A clean load agrees with the walk; a table that already holds an ID makes that
  // line a duplicate.
  seen.clear();
  XBuffer clean = Wide(u"1=a\n2=b\n");
  TTextFileStringResource t;
  EXPECT_TRUE(t.AddResources(clean, sink, &seen));
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[1].verdict, V::kAdded);
  seen.clear();
  XBuffer again = Wide(u"3=c\n2=b");
  EXPECT_FALSE(t.AddResources(again, sink, &seen));
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].verdict, V::kAdded);
  EXPECT_EQ(seen[1].verdict, V::kDuplicate);
}

// Language files in a scratch folder, found by tag with the search's fallbacks.
TEST(LanguageFile, LoadsTheFileOfALanguage) {
  test::ScratchDir dir;
  test::Spit(dir / u"app.de.lng", "1=Hallo\n");
  test::Spit(dir / u"app.en.lng", "1=Hello\n");
  test::Spit(dir / u"app.fr-CA.lng",
             "\xEF\xBB\xBF"
             "1=All\xC3\xB4\n");
  test::Spit(dir / u"app.xx.lng", "1=x\n0=bad\n");
  const std::u16string folder = dir.root().u16string();
  struct Case {
    const char16_t* tag;
    const char16_t* file;
    const char16_t* text;
  } cases[] = {
      {u"fr-CA", u"app.fr-CA.lng", u"All\u00F4"},  // exact tag
      {u"de_AT", u"app.de.lng", u"Hallo"},         // base language
      {u"ja-JP", u"app.en.lng", u"Hello"},         // English last
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.tag, c.tag + std::char_traits<char16_t>::length(c.tag)));
    TTextFileStringResource r;
    XString16 path;
    EXPECT_TRUE(r.LoadLanguageFile(path, folder.c_str(), u"app", c.tag));
    EXPECT_EQ(test::Text(path), folder + u"/" + c.file);
    // The names tried before the one found leave no error behind.
    EXPECT_TRUE(path.IsOk());
    EXPECT_EQ(Text(r, 1), c.text);
  }
  {
    // No tag: the user's, from the environment.
    const char* saved = std::getenv("LC_ALL");
    const std::string old = saved != nullptr ? saved : "";
    ::setenv("LC_ALL", "de_CH.UTF-8", 1);
    XPrivateHeap heap;
    auto* r = new (&heap) TTextFileStringResourceHeap(&heap);
    XString16 path;
    EXPECT_TRUE(r->LoadLanguageFile(path, folder.c_str(), u"app"));
    EXPECT_EQ(Text(*r, 1), u"Hallo");
    delete r;
    if (saved != nullptr)
      ::setenv("LC_ALL", old.c_str(), 1);
    else
      ::unsetenv("LC_ALL");
  }
  // Nothing found: the last name tried and the platform's error, also in the buffer.
  TTextFileStringResource r;
  XString16 path;
  XBuffer buffer;
  EXPECT_FALSE(r.LoadLanguageFile(buffer, path, folder.c_str(), u"other", u"de"));
  EXPECT_EQ(test::Text(path), folder + u"/other.en.lng");
  EXPECT_TRUE(path.IsError());
  EXPECT_EQ(test::Err(buffer), test::Err(path));
  EXPECT_EQ(r.GetCount(), 0u);
  // A file that is found but has a bad line loads what it can and fails.
  EXPECT_FALSE(r.LoadLanguageFile(path, folder.c_str(), u"app", u"xx"));
  EXPECT_TRUE(path.IsOk());
  EXPECT_EQ(Text(r, 1), u"x");
}

// Out-of-order adds against a sorted reference model.
TEST(StringResourceColl, RandomOrderMatchesModel) {
  TStringResourceColl r;
  std::map<int32_t, std::u16string> model;
  std::mt19937 rng(7);
  test::ScopedFakeUi ui;
  for (int i = 0; i < 2000; ++i) {
    int32_t id = static_cast<int32_t>(rng() % 5000) - 100;
    std::u16string text(1 + rng() % 5, static_cast<char16_t>(u'a' + i % 26));
    bool fresh = model.emplace(id, text).second;
    EXPECT_EQ(r.AddResource(id, text.data(), static_cast<uint32_t>(text.size() * 2)) != nullptr,
              fresh);
  }
  ASSERT_EQ(r.GetCount(), model.size());
  uint32_t i = 0;
  for (const auto& [id, text] : model) {
    TResourceStringItem* item = r._ResourceStringItem(i);
    EXPECT_EQ(item->ID, id);
    EXPECT_EQ(item->Size, text.size() * 2);
    EXPECT_EQ(std::u16string(item->Text()), text);
    EXPECT_EQ(r._GetResourceStringIndex(id), i++);
  }
  EXPECT_EQ(r._GetResourceStringIndex(-101), kNoIndex);
  EXPECT_EQ(r._GetResourceStringIndex(4900), kNoIndex);
  EXPECT_EQ(r._AddResource(1, u"", 0u), nullptr);
}

TEST(StringResourceColl, MissesGivePlaceholders) {
  TStringResourceColl r;
  EXPECT_EQ(r._Get(99), nullptr);
  EXPECT_EQ(std::u16string(static_cast<TStringResource&>(r).Get(99)), u"???");
  EXPECT_EQ(r.GetCount(), 0u);
  EXPECT_EQ(std::u16string(r.Get(99)), u"??? SID=99 ???");
  EXPECT_EQ(r.GetCount(), 1u);
  EXPECT_EQ(Text(r, 99), u"??? SID=99 ???");
  EXPECT_EQ(std::u16string(r.Get(-5)), u"??? SID=-5 ???");

  XBuffer b;
  EXPECT_FALSE(r._Write(b, 7));
  EXPECT_TRUE(r.Write(b, 7));
  EXPECT_TRUE(r.SetBuffer(b, 8));  // base fallback writes "???" without adding
  EXPECT_EQ(std::u16string(static_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2),
            u"???");
  EXPECT_EQ(r._GetResourceString(8), nullptr);
  EXPECT_TRUE(r._SetBuffer(b, 7));
  EXPECT_EQ(std::u16string(static_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2),
            u"??? SID=7 ???");
}

TEST(StringResourceColl, ConcurrentMissesAddOnePlaceholderEach) {
  TStringResourceColl r;
  test::ScopedFakeUi ui;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&r] {
      for (int32_t id = 1; id <= 300; ++id) EXPECT_NE(r.GetResourceString(id), nullptr);
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(r.GetCount(), 300u);
}

TEST(StringResourceColl, AttachPointsAtItemTexts) {
  TTextFileStringResource r;
  XBuffer b = Wide(u"10=ten\n11=eleven\n12=twelve\n");
  ASSERT_TRUE(r.AddResources(b));
  TTitleTextBase one;
  ASSERT_TRUE(one.Set(u"owned", 10, false));
  ASSERT_TRUE(r._Attach(one, 11));
  EXPECT_TRUE(one.IsAttached());
  EXPECT_EQ(one.text, r._Get(11));
  EXPECT_EQ(one.Len() * 2, 12u);
  EXPECT_FALSE(r._Attach(one, 13));
  EXPECT_EQ(one.text, r._Get(11));

  struct Row {
    TTitleTextBase title;
    int pad;
  } rows[3];
  EXPECT_TRUE(r.Attach(&rows[0].title, 10, 3, sizeof(Row)));
  EXPECT_EQ(std::u16string(rows[2].title.text), u"twelve");
  EXPECT_FALSE(r.Attach(&rows[0].title, 10, 0, sizeof(Row)));
  EXPECT_FALSE(r.Attach(&rows[0].title, 9, 1, sizeof(Row)));
  EXPECT_FALSE(r.Attach(&rows[0].title, 11, 3, sizeof(Row)));  // runs past the end
}

TEST(StringResourceHeap, LivesInTheHeapAndDropsWithIt) {
  XPrivateHeap heap;
  auto* r = new (&heap) TTextFileStringResourceHeap(&heap);
  std::u16string file;
  for (int i = 1; i <= 100; ++i)
    file += std::u16string(u"") + u"1" + char16_t(u'0' + i / 100) + char16_t(u'0' + i / 10 % 10) +
            char16_t(u'0' + i % 10) + u"=text\n";
  XBuffer b = Wide(file);
  ASSERT_TRUE(r->AddResources(b));
  EXPECT_EQ(r->GetCount(), 100u);
  // The object, the slot array and every item.
  EXPECT_EQ(heap.BlockCount(), 102u);
  void* block = nullptr;
  ASSERT_TRUE(r->MemRealloc(&block, 16));
  ASSERT_TRUE(r->MemRealloc(&block, 4096));
  EXPECT_EQ(heap.BlockCount(), 103u);
  EXPECT_TRUE(r->MemFree(block));
  EXPECT_TRUE(r->MemFree(nullptr));
  delete r;
  EXPECT_EQ(heap.BlockCount(), 0u);

  // Dropping the heap alone frees a whole language (checked by the leak checker).
  auto* lost = new (&heap) TTextFileStringResourceHeap(&heap);
  XBuffer again = Wide(file);
  ASSERT_TRUE(lost->AddResources(again));
}

// Dialog items are numbered windows; the test table records the texts set on them.
TEST(StringResource, SetDlgItemsTextFillsExistingItems) {
  static std::map<intptr_t, std::u16string> set;
  set.clear();
  XUserInterface ui{};
  ui.get_dialog_item = [](XWindow, int32_t item) {
    return item == 3 ? nullptr : reinterpret_cast<XWindow>(static_cast<intptr_t>(item) + 100);
  };
  ui.set_window_text = [](XWindow w, const char16_t* text) {
    set[reinterpret_cast<intptr_t>(w) - 100] = text;
    return true;
  };
  const XUserInterface* saved = XSetUserInterface(&ui);
  TTextFileStringResource r;
  XBuffer b = Wide(u"1=one\n2=two\n4=four\n");
  ASSERT_TRUE(r.AddResources(b));
  const int32_t list[] = {1, 3, 4, 0};
  TStringResource& base = r;
  EXPECT_TRUE(base.SetDlgItemsText(nullptr, list));
  EXPECT_EQ(set, (std::map<intptr_t, std::u16string>{{1, u"one"}, {4, u"four"}}));
  EXPECT_TRUE(base.SetDlgItemsText(nullptr, 2, 3));  // 2, 3 (no item), 4
  EXPECT_EQ(set[2], u"two");
  EXPECT_TRUE(base.SetDlgItemsText(nullptr, list + 2, 2));  // 4 and 0 (a missing string)
  EXPECT_EQ(set[0], u"???");
  XSetUserInterface(saved);
}

// Menus and combo boxes through a table that records every call as text: menu 7
// lacks item 3, combo box 9 refuses to be emptied, and every box refuses "no".
TEST(StringResource, MenuStringsAndComboBoxLists) {
  static std::vector<std::u16string> calls;
  XUserInterface ui{};
  ui.menu_set_item_text = [](XMenu menu, int32_t item, const char16_t* text) {
    calls.push_back(u"menu " + std::u16string(1, char16_t(u'0' + item)) + u" " + text);
    return !(reinterpret_cast<intptr_t>(menu) == 7 && item == 3);
  };
  ui.combo_reset = [](XWindow combo) {
    calls.push_back(u"reset");
    return reinterpret_cast<intptr_t>(combo) != 9;
  };
  ui.combo_add_string = [](XWindow, const char16_t* text) {
    calls.push_back(u"add " + std::u16string(text));
    return std::u16string(text) != u"no";
  };
  const XUserInterface* saved = XSetUserInterface(&ui);
  TTextFileStringResource r;
  XBuffer b = Wide(u"1=one\n2=two\n3=three\n4=no\n5=five\n");
  ASSERT_TRUE(r.AddResources(b));
  TStringResource& base = r;
  auto menu = reinterpret_cast<XMenu>(intptr_t{7});
  auto combo = reinterpret_cast<XWindow>(intptr_t{8});
  using Calls = std::vector<std::u16string>;
  const int32_t list[] = {2, 3, 1, 0};

  // Menus: every item is tried; one refusal makes the result false.
  calls.clear();
  EXPECT_FALSE(base.SetMenuStrings(menu, list));
  EXPECT_EQ(calls, (Calls{u"menu 2 two", u"menu 3 three", u"menu 1 one"}));
  calls.clear();
  EXPECT_TRUE(base.SetMenuStrings(menu, 1, 2));
  EXPECT_TRUE(base.SetMenuStrings(menu, list + 2, 2));  // 1 and 0, a missing string
  EXPECT_EQ(calls, (Calls{u"menu 1 one", u"menu 2 two", u"menu 1 one", u"menu 0 ???"}));

  // Combo boxes: emptied first only when asked, strings in list order.
  calls.clear();
  EXPECT_TRUE(base.SetComboBoxList(combo, list, true));
  EXPECT_TRUE(base.SetComboBoxList(combo, 5, 1, false));
  EXPECT_EQ(calls, (Calls{u"reset", u"add two", u"add three", u"add one", u"add five"}));
  // A refused string ends the filling, so positions never shift.
  calls.clear();
  EXPECT_FALSE(base.SetComboBoxList(combo, 3, 3, true));
  EXPECT_EQ(calls, (Calls{u"reset", u"add three", u"add no"}));
  const int32_t counted[] = {5, 4, 1};
  calls.clear();
  EXPECT_FALSE(base.SetComboBoxList(combo, counted, 3, false));
  EXPECT_EQ(calls, (Calls{u"add five", u"add no"}));
  // A box that cannot be emptied gets nothing.
  calls.clear();
  EXPECT_FALSE(base.SetComboBoxList(reinterpret_cast<XWindow>(intptr_t{9}), list, true));
  EXPECT_EQ(calls, (Calls{u"reset"}));
  // Empty lists change nothing and succeed.
  calls.clear();
  EXPECT_TRUE(base.SetComboBoxList(combo, nullptr, false));
  EXPECT_TRUE(base.SetComboBoxList(combo, nullptr, 4u, false));
  EXPECT_TRUE(base.SetMenuStrings(menu, 1, 0));
  EXPECT_TRUE(calls.empty());

  // Entries the host left null fall back to the default table, which accepts all.
  XUserInterface bare{};
  XSetUserInterface(&bare);
  EXPECT_TRUE(base.SetMenuStrings(menu, list));
  EXPECT_TRUE(base.SetComboBoxList(reinterpret_cast<XWindow>(intptr_t{9}), list, true));
  XSetUserInterface(saved);
}

}  // namespace
}  // namespace tavi
