//===- html_convert.h - The HTML to text state machine ---------*- C++ -*-===//
//
// HtmlToText reads HTML one code unit at a time, so that the whole-text
// functions and the filter stream share one reader and a text split anywhere
// gives the same result as the whole.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::text_internal {

class HtmlToText {
 public:
  // Room Put and Finish may need in out, whatever the input.
  static constexpr size_t kMaxOut = 64;

  // Put reads one code unit and writes what it settles to out; returns the end.
  char16_t* Put(char16_t c, char16_t* out);
  // Run reads n code units, as Put would one by one, writing straight to out: the
  // text never runs ahead of the HTML, so out needs room for n units beyond what
  // is kept back (at most kMaxOut).
  char16_t* Run(const char16_t* in, size_t n, char16_t* out);
  // Finish settles what is kept back as at the end of input and starts afresh.
  char16_t* Finish(char16_t* out);

 private:
  enum class Mode : uint8_t {
    kText,
    kTagOpen,
    kEndOpen,
    kTagName,
    kTagRest,
    kTagQuote,
    kBang,
    kBangDash,
    kComment,
    kSkipToGt,
    kRaw,
    kRef,
    kNumber,
    kDecimal,
    kHex,
    kRefName,
  };

  // Step reads c in the current mode; false when c must be read again in the mode
  // Step left (it ended something that c does not belong to).
  bool Step(char16_t c);
  void Text(char32_t c);
  void Visible(char32_t c);
  void SettleBreaks();
  void Block(int lines);
  void TagDone();
  void ResolveName(bool semicolon);
  void EmitNumber();

  char16_t* out_ = nullptr;
  Mode mode_ = Mode::kText;
  // Output state: whether anything was written, line breaks at its end (up to 2),
  // breaks owed before the next visible character, the separator owed (0, ' ' or
  // '\t'), the depth of <pre> and whether a CR just ended a line inside it.
  bool any_ = false;
  uint8_t trailing_ = 0;
  uint8_t need_ = 0;
  char16_t separator_ = 0;
  uint16_t pre_ = 0;
  bool after_cr_ = false;
  // Tag being read: name (lower case), end tag, too long, '/' last, quote char.
  char name_[12] = {};
  uint8_t name_length_ = 0;
  bool end_tag_ = false;
  bool name_overflow_ = false;
  bool self_closing_ = false;
  char16_t quote_ = 0;
  uint8_t dashes_ = 0;
  // Raw text (script, style): its name and how much of "</name" has matched.
  char raw_[8] = {};
  uint8_t raw_length_ = 0;
  uint8_t raw_matched_ = 0;
  // Character reference being read.
  char ref_[32] = {};
  uint8_t ref_length_ = 0;
  char16_t hex_mark_ = 0;
  bool digits_ = false;
  uint32_t value_ = 0;
};

}  // namespace tavi::text_internal
