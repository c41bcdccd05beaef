//===- file.h - File streams, named files and file functions ---*- C++ -*-===//
//
// This file defines XFile (a byte stream over an open file), XNamedFile (a file
// that keeps its own name), the open modes, and the free functions over file
// handles and file names.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/string.h"
#include "tavi/core/types.h"
#include "tavi/export.h"
#include "tavi/io/stream.h"

namespace tavi {

// An open file of the platform layer. Opaque: it is only ever handed back to the
// functions of this header. Null means no file.
struct XFileHandleRecord;
using XFileHandle = XFileHandleRecord*;

// The divider between the folders of a path: '/' on POSIX systems, '\' on Windows.
#ifdef _WIN32
inline constexpr char16_t XPathDivider = u'\\';
#else
inline constexpr char16_t XPathDivider = u'/';
#endif

// Open modes of XFileOpen (a bit set). The low two bits choose what happens with an
// existing or missing file; the other bits add access, sharing and attributes.
inline constexpr uint16_t kFileOpenExisting = 0x0000;  // fail when the file is missing
inline constexpr uint16_t kFileCreateAlways = 0x0002;  // create, replacing an existing file
inline constexpr uint16_t kFileOpenAlways = 0x0003;    // open, creating a missing file
inline constexpr uint16_t kFileTruncate = 0x0004;  // with kFileOpenAlways: empty an existing file
inline constexpr uint16_t kFileBackup = 0x0008;    // with kFileWrite: keep "<name>.bck"
inline constexpr uint16_t kFileConfirm = 0x0010;   // with kFileWrite: ask before replacing
inline constexpr uint16_t kFileRead = 0x0020;
inline constexpr uint16_t kFileWrite = 0x0040;
inline constexpr uint16_t kFileCompressed = 0x0080;  // attributes of a created file; on POSIX
inline constexpr uint16_t kFileReadOnly = 0x0100;    // only read-only has a meaning (mode 0444)
inline constexpr uint16_t kFileHidden = 0x0200;
inline constexpr uint16_t kFileSystem = 0x0400;
inline constexpr uint16_t kFileArchive = 0x0800;
inline constexpr uint16_t kFileShareRead = 0x4000;  // sharing: accepted, no meaning on POSIX
inline constexpr uint16_t kFileShareWrite = 0x8000;

// Library strings of the overwrite question: 500000301 + name + 500000302.
inline constexpr int32_t kStrOverwriteBefore = 500000301;
inline constexpr int32_t kStrOverwriteAfter = 500000302;

// XFile is a byte stream over an open file; it holds the platform handle (null when
// no file is open).
//
// Small reads and writes are gathered in a block inside the handle, so a field-by-
// field serialiser costs no system call per field. The block is invisible: every
// operation that looks at the file (size, position, times, end of file, truncation,
// close, the name functions of this header, another handle opened by name) sees every
// byte written. A write error of gathered bytes surfaces at the operation that pushes
// them out (a later write, _Flush, a move, a size query, Close); savers check
// _Flush or Close.
//
// Bytes read ahead are those of the moment they were read: a write to the same
// bytes through another file object is seen after SetPos (or a reopen).
//
// Positions and sizes are 32-bit: files of 4 GiB or more are not supported by the
// position and size operations.
//
// Copying shares the open file (it is not opened twice): each copy closes its share,
// and the file closes with the last one. Copies take turns; one thread at a time.
class TAVI_API XFile : public XIO {
 public:
  XFile() = default;
  XFile(const XFile& other);
  XFile& operator=(const XFile& other);
  // Closes an open file. When the close fails the error is recorded and the handle
  // is released anyway, dropping bytes that could not be written.
  ~XFile() override;

  // _Write is true only when all bytes were taken; else the platform error, false.
  // Without a file: platform error 6 (invalid handle).
  bool _Write(const void* data, uint32_t bytes) override;
  // _Read delivers up to bytes and returns the count (0 at the end of the file). A
  // failure records the platform error and returns 0, the short count every transfer
  // of the library takes as the end of the data.
  uint32_t _Read(void* data, uint32_t bytes) override;
  // _UnreadChar moves the position back by one UTF-16 unit (2 bytes); the character
  // is not examined.
  bool _UnreadChar(char16_t c) override;
  // _Flush hands the gathered bytes to the system.
  bool _Flush() override;
  // _ShiftForward moves the position forward by bytes; above 0x7FFFFFFF it fails
  // with 0x20000012 and leaves the position.
  bool _ShiftForward(uint32_t bytes) override;

  // Open closes this file, then opens name with XFileOpen. On failure the name's
  // error is imported and false returned. The text form wraps the text without
  // copying it. When the previous file cannot be closed, false with its error.
  virtual bool Open(const char16_t* name, uint16_t mode, XWindow owner);
  virtual bool Open(XString16& name, uint16_t mode, XWindow owner);
  // LeaveFile returns the handle and forgets it without closing: the caller owns it.
  virtual XFileHandle LeaveFile();
  // AssumeFile closes this file and takes over the handle that other gives up;
  // returns that handle.
  virtual XFileHandle AssumeFile(XFile& other);
  // Close is true without a file. Else it pushes the gathered bytes and closes; a
  // failure records the platform error and keeps the handle so that Close can be
  // retried. A successful close clears the error state.
  virtual bool Close();

  bool IsOpened() const { return handle_ != nullptr; }
  XFileHandle GetHandle() const { return handle_; }

  // SetPos moves the position by distance from the beginning (method 0), the current
  // position (1) or the end (2); returns the new position, or 0xFFFFFFFF with the
  // platform error (131 before the beginning, 87 at 4 GiB or beyond).
  uint32_t SetPos(int32_t distance, int32_t method);
  bool SetPosB(int32_t distance, int32_t method) { return SetPos(distance, method) != 0xFFFFFFFFu; }
  // GetPos is the current position, or 0xFFFFFFFF with the error recorded.
  uint32_t GetPos();
  uint32_t SeekToBegin() { return SetPos(0, 0); }
  uint32_t SeekToEnd() { return SetPos(0, 2); }
  // GetSize is the size in bytes; 0xFFFFFFFF with an error recorded when it cannot be
  // had or does not fit 32 bits (platform error 223, file too large), including a
  // size of exactly 0xFFFFFFFF.
  uint32_t GetSize();
  // Eof is true when the position equals the size. When the size cannot be had its
  // error is recorded and the result is false, unless the position cannot be had
  // either: then true.
  bool Eof();
  // SetEndOfFile truncates or extends the file at the current position.
  bool SetEndOfFile();

 protected:
  // MovePos is SetPos; with keep_read_ahead, a short move within the bytes read
  // ahead (an unread, a skip) does not fetch them again.
  uint32_t MovePos(int32_t distance, int32_t method, bool keep_read_ahead);

  XFileHandle handle_ = nullptr;
};

// XNamedFile is a file that keeps its name. Opening by another name replaces the
// kept name.
class TAVI_API XNamedFile : public XFile {
 public:
  XNamedFile() = default;
  // Copies share the open file and get their own copy of the name.
  XNamedFile(const XNamedFile& other);
  XNamedFile& operator=(const XNamedFile& other);
  ~XNamedFile() override;

  using XFile::Open;
  // Open(name) keeps name (false when it cannot), then opens it as XFile::Open does.
  bool Open(XString16& name, uint16_t mode, XWindow owner) override;
  // Open(mode, owner) opens the kept name; on failure the kept name's error is
  // imported.
  virtual bool Open(uint16_t mode, XWindow owner);

  // SetFileName closes the file and keeps bytes bytes of text as the name. A null
  // text or 0 bytes: 0x20000011, false; a failed copy imports the name's error.
  bool SetFileName(const char16_t* text, int32_t bytes);
  bool SetFileName(const XString16& name);
  // GetFileName is the kept name, or null when it is empty.
  const char16_t* GetFileName() const;
  const char16_t* GetFileName(int32_t& bytes) const;
  // GetExtension points at the last '.' of the name (the dot included); null when
  // there is none.
  const char16_t* GetExtension() const;
  // GetFileTitleW points at the last divider of the name (the divider included), or
  // at the whole name when it has none; null for an empty name.
  const char16_t* GetFileTitleW() const;
  XString16& Name() { return name_; }

 private:
  XString16 name_;
};

// --- Free functions over handles -----------------------------------------------

// XFileOpen opens or creates the file name. mode & 3 chooses the disposition (0 or
// 1 open an existing file, 2 create always, 3 open always); kFileTruncate turns
// "open always" of an existing file into "truncate existing" and makes the other
// dispositions of an existing file fail with platform error 87. kFileBackup with
// kFileWrite first renames an existing file to "<name>.bck" (replacing an older
// backup); kFileConfirm with kFileWrite asks the user (a yes/no box through the
// user-interface table, owned by owner) before an existing file is deleted, and a
// refusal records 1223 (source 0). An existence test that fails records its errno in
// name (source 2) and the open goes on. Other failures record the platform error in
// name; the result is then null. A folder cannot be opened (platform error 5).
TAVI_API XFileHandle XFileOpen(XString16& name, uint16_t mode, XWindow owner);
// XFileClose is true for null; else the close result (a failed close keeps the
// handle open so that it can be retried).
TAVI_API bool XFileClose(XFileHandle handle);
// XFileRead returns the count read, or -1 on failure (the platform's last error).
TAVI_API int32_t XFileRead(XFileHandle handle, void* buffer, int32_t bytes);
// XFileWrite is true only when all bytes were written.
TAVI_API bool XFileWrite(XFileHandle handle, const void* buffer, int32_t bytes);

// --- Free functions over names (the error lands in the name) ----------------------

// XFileExist is true when a file or folder of that name exists; else the C runtime's
// errno is recorded in name (source 2).
TAVI_API bool XFileExist(XString16& name);
TAVI_API bool XFileDelete(XString16& name);
// XFileCopy copies the file's bytes, permissions and modification time; an existing
// target is refused (platform error 80) and left untouched; a partial target is
// removed. The error lands in from.
TAVI_API bool XFileCopy(XString16& from, const char16_t* to);
// XFileMove renames or moves the file; an existing target is refused (183). A move
// to another file system copies and deletes.
TAVI_API bool XFileMove(XString16& from, const char16_t* to);
// XFileCheckExtensionLen (lengths in characters) is true when the name is longer than
// the extension and ends with it under the user's linguistic, case-sensitive order.
TAVI_API bool XFileCheckExtensionLen(const char16_t* name, int32_t name_length,
                                     const char16_t* extension, int32_t extension_length);
// XFileCheckExtension is true when name ends with the extension; else, with add, it
// appends the extension and returns the append's result; else false.
TAVI_API bool XFileCheckExtension(XString16& name, const char16_t* extension,
                                  int32_t extension_bytes, bool add);
// XGetFileTime gives the creation (birth time where the file system keeps one, else
// the change time), access and modification times of a file as minute counts in
// UTC; null pointers are skipped. False when the file cannot be opened for reading,
// the times cannot be had, or a time converts to 0.
TAVI_API bool XGetFileTime(const char16_t* name, uint32_t* created, uint32_t* accessed,
                           uint32_t* written);

// --- Directory paths (the error lands in the path) ---------------------------------

// XDirCreate creates every missing folder along path, then path itself unless it
// ends with the divider. An empty path: 0x20000010. A path that exists already
// fails with platform error 183.
TAVI_API bool XDirCreate(XString16& path);
// XDirRemove removes an empty folder; XDirSetCurrent makes path the current folder.
TAVI_API bool XDirRemove(XString16& path);
TAVI_API bool XDirSetCurrent(XString16& path);
// XDirGetCurrent makes the current folder the content of path (0x20000014 when it
// cannot be held).
TAVI_API bool XDirGetCurrent(XString16& path);
// XGetSystemDirectory makes a known folder the content of path, ended with the
// divider, creating it when missing. Folders: 26 application data
// ($XDG_CONFIG_HOME or ~/.config), 28 local application data ($XDG_DATA_HOME or
// ~/.local/share), 5 documents (~/Documents). Any other folder, or one that cannot
// be had: platform error 3 (source 1), false.
TAVI_API bool XGetSystemDirectory(XString16& path, int32_t folder);
// XDirAddDivider ends path with the divider. A path of fewer than 2 characters:
// 0x20000008, false.
TAVI_API bool XDirAddDivider(XString16& path);
// XCutToDirectory keeps path up to and including its last divider, then removes
// levels more folders (fewer when the path has fewer). A path without a divider
// becomes empty. The text stays terminated.
TAVI_API bool XCutToDirectory(XString16& path, int32_t levels);
// XGetSubDirDivider points at the last divider that is not the final character;
// null when there is none.
TAVI_API const char16_t* XGetSubDirDivider(const char16_t* path);
// XGetLastCommonSlashIndex is the index of the last divider within the common
// prefix of a and b (code units compared exactly); 0 when there is none.
TAVI_API int32_t XGetLastCommonSlashIndex(const char16_t* a, const char16_t* b);
// XGetSubDirLevel tells where path lies against base, comparing code units: 0 when
// they name the same folder (a trailing divider aside), a positive count of folder
// levels when path lies below base, -2 when base lies below path, -1 when neither
// contains the other (they differ, or the longer one does not go on at a divider).
TAVI_API int32_t XGetSubDirLevel(const char16_t* path, const char16_t* base);

}  // namespace tavi
