//===- text_options_test.cpp - Quoting, list breaks and boolean words ------===//
#include "tavi/format/text_options.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "io/test_streams.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "text_helpers.h"

namespace tavi {
namespace {

using test::Stream;

strEnvTextOptions Quotes(char16_t open, char16_t close) {
  strEnvTextOptions o;
  o.OpenQuote = open;
  o.CloseQuote = close;
  return o;
}

TEST(TextOptions, ConstructionAndSetters) {
  strEnvTextOptions o;
  EXPECT_EQ(std::u16string(o.GetSpaceString(), 25), std::u16string(25, u' '));
  EXPECT_EQ(std::u16string(o.GetBreakString(), 2), u", ");
  EXPECT_EQ(o.GetEndQuotation(u'"'), u'"');
  EXPECT_EQ(Stream([&](XIO& s) { return o.WriteListBreak(s); }), u", ");
  o.SetSpaceChar(u'\t');
  o.SetBreakMark(u';');
  EXPECT_EQ(std::u16string(o.GetSpaceString(), 25), std::u16string(25, u'\t'));
  EXPECT_EQ(std::u16string(o.GetBreakString(), 2), u";\t");
  strEnvTextOptions copy(o);
  copy.SetPortable();
  EXPECT_EQ(std::u16string(copy.GetBreakString(), 2), u",\t");
  EXPECT_EQ(copy.SpaceRun[24], u'\t');
  // The locale's list separator: ";" where the decimal separator is ",".
  EXPECT_EQ(strEnvTextOptions(0x0407).GetBreakMark(), u';');  // de-DE
  EXPECT_EQ(strEnvTextOptions(0x0409).GetBreakMark(), u',');  // en-US
  o.SetLocale(0x7FFFFFFF);
  EXPECT_EQ(o.GetBreakMark(), u',');
}

TEST(TextOptions, ChoosingQuotes) {
  const strEnvTextOptions plain;
  const strEnvTextOptions guillemets = Quotes(u'\u00AB', u'\u00BB');
  const strEnvTextOptions single = Quotes(u'\u00AB', u'\'');
  const struct {
    const strEnvTextOptions& options;
    const char16_t* text;
    bool ok;
    char16_t open, close;
  } cases[] = {
      {plain, u"abc", true, u'"', u'"'},
      {plain, nullptr, true, u'"', u'"'},
      {plain, u"say \"hi\"", true, u'\'', u'\''},
      {plain, u"\"'", true, u'`', u'`'},
      {plain, u"\"'`", false, 0, 0},
      {guillemets, u"\"x\"", true, u'\u00AB', u'\u00BB'},
      {guillemets, u"\u00BB", true, u'"', u'"'},
      {single, u"\u00AB\"", true, u'`', u'`'},
      {Quotes(u'`', u'`'), u"`\"'", false, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text ? test::Narrow(c.text) : "null");
    char16_t open = 1, close = 1;
    EXPECT_EQ(c.options.GetStringQuotation(open, close, c.text), c.ok);
    EXPECT_EQ(std::make_tuple(open, close), std::make_tuple(c.open, c.close));
  }
  EXPECT_EQ(guillemets.GetEndQuotation(u'\u00AB'), u'\u00BB');
  EXPECT_EQ(guillemets.GetEndQuotation(u'\''), u'\'');
  EXPECT_EQ(guillemets.GetEndQuotation(u'`'), u'`');
  EXPECT_EQ(guillemets.GetEndQuotation(u'\u00BB'), 0);
}

TEST(TextOptions, TextToStringQuotesOnlyTheGivenBytes) {
  const strEnvTextOptions o;
  const char16_t text[] = u"ab\"cd";
  EXPECT_EQ(Stream([&](XIO& s) { return TextToString(s, text, 4, o); }), u"\"ab\"");
  EXPECT_EQ(Stream([&](XIO& s) { return TextToString(s, text, 10, o); }), u"'ab\"cd'");
  EXPECT_EQ(Stream([&](XIO& s) { return TextToString(s, nullptr, 10, o); }), u"\"\"");
  test::Sink sink;
  EXPECT_FALSE(TextToString(sink, u"\"'`", 6, o));
  EXPECT_EQ(sink.GetErrorCode(), kErrConversion);
  EXPECT_TRUE(sink.bytes.empty());
  test::Sink failing(2);
  EXPECT_FALSE(TextToString(failing, text, 4, o));
}

TEST(TextOptions, ReadingTextValues) {
  const strEnvTextOptions plain;
  const strEnvTextOptions guillemets = Quotes(u'\u00AB', u'\u00BB');
  const struct {
    const strEnvTextOptions& options;
    const char16_t* text;
    int stop;  // -1: null
    const char16_t* value;
  } cases[] = {
      {plain, u"   \"two words\" rest", 14, u"two words"},
      {plain, u"'it\"s' x", 6, u"it\"s"},
      {plain, u"`a b`", 5, u"a b"},
      {plain, u"\"\"x", 2, u""},
      {plain, u"plain text", 5, u"plain"},
      {plain, u"  tail", 6, u"tail"},
      {plain, u"\"open end", 5, u"\"open"},
      {plain, u"   ", 3, u""},
      {plain, u"\tx", 0, u""},
      {plain, u"a\r\nb", 1, u"a"},
      {plain, u"", -1, u""},
      {guillemets, u"\u00ABa \"b\"\u00BB.", 7, u"a \"b\""},
      {guillemets, u"\u00BBx", 2, u"\u00BBx"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    TTitleText value;
    value.Set(u"old", 6, false);
    const char16_t* end = _StringToText(value, c.text, false, c.options);
    ASSERT_EQ(end == nullptr ? -1 : static_cast<int>(end - c.text), c.stop);
    if (end != nullptr) {
      EXPECT_EQ(std::u16string(value.text ? value.text : u"", value.Len()), c.value);
      EXPECT_FALSE(value.IsAttached());
    }
  }
  TTitleText value;
  EXPECT_EQ(_StringToText(value, nullptr, false, plain), nullptr);
  // Attached: the value points into the text.
  const char16_t* text = u" 'abc'";
  EXPECT_EQ(_StringToText(value, text, true, plain), text + 6);
  EXPECT_EQ(value.text, text + 2);
  EXPECT_EQ(value.size, 6u);
  EXPECT_TRUE(value.IsAttached());
}

using Words = std::tuple<std::u16string, std::u16string, std::u16string, std::u16string>;

Words WordsOf(const strEnvStringVarOptions& o) {
  return {std::u16string(o.GetTrueStr(), o.GetTrueStrSize() / 2),
          std::u16string(o.GetFalseStr(), o.GetFalseStrSize() / 2),
          std::u16string(o.GetYesStr(), o.GetYesStrSize() / 2),
          std::u16string(o.GetNoStr(), o.GetNoStrSize() / 2)};
}

TEST(StringVarOptions, WordsAreCutAtNineCharacters) {
  strEnvStringVarOptions o;
  EXPECT_EQ(WordsOf(o), Words(u"True", u"False", u"Yes", u"No"));
  EXPECT_EQ(o.GetFalseStr()[5], 0);
  EXPECT_FALSE(o.SetTrueStr(u"Abcdefghijkl", 24));
  EXPECT_TRUE(o.SetFalseStr(u"Ninechars", 18));
  EXPECT_FALSE(o.SetYesStr(nullptr, 4));
  EXPECT_FALSE(o.SetNoStr(u"x", 0));
  EXPECT_EQ(WordsOf(o), Words(u"Abcdefghi", u"Ninechars", u"Yes", u"No"));
  EXPECT_EQ(o.GetTrueStr()[9], 0);

  TTitleText title;
  title.Set(u"Ja", 4, false);
  XString16 string;
  string.Add(u"Nein");
  EXPECT_TRUE(o.SetYesStr(title));
  EXPECT_TRUE(o.SetNoStr(string));
  EXPECT_FALSE(o.SetTrueStr(TTitleText()));
  const strEnvStringVarOptions copy = o;
  EXPECT_EQ(WordsOf(copy), Words(u"Abcdefghi", u"Ninechars", u"Ja", u"Nein"));
  o.SetPortable();
  EXPECT_EQ(WordsOf(o), Words(u"True", u"False", u"Yes", u"No"));

  // SetVarStr with an explicit capacity; an odd size loses its last byte.
  char16_t buffer[4] = {u'#', u'#', u'#', u'#'};
  uint32_t size = 77;
  EXPECT_FALSE(strEnvStringVarOptions::SetVarStr(buffer, size, 3, u"abcd", 8));
  EXPECT_EQ(std::u16string(buffer, 4), std::u16string(u"ab\0#", 4));
  EXPECT_EQ(size, 4u);
  EXPECT_TRUE(strEnvStringVarOptions::SetVarStr(buffer, size, 3, u"xy", 3));
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(buffer[1], 0);
}

}  // namespace
}  // namespace tavi
