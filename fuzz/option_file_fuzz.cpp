//===- option_file_fuzz.cpp - Fuzz loading and reading option files ---------===//
//
// The input is written to a scratch file and loaded as an option file; then every
// typed option form reads a few keys. Lines must come back sorted, and every form
// must either find nothing, fail with a message, or return a line that begins with
// its key.
//
//===----------------------------------------------------------------------===//
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_helpers.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/file/option_file.h"

namespace {

bool StartsWith(const tavi::TTitleText* line, const char16_t* key, uint32_t bytes) {
  if (line->size < bytes) return false;
  for (uint32_t i = 0; i < bytes / 2; ++i) {
    if (line->text[i] != key[i]) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/tavi_option_fuzz_" + std::to_string(::getpid()) + ".opt";
  tavi::fuzz::SilenceMessageBoxes();

  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  if (size != 0) std::fwrite(data, 1, size, f);
  std::fclose(f);

  tavi::XString16 name;
  std::u16string wide(path.begin(), path.end());
  name.Set(wide.c_str(), static_cast<uint32_t>(wide.size() * 2));
  tavi::XOptionFile options;
  if (options.LoadFile(name, nullptr) != 0) {
    for (uint32_t i = 1; i < options.GetCount(); ++i) {
      FUZZ_ASSERT(tavi::CompareTitleText(options._StrAt(i - 1), options._StrAt(i)) <= 0);
    }
    static const char16_t* const kKeys[] = {u"A=", u"B", u"", u"Width="};
    for (const char16_t* key : kKeys) {
      const uint32_t bytes = static_cast<uint32_t>(std::char_traits<char16_t>::length(key) * 2);
      uint32_t u32 = 0;
      uint16_t u16 = 0;
      bool b = false;
      double d = 0;
      tavi::TTitleText text;
      tavi::XString16 dir;
      for (tavi::TTitleText* line :
           {options.InputOption(u32, key, bytes), options.InputOption(u16, key, bytes),
            options.InputOption(b, key, bytes), options.InputOption(d, key, bytes),
            options.InputOption(text, key, bytes)}) {
        if (line != nullptr) FUZZ_ASSERT(StartsWith(line, key, bytes));
      }
      options.InputOptionDir(dir, false, key, bytes);
    }
  }
  std::remove(path.c_str());
  tavi::XSetUserInterface(nullptr);
  return 0;
}
