//===- core_bench.cpp - Buffer appends and stream copies -------------------===//
//
// XBuffer appends against a std::vector<char> doing the same, and XIO::ReadTo
// between two buffers against a plain memcpy of the same bytes.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "tavi/core/buffer.h"

namespace {

constexpr size_t kTotal = 1 << 20;

void BM_XBufferAppend(benchmark::State& state) {
  const size_t piece = static_cast<size_t>(state.range(0));
  const uint32_t granularity = static_cast<uint32_t>(state.range(1));
  std::vector<char> data(piece, 'x');
  for (auto _ : state) {
    tavi::XBuffer b(granularity);
    for (size_t done = 0; done < kTotal; done += piece)
      b._Write(data.data(), static_cast<uint32_t>(piece));
    benchmark::DoNotOptimize(b.GetBuffer());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kTotal));
}
BENCHMARK(BM_XBufferAppend)
    ->ArgNames({"piece", "granularity"})
    ->Args({16, 32})
    ->Args({16, 4096})
    ->Args({16, 1 << 20})
    ->Args({1024, 32})
    ->Args({1024, 1 << 20});

void BM_VectorAppend(benchmark::State& state) {
  const size_t piece = static_cast<size_t>(state.range(0));
  std::vector<char> data(piece, 'x');
  for (auto _ : state) {
    std::vector<char> v;
    for (size_t done = 0; done < kTotal; done += piece) v.insert(v.end(), data.begin(), data.end());
    benchmark::DoNotOptimize(v.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kTotal));
}
BENCHMARK(BM_VectorAppend)->ArgName("piece")->Arg(16)->Arg(1024);

void BM_ReadTo(benchmark::State& state) {
  const uint32_t size = static_cast<uint32_t>(state.range(0));
  tavi::XBuffer source;
  std::vector<char> data(size, 'y');
  source._Write(data.data(), size);
  tavi::XBuffer target;
  target.AllocBuffer(size);
  for (auto _ : state) {
    source._SetCurrentPos(0);
    target._SetBufferPos(0);
    source.ReadTo(target, size);
    benchmark::DoNotOptimize(target.GetBuffer());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}
BENCHMARK(BM_ReadTo)->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);

void BM_Memcpy(benchmark::State& state) {
  const size_t size = static_cast<size_t>(state.range(0));
  std::vector<char> source(size, 'y');
  std::vector<char> target(size);
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), size);
    benchmark::DoNotOptimize(target.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
}
BENCHMARK(BM_Memcpy)->Arg(4096)->Arg(1 << 20)->Arg(64 << 20);

}  // namespace
