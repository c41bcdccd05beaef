//===- module_posix.cpp - Paths of loaded modules on POSIX -----------------===//
#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "platform/errors.h"
#include "platform/module.h"
#include "platform/text.h"

namespace tavi::platform {

bool ModuleFileName(XModule module, std::u16string& path) {
  if (module == nullptr) {
    char buffer[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
    if (n <= 0) {
      SetLastErrorFromErrno();
      return false;
    }
    path = Utf8ToUtf16(buffer, static_cast<size_t>(n));
    return true;
  }
  Dl_info info{};
  if (dladdr(module, &info) == 0 || info.dli_fname == nullptr) {
    SetLastError(kErrorResourceNameNotFound);
    return false;
  }
  path = Utf8ToUtf16(info.dli_fname, std::strlen(info.dli_fname));
  return true;
}

}  // namespace tavi::platform
