//===- utf8_test.cpp - The library's UTF-16 <-> UTF-8 converter ------------===//
#include "core/internal/utf8.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"

namespace tavi::internal {
namespace {

using Bytes = std::vector<uint8_t>;

// Runs body once per path this processor has, and restores the automatic choice.
template <typename Body>
void ForEachPath(Body body) {
  for (Utf8Path path : {Utf8Path::kPortable, Utf8Path::kSse2, Utf8Path::kAvx2}) {
    if (!SetUtf8Path(path)) continue;
    SCOPED_TRACE(static_cast<int>(path));
    body();
  }
  ResetUtf8Path();
}

struct Decoded {
  Utf8Status status;
  size_t consumed;
  size_t needed;
  std::u16string text;
};

Decoded Decode(const Bytes& in, size_t max_units = SIZE_MAX) {
  std::u16string out(in.size() + 1, u'\0');
  Decoded d{Utf8Status::kOk, 0, 0, {}};
  size_t produced = 0;
  d.status = DecodeUtf8(in.data(), in.size(), out.data(), std::min(max_units, out.size()),
                        &d.consumed, &produced, &d.needed);
  out.resize(produced);
  d.text = out;
  return d;
}

Bytes Encode(const std::u16string& text) {
  Bytes out(kUtf8PerUnit * text.size());
  out.resize(EncodeUtf8(text.data(), text.size(), out.data()));
  return out;
}

// The reference model: one code point at a time, straight from the definition.
void ReferenceAppend(uint32_t cp, Bytes& out) {
  if (cp < 0x80) {
    out.push_back(static_cast<uint8_t>(cp));
  } else if (cp < 0x800) {
    out.insert(out.end(),
               {static_cast<uint8_t>(0xC0 | (cp >> 6)), static_cast<uint8_t>(0x80 | (cp & 0x3F))});
  } else if (cp < 0x10000) {
    out.insert(out.end(), {static_cast<uint8_t>(0xE0 | (cp >> 12)),
                           static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F)),
                           static_cast<uint8_t>(0x80 | (cp & 0x3F))});
  } else {
    out.insert(out.end(), {static_cast<uint8_t>(0xF0 | (cp >> 18)),
                           static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F)),
                           static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F)),
                           static_cast<uint8_t>(0x80 | (cp & 0x3F))});
  }
}

void ReferenceAppend(uint32_t cp, std::u16string& out) {
  if (cp < 0x10000) {
    out += static_cast<char16_t>(cp);
  } else {
    out += static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
  }
}

TEST(Utf8, ByteExamplesAtTheRangeEdges) {
  const std::vector<std::pair<uint32_t, Bytes>> examples = {
      {0x00, {0x00}},
      {0x7F, {0x7F}},
      {0x80, {0xC2, 0x80}},
      {0x7FF, {0xDF, 0xBF}},
      {0x800, {0xE0, 0xA0, 0x80}},
      {0xD7FF, {0xED, 0x9F, 0xBF}},
      {0xE000, {0xEE, 0x80, 0x80}},
      {0xFFFD, {0xEF, 0xBF, 0xBD}},
      {0xFFFF, {0xEF, 0xBF, 0xBF}},
      {0x10000, {0xF0, 0x90, 0x80, 0x80}},
      {0x1F600, {0xF0, 0x9F, 0x98, 0x80}},
      {0x10FFFF, {0xF4, 0x8F, 0xBF, 0xBF}},
  };
  ForEachPath([&] {
    for (const auto& [cp, bytes] : examples) {
      std::u16string units;
      ReferenceAppend(cp, units);
      EXPECT_EQ(Encode(units), bytes) << cp;
      const Decoded d = Decode(bytes);
      EXPECT_EQ(d.status, Utf8Status::kOk) << cp;
      EXPECT_EQ(d.text, units) << cp;
    }
  });
}

TEST(Utf8, MalformedInputStopsAtTheOffendingSequence) {
  // Each input is "ab" followed by a malformed sequence and "cd".
  const std::vector<Bytes> malformed = {
      {0x80},                    // stray continuation
      {0xBF},                    //
      {0xC0, 0x80},              // overlong NUL
      {0xC1, 0xBF},              // overlong 7F
      {0xC2, 0x41},              // lead without continuation
      {0xE0, 0x80, 0x80},        // overlong 3-byte
      {0xE0, 0x9F, 0xBF},        //
      {0xED, 0xA0, 0x80},        // high surrogate D800
      {0xED, 0xBF, 0xBF},        // low surrogate DFFF
      {0xE1, 0x80, 0x41},        // third byte not a continuation
      {0xF0, 0x80, 0x80, 0x80},  // overlong 4-byte
      {0xF0, 0x8F, 0xBF, 0xBF},  //
      {0xF4, 0x90, 0x80, 0x80},  // above U+10FFFF
      {0xF1, 0x80, 0x80, 0x41},  // fourth byte not a continuation
      {0xF5, 0x80, 0x80, 0x80},  // lead bytes that never occur
      {0xFE},
      {0xFF},
  };
  ForEachPath([&] {
    for (const Bytes& bad : malformed) {
      Bytes in = {'a', 'b'};
      in.insert(in.end(), bad.begin(), bad.end());
      in.insert(in.end(), {'c', 'd'});
      const Decoded d = Decode(in);
      EXPECT_EQ(d.status, Utf8Status::kInvalid) << int(bad[0]);
      EXPECT_EQ(d.consumed, 2u) << int(bad[0]);
      EXPECT_EQ(d.text, u"ab") << int(bad[0]);
    }
  });
}

TEST(Utf8, PiecesEndingInsideASequence) {
  ForEachPath([] {
    // A valid prefix waits for the bytes it lacks ...
    for (const auto& [in, needed] :
         std::vector<std::pair<Bytes, size_t>>{{{'x', 0xC3}, 1},
                                               {{'x', 0xE2, 0x82}, 1},
                                               {{'x', 0xE2}, 2},
                                               {{'x', 0xF0, 0x9F, 0x98}, 1},
                                               {{'x', 0xF4}, 3}}) {
      const Decoded d = Decode(in);
      EXPECT_EQ(d.status, Utf8Status::kIncomplete);
      EXPECT_EQ(d.consumed, 1u);
      EXPECT_EQ(d.needed, needed);
      EXPECT_EQ(d.text, u"x");
    }
    // ... and a prefix that no continuation can repair is malformed at once.
    for (const Bytes& in :
         std::vector<Bytes>{{'x', 0xE0, 0x80}, {'x', 0xED, 0xA0}, {'x', 0xF4, 0x90}}) {
      const Decoded d = Decode(in);
      EXPECT_EQ(d.status, Utf8Status::kInvalid);
      EXPECT_EQ(d.consumed, 1u);
    }
  });
}

TEST(Utf8, DecodingStopsAtTheUnitLimit) {
  ForEachPath([] {
    const Bytes ascii(100, 'a');
    for (size_t limit : {0, 1, 15, 16, 17, 31, 32, 33, 64, 99}) {
      const Decoded d = Decode(ascii, limit);
      EXPECT_EQ(d.status, Utf8Status::kInvalid) << limit;
      EXPECT_EQ(d.consumed, limit);
      EXPECT_EQ(d.text.size(), limit);
    }
    EXPECT_EQ(Decode(ascii, 100).status, Utf8Status::kOk);
    // A pair needs two units of room.
    const Decoded pair = Decode({'a', 0xF0, 0x9F, 0x98, 0x80}, 2);
    EXPECT_EQ(std::make_tuple(pair.status, pair.consumed),
              std::make_tuple(Utf8Status::kInvalid, size_t{1}));
  });
}

TEST(Utf8, UnpairedSurrogatesEncodeAsReplacement) {
  ForEachPath([] {
    const Bytes fffd = {0xEF, 0xBF, 0xBD};
    EXPECT_EQ(Encode(u"\xD800"), fffd);
    EXPECT_EQ(Encode(u"\xDC00"), fffd);
    EXPECT_EQ(Encode(std::u16string{0xDC00, 0xDBFF}), (Bytes{0xEF, 0xBF, 0xBD, 0xEF, 0xBF, 0xBD}));
    EXPECT_EQ(Encode(std::u16string{0xD83D, 'a'}), (Bytes{0xEF, 0xBF, 0xBD, 'a'}));
  });
  // Pieces never end between the two halves of a pair.
  const char16_t units[] = {'a', 0xD83D, 0xDE00, 'b'};
  EXPECT_EQ(Utf16PieceLength(units, 4, 2), 1u);
  EXPECT_EQ(Utf16PieceLength(units, 4, 3), 3u);
  EXPECT_EQ(Utf16PieceLength(units, 4, 4), 4u);
  EXPECT_EQ(Utf16PieceLength(units, 2, 8), 2u);
}

// Random text of ASCII runs and other characters, of every length around the
// block sizes, through every path: decoding and encoding agree with the reference,
// and encoding works from code units at an odd address.
TEST(Utf8, PathsAgreeWithTheReference) {
  std::mt19937 rng(7);
  const uint32_t kinds[][2] = {
      {0x20, 0x7E}, {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}};
  for (int round = 0; round < 400; ++round) {
    const size_t count = round % 100;
    const int mix = round / 100;  // 0: ASCII only, then more and more other characters
    std::u16string units;
    Bytes bytes;
    for (size_t k = 0; k < count; ++k) {
      const auto& kind = kinds[(rng() % 4 < static_cast<uint32_t>(mix)) ? 1 + rng() % 4 : 0];
      const uint32_t cp = kind[0] + rng() % (kind[1] - kind[0] + 1);
      ReferenceAppend(cp, units);
      ReferenceAppend(cp, bytes);
    }
    SCOPED_TRACE(round);
    ForEachPath([&] {
      const Decoded d = Decode(bytes);
      EXPECT_EQ(d.status, Utf8Status::kOk);
      EXPECT_EQ(d.text, units);
      EXPECT_EQ(Encode(units), bytes);
      std::vector<uint8_t> odd(2 * units.size() + 1);
      std::memcpy(odd.data() + 1, units.data(), 2 * units.size());
      Bytes out(kUtf8PerUnit * units.size());
      out.resize(EncodeUtf8(odd.data() + 1, units.size(), out.data()));
      EXPECT_EQ(out, bytes);
    });
  }
}

TEST(Utf8, ReplacingDecoderAtTheSystemBoundary) {
  // One U+FFFD per maximal malformed piece: the valid prefix of a sequence, or one byte.
  const Bytes in = {0x61, 0xF1, 0x80, 0x80, 0xE1, 0x80, 0xC2, 0x62,
                    0x80, 0x63, 0x80, 0xBF, 0x64, 0xF0, 0x9F};
  const std::u16string want =
      u"a\xFFFD\xFFFD\xFFFD"
      u"b\xFFFD"
      u"c\xFFFD\xFFFD"
      u"d\xFFFD";
  ForEachPath([&] {
    std::u16string out(in.size(), u'\0');
    out.resize(DecodeUtf8Replacing(in.data(), in.size(), out.data()));
    EXPECT_EQ(out, want);
    EXPECT_EQ(platform::Utf8ToUtf16(reinterpret_cast<const char*>(in.data()), in.size()), want);
  });
  EXPECT_EQ(platform::Utf16ToUtf8(u"x\xD800\x00E9", 3), "x\xEF\xBF\xBD\xC3\xA9");
}

}  // namespace
}  // namespace tavi::internal
