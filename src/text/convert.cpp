//===- convert.cpp - Conversion functions over the piecewise converter ----===//
#include "tavi/text/convert.h"

#include "tavi/core/error.h"
#include "tavi/io/stream.h"
#include "tavi/text/text_file.h"
#include "text/internal/convert_core.h"
#include "text/internal/convert_sinks.h"

namespace tavi {

namespace {

using text_internal::Converter;

// Converts into caller memory; null on a fault or unusable formats.
uint8_t* ToMemory(uint16_t target, uint16_t source, const void* text, size_t bytes, void* out,
                  uint32_t flags) {
  Converter converter;
  if (converter.Init(target, source, (flags & kConvertStrict) != 0) != 0) return nullptr;
  text_internal::MemorySink sink{static_cast<uint8_t*>(out)};
  XError fault;
  if (!converter.Put(static_cast<const uint8_t*>(text), bytes, sink, fault) ||
      !converter.Finish(sink, fault))
    return nullptr;
  return sink.at;
}

template <typename T>
T* As(uint8_t* p) {
  return reinterpret_cast<T*>(p);
}

bool ToStream(XIO& target, uint16_t target_format, uint16_t source_format, const void* text,
              size_t bytes, uint32_t flags) {
  Converter converter;
  if (const uint32_t code =
          converter.Init(target_format, source_format, (flags & kConvertStrict) != 0)) {
    target.SetErrorCode(code);
    return false;
  }
  const auto* in = static_cast<const uint8_t*>(text);
  XError fault;
  bool ok;
  if (XBuffer* buffer = text_internal::PlainBuffer(&target)) {
    text_internal::BufferSink sink(*buffer);
    ok = converter.Put(in, bytes, sink, fault) && converter.Finish(sink, fault);
  } else {
    text_internal::StreamSink sink(target);
    ok = converter.Put(in, bytes, sink, fault) && converter.Finish(sink, fault) && sink.Drain();
  }
  if (!ok && fault.IsError()) target.SetErrorCode(fault.GetErrorCode());
  return ok;
}

}  // namespace

bool XConvertText(XIO& target, uint16_t target_format, uint16_t source_format, const void* text,
                  uint32_t bytes, uint32_t flags) {
  return ToStream(target, target_format, source_format, text, bytes, flags);
}

char16_t* _Utf8ToUtf16(const char* text, uint32_t bytes, char16_t* out, uint32_t flags) {
  return As<char16_t>(ToMemory(kTextUtf16, kTextUtf8, text, bytes, out, flags));
}

char* _Utf16ToUtf8(const char16_t* text, uint32_t units, char* out, uint32_t flags) {
  return As<char>(ToMemory(kTextUtf8, kTextUtf16, text, size_t{2} * units, out, flags));
}

char16_t* _CodePageToUtf16(uint16_t code_page, const char* text, uint32_t bytes, char16_t* out,
                           uint32_t flags) {
  if (XIsUnicodeTextFormat(code_page)) return nullptr;
  return As<char16_t>(ToMemory(kTextUtf16, code_page, text, bytes, out, flags));
}

char* _Utf16ToCodePage(uint16_t code_page, const char16_t* text, uint32_t units, char* out,
                       uint32_t flags) {
  if (XIsUnicodeTextFormat(code_page)) return nullptr;
  return As<char>(ToMemory(code_page, kTextUtf16, text, size_t{2} * units, out, flags));
}

char* _Utf8ToCodePage(uint16_t code_page, const char* text, uint32_t bytes, char* out,
                      uint32_t flags) {
  if (XIsUnicodeTextFormat(code_page)) return nullptr;
  return As<char>(ToMemory(code_page, kTextUtf8, text, bytes, out, flags));
}

char* _CodePageToUtf8(uint16_t code_page, const char* text, uint32_t bytes, char* out,
                      uint32_t flags) {
  if (XIsUnicodeTextFormat(code_page)) return nullptr;
  return As<char>(ToMemory(kTextUtf8, code_page, text, bytes, out, flags));
}

char* _CodePageToCodePage(uint16_t target_code_page, uint16_t source_code_page, const char* text,
                          uint32_t bytes, char* out, uint32_t flags) {
  if (XIsUnicodeTextFormat(target_code_page) || XIsUnicodeTextFormat(source_code_page))
    return nullptr;
  return As<char>(ToMemory(target_code_page, source_code_page, text, bytes, out, flags));
}

bool XUtf8ToUtf16(XIO& target, const char* text, uint32_t bytes, uint32_t flags) {
  return XConvertText(target, kTextUtf16, kTextUtf8, text, bytes, flags);
}

bool XUtf16ToUtf8(XIO& target, const char16_t* text, uint32_t units, uint32_t flags) {
  return ToStream(target, kTextUtf8, kTextUtf16, text, size_t{2} * units, flags);
}

namespace {

// A Unicode format passed where a code page is expected has no 8-bit table.
bool RefuseUnicode(XIO& target, uint16_t code_page) {
  if (!XIsUnicodeTextFormat(code_page)) return false;
  target.SetErrorCode(kErrSaveEncoding);
  return true;
}

}  // namespace

bool XCodePageToUtf16(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                      uint32_t flags) {
  if (RefuseUnicode(target, code_page)) return false;
  return XConvertText(target, kTextUtf16, code_page, text, bytes, flags);
}

bool XUtf16ToCodePage(XIO& target, uint16_t code_page, const char16_t* text, uint32_t units,
                      uint32_t flags) {
  if (RefuseUnicode(target, code_page)) return false;
  return ToStream(target, code_page, kTextUtf16, text, size_t{2} * units, flags);
}

bool XUtf8ToCodePage(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                     uint32_t flags) {
  if (RefuseUnicode(target, code_page)) return false;
  return XConvertText(target, code_page, kTextUtf8, text, bytes, flags);
}

bool XCodePageToUtf8(XIO& target, uint16_t code_page, const char* text, uint32_t bytes,
                     uint32_t flags) {
  if (RefuseUnicode(target, code_page)) return false;
  return XConvertText(target, kTextUtf8, code_page, text, bytes, flags);
}

bool XCodePageToCodePage(XIO& target, uint16_t target_code_page, uint16_t source_code_page,
                         const char* text, uint32_t bytes, uint32_t flags) {
  if (RefuseUnicode(target, target_code_page) || RefuseUnicode(target, source_code_page))
    return false;
  return XConvertText(target, target_code_page, source_code_page, text, bytes, flags);
}

}  // namespace tavi
