//===- user_interface.cpp - The installed user-interface table -------------===//
#include "tavi/core/user_interface.h"

#include <atomic>
#include <cstdio>
#include <string>

#include "platform/errors.h"
#include "platform/text.h"

namespace tavi {

namespace {

int32_t StderrMessageBox(XWindow, const char16_t* text, const char16_t* caption, uint32_t style) {
  auto narrow = [](const char16_t* s) {
    size_t n = 0;
    while (s != nullptr && s[n] != 0) ++n;
    return platform::Utf16ToUtf8(s, n);
  };
  std::fprintf(stderr, "%s: %s\n", narrow(caption).c_str(), narrow(text).c_str());
  // Nothing is overwritten or deleted without a person saying yes.
  return (style & 0x0F) == kMbYesNo ? kIdNo : kIdOk;
}

uint32_t NoWindowTextLength(XWindow) {
  return 0;
}

uint32_t NoWindowText(XWindow, char16_t* text, uint32_t capacity) {
  if (text != nullptr && capacity != 0) text[0] = 0;
  return 0;
}

bool DiscardWindowText(XWindow, const char16_t*) {
  return true;
}

XWindow NoDialogItem(XWindow, int32_t) {
  platform::SetLastError(platform::kErrorInvalidHandle);
  return nullptr;
}

bool NoWindow(XWindow) {
  return false;
}

bool NoInvalidate(XWindow, bool) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return false;
}

XLocalMemory NoEditHandle(XWindow) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return nullptr;
}

bool NoSetEditHandle(XWindow, XLocalMemory) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return false;
}

bool NoClipboardSet(XWindow, uint32_t, const void*, uint32_t, bool) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return false;
}

bool NoClipboardGet(XWindow, uint32_t, void (*)(void*, const void*, uint32_t), void*) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return false;
}

bool NoClipboardFormat(uint32_t) {
  return false;
}

uint32_t NoRegisterFormat(const char16_t*) {
  platform::SetLastError(kPlatformErrorNotSupported);
  return 0;
}

uint32_t NoFormatName(uint32_t, char16_t* name, uint32_t capacity) {
  if (name != nullptr && capacity != 0) name[0] = 0;
  platform::SetLastError(kPlatformErrorNotSupported);
  return 0;
}

bool DiscardMenuText(XMenu, int32_t, const char16_t*) {
  return true;
}

bool DiscardComboList(XWindow) {
  return true;
}

bool DiscardComboString(XWindow, const char16_t*) {
  return true;
}

constexpr XUserInterface kDefaultTable = {
    StderrMessageBox, NoWindowTextLength, NoWindowText,     DiscardWindowText, NoDialogItem,
    NoWindow,         NoInvalidate,       NoEditHandle,     NoSetEditHandle,   NoClipboardSet,
    NoClipboardGet,   NoClipboardFormat,  NoRegisterFormat, NoFormatName,      DiscardMenuText,
    DiscardComboList, DiscardComboString,
};

std::atomic<const XUserInterface*> g_table{&kDefaultTable};

}  // namespace

const XUserInterface* XSetUserInterface(const XUserInterface* table) {
  return g_table.exchange(table != nullptr ? table : &kDefaultTable);
}

const XUserInterface* XGetUserInterface() {
  return g_table.load();
}

const XUserInterface* XDefaultUserInterface() {
  return &kDefaultTable;
}

}  // namespace tavi
