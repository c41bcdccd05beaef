//===- text_convert.cpp - Text-file conversions on memory -----------------===//
//
// Loading converts in place where the result is no longer than the source (UTF-16
// or UTF-8 to 8-bit, 8-bit to 8-bit, 32-bit units to UTF-16) and through a second
// block where it grows (UTF-8 or 8-bit to UTF-16). Saving converts in pieces
// through a small block on the stack, so it needs no memory in proportion to the
// text.
//
//===----------------------------------------------------------------------===//
#include "text/internal/text_convert.h"

#include <cstring>

#include "core/internal/endian.h"
#include "core/internal/utf8.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/core/string.h"
#include "tavi/text/code_page.h"
#include "tavi/text/text_file.h"
#include "text/internal/code_page.h"

namespace tavi {

bool XIsUnicodeTextFormat(uint16_t format) {
  switch (format) {
    case kTextUtf16:
    case kTextUtf16BE:
    case kTextUtf8:
    case kTextUtf32:
    case kTextUtf32BE:
    case kTextUtf8CodePage:
      return true;
    default:
      return false;
  }
}

namespace text_internal {

namespace {

using internal::LoadLE;
using internal::StoreLE;

// The two text-format failures, on loading and saving alike: 0x2000000E for a pair of
// formats that cannot be converted (or two code pages without a table pair), and
// 0x2000000F for a code page without a table.
constexpr uint32_t kErrFormatPair = kErrLoadEncoding;
constexpr uint32_t kErrNoTable = kErrSaveEncoding;
static_assert(kErrFormatPair == 0x2000000E && kErrNoTable == 0x2000000F);

uint16_t Normal(uint16_t format) {
  return format == kTextUtf8CodePage ? kTextUtf8 : format;
}

bool Fail(XError& report, uint32_t code) {
  report.SetErrorCode(code);
  return false;
}

// The failed load's result.
uint16_t Refuse(XError& report, uint32_t code) {
  report.SetErrorCode(code);
  return 0;
}

bool FailWith(XError& report, const XError& cause) {
  report.ImportErrorCode(cause);
  return false;
}

// Moves the data into a second buffer and gives buffer room for bytes, leaving its
// data empty. The text then reads from moved.
bool MoveAside(XBuffer& buffer, XBuffer& moved, uint64_t bytes, XError& report) {
  if (bytes > 0xFFFFFFF0u) {
    buffer.SetErrorCode(kErrOutOfRange);
    return FailWith(report, buffer);
  }
  moved.AssumeBuffer(buffer);
  buffer.ResetBufferPos();
  if (!buffer.AllocBuffer(static_cast<uint32_t>(bytes))) {
    if (buffer.IsOk()) buffer.SetErrorCode(kErrNoMemory);
    return FailWith(report, buffer);
  }
  return true;
}

// 32-bit little-endian units to UTF-16 in place: each unit gives at most its own
// four bytes. Returns the new size, or false for a unit that is not a character.
bool Utf32ToUtf16InPlace(uint8_t* p, uint32_t size, uint32_t& out_size) {
  uint32_t o = 0;
  for (uint32_t i = 0; i + 4 <= size; i += 4) {
    const uint32_t cp = LoadLE<uint32_t>(p + i);
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
    if (cp < 0x10000) {
      StoreLE<uint16_t>(p + o, static_cast<uint16_t>(cp));
      o += 2;
    } else {
      StoreLE<uint16_t>(p + o, static_cast<uint16_t>(0xD7C0 + (cp >> 10)));
      StoreLE<uint16_t>(p + o + 2, static_cast<uint16_t>(0xDC00 | (cp & 0x3FF)));
      o += 4;
    }
  }
  out_size = o;
  return true;
}

// UTF-16 code units to 8-bit in place; a pair, or a surrogate alone, is one missing
// character.
uint32_t Utf16To8Bit(const uint8_t* in, uint32_t units, uint8_t* out, const CodePageTable& table) {
  const uint8_t* from_wide = table.FromWide();
  uint32_t o = 0;
  for (uint32_t i = 0; i < units; ++i) {
    const uint16_t u = LoadLE<uint16_t>(in + 2 * i);
    if ((u & 0xFC00) == 0xD800 && i + 1 < units &&
        (LoadLE<uint16_t>(in + 2 * i + 2) & 0xFC00) == 0xDC00)
      ++i;
    out[o++] = from_wide[u];
  }
  return o;
}

// UTF-8 to 8-bit in place, decoding in pieces: each sequence gives one byte, so the
// output never overtakes the input.
bool Utf8To8BitInPlace(uint8_t* p, uint32_t size, const CodePageTable& table, uint32_t& out_size) {
  constexpr size_t kPiece = 1024;
  char16_t units[kPiece];
  const uint8_t* from_wide = table.FromWide();
  uint32_t i = 0;
  uint32_t o = 0;
  while (i < size) {
    const size_t n = size - i < kPiece ? size - i : kPiece;
    size_t consumed = 0;
    size_t produced = 0;
    size_t needed = 0;
    const internal::Utf8Status status =
        internal::DecodeUtf8(p + i, n, units, kPiece, &consumed, &produced, &needed);
    if (status == internal::Utf8Status::kInvalid) return false;
    if (status == internal::Utf8Status::kIncomplete && i + n == size) return false;
    for (size_t k = 0; k < produced; ++k) {
      if ((units[k] & 0xFC00) == 0xD800 && k + 1 < produced) ++k;
      p[o++] = from_wide[units[k]];
    }
    i += static_cast<uint32_t>(consumed);
  }
  out_size = o;
  return true;
}

bool Finish(XBuffer& buffer, uint32_t size, XError& report) {
  buffer._SetBufferPos(size);
  if (!buffer.EndAsString()) return FailWith(report, buffer);
  return true;
}

}  // namespace

uint16_t ConvertLoadedText(XBuffer& buffer, uint16_t source_format, uint16_t buffer_format,
                           XError& report) {
  uint32_t size = buffer.GetBufferPos();
  uint8_t* p = buffer._GetBufferAt(0);
  uint16_t found = 0;
  uint32_t mark = 0;
  if (size >= 4 && p[0] == 0x00 && p[1] == 0x00 && p[2] == 0xFE && p[3] == 0xFF) {
    found = kTextUtf32BE, mark = 4;
  } else if (size >= 4 && p[0] == 0xFF && p[1] == 0xFE && p[2] == 0x00 && p[3] == 0x00) {
    found = kTextUtf32, mark = 4;
  } else if (size >= 2 && p[0] == 0xFE && p[1] == 0xFF) {
    found = kTextUtf16BE, mark = 2;
  } else if (size >= 2 && p[0] == 0xFF && p[1] == 0xFE) {
    found = kTextUtf16, mark = 2;
  } else if (size >= 3 && p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF) {
    found = kTextUtf8, mark = 3;
  }
  if (found == 0) {
    found = source_format != 0 ? source_format
                               : XGetLanguageCodePage(kLanguageUserDefault, kCodePageOem, false);
  }
  if (buffer_format == 0)
    buffer_format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageAnsi, false);
  uint16_t source = Normal(found);
  const uint16_t want = Normal(buffer_format);
  // UTF-8 is produced only from UTF-8.
  if (source != want && want == kTextUtf8) return Refuse(report, kErrFormatPair);

  if (mark != 0) {
    size -= mark;
    std::memmove(p, p + mark, size);
  }
  if ((source == kTextUtf16BE || source == kTextUtf32BE) && source != want) {
    const uint32_t unit = source == kTextUtf16BE ? 2 : 4;
    for (uint32_t i = 0; i + unit <= size; i += unit) {
      if (unit == 2) {
        std::swap(p[i], p[i + 1]);
      } else {
        std::swap(p[i], p[i + 3]);
        std::swap(p[i + 1], p[i + 2]);
      }
    }
    source = found = source == kTextUtf16BE ? kTextUtf16 : kTextUtf32;
  }

  if (source == want || size == 0) {
    // Wide text holds whole units: a file cut inside one is damaged, and its
    // terminator would not fall on a unit boundary for callers that scan for it.
    const uint32_t unit = want == kTextUtf16 || want == kTextUtf16BE   ? 2
                          : want == kTextUtf32 || want == kTextUtf32BE ? 4
                                                                       : 1;
    if (size % unit != 0) return Refuse(report, kErrEndOfData);
    if (!XIsUnicodeTextFormat(want)) {
      // XRemoveDOSNewLines looks at the byte after the text: terminate it first.
      if (!Finish(buffer, size, report)) return 0;
      size = XRemoveDOSNewLines(reinterpret_cast<char*>(buffer._GetBufferAt(0)), size);
    }
    return Finish(buffer, size, report) ? found : 0;
  }

  // 32-bit units reach any other format through UTF-16.
  if (source == kTextUtf32) {
    if (size % 4 != 0 || !Utf32ToUtf16InPlace(p, size, size)) return Refuse(report, kErrEndOfData);
    source = kTextUtf16;
    if (want == kTextUtf16) return Finish(buffer, size, report) ? found : 0;
  }
  // The other Unicode buffer formats hold only text of their own format.
  if (XIsUnicodeTextFormat(want) && want != kTextUtf16) return Refuse(report, kErrFormatPair);

  if (want == kTextUtf16) {
    XBuffer moved;
    if (source == kTextUtf8) {
      if (!MoveAside(buffer, moved, 2ull * size + 2, report)) return 0;
      size_t consumed = 0;
      size_t produced = 0;
      size_t needed = 0;
      const internal::Utf8Status status = internal::DecodeUtf8(
          moved._GetBufferAt(0), size, reinterpret_cast<char16_t*>(buffer._GetBufferAt(0)), size,
          &consumed, &produced, &needed);
      if (status != internal::Utf8Status::kOk) return Refuse(report, kErrEndOfData);
      size = static_cast<uint32_t>(2 * produced);
    } else {
      const CodePageTable* table = FindCodePage(source);
      if (table == nullptr) return Refuse(report, kErrNoTable);
      if (!MoveAside(buffer, moved, 2ull * size + 2, report)) return 0;
      const uint8_t* in = moved._GetBufferAt(0);
      auto* out = reinterpret_cast<char16_t*>(buffer._GetBufferAt(0));
      for (uint32_t i = 0; i < size; ++i) out[i] = table->ToWide()[in[i]];
      size *= 2;
    }
    if (size == 0) return Refuse(report, kErrEndOfData);
    return Finish(buffer, size, report) ? found : 0;
  }

  // An 8-bit target.
  if (!XIsUnicodeTextFormat(source)) {
    uint8_t map[256];
    if (!XChar8ConvertLUTs(want, source, map)) return Refuse(report, kErrFormatPair);
    for (uint32_t i = 0; i < size; ++i) p[i] = map[p[i]];
  } else {
    const CodePageTable* table = FindCodePage(want);
    if (table == nullptr) return Refuse(report, kErrNoTable);
    if (source == kTextUtf8) {
      if (!Utf8To8BitInPlace(p, size, *table, size)) return Refuse(report, kErrEndOfData);
    } else {
      if (size % 2 != 0) return Refuse(report, kErrEndOfData);
      size = Utf16To8Bit(p, size / 2, p, *table);
    }
  }
  if (size == 0) return Refuse(report, kErrEndOfData);
  return Finish(buffer, size, report) ? found : 0;
}

namespace {

constexpr uint32_t kPieceUnits = 1024;

bool WriteAll(XIO& target, const void* data, uint32_t bytes) {
  return bytes == 0 || target._Write(data, bytes);
}

// Writes the byte-order mark of the file format, if it has one that is written.
bool WriteMark(XIO& target, uint16_t file_format) {
  static constexpr uint8_t kMark[] = {0xFF, 0xFE, 0x00, 0x00};
  static constexpr uint8_t kUtf8Mark[] = {0xEF, 0xBB, 0xBF};
  switch (file_format) {
    case kTextUtf16:
      return WriteAll(target, kMark, 2);
    case kTextUtf8:
      return WriteAll(target, kUtf8Mark, 3);
    case kTextUtf32:
      return WriteAll(target, kMark, 4);
    default:
      return true;
  }
}

// Writes UTF-16 text, given code unit by code unit through next(i), as the file format
// (UTF-16, UTF-8, 32-bit units or an 8-bit code page through to_8bit).
template <typename Next>
bool WriteWide(XIO& target, uint32_t units, uint16_t file_format, const uint8_t* to_8bit,
               Next next) {
  uint8_t out[4 * kPieceUnits];
  char16_t piece[kPieceUnits];
  uint32_t i = 0;
  while (i < units) {
    uint32_t n = units - i < kPieceUnits ? units - i : kPieceUnits;
    for (uint32_t k = 0; k < n; ++k) piece[k] = next(i + k);
    // Never end a piece between the halves of a pair.
    if (i + n < units && (piece[n - 1] & 0xFC00) == 0xD800) --n;
    uint32_t bytes = 0;
    switch (file_format) {
      case kTextUtf16:
        for (uint32_t k = 0; k < n; ++k) StoreLE<uint16_t>(out + 2 * k, piece[k]);
        bytes = 2 * n;
        break;
      case kTextUtf8:
        bytes = static_cast<uint32_t>(internal::EncodeUtf8(piece, n, out));
        break;
      case kTextUtf32:
        for (uint32_t k = 0; k < n; ++k) {
          uint32_t cp = piece[k];
          if ((cp & 0xFC00) == 0xD800 && k + 1 < n && (piece[k + 1] & 0xFC00) == 0xDC00) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (piece[k + 1] - 0xDC00u);
            ++k;
          } else if ((cp & 0xF800) == 0xD800) {
            cp = 0xFFFD;
          }
          StoreLE<uint32_t>(out + bytes, cp);
          bytes += 4;
        }
        break;
      default:
        for (uint32_t k = 0; k < n; ++k) {
          if ((piece[k] & 0xFC00) == 0xD800 && k + 1 < n && (piece[k + 1] & 0xFC00) == 0xDC00) {
            out[bytes++] = to_8bit[piece[k]];
            ++k;
          } else {
            out[bytes++] = to_8bit[piece[k]];
          }
        }
        break;
    }
    if (!WriteAll(target, out, bytes)) return false;
    i += n;
  }
  return true;
}

}  // namespace

bool WriteText(XIO& target, const uint8_t* text, uint32_t size, uint16_t file_format,
               uint16_t buffer_format) {
  if (file_format == 0)
    file_format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageOem, false);
  if (buffer_format == 0)
    buffer_format = XGetLanguageCodePage(kLanguageUserDefault, kCodePageAnsi, false);
  const uint16_t file = Normal(file_format);
  const uint16_t source = Normal(buffer_format);
  const bool source_unicode = XIsUnicodeTextFormat(source);
  if (file == source) {
    // The bytes as they are, after the format's mark.
    return WriteMark(target, file) && WriteAll(target, text, size);
  }
  // Unicode text other than UTF-16 is written only as itself; the big-endian formats
  // are never produced from another format.
  if ((source_unicode && source != kTextUtf16) || file == kTextUtf16BE || file == kTextUtf32BE)
    return Fail(target, kErrFormatPair);

  // Look the tables up before anything is written.
  const CodePageTable* from = nullptr;
  const CodePageTable* to = nullptr;
  if (!source_unicode) {
    from = FindCodePage(source);
    if (from == nullptr)
      return Fail(target, XIsUnicodeTextFormat(file) ? kErrNoTable : kErrFormatPair);
  }
  if (!XIsUnicodeTextFormat(file)) {
    to = FindCodePage(file);
    if (to == nullptr) return Fail(target, source_unicode ? kErrNoTable : kErrFormatPair);
  }

  if (from != nullptr && to != nullptr) {
    uint8_t map[256];
    const uint8_t* from_wide = to->FromWide();
    for (int i = 0; i < 256; ++i) map[i] = from_wide[from->ToWide()[i]];
    uint8_t out[4 * kPieceUnits];
    for (uint32_t i = 0; i < size; i += sizeof out) {
      const uint32_t n = size - i < sizeof out ? size - i : static_cast<uint32_t>(sizeof out);
      for (uint32_t k = 0; k < n; ++k) out[k] = map[text[i + k]];
      if (!WriteAll(target, out, n)) return false;
    }
    return true;
  }

  if (!WriteMark(target, file)) return false;
  const uint8_t* to_8bit = to != nullptr ? to->FromWide() : nullptr;
  if (from != nullptr) {
    const char16_t* to_wide = from->ToWide();
    return WriteWide(target, size, file, to_8bit, [&](uint32_t i) { return to_wide[text[i]]; });
  }
  // UTF-16 text; a trailing odd byte is not a code unit and is left out.
  return WriteWide(target, size / 2, file, to_8bit, [&](uint32_t i) {
    return static_cast<char16_t>(LoadLE<uint16_t>(text + 2 * i));
  });
}

}  // namespace text_internal

}  // namespace tavi
