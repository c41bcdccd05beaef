//===- double_bench.cpp - Double text beside the C and C++ libraries ------===//
//
// Each benchmark is named group/implementation and converts the same 4096 values
// per iteration; after the run, each tavi implementation's speed is printed as a
// ratio to every peer of its group (snprintf "%.17g" and std::to_chars shortest for
// printing, strtod and std::from_chars for reading).
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ratio_reporter.h"
#include "tavi/format/double_text.h"

namespace {

using namespace tavi;

constexpr size_t kCount = 4096;

// Values over every exponent (random bits) or in [0, 1) (the common case of data).
std::vector<double> Values(bool all_exponents) {
  std::mt19937_64 rng(all_exponents ? 1 : 2);
  std::vector<double> v;
  while (v.size() < kCount) {
    uint64_t bits = rng();
    double d;
    if (all_exponents) {
      std::memcpy(&d, &bits, sizeof d);
      if (!(d == d) || d - d != 0) continue;
    } else {
      d = static_cast<double>(bits >> 11) * 0x1p-53;
    }
    v.push_back(d);
  }
  return v;
}

// The shortest text of each value, as 8-bit and as UTF-16 text.
struct Texts {
  std::vector<std::string> narrow;
  std::vector<std::u16string> wide;
};

Texts ShortestTexts(const std::vector<double>& values) {
  Texts t;
  for (double d : values) {
    char text[64];
    char* end = std::to_chars(text, text + sizeof text, d).ptr;
    t.narrow.emplace_back(text, end);
    t.wide.emplace_back(text, end);
  }
  return t;
}

const std::vector<double>& AllValues() {
  static const std::vector<double> v = Values(true);
  return v;
}
const std::vector<double>& UnitValues() {
  static const std::vector<double> v = Values(false);
  return v;
}

template <typename Body>
void Register(const std::string& name, Body body) {
  benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State& state) {
    for (auto _ : state) body();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
  })->Unit(benchmark::kMicrosecond);
}

void RegisterPrint(const std::string& group, const std::vector<double>& values) {
  // The default print width of 16 digits, and a width that gives the shortest text.
  strEnvNumberOptions shortest;
  shortest.PrintWidth = 40;
  for (const auto& [impl, options] : {std::pair{"/tavi_auto_width16", strEnvNumberOptions{}},
                                      std::pair{"/tavi_auto_shortest", shortest}}) {
    Register(group + impl, [&values, options] {
      char16_t text[kDoubleTextCapacity];
      uint32_t length;
      for (double d : values) {
        _DoubleToString(length, d, text, edpAuto, -1, options);
        benchmark::DoNotOptimize(text[0]);
      }
    });
  }
  Register(group + "/snprintf_17g", [&values] {
    char text[64];
    for (double d : values) {
      std::snprintf(text, sizeof text, "%.17g", d);
      benchmark::DoNotOptimize(text[0]);
    }
  });
  Register(group + "/to_chars", [&values] {
    char text[64];
    for (double d : values) {
      std::to_chars(text, text + sizeof text, d);
      benchmark::DoNotOptimize(text[0]);
    }
  });
}

void RegisterParse(const std::string& group, const Texts& texts) {
  Register(group + "/tavi", [&texts] {
    for (const std::u16string& s : texts.wide) {
      double d;
      _StringToDouble(d, s.c_str(), u'.', 0);
      benchmark::DoNotOptimize(d);
    }
  });
  Register(group + "/strtod", [&texts] {
    for (const std::string& s : texts.narrow) {
      benchmark::DoNotOptimize(std::strtod(s.c_str(), nullptr));
    }
  });
  Register(group + "/from_chars", [&texts] {
    for (const std::string& s : texts.narrow) {
      double d;
      std::from_chars(s.data(), s.data() + s.size(), d);
      benchmark::DoNotOptimize(d);
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  static const Texts all_texts = ShortestTexts(AllValues());
  static const Texts unit_texts = ShortestTexts(UnitValues());
  RegisterPrint("Print_any", AllValues());
  RegisterPrint("Print_unit", UnitValues());
  RegisterParse("Parse_any", all_texts);
  RegisterParse("Parse_unit", unit_texts);
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Speed relative to each peer of the group (above 1: tavi is faster):",
                             {"snprintf_17g", "to_chars", "strtod", "from_chars"})
          .NsPer("value", kCount));
  benchmark::Shutdown();
  return 0;
}
