//===- file_coll.cpp - A collection of file names --------------------------===//
#include "tavi/coll/file_coll.h"

#include <cstdlib>
#include <cstring>

#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/file/find_file.h"

namespace tavi {

namespace {

struct Walk {
  XFileCollection* files;
  uint32_t skip;  // code units of the starting folder left out of each path
};

bool AddFound(XString16* path, const void* context) {
  const auto* walk = static_cast<const Walk*>(context);
  const uint32_t units = path->GetBufferPos() / 2;
  if (units <= walk->skip) return false;
  return walk->files->AddFile(path->c_str() + walk->skip,
                              static_cast<int32_t>((units - walk->skip) * 2));
}

uint32_t Length(const char16_t* text) {
  uint32_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

}  // namespace

XFileCollection::~XFileCollection() = default;

void XFileCollection::FreeItem(void* item) {
  std::free(item);
}

bool XFileCollection::AddFile(const char16_t* text, int32_t byteLength) {
  if (text == nullptr || byteLength <= 0) return false;
  const uint32_t units = static_cast<uint32_t>(byteLength) / 2;
  auto* copy = static_cast<char16_t*>(std::malloc((size_t{units} + 1) * 2));
  if (copy == nullptr) return false;
  std::memcpy(copy, text, size_t{units} * 2);
  copy[units] = 0;
  if (AtInsert(Count, copy)) return true;
  std::free(copy);
  return false;
}

bool XFileCollection::AddFile(const char16_t* text) {
  if (text == nullptr) return false;
  return AddFile(text, static_cast<int32_t>(Length(text) * 2));
}

bool XFileCollection::AddFile(const XString16& text) {
  return AddFile(text.c_str(), static_cast<int32_t>(text.GetBufferPos()));
}

bool XFileCollection::AddFiles(XString16& directory, const char16_t* pattern,
                               int32_t patternByteLength, int32_t flags) {
  XString16 path;
  if (!path.Set(directory.c_str(), directory.GetBufferPos())) {
    directory.ImportErrorCode(path);
    return false;
  }
  const uint32_t units = path.GetBufferPos() / 2;
  if (units == 0 || path.c_str()[units - 1] != XPathDivider) {
    const char16_t divider[1] = {XPathDivider};
    if (!path.Add(divider, uint32_t{2})) {
      directory.ImportErrorCode(path);
      return false;
    }
  }
  Walk walk{this, (flags & kAddFilesFullPath) != 0 ? 0 : path.GetBufferPos() / 2};
  XFindFile finder;
  const bool ok = finder.ForEachFile(path, pattern, patternByteLength, AddFound,
                                     (flags & kAddFilesRecursive) != 0, &walk);
  finder.FindClose();
  if (!ok && path.IsError()) directory.ImportErrorCode(path);
  return ok;
}

bool XFileCollection::AddFiles(const char16_t* directory, const char16_t* pattern,
                               int32_t patternByteLength, int32_t flags) {
  if (directory == nullptr) return false;
  XString16 start;
  if (!start.Set(directory, Length(directory) * 2)) return false;
  return AddFiles(start, pattern, patternByteLength, flags);
}

}  // namespace tavi
