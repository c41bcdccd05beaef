//===- module.h - Loaded modules -------------------------------*- C++ -*-===//
#pragma once

#include <string>

#include "tavi/core/types.h"

namespace tavi::platform {

// ModuleFileName gives the path of a loaded module: null is the program itself, any
// other handle is an address inside the module. False with the last error set when
// the path cannot be found.
bool ModuleFileName(XModule module, std::u16string& path);

}  // namespace tavi::platform
