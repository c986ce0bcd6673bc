#include <veltor/utils/Rounding.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace veltor::utils;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr int smallestInt = std::numeric_limits<int>::min();

TEST(Rounding, DecimalPlacesCountBothWaysFromThePoint)
{
    EXPECT_EQ(getRound(2.5, 0), 3);
    EXPECT_EQ(getRound(-2.5, 0), -3);
    EXPECT_EQ(getRound(1.005, 2), 1); // the double lies below the decimal half
    EXPECT_EQ(getRound(1234.5, -2), 1200);
    EXPECT_EQ(getFloor(-1.25, 1), -1.3);
    EXPECT_EQ(getCeiling(1.21, 1), 1.3);
    EXPECT_EQ(floatRound(2.5F, 0), 3.0F);
    EXPECT_EQ(floatRound(-0.25F, 1), -0.3F);
    EXPECT_EQ(floatFloor(1.29F, 1), 1.2F);
    EXPECT_EQ(floatCeiling(3.3e38F, -38), std::numeric_limits<float>::infinity());
}

TEST(Rounding, RoundingARoundedValueChangesNothing)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> value(-1e6, 1e6);
    for (int i = 0; i < 20000; ++i) {
        const int n = i % 13 - 4;
        const double once = getRound(value(random), n);
        ASSERT_EQ(getRound(once, n), once) << n;
    }
}

TEST(Rounding, SignificantDigitsFollowTheDecimalExponent)
{
    EXPECT_EQ(significantRound(123456, 2), 120000);
    EXPECT_EQ(significantRound(0.012345, 3), 0.0123);
    EXPECT_EQ(significantRound(-98765, 2), -99000);
    EXPECT_EQ(significantRound(0, 3), 0);
    EXPECT_EQ(significantCeiling(12.01, 2), 13);
    EXPECT_EQ(significantFloor(-12.01, 2), -13);
    EXPECT_EQ(getScaleLog(1000, 2), -1);
    EXPECT_EQ(getScaleLog(0.05, 1), 3);
    EXPECT_EQ(scaleRound(1.23456, 0.05), 1.235);
    EXPECT_EQ(scaleRound(3.14159, -1), 3.14159);
    EXPECT_EQ(scaleRound(3.14159, nan), 3.14159);
    EXPECT_EQ(roundByUnitSize({12.3456, 7.891}, {0.05, 0}), QPointF(12.346, 7.891));
}

TEST(Rounding, ValuesWithoutAnExponentOverflowNothing)
{
    EXPECT_EQ(getScaleLog(0, 3), smallestInt + 3);
    EXPECT_EQ(getScaleLog(infinity, 0), smallestInt);
    EXPECT_EQ(getScaleLog(nan, -1), std::numeric_limits<int>::max());
    EXPECT_TRUE(std::isnan(significantRound(infinity, 1)));
    EXPECT_TRUE(std::isnan(significantRound(nan, 1)));
    EXPECT_TRUE(std::isnan(getRound(5, smallestInt)));
    EXPECT_TRUE(std::isnan(scaleRound(5, infinity)));
}

TEST(CoarseRounding, TakesTheNearerStepAndTheUpperOneOnATie)
{
    EXPECT_EQ(coarseRound(37), 25);
    EXPECT_EQ(coarseRound(38), 50);
    EXPECT_EQ(coarseRound(3.75), 5);
    EXPECT_EQ(coarseRound(1.1), 1);
    EXPECT_EQ(coarseRound(0.0096), 0.01);
}

TEST(CoarseRounding, GivesZeroWhereNoStepLiesBelow)
{
    for (const double x : {100.0, -37.0, 0.0, nan, infinity}) {
        EXPECT_EQ(coarseRound(x), 0) << x;
    }
    const double oneStep = 1;
    EXPECT_EQ(coarseRound(37, {}, &oneStep, 1), 0);
}

TEST(CoarseRounding, AsksTheCallersChooserAboutTheCallersSteps)
{
    const double steps[] = {12, 6, 3};
    const auto lower = [](double mantissa, double lowerStep, double upperStep, double scale) {
        EXPECT_DOUBLE_EQ(mantissa, 7);
        EXPECT_EQ(upperStep, 12);
        EXPECT_EQ(scale, 10);
        return lowerStep;
    };
    EXPECT_EQ(coarseRound(70, lower, steps, 3), 60);
    EXPECT_EQ(coarseRound(20, lower, steps, 3), 0);
}

} // namespace
