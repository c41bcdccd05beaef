//===- sized_read.cpp - Fuzz the sized-string and sized-record readers -----===//
//
// The first byte chooses a sequence of readers; the rest is read as sized strings and
// records until the data ends or a reader fails. A reader may never allocate ahead of
// the data, never read past it, and a failure must name a reason. A UTF-8 string that
// was accepted must be exactly what the writer makes of the decoded text.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <cstring>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/io/pack_number.h"
#include "tavi/io/sized_record.h"

namespace {

using tavi::XBuffer;

// A buffer that checks it is never asked for much more than the input could fill.
class BoundedBuffer : public XBuffer {
 public:
  explicit BoundedBuffer(uint32_t limit) : limit_(limit) {}

 protected:
  bool _BufferRealloc(uint32_t size) override {
    FUZZ_ASSERT(size <= limit_);
    return XBuffer::_BufferRealloc(size);
  }

 private:
  uint32_t limit_;
};

// The UTF-8 payload just read must be what the writer makes of the decoded text.
void CheckUtf8(const uint8_t* consumed_end, const XBuffer& text) {
  XBuffer again;
  FUZZ_ASSERT(tavi::XWriteSizedString(again, static_cast<const char16_t*>(text.GetBuffer()),
                                      text.GetBufferPos(), true));
  // Skip the packed count of the re-encoding: the input may have used a longer form.
  uint32_t count;
  FUZZ_ASSERT(tavi::_ReadPackNumber(again, count));
  const uint32_t payload = again.GetBufferPos() - again.GetCurrentPos();
  FUZZ_ASSERT(std::memcmp(consumed_end - payload, again._GetCurrentBuffer(), payload) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  const auto program = input.Take<uint16_t>();
  if (input.size() == 0 || input.size() > 0xFFFF) return 0;
  XBuffer in;
  in.AttachBuffer(const_cast<uint8_t*>(input.data()), static_cast<uint32_t>(input.size()), true);
  // Growth steps are at most 1 MiB beyond what arrived.
  const uint32_t limit = (1u << 20) + 8 * static_cast<uint32_t>(input.size()) + 4096;
  BoundedBuffer record(limit);
  for (uint32_t step = 0; !in.EoB(); ++step) {
    BoundedBuffer out(limit);
    uint32_t offset = 0;
    bool ok = false;
    const uint32_t op = ((program >> (step % 13)) + step) % 9;
    switch (op) {
      case 0:
        ok = tavi::XReadSizedString16(in, out, false);
        break;
      case 1:
        ok = tavi::XReadSizedString16(in, out, true);
        if (ok) CheckUtf8(in._GetCurrentBuffer(), out);
        break;
      case 2:
        ok = tavi::XReadSizedString8(in, out);
        break;
      case 3:
        ok = tavi::XReadSizedString16(record, in, offset, false);
        break;
      case 4:
        ok = tavi::XReadSizedString16(record, in, offset, true);
        break;
      case 5:
        ok = tavi::XReadSizedString8(record, in, offset);
        break;
      case 6:
        ok = tavi::XReadSizedRecord(out, in);
        if (ok) {
          const uint32_t size = tavi::XSizedRecord::At(out.GetBuffer())->GetSize();
          FUZZ_ASSERT(size == 0 ? out.GetBufferPos() == 4 : out.GetBufferPos() == size);
        }
        break;
      default:
        ok = tavi::XReadSizedRecord(record, offset, in);
        if (ok && offset != 0) {
          FUZZ_ASSERT(tavi::XSizedRecord::At(record._GetBufferAt(offset))->GetSize() ==
                      record.GetBufferPos() - offset);
        }
    }
    if (ok && op >= 3 && op <= 5 && offset != 0) {
      FUZZ_ASSERT(tavi::XSizedRecord::At(record.GetBuffer())->_GetStringSize(offset) ==
                  record.GetBufferPos() - offset);
    }
    if (!ok) {
      FUZZ_ASSERT(in.IsError());
      break;
    }
  }
  FUZZ_ASSERT(in.GetCurrentPos() <= input.size());
  return 0;
}
