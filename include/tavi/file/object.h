//===- object.h - The serialisable base class ------------------*- C++ -*-===//
//
// This file defines XObject, the base of every object that is written to and read
// from streams and saved to or loaded from files, raw or packed (compressed and/or
// enciphered) behind a 32-byte XFileHeader256.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/types.h"
#include "tavi/export.h"
#include "tavi/file/file_header.h"

namespace tavi {

class XIO;
class XFile;
class XString16;

// XGetPassword asks for the password of an enciphered file: it fills password and
// returns true, or returns false (leaving the reason, if any, in password's error).
using XGetPassword = bool (*)(XString16& password, void* context);

// Settings a packed save gives the container: header bit 0 selects LZ coding, header
// bit 1 AES-256 with a CRC-32 trailer.
inline constexpr uint32_t kObjectCompression = 2;
inline constexpr uint32_t kObjectCipher = 0x2001;

// XObject has no state of its own. A class that is to be saved overrides Read and
// Write (its body) and WriteFileHeader and ReadFileHeader (its header); every other
// operation reaches those four through the virtual table, so the class inherits
// saving and loading by file object or by name, raw or packed, with or without a
// message box on failure.
//
// File layout: the 32-byte header, then either the body exactly as Write produces it
// (flags without bits 0 and 1) or one packed container holding that body.
//
// While a file is saved or loaded, the stream's caller field (XIO::GetData) points at
// the XFileHeader256 in use, also on the memory stream that carries a packed body,
// so that Read and Write can consult it (for instance its UTF-8 flag). The field is
// given back its previous value before the call returns.
//
// Errors end up in the stream or file passed, and for the by-name forms in the name
// string. A load that fails leaves the object as its Read leaves it after a failure;
// the library's own classes leave it exactly as it was before the call. Hostile
// input: the header is read into a fixed record; a packed body is unpacked by XPack
// (which refuses damaged, truncated or wrongly deciphered data) before Read sees any
// of it.
class TAVI_API XObject {
 public:
  XObject() = default;
  XObject(const XObject& other) = default;
  XObject& operator=(const XObject& other) = default;
  virtual ~XObject();

  // Read and Write (de)serialise the body. The base class cannot: internal error
  // 1021 (Read) or 1022 (Write), 0x20000015 in the stream, false.
  virtual bool Read(XIO& in);
  virtual bool Write(XIO& out);

  // SaveFile(name, flags, password, mode, owner) opens name with XFileOpen(name,
  // mode, owner) and saves with a header carrying flags. With kFileBackup the old
  // file stays as "<name>.bck" while saving; when the save fails the partial file is
  // removed and the old one put back. Failures land in name.
  virtual bool SaveFile(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode,
                        XWindow owner);
  // SaveFile(file, flags, password) writes the header (WriteFileHeader), then the
  // body raw (SaveFile(file)) or, when the header has bit 0 or 1, packed
  // (SaveFileEx with kObjectCompression / kObjectCipher as the bits ask). An
  // enciphered save needs a password (0x20000012 in file without one).
  virtual bool SaveFile(XFile& file, uint32_t flags, const char16_t* password);
  // SaveFile(name, mode, owner) is SaveFile(file) on the named file: no header.
  virtual bool SaveFile(XString16& name, uint16_t mode, XWindow owner);
  // SaveFile(file) is Write(file).
  virtual bool SaveFile(XFile& file);
  // LoadFile(name, getPassword, context, mode) opens name (no owner) and loads it
  // with a header. Failures land in name.
  virtual bool LoadFile(XString16& name, XGetPassword getPassword, void* context, uint16_t mode);
  // LoadFile(file, getPassword, context) reads the header (ReadFileHeader), then
  // the raw body (LoadFile(file)) or the packed one (LoadFileEx). An enciphered file
  // asks getPassword; without a callback the file gets error 5 (access denied,
  // source 0); a callback that declines imports password's error, or 1223
  // (cancelled, source 0) when password holds none.
  virtual bool LoadFile(XFile& file, XGetPassword getPassword, void* context);
  // LoadFile(name, mode) is LoadFile(file) on the named file: no header.
  virtual bool LoadFile(XString16& name, uint16_t mode);
  // LoadFile(file) is Read(file).
  virtual bool LoadFile(XFile& file);
  // The Msg forms are the by-name forms that also show a failure with
  // XFileErrorMessage, owned by owner.
  virtual bool SaveFileMsg(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode,
                           XWindow owner);
  virtual bool SaveFileMsg(XString16& name, uint16_t mode, XWindow owner);
  virtual bool LoadFileMsg(XString16& name, XGetPassword getPassword, void* context, uint16_t mode,
                           XWindow owner);
  virtual bool LoadFileMsg(XString16& name, uint16_t mode, XWindow owner);
  // SaveFileEx(name, ...) is SaveFileEx(file, ...) on the named file (backup as for
  // SaveFile). SaveFileEx(file, compression, cipher, password) serialises the body
  // into memory and writes it as one packed container: compression is the
  // container's method set (0 stores, kXPackTryLZ, kXPackTryHuffman), cipher its
  // flag set (kXPackCRC, kXPackHash, kXPackAES, kXPackXOR). Container refusals
  // (an empty body, no password for a cipher, both settings 0) are 0x20000012.
  virtual bool SaveFileEx(XString16& name, uint32_t compression, uint32_t cipher,
                          const char16_t* password, uint16_t mode, XWindow owner);
  virtual bool SaveFileEx(XFile& file, uint32_t compression, uint32_t cipher,
                          const char16_t* password);
  // LoadFileEx(file, flags, password) unpacks one container from the file (flags as
  // XPack's unpack record takes them, normally 0) and Reads the body from memory.
  // Container failures (wrong password, damage, truncation: 0x20000004 and the
  // others XPack names) stay in file; a failed Read's error is copied there.
  virtual bool LoadFileEx(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode);
  virtual bool LoadFileEx(XFile& file, uint32_t flags, const char16_t* password);
  virtual bool SaveFileExMsg(XString16& name, uint32_t compression, uint32_t cipher,
                             const char16_t* password, uint16_t mode, XWindow owner);
  virtual bool LoadFileExMsg(XString16& name, uint32_t flags, const char16_t* password,
                             uint16_t mode, XWindow owner);
  // WriteFileHeader fills header (normally SetForWriting(identifier, flags)) and
  // writes it; ReadFileHeader reads it and checks identifier and marker. The base
  // class cannot: internal error 1023 / 1024, 0x20000015 in file, false.
  virtual bool WriteFileHeader(XFile& file, XFileHeader256& header, uint32_t flags);
  virtual bool ReadFileHeader(XFile& file, XFileHeader256& header);
};

}  // namespace tavi
