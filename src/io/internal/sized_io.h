//===- sized_io.h - Shared steps of the sized-string and record readers ---===//
#pragma once

#include <cstdint>

#include "tavi/core/buffer.h"

namespace tavi::internal {

// Growth step of the readers: a count is trusted only this far ahead of the data.
inline constexpr uint32_t kSizedReadStep = 1u << 20;

// AppendFromStream reads exactly bytes from source to the data end of buffer, growing
// it by steps of kSizedReadStep as the data arrives. Short data: 0x20000004 in source
// (when no error is pending); a buffer that cannot grow passes its error (0x20000014
// when it has none) to source. Whatever arrived stays appended.
bool AppendFromStream(XBuffer& buffer, XIO& source, uint64_t bytes);

// AppendToRecord writes data to buffer; on failure source takes the buffer's error
// (0x20000014 when it has none, as for an attached block).
bool AppendToRecord(XBuffer& buffer, XIO& source, const void* data, uint32_t bytes);

// FitsRecord is true when bytes more can follow the data of buffer without passing
// 2^32-1; otherwise it sets 0x20000011 in error (when no error is pending).
bool FitsRecord(const XBuffer& buffer, uint64_t bytes, XError& error);

}  // namespace tavi::internal
