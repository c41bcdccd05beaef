//===- lab_kernel.h - Blocks of colour values to L*a*b* ----------*- C++ -*-===//
//
// The block conversion behind XColoursToLab: a portable path (one colour at a
// time through the library's scalar conversion) and an AVX2 path that converts
// four colours per step, chosen once from the processor's features.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/colour/colour.h"

namespace tavi::colour_internal {

void ColoursToLabPortable(const uint32_t* in, strLab* out, uint32_t count);
#if defined(__x86_64__) || defined(__i386__)
// Four colours per step: linear light gathered from the table, the cube root by
// three Halley steps from a rational first guess (within 2 units in the last place
// of std::cbrt over the range 8-bit colours reach). The rest is the same
// arithmetic as the portable path; over all 2^24 colours results differ from it by
// at most 4.5e-13.
void ColoursToLabAvx2(const uint32_t* in, strLab* out, uint32_t count);
#endif

enum class LabPath { kPortable, kAvx2 };

// Path selection: tests and benchmarks force a path, Reset restores the
// automatic choice.
bool LabPathAvailable(LabPath path);
LabPath LabActivePath();
bool SetLabPath(LabPath path);
void ResetLabPath();

// ColoursToLab runs the block through the active path.
void ColoursToLab(const uint32_t* in, strLab* out, uint32_t count);

}  // namespace tavi::colour_internal
