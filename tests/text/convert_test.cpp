//===- convert_test.cpp - Conversions between UTF-8, UTF-16 and code pages --===//
#include "tavi/text/convert.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <random>
#include <string>
#include <vector>

#include "io/test_streams.h"
#include "tavi/core/buffer.h"
#include "tavi/text/text_file.h"

namespace tavi {
namespace {

std::u16string Utf8To16(const std::string& in, uint32_t flags = 0, bool* ok = nullptr) {
  std::u16string out(in.size() + 1, u'\0');
  char16_t* end = _Utf8ToUtf16(in.data(), static_cast<uint32_t>(in.size()), out.data(), flags);
  if (ok != nullptr) *ok = end != nullptr;
  out.resize(end == nullptr ? 0 : static_cast<size_t>(end - out.data()));
  return out;
}

std::string Utf16To8(const std::u16string& in, uint32_t flags = 0, bool* ok = nullptr) {
  std::string out(3 * in.size() + 1, '\0');
  char* end = _Utf16ToUtf8(in.data(), static_cast<uint32_t>(in.size()), out.data(), flags);
  if (ok != nullptr) *ok = end != nullptr;
  out.resize(end == nullptr ? 0 : static_cast<size_t>(end - out.data()));
  return out;
}

// ICU's conversions with "?" as the substitute: the oracle of the lenient forms.
std::u16string IcuUtf8To16(const std::string& in) {
  std::u16string out(in.size() + 1, u'\0');
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, in.data(),
                       static_cast<int32_t>(in.size()), '?', nullptr, &status);
  EXPECT_TRUE(U_SUCCESS(status));
  out.resize(static_cast<size_t>(length));
  return out;
}

std::string IcuUtf16To8(const std::u16string& in) {
  std::string out(3 * in.size() + 1, '\0');
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, in.data(),
                     static_cast<int32_t>(in.size()), '?', nullptr, &status);
  EXPECT_TRUE(U_SUCCESS(status));
  out.resize(static_cast<size_t>(length));
  return out;
}

TEST(Convert, MalformedUtf8BecomesOneQuestionMarkPerPiece) {
  struct Case {
    std::string in;
    std::u16string lenient;
  };
  const std::vector<Case> cases = {
      {"a\x80z", u"a?z"},
      {"\xE2\x82\xAC", u"\u20AC"},
      {"\xE2\x82", u"?"},    // cut at the end
      {"\xE2\x82Z", u"?Z"},  // the longest valid prefix is one piece
      {"\xF0\x9F\x98\x80", u"\U0001F600"},
      {"\xF0\x9F\x98", u"?"},
      {"\xC0\xAF", u"??"},  // overlong lead: each byte alone
      {"\xE0\x80\xAF", u"???"},
      {"\xED\xA0\x80", u"???"},       // a surrogate
      {"\xF4\x90\x80\x80", u"????"},  // past U+10FFFF
      {"\xF5z", u"?z"},
      {std::string("\0x", 2), std::u16string(u"\0x", 2)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.in);
    EXPECT_EQ(Utf8To16(c.in), c.lenient);
    EXPECT_EQ(Utf8To16(c.in), IcuUtf8To16(c.in));
    bool ok = false;
    const std::u16string strict = Utf8To16(c.in, kConvertStrict, &ok);
    EXPECT_EQ(ok, c.lenient.find(u'?') == std::u16string::npos);
    if (ok) {
      EXPECT_EQ(strict, c.lenient);
    }
  }
}

TEST(Convert, RandomUtf8AndUtf16MatchIcu) {
  std::mt19937 rng(7);
  // Bytes weighted towards lead and continuation bytes, so that valid and broken
  // sequences of every length occur.
  const std::vector<uint8_t> bytes = {'a',  ' ',  0x7F, 0x80, 0x8F, 0x9F, 0xA0, 0xBF, 0xC2,
                                      0xC0, 0xDF, 0xE0, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF};
  const std::vector<char16_t> units = {u'a',   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF, 0xD800,
                                       0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
  for (int round = 0; round < 3000; ++round) {
    std::string s8(rng() % 40, '\0');
    for (char& b : s8) b = static_cast<char>(bytes[rng() % bytes.size()]);
    ASSERT_EQ(Utf8To16(s8), IcuUtf8To16(s8)) << round;
    std::u16string s16(rng() % 40, u'\0');
    for (char16_t& u : s16) u = units[rng() % units.size()];
    ASSERT_EQ(Utf16To8(s16), IcuUtf16To8(s16)) << round;
    bool ok = false;
    const std::string strict = Utf16To8(s16, kConvertStrict, &ok);
    // Strict fails exactly where a surrogate is unpaired (no "?" in these texts).
    EXPECT_EQ(ok, IcuUtf16To8(s16).find('?') == std::string::npos) << round;
    if (ok) {
      EXPECT_EQ(strict, Utf16To8(s16));
    }
  }
}

TEST(Convert, CodePages) {
  // 1252 holds the euro sign at 0x80; 1253 (Greek) leaves 0xD2 undefined.
  const std::string cp1252 = "A\x80\xE9";
  std::u16string wide(4, u'\0');
  char16_t* end = _CodePageToUtf16(1252, cp1252.data(), 3, wide.data(), kConvertStrict);
  ASSERT_NE(end, nullptr);
  EXPECT_EQ(std::u16string(wide.data(), end), u"A\u20AC\u00E9");
  end = _CodePageToUtf16(1253, "\xC1\xD2", 2, wide.data());
  ASSERT_NE(end, nullptr);
  EXPECT_EQ(std::u16string(wide.data(), end), u"\u0391?");
  EXPECT_EQ(_CodePageToUtf16(1253, "\xC1\xD2", 2, wide.data(), kConvertStrict), nullptr);

  // Missing characters, and a pair (one character) become one "?".
  const std::u16string text = u"\u00E9\u4E2D\U0001F600?z";
  char out[16];
  char* e = _Utf16ToCodePage(1252, text.data(), static_cast<uint32_t>(text.size()), out);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(std::string(out, e), "\xE9???z");
  EXPECT_EQ(_Utf16ToCodePage(1252, text.data(), 1, out, kConvertStrict), out + 1);
  EXPECT_EQ(_Utf16ToCodePage(1252, text.data(), 2, out, kConvertStrict), nullptr);
  // "?" itself is not a fault.
  EXPECT_EQ(_Utf16ToCodePage(1252, u"?", 1, out, kConvertStrict), out + 1);

  e = _CodePageToCodePage(850, 1252, "\xE9\x80z", 3, out);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(std::string(out, e), "\x82?z");  // 850 has no euro sign
  EXPECT_EQ(_CodePageToCodePage(850, 1252, "\xE9\x80", 2, out, kConvertStrict), nullptr);

  e = _Utf8ToCodePage(1251, "\xD0\x90\xE2\x82", 4, out);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(std::string(out, e), "\xC0?");
  e = _CodePageToUtf8(1251, "\xC0", 1, out);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(std::string(out, e), "\xD0\x90");

  // Numbers without a table.
  EXPECT_EQ(_CodePageToUtf16(4242, "a", 1, wide.data()), nullptr);
  EXPECT_EQ(_Utf16ToCodePage(kTextUtf8, u"a", 1, out), nullptr);
  EXPECT_EQ(_CodePageToCodePage(1252, 932, "a", 1, out), nullptr);
}

TEST(Convert, StreamFormsMatchMemoryForms) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += i % 7 == 0 ? "\xC3\xA9\xF0\x9F\x98\x80 " : "word \x80";
  const std::u16string expected = Utf8To16(text);
  // A plain buffer is written directly; a string and any other stream through pieces.
  XBuffer buffer;
  ASSERT_TRUE(XUtf8ToUtf16(buffer, text.data(), static_cast<uint32_t>(text.size())));
  EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(buffer._GetBufferAt(0)),
                           buffer.GetBufferPos() / 2),
            expected);
  test::Sink sink;
  ASSERT_TRUE(XUtf8ToUtf16(sink, text.data(), static_cast<uint32_t>(text.size())));
  ASSERT_EQ(sink.bytes.size(), 2 * expected.size());
  EXPECT_EQ(std::memcmp(sink.bytes.data(), expected.data(), sink.bytes.size()), 0);

  XBuffer back;
  ASSERT_TRUE(XUtf16ToUtf8(back, expected.data(), static_cast<uint32_t>(expected.size())));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(back._GetBufferAt(0)), back.GetBufferPos()),
            Utf16To8(expected));

  // Faults and refusals carry their codes; nothing is written for a refused pair.
  XBuffer strict;
  EXPECT_EQ(test::Fail(XUtf8ToUtf16(strict, "ab\xFF", 3, kConvertStrict), strict), kErrConversion);
  // A fault first, into a buffer that has no block yet.
  XBuffer fresh;
  ASSERT_TRUE(XUtf8ToCodePage(fresh, 1252, "\xC3Q", 2));
  EXPECT_EQ(test::Data(fresh), test::Bytes({'?', 'Q'}));
  XBuffer none;
  EXPECT_EQ(test::Fail(XCodePageToUtf16(none, 4242, "a", 1), none), kErrSaveEncoding);
  EXPECT_EQ(test::Fail(XConvertText(none, kTextUtf16, kTextUtf16BE, "ab", 2), none),
            kErrLoadEncoding);
  EXPECT_EQ(none.GetBufferPos(), 0u);
  test::Sink failing(1);
  EXPECT_EQ(test::Fail(XUtf8ToUtf16(failing, "abc", 3), failing), kErrTooLong);
}

}  // namespace
}  // namespace tavi
