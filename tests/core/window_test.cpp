//===- window_test.cpp - Window text and clipboard members -----------------===//
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/fake_ui.h"
#include "tavi/core/string.h"

namespace tavi {
namespace {

using test::Fake;
using test::Window;

TEST(WindowText, GetAndSet) {
  test::ScopedFakeUi ui;
  Fake().windows[1] = u"caption";
  XString16 s;
  ASSERT_TRUE(s.WndGetText(Window(1)));
  EXPECT_EQ(std::u16string(s.c_str()), u"caption");
  EXPECT_EQ(s.GetBufferPos(), 14u);
  EXPECT_FALSE(s.WndSetText(Window(2)));
  EXPECT_EQ(s.GetErrorSource(), kErrSourcePlatform);

  // Dialog items are the controls the table names (dialog 3, item 4: window 304).
  Fake().windows[304] = u"item";
  ASSERT_TRUE(s.DlgGetItemText(Window(3), 4));
  EXPECT_EQ(std::u16string(s.c_str()), u"item");
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

TEST(WindowText, DefaultTableHasNoWindows) {
  XString16 s;
  ASSERT_TRUE(s.WndGetText(Window(1)));
  EXPECT_EQ(s.GetBufferPos(), 0u);
  EXPECT_TRUE(s.WndSetText(Window(1))) << "window text goes nowhere";
  EXPECT_FALSE(s.CopyToClipboard(nullptr));
  EXPECT_EQ(s.GetErrorCode(), kPlatformErrorNotSupported);
}

TEST(Clipboard, TextFormats) {
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

  const uint32_t wanted[] = {99, kClipboardText, 0};
  EXPECT_TRUE(narrow.IsClipboardFormatAvailable(wanted));
  EXPECT_FALSE(narrow.IsClipboardFormatAvailable(wanted, 1));
  EXPECT_FALSE(narrow.IsClipboardNativeTextFormatAvailable());
}

TEST(Clipboard, HtmlRoundTripAndFormatName) {
  test::ScopedFakeUi ui;
  XBuffer html;
  html._Write("<b>bold</b>", 11);
  ASSERT_TRUE(html.AddHTMLClipboardData(nullptr));
  const uint32_t format = Fake().formats[u"HTML Format"];
  const std::string& raw = Fake().clipboard[format];
  EXPECT_EQ(raw.rfind("Version:0.9\r\nStartHTML:", 0), 0u);
  auto field = [&](const char* name) {
    return std::stoul(raw.substr(raw.find(name) + std::strlen(name), 10));
  };
  EXPECT_EQ(raw.substr(field("StartFragment:"), 11), "<b>bold</b>");
  EXPECT_EQ(field("EndFragment:") - field("StartFragment:"), 11u);
  EXPECT_EQ(field("EndHTML:") + 1, raw.size()) << "the offsets count the stored bytes";

  XBuffer back;
  ASSERT_TRUE(back.GetHTMLFormat(nullptr));
  EXPECT_EQ(std::string(static_cast<char*>(back.GetBuffer()), back.GetBufferPos()), "<b>bold</b>");
  // A header with offsets outside the data gives the whole data.
  Fake().clipboard[format] = "StartFragment:0000000005\r\nEndFragment:0000009999\r\nxy";
  ASSERT_TRUE(back.GetHTMLFormat(nullptr));
  EXPECT_EQ(back.GetBufferPos(), Fake().clipboard[format].size());

  XString16 name;
  ASSERT_TRUE(name.AddClipboardFormatName(format));
  EXPECT_EQ(std::u16string(name.c_str()), u"HTML Format");
  EXPECT_FALSE(name.AddClipboardFormatName(12345));
}

}  // namespace
}  // namespace tavi
