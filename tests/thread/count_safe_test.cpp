//===- count_safe_test.cpp - Saturating counts and checked arithmetic -----===//
#include "tavi/thread/count_safe.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tavi {
namespace {

constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
constexpr uint64_t kAllOnes = ~uint64_t{0};

// The compiler's 128-bit integer, as an independent reference.
__extension__ typedef __int128 Wide;

TEST(CountSafe, AddAndMultiplySaturate) {
  strCountSafe c;
  EXPECT_TRUE(c.Set(5));
  EXPECT_TRUE(c += 10);
  EXPECT_EQ(uint64_t{c}, 15u);
  EXPECT_TRUE(c *= 3);
  EXPECT_EQ(c.value, 45u);
  EXPECT_FALSE(c.Set(kAllOnes));

  c = kAllOnes - 11;
  EXPECT_TRUE(c.Add(10));
  // A sum that would equal all ones is an overflow.
  EXPECT_FALSE(c.Add(1));
  EXPECT_TRUE(c.IsOverflow());
  EXPECT_FALSE(c.Add(0));  // and it stays one

  c = kAllOnes / 3 - 1;
  EXPECT_TRUE(c.Multiply(3));
  c = kAllOnes / 3;
  EXPECT_FALSE(c.Multiply(3));
  EXPECT_EQ(c.value, kAllOnes);
  c = 123;
  EXPECT_TRUE(c.Multiply(0));
  EXPECT_EQ(c.value, 0u);
}

TEST(CountSafe, Factorials) {
  strCountSafe c;
  EXPECT_TRUE(c.Factorial(0));
  EXPECT_EQ(c.value, 1u);
  EXPECT_TRUE(c.Factorial(1));
  EXPECT_EQ(c.value, 1u);
  EXPECT_TRUE(c.Factorial(5));
  EXPECT_EQ(c.value, 120u);
  EXPECT_TRUE(c.Factorial(20));
  EXPECT_EQ(c.value, 2432902008176640000u);
  EXPECT_FALSE(c.Factorial(21));
  EXPECT_EQ(c.value, kAllOnes);

  c = 6;
  EXPECT_TRUE(c.AddFactorial(4));
  EXPECT_EQ(c.value, 30u);
  EXPECT_FALSE(c.AddFactorial(21));
  EXPECT_EQ(c.value, kAllOnes);
  c = kAllOnes - 2432902008176640000u;
  EXPECT_FALSE(c.AddFactorial(20));
  c = kAllOnes - 2432902008176640001u;
  EXPECT_TRUE(c.AddFactorial(20));
}

TEST(SafeArithmetic, SumSaturates) {
  int64_t r = 0;
  EXPECT_EQ(SafeSum(r, kMax, 1), kSafeOverMax);
  EXPECT_EQ(r, kMax);
  EXPECT_EQ(SafeSum(r, kMin, -1), kSafeUnderMin);
  EXPECT_EQ(r, kMin);
}

// The cases the wide reference below cannot judge: division by zero.
TEST(SafeArithmetic, DivisionByZeroSaturatesTowardsTheSign) {
  int64_t r = 1;
  EXPECT_EQ(SafeDiv(r, 7, 0), kSafeOverMax);
  EXPECT_EQ(r, kMax);
  EXPECT_EQ(SafeDiv(r, -7, 0), kSafeUnderMin);
  EXPECT_EQ(r, kMin);
  EXPECT_EQ(SafeDiv(r, 0, 0), kSafeInexact);
  EXPECT_EQ(r, 0);
  EXPECT_EQ(SafeConversion(r, -3, 5, 0), kSafeUnderMin);
  EXPECT_EQ(SafeConversion(r, kMax, 0, 0), kSafeInexact);
  EXPECT_EQ(r, 0);
}

// Every operation against a 128-bit reference: every triple of extreme
// operands, then random ones.
TEST(SafeArithmetic, AgreesWithAWideReference) {
  std::mt19937_64 rng(99);
  const int64_t edges[] = {0,        1,         -1,           2,          -2,
                           1000,     -1000,     kMax,         kMin,       kMax - 1,
                           kMin + 1, 1LL << 32, -(1LL << 32), 3037000499, -3037000500};
  constexpr int kEdges = sizeof(edges) / sizeof(edges[0]);
  constexpr int kTriples = kEdges * kEdges * kEdges;
  auto draw = [&]() -> int64_t {
    return rng() % 2 ? static_cast<int64_t>(rng()) : static_cast<int64_t>(rng()) >> (rng() % 63);
  };
  auto expect = [](int64_t got, int32_t code, Wide exact, bool hasRemainder) {
    if (exact > kMax) {
      EXPECT_EQ(code, kSafeOverMax);
      EXPECT_EQ(got, kMax);
    } else if (exact < kMin) {
      EXPECT_EQ(code, kSafeUnderMin);
      EXPECT_EQ(got, kMin);
    } else {
      EXPECT_EQ(code, hasRemainder ? kSafeInexact : kSafeExact);
      EXPECT_EQ(got, static_cast<int64_t>(exact));
    }
  };
  for (int i = 0; i < kTriples + 20000; ++i) {
    const bool edge = i < kTriples;
    const int64_t a = edge ? edges[i % kEdges] : draw();
    const int64_t b = edge ? edges[i / kEdges % kEdges] : draw();
    const int64_t c = edge ? edges[i / kEdges / kEdges] : draw();
    SCOPED_TRACE(testing::Message() << a << " " << b << " " << c);
    int64_t r;
    int32_t code = SafeSum(r, a, b);
    expect(r, code, static_cast<Wide>(a) + b, false);
    code = SafeDif(r, a, b);
    expect(r, code, static_cast<Wide>(a) - b, false);
    code = SafeMulti(r, a, b);
    expect(r, code, static_cast<Wide>(a) * b, false);
    code = SafeLinear(r, a, b, c);
    expect(r, code, static_cast<Wide>(a) * b + c, false);
    if (b != 0) {
      code = SafeDiv(r, a, b);
      expect(r, code, static_cast<Wide>(a) / b, static_cast<Wide>(a) % b != 0);
    }
    if (c != 0) {
      const Wide product = static_cast<Wide>(a) * b;
      code = SafeConversion(r, a, b, c);
      expect(r, code, product / c, product % c != 0);
    }
  }
}

}  // namespace
}  // namespace tavi
