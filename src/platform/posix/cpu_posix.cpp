//===- cpu_posix.cpp - Processor features through cpuid -------------------===//
//
// Reads cpuid and XCR0 on x86 processors; elsewhere reports no extensions.
//
//===----------------------------------------------------------------------===//
#include "platform/cpu.h"

#include <cstdlib>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace tavi::platform {
namespace {

#if defined(__x86_64__) || defined(__i386__)
// XCR0 says which register sets the operating system saves on a context switch.
unsigned long long ReadXcr0() {
  unsigned int lo = 0;
  unsigned int hi = 0;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<unsigned long long>(hi) << 32) | lo;
}

CpuFeatures DetectFeatures() {
  CpuFeatures f;
  unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return f;
  f.ssse3 = (ecx >> 9) & 1;
  f.sse41 = (ecx >> 19) & 1;
  f.pclmul = (ecx >> 1) & 1;
  f.aes = (ecx >> 25) & 1;
  const bool osxsave = (ecx >> 27) & 1;
  const bool avx_bit = (ecx >> 28) & 1;

  bool ymm_saved = false;
  bool zmm_saved = false;
  if (osxsave) {
    const unsigned long long xcr0 = ReadXcr0();
    ymm_saved = (xcr0 & 0x6) == 0x6;    // SSE and AVX state
    zmm_saved = (xcr0 & 0xE6) == 0xE6;  // plus opmask, ZMM_Hi256, Hi16_ZMM
  }
  f.avx = avx_bit && ymm_saved;

  unsigned int max_leaf = __get_cpuid_max(0, nullptr);
  if (max_leaf >= 7) {
    __cpuid_count(7, 0, eax, ebx, ecx, edx);
    f.sha = (ebx >> 29) & 1;
    f.avx2 = f.avx && ((ebx >> 5) & 1);
    f.avx512f = zmm_saved && ((ebx >> 16) & 1);
    f.avx512bw = f.avx512f && ((ebx >> 30) & 1);
    f.avx512vl = f.avx512f && ((ebx >> 31) & 1);
    f.vaes = f.avx && ((ecx >> 9) & 1);
    f.vpclmulqdq = f.avx && ((ecx >> 10) & 1);
  }
  if (__get_cpuid_max(0x80000000, nullptr) >= 0x80000007) {
    __cpuid(0x80000007, eax, ebx, ecx, edx);
    f.invariantTsc = (edx >> 8) & 1;
  }
  return f;
}
#else
CpuFeatures DetectFeatures() {
  return CpuFeatures{};
}
#endif

}  // namespace

const CpuFeatures& GetCpuFeatures() {
  static const CpuFeatures features = DetectFeatures();
  return features;
}

bool ForcePortableKernels() {
  static const bool forced = [] {
    const char* value = std::getenv("TAVI_FORCE_PORTABLE");
    return value != nullptr && value[0] != '\0' && std::strcmp(value, "0") != 0;
  }();
  return forced;
}

}  // namespace tavi::platform
