//===- lz_code.cpp - The LZ coders -----------------------------------------===//
//
// A coder first parses the block into references (LZX3Code with position lists per
// byte value, LZX4Code with hash chains), then decides on the literal tree and writes
// the stream. Parsing and writing are separate so that the tree can be chosen from
// the literals that are actually left.
//
//===----------------------------------------------------------------------===//
#include <algorithm>
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

class PositionLists {
 public:
  static constexpr uint32_t kEntries = 256;

  explicit PositionLists(uint64_t window) : window_(window) {}

  struct List {
    uint64_t pos[kEntries];
    uint32_t count;
  };
  List& operator[](uint8_t b) { return lists_[b]; }

  // Records position p of byte b. A full list first drops the entries that have left
  // the window; when none has, p stays unrecorded (the byte scan finds it).
  void Record(uint8_t b, uint64_t p) {
    List& list = lists_[b];
    if (list.count == kEntries) {
      // Entries are in ascending order: the ones out of the window are a prefix.
      const uint64_t lo = p > window_ ? p - window_ : 0;
      const uint64_t* first_kept = std::lower_bound(list.pos, list.pos + kEntries, lo);
      const auto dropped = static_cast<uint32_t>(first_kept - list.pos);
      if (dropped != 0) {
        std::memmove(list.pos, first_kept, (kEntries - dropped) * sizeof list.pos[0]);
        list.count = kEntries - dropped;
      }
    }
    if (list.count < kEntries) list.pos[list.count++] = p;
  }

 private:
  uint64_t window_;
  List lists_[256] = {};
};

std::vector<Ref> ParseX3(const uint8_t* d, uint64_t size, uint64_t window) {
  std::vector<Ref> refs;
  if (size <= kBlockLiteralsOnly) return refs;
  auto lists = std::make_unique<PositionLists>(window);
  uint64_t p = 0;
  while (size - p >= kMinLength) {
    const uint8_t b = d[p];
    PositionLists::List& list = (*lists)[b];
    if (list.count == 0) {
      lists->Record(b, p);
      ++p;
      continue;
    }
    const uint64_t lo = p > window ? p - window : 0;
    const uint32_t max_len = static_cast<uint32_t>(std::min<uint64_t>(size - p, kMaxLength));
    uint32_t best = 0;
    uint64_t best_c = 0;
    // limit is the latest candidate that can still give a longer reference; signed,
    // as it starts below the block for the first positions.
    int64_t limit = static_cast<int64_t>(p) - static_cast<int64_t>(kMinLength);
    // Evaluates candidate c; false ends the walk.
    auto consider = [&](uint64_t c) {
      const uint64_t room = p - c - 1;  // distance >= length + 1
      const uint32_t cap = static_cast<uint32_t>(std::min<uint64_t>(room, max_len));
      if (cap <= best) return false;  // later candidates are closer still
      // A candidate differing at byte best cannot be longer than best.
      if (best != 0 && d[c + best] != d[p + best]) return true;
      if (cap >= kMinLength && std::memcmp(d + c + 1, d + p + 1, 4) == 0) {
        const uint32_t len = MatchLength(d + c, d + p, kMinLength, cap);
        if (len > best) {
          best = len;
          best_c = c;
          limit = static_cast<int64_t>(p) - len - 1;
          if (limit <= static_cast<int64_t>(c)) return false;
        }
      }
      return true;
    };
    bool walking = true;
    const auto first =
        static_cast<uint32_t>(std::lower_bound(list.pos, list.pos + list.count, lo) - list.pos);
    for (uint32_t i = first; walking && i < list.count; ++i) {
      const uint64_t c = list.pos[i];
      if (static_cast<int64_t>(c) > limit) {
        walking = false;
        break;
      }
      walking = consider(c);
    }
    if (walking && list.count == PositionLists::kEntries) {
      // The list has overflowed: scan the data beyond its last entry for b.
      uint64_t c = std::max(list.pos[list.count - 1] + 1, lo);
      while (walking && static_cast<int64_t>(c) <= limit) {
        const auto* hit = static_cast<const uint8_t*>(
            std::memchr(d + c, b, static_cast<size_t>(static_cast<uint64_t>(limit) - c + 1)));
        if (hit == nullptr) break;
        c = static_cast<uint64_t>(hit - d);
        walking = consider(c);
        ++c;
      }
    }
    if (best >= kMinLength) {
      refs.push_back({p, best, static_cast<uint32_t>(p - best_c)});
      for (uint64_t q = p; q < p + best; ++q) lists->Record(d[q], q);
      p += best;
    } else {
      lists->Record(b, p);
      ++p;
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
    refs = strong ? ParseX4(data, size, window) : ParseX3(data, size, window);
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
