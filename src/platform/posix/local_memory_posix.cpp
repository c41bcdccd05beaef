//===- local_memory_posix.cpp - Handle-based memory blocks on POSIX --------===//
//
// A local memory handle is a small record holding the heap block, its size and its
// lock count. A magic number catches handles that are not (or no longer) ours.
//
//===----------------------------------------------------------------------===//
#include <cstdlib>
#include <cstring>

#include "platform/errors.h"
#include "tavi/core/local_memory.h"

namespace tavi {

struct XLocalMemoryBlock {
  uint32_t magic;
  uint32_t size;
  uint32_t locks;
  void* data;
};

namespace {

constexpr uint32_t kMagic = 0x4C4D454Du;  // "LMEM"

bool Valid(XLocalMemory handle) {
  if (handle == nullptr || handle->magic != kMagic) {
    platform::SetLastError(platform::kErrorInvalidHandle);
    return false;
  }
  return true;
}

// Every block has at least one byte behind it, so a 0-byte block still locks to a
// distinct pointer.
void* Allocate(uint32_t bytes, bool zero) {
  size_t n = bytes ? bytes : 1;
  return zero ? std::calloc(n, 1) : std::malloc(n);
}

}  // namespace

XLocalMemory XLocalAlloc(uint32_t flags, uint32_t bytes) {
  auto* block = static_cast<XLocalMemoryBlock*>(std::malloc(sizeof(XLocalMemoryBlock)));
  void* data = block ? Allocate(bytes, (flags & kLocalZeroInit) != 0) : nullptr;
  if (data == nullptr) {
    std::free(block);
    platform::SetLastError(platform::kErrorNotEnoughMemory);
    return nullptr;
  }
  *block = XLocalMemoryBlock{kMagic, bytes, 0, data};
  return block;
}

XLocalMemory XLocalReAlloc(XLocalMemory handle, uint32_t bytes, uint32_t flags) {
  if (!Valid(handle)) return nullptr;
  void* data = std::realloc(handle->data, bytes ? bytes : 1);
  if (data == nullptr) {
    platform::SetLastError(platform::kErrorNotEnoughMemory);
    return nullptr;
  }
  if ((flags & kLocalZeroInit) != 0 && bytes > handle->size)
    std::memset(static_cast<char*>(data) + handle->size, 0, bytes - handle->size);
  handle->data = data;
  handle->size = bytes;
  return handle;
}

void* XLocalLock(XLocalMemory handle) {
  if (!Valid(handle)) return nullptr;
  ++handle->locks;
  return handle->data;
}

bool XLocalUnlock(XLocalMemory handle) {
  if (!Valid(handle)) return false;
  if (handle->locks == 0) {
    platform::SetLastError(platform::kErrorNotLocked);
    return false;
  }
  if (--handle->locks == 0) {
    platform::SetLastError(platform::kErrorSuccess);
    return false;
  }
  return true;
}

XLocalMemory XLocalFree(XLocalMemory handle) {
  if (handle == nullptr) return nullptr;
  if (!Valid(handle)) return handle;
  std::free(handle->data);
  handle->magic = 0;
  std::free(handle);
  return nullptr;
}

uint32_t XLocalSize(XLocalMemory handle) {
  if (handle == nullptr || handle->magic != kMagic) return 0;
  return handle->size;
}

}  // namespace tavi
