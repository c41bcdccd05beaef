//===- case_map_icu.cpp - Case mapping and folding through ICU ------------===//
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include "platform/case_map.h"

namespace tavi::platform {

int32_t MapCase(CaseMapping mapping, const char16_t* text, int32_t count, char16_t* out,
                int32_t capacity) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t length = 0;
  // "" is the root locale: no language-specific rules (Turkish dotless i and the like).
  switch (mapping) {
    case CaseMapping::kUpper:
      length = u_strToUpper(out, capacity, text, count, "", &status);
      break;
    case CaseMapping::kLower:
      length = u_strToLower(out, capacity, text, count, "", &status);
      break;
    case CaseMapping::kTitle:
      length = u_strToTitle(out, capacity, text, count, nullptr, "", &status);
      break;
  }
  if (status == U_BUFFER_OVERFLOW_ERROR || status == U_STRING_NOT_TERMINATED_WARNING) return length;
  return U_FAILURE(status) ? -1 : length;
}

uint32_t SimpleFold(uint32_t code_point) {
  return static_cast<uint32_t>(u_foldCase(static_cast<UChar32>(code_point), U_FOLD_CASE_DEFAULT));
}

}  // namespace tavi::platform
