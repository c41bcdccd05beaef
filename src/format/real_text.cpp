//===- real_text.cpp - Fixed-point reals to text and back -----------------===//
#include "tavi/format/real_text.h"

#include "format/internal/digits.h"
#include "tavi/format/integer_text.h"
#include "tavi/format/number_options.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

// Decimals index gRealDividers, so they are kept within its eleven entries.
inline uint32_t ClampDecimals(int8_t decimals) {
  return decimals < 0 ? 0u : decimals > 10 ? 10u : static_cast<uint32_t>(decimals);
}

}  // namespace

char16_t* _RealToString(int64_t value, int8_t decimals, bool keep_zeros, char16_t* end,
                        char16_t point) {
  const uint32_t d = ClampDecimals(decimals);
  const bool negative = value < 0;
  const uint64_t magnitude =
      negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  uint64_t whole = magnitude / gRealDividers[d];
  uint64_t fraction = magnitude - whole * gRealDividers[d];
  char16_t* p = end;
  bool written = keep_zeros;
  for (uint32_t i = 0; i < d; ++i) {
    const uint32_t digit = static_cast<uint32_t>(fraction % 10);
    fraction /= 10;
    if (digit != 0) written = true;
    if (written) *--p = static_cast<char16_t>(u'0' + digit);
  }
  if (p != end) *--p = point;
  p = internal::FastDecimal(whole, p);
  if (negative) *--p = u'-';
  return p;
}

char16_t* _RealToStringEx(int64_t value, int8_t decimals, bool keep_zeros, char16_t* end,
                          char16_t point) {
  end[-1] = 0;
  return _RealToString(value, decimals, keep_zeros, end - 1, point);
}

bool XRealToString(XIO& out, int64_t value, int8_t decimals, bool keep_zeros, char16_t point) {
  char16_t text[24];
  const char16_t* first = _RealToString(value, decimals, keep_zeros, text + 24, point);
  return out._Write(first, static_cast<uint32_t>(text + 24 - first) * sizeof(char16_t));
}

const char16_t* _StringToReal(int64_t& value, int8_t decimals, const char16_t* text, char16_t point,
                              char16_t first_char_free, char16_t group_separator) {
  using internal::DecimalDigit;
  const uint32_t d = ClampDecimals(decimals);
  const char16_t* p = text;
  while (*p == u' ') ++p;
  const bool negative = *p == u'-';
  if (negative) ++p;
  if (first_char_free == 0 && DecimalDigit(*p) > 9 && *p != point) return nullptr;
  uint64_t v = 0;
  bool in_fraction = false;
  uint32_t taken = 0;
  for (char16_t c; (c = *p) != 0; ++p) {
    const uint32_t digit = DecimalDigit(c);
    if (digit <= 9) {
      if (!in_fraction) {
        v = v * 10 + digit;
      } else if (taken < d) {
        v = v * 10 + digit;
        ++taken;
      }
    } else if (c == point && !in_fraction) {
      in_fraction = true;
    } else if (c != group_separator || group_separator == 0 || v == 0 || in_fraction ||
               DecimalDigit(p[1]) > 9) {
      break;
    }
  }
  if (taken < d) v *= gRealDividers[d - taken];
  value = static_cast<int64_t>(negative ? 0 - v : v);
  return p;
}

}  // namespace tavi
