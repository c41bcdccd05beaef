//===- coder_path.h - Plain or fast path of the coders ----------*- C++ -*-===//
//
// The Huffman and LZ buffer functions run either the plain path (through XBitStream
// and XHufmanIO, one call per field and one node per bit) or the fast path (64-bit
// accumulators over memory, table decoding). Both give identical bytes; tests and
// benchmarks switch between them, and TAVI_FORCE_PORTABLE selects the plain one.
//
//===----------------------------------------------------------------------===//
#pragma once

namespace tavi::pack_internal {

enum class CoderPath { kPlain, kFast };

// CoderActivePath is the path the coders use now.
CoderPath CoderActivePath();
// SetCoderPath makes the coders use path; ResetCoderPath restores the automatic
// choice (fast unless TAVI_FORCE_PORTABLE is set).
void SetCoderPath(CoderPath path);
void ResetCoderPath();

}  // namespace tavi::pack_internal
