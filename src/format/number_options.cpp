//===- number_options.cpp - Decimal point and digit-group marks -----------===//
//
// The locale-dependent parts of strEnvNumberOptions and the shared constants.
//
//===----------------------------------------------------------------------===//
#include "tavi/format/number_options.h"

#include "format/internal/locale_marks.h"
#include "platform/number_locale.h"

namespace tavi {

strEnvNumberOptions gPortableNumberOptions;

const uint64_t gRealDividers[11] = {1,       10,       100,       1000,       10000,      100000,
                                    1000000, 10000000, 100000000, 1000000000, 10000000000};

strEnvNumberOptions::strEnvNumberOptions(uint32_t locale) {
  SetLocale(locale);
}

void strEnvNumberOptions::SetLocale(uint32_t locale) {
  // The platform answers in a five-character buffer, like the system call it stands
  // for; a separator of several characters does not fit a mark and is ignored.
  char16_t decimal[5];
  char16_t thousand[5];
  const int32_t decimal_count =
      platform::LocaleNumberSymbol(locale, platform::NumberSymbol::kDecimal, decimal, 5);
  const int32_t thousand_count =
      platform::LocaleNumberSymbol(locale, platform::NumberSymbol::kThousand, thousand, 5);
  internal::TakeLocaleMarks(*this, decimal, decimal_count, thousand, thousand_count);
}

void strEnvNumberOptions::SetAltPointMark(char16_t taken) {
  char16_t other;
  if (PointMarkChar == u'.')
    other = u',';
  else if (PointMarkChar == u',')
    other = u'.';
  else
    return;
  AltPointMarkChar = other == taken ? 0 : other;
}

namespace internal {

void TakeLocaleMarks(strEnvNumberOptions& options, const char16_t* decimal, int32_t decimal_count,
                     const char16_t* thousand, int32_t thousand_count) {
  if (decimal_count == 2) {
    options.PointMarkChar = decimal[0];
    options.AltPointMarkChar = 0;
  }
  if (thousand_count == 2) {
    options.GroupSeparatorChar = thousand[0] == u' ' ? u'\u00A0' : thousand[0];
    if (options.AltPointMarkChar == options.GroupSeparatorChar) options.AltPointMarkChar = 0;
  }
}

}  // namespace internal

}  // namespace tavi
