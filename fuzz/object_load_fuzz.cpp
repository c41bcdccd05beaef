//===- object_load_fuzz.cpp - Fuzz loading a saved object from a file ------===//
//
// The input is a whole file: a 32-byte header and a raw or packed body. A small
// saved class (a list of byte strings) loads it with the password "pw". A failed
// load must leave the object as it was; a successful one must survive a save and
// load in memory unchanged.
//
//===----------------------------------------------------------------------===//
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/file/object.h"

namespace {

constexpr uint32_t kId = 0x5A5A4F46;

class Items : public tavi::XObject {
 public:
  std::vector<std::string> items;

  bool Write(tavi::XIO& out) override {
    if (!Put(out, static_cast<uint32_t>(items.size()))) return false;
    for (const std::string& item : items) {
      if (!Put(out, static_cast<uint32_t>(item.size()))) return false;
      if (!out._Write(item.data(), static_cast<uint32_t>(item.size()))) return false;
    }
    return true;
  }
  bool Read(tavi::XIO& in) override {
    uint32_t count;
    if (!Get(in, count)) return false;
    std::vector<std::string> read;
    for (uint32_t i = 0; i < count; ++i) {
      uint32_t length;
      if (!Get(in, length)) return false;
      std::string item;
      while (item.size() < length) {
        char chunk[512];
        const uint32_t want = std::min<uint32_t>(sizeof(chunk), length - item.size());
        if (!in.bRead(chunk, want)) return false;
        item.append(chunk, want);
      }
      read.push_back(std::move(item));
    }
    items.insert(items.end(), read.begin(), read.end());
    return true;
  }
  bool WriteFileHeader(tavi::XFile& file, tavi::XFileHeader256& header, uint32_t flags) override {
    header.SetForWriting(kId, flags);
    return header.Write(file);
  }
  bool ReadFileHeader(tavi::XFile& file, tavi::XFileHeader256& header) override {
    if (!header.Read(file)) return false;
    if (header.IsFor(kId)) return true;
    file.SetErrorCode(tavi::kErrCheckFailed);
    return false;
  }

 private:
  static bool Put(tavi::XIO& out, uint32_t v) {
    const uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    return out._Write(b, 4);
  }
  static bool Get(tavi::XIO& in, uint32_t& v) {
    uint8_t b[4];
    if (!in.bRead(b, 4)) return false;
    v = b[0] | b[1] << 8 | b[2] << 16 | uint32_t(b[3]) << 24;
    return true;
  }
};

bool Password(tavi::XString16& password, void*) {
  return password.Set(u"pw", uint32_t{4});
}

std::u16string ScratchName() {
  const std::string path = "/tmp/tavi_object_load_" + std::to_string(::getpid());
  return std::u16string(path.begin(), path.end());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > (1u << 16)) return 0;
  static const std::u16string path = ScratchName();
  tavi::XString16 name;
  name.Set(path.c_str(), static_cast<uint32_t>(path.size() * 2));
  {
    tavi::XBuffer bytes;
    bytes._Write(data, static_cast<uint32_t>(size));
    FUZZ_ASSERT(bytes.SaveFile(name, tavi::kFileWrite | tavi::kFileCreateAlways, nullptr));
  }
  Items loaded;
  loaded.items = {"before"};
  if (!loaded.LoadFile(name, Password, nullptr, tavi::kFileRead)) {
    FUZZ_ASSERT(name.IsError());
    FUZZ_ASSERT(loaded.items.size() == 1 && loaded.items[0] == "before");
    return 0;
  }
  tavi::XBuffer again;
  FUZZ_ASSERT(loaded.Write(again));
  Items copy;
  FUZZ_ASSERT(copy.Read(again) && again.EoB());
  FUZZ_ASSERT(copy.items == loaded.items);
  return 0;
}
