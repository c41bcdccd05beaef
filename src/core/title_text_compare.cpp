//===- title_text_compare.cpp - Collation of title texts -------------------===//
//
// The comparison callbacks of title collections. Texts are ordered by the user's
// locale through the platform collator; a missing text sorts first.
//
//===----------------------------------------------------------------------===//
#include <cstdint>

#include "core/internal/text_util.h"
#include "platform/locale.h"
#include "tavi/core/title_text.h"

namespace tavi {

namespace {

const TTitleTextBase* Title(const void* p) {
  return static_cast<const TTitleTextBase*>(p);
}

const char16_t* TextOf(const TTitleTextBase* t) {
  return t != nullptr ? t->text : nullptr;
}

int32_t LenOf(const TTitleTextBase* t) {
  return static_cast<int32_t>(t->size / 2 > 0x7FFFFFFFu ? 0x7FFFFFFFu : t->size / 2);
}

int32_t Min(int32_t a, int32_t b) {
  return a < b ? a : b;
}

// Orders counted texts, a missing (null) text first.
int CompareCounted(const char16_t* a, int32_t a_len, const char16_t* b, int32_t b_len) {
  if (a == nullptr) return b != nullptr ? -1 : 0;
  if (b == nullptr) return 1;
  return platform::CompareTextN(a, a_len, b, b_len);
}

int32_t CharsLength(const char16_t* chars) {
  const uint32_t n = internal::TextLength(chars);
  return static_cast<int32_t>(n > 0x7FFFFFFFu ? 0x7FFFFFFFu : n);
}

}  // namespace

int CompareTitleText(const void* a, const void* b) {
  const TTitleTextBase* ta = Title(a);
  const TTitleTextBase* tb = Title(b);
  const char16_t* xa = TextOf(ta);
  const char16_t* xb = TextOf(tb);
  return CompareCounted(xa, xa ? LenOf(ta) : 0, xb, xb ? LenOf(tb) : 0);
}

int CompareTitleChars(const void* chars, const void* title) {
  const auto* xa = static_cast<const char16_t*>(chars);
  const TTitleTextBase* tb = Title(title);
  const char16_t* xb = TextOf(tb);
  return CompareCounted(xa, CharsLength(xa), xb, xb ? LenOf(tb) : 0);
}

int ComparePrefixTitleText(const void* a, const void* b) {
  const TTitleTextBase* ta = Title(a);
  const TTitleTextBase* tb = Title(b);
  const char16_t* xa = TextOf(ta);
  const char16_t* xb = TextOf(tb);
  if (xa == nullptr || xb == nullptr) return CompareCounted(xa, 0, xb, 0);
  const int32_t n = LenOf(ta);
  return CompareCounted(xa, n, xb, Min(n, LenOf(tb)));
}

int ComparePrefixTitleChars(const void* chars, const void* title, const void* bytes) {
  const auto* xa = static_cast<const char16_t*>(chars);
  const TTitleTextBase* tb = Title(title);
  const char16_t* xb = TextOf(tb);
  if (xa == nullptr || xb == nullptr) return CompareCounted(xa, 0, xb, 0);
  // The third argument carries a byte count, not a pointer.
  const auto count = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(bytes));
  const int32_t n = static_cast<int32_t>(count / 2);
  return CompareCounted(xa, n, xb, Min(n, LenOf(tb)));
}

bool CheckTitleText(const void* a, const void* b) {
  return CompareTitleText(a, b) == 0;
}

bool CheckTitleChars(const void* title, const void* chars) {
  return CompareTitleChars(chars, title) == 0;
}

}  // namespace tavi
