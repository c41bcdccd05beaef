//===- search.cpp - Finding and counting strings in text ------------------===//
//
// The forward searches go through the kernel chosen at run time; the backward ones
// and the case-insensitive ones are plain loops that test the last (first) unit
// before comparing the rest.
//
//===----------------------------------------------------------------------===//
#include "tavi/text/search.h"

#include <cstring>

#include "core/internal/kernel_choice.h"
#include "platform/cpu.h"
#include "tavi/text/case.h"
#include "text/internal/fold.h"
#include "text/internal/search_kernel.h"

namespace tavi {

namespace text_internal {

size_t FindBytesPortable(const uint8_t* h, size_t n, const uint8_t* w, size_t m) {
  if (m > n) return SIZE_MAX;
  const size_t last_start = n - m;
  size_t i = 0;
  while (i <= last_start) {
    const void* hit = std::memchr(h + i, w[0], last_start - i + 1);
    if (hit == nullptr) return SIZE_MAX;
    i = static_cast<size_t>(static_cast<const uint8_t*>(hit) - h);
    if (std::memcmp(h + i + 1, w + 1, m - 1) == 0) return i;
    ++i;
  }
  return SIZE_MAX;
}

size_t FindUnitsPortable(const char16_t* h, size_t n, const char16_t* w, size_t m) {
  if (m > n) return SIZE_MAX;
  const char16_t first = w[0];
  const char16_t last = w[m - 1];
  for (size_t i = 0; i + m <= n; ++i) {
    if (h[i] == first && h[i + m - 1] == last &&
        std::memcmp(h + i + 1, w + 1, 2 * (m > 1 ? m - 1 : 0)) == 0)
      return i;
  }
  return SIZE_MAX;
}

namespace {

bool Usable(SearchPath path) {
  if (path == SearchPath::kPortable) return true;
  return platform::GetCpuFeatures().avx2 && Avx2SearchKernels().bytes != nullptr;
}

const SearchKernels* ImplOf(SearchPath path) {
  static const SearchKernels portable{FindBytesPortable, FindUnitsPortable};
  static const SearchKernels avx2 = Avx2SearchKernels();
  return path == SearchPath::kAvx2 ? &avx2 : &portable;
}

using Choice = internal::KernelChoice<SearchPath, const SearchKernels*>;

Choice& Kernels() {
  static Choice choice({SearchPath::kAvx2}, SearchPath::kPortable, ImplOf, Usable);
  return choice;
}

}  // namespace

bool SearchPathAvailable(SearchPath path) {
  return Usable(path);
}
SearchPath ActiveSearchPath() {
  return Kernels().Active();
}
bool SetSearchPath(SearchPath path) {
  return Kernels().Set(path);
}
void ResetSearchPath() {
  Kernels().Reset();
}

}  // namespace text_internal

namespace {

uint32_t Result(size_t at) {
  return at == SIZE_MAX ? kTextNotFound : static_cast<uint32_t>(at);
}

template <typename Unit>
size_t FindLast(const Unit* h, size_t n, const Unit* w, size_t m) {
  if (m > n) return SIZE_MAX;
  const Unit first = w[0];
  const Unit last = w[m - 1];
  for (size_t i = n - m + 1; i-- > 0;) {
    if (h[i + m - 1] == last && h[i] == first &&
        std::memcmp(h + i + 1, w + 1, sizeof(Unit) * (m > 1 ? m - 1 : 0)) == 0)
      return i;
  }
  return SIZE_MAX;
}

template <typename Unit, typename Find>
uint32_t Count(const Unit* h, size_t n, const Unit* w, size_t m, Find find) {
  if (m == 0) return 0;
  uint32_t count = 0;
  size_t i = 0;
  while (i + m <= n) {
    const size_t at = find(h + i, n - i, w, m);
    if (at == SIZE_MAX) break;
    ++count;
    i += at + m;
  }
  return count;
}

}  // namespace

uint32_t XFindText(const char16_t* text, uint32_t units, const char16_t* what,
                   uint32_t what_units) {
  if (what_units == 0) return 0;
  return Result(text_internal::Kernels().Get()->units(text, units, what, what_units));
}

uint32_t XFindLastText(const char16_t* text, uint32_t units, const char16_t* what,
                       uint32_t what_units) {
  if (what_units == 0) return units;
  return Result(FindLast(text, units, what, what_units));
}

uint32_t XCountText(const char16_t* text, uint32_t units, const char16_t* what,
                    uint32_t what_units) {
  return Count(text, units, what, what_units, text_internal::Kernels().Get()->units);
}

uint32_t XFindBytes(const void* data, uint32_t bytes, const void* what, uint32_t what_bytes) {
  if (what_bytes == 0) return 0;
  return Result(text_internal::Kernels().Get()->bytes(
      static_cast<const uint8_t*>(data), bytes, static_cast<const uint8_t*>(what), what_bytes));
}

uint32_t XFindLastBytes(const void* data, uint32_t bytes, const void* what, uint32_t what_bytes) {
  if (what_bytes == 0) return bytes;
  return Result(FindLast(static_cast<const uint8_t*>(data), bytes,
                         static_cast<const uint8_t*>(what), what_bytes));
}

uint32_t XCountBytes(const void* data, uint32_t bytes, const void* what, uint32_t what_bytes) {
  return Count(static_cast<const uint8_t*>(data), bytes, static_cast<const uint8_t*>(what),
               what_bytes, text_internal::Kernels().Get()->bytes);
}

namespace {

// The folded unit at i of text[0..n): units of a surrogate pair fold as the pair's
// code point, so that a folded text has the same length as the text.
char16_t FoldedAt(const char16_t* text, size_t n, size_t i, const char16_t* table) {
  const char16_t u = text[i];
  if ((u & 0xF800) != 0xD800) return table[u];
  if (u < 0xDC00) {
    if (i + 1 >= n || (text[i + 1] & 0xFC00) != 0xDC00) return u;
    const uint32_t cp = XFoldCodePoint(0x10000 + ((u - 0xD800u) << 10) + (text[i + 1] - 0xDC00u));
    return static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
  }
  if (i == 0 || (text[i - 1] & 0xFC00) != 0xD800) return u;
  const uint32_t cp = XFoldCodePoint(0x10000 + ((text[i - 1] - 0xD800u) << 10) + (u - 0xDC00u));
  return static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
}

// The code point at i, advancing i; an unpaired surrogate is its own value.
uint32_t NextCodePoint(const char16_t* text, size_t n, size_t& i) {
  const char16_t u = text[i++];
  if (u >= 0xD800 && u < 0xDC00 && i < n && (text[i] & 0xFC00) == 0xDC00)
    return 0x10000 + ((u - 0xD800u) << 10) + (text[i++] - 0xDC00u);
  return u;
}

}  // namespace

uint32_t XFindTextNoCase(const char16_t* text, uint32_t units, const char16_t* what,
                         uint32_t what_units) {
  if (what_units == 0) return 0;
  if (what_units > units) return kTextNotFound;
  // A window matches when it folds, as a text of its own, to what what folds to.
  const char16_t* table = text_internal::FoldTable();
  const char16_t first = FoldedAt(what, what_units, 0, table);
  for (size_t i = 0; i + what_units <= units; ++i) {
    const char16_t* window = text + i;
    if (FoldedAt(window, what_units, 0, table) != first) continue;
    size_t k = 1;
    while (k < what_units &&
           FoldedAt(window, what_units, k, table) == FoldedAt(what, what_units, k, table))
      ++k;
    if (k == what_units) return static_cast<uint32_t>(i);
  }
  return kTextNotFound;
}

int32_t XCompareTextNoCase(const char16_t* a, uint32_t a_units, const char16_t* b,
                           uint32_t b_units) {
  const char16_t* table = text_internal::FoldTable();
  size_t i = 0;
  size_t j = 0;
  while (i < a_units && j < b_units) {
    const char16_t ua = a[i];
    const char16_t ub = b[j];
    if ((ua & 0xF800) != 0xD800 && (ub & 0xF800) != 0xD800) {
      const char16_t fa = table[ua];
      const char16_t fb = table[ub];
      if (fa != fb) return fa < fb ? -1 : 1;
      ++i, ++j;
      continue;
    }
    const uint32_t ca = XFoldCodePoint(NextCodePoint(a, a_units, i));
    const uint32_t cb = XFoldCodePoint(NextCodePoint(b, b_units, j));
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (i < a_units) return 1;
  if (j < b_units) return -1;
  return 0;
}

}  // namespace tavi
