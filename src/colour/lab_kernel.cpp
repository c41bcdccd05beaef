//===- lab_kernel.cpp - Portable block conversion to L*a*b* and dispatch --===//
#include "colour/internal/lab_kernel.h"

#include "core/internal/kernel_choice.h"
#include "platform/cpu.h"

namespace tavi::colour_internal {

using internal::KernelChoice;

namespace {

using ColoursToLabFn = void (*)(const uint32_t*, strLab*, uint32_t);

ColoursToLabFn PathFunction(LabPath path) {
#if defined(__x86_64__) || defined(__i386__)
  if (path == LabPath::kAvx2) return &ColoursToLabAvx2;
#else
  (void)path;
#endif
  return &ColoursToLabPortable;
}

KernelChoice<LabPath, ColoursToLabFn>& Choice() {
  static KernelChoice<LabPath, ColoursToLabFn> choice({LabPath::kAvx2}, LabPath::kPortable,
                                                      PathFunction, LabPathAvailable);
  return choice;
}

}  // namespace

void ColoursToLabPortable(const uint32_t* in, strLab* out, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) out[i] = XColourToLab(in[i]);
}

bool LabPathAvailable(LabPath path) {
  if (path == LabPath::kPortable) return true;
#if defined(__x86_64__) || defined(__i386__)
  return platform::GetCpuFeatures().avx2;
#else
  return false;
#endif
}

LabPath LabActivePath() {
  return Choice().Active();
}
bool SetLabPath(LabPath path) {
  return Choice().Set(path);
}
void ResetLabPath() {
  Choice().Reset();
}

void ColoursToLab(const uint32_t* in, strLab* out, uint32_t count) {
  Choice().Get()(in, out, count);
}

}  // namespace tavi::colour_internal
