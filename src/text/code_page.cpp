//===- code_page.cpp - 8-bit code-page tables ------------------------------===//
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
