//===- buffer_text.cpp - Wide-text members of the growable buffer ----------===//
//
// The text members see the data as UTF-16 code units from byte 0 to the data end
// and keep a 0 code unit after the data, not counted in it.
//
//===----------------------------------------------------------------------===//
#include <cstring>
#include <string>

#include "core/internal/text_util.h"
#include "platform/errors.h"
#include "platform/locale.h"
#include "platform/module.h"
#include "tavi/core/buffer.h"
#include "tavi/core/title_text.h"
#include "tavi/resource/string_resource.h"

namespace tavi {

namespace {

constexpr char16_t kCR = u'\r';
constexpr char16_t kLF = u'\n';

}  // namespace

bool XBuffer::EmptyString() {
  if (allocated_ == 0 || buffer_ == nullptr) {
    if (attached_ != 0) return false;
    if (!AllocBuffer(1)) {
      SetSafeErrorCode(kErrNoMemory);
      return false;
    }
  }
  buffer_pos_ = 0;
  ClampCurrentPos();
  *reinterpret_cast<char16_t*>(buffer_) = 0;
  return true;
}

bool XBuffer::EndAsString() {
  static constexpr char16_t kZero = 0;
  if (!_Write(&kZero, 2)) return false;
  buffer_pos_ -= 2;
  return true;
}

void XBuffer::_EndAsString() {
  std::memset(buffer_ + buffer_pos_, 0, 2);
}

int32_t XBuffer::RemoveEndChars(char16_t c) {
  int32_t removed = 0;
  if (buffer_pos_ < 3) return 0;
  while (buffer_pos_ > 2) {
    char16_t last;
    std::memcpy(&last, buffer_ + ((buffer_pos_ - 2) & ~1u), 2);
    if (last != c) break;
    buffer_pos_ = (buffer_pos_ - 2) & ~1u;
    ++removed;
  }
  if (removed != 0) {
    ClampCurrentPos();
    _EndAsString();
  }
  return removed;
}

bool XBuffer::CutLast(char16_t c) {
  if (buffer_ == nullptr || buffer_pos_ < 2) return false;
  for (uint32_t i = buffer_pos_ / 2; i-- > 0;) {
    if (*_GetStringAt(i) == c) {
      buffer_pos_ = 2 * i;
      ClampCurrentPos();
      _EndAsString();
      return true;
    }
  }
  return false;
}

// --- Appending and replacing -------------------------------------------------

bool XBuffer::Add(const char16_t* text, uint32_t bytes) {
  if (text == nullptr) bytes = 0;
  return _Write(text, bytes) && EndAsString();
}

bool XBuffer::Add(const char16_t* text) {
  return Add(text, 2 * internal::TextLength(text));
}

bool XBuffer::Add(const char16_t* begin, const char16_t* end) {
  if (begin == nullptr || end < begin) return Add(begin, 0u);
  return Add(begin, static_cast<uint32_t>(end - begin) * 2);
}

bool XBuffer::Add(const XBuffer& text) {
  return Add(reinterpret_cast<const char16_t*>(text.GetBuffer()), text.GetBufferPos());
}

namespace {

// Whether p points into the bytes bytes at block.
bool PointsInto(const void* p, const void* block, uint64_t bytes) {
  const auto a = reinterpret_cast<uintptr_t>(p);
  const auto b = reinterpret_cast<uintptr_t>(block);
  return p != nullptr && block != nullptr && a >= b && a - b < bytes;
}

}  // namespace

bool XBuffer::Add(const TTitleTextBase& title) {
  // A title that points into this block (attached to it, or assumed from it) is
  // copied first: growing may move the block.
  const auto* data = reinterpret_cast<const uint8_t*>(title.text);
  if (PointsInto(data, buffer_, uint64_t{allocated_} + 4)) {
    const std::string copy(reinterpret_cast<const char*>(data), title.size);
    return Add(reinterpret_cast<const char16_t*>(copy.data()), title.size);
  }
  return Add(title.text, title.size);
}

bool XBuffer::Add(const char16_t* const* texts) {
  bool ok = true;
  for (; texts != nullptr && *texts != nullptr && ok; ++texts) ok = Add(*texts);
  return ok && EndAsString();
}

bool XBuffer::Add(int32_t id, TStringResource* resource) {
  if (resource == nullptr) resource = XLibStringResource;
  return Add(resource != nullptr ? resource->Get(id) : kMissingStringText);
}

bool XBuffer::Add(uint32_t, XModule) {
  // Modules carry no string tables here; applications use TStringResource instead.
  SetWinError(static_cast<int32_t>(platform::kErrorResourceNameNotFound));
  return false;
}

const char16_t* XBuffer::Add(const char16_t* text, char16_t separator) {
  if (text == nullptr) return nullptr;
  const char16_t* end = text;
  while (*end != 0 && *end != separator) ++end;
  if (!Add(text, end)) return nullptr;
  return *end == separator && separator != 0 ? end + 1 : nullptr;
}

bool XBuffer::Set(const char16_t* text) {
  ResetBufferPos();
  return Add(text);
}

bool XBuffer::Set(const char16_t* text, uint32_t bytes) {
  ResetBufferPos();
  return Add(text, bytes);
}

bool XBuffer::Set(const char16_t* begin, const char16_t* end) {
  ResetBufferPos();
  return Add(begin, end);
}

bool XBuffer::Set(const XBuffer& text) {
  if (&text == this) return EndAsString();
  // The source may share this block: its data lies at the start, where it stays.
  const uint32_t bytes = text.GetBufferPos();
  const auto* data = static_cast<const uint8_t*>(text.GetBuffer());
  ResetBufferPos();
  if (data == buffer_ && data != nullptr) {
    if (bytes > allocated_) return false;
    buffer_pos_ = bytes;
    return EndAsString();
  }
  return Add(reinterpret_cast<const char16_t*>(data), bytes);
}

bool XBuffer::Set(const TTitleTextBase& title) {
  const auto* data = reinterpret_cast<const uint8_t*>(title.text);
  if (PointsInto(data, buffer_, uint64_t{allocated_} + 4)) {
    const std::string copy(reinterpret_cast<const char*>(data), title.size);
    ResetBufferPos();
    return Add(reinterpret_cast<const char16_t*>(copy.data()), title.size);
  }
  ResetBufferPos();
  return Add(title.text, title.size);
}

bool XBuffer::Set(const char16_t* const* texts) {
  ResetBufferPos();
  return Add(texts);
}

bool XBuffer::Set(int32_t id, TStringResource* resource) {
  ResetBufferPos();
  return Add(id, resource);
}

bool XBuffer::Set(uint32_t id, XModule module) {
  ResetBufferPos();
  return Add(id, module);
}

const char16_t* XBuffer::Set(const char16_t* text, char16_t separator) {
  ResetBufferPos();
  return Add(text, separator);
}

// --- Editing in place ----------------------------------------------------------

bool XBuffer::SetContent(const std::u16string& units) {
  // Make sure the new text and its terminator fit before the old text is given up:
  // an attached block that cannot hold the result keeps its text.
  const uint32_t bytes = static_cast<uint32_t>(units.size() * 2);
  if (!AllocBuffer(bytes) || static_cast<uint64_t>(bytes) + 2 > _ReadableBytes()) return false;
  buffer_pos_ = 0;
  const bool ok = Add(units.data(), bytes);
  ClampCurrentPos();
  return ok;
}

template <typename Pred>
uint32_t XBuffer::ReplaceInPlace(Pred matches, char16_t to, char16_t open_quote,
                                 char16_t close_quote) {
  // Same length in and out, so no new block is needed.
  const bool quoted = open_quote != 0 || close_quote != 0;
  const uint32_t count = buffer_ != nullptr ? buffer_pos_ / 2 : 0;
  uint32_t replaced = 0;
  for (uint32_t i = 0; i < count; ++i) {
    char16_t* unit = _GetStringAt(i);
    if (quoted && *unit == open_quote) {
      for (++i; i < count && *_GetStringAt(i) != close_quote;) ++i;
      continue;
    }
    if (matches(*unit)) {
      *unit = to;
      ++replaced;
    }
  }
  return replaced;
}

namespace {

// Scans units, copying what is not replaced into result. match(i) returns the length
// of a match at i (0 for none) and appends its replacement. Text between quotes is
// copied as it stands when quoting is on.
template <typename Match>
uint32_t Rewrite(const char16_t* units, uint32_t count, std::u16string& result, bool quoted,
                 char16_t open_quote, char16_t close_quote, Match match) {
  uint32_t replaced = 0;
  result.reserve(count);
  for (uint32_t i = 0; i < count;) {
    if (quoted && units[i] == open_quote) {
      uint32_t j = i + 1;
      while (j < count && units[j] != close_quote) ++j;
      if (j < count) ++j;
      result.append(units + i, j - i);
      i = j;
      continue;
    }
    const uint32_t n = match(i, result);
    if (n == 0) {
      result += units[i++];
    } else {
      ++replaced;
      i += n;
    }
  }
  return replaced;
}

bool SameUnits(const char16_t* a, const char16_t* b, uint32_t n, bool ignore_case) {
  for (uint32_t k = 0; k < n; ++k) {
    if (a[k] == b[k]) continue;
    if (!ignore_case || platform::ToLower(a[k]) != platform::ToLower(b[k])) return false;
  }
  return true;
}

bool InSet(const char16_t* set, char16_t c) {
  for (; set != nullptr && *set != 0; ++set) {
    if (*set == c) return true;
  }
  return false;
}

}  // namespace

uint32_t XBuffer::ReplaceImpl(const char16_t* from, uint32_t from_len, const char16_t* to,
                              uint32_t to_len, bool ignore_case, char16_t open_quote,
                              char16_t close_quote, bool quoted) {
  const uint32_t count = buffer_ != nullptr ? buffer_pos_ / 2 : 0;
  if (from == nullptr || from_len == 0 || count < from_len) return 0;
  const char16_t* units = _GetStringAt(0);
  std::u16string result;
  const uint32_t replaced =
      Rewrite(units, count, result, quoted, open_quote, close_quote,
              [&](uint32_t i, std::u16string& out) -> uint32_t {
                if (i + from_len > count || !SameUnits(units + i, from, from_len, ignore_case))
                  return 0;
                if (to != nullptr) out.append(to, to_len);
                return from_len;
              });
  return replaced != 0 && SetContent(result) ? replaced : 0;
}

uint32_t XBuffer::RemoveMultiChars(char16_t c) {
  const uint32_t count = buffer_ != nullptr ? buffer_pos_ / 2 : 0;
  const char16_t* units = count ? _GetStringAt(0) : nullptr;
  std::u16string result;
  const uint32_t removed =
      Rewrite(units, count, result, false, 0, 0, [&](uint32_t i, std::u16string&) -> uint32_t {
        return i > 0 && units[i] == c && units[i - 1] == c ? 1 : 0;
      });
  return removed != 0 && SetContent(result) ? removed : 0;
}

uint32_t XBuffer::RemoveChar(char16_t c) {
  return ReplaceImpl(&c, 1, nullptr, 0, false, 0, 0, false);
}

uint32_t XBuffer::ReplaceChar(char16_t from, char16_t to) {
  return ReplaceUnquotedChar(from, to, 0, 0);
}

uint32_t XBuffer::ReplaceChars(const char16_t* set, char16_t to) {
  return ReplaceUnquotedChars(set, to, 0, 0);
}

uint32_t XBuffer::ReplaceStringToChar(const char16_t* from, uint32_t from_bytes, char16_t to) {
  return ReplaceImpl(from, from_bytes / 2, &to, 1, false, 0, 0, false);
}

uint32_t XBuffer::ReplaceString(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                                uint32_t to_bytes) {
  return ReplaceImpl(from, from_bytes / 2, to, to_bytes / 2, false, 0, 0, false);
}

uint32_t XBuffer::ReplaceStringIC(const char16_t* from, uint32_t from_bytes, const char16_t* to,
                                  uint32_t to_bytes) {
  return ReplaceImpl(from, from_bytes / 2, to, to_bytes / 2, true, 0, 0, false);
}

uint32_t XBuffer::ReplaceSoftReturns() {
  static constexpr char16_t kSoftReturn[] = {kCR, kCR, kLF};
  return ReplaceImpl(kSoftReturn, 3, nullptr, 0, false, 0, 0, false);
}

uint32_t XBuffer::ReplaceUnquotedChar(char16_t from, char16_t to, char16_t open_quote,
                                      char16_t close_quote) {
  return ReplaceInPlace([from](char16_t c) { return c == from; }, to, open_quote, close_quote);
}

uint32_t XBuffer::ReplaceUnquotedChars(const char16_t* set, char16_t to, char16_t open_quote,
                                       char16_t close_quote) {
  return ReplaceInPlace([set](char16_t c) { return InSet(set, c); }, to, open_quote, close_quote);
}

uint32_t XBuffer::ReplaceUnquotedStringToChar(const char16_t* from, uint32_t from_bytes,
                                              char16_t to, char16_t open_quote,
                                              char16_t close_quote) {
  return ReplaceImpl(from, from_bytes / 2, &to, 1, false, open_quote, close_quote, true);
}

uint32_t XBuffer::ReplaceUnquotedString(const char16_t* from, uint32_t from_bytes,
                                        const char16_t* to, uint32_t to_bytes, char16_t open_quote,
                                        char16_t close_quote) {
  return ReplaceImpl(from, from_bytes / 2, to, to_bytes / 2, false, open_quote, close_quote, true);
}

uint32_t XBuffer::ReplaceUnquotedStringIC(const char16_t* from, uint32_t from_bytes,
                                          const char16_t* to, uint32_t to_bytes,
                                          char16_t open_quote, char16_t close_quote) {
  return ReplaceImpl(from, from_bytes / 2, to, to_bytes / 2, true, open_quote, close_quote, true);
}

// --- Cutting -------------------------------------------------------------------

void XBuffer::_Cut(char16_t* begin, char16_t* end) {
  auto* b = reinterpret_cast<uint8_t*>(begin);
  auto* e = reinterpret_cast<uint8_t*>(end);
  const uint32_t tail = static_cast<uint32_t>(buffer_ + buffer_pos_ - e);
  std::memmove(b, e, tail);
  buffer_pos_ -= static_cast<uint32_t>(e - b);
  ClampCurrentPos();
  _EndAsString();
}

bool XBuffer::Cut(char16_t* begin, char16_t* end) {
  auto* b = reinterpret_cast<uint8_t*>(begin);
  auto* e = reinterpret_cast<uint8_t*>(end);
  if (buffer_ == nullptr || b < buffer_ || b > e || e > buffer_ + buffer_pos_) return false;
  _Cut(begin, end);
  return true;
}

bool XBuffer::Cut(uint32_t chars) {
  if (buffer_ == nullptr) return chars == 0;
  const uint32_t count = buffer_pos_ / 2;
  const uint32_t n = chars < count ? chars : count;
  _Cut(_GetStringAt(0), _GetStringAt(n));
  return true;
}

bool XBuffer::CutTo(char16_t c) {
  const uint32_t count = buffer_ != nullptr ? buffer_pos_ / 2 : 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (*_GetStringAt(i) == c) return Cut(i + 1);
  }
  return false;
}

bool XBuffer::CutRTo(char16_t c) {
  const uint32_t count = buffer_ != nullptr ? buffer_pos_ / 2 : 0;
  for (uint32_t i = count; i-- > 0;) {
    if (*_GetStringAt(i) == c) return Cut(i + 1);
  }
  return false;
}

// --- Comparing -----------------------------------------------------------------

int32_t XBuffer::Compare(const void* data, uint32_t bytes) const {
  const uint32_t n = buffer_pos_ < bytes ? buffer_pos_ : bytes;
  const int r = n != 0 ? std::memcmp(buffer_, data, n) : 0;
  if (r != 0) return r < 0 ? -1 : 1;
  return buffer_pos_ < bytes ? -1 : buffer_pos_ > bytes ? 1 : 0;
}

int32_t XBuffer::Compare(const XBuffer& other) const {
  return Compare(other.GetBuffer(), other.GetBufferPos());
}

bool XBuffer::IsDifferent(const void* data, uint32_t bytes) const {
  return bytes != buffer_pos_ || (bytes != 0 && std::memcmp(buffer_, data, bytes) != 0);
}

bool XBuffer::IsDifferent(const XBuffer& other) const {
  return IsDifferent(other.GetBuffer(), other.GetBufferPos());
}

bool XBuffer::GetModuleFileNameW(XModule module) {
  std::u16string path;
  if (!platform::ModuleFileName(module, path)) {
    SetWinLastError();
    return false;
  }
  return Set(path.data(), static_cast<uint32_t>(path.size() * 2));
}

}  // namespace tavi
