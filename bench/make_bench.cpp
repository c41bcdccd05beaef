//===- make_bench.cpp - XMakeArrayMT against a plain loop -----------------===//
//
// The hand-out of items must not make small items slow: XMakeArray and
// XMakeArrayMT over 16-byte elements against a plain loop calling the same
// function, for a cheap function and for one of about 50 ns, on one and two
// workers. Items per second are the figure to compare. On a shared machine run
// with --benchmark_repetitions=N: the "min" row is the least disturbed run.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tavi/thread/parallel.h"

namespace {

struct Element {
  uint64_t a;
  uint64_t b;
};
static_assert(sizeof(Element) == 16);

// A few instructions per element.
void Cheap(void* item) {
  Element& e = *static_cast<Element*>(item);
  e.a += e.b;
}

// A dependent chain of multiplies and shifts: about 50 ns per element on a
// 3 GHz core (the plain-loop figure of Work50ns shows the real cost).
void Work50ns(void* item) {
  Element& e = *static_cast<Element*>(item);
  uint64_t x = e.b | 1;
  for (int i = 0; i < 50; ++i) x = (x ^ (x >> 29)) * 0xBF58476D1CE4E5B9ull;
  e.a += x;
}

constexpr uint32_t kCount = 1 << 20;

double Min(const std::vector<double>& v) {
  return *std::min_element(v.begin(), v.end());
}

std::vector<Element>& Elements() {
  static std::vector<Element> elements(kCount, Element{1, 2});
  return elements;
}

template <void (*Fn)(void*)>
void BM_PlainLoop(benchmark::State& state) {
  auto& elements = Elements();
  void (*volatile fn)(void*) = Fn;  // called through a pointer, as XMakeArray does
  for (auto _ : state) {
    for (Element& e : elements) fn(&e);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

template <void (*Fn)(void*)>
void BM_XMakeArray(benchmark::State& state) {
  auto& elements = Elements();
  for (auto _ : state) {
    tavi::XMakeArray(Fn, elements.data(), kCount, sizeof(Element));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

template <void (*Fn)(void*)>
void BM_XMakeArrayMT(benchmark::State& state) {
  auto& elements = Elements();
  const uint32_t old = tavi::XSetWorkerCount(static_cast<uint32_t>(state.range(0)));
  for (auto _ : state) {
    tavi::XMakeArrayMT(Fn, elements.data(), kCount, sizeof(Element));
    benchmark::ClobberMemory();
  }
  tavi::XSetWorkerCount(old);
  state.SetItemsProcessed(state.iterations() * kCount);
}

BENCHMARK(BM_PlainLoop<Cheap>)->ComputeStatistics("min", Min)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMakeArray<Cheap>)->ComputeStatistics("min", Min)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMakeArrayMT<Cheap>)
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->ComputeStatistics("min", Min)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainLoop<Work50ns>)->ComputeStatistics("min", Min)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMakeArray<Work50ns>)->ComputeStatistics("min", Min)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMakeArrayMT<Work50ns>)
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->ComputeStatistics("min", Min)
    ->Unit(benchmark::kMillisecond);

// Many small calls: the cost of starting and joining the workers.
void BM_XMakeArrayMTSmall(benchmark::State& state) {
  auto& elements = Elements();
  const uint32_t old = tavi::XSetWorkerCount(static_cast<uint32_t>(state.range(0)));
  for (auto _ : state) {
    tavi::XMakeArrayMT(Cheap, elements.data(), 1024, sizeof(Element));
    benchmark::ClobberMemory();
  }
  tavi::XSetWorkerCount(old);
  state.SetItemsProcessed(state.iterations() * 1024);
}
BENCHMARK(BM_XMakeArrayMTSmall)
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->ComputeStatistics("min", Min)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
