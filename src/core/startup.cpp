//===- startup.cpp - What the library does when it is loaded ---------------===//
//
// The shared library reads the processor count (the worker count of the parallel
// forms) and the process timer's frequency once at load, as hosts expect of it.
// Every such value is also initialised on first use, so a program linked with the
// static library, which may leave this file out, behaves the same.
//
//===----------------------------------------------------------------------===//
#include "tavi/thread/parallel.h"
#include "time/internal/proc_time.h"

namespace tavi {
namespace {

[[maybe_unused]] const bool g_started = [] {
  XGetWorkerCount();
  internal::ProcTimeFrequency();
  return true;
}();

}  // namespace
}  // namespace tavi
