//===- lib_strings_test.cpp - The library's English language file ----------===//
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "tavi/core/error.h"
#include "tavi/core/string.h"
#include "tavi/core/user_interface.h"
#include "tavi/resource/string_resource.h"
#include "tavi/resource/string_resource_coll.h"

namespace tavi {
namespace {

namespace fs = std::filesystem;

const fs::path kSourceDir = TAVI_SOURCE_DIR;

// Every library code (0x2000xxxx) and message ID (nine digits from 500000000) written
// anywhere in the library's sources.
bool IsWordChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// The IDs in one source text: "0x2000" and four hex digits, or nine decimal digits
// beginning with 5, as whole words (a "u" suffix allowed).
void ScanIds(const std::string& s, std::set<int32_t>& ids) {
  for (size_t i = 0; i < s.size(); ++i) {
    if (i > 0 && IsWordChar(s[i - 1])) continue;
    size_t end = i;
    if (s.compare(i, 6, "0x2000") == 0) {
      end = i + 6;
      while (end < s.size() && end < i + 10 && std::isxdigit(static_cast<unsigned char>(s[end]))) {
        ++end;
      }
      if (end != i + 10) continue;
    } else if (s[i] == '5') {
      while (end < s.size() && std::isdigit(static_cast<unsigned char>(s[end]))) ++end;
      if (end != i + 9) continue;
    } else {
      continue;
    }
    size_t after = end < s.size() && s[end] == 'u' ? end + 1 : end;
    if (after < s.size() && IsWordChar(s[after])) continue;
    auto id = static_cast<int32_t>(std::stoul(s.substr(i, end - i), nullptr, 0));
    if (id != 0x20000000) ids.insert(id);  // the base of the codes, not a code
  }
}

// Every library code (0x2000xxxx) and message ID (nine digits from 500000000) written
// anywhere in the library's sources.
std::set<int32_t> IdsInSources() {
  std::set<int32_t> ids;
  for (const char* dir : {"src", "include"}) {
    for (const auto& entry : fs::recursive_directory_iterator(kSourceDir / dir)) {
      auto ext = entry.path().extension();
      if (ext != ".cpp" && ext != ".h") continue;
      std::ifstream in(entry.path());
      std::stringstream text;
      text << in.rdbuf();
      ScanIds(text.str(), ids);
    }
  }
  return ids;
}

XString16 Path(const fs::path& p) {
  std::u16string wide;
  for (char c : p.string()) wide += static_cast<char16_t>(static_cast<unsigned char>(c));
  XString16 s;
  s.Add(wide.c_str());
  return s;
}

TEST(LibStrings, FileHasEveryIdTheCodeUsesAndMatchesTheEmbeddedTable) {
  TTextFileStringResource file;
  XString16 path = Path(kSourceDir / "lang" / "tavi.en.lng");
  ASSERT_TRUE(file.LoadTextFile(path));
  std::set<int32_t> ids = IdsInSources();
  ASSERT_GT(ids.size(), 20u);
  for (int32_t id : ids) {
    const char16_t* text = file._Get(id);
    EXPECT_NE(text, nullptr) << "no text for " << id;
  }
  // The embedded table is the same file.
  EXPECT_EQ(XLibStringResource, XBuiltinStringResource());
  for (uint32_t i = 0; i < file.GetCount(); ++i) {
    TResourceStringItem* item = file._ResourceStringItem(i);
    const char16_t* embedded = XBuiltinStringResource()->_Get(item->ID);
    ASSERT_NE(embedded, nullptr) << item->ID;
    EXPECT_EQ(std::u16string(embedded), std::u16string(item->Text())) << item->ID;
  }
}

struct Shown {
  static inline std::u16string text, caption;
  static int32_t Box(XWindow, const char16_t* t, const char16_t* c, uint32_t) {
    text = t;
    caption = c;
    return kIdOk;
  }
};

TEST(LibStrings, MessagesReadFromTheLibraryTable) {
  XUserInterface ui{};
  ui.message_box = Shown::Box;
  const XUserInterface* saved = XSetUserInterface(&ui);
  XError e;
  e.SetErrorCode(0x20000007);
  e.ErrorMessage(nullptr);
  EXPECT_EQ(Shown::text, u"The option value is not a valid number.");
  EXPECT_EQ(Shown::caption, u"Error");
  XError ok;
  XFileErrorMessage(ok, u"a.txt", 10, true, nullptr);
  EXPECT_EQ(Shown::text, u"The file could not be read. (\"a.txt\")");

  // A replaced table is what messages read from.
  TStringResourceColl mine;
  mine.AddResource(kStrErrorCaption, u"Fehler", 12);
  mine.AddResource(0x20000001, u"Kein Speicher.", 28);
  TStringResource* before = XLibStringResource;
  ASSERT_TRUE(XSetLibStringResource(&mine));
  EXPECT_FALSE(XSetLibStringResource(nullptr));
  e.SetErrorCode(0x20000001);
  e.ErrorMessage(nullptr);
  EXPECT_EQ(Shown::text, u"Kein Speicher.");
  EXPECT_EQ(Shown::caption, u"Fehler");
  XSetLibStringResource(before);
  XSetUserInterface(saved);
}

}  // namespace
}  // namespace tavi
