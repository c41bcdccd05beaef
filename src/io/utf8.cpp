//===- utf8.cpp - UTF-16 <-> UTF-8 for sized strings -----------------------===//
#include <cstring>

#include "io/internal/utf8.h"

namespace tavi::internal {

namespace {

char16_t Unit(const uint8_t* p, size_t i) {
  char16_t u;
  std::memcpy(&u, p + 2 * i, 2);
  return u;
}

bool IsHigh(char16_t u) {
  return u >= 0xD800 && u <= 0xDBFF;
}

bool IsLow(char16_t u) {
  return u >= 0xDC00 && u <= 0xDFFF;
}

// Length of the sequence a lead byte starts; 0 for a byte that cannot lead.
size_t SequenceLength(uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF5) return 4;
  return 0;
}

// The allowed range of the second byte of a sequence (later bytes are 80..BF): it
// excludes overlong forms, surrogates and code points above U+10FFFF.
bool SecondByteOk(uint8_t lead, uint8_t b) {
  switch (lead) {
    case 0xE0:
      return b >= 0xA0 && b <= 0xBF;
    case 0xED:
      return b >= 0x80 && b <= 0x9F;
    case 0xF0:
      return b >= 0x90 && b <= 0xBF;
    case 0xF4:
      return b >= 0x80 && b <= 0x8F;
    default:
      return b >= 0x80 && b <= 0xBF;
  }
}

}  // namespace

size_t EncodeUtf8(const uint8_t* units, size_t count, uint8_t* out) {
  uint8_t* o = out;
  size_t i = 0;
  while (i < count) {
    // Eight ASCII code units at a time.
    if (i + 8 <= count) {
      uint64_t a, b;
      std::memcpy(&a, units + 2 * i, 8);
      std::memcpy(&b, units + 2 * i + 8, 8);
      if (((a | b) & 0xFF80FF80FF80FF80ull) == 0) {
        for (size_t k = 0; k < 8; ++k) o[k] = static_cast<uint8_t>(Unit(units, i + k));
        o += 8;
        i += 8;
        continue;
      }
    }
    const char16_t u = Unit(units, i++);
    if (u < 0x80) {
      *o++ = static_cast<uint8_t>(u);
    } else if (u < 0x800) {
      *o++ = static_cast<uint8_t>(0xC0 | (u >> 6));
      *o++ = static_cast<uint8_t>(0x80 | (u & 0x3F));
    } else if (IsHigh(u) && i < count && IsLow(Unit(units, i))) {
      const uint32_t cp = 0x10000 + ((static_cast<uint32_t>(u) - 0xD800) << 10) +
                          (static_cast<uint32_t>(Unit(units, i)) - 0xDC00);
      ++i;
      *o++ = static_cast<uint8_t>(0xF0 | (cp >> 18));
      *o++ = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
      *o++ = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
      *o++ = static_cast<uint8_t>(0x80 | (cp & 0x3F));
    } else {
      const char16_t c = (IsHigh(u) || IsLow(u)) ? char16_t{0xFFFD} : u;
      *o++ = static_cast<uint8_t>(0xE0 | (c >> 12));
      *o++ = static_cast<uint8_t>(0x80 | ((c >> 6) & 0x3F));
      *o++ = static_cast<uint8_t>(0x80 | (c & 0x3F));
    }
  }
  return static_cast<size_t>(o - out);
}

size_t Utf16PieceLength(const uint8_t* units, size_t count, size_t max) {
  if (count <= max) return count;
  return IsHigh(Unit(units, max - 1)) ? max - 1 : max;
}

Utf8Status DecodeUtf8(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                      size_t* consumed, size_t* produced, size_t* needed) {
  size_t i = 0;
  size_t o = 0;
  Utf8Status status = Utf8Status::kOk;
  while (i < n) {
    if (i + 8 <= n && o + 8 <= max_units) {
      uint64_t w;
      std::memcpy(&w, in + i, 8);
      if ((w & 0x8080808080808080ull) == 0) {
        for (size_t k = 0; k < 8; ++k) out[o + k] = in[i + k];
        i += 8;
        o += 8;
        continue;
      }
    }
    const uint8_t lead = in[i];
    const size_t length = SequenceLength(lead);
    if (length == 0 || o + Utf8SequenceUnits(lead) > max_units) {
      status = Utf8Status::kInvalid;
      break;
    }
    if (length == 1) {
      out[o++] = lead;
      ++i;
      continue;
    }
    // Check the bytes present; a valid prefix cut by the end of the piece waits for
    // the rest.
    const size_t present = n - i < length ? n - i : length;
    bool ok = present < 2 || SecondByteOk(lead, in[i + 1]);
    for (size_t k = 2; ok && k < present; ++k) ok = (in[i + k] & 0xC0) == 0x80;
    if (!ok) {
      status = Utf8Status::kInvalid;
      break;
    }
    if (present < length) {
      status = Utf8Status::kIncomplete;
      *needed = length - present;
      break;
    }
    uint32_t cp = lead & (0x7F >> length);
    for (size_t k = 1; k < length; ++k) cp = (cp << 6) | (in[i + k] & 0x3F);
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out[o++] = static_cast<char16_t>(0xD800 + (cp >> 10));
      out[o++] = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
    } else {
      out[o++] = static_cast<char16_t>(cp);
    }
    i += length;
  }
  *consumed = i;
  *produced = o;
  return status;
}

}  // namespace tavi::internal
