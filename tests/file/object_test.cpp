//===- object_test.cpp - File headers and object persistence --------------===//
#include "tavi/file/object.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/fake_ui.h"
#include "file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/file/file.h"
#include "tavi/pack/container.h"

namespace tavi {
namespace {

using test::Err;
using test::ScratchDir;
using test::Slurp;
using test::Spit;
using test::Str;

constexpr uint16_t kSave = kFileWrite | kFileCreateAlways;
constexpr uint16_t kLoad = kFileRead;
constexpr uint32_t kNoteId = 0x45544F4E;

// A small saved class: one text, written as a 4-byte length and its bytes. Read
// commits only a complete text, and records the header it found in the caller field.
class Note : public XObject {
 public:
  std::string text;
  uint32_t seen_flags = 0xFFFFFFFF;  // header flags seen by the last Read or Write
  bool fail = false;                 // Write fails after the length

  bool Write(XIO& out) override {
    Seen(out);
    const uint32_t n = static_cast<uint32_t>(text.size());
    if (!out._Write(&n, 4)) return false;  // the tests run on little-endian hosts
    if (fail) out.SetUserError(77);
    return !fail && out._Write(text.data(), n);
  }
  bool Read(XIO& in) override {
    Seen(in);
    uint32_t n;
    if (!in.bRead(&n, 4)) return false;
    std::string read;
    char chunk[256];  // grows as data arrives, so a hostile length costs nothing
    for (uint32_t want; (want = std::min<uint32_t>(256, n - uint32_t(read.size()))) > 0;) {
      if (!in.bRead(chunk, want)) return false;
      read.append(chunk, want);
    }
    text = read;
    return true;
  }
  bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kNoteId, flags);
    header.reserved = 1;  // format version
    return header.Write(file);
  }
  bool ReadFileHeader(XFile& file, XFileHeader256& header) override {
    if (!header.Read(file)) return false;
    if (header.IsFor(kNoteId) && header.reserved == 1) return true;
    file.SetErrorCode(kErrCheckFailed);
    return false;
  }

 private:
  void Seen(XIO& stream) {
    const auto* header = static_cast<const XFileHeader256*>(stream.GetData());
    seen_flags = header ? header->flags : 0xFFFFFFFF;
  }
};

Note Sample() {
  Note n;
  for (int i = 0; i < 500; ++i) n.text += "line " + std::to_string(i) + " omega\n";
  return n;
}

bool GiveSecret(XString16& password, void*) {
  return password.Set(u"secret", uint32_t{12});
}
bool GiveWrong(XString16& password, void*) {
  return password.Set(u"Secret", uint32_t{12});
}
bool Decline(XString16&, void*) {
  return false;
}
bool DeclineWithCause(XString16& password, void*) {
  password.SetUserError(9);
  return false;
}

TEST(FileHeader, LayoutFlagsAndShortRead) {
  XFileHeader256 h;
  h.reserved = 0xDDCCBBAA;
  std::memset(h.extra, 0xEE, sizeof(h.extra));
  h.SetForWriting(7, 3);
  XBuffer out;
  ASSERT_TRUE(h.Write(out));
  const std::string expected = std::string(
                                   "\x07\0\0\0"
                                   "1234"
                                   "\xAA\xBB\xCC\xDD"
                                   "\x03\0\0\0",
                                   16) +
                               std::string(16, '\0');
  EXPECT_EQ(std::string(static_cast<char*>(out.GetBuffer()), out.GetBufferPos()), expected);

  XFileHeader256 back;
  ASSERT_TRUE(back.Read(out));
  EXPECT_TRUE(back.IsFor(7) && !back.IsFor(8));
  EXPECT_TRUE(back.IsCompressed() && back.IsCrypted() && back.IsPacked());
  EXPECT_FALSE(back.IsUTF8() || back.IsRAW());
  EXPECT_TRUE(back.IsAllFlags(3) && back.IsAnyFlag(6) && !back.IsAllFlags(6));
  back.flags = kFileHeaderUTF8;  // UTF-8 alone is neither raw nor packed
  EXPECT_FALSE(back.IsPacked() || back.IsRAW());

  // 31 bytes are too few: end of data, the record unchanged; a pending error stays.
  XBuffer in;
  in._Write(expected.data(), 31);
  back.flags = 0;
  EXPECT_FALSE(back.Read(in));
  EXPECT_EQ(in.GetErrorCode(), kErrEndOfData);
  EXPECT_EQ(back.flags, 0u);
  XBuffer failed;
  failed.SetUserError(3);
  EXPECT_FALSE(back.Read(failed));
  EXPECT_EQ(Err(failed), std::make_tuple(3u, kErrSourceUser));
}

TEST(Object, BaseSlotsRefuse) {
  XObject base;
  XBuffer stream;
  EXPECT_FALSE(base.Read(stream) || base.Write(stream));
  EXPECT_EQ(stream.GetErrorCode(), kErrInternal);
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"base"));
  EXPECT_FALSE(base.SaveFile(name, 0, nullptr, kSave, nullptr));
  EXPECT_EQ(Err(name), std::make_tuple(kErrInternal, kErrSourcePlain));
}

// Every flag combination round-trips; bits 0 and 1 alone decide between a raw and a
// packed body, and Read and Write see the header through the caller field.
TEST(Object, RoundTripsRawPackedAndEnciphered) {
  ScratchDir dir;
  const Note saved = Sample();
  for (uint32_t flags : {0u, 4u, 1u, 2u, 3u, 7u}) {
    SCOPED_TRACE(flags);
    Note note = saved;
    XString16 name = Str(dir.Name(u"note"));
    ASSERT_TRUE(note.SaveFile(name, flags, u"secret", kSave, nullptr)) << name.GetErrorCode();
    EXPECT_EQ(note.seen_flags, flags);
    const std::string bytes = Slurp(dir / u"note");
    ASSERT_GE(bytes.size(), 32u);
    if ((flags & 3) == 0) {
      EXPECT_EQ(bytes.substr(36), saved.text);
    } else {
      // A packed body opens with its method word: LZ when compressed, else stored.
      EXPECT_EQ(bytes.substr(32, 4), std::string((flags & 1) ? "\2\0\0\0" : "\0\0\0\0", 4));
      EXPECT_EQ(bytes.find("omega") == std::string::npos, (flags & 2) != 0);
    }

    Note loaded;
    ASSERT_TRUE(loaded.LoadFile(name, GiveSecret, nullptr, kLoad)) << name.GetErrorCode();
    EXPECT_EQ(loaded.seen_flags, flags);
    EXPECT_EQ(loaded.text, saved.text);

    // The file-object form gives the caller field back afterwards.
    XFile file;
    ASSERT_TRUE(file.Open(name, kLoad, nullptr));
    int mine = 0;
    file.SetData(&mine);
    Note again;
    ASSERT_TRUE(again.LoadFile(file, GiveSecret, nullptr));
    EXPECT_EQ(again.text, saved.text);
    EXPECT_EQ(file.GetData(), &mine);
  }

  // Without a header: the plain forms, and Huffman with hash and XOR.
  Note note = saved, plain, packed;
  XString16 name = Str(dir.Name(u"bare"));
  ASSERT_TRUE(note.SaveFile(name, kSave, nullptr));
  EXPECT_EQ(note.seen_flags, 0xFFFFFFFFu);  // no header in the caller field
  ASSERT_TRUE(plain.LoadFile(name, kLoad));
  EXPECT_EQ(plain.text, saved.text);
  ASSERT_TRUE(
      note.SaveFileEx(name, kXPackTryHuffman, kXPackHash | kXPackXOR, u"k", kSave, nullptr));
  ASSERT_TRUE(packed.LoadFileEx(name, 0, u"k", kLoad));
  EXPECT_EQ(packed.text, saved.text);
}

// Hostile, damaged or locked files fail with their cause and leave the object as
// it was.
TEST(Object, FailedLoadsChangeNothing) {
  ScratchDir dir;
  Note saved = Sample();
  XString16 packed_name = Str(dir.Name(u"packed"));
  ASSERT_TRUE(saved.SaveFile(packed_name, 3, u"secret", kSave, nullptr));
  const std::string packed = Slurp(dir / u"packed");
  XString16 raw_name = Str(dir.Name(u"raw"));
  ASSERT_TRUE(saved.SaveFile(raw_name, 0, nullptr, kSave, nullptr));
  const std::string raw = Slurp(dir / u"raw");

  std::string flipped = packed, wrong_id = raw, huge = raw;
  flipped[packed.size() / 2] ^= 0x10;
  wrong_id[0] ^= 1;
  huge.replace(32, 4, "\xFF\xFF\xFF\x7F");
  struct Case {
    const char* what;
    std::string bytes;
    XGetPassword ask;
    uint32_t code;
    int32_t source;
  } cases[] = {
      {"empty", "", GiveSecret, kErrEndOfData, kErrSourcePlain},
      {"short header", raw.substr(0, 31), GiveSecret, kErrEndOfData, kErrSourcePlain},
      {"wrong identifier", wrong_id, GiveSecret, kErrCheckFailed, kErrSourcePlain},
      {"truncated raw body", raw.substr(0, raw.size() - 1), GiveSecret, kErrEndOfData, 0},
      {"huge length", huge, GiveSecret, kErrEndOfData, kErrSourcePlain},
      {"truncated packed body", packed.substr(0, packed.size() - 5), GiveSecret, kErrEndOfData, 0},
      {"cut after the method", packed.substr(0, 36), GiveSecret, kErrEndOfData, 0},
      {"flipped byte", flipped, GiveSecret, kErrEndOfData, kErrSourcePlain},
      {"no password callback", packed, nullptr, 5u, kErrSourcePlain},
      {"declined", packed, Decline, 1223u, kErrSourcePlain},
      {"declined with a cause", packed, DeclineWithCause, 9u, kErrSourceUser},
      {"wrong password", packed, GiveWrong, kErrEndOfData, kErrSourcePlain},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Spit(dir / u"bad", c.bytes);
    XString16 bad = Str(dir.Name(u"bad"));
    Note loaded;
    loaded.text = "before";
    EXPECT_FALSE(loaded.LoadFile(bad, c.ask, nullptr, kLoad));
    EXPECT_EQ(Err(bad), std::make_tuple(c.code, c.source));
    EXPECT_EQ(loaded.text, "before");
  }

  // Saving enciphered without a password is refused by the container.
  EXPECT_FALSE(saved.SaveFile(raw_name, kFileHeaderCrypted, nullptr, kSave, nullptr));
  EXPECT_EQ(raw_name.GetErrorCode(), kErrDoesNotFit);
}

TEST(Object, BackupSurvivesAFailedSave) {
  ScratchDir dir;
  const uint16_t backup = kSave | kFileBackup;
  XString16 name = Str(dir.Name(u"doc"));
  Note first = Sample();
  ASSERT_TRUE(first.SaveFile(name, 1, nullptr, backup, nullptr));
  const std::string current = Slurp(dir / u"doc");

  // A save that fails midway puts the file back as it was, raw or packed. (A save
  // that works keeps the backup: the buffer-file tests show it on the same path.)
  for (uint32_t flags : {0u, 3u}) {
    first.fail = true;
    name.ResetError();
    EXPECT_FALSE(first.SaveFile(name, flags, u"pw", backup, nullptr));
    EXPECT_EQ(Err(name), std::make_tuple(77u, kErrSourceUser));
    EXPECT_EQ(Slurp(dir / u"doc"), current);
  }
}

TEST(BufferPacked, RoundTripsThroughStreamsAndFiles) {
  std::string data;
  for (int i = 0; i < 20000; ++i) data += std::to_string(i * 7919 % 1000) + ",";
  XBuffer source;
  source._Write(data.data(), static_cast<uint32_t>(data.size()));
  const uint32_t settings[][2] = {{kXPackCRC, 0},
                                  {kXPackAES | kXPackCRC, kXPackTryLZ},
                                  {kXPackXOR | kXPackHash, kXPackTryHuffman}};
  for (const auto& [flags, methods] : settings) {
    SCOPED_TRACE(flags * 16 + methods);
    XBuffer stream, back;
    ASSERT_TRUE(source.WriteBufferEx(stream, flags, methods, u"pw"));
    back._Write("x", 1);  // unpacking appends
    ASSERT_TRUE(back.ReadToBufferEx(stream, 0, u"pw"));
    EXPECT_EQ(std::string(static_cast<char*>(back.GetBuffer()), back.GetBufferPos()), "x" + data);
    EXPECT_TRUE(stream.EoB());
  }

  ScratchDir dir;
  XString16 name = Str(dir.Name(u"buf"));
  ASSERT_TRUE(source.SaveFileEx(name, kXPackAES | kXPackCRC, kXPackTryLZ, u"pw", kSave, nullptr));
  XBuffer loaded;
  loaded._Write("old", 3);
  ASSERT_TRUE(loaded.LoadFileEx(name, 0, u"pw", kLoad));  // replaces the content
  EXPECT_EQ(std::string(static_cast<char*>(loaded.GetBuffer()), loaded.GetBufferPos()), data);
  EXPECT_FALSE(loaded.LoadFileEx(name, 0, u"wrong", kLoad));
  EXPECT_EQ(name.GetErrorCode(), kErrEndOfData);

  // Nothing to pack is refused; the Msg form shows the failure.
  test::ScopedFakeUi ui;
  XBuffer empty;
  name.ResetError();
  EXPECT_FALSE(empty.SaveFileExMsg(name, kXPackCRC, 0, nullptr, kSave, test::Window(2)));
  EXPECT_EQ(test::Fake().boxes.size(), 1u);
}

}  // namespace
}  // namespace tavi
