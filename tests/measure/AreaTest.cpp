#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>

#include <gtest/gtest.h>

#include <geodesic.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace veltor::utils;
using Ring = QVector<QPointF>;

namespace {

constexpr double a = 6378137;
constexpr double rf = 298.257223563;
constexpr double pi = 3.14159265358979323846;

const Ring square{{0, 0}, {1, 0}, {1, 1}, {0, 1}};

/// A star around a centre within the longitudes of the map.
Ring randomRing(std::mt19937_64& random)
{
    std::uniform_real_distribution<double> radius(1, 20);
    Ring ring;
    for (int i = 0; i < 40; ++i) {
        const double r = radius(random);
        ring << QPointF(30 + r * std::cos(i * pi / 20), 40 + r * std::sin(i * pi / 20));
    }
    return ring;
}

TEST(PlanarArea, HasItsSignOnlyInTheDeterminant)
{
    EXPECT_EQ(determinant(square), -2);
    EXPECT_EQ(cartesianPolygonAreaPerimeter(square), std::make_pair(1.0, 4.0));
    EXPECT_EQ(cartesianPolygonAreaPerimeter(square + Ring{square[0]}), std::make_pair(1.0, 4.0));
    EXPECT_EQ(cartesianRectArea({0, 0, -2, 3}), -6);
}

TEST(Area, OfTooFewPoints)
{
    const auto none = std::make_pair(0.0, 0.0);
    for (const Ring& ring : {Ring{}, Ring{{10, 20}}}) {
        EXPECT_EQ(std::make_pair(determinant(ring), cartesianPolygonArea(ring)), none);
        EXPECT_EQ(cartesianPolygonAreaPerimeter(ring), none);
        EXPECT_EQ(sphericalPolygonAreaPerimeter(ring, a), none);
        EXPECT_EQ(ellipsoidPolygonAreaPerimeter(ring, a, rf), none);
    }
    const Ring two{{10, 20}, {11, 20}};
    EXPECT_EQ(sphericalPolygonAreaPerimeter(two, a), none);
    EXPECT_EQ(ellipsoidPolygonAreaPerimeter(two, a, 0), none);
    const auto [area, perimeter] = ellipsoidPolygonAreaPerimeter(two, a, rf);
    EXPECT_NEAR(area, 0, 0.1);
    EXPECT_NEAR(perimeter, 2 * ellipsoidDistance(two[0], two[1], a, rf), 1e-7);
}

TEST(SphericalArea, OfKnownFigures)
{
    const Ring octant{{0, 0}, {90, 0}, {0, 90}};
    const auto [area, perimeter] = sphericalPolygonAreaPerimeter(octant, 2);
    EXPECT_NEAR(area, 4 * pi / 2, 1e-14);
    EXPECT_NEAR(perimeter, 2 * 3 * pi / 2, 1e-14);
    // Polar caps, their edges cut into short arcs and closed along the meridian and the pole. The triangles
    // hang from the north pole, so around the south pole the rest of the sphere comes out.
    Ring north;
    Ring south;
    for (int i = 0; i <= 36000; ++i) {
        north << QPointF(-180 + i * 0.01, 60);
        south << QPointF(-180 + i * 0.01, -60);
    }
    north << QPointF(180, 90) << QPointF(-180, 90);
    south << QPointF(180, -90) << QPointF(-180, -90);
    const double cap = 2 * pi * (1 - std::sin(pi / 3));
    EXPECT_NEAR(sphericalPolygonArea(north, 1), cap, 1e-7);
    EXPECT_NEAR(sphericalPolygonArea(south, 1), 4 * pi - cap, 1e-7);
    Ring repeated = octant;
    repeated.insert(1, octant[1]);
    EXPECT_EQ(sphericalPolygonAreaPerimeter(repeated, 2), std::make_pair(area, perimeter));
}

TEST(Area, IsTheSameFromAnyStartAndInEitherDirection)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 50; ++i) {
        const Ring ring = randomRing(random);
        Ring other = ring;
        std::rotate(other.begin(), other.begin() + i % ring.size(), other.end());
        if (i % 2 != 0) {
            std::reverse(other.begin(), other.end());
        }
        if (i % 3 == 0) {
            other << other.first();
        }
        const auto expectEqual = [](std::pair<double, double> x, std::pair<double, double> y) {
            EXPECT_NEAR(x.first, y.first, 1e-10 * y.first);
            EXPECT_NEAR(x.second, y.second, 1e-12 * y.second);
        };
        expectEqual(cartesianPolygonAreaPerimeter(other), cartesianPolygonAreaPerimeter(ring));
        expectEqual(sphericalPolygonAreaPerimeter(other, a), sphericalPolygonAreaPerimeter(ring, a));
        expectEqual(ellipsoidPolygonAreaPerimeter(other, a, rf), ellipsoidPolygonAreaPerimeter(ring, a, rf));
        // A flattening next to nothing is next to the sphere.
        expectEqual(ellipsoidPolygonAreaPerimeter(ring, a, 1e13), sphericalPolygonAreaPerimeter(ring, a));
        EXPECT_EQ(ellipsoidPolygonAreaPerimeter(ring, a, 0), sphericalPolygonAreaPerimeter(ring, a));
    }
}

TEST(EllipsoidalArea, IsBitForBitThatOfTheGeodesicRoutines)
{
    geod_geodesic geodesic;
    geod_init(&geodesic, a, 1 / rf);
    std::mt19937_64 random(8);
    for (int i = 0; i < 20; ++i) {
        const Ring ring = randomRing(random);
        std::vector<double> latitudes;
        std::vector<double> longitudes;
        for (const QPointF& p : ring) {
            latitudes.push_back(p.y());
            longitudes.push_back(p.x());
        }
        double area = 0;
        double perimeter = 0;
        geod_polygonarea(&geodesic, latitudes.data(), longitudes.data(), ring.size(), &area, &perimeter);
        EXPECT_EQ(ellipsoidPolygonAreaPerimeter(ring, a, rf), std::make_pair(std::fabs(area), perimeter));
        EXPECT_EQ(ellipsoidPolygonArea(ring, a, rf), std::fabs(area));
    }
}

TEST(Area, NotANumberStaysOne)
{
    Ring ring = square;
    ring[2].setX(std::nan(""));
    EXPECT_TRUE(std::isnan(cartesianPolygonArea(ring)));
    EXPECT_TRUE(std::isnan(sphericalPolygonArea(ring, a)));
    EXPECT_TRUE(std::isnan(ellipsoidPolygonArea(ring, a, rf)));
    EXPECT_TRUE(std::isnan(ellipsoidPolygonAreaPerimeter(ring, a, rf).second));
}

} // namespace
