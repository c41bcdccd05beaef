//===- file_test.cpp - File streams, named files, opening and names --------===//
#include "tavi/file/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/fake_ui.h"
#include "file/file_helpers.h"
#include "tavi/time/calendar.h"
#include "tavi/time/system_time.h"

namespace tavi {
namespace {

namespace fs = std::filesystem;
using test::Err;
using test::ScratchDir;
using test::Slurp;
using test::Spit;
using test::Str;

constexpr uint16_t kRW = kFileRead | kFileWrite;

TEST(XFileOpen, DispositionsOnMissingAndExistingFiles) {
  ScratchDir dir;
  XString16 missing = Str(dir.Name(u"missing.bin"));
  XFile file;
  // Reading a missing file: "file not found" in the name and in the file.
  EXPECT_FALSE(file.Open(missing, kFileRead, nullptr));
  EXPECT_EQ(Err(file), std::make_tuple(2u, kErrSourcePlatform));
  EXPECT_EQ(Err(missing), std::make_tuple(2u, kErrSourcePlatform));
  // A missing folder along the path is "path not found".
  XString16 deep = Str(dir.Name(u"no/such/file"));
  EXPECT_EQ(XFileOpen(deep, kRW | kFileOpenAlways, nullptr), nullptr);
  EXPECT_EQ(Err(deep), std::make_tuple(3u, kErrSourcePlatform));
  // Open always creates; open existing then finds it.
  EXPECT_TRUE(file.Open(missing, kRW | kFileOpenAlways, nullptr));
  EXPECT_TRUE(file._Write("abc", 3));
  EXPECT_TRUE(file.Close());
  EXPECT_TRUE(file.Open(missing, kFileRead | kFileOpenExisting, nullptr));
  EXPECT_EQ(file.GetSize(), 3u);
  // Create always replaces the content.
  EXPECT_TRUE(file.Open(missing, kFileWrite | kFileCreateAlways, nullptr));
  EXPECT_EQ(file.GetSize(), 0u);
  EXPECT_TRUE(file.Close());
  // A folder cannot be opened as a file.
  XString16 folder = Str(dir.root().u16string());
  EXPECT_FALSE(file.Open(folder, kFileRead, nullptr));
  EXPECT_EQ(Err(file), std::make_tuple(5u, kErrSourcePlatform));
  // An empty name.
  EXPECT_FALSE(file.Open(u"", kFileRead, nullptr));
  EXPECT_EQ(file.GetErrorCode(), 3u);
}

TEST(XFileOpen, TruncateCombinesWithTheDisposition) {
  ScratchDir dir;
  const auto path = dir / u"t.bin";
  struct Case {
    uint16_t disposition;
    bool opens;
  } cases[] = {{kFileOpenAlways, true}, {kFileOpenExisting, false}, {kFileCreateAlways, false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.disposition);
    Spit(path, "content");
    XString16 name = Str(path.u16string());
    XFileHandle h = XFileOpen(name, kFileWrite | kFileTruncate | c.disposition, nullptr);
    EXPECT_EQ(h != nullptr, c.opens);
    EXPECT_TRUE(XFileClose(h));
    if (c.opens) {
      EXPECT_EQ(Slurp(path), "");
    } else {
      EXPECT_EQ(Err(name), std::make_tuple(87u, kErrSourcePlatform));
      EXPECT_EQ(Slurp(path), "content");
    }
  }
  // A missing file: the failed existence test stays in the name, the open goes on.
  XString16 fresh = Str(dir.Name(u"fresh.bin"));
  XFileHandle h = XFileOpen(fresh, kFileWrite | kFileTruncate | kFileOpenAlways, nullptr);
  EXPECT_NE(h, nullptr);
  EXPECT_EQ(Err(fresh), std::make_tuple(uint32_t{ENOENT}, kErrSourceErrno));
  EXPECT_TRUE(XFileClose(h));
}

TEST(XFileOpen, BackupKeepsThePreviousFile) {
  ScratchDir dir;
  const auto path = dir / u"data.txt";
  const auto backup = dir / u"data.txt.bck";
  XString16 name = Str(path.u16string());
  // A missing file is just created, without a backup.
  XFile file;
  ASSERT_TRUE(file.Open(name, kFileWrite | kFileBackup | kFileCreateAlways, nullptr));
  EXPECT_TRUE(file._Write("one", 3));
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(fs::exists(backup));
  // Each later open moves the file to the backup, replacing an older backup.
  Spit(backup, "older");
  ASSERT_TRUE(file.Open(name, kFileWrite | kFileBackup | kFileCreateAlways, nullptr));
  EXPECT_TRUE(file._Write("two", 3));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(Slurp(backup), "one");
  EXPECT_EQ(Slurp(path), "two");
  // Without write access the backup bit does nothing.
  ASSERT_TRUE(file.Open(name, kFileRead | kFileBackup, nullptr));
  EXPECT_EQ(Slurp(backup), "one");
}

TEST(XFileOpen, OverwriteIsAskedThroughTheUserInterface) {
  test::ScopedFakeUi ui;
  ScratchDir dir;
  const auto path = dir / u"keep.txt";
  XString16 name = Str(path.u16string());
  constexpr uint16_t kMode = kFileWrite | kFileConfirm | kFileCreateAlways;
  // A missing file is created without a question.
  XFileHandle h = XFileOpen(name, kMode, nullptr);
  ASSERT_NE(h, nullptr);
  EXPECT_TRUE(XFileWrite(h, "old", 3));
  EXPECT_TRUE(XFileClose(h));
  EXPECT_TRUE(test::Fake().boxes.empty());

  test::Fake().answer = kIdNo;
  EXPECT_EQ(XFileOpen(name, kMode, test::Window(7)), nullptr);
  EXPECT_EQ(Err(name), std::make_tuple(1223u, kErrSourcePlain));
  EXPECT_EQ(Slurp(path), "old");
  ASSERT_EQ(test::Fake().boxes.size(), 1u);
  EXPECT_NE(test::Fake().boxes[0].text.find(path.u16string()), std::u16string::npos);
  EXPECT_EQ(test::Fake().boxes[0].style, kMbYesNo | kMbIconQuestion);

  test::Fake().answer = kIdYes;
  name.ResetError();
  h = XFileOpen(name, kMode, nullptr);
  ASSERT_NE(h, nullptr);
  EXPECT_TRUE(XFileClose(h));
  EXPECT_EQ(Slurp(path), "");
  EXPECT_EQ(test::Fake().boxes.size(), 2u);
}

TEST(XFileOpen, ReadOnlyAttributeAndAccessChecks) {
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"ro.bin"));
  XFile file;
  ASSERT_TRUE(file.Open(name, kFileWrite | kFileReadOnly | kFileCreateAlways, nullptr));
  EXPECT_TRUE(file._Write("x", 1));
  // Reading a file opened for writing only is refused.
  char c;
  EXPECT_EQ(file._Read(&c, 1), 0u);
  EXPECT_EQ(Err(file), std::make_tuple(5u, kErrSourcePlatform));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(fs::status(dir / u"ro.bin").permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
  ASSERT_TRUE(file.Open(name, kFileRead, nullptr));
  EXPECT_FALSE(file._Write("y", 1));
  EXPECT_EQ(file.GetErrorCode(), 5u);
  EXPECT_FALSE(file.SetEndOfFile());
}

// A reference model of a file: its bytes and a position.
struct ModelFile {
  std::string bytes;
  size_t pos = 0;
  void Write(const std::string& s) {
    if (bytes.size() < pos) bytes.resize(pos, '\0');
    bytes.replace(pos, std::min(s.size(), bytes.size() - pos), s);
    pos += s.size();
  }
  std::string Read(size_t n) {
    std::string out = pos < bytes.size() ? bytes.substr(pos, n) : "";
    pos += out.size();
    return out;
  }
};

TEST(XFile, RandomOperationsMatchAPlainModel) {
  // Mixed small and large reads, writes and moves exercise every transition of the
  // gathering block; the file must always look exactly like the model.
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"model.bin"));
  XFile file;
  ASSERT_TRUE(file.Open(name, kRW | kFileCreateAlways, nullptr));
  ModelFile model;
  std::mt19937 rng(7);
  auto some = [&rng](size_t n) {
    std::string s(n, '\0');
    for (auto& ch : s) ch = static_cast<char>(rng());
    return s;
  };
  const size_t sizes[] = {0, 1, 2, 4, 7, 100, 4096, 40000, 70000};
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(step);
    const size_t n = sizes[rng() % std::size(sizes)];
    switch (rng() % 6) {
      case 0:
      case 1: {
        const std::string s = some(n);
        ASSERT_TRUE(file._Write(s.data(), static_cast<uint32_t>(s.size())));
        model.Write(s);
        break;
      }
      case 2:
      case 3: {
        std::string got(n, '\0');
        got.resize(file._Read(got.data(), static_cast<uint32_t>(n)));
        ASSERT_EQ(got, model.Read(n));
        break;
      }
      case 4: {
        const int32_t method = static_cast<int32_t>(rng() % 3);
        const int64_t base = method == 0 ? 0 : method == 1 ? model.pos : model.bytes.size();
        const int64_t target = static_cast<int64_t>(rng() % (model.bytes.size() + 50));
        ASSERT_EQ(file.SetPos(static_cast<int32_t>(target - base), method), target);
        model.pos = static_cast<size_t>(target);
        break;
      }
      default:
        ASSERT_EQ(file.GetPos(), model.pos);
        ASSERT_EQ(file.GetSize(), model.bytes.size());
        ASSERT_EQ(file.Eof(), model.pos == model.bytes.size());
        if (rng() % 8 == 0) {
          ASSERT_TRUE(file.SetEndOfFile());
          model.bytes.resize(model.pos, '\0');
        }
        break;
    }
  }
  ASSERT_TRUE(file.Close());
  EXPECT_EQ(Slurp(dir / u"model.bin"), model.bytes);
}

TEST(XFile, GatheredBytesAreSeenByEveryObserver) {
  ScratchDir dir;
  const auto path = dir / u"seen.bin";
  XString16 name = Str(path.u16string());
  XFile file;
  ASSERT_TRUE(file.Open(name, kFileWrite | kFileCreateAlways, nullptr));
  for (uint32_t i = 0; i < 1000; ++i) ASSERT_TRUE(file._Write(&i, 4));
  EXPECT_TRUE(file._Write("tail", 4));
  // Another handle opened by name, a copy and the file's times all see the bytes.
  XFile other;
  ASSERT_TRUE(other.Open(name, kFileRead, nullptr));
  EXPECT_EQ(other.GetSize(), 4004u);
  // The reader's read-ahead is refreshed by SetPos after another object wrote.
  uint32_t first = 99;
  EXPECT_EQ(other._Read(&first, 4), 4u);
  EXPECT_EQ(first, 0u);
  EXPECT_TRUE(file.SetPosB(0, 0));
  EXPECT_TRUE(file._Write("head", 4));
  EXPECT_TRUE(file._Flush());
  EXPECT_TRUE(other.SetPosB(0, 0));
  EXPECT_EQ(other._Read(&first, 4), 4u);
  EXPECT_EQ(std::memcmp(&first, "head", 4), 0);
  EXPECT_EQ(file.SeekToEnd(), 4004u);
  EXPECT_TRUE(file._Write("more", 4));
  EXPECT_TRUE(XFileCopy(name, dir.Name(u"copy.bin").c_str()));
  EXPECT_EQ(fs::file_size(dir / u"copy.bin"), 4008u);
  // A handle given away keeps its bytes: they arrive when it is closed.
  EXPECT_TRUE(file._Write("last", 4));
  XFileHandle h = file.LeaveFile();
  EXPECT_FALSE(file.IsOpened());
  EXPECT_TRUE(XFileClose(h));
  const std::string bytes = Slurp(path);
  ASSERT_EQ(bytes.size(), 4012u);
  EXPECT_EQ(bytes.substr(4000), "tailmorelast");
  EXPECT_EQ(bytes.substr(0, 4), "head");
}

TEST(XFile, NameOperationsOnOtherThreadsDoNotDisturbWriters) {
  // Operations by name push the gathered bytes of every file; files that their own
  // threads are writing at that moment must come out whole and in order.
  ScratchDir dir;
  Spit(dir / u"src", "s");
  std::vector<std::thread> writers;
  for (int t = 0; t < 2; ++t) {
    writers.emplace_back([&dir, t] {
      XString16 name = Str(dir.Name(u"w" + std::u16string(1, u'0' + t)));
      XFile file;
      ASSERT_TRUE(file.Open(name, kFileWrite | kFileCreateAlways, nullptr));
      for (uint32_t i = 0; i < 200000; ++i) ASSERT_TRUE(file._Write(&i, 4));
      ASSERT_TRUE(file.Close());
    });
  }
  XString16 src = Str(dir.Name(u"src"));
  const std::u16string copy = dir.Name(u"copy");
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(XFileCopy(src, copy.c_str()));
    EXPECT_TRUE(fs::remove(fs::path(copy)));
  }
  for (auto& w : writers) w.join();
  for (const char16_t* w : {u"w0", u"w1"}) {
    const std::string bytes = Slurp(dir / w);
    ASSERT_EQ(bytes.size(), 800000u);
    for (uint32_t i = 0; i < 200000; ++i) {
      uint32_t v;
      std::memcpy(&v, bytes.data() + 4 * i, 4);
      ASSERT_EQ(v, i);
    }
  }
}

TEST(XFile, PositionsShiftsAndUnread) {
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"pos.bin"));
  XFile file;
  ASSERT_TRUE(file.Open(name, kRW | kFileCreateAlways, nullptr));
  const char16_t text[] = u"wxyz";
  ASSERT_TRUE(file._Write(text, 8));
  EXPECT_EQ(file.SeekToBegin(), 0u);
  char16_t c = 0;
  ASSERT_TRUE(file._ReadChar(c));
  ASSERT_TRUE(file._ReadChar(c));
  EXPECT_EQ(c, u'x');
  EXPECT_TRUE(file._UnreadChar(u'?'));
  EXPECT_EQ(file.GetPos(), 2u);
  ASSERT_TRUE(file._ReadChar(c));
  EXPECT_EQ(c, u'x');
  // A shift beyond 2^31-1 is refused and leaves the position.
  EXPECT_FALSE(file._ShiftForward(0x80000000u));
  EXPECT_EQ(Err(file), std::make_tuple(kErrDoesNotFit, kErrSourcePlain));
  EXPECT_EQ(file.GetPos(), 4u);
  EXPECT_TRUE(file._ShiftForward(2));
  ASSERT_TRUE(file._ReadChar(c));
  EXPECT_EQ(c, u'z');
  EXPECT_TRUE(file.Eof());
  // Before the beginning, and at 4 GiB: refused, position kept.
  EXPECT_EQ(file.SetPos(-9, 1), 0xFFFFFFFFu);
  EXPECT_EQ(file.GetErrorCode(), 131u);
  EXPECT_EQ(file.SetPos(0x7FFFFFFF, 0), 0x7FFFFFFFu);
  EXPECT_EQ(file.SetPos(0x7FFFFFFF, 1), 0xFFFFFFFEu);
  EXPECT_EQ(file.SetPos(1, 1), 0xFFFFFFFFu);
  EXPECT_EQ(file.GetErrorCode(), 87u);
  EXPECT_EQ(file.GetPos(), 0xFFFFFFFEu);
  EXPECT_FALSE(file.Eof());
  EXPECT_EQ(file.SeekToEnd(), 8u);
  // A successful close clears the error state.
  EXPECT_TRUE(file.IsError());
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(Err(file), std::make_tuple(0u, 0));
}

TEST(XFile, HandlesGivenAwayAndMissing) {
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"h.bin"));
  XFile a, b;
  ASSERT_TRUE(a.Open(name, kRW | kFileCreateAlways, nullptr));
  XFileHandle h = a.GetHandle();
  EXPECT_EQ(b.AssumeFile(a), h);
  EXPECT_TRUE(XFileWrite(h, "0123456789", 10));
  EXPECT_EQ(b.SeekToBegin(), 0u);
  char out[16] = {};
  EXPECT_EQ(XFileRead(h, out, 16), 10);
  EXPECT_STREQ(out, "0123456789");
  EXPECT_EQ(XFileRead(h, out, -1), -1);
  // a has no file now: every operation fails with "invalid handle".
  EXPECT_TRUE(a.Close());
  EXPECT_FALSE(a._Write("a", 1));
  EXPECT_EQ(Err(a), std::make_tuple(6u, kErrSourcePlatform));
  EXPECT_EQ(a._Read(out, 1), 0u);
  EXPECT_EQ(a.GetSize(), 0xFFFFFFFFu);
  EXPECT_TRUE(a.Eof());  // neither size nor position
  EXPECT_EQ(XFileRead(nullptr, out, 1), -1);
  EXPECT_FALSE(XFileWrite(nullptr, out, 1));
  EXPECT_TRUE(XFileClose(nullptr));
}

TEST(XFile, CopiesShareTheFileUntilTheLastCloses) {
  ScratchDir dir;
  XNamedFile a;
  XString16 name = Str(dir.Name(u"shared.bin"));
  ASSERT_TRUE(a.Open(name, kRW | kFileCreateAlways, nullptr));
  EXPECT_TRUE(a._Write("ab", 2));
  {
    XNamedFile b = a;
    EXPECT_EQ(b.GetHandle(), a.GetHandle());
    EXPECT_NE(b.GetFileName(), a.GetFileName());  // a name of its own
    EXPECT_EQ(std::u16string(b.GetFileName()), std::u16string(a.GetFileName()));
    EXPECT_TRUE(b._Write("cd", 2));
    EXPECT_TRUE(b.Close());
    EXPECT_EQ(Slurp(dir / u"shared.bin"), "abcd");  // a close pushes the bytes
  }
  EXPECT_TRUE(a._Write("ef", 2));
  XFile c;
  c = a;
  EXPECT_TRUE(a.Close());
  EXPECT_EQ(c.GetSize(), 6u);
  EXPECT_TRUE(c.Close());
}

TEST(XNamedFile, NameParts) {
  XNamedFile file;
  EXPECT_EQ(file.GetFileName(), nullptr);
  EXPECT_EQ(file.GetExtension(), nullptr);
  EXPECT_EQ(file.GetFileTitleW(), nullptr);
  EXPECT_FALSE(file.SetFileName(nullptr, 4));
  EXPECT_EQ(Err(file), std::make_tuple(kErrTooLong, kErrSourcePlain));
  EXPECT_FALSE(file.SetFileName(u"x", 0));

  const std::u16string d(1, XPathDivider);
  const std::u16string full = d + u"dir.v2" + d + u"file.tar.gz";
  ASSERT_TRUE(file.SetFileName(full.c_str(), static_cast<int32_t>(full.size() * 2)));
  int32_t bytes = 0;
  EXPECT_EQ(std::u16string(file.GetFileName(bytes)), full);
  EXPECT_EQ(bytes, static_cast<int32_t>(full.size() * 2));
  EXPECT_EQ(std::u16string(file.GetExtension()), u".gz");
  EXPECT_EQ(std::u16string(file.GetFileTitleW()), d + u"file.tar.gz");
  ASSERT_TRUE(file.SetFileName(Str(u"plain")));
  EXPECT_EQ(std::u16string(file.GetFileTitleW()), u"plain");
  EXPECT_EQ(file.GetExtension(), nullptr);
}

TEST(XNamedFile, OpensUnderItsNameWithNonAsciiCharacters) {
  ScratchDir dir;
  const std::u16string name = dir.Name(u"Grüße_日本_\U0001F600.txt");
  XNamedFile file;
  XString16 given = Str(name);
  ASSERT_TRUE(file.Open(given, kFileWrite | kFileCreateAlways, nullptr));
  EXPECT_EQ(std::u16string(file.GetFileName()), name);
  EXPECT_TRUE(file._Write("ok", 2));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(Slurp(dir / u"Grüße_日本_\U0001F600.txt"), "ok");
  ASSERT_TRUE(file.Open(kFileRead, nullptr));
  // Opening by a text goes through the named overload and keeps that name.
  const std::u16string other = dir.Name(u"other");
  EXPECT_FALSE(file.Open(other.c_str(), kFileRead, nullptr));
  EXPECT_EQ(std::u16string(file.GetFileName()), other);
  EXPECT_EQ(file.GetErrorCode(), 2u);
  EXPECT_FALSE(file.Open(kFileRead, nullptr));
  EXPECT_EQ(file.Name().GetErrorCode(), 2u);
}

TEST(FileNames, ExistDeleteCopyMove) {
  ScratchDir dir;
  XString16 a = Str(dir.Name(u"a.txt"));
  EXPECT_FALSE(XFileExist(a));
  EXPECT_EQ(Err(a), std::make_tuple(uint32_t{ENOENT}, kErrSourceErrno));
  Spit(dir / u"a.txt", "alpha");
  Spit(dir / u"b.txt", "beta");
  EXPECT_TRUE(XFileExist(a));
  XString16 folder = Str(dir.root().u16string());
  EXPECT_TRUE(XFileExist(folder));

  // Copy refuses an existing target and leaves it untouched.
  EXPECT_FALSE(XFileCopy(a, dir.Name(u"b.txt").c_str()));
  EXPECT_EQ(Err(a), std::make_tuple(80u, kErrSourcePlatform));
  EXPECT_EQ(Slurp(dir / u"b.txt"), "beta");
  EXPECT_TRUE(XFileCopy(a, dir.Name(u"c.txt").c_str()));
  EXPECT_EQ(Slurp(dir / u"c.txt"), "alpha");
  EXPECT_EQ(fs::last_write_time(dir / u"c.txt"), fs::last_write_time(dir / u"a.txt"));
  XString16 none = Str(dir.Name(u"none"));
  EXPECT_FALSE(XFileCopy(none, dir.Name(u"d.txt").c_str()));
  EXPECT_EQ(none.GetErrorCode(), 2u);
  EXPECT_FALSE(fs::exists(dir / u"d.txt"));

  // Move refuses an existing target too.
  EXPECT_FALSE(XFileMove(a, dir.Name(u"b.txt").c_str()));
  EXPECT_EQ(Err(a), std::make_tuple(183u, kErrSourcePlatform));
  EXPECT_TRUE(XFileMove(a, dir.Name(u"moved.txt").c_str()));
  EXPECT_FALSE(fs::exists(dir / u"a.txt"));
  EXPECT_EQ(Slurp(dir / u"moved.txt"), "alpha");
  EXPECT_FALSE(XFileMove(a, dir.Name(u"x.txt").c_str()));
  EXPECT_EQ(a.GetErrorCode(), 2u);

  XString16 moved = Str(dir.Name(u"moved.txt"));
  EXPECT_TRUE(XFileDelete(moved));
  EXPECT_FALSE(XFileDelete(moved));
  EXPECT_EQ(Err(moved), std::make_tuple(2u, kErrSourcePlatform));
  EXPECT_FALSE(XFileDelete(folder));
  EXPECT_EQ(folder.GetErrorCode(), 5u);
}

TEST(FileNames, CheckExtension) {
  EXPECT_TRUE(XFileCheckExtensionLen(u"a.txt", 5, u".txt", 4));
  EXPECT_FALSE(XFileCheckExtensionLen(u".txt", 4, u".txt", 4));   // not longer
  EXPECT_FALSE(XFileCheckExtensionLen(u"a.TXT", 5, u".txt", 4));  // case counts
  EXPECT_FALSE(XFileCheckExtensionLen(nullptr, 5, u".txt", 4));
  EXPECT_FALSE(XFileCheckExtensionLen(u"a.txt", 5, nullptr, 4));

  XString16 name = Str(u"report");
  EXPECT_FALSE(XFileCheckExtension(name, u".lng", 8, false));
  EXPECT_EQ(test::Text(name), u"report");
  EXPECT_TRUE(XFileCheckExtension(name, u".lng", 8, true));
  EXPECT_EQ(test::Text(name), u"report.lng");
  EXPECT_TRUE(XFileCheckExtension(name, u".lng", 8, true));
  EXPECT_EQ(test::Text(name), u"report.lng");
}

TEST(FileNames, FileTimesAreMinuteCounts) {
  ScratchDir dir;
  Spit(dir / u"t.txt", "t");
  const auto name = dir.Name(u"t.txt");
  uint32_t created = 0, accessed = 0, written = 0;
  ASSERT_TRUE(XGetFileTime(name.c_str(), &created, &accessed, &written));
  // The minute count of now, in UTC, from the file time of the system clock.
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const XFileTime ft{
      static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) *
          10 +
      kFileTimeOfUnixEpoch};
  const uint32_t minute = GetDateTime(ft);
  for (uint32_t t : {created, accessed, written}) {
    EXPECT_LE(t, minute);
    EXPECT_GE(t + 2, minute);
  }
  EXPECT_TRUE(XGetFileTime(name.c_str(), nullptr, nullptr, &written));
  EXPECT_FALSE(XGetFileTime(dir.Name(u"none").c_str(), &created, nullptr, nullptr));
  EXPECT_FALSE(XGetFileTime(dir.root().u16string().c_str(), &created, nullptr, nullptr));
}

}  // namespace
}  // namespace tavi
