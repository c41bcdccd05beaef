//===- sized_record_coll.cpp - A collection of sized records ---------------===//
#include "tavi/coll/sized_record_coll.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/internal/endian.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/file/file_header.h"
#include "tavi/io/sized_record.h"

namespace tavi {

namespace {

// Records up to this size get their block before their body is read; larger ones
// are gathered first, so a hostile size costs memory only as its data arrives.
constexpr uint32_t kDirectRecord = 1u << 20;
// Slots reserved ahead of the records read, at the least.
constexpr uint32_t kFirstSlots = 1024;

const XFileHeader256* HeaderOf(const XIO& stream) {
  return static_cast<const XFileHeader256*>(stream.GetData());
}

bool ReadCount(XIO& in, uint32_t& count) {
  uint8_t field[4];
  if (in._Read(field, 4) != 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  count = internal::LoadLE32(field);
  return true;
}

}  // namespace

XSizedRecordColl::~XSizedRecordColl() = default;

void XSizedRecordColl::FreeItem(void* item) {
  std::free(item);
}

bool XSizedRecordColl::AllocItem(void** block, uint32_t size) {
  *block = std::malloc(size != 0 ? size : 1);
  return *block != nullptr;
}

bool XSizedRecordColl::Write(XIO& out) {
  const XFileHeader256* header = HeaderOf(out);
  if (header != nullptr && header->flags != 0) return Write(out, header->IsUTF8());
  return WriteRaw(out);
}

bool XSizedRecordColl::Read(XIO& in) {
  const XFileHeader256* header = HeaderOf(in);
  if (header != nullptr && header->flags != 0) return Read(in, header->IsUTF8());
  return ReadRaw(in);
}

bool XSizedRecordColl::WriteRaw(XIO& out) {
  // Small records are gathered into one block per write: a stream call per record
  // costs more than the copy.
  constexpr uint32_t kGather = 64 * 1024;
  uint8_t gathered[kGather];
  internal::StoreLE32(gathered, Count);
  uint32_t used = 4;
  for (uint32_t i = 0; i < Count; ++i) {
    const auto* record = XSizedRecord::At(Items[i]);
    const uint32_t size = record != nullptr ? record->GetSize() : 4;
    if (record != nullptr && size < 4) {
      out.SetErrorCode(kErrOutOfRange);
      return false;
    }
    if (used + uint64_t{size} > kGather) {
      if (!out._Write(gathered, used)) return false;
      used = 0;
    }
    if (size > kGather) {
      if (!out._Write(record, size)) return false;
    } else if (record != nullptr) {
      std::memcpy(gathered + used, record, size);
      used += size;
    } else {
      internal::StoreLE32(gathered + used, 0);  // a missing record
      used += 4;
    }
  }
  return out._Write(gathered, used);
}

bool XSizedRecordColl::Write(XIO& out, bool utf8) {
  uint8_t field[4];
  internal::StoreLE32(field, Count);
  if (!out._Write(field, 4)) return false;
  for (uint32_t i = 0; i < Count; ++i) {
    if (!WriteItem(out, XSizedRecord::At(Items[i]), utf8)) return false;
  }
  return true;
}

bool XSizedRecordColl::WriteItem(XIO& out, const XSizedRecord* record, bool) {
  return XWriteSizedRecord(out, record);
}

bool XSizedRecordColl::ReadItem(XBuffer& work, XIO& in, bool) {
  return XReadSizedRecord(work, in);
}

bool XSizedRecordColl::RoomForNext(XIO& in, uint32_t remaining) {
  if (Count < ItemsDim) return true;
  // Double with the records read, never past what the stream announced.
  const uint32_t step = std::min(remaining, std::max(Count, kFirstSlots));
  if (SetItemsDim(Count + step) != 0) return true;
  in.SetSafeErrorCode(kErrNoMemory);
  return false;
}

bool XSizedRecordColl::ReadRawRecord(XIO& in, XBuffer& gather, void*& block) {
  block = nullptr;
  uint8_t field[4];
  if (in._Read(field, 4) != 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  const uint32_t size = internal::LoadLE32(field);
  if (size == 0) return true;  // a missing record
  if (size < 4) {
    in.SetSafeErrorCode(kErrEndOfData);
    return false;
  }
  if (size > kDirectRecord) {
    // Gather the body as it arrives before asking for the block.
    gather.ResetBufferPos();
    for (uint32_t want = size - 4; want > 0;) {
      const uint32_t piece = std::min(want, kDirectRecord);
      if (gather._ReadToBuffer(in, piece) != piece) {
        in.SetSafeErrorCode(kErrNoMemory);  // the body cannot be read whole
        return false;
      }
      want -= piece;
    }
  }
  if (!AllocItem(&block, size)) {
    block = nullptr;
    in.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  auto* bytes = static_cast<uint8_t*>(block);
  std::memcpy(bytes, field, 4);
  if (size > kDirectRecord) {
    std::memcpy(bytes + 4, gather.GetBuffer(), size - 4);
    gather.FreeBuffer();
  } else if (size > 4 && in._Read(bytes + 4, size - 4) != size - 4) {
    in.SetSafeErrorCode(kErrNoMemory);  // the body cannot be read whole
    FreeItem(block);
    block = nullptr;
    return false;
  }
  return true;
}

bool XSizedRecordColl::ReadRaw(XIO& in) {
  uint32_t stored;
  if (!ReadCount(in, stored)) return false;
  if (stored == 0) return true;
  if (stored > 0xFFFFFFFEu - Count) {  // no room for that many indices
    in.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  XBuffer gather(64 * 1024);
  for (uint32_t left = stored; left > 0; --left) {
    void* block = nullptr;
    bool ok = RoomForNext(in, left) && ReadRawRecord(in, gather, block);
    if (ok && !AtInsert(Count, block)) {
      FreeItem(block);
      in.SetSafeErrorCode(kErrNoMemory);
      ok = false;
    }
    if (!ok) return false;
  }
  return true;
}

bool XSizedRecordColl::Read(XIO& in, bool utf8) {
  uint32_t stored;
  if (!ReadCount(in, stored)) return false;
  if (stored == 0) return true;
  if (stored > 0xFFFFFFFEu - Count) {
    in.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  XBuffer work(1024);
  if (!work.AllocBuffer(1)) {
    in.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  for (uint32_t left = stored; left > 0; --left) {
    bool ok = RoomForNext(in, left) && ReadItem(work, in, utf8);
    if (ok) {
      const auto* record = XSizedRecord::At(work.GetBuffer());
      if (record->GetSize() == 0) {
        ok = AtInsert(Count, nullptr);  // a missing record
      } else {
        ok = _AddRecord(record) != nullptr;
      }
      if (!ok) in.SetSafeErrorCode(kErrNoMemory);
    }
    if (!ok) return false;
  }
  return true;
}

XSizedRecord* XSizedRecordColl::_AddRecord(const XSizedRecord* record) {
  return _AddRecord(Count, record);
}

XSizedRecord* XSizedRecordColl::_AddRecord(uint32_t index, const XSizedRecord* record) {
  const uint32_t size = record->GetSize();
  void* block = nullptr;
  if (!AllocItem(&block, size)) return nullptr;
  if (!AtInsert(index, block)) {
    FreeItem(block);
    return nullptr;
  }
  std::memcpy(block, record, size);
  return XSizedRecord::At(block);
}

bool XSizedRecordColl::AddItemData(XBuffer& buffer, uint32_t index) {
  if (index >= Count || Items[index] == nullptr) {
    buffer.SetErrorCode(kErrDoesNotFit);
    return false;
  }
  const auto* record = XSizedRecord::At(Items[index]);
  return buffer._Write(record, record->GetSize());
}

bool XSizedRecordColl::GetItemData(XBuffer& buffer, uint32_t index) {
  buffer.ResetBufferPos();
  return AddItemData(buffer, index);
}

}  // namespace tavi
