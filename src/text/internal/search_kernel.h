//===- search_kernel.h - Forward search kernels ----------------*- C++ -*-===//
//
// The forward search of a string in bytes and in UTF-16 code units, as a portable
// path and an AVX2 path that filters 32 bytes of candidate positions per step by
// the string's first and last unit. Both give the same results; the tests compare
// them.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavi::text_internal {

// Each returns the index of the first occurrence of w[0..m) in h[0..n), or SIZE_MAX.
// m >= 1.
using FindBytesFn = size_t (*)(const uint8_t* h, size_t n, const uint8_t* w, size_t m);
using FindUnitsFn = size_t (*)(const char16_t* h, size_t n, const char16_t* w, size_t m);

struct SearchKernels {
  FindBytesFn bytes;
  FindUnitsFn units;
};

enum class SearchPath { kPortable, kAvx2 };

size_t FindBytesPortable(const uint8_t* h, size_t n, const uint8_t* w, size_t m);
size_t FindUnitsPortable(const char16_t* h, size_t n, const char16_t* w, size_t m);
// Null when this build has no AVX2 path.
SearchKernels Avx2SearchKernels();

bool SearchPathAvailable(SearchPath path);
SearchPath ActiveSearchPath();
bool SetSearchPath(SearchPath path);
void ResetSearchPath();

}  // namespace tavi::text_internal
