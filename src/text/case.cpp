//===- case.cpp - Case mapping and folding of wide text -------------------===//
//
// Text of ASCII only is mapped here; anything else goes to the platform's Unicode
// case mapping. Streams get the text in pieces that end after a space or line end,
// so that no word (whose title form, or final sigma, depends on its neighbours) is
// cut.
//
//===----------------------------------------------------------------------===//
#include "tavi/text/case.h"

#include <memory>

#include "platform/case_map.h"
#include "tavi/core/error.h"
#include "tavi/io/stream.h"
#include "text/internal/fold.h"

namespace tavi {

namespace text_internal {

const char16_t* FoldTable() {
  static const std::unique_ptr<char16_t[]> table = [] {
    auto t = std::make_unique<char16_t[]>(0x10000);
    for (uint32_t c = 0; c < 0x10000; ++c) {
      t[c] = (c & 0xF800) == 0xD800 ? static_cast<char16_t>(c)
                                    : static_cast<char16_t>(platform::SimpleFold(c));
    }
    return t;
  }();
  return table.get();
}

}  // namespace text_internal

char16_t XFoldCase(char16_t c) {
  return text_internal::FoldTable()[c];
}

uint32_t XFoldCodePoint(uint32_t c) {
  if (c < 0x10000) return text_internal::FoldTable()[c];
  if (c > 0x10FFFF) return c;
  return platform::SimpleFold(c);
}

namespace {

bool AllAscii(const char16_t* text, size_t units) {
  char16_t any = 0;
  for (size_t i = 0; i < units; ++i) any |= text[i];
  return any < 0x80;
}

// Upper or lower case of ASCII text.
void MapAscii(XCaseMapping mapping, const char16_t* text, size_t units, char16_t* out) {
  const char16_t from = mapping == XCaseMapping::kUpper ? u'a' : u'A';
  for (size_t i = 0; i < units; ++i) {
    const char16_t c = text[i];
    out[i] = static_cast<char16_t>(static_cast<unsigned>(c - from) < 26u ? c ^ 0x20 : c);
  }
}

platform::CaseMapping PlatformMapping(XCaseMapping mapping) {
  switch (mapping) {
    case XCaseMapping::kUpper:
      return platform::CaseMapping::kUpper;
    case XCaseMapping::kLower:
      return platform::CaseMapping::kLower;
    case XCaseMapping::kTitle:
      break;
  }
  return platform::CaseMapping::kTitle;
}

// Maps units code units into out (room for kCaseMaxGrowth per unit); the code units
// written, or -1.
int64_t Map(XCaseMapping mapping, const char16_t* text, size_t units, char16_t* out) {
  if (mapping != XCaseMapping::kTitle && AllAscii(text, units)) {
    MapAscii(mapping, text, units, out);
    return static_cast<int64_t>(units);
  }
  const size_t room = kCaseMaxGrowth * units;
  if (room > 0x7FFFFFFF) return -1;
  const int32_t n = platform::MapCase(PlatformMapping(mapping), text, static_cast<int32_t>(units),
                                      out, static_cast<int32_t>(room));
  return n < 0 || static_cast<size_t>(n) > room ? -1 : n;
}

}  // namespace

char16_t* _MapCase(XCaseMapping mapping, const char16_t* text, uint32_t units, char16_t* out) {
  if (units == 0) return out;
  const int64_t n = Map(mapping, text, units, out);
  return n < 0 ? nullptr : out + n;
}

bool XMapCase(XIO& target, XCaseMapping mapping, const char16_t* text, uint32_t units) {
  constexpr size_t kPiece = 2048;
  char16_t out[kCaseMaxGrowth * kPiece];
  size_t i = 0;
  while (i < units) {
    size_t n = units - i;
    if (n > kPiece) {
      n = kPiece;
      // End the piece after the last space or line end; without one, at least do not
      // cut a surrogate pair.
      size_t cut = n;
      while (cut > 0 && text[i + cut - 1] != u' ' && text[i + cut - 1] != u'\n' &&
             text[i + cut - 1] != u'\t' && text[i + cut - 1] != u'\r')
        --cut;
      if (cut > 0) {
        n = cut;
      } else if ((text[i + n - 1] & 0xFC00) == 0xD800) {
        --n;
      }
    }
    const int64_t mapped = Map(mapping, text + i, n, out);
    if (mapped < 0) {
      target.SetErrorCode(kErrConversion);
      return false;
    }
    if (mapped > 0 && !target._Write(out, static_cast<uint32_t>(2 * mapped))) return false;
    i += n;
  }
  return true;
}

bool XToUpper(XIO& target, const char16_t* text, uint32_t units) {
  return XMapCase(target, XCaseMapping::kUpper, text, units);
}

bool XToLower(XIO& target, const char16_t* text, uint32_t units) {
  return XMapCase(target, XCaseMapping::kLower, text, units);
}

bool XToTitle(XIO& target, const char16_t* text, uint32_t units) {
  return XMapCase(target, XCaseMapping::kTitle, text, units);
}

}  // namespace tavi
