//===- convert_io_split_fuzz.cpp - Fuzz the converting filter -------------===//
//
// The first bytes choose the formats, strict mode and a seed of write and read
// sizes; the rest is the text. Written through the filter in random pieces (into a
// plain buffer and into another stream), read through it in random pieces, and
// converted in one call into caller memory of exactly the stated room: all four
// give the same bytes, or all fail in strict mode.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/text/convert.h"
#include "tavi/text/convert_io.h"
#include "tavi/text/text_file.h"

namespace {

using namespace tavi;

constexpr uint16_t kFormats[] = {kTextUtf8, kTextUtf16, 1252, 850, 1253, 1251, 65001};
constexpr size_t kFormatCount = sizeof kFormats / sizeof kFormats[0];

// Another stream than a plain buffer, so that the filter stages its output.
class Collect : public XIO {
 public:
  bool _Write(const void* data, uint32_t n) override {
    bytes.insert(bytes.end(), static_cast<const uint8_t*>(data),
                 static_cast<const uint8_t*>(data) + n);
    return true;
  }
  std::vector<uint8_t> bytes;
};

class Feed : public XIO {
 public:
  Feed(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  uint32_t _Read(void* out, uint32_t n) override {
    const size_t k = n < size_ - pos_ ? n : size_ - pos_;
    if (k != 0) std::memcpy(out, data_ + pos_, k);
    pos_ += k;
    return static_cast<uint32_t>(k);
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t pos_ = 0;
};

// Sizes from 1 to 16 drawn from a small generator.
struct Sizes {
  uint32_t state;
  uint32_t Next() {
    state = state * 1103515245u + 12345u;
    return 1 + ((state >> 16) & 15);
  }
};

// The room the memory forms promise to stay within.
size_t Room(uint16_t target, uint16_t source, size_t bytes) {
  const bool wide_source = source == kTextUtf16;
  if (target == kTextUtf16) return 2 * (wide_source ? bytes / 2 : bytes);
  if (target == kTextUtf8 || target == 65001) return wide_source ? 3 * (bytes / 2) : 3 * bytes;
  return wide_source ? bytes / 2 : bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::InputReader in(data, size);
  const uint8_t choice = in.Take<uint8_t>();
  const uint16_t source = kFormats[(choice & 15) % kFormatCount];
  const uint16_t target = kFormats[(choice >> 4) % kFormatCount];
  const uint32_t flags = in.Take<uint8_t>() & 1 ? kConvertStrict : 0;
  Sizes sizes{in.Take<uint32_t>()};
  const uint8_t* text = in.data();
  size_t bytes = in.size();
  // The memory forms take whole code units of UTF-16.
  if (source == kTextUtf16) bytes &= ~size_t{1};

  XBuffer once;
  const bool ok = XConvertText(once, target, source, text, static_cast<uint32_t>(bytes), flags);
  FUZZ_ASSERT(ok || once.GetErrorCode() == kErrConversion);
  const std::vector<uint8_t> expected(once._GetBufferAt(0), once.GetStringEnd());

  // Into caller memory of exactly the stated room (the sanitizer sees any overrun).
  const size_t room = Room(target, source, bytes);
  auto out = std::make_unique<uint8_t[]>(room + 1);
  uint8_t* end = nullptr;
  const char* chars = reinterpret_cast<const char*>(text);
  const auto n = static_cast<uint32_t>(bytes);
  const bool wide_target = target == kTextUtf16;
  const bool utf8_target = target == kTextUtf8 || target == 65001;
  if (source == kTextUtf16) {
    std::vector<char16_t> units(bytes / 2);
    if (bytes != 0) std::memcpy(units.data(), text, bytes);
    // UTF-16 to itself has no memory form.
    if (utf8_target) {
      end = reinterpret_cast<uint8_t*>(
          _Utf16ToUtf8(units.data(), n / 2, reinterpret_cast<char*>(out.get()), flags));
    } else if (!wide_target) {
      end = reinterpret_cast<uint8_t*>(
          _Utf16ToCodePage(target, units.data(), n / 2, reinterpret_cast<char*>(out.get()), flags));
    }
  } else if (source == kTextUtf8 || source == 65001) {
    if (wide_target) {
      // Caller memory for UTF-16 is aligned to its units.
      auto units = std::make_unique<char16_t[]>(bytes + 1);
      char16_t* e = _Utf8ToUtf16(chars, n, units.get(), flags);
      if (e != nullptr) {
        FUZZ_ASSERT(static_cast<size_t>(e - units.get()) <= bytes);
        std::memcpy(out.get(), units.get(), 2 * static_cast<size_t>(e - units.get()));
        end = out.get() + 2 * (e - units.get());
      }
    } else if (!utf8_target) {
      end = reinterpret_cast<uint8_t*>(
          _Utf8ToCodePage(target, chars, n, reinterpret_cast<char*>(out.get()), flags));
    }
  } else {
    if (wide_target) {
      auto units = std::make_unique<char16_t[]>(bytes + 1);
      char16_t* e = _CodePageToUtf16(source, chars, n, units.get(), flags);
      if (e != nullptr) {
        std::memcpy(out.get(), units.get(), 2 * static_cast<size_t>(e - units.get()));
        end = out.get() + 2 * (e - units.get());
      }
    } else if (utf8_target) {
      end = reinterpret_cast<uint8_t*>(
          _CodePageToUtf8(source, chars, n, reinterpret_cast<char*>(out.get()), flags));
    } else {
      end = reinterpret_cast<uint8_t*>(
          _CodePageToCodePage(target, source, chars, n, reinterpret_cast<char*>(out.get()), flags));
    }
  }
  if (end != nullptr) {
    FUZZ_ASSERT(ok);
    FUZZ_ASSERT(static_cast<size_t>(end - out.get()) <= room);
    FUZZ_ASSERT(std::vector<uint8_t>(out.get(), end) == expected);
  }

  // Through the filter in random pieces.
  XBuffer buffer;
  Collect collect;
  XConvertIO to_buffer(&buffer, target, source, flags);
  XConvertIO to_collect(&collect, target, source, flags);
  bool written = true;
  for (size_t i = 0; i < bytes && written;) {
    uint32_t k = sizes.Next();
    if (k > bytes - i) k = static_cast<uint32_t>(bytes - i);
    const bool a = to_buffer._Write(text + i, k);
    const bool b = to_collect._Write(text + i, k);
    FUZZ_ASSERT(a == b);
    written = a;
    i += k;
  }
  written = written && to_buffer._Flush();
  FUZZ_ASSERT(written == to_collect._Flush() || !written);
  FUZZ_ASSERT(written == ok);
  if (ok) {
    FUZZ_ASSERT(std::vector<uint8_t>(buffer._GetBufferAt(0), buffer.GetStringEnd()) == expected);
    FUZZ_ASSERT(collect.bytes == expected);
  } else {
    FUZZ_ASSERT(to_buffer.GetErrorCode() == kErrConversion);
  }

  // Read through the filter in random pieces.
  Feed feed(text, bytes);
  XConvertIO reader(&feed, target, source, flags);
  std::vector<uint8_t> got;
  uint8_t piece[16];
  for (;;) {
    const uint32_t k = reader._Read(piece, sizes.Next());
    if (k == 0) break;
    got.insert(got.end(), piece, piece + k);
  }
  if (ok) {
    FUZZ_ASSERT(reader.IsOk());
    FUZZ_ASSERT(got == expected);
  } else {
    FUZZ_ASSERT(reader.GetErrorCode() == kErrConversion);
  }
  return 0;
}
