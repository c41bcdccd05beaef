//===- crypt_bench.cpp - Crypt kernels beside zlib and OpenSSL ------------===//
//
// Every benchmark is named group/implementation; after the run, each tavi
// implementation's throughput is printed as a ratio to the peer of its group
// (zlib's crc32, OpenSSL's SHA-256, OpenSSL's EVP AES-256-ECB).
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "crypt/internal/aes256_kernel.h"
#include "crypt/internal/crc32_kernel.h"
#include "crypt/internal/sha256_kernel.h"
#include "ratio_reporter.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/aes256.h"
#include "tavi/crypt/crc32.h"
#include "tavi/crypt/sha256.h"
#include "tavi/thread/parallel.h"

namespace {

using namespace tavi;
using namespace tavi::crypt_internal;

constexpr size_t k64MiB = size_t{64} << 20;
constexpr size_t k4KiB = 4096;

std::vector<uint8_t>& Data() {
  static std::vector<uint8_t> data = [] {
    std::vector<uint8_t> v(k64MiB);
    uint32_t x = 12345;
    for (auto& b : v) {
      x = x * 1103515245u + 12345u;
      b = static_cast<uint8_t>(x >> 24);
    }
    return v;
  }();
  return data;
}

// Throughput of each benchmark, for the ratios printed at the end.
std::map<std::string, size_t>& BytesPerIteration() {
  static std::map<std::string, size_t> bytes;
  return bytes;
}

void Register(const std::string& name, size_t bytes, std::function<void()> body,
              std::function<void()> setup = {}, std::function<void()> teardown = {}) {
  BytesPerIteration()[name] = bytes;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        if (setup) setup();
        for (auto _ : state) body();
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
        if (teardown) teardown();
      })
      ->UseRealTime()
      ->Unit(benchmark::kMicrosecond);
}

const char* Crc32PathName(Crc32Path p) {
  return p == Crc32Path::kPortable ? "tavi_portable"
         : p == Crc32Path::kPclmul ? "tavi_pclmul"
                                   : "tavi_vpclmul";
}

void RegisterCrc32(const std::string& group, size_t size) {
  for (Crc32Path path : {Crc32Path::kPortable, Crc32Path::kPclmul, Crc32Path::kVpclmul}) {
    if (!Crc32PathAvailable(path)) continue;
    Register(
        group + "/" + Crc32PathName(path), size,
        [size] {
          uint32_t crc;
          XHashCRC32(crc, Data().data(), static_cast<uint32_t>(size));
          benchmark::DoNotOptimize(crc);
        },
        [path] { SetCrc32Path(path); }, [] { ResetCrc32Path(); });
  }
  Register(group + "/zlib", size,
           [size] { benchmark::DoNotOptimize(crc32(0, Data().data(), static_cast<uInt>(size))); });
}

void RegisterSha256() {
  for (Sha256Path path : {Sha256Path::kPortable, Sha256Path::kShaNi}) {
    if (!Sha256PathAvailable(path)) continue;
    Register(
        std::string("SHA256_64MiB/") +
            (path == Sha256Path::kShaNi ? "tavi_shani" : "tavi_portable"),
        k64MiB,
        [] {
          int32_t out[8];
          XHashSHA256(out, Data().data(), static_cast<int32_t>(k64MiB));
          benchmark::DoNotOptimize(out);
        },
        [path] { SetSha256Path(path); }, [] { ResetSha256Path(); });
  }
  Register("SHA256_64MiB/openssl", k64MiB, [] {
    unsigned char md[32];
    unsigned int len = 0;
    EVP_Digest(Data().data(), k64MiB, md, &len, EVP_sha256(), nullptr);
    benchmark::DoNotOptimize(md);
  });
}

uint32_t& SavedWorkers() {
  static uint32_t saved = 1;
  return saved;
}

const char* AesPathName(AesPath p) {
  return p == AesPath::kPortable ? "tavi_portable"
         : p == AesPath::kAesNi  ? "tavi_aesni"
                                 : "tavi_vaes";
}

void RegisterAes() {
  for (AesPath path : {AesPath::kPortable, AesPath::kAesNi, AesPath::kVaes}) {
    if (!AesPathAvailable(path)) continue;
    Register(
        std::string("AES256_64MiB/") + AesPathName(path) + "_1thread", k64MiB,
        [] { XAES256(Data().data(), static_cast<int32_t>(k64MiB), u"password", true); },
        [path] {
          SetAesPath(path);
          SavedWorkers() = XSetWorkerCount(1);
        },
        [] {
          ResetAesPath();
          XSetWorkerCount(SavedWorkers());
        });
  }
  Register(
      "AES256_64MiB/tavi_2threads", k64MiB,
      [] { XAES256(Data().data(), static_cast<int32_t>(k64MiB), u"password", true); },
      [] { SavedWorkers() = XSetWorkerCount(2); }, [] { XSetWorkerCount(SavedWorkers()); });
  Register("AES256_64MiB/openssl", k64MiB, [] {
    static EVP_CIPHER_CTX* ctx = [] {
      static const unsigned char key[32] = {1, 2, 3};
      EVP_CIPHER_CTX* c = EVP_CIPHER_CTX_new();
      EVP_EncryptInit_ex(c, EVP_aes_256_ecb(), nullptr, key, nullptr);
      EVP_CIPHER_CTX_set_padding(c, 0);
      return c;
    }();
    int len = 0;
    EVP_EncryptUpdate(ctx, Data().data(), &len, Data().data(), static_cast<int>(k64MiB));
    benchmark::DoNotOptimize(len);
  });
}

// The filter writing 64 MiB into a buffer that already has the room, in
// writes of 1 MiB, so the measure is the filter's and not the buffer's growth.
void RegisterAesFilter() {
  Register("AES256_64MiB/tavi_filter_to_buffer", k64MiB, [] {
    static XBuffer* target = [] {
      auto* b = new XBuffer;
      b->AllocBuffer(static_cast<uint32_t>(k64MiB + 16));
      return b;
    }();
    target->ResetBufferPos();
    XCipherAES256 filter(target);
    filter.Init(u"password");
    constexpr size_t kWrite = size_t{1} << 20;
    for (size_t at = 0; at < k64MiB; at += kWrite) {
      filter._Write(Data().data() + at, static_cast<uint32_t>(kWrite));
    }
    filter._Flush();
    benchmark::DoNotOptimize(target->GetBufferPos());
  });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Data();
  RegisterCrc32("CRC32_64MiB", k64MiB);
  RegisterCrc32("CRC32_4KiB", k4KiB);
  RegisterSha256();
  RegisterAes();
  RegisterAesFilter();
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput relative to the peer of each group:", {"zlib", "openssl"})
          .PerSecond("MB/s", [](const std::string& name) {
            return static_cast<double>(BytesPerIteration().at(name));
          }));
  benchmark::Shutdown();
  return 0;
}
