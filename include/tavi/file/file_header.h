//===- file_header.h - The fixed header that opens saved files -*- C++ -*-===//
//
// This file defines XFileHeader and XFileHeader256: the records at the head of
// every file an XObject saves. Their flags tell a loader whether the body that
// follows is raw or a packed container.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// Flag bits of a file header.
inline constexpr uint32_t kFileHeaderCompressed = 0x1;  // the body is compressed
inline constexpr uint32_t kFileHeaderCrypted = 0x2;     // the body is enciphered
inline constexpr uint32_t kFileHeaderUTF8 = 0x4;        // the body's text is UTF-8
// The four ASCII bytes "1234" read as a little-endian word.
inline constexpr uint32_t kFileHeaderMarker = 0x34333231u;

// XFileHeader is 16 bytes on disk, little-endian: identifier (chosen by the saving
// class), the marker "1234", a reserved word the saving class may use, and flags.
// The default constructor initialises nothing, so that a record can be read over.
class TAVI_API XFileHeader {
 public:
  XFileHeader() {}  // NOLINT: fields are left as they are on purpose
  // Identifier, marker and flags 0; the reserved word is left as it is.
  explicit XFileHeader(uint32_t id) : identifier(id), marker(kFileHeaderMarker), flags(0) {}
  XFileHeader(const XFileHeader& other) = default;
  XFileHeader& operator=(const XFileHeader& other) = default;

  // SetForWriting sets identifier, marker and flags (reserved untouched).
  void SetForWriting(uint32_t id, uint32_t flag_set) {
    identifier = id;
    marker = kFileHeaderMarker;
    flags = flag_set;
  }

  bool IsCompressed() const { return (flags & kFileHeaderCompressed) != 0; }
  bool IsCrypted() const { return (flags & kFileHeaderCrypted) != 0; }
  bool IsUTF8() const { return (flags & kFileHeaderUTF8) != 0; }
  // IsPacked: the body is a packed container (compressed, enciphered or both).
  bool IsPacked() const { return (flags & (kFileHeaderCompressed | kFileHeaderCrypted)) != 0; }
  // IsRAW: no flag at all is set.
  bool IsRAW() const { return flags == 0; }
  bool IsAnyFlag(uint32_t mask) const { return (flags & mask) != 0; }
  bool IsAllFlags(uint32_t mask) const { return (flags & mask) == mask; }
  // IsFor is true when the header carries this identifier and the marker: the
  // check a class's ReadFileHeader makes before trusting the rest.
  bool IsFor(uint32_t id) const { return identifier == id && marker == kFileHeaderMarker; }

  uint32_t identifier;
  uint32_t marker;
  uint32_t reserved;
  uint32_t flags;
};

// XFileHeader256 is the 32-byte header XObject reads and writes: the four words of
// XFileHeader followed by 16 reserved bytes.
class TAVI_API XFileHeader256 : public XFileHeader {
 public:
  static constexpr uint32_t kSize = 32;

  XFileHeader256() {}  // NOLINT: fields are left as they are on purpose
  XFileHeader256(const XFileHeader256& other) = default;
  XFileHeader256& operator=(const XFileHeader256& other) = default;

  // SetForWriting sets identifier, marker and flags and zeroes the 16 trailing bytes.
  void SetForWriting(uint32_t id, uint32_t flag_set);

  // Write writes the 32 bytes (words little-endian); the stream's write result.
  bool Write(XIO& out) const;
  // Read reads 32 bytes into the record. When fewer arrive the stream gets
  // 0x20000004 (unless an error is already pending there, which is kept), the
  // record is left unchanged and false is returned.
  bool Read(XIO& in);

  uint8_t extra[16];
};

}  // namespace tavi
