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
constexpr uint32_t kNotesId = 0x45544F4E;

// A small saved class: a list of byte strings, each written as a 4-byte length and
// its bytes after a 4-byte count. Read commits only a complete list, and records
// the header it found in the caller field.
class Notes : public XObject {
 public:
  std::vector<std::string> items;
  uint32_t seen_flags = 0xFFFFFFFF;  // header flags seen by the last Read or Write
  uint32_t fail_after = 0xFFFFFFFF;  // Write fails after this many items

  bool Write(XIO& out) override {
    Seen(out);
    if (!Put(out, static_cast<uint32_t>(items.size()))) return false;
    for (uint32_t i = 0; i < items.size(); ++i) {
      if (i == fail_after) {
        out.SetUserError(77);
        return false;
      }
      if (!Put(out, static_cast<uint32_t>(items[i].size()))) return false;
      if (!out._Write(items[i].data(), static_cast<uint32_t>(items[i].size()))) return false;
    }
    return true;
  }
  bool Read(XIO& in) override {
    Seen(in);
    uint32_t count;
    if (!Get(in, count)) return false;
    std::vector<std::string> read;
    for (uint32_t i = 0; i < count; ++i) {
      uint32_t length;
      if (!Get(in, length)) return false;
      std::string item;
      // Grows as data arrives, so a hostile length costs nothing up front.
      while (item.size() < length) {
        char chunk[256];
        const uint32_t want = std::min<uint32_t>(sizeof(chunk), length - item.size());
        if (!in.bRead(chunk, want)) return false;
        item.append(chunk, want);
      }
      read.push_back(std::move(item));
    }
    items.insert(items.end(), read.begin(), read.end());
    return true;
  }
  bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kNotesId, flags);
    header.reserved = 1;  // format version
    return header.Write(file);
  }
  bool ReadFileHeader(XFile& file, XFileHeader256& header) override {
    if (!header.Read(file)) return false;
    if (header.IsFor(kNotesId) && header.reserved == 1) return true;
    file.SetErrorCode(kErrCheckFailed);
    return false;
  }

 private:
  void Seen(XIO& stream) {
    const auto* header = static_cast<const XFileHeader256*>(stream.GetData());
    seen_flags = header ? header->flags : 0xFFFFFFFF;
  }
  static bool Put(XIO& out, uint32_t v) {
    const uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    return out._Write(b, 4);
  }
  static bool Get(XIO& in, uint32_t& v) {
    uint8_t b[4];
    if (!in.bRead(b, 4)) return false;
    v = b[0] | b[1] << 8 | b[2] << 16 | uint32_t(b[3]) << 24;
    return true;
  }
};

Notes Sample() {
  Notes n;
  n.items = {"alpha", "", std::string(5000, 'z'), "omega"};
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

TEST(FileHeader, LayoutAndFlags) {
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
  EXPECT_TRUE(back.IsFor(7));
  EXPECT_FALSE(back.IsFor(8));
  EXPECT_EQ(back.reserved, 0xDDCCBBAAu);
  EXPECT_TRUE(back.IsCompressed() && back.IsCrypted() && back.IsPacked());
  EXPECT_FALSE(back.IsUTF8() || back.IsRAW());
  EXPECT_TRUE(back.IsAllFlags(3) && back.IsAnyFlag(6) && !back.IsAllFlags(6));

  // The one-argument constructor keeps the reserved word; flag 4 alone is not packed.
  XFileHeader small(9);
  EXPECT_EQ(small.marker, kFileHeaderMarker);
  EXPECT_TRUE(small.IsRAW());
  small.flags = kFileHeaderUTF8;
  EXPECT_FALSE(small.IsPacked() || small.IsRAW());
}

TEST(FileHeader, ShortReadKeepsRecordAndFirstError) {
  XFileHeader256 h;
  h.SetForWriting(1, 0);
  XBuffer in;
  in._Write("0123456789012345678901234567890", 31);
  EXPECT_FALSE(h.Read(in));
  EXPECT_EQ(in.GetErrorCode(), kErrEndOfData);
  EXPECT_TRUE(h.IsFor(1));

  XBuffer failed;
  failed.SetUserError(3);
  EXPECT_FALSE(h.Read(failed));
  EXPECT_EQ(Err(failed), std::make_tuple(3u, kErrSourceUser));
}

TEST(Object, BaseSlotsRefuse) {
  XObject base;
  XBuffer stream;
  EXPECT_FALSE(base.Read(stream));
  EXPECT_EQ(XError::InternalErrorCode.load(), 1021);
  EXPECT_FALSE(base.Write(stream));
  EXPECT_EQ(XError::InternalErrorCode.load(), 1022);
  EXPECT_EQ(stream.GetErrorCode(), kErrInternal);

  ScratchDir dir;
  XString16 name = Str(dir.Name(u"base"));
  EXPECT_FALSE(base.SaveFile(name, 0, nullptr, kSave, nullptr));
  EXPECT_EQ(Err(name), std::make_tuple(kErrInternal, kErrSourcePlain));
  EXPECT_EQ(XError::InternalErrorCode.load(), 1023);
  name.ResetError();
  EXPECT_FALSE(base.LoadFile(name, nullptr, nullptr, kLoad));
  EXPECT_EQ(name.GetErrorCode(), kErrInternal);
  EXPECT_EQ(XError::InternalErrorCode.load(), 1024);
}

// Every flag combination round-trips by name and by file object; bits 0 and 1 alone
// decide between a raw and a packed body, and Read and Write see the header.
TEST(Object, RoundTripsRawPackedAndEnciphered) {
  ScratchDir dir;
  for (uint32_t flags : {0u, 4u, 1u, 2u, 3u, 7u}) {
    SCOPED_TRACE(flags);
    Notes saved = Sample();
    XString16 name = Str(dir.Name(u"notes"));
    ASSERT_TRUE(saved.SaveFile(name, flags, u"secret", kSave, nullptr)) << name.GetErrorCode();
    EXPECT_EQ(saved.seen_flags, flags);

    const std::string bytes = Slurp(dir / u"notes");
    ASSERT_GE(bytes.size(), 32u);
    XBuffer body;
    saved.seen_flags = 0;
    ASSERT_TRUE(saved.Write(body));
    const std::string raw(static_cast<char*>(body.GetBuffer()), body.GetBufferPos());
    if ((flags & 3) == 0) {
      EXPECT_EQ(bytes.substr(32), raw);
    } else {
      EXPECT_EQ(bytes.find("omega"), std::string::npos);  // compressed or enciphered
    }

    Notes loaded;
    loaded.items = {"kept"};
    ASSERT_TRUE(loaded.LoadFile(name, GiveSecret, nullptr, kLoad)) << name.GetErrorCode();
    EXPECT_EQ(loaded.seen_flags, flags);
    std::vector<std::string> expected = {"kept"};
    expected.insert(expected.end(), saved.items.begin(), saved.items.end());
    EXPECT_EQ(loaded.items, expected);

    // The file-object forms, and the caller field given back afterwards.
    XFile file;
    ASSERT_TRUE(file.Open(name, kLoad, nullptr));
    int mine = 0;
    file.SetData(&mine);
    Notes again;
    ASSERT_TRUE(again.LoadFile(file, GiveSecret, nullptr));
    EXPECT_EQ(again.items, saved.items);
    EXPECT_EQ(file.GetData(), &mine);
  }
}

TEST(Object, HeaderlessAndExplicitPackedForms) {
  ScratchDir dir;
  Notes saved = Sample();
  XString16 name = Str(dir.Name(u"plain"));
  ASSERT_TRUE(saved.SaveFile(name, kSave, nullptr));
  EXPECT_EQ(saved.seen_flags, 0xFFFFFFFFu);  // no header: the caller field is empty
  Notes loaded;
  ASSERT_TRUE(loaded.LoadFile(name, kLoad));
  EXPECT_EQ(loaded.items, saved.items);

  // Huffman and hash with XOR, no header at all.
  XString16 packed = Str(dir.Name(u"packed"));
  ASSERT_TRUE(
      saved.SaveFileEx(packed, kXPackTryHuffman, kXPackHash | kXPackXOR, u"k", kSave, nullptr));
  Notes unpacked;
  ASSERT_TRUE(unpacked.LoadFileEx(packed, 0, u"k", kLoad));
  EXPECT_EQ(unpacked.items, saved.items);
}

TEST(Object, PasswordFailures) {
  ScratchDir dir;
  Notes saved = Sample();
  XString16 name = Str(dir.Name(u"locked"));
  ASSERT_TRUE(saved.SaveFile(name, kFileHeaderCrypted, u"secret", kSave, nullptr));

  struct Case {
    XGetPassword ask;
    uint32_t code;
    int32_t source;
  } cases[] = {
      {nullptr, 5u, kErrSourcePlain},
      {Decline, 1223u, kErrSourcePlain},
      {DeclineWithCause, 9u, kErrSourceUser},
      {GiveWrong, kErrEndOfData, kErrSourcePlain},
  };
  for (const Case& c : cases) {
    Notes loaded;
    loaded.items = {"before"};
    name.ResetError();
    EXPECT_FALSE(loaded.LoadFile(name, c.ask, nullptr, kLoad));
    EXPECT_EQ(Err(name), std::make_tuple(c.code, c.source));
    EXPECT_EQ(loaded.items, std::vector<std::string>{"before"});
  }

  // Saving enciphered without a password is refused by the container.
  XString16 other = Str(dir.Name(u"nopass"));
  EXPECT_FALSE(saved.SaveFile(other, kFileHeaderCrypted, nullptr, kSave, nullptr));
  EXPECT_EQ(other.GetErrorCode(), kErrDoesNotFit);
}

// Hostile or damaged files fail with their cause and leave the object untouched.
TEST(Object, DamagedFilesChangeNothing) {
  ScratchDir dir;
  Notes saved = Sample();
  XString16 name = Str(dir.Name(u"good"));
  ASSERT_TRUE(
      saved.SaveFile(name, kFileHeaderCompressed | kFileHeaderCrypted, u"secret", kSave, nullptr));
  const std::string good = Slurp(dir / u"good");
  XString16 rawname = Str(dir.Name(u"raw"));
  ASSERT_TRUE(saved.SaveFile(rawname, 0, nullptr, kSave, nullptr));
  const std::string raw = Slurp(dir / u"raw");

  std::string flipped = good;
  flipped[good.size() / 2] ^= 0x10;
  std::string wrong_id = raw;
  wrong_id[0] ^= 1;
  std::string huge_count = raw;
  huge_count.replace(32, 4, "\xFF\xFF\xFF\x7F");
  std::string huge_item = raw;
  huge_item.replace(36, 4, "\xFF\xFF\xFF\xFF");
  struct Case {
    const char* what;
    std::string bytes;
    uint32_t code;
  } cases[] = {
      {"empty", "", kErrEndOfData},
      {"short header", raw.substr(0, 31), kErrEndOfData},
      {"wrong identifier", wrong_id, kErrCheckFailed},
      {"truncated raw body", raw.substr(0, raw.size() - 1), kErrEndOfData},
      {"huge count", huge_count, kErrEndOfData},
      {"huge item", huge_item, kErrEndOfData},
      {"truncated packed body", good.substr(0, good.size() - 5), kErrEndOfData},
      {"packed body cut after its method", good.substr(0, 36), kErrEndOfData},
      {"flipped byte", flipped, kErrEndOfData},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Spit(dir / u"bad", c.bytes);
    XString16 bad = Str(dir.Name(u"bad"));
    Notes loaded;
    loaded.items = {"before"};
    EXPECT_FALSE(loaded.LoadFile(bad, GiveSecret, nullptr, kLoad));
    EXPECT_EQ(bad.GetErrorCode(), c.code);
    EXPECT_EQ(loaded.items, std::vector<std::string>{"before"});
  }
}

TEST(Object, BackupSurvivesAFailedSave) {
  ScratchDir dir;
  const uint16_t backup = kSave | kFileBackup;
  XString16 name = Str(dir.Name(u"doc"));
  Notes first = Sample();
  ASSERT_TRUE(first.SaveFile(name, 1, nullptr, backup, nullptr));
  const std::string old = Slurp(dir / u"doc");

  // A successful save keeps the previous file as ".bck".
  Notes second;
  second.items = {"new"};
  ASSERT_TRUE(second.SaveFile(name, 0, nullptr, backup, nullptr));
  EXPECT_EQ(Slurp(dir / u"doc.bck"), old);
  const std::string current = Slurp(dir / u"doc");

  // A save that fails midway puts the file back as it was, raw or packed.
  for (uint32_t flags : {0u, 3u}) {
    Notes failing = Sample();
    failing.fail_after = 2;
    name.ResetError();
    EXPECT_FALSE(failing.SaveFile(name, flags, u"pw", backup, nullptr));
    EXPECT_EQ(Err(name), std::make_tuple(77u, kErrSourceUser));
    EXPECT_EQ(Slurp(dir / u"doc"), current);
  }
}

TEST(Object, MessageFormsShowTheFailure) {
  test::ScopedFakeUi ui;
  ScratchDir dir;
  Notes notes = Sample();
  XString16 missing = Str(dir.Name(u"missing"));
  EXPECT_FALSE(notes.LoadFileMsg(missing, GiveSecret, nullptr, kLoad, test::Window(4)));
  EXPECT_FALSE(notes.LoadFileExMsg(missing, 0, nullptr, kLoad, test::Window(4)));
  XString16 folder = Str(dir.Name(u"no/such/folder"));
  EXPECT_FALSE(notes.SaveFileMsg(folder, 0, nullptr, kSave, test::Window(4)));
  ASSERT_EQ(test::Fake().boxes.size(), 3u);
  EXPECT_NE(test::Fake().boxes[0].text.find(dir.Name(u"missing")), std::u16string::npos);
  EXPECT_TRUE(missing.IsOk());  // the message consumed the error

  XString16 ok = Str(dir.Name(u"ok"));
  EXPECT_TRUE(notes.SaveFileExMsg(ok, kXPackTryLZ, 0, nullptr, kSave, nullptr));
  EXPECT_TRUE(notes.LoadFileExMsg(ok, 0, nullptr, kLoad, nullptr));
  EXPECT_EQ(test::Fake().boxes.size(), 3u);
}

TEST(BufferPacked, RoundTripsThroughStreamsAndFiles) {
  std::string data;
  for (int i = 0; i < 20000; ++i) data += std::to_string(i * 7919 % 1000) + ",";
  XBuffer source;
  source._Write(data.data(), static_cast<uint32_t>(data.size()));

  for (uint32_t flags : {0u, kXPackCRC, kXPackAES | kXPackCRC, kXPackXOR | kXPackHash}) {
    for (uint32_t methods : {0u, kXPackTryLZ, kXPackTryHuffman}) {
      if (flags == 0 && methods == 0) continue;
      SCOPED_TRACE(flags * 16 + methods);
      XBuffer stream;
      ASSERT_TRUE(source.WriteBufferEx(stream, flags, methods, u"pw"));
      XBuffer back;
      back._Write("x", 1);  // unpacking appends
      ASSERT_TRUE(back.ReadToBufferEx(stream, 0, u"pw"));
      EXPECT_EQ(std::string(static_cast<char*>(back.GetBuffer()), back.GetBufferPos()), "x" + data);
      EXPECT_TRUE(stream.EoB());
    }
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

  // Nothing to pack is refused in the target; the Msg form shows it.
  test::ScopedFakeUi ui;
  XBuffer empty;
  name.ResetError();
  EXPECT_FALSE(empty.SaveFileExMsg(name, kXPackCRC, 0, nullptr, kSave, test::Window(2)));
  EXPECT_EQ(test::Fake().boxes.size(), 1u);
}

}  // namespace
}  // namespace tavi
