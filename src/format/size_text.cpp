//===- size_text.cpp - Byte sizes, ratios and speeds as text --------------===//
#include "tavi/format/size_text.h"

#include <cstring>

#include "format/internal/digits.h"
#include "tavi/core/error.h"
#include "tavi/io/stream.h"
#include "time/internal/proc_time.h"

namespace tavi {

namespace {

struct SizeUnit {
  char16_t label[20];
  uint32_t bytes;  // the label's length in bytes
};

// One row per size level. The third step of 1024 is labelled " TB", not " GB".
constexpr SizeUnit kSizeUnits[] = {
    {u" B", 4},
    {u" kB", 6},
    {u" MB", 6},
    {u" TB", 6},
};
constexpr uint32_t kTopLevel = 3;
static_assert(sizeof kSizeUnits / sizeof kSizeUnits[0] == kTopLevel + 1);

// The largest value whose product with 100 (or 1000, 10000) fits 64 bits.
constexpr uint64_t kMaxTimes100 = 184467440737095516u;
constexpr uint64_t kMaxTimes1000 = 18446744073709551u;
constexpr uint64_t kMaxTimes10000 = 1844674407370955u;

constexpr char16_t kEnDash = u'\u2013';

// A text assembled on the stack, sent with one write.
class Text {
 public:
  Text() : p_(end()) {}
  // Pieces are put in front, so a text is built from its end.
  void Front(char16_t c) { *--p_ = c; }
  void Front(const char16_t* s, uint32_t n) {
    p_ -= n;
    std::memcpy(p_, s, n * sizeof(char16_t));
  }
  void FrontNumber(uint64_t v) { p_ = internal::FastDecimal(v, p_); }
  // The remainder zero-padded to `width` digits.
  void FrontPadded(uint64_t v, uint32_t width) {
    char16_t* const stop = p_ - width;
    p_ = internal::FastDecimal(v, p_);
    while (p_ > stop) *--p_ = u'0';
  }
  bool WriteTo(XIO& out) const {
    return out._Write(p_, static_cast<uint32_t>(end() - p_) * sizeof(char16_t));
  }

 private:
  char16_t* end() { return buffer_ + kCapacity; }
  const char16_t* end() const { return buffer_ + kCapacity; }
  static constexpr uint32_t kCapacity = 80;
  char16_t buffer_[kCapacity];
  char16_t* p_;
};

// The number of decimal digits of v (1 for 0).
uint32_t DecimalWidth(uint64_t v) {
  uint32_t n = 1;
  while (v >= 10) {
    v /= 10;
    ++n;
  }
  return n;
}

// (q * 100) / 1024 without forming q * 100, which may not fit 64 bits.
uint64_t Times100Over1024(uint64_t q) {
  return (q >> 10) * 100 + ((q & 1023) * 100 >> 10);
}

}  // namespace

bool XWriteSize(XIO& out, uint64_t value, uint64_t divisor, char16_t point) {
  if (divisor == 0) {
    out.SetErrorCode(kErrTooLong);
    return false;
  }
  uint32_t level = 0;
  // value > divisor * 1024, tested without letting the product wrap.
  auto above = [&] { return divisor <= (UINT64_MAX >> 10) && value > (divisor << 10); };
  while (level < kTopLevel && above()) {
    ++level;
    if (divisor == 100) {
      value >>= 10;
    } else if (value <= kMaxTimes100) {
      value = value * 100 / divisor >> 10;
    } else {
      // value / divisor * 100 can exceed 64 bits only transiently: the shift that
      // follows brings it back, so it is formed as one step.
      value = Times100Over1024(value / divisor);
    }
    divisor = 100;
  }
  const uint64_t quotient = value / divisor;
  const uint64_t remainder = value - quotient * divisor;
  const uint32_t width = divisor > 10 ? DecimalWidth(divisor - 1) : 1;
  Text text;
  const SizeUnit& unit = kSizeUnits[level];
  text.Front(unit.label, unit.bytes / sizeof(char16_t));
  text.FrontPadded(remainder, width);
  text.Front(point);
  text.FrontNumber(quotient);
  return text.WriteTo(out);
}

bool XWriteSize(XIO& out, uint64_t bytes, char16_t point) {
  if (bytes <= kMaxTimes100) return XWriteSize(out, bytes * 100, 100, point);
  return XWriteSize(out, bytes, 1, point);
}

bool XWritePercents(XIO& out, uint32_t value, uint32_t scale, char16_t point) {
  uint32_t shown = value;  // the value in units of 1 / effective scale
  uint32_t effective = 1;
  if (scale == 10 || scale == 100) {
    effective = scale;
  } else if (scale > 1) {
    if (value < 42949673u) {
      shown = value * 100 / scale;
      effective = 100;
    } else if (value > 429496729u) {
      shown = value / scale;
    } else {
      shown = value * 10 / scale;
      effective = 10;
    }
  }
  Text text;
  if (effective > 1) {
    text.FrontPadded(shown % effective, 2);
    text.Front(point);
  }
  text.FrontNumber(shown / effective);
  return text.WriteTo(out);
}

bool XWriteSizePercents(XIO& out, uint64_t part, uint64_t whole, char16_t point) {
  while (part > kMaxTimes10000) {
    part /= 10;
    whole /= 10;
  }
  if (whole == 0) {
    out.SetErrorCode(kErrOutOfRange);
    return false;
  }
  const uint64_t p = part * 10000 / whole;
  Text text;
  text.FrontPadded(p % 100, 2);
  text.Front(point);
  text.FrontNumber(p / 100);
  return text.WriteTo(out);
}

bool WriteSpeed(XIO& out, int64_t ticks, uint64_t bytes, char16_t point) {
  const uint64_t frequency = internal::ProcTimeFrequency();
  uint64_t ms = 0;
  if (ticks > 0 && frequency != 0) {
    // ticks * 1000 / frequency, without forming ticks * 1000.
    const uint64_t t = static_cast<uint64_t>(ticks);
    ms = t / frequency * 1000 + (t % frequency) * 1000 / frequency;
  }
  while (ms != 0 && bytes > kMaxTimes1000) {
    bytes /= 10;
    ms /= 10;
  }
  if (ms == 0) return out._Write(&kEnDash, sizeof kEnDash);
  return XWriteSize(out, bytes * 1000, ms, point) && out._Write(u"/s", 2 * sizeof(char16_t));
}

}  // namespace tavi
