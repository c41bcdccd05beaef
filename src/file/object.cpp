//===- object.cpp - Saving and loading serialisable objects ----------------===//
#include "tavi/file/object.h"

#include "file/internal/saving.h"
#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/core/string.h"
#include "tavi/file/file.h"
#include "tavi/pack/container.h"

namespace tavi {

namespace {

// Memory bodies grow in large steps: a body of many small records would otherwise
// be reallocated every few dozen bytes.
constexpr uint32_t kBodyGranularity = 64 * 1024;

// Points a stream's caller field at a header for the length of a scope.
class CallerField {
 public:
  CallerField(XIO& stream, void* value) : stream_(stream), old_(stream.SetData(value)) {}
  ~CallerField() { stream_.SetData(old_); }
  CallerField(const CallerField&) = delete;
  CallerField& operator=(const CallerField&) = delete;

 private:
  XIO& stream_;
  void* old_;
};

// The container's coders expand at most about 7,300 times (an LZ reference of 36
// bits copies up to 32,803 bytes); 8,192 bounds every method with room to spare.
constexpr uint64_t kMostExpansion = 8192;

// Receives an unpacked body, refusing more bytes than the rest of the file can
// decode to, so that a damaged count never makes memory grow past what the data
// could hold. A refusal reads as damaged data (0x20000004).
class BoundedBuffer : public XBuffer {
 public:
  BoundedBuffer(uint32_t granularity, uint64_t limit) : XBuffer(granularity), limit_(limit) {}
  bool _Write(const void* data, uint32_t bytes) override {
    if (GetBufferPos() + uint64_t{bytes} > limit_) {
      SetSafeErrorCode(kErrEndOfData);
      return false;
    }
    return XBuffer::_Write(data, bytes);
  }

 private:
  uint64_t limit_;
};

// The most bytes the rest of file can unpack to; no limit when its size is unknown.
uint64_t UnpackLimit(XFile& file) {
  const bool clean = file.IsOk();
  const uint32_t size = file.GetSize();
  const uint32_t position = file.GetPos();
  if (clean && file.IsError()) file.SetError(0, kErrSourcePlain);  // not a failure here
  if (size == 0xFFFFFFFFu || position == 0xFFFFFFFFu || position > size) return UINT64_MAX;
  return (uint64_t{size - position} + 64) * kMostExpansion;
}

bool ShowOnFailure(bool ok, XString16& name, bool reading, XWindow owner) {
  if (ok) return true;
  XFileErrorMessage(name, name.c_str(), name.GetBufferPos(), reading, owner);
  return false;
}

}  // namespace

XObject::~XObject() = default;

bool XObject::Read(XIO& in) {
  in.SetInternalError(1021);
  return false;
}

bool XObject::Write(XIO& out) {
  out.SetInternalError(1022);
  return false;
}

bool XObject::WriteFileHeader(XFile& file, XFileHeader256&, uint32_t) {
  file.SetInternalError(1023);
  return false;
}

bool XObject::ReadFileHeader(XFile& file, XFileHeader256&) {
  file.SetInternalError(1024);
  return false;
}

bool XObject::SaveFile(XFile& file, uint32_t flags, const char16_t* password) {
  XFileHeader256 header;
  if (!WriteFileHeader(file, header, flags)) return false;
  CallerField field(file, &header);
  if (!header.IsPacked()) return SaveFile(file);
  return SaveFileEx(file, header.IsCompressed() ? kObjectCompression : 0,
                    header.IsCrypted() ? kObjectCipher : 0, password);
}

bool XObject::SaveFile(XFile& file) {
  return Write(file);
}

bool XObject::SaveFileEx(XFile& file, uint32_t compression, uint32_t cipher,
                         const char16_t* password) {
  XBuffer body(kBodyGranularity);
  body.SetData(file.GetData());
  if (!Write(body)) {
    file.ImportErrorCode(body);
    return false;
  }
  strXPackRecord request;
  request.flags = cipher;
  request.stream = &file;
  request.password = password;
  request.data = body.GetBuffer();
  request.size_low = body.GetBufferPos();
  request.methods = compression;
  return XPack(&request);
}

bool XObject::LoadFile(XFile& file, XGetPassword getPassword, void* context) {
  XFileHeader256 header;
  if (!ReadFileHeader(file, header)) return false;
  CallerField field(file, &header);
  if (!header.IsPacked()) return LoadFile(file);
  XString16 password;
  if (header.IsCrypted()) {
    if (getPassword == nullptr) {
      file.SetErrorCode(5);  // access denied: there is no way to ask for the password
      return false;
    }
    if (!getPassword(password, context)) {
      if (password.IsError()) {
        file.ImportErrorCode(password);
      } else {
        file.SetErrorCode(1223);  // the person asked declined
      }
      return false;
    }
  }
  const char16_t* text = nullptr;
  if (header.IsCrypted()) text = password.c_str() != nullptr ? password.c_str() : u"";
  return LoadFileEx(file, 0, text);
}

bool XObject::LoadFile(XFile& file) {
  return Read(file);
}

bool XObject::LoadFileEx(XFile& file, uint32_t flags, const char16_t* password) {
  BoundedBuffer body(kBodyGranularity, UnpackLimit(file));
  strXUnpackRecord request;
  request.flags = flags;
  request.stream = &file;
  request.password = password;
  request.output = &body;
  // XPack leaves its failures, and those of body, in file.
  if (!XPack(&request)) return false;
  body.SetData(file.GetData());
  if (Read(body)) return true;
  file.ImportErrorCode(body);
  return false;
}

// By-name forms: a local file, closed on every path; failures land in name.

bool XObject::SaveFile(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode,
                       XWindow owner) {
  return internal::OnNamedFile(name, mode, owner,
                               [&](XFile& file) { return SaveFile(file, flags, password); });
}

bool XObject::SaveFile(XString16& name, uint16_t mode, XWindow owner) {
  return internal::OnNamedFile(name, mode, owner, [&](XFile& file) { return SaveFile(file); });
}

bool XObject::LoadFile(XString16& name, XGetPassword getPassword, void* context, uint16_t mode) {
  return internal::OnNamedFile(name, mode, nullptr,
                               [&](XFile& file) { return LoadFile(file, getPassword, context); });
}

bool XObject::LoadFile(XString16& name, uint16_t mode) {
  return internal::OnNamedFile(name, mode, nullptr, [&](XFile& file) { return LoadFile(file); });
}

bool XObject::SaveFileEx(XString16& name, uint32_t compression, uint32_t cipher,
                         const char16_t* password, uint16_t mode, XWindow owner) {
  return internal::OnNamedFile(name, mode, owner, [&](XFile& file) {
    return SaveFileEx(file, compression, cipher, password);
  });
}

bool XObject::LoadFileEx(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode) {
  return internal::OnNamedFile(name, mode, nullptr,
                               [&](XFile& file) { return LoadFileEx(file, flags, password); });
}

// Message forms.

bool XObject::SaveFileMsg(XString16& name, uint32_t flags, const char16_t* password, uint16_t mode,
                          XWindow owner) {
  return ShowOnFailure(SaveFile(name, flags, password, mode, owner), name, false, owner);
}

bool XObject::SaveFileMsg(XString16& name, uint16_t mode, XWindow owner) {
  return ShowOnFailure(SaveFile(name, mode, owner), name, false, owner);
}

bool XObject::LoadFileMsg(XString16& name, XGetPassword getPassword, void* context, uint16_t mode,
                          XWindow owner) {
  return ShowOnFailure(LoadFile(name, getPassword, context, mode), name, true, owner);
}

bool XObject::LoadFileMsg(XString16& name, uint16_t mode, XWindow owner) {
  return ShowOnFailure(LoadFile(name, mode), name, true, owner);
}

bool XObject::SaveFileExMsg(XString16& name, uint32_t compression, uint32_t cipher,
                            const char16_t* password, uint16_t mode, XWindow owner) {
  return ShowOnFailure(SaveFileEx(name, compression, cipher, password, mode, owner), name, false,
                       owner);
}

bool XObject::LoadFileExMsg(XString16& name, uint32_t flags, const char16_t* password,
                            uint16_t mode, XWindow owner) {
  return ShowOnFailure(LoadFileEx(name, flags, password, mode), name, true, owner);
}

}  // namespace tavi
