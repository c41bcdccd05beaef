//===- types.h - Opaque handles shared by the library ----------*- C++ -*-===//
//
// Handles of the host's user interface and of loaded modules. They are pointers to
// incomplete types: the library passes them to the host's callbacks and never looks
// inside them.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

namespace tavi {

struct XWindowHandle;
struct XModuleHandle;
struct XMenuHandle;

// XWindow identifies a window (or a dialog, or a control) of the host application.
using XWindow = XWindowHandle*;
// XModule identifies a loaded module (program or shared library); null is the program.
using XModule = XModuleHandle*;
// XMenu identifies a menu of the host application.
using XMenu = XMenuHandle*;

}  // namespace tavi
