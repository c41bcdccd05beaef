//===- local_buffer.h - Buffer over an edit control's memory ---*- C++ -*-===//
//
// This file defines WLocalBuffer, an XBuffer whose block is a local memory block
// (see local_memory.h), so the text of an edit control can be shared with, taken
// from or given to the control without copying.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/buffer.h"
#include "tavi/core/local_memory.h"
#include "tavi/export.h"

namespace tavi {

// How ShareTextHandle takes an edit control's text.
enum eShareTextHandle : int32_t {
  kShareTextOwn = 0,     // the buffer owns the block (and may grow it)
  kShareTextAttach = 1,  // the buffer uses the control's block without owning it
  kShareTextTake = 2,    // attached, and the control gets a fresh empty block
};

// WLocalBuffer keeps its block in local memory. Failures of the local memory
// functions set the platform error (source 1).
class TAVI_API WLocalBuffer : public XBuffer {
 public:
  WLocalBuffer() = default;
  explicit WLocalBuffer(uint32_t granularity) : XBuffer(granularity) {}
  WLocalBuffer(const WLocalBuffer& other) = default;
  WLocalBuffer& operator=(const WLocalBuffer& other) = default;
  // Frees the block unless attached.
  ~WLocalBuffer() override;

  XLocalMemory GetHandle() const { return handle_; }

  // ShareTextHandle frees the present block and takes the text of an edit control:
  // its memory block becomes this buffer's block, the data its text without trailing
  // 0 code units. An empty text takes nothing and returns whether the window exists.
  bool ShareTextHandle(XWindow edit, eShareTextHandle mode);
  // DetachTextHandle lets go of an attached control block (unlocked, forgotten).
  // Without a handle: true when nothing is allocated and the buffer is not attached;
  // internal error 1001 otherwise.
  bool DetachTextHandle();
  // GiveTextHandle gives the block to the control, which frees its previous block, and
  // forgets it here; redraw repaints the control. Internal error 1002 without a block.
  bool GiveTextHandle(XWindow edit, bool redraw);

 protected:
  bool _BufferRealloc(uint32_t size) override;
  void _BufferFree() override;

 private:
  XLocalMemory handle_ = nullptr;
};

}  // namespace tavi
