//===- file_coll.h - A collection of file names ----------------*- C++ -*-===//
//
// This file defines XFileCollection: a pointer collection of file paths, filled by
// hand or by walking a folder tree.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/coll/collection.h"
#include "tavi/export.h"

namespace tavi {

class XString16;

// Flags of XFileCollection::AddFiles.
inline constexpr int32_t kAddFilesRecursive = 0x1;  // descend into subfolders
inline constexpr int32_t kAddFilesFullPath = 0x2;   // keep full paths, not relative ones

// XFileCollection holds heap copies of zero-terminated UTF-16 paths; FreeItem
// releases one.
class TAVI_API XFileCollection : public XCollection {
 public:
  XFileCollection() = default;
  XFileCollection(const XFileCollection& other) = default;
  XFileCollection& operator=(const XFileCollection& other) = default;
  ~XFileCollection() override;

  // AddFile appends a terminated copy of byteLength bytes of text (an odd last byte
  // is dropped); false for a null text, a length of 0 or below, or a failed insertion.
  bool AddFile(const char16_t* text, int32_t byteLength);
  bool AddFile(const char16_t* text);
  bool AddFile(const XString16& text);
  // AtFile is item index as a path; null out of range.
  const char16_t* AtFile(uint32_t index) const { return static_cast<const char16_t*>(At(index)); }

  // AddFiles walks directory (XFindFile::ForEachFile; a missing trailing divider is
  // supplied) and adds every file matching pattern: relative to directory, or in
  // full with kAddFilesFullPath; kAddFilesRecursive takes in the subfolders, whose
  // files come before those of the folder itself. A file whose relative path would be
  // empty, or that cannot be added, stops the walk with false (files added before
  // stay). A search failure other than a missing folder or no match is imported
  // into directory (the XString16 form) and gives false.
  bool AddFiles(XString16& directory, const char16_t* pattern, int32_t patternByteLength,
                int32_t flags);
  bool AddFiles(const char16_t* directory, const char16_t* pattern, int32_t patternByteLength,
                int32_t flags);

 protected:
  void FreeItem(void* item) override;
};

}  // namespace tavi
