//===- bit_read.cpp - Fuzz the bit-stream reader ---------------------------===//
//
// The first bytes are a program of reads (fields of 0 to 70 bits, single bits, bytes,
// byte runs at any bit offset, packed numbers); the rest is the bit stream. Writing
// the fields read back through a second bit stream must give exactly the bits the
// reader consumed, and the reader may never take a byte it did not need.
//
//===----------------------------------------------------------------------===//
#include <cstdint>
#include <vector>

#include "fuzz_helpers.h"
#include "tavi/core/buffer.h"
#include "tavi/io/bit_stream.h"
#include "tavi/io/pack_number.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi::fuzz::InputReader input(data, size);
  uint8_t program[16];
  for (auto& p : program) p = input.Take<uint8_t>();
  if (input.size() == 0 || input.size() > 0xFFFF) return 0;
  tavi::XBuffer source;
  source.AttachBuffer(const_cast<uint8_t*>(input.data()), static_cast<uint32_t>(input.size()),
                      true);
  tavi::XBitStream in(&source);
  tavi::XBuffer copy;
  tavi::XBitStream out(&copy);
  uint64_t consumed_bits = 0;
  for (uint32_t step = 0; step < 4096; ++step) {
    const uint8_t op = program[step % 16] ^ static_cast<uint8_t>(step / 16);
    const uint32_t count = op % 71;
    bool ok = true;
    switch (op >> 6) {
      case 0:
      case 1: {
        uint64_t value;
        ok = in.GetBits(value, count);
        if (ok) {
          FUZZ_ASSERT(count >= 64 || (value >> count) == 0);
          FUZZ_ASSERT(out.SetBits(value, count < 64 ? count : 64));
          if (count > 64) {
            uint64_t skipped = 0;  // bits beyond 64 were dropped: write them from the input
            const uint64_t bit = consumed_bits + 64;
            for (uint32_t b = 0; b < count - 64; ++b) {
              const uint64_t pos = bit + b;
              if ((input.data()[pos / 8] >> (pos % 8)) & 1) skipped |= uint64_t{1} << b;
            }
            FUZZ_ASSERT(out.SetBits(skipped, count - 64));
          }
          consumed_bits += count;
        }
        break;
      }
      case 2: {
        uint8_t bytes[8];
        const uint32_t n = count % 9;
        const uint32_t got = in._Read(bytes, n);
        ok = got == n;
        FUZZ_ASSERT(out._Write(bytes, got));
        consumed_bits += 8ull * got;
        break;
      }
      default: {
        uint64_t value;
        ok = tavi::ReadPackNumber(in, value);
        if (!ok) FUZZ_ASSERT(in.GetErrorCode() == tavi::kErrEndOfData);
        // A value re-encodes canonically, possibly shorter than the input's form: the
        // bit comparison below does not apply after one.
        if (ok) return 0;
      }
    }
    if (!ok) break;
    // The reader holds at most the one byte it is consuming.
    const uint64_t taken = 8ull * source.GetCurrentPos();
    FUZZ_ASSERT(taken >= consumed_bits && taken - consumed_bits < 8);
  }
  FUZZ_ASSERT(out._Flush());
  // Every whole byte written matches the input; the last partial byte matches in the
  // bits that were consumed.
  const uint64_t whole = consumed_bits / 8;
  FUZZ_ASSERT(copy.GetBufferPos() == (consumed_bits + 7) / 8);
  for (uint64_t i = 0; i < whole; ++i) FUZZ_ASSERT(*copy._GetBufferAt(i) == input.data()[i]);
  if (consumed_bits % 8 != 0) {
    const uint8_t mask = static_cast<uint8_t>((1u << (consumed_bits % 8)) - 1);
    FUZZ_ASSERT((*copy._GetBufferAt(whole) & mask) == (input.data()[whole] & mask));
  }
  return 0;
}
