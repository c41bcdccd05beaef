//===- fold.h - The simple case folding of the BMP -------------*- C++ -*-===//
#pragma once

namespace tavi::text_internal {

// The simple folding of every code unit (surrogates map to themselves), built on
// first use and kept for the life of the process.
const char16_t* FoldTable();

}  // namespace tavi::text_internal
