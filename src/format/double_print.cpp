//===- double_print.cpp - Doubles to text ----------------------------------===//
//
// The digits come from the shortest decimal of the value. Fewer digits are had by
// rounding that decimal; this equals rounding the exact value except when the cut
// falls exactly on a 5 that ends the decimal, and only then is the exact value
// consulted. (A midpoint strictly between the value and its shortest decimal would
// itself be an equally short or shorter decimal that reads back to the value, and
// nearer to it.)
//
//===----------------------------------------------------------------------===//
#include <bit>
#include <cmath>
#include <cstring>

#include "format/internal/double_core.h"
#include "tavi/format/double_text.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

using format_internal::Decimal;

constexpr uint64_t kPow10[] = {1,
                               10,
                               100,
                               1000,
                               10000,
                               100000,
                               1000000,
                               10000000,
                               100000000,
                               1000000000,
                               10000000000,
                               100000000000,
                               1000000000000,
                               10000000000000,
                               100000000000000,
                               1000000000000000,
                               10000000000000000,
                               100000000000000000,
                               1000000000000000000};

// The significant digits of a double as an integer of `count` digits (at most 17,
// no trailing zeros), the first of them worth 10^lead. Zero is {0, 1, 0}.
struct Digits {
  uint64_t value;
  int count;
  int lead;
};

int DecimalLength(uint64_t v) {
  // floor(log10(v)) from the bit length, corrected by one comparison.
  const int bits = 64 - __builtin_clzll(v | 1);
  int n = (bits * 1233) >> 12;
  if (v >= kPow10[n]) ++n;
  return n == 0 ? 1 : n;
}

// Keeps the first `keep` significant digits, rounding to nearest; the exact value
// (bits) settles a cut on a final 5. keep may be 0 or negative (the cut lies above
// the first digit).
void RoundDigits(Digits& d, int keep, uint64_t bits, const Decimal& shortest) {
  if (keep >= d.count) return;
  if (keep < 0) {
    d = Digits{0, 1, 0};
    return;
  }
  const uint64_t unit = kPow10[d.count - keep];
  uint64_t kept = d.value / unit;
  const uint64_t rest = d.value % unit;
  const uint64_t half = unit / 2;
  bool up = rest > half;
  if (rest == half) {
    // The decimal ends in that 5: the exact value says which side it lies on.
    const int c = format_internal::CompareWithDecimal(bits, shortest.digits, shortest.exponent);
    up = c > 0 || (c == 0 && (kept & 1) != 0);
  }
  if (up) ++kept;
  if (kept == 0) {
    d = Digits{0, 1, 0};
    return;
  }
  d.count = keep;
  if (kept == kPow10[keep]) {
    // All nines (or nothing kept) rounded up: the next power of ten.
    kept = 1;
    d.count = 1;
    ++d.lead;
  }
  while (kept % 10 == 0) {
    kept /= 10;
    --d.count;
  }
  d.value = kept;
}

// Two UTF-16 digits per entry, the first in the low half (stored little-endian).
struct DigitPairTable {
  uint32_t pair[100];
  constexpr DigitPairTable() : pair() {
    for (uint32_t i = 0; i < 100; ++i) pair[i] = (u'0' + i / 10) | ((u'0' + i % 10) << 16);
  }
};
constexpr DigitPairTable kPairs;
static_assert(std::endian::native == std::endian::little, "digit pairs are stored little-endian");

// Writes the `count` digits of v (leading zeros where v has fewer) ending just before
// end. Whole pairs are stored at once, so that the text is written straight into
// place and never copied in wide loads (which would stall on the narrow stores).
void WriteDigits(char16_t* end, uint64_t v, int count) {
  char16_t* p = end;
  while (v >= 100) {
    p -= 2;
    std::memcpy(p, &kPairs.pair[v % 100], 4);
    v /= 100;
  }
  if (v >= 10) {
    p -= 2;
    std::memcpy(p, &kPairs.pair[v], 4);
  } else {
    *--p = static_cast<char16_t>(u'0' + v);
  }
  while (p > end - count) *--p = u'0';
}

char16_t* Fill(char16_t* p, char16_t c, int count) {
  for (int i = 0; i < count; ++i) *p++ = c;
  return p;
}

char16_t* WriteUnsigned(char16_t* p, uint32_t v) {
  char16_t tmp[10];
  int n = 0;
  do {
    tmp[n++] = static_cast<char16_t>(u'0' + v % 10);
    v /= 10;
  } while (v != 0);
  while (n > 0) *p++ = tmp[--n];
  return p;
}

}  // namespace

char16_t* _DoubleToString(uint32_t& length, double value, char16_t* buffer, int8_t decimals,
                          bool exponent, bool shortFraction, uint8_t width, char16_t point) {
  char16_t* p = buffer;
  if (std::isnan(value) || std::isinf(value)) {
    const char16_t* word = std::isnan(value) ? u"NaN" : u"INF";
    for (int i = 0; i < 3; ++i) *p++ = word[i];
    length = 6;
    return buffer;
  }
  if (value < 0) {
    *p++ = u'-';
    value = -value;
  }

  const uint64_t bits = format_internal::DoubleBits(value) & ~(uint64_t{1} << 63);
  Digits d{0, 1, 0};
  Decimal shortest{0, 0};
  if (bits != 0) {
    shortest = format_internal::ShortestDecimal(bits);
    d.value = shortest.digits;
    d.count = DecimalLength(shortest.digits);
    d.lead = shortest.exponent + d.count - 1;
  }

  int fraction;
  const bool automatic = decimals < 0;
  if (!automatic) {
    fraction = decimals;  // at most 127: within the 200 the buffer allows
  } else {
    const int written = static_cast<int>(p - buffer);
    const int lead = exponent ? 1 : (d.lead >= 0 ? d.lead + 1 : 1);
    fraction = width - written - lead - (exponent ? 6 : 1);
    const int cap = (exponent || shortFraction) ? 36 : 205;
    if (fraction > cap) fraction = cap;
    if (fraction < 0) fraction = 0;
  }
  if (bits != 0) RoundDigits(d, exponent ? 1 + fraction : d.lead + 1 + fraction, bits, shortest);
  if (d.value == 0) d.lead = 0;

  // The power of ten of the digit just before the point, and of the decimal's last
  // one. After rounding every digit of the decimal is shown; zeros pad what is asked
  // beyond it.
  const int unit = exponent ? d.lead : 0;
  const int last = d.lead - (d.count - 1);
  if (automatic && fraction > unit - last) fraction = unit - last > 0 ? unit - last : 0;

  if (exponent || d.lead >= 0) {
    // Digits before the point: one, or the integer part (zeros beyond the decimal).
    const int whole = exponent ? 1 : d.lead + 1;
    const int before = d.count < whole ? d.count : whole;
    // Written one place to the right, then the part before the point moved back
    // over the place of the point.
    WriteDigits(p + 1 + d.count, d.value, d.count);
    for (int i = 0; i < before; ++i) p[i] = p[i + 1];
    p = Fill(p + before, u'0', whole - before);
    if (fraction > 0) {
      *p++ = point;
      const int after = d.count - before;
      p = Fill(p + after, u'0', fraction - after);
    }
  } else {
    // "0", the point, zeros down to the first digit, the digits, zeros.
    *p++ = u'0';
    if (fraction > 0) {
      *p++ = point;
      const int zeros = -d.lead - 1;
      p = Fill(p, u'0', zeros);
      WriteDigits(p + d.count, d.value, d.count);
      p = Fill(p + d.count, u'0', fraction - zeros - d.count);
    }
  }
  if (exponent) {
    *p++ = u'e';
    *p++ = d.lead < 0 ? u'-' : u'+';
    p = WriteUnsigned(p, static_cast<uint32_t>(d.lead < 0 ? -d.lead : d.lead));
  }
  length = static_cast<uint32_t>(p - buffer) * 2;
  return buffer;
}

char16_t* _DoubleToString(uint32_t& length, double value, char16_t* buffer, eDoublePrint print,
                          int8_t decimals, const strEnvNumberOptions& options) {
  bool exponent = false;
  bool short_fraction = false;
  switch (static_cast<uint8_t>(print)) {
    case edpAuto:
    case edpAutoShort: {
      const double magnitude = std::fabs(value);
      exponent = magnitude > 1e14 || (magnitude < 1e-14 && magnitude != 0);
      short_fraction = print == edpAutoShort;
      break;
    }
    case edpExponentShort:
      exponent = true;
      short_fraction = true;
      break;
    case edpExponent:
      exponent = true;
      break;
    default:
      break;
  }
  return _DoubleToString(length, value, buffer, decimals, exponent, short_fraction,
                         options.PrintWidth, options.PointMark());
}

bool XDoubleToString(XIO& stream, double value, int8_t decimals, bool exponent, bool shortFraction,
                     uint8_t width, char16_t point) {
  char16_t text[kDoubleTextCapacity];
  uint32_t length;
  _DoubleToString(length, value, text, decimals, exponent, shortFraction, width, point);
  return stream._Write(text, length);
}

bool XDoubleToString(XIO& stream, double value, eDoublePrint print, int8_t decimals,
                     const strEnvNumberOptions& options) {
  char16_t text[kDoubleTextCapacity];
  uint32_t length;
  _DoubleToString(length, value, text, print, decimals, options);
  return stream._Write(text, length);
}

}  // namespace tavi
