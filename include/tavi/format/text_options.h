//===- text_options.h - Quoting, list breaks and boolean words -*- C++ -*-===//
//
// This file declares strEnvTextOptions (how a string value is quoted, which mark
// separates list items and which character indents), the writer and reader of
// quoted text values, and strEnvStringVarOptions, the four words for boolean values.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;
class XString16;
class TTitleTextBase;

// strEnvTextOptions: quotes, an indentation run, the list break mark and the space
// character, all UTF-16 code units in this order. The break mark and the space
// character are adjacent, so GetBreakString() is the two-character text ", " by
// default.
struct TAVI_API strEnvTextOptions {
  char16_t OpenQuote = u'"';
  char16_t CloseQuote = u'"';
  // 25 copies of the space character (not terminated), read by GetSpaceString().
  char16_t SpaceRun[25] = {u' ', u' ', u' ', u' ', u' ', u' ', u' ', u' ', u' ',
                           u' ', u' ', u' ', u' ', u' ', u' ', u' ', u' ', u' ',
                           u' ', u' ', u' ', u' ', u' ', u' ', u' '};
  char16_t BreakMark = u',';
  char16_t SpaceChar = u' ';

  strEnvTextOptions() = default;
  // The construction values, then the break mark of the locale (as SetLocale).
  explicit strEnvTextOptions(uint32_t locale);
  strEnvTextOptions(const strEnvTextOptions& other) = default;
  strEnvTextOptions& operator=(const strEnvTextOptions& other) = default;

  // SetPortable sets the break mark ","; nothing else changes.
  void SetPortable() { BreakMark = u','; }
  // SetLocale takes the locale's list separator (0x0400 = the user's default
  // locale) as break mark when it is a single character, else ",".
  void SetLocale(uint32_t locale);
  // SetSpaceChar sets the space character and every character of the space run.
  void SetSpaceChar(char16_t c);
  void SetBreakMark(char16_t c) { BreakMark = c; }

  const char16_t* GetSpaceString() const { return SpaceRun; }
  // The break mark followed by the space character (two characters, not terminated).
  const char16_t* GetBreakString() const { return &BreakMark; }
  char16_t GetBreakMark() const { return BreakMark; }
  // WriteListBreak writes the break mark and the space character.
  bool WriteListBreak(XIO& stream) const;

  // GetStringQuotation chooses the quotes for a terminated text (null counts as
  // empty). The options' own quotes are kept when the text contains neither (for
  // equal quotes: does not contain it). Otherwise the first of U+0022, U+0027 and
  // U+0060 that is not the options' closing quote and does not occur in the text
  // becomes both quotes. False, with open and close set to 0, when none fits.
  bool GetStringQuotation(char16_t& open, char16_t& close, const char16_t* text) const;
  // GetEndQuotation is the closing quote that belongs to an opening one: the
  // options' closing quote for their opening quote; U+0022, U+0027 and U+0060 close
  // themselves; anything else gives 0.
  char16_t GetEndQuotation(char16_t open) const;
};

static_assert(offsetof(strEnvTextOptions, SpaceChar) == offsetof(strEnvTextOptions, BreakMark) + 2,
              "the break string is the break mark and the space character side by side");
static_assert(sizeof(strEnvTextOptions) == 29 * 2, "29 code units, no padding");

// TextToString writes text (size in bytes; only those bytes are looked at) between
// the quotes that GetStringQuotation chooses for it. When no quote fits it sets the
// stream's error code 0x2000000B and returns false, writing nothing; otherwise false
// only when a write fails.
TAVI_API bool TextToString(XIO& stream, const char16_t* text, uint32_t size,
                           const strEnvTextOptions& options);

// _StringToText reads a text value from terminated text into value and returns the
// position after it, or null.
//
// It skips the options' space characters. A value that opens with the options'
// opening quote, or with U+0022, U+0027 or U+0060, runs to the matching closing quote
// (GetEndQuotation) and the result is the position after that quote. Otherwise, and
// when the closing quote is missing (the value then starts at the opening quote),
// the value runs to the first space, tab, carriage return, line feed or the end of
// the text, and the result is that position. An empty value empties `value`. `mode`
// is passed to value.Set as its attach flag: with it, value points into text.
//
// Null for a null or empty text, and when value cannot take the text (out of
// memory). Reading never goes past the terminator.
TAVI_API const char16_t* _StringToText(TTitleTextBase& value, const char16_t* text, bool mode,
                                       const strEnvTextOptions& options);

// strEnvStringVarOptions holds the words for true, false, yes and no, each in an
// inline buffer of 10 code units (at most 9 and a terminator) with its size in bytes.
// The portable words are "True", "False", "Yes" and "No".
struct TAVI_API strEnvStringVarOptions {
  static constexpr uint32_t kWordCapacity = 10;  // code units, terminator included
  struct Word {
    char16_t text[kWordCapacity];
    uint32_t size;  // bytes, terminator not counted
  };
  Word True, False, Yes, No;

  strEnvStringVarOptions() { SetPortable(); }
  strEnvStringVarOptions(const strEnvStringVarOptions& other) = default;
  strEnvStringVarOptions& operator=(const strEnvStringVarOptions& other) = default;

  // SetPortable sets the four portable words.
  void SetPortable();

  const char16_t* GetTrueStr() const { return True.text; }
  uint32_t GetTrueStrSize() const { return True.size; }
  const char16_t* GetFalseStr() const { return False.text; }
  uint32_t GetFalseStrSize() const { return False.size; }
  const char16_t* GetYesStr() const { return Yes.text; }
  uint32_t GetYesStrSize() const { return Yes.size; }
  const char16_t* GetNoStr() const { return No.text; }
  uint32_t GetNoStrSize() const { return No.size; }

  // The setters copy a word (size in bytes) with SetVarStr: false, changing nothing,
  // for a null or empty word; otherwise at most 9 characters are kept, terminated,
  // and the result is false when the word was cut.
  bool SetTrueStr(const char16_t* text, uint32_t size) { return Set(True, text, size); }
  bool SetTrueStr(const TTitleTextBase& text);
  bool SetTrueStr(const XString16& text);
  bool SetFalseStr(const char16_t* text, uint32_t size) { return Set(False, text, size); }
  bool SetFalseStr(const TTitleTextBase& text);
  bool SetFalseStr(const XString16& text);
  bool SetYesStr(const char16_t* text, uint32_t size) { return Set(Yes, text, size); }
  bool SetYesStr(const TTitleTextBase& text);
  bool SetYesStr(const XString16& text);
  bool SetNoStr(const char16_t* text, uint32_t size) { return Set(No, text, size); }
  bool SetNoStr(const TTitleTextBase& text);
  bool SetNoStr(const XString16& text);

  // SetVarStr copies at most capacity * 2 - 2 bytes of source (capacity in code
  // units, one kept for the terminator; an odd byte count loses its last byte),
  // stores the copied size, terminates, and returns true when the whole source
  // fitted. A null source or a size of 0 returns false and changes nothing.
  static bool SetVarStr(char16_t* destination, uint32_t& size, uint32_t capacity,
                        const char16_t* source, uint32_t sourceSize);

 private:
  static bool Set(Word& word, const char16_t* text, uint32_t size) {
    return SetVarStr(word.text, word.size, kWordCapacity, text, size);
  }
};

}  // namespace tavi
