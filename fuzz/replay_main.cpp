//===- replay_main.cpp - Replay a fuzz corpus without libFuzzer ------------===//
//
// Runs LLVMFuzzerTestOneInput over every file named on the command line (folders
// are walked), so that ordinary builds exercise each fuzz target's corpus under
// the sanitizers. Prints "N passed, 0 failed"; a crash aborts the run.
//
//===----------------------------------------------------------------------===//
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int RunFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  // The empty input is always worth one run.
  LLVMFuzzerTestOneInput(nullptr, 0);
  ++count;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::path arg(argv[i]);
    std::error_code ec;
    if (std::filesystem::is_directory(arg, ec)) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(arg, ec)) {
        if (entry.is_regular_file()) count += RunFile(entry.path());
      }
    } else if (std::filesystem::is_regular_file(arg, ec)) {
      count += RunFile(arg);
    }
  }
  std::printf("%d passed, 0 failed\n", count);
  return 0;
}
