//===- sized_string.cpp - Sized strings in streams and records -------------===//
#include <cstring>

#include "core/internal/endian.h"
#include "core/internal/text_util.h"
#include "core/internal/utf8.h"
#include "io/internal/sized_io.h"
#include "tavi/core/buffer.h"
#include "tavi/io/pack_number.h"
#include "tavi/io/sized_record.h"

namespace tavi {

namespace {

// Code units converted per piece, and the bytes a piece reads or writes at most.
constexpr size_t kPiece = 1024;

bool WriteUtf8(XIO& out, const uint8_t* units, size_t count) {
  uint8_t encoded[kPiece * internal::kUtf8PerUnit];
  while (count != 0) {
    const size_t piece = internal::Utf16PieceLength(units, count, kPiece);
    const size_t n = internal::EncodeUtf8(units, piece, encoded);
    if (!out._Write(encoded, static_cast<uint32_t>(n))) return false;
    units += 2 * piece;
    count -= piece;
  }
  return true;
}

bool Malformed(XIO& source) {
  source.SetSafeErrorCode(kErrEndOfData);
  return false;
}

// Reads UTF-8 text that gives exactly count UTF-16 code units and writes the code
// units to target. It never reads past the text: at a sequence boundary the text has
// at least one byte per code unit still to come, and a sequence cut by the end of a
// piece is completed by exactly the bytes it lacks. When grow is set (the target is
// that buffer) the buffer is grown ahead by steps of at most 1 MiB.
bool ReadUtf8(XIO& source, XIO& target, uint32_t count, XBuffer* grow) {
  uint8_t in[kPiece];
  char16_t out[kPiece];
  size_t have = 0;    // bytes of a cut sequence kept at the start of in
  size_t needed = 0;  // bytes that complete it
  uint64_t left = count;
  while (left != 0) {
    uint64_t bound = left;
    if (have != 0) {
      const size_t units = internal::Utf8SequenceUnits(in[0]);
      if (units > left) return Malformed(source);
      bound = needed + (left - units);
    }
    const auto want = static_cast<uint32_t>(bound < kPiece - have ? bound : kPiece - have);
    if (source._Read(in + have, want) != want) return Malformed(source);
    const size_t total = have + want;
    size_t consumed = 0;
    size_t produced = 0;
    const internal::Utf8Status status =
        internal::DecodeUtf8(in, total, out, left < kPiece ? static_cast<size_t>(left) : kPiece,
                             &consumed, &produced, &needed);
    if (status == internal::Utf8Status::kInvalid) return Malformed(source);
    if (produced != 0) {
      const auto bytes = static_cast<uint32_t>(2 * produced);
      if (grow != nullptr && grow->GetBufferSize() - grow->GetBufferPos() < bytes) {
        const uint64_t ahead =
            2 * left < internal::kSizedReadStep ? 2 * left : internal::kSizedReadStep;
        grow->AllocBuffer(grow->GetBufferPos() + static_cast<uint32_t>(ahead));
      }
      if (!target._Write(out, bytes)) {
        if (grow != nullptr && target.IsOk()) target.SetErrorCode(kErrOutOfRange);
        source.ImportErrorCode(target);
        return false;
      }
      left -= produced;
    }
    have = total - consumed;
    std::memmove(in, in + consumed, have);
  }
  return true;
}

bool ReadRecordString(XBuffer& record, XIO& source, uint32_t& offset, bool wide, bool utf8) {
  uint32_t count;
  if (!_ReadPackNumber(source, count)) return false;
  if (count == 0) {
    offset = 0;
    return true;
  }
  const uint64_t bytes = wide ? 2ull * count : count;
  if (!internal::FitsRecord(record, 4 + bytes, source)) return false;
  const uint32_t start = record.GetBufferPos();
  uint8_t field[4];
  internal::StoreLE32(field, static_cast<uint32_t>(bytes));
  const bool ok = internal::AppendToRecord(record, source, field, 4) &&
                  (wide && utf8 ? ReadUtf8(source, record, count, &record)
                                : internal::AppendFromStream(record, source, bytes));
  if (!ok) {
    record.SetBufferPos(start);
    return false;
  }
  offset = start + 4;
  return true;
}

bool AddString(XBuffer& record, uint32_t& offset, const void* text, uint32_t bytes) {
  if (text == nullptr || bytes == 0) {
    offset = 0;
    return true;
  }
  if (!internal::FitsRecord(record, 4ull + bytes, record)) return false;
  const uint32_t start = record.GetBufferPos();
  uint8_t field[4];
  internal::StoreLE32(field, bytes);
  if (!record._Write(field, 4) || !record._Write(text, bytes)) {
    record.SetBufferPos(start);
    return false;
  }
  offset = start + 4;
  return true;
}

uint32_t ByteLength(const char* text) {
  return text != nullptr ? static_cast<uint32_t>(std::strlen(text)) : 0;
}

}  // namespace

bool XWriteSizedString(XIO& out, const char16_t* text, uint32_t bytes, bool utf8) {
  const uint32_t count = text != nullptr ? bytes / 2 : 0;
  if (!_WritePackNumber(out, count)) return false;
  if (count == 0) return true;
  if (!utf8) return out._Write(text, 2 * count);
  return WriteUtf8(out, reinterpret_cast<const uint8_t*>(text), count);
}

bool XWriteSizedString(XIO& out, const char* text, uint32_t bytes) {
  const uint32_t count = text != nullptr ? bytes : 0;
  if (!_WritePackNumber(out, count)) return false;
  return count == 0 || out._Write(text, count);
}

bool XWriteSizedString16(XIO& out, uint32_t offset, const uint8_t* record, bool utf8) {
  if (offset == 0) return _WritePackNumber(out, uint32_t{0});
  const XSizedRecord* r = XSizedRecord::At(record);
  return XWriteSizedString(out, reinterpret_cast<const char16_t*>(r->_GetData(offset)),
                           r->_GetStringSize(offset), utf8);
}

bool XWriteSizedString8(XIO& out, uint32_t offset, const uint8_t* record) {
  if (offset == 0) return _WritePackNumber(out, uint32_t{0});
  const XSizedRecord* r = XSizedRecord::At(record);
  return XWriteSizedString(out, reinterpret_cast<const char*>(r->_GetData(offset)),
                           r->_GetStringSize(offset));
}

bool XReadSizedString16(XIO& source, XIO& target, bool utf8) {
  uint32_t count;
  if (!_ReadPackNumber(source, count)) return false;
  if (utf8) return ReadUtf8(source, target, count, nullptr);
  return source.ReadThruBfr64(target, 2ull * count);
}

bool XReadSizedString8(XIO& source, XIO& target) {
  uint32_t count;
  if (!_ReadPackNumber(source, count)) return false;
  return source.ReadThruBfr(target, count);
}

bool XReadSizedString16(XBuffer& record, XIO& source, uint32_t& offset, bool utf8) {
  return ReadRecordString(record, source, offset, true, utf8);
}

bool XReadSizedString8(XBuffer& record, XIO& source, uint32_t& offset) {
  return ReadRecordString(record, source, offset, false, false);
}

bool XAddSizedString(XBuffer& record, uint32_t& offset, const char16_t* text) {
  return AddString(record, offset, text, 2 * internal::TextLength(text));
}

bool XAddSizedString(XBuffer& record, uint32_t& offset, const char16_t* text, uint32_t bytes) {
  return AddString(record, offset, text, bytes);
}

bool XAddSizedString(XBuffer& record, uint32_t& offset, const char* text) {
  return AddString(record, offset, text, ByteLength(text));
}

bool XAddSizedString(XBuffer& record, uint32_t& offset, const char* text, uint32_t bytes) {
  return AddString(record, offset, text, bytes);
}

}  // namespace tavi
