//===- colour_text.cpp - Colour values as text and back ------------------===//
#include "tavi/colour/colour_text.h"

#include <initializer_list>

#include "platform/number_locale.h"
#include "tavi/colour/colour.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

constexpr char16_t kHexDigits[] = u"0123456789abcdef";

int HexValue(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

char16_t* WriteStep(uint32_t step, char16_t* end) {
  do {
    *--end = static_cast<char16_t>(u'0' + step % 10);
    step /= 10;
  } while (step != 0);
  return end;
}

const char16_t* SkipSpaces(const char16_t* p) {
  while (*p == u' ') ++p;
  return p;
}

// ReadStep reads one decimal step 0..255; null when there is none or it is larger.
const char16_t* ReadStep(const char16_t* p, uint32_t& step) {
  if (*p < u'0' || *p > u'9') return nullptr;
  uint32_t v = 0;
  for (; *p >= u'0' && *p <= u'9'; ++p) {
    v = v * 10 + static_cast<uint32_t>(*p - u'0');
    if (v > 255) return nullptr;
  }
  step = v;
  return p;
}

}  // namespace

char16_t* _ColourToString(uint32_t colour, char16_t* end) {
  for (int shift = 16; shift >= 0; shift -= 8) {
    const uint32_t step = (colour >> shift) & 0xFF;
    *--end = kHexDigits[step & 15];
    *--end = kHexDigits[step >> 4];
  }
  *--end = u'#';
  return end;
}

char16_t* _ColourToStringEx(uint32_t colour, char16_t* end, char16_t separator) {
  if (separator == 0) return _ColourToString(colour, end);
  end = WriteStep(XColourBlue(colour), end);
  for (uint32_t step : {uint32_t{XColourGreen(colour)}, uint32_t{XColourRed(colour)}}) {
    if (separator != u' ') *--end = u' ';
    *--end = separator;
    end = WriteStep(step, end);
  }
  return end;
}

bool XColourToString(XIO& out, uint32_t colour) {
  return XColourToStringEx(out, colour, 0);
}

bool XColourToStringEx(XIO& out, uint32_t colour, char16_t separator) {
  char16_t text[kColourTextMax];
  char16_t* end = text + kColourTextMax;
  return out.WriteStringZone(_ColourToStringEx(colour, end, separator), end);
}

char16_t XColourSeparator(uint32_t locale) {
  char16_t symbol[4];
  const int32_t written =
      platform::LocaleNumberSymbol(locale, platform::NumberSymbol::kList, symbol, 4);
  return written == 2 ? symbol[0] : u',';
}

const char16_t* _StringToColour(uint32_t& colour, const char16_t* text, char16_t separator) {
  const char16_t* p = SkipSpaces(text);
  if (*p == u'#') {
    ++p;
    uint32_t digits[6];
    int count = 0;
    for (int v; count < 7 && (v = HexValue(p[count])) >= 0; ++count) {
      if (count < 6) digits[count] = static_cast<uint32_t>(v);
    }
    if (count == 3) {
      colour =
          XMakeColour(static_cast<uint8_t>(digits[0] * 17), static_cast<uint8_t>(digits[1] * 17),
                      static_cast<uint8_t>(digits[2] * 17));
    } else if (count == 6) {
      colour = XMakeColour(static_cast<uint8_t>(digits[0] << 4 | digits[1]),
                           static_cast<uint8_t>(digits[2] << 4 | digits[3]),
                           static_cast<uint8_t>(digits[4] << 4 | digits[5]));
    } else {
      return nullptr;
    }
    return p + count;
  }

  if (separator == 0) separator = u',';
  uint32_t steps[3];
  for (int i = 0; i < 3; ++i) {
    if (i != 0) {
      // A space separator is the run of spaces itself; any other may have spaces
      // on both sides.
      const char16_t* q = SkipSpaces(p);
      if (separator == u' ') {
        if (q == p) return nullptr;
        p = q;
      } else {
        if (*q != separator) return nullptr;
        p = SkipSpaces(q + 1);
      }
    }
    p = ReadStep(p, steps[i]);
    if (p == nullptr) return nullptr;
  }
  colour = steps[0] | (steps[1] << 8) | (steps[2] << 16);
  return p;
}

}  // namespace tavi
