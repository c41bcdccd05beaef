//===- markup_bench.cpp - Wildcards beside fnmatch, HTML beside a copy ----===//
//
// Wildcard matching is measured beside glibc's fnmatch(3) on the same names (as
// UTF-8), on everyday patterns and on one that makes a backtracking matcher
// retry every star. The HTML conversions have no peer here; they are measured
// beside a plain copy of the same text, the ceiling for a one-pass converter.
// After the run each tavi benchmark's time is printed as a ratio to its peer.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <fnmatch.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tavi/text/html.h"
#include "tavi/text/wildcard.h"

namespace {

using namespace tavi;

struct Names {
  std::vector<std::u16string> wide;
  std::vector<std::string> narrow;
  size_t bytes = 0;
};

const Names& FileNames() {
  static const Names names = [] {
    Names n;
    const char* stems[] = {"report", "IMG_", "notes", "backup", "data", "readme", "a", "x1"};
    const char* exts[] = {".txt", ".jpg", ".tar.gz", ".cpp", "", ".TXT", ".h", ".md"};
    for (int i = 0; i < 4096; ++i) {
      std::string s =
          std::string(stems[i % 8]) + std::to_string(i * 7919 % 10007) + exts[(i / 8) % 8];
      n.narrow.push_back(s);
      n.wide.emplace_back(s.begin(), s.end());
      n.bytes += s.size();
    }
    return n;
  }();
  return names;
}

std::map<std::string, size_t>& BytesPerIteration() {
  static std::map<std::string, size_t> bytes;
  return bytes;
}

void Register(const std::string& name, size_t bytes, std::function<void()> body) {
  BytesPerIteration()[name] = bytes;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        for (auto _ : state) body();
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
      })
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
}

void RegisterNames(const std::string& group, const std::u16string& pattern) {
  const std::string narrow(pattern.begin(), pattern.end());
  Register(group + "/tavi", FileNames().bytes, [pattern] {
    size_t hits = 0;
    for (const std::u16string& name : FileNames().wide)
      hits += XWildcardMatch(pattern.data(), pattern.size(), name.data(), name.size());
    benchmark::DoNotOptimize(hits);
  });
  Register(group + "/fnmatch", FileNames().bytes, [narrow] {
    size_t hits = 0;
    for (const std::string& name : FileNames().narrow)
      hits += fnmatch(narrow.c_str(), name.c_str(), 0) == 0;
    benchmark::DoNotOptimize(hits);
  });
}

void RegisterAdversarial(size_t length) {
  const std::string group = "Stars_a" + std::to_string(length);
  const std::string narrow(length, 'a');
  const std::u16string wide(length, u'a');
  Register(group + "/tavi", length, [wide] {
    benchmark::DoNotOptimize(XWildcardMatch(u"*a*a*a*a*b", 10, wide.data(), wide.size()));
  });
  Register(group + "/fnmatch", length,
           [narrow] { benchmark::DoNotOptimize(fnmatch("*a*a*a*a*b", narrow.c_str(), 0)); });
}

const std::u16string& Html() {
  static const std::u16string html = [] {
    std::u16string page;
    const std::u16string block =
        u"<div class=\"post\"><h2>Title &amp; more</h2><p>Some <b>bold</b> text, a "
        u"<a href=\"https://example.org/?a=1&amp;b=2\">link</a> and &eacute;t&eacute; "
        u"&#x1F600;.</p>\n<script>var x = '<p>';</script><ul><li>one</li><li>two</li></ul>"
        u"<!-- note --><br></div>\n";
    while (page.size() < (size_t{4} << 20)) page += block;
    return page;
  }();
  return html;
}

void RegisterHtml() {
  const size_t bytes = Html().size() * 2;
  static std::u16string out(Html().size() * kTextToHtmlGrowth, 0);
  Register("Html4M/tavi_to_text", bytes,
           [] { benchmark::DoNotOptimize(_HtmlToText(Html().data(), Html().size(), out.data())); });
  Register("Html4M/tavi_from_text", bytes,
           [] { benchmark::DoNotOptimize(_TextToHtml(Html().data(), Html().size(), out.data())); });
  Register("Html4M/copy", bytes, [] {
    std::memcpy(out.data(), Html().data(), Html().size() * 2);
    benchmark::DoNotOptimize(out.data());
  });
}

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      std::string name = run.benchmark_name();
      const size_t suffix = name.find("/real_time");
      if (suffix != std::string::npos) name.erase(suffix);
      seconds_[name] = run.real_accumulated_time / static_cast<double>(run.iterations);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatios() const {
    std::printf("\nThroughput relative to the peer of each group:\n");
    for (const auto& [name, secs] : seconds_) {
      const size_t slash = name.find('/');
      const std::string group = name.substr(0, slash);
      if (name.compare(slash + 1, 4, "tavi") != 0) continue;
      for (const char* peer : {"fnmatch", "copy"}) {
        const auto it = seconds_.find(group + "/" + peer);
        if (it == seconds_.end()) continue;
        const double mbps = static_cast<double>(BytesPerIteration().at(name)) / secs / 1e6;
        std::printf("  %-32s %9.1f MB/s  %7.2fx %s\n", name.c_str(), mbps, it->second / secs, peer);
      }
    }
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RegisterNames("Names_star_dot_txt", u"*.txt");
  RegisterNames("Names_set", u"[a-r]*[0-9]?.*");
  RegisterNames("Names_literal", u"readme42.md");
  RegisterAdversarial(40);
  RegisterAdversarial(120);
  RegisterHtml();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
