//===- convert_core.h - Piecewise conversion between text formats -*- C++ -*-===//
//
// The engine under the public conversion functions and the converting filter
// stream: text in UTF-8, UTF-16 or an 8-bit code page goes through a UTF-16 piece
// into any of the three. Input may arrive split anywhere; the few bytes of a
// character cut at the end of one call (at most three) wait for the next one.
// UTF-8 goes through the library's one converter (core/internal/utf8.h).
//
// What cannot be converted (a malformed UTF-8 piece, an unpaired surrogate, a byte
// the source code page leaves undefined, a character the target code page lacks,
// an incomplete character at the end) becomes one "?" in the target's encoding,
// or, in strict mode, stops the conversion with kErrConversion.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/internal/utf8.h"
#include "tavi/core/error.h"
#include "text/internal/code_page.h"

namespace tavi::text_internal {

// The three encodings a conversion reads or writes.
enum class Encoding : uint8_t { kUtf8, kUtf16, kCodePage };

// Output areas. Room(bytes) returns at least bytes writable bytes (null: failed,
// with the cause in the output's owner); Commit(bytes) takes the first bytes of it.
// A sink is a class with these two members; see the filter and the functions.

class Converter {
 public:
  // Code units of one piece (and bytes of input per step).
  static constexpr size_t kPiece = 4096;

  // Init sets the formats (text-format numbers: 1025, 1030 or 65001, or an 8-bit code
  // page) and the strict flag, and empties the carry. 0 or the error code:
  // kErrLoadEncoding for a format that is none of these, kErrSaveEncoding for a code
  // page without a table.
  uint32_t Init(uint16_t target, uint16_t source, bool strict);

  // Put converts n bytes of input; a character cut at the end waits in the carry.
  // Finish converts what the carry holds (as "?", or failure in strict mode) and
  // empties it. Both return false with kErrConversion in error when strict mode meets
  // text it cannot convert, or false with error untouched when the sink failed.
  template <typename Sink>
  bool Put(const uint8_t* in, size_t n, Sink& sink, XError& error);
  template <typename Sink>
  bool Finish(Sink& sink, XError& error);

  bool Pending() const { return carry_n_ != 0; }
  void Clear() { carry_n_ = 0; }

  Encoding Source() const { return source_; }
  Encoding Target() const { return target_; }

 private:
  // Converts whole characters from in; at_end says no more input follows, so a cut
  // character at the end is converted (as "?") instead of kept. Returns the bytes
  // consumed, or SIZE_MAX on failure.
  template <typename Sink>
  size_t Run(const uint8_t* in, size_t n, bool at_end, Sink& sink, XError& error);
  // Writes count units (whole characters; unpaired surrogates are faults unless the
  // source cannot make them) in the target encoding.
  template <typename Sink>
  bool Emit(const char16_t* units, size_t count, Sink& sink, XError& error);
  bool Fault(XError& error) const {
    error.SetErrorCode(kErrConversion);
    return false;
  }

  Encoding target_ = Encoding::kUtf16;
  Encoding source_ = Encoding::kUtf16;
  bool strict_ = false;
  const CodePageTable* target_table_ = nullptr;
  // Source code page: the unit of each byte, "?" for undefined bytes; and whether a
  // byte is undefined.
  char16_t source_units_[256] = {};
  bool source_undefined_[256] = {};
  uint8_t carry_[8] = {};
  size_t carry_n_ = 0;
};

// The length of the maximal malformed piece that starts at in[0] (1 to 3 bytes): the
// longest prefix of a well-formed sequence, or the single byte.
size_t MalformedUtf8Length(const uint8_t* in, size_t n);

// Index of the first unpaired surrogate among count units, or count.
inline size_t FindUnpaired(const char16_t* units, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    const char16_t u = units[i];
    if ((u & 0xF800) != 0xD800) continue;
    if (u < 0xDC00 && i + 1 < count && (units[i + 1] & 0xFC00) == 0xDC00) {
      ++i;
      continue;
    }
    return i;
  }
  return count;
}

template <typename Sink>
bool Converter::Emit(const char16_t* units, size_t count, Sink& sink, XError& error) {
  if (count == 0) return true;
  const bool check = source_ == Encoding::kUtf16;
  switch (target_) {
    case Encoding::kUtf16: {
      size_t i = 0;
      while (i < count) {
        const size_t j = check ? i + FindUnpaired(units + i, count - i) : count;
        if (j > i) {
          uint8_t* out = sink.Room(2 * (j - i));
          if (out == nullptr) return false;
          std::memcpy(out, units + i, 2 * (j - i));
          if (!sink.Commit(2 * (j - i))) return false;
        }
        if (j == count) break;
        if (strict_) return Fault(error);
        uint8_t* out = sink.Room(2);
        if (out == nullptr) return false;
        const char16_t q = u'?';
        std::memcpy(out, &q, 2);
        if (!sink.Commit(2)) return false;
        i = j + 1;
      }
      return true;
    }
    case Encoding::kUtf8: {
      size_t i = 0;
      while (i < count) {
        const size_t j = check ? i + FindUnpaired(units + i, count - i) : count;
        if (j > i) {
          uint8_t* out = sink.Room(internal::kUtf8PerUnit * (j - i));
          if (out == nullptr) return false;
          if (!sink.Commit(internal::EncodeUtf8(units + i, j - i, out))) return false;
        }
        if (j == count) break;
        if (strict_) return Fault(error);
        uint8_t* out = sink.Room(1);
        if (out == nullptr) return false;
        *out = '?';
        if (!sink.Commit(1)) return false;
        i = j + 1;
      }
      return true;
    }
    case Encoding::kCodePage: {
      const uint8_t* from_wide = target_table_->FromWide();
      const char16_t* to_wide = target_table_->ToWide();
      uint8_t* out = sink.Room(count);
      if (out == nullptr) return false;
      size_t o = 0;
      for (size_t i = 0; i < count; ++i) {
        const char16_t u = units[i];
        uint8_t b;
        if ((u & 0xF800) == 0xD800) {
          // No 8-bit code page holds a character outside the BMP: a pair, like a
          // surrogate alone, is one missing character.
          if (u < 0xDC00 && i + 1 < count && (units[i + 1] & 0xFC00) == 0xDC00) ++i;
          if (strict_) return Fault(error);
          b = target_table_->Question();
        } else {
          b = from_wide[u];
          if (strict_ && to_wide[b] != u) return Fault(error);
        }
        out[o++] = b;
      }
      return sink.Commit(o);
    }
  }
  return true;
}

template <typename Sink>
size_t Converter::Run(const uint8_t* in, size_t n, bool at_end, Sink& sink, XError& error) {
  // One unit more than a step's bytes: the decoder wants room for a whole pair
  // before it looks at a 4-byte lead, even one cut at the end.
  char16_t piece[kPiece + 1];
  size_t done = 0;
  switch (source_) {
    case Encoding::kUtf8:
      while (done < n) {
        const size_t step = n - done < kPiece ? n - done : kPiece;
        // UTF-16 output goes straight into the sink when its room is aligned.
        char16_t* units = piece;
        uint8_t* direct = nullptr;
        if (target_ == Encoding::kUtf16) {
          direct = sink.Room(2 * (step + 1));
          if (direct == nullptr) return SIZE_MAX;
          if (reinterpret_cast<uintptr_t>(direct) % alignof(char16_t) == 0)
            units = reinterpret_cast<char16_t*>(direct);
          else
            direct = nullptr;
        }
        // Block stores stay within the text's own output (never more units than
        // bytes), so the extra unit never touches memory past the caller's room.
        size_t consumed = 0;
        size_t produced = 0;
        size_t needed = 0;
        const internal::Utf8Status status =
            internal::DecodeUtf8(in + done, step, units, step + 1, &consumed, &produced, &needed);
        if (direct != nullptr) {
          if (!sink.Commit(2 * produced)) return SIZE_MAX;
        } else if (!Emit(units, produced, sink, error)) {
          return SIZE_MAX;
        }
        done += consumed;
        if (status == internal::Utf8Status::kOk) continue;
        if (status == internal::Utf8Status::kIncomplete && done + (step - consumed) == n && !at_end)
          return done;  // a cut character waits for more input
        if (status == internal::Utf8Status::kIncomplete && done + (step - consumed) < n)
          continue;  // only the piece was cut; the next step starts at the character
        if (strict_) {
          Fault(error);
          return SIZE_MAX;
        }
        const char16_t q = u'?';
        if (!Emit(&q, 1, sink, error)) return SIZE_MAX;
        done += status == internal::Utf8Status::kIncomplete
                    ? n - done
                    : MalformedUtf8Length(in + done, n - done);
      }
      return done;
    case Encoding::kUtf16: {
      while (n - done >= 2) {
        size_t count = (n - done) / 2 < kPiece ? (n - done) / 2 : kPiece;
        std::memcpy(piece, in + done, 2 * count);
        // Keep a high surrogate at the very end for its partner.
        if (!at_end && done + 2 * count + 1 >= n && (piece[count - 1] & 0xFC00) == 0xD800) {
          --count;
          if (count == 0) return done;
        } else if (done + 2 * count + 1 < n && (piece[count - 1] & 0xFC00) == 0xD800) {
          --count;  // the pair is completed by the next step
        }
        if (!Emit(piece, count, sink, error)) return SIZE_MAX;
        done += 2 * count;
      }
      if (n - done == 1 && at_end) {
        if (strict_) {
          Fault(error);
          return SIZE_MAX;
        }
        const char16_t q = u'?';
        if (!Emit(&q, 1, sink, error)) return SIZE_MAX;
        done = n;
      }
      return done;
    }
    case Encoding::kCodePage:
      while (done < n) {
        const size_t step = n - done < kPiece ? n - done : kPiece;
        char16_t* units = piece;
        uint8_t* direct = nullptr;
        if (target_ == Encoding::kUtf16) {
          direct = sink.Room(2 * step);
          if (direct == nullptr) return SIZE_MAX;
          if (reinterpret_cast<uintptr_t>(direct) % alignof(char16_t) == 0)
            units = reinterpret_cast<char16_t*>(direct);
          else
            direct = nullptr;
        }
        bool bad = false;
        for (size_t i = 0; i < step; ++i) {
          const uint8_t b = in[done + i];
          units[i] = source_units_[b];
          bad |= source_undefined_[b];
        }
        if (bad && strict_) {
          Fault(error);
          return SIZE_MAX;
        }
        if (direct != nullptr) {
          if (!sink.Commit(2 * step)) return SIZE_MAX;
        } else if (!Emit(units, step, sink, error)) {
          return SIZE_MAX;
        }
        done += step;
      }
      return done;
  }
  return done;
}

template <typename Sink>
bool Converter::Put(const uint8_t* in, size_t n, Sink& sink, XError& error) {
  if (n == 0) return true;  // in may be null then
  if (carry_n_ != 0) {
    // Complete the cut character with up to four new bytes, then go on from the input.
    uint8_t joined[16];
    const size_t cn = carry_n_;
    const size_t k = n < 4 ? n : 4;
    std::memcpy(joined, carry_, cn);
    std::memcpy(joined + cn, in, k);
    const size_t used = Run(joined, cn + k, false, sink, error);
    if (used == SIZE_MAX) return false;
    if (used < cn) {
      // Still cut: everything given so far waits (k == n here).
      std::memmove(carry_, joined + used, cn + k - used);
      carry_n_ = cn + k - used;
      return true;
    }
    carry_n_ = 0;
    in += used - cn;
    n -= used - cn;
  }
  const size_t used = Run(in, n, false, sink, error);
  if (used == SIZE_MAX) return false;
  std::memcpy(carry_, in + used, n - used);
  carry_n_ = n - used;
  return true;
}

template <typename Sink>
bool Converter::Finish(Sink& sink, XError& error) {
  if (carry_n_ == 0) return true;
  uint8_t rest[8];
  const size_t n = carry_n_;
  std::memcpy(rest, carry_, n);
  carry_n_ = 0;
  return Run(rest, n, true, sink, error) != SIZE_MAX;
}

// Sinks.

// Caller memory that has room for all of the output.
struct MemorySink {
  uint8_t* at;
  uint8_t* Room(size_t) { return at; }
  bool Commit(size_t bytes) {
    at += bytes;
    return true;
  }
};

}  // namespace tavi::text_internal
