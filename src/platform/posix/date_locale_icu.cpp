//===- date_locale_icu.cpp - Calendar names and patterns through ICU -------===//
//
// Reads a locale's Gregorian names from ICU's date-format symbols, its patterns
// from the date-time pattern generator and its first day of the week from a
// calendar, always with the Gregorian calendar whatever the locale's default.
//
//===----------------------------------------------------------------------===//
#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <memory>

#include "platform/date_locale.h"
#include "platform/number_locale.h"
#include "platform/posix/icu_locale.h"

namespace tavi::platform {

namespace {

// The ICU name for a locale identifier, with the Gregorian calendar asked for.
bool IcuGregorianLocale(uint32_t locale, char* name, int32_t capacity) {
  if (!IcuLocaleName(locale, name, capacity)) return false;
  UErrorCode status = U_ZERO_ERROR;
  uloc_setKeywordValue("calendar", "gregorian", name, capacity, &status);
  return U_SUCCESS(status);
}

struct DateFormatCloser {
  void operator()(UDateFormat* f) const { udat_close(f); }
};
struct GeneratorCloser {
  void operator()(UDateTimePatternGenerator* g) const { udatpg_close(g); }
};
struct CalendarCloser {
  void operator()(UCalendar* c) const { ucal_close(c); }
};

bool Symbol(const UDateFormat* format, UDateFormatSymbolType type, int32_t index,
            std::u16string& out) {
  UChar text[64];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = udat_getSymbols(format, type, index, text, 64, &status);
  if (U_FAILURE(status) || n >= 64) return false;
  out.assign(text, text + n);
  return true;
}

}  // namespace

bool LoadDateLocale(uint32_t locale, const char* const* skeletons, size_t count,
                    DateLocaleTexts& out) {
  char name[ULOC_FULLNAME_CAPACITY + 32];
  if (count > 8 || !IcuGregorianLocale(locale, name, sizeof name)) return false;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UDateFormat, DateFormatCloser> format(
      udat_open(UDAT_MEDIUM, UDAT_MEDIUM, name, u"UTC", -1, nullptr, 0, &status));
  if (U_FAILURE(status)) return false;
  bool ok = true;
  for (int32_t i = 0; i < 12; ++i) {
    ok &= Symbol(format.get(), UDAT_MONTHS, i, out.months[i]);
    ok &= Symbol(format.get(), UDAT_SHORT_MONTHS, i, out.shortMonths[i]);
    ok &= Symbol(format.get(), UDAT_STANDALONE_MONTHS, i, out.standaloneMonths[i]);
    ok &= Symbol(format.get(), UDAT_STANDALONE_SHORT_MONTHS, i, out.standaloneShortMonths[i]);
  }
  // ICU numbers the weekdays from 1 (Sunday).
  for (int32_t i = 0; i < 7; ++i) {
    ok &= Symbol(format.get(), UDAT_WEEKDAYS, i + 1, out.weekdays[i]);
    ok &= Symbol(format.get(), UDAT_SHORT_WEEKDAYS, i + 1, out.shortWeekdays[i]);
  }
  ok &= Symbol(format.get(), UDAT_AM_PMS, 0, out.amPm[0]);
  ok &= Symbol(format.get(), UDAT_AM_PMS, 1, out.amPm[1]);
  ok &= Symbol(format.get(), UDAT_ERAS, 1, out.era);
  if (!ok) return false;

  std::unique_ptr<UDateTimePatternGenerator, GeneratorCloser> generator(udatpg_open(name, &status));
  if (U_FAILURE(status)) return false;
  for (size_t i = 0; i < count; ++i) {
    UChar skeleton[32];
    int32_t n = 0;
    for (; skeletons[i][n] != 0 && n < 31; ++n) skeleton[n] = static_cast<UChar>(skeletons[i][n]);
    UChar pattern[128];
    const int32_t length =
        udatpg_getBestPattern(generator.get(), skeleton, n, pattern, 128, &status);
    if (U_FAILURE(status) || length >= 128) return false;
    out.patterns[i].assign(pattern, pattern + length);
  }
  int32_t glueLength = 0;
  const UChar* glue = udatpg_getDateTimeFormat(generator.get(), &glueLength);
  if (glue == nullptr) return false;
  out.glue.assign(glue, glue + glueLength);

  std::unique_ptr<UCalendar, CalendarCloser> calendar(
      ucal_open(u"UTC", -1, name, UCAL_GREGORIAN, &status));
  if (U_FAILURE(status)) return false;
  const int32_t first = ucal_getAttribute(calendar.get(), UCAL_FIRST_DAY_OF_WEEK);
  out.firstDayOfWeek = static_cast<uint8_t>(first >= 1 && first <= 7 ? first - 1 : 0);

  UNumberFormat* number = unum_open(UNUM_DECIMAL, nullptr, 0, name, nullptr, &status);
  if (U_SUCCESS(status)) {
    UChar point[8];
    const int32_t n = unum_getSymbol(number, UNUM_DECIMAL_SEPARATOR_SYMBOL, point, 8, &status);
    if (U_SUCCESS(status) && n < 8) out.decimal.assign(point, point + n);
  }
  unum_close(number);
  return true;
}

}  // namespace tavi::platform
