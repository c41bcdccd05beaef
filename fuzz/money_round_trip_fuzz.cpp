//===- money_round_trip_fuzz.cpp - Amounts survive being written and read --===//
//
// Draws an amount and a layout whose marks are distinct and not digits (the
// condition for text to be readable at all), writes the amount with every choice
// of what stands beside it, and reads it back: the parser must consume the whole
// text and return the same amount whenever no digit was rounded away.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <initializer_list>

#include "fuzz_helpers.h"
#include "tavi/format/number_options.h"
#include "tavi/money/money_text.h"

namespace {

// Marks that layouts use, none a digit: the parser must tell them apart.
constexpr char16_t kPoints[] = {u'.', u',', 0x066B, u'\''};
constexpr char16_t kGroups[] = {u',', u'.', u' ', 0x00A0, 0x202F, 0x2019, u'\'', 0};
constexpr char16_t kMinus[] = {u'-', 0x2212, u'~'};
constexpr char16_t kSpaces[] = {0, u' ', 0x00A0, 0x202F};
const char16_t* const kSymbols[] = {u"$", u"\u20AC", u"CHF", u"R$", u"kr", u"", u"US$", u"z\u0142"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto value = input.Take<int64_t>();
  const auto decimals = static_cast<int8_t>(input.Take<uint8_t>() % 11);
  const auto shape = input.Take<uint32_t>();
  tavi::strEnvMoneyOptions o;
  o.PointMark = kPoints[shape % 4];
  o.GroupSeparator = kGroups[(shape >> 2) % 8];
  if (o.GroupSeparator == o.PointMark) o.GroupSeparator = 0;
  o.MinusSign = kMinus[(shape >> 5) % 3];
  o.SymbolSpace = kSpaces[(shape >> 7) % 4];
  const char16_t* symbol = kSymbols[(shape >> 9) % 8];
  for (int i = 0; symbol[i] != 0; ++i) o.Symbol[i] = symbol[i];
  o.CurrencyCode[0] = u'X';
  o.CurrencyCode[1] = u'Y';
  o.CurrencyCode[2] = u'Z';
  o.Decimals = static_cast<uint8_t>((shape >> 12) % 12);
  o.PrimaryGroup = static_cast<uint8_t>((shape >> 16) % 5);
  o.SecondaryGroup = static_cast<uint8_t>((shape >> 19) % 4);
  o.MinGrouping = static_cast<uint8_t>((shape >> 21) % 3);
  o.SymbolPosition = static_cast<uint8_t>((shape >> 23) % 2);
  o.Negative = static_cast<uint8_t>((shape >> 24) % 7);

  for (const auto show : {tavi::kMoneyShowSymbol, tavi::kMoneyShowCode, tavi::kMoneyShowNone}) {
    char16_t text[tavi::kMoneyTextMax + 1];
    text[tavi::kMoneyTextMax] = 0;
    const char16_t* first =
        tavi::_MoneyToStringEx(value, decimals, text + tavi::kMoneyTextMax, o, show);
    FUZZ_ASSERT(first >= text);
    int64_t back = 0;
    const char16_t* stop = tavi::_StringToMoney(back, decimals, first, o);
    if (decimals <= o.Decimals) {
      FUZZ_ASSERT(stop == text + tavi::kMoneyTextMax);
      FUZZ_ASSERT(back == value);
    } else if (stop != nullptr) {
      // Rounded text reads back within half a unit of the last digit shown.
      FUZZ_ASSERT(stop == text + tavi::kMoneyTextMax);
      const uint64_t half = tavi::gRealDividers[decimals - o.Decimals] / 2;
      const uint64_t error = back >= value
                                 ? static_cast<uint64_t>(back) - static_cast<uint64_t>(value)
                                 : static_cast<uint64_t>(value) - static_cast<uint64_t>(back);
      FUZZ_ASSERT(error <= half);
    }
  }
  return 0;
}
