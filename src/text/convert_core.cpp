//===- convert_core.cpp - Formats and limits of the piecewise converter ---===//
#include "text/internal/convert_core.h"

#include "tavi/text/text_file.h"

namespace tavi::text_internal {

namespace {

bool EncodingOf(uint16_t format, Encoding& encoding, const CodePageTable*& table, uint32_t& error) {
  switch (format) {
    case kTextUtf16:
      encoding = Encoding::kUtf16;
      return true;
    case kTextUtf8:
    case kTextUtf8CodePage:
      encoding = Encoding::kUtf8;
      return true;
    default:
      break;
  }
  if (XIsUnicodeTextFormat(format)) {
    error = kErrLoadEncoding;
    return false;
  }
  table = FindCodePage(format);
  if (table == nullptr) {
    error = kErrSaveEncoding;
    return false;
  }
  encoding = Encoding::kCodePage;
  return true;
}

}  // namespace

uint32_t Converter::Init(uint16_t target, uint16_t source, bool strict) {
  uint32_t error = 0;
  const CodePageTable* source_table = nullptr;
  target_table_ = nullptr;
  if (!EncodingOf(target, target_, target_table_, error) ||
      !EncodingOf(source, source_, source_table, error))
    return error;
  if (source_table != nullptr) {
    for (int b = 0; b < 256; ++b) {
      const char16_t u = source_table->ToWide()[b];
      source_undefined_[b] = u == 0xFFFD;
      source_units_[b] = u == 0xFFFD ? u'?' : u;
    }
  }
  // Build the reverse table now rather than on the first write.
  if (target_table_ != nullptr) target_table_->FromWide();
  strict_ = strict;
  carry_n_ = 0;
  return 0;
}

size_t MalformedUtf8Length(const uint8_t* in, size_t n) {
  const uint8_t lead = in[0];
  size_t length;
  uint8_t lo = 0x80;
  uint8_t hi = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) lo = 0xA0;  // shorter forms are overlong
    if (lead == 0xED) hi = 0x9F;  // above are the surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) lo = 0x90;
    if (lead == 0xF4) hi = 0x8F;  // above is past U+10FFFF
  } else {
    return 1;
  }
  size_t i = 1;
  if (i < n && in[i] >= lo && in[i] <= hi) {
    ++i;
    while (i < length && i < n && (in[i] & 0xC0) == 0x80) ++i;
  }
  return i < length ? i : length - 1;
}

}  // namespace tavi::text_internal
