//===- path_test.cpp - Folder paths and the wildcard matcher ---------------===//
#include <gtest/gtest.h>

#include "file/file_helpers.h"
#include "tavi/file/file.h"

namespace tavi {
namespace {}  // namespace
}  // namespace tavi
