//===- fake_ui.h - A user-interface table that records what it is asked ---===//
//
// Tests install FakeUi to see message boxes, to give windows and edit controls a
// text, and to hold clipboard data. Window handles are small integers; item i of
// dialog d is window d * 100 + i.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tavi/core/local_memory.h"
#include "tavi/core/user_interface.h"

namespace tavi::test {

struct MessageBoxCall {
  std::u16string text, caption;
  uint32_t style;
};

// The fake's state is process-wide because the table holds plain functions.
struct FakeUiState {
  std::vector<MessageBoxCall> boxes;
  int32_t answer = kIdOk;
  std::map<uintptr_t, std::u16string> windows;     // window text
  std::map<uintptr_t, XLocalMemory> edit_handles;  // edit control memory
  std::map<uint32_t, std::string> clipboard;       // format -> bytes
  std::map<std::u16string, uint32_t> formats;      // registered names
  std::vector<uintptr_t> invalidated;
};

inline FakeUiState& Fake() {
  static FakeUiState state;
  return state;
}

inline XWindow Window(uintptr_t id) {
  return reinterpret_cast<XWindow>(id);
}
inline uintptr_t Id(XWindow w) {
  return reinterpret_cast<uintptr_t>(w);
}

// Copies s into out (capacity code units with the terminator); the count copied.
inline uint32_t CopyOut(const std::u16string& s, char16_t* out, uint32_t capacity) {
  if (capacity == 0) return 0;
  const auto n = static_cast<uint32_t>(std::min<size_t>(s.size(), capacity - 1));
  out[s.copy(out, n)] = 0;
  return n;
}

inline const XUserInterface& FakeTable() {
  static const XUserInterface table = {
      [](XWindow, const char16_t* text, const char16_t* caption, uint32_t style) {
        Fake().boxes.push_back({text ? text : u"", caption ? caption : u"", style});
        return Fake().answer;
      },
      [](XWindow w) -> uint32_t {
        auto it = Fake().windows.find(Id(w));
        return it != Fake().windows.end() ? static_cast<uint32_t>(it->second.size()) : 0u;
      },
      [](XWindow w, char16_t* text, uint32_t capacity) {
        return CopyOut(Fake().windows[Id(w)], text, capacity);
      },
      [](XWindow w, const char16_t* text) {
        auto it = Fake().windows.find(Id(w));
        if (it == Fake().windows.end()) return XSetLastError(1400), false;
        it->second = text ? text : u"";
        return true;
      },
      [](XWindow dialog, int32_t item) { return Window(Id(dialog) * 100 + item); },
      [](XWindow w) { return Fake().windows.count(Id(w)) != 0; },
      [](XWindow w, bool) { return Fake().invalidated.push_back(Id(w)), true; },
      [](XWindow w) {
        return Fake().edit_handles.count(Id(w)) ? Fake().edit_handles[Id(w)] : XLocalMemory{};
      },
      [](XWindow w, XLocalMemory h) { return Fake().edit_handles[Id(w)] = h, true; },
      [](XWindow, uint32_t format, const void* data, uint32_t bytes, bool empty_first) {
        if (empty_first) Fake().clipboard.clear();
        Fake().clipboard[format] = std::string(static_cast<const char*>(data), bytes);
        return true;
      },
      [](XWindow, uint32_t format, void (*sink)(void*, const void*, uint32_t), void* context) {
        auto it = Fake().clipboard.find(format);
        if (it == Fake().clipboard.end()) return XSetLastError(1168), false;
        sink(context, it->second.data(), static_cast<uint32_t>(it->second.size()));
        return true;
      },
      [](uint32_t format) { return Fake().clipboard.count(format) != 0; },
      [](const char16_t* name) {
        auto& f = Fake().formats;
        return f.emplace(name, 0xC000u + static_cast<uint32_t>(f.size())).first->second;
      },
      [](uint32_t format, char16_t* name, uint32_t capacity) -> uint32_t {
        for (const auto& [n, id] : Fake().formats) {
          if (id == format && n.size() < capacity) return CopyOut(n, name, capacity);
        }
        return XSetLastError(87), 0u;
      },
      // Menus and combo boxes: the default table's.
      nullptr,
      nullptr,
      nullptr,
  };
  return table;
}

// Installs the fake for the lifetime of the object, starting from a clean state.
class ScopedFakeUi {
 public:
  ScopedFakeUi() : previous_(XSetUserInterface(&FakeTable())) { Clear(); }
  ~ScopedFakeUi() {
    XSetUserInterface(previous_);
    Clear();
  }

 private:
  static void Clear() {
    for (auto& [w, h] : Fake().edit_handles) XLocalFree(h);
    Fake() = FakeUiState{};
  }
  const XUserInterface* previous_;
};

}  // namespace tavi::test
