//===- integer_round_trip_fuzz.cpp - Integers to text and back -------------===//
//
// Draws a value, a radix and a minimum digit count, formats the value in every
// form and width (in memory and on a stream) and reads each text back.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/format/integer_text.h"

namespace {

constexpr size_t kRoom = 400;

// The stream form must give the same characters as the in-memory form.
template <typename Write>
void SameOnStream(const char16_t* first, const char16_t* end, Write write) {
  tavi::XBuffer out;
  FUZZ_ASSERT(write(out));
  const auto n = static_cast<size_t>(end - first) * 2;
  FUZZ_ASSERT(out.GetStringEnd() - static_cast<uint8_t*>(out.GetBuffer()) ==
              static_cast<ptrdiff_t>(n));
  FUZZ_ASSERT(std::memcmp(out.GetBuffer(), first, n) == 0);
}

// Terminates the text at end (the caller keeps one spare character).
const char16_t* Terminated(char16_t* end) {
  *end = 0;
  return end;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto v = input.Take<uint64_t>();
  const auto radix = static_cast<uint8_t>(2 + input.Take<uint8_t>() % 35);
  const auto min = static_cast<uint16_t>(input.Take<uint16_t>() % 300);
  char16_t buffer[kRoom + 1];
  char16_t* const end = buffer + kRoom;
  const char16_t* const stop = Terminated(end);

  char16_t* first = tavi::_UnsignedToString(v, end);
  uint64_t u64 = ~v;
  FUZZ_ASSERT(tavi::_StringToUnsigned(u64, first) == stop && u64 == v);
  SameOnStream(first, end, [&](tavi::XIO& o) { return tavi::XUnsignedToString(o, v); });

  first = tavi::_UnsignedToString(v, min, end, radix);
  FUZZ_ASSERT(end - first >= min);
  FUZZ_ASSERT(tavi::_StringToUnsigned(u64, first, radix) == stop && u64 == v);
  SameOnStream(first, end, [&](tavi::XIO& o) { return tavi::XUnsignedToString(o, v, min, radix); });

  const auto v32 = static_cast<uint32_t>(v);
  uint32_t u32 = ~v32;
  first = tavi::_UnsignedToString(v32, end, radix);
  FUZZ_ASSERT(tavi::_StringToUnsigned(u32, first, radix) == stop && u32 == v32);
  first = tavi::_UnsignedToString(v32, end);
  FUZZ_ASSERT(tavi::_StringToUnsigned(u32, first) == stop && u32 == v32);

  const auto s64 = static_cast<int64_t>(v);
  first = tavi::_SignedToString(s64, end);
  SameOnStream(first, end, [&](tavi::XIO& o) { return tavi::XSignedToString(o, s64); });
  int64_t back = ~s64;
  const char16_t* read = tavi::_StringToSigned(back, first);
  FUZZ_ASSERT(s64 == INT64_MIN ? read == nullptr : read == stop && back == s64);
  first = tavi::_SignedToString(s64, min, end, radix);
  SameOnStream(first, end, [&](tavi::XIO& o) { return tavi::XSignedToString(o, s64, min, radix); });

  const auto s32 = static_cast<int32_t>(v);
  int32_t back32 = ~s32;
  first = tavi::_SignedToString(s32, end);
  read = tavi::_StringToSigned(back32, first);
  FUZZ_ASSERT(s32 == INT32_MIN ? read == nullptr : read == stop && back32 == s32);
  return 0;
}
