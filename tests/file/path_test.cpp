//===- path_test.cpp - Folder paths and the wildcard matcher ---------------===//
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <random>
#include <string>

#include "file/file_helpers.h"
#include "tavi/file/file.h"
#include "tavi/text/wildcard.h"

namespace tavi {
namespace {

namespace fs = std::filesystem;
using test::Err;
using test::ScratchDir;
using test::Str;
using test::Text;

// Paths are written with '|' for the divider and turned into the platform's form.
std::u16string P(std::u16string s) {
  for (auto& c : s) {
    if (c == u'|') c = XPathDivider;
  }
  return s;
}

TEST(Paths, CutToDirectory) {
  struct Case {
    std::u16string path;
    int32_t levels;
    std::u16string expected;
  } cases[] = {
      {u"C:|a|b|c.txt", 0, u"C:|a|b|"},
      {u"C:|a|b|c.txt", 1, u"C:|a|"},
      {u"C:|a|b|c.txt", 2, u"C:|"},
      {u"C:|a|b|c.txt", 9, u"C:|"},
      {u"|a|b|", 0, u"|a|b|"},
      {u"|a|b|", 1, u"|a|"},
      {u"|x", 5, u"|"},
      {u"name.txt", 0, u""},
      {u"", 3, u""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.path.begin(), c.path.end()));
    XString16 path = Str(P(c.path));
    path._SetCurrentPos(path.GetBufferPos());
    EXPECT_TRUE(XCutToDirectory(path, c.levels));
    EXPECT_EQ(Text(path), P(c.expected));
    EXPECT_EQ(std::u16string(path.c_str()), P(c.expected));  // terminated
    EXPECT_LE(path.GetCurrentPos(), path.GetBufferPos());
  }
}

TEST(Paths, AddDividerAndSubDirDivider) {
  XString16 one = Str(u"a");
  EXPECT_FALSE(XDirAddDivider(one));
  EXPECT_EQ(Err(one), std::make_tuple(kErrOptionText, kErrSourcePlain));
  XString16 two = Str(u"ab");
  EXPECT_TRUE(XDirAddDivider(two));
  EXPECT_TRUE(XDirAddDivider(two));
  EXPECT_EQ(Text(two), P(u"ab|"));

  const std::u16string a = P(u"|a|b|"), b = P(u"|a|b"), c = u"abc";
  EXPECT_EQ(XGetSubDirDivider(a.c_str()), a.c_str() + 2);
  EXPECT_EQ(XGetSubDirDivider(b.c_str()), b.c_str() + 2);
  EXPECT_EQ(XGetSubDirDivider(c.c_str()), nullptr);
  EXPECT_EQ(XGetSubDirDivider(P(u"|").c_str()), nullptr);
  EXPECT_EQ(XGetSubDirDivider(u""), nullptr);
  EXPECT_EQ(XGetSubDirDivider(nullptr), nullptr);
}

TEST(Paths, CommonPrefixAndLevels) {
  EXPECT_EQ(XGetLastCommonSlashIndex(P(u"|a|bc|d").c_str(), P(u"|a|bd|d").c_str()), 2);
  EXPECT_EQ(XGetLastCommonSlashIndex(P(u"x|y|z").c_str(), P(u"x|y|z").c_str()), 3);
  EXPECT_EQ(XGetLastCommonSlashIndex(u"abc", u"abd"), 0);
  EXPECT_EQ(XGetLastCommonSlashIndex(u"", P(u"|a").c_str()), 0);

  struct Case {
    std::u16string path, base;
    int32_t level;
  } cases[] = {
      {u"|a|b", u"|a|b", 0},
      {u"|a|b|", u"|a|b", 0},
      {u"|a|b", u"|a|b|", 0},
      {u"|a|b|c", u"|a|b", 1},
      {u"|a|b|c|", u"|a|b|", 1},
      {u"|a|b|c||d", u"|a|b", 2},
      {u"|a|b", u"|a|b|c", -2},
      {u"|a|bc", u"|a|b", -1},
      {u"|a|b", u"|a|bc", -1},
      {u"|a|x|c", u"|a|b|c", -1},
      {u"", u"", 0},
      {u"a", u"", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.path.begin(), c.path.end()) + " vs " +
                 std::string(c.base.begin(), c.base.end()));
    EXPECT_EQ(XGetSubDirLevel(P(c.path).c_str(), P(c.base).c_str()), c.level);
  }
}

TEST(Paths, CreateAndRemoveFolders) {
  ScratchDir dir;
  XString16 empty;
  EXPECT_FALSE(XDirCreate(empty));
  EXPECT_EQ(Err(empty), std::make_tuple(kErrCreateDirectory, kErrSourcePlain));

  XString16 deep = Str(dir.Name(P(u"a|b|c")));
  EXPECT_TRUE(XDirCreate(deep));
  EXPECT_TRUE(fs::is_directory(dir / P(u"a|b|c")));
  // The whole path exists now: "already exists".
  EXPECT_FALSE(XDirCreate(deep));
  EXPECT_EQ(Err(deep), std::make_tuple(183u, kErrSourcePlatform));
  // A final divider creates the folders before it and nothing more.
  XString16 ended = Str(dir.Name(P(u"x|y|")));
  EXPECT_TRUE(XDirCreate(ended));
  EXPECT_TRUE(XDirCreate(ended));
  EXPECT_TRUE(fs::is_directory(dir / P(u"x|y")));
  // A file in the way.
  test::Spit(dir / u"file", "");
  XString16 blocked = Str(dir.Name(P(u"file|sub")));
  EXPECT_FALSE(XDirCreate(blocked));
  EXPECT_EQ(blocked.GetErrorCode(), 3u);

  XString16 parent = Str(dir.Name(P(u"a|b")));
  EXPECT_FALSE(XDirRemove(parent));
  EXPECT_EQ(parent.GetErrorCode(), 145u);
  EXPECT_TRUE(XDirRemove(deep));
  EXPECT_TRUE(XDirRemove(parent));
  EXPECT_FALSE(XDirRemove(parent));
  EXPECT_EQ(parent.GetErrorCode(), 2u);
}

TEST(Paths, CurrentFolder) {
  ScratchDir dir;
  XString16 before;
  ASSERT_TRUE(XDirGetCurrent(before));
  const std::u16string name = dir.Name(u"cwd_ä");
  fs::create_directory(fs::path(name));
  XString16 target = Str(name);
  ASSERT_TRUE(XDirSetCurrent(target));
  XString16 now;
  EXPECT_TRUE(XDirGetCurrent(now));
  EXPECT_EQ(fs::path(Text(now)), fs::canonical(fs::path(name)));
  EXPECT_TRUE(XDirSetCurrent(before));
  XString16 missing = Str(dir.Name(u"missing"));
  EXPECT_FALSE(XDirSetCurrent(missing));
  EXPECT_EQ(missing.GetErrorCode(), 2u);
}

// Sets an environment variable for the lifetime of the object.
struct ScopedEnv {
  ScopedEnv(const char* name, const std::string& value) : name(name) {
    if (const char* old = std::getenv(name)) saved = old;
    setenv(name, value.c_str(), 1);
  }
  ~ScopedEnv() { saved ? setenv(name, saved->c_str(), 1) : unsetenv(name); }
  const char* name;
  std::optional<std::string> saved;
};

TEST(Paths, KnownFoldersFollowXdg) {
  ScratchDir dir;
  ScopedEnv config("XDG_CONFIG_HOME", (dir / u"cfg").string());
  ScopedEnv home("HOME", (dir / u"home").string());
  ScopedEnv data("XDG_DATA_HOME", "relative/ignored");
  XString16 path;
  ASSERT_TRUE(XGetSystemDirectory(path, 26));
  EXPECT_EQ(Text(path), dir.Name(u"cfg") + XPathDivider);
  EXPECT_TRUE(fs::is_directory(dir / u"cfg"));  // created when missing
  ASSERT_TRUE(XGetSystemDirectory(path, 28));
  EXPECT_EQ(Text(path), dir.Name(P(u"home|.local|share|")));
  ASSERT_TRUE(XGetSystemDirectory(path, 5));
  EXPECT_EQ(Text(path), dir.Name(P(u"home|Documents|")));
  EXPECT_FALSE(XGetSystemDirectory(path, 36));
  EXPECT_EQ(Err(path), std::make_tuple(3u, kErrSourcePlatform));
}

// A plain recursive matcher: the meaning of the patterns, without the cleverness.
bool Reference(const std::u16string& p, size_t i, const std::u16string& n, size_t j) {
  if (i == p.size()) return j == n.size();
  if (p[i] == u'*') {
    for (size_t k = j; k <= n.size(); ++k) {
      if (Reference(p, i + 1, n, k)) return true;
    }
    return false;
  }
  if (j == n.size()) return false;
  if (p[i] == u'?') {
    const bool pair = n[j] >= 0xD800 && n[j] <= 0xDBFF && j + 1 < n.size() && n[j + 1] >= 0xDC00 &&
                      n[j + 1] <= 0xDFFF;
    return Reference(p, i + 1, n, j + (pair ? 2 : 1));
  }
  return p[i] == n[j] && Reference(p, i + 1, n, j + 1);
}

bool Match(const std::u16string& p, const std::u16string& n) {
  return XWildcardMatch(p.data(), p.size(), n.data(), n.size(), kWildcardFileName);
}

TEST(Wildcard, AgreesWithTheReference) {
  // Names may hold lone surrogates; patterns hold only whole pairs, as a pattern's
  // lone surrogate matches only a lone one, which the unit-by-unit reference does not
  // know.
  std::mt19937 rng(11);
  const char16_t alphabet[] = {u'a', u'b', u'.', 0xD83D, 0xDE00};
  const char16_t* const pattern_pieces[] = {u"a", u"b", u".", u"*", u"?", u"\U0001F600"};
  for (int round = 0; round < 20000; ++round) {
    std::u16string p, n;
    for (size_t k = rng() % 6; k > 0; --k) p += pattern_pieces[rng() % 6];
    for (size_t k = rng() % 9; k > 0; --k) n += alphabet[rng() % 5];
    if (p == u"*.*") continue;  // every name, dot or not
    ASSERT_EQ(Match(p, n), Reference(p, 0, n, 0))
        << std::string(p.begin(), p.end()) << " / " << std::string(n.begin(), n.end());
  }
}

}  // namespace
}  // namespace tavi
