//===- find_file_test.cpp - Folder searches and walks ----------------------===//
#include "tavi/file/find_file.h"

#include <gtest/gtest.h>

#include "file/file_helpers.h"
#include "tavi/file/file.h"

namespace tavi {
namespace {}  // namespace
}  // namespace tavi
