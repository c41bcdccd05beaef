//===- file_coll_test.cpp - Collections of file names ----------------------===//
#include "tavi/coll/file_coll.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace tavi {
namespace {

using test::ScratchDir;
using test::Spit;
using test::Str;

class Files : public XFileCollection {
 public:
  ~Files() override { FreeAll(); }
  std::vector<std::u16string> Names() const {
    std::vector<std::u16string> out;
    for (uint32_t i = 0; i < GetCount(); ++i) out.push_back(AtFile(i));
    return out;
  }
};

TEST(FileCollection, AddFile) {
  Files f;
  EXPECT_FALSE(f.AddFile(nullptr, 4));
  EXPECT_FALSE(f.AddFile(u"abc", 0));
  EXPECT_FALSE(f.AddFile(u"abc", -2));
  EXPECT_TRUE(f.AddFile(u"abcdef", 5));  // the odd byte is dropped
  EXPECT_TRUE(f.AddFile(u"whole"));
  EXPECT_TRUE(f.AddFile(Str(u"from string")));
  EXPECT_EQ(f.Names(), (std::vector<std::u16string>{u"ab", u"whole", u"from string"}));
  EXPECT_EQ(f.AtFile(3), nullptr);
}

TEST(FileCollection, AddFilesRelativeFullAndRecursive) {
  ScratchDir dir;
  std::filesystem::create_directories(dir / u"sub/deep");
  for (const char16_t* leaf : {u"top.txt", u"top.dat", u"sub/mid.txt", u"sub/deep/low.txt"}) {
    Spit(dir / leaf, "x");
  }
  const std::u16string root = dir.Name(u"");  // ends with the divider
  const std::u16string bare = root.substr(0, root.size() - 1);

  struct Case {
    std::u16string start;
    int32_t flags;
    std::vector<std::u16string> expected;
  } cases[] = {
      {root, 0, {u"top.txt"}},
      {bare, 0, {u"top.txt"}},  // the divider is supplied
      {root, kAddFilesRecursive, {u"sub/deep/low.txt", u"sub/mid.txt", u"top.txt"}},
      {bare, kAddFilesFullPath, {root + u"top.txt"}},
      {root,
       kAddFilesRecursive | kAddFilesFullPath,
       {root + u"sub/deep/low.txt", root + u"sub/mid.txt", root + u"top.txt"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.flags);
    Files f;
    XString16 start = Str(c.start);
    EXPECT_TRUE(f.AddFiles(start, u"*.txt", 10, c.flags));
    EXPECT_EQ(f.Names(), c.expected);
    EXPECT_EQ(test::Text(start), c.start);  // the caller's string is not the working path
  }

  // The plain-string form, and a folder that does not exist (nothing added).
  Files f;
  EXPECT_TRUE(f.AddFiles(root.c_str(), u"*.dat", 10, 0));
  EXPECT_EQ(f.Names(), std::vector<std::u16string>{u"top.dat"});
  f.AddFiles((root + u"none").c_str(), u"*", 2, 0);
  EXPECT_EQ(f.GetCount(), 1u);
}

}  // namespace
}  // namespace tavi
