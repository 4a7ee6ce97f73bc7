#include "random/trandom.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// "To twelve places": within half a unit of the twelfth decimal.
constexpr double TwelvePlaces = 5e-13;
constexpr double SixPlaces = 5e-7;

std::vector<double> firstValues(int32_t seed, int count) {
  tdseed(seed);
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.push_back(tdrand());
  return values;
}

TEST(Tdrand, Seed0GivesTheCheckValuesToTwelvePlaces) {
  tdseed(0);
  EXPECT_NEAR(tdrand(), 0.274272015222, TwelvePlaces);
  EXPECT_NEAR(tdrand(), 0.569060856690, TwelvePlaces);
  EXPECT_NEAR(tdrand(), 0.325302937318, TwelvePlaces);
}

TEST(Tdrand, Seed1GivesItsCheckValueToSixPlaces) {
  tdseed(1);
  EXPECT_NEAR(tdrand(), 0.390043, SixPlaces);
}

TEST(Tdrand, SeedMinus54774StartsAtMinusOneAndRecovers) {
  // ix1 is -1 after the first addition, and non-negative from the first step on.
  tdseed(-54774);
  EXPECT_GE(ix1, 0);
  EXPECT_GE(ix2, 0);
  EXPECT_GE(ix3, 0);
  EXPECT_NEAR(tdrand(), 0.753323, SixPlaces);
}

TEST(Tdrand, SameSeedGivesTheSameSequence) {
  EXPECT_EQ(firstValues(12345, 1000), firstValues(12345, 1000));
  EXPECT_NE(firstValues(12345, 10), firstValues(12346, 10));
}

TEST(Tdrand, ValuesLieInZeroToOneForSeedsFromMinus54780Up) {
  for (int32_t seed : {-54780, -54779, -54774, -1, 0, 1, 999999, 2147428874}) {
    tdseed(seed);
    EXPECT_GE(ix3, 0) << "seed " << seed;
    for (int i = 0; i < 10000; ++i) {
      const double r = tdrand();
      ASSERT_GE(r, 0.0) << "seed " << seed;
      ASSERT_LT(r, 1.0) << "seed " << seed;
    }
  }
}

TEST(Tdrand, SeedMinus54781DrivesTheThirdGeneratorNegative) {
  tdseed(-54781);
  EXPECT_LT(ix3, 0);
}

TEST(Tdrand, SeedAbove2147428874WrapsToANegativeState) {
  tdseed(2147428874);  // the addition just fits
  EXPECT_GE(ix1, 0);
  tdseed(2147428875);  // the addition wraps at 32 bits
  EXPECT_LT(ix3, 0);
}

using TdrandDeathTest = ::testing::Test;

constexpr const char* InternalError = "^tdrand\\(\\) INTERNAL ERROR: source\\\\trandom\n$";

TEST_F(TdrandDeathTest, SeedMinus60000EndsTheProcessAtTheFirstCall) {
  EXPECT_EXIT(
      {
        tdseed(-60000);
        tdrand();
        std::fputs("survived the first call", stderr);
        std::exit(0);
      },
      ::testing::ExitedWithCode(1), InternalError);
}

TEST_F(TdrandDeathTest, SeedMinus54781EndsTheProcessWithinThreeCalls) {
  EXPECT_EXIT(
      {
        tdseed(-54781);
        for (int i = 0; i < 3; ++i) tdrand();
        std::exit(0);
      },
      ::testing::ExitedWithCode(1), InternalError);
}

TEST_F(TdrandDeathTest, WrappedSeedEndsTheProcessWithinThreeCalls) {
  EXPECT_EXIT(
      {
        tdseed(2147483647);
        for (int i = 0; i < 3; ++i) tdrand();
        std::exit(0);
      },
      ::testing::ExitedWithCode(1), InternalError);
}

}  // namespace
