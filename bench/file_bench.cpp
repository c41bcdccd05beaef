//===- file_bench.cpp - File streams beside stdio --------------------------===//
//
// Field-by-field serialisation writes and reads a few bytes at a time. Each group
// moves the same bytes through XFile and through a stdio FILE* (the peer) in pieces
// of one size, opening and closing the file in every iteration; after the run each
// tavi case's throughput is printed as a ratio to stdio's.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace {

using namespace tavi;

constexpr size_t kTotal = 4'000'000;  // 1,000,000 pieces of 4 bytes

const std::string& Path() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("tavi_file_bench_" + std::to_string(getpid())))
          .string();
  return path;
}

XString16 Name() {
  const std::string& p = Path();
  XString16 name;
  for (char c : p) {
    const char16_t u = static_cast<unsigned char>(c);
    name._Write(&u, 2);
  }
  return name;
}

std::map<std::string, size_t>& BytesPerIteration() {
  static std::map<std::string, size_t> bytes;
  return bytes;
}

void Register(const std::string& name, void (*body)(benchmark::State&, size_t), size_t piece) {
  BytesPerIteration()[name] = kTotal;
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    body(state, piece);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kTotal));
  })->Unit(benchmark::kMillisecond);
}

void WriteTavi(benchmark::State& state, size_t piece) {
  XString16 name = Name();
  std::vector<char> data(piece, 'x');
  for (auto _ : state) {
    XFile file;
    file.Open(name, kFileWrite | kFileCreateAlways, nullptr);
    for (size_t at = 0; at < kTotal; at += piece) {
      file._Write(data.data(), static_cast<uint32_t>(piece));
    }
    if (!file.Close()) state.SkipWithError("close failed");
  }
}

void WriteStdio(benchmark::State& state, size_t piece) {
  std::vector<char> data(piece, 'x');
  for (auto _ : state) {
    FILE* f = std::fopen(Path().c_str(), "wb");
    for (size_t at = 0; at < kTotal; at += piece) std::fwrite(data.data(), 1, piece, f);
    if (std::fclose(f) != 0) state.SkipWithError("close failed");
  }
}

void Prepare() {
  FILE* f = std::fopen(Path().c_str(), "wb");
  std::vector<char> data(kTotal, 'y');
  std::fwrite(data.data(), 1, data.size(), f);
  std::fclose(f);
}

void ReadTavi(benchmark::State& state, size_t piece) {
  XString16 name = Name();
  std::vector<char> data(piece);
  for (auto _ : state) {
    XFile file;
    file.Open(name, kFileRead, nullptr);
    size_t got = 0;
    for (size_t at = 0; at < kTotal; at += piece) {
      got += file._Read(data.data(), static_cast<uint32_t>(piece));
    }
    if (got != kTotal) state.SkipWithError("short read");
  }
}

void ReadStdio(benchmark::State& state, size_t piece) {
  std::vector<char> data(piece);
  for (auto _ : state) {
    FILE* f = std::fopen(Path().c_str(), "rb");
    size_t got = 0;
    for (size_t at = 0; at < kTotal; at += piece) got += std::fread(data.data(), 1, piece, f);
    std::fclose(f);
    if (got != kTotal) state.SkipWithError("short read");
  }
}

// Collects the mean time per iteration of each benchmark while printing as usual.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      seconds_[run.benchmark_name()] =
          run.real_accumulated_time / static_cast<double>(run.iterations);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    std::printf("\nThroughput relative to stdio:\n");
    for (const auto& [name, secs] : seconds_) {
      const size_t slash = name.find('/');
      if (name.substr(slash + 1) != "tavi") continue;
      const auto it = seconds_.find(name.substr(0, slash) + "/stdio");
      if (it == seconds_.end()) continue;
      const double mbps = static_cast<double>(BytesPerIteration().at(name)) / secs / 1e6;
      std::printf("  %-24s %9.0f MB/s  %5.2fx stdio\n", name.c_str(), mbps, it->second / secs);
    }
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (size_t piece : {size_t{4}, size_t{64}, size_t{4000}}) {
    const std::string p = std::to_string(piece);
    Register("Write" + p + "B/tavi", WriteTavi, piece);
    Register("Write" + p + "B/stdio", WriteStdio, piece);
  }
  Prepare();
  for (size_t piece : {size_t{4}, size_t{64}, size_t{4000}}) {
    const std::string p = std::to_string(piece);
    Register("Read" + p + "B/tavi", ReadTavi, piece);
    Register("Read" + p + "B/stdio", ReadStdio, piece);
  }
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  std::remove(Path().c_str());
  benchmark::Shutdown();
  return 0;
}
