//===- tavi.h - Everything the library offers ------------------*- C++ -*-===//
//
// Umbrella header: includes every public header of the library.
//
//===----------------------------------------------------------------------===//
#pragma once

#include "tavi/export.h"
#include "tavi/version.h"
