//===- routed.h - Filter stream chain: routing, counting, tee ---*- C++ -*-===//
//
// This file defines XRoutedIO, the base of every filter stream (a stream that sits
// in front of a next stream and passes data on to it), and two small filters:
// XCounterIO, which counts the bytes going through, and XDoubleOutIO, which writes
// everything to two targets.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"
#include "tavi/io/stream.h"

namespace tavi {

// Internal error detail (code 0x20000015) of a routed stream used without a next
// stream (and of XDoubleOutIO without a second target).
inline constexpr int32_t kInternalNoNextStream = 1030;

// XRoutedIO forwards every primitive to the next stream of the chain and copies the
// next stream's error into itself when the next stream reports failure (false, or a
// _Read count of 0). The import happens on every such result, so a _Read that returns
// 0 at the plain end of data copies "no error" into this stream, clearing an error it
// may have held: callers of a chain see the state of the stream that ended it.
//
// The next stream is not owned. The owner builds the chain (ToFront, Hook) and takes
// it apart (BreakHook). A routed stream used without a next stream does not crash:
// every primitive fails (false, or 0 bytes) with internal error 1030
// (kInternalNoNextStream), _Flush included.
//
// Filters derive from XRoutedIO, override _Write and/or _Read to transform or observe
// the data, import the next stream's error before failing, keep as little data back
// as the transformation needs and push it on in _Flush, which then flushes the next
// stream, so that flushing the outermost stream flushes the whole chain.
class TAVI_API XRoutedIO : public XIO {
 public:
  XRoutedIO() = default;
  explicit XRoutedIO(XIO* next) : next_(next) {}
  XRoutedIO(const XRoutedIO& other) = default;
  XRoutedIO& operator=(const XRoutedIO& other) = default;
  ~XRoutedIO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;
  bool _ReadChar(char16_t& c) override;
  bool _UnreadChar(char16_t c) override;
  bool _Flush() override;
  bool _ShiftForward(uint32_t bytes) override;

  // Hook inserts this stream behind previous: this.next := previous.next,
  // previous.next := this. Always true; the link is not checked.
  virtual bool Hook(XRoutedIO* previous);
  // BreakHook takes this stream out from behind previous: previous.next := this.next,
  // this.next := null. Always true; the link is not checked.
  virtual bool BreakHook(XRoutedIO* previous);

  // ToFront sets the next stream.
  void ToFront(XIO* next) { next_ = next; }
  XIO* GetNext() const { return next_; }

 protected:
  // The next stream, or null after setting internal error 1030.
  XIO* Next();

  XIO* next_ = nullptr;
};

// XCounterIO counts the bytes written through it and read through it, in 64-bit
// counters that the owner reads and resets directly.
//
// A write that would carry bytes_written past 2^64-1 fails with 0x20000013 and
// forwards nothing. Otherwise the count is raised before forwarding and stays raised
// when the forward fails. A read whose count would carry bytes_read past 2^64-1 sets
// 0x20000013 and returns 0, although the bytes were delivered into the caller's area.
class TAVI_API XCounterIO : public XRoutedIO {
 public:
  XCounterIO() = default;
  explicit XCounterIO(XIO* next) : XRoutedIO(next) {}
  XCounterIO(const XCounterIO& other) = default;
  XCounterIO& operator=(const XCounterIO& other) = default;
  ~XCounterIO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  uint32_t _Read(void* data, uint32_t bytes) override;

  uint64_t bytes_written = 0;
  uint64_t bytes_read = 0;
};

// XDoubleOutIO writes everything to its first target (the next stream) and then to a
// second one; neither is owned. A write is true only when both took the data; when the
// second fails, the first has already taken it. _Flush flushes the first, then the
// second. Reading goes to the first target only. Without a second target, writes and
// flushes fail with internal error 1030 before the first target is touched.
class TAVI_API XDoubleOutIO : public XRoutedIO {
 public:
  XDoubleOutIO() = default;
  XDoubleOutIO(XIO* first, XIO* second) : XRoutedIO(first), second_(second) {}
  XDoubleOutIO(const XDoubleOutIO& other) = default;
  XDoubleOutIO& operator=(const XDoubleOutIO& other) = default;
  ~XDoubleOutIO() override;

  bool _Write(const void* data, uint32_t bytes) override;
  bool _Flush() override;

  void SetSecond(XIO* second) { second_ = second; }
  XIO* GetSecond() const { return second_; }

 private:
  XIO* second_ = nullptr;
};

}  // namespace tavi
