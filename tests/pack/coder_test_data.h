//===- coder_test_data.h - Data and bit helpers for the coder tests -*- C++ -*-===//
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"

namespace tavi::test {

inline std::vector<uint8_t> Contents(const XBuffer& b) {
  const auto* p = static_cast<const uint8_t*>(b.GetBuffer());
  return p == nullptr ? std::vector<uint8_t>{} : std::vector<uint8_t>(p, p + b.GetBufferPos());
}

inline std::vector<uint8_t> Vec(const std::string& s) {
  return {s.begin(), s.end()};
}

// Decodes size bytes of stream with decode(out, in, size); returns (result, error code
// of out, bytes of in consumed), and the output in *decoded when asked.
template <typename Decoder, typename Size>
std::tuple<bool, uint32_t, uint32_t> DecodeWith(Decoder decode, const std::vector<uint8_t>& stream,
                                                Size size, std::vector<uint8_t>* decoded) {
  XBuffer in;
  in._Write(stream.data(), static_cast<uint32_t>(stream.size()));
  XBuffer out;
  const bool ok = decode(out, in, size);
  if (decoded != nullptr) *decoded = Contents(out);
  return {ok, out.GetErrorCode(), in.GetCurrentPos()};
}

// Bits written least significant first, as the coders send them.
class BitList {
 public:
  BitList& Bit(uint32_t b) { return Field(b, 1); }
  BitList& Field(uint64_t v, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
      if (bits_ % 8 == 0) bytes_.push_back(0);
      if ((v >> i) & 1) bytes_.back() = static_cast<uint8_t>(bytes_.back() | (1u << (bits_ % 8)));
      ++bits_;
    }
    return *this;
  }
  // Byte is a byte as a bit stream's byte write places it at the present offset k:
  // each bit keeps its position, so bits k..7 fill the present byte and bits 0..k-1
  // go to the same positions of the next one.
  BitList& Byte(uint8_t b) {
    const uint32_t k = bits_ % 8;
    for (uint32_t j = k; j < 8; ++j) Bit((b >> j) & 1);
    for (uint32_t j = 0; j < k; ++j) Bit((b >> j) & 1);
    return *this;
  }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  std::vector<uint8_t> bytes_;
  uint64_t bits_ = 0;
};

// Kinds of test data: text-like words, skewed random bytes, uniform random bytes,
// long runs, and a mix of copies of earlier pieces.
enum class Kind { kText, kSkewed, kRandom, kRuns, kRepeats };

inline std::vector<uint8_t> MakeData(Kind kind, size_t size, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> v;
  v.reserve(size);
  static const char* const kWords[] = {"the ",   "stream ",  "coder ", "tree ", "window ",
                                       "bytes ", "of ",      "and ",   "\n",    "match ",
                                       "run ",   "literal ", "{ ",     "} ",    "return "};
  while (v.size() < size) {
    switch (kind) {
      case Kind::kText: {
        const std::string w = kWords[rng() % 15];
        v.insert(v.end(), w.begin(), w.end());
        break;
      }
      case Kind::kSkewed: {
        const uint32_t r = rng();
        v.push_back(static_cast<uint8_t>((r & 0xFF) < 200 ? (r >> 8) % 8 : (r >> 8) & 0xFF));
        break;
      }
      case Kind::kRandom:
        v.push_back(static_cast<uint8_t>(rng()));
        break;
      case Kind::kRuns:
        v.insert(v.end(), 1 + rng() % 300, static_cast<uint8_t>(rng() % 3));
        break;
      case Kind::kRepeats:
        if (v.size() > 64 && rng() % 2) {
          const size_t len = 5 + rng() % 60;
          const size_t from = rng() % (v.size() - 5);
          for (size_t i = 0; i < len; ++i) v.push_back(v[from + i]);
        } else {
          v.push_back(static_cast<uint8_t>(rng() % 64));
        }
        break;
    }
  }
  v.resize(size);
  return v;
}

// Runs the coders on one path for the life of the object.
class PathScope {
 public:
  explicit PathScope(pack_internal::CoderPath path) { pack_internal::SetCoderPath(path); }
  ~PathScope() { pack_internal::ResetCoderPath(); }
};

constexpr pack_internal::CoderPath kBothPaths[] = {pack_internal::CoderPath::kPlain,
                                                   pack_internal::CoderPath::kFast};

}  // namespace tavi::test
