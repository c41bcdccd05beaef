//===- sized_record.cpp - Sized records in memory and in streams -----------===//
#include "tavi/io/sized_record.h"

#include "core/internal/endian.h"
#include "io/internal/sized_io.h"
#include "tavi/core/buffer.h"

namespace tavi {

namespace internal {

bool AppendFromStream(XBuffer& buffer, XIO& source, uint64_t bytes) {
  while (bytes != 0) {
    const uint32_t step = bytes < kSizedReadStep ? static_cast<uint32_t>(bytes) : kSizedReadStep;
    if (!buffer.AllocBuffer(buffer.GetBufferPos() + step)) {
      if (buffer.IsOk()) buffer.SetErrorCode(kErrOutOfRange);
      source.ImportErrorCode(buffer);
      return false;
    }
    const uint32_t n = source._Read(buffer.GetStringEnd(), step);
    buffer._ShiftBufferPos(static_cast<int32_t>(n));
    if (n != step) {
      source.SetSafeErrorCode(kErrEndOfData);
      return false;
    }
    bytes -= step;
  }
  return true;
}

bool AppendToRecord(XBuffer& buffer, XIO& source, const void* data, uint32_t bytes) {
  if (buffer._Write(data, bytes)) return true;
  if (buffer.IsOk()) buffer.SetErrorCode(kErrOutOfRange);
  source.ImportErrorCode(buffer);
  return false;
}

bool FitsRecord(const XBuffer& buffer, uint64_t bytes, XError& error) {
  if (uint64_t{buffer.GetBufferPos()} + bytes <= 0xFFFFFFFFu) return true;
  error.SetSafeErrorCode(kErrTooLong);
  return false;
}

}  // namespace internal

// --- XSizedRecord ------------------------------------------------------------

uint32_t XSizedRecord::GetSize() const {
  return internal::LoadLE32(size_);
}

bool XSizedRecord::SetSize(XBuffer& buffer) {
  if (buffer.GetBufferPos() < 4) {
    buffer.SetErrorCode(kErrOutOfRange);
    return false;
  }
  internal::StoreLE32(buffer.GetBuffer(), buffer.GetBufferPos());
  return true;
}

uint8_t* XSizedRecord::GetData(const XBuffer& buffer, uint32_t offset) {
  return offset != 0 ? _GetData(buffer, offset) : nullptr;
}

uint8_t* XSizedRecord::_GetData(const XBuffer& buffer, uint32_t offset) {
  return buffer._GetBufferAt(offset);
}

uint32_t XSizedRecord::_GetStringSize(uint32_t offset) const {
  return internal::LoadLE32(Bytes() + offset - 4);
}

// --- Records in streams --------------------------------------------------------

bool XWriteSizedRecord(XIO& out, const XSizedRecord* record) {
  if (record == nullptr) {
    const uint8_t missing[4] = {0, 0, 0, 0};
    return out._Write(missing, 4);
  }
  const uint32_t size = record->GetSize();
  if (size < 4) {
    out.SetErrorCode(kErrOutOfRange);
    return false;
  }
  return out._Write(record, size);
}

bool XWriteSizedRecord(XIO& out, uint32_t offset, const uint8_t* base) {
  if (offset == 0) {
    const uint8_t empty[4] = {4, 0, 0, 0};
    return out._Write(empty, 4);
  }
  return XWriteSizedRecord(out, XSizedRecord::At(base + offset));
}

namespace {

// Reads one record to the data end of buffer. missing is set for a size of 0, which
// appends nothing.
bool AppendRecord(XBuffer& buffer, XIO& in, bool& missing) {
  uint8_t field[4];
  if (in._Read(field, 4) != 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t size = internal::LoadLE32(field);
  missing = size == 0;
  if (missing) return true;
  if (size < 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t start = buffer.GetBufferPos();
  if (!internal::FitsRecord(buffer, size, in)) return false;
  if (internal::AppendToRecord(buffer, in, field, 4) &&
      internal::AppendFromStream(buffer, in, size - 4)) {
    return true;
  }
  buffer.SetBufferPos(start);
  return false;
}

}  // namespace

bool XReadSizedRecord(XBuffer& buffer, XIO& in) {
  buffer.ResetBufferPos();
  bool missing = false;
  if (!AppendRecord(buffer, in, missing)) return false;
  if (!missing) return true;
  const uint8_t zero[4] = {0, 0, 0, 0};
  return internal::AppendToRecord(buffer, in, zero, 4);
}

bool XReadSizedRecord(XBuffer& buffer, uint32_t& offset, XIO& in) {
  const uint32_t start = buffer.GetBufferPos();
  bool missing = false;
  if (!AppendRecord(buffer, in, missing)) return false;
  offset = missing ? 0 : start;
  return true;
}

}  // namespace tavi
