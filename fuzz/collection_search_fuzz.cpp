//===- collection_search_fuzz.cpp - Fuzz sorting and the binary searches ----===//
//
// The input bytes are the items' keys. After Xqsort the items must be in order and a
// permutation of the input; every search over every subrange must agree with the
// standard lower and upper bounds.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/coll/collection.h"

namespace {

int CmpByte(const void* a, const void* b) {
  return *static_cast<const uint8_t*>(a) - *static_cast<const uint8_t*>(b);
}

class Keys : public tavi::XCollection {
 public:
  ~Keys() override { DeleteAll(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 4096) return 0;
  const auto n = static_cast<uint32_t>(size);
  std::vector<uint8_t> keys(data, data + size);
  Keys c;
  for (uint8_t& k : keys) FUZZ_ASSERT(c.Insert(&k) != tavi::kNoIndex);
  c.SortItems(CmpByte);
  std::vector<uint8_t> sorted;
  for (uint32_t i = 0; i < n; ++i) sorted.push_back(*static_cast<uint8_t*>(c._At(i)));
  std::vector<uint8_t> expected(data, data + size);
  std::sort(expected.begin(), expected.end());
  FUZZ_ASSERT(sorted == expected);
  if (n == 0) return 0;
  // A handful of subranges chosen from the data, each searched for every key value.
  for (uint32_t r = 0; r < 4; ++r) {
    const uint32_t first = data[r % n] % n;
    const uint32_t last = first + data[(r + 1) % n] % (n - first);
    const auto b = sorted.begin() + first;
    const auto e = sorted.begin() + last + 1;
    for (int v = 0; v < 256; v += 1 + (n > 64 ? 7 : 0)) {
      const auto key = static_cast<uint8_t>(v);
      const auto lo = static_cast<uint32_t>(std::lower_bound(b, e, key) - sorted.begin());
      const auto hi = static_cast<uint32_t>(std::upper_bound(b, e, key) - sorted.begin());
      bool found;
      const uint32_t at = c.SearchFirstIndex(&key, CmpByte, found, true, first, last);
      FUZZ_ASSERT(found == (lo != hi));
      FUZZ_ASSERT(at == (lo == last + 1 ? tavi::kNoIndex : lo));
      const uint32_t higher = c.SearchFirstHigherIndex(&key, CmpByte, first, last);
      FUZZ_ASSERT(higher == (hi == last + 1 ? tavi::kNoIndex : hi));
      const uint32_t eq = c.SearchIndex(&key, CmpByte, first, last);
      FUZZ_ASSERT(lo != hi ? (eq >= lo && eq < hi) : eq == tavi::kNoIndex);
    }
  }
  return 0;
}
