//===- fuzz_helpers.h - Shared helpers for the fuzz targets ----*- C++ -*-===//
//
// An always-on assertion, a small reader that draws parameters from the fuzzer's
// input before the rest is used as data, that rest as terminated UTF-16 text, and
// message boxes that answer themselves.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "tavi/core/user_interface.h"

// FUZZ_ASSERT holds in every build type: a failed check aborts so the fuzzer sees it.
#define FUZZ_ASSERT(cond)                                                                 \
  do {                                                                                    \
    if (!(cond)) {                                                                        \
      std::fprintf(stderr, "%s:%d: FUZZ_ASSERT(%s) failed\n", __FILE__, __LINE__, #cond); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (0)

namespace tavi::fuzz {

// Consumes leading bytes of the input as parameters; what is left is the payload.
class InputReader {
 public:
  InputReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  // Takes an integer of up to sizeof(T) bytes (little-endian); 0 when exhausted.
  template <typename T>
  T Take() {
    T value = 0;
    for (size_t i = 0; i < sizeof(T) && size_ > 0; ++i, ++data_, --size_) {
      value = static_cast<T>(value | (static_cast<T>(*data_) << (8 * i)));
    }
    return value;
  }

  const uint8_t* data() const { return data_; }
  size_t size() const { return size_; }

 private:
  const uint8_t* data_;
  size_t size_;
};

// SilenceMessageBoxes makes every message box the library shows answer OK at once,
// so that parsers which report through boxes can run unattended.
inline void SilenceMessageBoxes() {
  static XUserInterface quiet = [] {
    XUserInterface ui{};
    ui.message_box = [](XWindow, const char16_t*, const char16_t*, uint32_t) { return kIdOk; };
    return ui;
  }();
  XSetUserInterface(&quiet);
}

// UnitText copies what is left of the input into its own terminated UTF-16 text,
// exactly as long as the data (so ASan sees a read past it): two bytes per unit,
// little-endian, or one unit per byte when not wide.
class UnitText {
 public:
  explicit UnitText(const InputReader& input, bool wide = true)
      : size_(wide ? input.size() / 2 : input.size()),
        units_(std::make_unique<char16_t[]>(size_ + 1)) {
    if (wide) {
      if (size_ != 0) std::memcpy(units_.get(), input.data(), size_ * 2);
    } else {
      for (size_t i = 0; i < size_; ++i) units_[i] = input.data()[i];
    }
    units_[size_] = 0;
  }

  const char16_t* data() const { return units_.get(); }
  size_t size() const { return size_; }

 private:
  size_t size_;
  std::unique_ptr<char16_t[]> units_;
};

}  // namespace tavi::fuzz
