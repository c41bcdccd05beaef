//===- coll_bench.cpp - Collections beside qsort, std::sort and std::map ---===//
//
// Every benchmark is named group/implementation. After the run, each tavi
// implementation's time is printed as a multiple of each peer's time in its group:
// Xqsort against qsort and std::sort (both through a function pointer) on 1,000,000
// pointers; StrIndex and StrAdd of 100,000 words against a std::map ordered by the
// same collator.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/locale.h"
#include "ratio_reporter.h"
#include "tavi/coll/collection.h"
#include "tavi/coll/string_coll.h"

namespace {

using namespace tavi;

constexpr uint32_t kSortItems = 1000000;
constexpr uint32_t kWords = 100000;

std::vector<uint32_t>& Keys() {
  static std::vector<uint32_t> keys = [] {
    std::vector<uint32_t> v(kSortItems);
    std::mt19937 rng(1);
    for (auto& k : v) k = rng();
    return v;
  }();
  return keys;
}

std::vector<void*>& Unsorted() {
  static std::vector<void*> items = [] {
    std::vector<void*> v;
    for (uint32_t& k : Keys()) v.push_back(&k);
    return v;
  }();
  return items;
}

int CmpKey(const void* a, const void* b) {
  const uint32_t x = *static_cast<const uint32_t*>(a);
  const uint32_t y = *static_cast<const uint32_t*>(b);
  return x < y ? -1 : (x > y ? 1 : 0);
}
int CmpSlot(const void* a, const void* b) {
  return CmpKey(*static_cast<void* const*>(a), *static_cast<void* const*>(b));
}
bool LessKey(void* a, void* b) {
  return CmpKey(a, b) < 0;
}

// Distinct lower-case words of 3 to 10 letters, in random order.
std::vector<std::u16string>& Words() {
  static std::vector<std::u16string> words = [] {
    std::mt19937 rng(2);
    std::map<std::u16string, int> seen;
    std::vector<std::u16string> v;
    while (v.size() < kWords) {
      std::u16string w(3 + rng() % 8, u'a');
      for (auto& c : w) c = static_cast<char16_t>(u'a' + rng() % 26);
      if (seen.emplace(w, 0).second) v.push_back(w);
    }
    return v;
  }();
  return words;
}

std::vector<std::u16string>& SortedWords() {
  static std::vector<std::u16string> words = [] {
    std::vector<std::u16string> v = Words();
    std::sort(v.begin(), v.end(), [](const std::u16string& a, const std::u16string& b) {
      return platform::CompareTextN(a.c_str(), static_cast<int32_t>(a.size()), b.c_str(),
                                    static_cast<int32_t>(b.size())) < 0;
    });
    return v;
  }();
  return words;
}

// The peer's order: the same collator the collection compares with.
struct CollatorLess {
  bool operator()(const std::u16string& a, const std::u16string& b) const {
    return platform::CompareTextN(a.c_str(), static_cast<int32_t>(a.size()), b.c_str(),
                                  static_cast<int32_t>(b.size())) < 0;
  }
};
using WordMap = std::map<std::u16string, uint32_t, CollatorLess>;

class Words16 : public TStringColl {
 public:
  ~Words16() override { FreeAll(); }
};

void Register(const std::string& name, std::function<void(benchmark::State&)> body) {
  benchmark::RegisterBenchmark(name.c_str(), body)->Unit(benchmark::kMillisecond);
}

void RegisterSorts() {
  Register("Sort1M/tavi_xqsort", [](benchmark::State& state) {
    std::vector<void*> a(kSortItems);
    for (auto _ : state) {
      std::memcpy(a.data(), Unsorted().data(), kSortItems * sizeof(void*));
      Xqsort(a.data(), kSortItems, CmpKey);
      benchmark::DoNotOptimize(a.data());
    }
  });
  Register("Sort1M/qsort", [](benchmark::State& state) {
    std::vector<void*> a(kSortItems);
    for (auto _ : state) {
      std::memcpy(a.data(), Unsorted().data(), kSortItems * sizeof(void*));
      std::qsort(a.data(), kSortItems, sizeof(void*), CmpSlot);
      benchmark::DoNotOptimize(a.data());
    }
  });
  Register("Sort1M/std_sort", [](benchmark::State& state) {
    std::vector<void*> a(kSortItems);
    bool (*less)(void*, void*) = LessKey;
    benchmark::DoNotOptimize(less);
    for (auto _ : state) {
      std::memcpy(a.data(), Unsorted().data(), kSortItems * sizeof(void*));
      std::sort(a.begin(), a.end(), less);
      benchmark::DoNotOptimize(a.data());
    }
  });
}

void RegisterStrings() {
  Register("StrIndex100k/tavi", [](benchmark::State& state) {
    Words16 c;
    for (const auto& w : Words()) c.StrAdd(w.c_str());
    for (auto _ : state) {
      uint32_t hits = 0;
      for (const auto& w : Words()) hits += c.StrIndex(w.c_str()) != kNoIndex;
      if (hits != kWords) state.SkipWithError("a word was not found");
    }
  });
  Register("StrIndex100k/std_map", [](benchmark::State& state) {
    WordMap m;
    for (const auto& w : Words()) m.emplace(w, 0);
    for (auto _ : state) {
      uint32_t hits = 0;
      for (const auto& w : Words()) hits += m.find(w) != m.end();
      if (hits != kWords) state.SkipWithError("a word was not found");
    }
  });
  for (bool sorted : {false, true}) {
    const std::string order = sorted ? "sorted" : "random";
    Register("StrAdd100k_" + order + "/tavi", [sorted](benchmark::State& state) {
      const auto& words = sorted ? SortedWords() : Words();
      for (auto _ : state) {
        Words16 c;
        for (const auto& w : words) c.StrAdd(w.c_str());
        benchmark::DoNotOptimize(c.GetCount());
      }
    });
    Register("StrAdd100k_" + order + "/std_map", [sorted](benchmark::State& state) {
      const auto& words = sorted ? SortedWords() : Words();
      for (auto _ : state) {
        WordMap m;
        for (const auto& w : words) m.emplace(w, 0);
        benchmark::DoNotOptimize(m.size());
      }
    });
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Unsorted();
  Words();
  SortedWords();
  RegisterSorts();
  RegisterStrings();
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("CPU time relative to each peer of the group (below 1 is faster):")
          .CpuTime()
          .TimeRatio()
          .Milliseconds());
  benchmark::Shutdown();
  return 0;
}
