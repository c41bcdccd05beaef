//===- locale_marks.h - Taking a locale's separators into options -*- C++ -*-===//
#pragma once

#include <cstdint>

#include "tavi/format/number_options.h"

namespace tavi::internal {

// TakeLocaleMarks applies separators as the platform reported them: each count is
// the platform's answer (characters written with the terminator, 0 on failure),
// and a mark is taken only when it is exactly 2 (one character). A plain space as
// thousands separator becomes U+00A0.
void TakeLocaleMarks(strEnvNumberOptions& options, const char16_t* decimal, int32_t decimal_count,
                     const char16_t* thousand, int32_t thousand_count);

}  // namespace tavi::internal
