//===- path_names_fuzz.cpp - Fuzz the path functions and the wildcard matcher ===//
//
// The input is split into two UTF-16 texts at the first 0 unit: a pattern (or a
// base path) and a name (or a path). The path functions may never read past a
// text's terminator and must keep their results inside the text; the wildcard
// matcher must agree with a plain reference matcher on short texts.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/text/wildcard.h"

namespace {

using namespace tavi;

// The meaning of the patterns: '*' any run, '?' one character (a surrogate pair
// counts as one), everything else itself.
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

void CheckPaths(const std::u16string& a, const std::u16string& b) {
  const char16_t* d = XGetSubDirDivider(a.c_str());
  FUZZ_ASSERT(d == nullptr || (d >= a.c_str() && d < a.c_str() + a.size() && *d == XPathDivider));
  const int32_t common = XGetLastCommonSlashIndex(a.c_str(), b.c_str());
  FUZZ_ASSERT(common >= 0 && (common == 0 || static_cast<size_t>(common) < a.size()));
  const int32_t level = XGetSubDirLevel(a.c_str(), b.c_str());
  FUZZ_ASSERT(level >= -2);
  FUZZ_ASSERT((level == 0) == (XGetSubDirLevel(b.c_str(), a.c_str()) == 0));
  if (level > 0) FUZZ_ASSERT(XGetSubDirLevel(b.c_str(), a.c_str()) == -2);

  XString16 path;
  path.Set(a.c_str(), static_cast<uint32_t>(a.size() * 2));
  const int32_t levels = static_cast<int32_t>(b.size() % 5);
  FUZZ_ASSERT(XCutToDirectory(path, levels));
  const uint32_t kept = path.GetBufferPos() / 2;
  FUZZ_ASSERT(kept <= a.size() && a.compare(0, kept, path.c_str(), kept) == 0);
  FUZZ_ASSERT(kept == 0 || path[kept - 1] == XPathDivider);
  FUZZ_ASSERT(path[kept] == 0);
  if (XDirAddDivider(path)) FUZZ_ASSERT(path[path.GetBufferPos() / 2 - 1] == XPathDivider);
}

// A pattern's lone surrogate matches only a lone surrogate, never half of a pair,
// which the unit-by-unit reference does not know.
bool HasLoneSurrogate(const std::u16string& s) {
  for (size_t i = 0; i < s.size(); ++i) {
    const bool lead = s[i] >= 0xD800 && s[i] <= 0xDBFF;
    const bool trail = s[i] >= 0xDC00 && s[i] <= 0xDFFF;
    if (lead && i + 1 < s.size() && s[i + 1] >= 0xDC00 && s[i + 1] <= 0xDFFF) {
      ++i;
    } else if (lead || trail) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  const size_t split = units.find(u'\0');
  const std::u16string first = units.substr(0, split);
  const std::u16string second = split == std::u16string::npos ? u"" : units.substr(split + 1);
  // Later 0 units end the second text, as they would end a terminated text.
  const std::u16string name = second.substr(0, second.find(u'\0'));

  const bool match =
      XWildcardMatch(first.data(), first.size(), name.data(), name.size(), kWildcardFileName);
  // The reference knows '*' and '?' only; sets are checked with the matcher's own tests.
  if (first.size() <= 12 && name.size() <= 24 && first != u"*.*" &&
      first.find(u'[') == std::u16string::npos && !HasLoneSurrogate(first)) {
    FUZZ_ASSERT(match == Reference(first, 0, name, 0));
  }
  CheckPaths(first, name);
  return 0;
}
