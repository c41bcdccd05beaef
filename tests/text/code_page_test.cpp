//===- code_page_test.cpp - Code-page tables and language code pages -------===//
#include "tavi/text/code_page.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "tavi/text/text_file.h"

namespace tavi {
namespace {

TEST(CodePage, TablesOfKnownCodePages) {
  // (code page, byte, character): letters that differ between the code pages.
  const std::vector<std::tuple<uint16_t, uint8_t, char16_t>> examples = {
      {1252, 0x41, u'A'},      {1252, 0x80, u'\u20AC'}, {1252, 0xE9, u'\u00E9'},
      {850, 0x82, u'\u00E9'},  {437, 0xE1, u'\u00DF'},  {1251, 0xC0, u'\u0410'},
      {1250, 0x8A, u'\u0160'}, {866, 0x80, u'\u0410'},  {28591, 0xFF, u'\u00FF'},
      {874, 0xA1, u'\u0E01'},  {1253, 0xC1, u'\u0391'},
  };
  for (const auto& [code_page, byte, character] : examples) {
    char16_t lut[256] = {};
    ASSERT_TRUE(XSetChar16LUT(code_page, lut)) << code_page;
    EXPECT_EQ(lut[byte], character) << code_page << " " << int(byte);
    EXPECT_EQ(lut[0], 0);
  }
}

TEST(CodePage, NumbersWithoutATable) {
  // Unknown numbers, double-byte code pages and the Unicode formats (1025 and 1026
  // are also EBCDIC code page numbers elsewhere; here they are UTF-16).
  for (uint16_t number : {0, 1, 4242, 932, 936, 65001, 1025, 1026, 1030, 33795, 33796}) {
    char16_t lut[256];
    lut[7] = u'x';
    EXPECT_FALSE(XSetChar16LUT(number, lut)) << number;
    EXPECT_EQ(lut[7], u'x');
    uint8_t map[256];
    map[7] = 'x';
    EXPECT_FALSE(XChar8ConvertLUTs(1252, number, map)) << number;
    EXPECT_FALSE(XChar8ConvertLUTs(number, 1252, map)) << number;
    EXPECT_EQ(map[7], 'x');
  }
}

TEST(CodePage, ConvertingBetweenCodePages) {
  uint8_t map[256];
  ASSERT_TRUE(XChar8ConvertLUTs(850, 1252, map));
  EXPECT_EQ(map['a'], 'a');
  EXPECT_EQ(map[0xE9], 0x82);  // e acute
  EXPECT_EQ(map[0xDF], 0xE1);  // sharp s
  EXPECT_EQ(map[0x80], '?');   // the euro sign is not in 850
  // Every byte that maps to a character there and back comes home.
  uint8_t back[256];
  ASSERT_TRUE(XChar8ConvertLUTs(1252, 850, back));
  int kept = 0;
  for (int b = 0; b < 256; ++b) {
    if (map[b] != '?') {
      EXPECT_EQ(back[map[b]], b) << b;
      ++kept;
    }
  }
  EXPECT_GT(kept, 200);
  // Cyrillic letters have no place in a Western code page.
  ASSERT_TRUE(XChar8ConvertLUTs(1252, 1251, map));
  EXPECT_EQ(map[0xC0], '?');
}

TEST(CodePage, LanguageCodePages) {
  const std::vector<std::tuple<uint16_t, uint16_t, uint16_t>> languages = {
      {0x0407, 1252, 850},  // German
      {0x0409, 1252, 437},  // English (United States)
      {0x0405, 1250, 852},  // Czech
      {0x0419, 1251, 866},  // Russian
      {0x0408, 1253, 737},  // Greek
      {0x041F, 1254, 857},  // Turkish
      {0x0411, 932, 932},   // Japanese: double-byte, no 8-bit table
  };
  for (const auto& [language, ansi, oem] : languages) {
    EXPECT_EQ(XGetLanguageCodePage(language, kCodePageAnsi, true), ansi) << language;
    EXPECT_EQ(XGetLanguageCodePage(language, kCodePageOem, true), oem) << language;
  }
  // A language without an entry: the Western defaults, or 0 when asked exactly.
  EXPECT_EQ(XGetLanguageCodePage(0x0437, kCodePageAnsi, false), 1252);  // Georgian
  EXPECT_EQ(XGetLanguageCodePage(0x0437, kCodePageOem, false), 850);
  EXPECT_EQ(XGetLanguageCodePage(0x0437, kCodePageAnsi, true), 0);
  EXPECT_EQ(XGetLanguageCodePage(0x0407, 2, false), 0);
  EXPECT_NE(XGetLanguageCodePage(kLanguageUserDefault, kCodePageAnsi, false), 0);
}

TEST(CodePage, UnicodeFormatNumbers) {
  for (uint16_t f : {1025, 1026, 1030, 33795, 33796, 65001}) EXPECT_TRUE(XIsUnicodeTextFormat(f));
  // 1250 to 1258 carry the bits 0x0C00 too, and are code pages.
  for (uint16_t f : {0, 437, 850, 1250, 1252, 1258, 1024, 1027, 33794, 65000})
    EXPECT_FALSE(XIsUnicodeTextFormat(f)) << f;
}

}  // namespace
}  // namespace tavi
