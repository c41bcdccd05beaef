//===- string_resource_coll.h - String tables filled from language files -*- C++ -*-===//
//
// This file defines TStringResourceColl, an ID-sorted table of texts,
// TTextFileStringResource, which fills it from a language file, and
// TTextFileStringResourceHeap, which keeps a whole language in one XPrivateHeap so that
// it can be dropped at once.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>

#include "tavi/coll/collection.h"
#include "tavi/export.h"
#include "tavi/resource/string_resource.h"

namespace tavi {

class XString16;

// XPrivateHeap is a heap of the library's own that tracks its blocks: destroying it
// frees every block still allocated from it. Alloc and Realloc return null when
// memory runs out; Free and Realloc find the owning heap from the block itself.
// Blocks are aligned for any type. Safe to use from several threads.
class TAVI_API XPrivateHeap {
 public:
  XPrivateHeap() = default;
  XPrivateHeap(const XPrivateHeap&) = delete;
  XPrivateHeap& operator=(const XPrivateHeap&) = delete;
  ~XPrivateHeap();

  void* Alloc(size_t bytes);
  // Realloc of null allocates; the contents are kept up to the smaller size.
  void* Realloc(void* block, size_t bytes);
  // Free of null does nothing.
  static void Free(void* block);
  // The number of blocks allocated and not freed.
  size_t BlockCount() const;

 private:
  struct Block;
  mutable std::mutex mutex_;
  Block* first_ = nullptr;
  size_t count_ = 0;
};

// One string of a table: ID, size of the text in bytes (terminator not counted), then
// the UTF-16 text and a zero terminator in the same allocation (8 + size + 2 bytes).
struct TResourceStringItem {
  int32_t ID;
  uint32_t Size;
  char16_t* Text() { return reinterpret_cast<char16_t*>(this + 1); }
  const char16_t* Text() const { return reinterpret_cast<const char16_t*>(this + 1); }
};
static_assert(sizeof(TResourceStringItem) == 8);

// TStringResourceColl holds TResourceStringItem pointers sorted by ascending ID
// (growth step 32). Lookups binary-search and are not locked; AddResource is
// serialised by a mutex, so concurrent misses (which add placeholders) are safe, but
// loading while other threads look up is not. A miss in Get, Write or Attach adds the
// placeholder "??? SID=<id> ???" and returns it, so a text is never null.
//
// Write(out, id) writes one string; it hides the collection's Write(out) on purpose
// (reach that through XCollection&).
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Woverloaded-virtual"
#endif
class TAVI_API TStringResourceColl : public TStringResource, public XCollection {
 public:
  TStringResourceColl() = default;
  TStringResourceColl(const TStringResourceColl&) = delete;
  TStringResourceColl& operator=(const TStringResourceColl&) = delete;
  ~TStringResourceColl() override;

  const char16_t* _Get(int32_t id) override;
  bool _Write(XIO& out, int32_t id) override;
  bool _SetBuffer(XBuffer& buffer, int32_t id) override;
  bool _Attach(TTitleTextBase& title, int32_t id) override;
  using TStringResource::Attach;

  // Alloc makes an uninitialised item for a text of size bytes; false without memory.
  virtual bool Alloc(TResourceStringItem** item, uint32_t size);
  // AddResource is _AddResource(id, text, size) under the mutex.
  virtual TResourceStringItem* AddResource(int32_t id, const char16_t* text, uint32_t size);
  // Get returns the text of id, adding the placeholder on a miss ("???" only when even
  // that cannot be added).
  virtual const char16_t* Get(int32_t id);
  // Write writes the text of id (or its placeholder) to out.
  virtual bool Write(XIO& out, int32_t id);
  // Attach attaches count consecutive items, starting with the item of first_id, to
  // count title texts stride bytes apart. False when first_id is missing or count is
  // 0; fewer items than count after first_id attach what there is and give false.
  virtual bool Attach(TTitleTextBase* titles, int32_t first_id, uint32_t count, uint32_t stride);

  // _AddResource copies a text (zero-terminated, [begin, end) or size bytes) into a
  // new item and inserts it in ID order, without locking. Null for an empty text, no
  // memory, or an ID already present: a duplicate shows "Duplicated ID: <id>\r\n\r\n
  // <text>" in a "Resource string error" message box and the first text stays.
  TResourceStringItem* _AddResource(int32_t id, const char16_t* text);
  TResourceStringItem* _AddResource(int32_t id, const char16_t* begin, const char16_t* end);
  TResourceStringItem* _AddResource(int32_t id, const char16_t* text, uint32_t size);

  // _GetResourceStringIndex returns the index of id, or kNoIndex.
  uint32_t _GetResourceStringIndex(int32_t id) const;
  TResourceStringItem* _ResourceStringItem(uint32_t index) const {
    return static_cast<TResourceStringItem*>(Items[index]);
  }
  // _GetResourceString returns the item of id or null, without locking: only for a
  // table no other thread adds to. GetResourceString looks up and, on a miss, adds
  // the placeholder under the adding lock, so threads may share one table (null only
  // when memory runs out).
  TResourceStringItem* _GetResourceString(int32_t id) const;
  TResourceStringItem* GetResourceString(int32_t id);

 protected:
  void FreeItem(void* item) override;

 private:
  std::mutex mutex_;
};
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

// What the loader made of one line of a language file.
enum class XLanguageLineVerdict : uint8_t {
  kComment,        // not a definition: no leading digit
  kDigitsComment,  // begins with digits not followed directly by '=': also a comment
  kAdded,          // a string, now in the table
  kIdOutOfRange,   // ID 0 or above 2147483646: refused, fails the load
  kEmptyValue,     // nothing left after unquoting: refused, fails the load
  kDuplicate,      // ID already in the table: refused (the first text stays), fails the load
  kNotStored,      // the table could not take it (no memory): fails the load
};

// XLanguageFileLine describes one line as the loader read it. The pointers are into
// the buffer being parsed and valid only during the call that hands the line over.
struct XLanguageFileLine {
  uint32_t number;  // 1 for the first line
  XLanguageLineVerdict verdict;
  int32_t id;              // 0 for comments; 0x7FFFFFFF for any ID above the range
  const char16_t* digits;  // the ID as written (after a definition's digits, '=')
  uint32_t digit_count;    // in code units; 0 for comments
  const char16_t* value;   // the decoded value (definitions), not terminated
  uint32_t value_units;    // its length in code units
};

// Receives each line of a language file in order, with its verdict.
using XLanguageLineSink = void (*)(void* context, const XLanguageFileLine& line);

// TTextFileStringResource fills the table from a language file.
//
// A language file is text in any encoding the text-file loader reads, of lines ended
// by LF (a CR before it is dropped; the last line needs no end). Only lines that
// begin with a decimal digit define strings: "<id>=<value>" with the ID in 1 ..
// 2147483646 and "=" right after the digits; every other line is a comment. A value
// that starts with '"' and has a later '"' is the text between the first and the last
// quote (that is how leading and trailing spaces are kept). Then \\, \n, \r and \t are
// decoded; a backslash before anything else stays. An ID out of range, an empty value
// or a line that cannot be stored (a duplicate, no memory) fails the load; the other
// lines still load.
class TAVI_API TTextFileStringResource : public TStringResourceColl {
 public:
  // AddResources parses the UTF-16 text of buffer (its data, consumed: the parse
  // rewrites it in place). True when no line failed and the table is not empty.
  // When sink is given, it is handed every line with the verdict the parse reached
  // (a duplicate also shows its message box, as without a sink).
  bool AddResources(XBuffer& buffer, XLanguageLineSink sink = nullptr, void* context = nullptr);
  // LoadTextFile reads the language file path (its encoding from a byte-order mark,
  // UTF-8 without one) into buffer and adds its strings. False when the file cannot be read (the
  // error is in path and in buffer) or a line failed. sink sees the lines as above.
  bool LoadTextFile(XBuffer& buffer, XString16& path, XLanguageLineSink sink = nullptr,
                    void* context = nullptr);
  bool LoadTextFile(XString16& path);
  // LoadLanguageFile loads the file of a language: it finds "<folder>/<name>.<tag>.lng"
  // with XFindLanguageFile (the tag as given, then with its last subtag taken off
  // again and again, last "en"; a null or empty tag means the user's, from the
  // environment) and loads it as LoadTextFile does. path receives the name found. False
  // when no file exists (path holds the last name tried and the platform's error),
  // when the file cannot be read (the error in path and buffer) or when a line failed.
  bool LoadLanguageFile(XBuffer& buffer, XString16& path, const char16_t* folder,
                        const char16_t* name, const char16_t* tag = nullptr);
  bool LoadLanguageFile(XString16& path, const char16_t* folder, const char16_t* name,
                        const char16_t* tag = nullptr);
  // LoadTextFileMsg also shows a failure to read the file to the user.
  bool LoadTextFileMsg(XString16& path, XWindow owner);

  // _AddFileResource decodes one value (quotes, escapes; rewriting it in place) and
  // adds it; null when the decoded value is empty or cannot be added.
  TResourceStringItem* _AddFileResource(int32_t id, char16_t* text, uint32_t size);
  TResourceStringItem* _AddFileResource(int32_t id, char16_t* text);
  TResourceStringItem* _AddFileResource(int32_t id, char16_t* begin, char16_t* end);
};

// TTextFileStringResourceHeap keeps its items and slot array in a caller's heap, and
// is itself made there with new (heap) TTextFileStringResourceHeap(heap); delete
// returns it to that heap. Destroying the heap instead drops the whole language at
// once (without running the destructor).
class TAVI_API TTextFileStringResourceHeap : public TTextFileStringResource {
 public:
  explicit TTextFileStringResourceHeap(XPrivateHeap* heap) : heap_(heap) {}
  ~TTextFileStringResourceHeap() override;

  static void* operator new(size_t size, XPrivateHeap* heap);
  static void operator delete(void* block);
  // Matches the placement form, used when a constructor throws.
  static void operator delete(void* block, XPrivateHeap* heap);

  XPrivateHeap* GetHeap() const { return heap_; }
  // Heap memory for the object's users. MemAlloc and MemRealloc (which allocates for
  // a null block) set *block and return false, block unchanged, without memory.
  bool MemAlloc(void** block, uint32_t size);
  bool MemRealloc(void** block, uint32_t size);
  // MemFree frees block; true (also for null).
  bool MemFree(void* block);

  bool Alloc(TResourceStringItem** item, uint32_t size) override;
  uint32_t SetItemsDim(uint32_t n) override;

 protected:
  void FreeItem(void* item) override;

 private:
  XPrivateHeap* heap_;
};

}  // namespace tavi
