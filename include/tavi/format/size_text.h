//===- size_text.h - Byte sizes, ratios and speeds as text ------*- C++ -*-===//
//
// This file declares the displays built on the integer formatters: a byte size
// with its unit ("1.50 kB"), a ratio with up to two decimals, a percentage with
// exactly two, and a transfer speed ("12.00 MB/s"). Each appends to a stream with
// one write and returns false when that fails (the cause is in out's error state).
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/export.h"

namespace tavi {

class XIO;

// XWriteSize writes value / divisor bytes with a unit. While the amount is above
// 1024 units it moves up a level (the pair is first rescaled to divisor 100, two
// decimals, then divided by 1024), up to level 3. It writes the quotient, `point`,
// the remainder zero-padded to the digits of divisor - 1 (one digit for divisors up
// to 10), and the level's label: " B", " kB", " MB", " TB". There is no gigabyte
// label: the third step of 1024 is " TB", which existing readers of this text
// expect; amounts of 1024^4 units and more stay at level 3. A divisor of 0 sets
// error 0x20000011 and returns false.
TAVI_API bool XWriteSize(XIO& out, uint64_t value, uint64_t divisor, char16_t point);
// XWriteSize for a plain byte count: two decimals (bytes * 100 with divisor 100)
// when bytes * 100 fits 64 bits, else divisor 1. 1536 gives "1.50 kB", 1048576
// "1024.00 kB", 2147483648 "2.00 TB".
TAVI_API bool XWriteSize(XIO& out, uint64_t bytes, char16_t point);
// XWritePercents writes value / scale with up to two decimals, in 32-bit unsigned
// arithmetic with truncation. Scale 0 or 1 writes value as it is; scale 10 and 100
// keep one and two decimals of value; any other scale gives two decimals when
// value * 100 fits 32 bits, none when even value * 10 would not, else one. The
// remainder is always padded to two digits, so value 15 of scale 10 is "1.05".
TAVI_API bool XWritePercents(XIO& out, uint32_t value, uint32_t scale, char16_t point);
// XWriteSizePercents writes part / whole * 100 truncated to exactly two decimals,
// without a "%" sign: 1 of 3 is "33.33". Both are divided by 10 while part * 10000
// would overflow. A whole of 0 (before or after that) sets error 0x20000014 and
// returns false.
TAVI_API bool XWriteSizePercents(XIO& out, uint64_t part, uint64_t whole, char16_t point);
// WriteSpeed writes the rate of `bytes` over `ticks` of the process timer as a
// byte size followed by "/s". An interval below one millisecond (or negative), or
// one that rounds to nothing when huge byte counts are scaled down, writes only
// U+2013 (en dash).
TAVI_API bool WriteSpeed(XIO& out, int64_t ticks, uint64_t bytes, char16_t point);

}  // namespace tavi
