//===- utf8_bench.cpp - The UTF-8 converter beside ICU --------------------===//
//
// Both directions on ASCII text and on mixed text (Latin with accents, CJK,
// emoji), each converter path beside ICU's u_strFromUTF8 / u_strToUTF8 on the same
// data into a buffer of sufficient size. After the run each tavi path's
// throughput is printed as a ratio to ICU's. Times are CPU times, which a shared
// build machine disturbs less than wall-clock times.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <unicode/ustring.h>

#include <functional>
#include <string>
#include <vector>

#include "core/internal/utf8.h"
#include "ratio_reporter.h"
#include "sample_text.h"

namespace {

using namespace tavi::internal;

using namespace tavi_bench;

const std::string& MixedText() {
  static const std::string text = Repeat(
      "Le c\u0153ur d\u00e9\u00e7u mais l'\u00e2me plut\u00f4t na\u00efve, Lou\u00ffs "
      "r\u00eava de crapa\u00fcter en cano\u00eb. Falsches \u00dcben von Xylophonmusik "
      "qu\u00e4lt jeden gr\u00f6\u00dferen Zwerg. \u6211\u80fd\u541e\u4e0b\u73bb\u7483"
      "\u800c\u4e0d\u4f24\u8eab\u4f53\u3002\u65e5\u672c\u8a9e\u306e\u30c6\u30ad\u30b9"
      "\u30c8\u3092\u5909\u63db\u3057\u307e\u3059\u3002 \U0001F600\U0001F680\U0001F30D "
      "\u2728 ok\n");
  return text;
}

void Register(const std::string& name, size_t bytes, std::function<void()> body,
              std::function<void()> setup = {}, std::function<void()> teardown = {}) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    if (setup) setup();
    for (auto _ : state) body();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    if (teardown) teardown();
  })->Unit(benchmark::kMicrosecond);
}

const char* PathName(Utf8Path p) {
  return p == Utf8Path::kPortable ? "tavi_portable"
         : p == Utf8Path::kSse2   ? "tavi_sse2"
                                  : "tavi_avx2";
}

// Throughput is counted in UTF-8 bytes in both directions.
void RegisterText(const std::string& kind, const std::string& text) {
  static std::vector<char16_t> wide_out(kTextBytes + 64);
  static std::vector<uint8_t> narrow_out(3 * kTextBytes + 64);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const size_t n = text.size();
  const auto* wide = new std::u16string(Wide(text));
  for (Utf8Path path : {Utf8Path::kPortable, Utf8Path::kSse2, Utf8Path::kAvx2}) {
    if (!Utf8PathAvailable(path)) continue;
    Register(
        "FromUtf8_" + kind + "/" + PathName(path), n,
        [bytes, n] {
          size_t consumed, produced, needed;
          DecodeUtf8(bytes, n, wide_out.data(), wide_out.size(), &consumed, &produced, &needed);
          benchmark::DoNotOptimize(produced);
        },
        [path] { SetUtf8Path(path); }, [] { ResetUtf8Path(); });
    Register(
        "ToUtf8_" + kind + "/" + PathName(path), n,
        [wide] {
          benchmark::DoNotOptimize(EncodeUtf8(wide->data(), wide->size(), narrow_out.data()));
        },
        [path] { SetUtf8Path(path); }, [] { ResetUtf8Path(); });
  }
  Register("FromUtf8_" + kind + "/icu", n, [text] {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(wide_out.data(), static_cast<int32_t>(wide_out.size()), &length, text.data(),
                  static_cast<int32_t>(text.size()), &status);
    benchmark::DoNotOptimize(length);
  });
  Register("ToUtf8_" + kind + "/icu", n, [wide] {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8(reinterpret_cast<char*>(narrow_out.data()), static_cast<int32_t>(narrow_out.size()),
                &length, wide->data(), static_cast<int32_t>(wide->size()), &status);
    benchmark::DoNotOptimize(length);
  });
}

}  // namespace

int main(int argc, char** argv) {
  RegisterText("ascii", AsciiText());
  RegisterText("mixed", MixedText());
  benchmark::Initialize(&argc, argv);
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput relative to ICU:", {"icu"}).CpuTime());
  benchmark::Shutdown();
  return 0;
}
