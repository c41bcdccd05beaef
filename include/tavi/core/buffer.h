//===- buffer.h - Growable memory block that is also a stream --*- C++ -*-===//
//
// This file defines XBuffer: the library's growable block of memory. Writes append
// at the data end, reads take bytes from a read cursor, and the wide-text members
// treat the content as UTF-16 code units.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <string>

#include "tavi/core/types.h"
#include "tavi/export.h"
#include "tavi/io/stream.h"

namespace tavi {

class TStringResource;
class TTitleTextBase;
class XFile;

// XBuffer owns a block of memory unless it is attached to one that belongs to
// somebody else. All sizes and positions are byte counts.
//
// Layout of the state: the allocated size is the usable size of the block (an owned
// block is always 4 bytes longer, so that a terminator fits after the last usable
// byte); the buffer position is the data end, where writes append; the current
// position is the read cursor. The checked operations keep
// current position <= buffer position <= allocated size.
//
// Growth is by steps of the granularity (default 32), never by doubling, and a
// buffer never shrinks: callers that append much raise the granularity or reserve
// ahead. Copying is shallow: a copy shares the block (and the ownership flag) with
// its source; give one side's ownership away (DiscardBufferOwnership) or let one side
// forget the block (DiscardBuffer) before both are destroyed.
class TAVI_API XBuffer : public XIO {
 public:
  XBuffer() = default;
  // A granularity of 0 becomes 1.
  explicit XBuffer(uint32_t granularity) : granularity_(granularity ? granularity : 1) {}
  XBuffer(const XBuffer& other) = default;
  XBuffer& operator=(const XBuffer& other) = default;
  // Frees the block unless it is attached.
  ~XBuffer() override;

  // Stream slots. _Write appends (growing as AllocBuffer does; 0x20000014 when the
  // size would pass 2^32-1). _Read copies from the read cursor and never sets an
  // error. _UnreadChar takes back the last 2 bytes written (the data end, not the
  // cursor; the character is not stored); 0x20000005 with fewer than 2 bytes.
  // _ShiftForward moves the read cursor; 0x20000004 when fewer bytes are left.
  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  bool _UnreadChar(char16_t c) override;
  bool _ShiftForward(uint32_t bytes) override;
  // ReadTo hands the bytes at the read cursor to target in one write, with no
  // intermediate block; results and errors are those of XIO::ReadTo.
  bool ReadTo(XIO& target, uint32_t bytes) override;

  // FreeBuffer frees the block unless attached; then block, attached flag, allocated
  // size and both positions become 0.
  virtual void FreeBuffer();
  // ResetBuffer sets both positions to 0. An attached block is forgotten (not freed):
  // the block becomes null while the allocated size is left as it was.
  virtual bool ResetBuffer();
  // _ReadToBuffer reads up to bytes from source straight into the data end and
  // returns the count read. When the buffer cannot grow, source takes this buffer's
  // error and 0 is returned.
  virtual uint32_t _ReadToBuffer(XIO& source, uint32_t bytes);
  // ReadToBuffer reads exactly bytes from source; a short read sets 0x20000004 (when no
  // error is pending), source takes this buffer's error, false.
  virtual bool ReadToBuffer(XIO& source, uint32_t bytes);
  // LoadFile makes the whole file the data (both positions go to 0 first).
  // LoadRestOfFile reads from the file's position to its end. When the size cannot
  // be had or does not fit 32 bits, the file holds the error and false is returned;
  // a short read is 0x20000004 and a read fault keeps the file's error (in both).
  virtual bool LoadFile(XFile& file);
  virtual bool LoadRestOfFile(XFile& file);
  // SaveBuffer writes the whole data (from byte 0, whatever the read cursor) to target.
  virtual bool SaveBuffer(XIO& target);
  // ExFile opens name with XFileOpen(name, mode, owner), then loads the file when
  // mode has kFileRead, else saves the data to it and pushes it to the disk. Any
  // failure lands in name (and false is returned); the file is closed on every path.
  // A failed save in backup mode (kFileBackup with kFileWrite) removes the partial
  // file and puts the previous file back from its backup.
  virtual bool ExFile(XString16& name, uint16_t mode, XWindow owner);
  // ExFileMsg is ExFile that also shows a failure with XFileErrorMessage.
  virtual bool ExFileMsg(XString16& name, uint16_t mode, XWindow owner);
  // WriteBufferEx packs the whole data (from byte 0) into target as one container of
  // XPack: flags are the container's flag set (kXPackCRC, kXPackHash, kXPackAES,
  // kXPackXOR), param its method set (0 stores, kXPackTryLZ, kXPackTryHuffman).
  // Refusals and write failures are left in target (0x20000012 for empty data).
  virtual bool WriteBufferEx(XIO& target, uint32_t flags, uint32_t param, const char16_t* password);
  // ReadToBufferEx unpacks one container from source and appends its bytes at the
  // data end. Failures are left in source; the bytes decoded before a failure found
  // later (a trailer that does not match) stay appended.
  virtual bool ReadToBufferEx(XIO& source, uint32_t flags, const char16_t* password);
  // SaveFileEx opens name as ExFile does and writes the data with WriteBufferEx
  // (backup mode puts the old file back when the save fails). LoadFileEx opens name
  // (no owner) and makes the unpacked content the data (both positions go to 0
  // first). Failures land in name. The Msg forms also show them (XFileErrorMessage).
  virtual bool SaveFileEx(XString16& name, uint32_t flags, uint32_t param, const char16_t* password,
                          uint16_t mode, XWindow owner);
  virtual bool LoadFileEx(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode);
  virtual bool SaveFileExMsg(XString16& name, uint32_t flags, uint32_t param,
                             const char16_t* password, uint16_t mode, XWindow owner);
  virtual bool LoadFileExMsg(XString16& name, uint32_t flags, const char16_t* password,
                             uint16_t mode, XWindow owner);
  // (The text-file members follow here.)

  // By-name forms of ExFile and ExFileMsg.
  bool LoadFile(XString16& name, uint16_t mode) { return ExFile(name, mode, nullptr); }
  bool SaveFile(XString16& name, uint16_t mode, XWindow owner) { return ExFile(name, mode, owner); }
  bool LoadFileMsg(XString16& name, uint16_t mode, XWindow owner) {
    return ExFileMsg(name, mode, owner);
  }
  bool SaveFileMsg(XString16& name, uint16_t mode, XWindow owner) {
    return ExFileMsg(name, mode, owner);
  }

  // Accessors, without checks.
  void* GetBuffer() const { return buffer_; }
  operator void*() const { return buffer_; }
  uint32_t GetBufferSize() const { return allocated_; }
  uint32_t GetBufferPos() const { return buffer_pos_; }
  uint32_t GetCurrentPos() const { return current_pos_; }
  bool GetBufferAttached() const { return attached_ != 0; }
  uint32_t GetGranularity() const { return granularity_; }
  uint8_t* _GetBufferAt(uint32_t offset) const { return buffer_ + offset; }
  uint8_t* _GetCurrentBuffer() const { return buffer_ + current_pos_; }
  uint8_t* GetStringEnd() const { return buffer_ + buffer_pos_; }
  bool EoB() const { return current_pos_ == buffer_pos_; }
  char16_t* _GetStringAt(uint32_t index) const {
    return reinterpret_cast<char16_t*>(buffer_) + index;
  }
  // GetAvailableString is the number of whole code units between the data end and
  // the end of the allocation.
  uint32_t GetAvailableString() const { return (allocated_ - buffer_pos_) / 2; }

  // AllocBuffer ensures an allocated size of at least size bytes. An owned block
  // grows to size plus a step of the granularity (a full step when size is already a
  // multiple), never shrinks, and keeps 4 spare bytes. Sizes too close to 2^32 are
  // taken without rounding; 0xFFFFFFFE and 0xFFFFFFFF fail with 0x20000014. An
  // attached block never grows: false without an error. Out of memory: 0x20000001
  // (when no error is pending), the old block stays.
  bool AllocBuffer(uint32_t size);
  // GrowBuffer ensures room for extra bytes after the data end. Fails with 0x20000014
  // when extra plus the allocated size would pass 2^32-1.
  bool GrowBuffer(uint32_t extra);
  // ReserveBufferMem grows as GrowBuffer and advances the data end by bytes; returns
  // the reserved (uninitialised) bytes, or null.
  void* ReserveBufferMem(uint32_t bytes);
  // FreeUnusedBuffer ensures the allocation covers the data; it never releases memory.
  bool FreeUnusedBuffer() { return AllocBuffer(buffer_pos_); }
  // AllocString / GrowString are AllocBuffer / GrowBuffer in UTF-16 code units.
  bool AllocString(uint32_t chars);
  bool GrowString(uint32_t chars);
  // DiscardBuffer forgets the block without freeing it (the caller has taken it).
  void DiscardBuffer();
  // DiscardBufferOwnership keeps using the block but will never free or grow it.
  void DiscardBufferOwnership() { attached_ = 1; }
  // AssumeBuffer(other) frees this block and takes other's block, ownership, size and
  // positions; other is left empty (its granularity and error stay).
  void AssumeBuffer(XBuffer& other);
  // AssumeBuffer(block, size, full) frees this block and takes ownership of block,
  // which must come from std::malloc. The allocated size becomes size - 1 (so the
  // terminator of a text of size bytes still fits); the data end is size when full,
  // else 0.
  void AssumeBuffer(void* block, uint32_t size, bool full);
  // AttachBuffer is AssumeBuffer for a block that stays the caller's: never freed,
  // never grown.
  void AttachBuffer(void* block, uint32_t size, bool full);
  // AttachString / AssumeString take a wide text of bytes bytes (or, without a length,
  // up to its terminator) as full content.
  void AttachString(char16_t* text, uint32_t bytes) { AttachBuffer(text, bytes, true); }
  void AttachString(char16_t* text);
  void AssumeString(char16_t* text, uint32_t bytes) { AssumeBuffer(text, bytes, true); }
  void AssumeString(char16_t* text);

  // SetBufferPos moves the data end (0x20000014 beyond the allocation), lowering the
  // read cursor when it was beyond.
  bool SetBufferPos(uint32_t pos);
  void _SetBufferPos(uint32_t pos) { buffer_pos_ = pos; }
  void _ShiftBufferPos(int32_t delta) { buffer_pos_ += static_cast<uint32_t>(delta); }
  // ShiftBufferPos moves the data end by delta, which may not go below 0 or past
  // 2^32-1 (0x20000014). The read cursor is not adjusted.
  bool ShiftBufferPos(int32_t delta);
  bool ResetBufferPos() {
    buffer_pos_ = current_pos_ = 0;
    return true;
  }
  // SetCurrentPos and ShiftCurrentPos test the present read cursor, not the new one:
  // when the cursor already lies beyond the data end they fail with 0x20000014;
  // otherwise the new cursor is taken unchecked. Callers rely on being able to park
  // the cursor anywhere and on the next checked call noticing it.
  bool SetCurrentPos(uint32_t pos);
  bool ShiftCurrentPos(int32_t delta);
  void _SetCurrentPos(uint32_t pos) { current_pos_ = pos; }
  void _ShiftCurrentPos(int32_t delta) { current_pos_ += static_cast<uint32_t>(delta); }
  // ResetCurrentPos rewinds the read cursor; 0x20000014 when it lies beyond the data.
  bool ResetCurrentPos();
  // SetStringPos / ShiftStringPos are SetBufferPos / ShiftBufferPos in code units.
  bool SetStringPos(uint32_t chars);
  bool ShiftStringPos(int32_t chars);

  // --- Wide text (UTF-16 code units between 0 and the data end) ---------------

  // EmptyString makes the content an empty terminated text, allocating a first block
  // when there is none (an attached buffer without a block fails).
  bool EmptyString();
  // EndAsString stores a 0 code unit after the data (growing if needed) without
  // counting it in the data.
  bool EndAsString();
  // _EndAsString stores a 0 code unit at the data end without any check; it relies
  // on the spare bytes of an owned block.
  void _EndAsString();
  // RemoveEndChars drops trailing c while more than 2 bytes of data remain, so a
  // one-character text is never emptied; returns the number dropped.
  int32_t RemoveEndChars(char16_t c);
  // CutLast ends the data at the last c (c and what follows go); false when there is
  // no c or less than one code unit of data.
  bool CutLast(char16_t c);

  // Add appends text and keeps a terminator after it. Counts are in bytes.
  bool Add(const char16_t* text);
  bool Add(const char16_t* text, uint32_t bytes);
  bool Add(const char16_t* begin, const char16_t* end);
  bool Add(const XBuffer& text);
  bool Add(const TTitleTextBase& title);
  // Add(texts) appends every text of a null-terminated list of texts.
  bool Add(const char16_t* const* texts);
  // Add(id, resource) appends string id of resource (the library's table when null).
  bool Add(int32_t id, TStringResource* resource);
  // Add(id, module) appends string id of the module's string table. Modules carry no
  // string tables on POSIX systems: false with platform error 1814 there.
  bool Add(uint32_t id, XModule module);
  // Add(text, separator) appends text up to (not including) separator or its end;
  // returns the character after the separator, or null when the text ended first.
  const char16_t* Add(const char16_t* text, char16_t separator);

  // Set replaces the content (both positions go to 0 first) with the same arguments
  // as Add.
  bool Set(const char16_t* text);
  bool Set(const char16_t* text, uint32_t bytes);
  bool Set(const char16_t* begin, const char16_t* end);
  bool Set(const XBuffer& text);
  bool Set(const TTitleTextBase& title);
  bool Set(const char16_t* const* texts);
  bool Set(int32_t id, TStringResource* resource);
  bool Set(uint32_t id, XModule module);
  const char16_t* Set(const char16_t* text, char16_t separator);

  // Editing in place. Each returns how many characters or strings it replaced or
  // removed, keeps the terminator after the data and lowers the read cursor when the
  // data end passes it. A result that an attached block cannot hold leaves the text
  // unchanged and returns 0. Lengths of search and replacement texts are in bytes.
  uint32_t RemoveMultiChars(char16_t c);  // runs of c become one c
  uint32_t RemoveChar(char16_t c);        // every c goes
  uint32_t ReplaceChar(char16_t from, char16_t to);
  uint32_t ReplaceChars(const char16_t* set, char16_t to);  // every char of set (terminated)
  uint32_t ReplaceStringToChar(const char16_t* from, uint32_t from_bytes, char16_t to);
  uint32_t ReplaceString(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                         uint32_t to_bytes);
  // ReplaceStringIC matches from without regard to case (code unit by code unit).
  uint32_t ReplaceStringIC(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                           uint32_t to_bytes);
  // ReplaceSoftReturns removes the soft line breaks (CR CR LF) that edit controls
  // insert when they wrap lines.
  uint32_t ReplaceSoftReturns();

  // The Unquoted forms do the same, but leave text between an open quote and the
  // following close quote (both included) untouched. An open quote without a close
  // quote protects the rest of the text.
  uint32_t ReplaceUnquotedChar(char16_t from, char16_t to, char16_t open_quote,
                               char16_t close_quote);
  uint32_t ReplaceUnquotedChars(const char16_t* set, char16_t to, char16_t open_quote,
                                char16_t close_quote);
  uint32_t ReplaceUnquotedStringToChar(const char16_t* from, uint32_t from_bytes, char16_t to,
                                       char16_t open_quote, char16_t close_quote);
  uint32_t ReplaceUnquotedString(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                                 uint32_t to_bytes, char16_t open_quote, char16_t close_quote);
  uint32_t ReplaceUnquotedStringIC(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                                   uint32_t to_bytes, char16_t open_quote, char16_t close_quote);

  // _Cut removes the code units from begin to end (pointers into the block), unchecked.
  void _Cut(char16_t* begin, char16_t* end);
  // Cut removes begin..end when both lie within the data in order; false otherwise.
  bool Cut(char16_t* begin, char16_t* end);
  // Cut(chars) removes the first chars code units (all of them when fewer).
  bool Cut(uint32_t chars);
  // CutTo / CutRTo remove the text up to and including the first / last c; false, with
  // nothing removed, when there is no c.
  bool CutTo(char16_t c);
  bool CutRTo(char16_t c);

  // Compare orders the data bytes like memcmp, a shorter prefix first: -1, 0 or 1.
  int32_t Compare(const XBuffer& other) const;
  int32_t Compare(const void* data, uint32_t bytes) const;
  // IsDifferent is true when the data differs in length or in any byte.
  bool IsDifferent(const XBuffer& other) const;
  bool IsDifferent(const void* data, uint32_t bytes) const;

  // GetModuleFileNameW makes the path of a loaded module the content (null: the
  // program itself), terminated.
  bool GetModuleFileNameW(XModule module);

  // --- Window text and clipboard, through the user-interface table ------------

  // DlgGetItemText / WndGetText make a control's or window's text the content
  // (0x20000012 when it cannot fit a buffer); DlgSetItemText / WndSetText give the
  // content to it. Failures of the host set its platform error.
  bool DlgGetItemText(XWindow dialog, int32_t item);
  bool DlgSetItemText(XWindow dialog, int32_t item);
  bool WndGetText(XWindow window);
  bool WndSetText(XWindow window);
  // CopyToClipboard empties the clipboard and puts the data on it in format;
  // AddClipboardData adds the data in another format without emptying.
  bool CopyToClipboard(XWindow owner, uint32_t format);
  bool AddClipboardData(XWindow owner, uint32_t format);
  // AddClipboardFormatName appends the name of a registered clipboard format.
  bool AddClipboardFormatName(uint32_t format);
  // GetHTMLFormat makes the clipboard's HTML fragment (UTF-8 bytes) the content.
  bool GetHTMLFormat(XWindow owner);
  // AddHTMLClipboardData adds the content (a UTF-8 HTML fragment) to the clipboard in
  // the registered HTML format, with its offset header; 0x20000011 when the result
  // would be too long for the header's fields.
  bool AddHTMLClipboardData(XWindow owner);
  // IsClipboardFormatAvailable is true when one of the formats of a 0-terminated
  // list (or of the first count entries) is on the clipboard.
  bool IsClipboardFormatAvailable(const uint32_t* formats);
  bool IsClipboardFormatAvailable(const uint32_t* formats, uint32_t count);
  // IsClipboardNativeTextFormatAvailable is true when UTF-16 text is on the clipboard.
  bool IsClipboardNativeTextFormatAvailable();

 protected:
  // Block management slots: reallocate to size bytes (contents kept) and free.
  // Derived buffers whose memory comes from elsewhere replace both.
  virtual bool _BufferRealloc(uint32_t size);
  virtual void _BufferFree();

  // The shared growth test of the stream writes: room for bytes more data.
  bool GrowForWrite(uint32_t bytes);
  // Bytes of the block that may be read or written past the data end: an owned block
  // has 4 spare bytes after its allocation, an attached one the single byte that the
  // size-minus-one rule leaves.
  uint32_t _ReadableBytes() const {
    if (buffer_ == nullptr) return 0;
    return allocated_ + (attached_ ? 1u : 4u);
  }
  // Puts the first bytes of the block on the clipboard in format.
  bool PutOnClipboard(XWindow owner, uint32_t format, uint32_t bytes, bool empty_first);
  // The control of a dialog item; null with the platform error set when none.
  XWindow DialogItem(XWindow dialog, int32_t item);
  // Lowers the read cursor to the data end when it lies beyond.
  void ClampCurrentPos() {
    if (current_pos_ > buffer_pos_) current_pos_ = buffer_pos_;
  }
  // Direct access for derived buffers that manage the block themselves.
  void _SetBlock(void* block) { buffer_ = static_cast<uint8_t*>(block); }
  void _SetAllocated(uint32_t allocated) { allocated_ = allocated; }
  void _SetAttached(bool attached) { attached_ = attached ? 1 : 0; }

 private:
  void TakeBlock(void* block, uint32_t size, bool full, bool attached);
  bool SetContent(const std::u16string& units);
  template <typename Pred>
  uint32_t ReplaceInPlace(Pred matches, char16_t to, char16_t open_quote, char16_t close_quote);
  uint32_t ReplaceImpl(const char16_t* from, uint32_t from_len, const char16_t* to, uint32_t to_len,
                       bool ignore_case, char16_t open_quote, char16_t close_quote, bool quoted);

  uint8_t* buffer_ = nullptr;
  uint8_t attached_ = 0;
  uint32_t allocated_ = 0;
  uint32_t buffer_pos_ = 0;
  uint32_t current_pos_ = 0;
  uint32_t granularity_ = 32;
};

}  // namespace tavi
