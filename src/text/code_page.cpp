//===- code_page.cpp - 8-bit code-page tables and language code pages ------===//
#include "tavi/text/code_page.h"

#include <cstring>
#include <map>
#include <mutex>

#include "platform/code_page.h"
#include "tavi/text/text_file.h"
#include "text/internal/code_page.h"

namespace tavi {

namespace text_internal {

CodePageTable::CodePageTable(const char16_t* to_wide) {
  std::memcpy(to_wide_, to_wide, sizeof to_wide_);
  to_wide_[0] = 0;
  for (int i = 0; i < 256; ++i) {
    if (to_wide_[i] == u'?') {
      question_ = static_cast<uint8_t>(i);
      break;
    }
  }
}

const uint8_t* CodePageTable::FromWide() const {
  std::call_once(from_wide_once_, [this] {
    auto map = std::make_unique<uint8_t[]>(0x10000);
    std::memset(map.get(), question_, 0x10000);
    // Walk down so that where two bytes give one character the lower byte wins.
    for (int i = 255; i >= 0; --i) {
      const char16_t c = to_wide_[i];
      if (c != 0xFFFD) map[c] = static_cast<uint8_t>(i);
    }
    from_wide_ = std::move(map);
  });
  return from_wide_.get();
}

const CodePageTable* FindCodePage(uint16_t code_page) {
  // Tables are never removed, so the pointers handed out stay valid; code pages
  // without a table are remembered as null.
  static std::mutex mutex;
  static std::map<uint16_t, std::unique_ptr<CodePageTable>> tables;
  if (XIsUnicodeTextFormat(code_page)) return nullptr;
  std::lock_guard<std::mutex> lock(mutex);
  auto it = tables.find(code_page);
  if (it == tables.end()) {
    char16_t to_wide[256];
    std::unique_ptr<CodePageTable> table;
    if (platform::CodePageToUnicode(code_page, to_wide))
      table = std::make_unique<CodePageTable>(to_wide);
    it = tables.emplace(code_page, std::move(table)).first;
  }
  return it->second.get();
}

}  // namespace text_internal

namespace {

struct LanguageCodePages {
  const char* language;  // ISO 639
  uint16_t ansi;
  uint16_t oem;
};

// The Windows ANSI and OEM code pages of languages, after the platform's own
// national-language tables. Languages not listed take the Western defaults (1252
// and 850) unless the caller asks for an exact answer.
constexpr LanguageCodePages kLanguages[] = {
    {"de", 1252, 850}, {"fr", 1252, 850}, {"es", 1252, 850}, {"it", 1252, 850},  {"nl", 1252, 850},
    {"sv", 1252, 850}, {"fi", 1252, 850}, {"nn", 1252, 850}, {"ca", 1252, 850},  {"eu", 1252, 850},
    {"gl", 1252, 850}, {"ga", 1252, 850}, {"id", 1252, 850}, {"ms", 1252, 850},  {"af", 1252, 850},
    {"fo", 1252, 850}, {"en", 1252, 437}, {"cs", 1250, 852}, {"pl", 1250, 852},  {"hu", 1250, 852},
    {"sk", 1250, 852}, {"sl", 1250, 852}, {"hr", 1250, 852}, {"ro", 1250, 852},  {"sq", 1250, 852},
    {"bs", 1250, 852}, {"ru", 1251, 866}, {"uk", 1251, 866}, {"be", 1251, 866},  {"bg", 1251, 866},
    {"sr", 1251, 855}, {"mk", 1251, 866}, {"kk", 1251, 866}, {"el", 1253, 737},  {"tr", 1254, 857},
    {"az", 1254, 857}, {"he", 1255, 862}, {"ar", 1256, 720}, {"fa", 1256, 720},  {"ur", 1256, 720},
    {"lt", 1257, 775}, {"lv", 1257, 775}, {"et", 1257, 775}, {"vi", 1258, 1258}, {"th", 874, 874},
    {"ja", 932, 932},  {"zh", 936, 936},  {"ko", 949, 949},  {"pt", 1252, 850},  {"is", 1252, 861},
    {"da", 1252, 850}, {"nb", 1252, 850},
};

}  // namespace

uint16_t XGetLanguageCodePage(uint16_t language, int32_t kind, bool exact) {
  if (kind != kCodePageAnsi && kind != kCodePageOem) return 0;
  char code[16];
  if (platform::LanguageCode(language, code, sizeof code)) {
    for (const LanguageCodePages& entry : kLanguages) {
      if (std::strcmp(entry.language, code) == 0)
        return kind == kCodePageAnsi ? entry.ansi : entry.oem;
    }
  }
  if (exact) return 0;
  return kind == kCodePageAnsi ? 1252 : 850;
}

bool XSetChar16LUT(uint16_t code_page, char16_t* lut) {
  const text_internal::CodePageTable* table = text_internal::FindCodePage(code_page);
  if (table == nullptr) return false;
  std::memcpy(lut, table->ToWide(), 256 * sizeof(char16_t));
  return true;
}

bool XChar8ConvertLUTs(uint16_t target_code_page, uint16_t source_code_page, uint8_t* map) {
  const text_internal::CodePageTable* target = text_internal::FindCodePage(target_code_page);
  const text_internal::CodePageTable* source = text_internal::FindCodePage(source_code_page);
  if (target == nullptr || source == nullptr) return false;
  const uint8_t* from_wide = target->FromWide();
  for (int i = 0; i < 256; ++i) map[i] = from_wide[source->ToWide()[i]];
  return true;
}

}  // namespace tavi
