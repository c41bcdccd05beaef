//===- money_locale_icu.cpp - Currencies and money layouts through ICU ----===//
//
// Reads a locale's currency pattern, symbols and grouping from ICU's currency
// number format and turns them into a strEnvMoneyOptions record; builds the ISO
// 4217 table and answers regions' currencies from ICU's currency data.
//
//===----------------------------------------------------------------------===//
#include <unicode/uchar.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "platform/money_locale.h"
#include "platform/number_locale.h"
#include "platform/posix/icu_locale.h"
#include "tavi/money/money_options.h"

namespace tavi::platform {

namespace {

struct FormatCloser {
  void operator()(UNumberFormat* f) const { unum_close(f); }
};
using Format = std::unique_ptr<UNumberFormat, FormatCloser>;

// A symbol of the format as text; empty when ICU cannot give it.
std::u16string Symbol(const UNumberFormat* format, UNumberFormatSymbol which) {
  char16_t text[32];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = unum_getSymbol(format, which, text, 32, &status);
  if (U_FAILURE(status) || n <= 0 || n >= 32) return {};
  return std::u16string(text, static_cast<size_t>(n));
}

// Direction marks carry no meaning in a one-character sign.
bool IsDirectionMark(char16_t c) {
  return c == 0x200E || c == 0x200F || c == 0x061C;
}

// The one character of a symbol once direction marks are dropped, or `fallback`.
char16_t SingleChar(const std::u16string& text, char16_t fallback) {
  char16_t found = 0;
  for (char16_t c : text) {
    if (IsDirectionMark(c)) continue;
    if (found != 0) return fallback;
    found = c;
  }
  return found != 0 ? found : fallback;
}

bool IsSpace(char16_t c) {
  return c == u' ' || c == 0x00A0 || c == 0x202F;
}

bool IsNumberChar(char16_t c) {
  return c == u'#' || c == u'0' || (c >= u'1' && c <= u'9') || c == u'.' || c == u',';
}

// Where the parts of one subpattern of a currency pattern stand.
struct PatternParts {
  int32_t currency = -1;      // first "¤"
  int32_t number_first = -1;  // first digit placeholder
  int32_t number_end = -1;    // one past the last
  int32_t minus = -1;         // "-"
  bool parenthesis = false;
  char16_t space = 0;  // a space between symbol and number
};

PatternParts Analyse(const std::u16string_view pattern) {
  PatternParts parts;
  bool quoted = false;
  for (int32_t i = 0; i < static_cast<int32_t>(pattern.size()); ++i) {
    const char16_t c = pattern[static_cast<size_t>(i)];
    if (c == u'\'') {
      quoted = !quoted;
      continue;
    }
    if (quoted) continue;
    if (c == 0x00A4 && parts.currency < 0) parts.currency = i;
    if (IsNumberChar(c)) {
      if (parts.number_first < 0) parts.number_first = i;
      parts.number_end = i + 1;
    }
    if (c == u'-') parts.minus = i;
    if (c == u'(') parts.parenthesis = true;
  }
  if (parts.currency >= 0 && parts.number_first >= 0) {
    const bool before = parts.currency < parts.number_first;
    const int32_t from = before ? parts.currency + 1 : parts.number_end;
    const int32_t to = before ? parts.number_first : parts.currency;
    for (int32_t i = from; i < to; ++i) {
      if (IsSpace(pattern[static_cast<size_t>(i)])) parts.space = pattern[static_cast<size_t>(i)];
    }
  }
  return parts;
}

// Whether ICU sets a symbol apart from the digits when the pattern puts no space
// between them: it does when the symbol's character next to the number is neither
// a symbol nor a space ("CHF1.00" becomes "CHF 1.00", "$1.00" stays).
bool NeedsSpacing(char16_t c) {
  const int8_t type = u_charType(c);
  return type != U_MATH_SYMBOL && type != U_CURRENCY_SYMBOL && type != U_MODIFIER_SYMBOL &&
         type != U_OTHER_SYMBOL && type != U_SPACE_SEPARATOR && type != U_LINE_SEPARATOR &&
         type != U_PARAGRAPH_SEPARATOR;
}

uint8_t NegativeForm(const PatternParts& neg, bool symbol_before) {
  if (neg.parenthesis) return kMoneyParentheses;
  if (neg.minus < 0 || neg.number_first < 0) return kMoneyMinusFront;
  if (neg.minus < neg.number_first) {
    if (!symbol_before || neg.currency < 0 || neg.minus < neg.currency) return kMoneyMinusFront;
    return neg.space != 0 ? kMoneyMinusBeforeNumber : kMoneyMinusAfterSymbol;
  }
  if (symbol_before || neg.currency < 0 || neg.minus > neg.currency) return kMoneyMinusBack;
  return kMoneyMinusAfterNumber;
}

bool ValidCode(const char16_t* code) {
  for (int i = 0; i < 3; ++i) {
    if (code[i] < u'A' || code[i] > u'Z') return false;
  }
  return code[3] == 0;
}

// All ISO 4217 codes ICU knows, historic ones included, sorted; built once.
const std::vector<std::u16string>& AllCodes() {
  static const std::vector<std::u16string> codes = [] {
    std::vector<std::u16string> list;
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration* e = ucurr_openISOCurrencies(UCURR_ALL, &status);
    if (U_FAILURE(status)) return list;
    int32_t n = 0;
    while (const UChar* code = uenum_unext(e, &n, &status)) {
      if (U_FAILURE(status)) break;
      if (n == 3) list.emplace_back(code, 3);
    }
    uenum_close(e);
    std::sort(list.begin(), list.end());
    return list;
  }();
  return codes;
}

}  // namespace

int32_t CurrencyDigits(const char16_t* code) {
  if (!ValidCode(code)) return -1;
  const auto& codes = AllCodes();
  if (!std::binary_search(codes.begin(), codes.end(), std::u16string_view(code, 3))) return -1;
  UErrorCode status = U_ZERO_ERROR;
  const int32_t digits = ucurr_getDefaultFractionDigits(code, &status);
  return U_SUCCESS(status) ? digits : -1;
}

const strCurrencyInfo* CurrencyRows(uint32_t& count) {
  static const std::vector<strCurrencyInfo> rows = [] {
    std::vector<strCurrencyInfo> list;
    UErrorCode status = U_ZERO_ERROR;
    UEnumeration* e = ucurr_openISOCurrencies(UCURR_COMMON | UCURR_NON_DEPRECATED, &status);
    if (U_FAILURE(status)) return list;
    int32_t n = 0;
    while (const UChar* code = uenum_unext(e, &n, &status)) {
      if (U_FAILURE(status)) break;
      if (n != 3) continue;
      strCurrencyInfo row{};
      std::copy(code, code + 3, row.Code);
      UErrorCode s = U_ZERO_ERROR;
      const int32_t digits = ucurr_getDefaultFractionDigits(code, &s);
      row.Decimals = static_cast<uint8_t>(U_SUCCESS(s) && digits >= 0 && digits <= 10 ? digits : 2);
      const int32_t number = ucurr_getNumericCode(code);
      row.Number = static_cast<uint16_t>(number > 0 && number < 1000 ? number : 0);
      list.push_back(row);
    }
    uenum_close(e);
    std::sort(list.begin(), list.end(), [](const strCurrencyInfo& a, const strCurrencyInfo& b) {
      return std::u16string_view(a.Code, 3) < std::u16string_view(b.Code, 3);
    });
    return list;
  }();
  count = static_cast<uint32_t>(rows.size());
  return rows.data();
}

bool RegionCurrency(const char16_t* region, char16_t* code) {
  code[0] = 0;
  char name[8] = "und_";
  for (int i = 0; i < 2; ++i) {
    if (region[i] < u'A' || region[i] > u'Z') return false;
    name[4 + i] = static_cast<char>(region[i]);
  }
  if (region[2] != 0) return false;
  name[6] = 0;
  UChar found[4];
  UErrorCode status = U_ZERO_ERROR;
  const int32_t n = ucurr_forLocale(name, found, 4, &status);
  if (U_FAILURE(status) || status == U_USING_DEFAULT_WARNING || n != 3) return false;
  found[3] = 0;
  if (!ValidCode(found) || std::u16string_view(found, 3) == u"XXX") return false;
  std::copy(found, found + 4, code);
  return true;
}

bool LocaleMoneyOptions(uint32_t locale, const char16_t* code, strEnvMoneyOptions& out) {
  char name[ULOC_FULLNAME_CAPACITY];
  if (!IcuLocaleName(locale, name, sizeof name)) return false;
  if (code != nullptr && CurrencyDigits(code) < 0) return false;
  UErrorCode status = U_ZERO_ERROR;
  Format format(unum_open(UNUM_CURRENCY, nullptr, 0, name, nullptr, &status));
  if (U_FAILURE(status)) return false;
  if (code != nullptr) {
    unum_setTextAttribute(format.get(), UNUM_CURRENCY_CODE, code, 3, &status);
    if (U_FAILURE(status)) return false;
  }
  char16_t currency[8];
  const int32_t code_length =
      unum_getTextAttribute(format.get(), UNUM_CURRENCY_CODE, currency, 8, &status);
  if (U_FAILURE(status) || code_length != 3) return false;
  currency[3] = 0;
  if (!ValidCode(currency) || std::u16string_view(currency, 3) == u"XXX") return false;

  strEnvMoneyOptions o;
  std::copy(currency, currency + 4, o.CurrencyCode);
  // The symbol the formatter shows for this currency in this locale; the code when
  // the symbol does not fit the record.
  int32_t symbol_length = 0;
  UBool is_choice = false;
  const UChar* symbol =
      ucurr_getName(currency, name, UCURR_SYMBOL_NAME, &is_choice, &symbol_length, &status);
  if (U_FAILURE(status) || symbol == nullptr || symbol_length <= 0 ||
      symbol_length >= static_cast<int32_t>(sizeof o.Symbol / sizeof o.Symbol[0])) {
    symbol = currency;
    symbol_length = 3;
  }
  std::copy(symbol, symbol + symbol_length, o.Symbol);
  o.Symbol[symbol_length] = 0;
  status = U_ZERO_ERROR;

  o.PointMark = SingleChar(Symbol(format.get(), UNUM_MONETARY_SEPARATOR_SYMBOL), u'.');
  o.GroupSeparator = SingleChar(Symbol(format.get(), UNUM_MONETARY_GROUPING_SEPARATOR_SYMBOL), 0);
  o.MinusSign = SingleChar(Symbol(format.get(), UNUM_MINUS_SIGN_SYMBOL), u'-');
  const int32_t fraction = unum_getAttribute(format.get(), UNUM_MAX_FRACTION_DIGITS);
  o.Decimals = static_cast<uint8_t>(std::clamp(fraction, 0, 10));
  const bool grouped = unum_getAttribute(format.get(), UNUM_GROUPING_USED) != 0;
  const int32_t primary = unum_getAttribute(format.get(), UNUM_GROUPING_SIZE);
  const int32_t secondary = unum_getAttribute(format.get(), UNUM_SECONDARY_GROUPING_SIZE);
  const int32_t minimum = unum_getAttribute(format.get(), UNUM_MINIMUM_GROUPING_DIGITS);
  o.PrimaryGroup = static_cast<uint8_t>(
      grouped && o.GroupSeparator != 0 && primary > 0 ? std::min(primary, 9) : 0);
  o.SecondaryGroup =
      static_cast<uint8_t>(secondary > 0 && secondary != primary ? std::min(secondary, 9) : 0);
  o.MinGrouping = static_cast<uint8_t>(minimum > 0 ? std::min(minimum, 9) : 1);

  char16_t pattern[128];
  const int32_t pattern_length = unum_toPattern(format.get(), false, pattern, 128, &status);
  if (U_FAILURE(status) || pattern_length <= 0 || pattern_length >= 128) return false;
  const std::u16string_view whole(pattern, static_cast<size_t>(pattern_length));
  const size_t split = whole.find(u';');
  const PatternParts pos = Analyse(whole.substr(0, split));
  const bool before = pos.currency >= 0 && pos.number_first >= 0 && pos.currency < pos.number_first;
  o.SymbolPosition = before ? kMoneySymbolBefore : kMoneySymbolAfter;
  o.SymbolSpace = pos.space;
  if (o.SymbolSpace == 0) {
    const char16_t next = before ? o.Symbol[symbol_length - 1] : o.Symbol[0];
    if (NeedsSpacing(next)) o.SymbolSpace = 0x00A0;
  }
  o.Negative = split == std::u16string_view::npos
                   ? static_cast<uint8_t>(kMoneyMinusFront)
                   : NegativeForm(Analyse(whole.substr(split + 1)), before);
  out = o;
  return true;
}

}  // namespace tavi::platform
