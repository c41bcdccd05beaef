//===- cmd_hash.cpp - tavi hash: CRC-32 and the library's 256-bit hash -----===//
//
// Streams each file through the filter chain hash -> CRC -> sink and prints the
// CRC-32 and the 256-bit digest that the library's containers store as trailers.
//
//===----------------------------------------------------------------------===//
#include <cstdio>
#include <fstream>
#include <vector>

#include "command.h"
#include "tavi/tavi.h"

namespace tavi::cli {

namespace {

// Accepts every byte and keeps the last write: the trailers end up there.
class TrailerSink : public XIO {
 public:
  bool _Write(const void* data, uint32_t bytes) override {
    const auto* p = static_cast<const uint8_t*>(data);
    last_.assign(p, p + bytes);
    return true;
  }
  const std::vector<uint8_t>& last() const { return last_; }

 private:
  std::vector<uint8_t> last_;
};

void PrintHex(const std::vector<uint8_t>& bytes, bool reversed) {
  for (size_t i = 0; i < bytes.size(); ++i)
    std::printf("%02x", bytes[reversed ? bytes.size() - 1 - i : i]);
}

bool HashFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "tavi hash: cannot open %s\n", path);
    return false;
  }
  TrailerSink sink;
  XCRC32IO crc(&sink);
  XSHA256IO hash(&crc);
  crc.Init();
  hash.Init256();
  std::vector<char> chunk(1 << 16);
  while (in.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || in.gcount() > 0) {
    if (!hash._Write(chunk.data(), static_cast<uint32_t>(in.gcount()))) return false;
  }
  if (!crc._WriteCRC()) return false;
  const std::vector<uint8_t> crc_bytes = sink.last();  // little-endian
  if (!hash._WriteSHA256()) return false;
  std::printf("crc32 ");
  PrintHex(crc_bytes, true);
  std::printf("  hash ");
  PrintHex(sink.last(), false);
  std::printf("  %s\n", path);
  return true;
}

}  // namespace

int RunHash(std::span<char* const> args) {
  if (args.empty()) {
    std::fprintf(stderr, "usage: tavi hash FILE...\n");
    return 2;
  }
  int status = 0;
  for (const char* path : args) {
    if (!HashFile(path)) status = 1;
  }
  return status;
}

}  // namespace tavi::cli
