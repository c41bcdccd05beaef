//===- string_resource.h - Texts fetched by numeric ID ---------*- C++ -*-===//
//
// This file defines TStringResource, the interface through which applications and
// the library fetch user-visible texts by number, and XLibStringResource, the table
// the library takes its own messages from.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

class XIO;
class XBuffer;
class TTitleTextBase;

// TStringResource maps string IDs to UTF-16 texts. The underscore forms report a
// missing ID (null or false); the others fall back to a visible placeholder.
class TAVI_API TStringResource {
 public:
  constexpr TStringResource() = default;
  TStringResource(const TStringResource&) {}
  TStringResource& operator=(const TStringResource&) { return *this; }

  // _Get returns the terminated text of id, or null when there is none.
  virtual const char16_t* _Get(int32_t id) = 0;
  // _Write writes the text of id (without terminator) to out; false when missing.
  virtual bool _Write(XIO& out, int32_t id) = 0;
  // _SetBuffer makes the text of id the whole content of buffer; false when missing.
  virtual bool _SetBuffer(XBuffer& buffer, int32_t id) = 0;
  // SetBuffer is _SetBuffer, with "???" as the content when id is missing.
  virtual bool SetBuffer(XBuffer& buffer, int32_t id);
  // _Attach points title at the text of id without copying (an owned text of the title
  // is freed first; the title becomes attached); false, title unchanged, when missing.
  virtual bool _Attach(TTitleTextBase& title, int32_t id) = 0;
  // Attach is _Attach, with title attached to "???" when id is missing.
  virtual bool Attach(TTitleTextBase& title, int32_t id);

  virtual ~TStringResource();

  // Get returns the text of id, or "???" when there is none.
  const char16_t* Get(int32_t id);

  // SetDlgItemsText sets the text of each dialog item whose number is in ids to the
  // string of the same number (Get): a zero-terminated list, a list of count numbers,
  // or count consecutive numbers from first. Items the dialog lacks are skipped;
  // false when any item that exists refused its text.
  bool SetDlgItemsText(XWindow dialog, const int32_t* ids);
  bool SetDlgItemsText(XWindow dialog, const int32_t* ids, uint32_t count);
  bool SetDlgItemsText(XWindow dialog, int32_t first, uint32_t count);

  // SetMenuStrings sets the text of each menu item whose command number is in ids to
  // the string of the same number (Get), in the same three forms. Every item is
  // tried; false when any of them refused its text (the menu lacks it).
  bool SetMenuStrings(XMenu menu, const int32_t* ids);
  bool SetMenuStrings(XMenu menu, const int32_t* ids, uint32_t count);
  bool SetMenuStrings(XMenu menu, int32_t first, uint32_t count);

  // SetComboBoxList adds the strings of ids (Get), in list order, to the list of a
  // combo box, after emptying the list when reset is set; without reset they go
  // after the entries already there. The same three forms. Adding stops at the first
  // string the box refuses, so that positions in the box keep matching positions in
  // the list; false then, and false without adding anything when emptying fails.
  bool SetComboBoxList(XWindow combo, const int32_t* ids, bool reset);
  bool SetComboBoxList(XWindow combo, const int32_t* ids, uint32_t count, bool reset);
  bool SetComboBoxList(XWindow combo, int32_t first, uint32_t count, bool reset);
};

// The placeholder text of a missing string.
inline constexpr char16_t kMissingStringText[] = u"???";

// XLibStringResource is the table the library takes its own messages from. It starts
// as the built-in English table (XBuiltinStringResource); set it once at start-up, before other
// threads use it.
TAVI_API extern TStringResource* XLibStringResource;
// XSetLibStringResource replaces the library's table; false, changing nothing, for null.
TAVI_API bool XSetLibStringResource(TStringResource* resource);
// XBuiltinStringResource returns the library's English texts, built from the
// language file lang/tavi.en.lng embedded at build time.
TAVI_API TStringResource* XBuiltinStringResource();

}  // namespace tavi
