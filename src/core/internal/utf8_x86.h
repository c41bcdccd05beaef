//===- utf8_x86.h - The vector paths of the UTF-8 converter ----*- C++ -*-===//
//
// Declarations shared by utf8.cpp (the dispatcher) and utf8_x86.cpp (the SSE2 and
// AVX2 instantiations of the converter loops).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/internal/utf8.h"

#if defined(__x86_64__)
#define TAVI_UTF8_X86 1
#else
#define TAVI_UTF8_X86 0
#endif

namespace tavi::internal {

using Utf8DecodeFn = Utf8Status (*)(const uint8_t*, size_t, char16_t*, size_t, size_t*, size_t*,
                                    size_t*);
using Utf8EncodeFn = size_t (*)(const uint8_t*, size_t, uint8_t*);

#if TAVI_UTF8_X86
Utf8Status DecodeUtf8Sse2(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                          size_t* consumed, size_t* produced, size_t* needed);
size_t EncodeUtf8Sse2(const uint8_t* units, size_t count, uint8_t* out);
Utf8Status DecodeUtf8Avx2(const uint8_t* in, size_t n, char16_t* out, size_t max_units,
                          size_t* consumed, size_t* produced, size_t* needed);
size_t EncodeUtf8Avx2(const uint8_t* units, size_t count, uint8_t* out);
#endif

}  // namespace tavi::internal
