//===- cpu.h - Processor features for run-time kernel choice ----*- C++ -*-===//
//
// Reports which instruction-set extensions the processor and the operating
// system make usable, so that hot kernels can pick a path once at run time.
//
//===----------------------------------------------------------------------===//
#pragma once

namespace tavi::platform {

// The extensions the library's kernels can use. A flag is true only when the
// processor has the extension and the operating system saves the register
// state it needs (XCR0), so code using it will not fault.
struct CpuFeatures {
  bool ssse3 = false;
  bool sse41 = false;
  bool pclmul = false;
  bool aes = false;
  bool sha = false;
  bool avx = false;
  bool avx2 = false;
  bool avx512f = false;
  bool avx512vl = false;
  bool avx512bw = false;
  bool vaes = false;
  bool vpclmulqdq = false;
  // The time-stamp counter ticks at one constant rate in every power state.
  bool invariantTsc = false;
};

// GetCpuFeatures returns the features of the processor this process runs on.
// Read once on first call; on processors other than x86 every flag is false.
const CpuFeatures& GetCpuFeatures();

// ForcePortableKernels is true when the environment variable
// TAVI_FORCE_PORTABLE is set to a non-empty value other than "0". The kernel
// dispatchers then choose their portable paths, which lets a whole test run
// exercise the code a processor without the extensions would use.
bool ForcePortableKernels();

}  // namespace tavi::platform
