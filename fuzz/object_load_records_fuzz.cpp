//===- object_load_records_fuzz.cpp - Fuzz reading sized-record collections ===//
//
// The first byte chooses the body form (even: raw, odd: stream); the rest is the
// body. A failed read must keep the record held before it in front (the records it
// read stay after it); a successful one must write back exactly the bytes it
// consumed.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/coll/sized_record_coll.h"
#include "tavi/core/buffer.h"
#include "tavi/io/sized_record.h"

namespace {

class Records : public tavi::XSizedRecordColl {
 public:
  using XSizedRecordColl::_AddRecord;
  ~Records() override { FreeAll(); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const bool raw = (input.Take<uint8_t>() & 1) == 0;
  if (input.size() > (1u << 20)) return 0;
  tavi::XBuffer in;
  in._Write(input.data(), static_cast<uint32_t>(input.size()));

  Records records;
  const uint8_t old[8] = {8, 0, 0, 0, 'o', 'l', 'd', '!'};
  FUZZ_ASSERT(records._AddRecord(tavi::XSizedRecord::At(old)) != nullptr);
  const bool ok = raw ? records.ReadRaw(in) : records.Read(in, false);
  if (!ok) {
    FUZZ_ASSERT(in.IsError());
    FUZZ_ASSERT(records.GetCount() >= 1 && std::memcmp(records.At(0), old, 8) == 0);
    return 0;
  }
  // Drop the record that was there before, then the rest must write back as read.
  records.AtFree(0);
  tavi::XBuffer out;
  FUZZ_ASSERT(raw ? records.WriteRaw(out) : records.Write(out, false));
  FUZZ_ASSERT(out.GetBufferPos() == in.GetCurrentPos());
  FUZZ_ASSERT(std::memcmp(out.GetBuffer(), input.data(), out.GetBufferPos()) == 0);
  return 0;
}
