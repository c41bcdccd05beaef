//===- integer_bench.cpp - Integer text beside std::to_chars / from_chars --===//
//
// Every benchmark is named group/implementation and converts the same 4096 values
// per iteration; after the run each tavi implementation's speed is printed as a
// ratio to the standard library's of its group (above 1 is faster).
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <charconv>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "format/internal/digits.h"
#include "ratio_reporter.h"
#include "tavi/format/integer_text.h"

namespace {

constexpr size_t kCount = 4096;

// Uniform 64-bit values are almost all 19 or 20 digits; "mixed" draws the bit
// length first, so every digit count appears.
std::vector<uint64_t> Values(bool mixed) {
  std::mt19937_64 rng(mixed ? 2 : 1);
  std::vector<uint64_t> v(kCount);
  for (auto& x : v) x = mixed ? rng() >> (rng() % 64) : rng();
  return v;
}

// The values as terminated texts, in UTF-16 for tavi and in char for the standard
// library, each at a fixed stride.
struct Texts {
  static constexpr size_t kStride = 24;
  std::vector<char16_t> wide;
  std::vector<char> narrow;
  std::vector<uint8_t> lengths;
  explicit Texts(const std::vector<uint64_t>& values)
      : wide(values.size() * kStride), narrow(values.size() * kStride), lengths(values.size()) {
    for (size_t i = 0; i < values.size(); ++i) {
      char* n = narrow.data() + i * kStride;
      const auto r = std::to_chars(n, n + kStride, values[i]);
      lengths[i] = static_cast<uint8_t>(r.ptr - n);
      for (size_t k = 0; k < lengths[i]; ++k) wide[i * kStride + k] = static_cast<char16_t>(n[k]);
    }
  }
};

void Register(const std::string& name, std::function<void()> body) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) body();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
  })->Unit(benchmark::kMicrosecond);
}

template <typename U>
void RegisterFormat(const std::string& group, std::vector<U> values) {
  Register(group + "/std", [values] {
    char out[24];
    for (const U v : values) {
      benchmark::DoNotOptimize(std::to_chars(out, out + sizeof out, v).ptr);
      benchmark::ClobberMemory();
    }
  });
  Register(group + "/tavi", [values] {
    char16_t out[24];
    for (const U v : values) {
      benchmark::DoNotOptimize(tavi::_UnsignedToString(v, out + 24));
      benchmark::ClobberMemory();
    }
  });
  Register(group + "/tavi_plain", [values] {
    char16_t out[24];
    for (const U v : values) {
      benchmark::DoNotOptimize(tavi::internal::PlainDigits(v, out + 24, 10));
      benchmark::ClobberMemory();
    }
  });
}

void RegisterParse(const std::string& group, const std::vector<uint64_t>& values) {
  auto texts = std::make_shared<Texts>(values);
  Register(group + "/std", [texts] {
    for (size_t i = 0; i < kCount; ++i) {
      const char* t = texts->narrow.data() + i * Texts::kStride;
      uint64_t v = 0;
      benchmark::DoNotOptimize(std::from_chars(t, t + texts->lengths[i], v).ptr);
      benchmark::DoNotOptimize(v);
    }
  });
  Register(group + "/tavi", [texts] {
    for (size_t i = 0; i < kCount; ++i) {
      uint64_t v = 0;
      benchmark::DoNotOptimize(tavi::_StringToUnsigned(v, texts->wide.data() + i * Texts::kStride));
      benchmark::DoNotOptimize(v);
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RegisterFormat("Format64_uniform", Values(false));
  RegisterFormat("Format64_mixed", Values(true));
  std::vector<uint32_t> small;
  for (const uint64_t v : Values(true)) small.push_back(static_cast<uint32_t>(v));
  RegisterFormat("Format32_mixed", small);
  RegisterParse("Parse64_uniform", Values(false));
  RegisterParse("Parse64_mixed", Values(true));
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Speed relative to the standard library in each group:", {"std"})
          .NsPer("value", kCount));
  benchmark::Shutdown();
  return 0;
}
