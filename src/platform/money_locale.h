//===- money_locale.h - Currencies and money layouts of locales -*- C++ -*-===//
//
// The currency data of the platform's locale library: how a locale writes
// amounts, the ISO 4217 currencies with their decimals, and regions' currencies.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi {
struct strEnvMoneyOptions;
struct strCurrencyInfo;
}  // namespace tavi

namespace tavi::platform {

// LocaleMoneyOptions fills `out` with the way the locale (an identifier; 0x0400 the
// user's default) writes amounts of `code` (three letters, upper case), or of its
// own currency when code is null. False, `out` untouched, when the locale or the
// currency is unknown or the locale has no currency.
bool LocaleMoneyOptions(uint32_t locale, const char16_t* code, strEnvMoneyOptions& out);

// CurrencyDigits returns the usual fraction digits of a known ISO 4217 code (three
// upper-case letters), or -1.
int32_t CurrencyDigits(const char16_t* code);

// CurrencyRows gives the table of current ISO 4217 currencies in code order, built
// once; `count` receives its length.
const strCurrencyInfo* CurrencyRows(uint32_t& count);

// RegionCurrency writes the currency of a region (two upper-case letters) to code
// (terminated); false when there is none.
bool RegionCurrency(const char16_t* region, char16_t* code);

}  // namespace tavi::platform
