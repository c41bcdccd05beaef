//===- number_options.h - Decimal point and digit-group marks ---*- C++ -*-===//
//
// This file declares strEnvNumberOptions, the record that carries the decimal
// point, its alternative and the digit-group separator to every number formatter
// and parser, together with the portable settings and the powers of ten that
// fixed-point reals are scaled by.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <type_traits>

#include "tavi/export.h"

namespace tavi {

// strEnvNumberOptions is a plain record, copied bytewise, reserved character
// included. A default-constructed record holds the portable settings: point ".",
// group separator U+00A0 (no-break space), no alternative point, digits
// "0123456789", print width 16. The fields keep their natural alignment (one byte
// of padding follows PrintWidth) so that each can be bound to a reference; the
// record is never stored, so its size is not part of any format.
struct TAVI_API strEnvNumberOptions {
  // The number of characters a double may fill when printed with automatic
  // precision.
  uint8_t PrintWidth = 16;
  // The characters for the digits 0 to 9 (no formatter of the library reads them).
  char16_t Digits[10] = {u'0', u'1', u'2', u'3', u'4', u'5', u'6', u'7', u'8', u'9'};
  // Digit-group separator, read by GroupSeparator().
  char16_t GroupSeparatorChar = u'\u00A0';
  // Decimal point, read by PointMark().
  char16_t PointMarkChar = u'.';
  // A second character accepted as a decimal point when text is read; 0 = none.
  char16_t AltPointMarkChar = 0;
  // Free for the application: set by nothing here but the constructors (to 0) and
  // copied with the record.
  char16_t Reserved = 0;

  // ValidChars*: terminated character sets that input fields use to filter what
  // may be typed into an integer, an unsigned integer or a hexadecimal number.
  static constexpr char16_t ValidCharsInteger[] = u"-0123456789";
  static constexpr char16_t ValidCharsUnsignedInteger[] = u"0123456789";
  static constexpr char16_t ValidCharsHexaNumber[] = u"ABCDEFabcdef0123456789";

  constexpr strEnvNumberOptions() = default;
  // The portable settings, then SetLocale(locale).
  explicit strEnvNumberOptions(uint32_t locale);
  strEnvNumberOptions(const strEnvNumberOptions& other) = default;
  strEnvNumberOptions& operator=(const strEnvNumberOptions& other) = default;

  // SetPortable sets point "." and group separator U+00A0; the alternative point,
  // PrintWidth and Digits are left as they are.
  void SetPortable() {
    PointMarkChar = u'.';
    GroupSeparatorChar = u'\u00A0';
  }
  // SetLocale takes the decimal and thousands separators of a locale identifier
  // (0x0400 = the user's default locale). Each is taken only when the locale gives
  // exactly one character; a longer or missing separator leaves the old value. A
  // new point clears the alternative point. A thousands separator that is a plain
  // space becomes U+00A0; when the alternative point equals the new separator the
  // alternative is cleared.
  void SetLocale(uint32_t locale);
  // SetPointMark sets the point and clears the alternative point.
  void SetPointMark(char16_t c) {
    PointMarkChar = c;
    AltPointMarkChar = 0;
  }
  // SetAltPointMark makes the alternative point the other one of "." and ",": for
  // point "." it becomes "," and for point "," it becomes "."; when that character
  // is `taken` (a character the caller already uses, typically its group
  // separator) it becomes 0 instead. With any other point nothing changes. `taken`
  // itself is never stored.
  void SetAltPointMark(char16_t taken);
  // SetGroupSeparator sets the separator; an alternative point equal to it is
  // cleared.
  void SetGroupSeparator(char16_t c) {
    GroupSeparatorChar = c;
    if (AltPointMarkChar == c) AltPointMarkChar = 0;
  }
  char16_t PointMark() const { return PointMarkChar; }
  char16_t GroupSeparator() const { return GroupSeparatorChar; }
  // PointMarkAlt returns the point mark itself (the same as PointMark()), not the
  // alternative point: read AltPointMarkChar for that. Existing callers rely on it.
  char16_t PointMarkAlt() const { return PointMarkChar; }
};

static_assert(std::is_trivially_copyable_v<strEnvNumberOptions>, "number options copy bytewise");

// The portable settings, for locale-independent text (file formats, logs).
TAVI_API extern strEnvNumberOptions gPortableNumberOptions;

// gRealDividers[d] is 10^d for d = 0..10: the scale of a real with d decimals.
TAVI_API extern const uint64_t gRealDividers[11];

}  // namespace tavi
