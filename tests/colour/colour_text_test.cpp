//===- colour_text_test.cpp - Colour values as text and back ---------------===//
#include "tavi/colour/colour_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "format/text_helpers.h"
#include "io/test_streams.h"
#include "tavi/colour/colour.h"
#include "tavi/core/error.h"

namespace tavi {
namespace {

std::u16string Hex(uint32_t c) {
  return test::Mem([&](char16_t* e) { return _ColourToString(c, e); });
}
std::u16string Triple(uint32_t c, char16_t sep) {
  return test::Mem([&](char16_t* e) { return _ColourToStringEx(c, e, sep); });
}

TEST(ColourText, Formats) {
  EXPECT_EQ(Hex(0x00FF8000), u"#0080ff");
  EXPECT_EQ(Hex(0xAB000000), u"#000000");
  EXPECT_EQ(Hex(0x00563412), u"#123456");
  EXPECT_EQ(Triple(0x00FF8000, u','), u"0, 128, 255");
  EXPECT_EQ(Triple(0xFFFFFFFF, u';'), u"255; 255; 255");
  EXPECT_EQ(Triple(0x00030201, u' '), u"1 2 3");
  EXPECT_EQ(Triple(0x00563412, 0), u"#123456");
  EXPECT_EQ(Triple(0x00FFFFFF, u',').size(), kColourTextMax);

  EXPECT_EQ(test::Stream([](XIO& o) { return XColourToString(o, 0x00FF8000); }), u"#0080ff");
  EXPECT_EQ(test::Stream([](XIO& o) { return XColourToStringEx(o, 0x00FF8000, u','); }),
            u"0, 128, 255");
  test::Sink sink(1);
  EXPECT_FALSE(XColourToString(sink, 0x123456));
  EXPECT_EQ(sink.GetErrorCode(), kErrTooLong);
}

TEST(ColourText, Parses) {
  struct Case {
    const char16_t* text;
    char16_t separator;
    uint32_t colour;  // expected value
    size_t stop;      // characters read
  };
  const Case cases[] = {
      {u"#0080ff", 0, 0x00FF8000, 7},       {u"  #0080FF;", 0, 0x00FF8000, 9},
      {u"#08f", 0, 0x00FF8800, 4},          {u"#08F zz", 0, 0x00FF8800, 4},
      {u"#0080ffg", 0, 0x00FF8000, 7},      {u"0, 128, 255", 0, 0x00FF8000, 11},
      {u"0,128,255)", u',', 0x00FF8000, 9}, {u" 0 ; 128 ;255 ;", u';', 0x00FF8000, 13},
      {u"1 2   3x", u' ', 0x00030201, 7},   {u"007,0,0", 0, 0x00000007, 7},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(test::Narrow(c.text));
    uint32_t colour = 0;
    const char16_t* stop = _StringToColour(colour, c.text, c.separator);
    ASSERT_NE(stop, nullptr);
    EXPECT_EQ(stop - c.text, static_cast<ptrdiff_t>(c.stop));
    EXPECT_EQ(colour, c.colour);
  }
  // Refused: the colour is left untouched.
  const std::pair<const char16_t*, char16_t> refused[] = {
      {u"", 0},         {u"#", 0},
      {u"#12", 0},      {u"#1234", 0},
      {u"#12345", 0},   {u"#1234567", 0},
      {u"# 123456", 0}, {u"0, 128", 0},
      {u"0, 128,", 0},  {u"0, 256, 0", 0},
      {u"-1, 0, 0", 0}, {u"0; 1; 2", u','},
      {u"1,2 3", u' '}, {u"0, 99999999999999999999, 0", 0}};
  for (const auto& [text, separator] : refused) {
    uint32_t colour = 0xDEADBEEF;
    EXPECT_EQ(_StringToColour(colour, text, separator), nullptr) << test::Narrow(text);
    EXPECT_EQ(colour, 0xDEADBEEFu);
  }
}

TEST(ColourText, EveryStepRoundTrips) {
  for (uint32_t s = 0; s < 256; ++s) {
    for (uint32_t c : {XMakeColour(s, 0, 0), XMakeColour(0, s, 255 - s), XMakeColour(s, s, s)}) {
      for (char16_t sep : {u'\0', u',', u' ', u';'}) {
        const std::u16string text = Triple(c, sep);
        uint32_t back = 0xFFFFFFFF;
        const char16_t* stop = _StringToColour(back, text.c_str(), sep);
        ASSERT_EQ(stop, text.c_str() + text.size()) << test::Narrow(text);
        EXPECT_EQ(back, c) << test::Narrow(text);
      }
    }
  }
}

TEST(ColourText, LocaleSeparator) {
  EXPECT_EQ(XColourSeparator(0x0409), u',');  // en-US: decimal point "."
  EXPECT_EQ(XColourSeparator(0x0407), u';');  // de-DE: decimal point ","
  EXPECT_EQ(XColourSeparator(0x7FFFFFFF), u',');
}

}  // namespace
}  // namespace tavi
