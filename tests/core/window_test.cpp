//===- window_test.cpp - Window text and clipboard members -----------------===//
#include <gtest/gtest.h>

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
  s.Set(u"new");
  ASSERT_TRUE(s.WndSetText(Window(1)));
  EXPECT_EQ(Fake().windows[1], u"new");
  EXPECT_FALSE(s.WndSetText(Window(2)));
  EXPECT_EQ(s.GetErrorSource(), kErrSourcePlatform);

  Fake().windows[304] = u"item";
  XString16 item;
  ASSERT_TRUE(item.DlgGetItemText(Window(3), 4));
  EXPECT_EQ(std::u16string(item.c_str()), u"item");
  item.Set(u"changed");
  ASSERT_TRUE(item.DlgSetItemText(Window(3), 4));
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

  XBuffer b;
  const uint32_t wanted[] = {99, kClipboardText, 0};
  EXPECT_TRUE(b.IsClipboardFormatAvailable(wanted));
  EXPECT_FALSE(b.IsClipboardFormatAvailable(wanted, 1));
  EXPECT_FALSE(b.IsClipboardNativeTextFormatAvailable());
}

TEST(Clipboard, HtmlRoundTripAndFormatName) {
  test::ScopedFakeUi ui;
  XBuffer html;
  html._Write("<b>bold</b>", 11);
  ASSERT_TRUE(html.AddHTMLClipboardData(nullptr));
  const uint32_t format = Fake().formats[u"HTML Format"];
  const std::string& raw = Fake().clipboard[format];
  EXPECT_EQ(raw.rfind("Version:0.9\r\nStartHTML:", 0), 0u);
  const size_t start = std::stoul(raw.substr(raw.find("StartFragment:") + 14, 10));
  const size_t end = std::stoul(raw.substr(raw.find("EndFragment:") + 12, 10));
  EXPECT_EQ(raw.substr(start, end - start), "<b>bold</b>");
  const size_t end_html = std::stoul(raw.substr(raw.find("EndHTML:") + 8, 10));
  EXPECT_EQ(end_html + 1, raw.size()) << "the offsets count the stored bytes";

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
