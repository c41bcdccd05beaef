//===- html.cpp - HTML to plain text and back -----------------------------===//
#include "tavi/text/html.h"

#include <cstring>
#include <memory>
#include <new>

#include "text/internal/html_convert.h"

namespace tavi {
namespace text_internal {
namespace {

struct NamedReference {
  const char* name;
  bool legacy;  // also without ';'
  char32_t first, second;
};

constexpr NamedReference kNamedReferences[] = {
#include "html_entities.inc"
};

const NamedReference* FindReference(const char* name) {
  size_t low = 0, high = sizeof kNamedReferences / sizeof kNamedReferences[0];
  while (low < high) {
    const size_t mid = (low + high) / 2;
    const int order = std::strcmp(kNamedReferences[mid].name, name);
    if (order == 0) return &kNamedReferences[mid];
    if (order < 0)
      low = mid + 1;
    else
      high = mid;
  }
  return nullptr;
}

// What browsers make of the C1 controls 0x80-0x9F in numeric references: the
// windows-1252 characters (0 where windows-1252 has none: the control stays).
constexpr char16_t kC1[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

bool IsSpace(char32_t c) {
  return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}
bool IsAsciiLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
bool IsAsciiDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}
char LowerAscii(char16_t c) {
  return static_cast<char>(c >= u'A' && c <= u'Z' ? c + 32 : c);
}
int HexValue(char16_t c) {
  if (IsAsciiDigit(c)) return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

bool In(const char* name, const char* const* list, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    if (std::strcmp(name, list[i]) == 0) return true;
  }
  return false;
}

constexpr const char* kParagraphs[] = {"p", "h1", "h2", "h3", "h4", "h5", "h6"};
constexpr const char* kBlocks[] = {
    "address", "article", "aside",  "blockquote", "caption", "center",   "dd",         "details",
    "dialog",  "dir",     "div",    "dl",         "dt",      "fieldset", "figcaption", "figure",
    "footer",  "form",    "header", "hgroup",     "hr",      "legend",   "li",         "main",
    "menu",    "nav",     "ol",     "pre",        "section", "summary",  "table",      "tbody",
    "tfoot",   "thead",   "tr",     "ul",
};

}  // namespace

void HtmlToText::Visible(char32_t c) {
  if (any_) {
    if (need_ > trailing_) {
      for (int i = trailing_; i < need_; ++i) *out_++ = u'\n';
    } else if (separator_ != 0 && trailing_ == 0) {
      *out_++ = separator_;
    }
  }
  need_ = 0;
  separator_ = 0;
  if (c >= 0x10000) {
    *out_++ = static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    *out_++ = static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
  } else {
    *out_++ = static_cast<char16_t>(c);
  }
  trailing_ = 0;
  any_ = true;
}

void HtmlToText::SettleBreaks() {
  if (any_) {
    for (int i = trailing_; i < need_; ++i) *out_++ = u'\n';
    if (need_ > trailing_) trailing_ = need_;
  }
  need_ = 0;
  separator_ = 0;
}

void HtmlToText::Block(int lines) {
  if (any_ && need_ < lines) need_ = static_cast<uint8_t>(lines);
  separator_ = 0;
}

// Text handles one character of content: white space is collapsed outside <pre>.
void HtmlToText::Text(char32_t c) {
  if (pre_ > 0) {
    const bool skip = c == u'\n' && after_cr_;
    after_cr_ = c == u'\r';
    if (skip) return;
    if (c == u'\n' || c == u'\r') {
      SettleBreaks();
      *out_++ = u'\n';
      any_ = true;
      if (trailing_ < 2) ++trailing_;
      return;
    }
    Visible(c);
    return;
  }
  if (IsSpace(c)) {
    if (separator_ == 0) separator_ = u' ';
    return;
  }
  Visible(c);
}

void HtmlToText::TagDone() {
  mode_ = Mode::kText;
  if (name_overflow_) return;
  if (!end_tag_ && !self_closing_ &&
      (std::strcmp(name_, "script") == 0 || std::strcmp(name_, "style") == 0)) {
    std::memcpy(raw_, name_, sizeof raw_);
    raw_length_ = name_length_;
    raw_matched_ = 0;
    mode_ = Mode::kRaw;
    return;
  }
  if (std::strcmp(name_, "br") == 0) {
    SettleBreaks();
    *out_++ = u'\n';
    any_ = true;
    if (trailing_ < 2) ++trailing_;
    return;
  }
  if (std::strcmp(name_, "td") == 0 || std::strcmp(name_, "th") == 0) {
    if (!end_tag_ && any_ && trailing_ == 0 && need_ == 0) separator_ = u'\t';
    return;
  }
  if (In(name_, kParagraphs, sizeof kParagraphs / sizeof kParagraphs[0])) {
    Block(2);
  } else if (In(name_, kBlocks, sizeof kBlocks / sizeof kBlocks[0])) {
    Block(1);
  } else {
    return;
  }
  if (std::strcmp(name_, "pre") == 0) {
    if (end_tag_) {
      if (pre_ > 0) --pre_;
    } else if (pre_ < 0xFFFF) {
      ++pre_;
    }
    after_cr_ = false;
  }
}

void HtmlToText::ResolveName(bool semicolon) {
  ref_[ref_length_] = 0;
  if (semicolon) {
    if (const NamedReference* ref = FindReference(ref_)) {
      Text(ref->first);
      if (ref->second != 0) Text(ref->second);
      return;
    }
  }
  // The longest legacy name the letters start with, the rest as it stands.
  for (size_t length = ref_length_; length > 0; --length) {
    char prefix[32];
    std::memcpy(prefix, ref_, length);
    prefix[length] = 0;
    const NamedReference* ref = FindReference(prefix);
    if (ref != nullptr && ref->legacy) {
      Text(ref->first);
      if (ref->second != 0) Text(ref->second);
      for (size_t i = length; i < ref_length_; ++i) Text(static_cast<unsigned char>(ref_[i]));
      if (semicolon) Text(u';');
      return;
    }
  }
  Text(u'&');
  for (size_t i = 0; i < ref_length_; ++i) Text(static_cast<unsigned char>(ref_[i]));
  if (semicolon) Text(u';');
}

void HtmlToText::EmitNumber() {
  char32_t c = value_;
  if (c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
    c = 0xFFFD;
  } else if (c >= 0x80 && c <= 0x9F && kC1[c - 0x80] != 0) {
    c = kC1[c - 0x80];
  }
  Text(c);
}

bool HtmlToText::Step(char16_t c) {
  switch (mode_) {
    case Mode::kText:
      if (c == u'<') {
        mode_ = Mode::kTagOpen;
      } else if (c == u'&') {
        mode_ = Mode::kRef;
      } else {
        Text(c);
      }
      return true;
    case Mode::kTagOpen:
    case Mode::kEndOpen:
      if (IsAsciiLetter(c)) {
        end_tag_ = mode_ == Mode::kEndOpen;
        name_[0] = LowerAscii(c);
        name_[1] = 0;
        name_length_ = 1;
        name_overflow_ = false;
        self_closing_ = false;
        mode_ = Mode::kTagName;
        return true;
      }
      if (mode_ == Mode::kEndOpen) {
        mode_ = c == u'>' ? Mode::kText : Mode::kSkipToGt;
        return true;
      }
      if (c == u'/') {
        mode_ = Mode::kEndOpen;
      } else if (c == u'!') {
        mode_ = Mode::kBang;
      } else if (c == u'?') {
        mode_ = Mode::kSkipToGt;
      } else {
        mode_ = Mode::kText;
        Text(u'<');
        return false;
      }
      return true;
    case Mode::kTagName:
      if (c == u'>') {
        TagDone();
      } else if (IsSpace(c) || c == u'/') {
        self_closing_ = c == u'/';
        mode_ = Mode::kTagRest;
      } else if (name_length_ + 1u < sizeof name_) {
        name_[name_length_++] = LowerAscii(c);
        name_[name_length_] = 0;
      } else {
        name_overflow_ = true;
      }
      return true;
    case Mode::kTagRest:
      if (c == u'>') {
        TagDone();
      } else if (c == u'"' || c == u'\'') {
        quote_ = c;
        self_closing_ = false;
        mode_ = Mode::kTagQuote;
      } else if (!IsSpace(c)) {
        self_closing_ = c == u'/';
      }
      return true;
    case Mode::kTagQuote:
      if (c == quote_) mode_ = Mode::kTagRest;
      return true;
    case Mode::kBang:
      if (c == u'-') {
        mode_ = Mode::kBangDash;
        return true;
      }
      mode_ = Mode::kSkipToGt;
      return false;
    case Mode::kBangDash:
      if (c == u'-') {
        mode_ = Mode::kComment;
        dashes_ = 2;  // "<!-->" and "<!--->" end at once
        return true;
      }
      mode_ = Mode::kSkipToGt;
      return false;
    case Mode::kComment:
      if (c == u'>' && dashes_ >= 2) {
        mode_ = Mode::kText;
      } else if (c == u'-') {
        if (dashes_ < 2) ++dashes_;
      } else {
        dashes_ = 0;
      }
      return true;
    case Mode::kSkipToGt:
      if (c == u'>') mode_ = Mode::kText;
      return true;
    case Mode::kRaw:
      if (raw_matched_ == raw_length_ + 2) {
        if (IsSpace(c) || c == u'/' || c == u'>') {
          mode_ = c == u'>' ? Mode::kText : Mode::kSkipToGt;
          return true;
        }
        raw_matched_ = 0;
      }
      if (raw_matched_ == 0) {
        raw_matched_ = c == u'<' ? 1 : 0;
      } else if (raw_matched_ == 1) {
        raw_matched_ = c == u'/' ? 2 : (c == u'<' ? 1 : 0);
      } else if (LowerAscii(c) == raw_[raw_matched_ - 2]) {
        ++raw_matched_;
      } else {
        raw_matched_ = c == u'<' ? 1 : 0;
      }
      return true;
    case Mode::kRef:
      if (c == u'#') {
        mode_ = Mode::kNumber;
        return true;
      }
      if (IsAsciiLetter(c) || IsAsciiDigit(c)) {
        ref_[0] = static_cast<char>(c);
        ref_length_ = 1;
        mode_ = Mode::kRefName;
        return true;
      }
      mode_ = Mode::kText;
      Text(u'&');
      return false;
    case Mode::kNumber:
      value_ = 0;
      digits_ = false;
      if (c == u'x' || c == u'X') {
        hex_mark_ = c;
        mode_ = Mode::kHex;
        return true;
      }
      hex_mark_ = 0;
      mode_ = Mode::kDecimal;
      return false;
    case Mode::kDecimal:
    case Mode::kHex: {
      const int digit = mode_ == Mode::kHex ? HexValue(c) : (IsAsciiDigit(c) ? c - u'0' : -1);
      if (digit >= 0) {
        const uint32_t base = mode_ == Mode::kHex ? 16 : 10;
        value_ = value_ > 0x10FFFF ? 0x110000 : value_ * base + static_cast<uint32_t>(digit);
        digits_ = true;
        return true;
      }
      mode_ = Mode::kText;
      if (!digits_) {
        Text(u'&');
        Text(u'#');
        if (hex_mark_ != 0) Text(hex_mark_);
        return false;
      }
      EmitNumber();
      return c == u';';
    }
    case Mode::kRefName:
      if ((IsAsciiLetter(c) || IsAsciiDigit(c)) && ref_length_ < 31) {
        ref_[ref_length_++] = static_cast<char>(c);
        return true;
      }
      mode_ = Mode::kText;
      ResolveName(c == u';');
      return c == u';';
  }
  return true;
}

char16_t* HtmlToText::Put(char16_t c, char16_t* out) {
  out_ = out;
  while (!Step(c)) {
  }
  return out_;
}

char16_t* HtmlToText::Run(const char16_t* in, size_t n, char16_t* out) {
  const char16_t* end = in + n;
  while (in < end) {
    // Ordinary characters in running text with nothing owed go straight out.
    if (mode_ == Mode::kText && need_ == 0 && separator_ == 0 && pre_ == 0) {
      const char16_t* start = in;
      while (in < end && *in != u'<' && *in != u'&' && !IsSpace(*in)) *out++ = *in++;
      if (in != start) {
        trailing_ = 0;
        any_ = true;
        continue;
      }
    }
    out = Put(*in++, out);
  }
  return out;
}

char16_t* HtmlToText::Finish(char16_t* out) {
  out_ = out;
  switch (mode_) {
    case Mode::kTagOpen:
      Text(u'<');
      break;
    case Mode::kEndOpen:
      Text(u'<');
      Text(u'/');
      break;
    case Mode::kRef:
      Text(u'&');
      break;
    case Mode::kNumber:
      Text(u'&');
      Text(u'#');
      break;
    case Mode::kDecimal:
    case Mode::kHex:
      if (digits_) {
        EmitNumber();
      } else {
        Text(u'&');
        Text(u'#');
        if (hex_mark_ != 0) Text(hex_mark_);
      }
      break;
    case Mode::kRefName:
      ResolveName(false);
      break;
    default:
      break;
  }
  char16_t* end = out_;
  *this = HtmlToText();
  return end;
}

}  // namespace text_internal

namespace {

constexpr uint32_t kChunk = 2048;  // code units converted per step of the X forms

bool WriteUnits(XIO& out, const char16_t* data, size_t units) {
  return units == 0 || out._Write(data, static_cast<uint32_t>(units * sizeof(char16_t)));
}

}  // namespace

char16_t* _HtmlToText(const char16_t* html, size_t html_chars, char16_t* out) {
  // Everything written stands for input already read and is never taken back, so
  // the text written so far never passes the final length: out's room suffices.
  text_internal::HtmlToText reader;
  out = reader.Run(html, html_chars, out);
  return reader.Finish(out);
}

bool XHtmlToText(XIO& out, const char16_t* html, size_t html_chars) {
  text_internal::HtmlToText reader;
  char16_t buffer[kChunk + text_internal::HtmlToText::kMaxOut];
  while (html_chars > 0) {
    const size_t n = html_chars < kChunk ? html_chars : kChunk;
    const char16_t* end = reader.Run(html, n, buffer);
    if (!WriteUnits(out, buffer, static_cast<size_t>(end - buffer))) return false;
    html += n;
    html_chars -= n;
  }
  const char16_t* end = reader.Finish(buffer);
  return WriteUnits(out, buffer, static_cast<size_t>(end - buffer));
}

namespace {

// PutHtml writes the HTML form of one code unit; after_cr says a CR came just
// before, so an LF is the second half of its line break.
char16_t* PutHtml(char16_t c, bool& after_cr, char16_t* out) {
  auto put = [&out](const char16_t* s) {
    while (*s != 0) *out++ = *s++;
  };
  const bool lf_after_cr = c == u'\n' && after_cr;
  after_cr = c == u'\r';
  switch (c) {
    case u'&':
      put(u"&amp;");
      break;
    case u'<':
      put(u"&lt;");
      break;
    case u'>':
      put(u"&gt;");
      break;
    case u'"':
      put(u"&quot;");
      break;
    case u'\r':
      put(u"<br>\r");
      break;
    case u'\n':
      if (!lf_after_cr) put(u"<br>");
      *out++ = u'\n';
      break;
    default:
      *out++ = c;
      break;
  }
  return out;
}

}  // namespace

char16_t* _TextToHtml(const char16_t* text, size_t text_chars, char16_t* out) {
  bool after_cr = false;
  for (size_t i = 0; i < text_chars; ++i) out = PutHtml(text[i], after_cr, out);
  return out;
}

bool XTextToHtml(XIO& out, const char16_t* text, size_t text_chars) {
  char16_t buffer[kChunk * kTextToHtmlGrowth];
  bool after_cr = false;
  while (text_chars > 0) {
    const size_t n = text_chars < kChunk ? text_chars : kChunk;
    char16_t* end = buffer;
    for (size_t i = 0; i < n; ++i) end = PutHtml(text[i], after_cr, end);
    if (!WriteUnits(out, buffer, static_cast<size_t>(end - buffer))) return false;
    text += n;
    text_chars -= n;
  }
  return true;
}

// --- Filters -----------------------------------------------------------------------

struct XHtmlToTextIO::State {
  text_internal::HtmlToText reader;
  bool has_odd = false;
  uint8_t odd = 0;
  char16_t buffer[kChunk + text_internal::HtmlToText::kMaxOut];
  char16_t* end = buffer;
};

XHtmlToTextIO::XHtmlToTextIO() : state_(new (std::nothrow) State) {}
XHtmlToTextIO::XHtmlToTextIO(XIO* next) : XRoutedIO(next), state_(new (std::nothrow) State) {}
XHtmlToTextIO::~XHtmlToTextIO() {
  delete state_;
}

namespace {

// Sends what a filter has converted to its next stream.
bool Pass(XRoutedIO& self, XIO& next, const char16_t* data, size_t units) {
  if (WriteUnits(next, data, units)) return true;
  self.ImportErrorCode(next);
  return false;
}

// Takes the next UTF-16 unit from bytes written to a filter, which may split a unit
// between two writes: a lone last byte is kept in odd until the next write. False
// when the bytes are used up.
bool NextUnit(const uint8_t*& p, uint32_t& bytes, bool& has_odd, uint8_t& odd, char16_t& c) {
  if (bytes == 0) return false;
  if (has_odd) {
    const uint8_t pair[2] = {odd, p[0]};
    std::memcpy(&c, pair, 2);
    has_odd = false;
    ++p;
    --bytes;
    return true;
  }
  if (bytes == 1) {
    odd = p[0];
    has_odd = true;
    --bytes;
    return false;
  }
  std::memcpy(&c, p, 2);
  p += 2;
  bytes -= 2;
  return true;
}

}  // namespace

bool XHtmlToTextIO::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (state_ == nullptr) {
    SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  State& s = *state_;
  const auto* p = static_cast<const uint8_t*>(data);
  char16_t c;
  while (NextUnit(p, bytes, s.has_odd, s.odd, c)) {
    s.end = s.reader.Put(c, s.end);
    if (s.end - s.buffer >= static_cast<ptrdiff_t>(kChunk)) {
      const size_t n = static_cast<size_t>(s.end - s.buffer);
      s.end = s.buffer;
      if (!Pass(*this, *next, s.buffer, n)) return false;
    }
  }
  return true;
}

bool XHtmlToTextIO::_Flush() {
  XIO* next = Next();
  if (next == nullptr) return false;
  if (state_ == nullptr) {
    SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  State& s = *state_;
  s.end = s.reader.Finish(s.end);
  s.has_odd = false;
  const size_t n = static_cast<size_t>(s.end - s.buffer);
  s.end = s.buffer;
  if (!Pass(*this, *next, s.buffer, n)) return false;
  return XRoutedIO::_Flush();
}

uint32_t XHtmlToTextIO::_Read(void*, uint32_t) {
  SetSafeIntrnalError(kInternalWriteOnlyFilter);
  return 0;
}

bool XHtmlToTextIO::_ReadChar(char16_t&) {
  SetSafeIntrnalError(kInternalWriteOnlyFilter);
  return false;
}

XTextToHtmlIO::~XTextToHtmlIO() = default;

bool XTextToHtmlIO::_Write(const void* data, uint32_t bytes) {
  XIO* next = Next();
  if (next == nullptr) return false;
  const auto* p = static_cast<const uint8_t*>(data);
  char16_t buffer[kChunk * kTextToHtmlGrowth];
  char16_t* end = buffer;
  char16_t c;
  while (NextUnit(p, bytes, has_odd_, odd_, c)) {
    end = PutHtml(c, after_cr_, end);
    if (end - buffer > static_cast<ptrdiff_t>((kChunk - 1) * kTextToHtmlGrowth)) {
      const size_t n = static_cast<size_t>(end - buffer);
      end = buffer;
      if (!Pass(*this, *next, buffer, n)) return false;
    }
  }
  return Pass(*this, *next, buffer, static_cast<size_t>(end - buffer));
}

bool XTextToHtmlIO::_Flush() {
  if (Next() == nullptr) return false;
  has_odd_ = false;
  after_cr_ = false;
  return XRoutedIO::_Flush();
}

uint32_t XTextToHtmlIO::_Read(void*, uint32_t) {
  SetSafeIntrnalError(kInternalWriteOnlyFilter);
  return 0;
}

bool XTextToHtmlIO::_ReadChar(char16_t&) {
  SetSafeIntrnalError(kInternalWriteOnlyFilter);
  return false;
}

}  // namespace tavi
