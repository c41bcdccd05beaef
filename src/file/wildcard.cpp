//===- wildcard.cpp - The library's wildcard matcher -----------------------===//
#include "file/internal/wildcard.h"

namespace tavi::internal {

namespace {

bool IsLead(char16_t c) {
  return c >= 0xD800 && c <= 0xDBFF;
}
bool IsTrail(char16_t c) {
  return c >= 0xDC00 && c <= 0xDFFF;
}

// Width in code units of the character at name[i]: 2 for a whole surrogate pair.
size_t CharWidth(const char16_t* name, size_t i, size_t length) {
  return IsLead(name[i]) && i + 1 < length && IsTrail(name[i + 1]) ? 2 : 1;
}

}  // namespace

bool WildcardMatch(const char16_t* pattern, size_t pattern_length, const char16_t* name,
                   size_t name_length) {
  if (pattern_length == 3 && pattern[0] == u'*' && pattern[1] == u'.' && pattern[2] == u'*') {
    return true;
  }
  // Greedy matching that remembers the last star: on a mismatch the star takes one
  // more character and matching resumes after it. Each star only ever moves forward,
  // which bounds the work by pattern * name steps.
  size_t p = 0, n = 0;
  size_t star = pattern_length;  // no star seen yet
  size_t star_name = 0;
  while (n < name_length) {
    if (p < pattern_length && pattern[p] == u'*') {
      star = p++;
      star_name = n;
    } else if (p < pattern_length && pattern[p] == u'?') {
      ++p;
      n += CharWidth(name, n, name_length);
    } else if (p < pattern_length && pattern[p] == name[n]) {
      ++p;
      ++n;
    } else if (star != pattern_length) {
      p = star + 1;
      ++star_name;
      n = star_name;
    } else {
      return false;
    }
  }
  while (p < pattern_length && pattern[p] == u'*') ++p;
  return p == pattern_length;
}

}  // namespace tavi::internal
