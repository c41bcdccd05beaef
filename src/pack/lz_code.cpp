//===- lz_code.cpp - The LZ coders -----------------------------------------===//
//
// A coder first parses the block into references (LZX3Code with position lists per
// byte value, LZX4Code with hash chains), then decides on the literal tree and writes
// the stream. Parsing and writing are separate so that the tree can be chosen from
// the literals that are actually left.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "core/internal/endian.h"
#include "pack/internal/bit_io.h"
#include "pack/internal/code_tree.h"
#include "pack/internal/coder_path.h"
#include "tavi/pack/lz.h"

namespace tavi {

namespace {

using pack_internal::CodeTable;
using pack_internal::CodeTree;

constexpr uint32_t kMinLength = 5;
constexpr uint32_t kMaxLength = 32772;  // longest reference the coders write
constexpr uint32_t kMaxRun = 32767;     // 15-bit run length
// Bits of one run header when the block has a tree: V, F and R.
constexpr uint32_t kRunHeaderBits = 17;
constexpr uint32_t kBlockLiteralsOnly = 10;

struct Ref {
  uint64_t pos;
  uint32_t length;
  uint32_t distance;
};

uint32_t MatchLength(const uint8_t* a, const uint8_t* b, uint32_t from, uint32_t cap) {
  uint32_t n = from;
  while (n + 8 <= cap) {
    const uint64_t x = internal::LoadLE64(a + n) ^ internal::LoadLE64(b + n);
    if (x != 0) return n + static_cast<uint32_t>(std::countr_zero(x) / 8);
    n += 8;
  }
  while (n < cap && a[n] == b[n]) ++n;
  return n;
}

// --- LZX3Code's search: position lists per byte value -----------------------
//
// For every byte value the coder keeps up to 256 positions it occurred at. At p it
// walks the list of data[p] from its oldest entry in the window and, when the list
// is full, scans the data after the list's last entry for the same byte. The walk
// keeps the longest reference, the oldest of equals.
//
// The fast path finds the same references with less work: a reference needs five
// equal bytes, so it walks a hash chain over five-byte keys instead, and keeps a note
// of which positions the lists hold. A chained position is a candidate of the lists'
// walk when its list holds it or, for a full list, when it lies after the list's last
// entry (the scan's share); every other position the walk would try cannot give a
// reference, so both walks end on the same one.

// Up to 256 positions per byte value, oldest first, in a ring per value.
class PositionLists {
 public:
  static constexpr uint32_t kEntries = 256;

  explicit PositionLists(uint64_t window) : window_(window) {}

  uint32_t Count(uint8_t b) const { return lists_[b].count; }
  // At is the i-th oldest recorded position of b.
  uint64_t At(uint8_t b, uint32_t i) const {
    const List& list = lists_[b];
    return list.pos[(list.first + i) % kEntries];
  }

  // Records position p of byte b. A full list first drops the entries that have left
  // the window; when none has, p stays unrecorded (the byte scan finds it) and the
  // result is false.
  bool Record(uint8_t b, uint64_t p) {
    List& list = lists_[b];
    if (list.count == kEntries) {
      const uint64_t lo = p > window_ ? p - window_ : 0;
      while (list.count != 0 && list.pos[list.first] < lo) {
        list.first = (list.first + 1) % kEntries;
        --list.count;
      }
      if (list.count == kEntries) return false;
    }
    list.pos[(list.first + list.count++) % kEntries] = p;
    return true;
  }

 private:
  // Positions are read only below count, so only the counts start cleared: a small
  // block does not pay for clearing half a megabyte.
  struct List {
    uint64_t pos[kEntries];
    uint32_t first = 0;
    uint32_t count = 0;
  };
  uint64_t window_;
  List lists_[256];
};

// The best reference at p among candidates offered in ascending order: the longest,
// the oldest of equals.
class BestMatch {
 public:
  BestMatch(const uint8_t* d, uint64_t size, uint64_t p)
      : d_(d),
        p_(p),
        max_len_(static_cast<uint32_t>(std::min<uint64_t>(size - p, kMaxLength))),
        limit_(static_cast<int64_t>(p) - static_cast<int64_t>(kMinLength)) {}

  // Whether c is beyond the latest candidate that can still give a longer reference.
  // The limit is signed: it starts below the block for the first positions.
  bool Beyond(uint64_t c) const { return static_cast<int64_t>(c) > limit_; }
  uint64_t Limit() const { return static_cast<uint64_t>(limit_); }
  uint32_t length() const { return best_; }
  uint32_t distance() const { return static_cast<uint32_t>(p_ - best_c_); }

  // Offer tries candidate c <= Limit(); false once no later candidate can be longer.
  bool Offer(uint64_t c) {
    const uint64_t room = p_ - c - 1;  // distance >= length + 1
    const uint32_t cap = static_cast<uint32_t>(std::min<uint64_t>(room, max_len_));
    if (cap <= best_) return false;  // later candidates are closer still
    // A candidate differing at byte best cannot be longer than best.
    if (best_ != 0 && d_[c + best_] != d_[p_ + best_]) return true;
    if (cap >= kMinLength && std::memcmp(d_ + c + 1, d_ + p_ + 1, 4) == 0) {
      const uint32_t len = MatchLength(d_ + c, d_ + p_, kMinLength, cap);
      if (len > best_) {
        best_ = len;
        best_c_ = c;
        limit_ = static_cast<int64_t>(p_) - len - 1;
        if (limit_ <= static_cast<int64_t>(c)) return false;
      }
    }
    return true;
  }

 private:
  const uint8_t* d_;
  uint64_t p_;
  uint32_t max_len_;
  int64_t limit_;
  uint32_t best_ = 0;
  uint64_t best_c_ = 0;
};

// The lists' own walk for the byte b = d[p], whose list is not empty.
void WalkLists(const PositionLists& lists, const uint8_t* d, uint8_t b, uint64_t lo, BestMatch& m) {
  const uint32_t count = lists.Count(b);
  // Entries are ascending: skip the ones below the window by bisection.
  uint32_t i = 0;
  for (uint32_t n = count; n != 0;) {
    const uint32_t half = n / 2;
    if (lists.At(b, i + half) < lo) {
      i += half + 1;
      n -= half + 1;
    } else {
      n = half;
    }
  }
  for (; i < count; ++i) {
    const uint64_t c = lists.At(b, i);
    if (m.Beyond(c) || !m.Offer(c)) return;
  }
  if (count != PositionLists::kEntries) return;
  // The list has overflowed: scan the data beyond its last entry for b.
  for (uint64_t c = std::max(lists.At(b, count - 1) + 1, lo); !m.Beyond(c); ++c) {
    const auto* hit =
        static_cast<const uint8_t*>(std::memchr(d + c, b, static_cast<size_t>(m.Limit() - c + 1)));
    if (hit == nullptr) return;
    c = static_cast<uint64_t>(hit - d);
    if (!m.Offer(c)) return;
  }
}

// Hash chains over the five bytes at every position, with the lists' verdict on each.
class KeyChains {
 public:
  KeyChains(const uint8_t* d, uint64_t size, uint64_t window)
      : d_(d),
        // The ring outlives the window, so no live link is overwritten.
        ring_mask_(std::bit_ceil(std::min(window, size) + kMinLength + 1) - 1),
        hash_shift_(64 - std::clamp(static_cast<int>(std::bit_width(size)), 8, 16)),
        head_(uint64_t{1} << (64 - hash_shift_), -1),
        prev_(std::make_unique_for_overwrite<int64_t[]>(ring_mask_ + 1)),
        held_(std::make_unique_for_overwrite<uint8_t[]>(ring_mask_ + 1)),
        found_(std::make_unique_for_overwrite<uint64_t[]>(ring_mask_ + 1)) {}

  void NoteRecorded(uint64_t p, bool held) { held_[p & ring_mask_] = held; }

  // Offers m the chained candidates before p - 4 that the lists' walk would try, in
  // ascending order. last is the latest recorded position of d[p].
  void Walk(uint64_t p, uint64_t lo, uint64_t last, BestMatch& m) {
    const uint64_t mask = ring_mask_;
    int64_t* const prev = prev_.get();
    for (; next_ + kMinLength <= p; ++next_) {
      const uint64_t h = Hash(next_);
      prev[next_ & mask] = head_[h];
      head_[h] = static_cast<int64_t>(next_);
    }
    const uint8_t* const held = held_.get();
    uint64_t* const found = found_.get();
    const uint64_t key = Key(p);
    size_t n = 0;
    for (int64_t c = head_[Hash(p)]; c >= static_cast<int64_t>(lo);
         c = prev[static_cast<uint64_t>(c) & mask]) {
      const auto cand = static_cast<uint64_t>(c);
      if (Key(cand) == key && (held[cand & mask] || cand > last)) found[n++] = cand;
    }
    while (n != 0) {
      const uint64_t c = found[--n];
      if (m.Beyond(c) || !m.Offer(c)) return;
    }
  }

 private:
  uint64_t Key(uint64_t p) const { return internal::LoadLE32(d_ + p) | uint64_t{d_[p + 4]} << 32; }
  uint64_t Hash(uint64_t p) const { return (Key(p) * 0x9E3779B97F4A7C15u) >> hash_shift_; }

  const uint8_t* d_;
  uint64_t ring_mask_;
  int hash_shift_;
  uint64_t next_ = 0;  // the next position to chain
  std::vector<int64_t> head_;
  // prev, held and found are read only where written.
  std::unique_ptr<int64_t[]> prev_;
  std::unique_ptr<uint8_t[]> held_;
  std::unique_ptr<uint64_t[]> found_;  // one search's candidates, newest first
};

std::vector<Ref> ParseX3(const uint8_t* d, uint64_t size, uint64_t window, bool fast) {
  std::vector<Ref> refs;
  if (size <= kBlockLiteralsOnly) return refs;
  auto lists = std::make_unique<PositionLists>(window);
  std::unique_ptr<KeyChains> chains;
  if (fast) chains = std::make_unique<KeyChains>(d, size, window);
  auto record = [&](uint64_t q) {
    const bool held = lists->Record(d[q], q);
    if (fast) chains->NoteRecorded(q, held);
  };
  uint64_t p = 0;
  while (size - p >= kMinLength) {
    const uint8_t b = d[p];
    if (lists->Count(b) == 0) {
      record(p++);
      continue;
    }
    const uint64_t lo = p > window ? p - window : 0;
    BestMatch m(d, size, p);
    if (fast) {
      chains->Walk(p, lo, lists->At(b, lists->Count(b) - 1), m);
    } else {
      WalkLists(*lists, d, b, lo, m);
    }
    if (m.length() >= kMinLength) {
      refs.push_back({p, m.length(), m.distance()});
      for (const uint64_t end = p + m.length(); p < end;) record(p++);
    } else {
      record(p++);
    }
  }
  return refs;
}

// --- LZX4Code's search: hash chains with lazy evaluation ---------------------

class HashChains {
 public:
  static constexpr uint32_t kHashBits = 15;
  static constexpr uint32_t kRing = 65536;  // more than the window: no live entry is reused
  static constexpr uint32_t kMaxChain = 24;
  static constexpr uint32_t kNiceLength = 96;

  HashChains(const uint8_t* d, uint64_t size, uint64_t window)
      : d_(d), size_(size), window_(window) {
    std::fill(head_, head_ + (1u << kHashBits), -1);
  }

  // Enters every position before p that is not entered yet.
  void EnterUpTo(uint64_t p) {
    for (; next_ < p && next_ + 4 <= size_; ++next_) {
      const uint32_t h = Hash(next_);
      prev_[next_ % kRing] = head_[h];
      head_[h] = static_cast<int64_t>(next_);
    }
    if (next_ < p) next_ = p;
  }

  // Longest reference at p (0 when none of at least 5 bytes); p's predecessors
  // must be entered.
  uint32_t Find(uint64_t p, uint32_t& distance) const {
    const uint64_t lo = p > window_ ? p - window_ : 0;
    const uint32_t max_len = static_cast<uint32_t>(std::min<uint64_t>(size_ - p, kMaxLength));
    uint32_t best = kMinLength - 1;
    int64_t c = head_[Hash(p)];
    const uint32_t first4 = internal::LoadLE32(d_ + p);
    for (uint32_t chain = kMaxChain; chain != 0 && c >= 0; --chain) {
      const auto cand = static_cast<uint64_t>(c);
      if (cand < lo) break;
      const uint64_t room = p - cand - 1;
      const uint32_t cap = static_cast<uint32_t>(std::min<uint64_t>(room, max_len));
      if (cap > best && d_[cand + best] == d_[p + best] &&
          internal::LoadLE32(d_ + cand) == first4) {
        const uint32_t len = MatchLength(d_ + cand, d_ + p, 4, cap);
        if (len > best) {
          best = len;
          distance = static_cast<uint32_t>(p - cand);
          if (len >= kNiceLength || len == max_len) break;
        }
      }
      c = prev_[cand % kRing];
    }
    return best >= kMinLength ? best : 0;
  }

 private:
  uint32_t Hash(uint64_t p) const {
    return (internal::LoadLE32(d_ + p) * 2654435761u) >> (32 - kHashBits);
  }

  const uint8_t* d_;
  uint64_t size_;
  uint64_t window_;
  uint64_t next_ = 0;
  int64_t head_[1u << kHashBits];
  int64_t prev_[kRing];
};

// Average literal cost in bits, from the code lengths the whole block would get.
double LiteralBits(const uint8_t* d, uint64_t size) {
  uint64_t counts[256] = {};
  pack_internal::CountBytes(d, size, counts);
  auto tree = std::make_unique<CodeTree>();
  auto table = std::make_unique<CodeTable>();
  if (!pack_internal::BuildCodeTree(counts, *tree, *table)) return 8.0;
  uint64_t bits = 0;
  for (uint32_t s = 0; s < 256; ++s) bits += counts[s] * table->length[s];
  const double avg = static_cast<double>(bits) / static_cast<double>(size);
  return std::clamp(avg, 1.0, 8.0);
}

std::vector<Ref> ParseX4(const uint8_t* d, uint64_t size, uint64_t window) {
  std::vector<Ref> refs;
  if (size <= kBlockLiteralsOnly) return refs;
  auto chains = std::make_unique<HashChains>(d, size, window);
  // A reference costs 21 bits (36 beyond 35 bytes) and, inside a literal stretch,
  // one more run header; it is taken only when the literals it replaces cost more.
  const double lit = LiteralBits(d, size);
  const auto min_inside =
      std::max(kMinLength, static_cast<uint32_t>((21 + kRunHeaderBits) / lit) + 1);
  const auto min_after = std::max(kMinLength, static_cast<uint32_t>(21 / lit) + 1);
  uint64_t p = 0;
  uint64_t literals_from = 0;
  while (size - p >= kMinLength) {
    chains->EnterUpTo(p);
    uint32_t dist = 0;
    const uint32_t len = chains->Find(p, dist);
    const uint32_t needed = p == literals_from ? min_after : min_inside;
    if (len < needed) {
      ++p;
      continue;
    }
    // Lazy step: a clearly longer reference one byte on wins, p becomes a literal.
    if (len < HashChains::kNiceLength && size - (p + 1) >= kMinLength) {
      chains->EnterUpTo(p + 1);
      uint32_t dist2 = 0;
      const uint32_t len2 = chains->Find(p + 1, dist2);
      if (len2 > len) {
        ++p;
        continue;
      }
    }
    refs.push_back({p, len, dist});
    p += len;
    literals_from = p;
  }
  return refs;
}

// --- Writing a parsed block -------------------------------------------------

// Plans the coding of one literal run of n <= 32767 bytes when the block has a tree:
// splits it into stretches, each Huffman-coded or raw, where a stretch coded the other
// way saves more than a run header. Returns the bits; fills modes (1 Huffman, 0 raw,
// per byte) when given.
uint64_t PlanRun(const uint8_t* run, uint32_t n, const CodeTable& table,
                 std::vector<uint8_t>* modes, std::vector<uint8_t>& from) {
  // cost[m]: cheapest coding of the bytes so far ending in mode m (0 raw, 1 Huffman).
  uint64_t raw = kRunHeaderBits + 8;
  uint64_t huf = kRunHeaderBits + table.length[run[0]];
  if (modes != nullptr) from.assign(n, 0);
  for (uint32_t i = 1; i < n; ++i) {
    const uint64_t raw_switch = huf + kRunHeaderBits;
    const uint64_t huf_switch = raw + kRunHeaderBits;
    const bool raw_from_huf = raw_switch < raw;
    const bool huf_from_raw = huf_switch < huf;
    const uint64_t next_raw = (raw_from_huf ? raw_switch : raw) + 8;
    const uint64_t next_huf = (huf_from_raw ? huf_switch : huf) + table.length[run[i]];
    if (modes != nullptr) {
      from[i] = static_cast<uint8_t>((raw_from_huf ? 1 : 0) | (huf_from_raw ? 2 : 0));
    }
    raw = next_raw;
    huf = next_huf;
  }
  uint32_t mode = huf <= raw ? 1 : 0;
  if (modes != nullptr) {
    modes->resize(n);
    for (uint32_t i = n; i-- > 0;) {
      (*modes)[i] = static_cast<uint8_t>(mode);
      if (i > 0 && (from[i] & (mode == 0 ? 1 : 2))) mode ^= 1;
    }
  }
  return huf <= raw ? huf : raw;
}

template <typename Writer>
bool WriteBlock(Writer& w, const uint8_t* d, uint64_t size, const std::vector<Ref>& refs) {
  // Literal statistics and the tree decision.
  uint64_t counts[256] = {};
  uint64_t pos = 0;
  for (const Ref& r : refs) {
    pack_internal::CountBytes(d + pos, r.pos - pos, counts);
    pos = r.pos + r.length;
  }
  pack_internal::CountBytes(d + pos, size - pos, counts);

  auto tree = std::make_unique<CodeTree>();
  auto table = std::make_unique<CodeTable>();
  std::vector<uint8_t> modes;
  std::vector<uint8_t> from;
  // Calls f(start, length) for each run of at most 32767 literals.
  auto for_each_run = [&](auto&& f) {
    uint64_t at = 0;
    auto gap = [&](uint64_t end) {
      for (; at < end;) {
        const auto n = static_cast<uint32_t>(std::min<uint64_t>(end - at, kMaxRun));
        f(at, n);
        at += n;
      }
    };
    for (const Ref& r : refs) {
      gap(r.pos);
      f(r.pos, 0xFFFFFFFF);  // marks the reference
      at = r.pos + r.length;
    }
    gap(size);
  };
  bool use_tree = pack_internal::BuildCodeTree(counts, *tree, *table) && table->max_length <= 56;
  if (use_tree) {
    uint64_t with = pack_internal::TreeBits(*tree);
    uint64_t without = 0;
    for_each_run([&](uint64_t at, uint32_t n) {
      if (n == 0xFFFFFFFF) return;
      with += PlanRun(d + at, n, *table, nullptr, from);
      without += 16 + 8 * uint64_t{n};
    });
    use_tree = with < without;
  }

  w.Put(use_tree ? 1 : 0, 1);
  if (use_tree) pack_internal::WriteCodeTree(w, *tree);
  const Ref* next_ref = refs.data();
  for_each_run([&](uint64_t at, uint32_t n) {
    if (n == 0xFFFFFFFF) {
      const Ref& r = *next_ref++;
      const uint64_t head = (r.distance - 5) | (1u << 15);
      if (r.length <= 35) {
        w.Put(head | (uint64_t{r.length - 5} << 16), 21);
      } else {
        w.Put(head | (uint64_t{31} << 16) | (uint64_t{r.length - 36} << 21), 36);
      }
      return;
    }
    const uint8_t* run = d + at;
    if (!use_tree) {
      w.Put(n, 16);
      w.Bytes(run, n);
      return;
    }
    PlanRun(run, n, *table, &modes, from);
    for (uint32_t i = 0; i < n;) {
      uint32_t j = i + 1;
      while (j < n && modes[j] == modes[i]) ++j;
      w.Put((j - i) | (uint64_t{modes[i]} << 16), 17);
      if (modes[i]) {
        for (uint32_t k = i; k < j; ++k) w.Put(table->code[run[k]], table->length[run[k]]);
      } else {
        w.Bytes(run + i, j - i);
      }
      i = j;
    }
  });
  return w.Finish();
}

bool Code(XIO& out, const uint8_t* data, uint64_t size, uint64_t window, bool strong) {
  window = std::min(window, kLZWindowMax);
  std::vector<Ref> refs;
  try {
    const bool fast = pack_internal::CoderActivePath() == pack_internal::CoderPath::kFast;
    refs = strong ? ParseX4(data, size, window) : ParseX3(data, size, window, fast);
  } catch (const std::bad_alloc&) {
    out.SetSafeErrorCode(kErrNoMemory);
    return false;
  }
  if (pack_internal::CoderActivePath() == pack_internal::CoderPath::kPlain) {
    pack_internal::PlainBitWriter w(out);
    return WriteBlock(w, data, size, refs);
  }
  auto w = std::make_unique<pack_internal::BitSink>(out);
  return WriteBlock(*w, data, size, refs);
}

}  // namespace

bool LZX3Code(XIO& out, const uint8_t* data, uint64_t size, uint64_t window) {
  return Code(out, data, size, window, false);
}

bool LZX4Code(XIO& out, const uint8_t* data, uint64_t size, uint64_t window) {
  return Code(out, data, size, window, true);
}

}  // namespace tavi
