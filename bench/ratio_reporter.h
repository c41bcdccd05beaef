//===- ratio_reporter.h - Ratios of tavi benchmarks to their peers ---------===//
//
// The console reporter every benchmark program uses. Benchmarks are named
// group/implementation; implementations whose name starts with "tavi" are ours,
// the others are peers. While printing the usual table it keeps the mean time per
// iteration of each benchmark, and at the end prints one row per tavi
// implementation and peer: an optional figure (time per item or throughput) and
// the speed ratio to the peer.
//
//===----------------------------------------------------------------------===//
#ifndef TAVI_BENCH_RATIO_REPORTER_H_
#define TAVI_BENCH_RATIO_REPORTER_H_

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavi_bench {

// The figure printed before the ratios of a row.
enum class Figure {
  kNone,
  kNsPerItem,     // nanoseconds per item: "12.34 ns/<unit>"
  kMillionsPerS,  // millions of items (or bytes) per second: "456.7 <unit>"
  kMilliseconds,  // the time of one iteration: "8.90 ms"
};

// What the table after the run shows, built in a chain:
//   RatioTable("Speed relative to ICU:", {"icu"}).NsPer("value", 4096)
struct RatioTable {
  // Items (or bytes) one iteration of the named benchmark handles.
  using Amount = std::function<double(const std::string& name)>;

  // `peers`: the peers of each group, in the order printed; empty: every
  // implementation of the group that is not tavi's, in name order.
  explicit RatioTable(std::string title, std::vector<std::string> peers = {})
      : title(std::move(title)), peers(std::move(peers)) {}

  // CPU time instead of wall-clock time, where a shared machine disturbs the latter.
  RatioTable& CpuTime() {
    cpu_time = true;
    return *this;
  }
  // Our time over the peer's (below 1 is faster) instead of the speed ratio.
  RatioTable& TimeRatio() {
    time_ratio = true;
    return *this;
  }
  // Nanoseconds per item, each iteration handling `items` of them.
  RatioTable& NsPer(std::string item, double items) {
    return WithFigure(Figure::kNsPerItem, "ns/" + item,
                      [items](const std::string&) { return items; });
  }
  // Millions of items (or bytes) per second, printed with `unit` ("MB/s").
  RatioTable& PerSecond(std::string unit, Amount per_iteration) {
    return WithFigure(Figure::kMillionsPerS, std::move(unit), std::move(per_iteration));
  }
  RatioTable& PerSecond(std::string unit, double per_iteration) {
    return PerSecond(std::move(unit),
                     [per_iteration](const std::string&) { return per_iteration; });
  }
  RatioTable& Milliseconds() { return WithFigure(Figure::kMilliseconds, "ms", {}); }

  std::string title;
  std::vector<std::string> peers;
  bool cpu_time = false;
  bool time_ratio = false;
  Figure figure = Figure::kNone;
  std::string unit;
  Amount amount;

 private:
  RatioTable& WithFigure(Figure f, std::string u, Amount a) {
    figure = f;
    unit = std::move(u);
    amount = std::move(a);
    return *this;
  }
};

// Prints as the console reporter does and keeps each benchmark's mean time per
// iteration, by registered name, for PrintRatios.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  explicit RatioReporter(RatioTable table) : table_(std::move(table)) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      const double total = table_.cpu_time ? run.cpu_accumulated_time : run.real_accumulated_time;
      // The registered name, without the "/real_time", "/min_time:..." suffixes.
      seconds_[run.run_name.function_name] = total / static_cast<double>(run.iterations);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // One row per tavi implementation and peer of its group that ran; a tavi row
  // without a peer shows its figure alone.
  void PrintRatios() const {
    std::printf("\n%s\n", table_.title.c_str());
    size_t width = 0;
    for (const auto& [name, secs] : seconds_) width = std::max(width, name.size());
    for (const auto& [name, secs] : seconds_) {
      const size_t slash = name.rfind('/');
      if (slash == std::string::npos || name.compare(slash + 1, 4, "tavi") != 0 || secs <= 0)
        continue;
      const std::string group = name.substr(0, slash + 1);
      const std::string figure = FigureText(name, secs);
      bool printed = false;
      for (const auto& [peer, peer_secs] : Peers(group)) {
        std::printf("  %-*s%s %6.2fx %s\n", static_cast<int>(width), name.c_str(), figure.c_str(),
                    table_.time_ratio ? secs / peer_secs : peer_secs / secs, peer.c_str());
        printed = true;
      }
      if (!printed && !figure.empty())
        std::printf("  %-*s%s\n", static_cast<int>(width), name.c_str(), figure.c_str());
    }
  }

 private:
  // The peers of a group ("name/") that ran, with their times.
  std::vector<std::pair<std::string, double>> Peers(const std::string& group) const {
    std::vector<std::pair<std::string, double>> peers;
    if (table_.peers.empty()) {
      for (auto it = seconds_.lower_bound(group);
           it != seconds_.end() && it->first.compare(0, group.size(), group) == 0; ++it) {
        const std::string impl = it->first.substr(group.size());
        if (impl.find('/') == std::string::npos && impl.rfind("tavi", 0) != 0)
          peers.emplace_back(impl, it->second);
      }
    } else {
      for (const std::string& peer : table_.peers) {
        const auto it = seconds_.find(group + peer);
        if (it != seconds_.end()) peers.emplace_back(peer, it->second);
      }
    }
    return peers;
  }

  std::string FigureText(const std::string& name, double secs) const {
    char text[64];
    switch (table_.figure) {
      case Figure::kNone:
        return {};
      case Figure::kNsPerItem:
        std::snprintf(text, sizeof text, " %9.2f %s", secs / table_.amount(name) * 1e9,
                      table_.unit.c_str());
        break;
      case Figure::kMillionsPerS:
        std::snprintf(text, sizeof text, " %9.1f %s", table_.amount(name) / secs / 1e6,
                      table_.unit.c_str());
        break;
      case Figure::kMilliseconds:
        std::snprintf(text, sizeof text, " %9.2f %s", secs * 1e3, table_.unit.c_str());
        break;
    }
    return text;
  }

  RatioTable table_;
  std::map<std::string, double> seconds_;
};

// Runs the benchmarks the command line selected, printing as usual, then the table.
inline void RunWithRatios(RatioTable table) {
  RatioReporter reporter(std::move(table));
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
}

}  // namespace tavi_bench

#endif  // TAVI_BENCH_RATIO_REPORTER_H_
