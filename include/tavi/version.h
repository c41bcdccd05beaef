//===- version.h - Library version ------------------------------*- C++ -*-===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

inline constexpr uint32_t kVersionMajor = 0;
inline constexpr uint32_t kVersionMinor = 1;
inline constexpr uint32_t kVersionPatch = 0;

// XGetVersionString returns the version of the loaded library as "major.minor.patch".
TAVI_API const char* XGetVersionString();

}  // namespace tavi
