//===- money_text_test.cpp - Amounts of money to text and back -------------===//
#include "tavi/money/money_text.h"

#include <gtest/gtest.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <memory>
#include <random>
#include <string>
#include <utility>

#include "format/text_helpers.h"
#include "io/test_streams.h"

namespace tavi {
namespace {

strEnvMoneyOptions Portable(const char16_t* code) {
  strEnvMoneyOptions o;
  EXPECT_TRUE(o.SetPortable(code));
  return o;
}

std::u16string Money(int64_t value, int8_t decimals, const strEnvMoneyOptions& o,
                     eMoneyShow show = kMoneyShowSymbol) {
  return test::Mem([&](char16_t* e) { return _MoneyToStringEx(value, decimals, e, o, show); });
}

// A layout with a one-character symbol and ASCII separators, easy to read in
// tables: "$1,234.50".
strEnvMoneyOptions Dollars(uint8_t negative, uint8_t position = kMoneySymbolBefore,
                           char16_t space = 0) {
  strEnvMoneyOptions o;
  std::u16string_view(u"USD").copy(o.CurrencyCode, 3);
  o.Symbol[0] = u'$';
  o.GroupSeparator = u',';
  o.SymbolSpace = space;
  o.SymbolPosition = position;
  o.Negative = negative;
  return o;
}

TEST(MoneyText, LayoutsAndNegativeForms) {
  const strEnvMoneyOptions before = Dollars(kMoneyMinusFront);
  const strEnvMoneyOptions after = Dollars(kMoneyMinusFront, kMoneySymbolAfter, u' ');
  struct Case {
    strEnvMoneyOptions options;
    uint8_t negative;
    const char16_t* text;
  } cases[] = {
      {before, kMoneyMinusFront, u"-$1,234.50"},
      {before, kMoneyMinusBeforeNumber, u"$-1,234.50"},
      {before, kMoneyMinusBack, u"$1,234.50-"},
      {before, kMoneyMinusAfterNumber, u"$1,234.50-"},
      {before, kMoneyParentheses, u"($1,234.50)"},
      {before, kMoneyMinusAfterSymbol, u"$-1,234.50"},
      {before, 9, u"-$1,234.50"},
      {after, kMoneyMinusFront, u"-1,234.50 $"},
      {after, kMoneyMinusBeforeNumber, u"-1,234.50 $"},
      {after, kMoneyMinusBack, u"1,234.50 $-"},
      {after, kMoneyMinusAfterNumber, u"1,234.50- $"},
      {after, kMoneyParentheses, u"(1,234.50 $)"},
      {after, kMoneyMinusAfterSymbol, u"1,234.50 $-"},
  };
  for (auto c : cases) {
    c.options.Negative = c.negative;
    SCOPED_TRACE(test::Narrow(c.text));
    EXPECT_EQ(Money(-123450, 2, c.options), c.text);
    EXPECT_EQ(Money(123450, 2, c.options).find_first_of(u"-()"), std::u16string::npos);
  }
  // With the space kept or taken by the sign.
  strEnvMoneyOptions spaced = Dollars(kMoneyMinusBeforeNumber, kMoneySymbolBefore, u' ');
  EXPECT_EQ(Money(-5, 2, spaced), u"$ -0.05");
  spaced.Negative = kMoneyMinusAfterSymbol;
  EXPECT_EQ(Money(-5, 2, spaced), u"$-0.05");
  EXPECT_EQ(Money(-5, 2, spaced, kMoneyShowNone), u"-0.05");
  EXPECT_EQ(Money(-5, 2, spaced, kMoneyShowCode), u"USD-0.05");
  spaced.Negative = kMoneyMinusFront;
  EXPECT_EQ(Money(5, 2, spaced, kMoneyShowCode), u"USD 0.05");
  EXPECT_EQ(Money(-5, 2, Dollars(kMoneyMinusFront), kMoneyShowCode), u"-USD\u00A00.05");
  EXPECT_EQ(Money(-5, 2, Dollars(kMoneyParentheses), kMoneyShowNone), u"(0.05)");
}

TEST(MoneyText, DigitsGroupsAndRounding) {
  strEnvMoneyOptions o = Dollars(kMoneyMinusFront);
  const struct {
    int64_t value;
    int8_t decimals;
    uint8_t shown, primary, secondary, minimum;
    const char16_t* text;
  } cases[] = {
      {0, 2, 2, 3, 0, 1, u"$0.00"},
      {1000, 0, 2, 3, 0, 1, u"$1,000.00"},
      {1000, 0, 2, 3, 0, 2, u"$1000.00"},
      {10000, 0, 2, 3, 0, 2, u"$10,000.00"},
      {123456789, 0, 0, 3, 2, 1, u"$12,34,56,789"},
      {123456789, 0, 0, 4, 0, 1, u"$1,2345,6789"},
      {INT64_MAX, 0, 0, 3, 0, 1, u"$9,223,372,036,854,775,807"},
      {INT64_MIN, 0, 0, 1, 0, 1, u"-$9,2,2,3,3,7,2,0,3,6,8,5,4,7,7,5,8,0,8"},
      {INT64_MIN, 10, 10, 3, 0, 1, u"-$922,337,203.6854775808"},
      // Rounding half to even, on the fraction and on the whole number.
      {125, 3, 2, 3, 0, 1, u"$0.12"},
      {135, 3, 2, 3, 0, 1, u"$0.14"},
      {1251, 4, 2, 3, 0, 1, u"$0.13"},
      {99995, 3, 2, 3, 0, 1, u"$100.00"},
      {25, 1, 0, 3, 0, 1, u"$2"},
      {9999999, 4, 0, 3, 0, 1, u"$1,000"},
      {INT64_MAX, 10, 0, 3, 0, 1, u"$922,337,204"},
      {INT64_MIN, 1, 0, 3, 0, 1, u"-$922,337,203,685,477,581"},
      // An amount that rounds to nothing has no sign.
      {-5, 3, 2, 3, 0, 1, u"$0.00"},
      {-6, 3, 2, 3, 0, 1, u"-$0.01"},
      // Decimals out of range act as the nearest end.
      {7, -2, 1, 3, 0, 1, u"$7.0"},
      {7, 40, 12, 3, 0, 1, u"$0.0000000007"},
  };
  for (const auto& c : cases) {
    o.Decimals = c.shown;
    o.PrimaryGroup = c.primary;
    o.SecondaryGroup = c.secondary;
    o.MinGrouping = c.minimum;
    SCOPED_TRACE(test::Narrow(c.text));
    EXPECT_EQ(Money(c.value, c.decimals, o), c.text);
    EXPECT_EQ(test::Stream([&](XIO& out) { return XMoneyToString(out, c.value, c.decimals, o); }),
              c.text);
  }
  // The longest text fits the advertised bound.
  o.Decimals = 10;
  o.PrimaryGroup = 1;
  std::u16string_view(u"ABCDEFGHIJK").copy(o.Symbol, 11);
  o.Negative = kMoneyParentheses;
  o.SymbolSpace = u' ';
  EXPECT_EQ(Money(INT64_MIN, 0, o).size(), 62u);
  EXPECT_LE(62u, kMoneyTextMax);
  test::Sink sink(1);
  EXPECT_FALSE(XMoneyToString(sink, 1, 0, o));
}

TEST(MoneyText, Parse) {
  const strEnvMoneyOptions dollars = Dollars(kMoneyMinusFront);
  strEnvMoneyOptions euros;
  std::u16string_view(u"EUR").copy(euros.CurrencyCode, 3);
  euros.Symbol[0] = u'€';
  euros.PointMark = u',';
  euros.GroupSeparator = u'.';
  struct Case {
    const strEnvMoneyOptions* options;
    const char16_t* text;
    int8_t decimals;
    int64_t value;
    int stop;  // characters consumed
  } cases[] = {
      {&dollars, u"  USD 12", 2, 1200, 8},
      {&dollars, u"12.5 USD and more", 2, 1250, 8},
      {&dollars, u".5", 2, 50, 2},
      {&dollars, u"12.", 2, 1200, 3},
      {&dollars, u"1,234,", 0, 1234, 5},
      {&dollars, u"1,,234", 0, 1, 1},
      {&dollars, u"\u22121.00", 2, -100, 5},
      {&dollars, u"1.2300", 2, 123, 6},
      {&dollars, u"9223372036854775807", 0, INT64_MAX, 19},
      {&dollars, u"-9223372036854775808", 0, INT64_MIN, 20},
      {&euros, u"1.234,56 €", 2, 123456, 10},
      {&euros, u"-1.234,56\u00A0EUR", 2, -123456, 13},
      {&euros, u"€ -0,5", 2, -50, 6},
      {&euros, u"1.234.567", 0, 1234567, 9},
      {&euros, u"1,5.3", 2, 150, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    int64_t value = 0;
    const char16_t* stop = _StringToMoney(value, c.decimals, c.text, *c.options);
    ASSERT_NE(stop, nullptr);
    EXPECT_EQ(stop - c.text, c.stop);
    EXPECT_EQ(value, c.value);
  }
  // Refused: a second sign, an unclosed parenthesis, digits past the decimals kept, no
  // digits, and values beyond 64 bits.
  const auto refused = [&dollars](const char16_t* text, int8_t decimals) {
    int64_t value = 0;
    return _StringToMoney(value, decimals, text, dollars) == nullptr;
  };
  for (const char16_t* text : {u"-$-1", u"($1.00", u"1.2301", u"$", u"", u"."})
    EXPECT_TRUE(refused(text, 2)) << test::Narrow(text);
  EXPECT_TRUE(refused(u"1.25", 1));
  EXPECT_TRUE(refused(u"9223372036854775808", 0));
  EXPECT_TRUE(refused(u"18446744073709551616", 0));
  EXPECT_TRUE(refused(u"922337203685477580.8", 1));
  EXPECT_TRUE(refused(u"92233720368547758", 3));
  // A space as group separator stands for all three spaces, but never for the
  // space before the symbol.
  strEnvMoneyOptions swiss = Portable(u"CHF");
  int64_t value = 0;
  const std::u16string text = u"1 234\u202F567\u00A0890 CHF";
  EXPECT_EQ(_StringToMoney(value, 2, text.c_str(), swiss), text.c_str() + text.size());
  EXPECT_EQ(value, 123456789000);
}

TEST(MoneyText, RoundTripsInEveryLayout) {
  std::mt19937_64 rng(7);
  for (int i = 0; i < 3000; ++i) {
    strEnvMoneyOptions o = Dollars(static_cast<uint8_t>(rng() % 6), static_cast<uint8_t>(rng() % 2),
                                   rng() % 2 ? u'\u00A0' : 0);
    o.Decimals = static_cast<uint8_t>(rng() % 11);
    o.PrimaryGroup = static_cast<uint8_t>(rng() % 5);
    o.SecondaryGroup = static_cast<uint8_t>(rng() % 4);
    o.MinGrouping = static_cast<uint8_t>(rng() % 3);
    const auto decimals = static_cast<int8_t>(rng() % (o.Decimals + 1));
    const auto show = static_cast<eMoneyShow>(rng() % 3);
    const int64_t value = static_cast<int64_t>(rng()) >> (rng() % 64);
    const std::u16string text = Money(value, decimals, o, show);
    SCOPED_TRACE(test::Narrow(text));
    int64_t back = 0;
    const char16_t* stop = _StringToMoney(back, decimals, text.c_str(), o);
    ASSERT_EQ(stop, text.c_str() + text.size());
    EXPECT_EQ(back, value);
  }
}

// ICU's currency formatting of the same amount, given as decimal text.
std::u16string IcuMoney(const char* locale, const char16_t* code, int64_t value, int decimals) {
  std::string number =
      std::to_string(value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value));
  if (decimals > 0) {
    if (number.size() <= static_cast<size_t>(decimals))
      number.insert(0, static_cast<size_t>(decimals) + 1 - number.size(), '0');
    number.insert(number.size() - static_cast<size_t>(decimals), ".");
  }
  if (value < 0) number.insert(0, "-");
  UErrorCode status = U_ZERO_ERROR;
  UNumberFormat* f = unum_open(UNUM_CURRENCY, nullptr, 0, locale, nullptr, &status);
  if (code != nullptr) unum_setTextAttribute(f, UNUM_CURRENCY_CODE, code, 3, &status);
  char16_t out[128];
  const int32_t n = unum_formatDecimal(f, number.c_str(), -1, out, 128, nullptr, &status);
  unum_close(f);
  EXPECT_TRUE(U_SUCCESS(status)) << locale << " " << number;
  return U_SUCCESS(status) ? std::u16string(out, static_cast<size_t>(n)) : u"";
}

TEST(MoneyText, MatchesIcuCurrencyFormatting) {
  // Locales with their own currency, then with another one.
  const std::pair<uint32_t, const char16_t*> locales[] = {
      {0x0407, nullptr}, {0x100C, nullptr}, {0x4009, nullptr}, {0x0411, nullptr}, {0x0409, nullptr},
      {0x0807, nullptr}, {0x0809, nullptr}, {0x040C, nullptr}, {0x0413, nullptr}, {0x0C0A, nullptr},
      {0x0415, nullptr}, {0x0416, nullptr}, {0x041D, nullptr}, {0x0410, nullptr}, {0x0412, nullptr},
      {0x0804, nullptr}, {0x0C07, nullptr}, {0x0414, nullptr}, {0x0409, u"EUR"},  {0x0409, u"CHF"},
      {0x0407, u"JPY"},  {0x0411, u"USD"},  {0x4009, u"KWD"},  {0x0807, u"EUR"}};
  const int64_t amounts[] = {
      0,         1,         -1,       5,    -999,       100000, -123456789, 1234567890123,
      INT64_MAX, INT64_MIN, 99999999, 1000, -100000000, 1500,   2500,       -3500};
  for (const auto& [lcid, code] : locales) {
    char name[64];
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLocaleForLCID(lcid, name, sizeof name, &status);
    SCOPED_TRACE(name);
    strEnvMoneyOptions o;
    ASSERT_TRUE(code != nullptr ? o.SetLocaleEx(lcid, code) : o.SetLocale(lcid));
    for (const int64_t amount : amounts) {
      // The amount in the currency's own decimals, and with three more that round.
      for (const int extra : {0, 3}) {
        const int decimals = o.Decimals + extra;
        if (decimals > 10) continue;
        const std::u16string icu = IcuMoney(name, code, amount, decimals);
        SCOPED_TRACE(test::Narrow(icu));
        // ICU keeps the sign of a negative amount that rounds to zero; we do not.
        if (amount < 0 && amount > -500 && extra == 3) continue;
        EXPECT_EQ(Money(amount, static_cast<int8_t>(decimals), o), icu);
        int64_t back = 0;
        const char16_t* stop =
            _StringToMoney(back, static_cast<int8_t>(o.Decimals), icu.c_str(), o);
        ASSERT_EQ(stop, icu.c_str() + icu.size());
        if (extra == 0) {
          EXPECT_EQ(back, amount);
        }
      }
    }
  }
}

}  // namespace
}  // namespace tavi
