//===- money_options.h - How a locale writes amounts of money ---*- C++ -*-===//
//
// This file declares strEnvMoneyOptions, the record that tells the money
// formatter and parser how amounts look (currency, symbol and its place,
// decimals, digit groups, negative form), and the currency and region tables.
//
// Design. An amount is a "real": a signed 64-bit integer holding the amount
// times 10^d, d (0 to 10) passed with every call, exactly as the number
// formatters take it. Nothing is ever a double, so amounts round-trip exactly.
// The options record is plain data like strEnvNumberOptions: either portable
// (the ISO 4217 code after the amount, point ".", groups of three joined by
// U+00A0, the currency's own decimals) or filled from a locale through ICU,
// which gives the same text as ICU's own currency formatting for the common
// layouts (Indian two-digit groups, Swiss "CHF-1'234.50", yen without
// decimals). Digits are always "0" to "9", and the direction marks that
// right-to-left locales put around signs are left out. The formatters
// (money_text.h) write into caller memory or append to an XIO; the parser
// returns where it stopped. Locale look-ups are made when the record is filled,
// never while formatting, so formatting allocates nothing and touches no locale
// data.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>
#include <type_traits>

#include "tavi/export.h"

namespace tavi {

// Where the currency symbol stands relative to the number.
enum eMoneySymbolPosition : uint8_t {
  kMoneySymbolBefore = 0,  // "$1.00", "CHF 1.00"
  kMoneySymbolAfter = 1,   // "1,00 €"
};

// How a negative amount is marked. With the symbol after the number, "before the
// number" is the same place as "in front"; with the symbol before it, "after the
// number" is the same place as "at the back". Values above 5 act as 0.
enum eMoneyNegative : uint8_t {
  kMoneyMinusFront = 0,         // "-$1.00", "-1,00 €"
  kMoneyMinusBeforeNumber = 1,  // "€ -1,00": the symbol keeps its space
  kMoneyMinusBack = 2,          // "1,00 €-"
  kMoneyMinusAfterNumber = 3,   // "1,00- €"
  kMoneyParentheses = 4,        // "($1.00)"
  kMoneyMinusAfterSymbol = 5,   // "CHF-1.00": the sign takes the symbol's space
};

// strEnvMoneyOptions is a plain record, copied bytewise. A default-constructed
// record is portable with no currency (no code, no symbol, two decimals):
// "1 234.50", where the gap is U+00A0.
struct TAVI_API strEnvMoneyOptions {
  // The ISO 4217 code in capitals, terminated; empty when no currency is set.
  char16_t CurrencyCode[4] = {};
  // The symbol shown with amounts, terminated (at most 11 characters); may be
  // empty, in which case amounts are written without one.
  char16_t Symbol[12] = {};
  // Decimal point and digit-group separator of amounts (0 = no grouping).
  char16_t PointMark = u'.';
  char16_t GroupSeparator = u'\u00A0';
  // The sign written for negative amounts.
  char16_t MinusSign = u'-';
  // The character between symbol and number (usually U+00A0); 0 = none.
  char16_t SymbolSpace = u'\u00A0';
  // The number of fraction digits shown (0 to 10).
  uint8_t Decimals = 2;
  // The size of the digit group next to the point (0 = no grouping), and of the
  // groups further left (0 = the same as the first): 3 and 2 give "12,34,567".
  uint8_t PrimaryGroup = 3;
  uint8_t SecondaryGroup = 0;
  // Groups are written only when the integer part has at least PrimaryGroup +
  // MinGrouping digits: with 2, "1234" stays whole and "12 345" is grouped.
  uint8_t MinGrouping = 1;
  uint8_t SymbolPosition = kMoneySymbolAfter;  // an eMoneySymbolPosition; others act as after
  uint8_t Negative = kMoneyMinusFront;         // an eMoneyNegative

  constexpr strEnvMoneyOptions() = default;
  strEnvMoneyOptions(const strEnvMoneyOptions& other) = default;
  strEnvMoneyOptions& operator=(const strEnvMoneyOptions& other) = default;

  // SetPortable sets locale-independent options for an ISO 4217 code: the code as
  // the symbol after the number, separated by U+00A0, point ".", groups of three
  // joined by U+00A0, "-" in front, and the currency's decimals from the currency
  // table. The code is taken in upper or lower case. Returns false and leaves the
  // record unchanged when the code is not a known currency.
  bool SetPortable(const char16_t* code);
  // SetLocale fills the record from a locale identifier (0x0400 = the user's
  // default locale) with the locale's own currency. SetLocaleEx does the same for
  // the currency `code` as that locale writes it ("US$" or "$" for USD, depending
  // on the locale). Both return false and leave the record unchanged when the
  // locale or the currency is unknown or the locale has no currency (code 0x20000019
  // is the one to report).
  bool SetLocale(uint32_t locale);
  bool SetLocaleEx(uint32_t locale, const char16_t* code);
};

static_assert(std::is_trivially_copyable_v<strEnvMoneyOptions>, "money options copy bytewise");

// One row of the currency table.
struct strCurrencyInfo {
  char16_t Code[4];  // ISO 4217 alphabetic code, terminated
  uint16_t Number;   // ISO 4217 numeric code (0 when the data has none)
  uint8_t Decimals;  // the currency's usual fraction digits
};

// XCurrencyDecimals returns the usual fraction digits of an ISO 4217 code ("JPY"
// 0, "EUR" 2, "BHD" 3), upper or lower case, or -1 when the code is unknown or not
// three letters.
TAVI_API int32_t XCurrencyDecimals(const char16_t* code);
// XCurrencyTable copies up to `capacity` rows of the table of current ISO 4217
// currencies, in code order, into `rows` (which may be null when capacity is 0)
// and returns the number of rows the table has. The table is read from the
// locale data once and kept.
TAVI_API uint32_t XCurrencyTable(strCurrencyInfo* rows, uint32_t capacity);
// XRegionCurrency writes the currency in use in a region, named by its two-letter
// ISO 3166 code ("DE", "ch"), to `code` (four characters, terminated) and returns
// true; false, with code set empty, when the region is unknown or has no currency.
TAVI_API bool XRegionCurrency(const char16_t* region, char16_t code[4]);

}  // namespace tavi
