//===- main.cpp - The tavi command-line program ----------------------------===//
#include <cstdio>
#include <cstring>

#include "tavi/tavi.h"

int main(int argc, char** argv) {
  std::printf("tavi %s\n", tavi::XGetVersionString());
  (void)argc;
  (void)argv;
  return 0;
}
