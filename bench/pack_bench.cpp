//===- pack_bench.cpp - Huffman and LZ coders beside zlib ------------------===//
//
// Three kinds of data made on this machine from files nobody here wrote: a tar of
// /usr/include/c++ (text), /usr/bin/cmake (code) and 16 MiB of ICU's data library
// (mixed tables). Each benchmark is named kind/operation/implementation; after the
// run a table gives the compression ratio and MB/s (CPU time) of each beside its
// zlib peer.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/pack/huffman.h"
#include "tavi/pack/lz.h"

namespace {

using namespace tavi;

constexpr size_t k16MiB = size_t{16} << 20;

std::vector<uint8_t> ReadFile(const std::string& path, size_t limit) {
  std::ifstream f(path, std::ios::binary);
  std::vector<uint8_t> v((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
  if (v.size() > limit) v.resize(limit);
  return v;
}

std::vector<uint8_t> TarOfHeaders() {
  const std::string path = "/tmp/tavi_pack_bench_cxx.tar";
  if (std::system(("tar cf " + path + " -C /usr/include c++ 2>/dev/null").c_str()) != 0) return {};
  return ReadFile(path, k16MiB);
}

struct Corpus {
  std::string name;
  std::vector<uint8_t> data;
};

std::vector<Corpus>& Corpora() {
  static std::vector<Corpus> c = [] {
    std::vector<Corpus> v;
    v.push_back({"text", TarOfHeaders()});
    v.push_back({"code", ReadFile("/usr/bin/cmake", k16MiB)});
    v.push_back({"mixed", ReadFile("/usr/lib/x86_64-linux-gnu/libicudata.so", k16MiB)});
    std::erase_if(v, [](const Corpus& c) { return c.data.empty(); });
    return v;
  }();
  return c;
}

std::vector<uint8_t> Deflate(const std::vector<uint8_t>& in, int level, int strategy) {
  z_stream z{};
  deflateInit2(&z, level, Z_DEFLATED, -15, 8, strategy);
  std::vector<uint8_t> out(deflateBound(&z, in.size()));
  z.next_in = const_cast<Bytef*>(in.data());
  z.avail_in = static_cast<uInt>(in.size());
  z.next_out = out.data();
  z.avail_out = static_cast<uInt>(out.size());
  deflate(&z, Z_FINISH);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

void Inflate(const std::vector<uint8_t>& in, std::vector<uint8_t>& out) {
  z_stream z{};
  inflateInit2(&z, -15);
  z.next_in = const_cast<Bytef*>(in.data());
  z.avail_in = static_cast<uInt>(in.size());
  z.next_out = out.data();
  z.avail_out = static_cast<uInt>(out.size());
  inflate(&z, Z_FINISH);
  inflateEnd(&z);
}

std::vector<uint8_t> Contents(const XBuffer& b) {
  const auto* p = static_cast<const uint8_t*>(b.GetBuffer());
  return std::vector<uint8_t>(p, p + b.GetBufferPos());
}

// Per benchmark: input bytes per iteration, coded size, peer name.
struct Info {
  size_t bytes;
  size_t coded;
  std::string peer;
};
std::map<std::string, Info>& Infos() {
  static std::map<std::string, Info> m;
  return m;
}

void Register(const std::string& name, const Info& info, int iterations,
              std::function<void()> body) {
  Infos()[name] = info;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        for (auto _ : state) body();
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * info.bytes));
      })
      ->Iterations(iterations)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

void RegisterCorpus(const Corpus& c) {
  const std::vector<uint8_t>& d = c.data;
  const size_t n = d.size();
  const std::string k = c.name + "/";
  static std::vector<uint8_t> out_area;
  if (out_area.size() < n) out_area.resize(n);

  // Huffman.
  {
    XBuffer coded;
    HufmanCode(coded, d.data(), static_cast<int32_t>(n), 0xFFFFFFFF);
    const auto ours = std::make_shared<std::vector<uint8_t>>(Contents(coded));
    const auto peer = std::make_shared<std::vector<uint8_t>>(Deflate(d, 1, Z_HUFFMAN_ONLY));
    Register(k + "huffman_code/tavi", {n, ours->size(), k + "huffman_code/zlib"}, 5, [&d, n] {
      XBuffer out(1 << 20);
      HufmanCode(out, d.data(), static_cast<int32_t>(n), 0xFFFFFFFF);
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    Register(k + "huffman_code/zlib", {n, peer->size(), ""}, 5,
             [&d] { benchmark::DoNotOptimize(Deflate(d, 1, Z_HUFFMAN_ONLY).size()); });
    Register(k + "huffman_decode/tavi", {n, ours->size(), k + "huffman_decode/zlib"}, 5, [ours, n] {
      XBuffer in;
      in.AttachBuffer(ours->data(), static_cast<uint32_t>(ours->size() + 1), true);
      in._SetBufferPos(static_cast<uint32_t>(ours->size()));
      XBuffer out;
      out.AttachBuffer(out_area.data(), static_cast<uint32_t>(n + 1), false);
      HufmanDecode(out, in, static_cast<int32_t>(n));
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    Register(k + "huffman_decode/zlib", {n, peer->size(), ""}, 5,
             [peer] { Inflate(*peer, out_area); });
  }
  // LZ.
  {
    XBuffer coded;
    LZX4Code(coded, d.data(), n, kLZWindowMax);
    const auto ours = std::make_shared<std::vector<uint8_t>>(Contents(coded));
    XBuffer coded3;
    const size_t n3 = n < (size_t{4} << 20) ? n : (size_t{4} << 20);
    LZX3Code(coded3, d.data(), n3, kLZWindowMax);
    const size_t size3 = coded3.GetBufferPos();
    const auto z1 = std::make_shared<std::vector<uint8_t>>(Deflate(d, 1, Z_DEFAULT_STRATEGY));
    const auto z6 = std::make_shared<std::vector<uint8_t>>(Deflate(d, 6, Z_DEFAULT_STRATEGY));
    Register(k + "lz_code/tavi_x4", {n, ours->size(), k + "lz_code/zlib_6"}, 3, [&d, n] {
      XBuffer out(1 << 20);
      LZX4Code(out, d.data(), n, kLZWindowMax);
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    Register(k + "lz_code/tavi_x3_4MiB", {n3, size3, k + "lz_code/zlib_6"}, 1, [&d, n3] {
      XBuffer out(1 << 20);
      LZX3Code(out, d.data(), n3, kLZWindowMax);
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    XBuffer coded3w;
    LZX3Code(coded3w, d.data(), n3, 4096);
    const size_t size3w = coded3w.GetBufferPos();
    Register(k + "lz_code/tavi_x3_4MiB_w4096", {n3, size3w, k + "lz_code/zlib_6"}, 1, [&d, n3] {
      XBuffer out(1 << 20);
      LZX3Code(out, d.data(), n3, 4096);
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    Register(k + "lz_code/zlib_1", {n, z1->size(), ""}, 3,
             [&d] { benchmark::DoNotOptimize(Deflate(d, 1, Z_DEFAULT_STRATEGY).size()); });
    Register(k + "lz_code/zlib_6", {n, z6->size(), ""}, 3,
             [&d] { benchmark::DoNotOptimize(Deflate(d, 6, Z_DEFAULT_STRATEGY).size()); });
    Register(k + "lz_decode/tavi", {n, ours->size(), k + "lz_decode/zlib_1"}, 5, [ours, n] {
      XBuffer in;
      in.AttachBuffer(ours->data(), static_cast<uint32_t>(ours->size() + 1), true);
      in._SetBufferPos(static_cast<uint32_t>(ours->size()));
      XBuffer out;
      out.AttachBuffer(out_area.data(), static_cast<uint32_t>(n + 1), false);
      LZX4Decode(out, in, static_cast<int64_t>(n));
      benchmark::DoNotOptimize(out.GetBufferPos());
    });
    Register(k + "lz_decode/zlib_1", {n, z1->size(), ""}, 5, [z1] { Inflate(*z1, out_area); });
  }
}

class TableReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      // CPU time: the machine is shared, and the ratios compare work done.
      std::string name = r.benchmark_name();
      name = name.substr(0, name.find("/iterations"));
      seconds_[name] = r.GetAdjustedCPUTime() / 1e3;  // ms -> s
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void PrintTable() const {
    std::printf("\n%-32s %9s %9s %11s\n", "benchmark", "ratio", "MB/s", "speed/peer");
    for (const auto& [name, secs] : seconds_) {
      const auto it = Infos().find(name);
      if (it == Infos().end()) continue;
      const Info& info = it->second;
      const double mbps = static_cast<double>(info.bytes) / secs / 1e6;
      std::printf("%-32s %9.3f %9.1f", name.c_str(),
                  static_cast<double>(info.bytes) / static_cast<double>(info.coded), mbps);
      const auto peer = seconds_.find(info.peer);
      const auto peer_info = Infos().find(info.peer);
      if (peer != seconds_.end() && peer_info != Infos().end()) {
        const double peer_mbps = static_cast<double>(peer_info->second.bytes) / peer->second / 1e6;
        std::printf(" %10.2fx %s", mbps / peer_mbps, info.peer.c_str());
      }
      std::printf("\n");
    }
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const Corpus& c : Corpora()) RegisterCorpus(c);
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintTable();
  benchmark::Shutdown();
  return 0;
}
