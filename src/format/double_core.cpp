//===- double_core.cpp - Binary/decimal conversion of doubles -------------===//
//
// Shortest digits: the interval of decimals that read back to a double is scaled by
// a 128-bit significand of a power of ten, rounded to odd so that the three scaled
// bounds keep their order exactly; the shortest decimal inside the interval is then
// found with at most two candidate lengths (Giulietti's Schubfach method).
//
// Nearest double: a 64-bit decimal significand times the 128-bit power gives a
// 192-bit product whose error is below one unit of its low word; unless the bits
// below the rounding point lie within that error of a midpoint, the product decides
// the rounding. Otherwise (and for subnormal or overflowing results) the decision is
// made exactly with big integers, starting from the product's estimate.
//
//===----------------------------------------------------------------------===//
#include "format/internal/double_core.h"

#include "format/internal/big_number.h"
#include "format/internal/pow10_table.h"

namespace tavi::format_internal {

namespace {

constexpr uint64_t kHiddenBit = uint64_t{1} << 52;
constexpr uint64_t kFractionMask = kHiddenBit - 1;
constexpr uint64_t kInfinityBits = uint64_t{0x7FF} << 52;

// floor(log2(10^e)) for |e| <= 1233.
constexpr int FloorLog2Pow10(int e) {
  return (e * 1741647) >> 19;
}
// floor(log10(2^e)) for |e| <= 1650.
constexpr int FloorLog10Pow2(int e) {
  return (e * 1262611) >> 22;
}
// floor(log10(3/4 * 2^e)) for |e| <= 1650.
constexpr int FloorLog10ThreeQuartersPow2(int e) {
  return (e * 1262611 - 524031) >> 22;
}

const Pow10Significand& Pow10(int e) {
  return kPow10Significands[e - kPow10MinExponent];
}

// The top 64 bits of g * cp / 2^64, with the bits below folded into the lowest bit
// (round to odd), so that comparisons of scaled bounds stay exact.
uint64_t RoundToOdd(const Pow10Significand& g, uint64_t cp) {
  const Uint128 low = Uint128{g.lo} * cp;
  const Uint128 high = Uint128{g.hi} * cp + static_cast<uint64_t>(low >> 64);
  const uint64_t high_low = static_cast<uint64_t>(high);
  return static_cast<uint64_t>(high >> 64) | (high_low > 1 ? 1 : 0);
}

struct Binary {
  uint64_t significand;  // with the hidden bit for normal numbers
  int exponent;          // value = significand * 2^exponent
};

Binary Decode(uint64_t bits) {
  const uint64_t field = bits >> 52;
  if (field == 0) return {bits & kFractionMask, -1074};
  return {(bits & kFractionMask) | kHiddenBit, static_cast<int>(field) - 1075};
}

Decimal StripZeros(uint64_t digits, int exponent) {
  while (digits % 10 == 0) {
    digits /= 10;
    ++exponent;
  }
  return {digits, exponent};
}

}  // namespace

int FloorLog2Pow10ForTests(int e) {
  return FloorLog2Pow10(e);
}

Decimal ShortestDecimal(uint64_t bits) {
  const uint64_t fraction = bits & kFractionMask;
  const uint64_t field = bits >> 52;
  const Binary v = Decode(bits);
  const uint64_t c = v.significand;
  const int q = v.exponent;

  // Integers below 2^53 are their own shortest decimal.
  if (field != 0 && q <= 0 && q > -53 && (c & ((uint64_t{1} << -q) - 1)) == 0)
    return StripZeros(c >> -q, 0);

  const bool even = (c & 1) == 0;
  // At a power of two the gap below is half the gap above.
  const bool lower_closer = fraction == 0 && field > 1;
  const uint64_t cbl = 4 * c - 2 + (lower_closer ? 1 : 0);
  const uint64_t cb = 4 * c;
  const uint64_t cbr = 4 * c + 2;

  const int k = lower_closer ? FloorLog10ThreeQuartersPow2(q) : FloorLog10Pow2(q);
  const int h = q + FloorLog2Pow10(-k) + 1;
  const Pow10Significand& g = Pow10(-k);
  const uint64_t vbl = RoundToOdd(g, cbl << h);
  const uint64_t vb = RoundToOdd(g, cb << h);
  const uint64_t vbr = RoundToOdd(g, cbr << h);
  // The interval is closed for an even significand (ties read back to it).
  const uint64_t lower = vbl + (even ? 0 : 1);
  const uint64_t upper = vbr - (even ? 0 : 1);

  const uint64_t s = vb / 4;
  if (s >= 10) {
    // One digit fewer: the multiples of ten around s.
    const uint64_t sp = s / 10;
    const bool down_inside = lower <= 40 * sp;
    const bool up_inside = upper >= 40 * sp + 40;
    if (down_inside != up_inside) return StripZeros(sp + (up_inside ? 1 : 0), k + 1);
  }
  const bool down_inside = lower <= 4 * s;
  const bool up_inside = upper >= 4 * s + 4;
  if (down_inside != up_inside) return StripZeros(s + (up_inside ? 1 : 0), k);
  // Both neighbours (or neither) lie inside: take the nearer, ties to even.
  const uint64_t mid = 4 * s + 2;
  const bool round_up = vb > mid || (vb == mid && (s & 1) != 0);
  return StripZeros(s + (round_up ? 1 : 0), k);
}

int CompareWithDecimal(uint64_t bits, uint64_t digits, int exponent) {
  const Binary v = Decode(bits);
  return CompareScaled(BigNumber(v.significand), 0, v.exponent, BigNumber(digits), exponent,
                       exponent);
}

// ---- Reading -------------------------------------------------------------------

namespace {

// Estimate of w * 10^q: the 192-bit product of the normalised w with g(q), and the
// binary exponent of its leading bit.
struct Estimate {
  uint64_t hi, mid, lo;
  uint64_t w_normal;
  int top;       // 191 or 190: the leading bit of the product
  int exponent;  // the value's leading bit is 2^exponent
};

Estimate Estimate10(uint64_t w, int q) {
  const int lz = __builtin_clzll(w);
  Estimate e;
  e.w_normal = w << lz;
  const Pow10Significand& g = Pow10(q);
  const Uint128 low = Uint128{e.w_normal} * g.lo;
  const Uint128 high = Uint128{e.w_normal} * g.hi + static_cast<uint64_t>(low >> 64);
  e.hi = static_cast<uint64_t>(high >> 64);
  e.mid = static_cast<uint64_t>(high);
  e.lo = static_cast<uint64_t>(low);
  e.top = (e.hi >> 63) != 0 ? 191 : 190;
  // w * 10^q = P * 2^(r - 127 - lz) with r = floor(log2 10^q).
  e.exponent = e.top + FloorLog2Pow10(q) - 127 - lz;
  return e;
}

// Rounds w * 10^q to a normal double when the estimate decides it; false when the
// bits below the rounding point are too close to a midpoint, or the result is not a
// normal double.
bool TryNearest(uint64_t w, int q, uint64_t& bits) {
  const Estimate e = Estimate10(w, q);
  if (e.exponent < -1022 || e.exponent > 1023) return false;
  const int below = e.top == 191 ? 11 : 10;  // bits of hi below the 53-bit significand
  const uint64_t field = e.hi & ((uint64_t{1} << below) - 1);
  const uint64_t half = uint64_t{1} << (below - 1);
  // The exact product lies in [P - w_normal, P): only a field of exactly `half` with
  // a zero middle word can hide the midpoint.
  if (field == half && e.mid == 0) return false;
  uint64_t significand = e.hi >> below;
  int exponent = e.exponent;
  if (field >= half) ++significand;
  if (significand == (uint64_t{1} << 53)) {
    significand >>= 1;
    ++exponent;
  }
  if (exponent > 1023) {
    bits = kInfinityBits;
    return true;
  }
  bits = (static_cast<uint64_t>(exponent + 1023) << 52) | (significand & kFractionMask);
  return true;
}

// A double within a few units of w * 10^q, for the exact search to start from.
uint64_t Candidate(uint64_t w, int q) {
  const Estimate e = Estimate10(w, q);
  if (e.exponent > 1023) return kInfinityBits;
  if (e.exponent < -1075) return 0;
  const uint64_t top64 = e.top == 191 ? e.hi : (e.hi << 1) | (e.mid >> 63);
  // value ~ top64 * 2^(exponent - 63); keep the bits down to the unit 2^unit.
  const int unit = e.exponent - 52 < -1074 ? -1074 : e.exponent - 52;
  const int shift = 63 - (e.exponent - unit);
  const uint64_t significand = shift >= 64 ? 0 : top64 >> shift;
  if (significand >= kHiddenBit)
    return (static_cast<uint64_t>(unit + 1075) << 52) | (significand & kFractionMask);
  return significand;
}

// The midpoint between the double `bits` and the next one up, as m * 2^e.
void MidpointAbove(uint64_t bits, uint64_t& m, int& e) {
  const Binary v = Decode(bits);
  m = 2 * v.significand + 1;
  e = v.exponent - 1;
}

// Exact rounding of N * 10^E, starting from a nearby candidate.
uint64_t ExactNearest(const BigNumber& n, int e10, uint64_t bits) {
  for (int step = 0; step < 64; ++step) {
    uint64_t m;
    int e2;
    if (bits < kInfinityBits) {
      MidpointAbove(bits, m, e2);
      const int c = CompareScaled(n, e10, e10, BigNumber(m), 0, e2);
      if (c > 0 || (c == 0 && (Decode(bits).significand & 1) != 0)) {
        ++bits;
        continue;
      }
    }
    if (bits > 0) {
      MidpointAbove(bits - 1, m, e2);
      const int c = CompareScaled(n, e10, e10, BigNumber(m), 0, e2);
      if (c < 0 || (c == 0 && (Decode(bits - 1).significand & 1) == 0)) {
        --bits;
        continue;
      }
    }
    break;
  }
  return bits;
}

}  // namespace

uint64_t NearestDouble(const DecimalScan& scan) {
  uint64_t w = scan.first19;
  int64_t q64 = scan.exponent;
  if (w == 0) return 0;
  // Below 10^-343 even 19 digits stay under half the smallest subnormal; from 10^309
  // up every value overflows.
  if (q64 < kPow10MinExponent) return 0;
  if (q64 > 308) return kInfinityBits;
  int q = static_cast<int>(q64);

  if (!scan.more_digits) {
    while (w % 10 == 0) {
      w /= 10;
      ++q;
    }
    // Both w and 10^|q| are exact doubles: one correctly rounded operation.
    if (w <= (uint64_t{1} << 53) && q >= -22 && q <= 22) {
      static constexpr double kExact[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
      const double d = static_cast<double>(w);
      return DoubleBits(q < 0 ? d / kExact[-q] : d * kExact[q]);
    }
    uint64_t bits;
    if (TryNearest(w, q, bits)) return bits;
  } else {
    // The value lies in (w, w + 1) * 10^q: decided when both ends round alike.
    uint64_t low, high;
    if (TryNearest(w, q, low) && TryNearest(w + 1, q, high) && low == high) return low;
  }

  return NearestDoubleExact(scan);
}

uint64_t NearestDoubleExact(const DecimalScan& scan) {
  if (scan.first19 == 0) return 0;
  if (scan.exponent < kPow10MinExponent) return 0;
  if (scan.exponent > 308) return kInfinityBits;
  // Every significant digit (up to a limit that cannot change the rounding).
  BigNumber n;
  int stored = 0;
  bool dropped_nonzero = false;
  uint32_t chunk = 0, chunk_scale = 1;
  for (const char16_t* p = scan.begin; p != scan.end; ++p) {
    if (*p < u'0' || *p > u'9') continue;
    const uint32_t d = static_cast<uint32_t>(*p - u'0');
    if (stored == 0 && d == 0) continue;
    if (stored == kMaxExactDigits) {
      dropped_nonzero |= d != 0;
      continue;
    }
    chunk = chunk * 10 + d;
    chunk_scale *= 10;
    ++stored;
    if (chunk_scale == 1000000000) {
      n.MultiplyAdd(chunk_scale, chunk);
      chunk = 0;
      chunk_scale = 1;
    }
  }
  if (chunk_scale != 1) n.MultiplyAdd(chunk_scale, chunk);
  int64_t e10 = scan.exponent - (stored - scan.first19_count);
  if (dropped_nonzero) {
    // A non-zero digit past the limit only tells "a little above": one more digit 1.
    n.MultiplyAdd(10, 1);
    --e10;
  }
  return ExactNearest(n, static_cast<int>(e10),
                      Candidate(scan.first19, static_cast<int>(scan.exponent)));
}

}  // namespace tavi::format_internal
