//===- collection_read_fuzz.cpp - Fuzz reading a stored collection ----------===//
//
// The first byte says how many items the collection holds before reading (0 to 3);
// the rest is the stored form. Reading may never grow the slot array, change the
// items held, or fail without one of its named reasons; only a stored count of 0
// reads successfully.
//
//===----------------------------------------------------------------------===//
#include <cstdint>

#include "fuzz_helpers.h"
#include "tavi/coll/collection.h"
#include "tavi/core/buffer.h"

namespace {

// A collection that records every growth request.
class Watched : public tavi::XCollection {
 public:
  uint32_t SetItemsDim(uint32_t n) override {
    if (reading) FUZZ_ASSERT(n <= ItemsDim);
    return XCollection::SetItemsDim(n);
  }
  ~Watched() override { DeleteAll(); }
  bool reading = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader in(data, size);
  const uint32_t held = in.Take<uint8_t>() % 4;
  Watched c;
  int item = 0;
  for (uint32_t i = 0; i < held; ++i) c.Insert(&item);
  const uint32_t dim = c.GetItemsDim();
  tavi::XBuffer source;
  if (in.size() != 0) source._Write(in.data(), static_cast<uint32_t>(in.size()));
  c.reading = true;
  const bool ok = c.Read(source);
  FUZZ_ASSERT(c.GetCount() == held && c.GetItemsDim() == dim);
  const bool zero = in.size() >= 4 && in.data()[0] == 0 && in.data()[1] == 0 && in.data()[2] == 0 &&
                    in.data()[3] == 0;
  FUZZ_ASSERT(ok == zero);
  if (!ok) {
    const uint32_t e = source.GetErrorCode();
    FUZZ_ASSERT(e == tavi::kErrEndOfData || e == tavi::kErrForeignBufferTooSmall ||
                e == tavi::kErrNoMemory);
  }
  return 0;
}
