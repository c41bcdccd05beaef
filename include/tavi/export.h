//===- export.h - Symbol visibility for the public interface ---*- C++ -*-===//
//
// The library is built with hidden visibility; TAVI_API marks what it exports.
//
//===----------------------------------------------------------------------===//
#pragma once

#if defined(_WIN32)
#if defined(TAVI_BUILDING_LIBRARY)
#define TAVI_API __declspec(dllexport)
#else
#define TAVI_API
#endif
#else
#define TAVI_API __attribute__((visibility("default")))
#endif
