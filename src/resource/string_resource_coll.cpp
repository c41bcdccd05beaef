//===- string_resource_coll.cpp - String tables filled from language files -===//
//
// The private heap, the ID-sorted string table and the language-file parser.
//
//===----------------------------------------------------------------------===//
#include "tavi/resource/string_resource_coll.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "core/internal/ui.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/file/file.h"
#include "tavi/io/stream.h"
#include "tavi/text/language.h"
#include "tavi/text/text_file.h"

namespace tavi {

// --- XPrivateHeap ----------------------------------------------------------------------

// Every block carries a header that links it into its heap's list.
struct alignas(std::max_align_t) XPrivateHeap::Block {
  XPrivateHeap* heap;
  Block* prev;
  Block* next;
};

XPrivateHeap::~XPrivateHeap() {
  for (Block* b = first_; b != nullptr;) {
    Block* next = b->next;
    std::free(b);
    b = next;
  }
}

void* XPrivateHeap::Alloc(size_t bytes) {
  if (bytes > SIZE_MAX - sizeof(Block)) return nullptr;
  auto* b = static_cast<Block*>(std::malloc(sizeof(Block) + bytes));
  if (b == nullptr) return nullptr;
  std::lock_guard lock(mutex_);
  b->heap = this;
  b->prev = nullptr;
  b->next = first_;
  if (first_ != nullptr) first_->prev = b;
  first_ = b;
  ++count_;
  return b + 1;
}

void* XPrivateHeap::Realloc(void* block, size_t bytes) {
  if (block == nullptr) return Alloc(bytes);
  if (bytes > SIZE_MAX - sizeof(Block)) return nullptr;
  Block* b = static_cast<Block*>(block) - 1;
  XPrivateHeap* heap = b->heap;
  std::lock_guard lock(heap->mutex_);
  auto* grown = static_cast<Block*>(std::realloc(b, sizeof(Block) + bytes));
  if (grown == nullptr) return nullptr;
  if (grown->prev != nullptr)
    grown->prev->next = grown;
  else
    heap->first_ = grown;
  if (grown->next != nullptr) grown->next->prev = grown;
  return grown + 1;
}

void XPrivateHeap::Free(void* block) {
  if (block == nullptr) return;
  Block* b = static_cast<Block*>(block) - 1;
  XPrivateHeap* heap = b->heap;
  {
    std::lock_guard lock(heap->mutex_);
    if (b->prev != nullptr)
      b->prev->next = b->next;
    else
      heap->first_ = b->next;
    if (b->next != nullptr) b->next->prev = b->prev;
    --heap->count_;
  }
  std::free(b);
}

size_t XPrivateHeap::BlockCount() const {
  std::lock_guard lock(mutex_);
  return count_;
}

// --- TStringResourceColl ---------------------------------------------------------------

namespace {

constexpr char16_t kDuplicateCaption[] = u"Resource string error";

uint32_t Length(const char16_t* text) {
  uint32_t n = 0;
  while (text[n] != 0) ++n;
  return n;
}

// Appends the decimal digits of value to out; returns the end.
char16_t* PutDecimal(char16_t* out, int32_t value) {
  uint32_t v = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
  if (value < 0) *out++ = u'-';
  char16_t digits[10];
  int n = 0;
  do {
    digits[n++] = static_cast<char16_t>(u'0' + v % 10);
    v /= 10;
  } while (v != 0);
  while (n > 0) *out++ = digits[--n];
  return out;
}

void ShowDuplicate(int32_t id, const char16_t* text, uint32_t size) {
  constexpr char16_t kPrefix[] = u"Duplicated ID: ";
  XBuffer message;
  char16_t number[12];
  char16_t* end = PutDecimal(number, id);
  if (!message.Add(kPrefix) || !message.Add(number, end) || !message.Add(u"\r\n\r\n") ||
      !message.Add(text, size)) {
    return;
  }
  internal::UI (&XUserInterface::message_box)(nullptr,
                                              static_cast<const char16_t*>(message.GetBuffer()),
                                              kDuplicateCaption, kMbOk | kMbIconError);
}

}  // namespace

TStringResourceColl::~TStringResourceColl() {
  FreeAll();
}

bool TStringResourceColl::Alloc(TResourceStringItem** item, uint32_t size) {
  *item = static_cast<TResourceStringItem*>(std::malloc(size_t{size} + 10));
  return *item != nullptr;
}

void TStringResourceColl::FreeItem(void* item) {
  std::free(item);
}

TResourceStringItem* TStringResourceColl::_AddResource(int32_t id, const char16_t* text) {
  return _AddResource(id, text, Length(text) * 2);
}

TResourceStringItem* TStringResourceColl::_AddResource(int32_t id, const char16_t* begin,
                                                       const char16_t* end) {
  return _AddResource(id, begin, static_cast<uint32_t>(end - begin) * 2);
}

TResourceStringItem* TStringResourceColl::_AddResource(int32_t id, const char16_t* text,
                                                       uint32_t size) {
  size &= ~1u;
  if (size == 0 || size > 0xFFFFFFFFu - 10) return nullptr;
  TResourceStringItem* item;
  if (!Alloc(&item, size)) return nullptr;
  item->ID = id;
  item->Size = size;
  std::memcpy(item->Text(), text, size);
  item->Text()[size / 2] = 0;
  // Files sorted by ID append, so they load in linear time.
  if (Count == 0 || _ResourceStringItem(Count - 1)->ID < id) {
    if (Insert(item) != kNoIndex) return item;
    FreeItem(item);
    return nullptr;
  }
  uint32_t lo = 0, hi = Count;
  while (lo < hi) {
    uint32_t mid = lo + (hi - lo) / 2;
    if (_ResourceStringItem(mid)->ID < id)
      lo = mid + 1;
    else
      hi = mid;
  }
  if (_ResourceStringItem(lo)->ID == id) {
    ShowDuplicate(id, item->Text(), size);
    FreeItem(item);
    return nullptr;
  }
  if (AtInsert(lo, item)) return item;
  FreeItem(item);
  return nullptr;
}

TResourceStringItem* TStringResourceColl::AddResource(int32_t id, const char16_t* text,
                                                      uint32_t size) {
  std::lock_guard lock(mutex_);
  return _AddResource(id, text, size);
}

uint32_t TStringResourceColl::_GetResourceStringIndex(int32_t id) const {
  uint32_t lo = 0, hi = Count;
  while (lo < hi) {
    uint32_t mid = lo + (hi - lo) / 2;
    int32_t mid_id = _ResourceStringItem(mid)->ID;
    if (mid_id == id) return mid;
    if (mid_id < id)
      lo = mid + 1;
    else
      hi = mid;
  }
  return kNoIndex;
}

TResourceStringItem* TStringResourceColl::_GetResourceString(int32_t id) const {
  uint32_t index = _GetResourceStringIndex(id);
  return index == kNoIndex ? nullptr : _ResourceStringItem(index);
}

TResourceStringItem* TStringResourceColl::GetResourceString(int32_t id) {
  // The lookup holds the lock that adding takes: a miss elsewhere inserts, which may
  // move the item array under a reader.
  std::lock_guard lock(mutex_);
  if (TResourceStringItem* item = _GetResourceString(id)) return item;
  char16_t text[32] = u"??? SID=";
  char16_t* end = PutDecimal(text + 8, id);
  for (const char16_t* s = u" ???"; *s != 0; ++s) *end++ = *s;
  return _AddResource(id, text, static_cast<uint32_t>(end - text) * 2);
}

const char16_t* TStringResourceColl::_Get(int32_t id) {
  TResourceStringItem* item = _GetResourceString(id);
  return item != nullptr ? item->Text() : nullptr;
}

const char16_t* TStringResourceColl::Get(int32_t id) {
  TResourceStringItem* item = GetResourceString(id);
  return item != nullptr ? item->Text() : kMissingStringText;
}

bool TStringResourceColl::_Write(XIO& out, int32_t id) {
  TResourceStringItem* item = _GetResourceString(id);
  return item != nullptr && out._Write(item->Text(), item->Size);
}

bool TStringResourceColl::Write(XIO& out, int32_t id) {
  TResourceStringItem* item = GetResourceString(id);
  if (item == nullptr) return out._Write(kMissingStringText, sizeof kMissingStringText - 2);
  return out._Write(item->Text(), item->Size);
}

bool TStringResourceColl::_SetBuffer(XBuffer& buffer, int32_t id) {
  TResourceStringItem* item = _GetResourceString(id);
  if (item == nullptr) return false;
  buffer.ResetBufferPos();
  return buffer.Add(item->Text(), item->Size);
}

bool TStringResourceColl::_Attach(TTitleTextBase& title, int32_t id) {
  TResourceStringItem* item = _GetResourceString(id);
  return item != nullptr && title.Set(item->Text(), item->Size, true);
}

bool TStringResourceColl::Attach(TTitleTextBase* titles, int32_t first_id, uint32_t count,
                                 uint32_t stride) {
  uint32_t index = _GetResourceStringIndex(first_id);
  if (index == kNoIndex || count == 0) return false;
  auto* at = reinterpret_cast<unsigned char*>(titles);
  for (uint32_t i = 0; i < count; ++i, at += stride) {
    if (index + i >= Count) return false;
    TResourceStringItem* item = _ResourceStringItem(index + i);
    if (!reinterpret_cast<TTitleTextBase*>(at)->Set(item->Text(), item->Size, true)) return false;
  }
  return true;
}

// --- TTextFileStringResource -----------------------------------------------------------

namespace {

// DecodeValue unquotes and unescapes the value [*begin, *end) in place and narrows the
// range to the result. A quoted value runs to the last quote of the line; anything
// after that quote is dropped.
void DecodeValue(char16_t*& begin, char16_t*& end) {
  if (end - begin >= 2 && *begin == u'"') {
    for (char16_t* q = end - 1; q > begin; --q) {
      if (*q == u'"') {
        ++begin;
        end = q;
        break;
      }
    }
  }
  char16_t* out = begin;
  for (char16_t* in = begin; in < end; ++in) {
    char16_t c = *in;
    if (c == u'\\' && in + 1 < end) {
      switch (in[1]) {
        case u'\\':
          c = u'\\';
          ++in;
          break;
        case u'n':
          c = u'\n';
          ++in;
          break;
        case u'r':
          c = u'\r';
          ++in;
          break;
        case u't':
          c = u'\t';
          ++in;
          break;
        default:
          break;
      }
    }
    *out++ = c;
  }
  end = out;
}

}  // namespace

TResourceStringItem* TTextFileStringResource::_AddFileResource(int32_t id, char16_t* begin,
                                                               char16_t* end) {
  DecodeValue(begin, end);
  if (end == begin) return nullptr;
  return AddResource(id, begin, static_cast<uint32_t>(end - begin) * 2);
}

TResourceStringItem* TTextFileStringResource::_AddFileResource(int32_t id, char16_t* text,
                                                               uint32_t size) {
  return _AddFileResource(id, text, text + size / 2);
}

TResourceStringItem* TTextFileStringResource::_AddFileResource(int32_t id, char16_t* text) {
  return _AddFileResource(id, text, text + Length(text));
}

bool TTextFileStringResource::AddResources(XBuffer& buffer, XLanguageLineSink sink, void* context) {
  auto* p = static_cast<char16_t*>(buffer.GetBuffer());
  char16_t* const text_end = p == nullptr ? p : p + buffer.GetBufferPos() / 2;
  bool ok = true;
  for (uint32_t number = 1; p < text_end; ++number) {
    char16_t* line_end = p;
    while (line_end < text_end && *line_end != u'\n') ++line_end;
    char16_t* next = line_end < text_end ? line_end + 1 : line_end;
    if (line_end > p && line_end[-1] == u'\r') --line_end;
    XLanguageFileLine line{number, XLanguageLineVerdict::kComment, 0, p, 0, nullptr, 0};
    if (*p >= u'0' && *p <= u'9') {
      // The ID saturates at 0x7FFFFFFF, one above the range; the 64-bit step keeps
      // the multiplication from wrapping back into the range on long digit runs.
      uint32_t id = 0;
      char16_t* q = p;
      for (; q < line_end && *q >= u'0' && *q <= u'9'; ++q) {
        const uint64_t next = uint64_t{id} * 10 + static_cast<uint32_t>(*q - u'0');
        id = next > 0x7FFFFFFEu ? 0x7FFFFFFFu : static_cast<uint32_t>(next);
      }
      line.id = static_cast<int32_t>(id);
      line.digit_count = static_cast<uint32_t>(q - p);
      if (q == line_end || *q != u'=') {
        line.verdict = XLanguageLineVerdict::kDigitsComment;
      } else {
        char16_t* begin = q + 1;
        char16_t* end = line_end;
        DecodeValue(begin, end);
        if (id == 0 || id > 0x7FFFFFFEu) {
          line.verdict = XLanguageLineVerdict::kIdOutOfRange;
        } else if (begin == end) {
          line.verdict = XLanguageLineVerdict::kEmptyValue;
        } else if (AddResource(line.id, begin, static_cast<uint32_t>(end - begin) * 2) != nullptr) {
          line.verdict = XLanguageLineVerdict::kAdded;
        } else {
          // Adding refuses a duplicate (the first text stays) or runs out of memory.
          line.verdict = _GetResourceString(line.id) != nullptr ? XLanguageLineVerdict::kDuplicate
                                                                : XLanguageLineVerdict::kNotStored;
        }
        if (line.verdict != XLanguageLineVerdict::kAdded) ok = false;
        line.value = begin;
        line.value_units = static_cast<uint32_t>(end - begin);
      }
    }
    if (sink != nullptr) sink(context, line);
    p = next;
  }
  return ok && Count != 0;
}

bool TTextFileStringResource::LoadTextFile(XBuffer& buffer, XString16& path, XLanguageLineSink sink,
                                           void* context) {
  if (buffer.XBuffer::LoadTextFile(path, kTextUtf8, kTextUtf16, kFileRead | kFileShareRead) == 0) {
    buffer.ImportErrorCode(path);
    return false;
  }
  return AddResources(buffer, sink, context);
}

bool TTextFileStringResource::LoadTextFile(XString16& path) {
  XBuffer buffer;
  return LoadTextFile(buffer, path);
}

bool TTextFileStringResource::LoadLanguageFile(XBuffer& buffer, XString16& path,
                                               const char16_t* folder, const char16_t* name,
                                               const char16_t* tag) {
  if (!XFindLanguageFile(path, folder, name, tag)) {
    buffer.ImportErrorCode(path);
    return false;
  }
  // The search leaves the error of each name it tried and did not find; only the
  // outcome of loading the name found counts now.
  path.ResetError();
  return LoadTextFile(buffer, path);
}

bool TTextFileStringResource::LoadLanguageFile(XString16& path, const char16_t* folder,
                                               const char16_t* name, const char16_t* tag) {
  XBuffer buffer;
  return LoadLanguageFile(buffer, path, folder, name, tag);
}

bool TTextFileStringResource::LoadTextFileMsg(XString16& path, XWindow owner) {
  XBuffer buffer;
  if (buffer.XBuffer::LoadTextFileMsg(path, kTextUtf8, kTextUtf16, kFileRead | kFileShareRead,
                                      owner) == 0) {
    return false;
  }
  return AddResources(buffer);
}

// --- TTextFileStringResourceHeap -------------------------------------------------------

TTextFileStringResourceHeap::~TTextFileStringResourceHeap() {
  // Items and slot array live in the heap; the base destructor then finds nothing.
  FreeAll();
  XPrivateHeap::Free(Items);
  Items = nullptr;
  ItemsDim = 0;
}

void* TTextFileStringResourceHeap::operator new(size_t size, XPrivateHeap* heap) {
  void* block = heap->Alloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void TTextFileStringResourceHeap::operator delete(void* block) {
  XPrivateHeap::Free(block);
}

void TTextFileStringResourceHeap::operator delete(void* block, XPrivateHeap*) {
  XPrivateHeap::Free(block);
}

bool TTextFileStringResourceHeap::MemAlloc(void** block, uint32_t size) {
  void* b = heap_->Alloc(size);
  if (b == nullptr) return false;
  *block = b;
  return true;
}

bool TTextFileStringResourceHeap::MemRealloc(void** block, uint32_t size) {
  void* b = *block == nullptr ? heap_->Alloc(size) : heap_->Realloc(*block, size);
  if (b == nullptr) return false;
  *block = b;
  return true;
}

bool TTextFileStringResourceHeap::MemFree(void* block) {
  XPrivateHeap::Free(block);
  return true;
}

bool TTextFileStringResourceHeap::Alloc(TResourceStringItem** item, uint32_t size) {
  *item = static_cast<TResourceStringItem*>(heap_->Alloc(size_t{size} + 10));
  return *item != nullptr;
}

void TTextFileStringResourceHeap::FreeItem(void* item) {
  XPrivateHeap::Free(item);
}

uint32_t TTextFileStringResourceHeap::SetItemsDim(uint32_t n) {
  if (ItemsDim >= n) return ItemsDim;
  uint64_t dim = n;
  if (Delta != 0) dim = uint64_t{n} + (Delta - n % Delta);
  if (dim > 0xFFFFFFFFu) return 0;
  void* grown = Items == nullptr ? heap_->Alloc(static_cast<size_t>(dim) * sizeof(void*))
                                 : heap_->Realloc(Items, static_cast<size_t>(dim) * sizeof(void*));
  if (grown == nullptr) return 0;
  Items = static_cast<void**>(grown);
  ItemsDim = static_cast<uint32_t>(dim);
  return ItemsDim;
}

}  // namespace tavi
