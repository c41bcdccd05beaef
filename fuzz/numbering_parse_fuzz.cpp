//===- numbering_parse_fuzz.cpp - Fuzz the numbering and text-value readers -===//
//
// The first bytes choose an alphabet, quotes and the text's encoding (UTF-16, or one
// byte per character); the rest is text in a block that ends at its terminator, so
// any read beyond it is caught. Every reader must stop inside the text; Roman and
// letter readings that did not wrap must write back to the same value, and a text
// value must be the characters it says it took.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz_helpers.h"
#include "tavi/core/title_text.h"
#include "tavi/format/numbering.h"
#include "tavi/format/text_options.h"
#include "tavi/io/stream.h"

namespace {

void CheckStop(const char16_t* stop, const char16_t* text, const char16_t* end) {
  FUZZ_ASSERT(stop == nullptr || (stop >= text && stop <= end));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto mode = input.Take<uint8_t>();
  const auto first = static_cast<char16_t>(u'0' + input.Take<uint8_t>() % 64);
  const auto last = static_cast<char16_t>(first + input.Take<uint8_t>() % 48 - 2);
  const auto open = static_cast<char16_t>(input.Take<uint8_t>());
  const auto close = static_cast<char16_t>(input.Take<uint8_t>());
  const bool wide = (mode & 1) != 0;
  const tavi::fuzz::UnitText block(input, wide);
  const size_t count = block.size();
  const char16_t* text = block.data();
  const char16_t* end = text + count;

  // Roman: a numeral short enough not to wrap, read from letters, writes back to
  // letters that read the same.
  uint64_t roman = 0;
  uint32_t roman32 = 0;
  const char16_t* stop = tavi::_StringRomanToUnsigned(roman, text);
  CheckStop(stop, text, end);
  CheckStop(tavi::_StringRomanToUnsigned(roman32, text), text, end);
  if (stop != nullptr && stop - text < 1000 && roman < 93000 && !(*text >= u'0' && *text <= u'9')) {
    char16_t out[tavi::kRomanTextCapacity + 1];
    char16_t* out_end = out + tavi::kRomanTextCapacity;
    *out_end = 0;  // the writers do not terminate; the reader needs it
    const char16_t* numeral = tavi::_UnsignedToRomanCapital(roman, out_end);
    uint64_t again = 1;
    FUZZ_ASSERT(tavi::_StringRomanToUnsigned(again, numeral) == out_end || roman == 0);
    FUZZ_ASSERT(again == roman || roman == 0);
  }

  // Letters: both widths; a reading of at most 8 letters in a base up to 46 cannot
  // wrap 64 bits, and writes back to the letters taken without leading first-digits.
  uint64_t letters = 0;
  uint32_t letters32 = 0;
  stop = tavi::_StringLetterToUnsigned(letters, text, first, last);
  CheckStop(stop, text, end);
  CheckStop(tavi::_StringLetterToUnsigned(letters32, text, first, last), text, end);
  if (stop != nullptr) {
    const char16_t* digits = text;
    while (*digits == u' ') ++digits;
    while (digits + 1 < stop && *digits == first) ++digits;
    if (stop - digits <= 8 && last > first) {  // the writer needs a base of 2 or more
      char16_t out[tavi::kLetterTextCapacity];
      char16_t* out_end = out + tavi::kLetterTextCapacity;
      const char16_t* written = tavi::_UnsignedToLetter(letters, out_end, first, last);
      FUZZ_ASSERT(out_end - written == stop - digits);
      FUZZ_ASSERT(std::memcmp(written, digits, (stop - digits) * 2) == 0);
    }
  }

  // Text values and quoting.
  tavi::strEnvTextOptions options;
  options.OpenQuote = open;
  options.CloseQuote = close;
  if ((mode & 2) != 0) options.SetSpaceChar(u'\t');
  tavi::TTitleText value;
  stop = tavi::_StringToText(value, text, (mode & 4) != 0, options);
  CheckStop(stop, text, end);
  if (stop != nullptr) {
    FUZZ_ASSERT(value.size % 2 == 0 && value.size / 2 <= static_cast<uint32_t>(stop - text));
    if (value.size != 0) {
      // Attached, the value points into the text; copied, it holds the same characters.
      if (value.IsAttached()) FUZZ_ASSERT(value.text >= text && value.text + value.Len() <= stop);
      const uint32_t n = value.Len();
      const bool unquoted = std::memcmp(value.text, stop - n, n * 2) == 0;
      const bool quoted = stop - n - 1 >= text && std::memcmp(value.text, stop - n - 1, n * 2) == 0;
      FUZZ_ASSERT(unquoted || quoted);
    }
  }
  char16_t q_open, q_close;
  if (options.GetStringQuotation(q_open, q_close, text)) {
    // The options' own quotes, or one of the three plain ones that the text lacks.
    if (q_open != open || q_close != close) {
      FUZZ_ASSERT(q_open == q_close && (q_open == u'"' || q_open == u'\'' || q_open == u'`'));
      for (const char16_t* p = text; *p != 0; ++p) FUZZ_ASSERT(*p != q_open);
    }
  } else {
    FUZZ_ASSERT(q_open == 0 && q_close == 0);
  }
  return 0;
}
