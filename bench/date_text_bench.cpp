//===- date_text_bench.cpp - Date-time text beside ICU's udat_format -------===//
//
// Every benchmark is named group/implementation and converts the same 4096
// date-times (1900 to 2100) per iteration; ICU formats and parses with the very
// pattern our record compiled (the locale's date and time patterns joined by its
// glue). After the run each tavi implementation's speed is printed as a ratio to
// ICU's of its group (above 1 is faster).
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/uloc.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "tavi/time/date_time_text.h"

namespace {

using namespace tavi;

constexpr size_t kCount = 4096;

std::vector<uint32_t> Values() {
  std::mt19937 rng(7);
  const uint32_t first = GetDateTime(strDateTime(1900, 1, 1, 0, 0));
  const uint32_t last = GetDateTime(strDateTime(2100, 1, 1, 0, 0));
  std::uniform_int_distribution<uint32_t> pick(first, last);
  std::vector<uint32_t> v(kCount);
  for (auto& x : v) x = pick(rng);
  return v;
}

UDate ToUDate(uint32_t value) {
  const int64_t days = int64_t{value / 1440} - GetDayCount(strDate(1970, 1, 1));
  return static_cast<double>(days * 1440 + value % 1440) * 60000.0;
}

// The ICU pattern of a skeleton pair joined by the locale's glue.
std::u16string IcuPattern(const char* locale, const char16_t* dateSkeleton) {
  UErrorCode status = U_ZERO_ERROR;
  UDateTimePatternGenerator* g = udatpg_open(locale, &status);
  UChar date[128], time[128];
  const int32_t nd = udatpg_getBestPattern(g, dateSkeleton, -1, date, 128, &status);
  const int32_t nt = udatpg_getBestPattern(g, u"jm", -1, time, 128, &status);
  int32_t ng = 0;
  const UChar* glue = udatpg_getDateTimeFormat(g, &ng);
  std::u16string out(glue, glue + ng);
  out.replace(out.find(u"{1}"), 3, std::u16string(date, date + nd));
  out.replace(out.find(u"{0}"), 3, std::u16string(time, time + nt));
  udatpg_close(g);
  return out;
}

void Register(const std::string& name, std::function<void()> body) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    for (auto _ : state) body();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
  })->Unit(benchmark::kMicrosecond);
}

struct Case {
  std::string group;
  uint32_t lcid;  // 0: the portable record
  const char* locale;
  uint32_t form;
  const char16_t* skeleton;
};

void RegisterCase(const Case& c) {
  auto options = std::make_shared<strEnvDateTimeOptions>();
  if (c.lcid != 0 && !options->SetLocale(c.lcid)) return;
  const std::u16string pattern =
      c.lcid != 0 ? IcuPattern(c.locale, c.skeleton) : u"yyyy-MM-dd HH:mm";
  UErrorCode status = U_ZERO_ERROR;
  std::shared_ptr<UDateFormat> icu(
      udat_open(UDAT_PATTERN, UDAT_PATTERN, c.locale, u"UTC", -1, pattern.data(),
                static_cast<int32_t>(pattern.size()), &status),
      udat_close);
  if (U_FAILURE(status)) return;
  auto values = std::make_shared<std::vector<uint32_t>>(Values());

  // Both must write the same text, or the comparison is void.
  auto texts = std::make_shared<std::vector<std::u16string>>();
  for (const uint32_t v : *values) {
    char16_t ours[kMaxDateTimeText];
    const char16_t* begin = ours;
    const char16_t* end = _DateTimeToStringEx(ours, v, c.form, *options);
    UChar theirs[256];
    const int32_t n = udat_format(icu.get(), ToUDate(v), theirs, 256, nullptr, &status);
    if (std::u16string(begin, end) != std::u16string(theirs, theirs + n)) {
      std::fprintf(stderr, "%s: texts differ at %u; skipped\n", c.group.c_str(), v);
      return;
    }
    texts->emplace_back(begin, end);
  }

  Register(c.group + "_format/icu", [icu, values] {
    UChar out[256];
    for (const uint32_t v : *values) {
      UErrorCode s = U_ZERO_ERROR;
      benchmark::DoNotOptimize(udat_format(icu.get(), ToUDate(v), out, 256, nullptr, &s));
      benchmark::ClobberMemory();
    }
  });
  Register(c.group + "_format/tavi", [options, values, form = c.form] {
    char16_t out[kMaxDateTimeText];
    for (const uint32_t v : *values) {
      benchmark::DoNotOptimize(_DateTimeToStringEx(out, v, form, *options));
      benchmark::ClobberMemory();
    }
  });
  Register(c.group + "_parse/icu", [icu, texts] {
    for (const std::u16string& t : *texts) {
      UErrorCode s = U_ZERO_ERROR;
      benchmark::DoNotOptimize(
          udat_parse(icu.get(), t.data(), static_cast<int32_t>(t.size()), nullptr, &s));
    }
  });
  Register(c.group + "_parse/tavi", [options, texts] {
    for (const std::u16string& t : *texts) {
      uint32_t v;
      benchmark::DoNotOptimize(_StringToDateTimeValue(t.c_str(), v, *options));
      benchmark::DoNotOptimize(v);
    }
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const Case cases[] = {
      {"Portable", 0, "en_US@calendar=gregorian", kDateNumeric, nullptr},
      {"enUS_numeric", 0x0409, "en_US@calendar=gregorian", kDateNumeric, u"yMd"},
      {"deDE_long_weekday", 0x0407, "de_DE@calendar=gregorian", kDateLongMonth | kDateWeekday,
       u"yMMMMEEEEd"},
      {"ruRU_short", 0x0419, "ru_RU@calendar=gregorian", kDateShortMonth, u"yMMMd"},
  };
  for (const Case& c : cases) RegisterCase(c);
  tavi_bench::RunWithRatios(tavi_bench::RatioTable("Speed relative to ICU in each group:", {"icu"})
                                .NsPer("value", kCount));
  benchmark::Shutdown();
  return 0;
}
