//===- utf8.cpp - UTF-16 <-> UTF-8: portable path and dispatch ------------===//
//
// The portable path moves ASCII runs eight code units per step through 64-bit
// words; the vector paths live in utf8_x86.cpp. The replacing decoder for the
// system boundary is built on the strict one.
//
//===----------------------------------------------------------------------===//
#include <bit>

#include "core/internal/endian.h"
#include "core/internal/kernel_choice.h"
#include "core/internal/utf8.h"
#include "core/internal/utf8_body.h"
#include "core/internal/utf8_x86.h"
#include "platform/cpu.h"

namespace tavi::internal {

namespace {

using utf8_detail::DecodeBody;
using utf8_detail::EncodeBody;

struct PortableBlock {
  static constexpr size_t kBlock = 8;

  static size_t Widen(const uint8_t* in, char16_t* out) {
    const uint64_t w = LoadLE<uint64_t>(in);
    for (size_t k = 0; k < 8; ++k) out[k] = static_cast<char16_t>((w >> (8 * k)) & 0xFF);
    const uint64_t high = w & 0x8080808080808080ull;
    return high == 0 ? 8 : static_cast<size_t>(std::countr_zero(high)) / 8;
  }

  static size_t Narrow(const uint8_t* units, uint8_t* out) {
    const uint64_t a = LoadLE<uint64_t>(units);
    const uint64_t b = LoadLE<uint64_t>(units + 8);
    for (size_t k = 0; k < 4; ++k) {
      out[k] = static_cast<uint8_t>(a >> (16 * k));
      out[4 + k] = static_cast<uint8_t>(b >> (16 * k));
    }
    constexpr uint64_t kHigh = 0xFF80FF80FF80FF80ull;
    if ((a & kHigh) != 0) return static_cast<size_t>(std::countr_zero(a & kHigh)) / 16;
    if ((b & kHigh) != 0) return 4 + static_cast<size_t>(std::countr_zero(b & kHigh)) / 16;
    return 8;
  }
};

Utf8Status DecodePortable(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                          size_t* consumed, size_t* produced, size_t* needed) {
  return DecodeBody<PortableBlock>(in, n, out, max_units, consumed, produced, needed);
}

size_t EncodePortable(const uint8_t* units, size_t count, uint8_t* out) {
  return EncodeBody<PortableBlock>(units, count, out);
}

struct Utf8Kernels {
  Utf8DecodeFn decode;
  Utf8EncodeFn encode;
};

Utf8Kernels PathKernels(Utf8Path path) {
  switch (path) {
#if TAVI_UTF8_X86
    case Utf8Path::kSse2:
      return {&DecodeUtf8Sse2, &EncodeUtf8Sse2};
    case Utf8Path::kAvx2:
      return {&DecodeUtf8Avx2, &EncodeUtf8Avx2};
#endif
    default:
      return {&DecodePortable, &EncodePortable};
  }
}

// KernelChoice keeps one pointer per choice; the decoder and the encoder share the
// path, so both choices move together.
Utf8DecodeFn DecodeOf(Utf8Path path) {
  return PathKernels(path).decode;
}

Utf8EncodeFn EncodeOf(Utf8Path path) {
  return PathKernels(path).encode;
}

KernelChoice<Utf8Path, Utf8DecodeFn>& DecodeChoice() {
  static KernelChoice<Utf8Path, Utf8DecodeFn> choice(
      {Utf8Path::kAvx2, Utf8Path::kSse2}, Utf8Path::kPortable, DecodeOf, Utf8PathAvailable);
  return choice;
}

KernelChoice<Utf8Path, Utf8EncodeFn>& EncodeChoice() {
  static KernelChoice<Utf8Path, Utf8EncodeFn> choice(
      {Utf8Path::kAvx2, Utf8Path::kSse2}, Utf8Path::kPortable, EncodeOf, Utf8PathAvailable);
  return choice;
}

}  // namespace

bool Utf8PathAvailable(Utf8Path path) {
  switch (path) {
    case Utf8Path::kPortable:
      return true;
#if TAVI_UTF8_X86
    case Utf8Path::kSse2:
      return true;
    case Utf8Path::kAvx2:
      return platform::GetCpuFeatures().avx2;
#endif
    default:
      return false;
  }
}

Utf8Path Utf8ActivePath() {
  return DecodeChoice().Active();
}

bool SetUtf8Path(Utf8Path path) {
  if (!DecodeChoice().Set(path)) return false;
  EncodeChoice().Set(path);
  return true;
}

void ResetUtf8Path() {
  DecodeChoice().Reset();
  EncodeChoice().Reset();
}

size_t EncodeUtf8(const void* units, size_t count, uint8_t* out) {
  return EncodeChoice().Get()(static_cast<const uint8_t*>(units), count, out);
}

size_t Utf16PieceLength(const void* units, size_t count, size_t max) {
  if (count <= max) return count;
  const char16_t last = utf8_detail::Unit(static_cast<const uint8_t*>(units), max - 1);
  return (last & 0xFC00) == 0xD800 ? max - 1 : max;
}

Utf8Status DecodeUtf8(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                      size_t* consumed, size_t* produced, size_t* needed) {
  return DecodeChoice().Get()(in, n, out, max_units, consumed, produced, needed);
}

size_t DecodeUtf8Replacing(const uint8_t* in, size_t n, char16_t* out) {
  const Utf8DecodeFn decode = DecodeChoice().Get();
  size_t i = 0;
  size_t o = 0;
  while (i < n) {
    size_t consumed = 0;
    size_t produced = 0;
    size_t needed = 0;
    const Utf8Status status = decode(in + i, n - i, out + o, n - o, &consumed, &produced, &needed);
    i += consumed;
    o += produced;
    if (status == Utf8Status::kOk) break;
    // A malformed piece: the valid prefix of a sequence, or one byte. Every byte of
    // it gave no code unit yet, so the one U+FFFD fits the room of n units.
    const size_t length = utf8_detail::SequenceLength(in[i]);
    const size_t prefix = utf8_detail::ValidPrefix(in + i, n - i, length);
    out[o++] = 0xFFFD;
    i += prefix == 0 ? 1 : prefix;
  }
  return o;
}

}  // namespace tavi::internal
