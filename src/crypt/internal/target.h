//===- target.h - Target attributes for the accelerated kernels -*- C++ -*-===//
//
// The library is built without -march flags; each function that uses an
// instruction-set extension carries one of these attributes instead, and is
// called only after the dispatcher has seen the extension at run time.
//
//===----------------------------------------------------------------------===//
#pragma once

#if defined(__x86_64__) || defined(__i386__)
#define TAVI_CRYPT_X86 1
#define TAVI_TARGET_PCLMUL __attribute__((target("sse4.1,pclmul")))
#define TAVI_TARGET_VPCLMUL \
  __attribute__((target("sse4.1,pclmul,avx2,avx512f,avx512vl,vpclmulqdq")))
#define TAVI_TARGET_SHANI __attribute__((target("sse4.1,sha")))
#define TAVI_TARGET_AESNI __attribute__((target("sse4.1,aes")))
#define TAVI_TARGET_VAES __attribute__((target("sse4.1,aes,avx2,avx512f,avx512vl,vaes")))
#else
#define TAVI_CRYPT_X86 0
#endif

// Asks the compiler to unroll a loop of fixed count completely, so that the
// per-block values of the interleaved kernels stay in registers.
#define TAVI_UNROLL_PRAGMA(x) _Pragma(#x)
#define TAVI_UNROLL(n) TAVI_UNROLL_PRAGMA(GCC unroll n)
