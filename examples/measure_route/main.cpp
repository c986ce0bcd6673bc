// Measures a route, and the area that it encloses, on the model of the Earth that a keyword names.
//
//     measure_route plane|sphere|ellipsoid LON LAT LON LAT [LON LAT]...

#include <veltor/core/CalcMode.h>
#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>
#include <veltor/utils/NumberToText.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <cmath>
#include <cstdio>
#include <limits>

using namespace veltor::utils;
using veltor::core::CalcMode;

namespace {

constexpr double sphereRadius = 6370997;          // metres, the sphere of sphericalDistance()
constexpr double wgs84Axis = 6378137;             // metres
constexpr double wgs84Flattening = 298.257223563; // inverse

//! [distance]
double distance(CalcMode mode, QPointF from, QPointF to)
{
    switch (mode) {
    case CalcMode::Cartesian:
        return cartesianDistance(from, to);
    case CalcMode::Spherical:
        return sphericalDistance(from, to);
    case CalcMode::Ellipsoidal:
        return ellipsoidDistance(from, to, wgs84Axis, wgs84Flattening);
    case CalcMode::Auto:
    case CalcMode::Invalid:
        break; // decided by the caller before
    }
    return std::numeric_limits<double>::quiet_NaN();
}
//! [distance]

//! [area]
double area(CalcMode mode, const QVector<QPointF>& ring)
{
    switch (mode) {
    case CalcMode::Cartesian:
        return cartesianPolygonArea(ring);
    case CalcMode::Spherical:
        return sphericalPolygonArea(ring, sphereRadius);
    case CalcMode::Ellipsoidal:
        return ellipsoidPolygonArea(ring, wgs84Axis, wgs84Flattening);
    case CalcMode::Auto:
    case CalcMode::Invalid:
        break;
    }
    return std::numeric_limits<double>::quiet_NaN();
}
//! [area]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    //! [mode]
    CalcMode mode = veltor::core::findCalcMode(words.value(0));
    if (mode == CalcMode::Auto) {
        mode = CalcMode::Ellipsoidal; // our choice for degrees
    }
    //! [mode]
    QVector<QPointF> route;
    for (int i = 1; i + 1 < words.size(); i += 2) {
        route << QPointF(words[i].toDouble(), words[i + 1].toDouble()); // longitude first
    }
    if (mode == CalcMode::Invalid || route.size() < 2) {
        std::fputs("Usage: measure_route plane|sphere|ellipsoid LON LAT LON LAT...\n", stderr);
        return 2;
    }

    double length = 0;
    for (int i = 1; i < route.size(); ++i) {
        length += distance(mode, route[i - 1], route[i]);
    }
    std::printf("length %s m\n", qPrintable(toStringFixup(length, 3)));
    if (mode == CalcMode::Ellipsoidal) {
        const auto [metres, azimuthDeg] = backGeodesicProblem(route[0], route[1], wgs84Axis, wgs84Flattening);
        std::printf("course %s degrees for the first %s m\n", qPrintable(toStringFixup(azimuthDeg, 6)),
                    qPrintable(toStringFixup(metres, 3)));
    }
    std::printf("area %s m2\n", qPrintable(toStringFixup(area(mode, route), 0)));
    return 0;
}
