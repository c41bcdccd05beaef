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
#include <string>
#include <vector>

#include "ratio_reporter.h"
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

void Register(const std::string& name, void (*body)(benchmark::State&, size_t), size_t piece) {
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
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput relative to stdio:", {"stdio"}).PerSecond("MB/s", kTotal));
  std::remove(Path().c_str());
  benchmark::Shutdown();
  return 0;
}
