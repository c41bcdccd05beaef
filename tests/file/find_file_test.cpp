//===- find_file_test.cpp - Folder searches and walks ----------------------===//
#include "tavi/file/find_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "file/file_helpers.h"
#include "tavi/file/file.h"

namespace tavi {
namespace {

namespace fs = std::filesystem;
using test::Err;
using test::ScratchDir;
using test::Spit;
using test::Str;
using test::Text;

const std::u16string kDiv(1, XPathDivider);

// root: a.txt b.dat .hidden.txt sub1/{c.txt deep/{d.txt}} sub2/{e.txt} loop -> root
class Tree : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char16_t* f : {u"a.txt", u"b.dat", u".hidden.txt", u"sub1/c.txt", u"sub1/deep/d.txt",
                              u"sub2/e.txt", u"sub2/ö.txt"}) {
      fs::create_directories((dir_ / f).parent_path());
      Spit(dir_ / f, "x");
    }
    fs::create_directory_symlink(dir_.root(), dir_ / u"loop");
  }
  std::u16string Pattern(const std::u16string& mask) const { return dir_.Name(mask); }

  std::set<std::u16string> All(const std::u16string& mask,
                               const char16_t* (XFindFile::*first)(const char16_t*),
                               const char16_t* (XFindFile::*next)()) {
    std::set<std::u16string> names;
    XFindFile find;
    for (const char16_t* n = (find.*first)(Pattern(mask).c_str()); n; n = (find.*next)()) {
      names.insert(n);
    }
    EXPECT_TRUE(find.IsOk());
    return names;
  }

  ScratchDir dir_;
};

using Names = std::set<std::u16string>;

TEST_F(Tree, SearchesMatchTheLastPartOfThePattern) {
  EXPECT_EQ(All(u"*.txt", &XFindFile::FindFirst, &XFindFile::FindNext),
            (Names{u"a.txt", u".hidden.txt"}));
  EXPECT_EQ(All(u"*", &XFindFile::FindFirst, &XFindFile::FindNext),
            (Names{u"a.txt", u"b.dat", u".hidden.txt", u"sub1", u"sub2", u"loop"}));
  EXPECT_EQ(All(u"*.*", &XFindFile::FindFirstDir, &XFindFile::FindNextDir),
            (Names{u"sub1", u"sub2", u"loop"}));
  EXPECT_EQ(All(u"*", &XFindFile::FindFirstFileW, &XFindFile::FindNextFileW),
            (Names{u"a.txt", u"b.dat", u".hidden.txt"}));
  EXPECT_EQ(All(u"sub2" + kDiv + u"?.txt", &XFindFile::FindFirst, &XFindFile::FindNext),
            (Names{u"e.txt", u"ö.txt"}));
  EXPECT_EQ(All(u"b.dat", &XFindFile::FindFirst, &XFindFile::FindNext), (Names{u"b.dat"}));
}

TEST_F(Tree, FoundEntriesCarryTheirFacts) {
  XFindFile find;
  ASSERT_NE(find.FindFirst(Pattern(u"*.txt").c_str()), nullptr);
  do {
    const XFindData& d = find.GetFindData();
    EXPECT_EQ(d.size, 1u);
    EXPECT_FALSE(find.IsDirectory());
    EXPECT_EQ((d.attributes & kFileAttributeHidden) != 0, d.name[0] == u'.');
    EXPECT_NE(d.written.value, 0u);
  } while (find.FindNext() != nullptr);
  const char16_t* loop = find.FindFirst(Pattern(u"loop").c_str());
  ASSERT_NE(loop, nullptr);
  EXPECT_EQ(std::u16string(loop), u"loop");
  EXPECT_TRUE(find.IsDirectory());
  EXPECT_NE(find.GetFindData().attributes & kFileAttributeReparse, 0u);
  EXPECT_TRUE(find.FindClose());
  EXPECT_FALSE(find.FindClose());
}

TEST_F(Tree, EndsAndFailures) {
  XFindFile find;
  ASSERT_NE(find.FindFirst(Pattern(u"a.txt").c_str()), nullptr);
  EXPECT_EQ(find.FindNext(), nullptr);
  EXPECT_EQ(find.GetErrorCode(), 0u);
  EXPECT_EQ(find.FindFirst(Pattern(u"*.none").c_str()), nullptr);
  EXPECT_EQ(Err(find), std::make_tuple(2u, kErrSourcePlatform));
  EXPECT_EQ(find.FindFirst(Pattern(u"missing" + kDiv + u"*").c_str()), nullptr);
  EXPECT_EQ(find.GetErrorCode(), 3u);
  EXPECT_EQ(find.FindFirst(Pattern(u"a.txt" + kDiv + u"*").c_str()), nullptr);
  EXPECT_EQ(find.GetErrorCode(), 3u);
  EXPECT_FALSE(find.IsOpen());
  // An empty folder has only "." and "..": no entry, no error.
  fs::create_directory(dir_ / u"empty");
  EXPECT_EQ(find.FindFirst(Pattern(u"empty" + kDiv + u"*").c_str()), nullptr);
  EXPECT_EQ(find.GetErrorCode(), 0u);
}

TEST_F(Tree, CopiesGoOnFromTheSamePlace) {
  XFindFile a;
  std::set<std::u16string> names;
  const char16_t* n = a.FindFirst(Pattern(u"*").c_str());
  ASSERT_NE(n, nullptr);
  names.insert(n);
  {
    XFindFile b = a;
    names.insert(b.FindNext());
    EXPECT_TRUE(b.FindClose());
  }
  for (n = a.FindNext(); n != nullptr; n = a.FindNext()) names.insert(n);
  EXPECT_EQ(names.size(), 6u);
}

TEST_F(Tree, ForEachDirStopsWhenAsked) {
  XFindFile find;
  std::vector<std::u16string> seen;
  auto collect = [](char16_t* name, const void* context) {
    static_cast<std::vector<std::u16string>*>(const_cast<void*>(context))->push_back(name);
    return true;
  };
  EXPECT_TRUE(find.ForEachDir(Pattern(u"sub*").c_str(), collect, &seen));
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::u16string>{u"sub1", u"sub2"}));
  EXPECT_FALSE(find.ForEachDir(
      Pattern(u"*").c_str(), [](char16_t*, const void*) { return false; }, nullptr));
  EXPECT_TRUE(find.ForEachDir(Pattern(u"nothing*").c_str(), collect, &seen));
}

struct Walk {
  std::vector<std::u16string> paths;
  size_t stop_after = SIZE_MAX;
  static bool Visit(XString16* path, const void* context) {
    auto* walk = static_cast<Walk*>(const_cast<void*>(context));
    walk->paths.push_back(Text(*path));
    return walk->paths.size() < walk->stop_after;
  }
};

TEST_F(Tree, ForEachFileVisitsSubfoldersFirst) {
  XString16 root = Str(dir_.root().u16string() + kDiv);
  const std::u16string start = Text(root);
  Walk walk;
  XFindFile find;
  ASSERT_TRUE(find.ForEachFile(root, u"*.txt", 10, Walk::Visit, true, &walk));
  EXPECT_EQ(Text(root), start);
  EXPECT_EQ(std::u16string(root.c_str()), start);
  const std::vector<std::u16string> expected_set = {
      start + u".hidden.txt",
      start + u"a.txt",
      start + u"sub1" + kDiv + u"c.txt",
      start + u"sub1" + kDiv + u"deep" + kDiv + u"d.txt",
      start + u"sub2" + kDiv + u"e.txt",
      start + u"sub2" + kDiv + u"ö.txt"};
  std::vector<std::u16string> sorted = walk.paths;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, expected_set);  // each once, the link loop not followed
  // Every file comes after all files of the folders below its own folder.
  auto index = [&](const std::u16string& p) {
    return std::find(walk.paths.begin(), walk.paths.end(), start + p) - walk.paths.begin();
  };
  EXPECT_LT(index(u"sub1" + kDiv + u"deep" + kDiv + u"d.txt"), index(u"sub1" + kDiv + u"c.txt"));
  EXPECT_LT(index(u"sub1" + kDiv + u"c.txt"), index(u"a.txt"));
  EXPECT_LT(index(u"sub2" + kDiv + u"e.txt"), index(u".hidden.txt"));

  // Without recursion only the folder's own files; a refusal by fn ends the walk.
  Walk flat;
  EXPECT_TRUE(find.ForEachFile(root, u"*", 2, Walk::Visit, false, &flat));
  EXPECT_EQ(flat.paths.size(), 3u);
  Walk stopped;
  stopped.stop_after = 2;
  EXPECT_FALSE(find.ForEachFile(root, u"*.txt", 10, Walk::Visit, true, &stopped));
  EXPECT_EQ(stopped.paths.size(), 2u);
  EXPECT_EQ(Text(root), start);

  // A missing folder is an empty walk.
  XString16 missing = Str(dir_.Name(u"missing") + kDiv);
  Walk none;
  EXPECT_TRUE(find.ForEachFile(missing, u"*", 2, Walk::Visit, true, &none));
  EXPECT_TRUE(none.paths.empty());
}

TEST_F(Tree, ForEachFileReportsAnUnreadableFolder) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every folder; no other way to refuse one";
  fs::permissions(dir_ / u"sub2", fs::perms::none);
  XString16 root = Str(dir_.root().u16string() + kDiv);
  Walk walk;
  XFindFile find;
  EXPECT_FALSE(find.ForEachFile(root, u"*", 2, Walk::Visit, true, &walk));
  EXPECT_EQ(Err(root), std::make_tuple(5u, kErrSourcePlatform));
  fs::permissions(dir_ / u"sub2", fs::perms::owner_all);
}

}  // namespace
}  // namespace tavi
