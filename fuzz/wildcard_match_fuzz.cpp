//===- wildcard_match_fuzz.cpp - Fuzz the wildcard matcher ----------------===//
//
// Splits the input into a pattern and a text of UTF-16 code units and matches
// them with drawn flags. Checks that the work stays within the linear bound and
// that a text always matches itself when it holds no wildcard characters.
//
//===----------------------------------------------------------------------===//
#include <string>

#include "fuzz_helpers.h"
#include "tavi/text/wildcard.h"
#include "text/internal/wildcard.h"

using tavi::fuzz::InputReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  InputReader in(data, size);
  const uint32_t flags = in.Take<uint8_t>() & 3u;
  const size_t pattern_units = in.Take<uint8_t>();
  std::u16string pattern, text;
  while (in.size() > 0 && pattern.size() < pattern_units) pattern.push_back(in.Take<uint16_t>());
  while (in.size() > 0) text.push_back(in.Take<uint16_t>());

  uint64_t steps = 0;
  const bool matched = tavi::text_internal::WildcardMatchCounted(
      pattern.data(), pattern.size(), text.data(), text.size(), flags, &steps);
  FUZZ_ASSERT(matched == tavi::XWildcardMatch(pattern.data(), pattern.size(), text.data(),
                                              text.size(), flags));
  // Per character: at most every element once, and the state words.
  const uint64_t words = (pattern.size() + 1 + 63) / 64;
  FUZZ_ASSERT(steps <= (text.size() + 1) * (words + pattern.size()));

  bool plain = true;
  for (char16_t c : text) plain &= c != u'*' && c != u'?' && c != u'[';
  if (plain)
    FUZZ_ASSERT(tavi::XWildcardMatch(text.data(), text.size(), text.data(), text.size(), flags));
  return 0;
}
