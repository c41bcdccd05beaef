//===- string_coll.h - The sorted collection of wide texts ------*- C++ -*-===//
//
// This file defines TStringColl, a collection whose items are title texts that own
// copies of their UTF-16 texts, with sorted insertion without duplicates, lookups by
// whole text and by prefix in the user's collation, line splitting and joining, and
// loading and saving as a text file of one item per line.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/coll/collection.h"
#include "tavi/core/title_text.h"
#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

class XIO;
class XString16;

// TStringColl: every item is a heap-allocated TTitleText (null text for an empty line).
//
// Order is that of CompareTitleText (the user's locale, case-sensitive, a missing text
// first). StrAdd and LoadSortTextFile keep the items in that order; StrInsert,
// StrInsertAt and ConvertLines append or insert where told. The lookups are binary
// searches and mean something only while the items are in that order.
//
// Lengths of texts are in bytes (two per code unit, without terminator). The flag of
// the creating forms is the attach argument of TTitleTextBase::Set: false copies the
// text, true makes the item point into the caller's memory.
//
// As with every collection, the destructor frees only the slot array: call FreeAll to
// destroy the items. Items are written as sized strings (packed length, UTF-16).
class TAVI_API TStringColl : public XCollection {
 public:
  TStringColl() = default;
  TStringColl(const TStringColl& other) = default;
  TStringColl& operator=(const TStringColl& other) = default;
  ~TStringColl() override;

  // CreateString makes a new item holding text (see the class comment for flag);
  // null when memory runs out or the text cannot be set.
  static TTitleText* CreateString(const char16_t* text, uint32_t byteLength, bool flag);

  // StrInsert appends a new item; false for a null text or when it cannot be made or
  // appended (nothing is then added).
  bool StrInsert(const char16_t* text, uint32_t byteLength, bool flag);
  bool StrInsert(const char16_t* text);
  bool StrInsert(const TTitleText& title);
  bool StrInsert(const XString16& text);
  // StrInsertAt inserts a new item at index; false for a null text or a failure.
  bool StrInsertAt(uint32_t index, const char16_t* text, uint32_t byteLength, bool flag);
  // StrAdd inserts at the item's sorted place unless an item with an equal text exists.
  // The place is found with the whole terminated text, whatever byteLength says.
  // Returns the new index, or kNoIndex for a duplicate or a failure.
  uint32_t StrAdd(const char16_t* text, uint32_t byteLength, bool flag);
  uint32_t StrAdd(const char16_t* text);
  uint32_t StrAdd(const TTitleText& title);
  uint32_t StrAdd(const XString16& text);

  TTitleText* StrAt(uint32_t index) const {
    return index < Count ? static_cast<TTitleText*>(Items[index]) : nullptr;
  }
  TTitleText* _StrAt(uint32_t index) const { return static_cast<TTitleText*>(Items[index]); }
  char16_t* _CharAt(uint32_t index) const { return _StrAt(index)->text; }

  // StrIndex: an item with exactly that text (any one of equal items), kNoIndex when
  // none. O(log n) comparisons.
  uint32_t StrIndex(const char16_t* text) const;
  uint32_t StrIndex(const TTitleText& title) const;
  bool StrIsInList(const char16_t* text) const { return StrIndex(text) != kNoIndex; }
  bool StrIsInList(const TTitleText& title) const { return StrIndex(title) != kNoIndex; }
  // PrefixIndex: the first item whose first byteLength / 2 code units equal those of
  // text (a length of 0 matches the first item), kNoIndex when none.
  uint32_t PrefixIndex(const char16_t* text, uint32_t byteLength) const;
  uint32_t PrefixIndex(const char16_t* text) const;
  uint32_t PrefixIndex(const TTitleText& title) const;

  // SortItems() and StrSort sort with CompareTitleText; the inherited forms take any
  // comparison.
  using XCollection::SortItems;
  void SortItems() { XCollection::SortItems(CompareTitleText); }
  void StrSort() { XCollection::SortItems(CompareTitleText); }

  // EnumStrings calls fn(item, context) from index 0 upward and stops with false at the
  // first false; true otherwise (also when empty).
  bool EnumStrings(bool (*fn)(TTitleText* item, const void* context), const void* context);

  // ConvertLines appends one item per line of the terminated text: lines end at LF,
  // a CR before the LF is dropped, an empty line gives an item without text, a last
  // line without LF is kept, and a final LF adds no empty item. A null or empty text
  // adds nothing. False when an item cannot be made or appended (lines before stay).
  bool ConvertLines(const char16_t* text);
  // SaveLines writes the texts joined by CR LF (UTF-16), without a final line end;
  // false at the first write the stream refuses.
  bool SaveLines(XIO& out);

  // --- Text files (virtual, in this order) --------------------------------------------

  // ExTextFile loads (kFileRead in mode) or saves the collection as a text file of one
  // item per line, through XBuffer::ExTextFile. format is the file's format (tavi/
  // text/text_file.h), 0 meaning the user's 8-bit code page. A load appends to the
  // items held. Returns the format found or written, 0 on failure with the cause in
  // fileName's error state (0x20000001 when the lines cannot be stored).
  virtual uint16_t ExTextFile(XString16& fileName, uint16_t mode, uint16_t format, XWindow window);
  // LoadSortTextFile is ExTextFile without a window, then sorts all items.
  virtual uint16_t LoadSortTextFile(XString16& fileName, uint16_t mode, uint16_t format);
  // LoadSortTextFileMsg also shows a failure with XFileErrorMessage.
  virtual uint16_t LoadSortTextFileMsg(XString16& fileName, uint16_t mode, uint16_t format,
                                       XWindow window);

 protected:
  bool WriteItem(XIO& io, void* item) override;
  void* ReadItem(XIO& io) override;
  // FreeItem destroys a non-null item.
  void FreeItem(void* item) override;

 private:
  // Destroys an item made here.
  static void DestroyString(TTitleText* item);
};

}  // namespace tavi
