//===- title_text.h - Light owned-or-attached wide text ---------*- C++ -*-===//
//
// This file defines TTitleTextBase and TTitleText: a UTF-16 text held as a pointer,
// a byte size and a state word, used for titles, names and option values wherever a
// full XString16 would be too heavy. The text is either owned or attached (pointing
// into memory that belongs to somebody else), and the state word also carries the
// display attributes of the title. The comparison functions for collections of
// titles are declared here too.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"

namespace tavi {

class XIO;
class XBuffer;

// State bits of a title text.
inline constexpr uint32_t kTitleAttached = 0x80000000u;   // text not owned, never freed here
inline constexpr uint32_t kTitleTruncated = 0x40000000u;  // shown shortened
inline constexpr uint32_t kTitleBold = 0x20000000u;       // shown in bold
inline constexpr uint32_t kTitleAlignMask = 0x03000000u;  // alignment field
inline constexpr uint32_t kTitleAlignLeft = 0x00000000u;
inline constexpr uint32_t kTitleAlignRight = 0x01000000u;
inline constexpr uint32_t kTitleAlignCenter = 0x02000000u;
inline constexpr uint32_t kTitleAlignMultiLine = 0x03000000u;
inline constexpr uint32_t kTitleOwnerMask = 0x00FFFFFFu;  // free for the owner's flags

// TTitleTextBase is a wide text that is owned or attached, plus a state word.
//
// Members (public, in this order): state (the bits above), size (text length in
// bytes, 2 per code unit, without terminator) and text (null when empty). A text the
// object made itself (a copy, an allocation, a read) is owned, lives on the C heap
// (std::malloc family) and is zero-terminated after size bytes. An attached text is
// somebody else's: it is never freed, grown or written through by this object, and
// need not be terminated.
//
// The destructor of the base does nothing: a bare TTitleTextBase never frees its
// text (TTitleText does). Copy construction copies the three members as they are, so
// a copied owned text is owned twice; use Set or Assume when ownership matters.
// Assignment is Set with attach = whether the source is attached: an attached source
// is shared, an owning source is copied. Moving takes the text and leaves the source
// empty, so containers of titles can relocate them without double frees.
//
// No operation keeps an error: failures return false. Allocation failures leave the
// text as it was unless an operation says otherwise.
class TAVI_API TTitleTextBase {
 public:
  TTitleTextBase() = default;
  TTitleTextBase(const TTitleTextBase& other) = default;
  TTitleTextBase(TTitleTextBase&& other) noexcept;
  TTitleTextBase& operator=(const TTitleTextBase& other);
  TTitleTextBase& operator=(TTitleTextBase&& other) noexcept;
  virtual ~TTitleTextBase();

  // Read takes bytes from source as the new owned text: AllocBuffer(bytes) (failure,
  // including bytes 0: error 0x20000001 in source, false), then one read of bytes. When
  // any byte arrived the text is terminated at the requested size (bytes that did not
  // arrive are zero) and true is returned; a short read is not reported here. Cost:
  // one allocation of bytes + 2, so callers bound bytes before calling.
  virtual bool Read(XIO& source, uint32_t bytes);

  // --- Queries -------------------------------------------------------------------
  uint32_t Len() const { return size / 2; }
  // SizeSafe is title's size, or 0 for a null title.
  static uint32_t SizeSafe(const TTitleTextBase* title) {
    return title != nullptr ? title->size : 0;
  }
  bool IsEmpty() const { return size == 0; }
  bool IsAttached() const { return (state & kTitleAttached) != 0; }
  bool IsTruncated() const { return (state & kTitleTruncated) != 0; }
  bool IsBold() const { return (state & kTitleBold) != 0; }
  uint32_t GetAllignment() const { return state & kTitleAlignMask; }
  bool IsLeftAligned() const { return GetAllignment() == kTitleAlignLeft; }
  bool IsRightAligned() const { return GetAllignment() == kTitleAlignRight; }
  bool IsCenterAligned() const { return GetAllignment() == kTitleAlignCenter; }
  bool IsMultilineAligned() const { return GetAllignment() == kTitleAlignMultiLine; }
  uint32_t StateIsAny(uint32_t mask) const { return state & mask; }
  bool StateIsNotAny(uint32_t mask) const { return (state & mask) == 0; }

  // --- State setters (any mask, the attached bit included) ------------------------
  void StateAdd(uint32_t mask) { state |= mask; }
  void StateClean(uint32_t mask) { state &= ~mask; }
  void StateSet(uint32_t mask, bool on) { on ? StateAdd(mask) : StateClean(mask); }
  void SetIsTruncated(bool on) { StateSet(kTitleTruncated, on); }
  void BoldSet(bool on) { StateSet(kTitleBold, on); }
  // AlignSet clears the alignment field, then ORs alignment in unmasked: bits outside
  // the field are set too.
  void AlignSet(uint32_t alignment) { state = (state & ~kTitleAlignMask) | alignment; }
  void MultiLineSet(bool on) { AlignSet(on ? kTitleAlignMultiLine : kTitleAlignLeft); }
  // DiscardOwnership marks the text attached: it will not be freed by this object.
  void DiscardOwnership() { state |= kTitleAttached; }

  // --- Text operations -----------------------------------------------------------

  // Set(text, bytes, attach): with attach and a text, the own text is released (freed
  // if owned) and the object points at text with size bytes, attached; true. Without
  // attach, a text and a non-zero size are copied into a new owned, terminated block
  // (false, unchanged, when memory runs out). A null text or a size of 0 releases the
  // own text and leaves an empty title (text null, size 0, attached bit unchanged);
  // the result is then true only when bytes was 0. The source may lie inside the own
  // text.
  bool Set(const char16_t* text, uint32_t bytes, bool attach);
  // Set(begin, end) copies the range (byte distance rounded down to even); false when
  // either pointer is null or end lies before begin.
  bool Set(const char16_t* begin, const char16_t* end);
  // Set(texts) copies the concatenation of a null-terminated list of terminated texts.
  bool Set(const char16_t* const* texts);
  // Set(other, attach) copies or attaches other's text.
  bool Set(const TTitleTextBase& other, bool attach);
  // Set(buffer, attach) copies or attaches the buffer's data (block and buffer
  // position); Set(buffer) attaches when the buffer is attached, else copies.
  bool Set(const XBuffer& buffer, bool attach);
  bool Set(const XBuffer& buffer);
  // Attach releases the own text and points at other's text and size, attached; true.
  bool Attach(const TTitleTextBase& other);
  // AllocBuffer makes room for bytes plus a terminator. bytes 0: false. An attached
  // text is forgotten (not freed) and the object becomes owning; size becomes 0 and the
  // own block is reallocated to bytes + 2 (contents kept); false when that fails.
  bool AllocBuffer(uint32_t bytes);
  // ReserveMem is AllocBuffer, then size := bytes and a terminator after them; the
  // content is uninitialised.
  bool ReserveMem(uint32_t bytes);
  // SetSize / SetLen only shorten: a new size not below the present one gives false
  // and changes nothing. Otherwise size := the new size and, for an owned text, a
  // terminator is stored there (an attached text is never written to).
  bool SetSize(uint32_t bytes);
  bool SetLen(uint32_t chars);
  // EmptyString frees an owned text and leaves an empty title marked attached.
  void EmptyString();
  // Free frees an owned text; text null, size 0; the attached bit stays as it was.
  void Free();
  // Clean frees an owned text and touches nothing else: text still holds the freed
  // pointer. Only for use just before destruction or overwriting.
  void Clean();
  // Discard forgets the text (null, size 0) without freeing it.
  void Discard() {
    text = nullptr;
    size = 0;
  }
  // Assume(other) releases the own text and takes other's text and size. If other
  // owned the text this object now owns it and other becomes attached (it keeps
  // pointing at the text); if other was attached both are attached.
  void Assume(TTitleTextBase& other);
  // Assume(buffer) takes over the buffer's data the same way: an owned block becomes
  // this object's (terminated after the data) and the buffer gives up its ownership
  // (DiscardBufferOwnership: it keeps pointing at the block). The block must come from
  // the C heap, as the blocks of XBuffer, XString16 and XString8 do.
  void Assume(XBuffer& buffer);
  // Assume(text, bytes) frees an owned text and takes text and size; the attached bit
  // is unchanged, so an attached object stays attached and will not free text.
  void Assume(char16_t* text, uint32_t bytes);

  // --- Window text and clipboard, through the user-interface table ----------------

  // WndTextGet / DlgItmTextGet make a window's or dialog item's text the owned text;
  // WndTextSet / DlgItmTextSet give the text to it. False when the host fails.
  bool WndTextGet(XWindow window);
  bool DlgItmTextGet(XWindow dialog, int32_t item);
  bool WndTextSet(XWindow window);
  bool DlgItmTextSet(XWindow dialog, int32_t item);
  // WndGetTextLength is the window text's length in code units, WndGetTextSize in bytes.
  uint32_t WndGetTextLength(XWindow window);
  uint32_t WndGetTextSize(XWindow window);
  // CopyToClipboard puts the text (terminated) on the clipboard as UTF-16 text.
  bool CopyToClipboard(XWindow owner);

  uint32_t state = 0;
  uint32_t size = 0;
  char16_t* text = nullptr;

 protected:
  // Frees the text when it is owned; touches no member.
  void FreeOwned();
  // Frees an owned text unless it is keep; text null, size 0.
  void ReleaseUnless(const char16_t* keep);
  // Stores a 0 code unit after size bytes of an owned text.
  void Terminate();
};

// TTitleText is a TTitleTextBase whose destructor frees an owned text.
class TAVI_API TTitleText : public TTitleTextBase {
 public:
  TTitleText() = default;
  TTitleText(const TTitleText& other) = default;
  TTitleText(TTitleText&& other) noexcept = default;
  TTitleText& operator=(const TTitleText& other);
  TTitleText& operator=(const TTitleTextBase& other);
  TTitleText& operator=(TTitleText&& other) noexcept;
  ~TTitleText() override;
};

// Comparison callbacks for sorting and searching collections of titles. Arguments are
// pointers to TTitleTextBase or to terminated UTF-16 texts, as the names say. Order is
// the user's locale (linguistic, case-sensitive) through the platform collator: -1, 0
// or 1. A missing text (null text pointer, or a null argument) is smaller than any
// present text, two missing texts are equal.
TAVI_API int CompareTitleText(const void* a, const void* b);
TAVI_API int CompareTitleChars(const void* chars, const void* title);
// The prefix forms compare only a's first Len(a) characters (or the first bytes / 2
// characters of chars) with as many leading characters of the title.
TAVI_API int ComparePrefixTitleText(const void* a, const void* b);
TAVI_API int ComparePrefixTitleChars(const void* chars, const void* title, const void* bytes);
// The check forms are true when both texts are missing, false when one is, else
// whether the collator finds them equal.
TAVI_API bool CheckTitleText(const void* a, const void* b);
TAVI_API bool CheckTitleChars(const void* title, const void* chars);

}  // namespace tavi
