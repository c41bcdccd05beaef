//===- utf8_body.h - The converter loops, shared by every path -*- C++ -*-===//
//
// The decoding and encoding loops are written once and instantiated per path with
// a block type that moves ASCII runs. A block type K provides:
//   kBlock                      the code units one step handles;
//   Widen(in, out) -> size_t    reads kBlock bytes, stores kBlock code units, and
//                               returns how many leading bytes were ASCII;
//   Narrow(units, out) -> size_t reads kBlock code units, stores kBlock bytes, and
//                               returns how many leading units were ASCII.
// A step stores a whole block even when only a prefix is ASCII; the loops call it
// only where the whole block fits both input and output, and the bytes past the
// prefix are overwritten by what follows.
//
// The including file may compile this under a target pragma (the AVX2 path), so
// the header includes nothing beyond what that file has included before it.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstring>

#include "core/internal/utf8.h"

#if defined(__GNUC__)
#define TAVI_UTF8_INLINE inline __attribute__((always_inline))
#else
#define TAVI_UTF8_INLINE inline
#endif

// Everything here is local to each file that includes it: the vector paths compile
// these loops for their own instruction sets, and no copy may be shared between them.
namespace tavi::internal::utf8_detail {
namespace {

TAVI_UTF8_INLINE char16_t Unit(const uint8_t* p, size_t i) {
  char16_t u;
  std::memcpy(&u, p + 2 * i, 2);
  return u;
}

// The allowed range of the second byte of a sequence (later bytes are 80..BF): it
// excludes overlong forms, surrogates and code points above U+10FFFF.
TAVI_UTF8_INLINE bool SecondByteOk(uint8_t lead, uint8_t b) {
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

// Length of the sequence a lead byte starts; 0 for a byte that cannot lead.
TAVI_UTF8_INLINE size_t SequenceLength(uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  if (lead < 0xF5) return 4;
  return 0;
}

// ValidPrefix is the number of bytes (0 to length) at in[0..avail) that begin a
// well-formed sequence of the given length.
TAVI_UTF8_INLINE size_t ValidPrefix(const uint8_t* in, size_t avail, size_t length) {
  if (length == 0) return 0;
  const size_t present = avail < length ? avail : length;
  if (present < 2) return present;
  if (!SecondByteOk(in[0], in[1])) return 1;
  size_t k = 2;
  while (k < present && (in[k] & 0xC0) == 0x80) ++k;
  return k;
}

// The short ASCII runs between the letters of accented or mixed-script text are
// cheaper one by one than by block steps. Decoding enters block steps when a word
// test sees eight ASCII bytes ahead; encoding after kShortRun units one by one.
// (Each was the faster choice for its direction on Latin, CJK and emoji text.)
TAVI_UTF8_INLINE bool EightAsciiBytes(const uint8_t* in) {
  uint64_t w;
  std::memcpy(&w, in, 8);
  return (w & 0x8080808080808080ull) == 0;
}

constexpr size_t kShortRun = 16;

template <class K>
TAVI_UTF8_INLINE Utf8Status DecodeBody(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                                       size_t* consumed, size_t* produced, size_t* needed) {
  size_t i = 0;
  size_t o = 0;
  Utf8Status status = Utf8Status::kOk;
  while (i < n) {
    uint8_t lead = in[i];
    if (lead < 0x80) {
      if (i + K::kBlock <= n && o + K::kBlock <= max_units && EightAsciiBytes(in + i)) {
        size_t a;
        do {
          a = K::Widen(in + i, out + o);
          i += a;
          o += a;
        } while (a == K::kBlock && i + K::kBlock <= n && o + K::kBlock <= max_units);
        continue;
      }
      do {
        if (o == max_units) {
          status = Utf8Status::kInvalid;
          goto done;
        }
        out[o++] = lead;
        if (++i == n) goto done;
        lead = in[i];
      } while (lead < 0x80);
    }
    {
      const size_t left = n - i;
      if (lead < 0xE0) {
        if (lead < 0xC2 || o == max_units) {
          status = Utf8Status::kInvalid;
          break;
        }
        if (left < 2) goto cut;
        const uint8_t b1 = in[i + 1];
        if ((b1 & 0xC0) != 0x80) {
          status = Utf8Status::kInvalid;
          break;
        }
        out[o++] = static_cast<char16_t>(((lead & 0x1F) << 6) | (b1 & 0x3F));
        i += 2;
      } else if (lead < 0xF0) {
        if (o == max_units) {
          status = Utf8Status::kInvalid;
          break;
        }
        if (left < 3) goto cut;
        const uint8_t b1 = in[i + 1];
        const uint8_t b2 = in[i + 2];
        const uint32_t cp = ((lead & 0x0Fu) << 12) | ((b1 & 0x3Fu) << 6) | (b2 & 0x3Fu);
        if ((((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80)) != 0 || cp < 0x800 ||
            (cp & 0xF800) == 0xD800) {
          status = Utf8Status::kInvalid;
          break;
        }
        out[o++] = static_cast<char16_t>(cp);
        i += 3;
      } else {
        if (lead > 0xF4 || o + 2 > max_units) {
          status = Utf8Status::kInvalid;
          break;
        }
        if (left < 4) goto cut;
        const uint8_t b1 = in[i + 1];
        const uint8_t b2 = in[i + 2];
        const uint8_t b3 = in[i + 3];
        const uint32_t cp =
            ((lead & 0x07u) << 18) | ((b1 & 0x3Fu) << 12) | ((b2 & 0x3Fu) << 6) | (b3 & 0x3Fu);
        if ((((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80) | ((b3 & 0xC0) ^ 0x80)) != 0 ||
            cp < 0x10000 || cp > 0x10FFFF) {
          status = Utf8Status::kInvalid;
          break;
        }
        // High surrogate 0xD800 + ((cp - 0x10000) >> 10), folded.
        out[o++] = static_cast<char16_t>(0xD7C0 + (cp >> 10));
        out[o++] = static_cast<char16_t>(0xDC00 | (cp & 0x3FF));
        i += 4;
      }
      continue;
    cut:
      // The input ends inside a sequence: a valid prefix waits for the rest.
      const size_t length = SequenceLength(lead);
      if (ValidPrefix(in + i, left, length) == left) {
        status = Utf8Status::kIncomplete;
        *needed = length - left;
      } else {
        status = Utf8Status::kInvalid;
      }
      break;
    }
  }
done:
  *consumed = i;
  *produced = o;
  return status;
}

// EncodeOne writes one code unit (a surrogate pair when the partner follows) with
// exact stores; the careful path for surrogates and for the last unit.
TAVI_UTF8_INLINE void EncodeOne(const uint8_t* units, size_t count, size_t& i, uint8_t*& o) {
  const char16_t u = Unit(units, i++);
  if (u < 0x80) {
    *o++ = static_cast<uint8_t>(u);
  } else if (u < 0x800) {
    o[0] = static_cast<uint8_t>(0xC0 | (u >> 6));
    o[1] = static_cast<uint8_t>(0x80 | (u & 0x3F));
    o += 2;
  } else if ((u & 0xF800) != 0xD800) {
    o[0] = static_cast<uint8_t>(0xE0 | (u >> 12));
    o[1] = static_cast<uint8_t>(0x80 | ((u >> 6) & 0x3F));
    o[2] = static_cast<uint8_t>(0x80 | (u & 0x3F));
    o += 3;
  } else if (u < 0xDC00 && i < count && (Unit(units, i) & 0xFC00) == 0xDC00) {
    const uint32_t cp = 0x10000 + ((static_cast<uint32_t>(u) - 0xD800) << 10) +
                        (static_cast<uint32_t>(Unit(units, i)) - 0xDC00);
    ++i;
    o[0] = static_cast<uint8_t>(0xF0 | (cp >> 18));
    o[1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
    o[2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
    o[3] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
    o += 4;
  } else {
    // A surrogate without its partner.
    o[0] = 0xEF;
    o[1] = 0xBF;
    o[2] = 0xBD;
    o += 3;
  }
}

template <class K>
TAVI_UTF8_INLINE size_t EncodeBody(const uint8_t* units, size_t count, uint8_t* out) {
  uint8_t* o = out;
  size_t i = 0;
  while (i < count) {
    char16_t u = Unit(units, i);
    if (u < 0x80) {
      // ASCII one by one for up to kShortRun units: the runs between the letters of
      // accented text end there. A run that goes on continues by block steps.
      const size_t stop = count - i < kShortRun ? count : i + kShortRun;
      do {
        *o++ = static_cast<uint8_t>(u);
        if (++i == stop) break;
        u = Unit(units, i);
      } while (u < 0x80);
      if (i == stop) {
        while (i + K::kBlock <= count) {
          const size_t a = K::Narrow(units + 2 * i, o);
          i += a;
          o += a;
          if (a != K::kBlock) break;
        }
        continue;
      }
    }
    if (u < 0x800) {
      o[0] = static_cast<uint8_t>(0xC0 | (u >> 6));
      o[1] = static_cast<uint8_t>(0x80 | (u & 0x3F));
      o += 2;
      ++i;
    } else if ((u & 0xF800) != 0xD800) {
      o[0] = static_cast<uint8_t>(0xE0 | (u >> 12));
      o[1] = static_cast<uint8_t>(0x80 | ((u >> 6) & 0x3F));
      o[2] = static_cast<uint8_t>(0x80 | (u & 0x3F));
      o += 3;
      ++i;
    } else {
      EncodeOne(units, count, i, o);
    }
  }
  return static_cast<size_t>(o - out);
}

}  // namespace
}  // namespace tavi::internal::utf8_detail
