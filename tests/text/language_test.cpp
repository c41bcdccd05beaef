//===- language_test.cpp - Languages, locales and language files ----------===//
#include "tavi/text/language.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"

namespace tavi {
namespace {

// Sets the locale variables for one test and puts the old values back.
class Environment {
 public:
  Environment(const char* lc_all, const char* lc_messages, const char* lang) {
    for (const char* name : kNames) {
      const char* value = std::getenv(name);
      saved_.emplace_back(value != nullptr, value != nullptr ? value : "");
    }
    Put("LC_ALL", lc_all);
    Put("LC_MESSAGES", lc_messages);
    Put("LANG", lang);
  }
  ~Environment() {
    for (size_t i = 0; i < 3; ++i)
      Put(kNames[i], saved_[i].first ? saved_[i].second.c_str() : nullptr);
  }

 private:
  static void Put(const char* name, const char* value) {
    if (value != nullptr) {
      ::setenv(name, value, 1);
    } else {
      ::unsetenv(name);
    }
  }
  static constexpr const char* kNames[3] = {"LC_ALL", "LC_MESSAGES", "LANG"};
  std::vector<std::pair<bool, std::string>> saved_;
};

std::u16string TagOf(uint32_t locale) {
  char16_t tag[32];
  return XLocaleToLanguageTag(locale, tag, 32) ? std::u16string(tag) : u"<none>";
}

TEST(Language, TagsAndIdentifiersBothWays) {
  const std::vector<std::pair<std::u16string, uint32_t>> pairs = {
      {u"de-AT", 0x0C07}, {u"en-US", 0x0409},      {u"fr-CA", 0x0C0C},
      {u"ja-JP", 0x0411}, {u"zh-Hant-TW", 0x0404}, {u"sr-Latn-RS", 0x241A},
  };
  for (const auto& [tag, lcid] : pairs) {
    EXPECT_EQ(XLanguageTagToLocale(tag.c_str()), lcid);
    EXPECT_EQ(TagOf(lcid), tag);
  }
  EXPECT_EQ(XLanguageTagToLocale(u"de"), 0x0007u);
  EXPECT_EQ(XLanguageTagToLocale(u"de_AT"), 0x0C07u);
  for (const char16_t* bad : {u"", u"not a tag", u"de-AT!", u"\u00E4\u00F6"})
    EXPECT_EQ(XLanguageTagToLocale(bad), 0u);
  EXPECT_EQ(TagOf(0x7777), u"<none>");

  char16_t small[4];
  EXPECT_FALSE(XLocaleToLanguageTag(0x0C07, small, 4));  // "de-AT" needs 6
  EXPECT_EQ(small[0], 0);
}

TEST(Language, EnvironmentGivesUserAndSystemLocale) {
  {
    Environment env("de_AT.UTF-8@euro", "fr_FR", "it_IT.UTF-8");
    EXPECT_EQ(XGetUserLocale(), 0x0C07u);
    EXPECT_EQ(XGetUserLanguage(), 0x0C07u);
    EXPECT_EQ(XGetSystemLocale(), 0x0410u);  // LANG alone
    char16_t tag[16];
    ASSERT_TRUE(XGetUserLanguageTag(tag, 16));
    EXPECT_EQ(std::u16string(tag), u"de-AT");
    EXPECT_EQ(TagOf(kLocaleSystemDefault), u"it-IT");
  }
  {
    Environment env(nullptr, "pt_BR", "en_GB");
    EXPECT_EQ(XGetUserLocale(), 0x0416u);
    EXPECT_EQ(XGetSystemLocale(), 0x0809u);
  }
  {
    Environment env("C", nullptr, nullptr);
    EXPECT_EQ(XGetUserLocale(), 0x0409u);
    char16_t tag[4];
    ASSERT_TRUE(XGetUserLanguageTag(tag, 4));
    EXPECT_EQ(std::u16string(tag), u"en");
  }
  {
    Environment env("de_XY", nullptr, nullptr);  // no such region: the bare language
    EXPECT_EQ(XGetUserLocale(), 0x0007u);
  }
}

TEST(Language, DisplayNames) {
  const std::vector<std::tuple<uint32_t, uint32_t, std::u16string>> names = {
      {0x0C07, 0x0407, u"Deutsch (\u00D6sterreich)"},
      {0x0C07, 0x0409, u"German (Austria)"},
      {0x040C, 0x040C, u"fran\u00E7ais (France)"},
  };
  for (const auto& [locale, in, name] : names) {
    XBuffer out;
    ASSERT_TRUE(XGetLanguageName(out, locale, in));
    EXPECT_EQ(
        std::u16string(reinterpret_cast<const char16_t*>(out.GetBuffer()), out.GetBufferPos() / 2),
        name);
  }
  XBuffer out;
  EXPECT_FALSE(XGetLanguageName(out, 0x7777, 0x0409));
  EXPECT_EQ(out.GetErrorCode(), kErrNoLocale);
  EXPECT_EQ(out.GetBufferPos(), 0u);
}

TEST(Language, CodePagesOfLocales) {
  uint16_t ansi = 0, oem = 0;
  EXPECT_TRUE(XGetLocaleCodePages(0x0419, &ansi, &oem));  // Russian
  EXPECT_EQ(ansi, 1251);
  EXPECT_EQ(oem, 866);
  EXPECT_TRUE(XGetLocaleCodePages(0x0C07, &ansi, &oem));  // German (Austria)
  EXPECT_EQ(ansi, 1252);
  EXPECT_EQ(oem, 850);
  EXPECT_FALSE(XGetLocaleCodePages(0x0441, &ansi, &oem));  // Swahili: not in the table
  EXPECT_EQ(ansi, 1252);
  EXPECT_EQ(oem, 850);
}

TEST(Language, LanguageFileSearchFallsBack) {
  test::ScratchDir dir;
  for (const char* file : {"app.de.lng", "app.en.lng", "app.pt-BR.lng", "other.fr.lng"})
    test::Spit(dir.root() / file, "x");
  const std::u16string folder = dir.root().u16string();
  const std::vector<std::pair<const char16_t*, std::u16string>> cases = {
      {u"de-AT", u"app.de.lng"},    {u"de_Latn_AT", u"app.de.lng"}, {u"de", u"app.de.lng"},
      {u"pt-BR", u"app.pt-BR.lng"}, {u"pt-PT", u"app.en.lng"},      {u"fr-CA", u"app.en.lng"},
      {u"en-US", u"app.en.lng"},
  };
  for (const auto& [tag, file] : cases) {
    XString16 path;
    ASSERT_TRUE(XFindLanguageFile(path, folder.c_str(), u"app", tag)) << test::Text(path).size();
    EXPECT_EQ(test::Text(path), folder + u"/" + file);
  }
  {
    Environment env("de_CH.UTF-8", nullptr, nullptr);  // the user's tag when none is given
    XString16 path;
    ASSERT_TRUE(XFindLanguageFile(path, (folder + u"/").c_str(), u"app"));
    EXPECT_EQ(test::Text(path), folder + u"/app.de.lng");
  }
  XString16 path;
  EXPECT_FALSE(XFindLanguageFile(path, folder.c_str(), u"other", u"de-AT"));
  EXPECT_EQ(test::Text(path), folder + u"/other.en.lng");
  EXPECT_NE(path.GetErrorCode(), 0u);
}

}  // namespace
}  // namespace tavi
