//===- number_options_test.cpp - Number options ----------------------------===//
#include "tavi/format/number_options.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include "format/internal/locale_marks.h"

namespace tavi {
namespace {

// (point, alternative, group separator) of a record.
std::tuple<char16_t, char16_t, char16_t> Marks(const strEnvNumberOptions& o) {
  return {o.PointMark(), o.AltPointMarkChar, o.GroupSeparator()};
}

TEST(NumberOptions, PortableDefaultsAndConstants) {
  const strEnvNumberOptions o;
  EXPECT_EQ(o.PrintWidth, 16);
  EXPECT_EQ(std::u16string(o.Digits, 10), u"0123456789");
  EXPECT_EQ(Marks(o), std::make_tuple(u'.', u'\0', u'\u00A0'));
  EXPECT_EQ(Marks(gPortableNumberOptions), Marks(o));
  EXPECT_EQ(std::u16string(strEnvNumberOptions::ValidCharsInteger), u"-0123456789");
  EXPECT_EQ(std::u16string(strEnvNumberOptions::ValidCharsUnsignedInteger), u"0123456789");
  EXPECT_EQ(std::u16string(strEnvNumberOptions::ValidCharsHexaNumber), u"ABCDEFabcdef0123456789");
  uint64_t power = 1;
  for (int d = 0; d <= 10; ++d, power *= 10) EXPECT_EQ(gRealDividers[d], power) << d;
}

TEST(NumberOptions, CopyTakesEveryByte) {
  strEnvNumberOptions a;
  a.PrintWidth = 9;
  a.Digits[3] = u'x';
  a.SetPointMark(u',');
  a.SetAltPointMark(0);
  a.Reserved = 0x1234;
  strEnvNumberOptions b(a);
  strEnvNumberOptions c;
  EXPECT_EQ(&(c = a), &c);
  EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
  EXPECT_EQ(std::memcmp(&a, &c, sizeof a), 0);
}

TEST(NumberOptions, SettersKeepTheAlternativeApartFromTheOtherMarks) {
  strEnvNumberOptions o;
  o.SetAltPointMark(u'\u00A0');
  EXPECT_EQ(Marks(o), std::make_tuple(u'.', u',', u'\u00A0'));
  o.SetAltPointMark(u',');  // "," is taken: no alternative
  EXPECT_EQ(o.AltPointMarkChar, 0);
  o.SetPointMark(u',');
  o.SetAltPointMark(u' ');
  EXPECT_EQ(Marks(o), std::make_tuple(u',', u'.', u'\u00A0'));
  EXPECT_EQ(o.PointMarkAlt(), u',');  // the point itself, not the alternative
  o.SetGroupSeparator(u'.');          // the separator takes the alternative's place
  EXPECT_EQ(Marks(o), std::make_tuple(u',', u'\0', u'.'));
  o.SetAltPointMark(u'.');
  EXPECT_EQ(o.AltPointMarkChar, 0);
  o.SetPointMark(u'\u066B');  // neither "." nor ",": nothing changes
  o.AltPointMarkChar = u'x';
  o.SetAltPointMark(0);
  EXPECT_EQ(o.AltPointMarkChar, u'x');
  o.SetPointMark(u'.');
  EXPECT_EQ(o.AltPointMarkChar, 0);
  o.AltPointMarkChar = u',';
  o.PrintWidth = 20;
  o.SetPortable();
  EXPECT_EQ(Marks(o), std::make_tuple(u'.', u',', u'\u00A0'));
  EXPECT_EQ(o.PrintWidth, 20);
}

TEST(NumberOptions, LocaleMarksTakeOnlySingleCharacters) {
  struct Case {
    const char16_t* decimal;
    int32_t decimal_count;
    const char16_t* thousand;
    int32_t thousand_count;
    std::tuple<char16_t, char16_t, char16_t> marks;
  };
  // Starting from point ".", alternative ",", separator "'".
  const Case cases[] = {
      {u",", 2, u".", 2, {u',', 0, u'.'}},
      {u",", 2, u" ", 2, {u',', 0, u'\u00A0'}},
      {u"..", 3, u",", 2, {u'.', 0, u','}},  // long point ignored; "," clears the alternative
      {u"..", 3, u"''", 3, {u'.', u',', u'\''}},
      {u"x", 0, u"y", 0, {u'.', u',', u'\''}},  // the platform failed
      {u"\u066B", 2, u"\u066C", 2, {u'\u066B', 0, u'\u066C'}},
  };
  for (const Case& c : cases) {
    strEnvNumberOptions o;
    o.SetAltPointMark(0);
    o.GroupSeparatorChar = u'\'';
    internal::TakeLocaleMarks(o, c.decimal, c.decimal_count, c.thousand, c.thousand_count);
    EXPECT_EQ(Marks(o), c.marks) << std::u16string(c.decimal).size();
  }
}

TEST(NumberOptions, SetLocaleReadsThePlatform) {
  EXPECT_EQ(Marks(strEnvNumberOptions(0x0409)), std::make_tuple(u'.', u'\0', u','));  // en-US
  EXPECT_EQ(Marks(strEnvNumberOptions(0x0407)), std::make_tuple(u',', u'\0', u'.'));  // de-DE
  strEnvNumberOptions unknown;
  unknown.SetAltPointMark(0);
  unknown.SetLocale(0x7FFFFFFF);
  EXPECT_EQ(Marks(unknown), std::make_tuple(u'.', u',', u'\u00A0'));
  strEnvNumberOptions user(0x0400);  // whatever the environment says: one character each
  EXPECT_NE(user.PointMark(), 0);
}

}  // namespace
}  // namespace tavi
