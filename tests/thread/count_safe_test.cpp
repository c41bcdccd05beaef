//===- count_safe_test.cpp - Saturating counts and checked arithmetic -----===//
#include "tavi/thread/count_safe.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <random>
#include <tuple>

namespace tavi {
namespace {

constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
constexpr uint64_t kAllOnes = ~uint64_t{0};
constexpr uint64_t k20Factorial = 2432902008176640000u;

using Op = bool (*)(strCountSafe&, uint64_t);
constexpr Op Set = [](strCountSafe& c, uint64_t v) { return c.Set(v); };
constexpr Op Add = [](strCountSafe& c, uint64_t v) { return c.Add(v); };
constexpr Op Mul = [](strCountSafe& c, uint64_t v) { return c.Multiply(v); };
constexpr Op Fact = [](strCountSafe& c, uint64_t n) { return c.Factorial(uint32_t(n)); };
constexpr Op AddFact = [](strCountSafe& c, uint64_t n) { return c.AddFactorial(uint32_t(n)); };

// Each operation from a start value, with its result and the value it leaves.
// All ones is the overflow mark: reaching it is an overflow, and it sticks.
TEST(CountSafe, OperationsSaturateAtAllOnes) {
  const std::tuple<uint64_t, Op, uint64_t, bool, uint64_t> cases[] = {
      {0, Set, 5, true, 5},
      {0, Set, kAllOnes, false, kAllOnes},
      {kAllOnes - 2, Add, 1, true, kAllOnes - 1},
      {kAllOnes - 1, Add, 1, false, kAllOnes},
      {kAllOnes, Add, 0, false, kAllOnes},
      {kAllOnes / 3 - 1, Mul, 3, true, kAllOnes - 3},
      {kAllOnes / 3, Mul, 3, false, kAllOnes},
      {123, Mul, 0, true, 0},
      {kAllOnes, Mul, 0, false, kAllOnes},
      {7, Fact, 0, true, 1},
      {7, Fact, 20, true, k20Factorial},
      {7, Fact, 21, false, kAllOnes},
      {6, AddFact, 4, true, 30},
      {0, AddFact, 21, false, kAllOnes},
      {kAllOnes - k20Factorial, AddFact, 20, false, kAllOnes},
      {kAllOnes - k20Factorial - 1, AddFact, 20, true, kAllOnes - 1}};
  for (const auto& [start, op, arg, ok, after] : cases) {
    SCOPED_TRACE(testing::Message() << start << " " << arg);
    strCountSafe c;
    c.value = start;
    EXPECT_EQ(op(c, arg), ok);
    EXPECT_EQ(c.value, after);
  }
}

// Every operation against the compiler's 128-bit integer: every triple of
// extreme operands, then random ones. Division by zero saturates towards the
// sign of the numerator, and 0 / 0 is an inexact 0.
TEST(SafeArithmetic, AgreesWithAWideReference) {
  __extension__ typedef __int128 Wide;
  const int64_t edges[] = {0,        1,         -1,           2,          -2,
                           1000,     -1000,     kMax,         kMin,       kMax - 1,
                           kMin + 1, 1LL << 32, -(1LL << 32), 3037000499, -3037000500};
  constexpr int kEdges = std::size(edges);
  constexpr int kTriples = kEdges * kEdges * kEdges;
  std::mt19937_64 rng(99);
  auto draw = [&]() -> int64_t {
    return rng() % 2 ? static_cast<int64_t>(rng()) : static_cast<int64_t>(rng()) >> (rng() % 63);
  };
  auto quotient = [](Wide n, Wide d) -> Wide {
    return d != 0 ? n / d : n > 0 ? Wide{kMax} + 1 : n < 0 ? Wide{kMin} - 1 : 0;
  };
  auto expect = [](int32_t code, const int64_t& got, Wide exact, bool remainder) {
    const int32_t want = exact > kMax   ? kSafeOverMax
                         : exact < kMin ? kSafeUnderMin
                         : remainder    ? kSafeInexact
                                        : kSafeExact;
    EXPECT_EQ(code, want);
    EXPECT_EQ(got, exact > kMax ? kMax : exact < kMin ? kMin : static_cast<int64_t>(exact));
  };
  for (int i = 0; i < kTriples + 20000; ++i) {
    const bool edge = i < kTriples;
    const int64_t a = edge ? edges[i % kEdges] : draw();
    const int64_t b = edge ? edges[i / kEdges % kEdges] : draw();
    const int64_t c = edge ? edges[i / kEdges / kEdges] : draw();
    SCOPED_TRACE(testing::Message() << a << " " << b << " " << c);
    const Wide product = static_cast<Wide>(a) * b;
    int64_t r;
    expect(SafeSum(r, a, b), r, static_cast<Wide>(a) + b, false);
    expect(SafeDif(r, a, b), r, static_cast<Wide>(a) - b, false);
    expect(SafeMulti(r, a, b), r, product, false);
    expect(SafeLinear(r, a, b, c), r, product + c, false);
    expect(SafeDiv(r, a, b), r, quotient(a, b), b == 0 || static_cast<Wide>(a) % b != 0);
    expect(SafeConversion(r, a, b, c), r, quotient(product, c), c == 0 || product % c != 0);
  }
}

}  // namespace
}  // namespace tavi
