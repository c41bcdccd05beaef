//===- path.cpp - Folder paths: creation, current folder, cutting ----------===//
#include <string>

#include "platform/errors.h"
#include "platform/file.h"
#include "tavi/file/file.h"

namespace tavi {

namespace {

uint32_t Units(const XString16& path) {
  return path.GetBufferPos() / 2;
}

bool Failed(XString16& path) {
  path.SetWinLastError();
  return false;
}

// Replaces the content of path with text; a failure is kept in path.
bool SetText(XString16& path, const std::u16string& text) {
  path.ResetBufferPos();
  return path.Add(text.data(), static_cast<uint32_t>(text.size() * 2));
}

}  // namespace

bool XDirCreate(XString16& path) {
  const uint32_t units = Units(path);
  const char16_t* text = path.c_str();
  if (text == nullptr || units == 0 || text[0] == 0) {
    path.SetErrorCode(kErrCreateDirectory);
    return false;
  }
  for (uint32_t i = 1; i < units; ++i) {
    if (text[i] != XPathDivider) continue;
    if (platform::PathExists(text, i) == 0) continue;
    if (!platform::CreateDirectory(text, i)) return Failed(path);
  }
  if (text[units - 1] == XPathDivider) return true;
  return platform::CreateDirectory(text, units) || Failed(path);
}

bool XDirRemove(XString16& path) {
  return platform::RemoveDirectory(path.c_str(), Units(path)) || Failed(path);
}

bool XDirSetCurrent(XString16& path) {
  return platform::SetCurrentDirectory(path.c_str(), Units(path)) || Failed(path);
}

bool XDirGetCurrent(XString16& path) {
  std::u16string current;
  if (!platform::GetCurrentDirectory(current)) return Failed(path);
  if (SetText(path, current)) return true;
  path.SetErrorCode(kErrOutOfRange);
  return false;
}

bool XGetSystemDirectory(XString16& path, int32_t folder) {
  std::u16string found;
  path.AllocString(260);
  if (!platform::KnownFolder(folder | 0x8000, true, found)) {
    path.SetWinError(static_cast<int32_t>(platform::kErrorPathNotFound));
    return false;
  }
  return SetText(path, found) && XDirAddDivider(path);
}

bool XDirAddDivider(XString16& path) {
  if (path.GetBufferPos() < 3) {
    path.SetErrorCode(kErrOptionText);
    return false;
  }
  if (path[Units(path) - 1] == XPathDivider) return true;
  const char16_t divider[1] = {XPathDivider};
  return path.Add(divider, 2u);
}

bool XCutToDirectory(XString16& path, int32_t levels) {
  const uint32_t units = Units(path);
  const char16_t* text = path.c_str();
  uint32_t end = 0;  // units kept
  uint32_t i = units;
  while (i > 0 && text[i - 1] != XPathDivider) --i;
  if (i > 0) {
    end = i;  // just after the last divider
    for (int32_t level = 0; level < levels; ++level) {
      uint32_t j = end - 1;  // the divider that ends the kept text
      while (j > 0 && text[j - 1] != XPathDivider) --j;
      if (j == 0) break;
      end = j;
    }
  }
  if (path.GetCurrentPos() > end * 2) path._SetCurrentPos(end * 2);
  path._SetBufferPos(end * 2);
  if (end < units) {
    *path._GetStringAt(end) = 0;
    return true;
  }
  return path.EndAsString();
}

const char16_t* XGetSubDirDivider(const char16_t* path) {
  if (path == nullptr || path[0] == 0) return nullptr;
  size_t n = 0;
  while (path[n] != 0) ++n;
  for (size_t i = n - 1; i-- > 0;) {
    if (path[i] == XPathDivider) return path + i;
  }
  return nullptr;
}

int32_t XGetLastCommonSlashIndex(const char16_t* a, const char16_t* b) {
  if (a == nullptr || b == nullptr) return 0;
  int32_t last = 0;
  for (int32_t i = 0; a[i] != 0 && a[i] == b[i]; ++i) {
    if (a[i] == XPathDivider) last = i;
  }
  return last;
}

int32_t XGetSubDirLevel(const char16_t* path, const char16_t* base) {
  if (path == nullptr || base == nullptr) return -1;
  size_t i = 0;
  while (path[i] != 0 && path[i] == base[i]) ++i;
  if (path[i] == 0 && base[i] == 0) return 0;
  if (path[i] != 0 && base[i] != 0) return -1;
  const char16_t* longer = path[i] != 0 ? path : base;
  // The longer path must go on at a folder boundary: with a divider, or right after
  // a divider that both share.
  const bool boundary = longer[i] == XPathDivider || (i > 0 && longer[i - 1] == XPathDivider);
  if (!boundary) return -1;
  int32_t levels = 0;
  bool in_name = false;
  for (const char16_t* p = longer + i; *p != 0; ++p) {
    if (*p == XPathDivider) {
      in_name = false;
    } else if (!in_name) {
      in_name = true;
      if (levels < 0x7FFFFFFF) ++levels;
    }
  }
  if (levels == 0) return 0;
  return longer == path ? levels : -2;
}

}  // namespace tavi
