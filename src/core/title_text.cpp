//===- title_text.cpp - Owned-or-attached wide text -------------------------===//
#include "tavi/core/title_text.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "core/internal/text_util.h"
#include "tavi/core/buffer.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

// A new owned block holding bytes of source and a 0 code unit after them.
char16_t* NewBlock(const void* source, uint32_t bytes) {
  auto* block = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(bytes) + 2));
  if (block == nullptr) return nullptr;
  std::memcpy(block, source, bytes);
  block[bytes] = 0;
  block[bytes + 1] = 0;
  return reinterpret_cast<char16_t*>(block);
}

}  // namespace

TTitleTextBase::TTitleTextBase(TTitleTextBase&& other) noexcept
    : state(other.state), size(other.size), text(other.text) {
  other.Discard();
}

TTitleTextBase& TTitleTextBase::operator=(const TTitleTextBase& other) {
  if (this != &other) Set(other, other.IsAttached());
  return *this;
}

TTitleTextBase& TTitleTextBase::operator=(TTitleTextBase&& other) noexcept {
  if (this == &other) return *this;
  ReleaseUnless(other.text);
  text = other.text;
  size = other.size;
  state = (state & ~kTitleAttached) | (other.state & kTitleAttached);
  other.Discard();
  return *this;
}

TTitleTextBase::~TTitleTextBase() = default;

void TTitleTextBase::FreeOwned() {
  if (!IsAttached() && text != nullptr) std::free(text);
}

void TTitleTextBase::ReleaseUnless(const char16_t* keep) {
  // A text that is about to be taken over, or that lies inside the own block, must
  // not be freed first: keeping the block (a leak at worst) beats pointing into
  // freed memory.
  const auto k = reinterpret_cast<uintptr_t>(keep);
  const auto t = reinterpret_cast<uintptr_t>(text);
  const bool inside = keep != nullptr && text != nullptr && k >= t && k - t <= size;
  if (!inside) FreeOwned();
  text = nullptr;
  size = 0;
}

void TTitleTextBase::Terminate() {
  // Owned blocks always have two bytes after the text; size may be odd.
  if (text != nullptr && !IsAttached()) std::memset(reinterpret_cast<uint8_t*>(text) + size, 0, 2);
}

bool TTitleTextBase::Read(XIO& source, uint32_t bytes) {
  if (!AllocBuffer(bytes)) {
    source.SetErrorCode(kErrNoMemory);
    return false;
  }
  const uint32_t n = source._Read(text, bytes);
  if (n == 0) return false;
  // A short read is not reported, but the missing bytes are not left undefined.
  std::memset(reinterpret_cast<uint8_t*>(text) + n, 0, bytes - n);
  size = bytes;
  Terminate();
  return true;
}

bool TTitleTextBase::Set(const char16_t* source, uint32_t bytes, bool attach) {
  if (attach && source != nullptr) {
    ReleaseUnless(source);
    text = const_cast<char16_t*>(source);
    size = bytes;
    state |= kTitleAttached;
    return true;
  }
  if (source == nullptr || bytes == 0) {
    ReleaseUnless(nullptr);
    return bytes == 0;
  }
  // Copy first, free after: the source may lie inside the own text.
  char16_t* block = NewBlock(source, bytes);
  if (block == nullptr) return false;
  FreeOwned();
  text = block;
  size = bytes;
  state &= ~kTitleAttached;
  return true;
}

bool TTitleTextBase::Set(const char16_t* begin, const char16_t* end) {
  if (begin == nullptr || end == nullptr || end < begin) return false;
  const auto chars = static_cast<uint64_t>(end - begin);
  if (chars > 0x7FFFFFFFu) return false;
  return Set(begin, static_cast<uint32_t>(chars * 2), false);
}

bool TTitleTextBase::Set(const char16_t* const* texts) {
  uint64_t total = 0;
  for (const char16_t* const* t = texts; t != nullptr && *t != nullptr; ++t)
    total += 2ull * internal::TextLength(*t);
  if (total > 0xFFFFFFFDu) return false;
  if (total == 0) return Set(nullptr, 0, false);
  auto* block = static_cast<uint8_t*>(std::malloc(total + 2));
  if (block == nullptr) return false;
  uint8_t* p = block;
  for (const char16_t* const* t = texts; *t != nullptr; ++t) {
    const uint32_t n = 2 * internal::TextLength(*t);
    std::memcpy(p, *t, n);
    p += n;
  }
  p[0] = p[1] = 0;
  FreeOwned();
  text = reinterpret_cast<char16_t*>(block);
  size = static_cast<uint32_t>(total);
  state &= ~kTitleAttached;
  return true;
}

bool TTitleTextBase::Set(const TTitleTextBase& other, bool attach) {
  return Set(other.text, other.size, attach);
}

bool TTitleTextBase::Set(const XBuffer& buffer, bool attach) {
  return Set(static_cast<const char16_t*>(buffer.GetBuffer()), buffer.GetBufferPos(), attach);
}

bool TTitleTextBase::Set(const XBuffer& buffer) {
  return Set(buffer, buffer.GetBufferAttached());
}

bool TTitleTextBase::Attach(const TTitleTextBase& other) {
  char16_t* other_text = other.text;
  const uint32_t other_size = other.size;
  ReleaseUnless(other_text);
  text = other_text;
  size = other_size;
  state |= kTitleAttached;
  return true;
}

bool TTitleTextBase::AllocBuffer(uint32_t bytes) {
  if (bytes == 0) return false;
  if (IsAttached()) {
    state &= ~kTitleAttached;
    text = nullptr;
  }
  size = 0;
  void* block = std::realloc(text, static_cast<size_t>(bytes) + 2);
  if (block == nullptr) return false;
  text = static_cast<char16_t*>(block);
  return true;
}

bool TTitleTextBase::ReserveMem(uint32_t bytes) {
  if (!AllocBuffer(bytes)) return false;
  size = bytes;
  Terminate();
  return true;
}

bool TTitleTextBase::SetSize(uint32_t bytes) {
  if (bytes >= size) return false;
  size = bytes;
  Terminate();
  return true;
}

bool TTitleTextBase::SetLen(uint32_t chars) {
  if (chars >= 0x80000000u) return false;
  return SetSize(chars * 2);
}

void TTitleTextBase::EmptyString() {
  FreeOwned();
  state |= kTitleAttached;
  text = nullptr;
  size = 0;
}

void TTitleTextBase::Free() {
  FreeOwned();
  text = nullptr;
  size = 0;
}

void TTitleTextBase::Clean() {
  FreeOwned();
}

void TTitleTextBase::Assume(TTitleTextBase& other) {
  if (&other == this) return;
  ReleaseUnless(other.text);
  text = other.text;
  size = other.size;
  if (other.IsAttached()) {
    state |= kTitleAttached;
  } else {
    state &= ~kTitleAttached;
    other.state |= kTitleAttached;
  }
}

void TTitleTextBase::Assume(XBuffer& buffer) {
  auto* block = static_cast<char16_t*>(buffer.GetBuffer());
  ReleaseUnless(block);
  text = block;
  size = buffer.GetBufferPos();
  if (buffer.GetBufferAttached()) {
    state |= kTitleAttached;
    return;
  }
  state &= ~kTitleAttached;
  if (block == nullptr) return;
  buffer.DiscardBufferOwnership();
  // Blocks a buffer grew itself have 4 spare bytes after the allocated size; a block
  // handed to AssumeBuffer may end right after the data and is left as it is.
  if (size <= buffer.GetBufferSize()) Terminate();
}

void TTitleTextBase::Assume(char16_t* source, uint32_t bytes) {
  ReleaseUnless(source);
  text = source;
  size = bytes;
}

TTitleText& TTitleText::operator=(const TTitleText& other) {
  TTitleTextBase::operator=(other);
  return *this;
}

TTitleText& TTitleText::operator=(const TTitleTextBase& other) {
  TTitleTextBase::operator=(other);
  return *this;
}

TTitleText& TTitleText::operator=(TTitleText&& other) noexcept {
  TTitleTextBase::operator=(std::move(other));
  return *this;
}

TTitleText::~TTitleText() {
  FreeOwned();
}

}  // namespace tavi
