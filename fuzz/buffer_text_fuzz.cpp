//===- buffer_text_fuzz.cpp - Text editing members on any text -------------===//
//
// Runs the replacement, removal and cutting members of XBuffer over arbitrary
// UTF-16 text with parameters drawn from the input, and checks that the data stays
// terminated and the counts agree with the lengths.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint8_t op = in.Take<uint8_t>();
  const char16_t a = in.Take<char16_t>();
  const char16_t b = in.Take<char16_t>();
  const uint8_t from_len = in.Take<uint8_t>() % 8;
  char16_t from[8] = {};
  for (uint8_t i = 0; i < from_len; ++i) from[i] = in.Take<char16_t>();
  if (in.size() > (1u << 16)) return 0;

  tavi::XBuffer text;
  text._Write(in.data(), static_cast<uint32_t>(in.size() & ~size_t{1}));
  text.EndAsString();
  const uint32_t units = text.GetBufferPos() / 2;
  uint32_t count = 0;
  switch (op % 10) {
    case 0:
      count = text.RemoveMultiChars(a);
      break;
    case 1:
      count = text.RemoveChar(a);
      FUZZ_ASSERT(text.GetBufferPos() / 2 + count == units);
      break;
    case 2:
      count = text.ReplaceChar(a, b);
      FUZZ_ASSERT(text.GetBufferPos() / 2 == units);
      break;
    case 3:
      count = text.ReplaceString(from, from_len * 2, from + 1, 2);
      break;
    case 4:
      count = text.ReplaceStringIC(from, from_len * 2, nullptr, 0);
      break;
    case 5:
      count = text.ReplaceUnquotedString(from, from_len * 2, from, 4, a, b);
      break;
    case 6:
      count = text.ReplaceUnquotedChars(from, b, a, a);
      break;
    case 7:
      text.CutTo(a);
      text.CutRTo(b);
      break;
    case 8:
      text.CutLast(a);
      text.RemoveEndChars(b);
      break;
    default:
      text.ReplaceSoftReturns();
      text.Cut(static_cast<uint32_t>(a));
      break;
  }
  (void)count;
  FUZZ_ASSERT(text.GetCurrentPos() <= text.GetBufferPos());
  if (text.GetBuffer() != nullptr) FUZZ_ASSERT(*text._GetStringAt(text.GetBufferPos() / 2) == 0);
  return 0;
}
