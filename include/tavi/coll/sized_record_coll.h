//===- sized_record_coll.h - A collection of sized records -----*- C++ -*-===//
//
// This file defines XSizedRecordColl: a pointer collection that owns a heap copy of
// every sized record it holds, and saves them raw or in the sized-record stream
// form, as the file header of the save asks.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/coll/collection.h"
#include "tavi/export.h"

namespace tavi {

class XBuffer;
class XIO;
class XSizedRecord;

// XSizedRecordColl holds records (XSizedRecord: a 32-bit size, that field included,
// then the body). Each item is a heap block of exactly the record's size; a null
// item stands for a missing record. FreeItem releases a block.
//
// Both body forms are the 4-byte little-endian count, then every record's bytes in
// index order (a null item as four zero bytes). Write and Read pick the form from
// the stream's caller field: when it is not null it is taken as the XFileHeader256
// of the save or load in progress (XObject sets it so), and a header with any flag
// selects the stream form, read record by record through a work buffer with the
// sized-record reader; otherwise (no header, or flags 0) the raw form, read straight
// into the item blocks.
//
// Reading appends to the items held. On hostile input: a stored size of 0 is a
// missing record, 1 to 3 is malformed (0x20000004); a count or size larger than the
// data is found out as the data runs short, since slots are reserved in steps that
// follow the records actually read and a record larger than 1 MiB is gathered
// before its block is allocated. Failure codes, in the stream: 0x20000004 (short or
// malformed data), 0x20000001 (memory, a failed insertion, a raw record body that
// cannot be read whole). A failed Read keeps the records it read before the failure,
// appended after those held before the call; nothing else changes.
class TAVI_API XSizedRecordColl : public XCollection {
 public:
  XSizedRecordColl() = default;
  XSizedRecordColl(const XSizedRecordColl& other) = default;
  XSizedRecordColl& operator=(const XSizedRecordColl& other) = default;
  ~XSizedRecordColl() override;

  bool Read(XIO& in) override;
  bool Write(XIO& out) override;

  // AddItemData appends the bytes of record index (its whole size) to buffer and
  // returns the write result; an index out of range or a null item records
  // 0x20000012 in buffer, false. GetItemData empties buffer first.
  bool AddItemData(XBuffer& buffer, uint32_t index);
  bool GetItemData(XBuffer& buffer, uint32_t index);

 protected:
  // FreeItem releases a record block (null ignored).
  void FreeItem(void* item) override;
  // AllocItem allocates size bytes into block; true when obtained.
  virtual bool AllocItem(void** block, uint32_t size);

 public:
  // The stream form of the body (utf8 is passed on to the item hooks).
  virtual bool Read(XIO& in, bool utf8);
  virtual bool Write(XIO& out, bool utf8);
  // The raw form of the body.
  virtual bool WriteRaw(XIO& out);
  virtual bool ReadRaw(XIO& in);
  // WriteItem writes a record's bytes (null: four zero bytes); utf8 is not used here.
  virtual bool WriteItem(XIO& out, const XSizedRecord* record, bool utf8);
  // ReadItem reads one record as the whole content of work (XReadSizedRecord).
  virtual bool ReadItem(XBuffer& work, XIO& in, bool utf8);

 protected:
  using XCollection::ReadItem;
  using XCollection::WriteItem;
  // _AddRecord copies record into a new block and inserts it at the end (or at
  // index); returns the block, or null when the block or the slot cannot be had.
  XSizedRecord* _AddRecord(const XSizedRecord* record);
  XSizedRecord* _AddRecord(uint32_t index, const XSizedRecord* record);

 private:
  // Makes room for one more slot, growing with the records read so far towards
  // Count + remaining; false (0x20000001 in in) when memory runs out.
  bool RoomForNext(XIO& in, uint32_t remaining);
  // Reads one record of the raw form into a new block (null for a missing record);
  // records above 1 MiB are gathered in gather first.
  bool ReadRawRecord(XIO& in, XBuffer& gather, void*& block);
};

}  // namespace tavi
