//===- money_options_test.cpp - Money options and currency tables ---------===//
#include "tavi/money/money_options.h"

#include <gtest/gtest.h>
#include <unicode/ucurr.h>

#include <cstring>
#include <string>
#include <vector>

namespace tavi {
namespace {

std::u16string Text(const char16_t* t) {
  return std::u16string(t);
}

TEST(MoneyOptions, Portable) {
  strEnvMoneyOptions o;
  EXPECT_EQ(Text(o.CurrencyCode), u"");
  ASSERT_TRUE(o.SetPortable(u"usd"));
  EXPECT_EQ(Text(o.CurrencyCode), u"USD");
  EXPECT_EQ(Text(o.Symbol), u"USD");
  EXPECT_EQ(o.Decimals, 2);
  EXPECT_TRUE(o.SetPortable(u"JPY"));
  EXPECT_EQ(o.Decimals, 0);
  // Refused codes leave the record as it was.
  const strEnvMoneyOptions before = o;
  for (const char16_t* bad :
       {u"QQQ", u"US", u"USDX", u"U1D", u"", static_cast<const char16_t*>(nullptr)}) {
    EXPECT_FALSE(o.SetPortable(bad));
    EXPECT_EQ(std::memcmp(&o, &before, sizeof o), 0);
  }
}

// How locales write their own currencies is checked against ICU's formatting in
// money_text_test.cpp; here the choice of another currency and the refusals.
TEST(MoneyOptions, Locale) {
  strEnvMoneyOptions o;
  // Another currency as the locale writes it: a symbol of letters gets a space.
  ASSERT_TRUE(o.SetLocaleEx(0x0409, u"chf"));
  EXPECT_EQ(Text(o.CurrencyCode), u"CHF");
  EXPECT_EQ(Text(o.Symbol), u"CHF");
  EXPECT_EQ(o.SymbolSpace, u'\u00A0');
  ASSERT_TRUE(o.SetLocaleEx(0x0407, u"JPY"));  // de-DE
  EXPECT_EQ(o.Decimals, 0);
  EXPECT_EQ(o.SymbolPosition, kMoneySymbolAfter);

  const strEnvMoneyOptions before = o;
  EXPECT_FALSE(o.SetLocale(0x7FFF0000u));
  EXPECT_FALSE(o.SetLocaleEx(0x0409, u"QQQ"));
  EXPECT_FALSE(o.SetLocaleEx(0x0409, nullptr));
  EXPECT_EQ(std::memcmp(&o, &before, sizeof o), 0);
}

TEST(MoneyOptions, CurrencyTable) {
  const uint32_t count = XCurrencyTable(nullptr, 0);
  ASSERT_GT(count, 100u);
  std::vector<strCurrencyInfo> rows(count + 1);
  rows[count].Code[0] = u'#';
  EXPECT_EQ(XCurrencyTable(rows.data(), count - 1), count);
  EXPECT_EQ(rows[count - 1].Code[0], 0);  // not written beyond the capacity
  EXPECT_EQ(XCurrencyTable(rows.data(), count + 1), count);
  EXPECT_EQ(rows[count].Code[0], u'#');
  rows.pop_back();
  bool euro = false, yen = false;
  for (uint32_t i = 0; i < count; ++i) {
    const strCurrencyInfo& r = rows[i];
    SCOPED_TRACE(std::string(r.Code, r.Code + 3));
    if (i > 0) {
      EXPECT_LT(std::u16string_view(rows[i - 1].Code), std::u16string_view(r.Code));
    }
    UErrorCode status = U_ZERO_ERROR;
    EXPECT_EQ(r.Decimals, ucurr_getDefaultFractionDigits(r.Code, &status));
    EXPECT_EQ(XCurrencyDecimals(r.Code), r.Decimals);
    if (Text(r.Code) == u"EUR") euro = r.Number == 978 && r.Decimals == 2;
    if (Text(r.Code) == u"JPY") yen = r.Number == 392 && r.Decimals == 0;
  }
  EXPECT_TRUE(euro);
  EXPECT_TRUE(yen);
  EXPECT_EQ(XCurrencyDecimals(u"kwd"), 3);
  EXPECT_EQ(XCurrencyDecimals(u"DEM"), 2);  // historic codes are still known
  for (const char16_t* bad : {u"QQQ", u"EU", u"EURO", u"", static_cast<const char16_t*>(nullptr)})
    EXPECT_EQ(XCurrencyDecimals(bad), -1);
}

TEST(MoneyOptions, RegionCurrency) {
  const struct {
    const char16_t* region;
    const char16_t* code;
  } cases[] = {{u"DE", u"EUR"}, {u"ch", u"CHF"}, {u"IN", u"INR"}, {u"JP", u"JPY"}, {u"US", u"USD"},
               {u"QQ", u""},    {u"D", u""},     {u"DEU", u""},   {u"1A", u""},    {u"", u""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.region, c.region + Text(c.region).size()));
    char16_t code[4] = {u'#', u'#', u'#', u'#'};
    EXPECT_EQ(XRegionCurrency(c.region, code), *c.code != 0);
    EXPECT_EQ(Text(code), c.code);
  }
}

}  // namespace
}  // namespace tavi
