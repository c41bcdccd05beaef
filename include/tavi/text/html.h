//===- html.h - HTML to plain text and back --------------------*- C++ -*-===//
//
// This file declares the conversions between HTML and plain UTF-16 text, as
// functions over whole texts and as filter streams that convert what is written
// through them piece by piece.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/routed.h"

namespace tavi {

// HTML to plain text. Tags are removed; the text of script and style elements,
// comments, "<!...>" declarations and "<?...>" instructions is dropped. Runs of
// white space become one space, except inside <pre>, where they stay as written
// (a CR LF pair gives one line break). Block elements (p, div, headings, lists,
// tables, blockquote, pre, hr and their kin) start and end a line, p and the
// headings with a blank line between paragraphs; <br> is one line break and a table
// cell is set off by a tab. A line break is "\n". Breaks and spaces are written only
// before the next visible character, so the text neither starts nor ends with them
// (except what <br> and <pre> ask for).
//
// Character references are decoded: all HTML5 named references (the legacy names
// such as "&amp" and "&copy" also without ';', by the longest such name, so
// "&notit;" is U+00AC "it;"), "&#65;" and "&#x41;" with or without ';'. A numeric
// value of 0, above U+10FFFF or a surrogate gives U+FFFD; 0x80-0x9F are read as
// windows-1252 the way browsers do. A '&' or '<' that starts nothing is kept as it
// is. Unpaired surrogates in the input pass through.
//
// The plain text is never longer (in code units) than the HTML it comes from.
// Nothing in the input is an error: unclosed tags, comments and scripts at the end
// are dropped.

// _HtmlToText writes the text of html (html_chars code units) to out, which has
// room for html_chars code units, and returns the end of what it wrote (not
// terminated).
TAVI_API char16_t* _HtmlToText(const char16_t* html, size_t html_chars, char16_t* out);

// XHtmlToText appends the text of html to out as UTF-16. False with out's error
// imported when out refuses the text.
TAVI_API bool XHtmlToText(XIO& out, const char16_t* html, size_t html_chars);

// Plain text to HTML: '&', '<', '>' and '"' become "&amp;", "&lt;", "&gt;" and
// "&quot;"; each line break (CR LF, LF or CR) gets "<br>" in front of it and is
// kept, so the HTML source keeps the lines of the text. Every other code unit,
// unpaired surrogates included, passes unchanged.

// Room that _TextToHtml needs for each code unit of text.
inline constexpr size_t kTextToHtmlGrowth = 6;

// _TextToHtml writes the HTML form of text to out, which has room for
// kTextToHtmlGrowth * text_chars code units, and returns the end of what it wrote.
TAVI_API char16_t* _TextToHtml(const char16_t* text, size_t text_chars, char16_t* out);

// XTextToHtml appends the HTML form of text to out. False with out's error
// imported when out refuses it.
TAVI_API bool XTextToHtml(XIO& out, const char16_t* text, size_t text_chars);

// XHtmlToTextIO is a writing filter: UTF-16 HTML written into it reaches the next
// stream as plain text, as XHtmlToText would give for the whole of what was written.
// Writes may split the text anywhere, even inside a code unit; the filter keeps back
// only what it cannot yet decide (an odd byte, an unfinished tag name or reference,
// the tail of a "</script" or "-->" it looks for), at most a few dozen code units.
// _Flush ends the text: what was kept back is settled as at the end of input, the
// next stream is flushed and the filter starts a new text. Reading through the filter
// is not a conversion: _Read and _ReadChar fail with 0x20000015 (internal 1050).
class TAVI_API XHtmlToTextIO : public XRoutedIO {
 public:
  XHtmlToTextIO();
  explicit XHtmlToTextIO(XIO* next);
  XHtmlToTextIO(const XHtmlToTextIO&) = delete;
  XHtmlToTextIO& operator=(const XHtmlToTextIO&) = delete;
  ~XHtmlToTextIO() override;
  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  bool _ReadChar(char16_t& c) override;
  bool _Flush() override;

 private:
  struct State;
  State* state_;
};

// XTextToHtmlIO is a writing filter: UTF-16 text written into it reaches the next
// stream as HTML, as XTextToHtml gives it. It keeps back only an odd byte; _Flush
// flushes the next stream (an odd byte left over is dropped). Reading fails as with
// XHtmlToTextIO.
class TAVI_API XTextToHtmlIO : public XRoutedIO {
 public:
  XTextToHtmlIO() = default;
  explicit XTextToHtmlIO(XIO* next) : XRoutedIO(next) {}
  ~XTextToHtmlIO() override;
  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  bool _ReadChar(char16_t& c) override;
  bool _Flush() override;

 private:
  bool after_cr_ = false;
  bool has_odd_ = false;
  uint8_t odd_ = 0;
};

// Internal error detail (code 0x20000015) of reading through a writing-only filter.
inline constexpr int32_t kInternalWriteOnlyFilter = 1050;

}  // namespace tavi
