//===- text_file_test.cpp - Loading and saving text files ------------------===//
#include "tavi/text/text_file.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "core/fake_ui.h"
#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/file/file.h"
#include "tavi/text/code_page.h"

namespace tavi {
namespace {

using test::Err;
using test::ScratchDir;
using test::Slurp;
using test::Spit;
using test::Str;

// Bytes from a literal, embedded zeros included.
template <size_t N>
std::string B(const char (&s)[N]) {
  return std::string(s, N - 1);
}

// The little-endian bytes of UTF-16 text.
std::string LE(const std::u16string& text) {
  std::string out;
  for (char16_t c : text) out += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
  return out;
}

std::string Data(const XBuffer& b) {
  return std::string(static_cast<const char*>(b.GetBuffer()), b.GetBufferPos());
}

struct Loaded {
  uint16_t format;
  std::string data;
  uint32_t error;
};

// Loads a file holding bytes; checks the uncounted terminator of a success.
Loaded Load(const ScratchDir& dir, const std::string& bytes, uint16_t source, uint16_t buffer) {
  Spit(dir / u"in.txt", bytes);
  XString16 name = Str(dir.Name(u"in.txt"));
  XBuffer b;
  b._Write("stale", 5);
  const uint16_t format = b.LoadTextFile(name, source, buffer, kFileRead);
  if (format != 0) {
    EXPECT_TRUE(b.GetBufferSize() >= b.GetBufferPos() + 2);
    EXPECT_EQ(b._GetBufferAt(b.GetBufferPos())[0] | b._GetBufferAt(b.GetBufferPos())[1], 0);
  }
  EXPECT_EQ(name.GetErrorSource(), 0);
  return {format, format != 0 ? Data(b) : std::string(), name.GetErrorCode()};
}

// Saves text held in buffer_format as a file; the file's bytes, or the error code.
std::tuple<bool, std::string, uint32_t> Save(const ScratchDir& dir, const std::string& text,
                                             uint16_t file_format, uint16_t buffer_format) {
  XString16 name = Str(dir.Name(u"out.txt"));
  XBuffer b;
  b._Write(text.data(), static_cast<uint32_t>(text.size()));
  const bool ok =
      b.SaveTextFile(name, file_format, buffer_format, kFileWrite | kFileCreateAlways, nullptr);
  return {ok, Slurp(dir / u"out.txt"), name.GetErrorCode()};
}

TEST(TextFile, LoadRecognisesMarksAndConverts) {
  struct Case {
    std::string file;
    uint16_t source, buffer;
    uint16_t found;
    std::string data;
  };
  const std::vector<Case> cases = {
      // Files holding only a mark load as empty text, converted or not; FF FE 00 00
      // is the 32-bit mark, not UTF-16 and a zero.
      {"", 1252, 1252, 1252, ""},
      {B("\xFF\xFE"), 0, 1252, 1025, ""},
      {B("\xFE\xFF"), 0, 1025, 1025, ""},
      {B("\xEF\xBB\xBF"), 0, 1030, 1030, ""},
      {B("\x00\x00\xFE\xFF"), 0, 33796, 33796, ""},
      {B("\xFF\xFE\x00\x00"), 0, 1025, 33795, ""},
      // UTF-16, and big-endian UTF-16 turned little-endian unless kept as it is.
      {B("\xFF\xFE\x41\x00\x0D\x00\x0A\x00"), 1252, 1025, 1025, LE(u"A\r\n")},
      {B("\xFE\xFF\x00\x41\xD8\x3D\xDE\x00"), 0, 1025, 1025, LE(u"A\U0001F600")},
      {B("\xFE\xFF\x00\x41"), 0, 1026, 1026, B("\x00\x41")},
      // 32-bit units, both byte orders, into UTF-16; FF FE 00 00 is not UTF-16.
      {B("\x00\x00\xFE\xFF\x00\x01\xF6\x00"), 0, 1025, 33795, LE(u"\U0001F600")},
      {B("\xFF\xFE\x00\x00\x41\x00\x00\x00\x00\xF6\x01\x00"), 0, 1025, 33795, LE(u"A\U0001F600")},
      {B("\x00\x00\xFE\xFF\x00\x00\x00\x41"), 0, 33795, 33795, B("\x41\x00\x00\x00")},
      // UTF-8, with a mark or by the source format (65001 names it too).
      {"\xEF\xBB\xBF"
       "caf\xC3\xA9",
       0, 1025, 1030, LE(u"caf\u00E9")},
      {"\xEF\xBB\xBF"
       "caf\xC3\xA9\r\n\xF0\x9F\x98\x80",
       0, 1252, 1030, "caf\xE9\r\n?"},
      {"caf\xC3\xA9", 65001, 1025, 65001, LE(u"caf\u00E9")},
      {"caf\xC3\xA9\r\n", 1030, 65001, 1030, "caf\xC3\xA9\r\n"},
      // 8-bit text: to UTF-16 through the table, line ends kept; within one code page
      // only CR LF becomes LF; between code pages through the table pair.
      {"caf\xE9\r\n", 1252, 1025, 1252, LE(u"caf\u00E9\r\n")},
      {"\xC0\xE1", 1251, 1025, 1251, LE(u"\u0410\u0431")},
      {"a\r\nb\r\r\n\r", 1252, 1252, 1252, "a\nb\r\n\r"},
      {"caf\xE9 \x80\r\n", 1252, 850, 1252, "caf\x82 ?\r\n"},
      // UTF-16 to 8-bit: a missing character, a pair among them, becomes one "?".
      {"\xFF\xFE" + LE(u"\u20AC\u6F22a\U0001F600\xD800") + "", 0, 1252, 1025, "\x80?a??"},
      {"\xFE\xFF" + B("\x00\xE9\x00\x0D\x00\x0A"), 0, 850, 1025, "\x82\r\n"},
  };
  ScratchDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.file) + " " + std::to_string(c.buffer));
    const Loaded got = Load(dir, c.file, c.source, c.buffer);
    EXPECT_EQ(std::make_tuple(got.format, got.data, got.error),
              std::make_tuple(c.found, c.data, 0u));
  }
}

TEST(TextFile, LoadWithTheUsersCodePages) {
  ScratchDir dir;
  const uint16_t oem = XGetLanguageCodePage(kLanguageUserDefault, kCodePageOem, false);
  const Loaded got = Load(dir, "plain\r\n", 0, 0);
  EXPECT_EQ(got.format, oem);
  EXPECT_EQ(got.data, "plain\r\n");  // two code pages: converted, not reduced
}

TEST(TextFile, LoadFailures) {
  const std::vector<std::tuple<std::string, uint16_t, uint16_t, uint32_t>> cases = {
      // UTF-8 only from UTF-8; other Unicode buffers only from their own format.
      {B("\xFF\xFE\x41\x00"), 0, 1030, 0x2000000E},
      {"abc", 1252, 1030, 0x2000000E},
      {B("\xFF\xFE\x41\x00"), 0, 1026, 0x2000000E},
      {B("\xFF\xFE\x41\x00"), 0, 33795, 0x2000000E},
      {"\xEF\xBB\xBF"
       "a",
       0, 33795, 0x2000000E},
      // Between code pages the pair of tables fails; towards UTF-16 or from it the
      // one table.
      {"abc", 4242, 1252, 0x2000000E},
      {"abc", 1252, 4242, 0x2000000E},
      {"abc", 4242, 1025, 0x2000000F},
      {"abc", 932, 1025, 0x2000000F},
      {B("\xFF\xFE\x41\x00"), 0, 932, 0x2000000F},
      {"\xEF\xBB\xBF"
       "a",
       0, 4242, 0x2000000F},
      // Malformed text.
      {"\xEF\xBB\xBF"
       "ab\xC3",
       0, 1025, 0x20000004},
      {"\xEF\xBB\xBF"
       "a\x80",
       0, 1252, 0x20000004},
      {"a\xED\xA0\x80", 65001, 1025, 0x20000004},
      {B("\xFF\xFE\x41"), 0, 1252, 0x20000004},
      // Wide text cut inside a unit, also when no conversion runs.
      {B("\xFF\xFE\x41"), 0, 1025, 0x20000004},
      {B("\xFE\xFF\x00\x41\x00"), 0, 1026, 0x20000004},
      {B("\xFF\xFE\x00\x00\x41\x00"), 0, 33795, 0x20000004},
      {B("\xFF\xFE\x00\x00\x00\x00\x11\x00"), 0, 1025, 0x20000004},
      {B("\xFF\xFE\x00\x00\x00\xD8\x00\x00"), 0, 1025, 0x20000004},
      {B("\xFF\xFE\x00\x00\x41\x00\x00"), 0, 1025, 0x20000004},
  };
  ScratchDir dir;
  for (const auto& [file, source, buffer, code] : cases) {
    SCOPED_TRACE(testing::PrintToString(file) + " " + std::to_string(buffer));
    const Loaded got = Load(dir, file, source, buffer);
    EXPECT_EQ(std::make_tuple(got.format, got.error), std::make_tuple(uint16_t{0}, code));
  }
  // A file that is not there: the platform's error, in the name.
  XString16 name = Str(dir.Name(u"missing.txt"));
  XBuffer b;
  EXPECT_EQ(b.LoadTextFile(name, 1252, 1025, kFileRead), 0);
  EXPECT_EQ(Err(name), std::make_tuple(2u, kErrSourcePlatform));
}

TEST(TextFile, SaveWritesMarksAndConverts) {
  const std::string e_utf16 = LE(u"\u00E9");
  const std::vector<std::tuple<std::string, uint16_t, uint16_t, std::string>> cases = {
      {e_utf16, 1025, 1025, B("\xFF\xFE\xE9\x00")},
      {e_utf16, 1030, 1025, B("\xEF\xBB\xBF\xC3\xA9")},
      {e_utf16, 65001, 1025, B("\xEF\xBB\xBF\xC3\xA9")},
      {e_utf16, 33795, 1025, B("\xFF\xFE\x00\x00\xE9\x00\x00\x00")},
      {e_utf16, 1252, 1025, "\xE9"},
      {e_utf16, 850, 1025, "\x82"},
      {"\xE9", 1025, 1252, B("\xFF\xFE\xE9\x00")},
      {"\xE9", 1030, 1252, B("\xEF\xBB\xBF\xC3\xA9")},
      {"\xE9", 33795, 1252, B("\xFF\xFE\x00\x00\xE9\x00\x00\x00")},
      {"\xE9\x80\r\n", 1252, 1252, "\xE9\x80\r\n"},
      {"\xE9\x80", 850, 1252, "\x82?"},
      {"\xC3\xA9", 1030, 1030, B("\xEF\xBB\xBF\xC3\xA9")},
      {B("\x00\xE9"), 1026, 1026, B("\x00\xE9")},
      {B("\xE9\x00\x00\x00"), 33795, 33795, B("\xFF\xFE\x00\x00\xE9\x00\x00\x00")},
      // Surrogates: a pair is one character, one alone a missing one.
      {LE(u"\U0001F600\xDC00"), 1030, 1025, B("\xEF\xBB\xBF\xF0\x9F\x98\x80\xEF\xBF\xBD")},
      {LE(u"\U0001F600\xDC00"), 33795, 1025, B("\xFF\xFE\x00\x00\x00\xF6\x01\x00\xFD\xFF\x00\x00")},
      {LE(u"\U0001F600\xDC00") + "x", 1252, 1025, "??"},  // an odd last byte is no unit
  };
  ScratchDir dir;
  for (const auto& [text, file_format, buffer_format, bytes] : cases) {
    SCOPED_TRACE(std::to_string(file_format) + " from " + std::to_string(buffer_format));
    EXPECT_EQ(Save(dir, text, file_format, buffer_format), std::make_tuple(true, bytes, 0u));
  }
}

TEST(TextFile, SaveFailuresWriteNothing) {
  const std::vector<std::tuple<uint16_t, uint16_t, uint32_t>> cases = {
      {1025, 1030, 0x2000000E},  // Unicode text other than UTF-16 only as itself
      {1252, 1030, 0x2000000E},  {1030, 33795, 0x2000000E}, {1025, 1026, 0x2000000E},
      {1026, 1025, 0x2000000E},  // the big-endian formats are not written
      {33796, 1252, 0x2000000E}, {4242, 1252, 0x2000000E},  // no table pair
      {1252, 4242, 0x2000000E},  {1025, 4242, 0x2000000F},  // no table
      {1030, 4242, 0x2000000F},  {4242, 1025, 0x2000000F},  {932, 1025, 0x2000000F},
  };
  ScratchDir dir;
  for (const auto& [file_format, buffer_format, code] : cases) {
    SCOPED_TRACE(std::to_string(file_format) + " from " + std::to_string(buffer_format));
    EXPECT_EQ(Save(dir, "text", file_format, buffer_format),
              std::make_tuple(false, std::string(), code));
  }
}

// Every pair of buffer and file format that converts both ways: saved, then loaded
// back with the file format as the source, the buffer holds the same bytes again.
TEST(TextFile, RoundTrips) {
  const std::u16string western = u"Gr\u00FC\u00DFe, caf\u00E9; 1 + 1 = 2\n";
  std::u16string wide = u"\u6F22\u5B57 \U0001F600 \u00E9\n";
  // A long text whose pair straddles the converters' piece boundaries.
  std::u16string longer(1023, u'x');
  longer += u"\U0001F600";
  for (int i = 0; i < 300; ++i) longer += u"\u0430\U0001F680b\u00E9 ";
  std::string western_1252;
  for (char16_t c : western) western_1252 += static_cast<char>(c);

  const std::vector<std::tuple<std::string, uint16_t, std::vector<uint16_t>>> texts = {
      {LE(western), 1025, {1025, 1030, 33795, 1252, 850, 1250}},
      {western_1252, 1252, {1025, 1030, 33795, 1252, 850}},
      {LE(wide), 1025, {1025, 1030, 33795}},
      {LE(longer), 1025, {1025, 1030, 33795}},
      {"\xE6\xBC\xA2 caf\xC3\xA9\n", 1030, {1030}},
      {B("\x41\x00\x00\x00\x00\xF6\x01\x00"), 33795, {33795}},
  };
  ScratchDir dir;
  for (const auto& [text, buffer_format, file_formats] : texts) {
    for (uint16_t file_format : file_formats) {
      SCOPED_TRACE(std::to_string(file_format) + " from " + std::to_string(buffer_format));
      const auto [saved, bytes, save_error] = Save(dir, text, file_format, buffer_format);
      ASSERT_TRUE(saved) << save_error;
      const Loaded back = Load(dir, bytes, file_format, buffer_format);
      EXPECT_EQ(std::make_tuple(back.format, back.error), std::make_tuple(file_format, 0u));
      EXPECT_TRUE(back.data == text);
    }
  }
}

TEST(TextFile, StreamFormsKeepTheErrorInTheFile) {
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"f.txt"));
  XFile out;
  ASSERT_TRUE(out.Open(name, kFileWrite | kFileCreateAlways, nullptr));
  XBuffer text;
  text._Write("abc", 3);
  EXPECT_FALSE(text.SaveTextFile(out, 1025, 4242));
  EXPECT_EQ(Err(out), std::make_tuple(0x2000000Fu, kErrSourcePlain));
  out.ResetError();
  EXPECT_TRUE(text.SaveTextFile(out, 1030, 1252));  // flushed: visible to a reader now
  EXPECT_EQ(Slurp(dir / u"f.txt"),
            "\xEF\xBB\xBF"
            "abc");
  ASSERT_TRUE(out.Close());

  XFile in;
  ASSERT_TRUE(in.Open(name, kFileRead, nullptr));
  XBuffer loaded;
  EXPECT_EQ(loaded.LoadTextFile(in, 0, 1025), 1030);
  EXPECT_EQ(Data(loaded), LE(u"abc"));
  ASSERT_TRUE(in.SeekToBegin() == 0);
  EXPECT_EQ(loaded.LoadTextFile(in, 0, 1026), 0);
  EXPECT_EQ(Err(in), std::make_tuple(0x2000000Eu, kErrSourcePlain));
}

TEST(TextFile, FailedSaveInBackupModeKeepsThePreviousFile) {
  test::ScopedFakeUi ui;
  ScratchDir dir;
  Spit(dir / u"doc.txt", "previous");
  XString16 name = Str(dir.Name(u"doc.txt"));
  XBuffer text;
  text._Write("new", 3);
  const uint16_t mode = kFileWrite | kFileBackup | kFileCreateAlways;
  EXPECT_EQ(text.ExTextFileMsg(name, 1025, 4242, mode, test::Window(1)), 0);
  EXPECT_EQ(test::Fake().boxes.size(), 1u);  // shown, then the error is consumed
  EXPECT_EQ(Slurp(dir / u"doc.txt"), "previous");
  EXPECT_FALSE(std::filesystem::exists(dir / u"doc.txt.bck"));
  // A save that works returns the format written and keeps the previous file aside.
  EXPECT_EQ(text.ExTextFile(name, 1030, 1252, mode, nullptr), 1030);
  EXPECT_EQ(Slurp(dir / u"doc.txt"), "\xEF\xBB\xBFnew");
  EXPECT_EQ(Slurp(dir / u"doc.txt.bck"), "previous");
}

}  // namespace
}  // namespace tavi
