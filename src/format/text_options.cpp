//===- text_options.cpp - Quoting, list breaks and text values ------------===//
#include "tavi/format/text_options.h"

#include "platform/number_locale.h"
#include "tavi/core/title_text.h"
#include "tavi/io/stream.h"

namespace tavi {

namespace {

constexpr char16_t kDoubleQuote = u'"';
constexpr char16_t kSingleQuote = u'\'';
constexpr char16_t kBackQuote = u'`';

bool Contains(const char16_t* text, uint32_t count, char16_t c) {
  for (uint32_t i = 0; i < count; ++i) {
    if (text[i] == c) return true;
  }
  return false;
}

uint32_t Length(const char16_t* text) {
  uint32_t n = 0;
  if (text != nullptr) {
    while (text[n] != 0) ++n;
  }
  return n;
}

// The quotes for count characters of text (see GetStringQuotation).
bool ChooseQuotes(const strEnvTextOptions& o, char16_t& open, char16_t& close, const char16_t* text,
                  uint32_t count) {
  open = o.OpenQuote;
  close = o.CloseQuote;
  if (!Contains(text, count, o.OpenQuote) && !Contains(text, count, o.CloseQuote)) return true;
  for (char16_t quote : {kDoubleQuote, kSingleQuote, kBackQuote}) {
    if (o.CloseQuote != quote && !Contains(text, count, quote)) {
      open = close = quote;
      return true;
    }
  }
  open = close = 0;
  return false;
}

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

}  // namespace

strEnvTextOptions::strEnvTextOptions(uint32_t locale) {
  SetLocale(locale);
}

void strEnvTextOptions::SetLocale(uint32_t locale) {
  char16_t mark[5];
  const int32_t n = platform::LocaleNumberSymbol(locale, platform::NumberSymbol::kList, mark, 5);
  BreakMark = n == 2 ? mark[0] : u',';
}

void strEnvTextOptions::SetSpaceChar(char16_t c) {
  SpaceChar = c;
  for (char16_t& s : SpaceRun) s = c;
}

bool strEnvTextOptions::WriteListBreak(XIO& stream) const {
  return stream._Write(GetBreakString(), 4);
}

bool strEnvTextOptions::GetStringQuotation(char16_t& open, char16_t& close,
                                           const char16_t* text) const {
  return ChooseQuotes(*this, open, close, text, Length(text));
}

char16_t strEnvTextOptions::GetEndQuotation(char16_t open) const {
  if (open == OpenQuote) return CloseQuote;
  if (open == kDoubleQuote || open == kSingleQuote || open == kBackQuote) return open;
  return 0;
}

bool TextToString(XIO& stream, const char16_t* text, uint32_t size,
                  const strEnvTextOptions& options) {
  const uint32_t count = text != nullptr ? size / 2 : 0;
  char16_t open, close;
  if (!ChooseQuotes(options, open, close, text, count)) {
    stream.SetErrorCode(kErrConversion);
    return false;
  }
  if (!stream._Write(&open, 2)) return false;
  if (count != 0 && !stream._Write(text, count * 2)) return false;
  return stream._Write(&close, 2);
}

const char16_t* _StringToText(TTitleTextBase& value, const char16_t* text, bool mode,
                              const strEnvTextOptions& options) {
  if (text == nullptr || *text == 0) return nullptr;
  const char16_t* p = text;
  while (*p == options.SpaceChar && *p != 0) ++p;

  char16_t close = 0;
  if (*p == options.OpenQuote && *p != 0) {
    close = options.CloseQuote;
  } else if (*p == kDoubleQuote || *p == kSingleQuote || *p == kBackQuote) {
    close = *p;
  }
  if (close != 0) {
    const char16_t* q = p + 1;
    while (*q != 0 && *q != close) ++q;
    if (*q == close && close != 0) {
      const char16_t* begin = p + 1;
      if (!value.Set(begin, static_cast<uint32_t>(q - begin) * 2, mode)) return nullptr;
      return q + 1;
    }
  }
  const char16_t* q = p;
  while (*q != 0 && !IsBlank(*q)) ++q;
  if (!value.Set(p, static_cast<uint32_t>(q - p) * 2, mode)) return nullptr;
  return q;
}

}  // namespace tavi
