//===- user_interface.h - The host's user-interface table ------*- C++ -*-===//
//
// This file defines the table of callbacks through which the library reaches the
// host's user interface: message boxes, window and control text, edit-control
// memory and the clipboard. A host installs its own table; the default one writes
// message boxes to stderr and has no windows or clipboard.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/local_memory.h"
#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

// Message-box styles and results (the values of the Windows message box).
inline constexpr uint32_t kMbOk = 0x00;
inline constexpr uint32_t kMbYesNo = 0x04;
inline constexpr uint32_t kMbIconError = 0x10;
inline constexpr uint32_t kMbIconQuestion = 0x20;
inline constexpr uint32_t kMbIconInformation = 0x40;
inline constexpr int32_t kIdOk = 1;
inline constexpr int32_t kIdCancel = 2;
inline constexpr int32_t kIdYes = 6;
inline constexpr int32_t kIdNo = 7;

// Clipboard formats with fixed numbers.
inline constexpr uint32_t kClipboardText = 1;          // 8-bit text
inline constexpr uint32_t kClipboardUnicodeText = 13;  // UTF-16 text

// Platform error the default table gives for what it cannot do (not supported).
inline constexpr uint32_t kPlatformErrorNotSupported = 50;

// XUserInterface is the host's table. Every entry may be null, in which case the
// default behaviour of that entry applies. Failing callbacks report their reason
// with XSetLastError before returning.
struct XUserInterface {
  // Shows text in a message box; returns the button chosen (kIdOk, kIdYes, ...).
  int32_t (*message_box)(XWindow owner, const char16_t* text, const char16_t* caption,
                         uint32_t style);
  // Window text: length in code units, copy into text (at most capacity code units
  // including the terminator; returns the count copied, without terminator), set.
  uint32_t (*get_window_text_length)(XWindow window);
  uint32_t (*get_window_text)(XWindow window, char16_t* text, uint32_t capacity);
  bool (*set_window_text)(XWindow window, const char16_t* text);
  // The control of a dialog with the given item number; null when none.
  XWindow (*get_dialog_item)(XWindow dialog, int32_t item);
  // Whether window names an existing window.
  bool (*is_window)(XWindow window);
  // Redraws a window (erasing the background first when erase is set).
  bool (*invalidate_window)(XWindow window, bool erase);
  // The local memory handle holding an edit control's text, and giving it a new one.
  XLocalMemory (*edit_get_handle)(XWindow edit);
  bool (*edit_set_handle)(XWindow edit, XLocalMemory handle);
  // Puts bytes of data in format on the clipboard, emptying it first when asked.
  bool (*clipboard_set)(XWindow owner, uint32_t format, const void* data, uint32_t bytes,
                        bool empty_first);
  // Hands the clipboard's data in format to sink (once); false when there is none.
  bool (*clipboard_get)(XWindow owner, uint32_t format,
                        void (*sink)(void* context, const void* data, uint32_t bytes),
                        void* context);
  // Whether the clipboard holds data in format.
  bool (*clipboard_has_format)(uint32_t format);
  // Registers a named clipboard format and returns its number (0 on failure).
  uint32_t (*clipboard_register_format)(const char16_t* name);
  // Copies the name of a registered format (as get_window_text copies); 0 when none.
  uint32_t (*clipboard_format_name)(uint32_t format, char16_t* name, uint32_t capacity);
  // Sets the text of the menu item with command number item (in menu or its
  // submenus); false when there is no such item.
  bool (*menu_set_item_text)(XMenu menu, int32_t item, const char16_t* text);
  // Empties the list of a combo box.
  bool (*combo_reset)(XWindow combo);
  // Adds text to the list of a combo box (at the end, or in order for a sorted box);
  // false when the box refuses it.
  bool (*combo_add_string)(XWindow combo, const char16_t* text);
};

// XSetUserInterface installs table (which must outlive its use) and returns the
// previous one; null restores the default table.
TAVI_API const XUserInterface* XSetUserInterface(const XUserInterface* table);
// XGetUserInterface returns the installed table (never null).
TAVI_API const XUserInterface* XGetUserInterface();
// XDefaultUserInterface is the table in force when no host table is installed: message
// boxes go to stderr and answer kIdOk to plain boxes and kIdNo to questions; window
// text, menu item texts and combo-box lists go nowhere (setting, emptying and
// adding succeed; reading gives an empty text); edit-control
// memory and the clipboard fail with kPlatformErrorNotSupported.
TAVI_API const XUserInterface* XDefaultUserInterface();

// XSetLastError / XGetLastError: the calling thread's last platform error (Windows
// numbering), as set by failing platform and user-interface operations.
TAVI_API void XSetLastError(uint32_t code);
TAVI_API uint32_t XGetLastError();

}  // namespace tavi
