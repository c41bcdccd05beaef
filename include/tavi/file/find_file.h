//===- find_file.h - Directory search and directory walks -----*- C++ -*-===//
//
// This file defines XFindFile: the search of a folder for names matching a
// wildcard pattern, and the walks over folders and folder trees built on it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/error.h"
#include "tavi/export.h"
#include "tavi/time/system_time.h"

namespace tavi {

class XString16;

// An open search of the platform layer; null when no search is open.
struct XFindHandleRecord;
using XFindHandle = XFindHandleRecord*;

// Attributes of a found entry (the Windows attribute bits).
inline constexpr uint32_t kFileAttributeReadOnly = 0x0001;
inline constexpr uint32_t kFileAttributeHidden = 0x0002;  // the name starts with '.'
inline constexpr uint32_t kFileAttributeDirectory = 0x0010;
inline constexpr uint32_t kFileAttributeNormal = 0x0080;
inline constexpr uint32_t kFileAttributeReparse = 0x0400;  // a symbolic link

// XFindData describes the entry found last.
struct XFindData {
  uint32_t attributes;
  XFileTime created, accessed, written;
  uint64_t size;
  char16_t name[260];  // terminated; a name of the platform never needs more
};

// XFindFile searches one folder. A pattern is a path whose last part may hold the
// wildcards of XWildcardMatch (tavi/text/wildcard.h): '*', '?' and sets such as
// "[a-c]"; "*.*" matches every name. Matching is case-sensitive on POSIX.
// Failures are recorded in this object with the platform's numbers: 3 when the
// folder is missing, 2 when nothing matches, 18 at the end of a search (reset to 0
// by FindNext).
//
// Copying shares the open search: the copies go on from the same place, each closes
// its share, and the search closes with the last one.
class TAVI_API XFindFile : public XError {
 public:
  XFindFile() = default;
  XFindFile(const XFindFile& other);
  XFindFile& operator=(const XFindFile& other);
  // Closes a search still open.
  ~XFindFile() override;

  // FindFirst closes a search still open and starts a new one; returns the first
  // entry's name (never "." or ".."), or null with the platform error recorded.
  const char16_t* FindFirst(const char16_t* pattern);
  // FindNext returns the next entry's name; at the end null with the error code set
  // back to 0; other failures keep their error.
  const char16_t* FindNext();
  // FindClose is false when no search is open; else it closes the search.
  bool FindClose();
  // IsDirectory is true when the last entry found is a folder.
  bool IsDirectory() const { return (data_.attributes & kFileAttributeDirectory) != 0; }
  bool IsOpen() const { return handle_ != nullptr; }
  const XFindData& GetFindData() const { return data_; }

  // FindFirstDir / FindNextDir pass over entries that are not folders;
  // FindFirstFileW / FindNextFileW pass over folders.
  const char16_t* FindFirstDir(const char16_t* pattern);
  const char16_t* FindNextDir();
  const char16_t* FindFirstFileW(const char16_t* pattern);
  const char16_t* FindNextFileW();

  // ForEachDir calls fn for each folder matching pattern, in the platform's order;
  // false as soon as fn returns false, else true (also when nothing matched).
  bool ForEachDir(const char16_t* pattern, bool (*fn)(char16_t* name, const void* context),
                  const void* context);
  // ForEachFile calls fn with the full path of every file in directory (which ends
  // with the divider) whose name matches pattern (pattern_bytes bytes); with
  // recursive, the subfolders come first, depth first, each walked before the
  // folder's own files. Symbolic links to folders are not followed, so a link loop
  // cannot trap the walk. directory is the working path: it holds each file's path
  // while fn runs and is cut back to its length at entry afterwards.
  //
  // Returns false as soon as fn does, or when the path cannot grow, or with a search
  // failure other than a missing folder or no match (the failure is then imported
  // into directory). A subfolder walk that ends with "no match" (2) ends the whole
  // walk with true.
  bool ForEachFile(XString16& directory, const char16_t* pattern, int32_t pattern_bytes,
                   bool (*fn)(XString16* path, const void* context), bool recursive,
                   const void* context);

 private:
  XFindHandle handle_ = nullptr;
  XFindData data_{};
};

}  // namespace tavi
