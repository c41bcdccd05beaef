//===- convert_io.cpp - The converting filter stream ----------------------===//
//
// Writing converts each call's bytes at once and sends them on; reading converts
// one piece of the next stream's data at a time and hands it out as asked.
//
//===----------------------------------------------------------------------===//
#include "tavi/text/convert_io.h"

#include <cstring>

#include "tavi/text/convert.h"
#include "tavi/text/text_file.h"
#include "text/internal/convert_core.h"
#include "text/internal/convert_sinks.h"

namespace tavi {

namespace {

using text_internal::Converter;

// Bytes of the next stream converted per refill in the read direction.
constexpr uint32_t kReadPiece = 4096;

// Room for the conversion of one refill and a carry: at most three bytes of output
// per byte of input (a code page to UTF-8).
constexpr uint32_t kReadyBytes = 3 * (kReadPiece + 8) + 64;

// Converts into the block of read-ahead text.
struct ReadySink {
  uint8_t* block;
  uint32_t& size;
  uint8_t* Room(size_t) { return block + size; }
  bool Commit(size_t bytes) {
    size += static_cast<uint32_t>(bytes);
    return true;
  }
};

}  // namespace

XConvertIO::XConvertIO() : converter_(std::make_unique<Converter>()) {
  SetFormats(kTextUtf16, kTextUtf8, 0);
}

XConvertIO::XConvertIO(XIO* next, uint16_t target_format, uint16_t source_format, uint32_t flags)
    : XRoutedIO(next), converter_(std::make_unique<Converter>()) {
  SetFormats(target_format, source_format, flags);
}

XConvertIO::XConvertIO(const XConvertIO& other)
    : XRoutedIO(other), converter_(std::make_unique<Converter>(*other.converter_)) {
  setup_error_ = other.setup_error_;
  failed_ = other.failed_;
  source_ended_ = other.source_ended_;
  if (other.ready_) {
    ready_ = std::make_unique<uint8_t[]>(kReadyBytes);
    std::memcpy(ready_.get(), other.ready_.get(), other.ready_size_);
    ready_size_ = other.ready_size_;
    ready_pos_ = other.ready_pos_;
  }
}

XConvertIO& XConvertIO::operator=(const XConvertIO& other) {
  if (this != &other) {
    XConvertIO copy(other);
    XRoutedIO::operator=(other);
    converter_ = std::move(copy.converter_);
    setup_error_ = copy.setup_error_;
    failed_ = copy.failed_;
    source_ended_ = copy.source_ended_;
    ready_ = std::move(copy.ready_);
    ready_size_ = copy.ready_size_;
    ready_pos_ = copy.ready_pos_;
  }
  return *this;
}

XConvertIO::~XConvertIO() = default;

bool XConvertIO::SetFormats(uint16_t target_format, uint16_t source_format, uint32_t flags) {
  setup_error_ = converter_->Init(target_format, source_format, (flags & kConvertStrict) != 0);
  failed_ = false;
  source_ended_ = false;
  ready_size_ = ready_pos_ = 0;
  ResetError();
  if (setup_error_ == 0) return true;
  SetErrorCode(setup_error_);
  return false;
}

bool XConvertIO::Pending() const {
  return converter_->Pending();
}

bool XConvertIO::Usable() {
  if (setup_error_ != 0) {
    SetErrorCode(setup_error_);
    return false;
  }
  if (failed_) {
    SetSafeErrorCode(kErrConversion);
    return false;
  }
  return true;
}

bool XConvertIO::Fail(const XError& fault, XIO& next) {
  if (fault.IsError()) {
    failed_ = true;
    SetErrorCode(fault.GetErrorCode());
  } else {
    ImportErrorCode(next);
  }
  return false;
}

bool XConvertIO::_Write(const void* data, uint32_t bytes) {
  if (!Usable()) return false;
  XIO* next = Next();
  if (next == nullptr) return false;
  const auto* in = static_cast<const uint8_t*>(data);
  XError fault;
  bool ok;
  if (XBuffer* buffer = text_internal::PlainBuffer(next)) {
    text_internal::BufferSink sink(*buffer);
    ok = converter_->Put(in, bytes, sink, fault);
  } else {
    text_internal::StreamSink sink(*next);
    ok = converter_->Put(in, bytes, sink, fault) && sink.Drain();
  }
  return ok || Fail(fault, *next);
}

bool XConvertIO::_Flush() {
  if (!Usable()) return false;
  XIO* next = Next();
  if (next == nullptr) return false;
  XError fault;
  text_internal::StreamSink sink(*next);
  if (!converter_->Finish(sink, fault) || !sink.Drain()) return Fail(fault, *next);
  return XRoutedIO::_Flush();
}

uint32_t XConvertIO::_Read(void* data, uint32_t bytes) {
  if (!Usable()) return 0;
  XIO* next = Next();
  if (next == nullptr) return 0;
  auto* out = static_cast<uint8_t*>(data);
  uint32_t got = 0;
  while (got < bytes) {
    if (ready_pos_ < ready_size_) {
      const uint32_t k =
          ready_size_ - ready_pos_ < bytes - got ? ready_size_ - ready_pos_ : bytes - got;
      std::memcpy(out + got, ready_.get() + ready_pos_, k);
      ready_pos_ += k;
      got += k;
      continue;
    }
    if (source_ended_) break;
    if (!ready_) ready_ = std::make_unique<uint8_t[]>(kReadyBytes);
    ready_size_ = ready_pos_ = 0;
    ReadySink sink{ready_.get(), ready_size_};
    XError fault;
    uint8_t piece[kReadPiece];
    const uint32_t n = next->_Read(piece, kReadPiece);
    bool ok;
    if (n == 0) {
      // The end of the next stream's data (or its failure): what waits is converted
      // now, as at the end of a text.
      if (next->IsError()) {
        ImportErrorCode(*next);
        return got;
      }
      source_ended_ = true;
      ok = converter_->Finish(sink, fault);
    } else {
      ok = converter_->Put(piece, n, sink, fault);
    }
    if (!ok) {
      failed_ = true;
      SetErrorCode(fault.GetErrorCode());
      ready_size_ = 0;
      return got;
    }
  }
  if (got == 0) ImportErrorCode(*next);
  return got;
}

}  // namespace tavi
