//===- buffer_test.cpp - XBuffer: memory, positions, stream slots, text ----===//
#include "tavi/core/buffer.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/fake_ui.h"
#include "tavi/core/title_text.h"
#include "tavi/resource/string_resource.h"

namespace tavi {
namespace {

using Sizes = std::vector<uint32_t>;

// What a call left: the error it reported (kOk when it succeeded, 0 when it failed
// without one), then the allocated size, the data end and the read cursor.
constexpr uint32_t kOk = ~0u;
using State = std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>;
State Did(bool ok, const XBuffer& b) {
  return {ok ? kOk : b.GetErrorCode(), b.GetBufferSize(), b.GetBufferPos(), b.GetCurrentPos()};
}
State StateOf(const XBuffer& b) {
  return Did(true, b);
}

// The data as text; the text members also keep a 0 code unit right after it.
std::u16string Data(const XBuffer& b) {
  if (b.GetBuffer() != nullptr) {
    EXPECT_EQ(*b._GetStringAt(b.GetBufferPos() / 2), 0) << "terminated";
  }
  return std::u16string(reinterpret_cast<const char16_t*>(b.GetBuffer()), b.GetBufferPos() / 2);
}
std::string Bytes(const XBuffer& b) {
  return std::string(static_cast<const char*>(b.GetBuffer()), b.GetBufferPos());
}

// The count an edit returned and the text it left.
using Edit = std::pair<uint32_t, std::u16string>;
Edit After(uint32_t count, const XBuffer& b) {
  return {count, Data(b)};
}

XBuffer Text(const char16_t* s) {
  XBuffer b;
  b.Set(s);
  return b;
}

XBuffer Filled(const char* bytes) {
  XBuffer b;
  b._Write(bytes, static_cast<uint32_t>(std::strlen(bytes)));
  return b;
}

// Records the sizes asked of the block allocator; with fail set nothing is allocated.
class RecordingBuffer : public XBuffer {
 public:
  using XBuffer::XBuffer;
  Sizes requests;
  bool fail = false;

 protected:
  bool _BufferRealloc(uint32_t size) override {
    requests.push_back(size);
    return !fail && XBuffer::_BufferRealloc(size);
  }
};

TEST(BufferGrowth, StepsOfTheGranularity) {
  // Each row grows a fresh buffer through its requests in order.
  const struct {
    uint32_t granularity;
    Sizes requests, reallocs;
  } kCases[] = {
      {32, {1, 32}, {32}},          // a size that fits never reallocates
      {32, {1, 40, 10}, {32, 64}},  // never shrinks
      {32, {32}, {64}},             // a multiple of the granularity gets a full step
      {7, {15}, {21}},
      {0, {5}, {6}},  // granularity 0 is 1
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.granularity << " " << c.requests.back());
    RecordingBuffer b(c.granularity);
    for (uint32_t r : c.requests) ASSERT_TRUE(b.AllocBuffer(r));
    EXPECT_EQ(b.requests, c.reallocs);
    EXPECT_EQ(b.GetBufferSize(), c.reallocs.back());
    // Owned blocks keep 4 spare bytes, so a terminator fits after the last usable one.
    std::memset(b.GetBuffer(), 'x', b.GetBufferSize() + 4);
  }
}

TEST(BufferGrowth, SizesNearTheLimit) {
  RecordingBuffer b;
  b.fail = true;
  EXPECT_EQ(Did(b.AllocBuffer(0xFFFFFFF0u), b), State(kErrNoMemory, 0, 0, 0));
  EXPECT_EQ(b.requests, Sizes{0xFFFFFFF0u}) << "no rounding near the limit";
  b.SetWinError(5);
  EXPECT_EQ(Did(b.AllocBuffer(10), b), State(5, 0, 0, 0))
      << "out of memory only when no error is pending";
  for (uint32_t size : {0xFFFFFFFEu, 0xFFFFFFFFu}) {
    RecordingBuffer c;
    EXPECT_EQ(Did(c.AllocBuffer(size), c), State(kErrOutOfRange, 0, 0, 0));
    EXPECT_TRUE(c.requests.empty());
  }
  // Growing tests the allocated size (32) for overflow; the request adds the data end (3).
  XBuffer g = Filled("abc");
  EXPECT_EQ(Did(g.GrowBuffer(0xFFFFFFFFu - 31), g), State(kErrOutOfRange, 32, 3, 0));
  EXPECT_EQ(Did(g.GrowBuffer(29), g), State(kOk, 32, 3, 0));
  ASSERT_TRUE(g.GrowBuffer(30));
  EXPECT_EQ(g.ReserveBufferMem(5), g._GetBufferAt(3));
  EXPECT_EQ(StateOf(g), State(kOk, 64, 8, 0));
}

TEST(BufferAttach, SizeMinusOneAndNoGrowth) {
  char block[10] = "123456789";
  XBuffer b;
  b.AttachBuffer(block, 10, true);
  EXPECT_EQ(StateOf(b), State(kOk, 9, 10, 0));
  EXPECT_EQ(Did(b._Write("x", 1), b), State(0, 9, 10, 0)) << "no growth, no error";
  // Reset forgets the block but keeps its recorded size; the next write allocates.
  EXPECT_EQ(Did(b.ResetBuffer(), b), State(kOk, 9, 0, 0));
  EXPECT_EQ(b.GetBuffer(), nullptr);
  ASSERT_TRUE(b._Write("xy", 2));
  EXPECT_EQ(std::memcmp(block, "123456789", 10), 0);

  XBuffer half;
  half.AttachBuffer(block, 10, false);
  EXPECT_EQ(Did(half._Write("abcdefghi", 9), half), State(kOk, 9, 9, 0));
  EXPECT_FALSE(half._Write("j", 1));
  half.FreeBuffer();  // attached: not freed (asan checks)
  EXPECT_EQ(block[0], 'a');
  XBuffer none;
  none.AttachBuffer(block, 0, false);
  EXPECT_EQ(Did(none.AllocBuffer(1), none), State(0, 0, 0, 0)) << "no bytes, no usable byte";
}

TEST(BufferAttach, AssumeTakesOwnership) {
  auto* block = static_cast<char*>(std::malloc(8));
  std::memcpy(block, "abcdefgh", 8);
  XBuffer b;
  b.AssumeBuffer(block, 8, true);
  EXPECT_EQ(StateOf(b), State(kOk, 7, 8, 0));
  ASSERT_TRUE(b._Write("i", 1));  // grows the assumed block
  EXPECT_EQ(Bytes(b), "abcdefghi");

  XBuffer other = Filled("zz");
  other.SetErrorCode(kErrEndOfData);
  other._SetCurrentPos(1);
  b.AssumeBuffer(other);
  EXPECT_EQ(StateOf(b), State(kOk, 32, 2, 1));
  // The error stays with its object.
  EXPECT_EQ(Did(false, other), State(kErrEndOfData, 0, 0, 0));
}

TEST(BufferCopy, SharedBlocksAndAppendsOfOwnData) {
  XBuffer a = Filled("0123456789abcdefghijklmnopqrstu");
  XBuffer b = a;
  b.DiscardBufferOwnership();  // only one side may free the block
  static_cast<char*>(a.GetBuffer())[0] = 'j';
  EXPECT_EQ(static_cast<char*>(b.GetBuffer())[0], 'j');
  EXPECT_FALSE(b.AllocBuffer(100)) << "the side without ownership never grows the block";
  // The source lies in the block that the write reallocates.
  ASSERT_TRUE(a._Write(b.GetBuffer(), 31) && a._Write(a._GetBufferAt(10), 40));
  EXPECT_EQ(std::memcmp(a._GetBufferAt(31), "j123456789abcdefghijklmnopqrstu", 31), 0);
  EXPECT_EQ(std::memcmp(a._GetBufferAt(62), a._GetBufferAt(10), 40), 0);

  void* block = a.GetBuffer();
  a.DiscardBuffer();
  EXPECT_EQ(a.GetBuffer(), nullptr);
  EXPECT_EQ(StateOf(a), State(kOk, 0, 0, 0));
  std::free(block);  // a must not free it again
}

TEST(BufferPositions, DataEndChecks) {
  XBuffer b = Filled("0123456789");
  ASSERT_TRUE(b.SetCurrentPos(8));
  // The cursor is lowered with the data end, which may reach the allocated size.
  EXPECT_EQ(Did(b.SetBufferPos(5), b), State(kOk, 32, 5, 5));
  EXPECT_EQ(Did(b.SetBufferPos(33), b), State(kErrOutOfRange, 32, 5, 5));
  EXPECT_EQ(Did(b.SetBufferPos(32), b), State(kOk, 32, 32, 5));
  EXPECT_EQ(Did(b.ShiftBufferPos(-32), b), State(kOk, 32, 0, 5));
  EXPECT_EQ(Did(b.ShiftBufferPos(-1), b), State(kErrOutOfRange, 32, 0, 5));
  // Shifting may pass the allocation and leaves the cursor alone.
  EXPECT_EQ(Did(b.ShiftBufferPos(100), b), State(kOk, 32, 100, 5));
  b._SetBufferPos(0xFFFFFFF0u);
  EXPECT_FALSE(b.ShiftBufferPos(0x10));
  EXPECT_TRUE(b.ShiftBufferPos(0x0F));
  b._SetBufferPos(10);
  EXPECT_EQ(Did(b.SetStringPos(3) && b.ShiftStringPos(-1), b), State(kOk, 32, 4, 5));
}

TEST(BufferPositions, CursorChecksTestTheOldValue) {
  // Callers park the cursor anywhere; the next checked call notices it.
  XBuffer b = Filled("0123456789");
  EXPECT_EQ(Did(b.SetCurrentPos(1000), b), State(kOk, 32, 10, 1000));
  EXPECT_EQ(Did(b.ResetCurrentPos(), b), State(kErrOutOfRange, 32, 10, 1000));
  EXPECT_FALSE(b.SetCurrentPos(0) || b.ShiftCurrentPos(-995));
  EXPECT_EQ(b.GetCurrentPos(), 1000u);
  b._SetCurrentPos(10);
  EXPECT_EQ(Did(b.ShiftCurrentPos(50), b), State(kOk, 32, 10, 60));
  char c;
  EXPECT_EQ(b._Read(&c, 1), 0u) << "a cursor beyond the data reads nothing";
  b._SetCurrentPos(3);
  EXPECT_EQ(Did(b.ResetCurrentPos(), b), State(kOk, 32, 10, 0));
}

TEST(BufferStream, ReadsSkipsAndUnreads) {
  XBuffer b = Filled("0123456789");
  char out[100];
  EXPECT_EQ(b._Read(out, 4), 4u);
  EXPECT_EQ(b._Read(out, 100), 6u);
  EXPECT_TRUE(b.IsOk()) << "a short read is the end of data, not an error";
  b._SetCurrentPos(8);
  EXPECT_EQ(Did(b._ShiftForward(3), b), State(kErrEndOfData, 32, 10, 8));
  EXPECT_EQ(Did(b._ShiftForward(2), b), State(kOk, 32, 10, 10));
  // Unreading takes back the last written code unit, not the cursor.
  EXPECT_EQ(Did(b._UnreadChar(u'x'), b), State(kOk, 32, 8, 10));
  b._SetBufferPos(1);
  EXPECT_EQ(Did(b._UnreadChar(u'x'), b), State(kErrCannotUnread, 32, 1, 10));
}

TEST(BufferStream, TransfersToAndFromOtherStreams) {
  XBuffer source = Filled("abcdef"), target = Filled("x");
  EXPECT_TRUE(target.ReadToBuffer(source, 4));
  // What arrived is kept, and the source is told too.
  EXPECT_EQ(Did(target.ReadToBuffer(source, 4), target), State(kErrEndOfData, 32, 7, 0));
  EXPECT_EQ(source.GetErrorCode(), kErrEndOfData);
  char fixed[4];
  XBuffer small;
  small.AttachBuffer(fixed, 4, false);
  source.ResetError();
  source.ResetCurrentPos();
  EXPECT_EQ(small._ReadToBuffer(source, 10), 0u);
  EXPECT_TRUE(source.IsOk()) << "a silent growth failure passes on no error";

  XBuffer saved;
  target._SetCurrentPos(3);
  ASSERT_TRUE(target.SaveBuffer(saved));
  EXPECT_EQ(Bytes(saved), "xabcdef") << "the whole data, wherever the cursor is";
  // ReadTo moves exactly the count, to another buffer or to itself.
  ASSERT_TRUE(saved.ReadTo(source, 4) && saved.ReadTo(saved, 3));
  EXPECT_EQ(Bytes(saved), "xabcdefdef");
  // Nothing is written on a short read, and what was left is consumed.
  EXPECT_EQ(Did(saved.ReadTo(source, 4), saved), State(kErrEndOfData, 32, 10, 10));
  EXPECT_EQ(Did(false, source), State(kErrEndOfData, 32, 10, 0));
}

TEST(BufferText, AddAndSetForms) {
  XBuffer b;
  EXPECT_EQ(After(b.EmptyString(), b), Edit(1, u""));
  ASSERT_TRUE(b._Write(u"ab", 4) && b.EndAsString());
  ASSERT_TRUE(b.Add(u"c") && b.Add(u"defg", 4u));  // byte count: two characters
  ASSERT_TRUE(b.Add(u"xyz" + 1, u"xyz" + 3) && b.Add(Text(u"!")));
  const char16_t* list[] = {u"1", u"23", nullptr};
  EXPECT_EQ(After(b.Add(list), b), Edit(1, u"abcdeyz!123"));

  const char16_t* rest = b.Set(u"key=value", u'=');
  EXPECT_EQ(After(rest != nullptr, b), Edit(1, u"key"));
  EXPECT_EQ(std::u16string(rest), u"value");
  // No separator: the text ended.
  EXPECT_EQ(After(b.Add(rest, u'=') != nullptr, b), Edit(0, u"keyvalue"));

  ASSERT_TRUE(b.Set(0x20000004, nullptr));
  EXPECT_EQ(Data(b), XLibStringResource->Get(0x20000004));
  EXPECT_EQ(After(b.Set(12345, nullptr), b), Edit(1, u"???"));
  // Setting from itself or from a copy that shares the block keeps the text.
  ASSERT_TRUE(b.Set(b));
  XBuffer shared = b;
  shared.DiscardBufferOwnership();
  EXPECT_EQ(After(b.Set(shared), b), Edit(1, u"???"));
  ASSERT_TRUE(b.GetModuleFileNameW(nullptr));
  EXPECT_NE(Data(b).find(u"tavi_core_tests"), std::u16string::npos);

  char16_t block[1];
  XBuffer attached;
  attached.AttachBuffer(block, 2, false);
  attached.ResetBuffer();
  attached.DiscardBufferOwnership();
  EXPECT_FALSE(attached.EmptyString()) << "an attached buffer without a block cannot empty";
}

TEST(BufferText, TitlesFromTheOwnBlock) {
  TTitleText title;
  title.Set(u"ab", 4, false);
  XBuffer s;
  EXPECT_EQ(After(s.Set(title) && s.Add(title), s), Edit(1, u"abab"));
  // A title attached to the buffer's own block survives the block moving.
  s.Set(u"0123456789");
  title.Set(s._GetStringAt(2), 6, true);
  EXPECT_EQ(After(s.Add(title), s), Edit(1, u"0123456789234"));
  title.Set(s._GetStringAt(4), 4, true);
  EXPECT_EQ(After(s.Set(title), s), Edit(1, u"45"));
}

TEST(BufferText, Replacements) {
  XBuffer b = Text(u"a--b---c");
  EXPECT_EQ(After(b.RemoveMultiChars(u'-'), b), Edit(3, u"a-b-c"));
  EXPECT_EQ(After(b.RemoveChar(u'-'), b), Edit(2, u"abc"));
  EXPECT_EQ(After(b.ReplaceChar(u'b', u'B'), b), Edit(1, u"aBc"));
  EXPECT_EQ(After(b.ReplaceChars(u"ac", u'_'), b), Edit(2, u"_B_"));

  XBuffer s = Text(u"one two one");
  EXPECT_EQ(After(s.ReplaceString(u"one", 6, u"three", 10), s), Edit(2, u"three two three"));
  EXPECT_EQ(After(s.ReplaceStringToChar(u"three", 10, u'3'), s), Edit(2, u"3 two 3"));
  EXPECT_EQ(After(s.ReplaceStringIC(u"TWO", 6, u"", 0), s), Edit(1, u"3  3"));
  EXPECT_EQ(s.ReplaceString(u"", 0, u"x", 2), 0u);
  // A fixed block that cannot hold the longer result keeps its text.
  char16_t fixed[5] = u"3  3";
  XBuffer f;
  f.AttachBuffer(fixed, 8, true);
  EXPECT_EQ(After(f.ReplaceString(u"3", 2, u"33", 4), f), Edit(0, u"3  3"));
  XBuffer soft = Text(u"wrapped\r\r\nline\r\nend");
  EXPECT_EQ(After(soft.ReplaceSoftReturns(), soft), Edit(1, u"wrappedline\r\nend"));

  // The unquoted forms leave quoted text alone; an open quote protects the rest.
  XBuffer q = Text(u"a,b,\"c,d\",e");
  EXPECT_EQ(After(q.ReplaceUnquotedChar(u',', u';', u'"', u'"'), q), Edit(3, u"a;b;\"c,d\";e"));
  XBuffer c = Text(u"x=1 [x=2] x=3 [x=4");
  EXPECT_EQ(After(c.ReplaceUnquotedString(u"x=", 4, u"y:", 4, u'[', u']'), c),
            Edit(2, u"y:1 [x=2] y:3 [x=4"));
  EXPECT_EQ(c.ReplaceUnquotedStringIC(u"Y:", 4, u"", 0, u'[', u']'), 2u);
  EXPECT_EQ(After(c.ReplaceUnquotedStringToChar(u"1 ", 4, u'#', u'[', u']'), c),
            Edit(1, u"#[x=2] 3 [x=4"));
  EXPECT_EQ(After(c.ReplaceUnquotedChars(u"3x", u'.', u'[', u']'), c), Edit(1, u"#[x=2] . [x=4"));
}

TEST(BufferText, Cuts) {
  XBuffer b = Text(u"  ");
  EXPECT_EQ(After(b.RemoveEndChars(u' '), b), Edit(1, u" ")) << "one character always stays";
  b.Set(u"ab...");
  EXPECT_EQ(After(b.RemoveEndChars(u'.'), b), Edit(3, u"ab"));

  b.Set(u"dir/sub/file");
  b._SetCurrentPos(20);
  EXPECT_EQ(After(b.CutLast(u'/'), b), Edit(1, u"dir/sub"));
  EXPECT_EQ(b.GetCurrentPos(), 14u) << "the cursor is lowered with the data end";
  EXPECT_FALSE(b.CutLast(u'?') || XBuffer().CutLast(u'/'));

  b.Set(u"key: value: more");
  EXPECT_EQ(After(b.CutTo(u':'), b), Edit(1, u" value: more"));
  EXPECT_FALSE(b.CutTo(u'#'));
  EXPECT_EQ(After(b.CutRTo(u':') && b.Cut(1u), b), Edit(1, u"more"));
  EXPECT_EQ(After(b.Cut(b._GetStringAt(1), b._GetStringAt(3)), b), Edit(1, u"me"));
  EXPECT_FALSE(b.Cut(b._GetStringAt(2), b._GetStringAt(1)));
  EXPECT_FALSE(b.Cut(b._GetStringAt(0), b._GetStringAt(3)));
  EXPECT_EQ(After(b.Cut(100u), b), Edit(1, u""));
}

TEST(BufferText, CompareIsBytewise) {
  const XBuffer abc = Text(u"abc"), ab = Text(u"ab"), abd = Text(u"abd");
  EXPECT_EQ((std::vector<int>{abc.Compare(abd), abd.Compare(abc), ab.Compare(abc), abc.Compare(ab),
                              abc.Compare(u"abc", 6), abc.IsDifferent(u"abc", 6),
                              abc.IsDifferent(ab), XBuffer().Compare(nullptr, 0)}),
            (std::vector<int>{-1, 1, -1, 1, 0, 0, 1, 0}));
}

TEST(BufferClipboard, HtmlRoundTripAndFormats) {
  test::ScopedFakeUi ui;
  XBuffer html = Filled("<b>bold</b>");
  ASSERT_TRUE(html.AddHTMLClipboardData(nullptr));
  const uint32_t format = test::Fake().formats[u"HTML Format"];
  const std::string& raw = test::Fake().clipboard[format];
  EXPECT_EQ(raw.rfind("Version:0.9\r\nStartHTML:", 0), 0u);
  auto field = [&](const char* name) {
    return std::stoul(raw.substr(raw.find(name) + std::strlen(name), 10));
  };
  EXPECT_EQ(raw.substr(field("StartFragment:"), 11), "<b>bold</b>");
  EXPECT_EQ(field("EndFragment:") - field("StartFragment:"), 11u);
  EXPECT_EQ(field("EndHTML:") + 1, raw.size()) << "the offsets count the stored bytes";

  XBuffer back;
  ASSERT_TRUE(back.GetHTMLFormat(nullptr));
  EXPECT_EQ(Bytes(back), "<b>bold</b>");
  // A header with offsets outside the data gives the whole data.
  test::Fake().clipboard[format] = "StartFragment:0000000005\r\nEndFragment:0000009999\r\nxy";
  ASSERT_TRUE(back.GetHTMLFormat(nullptr));
  EXPECT_EQ(back.GetBufferPos(), test::Fake().clipboard[format].size());

  ASSERT_TRUE(back.Set(u"<") && back.AddClipboardFormatName(format));
  EXPECT_EQ(Data(back), u"<HTML Format");
  EXPECT_FALSE(back.AddClipboardFormatName(12345));
  const uint32_t wanted[] = {99, format, 0};
  EXPECT_TRUE(back.IsClipboardFormatAvailable(wanted));
  EXPECT_FALSE(back.IsClipboardFormatAvailable(wanted, 1));
  EXPECT_FALSE(back.IsClipboardNativeTextFormatAvailable());
}

}  // namespace
}  // namespace tavi
