//===- resource_bench.cpp - Loading a language file of a million lines -----===//
//
// AddResources on a UTF-16 language file of 1,000,000 lines (one in ten a comment,
// values of 10 to 40 characters, some quoted or with escapes, IDs ascending) beside
// a plain parse of the same text into a std::map<int, std::u16string>. The text is
// copied into a fresh buffer each iteration because the parse consumes it; the copy
// is timed on both sides.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tavi/core/buffer.h"
#include "tavi/resource/string_resource_coll.h"

namespace {

using namespace tavi;

constexpr int kLines = 1000000;

const std::u16string& File() {
  static std::u16string text = [] {
    std::u16string t;
    std::mt19937 rng(3);
    int id = 1000;
    for (int i = 0; i < kLines; ++i) {
      if (i % 10 == 0) {
        t += u"; group comment\r\n";
        continue;
      }
      id += 1 + static_cast<int>(rng() % 3);
      std::string digits = std::to_string(id);
      t.append(digits.begin(), digits.end());
      t += u'=';
      const int len = 10 + static_cast<int>(rng() % 31);
      const bool quoted = rng() % 8 == 0;
      if (quoted) t += u"\" ";
      for (int k = 0; k < len; ++k) t += static_cast<char16_t>(u'a' + rng() % 26);
      if (rng() % 16 == 0) t += u"\\n";
      if (quoted) t += u" \"";
      t += u"\r\n";
    }
    return t;
  }();
  return text;
}

void LangFileTavi(benchmark::State& state) {
  const std::u16string& text = File();
  for (auto _ : state) {
    XBuffer buffer;
    buffer.Add(text.data(), static_cast<uint32_t>(text.size() * 2));
    TTextFileStringResource table;
    if (!table.AddResources(buffer)) state.SkipWithError("load failed");
    benchmark::DoNotOptimize(table.GetCount());
  }
}
BENCHMARK(LangFileTavi)->Name("LangFile/tavi")->Unit(benchmark::kMillisecond);

// The same lines parsed into a std::map: ID, '=', quotes and escapes.
void LangFileStdMap(benchmark::State& state) {
  const std::u16string& source = File();
  for (auto _ : state) {
    std::u16string text = source;
    std::map<int, std::u16string> table;
    size_t p = 0;
    while (p < text.size()) {
      size_t end = text.find(u'\n', p);
      if (end == std::u16string::npos) end = text.size();
      size_t next = end + 1;
      if (end > p && text[end - 1] == u'\r') --end;
      if (text[p] >= u'0' && text[p] <= u'9') {
        long id = 0;
        size_t q = p;
        while (q < end && text[q] >= u'0' && text[q] <= u'9') id = id * 10 + (text[q++] - u'0');
        if (q < end && text[q] == u'=') {
          size_t b = q + 1, e = end;
          if (e - b >= 2 && text[b] == u'"') {
            size_t last = text.rfind(u'"', e - 1);
            if (last > b) ++b, e = last;
          }
          std::u16string value;
          for (size_t i = b; i < e; ++i) {
            char16_t c = text[i];
            if (c == u'\\' && i + 1 < e) {
              char16_t n = text[i + 1];
              if (n == u'n')
                c = u'\n', ++i;
              else if (n == u'\\')
                ++i;
              else if (n == u'r')
                c = u'\r', ++i;
              else if (n == u't')
                c = u'\t', ++i;
            }
            value += c;
          }
          table.emplace(static_cast<int>(id), std::move(value));
        }
      }
      p = next;
    }
    benchmark::DoNotOptimize(table.size());
  }
}
BENCHMARK(LangFileStdMap)->Name("LangFile/std_map")->Unit(benchmark::kMillisecond);

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      seconds_[run.benchmark_name()] =
          run.cpu_accumulated_time / static_cast<double>(run.iterations);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    std::printf("\nCPU time relative to the peer (below 1 is faster):\n");
    auto ours = seconds_.find("LangFile/tavi");
    auto peer = seconds_.find("LangFile/std_map");
    if (ours == seconds_.end() || peer == seconds_.end()) return;
    std::printf("  %-20s %9.2f ms  %5.2fx std_map\n", ours->first.c_str(), ours->second * 1e3,
                ours->second / peer->second);
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  File();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
