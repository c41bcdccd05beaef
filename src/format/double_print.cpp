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
#include <cmath>

#include "format/internal/double_core.h"
#include "tavi/format/double_text.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

using format_internal::Decimal;

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// The significant digits of a double: digit[0] is worth 10^lead.
struct Digits {
  char digit[24];
  int count;
  int lead;
};

int DecimalLength(uint64_t v) {
  int n = 1;
  while (v >= 10000) {
    v /= 10000;
    n += 4;
  }
  while (v >= 10) {
    v /= 10;
    ++n;
  }
  return n;
}

void FillDigits(Digits& d, uint64_t v, int exponent) {
  d.count = DecimalLength(v);
  d.lead = exponent + d.count - 1;
  char* p = d.digit + d.count;
  while (v >= 100) {
    const unsigned pair = static_cast<unsigned>(v % 100) * 2;
    v /= 100;
    *--p = kDigitPairs[pair + 1];
    *--p = kDigitPairs[pair];
  }
  if (v >= 10) {
    *--p = kDigitPairs[v * 2 + 1];
    *--p = kDigitPairs[v * 2];
  } else {
    *--p = static_cast<char>('0' + v);
  }
}

// Keeps the first `keep` significant digits, rounding to nearest; the exact value
// (bits) settles a cut on a final 5. keep may be 0 or negative (the cut lies above
// the first digit).
void RoundDigits(Digits& d, int keep, uint64_t bits, const Decimal& shortest) {
  if (keep >= d.count) return;
  if (keep < 0) {
    d = Digits{{'0'}, 1, 0};
    return;
  }
  bool up;
  const char cut = d.digit[keep];
  if (cut != '5' || keep + 1 < d.count) {
    up = cut >= '5';
  } else {
    const int c = format_internal::CompareWithDecimal(bits, shortest.digits, shortest.exponent);
    if (c != 0) {
      up = c > 0;
    } else {
      const char last = keep > 0 ? d.digit[keep - 1] : '0';
      up = ((last - '0') & 1) != 0;
    }
  }
  if (!up) {
    if (keep == 0) {
      d = Digits{{'0'}, 1, 0};
      return;
    }
    d.count = keep;
  } else {
    int i = keep - 1;
    while (i >= 0 && d.digit[i] == '9') --i;
    if (i < 0) {
      // All nines (or nothing kept): the value becomes the next power of ten.
      d.digit[0] = '1';
      d.count = 1;
      ++d.lead;
      return;
    }
    ++d.digit[i];
    d.count = i + 1;
  }
  while (d.count > 1 && d.digit[d.count - 1] == '0') --d.count;
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

  uint64_t bits = format_internal::DoubleBits(value) & ~(uint64_t{1} << 63);
  Digits d;
  Decimal shortest{0, 0};
  if (bits == 0) {
    d = Digits{{'0'}, 1, 0};
  } else {
    shortest = format_internal::ShortestDecimal(bits);
    FillDigits(d, shortest.digits, shortest.exponent);
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
  if (d.count == 1 && d.digit[0] == '0') d.lead = 0;

  // The digit worth 10^position, zero where the decimal has none.
  const auto digit_at = [&d](int position) -> char16_t {
    const int index = d.lead - position;
    return (index >= 0 && index < d.count) ? static_cast<char16_t>(d.digit[index]) : u'0';
  };

  if (exponent) {
    *p++ = static_cast<char16_t>(d.digit[0]);
  } else {
    for (int pos = d.lead > 0 ? d.lead : 0; pos >= 0; --pos) *p++ = digit_at(pos);
  }
  const int unit = exponent ? d.lead : 0;  // the position written just before the point
  if (automatic) {
    // Only the digits the decimal has.
    const int last = d.lead - (d.count - 1);
    const int needed = unit - last;
    if (fraction > needed) fraction = needed > 0 ? needed : 0;
  }
  if (fraction > 0) {
    *p++ = point;
    for (int i = 1; i <= fraction; ++i) *p++ = digit_at(unit - i);
  }
  if (exponent) {
    *p++ = u'e';
    const int e = d.lead;
    *p++ = e < 0 ? u'-' : u'+';
    p = WriteUnsigned(p, static_cast<uint32_t>(e < 0 ? -e : e));
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
