//===- money_options.cpp - How a locale writes amounts of money -----------===//
//
// The portable and locale settings of strEnvMoneyOptions and the currency and
// region tables, over the platform's currency data.
//
//===----------------------------------------------------------------------===//
#include "tavi/money/money_options.h"

#include <algorithm>

#include "platform/money_locale.h"

namespace tavi {

namespace {

// Copies exactly `letters` ASCII letters, upper-cased, and a terminator; false for
// anything else (another length, other characters, a null text).
bool UpperLetters(const char16_t* text, char16_t* out, int letters) {
  if (text == nullptr) return false;
  for (int i = 0; i < letters; ++i) {
    char16_t c = text[i];
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
    if (c < u'A' || c > u'Z') return false;
    out[i] = c;
  }
  out[letters] = 0;
  return text[letters] == 0;
}

}  // namespace

bool strEnvMoneyOptions::SetPortable(const char16_t* code) {
  char16_t upper[4];
  if (!UpperLetters(code, upper, 3)) return false;
  const int32_t digits = platform::CurrencyDigits(upper);
  if (digits < 0) return false;
  strEnvMoneyOptions o;
  std::copy(upper, upper + 4, o.CurrencyCode);
  std::copy(upper, upper + 4, o.Symbol);
  o.Decimals = static_cast<uint8_t>(std::min(digits, 10));
  *this = o;
  return true;
}

bool strEnvMoneyOptions::SetLocale(uint32_t locale) {
  return platform::LocaleMoneyOptions(locale, nullptr, *this);
}

bool strEnvMoneyOptions::SetLocaleEx(uint32_t locale, const char16_t* code) {
  char16_t upper[4];
  return UpperLetters(code, upper, 3) && platform::LocaleMoneyOptions(locale, upper, *this);
}

int32_t XCurrencyDecimals(const char16_t* code) {
  char16_t upper[4];
  return UpperLetters(code, upper, 3) ? platform::CurrencyDigits(upper) : -1;
}

uint32_t XCurrencyTable(strCurrencyInfo* rows, uint32_t capacity) {
  uint32_t count = 0;
  const strCurrencyInfo* table = platform::CurrencyRows(count);
  if (rows != nullptr) std::copy(table, table + std::min(count, capacity), rows);
  return count;
}

bool XRegionCurrency(const char16_t* region, char16_t code[4]) {
  char16_t upper[3];
  code[0] = 0;
  return UpperLetters(region, upper, 2) && platform::RegionCurrency(upper, code);
}

}  // namespace tavi
