#include <veltor/utils/Distance.h>

#include "support/Table.h"

#include <gtest/gtest.h>

#include <geodesic.h>

#include <cmath>
#include <random>
#include <thread>

using namespace veltor::utils;

namespace {

constexpr double a = 6378137;
constexpr double rf = 298.257223563;
constexpr double radiansPerDegree = 0.017453292519943295;

QPointF randomPosition(std::mt19937_64& random)
{
    return {std::uniform_real_distribution<double>(-180, 180)(random),
            std::uniform_real_distribution<double>(-89, 89)(random)};
}

TEST(Distance, FormsAgreeWithTheReferenceTable)
{
    const auto rows = veltor::test::readTable("measure/data/geodesics.csv", ',');
    ASSERT_GT(rows.size(), 400U);
    for (const QStringList& row : rows) {
        SCOPED_TRACE(row.join(QLatin1Char(' ')).toStdString());
        const auto number = [&](int column) { return row[column].toDouble(); };
        const double rowA = number(1);
        const double rowRf = number(2);
        const QPointF p(number(3), number(4));
        const QPointF q(number(5), number(6));
        const double expected = number(7);
        EXPECT_NEAR(ellipsoidDistance(p, q, rowA, rowRf), expected, 3e-8);
        EXPECT_NEAR(ellipsoidDistance(q, p, rowA, rowRf), expected, 3e-8);
        const auto [distance, azimuth] = backGeodesicProblem(p, q, rowA, rowRf);
        EXPECT_NEAR(distance, expected, 3e-8);
        const QPointF end = directGeodesicProblem(p, azimuth, distance, rowA, rowRf);
        EXPECT_NEAR(ellipsoidDistance(end, q, rowA, rowRf), 0, 1e-7);
        EXPECT_GE(azimuth, 0);
        EXPECT_LT(azimuth, 360);
        if (row[0] != QLatin1String("tiny")) {
            EXPECT_NEAR(std::remainder(azimuth - number(8), 360), 0, 1e-9);
        }
        if (row[0] != QLatin1String("antipodal") && std::fabs(rowRf) > 200) {
            EXPECT_NEAR(vincentyDistance(p, q, rowA, rowRf), expected, 2e-4);
        }
    }
}

TEST(Distance, ShortFormsAreAsNearAsTheySay)
{
    std::mt19937_64 random(4);
    for (int i = 0; i < 2000; ++i) {
        const QPointF p = randomPosition(random);
        const QPointF q = randomPosition(random);
        const double pq = ellipsoidDistance(p, q, a, rf);
        ASSERT_NEAR(sphericalDistance(p, q), pq, 0.0057 * pq);
        if (pq < 18e6) {
            ASSERT_NEAR(lambertDistance(p, q, a, rf), pq, 1.2e-5 * pq);
            ASSERT_NEAR(vincentyDistance(p, q, a, rf), pq, 2e-4);
        }
    }
}

TEST(Distance, OnPlaneAndSphere)
{
    EXPECT_DOUBLE_EQ(cartesianDistance({0, 0}, {3e200, 4e200}), 5e200);
    EXPECT_NEAR(sphericalDistance({10, 20}, {10, 21}), 111194.87428, 1e-4);
    EXPECT_NEAR(sphericalDistance({0, 60}, {180, 60}), 60 * 111194.87428, 1e-3);
    std::mt19937_64 random(5);
    for (int i = 0; i < 5000; ++i) { // roundings above a haversine of 1 must not make NaN
        const QPointF p = randomPosition(random);
        ASSERT_NEAR(sphericalDistance(p, {p.x() + 180, -p.y()}), 6370997.0 * 180 * radiansPerDegree, 0.2);
    }
}

TEST(Distance, SphericalFallbacksReadDegreesOrRadians)
{
    const QPointF p1(0.1, 0.2);
    const QPointF p2(0.3, 0.5);
    EXPECT_NEAR(ellipsoidDistance(p1, p2, a, 0), sphericalDistance(p1, p2) * a / 6370997.0, 1e-8);
    const double inRadians = sphericalDistance(p1 / radiansPerDegree, p2 / radiansPerDegree) * a / 6370997.0;
    for (const double flat : {0.0, 1e-12, -1e-12}) {
        EXPECT_NEAR(vincentyDistance(p1, p2, a, flat), inRadians, 1e-7);
        EXPECT_NEAR(lambertDistance(p1, p2, a, flat), inRadians, 1e-7);
    }
    // Past a quarter turn the haversine of next to nothing may round below 0.
    const QPointF farNorth(3.1415925716228501, 34.938561966158289);
    EXPECT_NEAR(vincentyDistance({0, -31.796969272763498}, farNorth, 1, 0), 0, 1e-6);
}

TEST(Distance, VincentyAndLambertAtCoincidenceAndAntipodes)
{
    EXPECT_EQ(lambertDistance({1e-200, 5}, {2e-200, 5}, a, rf),
              lambertDistance({2e-200, 5}, {1e-200, 5}, a, rf));
    const QPointF nearAntipode(179.7, 0.5); // the iteration does not settle
    EXPECT_EQ(vincentyDistance({0, 0}, nearAntipode, a, rf), lambertDistance({0, 0}, nearAntipode, a, rf));
    EXPECT_NEAR(vincentyDistance({0, 0}, nearAntipode, a, rf), ellipsoidDistance({0, 0}, nearAntipode, a, rf),
                40e3);
}

TEST(Distance, DirectProblemUnrollsTheLongitude)
{
    const double equator = 2 * 3.14159265358979323846 * a;
    EXPECT_NEAR(directGeodesicProblem({170, 0}, 90, equator, a, rf).x(), 530, 1e-9);
    EXPECT_NEAR(directGeodesicProblem({170, 0}, 90, -equator / 4, a, rf).x(), 80, 1e-9);
}

TEST(Distance, BackAzimuthLiesWithinOneTurn)
{
    EXPECT_NEAR(backGeodesicProblem({10, 0}, {9, 0}, a, rf).second, 270, 1e-12);
    // A hair west of north: 360 less that hair rounds to 360.
    EXPECT_EQ(backGeodesicProblem({0, 0}, {-1e-15, 80}, a, rf).second, 0);
}

TEST(Distance, ThreadsAndChangingEllipsoidsGetTheirOwnGeodesic)
{
    const auto check = [] {
        std::mt19937_64 random(6);
        for (int i = 0; i < 500; ++i) {
            const double inverse = i % 3 == 0 ? rf : 100.0 + i % 2;
            const QPointF p = randomPosition(random);
            const QPointF q = randomPosition(random);
            geod_geodesic fresh;
            geod_init(&fresh, a, 1 / inverse);
            double expected = 0;
            geod_inverse(&fresh, p.y(), p.x(), q.y(), q.x(), &expected, nullptr, nullptr);
            ASSERT_EQ(ellipsoidDistance(p, q, a, inverse), expected);
        }
    };
    std::thread other(check);
    check();
    other.join();
}

} // namespace
