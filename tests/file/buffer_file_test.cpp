//===- buffer_file_test.cpp - Buffers loaded from and saved to files -------===//
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "core/fake_ui.h"
#include "file/file_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/file/file.h"

namespace tavi {
namespace {

namespace fs = std::filesystem;
using test::Err;
using test::ScratchDir;
using test::Slurp;
using test::Spit;
using test::Str;

std::string Data(const XBuffer& b) {
  return std::string(static_cast<const char*>(b.GetBuffer()), b.GetBufferPos());
}

TEST(BufferFile, SaveAndLoadWholeFiles) {
  ScratchDir dir;
  XString16 name = Str(dir.Name(u"whole.bin"));
  XBuffer out;
  for (int i = 0; i < 100000; ++i) out._Write(&i, 1);
  out._SetCurrentPos(500);  // saving ignores the read cursor
  ASSERT_TRUE(out.SaveFile(name, kFileWrite | kFileCreateAlways, nullptr));
  EXPECT_EQ(fs::file_size(dir / u"whole.bin"), 100000u);

  XBuffer in;
  in._Write("stale", 5);
  ASSERT_TRUE(in.LoadFile(name, kFileRead));
  EXPECT_EQ(Data(in), Data(out));
  EXPECT_EQ(in.GetCurrentPos(), 0u);

  // The rest of an open file from its position.
  XFile file;
  ASSERT_TRUE(file.Open(name, kFileRead, nullptr));
  EXPECT_TRUE(file.SetPosB(99990, 0));
  ASSERT_TRUE(in.LoadRestOfFile(file));
  EXPECT_EQ(Data(in), Data(out).substr(99990));
  EXPECT_TRUE(file.SetPosB(200000, 0));
  ASSERT_TRUE(in.LoadRestOfFile(file));
  EXPECT_EQ(in.GetBufferPos(), 0u);

  // An empty file loads as no data.
  Spit(dir / u"empty", "");
  XString16 empty = Str(dir.Name(u"empty"));
  ASSERT_TRUE(in.LoadFile(empty, kFileRead));
  EXPECT_EQ(in.GetBufferPos(), 0u);
}

TEST(BufferFile, FailuresLandInTheName) {
  test::ScopedFakeUi ui;
  ScratchDir dir;
  XBuffer b;
  XString16 missing = Str(dir.Name(u"missing"));
  EXPECT_FALSE(b.LoadFile(missing, kFileRead));
  EXPECT_EQ(Err(missing), std::make_tuple(2u, kErrSourcePlatform));

  // The Msg form shows the error with the name, then the error is consumed.
  missing.ResetError();
  EXPECT_FALSE(b.LoadFileMsg(missing, kFileRead, test::Window(3)));
  ASSERT_EQ(test::Fake().boxes.size(), 1u);
  EXPECT_NE(test::Fake().boxes[0].text.find(u" (\"" + dir.Name(u"missing") + u"\")"),
            std::u16string::npos);
  EXPECT_TRUE(missing.IsOk());

  // A file opened without read access fails on its first read; the file holds the
  // cause.
  Spit(dir / u"w", "abc");
  XString16 w = Str(dir.Name(u"w"));
  XFile file;
  ASSERT_TRUE(file.Open(w, kFileWrite, nullptr));
  EXPECT_FALSE(b.LoadFile(file));
  EXPECT_EQ(file.GetErrorCode(), 5u);
}

// Writes beyond a file-size limit fail with "disk full" (SIGXFSZ ignored), which
// gives a failing save on any machine, as root too.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old_);
    previous_ = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = old_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, previous_);
  }

 private:
  rlimit old_;
  void (*previous_)(int);
};

TEST(BufferFile, FailedSaveInBackupModeKeepsThePreviousFile) {
  ScratchDir dir;
  const auto path = dir / u"doc.bin";
  Spit(path, "previous content");
  XString16 name = Str(path.u16string());
  XBuffer big;
  ASSERT_NE(big.ReserveBufferMem(200000), nullptr);
  {
    FileSizeLimit limit(100000);
    EXPECT_FALSE(big.SaveFile(name, kFileWrite | kFileBackup | kFileCreateAlways, nullptr));
    // Without a backup the partial file stays, as the caller asked for no backup.
    XString16 other = Str(dir.Name(u"other.bin"));
    EXPECT_FALSE(big.SaveFile(other, kFileWrite | kFileCreateAlways, nullptr));
    EXPECT_EQ(other.GetErrorCode(), 112u);
  }
  EXPECT_EQ(Err(name), std::make_tuple(112u, kErrSourcePlatform));
  EXPECT_EQ(Slurp(path), "previous content");
  EXPECT_FALSE(fs::exists(dir / u"doc.bin.bck"));

  // A save that works leaves the previous file as the backup.
  XBuffer small;
  small._Write("new", 3);
  ASSERT_TRUE(small.SaveFile(name, kFileWrite | kFileBackup | kFileCreateAlways, nullptr));
  EXPECT_EQ(Slurp(path), "new");
  EXPECT_EQ(Slurp(dir / u"doc.bin.bck"), "previous content");
}

}  // namespace
}  // namespace tavi
