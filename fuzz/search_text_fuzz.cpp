//===- search_text_fuzz.cpp - Fuzz the string searches --------------------===//
//
// The first byte splits the rest into a string and a text. Every search, on each
// kernel path, agrees with the standard library's (bytes, and the same data as
// UTF-16 code units); the case-insensitive search agrees with a plain model that
// folds every window and compares.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/text/case.h"
#include "tavi/text/search.h"
#include "text/internal/search_kernel.h"

namespace {

using namespace tavi;

template <typename View>
uint32_t Expect(View text, size_t at) {
  (void)text;
  return at == View::npos ? kTextNotFound : static_cast<uint32_t>(at);
}

template <typename View>
uint32_t CountModel(View text, View what) {
  if (what.empty()) return 0;
  uint32_t count = 0;
  for (size_t at = text.find(what); at != View::npos; at = text.find(what, at + what.size()))
    ++count;
  return count;
}

// Folds a text as XFindTextNoCase folds a window: pairs by code point.
std::u16string Fold(std::u16string_view s) {
  std::u16string out(s);
  for (size_t i = 0; i < s.size(); ++i) {
    const char16_t u = s[i];
    if (u >= 0xD800 && u < 0xDC00 && i + 1 < s.size() && (s[i + 1] & 0xFC00) == 0xDC00) {
      const uint32_t cp = XFoldCodePoint(0x10000 + ((u - 0xD800u) << 10) + (s[i + 1] - 0xDC00u));
      out[i] = static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
      out[i + 1] = static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
      ++i;
    } else {
      out[i] = XFoldCase(u);
    }
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::InputReader in(data, size);
  const size_t split = in.Take<uint8_t>();
  const size_t m = split < in.size() ? split : in.size();
  const std::string_view what(reinterpret_cast<const char*>(in.data()), m);
  const std::string_view text(reinterpret_cast<const char*>(in.data()) + m, in.size() - m);
  std::u16string wwhat(m / 2, u'\0'), wtext(text.size() / 2, u'\0');
  if (!wwhat.empty()) std::memcpy(wwhat.data(), what.data(), 2 * wwhat.size());
  if (!wtext.empty()) std::memcpy(wtext.data(), text.data(), 2 * wtext.size());
  const std::u16string_view ww(wwhat), wt(wtext);
  const auto tn = static_cast<uint32_t>(text.size());
  const auto wn = static_cast<uint32_t>(what.size());
  const auto utn = static_cast<uint32_t>(wt.size());
  const auto uwn = static_cast<uint32_t>(ww.size());

  for (auto path : {text_internal::SearchPath::kPortable, text_internal::SearchPath::kAvx2}) {
    if (!text_internal::SetSearchPath(path)) continue;
    FUZZ_ASSERT(XFindBytes(text.data(), tn, what.data(), wn) == Expect(text, text.find(what)));
    FUZZ_ASSERT(XFindLastBytes(text.data(), tn, what.data(), wn) == Expect(text, text.rfind(what)));
    FUZZ_ASSERT(XCountBytes(text.data(), tn, what.data(), wn) == CountModel(text, what));
    FUZZ_ASSERT(XFindText(wt.data(), utn, ww.data(), uwn) == Expect(wt, wt.find(ww)));
    FUZZ_ASSERT(XFindLastText(wt.data(), utn, ww.data(), uwn) == Expect(wt, wt.rfind(ww)));
    FUZZ_ASSERT(XCountText(wt.data(), utn, ww.data(), uwn) == CountModel(wt, ww));
  }
  text_internal::ResetSearchPath();

  // Case-insensitive: the first window whose folding equals the string's.
  const std::u16string folded = Fold(ww);
  uint32_t model = ww.empty() ? 0 : kTextNotFound;
  for (size_t i = 0; !ww.empty() && i + ww.size() <= wt.size(); ++i) {
    if (Fold(wt.substr(i, ww.size())) == folded) {
      model = static_cast<uint32_t>(i);
      break;
    }
  }
  FUZZ_ASSERT(XFindTextNoCase(wt.data(), utn, ww.data(), uwn) == model);
  const int32_t ab = XCompareTextNoCase(wt.data(), utn, ww.data(), uwn);
  const int32_t ba = XCompareTextNoCase(ww.data(), uwn, wt.data(), utn);
  FUZZ_ASSERT((ab < 0) == (ba > 0) && (ab == 0) == (ba == 0));
  if (ab == 0) FUZZ_ASSERT(Fold(wt) == Fold(ww));
  return 0;
}
