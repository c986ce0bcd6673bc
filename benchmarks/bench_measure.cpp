// Distances and areas beside their peers: PROJ called directly, GeographicLib, Boost.Geometry, and a
// haversine written by hand. See docs/measurement.md.

#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>

#include <GeographicLib/Geodesic.hpp>
#include <benchmark/benchmark.h>
#include <boost/geometry/core/radian_access.hpp>
#include <boost/geometry/formulas/vincenty_inverse.hpp>
#include <boost/geometry/srs/spheroid.hpp>
#include <geodesic.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using veltor::utils::ellipsoidDistance;
using veltor::utils::ellipsoidPolygonArea;
using veltor::utils::lambertDistance;
using veltor::utils::sphericalDistance;
using veltor::utils::vincentyDistance;

constexpr double a = 6378137;
constexpr double rf = 298.257223563;
constexpr double radians = 0.017453292519943295;

struct Pair
{
    QPointF p1, p2;
};

/// 0: anywhere, 1: some kilometres, 2: some hundreds of kilometres.
const std::vector<Pair>& pairs(int64_t kind)
{
    static const auto sets = [] {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> unit(-1, 1);
        std::vector<std::vector<Pair>> result(3, std::vector<Pair>(4096));
        for (size_t i = 0; i < result.size(); ++i) {
            for (Pair& pair : result[i]) {
                const auto position = [&] { return QPointF(180 * unit(random), 80 * unit(random)); };
                const double reach = i == 1 ? 0.05 : 4;
                pair.p1 = position();
                pair.p2 = i == 0 ? position() : pair.p1 + QPointF(unit(random), unit(random)) * reach;
            }
        }
        return result;
    }();
    return sets[static_cast<size_t>(kind)];
}

template <typename Function>
void eachPair(benchmark::State& state, Function distance)
{
    const std::vector<Pair>& set = pairs(state.range(0));
    for (auto _ : state) {
        for (const Pair& pair : set) {
            benchmark::DoNotOptimize(distance(pair.p1, pair.p2));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(set.size()));
    state.SetLabel(state.range(0) == 0 ? "random" : state.range(0) == 1 ? "near" : "regional");
}

void ellipsoidOurs(benchmark::State& state)
{
    eachPair(state, [](QPointF p, QPointF q) { return ellipsoidDistance(p, q, a, rf); });
}

void ellipsoidProj(benchmark::State& state)
{
    geod_geodesic geodesic;
    geod_init(&geodesic, a, 1 / rf);
    eachPair(state, [&](QPointF p, QPointF q) {
        double distance = 0;
        geod_inverse(&geodesic, p.y(), p.x(), q.y(), q.x(), &distance, nullptr, nullptr);
        return distance;
    });
}

void ellipsoidGeographicLib(benchmark::State& state)
{
    const GeographicLib::Geodesic geodesic(a, 1 / rf);
    eachPair(state, [&](QPointF p, QPointF q) {
        double distance = 0;
        geodesic.Inverse(p.y(), p.x(), q.y(), q.x(), distance);
        return distance;
    });
}

void vincentyOurs(benchmark::State& state)
{
    eachPair(state, [](QPointF p, QPointF q) { return vincentyDistance(p, q, a, rf); });
}

void vincentyBoost(benchmark::State& state)
{
    using Formula = boost::geometry::formula::vincenty_inverse<double, true, false>;
    const boost::geometry::srs::spheroid<double> spheroid(a, a * (1 - 1 / rf));
    eachPair(state, [&](QPointF p, QPointF q) {
        return Formula::apply(p.x() * radians, p.y() * radians, q.x() * radians, q.y() * radians, spheroid)
            .distance;
    });
}

void lambertOurs(benchmark::State& state)
{
    eachPair(state, [](QPointF p, QPointF q) { return lambertDistance(p, q, a, rf); });
}

void sphericalOurs(benchmark::State& state)
{
    eachPair(state, [](QPointF p, QPointF q) { return sphericalDistance(p, q); });
}

void sphericalByHand(benchmark::State& state)
{
    eachPair(state, [](QPointF p, QPointF q) {
        const double sinLat = std::sin((p.y() - q.y()) * radians / 2);
        const double sinLon = std::sin((p.x() - q.x()) * radians / 2);
        const double h =
            sinLat * sinLat + sinLon * sinLon * std::cos(p.y() * radians) * std::cos(q.y() * radians);
        return 2 * 6370997.0 * std::asin(std::sqrt(h));
    });
}

/// A ring of some thousand vertices with edges of some kilometres, as a coast has it.
const QVector<QPointF>& coast()
{
    static const QVector<QPointF> ring = [] {
        std::mt19937_64 random(2);
        std::uniform_real_distribution<double> radius(4.9, 5.1);
        QVector<QPointF> points;
        for (int i = 0; i < 4096; ++i) {
            const double angle = i * 2 * 3.14159265358979323846 / 4096;
            points << QPointF(20 + radius(random) * std::cos(angle), 50 + radius(random) * std::sin(angle));
        }
        return points;
    }();
    return ring;
}

void areaOurs(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(ellipsoidPolygonArea(coast(), a, rf));
    }
    state.SetItemsProcessed(state.iterations() * coast().size());
}

/// As a caller of PROJ has it who keeps his coordinates in two arrays.
void areaProj(benchmark::State& state)
{
    geod_geodesic geodesic;
    geod_init(&geodesic, a, 1 / rf);
    std::vector<double> latitudes;
    std::vector<double> longitudes;
    for (const QPointF& p : coast()) {
        latitudes.push_back(p.y());
        longitudes.push_back(p.x());
    }
    for (auto _ : state) {
        double area = 0;
        double perimeter = 0;
        geod_polygonarea(&geodesic, latitudes.data(), longitudes.data(), coast().size(), &area, &perimeter);
        benchmark::DoNotOptimize(area);
    }
    state.SetItemsProcessed(state.iterations() * coast().size());
}

BENCHMARK(ellipsoidOurs)->DenseRange(0, 2);
BENCHMARK(ellipsoidProj)->DenseRange(0, 2);
BENCHMARK(ellipsoidGeographicLib)->DenseRange(0, 2);
BENCHMARK(vincentyOurs)->DenseRange(0, 2);
BENCHMARK(vincentyBoost)->DenseRange(0, 2);
BENCHMARK(lambertOurs)->DenseRange(0, 2);
BENCHMARK(sphericalOurs)->DenseRange(0, 2);
BENCHMARK(sphericalByHand)->DenseRange(0, 2);
BENCHMARK(areaOurs);
BENCHMARK(areaProj);

} // namespace
