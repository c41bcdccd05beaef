//===- make_bench.cpp - The MT forms against their single-threaded twins --===//
//
// Two questions. Do small arrays pay for threads? Each MT form runs beside its
// single-threaded form at sizes from 1 to 10^6 items, for a cheap function
// (a few instructions, about 2 ns a call) and one of about 50 ns, on two
// workers; the table at the end gives the MT time over the single-threaded
// time (the cost ratio, at most 1.2 is the aim) and its inverse, the speed-up
// (1.8 or more on two idle cores for 50 ns items on large arrays), and the
// process CPU time of the MT form against the single-threaded one (the cpu
// ratio: near 1 means the threads add little work, so two idle cores give close
// to twice the speed even when the machine is too busy to show it). Does the
// hand-out make small items slow? XMakeArray against a plain loop calling the
// same function. Every figure is the median of --benchmark_repetitions runs
// (3 by default here).
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <time.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "tavi/thread/parallel.h"
#include "tavi/thread/progress.h"

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
// 3 GHz core (the plain-loop figure shows the real cost).
void Work50ns(void* item) {
  Element& e = *static_cast<Element*>(item);
  uint64_t x = e.b | 1;
  for (int i = 0; i < 50; ++i) x = (x ^ (x >> 29)) * 0xBF58476D1CE4E5B9ull;
  e.a += x;
}

// Predicates that never match, so that the search visits every item.
bool CheapNever(void* item) {
  return static_cast<Element*>(item)->a == 0;
}
bool Work50nsNever(void* item) {
  Work50ns(item);
  return false;
}

constexpr uint32_t kMaxCount = 1000000;

// CPU time of the whole process (every thread) in seconds.
double ProcessCpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

std::vector<Element>& Elements() {
  static std::vector<Element> elements(kMaxCount, Element{1, 2});
  return elements;
}
std::vector<void*>& Pointers() {
  static std::vector<void*> pointers = [] {
    std::vector<void*> p;
    for (Element& e : Elements()) p.push_back(&e);
    return p;
  }();
  return pointers;
}

void PlainLoop(benchmark::State& state, void (*fn)(void*)) {
  auto& elements = Elements();
  void (*volatile call)(void*) = fn;  // through a pointer, as XMakeArray calls
  for (auto _ : state) {
    for (Element& e : elements) call(&e);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kMaxCount);
}

// One form at one size; `mt` selects the MT form on two workers.
enum class Form { kMakeArray, kCheck, kMakeProgress };

void RunForm(benchmark::State& state, Form form, bool mt, void (*fn)(void*), bool (*pred)(void*),
             uint32_t count) {
  const uint32_t old = tavi::XSetWorkerCount(mt ? 2 : 1);
  void* base = Elements().data();
  void* const* items = Pointers().data();
  tavi::strProgressOptions options;  // no window: progress is counted, not drawn
  const double cpuStart = ProcessCpuSeconds();
  for (auto _ : state) {
    switch (form) {
      case Form::kMakeArray:
        mt ? tavi::XMakeArrayMT(fn, base, count, sizeof(Element))
           : tavi::XMakeArray(fn, base, count, sizeof(Element));
        break;
      case Form::kCheck:
        benchmark::DoNotOptimize(mt ? tavi::XCheckMT(pred, items, count)
                                    : tavi::XCheck(pred, items, count));
        break;
      case Form::kMakeProgress:
        benchmark::DoNotOptimize(mt ? tavi::XMakeMT(u"Bench", 5, fn, items, count, options)
                                    : tavi::XMake(u"Bench", 5, fn, items, count, options));
        break;
    }
    benchmark::ClobberMemory();
  }
  // CPU time of all threads per call: on a busy machine the MT form's real time
  // says little, but its CPU time against the single-threaded form's shows the
  // work it adds, and so the speed-up two idle cores would give.
  state.counters["proc_cpu_us"] = benchmark::Counter((ProcessCpuSeconds() - cpuStart) * 1e6,
                                                     benchmark::Counter::kAvgIterations);
  tavi::XSetWorkerCount(old);
  state.SetItemsProcessed(state.iterations() * count);
}

// Collects the median time per iteration of each benchmark over its
// repetitions while printing as usual.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Aggregate ||
          run.aggregate_name != "median") {
        continue;
      }
      std::string name = run.run_name.str();
      const size_t suffix = name.find("/real_time");
      if (suffix != std::string::npos) name.erase(suffix);
      median_[name] = run.GetAdjustedRealTime() * 1e-6;  // reported in microseconds
      const auto cpu = run.counters.find("proc_cpu_us");
      if (cpu != run.counters.end()) cpu_[name] = cpu->second.value;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Pairs "<group>/single" with "<group>/mt2", in the order given.
  void PrintRatios(const std::vector<std::string>& groups) const {
    std::printf("\nMT (2 workers) against single-threaded, median of the repetitions:\n");
    std::printf("  %-30s %11s %11s %7s %8s %9s %9s\n", "group", "single us", "MT us", "cost",
                "speed-up", "MT cpu us", "cpu ratio");
    for (const std::string& group : groups) {
      const std::string name = group + "/single";
      const auto found = median_.find(name);
      const auto mt = median_.find(group + "/mt2");
      if (found == median_.end() || mt == median_.end()) continue;
      const double single = found->second;
      const double singleCpu = cpu_.count(name) ? cpu_.at(name) : 0;
      const double mtCpu = cpu_.count(mt->first) ? cpu_.at(mt->first) : 0;
      std::printf("  %-30s %11.3f %11.3f %6.2fx %7.2fx %9.3f %8.2fx\n", group.c_str(), single * 1e6,
                  mt->second * 1e6, mt->second / single, single / mt->second, mtCpu,
                  singleCpu > 0 ? mtCpu / singleCpu : 0.0);
    }
  }

 private:
  std::map<std::string, double> median_;
  std::map<std::string, double> cpu_;  // median process CPU time per call, us
};

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> args(argv, argv + argc);
  std::string reps = "--benchmark_repetitions=3";
  std::string quiet = "--benchmark_report_aggregates_only=true";
  args.insert(args.begin() + 1, {reps.data(), quiet.data()});  // the command line may override
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());

  Elements();
  Pointers();
  benchmark::RegisterBenchmark("PlainLoop/Cheap", PlainLoop, Cheap)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("PlainLoop/Work50ns", PlainLoop, Work50ns)
      ->Unit(benchmark::kMillisecond);

  struct Kind {
    const char* name;
    void (*fn)(void*);
    bool (*pred)(void*);
  };
  const Kind kinds[] = {{"Cheap", Cheap, CheapNever}, {"Work50ns", Work50ns, Work50nsNever}};
  const std::pair<Form, const char*> forms[] = {{Form::kMakeArray, "XMakeArray"},
                                                {Form::kCheck, "XCheck"},
                                                {Form::kMakeProgress, "XMakeTitled"}};
  std::vector<std::string> groups;
  for (const auto& [form, formName] : forms) {
    for (const Kind& kind : kinds) {
      for (uint32_t n : {1u, 4u, 16u, 64u, 256u, 1000u, 100000u, kMaxCount}) {
        const std::string group = std::string(formName) + "/" + kind.name + "/" + std::to_string(n);
        groups.push_back(group);
        for (bool mt : {false, true}) {
          const std::string name = group + (mt ? "/mt2" : "/single");
          benchmark::RegisterBenchmark(name.c_str(), RunForm, form, mt, kind.fn, kind.pred, n)
              ->UseRealTime()
              ->Unit(benchmark::kMicrosecond);
        }
      }
    }
  }

  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios(groups);
  benchmark::Shutdown();
  return 0;
}
