//===- persist_bench.cpp - Saving and loading a record collection ---------===//
//
// A collection of 1,000,000 small sized records (12 to 43 bytes) is saved to a file
// and loaded back, raw and packed (LZ; LZ with AES-256). The peers do the same work
// by hand: stdio writes and reads the same bytes (and allocates a block per record
// when loading), zlib compresses them at level 1 before writing. Throughput is the
// body's size over the time of a whole save or load; the ratio to the peer of each
// group is printed at the end.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "tavi/coll/sized_record_coll.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/io/sized_record.h"

namespace {

using namespace tavi;

constexpr uint32_t kRecords = 1000000;
constexpr uint32_t kId = 0x52434542;

class Records : public XSizedRecordColl {
 public:
  using XSizedRecordColl::_AddRecord;
  ~Records() override { FreeAll(); }
  bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kId, flags);
    header.reserved = 0;
    return header.Write(file);
  }
  bool ReadFileHeader(XFile& file, XFileHeader256& header) override {
    if (!header.Read(file)) return false;
    if (header.IsFor(kId)) return true;
    file.SetErrorCode(kErrCheckFailed);
    return false;
  }
};

// The body bytes of the collection: count, then the records.
std::vector<uint8_t>& Body() {
  static std::vector<uint8_t> body = [] {
    std::vector<uint8_t> v(4);
    std::memcpy(v.data(), &kRecords, 4);
    uint32_t x = 2463534242u;
    for (uint32_t i = 0; i < kRecords; ++i) {
      x ^= x << 13, x ^= x >> 17, x ^= x << 5;
      char text[64];
      const int n = std::snprintf(text, sizeof(text), "item %u qty %u", i, x % 1000);
      const uint32_t size = 4 + static_cast<uint32_t>(n) + x % 20;
      uint8_t record[64] = {};
      std::memcpy(record, &size, 4);
      std::memcpy(record + 4, text, static_cast<size_t>(n));
      v.insert(v.end(), record, record + size);
    }
    return v;
  }();
  return body;
}

Records& Source() {
  static Records* records = [] {
    auto* r = new Records;
    const std::vector<uint8_t>& body = Body();
    r->SetItemsDim(kRecords);
    for (size_t at = 4; at < body.size();) {
      const auto* record = XSizedRecord::At(body.data() + at);
      r->_AddRecord(record);
      at += record->GetSize();
    }
    return r;
  }();
  return *records;
}

std::string Folder() {
  return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
}

XString16 Name(const std::string& leaf) {
  const std::string path = Folder() + "/tavi_persist_bench_" + std::to_string(getpid()) + leaf;
  const std::u16string wide(path.begin(), path.end());
  XString16 s;
  s.Set(wide.c_str(), static_cast<uint32_t>(wide.size() * 2));
  return s;
}

std::string Path(const std::string& leaf) {
  return Folder() + "/tavi_persist_bench_" + std::to_string(getpid()) + leaf;
}

void Register(const std::string& name, std::function<void(benchmark::State&)> body) {
  benchmark::RegisterBenchmark(
      name.c_str(),
      [=](benchmark::State& state) {
        for (auto _ : state) body(state);
        state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Body().size()));
      })
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond)
      ->MinTime(1.0);
}

void TaviSave(benchmark::State& state, uint32_t flags, const std::string& leaf) {
  XString16 name = Name(leaf);
  if (!Source().SaveFile(name, flags, u"password", kFileWrite | kFileCreateAlways, nullptr)) {
    state.SkipWithError("save failed");
  }
}

bool GivePassword(XString16& password, void*) {
  return password.Set(u"password", uint32_t{16});
}

void TaviLoad(benchmark::State& state, const std::string& leaf) {
  XString16 name = Name(leaf);
  Records loaded;
  if (!loaded.LoadFile(name, GivePassword, nullptr, kFileRead) || loaded.GetCount() != kRecords) {
    state.SkipWithError("load failed");
  }
}

// The hand-written peers: the same bytes through stdio, records as heap blocks.
void StdioSave(const std::string& leaf, const std::vector<uint8_t>& bytes) {
  FILE* f = std::fopen(Path(leaf).c_str(), "wb");
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::fclose(f);
}

std::vector<uint8_t> StdioLoad(const std::string& leaf) {
  FILE* f = std::fopen(Path(leaf).c_str(), "rb");
  std::fseek(f, 0, SEEK_END);
  std::vector<uint8_t> bytes(static_cast<size_t>(std::ftell(f)));
  std::fseek(f, 0, SEEK_SET);
  if (std::fread(bytes.data(), 1, bytes.size(), f) != bytes.size()) bytes.clear();
  std::fclose(f);
  return bytes;
}

void SplitRecords(const uint8_t* body, size_t size) {
  std::vector<void*> items;
  items.reserve(kRecords);
  for (size_t at = 4; at + 4 <= size;) {
    uint32_t n;
    std::memcpy(&n, body + at, 4);
    void* block = std::malloc(n);
    std::memcpy(block, body + at, n);
    items.push_back(block);
    at += n;
  }
  for (void* p : items) std::free(p);
}

void ZlibSave(const std::string& leaf) {
  std::vector<uint8_t> packed(compressBound(Body().size()));
  uLongf size = packed.size();
  compress2(packed.data(), &size, Body().data(), Body().size(), 1);
  packed.resize(size);
  StdioSave(leaf, packed);
}

void ZlibLoad(benchmark::State& state, const std::string& leaf) {
  std::vector<uint8_t> packed = StdioLoad(leaf);
  std::vector<uint8_t> body(Body().size());
  uLongf size = body.size();
  if (uncompress(body.data(), &size, packed.data(), packed.size()) != Z_OK) {
    state.SkipWithError("zlib failed");
  }
  SplitRecords(body.data(), size);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Source();
  Register("SaveRaw/tavi", [](benchmark::State& s) { TaviSave(s, 0, "raw"); });
  Register("SaveRaw/stdio", [](benchmark::State&) { StdioSave("raw_peer", Body()); });
  Register("LoadRaw/tavi", [](benchmark::State& s) { TaviLoad(s, "raw"); });
  Register("LoadRaw/stdio", [](benchmark::State&) {
    const std::vector<uint8_t> bytes = StdioLoad("raw_peer");
    SplitRecords(bytes.data(), bytes.size());
  });
  Register("SavePacked/tavi_lz", [](benchmark::State& s) { TaviSave(s, 1, "lz"); });
  Register("SavePacked/tavi_lz_aes", [](benchmark::State& s) { TaviSave(s, 3, "lz_aes"); });
  Register("SavePacked/zlib", [](benchmark::State&) { ZlibSave("zlib_peer"); });
  Register("LoadPacked/tavi_lz", [](benchmark::State& s) { TaviLoad(s, "lz"); });
  Register("LoadPacked/tavi_lz_aes", [](benchmark::State& s) { TaviLoad(s, "lz_aes"); });
  Register("LoadPacked/zlib", [](benchmark::State& s) { ZlibLoad(s, "zlib_peer"); });
  tavi_bench::RunWithRatios(
      tavi_bench::RatioTable("Throughput (body of " + std::to_string(Body().size()) +
                                 " bytes) relative to the peer of each group:",
                             {"stdio", "zlib"})
          .PerSecond("MB/s", static_cast<double>(Body().size())));
  for (const char* leaf : {"raw", "raw_peer", "lz", "lz_aes", "zlib_peer"}) {
    std::remove(Path(leaf).c_str());
  }
  benchmark::Shutdown();
  return 0;
}
