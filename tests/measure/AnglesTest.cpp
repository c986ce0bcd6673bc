#include <veltor/utils/Angles.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace veltor::utils;

namespace {

constexpr double pi = 3.14159265358979323846;

TEST(Angles, DirectionsAndLengthsOfSegments)
{
    EXPECT_EQ(pointsAngle({0, 0}, {0, 1}), -pi / 2);
    EXPECT_EQ(pointsAngleDirect({0, 0}, {0, 1}), pi / 2);
    EXPECT_EQ(lineAngle({1, 1, 3, -1}), pi / 4);
    EXPECT_EQ(lineAngleDirect({1, 1, 3, -1}), -pi / 4);
    EXPECT_EQ(lengthSquared(QLineF(1, 2, 4, 6)), 25);
    EXPECT_EQ(scaleLength({1, 2}, {3, 6}, -1), QPointF(-1, -2));
}

TEST(Angles, ComeIntoOnePeriod)
{
    EXPECT_EQ(normalizeAngle(-30, 360), 330);
    EXPECT_EQ(normalizeAngle(720, 360), 0);
    EXPECT_EQ(normalizeAngle(-360, 360), 0);
    EXPECT_EQ(normalizeAngle(-1e-20, 360), 360); // the sum rounds up
    EXPECT_EQ(fixAngle(-30, 360), 330);
    EXPECT_EQ(fixAngle(-1e-20, 360), 360);
    EXPECT_TRUE(std::isnan(normalizeAngle(std::nan(""), 360)));
    EXPECT_TRUE(std::isnan(fixAngle(std::numeric_limits<double>::infinity(), 360)));
}

TEST(Angles, BothWaysIntoOnePeriodAgreeButForLastBits)
{
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> angle(-5000, 5000);
    for (const double period : {2 * pi, 360.0, 400.0}) {
        for (int i = 0; i < 2000; ++i) {
            const double a = angle(random);
            const double difference = std::fabs(normalizeAngle(a, period) - fixAngle(a, period));
            ASSERT_LE(std::min(difference, period - difference), 1e-10) << a << " of " << period;
        }
    }
}

TEST(Angles, SeparationOfTwoDirections)
{
    EXPECT_EQ(angleBetween(10, 350, 360), 20);
    EXPECT_EQ(angleBetween(350, 10, 360), 20);
    EXPECT_EQ(angleBetween(0, 720, 360), 0);
    EXPECT_EQ(angleBetween(-170, 170, 360), 20);
    EXPECT_EQ(angleBetween(10, 740, 360), 350); // further apart than a period: the complement
}

TEST(Angles, Quadrants)
{
    EXPECT_EQ(quadrant(3 * pi / 4), 1);
    EXPECT_EQ(quadrant(pi + 0.1), 2);
    EXPECT_EQ(quadrant(-0.1), 3);
    EXPECT_EQ(quadrant(-4 * pi - 0.1), 3);
    EXPECT_EQ(quadrant(1e300), 0);
    EXPECT_EQ(quadrant(std::nan("")), 0);
}

TEST(Angles, SquareDragKeepsTheLongerOffset)
{
    EXPECT_EQ(squareEndPoint({0, 0}, {3, 5}), QPointF(5, 5));
    EXPECT_EQ(squareEndPoint({0, 0}, {-5, 3}), QPointF(-5, 5));
    EXPECT_EQ(squareEndPoint({0, 0}, {2, -2}), QPointF(2, -2));
    EXPECT_EQ(squareEndPoint({0, 0}, {0, 5}), QPointF(-5, 5));
    EXPECT_EQ(squareEndPoint({1, 1}, {6, 1}), QPointF(6, -4));
}

} // namespace
