//===- xpack_bench.cpp - The packed container beside zlib -----------------===//
//
// Packs and unpacks three kinds of data made on this machine (a tar of the C++
// headers, the cmake executable, 16 MiB of ICU's data library) with XPack, methods
// LZ + Huffman and flags CRC + hash + AES, beside zlib's compress2 at level 6 and
// its inflate. Prints MB/s of the unpacked size, the ratio to zlib and the packed
// sizes.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/container.h"

namespace {

using namespace tavi;

constexpr uint32_t kFlags = kXPackAES | kXPackHash | kXPackCRC;
constexpr uint32_t kMethods = kXPackTryLZ | kXPackTryHuffman;
constexpr size_t k16MiB = size_t{16} << 20;

std::vector<uint8_t> ReadCommand(const char* command, size_t limit) {
  std::vector<uint8_t> bytes;
  if (FILE* pipe = popen(command, "r")) {
    uint8_t chunk[65536];
    size_t n;
    while (bytes.size() < limit && (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) {
      bytes.insert(bytes.end(), chunk, chunk + n);
    }
    pclose(pipe);
  }
  if (bytes.size() > limit) bytes.resize(limit);
  return bytes;
}

struct Corpus {
  std::string name;
  std::vector<uint8_t> data;
};

std::vector<Corpus>& Corpora() {
  static std::vector<Corpus> corpora = {
      {"cxx_headers_tar", ReadCommand("tar cf - -C /usr/include c++ 2>/dev/null", k16MiB * 4)},
      {"cmake_binary", ReadCommand("cat /usr/bin/cmake", k16MiB * 4)},
      {"icudata_16MiB", ReadCommand("cat /usr/lib/x86_64-linux-gnu/libicudata.so", k16MiB)},
  };
  return corpora;
}

std::map<std::string, size_t>& BytesPerIteration() {
  static std::map<std::string, size_t> bytes;
  return bytes;
}
std::map<std::string, size_t>& PackedSizes() {
  static std::map<std::string, size_t> sizes;
  return sizes;
}

void Register(const std::string& name, size_t bytes, std::function<void(benchmark::State&)> body) {
  BytesPerIteration()[name] = bytes;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        body(state);
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
      })
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond)
      ->MinTime(2.0);
}

bool XPackTo(XBuffer& out, const std::vector<uint8_t>& data) {
  out.ResetBufferPos();
  strXPackRecord r;
  r.flags = kFlags;
  r.methods = kMethods;
  r.stream = &out;
  r.password = u"benchmark password";
  r.data = data.data();
  r.size_low = static_cast<uint32_t>(data.size());
  return XPack(&r);
}

void RegisterCorpus(const Corpus& c) {
  const std::vector<uint8_t>* data = &c.data;
  const size_t size = data->size();
  if (size == 0) return;

  Register("Pack_" + c.name + "/tavi_xpack", size, [data](benchmark::State& state) {
    XBuffer out(1u << 20);
    for (auto _ : state) {
      if (!XPackTo(out, *data)) state.SkipWithError("XPack failed");
    }
  });
  Register("Pack_" + c.name + "/zlib", size, [data](benchmark::State& state) {
    std::vector<uint8_t> out(compressBound(static_cast<uLong>(data->size())));
    for (auto _ : state) {
      uLongf n = static_cast<uLongf>(out.size());
      if (compress2(out.data(), &n, data->data(), static_cast<uLong>(data->size()), 6) != Z_OK)
        state.SkipWithError("compress2 failed");
    }
  });

  Register("Unpack_" + c.name + "/tavi_xpack", size,
           [data, name = c.name](benchmark::State& state) {
             XBuffer packed(1u << 20);
             if (!XPackTo(packed, *data)) state.SkipWithError("XPack failed");
             PackedSizes()["tavi_xpack " + name] = packed.GetBufferPos();
             XBuffer out(1u << 20);
             out.AllocBuffer(static_cast<uint32_t>(data->size()) + 64);
             for (auto _ : state) {
               packed.ResetCurrentPos();
               out.ResetBufferPos();
               strXUnpackRecord r;
               r.stream = &packed;
               r.password = u"benchmark password";
               r.output = &out;
               if (!XPack(&r)) state.SkipWithError("unpacking failed");
             }
             if (out.GetBufferPos() != data->size() ||
                 std::memcmp(out.GetBuffer(), data->data(), data->size()) != 0) {
               state.SkipWithError("round trip differs");
             }
           });
  Register("Unpack_" + c.name + "/zlib", size, [data, name = c.name](benchmark::State& state) {
    std::vector<uint8_t> packed(compressBound(static_cast<uLong>(data->size())));
    uLongf packed_size = static_cast<uLongf>(packed.size());
    compress2(packed.data(), &packed_size, data->data(), static_cast<uLong>(data->size()), 6);
    PackedSizes()["zlib " + name] = packed_size;
    std::vector<uint8_t> out(data->size());
    for (auto _ : state) {
      uLongf n = static_cast<uLongf>(out.size());
      if (uncompress(out.data(), &n, packed.data(), packed_size) != Z_OK)
        state.SkipWithError("uncompress failed");
    }
  });
}

void PrintPackedSizes() {
  std::printf("\nPacked sizes (percent of the input):\n");
  for (const Corpus& c : Corpora()) {
    const auto ours = PackedSizes().find("tavi_xpack " + c.name);
    const auto zlib = PackedSizes().find("zlib " + c.name);
    if (ours == PackedSizes().end() || zlib == PackedSizes().end()) continue;
    std::printf("  %-18s %10zu bytes  xpack %10zu (%5.1f%%)  zlib6 %10zu (%5.1f%%)\n",
                c.name.c_str(), c.data.size(), ours->second,
                100.0 * static_cast<double>(ours->second) / static_cast<double>(c.data.size()),
                zlib->second,
                100.0 * static_cast<double>(zlib->second) / static_cast<double>(c.data.size()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const Corpus& c : Corpora()) RegisterCorpus(c);
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput (unpacked MB/s) relative to zlib level 6 / inflate:",
                             {"zlib"})
          .PerSecond("MB/s", [](const std::string& name) {
            return static_cast<double>(BytesPerIteration().at(name));
          }));
  PrintPackedSizes();
  benchmark::Shutdown();
  return 0;
}
