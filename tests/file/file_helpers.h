//===- file_helpers.h - A scratch folder of real files for file tests -----===//
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <tuple>

#include "tavi/core/string.h"

namespace tavi::test {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder, removed with everything in it.
class ScratchDir {
 public:
  ScratchDir() {
    std::random_device seed;
    root_ = fs::temp_directory_path() /
            ("tavi_file_" + std::to_string(::getpid()) + "_" + std::to_string(seed()));
    fs::create_directories(root_);
  }
  ~ScratchDir() {
    std::error_code ignored;
    fs::permissions(root_, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(root_, ignored);
  }
  const fs::path& root() const { return root_; }
  fs::path operator/(const std::u16string& relative) const { return root_ / fs::path(relative); }
  // The UTF-16 form of a path below the folder, as the library takes names.
  std::u16string Name(const std::u16string& relative) const {
    return (*this / relative).u16string();
  }

 private:
  fs::path root_;
};

inline XString16 Str(const std::u16string& text) {
  XString16 s;
  s.Set(text.c_str(), static_cast<uint32_t>(text.size() * 2));
  return s;
}

inline std::u16string Text(const XString16& s) {
  return std::u16string(s.c_str() ? s.c_str() : u"", s.GetBufferPos() / 2);
}

inline std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void Spit(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// The error of an object as (code, source), for one-line comparisons.
inline std::tuple<uint32_t, int32_t> Err(const XError& e) {
  return {e.GetErrorCode(), e.GetErrorSource()};
}

}  // namespace tavi::test
