//===- io_bench.cpp - Bit fields and packed numbers -------------------------===//
//
// Bit fields of 1 to 64 bits into and out of an XBuffer through XBitStream (bits per
// second), beside the same fields moved one SetBit/GetBit at a time; packed numbers
// written and read through an XBuffer (numbers per second), beside a plain LEB128
// varint coder on a byte vector as the well-known peer.
//
//===----------------------------------------------------------------------===//
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "tavi/core/buffer.h"
#include "tavi/io/bit_stream.h"
#include "tavi/io/pack_number.h"

namespace {

using tavi::XBitStream;
using tavi::XBuffer;

constexpr int kFields = 4096;

std::vector<uint64_t> RandomValues(int n, uint32_t bits) {
  std::mt19937_64 rng(42);
  std::vector<uint64_t> v(n);
  for (auto& x : v) x = bits >= 64 ? rng() : rng() & ((uint64_t{1} << bits) - 1);
  return v;
}

// Values whose magnitudes spread over every packed length.
std::vector<uint64_t> SpreadValues(int n) {
  std::mt19937_64 rng(7);
  std::vector<uint64_t> v(n);
  for (auto& x : v) x = rng() >> (rng() % 64);
  return v;
}

void WriteFields(XBuffer& buffer, const std::vector<uint64_t>& values, uint32_t width) {
  XBitStream bits(&buffer);
  for (uint64_t v : values) bits.SetBits(v, width);
  bits._Flush();
}

void CountBits(benchmark::State& state, uint32_t width) {
  state.counters["bits/s"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * kFields * width, benchmark::Counter::kIsRate);
}

// The spread values as packed numbers.
void WritePacked(XBuffer& buffer) {
  for (uint64_t v : SpreadValues(kFields)) tavi::_WritePackNumber(buffer, v);
}

// Reads kFields values through `read` and keeps their sum, so none is optimised away.
template <typename Read>
void SumFields(Read read) {
  uint64_t sum = 0, v;
  for (int i = 0; i < kFields; ++i) {
    read(v);
    sum += v;
  }
  benchmark::DoNotOptimize(sum);
}

// Packed numbers of every length written into a buffer; `write` is inlined.
template <typename Write>
void WriteNumbers(benchmark::State& state, Write write) {
  const auto values = SpreadValues(kFields);
  XBuffer buffer(1 << 16);
  for (auto _ : state) {
    buffer.ResetBufferPos();
    for (uint64_t v : values) write(buffer, v);
    benchmark::DoNotOptimize(buffer.GetBuffer());
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}

void BM_SetBits(benchmark::State& state) {
  const auto width = static_cast<uint32_t>(state.range(0));
  const auto values = RandomValues(kFields, width);
  XBuffer buffer(1 << 16);
  for (auto _ : state) {
    buffer.ResetBufferPos();
    XBitStream bits(&buffer);
    for (uint64_t v : values) bits.SetBits(v, width);
    bits._Flush();
    benchmark::DoNotOptimize(buffer.GetBuffer());
  }
  state.SetItemsProcessed(state.iterations() * kFields * width);
  CountBits(state, width);
}
BENCHMARK(BM_SetBits)->Arg(1)->Arg(3)->Arg(7)->Arg(13)->Arg(32)->Arg(57)->Arg(64);

void BM_SetBitsOneByOne(benchmark::State& state) {
  const auto width = static_cast<uint32_t>(state.range(0));
  const auto values = RandomValues(kFields, width);
  XBuffer buffer(1 << 16);
  for (auto _ : state) {
    buffer.ResetBufferPos();
    XBitStream bits(&buffer);
    for (uint64_t v : values) {
      for (uint32_t b = 0; b < width; ++b) bits.SetBit((v >> b) & 1);
    }
    bits._Flush();
    benchmark::DoNotOptimize(buffer.GetBuffer());
  }
  CountBits(state, width);
}
BENCHMARK(BM_SetBitsOneByOne)->Arg(1)->Arg(7)->Arg(32)->Arg(64);

void BM_GetBits(benchmark::State& state) {
  const auto width = static_cast<uint32_t>(state.range(0));
  const auto values = RandomValues(kFields, width);
  XBuffer buffer(1 << 16);
  WriteFields(buffer, values, width);
  for (auto _ : state) {
    buffer.ResetCurrentPos();
    XBitStream bits(&buffer);
    SumFields([&](uint64_t& v) { bits.GetBits(v, width); });
  }
  CountBits(state, width);
}
BENCHMARK(BM_GetBits)->Arg(1)->Arg(3)->Arg(7)->Arg(13)->Arg(32)->Arg(57)->Arg(64);

void BM_GetBitsOneByOne(benchmark::State& state) {
  const auto width = static_cast<uint32_t>(state.range(0));
  const auto values = RandomValues(kFields, width);
  XBuffer buffer(1 << 16);
  WriteFields(buffer, values, width);
  for (auto _ : state) {
    buffer.ResetCurrentPos();
    XBitStream bits(&buffer);
    uint64_t sum = 0;
    for (int i = 0; i < kFields; ++i) {
      uint64_t v = 0;
      bool bit;
      for (uint32_t b = 0; b < width; ++b) {
        bits.GetBit(bit);
        v |= uint64_t{bit} << b;
      }
      sum += v;
    }
    benchmark::DoNotOptimize(sum);
  }
  CountBits(state, width);
}
BENCHMARK(BM_GetBitsOneByOne)->Arg(1)->Arg(7)->Arg(32)->Arg(64);

void BM_WritePackNumber64(benchmark::State& state) {
  WriteNumbers(state, [](XBuffer& b, uint64_t v) { tavi::_WritePackNumber(b, v); });
}
BENCHMARK(BM_WritePackNumber64);

void BM_ReadPackNumber64(benchmark::State& state) {
  XBuffer buffer(1 << 16);
  WritePacked(buffer);
  for (auto _ : state) {
    buffer.ResetCurrentPos();
    SumFields([&](uint64_t& v) { tavi::_ReadPackNumber(buffer, v); });
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(BM_ReadPackNumber64);

void BM_WritePackNumber32Family(benchmark::State& state) {
  WriteNumbers(state, [](XBuffer& b, uint64_t v) { tavi::_WritePackNumber32(b, v); });
}
BENCHMARK(BM_WritePackNumber32Family);

void BM_GetPackNumber64(benchmark::State& state) {
  XBuffer buffer(1 << 16);
  WritePacked(buffer);
  for (auto _ : state) {
    const void* p = buffer.GetBuffer();
    SumFields([&](uint64_t& v) { tavi::GetPackNumber(v, p, &p); });
  }
  state.SetItemsProcessed(state.iterations() * kFields);
}
BENCHMARK(BM_GetPackNumber64);

void BM_BitPackNumber64(benchmark::State& state) {
  const auto values = SpreadValues(kFields);
  XBuffer buffer(1 << 16);
  for (auto _ : state) {
    buffer.ResetBufferPos();
    XBitStream out(&buffer);
    for (uint64_t v : values) tavi::WritePackNumber(out, v);
    out._Flush();
    XBitStream in(&buffer);
    SumFields([&](uint64_t& v) { tavi::ReadPackNumber(in, v); });
  }
  state.SetItemsProcessed(state.iterations() * kFields * 2);
}
BENCHMARK(BM_BitPackNumber64);

// The peer: LEB128 varints (7 bits per byte) on a byte vector, no stream interface.
void BM_Leb128WriteRead(benchmark::State& state) {
  const auto values = SpreadValues(kFields);
  std::vector<uint8_t> bytes(kFields * 10);
  for (auto _ : state) {
    uint8_t* p = bytes.data();
    for (uint64_t v : values) {
      while (v >= 0x80) {
        *p++ = static_cast<uint8_t>(v | 0x80);
        v >>= 7;
      }
      *p++ = static_cast<uint8_t>(v);
    }
    const uint8_t* q = bytes.data();
    uint64_t sum = 0;
    for (int i = 0; i < kFields; ++i) {
      uint64_t v = 0;
      for (int shift = 0;; shift += 7) {
        const uint8_t b = *q++;
        v |= uint64_t{b & 0x7Fu} << shift;
        if (b < 0x80) break;
      }
      sum += v;
    }
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kFields * 2);
}
BENCHMARK(BM_Leb128WriteRead);

void BM_PackNumberWriteRead(benchmark::State& state) {
  const auto values = SpreadValues(kFields);
  XBuffer buffer(1 << 16);
  for (auto _ : state) {
    buffer.ResetBufferPos();
    for (uint64_t v : values) tavi::_WritePackNumber(buffer, v);
    SumFields([&](uint64_t& v) { tavi::_ReadPackNumber(buffer, v); });
  }
  state.SetItemsProcessed(state.iterations() * kFields * 2);
}
BENCHMARK(BM_PackNumberWriteRead);

}  // namespace
