//===- pack_number_read.cpp - Fuzz the packed-number readers ---------------===//
//
// The first byte chooses a sequence of families; the rest is read as packed numbers
// until the data ends. Each successful stream read must agree with the memory decoder
// on the same bytes (value and length); a failed one must report end of data.
//
//===----------------------------------------------------------------------===//
#include <cstdint>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/io/pack_number.h"

namespace {

using tavi::XBuffer;

template <typename T>
bool Check(XBuffer& in, const uint8_t* base, bool (*read)(tavi::XIO&, T&),
           void (*get)(T&, const void*, const void**)) {
  const uint32_t start = in.GetCurrentPos();
  T value{};
  if (!read(in, value)) {
    FUZZ_ASSERT(in.GetErrorCode() == tavi::kErrEndOfData);
    return false;
  }
  T again{};
  const void* next = nullptr;
  get(again, base + start, &next);
  FUZZ_ASSERT(again == value);
  FUZZ_ASSERT(static_cast<const uint8_t*>(next) == base + in.GetCurrentPos());
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto program = input.Take<uint8_t>();
  if (input.size() == 0 || input.size() > 0xFFFF) return 0;
  XBuffer in;
  in.AttachBuffer(const_cast<uint8_t*>(input.data()), static_cast<uint32_t>(input.size()), true);
  const uint8_t* base = input.data();
  for (uint32_t step = 0;; ++step) {
    bool ok = false;
    switch ((program + step) % 15) {
      case 0:
        ok = Check<uint16_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 1:
        ok = Check<uint32_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 2:
        ok = Check<uint64_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 3:
        ok = Check<int16_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 4:
        ok = Check<int32_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 5:
        ok = Check<int64_t>(in, base, tavi::_ReadPackNumber, tavi::GetPackNumber);
        break;
      case 6:
        ok = Check<uint32_t>(in, base, tavi::_ReadPackNumber16, tavi::GetPackNumber16);
        break;
      case 7:
        ok = Check<uint64_t>(in, base, tavi::_ReadPackNumber16, tavi::GetPackNumber16);
        break;
      case 8:
        ok = Check<int32_t>(in, base, tavi::_ReadPackNumber16, tavi::GetPackNumber16);
        break;
      case 9:
        ok = Check<int64_t>(in, base, tavi::_ReadPackNumber16, tavi::GetPackNumber16);
        break;
      case 10:
        ok = Check<uint64_t>(in, base, tavi::_ReadPackNumber24, tavi::GetPackNumber24);
        break;
      case 11:
        ok = Check<uint64_t>(in, base, tavi::_ReadPackNumber32, tavi::GetPackNumber32);
        break;
      case 12:
        ok = Check<int64_t>(in, base, tavi::_ReadPackNumber32, tavi::GetPackNumber32);
        break;
      case 13:
        ok = Check<int32_t>(in, base, tavi::_ReadPackNumber32, tavi::GetPackNumber32);
        break;
      default: {
        // The 32-bit reader of the 32 family refuses longer values without reading them.
        const uint32_t start = in.GetCurrentPos();
        uint32_t value;
        ok = tavi::_ReadPackNumber32(in, value);
        if (!ok) FUZZ_ASSERT(in.GetErrorCode() == tavi::kErrEndOfData);
        if (ok) FUZZ_ASSERT(in.GetCurrentPos() - start <= 8);
      }
    }
    if (!ok || in.EoB()) break;
  }
  FUZZ_ASSERT(in.GetCurrentPos() <= input.size());
  return 0;
}
