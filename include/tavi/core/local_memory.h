//===- local_memory.h - Movable memory blocks behind handles ---*- C++ -*-===//
//
// Handle-based memory blocks: the memory that edit controls keep their text in,
// shared between the host's controls and WLocalBuffer. A block is reached through
// its handle and locked to get a pointer.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

struct XLocalMemoryBlock;
// XLocalMemory is the handle of a local memory block; null means none.
using XLocalMemory = XLocalMemoryBlock*;

inline constexpr uint32_t kLocalMoveable = 0x0002;  // block may move while unlocked
inline constexpr uint32_t kLocalZeroInit = 0x0040;  // new bytes are zeroed

// XLocalAlloc makes a block of bytes (0 is allowed); null with the platform error set
// when memory runs out.
TAVI_API XLocalMemory XLocalAlloc(uint32_t flags, uint32_t bytes);
// XLocalReAlloc resizes a block (contents kept, its lock count too); the memory may
// move, so pointers from earlier locks must be taken again with XLocalLock. Null with
// the platform error set on failure, and the old block is then unchanged.
TAVI_API XLocalMemory XLocalReAlloc(XLocalMemory handle, uint32_t bytes, uint32_t flags);
// XLocalLock returns the block's memory and counts a lock; null for a null handle.
TAVI_API void* XLocalLock(XLocalMemory handle);
// XLocalUnlock releases one lock; false when the block was not locked (the platform
// error is then 0, as for the last lock released) or the handle is invalid.
TAVI_API bool XLocalUnlock(XLocalMemory handle);
// XLocalFree frees a block; returns null on success.
TAVI_API XLocalMemory XLocalFree(XLocalMemory handle);
// XLocalSize is the block's size in bytes; 0 for null.
TAVI_API uint32_t XLocalSize(XLocalMemory handle);

}  // namespace tavi
