//===- number_options_test.cpp - Number options ----------------------------===//
#include "tavi/format/number_options.h"

#include <gtest/gtest.h>

#include <tuple>

#include "format/internal/locale_marks.h"

namespace tavi {
namespace {

using Marks = std::tuple<char16_t, char16_t, char16_t>;  // point, alternative, separator

Marks MarksOf(const strEnvNumberOptions& o) {
  return {o.PointMark(), o.AltPointMarkChar, o.GroupSeparator()};
}

TEST(NumberOptions, PortableDefaultsAndConstants) {
  const strEnvNumberOptions o;
  EXPECT_EQ(o.PrintWidth, 16);
  EXPECT_EQ(std::u16string(o.Digits, 10), u"0123456789");
  EXPECT_EQ(MarksOf(o), Marks(u'.', 0, u'\u00A0'));
  EXPECT_EQ(MarksOf(gPortableNumberOptions), MarksOf(o));
  EXPECT_EQ(std::u16string(strEnvNumberOptions::ValidCharsHexaNumber), u"ABCDEFabcdef0123456789");
  strEnvNumberOptions a;  // copies take every field, the reserved one too
  a.Digits[3] = u'x';
  a.Reserved = 0x1234;
  a.SetAltPointMark(0);
  strEnvNumberOptions b(a), c;
  EXPECT_EQ(&(c = a), &c);
  for (const strEnvNumberOptions* copy : {&b, &c}) {
    EXPECT_EQ(std::u16string(copy->Digits, 10), u"012x456789");
    EXPECT_EQ(MarksOf(*copy), Marks(u'.', u',', u'\u00A0'));
    EXPECT_EQ(copy->Reserved, 0x1234);
  }
}

TEST(NumberOptions, SettersKeepTheAlternativeApartFromTheOtherMarks) {
  strEnvNumberOptions o;
  o.SetAltPointMark(u'\u00A0');
  EXPECT_EQ(MarksOf(o), Marks(u'.', u',', u'\u00A0'));
  o.SetAltPointMark(u',');  // "," is taken: no alternative
  EXPECT_EQ(o.AltPointMarkChar, 0);
  o.SetPointMark(u',');
  o.SetAltPointMark(u' ');
  EXPECT_EQ(MarksOf(o), Marks(u',', u'.', u'\u00A0'));
  EXPECT_EQ(o.PointMarkAlt(), u',');  // the point itself, not the alternative
  o.SetGroupSeparator(u'.');
  EXPECT_EQ(MarksOf(o), Marks(u',', 0, u'.'));
  o.SetPointMark(u'\u066B');  // neither "." nor ",": SetAltPointMark changes nothing
  o.AltPointMarkChar = u'x';
  o.SetAltPointMark(0);
  EXPECT_EQ(o.AltPointMarkChar, u'x');
  o.PrintWidth = 20;
  o.SetPortable();
  EXPECT_EQ(MarksOf(o), Marks(u'.', u'x', u'\u00A0'));
  EXPECT_EQ(o.PrintWidth, 20);
}

TEST(NumberOptions, LocaleMarksTakeOnlySingleCharacters) {
  // The platform's answers (text and count with terminator), from point ".",
  // alternative "," and separator "'".
  const std::tuple<const char16_t*, int32_t, const char16_t*, int32_t, Marks> cases[] = {
      {u",", 2, u".", 2, {u',', 0, u'.'}},
      {u",", 2, u" ", 2, {u',', 0, u'\u00A0'}},
      {u"..", 3, u",", 2, {u'.', 0, u','}},  // long point ignored; "," takes the alternative
      {u"..", 3, u"''", 3, {u'.', u',', u'\''}},
      {u"x", 0, u"y", 0, {u'.', u',', u'\''}},  // the platform failed
  };
  for (const auto& [decimal, dn, thousand, tn, marks] : cases) {
    strEnvNumberOptions o;
    o.SetAltPointMark(0);
    o.GroupSeparatorChar = u'\'';
    internal::TakeLocaleMarks(o, decimal, dn, thousand, tn);
    EXPECT_EQ(MarksOf(o), marks) << dn << " " << tn;
  }
  EXPECT_EQ(MarksOf(strEnvNumberOptions(0x0409)), Marks(u'.', 0, u','));  // en-US
  EXPECT_EQ(MarksOf(strEnvNumberOptions(0x0407)), Marks(u',', 0, u'.'));  // de-DE
  strEnvNumberOptions unknown;
  unknown.SetAltPointMark(0);
  unknown.SetLocale(0x7FFFFFFF);
  EXPECT_EQ(MarksOf(unknown), Marks(u'.', u',', u'\u00A0'));
}

}  // namespace
}  // namespace tavi
