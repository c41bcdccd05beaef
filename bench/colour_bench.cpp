//===- colour_bench.cpp - Colour conversions and differences -------------===//
//
// Converts a block of colour values as an image filter would. Every benchmark is
// named group/implementation; the "textbook" peer computes each colour with the
// transfer curve's power function per channel, as a straightforward conversion
// does, and each tavi implementation is printed as a ratio to it. The block
// conversion to L*a*b* runs on each of its paths.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "colour/internal/lab_kernel.h"
#include "ratio_reporter.h"
#include "tavi/colour/colour.h"

namespace {

using namespace tavi;

constexpr uint32_t kCount = 1u << 20;

const std::vector<uint32_t>& Colours() {
  static const std::vector<uint32_t> colours = [] {
    std::vector<uint32_t> v(kCount);
    uint32_t x = 12345;
    for (auto& c : v) {
      x = x * 1103515245u + 12345u;
      c = x >> 8;
    }
    return v;
  }();
  return colours;
}

const std::vector<strLab>& Labs() {
  static const std::vector<strLab> labs = [] {
    std::vector<strLab> v(kCount);
    XColoursToLab(Colours().data(), v.data(), kCount);
    return v;
  }();
  return labs;
}

template <typename Body>
void Register(const char* name, Body body) {
  benchmark::RegisterBenchmark(
      name,
      [body](benchmark::State& state) {
        for (auto _ : state) body();
        state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
      })
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  static std::vector<strLab> labs(kCount);
  static std::vector<uint32_t> back(kCount);
  const auto& colours = Colours();

  using colour_internal::LabPath;
  for (LabPath path : {LabPath::kPortable, LabPath::kAvx2}) {
    if (!colour_internal::LabPathAvailable(path)) continue;
    Register(path == LabPath::kPortable ? "ColourToLab/tavi_portable" : "ColourToLab/tavi_avx2",
             [&, path] {
               colour_internal::SetLabPath(path);
               XColoursToLab(colours.data(), labs.data(), kCount);
               benchmark::DoNotOptimize(labs.data());
             });
  }
  Register("ColourToLab/textbook", [&] {
    for (uint32_t i = 0; i < kCount; ++i) labs[i] = XRGBToLab(XColourToRGB(colours[i]));
    benchmark::DoNotOptimize(labs.data());
  });
  Register("ColourToXYZ/tavi", [&] {
    double sum = 0;
    for (uint32_t c : colours) sum += XColourToXYZ(c).y;
    benchmark::DoNotOptimize(sum);
  });
  Register("ColourToXYZ/textbook", [&] {
    double sum = 0;
    for (uint32_t c : colours) sum += XRGBToXYZ(XColourToRGB(c)).y;
    benchmark::DoNotOptimize(sum);
  });
  Register("LabToColour/tavi", [&] {
    const auto& in = Labs();
    for (uint32_t i = 0; i < kCount; ++i) back[i] = XLabToColour(in[i]);
    benchmark::DoNotOptimize(back.data());
  });
  Register("ColourToHSL/tavi", [&] {
    double sum = 0;
    for (uint32_t c : colours) sum += XColourToHSL(c).h;
    benchmark::DoNotOptimize(sum);
  });
  Register("DeltaE2000/tavi", [&] {
    const auto& in = Labs();
    double sum = 0;
    for (uint32_t i = 1; i < kCount; ++i) sum += XDeltaE2000(in[i - 1], in[i]);
    benchmark::DoNotOptimize(sum);
  });

  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Colours per second, and relative to the textbook peer of each group:",
                             {"textbook"})
          .PerSecond("M/s", kCount));
  benchmark::Shutdown();
  return 0;
}
