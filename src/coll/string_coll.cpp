//===- string_coll.cpp - The sorted collection of wide texts ---------------===//
//
// TStringColl: creation of title items, sorted insertion without duplicates, the
// lookups, line splitting and joining, and text files of one item per line.
//
//===----------------------------------------------------------------------===//
#include "tavi/coll/string_coll.h"

#include <cstdint>
#include <new>

#include "core/internal/text_util.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/io/sized_record.h"
#include "tavi/io/stream.h"
#include "tavi/text/code_page.h"
#include "tavi/text/text_file.h"

namespace tavi {

namespace {

constexpr char16_t kLineBreak[2] = {u'\r', u'\n'};

uint32_t BytesOf(const char16_t* text) {
  return internal::TextLength(text) * 2;
}

bool TitleFlag(const TTitleText& title) {
  return (title.state & kTitleAttached) != 0;
}

}  // namespace

TStringColl::~TStringColl() = default;

void TStringColl::DestroyString(TTitleText* item) {
  delete item;
}

TTitleText* TStringColl::CreateString(const char16_t* text, uint32_t byteLength, bool flag) {
  auto* item = new (std::nothrow) TTitleText;
  if (item == nullptr) return nullptr;
  if (!item->Set(text, byteLength, flag)) {
    DestroyString(item);
    return nullptr;
  }
  return item;
}

// --- Creation ------------------------------------------------------------------------

bool TStringColl::StrInsert(const char16_t* text, uint32_t byteLength, bool flag) {
  if (text == nullptr) return false;
  TTitleText* item = CreateString(text, byteLength, flag);
  if (item == nullptr) return false;
  if (Insert(static_cast<void*>(item)) == kNoIndex) {
    DestroyString(item);
    return false;
  }
  return true;
}

bool TStringColl::StrInsert(const char16_t* text) {
  if (text == nullptr) return false;
  return StrInsert(text, BytesOf(text), false);
}

bool TStringColl::StrInsert(const TTitleText& title) {
  return StrInsert(title.text, title.size, TitleFlag(title));
}

bool TStringColl::StrInsert(const XString16& text) {
  return StrInsert(text.c_str(), text.GetBufferPos(), text.GetBufferAttached());
}

bool TStringColl::StrInsertAt(uint32_t index, const char16_t* text, uint32_t byteLength,
                              bool flag) {
  if (text == nullptr) return false;
  TTitleText* item = CreateString(text, byteLength, flag);
  if (item == nullptr) return false;
  if (!AtInsert(index, static_cast<void*>(item))) {
    DestroyString(item);
    return false;
  }
  return true;
}

uint32_t TStringColl::StrAdd(const char16_t* text, uint32_t byteLength, bool flag) {
  bool found = false;
  uint32_t position = SearchFirstIndex(text, CompareTitleChars, found, true);
  if (found) return kNoIndex;
  if (position == kNoIndex) position = Count;
  return StrInsertAt(position, text, byteLength, flag) ? position : kNoIndex;
}

uint32_t TStringColl::StrAdd(const char16_t* text) {
  if (text == nullptr) return kNoIndex;
  return StrAdd(text, BytesOf(text), false);
}

uint32_t TStringColl::StrAdd(const TTitleText& title) {
  return StrAdd(title.text, title.size, TitleFlag(title));
}

uint32_t TStringColl::StrAdd(const XString16& text) {
  return StrAdd(text.c_str(), text.GetBufferPos(), text.GetBufferAttached());
}

// --- Lookup --------------------------------------------------------------------------

uint32_t TStringColl::StrIndex(const char16_t* text) const {
  return SearchIndex(text, CompareTitleChars);
}

uint32_t TStringColl::StrIndex(const TTitleText& title) const {
  return SearchIndex(&title, CompareTitleText);
}

uint32_t TStringColl::PrefixIndex(const char16_t* text, uint32_t byteLength) const {
  // The comparison takes the byte count in its context pointer.
  const void* bytes = reinterpret_cast<const void*>(uintptr_t{byteLength});
  return SearchFirstIndex(text, ComparePrefixTitleChars, bytes, false);
}

uint32_t TStringColl::PrefixIndex(const char16_t* text) const {
  return PrefixIndex(text, text != nullptr ? BytesOf(text) : 0);
}

uint32_t TStringColl::PrefixIndex(const TTitleText& title) const {
  return SearchFirstIndex(&title, ComparePrefixTitleText, false);
}

bool TStringColl::EnumStrings(bool (*fn)(TTitleText* item, const void* context),
                              const void* context) {
  for (uint32_t i = 0; i < Count; ++i) {
    if (!fn(_StrAt(i), context)) return false;
  }
  return true;
}

// --- Lines ---------------------------------------------------------------------------

bool TStringColl::ConvertLines(const char16_t* text) {
  if (text == nullptr || text[0] == 0) return true;
  const char16_t* start = text;
  for (;;) {
    const char16_t* p = start;
    while (*p != 0 && *p != u'\n') ++p;
    if (*p == 0) break;
    const char16_t* end = p;
    if (end > start && end[-1] == u'\r') --end;
    auto* item = new (std::nothrow) TTitleText;
    if (item == nullptr) return false;
    const auto bytes = static_cast<uint32_t>(end - start) * 2;
    if ((bytes != 0 && !item->Set(start, bytes, false)) ||
        Insert(static_cast<void*>(item)) == kNoIndex) {
      DestroyString(item);
      return false;
    }
    start = p + 1;
  }
  if (*start != 0) StrInsert(start);
  return true;
}

bool TStringColl::SaveLines(XIO& out) {
  for (uint32_t i = 0; i < Count; ++i) {
    const TTitleText* item = _StrAt(i);
    if (item != nullptr && item->text != nullptr && item->size != 0 &&
        !out._Write(item->text, item->size))
      return false;
    if (i + 1 < Count && !out._Write(kLineBreak, sizeof(kLineBreak))) return false;
  }
  return true;
}

// --- Text files ----------------------------------------------------------------------

uint16_t TStringColl::ExTextFile(XString16& fileName, uint16_t mode, uint16_t format,
                                 XWindow window) {
  if (format == 0) format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageAnsi, false);
  XBuffer buffer(32);
  if ((mode & kFileRead) == 0) {
    if (!SaveLines(buffer)) {
      fileName.ImportErrorCode(buffer);
      return 0;
    }
    return buffer.ExTextFile(fileName, format, kTextUtf16, mode, window);
  }
  const uint16_t found = buffer.ExTextFile(fileName, format, kTextUtf16, mode, window);
  if (found == 0) return 0;
  // The loaded text ends with an uncounted zero, so it can be split in place.
  if (!ConvertLines(static_cast<const char16_t*>(buffer.GetBuffer()))) {
    fileName.SetErrorCode(kErrNoMemory);
    return 0;
  }
  return found;
}

uint16_t TStringColl::LoadSortTextFile(XString16& fileName, uint16_t mode, uint16_t format) {
  const uint16_t found = ExTextFile(fileName, mode, format, nullptr);
  if (found == 0) return 0;
  SortItems();
  return found;
}

uint16_t TStringColl::LoadSortTextFileMsg(XString16& fileName, uint16_t mode, uint16_t format,
                                          XWindow window) {
  const uint16_t found = LoadSortTextFile(fileName, mode, format);
  if (found == 0) {
    XFileErrorMessage(fileName, fileName.c_str(), fileName.GetBufferPos(), true, window);
  }
  return found;
}

// --- Item hooks ----------------------------------------------------------------------

bool TStringColl::WriteItem(XIO& io, void* item) {
  const auto* title = static_cast<const TTitleText*>(item);
  return XWriteSizedString(io, title != nullptr ? title->text : nullptr,
                           TTitleTextBase::SizeSafe(title), false);
}

void* TStringColl::ReadItem(XIO& io) {
  XBuffer text;
  if (!XReadSizedString16(io, text, false)) return nullptr;
  auto* item = new (std::nothrow) TTitleText;
  if (item == nullptr || !item->Set(text)) {
    DestroyString(item);
    io.SetSafeErrorCode(kErrNoMemory);
    return nullptr;
  }
  return item;
}

void TStringColl::FreeItem(void* item) {
  DestroyString(static_cast<TTitleText*>(item));
}

}  // namespace tavi
