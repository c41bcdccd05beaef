//===- text_bench.cpp - Text conversion, search and case beside their peers -===//
//
// The UTF-8 -> UTF-16 filter writing into an XBuffer beside the plain converter on
// memory; the searches beside std::u16string_view::find and memmem; upper case
// beside ICU's u_strToUpper. After the run each tavi entry's throughput is printed
// as a ratio to the peer of its group (the entry named peer_*), from wall-clock
// times: the CPU clock of a shared build container proved unreliable.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <string.h>
#include <unicode/ustring.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/internal/utf8.h"
#include "ratio_reporter.h"
#include "sample_text.h"
#include "tavi/core/buffer.h"
#include "tavi/text/case.h"
#include "tavi/text/convert.h"
#include "tavi/text/convert_io.h"
#include "tavi/text/search.h"
#include "tavi/text/text_file.h"

namespace {

using namespace tavi;

using namespace tavi_bench;

const std::string& MixedText() {
  static const std::string text = Repeat(
      "Le c\u0153ur d\u00e9\u00e7u mais l'\u00e2me plut\u00f4t na\u00efve. Falsches "
      "\u00dcben von Xylophonmusik qu\u00e4lt jeden gr\u00f6\u00dferen Zwerg. \u6211\u80fd"
      "\u541e\u4e0b\u73bb\u7483\u800c\u4e0d\u4f24\u8eab\u4f53\u3002 \U0001F600 ok\n");
  return text;
}

void Register(const std::string& name, size_t bytes, std::function<void()> body) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) body();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  })->Unit(benchmark::kMicrosecond);
}

void RegisterFilter(const std::string& kind, const std::string& text) {
  static std::vector<char16_t> wide_out(kTextBytes + 64);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const size_t n = text.size();
  const std::string group = "Utf8ToUtf16_" + kind;
  Register(group + "/peer_plain_converter", n, [bytes, n] {
    size_t consumed, produced, needed;
    internal::DecodeUtf8(bytes, n, wide_out.data(), wide_out.size(), &consumed, &produced, &needed);
    benchmark::DoNotOptimize(produced);
  });
  // The filter in writes of 64 KiB into a buffer whose block is kept between runs.
  static XBuffer target;
  static XConvertIO filter(&target, kTextUtf16, kTextUtf8);
  Register(group + "/tavi_filter_to_XBuffer", n, [bytes, n] {
    target.ResetBufferPos();
    for (size_t i = 0; i < n; i += 65536) {
      const size_t k = n - i < 65536 ? n - i : 65536;
      filter._Write(bytes + i, static_cast<uint32_t>(k));
    }
    filter._Flush();
    benchmark::DoNotOptimize(target.GetBufferPos());
  });
  Register(group + "/tavi_function", n, [bytes, n] {
    benchmark::DoNotOptimize(_Utf8ToUtf16(reinterpret_cast<const char*>(bytes),
                                          static_cast<uint32_t>(n), wide_out.data()));
  });
}

void RegisterSearch(const std::string& kind, const std::string& text) {
  // The string is at the very end, so the whole text is scanned.
  // Kept for the whole run, as the benchmarks refer to them.
  const std::string& hay = *new std::string(text + "needle in the haystack");
  const std::string_view needle = "needle in the haystack";
  const std::string group = "FindBytes_" + kind;
  Register(group + "/peer_memmem", hay.size(), [&hay, needle] {
    benchmark::DoNotOptimize(memmem(hay.data(), hay.size(), needle.data(), needle.size()));
  });
  Register(group + "/tavi", hay.size(), [&hay, needle] {
    benchmark::DoNotOptimize(XFindBytes(hay.data(), static_cast<uint32_t>(hay.size()),
                                        needle.data(), static_cast<uint32_t>(needle.size())));
  });
  const std::u16string& whay = *new std::u16string(Wide(hay));
  const std::u16string_view wneedle = u"needle in the haystack";
  const std::string wgroup = "FindText_" + kind;
  Register(wgroup + "/peer_u16string_view_find", 2 * whay.size(),
           [&whay, wneedle] { benchmark::DoNotOptimize(std::u16string_view(whay).find(wneedle)); });
  Register(wgroup + "/tavi", 2 * whay.size(), [&whay, wneedle] {
    benchmark::DoNotOptimize(XFindText(whay.data(), static_cast<uint32_t>(whay.size()),
                                       wneedle.data(), static_cast<uint32_t>(wneedle.size())));
  });
  Register(wgroup + "/tavi_no_case", 2 * whay.size(), [&whay, wneedle] {
    benchmark::DoNotOptimize(XFindTextNoCase(whay.data(), static_cast<uint32_t>(whay.size()),
                                             wneedle.data(),
                                             static_cast<uint32_t>(wneedle.size())));
  });
}

void RegisterCase(const std::string& kind, const std::string& text) {
  const std::u16string& wide = *new std::u16string(Wide(text));
  static std::vector<char16_t> out(3 * kTextBytes + 64);
  const std::string group = "ToUpper_" + kind;
  Register(group + "/peer_icu", 2 * wide.size(), [&wide] {
    UErrorCode status = U_ZERO_ERROR;
    benchmark::DoNotOptimize(u_strToUpper(out.data(), static_cast<int32_t>(out.size()), wide.data(),
                                          static_cast<int32_t>(wide.size()), "", &status));
  });
  Register(group + "/tavi", 2 * wide.size(), [&wide] {
    benchmark::DoNotOptimize(_MapCase(XCaseMapping::kUpper, wide.data(),
                                      static_cast<uint32_t>(wide.size()), out.data()));
  });
}

}  // namespace

int main(int argc, char** argv) {
  RegisterFilter("ascii", AsciiText());
  RegisterFilter("mixed", MixedText());
  RegisterSearch("ascii", AsciiText());
  RegisterSearch("mixed", MixedText());
  RegisterCase("ascii", AsciiText());
  RegisterCase("mixed", MixedText());
  benchmark::Initialize(&argc, argv);
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput relative to the peer of each group:").CpuTime());
  benchmark::Shutdown();
  return 0;
}
