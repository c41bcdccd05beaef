//===- html_test.cpp - HTML to plain text and back ------------------------===//
#include "tavi/text/html.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tavi/core/buffer.h"

namespace tavi {
namespace {

std::u16string ToText(const std::u16string& html) {
  std::u16string out(html.size() + 1, u'#');
  char16_t* end = _HtmlToText(html.data(), html.size(), out.data());
  EXPECT_LE(static_cast<size_t>(end - out.data()), html.size());
  out.resize(static_cast<size_t>(end - out.data()));
  return out;
}

std::u16string ToHtml(const std::u16string& text) {
  std::u16string out(text.size() * kTextToHtmlGrowth, u'#');
  char16_t* end = _TextToHtml(text.data(), text.size(), out.data());
  out.resize(static_cast<size_t>(end - out.data()));
  return out;
}

std::u16string Units(const XBuffer& buffer) {
  return std::u16string(reinterpret_cast<const char16_t*>(buffer.GetBuffer()),
                        buffer.GetBufferPos() / 2);
}

std::string Narrow(const std::u16string& s) {
  std::string out;
  for (char16_t c : s) out += c < 0x80 ? static_cast<char>(c) : '?';
  return out;
}

TEST(HtmlToText, Table) {
  const std::vector<std::pair<std::u16string, std::u16string>> cases = {
      {u"", u""},
      {u"plain", u"plain"},
      {u"<b>bold</b> and <i>it</i>", u"bold and it"},
      {u"  many \t\n spaces  ", u"many spaces"},
      {u"a<br>b<br/>c<BR >d", u"a\nb\nc\nd"},
      {u"<p>one</p><p>two</p>", u"one\n\ntwo"},
      {u"<p>one<p>two", u"one\n\ntwo"},
      {u"<div>a</div><div>b</div>", u"a\nb"},
      {u"<ul><li>x</li><li>y</li></ul>", u"x\ny"},
      {u"<h1>T</h1>body", u"T\n\nbody"},
      {u"<table><tr><td>1</td><td>2</td></tr><tr><td>3</td></tr></table>", u"1\t2\n3"},
      {u"a<br><br>b", u"a\n\nb"},
      {u"<p>a</p><br>b", u"a\n\n\nb"},
      {u"x<script>if (a<b) document.write('</p>');</script>y", u"xy"},
      {u"x<script type=\"t\">a</scriptx></SCRIPT >y", u"xy"},
      {u"x<style>p{}</style>y", u"xy"},
      {u"x<script/>y", u"xy"},
      {u"a<!-- hidden <b> -->b", u"ab"},
      {u"a<!-->b", u"ab"},
      {u"a<!DOCTYPE html>b<?xml x?>c", u"abc"},
      {u"<a href=\"x>y\" title='>'>link</a>", u"link"},
      {u"1 < 2 and 3 <= 4", u"1 < 2 and 3 <= 4"},
      {u"a</ b>c</>d", u"acd"},
      {u"<pre>  a\r\n   b\n</pre>", u"  a\n   b\n"},
      {u"x<pre>a  b</pre>y", u"x\na  b\ny"},
      {u"tail <unclosed", u"tail"},
      {u"tail <!-- open", u"tail"},
      {u"tail <", u"tail <"},
      // References.
      {u"&lt;&gt;&amp;&quot;&apos;", u"<>&\"'"},
      {u"&amp &copy 2024", u"& \u00A9 2024"},
      {u"&ampx &notit; &notin;", u"&x \u00ACit; \u2209"},
      {u"&alpha &alpha;", u"&alpha \u03B1"},
      {u"&unknown; & x &", u"&unknown; & x &"},
      {u"&#65;&#x42;&#X43;&#68", u"ABCD"},
      {u"&#x1F600;", u"\U0001F600"},
      {u"&#0;&#xD800;&#x110000;&#99999999999;", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {u"&#128;&#x9F;&#x81;", u"\u20AC\u0178\u0081"},
      {u"&#;&#x;&#", u"&#;&#x;&#"},
      {u"&nGt;&fjlig;", u"\u226B\u20D2fj"},
      {u"a&nbsp;&nbsp;b", u"a\u00A0\u00A0b"},
      {u"a&NewLine;&Tab;b", u"a b"},
  };
  for (const auto& [html, text] : cases) {
    EXPECT_EQ(ToText(html), text) << Narrow(html);
  }
}

TEST(HtmlToText, EveryNamedReference) {
  // Each line: a reference name (with or without ';') and its code points in hex,
  // taken from Python's html.entities.html5 (see the file's header).
  std::ifstream file(TAVI_TEXT_TEST_DATA "/html5_entities.txt");
  ASSERT_TRUE(file.is_open());
  std::string line;
  size_t count = 0;
  while (std::getline(file, line)) {
    if (line.empty() || line[0] == '#') continue;
    const size_t tab = line.find('\t');
    ASSERT_NE(tab, std::string::npos);
    std::u16string html = u"&";
    for (size_t i = 0; i < tab; ++i) html += static_cast<char16_t>(line[i]);
    std::u16string expected;
    std::istringstream values(line.substr(tab + 1));
    std::string hex;
    while (values >> hex) {
      const char32_t c = static_cast<char32_t>(std::stoul(hex, nullptr, 16));
      if (c >= 0x10000) {
        expected += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
        expected += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
      } else {
        expected += static_cast<char16_t>(c);
      }
    }
    // White space that a reference stands for is collapsed like any other; put
    // the reference between letters to see it.
    const std::u16string got = ToText(u"[" + html + u"]");
    std::u16string want = u"[" + expected + u"]";
    if (expected == u"\t" || expected == u"\n") want = u"[ ]";
    EXPECT_EQ(got, want) << line;
    ++count;
  }
  EXPECT_EQ(count, 2231u);
}

TEST(HtmlToText, FunctionAndFilterAgreeOnAnySplit) {
  const std::u16string pieces[] = {
      u"<p>",       u"</p>", u"<br>", u"&amp",       u"&amp;", u"&#x4",  u"1;",       u"<script>",
      u"</script>", u"<!--", u"-->",  u"  ",         u"\r\n",  u"<pre>", u"</pre>",   u"word",
      u"&notit;",   u"<",    u"&",    u"\U0001F600", u"<td>",  u"\"",    u"<a b='>'>"};
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    std::u16string html;
    for (int n = random() % 40; n > 0; --n) html += pieces[random() % std::size(pieces)];
    const std::u16string whole = ToText(html);

    XBuffer direct;
    ASSERT_TRUE(XHtmlToText(direct, html.data(), html.size()));
    EXPECT_EQ(Units(direct), whole);

    XBuffer target;
    XHtmlToTextIO filter(&target);
    const auto* bytes = reinterpret_cast<const uint8_t*>(html.data());
    size_t at = 0;
    while (at < html.size() * 2) {
      const size_t n = std::min<size_t>(random() % 7, html.size() * 2 - at);
      ASSERT_TRUE(filter._Write(bytes + at, static_cast<uint32_t>(n)));
      at += n;
    }
    ASSERT_TRUE(filter._Flush());
    EXPECT_EQ(Units(target), whole) << Narrow(html);
  }
}

TEST(TextToHtml, EscapesAndLineBreaks) {
  EXPECT_EQ(ToHtml(u""), u"");
  EXPECT_EQ(ToHtml(u"a<b & \"c\" > d's"), u"a&lt;b &amp; &quot;c&quot; &gt; d's");
  EXPECT_EQ(ToHtml(u"1\r\n2\n3\r4\r\r\n"), u"1<br>\r\n2<br>\n3<br>\r4<br>\r<br>\r\n");
  EXPECT_EQ(ToHtml(u"\U0001F600\xD800"), u"\U0001F600\xD800");
  EXPECT_EQ(ToHtml(u"\"\"\""), u"&quot;&quot;&quot;");  // the largest growth

  // The filter gives the same for every split, also between CR and LF.
  const std::u16string text = u"x<y>\r\n&z\"\r\rq\n";
  const std::u16string html = ToHtml(text);
  for (size_t split = 0; split <= text.size() * 2; ++split) {
    XBuffer target;
    XTextToHtmlIO filter(&target);
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    ASSERT_TRUE(filter._Write(bytes, static_cast<uint32_t>(split)));
    ASSERT_TRUE(filter._Write(bytes + split, static_cast<uint32_t>(text.size() * 2 - split)));
    ASSERT_TRUE(filter._Flush());
    EXPECT_EQ(Units(target), html) << split;
  }
  XBuffer direct;
  ASSERT_TRUE(XTextToHtml(direct, text.data(), text.size()));
  EXPECT_EQ(Units(direct), html);
}

TEST(TextToHtml, PlainTextSurvivesTheRoundTrip) {
  // Text without runs of white space or spaces at line ends comes back as it was.
  const std::u16string texts[] = {u"a<b>&amp;c", u"line one\nline two", u"x \"q\" & <tag/>",
                                  u"&#65; &lt; stay literal"};
  for (const std::u16string& text : texts) EXPECT_EQ(ToText(ToHtml(text)), text) << Narrow(text);
}

TEST(HtmlFilters, ReadingFailsAndNextStreamIsNeeded) {
  XBuffer source;
  XHtmlToTextIO html(&source);
  char16_t c;
  uint8_t bytes[4];
  EXPECT_EQ(html._Read(bytes, 4), 0u);
  EXPECT_FALSE(html._ReadChar(c));
  EXPECT_EQ(html.GetErrorCode(), kErrInternal);
  XTextToHtmlIO text;
  EXPECT_FALSE(text._Write(u"a", 2));
  EXPECT_FALSE(text._Read(bytes, 4));
  XHtmlToTextIO unhooked;
  EXPECT_FALSE(unhooked._Write(u"a", 2));
  EXPECT_FALSE(unhooked._Flush());
}

}  // namespace
}  // namespace tavi
