//===- version.cpp - Library version ---------------------------------------===//
#include "tavi/version.h"

namespace tavi {

const char* XGetVersionString() {
  return "0.1.0";
}

}  // namespace tavi
