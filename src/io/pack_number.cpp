//===- pack_number.cpp - Packed numbers in streams and memory --------------===//
//
// Every byte family is one pattern: a first unit of W bytes holds the value when it
// is at most base + min_n - 1; otherwise it holds the marker base + n and n bytes of
// the value follow, n being the used byte count raised to min_n. The marker ranges of
// the families end exactly at the largest W-byte number, so every marker a reader
// meets announces between min_n and 8 bytes.
//
//===----------------------------------------------------------------------===//
#include "tavi/io/pack_number.h"

#include <bit>
#include <cstring>
#include <type_traits>

#include "core/internal/endian.h"
#include "tavi/io/bit_stream.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

struct Family {
  uint32_t width;  // bytes of the first unit
  uint32_t base;   // marker = base + n
  uint32_t min_n;  // fewest bytes after a marker
  uint32_t max_n;  // most bytes after a marker
  constexpr uint64_t direct_max() const { return uint64_t{base} + min_n - 1; }
};

constexpr Family k8Short{1, 253, 1, 2};
constexpr Family k8Long{1, 251, 1, 4};
constexpr Family k8Int64{1, 247, 1, 8};
constexpr Family k16Long{2, 65531, 2, 4};
constexpr Family k16Int64{2, 65527, 2, 8};
constexpr Family k24Int64{3, 0xFFFFF7, 3, 8};
constexpr Family k32Int64{4, 0xFFFFFFF7u, 4, 8};

static_assert(k8Short.base + k8Short.max_n == 0xFF && k8Long.base + k8Long.max_n == 0xFF &&
              k8Int64.base + k8Int64.max_n == 0xFF);
static_assert(k16Long.base + k16Long.max_n == 0xFFFF && k16Int64.base + k16Int64.max_n == 0xFFFF);
static_assert(k24Int64.base + k24Int64.max_n == 0xFFFFFF);
static_assert(uint64_t{k32Int64.base} + k32Int64.max_n == 0xFFFFFFFFu);

// Loads a first unit of width bytes (1 to 4).
uint32_t LoadUnit(const uint8_t* p, uint32_t width) {
  uint32_t u = 0;
  for (uint32_t i = 0; i < width; ++i) u |= static_cast<uint32_t>(p[i]) << (8 * i);
  return u;
}

// Loads n bytes (0 to 8) as a little-endian number, reading only those bytes.
uint64_t LoadBytes(const uint8_t* p, uint32_t n) {
  uint8_t bytes[8] = {};
  std::memcpy(bytes, p, n);
  return internal::LoadLE64(bytes);
}

template <const Family& F>
bool WriteFamily(XIO& out, uint64_t v) {
  uint8_t buf[4 + 8];
  if (v <= F.direct_max()) {
    internal::StoreLE32(buf, static_cast<uint32_t>(v));
    return out._Write(buf, F.width);
  }
  uint32_t n = GetUsedByteCount(v);
  if (n < F.min_n) n = F.min_n;
  internal::StoreLE32(buf, F.base + n);
  internal::StoreLE64(buf + F.width, v);
  return out._Write(buf, F.width + n);
}

template <const Family& F>
bool ReadFamily(XIO& in, uint64_t& value, uint32_t max_n = F.max_n) {
  uint8_t buf[8] = {};
  if (in._Read(buf, F.width) != F.width) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t u = LoadUnit(buf, F.width);
  if (u <= F.direct_max()) {
    value = u;
    return true;
  }
  const uint32_t n = u - F.base;
  if (n > max_n) {  // only the 32-bit forms of the 32 family limit n below the marker range
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  if (in._Read(buf, n) != n) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  value = LoadBytes(buf, n);
  return true;
}

template <const Family& F>
uint64_t GetFamily(const void* source, const void** next) {
  const auto* p = static_cast<const uint8_t*>(source);
  const uint32_t u = LoadUnit(p, F.width);
  uint64_t value = u;
  uint32_t length = F.width;
  if (u > F.direct_max()) {
    const uint32_t n = u - F.base;
    value = LoadBytes(p + F.width, n);
    length += n;
  }
  if (next != nullptr) *next = p + length;
  return value;
}

// The library's sign mapping (not zigzag): v >= 0 -> 2v, v < 0 -> 2|v| + 1, in the
// unsigned type of the same width.
template <typename S>
std::make_unsigned_t<S> MapSigned(S v) {
  using U = std::make_unsigned_t<S>;
  if (v >= 0) return static_cast<U>(static_cast<U>(v) << 1);
  const U magnitude = static_cast<U>(U{0} - static_cast<U>(v));
  return static_cast<U>(static_cast<U>(magnitude << 1) | 1u);
}

template <typename S>
S UnmapSigned(std::make_unsigned_t<S> u) {
  using U = std::make_unsigned_t<S>;
  const auto half = static_cast<S>(static_cast<U>(u >> 1));
  return (u & 1u) != 0 ? static_cast<S>(-half) : half;
}

template <typename T, const Family& F>
bool ReadAs(XIO& in, T& value) {
  uint64_t u;
  if constexpr (std::is_signed_v<T>) {
    using U = std::make_unsigned_t<T>;
    if (!ReadFamily<F>(in, u, sizeof(T) < F.max_n ? sizeof(T) : F.max_n)) return false;
    value = UnmapSigned<T>(static_cast<U>(u));
  } else {
    if (!ReadFamily<F>(in, u, sizeof(T) < F.max_n ? sizeof(T) : F.max_n)) return false;
    value = static_cast<T>(u);
  }
  return true;
}

template <typename T, const Family& F>
void GetAs(T& value, const void* source, const void** next) {
  const uint64_t u = GetFamily<F>(source, next);
  if constexpr (std::is_signed_v<T>) {
    value = UnmapSigned<T>(static_cast<std::make_unsigned_t<T>>(u));
  } else {
    value = static_cast<T>(u);
  }
}

template <typename T>
bool WriteBits(XBitStream& out, T value, uint32_t length_bits) {
  const uint64_t v = value;
  const uint32_t bits = GetUsedBitCount(v);
  // Length field and value bits are one run of bits: one call when they fit a word.
  if (length_bits + bits <= 64)
    return out.SetBits((bits - 1) | (v << length_bits), length_bits + bits);
  return out.SetBits(bits - 1, length_bits) && out.SetBits(v, bits);
}

template <typename T>
bool ReadBits(XBitStream& in, T& value, uint32_t length_bits) {
  uint64_t length;
  uint64_t v;
  if (!in.GetBits(length, length_bits) || !in.GetBits(v, static_cast<uint32_t>(length) + 1)) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  value = static_cast<T>(v);
  return true;
}

}  // namespace

uint32_t GetUsedBitCount(uint64_t value) {
  return value == 0 ? 1 : static_cast<uint32_t>(std::bit_width(value));
}

uint32_t GetUsedByteCount(uint64_t value) {
  return (GetUsedBitCount(value) + 7) / 8;
}

// --- Writers -----------------------------------------------------------------

bool _WritePackNumber(XIO& out, uint16_t value) {
  return WriteFamily<k8Short>(out, value);
}
bool _WritePackNumber(XIO& out, uint32_t value) {
  return WriteFamily<k8Long>(out, value);
}
bool _WritePackNumber(XIO& out, uint64_t value) {
  return WriteFamily<k8Int64>(out, value);
}
bool _WritePackNumber(XIO& out, int16_t value) {
  return WriteFamily<k8Short>(out, MapSigned(value));
}
bool _WritePackNumber(XIO& out, int32_t value) {
  return WriteFamily<k8Long>(out, MapSigned(value));
}
bool _WritePackNumber(XIO& out, int64_t value) {
  return WriteFamily<k8Int64>(out, MapSigned(value));
}
bool _WritePackNumber16(XIO& out, uint32_t value) {
  return WriteFamily<k16Long>(out, value);
}
bool _WritePackNumber16(XIO& out, uint64_t value) {
  return WriteFamily<k16Int64>(out, value);
}
bool _WritePackNumber16(XIO& out, int32_t value) {
  return WriteFamily<k16Long>(out, MapSigned(value));
}
bool _WritePackNumber16(XIO& out, int64_t value) {
  return WriteFamily<k16Int64>(out, MapSigned(value));
}
bool _WritePackNumber24(XIO& out, uint64_t value) {
  return WriteFamily<k24Int64>(out, value);
}
bool _WritePackNumber32(XIO& out, uint32_t value) {
  return WriteFamily<k32Int64>(out, value);
}
bool _WritePackNumber32(XIO& out, uint64_t value) {
  return WriteFamily<k32Int64>(out, value);
}
bool _WritePackNumber32(XIO& out, int32_t value) {
  return WriteFamily<k32Int64>(out, MapSigned(value));
}
bool _WritePackNumber32(XIO& out, int64_t value) {
  return WriteFamily<k32Int64>(out, MapSigned(value));
}

// --- Stream readers ----------------------------------------------------------

bool _ReadPackNumber(XIO& in, uint16_t& value) {
  return ReadAs<uint16_t, k8Short>(in, value);
}
bool _ReadPackNumber(XIO& in, uint32_t& value) {
  return ReadAs<uint32_t, k8Long>(in, value);
}
bool _ReadPackNumber(XIO& in, uint64_t& value) {
  return ReadAs<uint64_t, k8Int64>(in, value);
}
bool _ReadPackNumber(XIO& in, int16_t& value) {
  return ReadAs<int16_t, k8Short>(in, value);
}
bool _ReadPackNumber(XIO& in, int32_t& value) {
  return ReadAs<int32_t, k8Long>(in, value);
}
bool _ReadPackNumber(XIO& in, int64_t& value) {
  return ReadAs<int64_t, k8Int64>(in, value);
}
bool _ReadPackNumber16(XIO& in, uint32_t& value) {
  return ReadAs<uint32_t, k16Long>(in, value);
}
bool _ReadPackNumber16(XIO& in, uint64_t& value) {
  return ReadAs<uint64_t, k16Int64>(in, value);
}
bool _ReadPackNumber16(XIO& in, int32_t& value) {
  return ReadAs<int32_t, k16Long>(in, value);
}
bool _ReadPackNumber16(XIO& in, int64_t& value) {
  return ReadAs<int64_t, k16Int64>(in, value);
}
bool _ReadPackNumber24(XIO& in, uint64_t& value) {
  return ReadAs<uint64_t, k24Int64>(in, value);
}
bool _ReadPackNumber32(XIO& in, uint32_t& value) {
  return ReadAs<uint32_t, k32Int64>(in, value);
}
bool _ReadPackNumber32(XIO& in, uint64_t& value) {
  return ReadAs<uint64_t, k32Int64>(in, value);
}
bool _ReadPackNumber32(XIO& in, int32_t& value) {
  return ReadAs<int32_t, k32Int64>(in, value);
}
bool _ReadPackNumber32(XIO& in, int64_t& value) {
  return ReadAs<int64_t, k32Int64>(in, value);
}

// --- Memory decoders ---------------------------------------------------------

void GetPackNumber(uint16_t& value, const void* source, const void** next) {
  GetAs<uint16_t, k8Short>(value, source, next);
}
void GetPackNumber(uint32_t& value, const void* source, const void** next) {
  GetAs<uint32_t, k8Long>(value, source, next);
}
void GetPackNumber(uint64_t& value, const void* source, const void** next) {
  GetAs<uint64_t, k8Int64>(value, source, next);
}
void GetPackNumber(int16_t& value, const void* source, const void** next) {
  GetAs<int16_t, k8Short>(value, source, next);
}
void GetPackNumber(int32_t& value, const void* source, const void** next) {
  GetAs<int32_t, k8Long>(value, source, next);
}
void GetPackNumber(int64_t& value, const void* source, const void** next) {
  GetAs<int64_t, k8Int64>(value, source, next);
}
void GetPackNumber16(uint32_t& value, const void* source, const void** next) {
  GetAs<uint32_t, k16Long>(value, source, next);
}
void GetPackNumber16(uint64_t& value, const void* source, const void** next) {
  GetAs<uint64_t, k16Int64>(value, source, next);
}
void GetPackNumber16(int32_t& value, const void* source, const void** next) {
  GetAs<int32_t, k16Long>(value, source, next);
}
void GetPackNumber16(int64_t& value, const void* source, const void** next) {
  GetAs<int64_t, k16Int64>(value, source, next);
}
void GetPackNumber24(uint64_t& value, const void* source, const void** next) {
  GetAs<uint64_t, k24Int64>(value, source, next);
}
void GetPackNumber32(uint32_t& value, const void* source, const void** next) {
  GetAs<uint32_t, k32Int64>(value, source, next);
}
void GetPackNumber32(uint64_t& value, const void* source, const void** next) {
  GetAs<uint64_t, k32Int64>(value, source, next);
}
void GetPackNumber32(int32_t& value, const void* source, const void** next) {
  GetAs<int32_t, k32Int64>(value, source, next);
}
void GetPackNumber32(int64_t& value, const void* source, const void** next) {
  GetAs<int64_t, k32Int64>(value, source, next);
}

// --- Bit-stream forms --------------------------------------------------------

bool WritePackNumber(XBitStream& out, uint16_t value) {
  return WriteBits(out, value, 4);
}
bool WritePackNumber(XBitStream& out, uint32_t value) {
  return WriteBits(out, value, 5);
}
bool WritePackNumber(XBitStream& out, uint64_t value) {
  return WriteBits(out, value, 6);
}
bool ReadPackNumber(XBitStream& in, uint16_t& value) {
  return ReadBits(in, value, 4);
}
bool ReadPackNumber(XBitStream& in, uint32_t& value) {
  return ReadBits(in, value, 5);
}
bool ReadPackNumber(XBitStream& in, uint64_t& value) {
  return ReadBits(in, value, 6);
}

}  // namespace tavi
