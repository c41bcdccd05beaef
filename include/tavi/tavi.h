//===- tavi.h - Everything the library offers ------------------*- C++ -*-===//
//
// Umbrella header: includes every public header of the library.
//
//===----------------------------------------------------------------------===//
#pragma once

#include "tavi/export.h"
#include "tavi/crypt/aes256.h"
#include "tavi/crypt/crc32.h"
#include "tavi/crypt/sha256.h"
#include "tavi/version.h"
