//===- option_file_test.cpp - Option files ---------------------------------===//
#include "tavi/file/option_file.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "file_helpers.h"
#include "tavi/core/title_text.h"
#include "tavi/core/user_interface.h"

namespace tavi {
namespace {

using test::ScratchDir;
using test::Slurp;
using test::Spit;
using test::Str;
using test::Text;

struct Boxes {
  struct Box {
    std::u16string text;
    uint32_t style;
  };
  static inline std::vector<Box> shown;
  XUserInterface table{};
  const XUserInterface* saved;
  Boxes() {
    shown.clear();
    table.message_box = [](XWindow, const char16_t* text, const char16_t*, uint32_t style) {
      shown.push_back({text, style});
      return kIdOk;
    };
    saved = XSetUserInterface(&table);
  }
  ~Boxes() { XSetUserInterface(saved); }
};

uint32_t Bytes(const char16_t* key) {
  return static_cast<uint32_t>(std::char_traits<char16_t>::length(key) * 2);
}

class OptionFileTest : public ::testing::Test {
 protected:
  void Load(const std::string& content) {
    Spit(dir / u"app.opt", content);
    SetName(dir.Name(u"app.opt"));
    ASSERT_NE(options.LoadFile(name, nullptr), 0);
  }
  void SetName(const std::u16string& text) {
    ASSERT_TRUE(name.Set(text.c_str(), static_cast<uint32_t>(text.size() * 2)));
  }
  std::u16string Message(const std::u16string& error, const std::u16string& line) {
    return u"Option error: " + error + u"\nLine: " + line + u"\n\nFile: " + dir.Name(u"app.opt");
  }
  ScratchDir dir;
  XString16 name;
  XOptionFile options;
  Boxes boxes;
};

TEST_F(OptionFileTest, TypedValuesAndSortedLines) {
  Load("Width=10\r\nName=abc\r\nRatio=0.25\r\nFlag=1\r\nOff=0\r\nSmall=65535\r\nQuoted=\"a b\"");
  ASSERT_EQ(options.GetCount(), 7u);
  for (uint32_t i = 1; i < options.GetCount(); ++i) {
    EXPECT_LE(CompareTitleText(options._StrAt(i - 1), options._StrAt(i)), 0);
  }
  uint32_t width = 0;
  TTitleText* line = options.InputOption(width, u"Width=", 12);
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(std::u16string(line->text), u"Width=10");
  EXPECT_EQ(width, 10u);
  double ratio = 0;
  EXPECT_NE(options.InputOption(ratio, u"Ratio=", Bytes(u"Ratio=")), nullptr);
  EXPECT_EQ(ratio, 0.25);
  bool flag = false, off = true;
  EXPECT_NE(options.InputOption(flag, u"Flag=", Bytes(u"Flag=")), nullptr);
  EXPECT_NE(options.InputOption(off, u"Off=", Bytes(u"Off=")), nullptr);
  EXPECT_TRUE(flag);
  EXPECT_FALSE(off);
  uint16_t small = 0;
  EXPECT_NE(options.InputOption(small, u"Small=", Bytes(u"Small=")), nullptr);
  EXPECT_EQ(small, 65535);
  TTitleText text, quoted;
  EXPECT_NE(options.InputOption(text, u"Name=", Bytes(u"Name=")), nullptr);
  EXPECT_EQ(std::u16string(text.text), u"abc");
  EXPECT_NE(options.InputOption(quoted, u"Quoted=", Bytes(u"Quoted=")), nullptr);
  EXPECT_EQ(std::u16string(quoted.text), u"a b");
  // A missing key is silent and leaves the value alone.
  width = 7;
  EXPECT_EQ(options.InputOption(width, u"Height=", Bytes(u"Height=")), nullptr);
  EXPECT_EQ(width, 7u);
  EXPECT_TRUE(Boxes::shown.empty());
}

TEST_F(OptionFileTest, BadValuesShowTheOptionError) {
  Load("Big=70000\nFlag=2\nWidth=wide\nRatio=x\nName=\n");
  struct Case {
    const char16_t* key;
    int kind;
    const char16_t* line;
    const char16_t* error;
  } cases[] = {
      {u"Big=", 0, u"Big=70000", u"The size limit was reached."},
      {u"Flag=", 1, u"Flag=2", u"The option value is not a valid text or folder."},
      {u"Width=", 2, u"Width=wide", u"The option value is not a valid number."},
      {u"Ratio=", 3, u"Ratio=x", u"The option value is not a valid number."},
      {u"Name=", 4, u"Name=", u"The option value is not a valid text or folder."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::u16string(c.line).size());
    Boxes::shown.clear();
    uint16_t u16 = 5;
    bool b = true;
    uint32_t u32 = 5;
    double d = 5;
    TTitleText t;
    TTitleText* line = nullptr;
    const uint32_t n = Bytes(c.key);
    switch (c.kind) {
      case 0:
        line = options.InputOption(u16, c.key, n);
        EXPECT_EQ(u16, 5);
        break;
      case 1:
        line = options.InputOption(b, c.key, n);
        EXPECT_TRUE(b);
        break;
      case 2:
        line = options.InputOption(u32, c.key, n);
        EXPECT_EQ(u32, 5u);
        break;
      case 3:
        line = options.InputOption(d, c.key, n);
        EXPECT_EQ(d, 5);
        break;
      default:
        line = options.InputOption(t, c.key, n);
        break;
    }
    EXPECT_EQ(line, nullptr);
    ASSERT_EQ(Boxes::shown.size(), 1u);
    EXPECT_EQ(Boxes::shown[0].text, Message(c.error, c.line));
    EXPECT_EQ(Boxes::shown[0].style, kMbIconError);
  }
}

TEST_F(OptionFileTest, DirectoryOption) {
  const std::u16string made = dir.Name(u"made/deeper");
  Load("Dir=" + (dir / u"made/deeper").string() + "\nEmpty=\nQuoted=\"\"\n");
  XString16 folder;
  ASSERT_TRUE(options.InputOptionDir(folder, true, u"Dir=", Bytes(u"Dir=")));
  EXPECT_EQ(Text(folder), made);  // no divider added
  EXPECT_TRUE(test::fs::is_directory(dir / u"made/deeper"));
  EXPECT_TRUE(Boxes::shown.empty());

  XString16 empty;
  EXPECT_FALSE(options.InputOptionDir(empty, false, u"Empty=", Bytes(u"Empty=")));
  EXPECT_EQ(empty.GetErrorCode(), 0x20000008u);
  ASSERT_EQ(Boxes::shown.size(), 1u);
  EXPECT_EQ(Boxes::shown[0].text,
            Message(u"The option value is not a valid text or folder.", u"Empty="));
  Boxes::shown.clear();
  XString16 quoted;
  EXPECT_FALSE(options.InputOptionDir(quoted, false, u"Quoted=", Bytes(u"Quoted=")));
  EXPECT_EQ(Boxes::shown.size(), 1u);  // an empty folder text
  XString16 none;
  EXPECT_FALSE(options.InputOptionDir(none, false, u"Other=", Bytes(u"Other=")));
}

TEST_F(OptionFileTest, MissingFileShowsInformation) {
  SetName(dir.Name(u"absent.opt"));
  EXPECT_EQ(options.LoadFile(name, nullptr), 0);
  ASSERT_GE(Boxes::shown.size(), 1u);
  EXPECT_EQ(Boxes::shown[0].text, u"The file " + dir.Name(u"absent.opt") +
                                      u" does not exist. Default settings are used.");
  EXPECT_EQ(Boxes::shown[0].style, kMbIconInformation);
  EXPECT_TRUE(name.IsError());
}

TEST_F(OptionFileTest, SaveKeepsBackupAndUserFilesUseTheConfigFolder) {
  XString16 text = Str(u"Width=10\r\nName=abc\r\n");
  SetName(dir.Name(u"save.opt"));
  ASSERT_TRUE(options.SaveFile(name, text));
  EXPECT_EQ(Slurp(dir / u"save.opt"), "Width=10\r\nName=abc\r\n");
  XString16 second = Str(u"Width=20\r\n");
  SetName(dir.Name(u"save.opt"));
  ASSERT_TRUE(options.SaveFile(name, second));
  EXPECT_EQ(Slurp(dir / u"save.opt"), "Width=20\r\n");
  EXPECT_EQ(Slurp(dir / u"save.opt.bck"), "Width=10\r\nName=abc\r\n");

  const char* old = std::getenv("XDG_CONFIG_HOME");
  std::string saved = old != nullptr ? old : "";
  setenv("XDG_CONFIG_HOME", dir.root().c_str(), 1);
  XString16 path;
  ASSERT_TRUE(options.SaveUserFile(path, u"user.opt", Bytes(u"user.opt"), second));
  EXPECT_EQ(Slurp(dir / u"user.opt"), "Width=20\r\n");
  XOptionFile user;
  XString16 load_path;
  EXPECT_NE(user.LoadUserFile(load_path, u"user.opt", Bytes(u"user.opt"), nullptr), 0);
  EXPECT_EQ(Text(load_path), dir.Name(u"user.opt"));
  uint32_t width = 0;
  EXPECT_NE(user.InputOption(width, u"Width=", Bytes(u"Width=")), nullptr);
  EXPECT_EQ(width, 20u);
  if (old != nullptr)
    setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
  else
    unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace tavi
