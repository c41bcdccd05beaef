//===- ui.h - Calling the user-interface table -----------------*- C++ -*-===//
//
// UI(&XUserInterface::entry) gives the installed table's entry, or the default
// table's when the host left it null.
//
//===----------------------------------------------------------------------===//
#pragma once

#include "tavi/core/user_interface.h"

namespace tavi::internal {

template <typename Entry>
Entry UI(Entry XUserInterface::*entry) {
  Entry e = XGetUserInterface()->*entry;
  return e != nullptr ? e : XDefaultUserInterface()->*entry;
}

}  // namespace tavi::internal
