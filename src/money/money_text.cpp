//===- money_text.cpp - Amounts of money to text and back -----------------===//
//
// The formatter writes the pieces of an amount (sign, symbol, its space, number,
// parentheses) backwards from the end of the caller's buffer in the order the
// options give; the parser accepts each piece in any of the places a layout can
// put it.
//
//===----------------------------------------------------------------------===//
#include "tavi/money/money_text.h"

#include <cstddef>

#include "format/internal/digits.h"
#include "tavi/format/number_options.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

inline uint32_t ClampDecimals(int32_t decimals) {
  return decimals < 0 ? 0u : decimals > 10 ? 10u : static_cast<uint32_t>(decimals);
}

uint32_t Length(const char16_t* text, uint32_t capacity) {
  uint32_t n = 0;
  while (n < capacity && text[n] != 0) ++n;
  return n;
}

// The pieces of an amount in the order they are written.
enum class Piece : uint8_t { kMinus, kSymbol, kSpace, kNumber, kOpen, kClose };

// Writes the integer part backwards with the options' digit groups: the digits
// come from the fast decimal writer and are then copied in front of `p` with the
// separators between them.
char16_t* WholeDigits(uint64_t whole, char16_t* p, const strEnvMoneyOptions& o) {
  char16_t digits[20];
  const char16_t* first = internal::FastDecimal(whole, digits + 20);
  const uint32_t count = static_cast<uint32_t>(digits + 20 - first);
  const uint32_t primary = o.PrimaryGroup;
  const uint32_t minimum = o.MinGrouping != 0 ? o.MinGrouping : 1u;
  if (primary == 0 || o.GroupSeparator == 0 || count < primary + minimum) {
    p -= count;
    for (uint32_t i = 0; i < count; ++i) p[i] = first[i];
    return p;
  }
  const uint32_t secondary = o.SecondaryGroup != 0 ? o.SecondaryGroup : primary;
  const char16_t* q = digits + 20;
  for (uint32_t left = count, group = primary;; group = secondary) {
    const uint32_t n = left < group ? left : group;
    for (uint32_t i = 0; i < n; ++i) *--p = *--q;
    left -= n;
    if (left == 0) return p;
    *--p = o.GroupSeparator;
  }
}

}  // namespace

char16_t* _MoneyToStringEx(int64_t value, int8_t decimals, char16_t* end,
                           const strEnvMoneyOptions& options, eMoneyShow show) {
  const uint32_t d = ClampDecimals(decimals);
  const uint32_t shown = ClampDecimals(options.Decimals);
  bool negative = value < 0;
  const uint64_t magnitude =
      negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  uint64_t whole = magnitude / gRealDividers[d];
  uint64_t fraction = magnitude % gRealDividers[d];
  if (d > shown) {
    // Round half to even on the last digit kept (of the fraction, or of the whole
    // number when no fraction is shown).
    const uint64_t divisor = gRealDividers[d - shown];
    const uint64_t rest = fraction % divisor;
    fraction /= divisor;
    const uint64_t last = shown != 0 ? fraction : whole;
    if (rest > divisor / 2 || (rest == divisor / 2 && (last & 1) != 0)) {
      if (++fraction == gRealDividers[shown]) {
        fraction = 0;
        ++whole;
      }
    }
  } else {
    fraction *= gRealDividers[shown - d];
  }
  if (whole == 0 && fraction == 0) negative = false;

  const char16_t* symbol = nullptr;
  uint32_t symbol_length = 0;
  char16_t space = options.SymbolSpace;
  if (show == kMoneyShowSymbol) {
    symbol = options.Symbol;
    symbol_length = Length(options.Symbol, 11);
  } else if (show == kMoneyShowCode) {
    symbol = options.CurrencyCode;
    symbol_length = Length(options.CurrencyCode, 3);
    if (space == 0) space = u'\u00A0';
  }

  // The pieces in reading order; an absent symbol takes its space with it.
  Piece order[6];
  uint32_t count = 0;
  const bool before = options.SymbolPosition == kMoneySymbolBefore;
  uint8_t form =
      options.Negative > kMoneyMinusAfterSymbol ? uint8_t{kMoneyMinusFront} : options.Negative;
  // Reduce the forms to the places that exist in this layout.
  if (symbol_length == 0) {
    if (form == kMoneyMinusBeforeNumber || form == kMoneyMinusAfterSymbol) form = kMoneyMinusFront;
    if (form == kMoneyMinusAfterNumber) form = kMoneyMinusBack;
  } else if (!before) {
    if (form == kMoneyMinusBeforeNumber) form = kMoneyMinusFront;
    if (form == kMoneyMinusAfterSymbol) form = kMoneyMinusBack;
  } else if (form == kMoneyMinusAfterNumber) {
    form = kMoneyMinusBack;
  }
  auto add = [&](Piece piece) { order[count++] = piece; };
  const bool sign = negative && form != kMoneyParentheses;
  if (negative && form == kMoneyParentheses) add(Piece::kOpen);
  if (sign && form == kMoneyMinusFront) add(Piece::kMinus);
  if (before && symbol_length != 0) {
    add(Piece::kSymbol);
    if (sign && form == kMoneyMinusAfterSymbol) {
      add(Piece::kMinus);
    } else {
      if (space != 0) add(Piece::kSpace);
      if (sign && form == kMoneyMinusBeforeNumber) add(Piece::kMinus);
    }
  }
  add(Piece::kNumber);
  if (sign && form == kMoneyMinusAfterNumber) add(Piece::kMinus);
  if (!before && symbol_length != 0) {
    if (space != 0) add(Piece::kSpace);
    add(Piece::kSymbol);
  }
  if (sign && form == kMoneyMinusBack) add(Piece::kMinus);
  if (negative && form == kMoneyParentheses) add(Piece::kClose);

  char16_t* p = end;
  while (count != 0) {
    switch (order[--count]) {
      case Piece::kMinus:
        *--p = options.MinusSign;
        break;
      case Piece::kSymbol:
        p -= symbol_length;
        for (uint32_t i = 0; i < symbol_length; ++i) p[i] = symbol[i];
        break;
      case Piece::kSpace:
        *--p = space;
        break;
      case Piece::kOpen:
        *--p = u'(';
        break;
      case Piece::kClose:
        *--p = u')';
        break;
      case Piece::kNumber:
        if (shown != 0) {
          for (uint32_t i = 0; i < shown; ++i) {
            *--p = static_cast<char16_t>(u'0' + fraction % 10);
            fraction /= 10;
          }
          *--p = options.PointMark;
        }
        p = WholeDigits(whole, p, options);
        break;
    }
  }
  return p;
}

char16_t* _MoneyToString(int64_t value, int8_t decimals, char16_t* end,
                         const strEnvMoneyOptions& options) {
  return _MoneyToStringEx(value, decimals, end, options, kMoneyShowSymbol);
}

bool XMoneyToStringEx(XIO& out, int64_t value, int8_t decimals, const strEnvMoneyOptions& options,
                      eMoneyShow show) {
  char16_t text[kMoneyTextMax];
  const char16_t* first = _MoneyToStringEx(value, decimals, text + kMoneyTextMax, options, show);
  return out._Write(first, static_cast<uint32_t>(text + kMoneyTextMax - first) * sizeof(char16_t));
}

bool XMoneyToString(XIO& out, int64_t value, int8_t decimals, const strEnvMoneyOptions& options) {
  return XMoneyToStringEx(out, value, decimals, options, kMoneyShowSymbol);
}

namespace {

bool IsSpace(char16_t c) {
  return c == u' ' || c == 0x00A0 || c == 0x202F;
}

bool IsMinus(char16_t c, const strEnvMoneyOptions& o) {
  return c == u'-' || c == 0x2212 || (c == o.MinusSign && c != 0);
}

inline uint32_t Digit(char16_t c) {
  return static_cast<uint32_t>(c) - u'0';
}

// The length of the symbol or the code at p (the longer when both match), or 0.
uint32_t MatchSymbol(const char16_t* p, const strEnvMoneyOptions& o) {
  uint32_t best = 0;
  for (const char16_t* candidate :
       {static_cast<const char16_t*>(o.Symbol), static_cast<const char16_t*>(o.CurrencyCode)}) {
    const uint32_t capacity = candidate == o.Symbol ? 11 : 3;
    const uint32_t n = Length(candidate, capacity);
    if (n <= best) continue;
    uint32_t i = 0;
    // Stops at the text's terminator, which no candidate character equals.
    while (i < n && p[i] == candidate[i]) ++i;
    if (i == n) best = n;
  }
  return best;
}

}  // namespace

const char16_t* _StringToMoney(int64_t& value, int8_t decimals, const char16_t* text,
                               const strEnvMoneyOptions& options) {
  const uint32_t d = ClampDecimals(decimals);
  const char16_t* p = text;
  while (IsSpace(*p)) ++p;
  bool negative = false;
  bool parenthesis = false;
  bool symbol = false;
  if (*p == u'(') {
    parenthesis = true;
    ++p;
  }
  // Before the number: a sign and the symbol (with one space after it), in either
  // order.
  for (int round = 0; round < 2; ++round) {
    if (!negative && IsMinus(*p, options)) {
      negative = true;
      ++p;
    } else if (!symbol) {
      const uint32_t n = MatchSymbol(p, options);
      if (n == 0) break;
      symbol = true;
      p += n;
      if (IsSpace(*p)) ++p;
    }
  }
  const char16_t point = options.PointMark;
  const char16_t group = options.GroupSeparator;
  const bool space_group = IsSpace(group);
  if (Digit(*p) > 9 && !(point != 0 && *p == point && Digit(p[1]) <= 9)) return nullptr;
  uint64_t v = 0;
  bool digits = false;
  for (;; ++p) {
    const uint32_t digit = Digit(*p);
    if (digit <= 9) {
      if (v > (UINT64_MAX - digit) / 10) return nullptr;
      v = v * 10 + digit;
      digits = true;
    } else if (digits && group != 0 && (*p == group || (space_group && IsSpace(*p))) &&
               Digit(p[1]) <= 9) {
      continue;
    } else {
      break;
    }
  }
  uint32_t taken = 0;
  if (*p == point && point != 0) {
    for (++p;; ++p) {
      const uint32_t digit = Digit(*p);
      if (digit > 9) break;
      if (taken < d) {
        if (v > (UINT64_MAX - digit) / 10) return nullptr;
        v = v * 10 + digit;
        ++taken;
      } else if (digit != 0) {
        return nullptr;
      }
    }
  }
  for (; taken < d; ++taken) {
    if (v > UINT64_MAX / 10) return nullptr;
    v *= 10;
  }

  // After the number: a sign and the symbol (after one space), in either order,
  // then the closing parenthesis.
  for (int round = 0; round < 2; ++round) {
    if (!negative && IsMinus(*p, options)) {
      negative = true;
      ++p;
    } else if (!symbol) {
      const char16_t* q = IsSpace(*p) ? p + 1 : p;
      const uint32_t n = MatchSymbol(q, options);
      if (n == 0) break;
      symbol = true;
      p = q + n;
    }
  }
  if (parenthesis) {
    if (*p != u')') return nullptr;
    ++p;
    negative = true;
  }
  const uint64_t limit = negative ? uint64_t{1} << 63 : (uint64_t{1} << 63) - 1;
  if (v > limit) return nullptr;
  value = static_cast<int64_t>(negative ? 0 - v : v);
  return p;
}

}  // namespace tavi
