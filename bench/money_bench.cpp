//===- money_bench.cpp - Amounts of money beside ICU's currency format -----===//
//
// Every benchmark is named group/implementation and handles the same 4096 amounts
// (in cents, of every size up to ten billion) per iteration; after the run each
// tavi implementation's speed is printed as a ratio to ICU's in its group (above
// 1 is faster). ICU formats the amount as a double, its fastest entry point, and
// parses with its currency format.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <unicode/unum.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "tavi/money/money_text.h"

namespace {

constexpr size_t kCount = 4096;

std::vector<int64_t> Amounts() {
  std::mt19937_64 rng(3);
  std::vector<int64_t> v(kCount);
  for (auto& x : v) {
    const int64_t magnitude = static_cast<int64_t>((rng() % 1000000000000) >> (rng() % 40));
    x = rng() % 4 == 0 ? -magnitude : magnitude;
  }
  return v;
}

struct IcuFormat {
  UNumberFormat* format = nullptr;
  explicit IcuFormat(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    format = unum_open(UNUM_CURRENCY, nullptr, 0, locale, nullptr, &status);
  }
  ~IcuFormat() { unum_close(format); }
};

void Register(const std::string& name, std::function<void()> body) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) body();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
  })->Unit(benchmark::kMicrosecond);
}

void RegisterLocale(const std::string& group, const char* locale, uint32_t lcid) {
  const std::vector<int64_t> amounts = Amounts();
  auto icu = std::make_shared<IcuFormat>(locale);
  tavi::strEnvMoneyOptions options;
  if (!options.SetLocale(lcid)) std::fprintf(stderr, "no money options for %s\n", locale);

  Register(group + "_format/icu", [amounts, icu] {
    char16_t out[64];
    for (const int64_t a : amounts) {
      UErrorCode status = U_ZERO_ERROR;
      benchmark::DoNotOptimize(
          unum_formatDouble(icu->format, static_cast<double>(a) / 100, out, 64, nullptr, &status));
      benchmark::ClobberMemory();
    }
  });
  Register(group + "_format/tavi", [amounts, options] {
    char16_t out[tavi::kMoneyTextMax];
    for (const int64_t a : amounts) {
      benchmark::DoNotOptimize(tavi::_MoneyToString(a, 2, out + tavi::kMoneyTextMax, options));
      benchmark::ClobberMemory();
    }
  });

  // The texts ICU writes, read back by both.
  constexpr size_t kStride = 64;
  auto texts = std::make_shared<std::vector<char16_t>>(kCount * kStride);
  auto lengths = std::make_shared<std::vector<int32_t>>(kCount);
  for (size_t i = 0; i < kCount; ++i) {
    UErrorCode status = U_ZERO_ERROR;
    (*lengths)[i] = unum_formatDouble(icu->format, static_cast<double>(amounts[i]) / 100,
                                      texts->data() + i * kStride, kStride - 1, nullptr, &status);
  }
  Register(group + "_parse/icu", [icu, texts, lengths] {
    for (size_t i = 0; i < kCount; ++i) {
      UErrorCode status = U_ZERO_ERROR;
      benchmark::DoNotOptimize(unum_parseDouble(icu->format, texts->data() + i * kStride,
                                                (*lengths)[i], nullptr, &status));
    }
  });
  Register(group + "_parse/tavi", [options, texts] {
    for (size_t i = 0; i < kCount; ++i) {
      int64_t v = 0;
      benchmark::DoNotOptimize(tavi::_StringToMoney(v, 2, texts->data() + i * kStride, options));
      benchmark::DoNotOptimize(v);
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RegisterLocale("en_US", "en_US", 0x0409);
  RegisterLocale("de_DE", "de_DE", 0x0407);
  RegisterLocale("en_IN", "en_IN", 0x4009);
  tavi_bench::RunWithRatios(tavi_bench::RatioTable("Speed relative to ICU in each group:", {"icu"})
                                .NsPer("amount", kCount));
  benchmark::Shutdown();
  return 0;
}
