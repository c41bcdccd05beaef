//===- double_parse.cpp - Text to doubles ----------------------------------===//
//
// One pass over the text gathers the first 19 significant digits, whether a non-zero
// digit follows them, and the decimal exponent; double_core.cpp rounds that to the
// nearest double (reading the digits again only in the rare undecided cases).
//
//===----------------------------------------------------------------------===//
#include "format/internal/double_core.h"
#include "tavi/format/double_text.h"

namespace tavi {

namespace {

inline bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

}  // namespace

const char16_t* _StringToDouble(double& value, const char16_t* text, char16_t point,
                                char16_t altPoint) {
  if (text == nullptr) return nullptr;
  const char16_t* p = text;
  while (*p == u' ') ++p;
  bool negative = false;
  if (*p == u'-') {
    negative = true;
    ++p;
  }
  const auto is_point = [point, altPoint](char16_t c) {
    return c != 0 && (c == point || (altPoint != 0 && c == altPoint));
  };
  if (!IsDigit(*p) && !is_point(*p)) return nullptr;

  format_internal::DecimalScan scan{};
  scan.begin = p;
  uint64_t w = 0;
  int count = 0;      // significant digits held in w
  int64_t scale = 0;  // power of ten of w's last digit, before the exponent
  bool more = false;  // a non-zero digit beyond the 19 held
  const char16_t* const digits_start = p;

  // Digits before the point: leading zeros carry nothing; beyond 19 digits each
  // still scales the value.
  while (*p == u'0') ++p;
  for (; IsDigit(*p); ++p) {
    const auto digit = static_cast<uint32_t>(*p - u'0');
    if (count < 19) {
      w = w * 10 + digit;
      ++count;
    } else {
      ++scale;
      more |= digit != 0;
    }
  }
  bool any_digit = p != digits_start;
  if (is_point(*p)) {
    ++p;
    // Digits after the point: zeros before the first significant digit only scale.
    const char16_t* const fraction_start = p;
    if (count == 0) {
      for (; *p == u'0'; ++p) --scale;
    }
    for (; IsDigit(*p); ++p) {
      const auto digit = static_cast<uint32_t>(*p - u'0');
      if (count < 19) {
        w = w * 10 + digit;
        ++count;
        --scale;
      } else {
        more |= digit != 0;
      }
    }
    any_digit |= p != fraction_start;
    // A second point ends the number, or refuses it when no digit came first.
    if (is_point(*p) && !any_digit) return nullptr;
  }
  if (!any_digit) return nullptr;
  scan.end = p;

  if (*p == u'e' || *p == u'E') {
    ++p;
    bool exponent_negative = false;
    if (*p == u'-' || *p == u'+') {
      exponent_negative = *p == u'-';
      ++p;
    }
    if (!IsDigit(*p)) return nullptr;
    int64_t e = 0;
    for (; IsDigit(*p); ++p) {
      // Large enough to tell every case apart, small enough never to overflow.
      if (e < 100000) e = e * 10 + (*p - u'0');
    }
    if (!exponent_negative && e > 308) return nullptr;
    scale += exponent_negative ? -e : e;
  }

  scan.first19 = w;
  scan.first19_count = count;
  scan.more_digits = more;
  scan.exponent = scale;
  uint64_t bits = format_internal::NearestDouble(scan);
  if (bits >= (uint64_t{0x7FF} << 52)) return nullptr;
  if (negative) bits |= uint64_t{1} << 63;
  value = format_internal::BitsDouble(bits);
  return p;
}

}  // namespace tavi
