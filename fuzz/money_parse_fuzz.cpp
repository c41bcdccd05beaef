//===- money_parse_fuzz.cpp - Fuzz the amount parser -----------------------===//
//
// Draws every field of the options record (any characters, any sizes and forms)
// and the decimals, then reads the rest as UTF-16 text ending exactly at its
// terminator: reading must stop inside it. Whatever it reads is written back with
// the same options and must fit the formatter's bound.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/money/money_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  tavi::strEnvMoneyOptions o;
  for (char16_t& c : o.CurrencyCode) c = input.Take<char16_t>();
  for (char16_t& c : o.Symbol) c = input.Take<char16_t>();
  o.PointMark = input.Take<char16_t>();
  o.GroupSeparator = input.Take<char16_t>();
  o.MinusSign = input.Take<char16_t>();
  o.SymbolSpace = input.Take<char16_t>();
  o.Decimals = input.Take<uint8_t>();
  o.PrimaryGroup = input.Take<uint8_t>();
  o.SecondaryGroup = input.Take<uint8_t>();
  o.MinGrouping = input.Take<uint8_t>();
  o.SymbolPosition = input.Take<uint8_t>();
  o.Negative = input.Take<uint8_t>();
  const auto decimals = input.Take<int8_t>();
  const auto show = static_cast<tavi::eMoneyShow>(input.Take<uint8_t>() % 3);

  const tavi::fuzz::UnitText block(input);
  const size_t count = block.size();
  int64_t value = 0;
  const char16_t* stop = tavi::_StringToMoney(value, decimals, block.data(), o);
  FUZZ_ASSERT(stop == nullptr || (stop > block.data() && stop <= block.data() + count));

  // The formatter writes backwards from the end of an exactly bounded buffer, so
  // ASan sees any write before it.
  auto text = std::make_unique<char16_t[]>(tavi::kMoneyTextMax);
  const char16_t* first =
      tavi::_MoneyToStringEx(value, decimals, text.get() + tavi::kMoneyTextMax, o, show);
  FUZZ_ASSERT(first >= text.get() && first < text.get() + tavi::kMoneyTextMax);
  return 0;
}
