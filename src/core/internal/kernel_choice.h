//===- kernel_choice.h - The active path of one hot kernel -----*- C++ -*-===//
//
// Each algorithm has a portable path and accelerated ones. KernelChoice holds the
// implementation an algorithm runs with: the fastest path the processor has (the
// portable one when TAVI_FORCE_PORTABLE is set), chosen once on first use, and
// replaceable by tests and benchmarks that compare the paths.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <atomic>
#include <initializer_list>

#include "platform/cpu.h"

namespace tavi::internal {

template <typename Path, typename Impl>
class KernelChoice {
 public:
  using ImplOf = Impl (*)(Path);
  using Usable = bool (*)(Path);

  // fastest_first lists the accelerated paths, fastest first; portable is taken when
  // the processor has none of them.
  KernelChoice(std::initializer_list<Path> fastest_first, Path portable, ImplOf impl_of,
               Usable usable)
      : impl_of_(impl_of), usable_(usable), automatic_(portable) {
    if (!platform::ForcePortableKernels()) {
      for (Path path : fastest_first) {
        if (usable(path)) {
          automatic_ = path;
          break;
        }
      }
    }
    Reset();
  }

  // The implementation to call now.
  Impl Get() const { return impl_.load(std::memory_order_relaxed); }
  Path Active() const { return path_.load(std::memory_order_relaxed); }
  // Set switches to path; false, changing nothing, when the processor lacks it.
  bool Set(Path path) {
    if (!usable_(path)) return false;
    path_.store(path, std::memory_order_relaxed);
    impl_.store(impl_of_(path), std::memory_order_relaxed);
    return true;
  }
  // Reset restores the automatic choice.
  void Reset() { Set(automatic_); }

 private:
  ImplOf impl_of_;
  Usable usable_;
  Path automatic_;
  std::atomic<Path> path_{};
  std::atomic<Impl> impl_{};
};

}  // namespace tavi::internal
