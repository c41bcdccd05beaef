//===- container.cpp - The packed container "XPck" ------------------------===//
//
// Request validation, the choice of method, the filter chain hash -> CRC -> AES ->
// XOR -> stream, the trailers, and the way back.
//
//===----------------------------------------------------------------------===//
#include "tavi/pack/container.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <typeinfo>

#include "core/internal/endian.h"
#include "crypt/internal/xor_cipher.h"
#include "pack/internal/coder_path.h"
#include "tavi/core/buffer.h"
#include "tavi/crypt/aes256.h"
#include "tavi/crypt/crc32.h"
#include "tavi/crypt/sha256.h"
#include "tavi/io/pack_number.h"
#include "tavi/pack/huffman.h"
#include "tavi/pack/lz.h"

namespace tavi {
namespace {

// Largest area a stored payload is copied through. The count comes from the
// stream, so the area is capped rather than sized to it.
constexpr uint32_t kCopyArea = 256u << 10;

// Bytes of a record up to the end of its stream pointer: a record at least this long
// can be told about its own failure.
constexpr uint32_t kStreamFieldEnd = offsetof(strXPackRecord, stream) + sizeof(XIO*);

constexpr uint32_t kCipherFlags = kXPackXOR | kXPackAES;

// The filters of one container, hooked from the stream upwards in the order XOR,
// AES, CRC, hash, each only when its flag is set. Data written to Top() passes hash,
// CRC, AES, XOR, stream in that order; reading runs the same chain backwards.
class FilterChain {
 public:
  FilterChain(XIO& stream, uint32_t flags, const char16_t* password)
      : flags_(flags), top_(&stream) {
    if (flags & kXPackXOR) {
      xor_.ToFront(top_);
      xor_.Init(password);
      top_ = &xor_;
    }
    if (flags & kXPackAES) {
      aes_.ToFront(top_);
      aes_.Init(password);
      top_ = &aes_;
    }
    if (flags & kXPackCRC) {
      crc_.ToFront(top_);
      crc_.Init();
      top_ = &crc_;
    }
    if (flags & kXPackHash) {
      hash_.ToFront(top_);
      hash_.Init256();
      top_ = &hash_;
    }
  }
  FilterChain(const FilterChain&) = delete;
  FilterChain& operator=(const FilterChain&) = delete;

  XIO& Top() { return *top_; }

  // The CRC trailer goes below the CRC filter (enciphered, not hashed); the hash
  // trailer below the hash filter, which is the CRC filter when both are present.
  // On failure the filter that failed holds the cause.
  XIO* WriteTrailers() {
    if ((flags_ & kXPackCRC) && !crc_._WriteCRC()) return &crc_;
    if ((flags_ & kXPackHash) && !hash_._WriteSHA256()) return &hash_;
    return nullptr;
  }
  XIO* CheckTrailers() {
    if ((flags_ & kXPackCRC) && !crc_.CheckCRC()) return &crc_;
    if ((flags_ & kXPackHash) && !hash_.CheckSHA256()) return &hash_;
    return nullptr;
  }

 private:
  uint32_t flags_;
  XIO* top_;
  XCipherXORIO xor_;
  XCipherAES256 aes_;
  XCRC32IO crc_;
  XSHA256IO hash_;
};

// Gives stream the cause of a failure first seen in failed (a filter of its chain,
// or the output). A failure that left no error behind is taken for an early end.
bool Fail(XIO& stream, const XError& failed) {
  if (&failed != &stream && failed.IsError()) stream.ImportErrorCode(failed);
  stream.SetSafeErrorCode(kErrEndOfData);
  return false;
}

// Copies exactly bytes from source to target through an area of at most kCopyArea
// bytes. A short read is an early end (0x20000004 in source unless it holds an
// error); a failed write leaves the cause in target.
bool CopyExactly(XIO& source, XIO& target, uint32_t bytes) {
  if (bytes == 0) return true;
  const uint32_t area_size = bytes < kCopyArea ? bytes : kCopyArea;
  std::unique_ptr<uint8_t[]> area(new (std::nothrow) uint8_t[area_size]);
  if (area == nullptr) {
    source.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  while (bytes != 0) {
    const uint32_t n = bytes < area_size ? bytes : area_size;
    if (source._Read(area.get(), n) != n) {
      source.SetSafeErrorCode(kErrEndOfData);
      return false;
    }
    if (!target._Write(area.get(), n)) return false;
    bytes -= n;
  }
  return true;
}

// The payload candidate that packing settles on.
struct Payload {
  uint32_t method = kXPackStored;
  const uint8_t* bytes = nullptr;
  uint32_t length = 0;
};

// A work buffer for a coder's output. Its step grows with the input so that coding a
// large block reallocates a few dozen times, not once per 32 bytes.
uint32_t WorkGranularity(uint32_t size) {
  const uint32_t step = size / 8;
  return step < 4096 ? 4096 : (step > (16u << 20) ? (16u << 20) : step);
}

// Takes a coder's output as the payload when it is shorter than the best so far.
void Consider(Payload& best, uint32_t method, const XBuffer& coded) {
  if (coded.GetBufferPos() < best.length) {
    best = {method, coded._GetBufferAt(0), coded.GetBufferPos()};
  }
}

bool Pack(const strXPackRecord& r) {
  XIO* stream = r.stream;
  if (stream == nullptr) return false;
  if (((r.flags & (kXPackNoFlagsWord | kCipherFlags)) && r.password == nullptr) ||
      r.data == nullptr || r.size_low == 0 || (r.flags == 0 && r.methods == 0)) {
    stream->SetErrorCode(kErrDoesNotFit);
    return false;
  }
  if (r.size_high != 0) {
    stream->SetErrorCode(kErrOutOfRange);
    return false;
  }

  const auto* data = static_cast<const uint8_t*>(r.data);
  const uint32_t size = r.size_low;
  Payload best{kXPackStored, data, size};
  XBuffer lz(WorkGranularity(size));
  if ((r.methods & kXPackTryLZ) && LZX3Code(lz, data, size, kXPackLZWindow)) {
    Consider(best, kXPackLZ, lz);
  }
  XBuffer huffman(WorkGranularity(size));
  // The Huffman coder takes the best length in bytes as its limit in bits (see the
  // header); it counts at most 2^31-1 bytes, so larger blocks are not offered to it.
  if ((r.methods & kXPackTryHuffman) && size <= INT32_MAX &&
      HufmanCode(huffman, data, static_cast<int32_t>(size), best.length)) {
    Consider(best, kXPackHuffman, huffman);
  }

  const uint32_t applied = r.flags & kXPackAppliedFlags;
  FilterChain chain(*stream, applied, r.password);

  uint8_t head[8];
  internal::StoreLE32(head, best.method);
  internal::StoreLE32(head + 4, applied);
  if (!stream->_Write(head, (r.flags & kXPackNoFlagsWord) ? 4 : 8)) return false;

  XIO& top = chain.Top();
  if (!_WritePackNumber16(top, size) || !top._Write(best.bytes, best.length))
    return Fail(*stream, top);
  if (XIO* failed = chain.WriteTrailers()) return Fail(*stream, *failed);
  if (!top._Flush()) return Fail(*stream, top);
  return true;
}

// Decodes count bytes of the payload from source into output.
bool DecodePayload(uint32_t method, XIO& source, XIO& output, uint32_t count) {
  switch (method) {
    case kXPackStored:
      return CopyExactly(source, output, count);
    case kXPackHuffman:
      return count <= INT32_MAX && HufmanDecode(output, source, static_cast<int32_t>(count));
    case kXPackLZ:
      return LZX3Decode(output, source, count);
    default:
      source.SetErrorCode(kErrLoadEncoding);
      return false;
  }
}

// The object holding the cause of a failed decode: the source side when it has an
// error, else the output (the coders leave their causes there).
const XError& CauseOf(const XIO& source, const XIO& output) {
  return source.IsError() ? static_cast<const XError&>(source) : output;
}

// XIO that takes every write and keeps nothing.
class DiscardIO : public XIO {
 public:
  bool _Write(const void*, uint32_t) override { return true; }
};

// Unpacks the container at the cursor of a memory buffer. The coders decode fastest
// from memory, not through a chain of filters, so the container is made plain in
// memory once: the buffer itself, or with a cipher flag a deciphered copy of the
// whole blocks left in it. The payload is decoded there, then the bytes used pass
// through the CRC and hash filters in one piece and the trailers are checked as on
// the stream. Results, errors and the final cursor (just past the container) are
// those of unpacking through the filter chain.
bool UnpackInMemory(XBuffer& source, uint32_t method, uint32_t flags, const char16_t* password,
                    XIO& output) {
  const uint32_t start = source.GetCurrentPos();
  const uint32_t end = source.GetBufferPos();
  const uint32_t available = start <= end ? end - start : 0;
  const bool aes = (flags & kXPackAES) != 0;
  XBuffer copy;
  XBuffer* plain = &source;
  if (flags & kCipherFlags) {
    const uint32_t usable = aes ? available & ~15u : available;
    FilterChain ciphers(source, flags & kCipherFlags, password);
    void* area = usable != 0 ? copy.ReserveBufferMem(usable) : nullptr;
    if (usable != 0 && area == nullptr) return Fail(source, copy);
    if (usable != 0 && ciphers.Top()._Read(area, usable) != usable) {
      return Fail(source, ciphers.Top());
    }
    plain = &copy;
  }
  const uint32_t first = plain->GetCurrentPos();

  uint32_t count = 0;
  if (!_ReadPackNumber16(*plain, count)) return Fail(source, *plain);
  if (!DecodePayload(method, *plain, output, count)) {
    return Fail(source, CauseOf(*plain, output));
  }
  if (flags & (kXPackCRC | kXPackHash)) {
    const uint32_t used = plain->GetCurrentPos() - first;
    plain->_SetCurrentPos(first);
    FilterChain checks(*plain, flags & (kXPackCRC | kXPackHash), nullptr);
    DiscardIO discard;
    if (!CopyExactly(checks.Top(), discard, used)) return Fail(source, checks.Top());
    if (XIO* failed = checks.CheckTrailers()) return Fail(source, *failed);
  }
  if (plain == &copy) {
    // The cipher filters would have consumed whole AES blocks up to the last byte used.
    const uint32_t consumed = plain->GetCurrentPos() - first;
    source._SetCurrentPos(start + (aes ? (consumed + 15) & ~15u : consumed));
  }
  return true;
}

bool Unpack(const strXUnpackRecord& r) {
  XIO* stream = r.stream;
  if (stream == nullptr) return false;
  const bool flags_given = (r.flags & kXPackNoFlagsWord) != 0;
  if (r.output == nullptr ||
      (flags_given && (r.flags & ~(kXPackAppliedFlags | kXPackNoFlagsWord)) != 0) ||
      (flags_given && (r.flags & kCipherFlags) && r.password == nullptr)) {
    stream->SetErrorCode(kErrDoesNotFit);
    return false;
  }

  uint8_t word[4];
  if (!stream->bRead(word, 4)) return false;
  const uint32_t method = internal::LoadLE32(word);
  if (method > kXPackLZ) {
    stream->SetErrorCode(kErrLoadEncoding);
    return false;
  }
  uint32_t flags = r.flags & kXPackAppliedFlags;
  if (!flags_given) {
    if (!stream->bRead(word, 4)) return false;
    flags = internal::LoadLE32(word);
    if ((flags & ~kXPackAppliedFlags) != 0) {
      stream->SetErrorCode(kErrEndOfData);
      return false;
    }
    if ((flags & kCipherFlags) && r.password == nullptr) {
      stream->SetErrorCode(kErrDoesNotFit);
      return false;
    }
  }

  if (pack_internal::CoderActivePath() == pack_internal::CoderPath::kFast && flags != 0) {
    // Only a plain buffer: a derived stream may read differently from its memory.
    if (typeid(*stream) == typeid(XBuffer)) {
      return UnpackInMemory(*static_cast<XBuffer*>(stream), method, flags, r.password, *r.output);
    }
  }
  FilterChain chain(*stream, flags, r.password);
  XIO& top = chain.Top();
  uint32_t count = 0;
  if (!_ReadPackNumber16(top, count)) return Fail(*stream, top);
  if (!DecodePayload(method, top, *r.output, count)) return Fail(*stream, CauseOf(top, *r.output));
  if (XIO* failed = chain.CheckTrailers()) return Fail(*stream, *failed);
  return true;
}

}  // namespace

bool XPack(const void* record) {
  if (record == nullptr) return false;
  const auto* bytes = static_cast<const uint8_t*>(record);
  if (std::memcmp(bytes + 4, kXPackTag, 4) != 0) return false;
  // The record is host memory, not a persistent format: its words are host-order.
  uint32_t record_size;
  uint32_t operation;
  std::memcpy(&record_size, bytes, 4);
  std::memcpy(&operation, bytes + 8, 4);
  if (operation != kXPackOperationPack && operation != kXPackOperationUnpack) return false;
  if (record_size < kStreamFieldEnd) return false;
  if (operation == kXPackOperationPack) {
    // A record of the wrong size is only trusted as far as its stream field.
    if (record_size != sizeof(strXPackRecord)) {
      XIO* stream;
      std::memcpy(&stream, bytes + offsetof(strXPackRecord, stream), sizeof stream);
      if (stream != nullptr) stream->SetErrorCode(kErrDoesNotFit);
      return false;
    }
    return Pack(*static_cast<const strXPackRecord*>(record));
  }
  if (record_size != sizeof(strXUnpackRecord)) {
    XIO* stream;
    std::memcpy(&stream, bytes + offsetof(strXUnpackRecord, stream), sizeof stream);
    if (stream != nullptr) stream->SetErrorCode(kErrDoesNotFit);
    return false;
  }
  return Unpack(*static_cast<const strXUnpackRecord*>(record));
}

}  // namespace tavi
