//===- file.h - Files, folders and folder searches -------------*- C++ -*-===//
//
// The platform's file system: open files with a gathering block for small reads
// and writes, operations on names and folders, known folders and folder searches.
// Names are UTF-16 code units with a count; every failure sets the calling thread's
// last error (Windows numbering, see errors.h) and returns false or null.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <string>

#include "tavi/file/file.h"
#include "tavi/file/find_file.h"
#include "tavi/time/system_time.h"

namespace tavi::platform {

// Dispositions, in the Windows numbering.
inline constexpr uint32_t kCreateAlways = 2;
inline constexpr uint32_t kOpenExisting = 3;
inline constexpr uint32_t kOpenAlways = 4;
inline constexpr uint32_t kTruncateExisting = 5;

struct OpenRequest {
  bool read = false;
  bool write = false;
  uint32_t disposition = kOpenExisting;  // any other value is refused with 87
  bool read_only = false;                // a created file gets mode 0444
};

// OpenFile opens name; a folder is refused with 5 (access denied).
XFileHandle OpenFile(const char16_t* name, uint32_t units, const OpenRequest& request);
// RetainFile adds a holder: each holder closes once, and the last close closes the
// file. Holders take turns; they do not use the file at the same time.
void RetainFile(XFileHandle file);
// CloseFile releases a holder; the last one pushes the gathered bytes and closes. When the bytes
// cannot be written the handle stays open (and keeps them); when the close itself fails the handle
// stays valid and the next CloseFile releases it.
bool CloseFile(XFileHandle file);
// DiscardFile releases a holder; the last one closes whatever happens, dropping
// bytes not yet written.
void DiscardFile(XFileHandle file);
// ReadFile reads up to bytes (fewer only at the end of the file); -1 on failure.
int64_t ReadFile(XFileHandle file, void* data, uint32_t bytes);
bool WriteFile(XFileHandle file, const void* data, uint32_t bytes);
bool FlushFile(XFileHandle file);
// SeekFile moves by distance from the beginning (0), position (1) or end (2); a
// position below 0 fails with 131.
// With keep_read_ahead, a move that stays within the bytes read ahead only moves
// within them; otherwise the next read fetches fresh bytes from the file.
bool SeekFile(XFileHandle file, int64_t distance, int32_t method, uint64_t& position,
              bool keep_read_ahead);
bool FilePosition(XFileHandle file, uint64_t& position);
bool FileSize(XFileHandle file, uint64_t& size);
// TruncateFile ends the file at the current position.
bool TruncateFile(XFileHandle file);
// FileTimes gives the birth (or change), access and modification times.
bool FileTimes(XFileHandle file, XFileTime& created, XFileTime& accessed, XFileTime& written);
// FlushAllFiles pushes the gathered bytes of every open file that no other thread is
// using at that moment, so that operations by name see them.
void FlushAllFiles();

// PathExists is 0 when a file or folder of that name exists, else the errno of the
// test (the C runtime's access with mode 0).
int PathExists(const char16_t* name, uint32_t units);
bool DeleteFile(const char16_t* name, uint32_t units);
// CopyFile refuses an existing target with 80.
bool CopyFile(const char16_t* from, uint32_t from_units, const char16_t* to, uint32_t to_units);
// MoveFile refuses an existing target with 183; RenameReplacing replaces it.
bool MoveFile(const char16_t* from, uint32_t from_units, const char16_t* to, uint32_t to_units);
bool RenameReplacing(const char16_t* from, uint32_t from_units, const char16_t* to,
                     uint32_t to_units);
bool CreateDirectory(const char16_t* name, uint32_t units);
bool RemoveDirectory(const char16_t* name, uint32_t units);
bool SetCurrentDirectory(const char16_t* name, uint32_t units);
bool GetCurrentDirectory(std::u16string& path);
// KnownFolder gives the path of a known folder (without a final divider), creating
// it when create is set; 3 when the folder is not known.
bool KnownFolder(int32_t folder, bool create, std::u16string& path);

// FindFirst opens a search of the folder part of pattern for names matching its
// last part and fills data with the first match; 3 when the folder is missing, 2
// when nothing matches. FindNext fills the next match; 18 at the end.
XFindHandle FindFirst(const char16_t* pattern, uint32_t units, XFindData& data);
bool FindNext(XFindHandle search, XFindData& data);
// RetainSearch adds a holder; FindClose releases one, and the last closes.
void RetainSearch(XFindHandle search);
bool FindClose(XFindHandle search);

}  // namespace tavi::platform
