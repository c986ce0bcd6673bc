// Distances and azimuths by every formula.

#include <veltor/utils/Distance.h>

#include "CentralAngle.h"
#include "Geodesic.h"

#include <veltor/utils/FuzzyGeometry.h>

#include <cmath>

namespace veltor::utils {
namespace {

constexpr double defaultSphereRadius = 6370997.0;
constexpr double qtPrecision = 1e12;

bool isSphere(double rf)
{
    return std::fabs(rf) <= tolerance;
}

/// Tangent of the reduced latitude.
double reducedTangent(double latitudeDeg, double f)
{
    return (1 - f) * std::tan(latitudeDeg * radiansPerDegree);
}

double square(double x)
{
    return x * x;
}

/// Lambert's formula on reduced latitudes, in radians.
double lambertCore(double beta1, double beta2, QPointF p1, QPointF p2, double a, double f)
{
    const double sigma =
        centralAngleOfRadians({p1.x() * radiansPerDegree, beta1}, {p2.x() * radiansPerDegree, beta2});
    const double sinHalfSquared = square(std::sin(sigma / 2));
    if (sinHalfSquared == 0) {
        return a * sigma; // so near that the square underflows: the correction would be 0 / 0
    }
    const double p = (beta1 + beta2) / 2;
    const double q = (beta2 - beta1) / 2;
    const double sinSigma = std::sin(sigma);
    const double x =
        (sigma - sinSigma) * square(std::sin(p)) * square(std::cos(q)) / square(std::cos(sigma / 2));
    const double y = (sigma + sinSigma) * square(std::cos(p)) * square(std::sin(q)) / sinHalfSquared;
    return a * (sigma - f / 2 * (x + y));
}

/// Vincenty's iteration for the difference of longitude on the auxiliary sphere. Names are the paper's.
class VincentyInverse
{
public:
    VincentyInverse(double tanU1, double tanU2, double f)
        : m_f(f)
        , m_cosU1(1 / std::sqrt(1 + tanU1 * tanU1))
        , m_sinU1(tanU1 * m_cosU1)
        , m_cosU2(1 / std::sqrt(1 + tanU2 * tanU2))
        , m_sinU2(tanU2 * m_cosU2)
    {}

    /// Sets the auxiliary arc for @p lambda. False: its sine is 0, the points coincide or are antipodal.
    bool setArc(double lambda)
    {
        const double sinLambda = std::sin(lambda);
        const double cosLambda = std::cos(lambda);
        m_sinSigma = std::sqrt(square(m_cosU2 * sinLambda) +
                               square(m_cosU1 * m_sinU2 - m_sinU1 * m_cosU2 * cosLambda));
        if (m_sinSigma <= tolerance) {
            return false;
        }
        m_cosSigma = m_sinU1 * m_sinU2 + m_cosU1 * m_cosU2 * cosLambda;
        m_sigma = std::atan2(m_sinSigma, m_cosSigma);
        setAzimuth(m_cosU1 * m_cosU2 * sinLambda / m_sinSigma);
        return true;
    }

    [[nodiscard]] double nextLambda(double l) const
    {
        const double c = m_f / 16 * m_cosSqAlpha * (4 + m_f * (4 - 3 * m_cosSqAlpha));
        return l + (1 - c) * m_f * m_sinAlpha *
                       (m_sigma + c * m_sinSigma * (m_cos2SigmaM + c * m_cosSigma * m_twoCosSqMinus1));
    }

    [[nodiscard]] double distance(double a) const
    {
        const double b = (1 - m_f) * a;
        const double uSq = (a * a - b * b) * m_cosSqAlpha / (b * b);
        const double bigA = 1 + uSq / 16384 * (4096 + uSq * (-768 + uSq * (320 - 175 * uSq)));
        const double bigB = uSq / 1024 * (256 + uSq * (-128 + uSq * (74 - 47 * uSq)));
        const double deltaSigma =
            bigB * m_sinSigma *
            (m_cos2SigmaM +
             bigB / 4 *
                 (m_cosSigma * m_twoCosSqMinus1 -
                  bigB / 6 * m_cos2SigmaM * (4 * m_sinSigma * m_sinSigma - 3) * (4 * m_cosSq2SigmaM - 3)));
        return b * bigA * (m_sigma - deltaSigma);
    }

private:
    void setAzimuth(double sinAlpha)
    {
        m_sinAlpha = sinAlpha;
        m_cosSqAlpha = 1 - sinAlpha * sinAlpha;
        m_cos2SigmaM = 0;
        if (sinAlpha > 1 || sinAlpha <= -1) { // along the equator, up to roundings
            m_sinAlpha = sinAlpha > 1 ? 1 : -1;
            m_cosSqAlpha = 0;
        } else if (!(std::fabs(m_cosSqAlpha) <= tolerance)) {
            m_cos2SigmaM = m_cosSigma - 2 * m_sinU1 * m_sinU2 / m_cosSqAlpha;
        }
        m_cosSq2SigmaM = m_cos2SigmaM * m_cos2SigmaM;
        m_twoCosSqMinus1 = 2 * m_cosSq2SigmaM - 1;
    }

    double m_f;
    double m_cosU1;
    double m_sinU1;
    double m_cosU2;
    double m_sinU2;
    double m_sinSigma = 0;
    double m_cosSigma = 0;
    double m_sigma = 0;
    double m_sinAlpha = 0;
    double m_cosSqAlpha = 0;
    double m_cos2SigmaM = 0;
    double m_cosSq2SigmaM = 0;
    double m_twoCosSqMinus1 = 0;
};

} // namespace

double cartesianDistance(QPointF p1, QPointF p2)
{
    return std::hypot(p2.x() - p1.x(), p2.y() - p1.y());
}

double sphericalDistance(QPointF p1, QPointF p2)
{
    return centralAngleOfDegrees(p1, p2) * defaultSphereRadius;
}

double ellipsoidDistance(QPointF p1, QPointF p2, double a, double rf)
{
    if (isSphere(rf)) {
        return a * centralAngleOfDegrees(p1, p2);
    }
    double distance = 0;
    geod_inverse(&preparedGeodesic(a, rf), p1.y(), p1.x(), p2.y(), p2.x(), &distance, nullptr, nullptr);
    return distance;
}

double vincentyDistance(QPointF p1, QPointF p2, double a, double rf)
{
    if (fuzzyEq(p1, p2, qtPrecision)) {
        return 0;
    }
    if (isSphere(rf)) {
        return a * centralAngleOfRadians(p1, p2);
    }
    const double f = 1 / rf;
    const double tanU1 = reducedTangent(p1.y(), f);
    const double tanU2 = reducedTangent(p2.y(), f);
    const double l = (p2.x() - p1.x()) * radiansPerDegree;
    VincentyInverse inverse(tanU1, tanU2, f);
    double lambda = l;
    for (int round = 0; round < 100; ++round) {
        if (!inverse.setArc(lambda)) {
            return 0;
        }
        const double next = inverse.nextLambda(l);
        if (std::fabs(next) <= tolerance || std::fabs(lambda - next) <= tolerance) {
            return inverse.distance(a);
        }
        lambda = next;
    }
    return lambertCore(std::atan(tanU1), std::atan(tanU2), p1, p2, a, f);
}

double lambertDistance(QPointF p1, QPointF p2, double a, double rf)
{
    if (fuzzyEq(p1, p2, qtPrecision)) {
        return 0;
    }
    if (isSphere(rf)) {
        return a * centralAngleOfRadians(p1, p2);
    }
    const double f = 1 / rf;
    return lambertCore(std::atan(reducedTangent(p1.y(), f)), std::atan(reducedTangent(p2.y(), f)), p1, p2, a,
                       f);
}

QPointF directGeodesicProblem(QPointF start, double azimuthDeg, double distanceMetres, double a, double rf)
{
    double latitude = 0;
    double longitude = 0;
    geod_gendirect(&preparedGeodesic(a, rf), start.y(), start.x(), azimuthDeg, GEOD_LONG_UNROLL,
                   distanceMetres, &latitude, &longitude, nullptr, nullptr, nullptr, nullptr, nullptr,
                   nullptr);
    return {longitude, latitude};
}

std::pair<double, double> backGeodesicProblem(QPointF p1, QPointF p2, double a, double rf)
{
    double distance = 0;
    double azimuth = 0;
    geod_inverse(&preparedGeodesic(a, rf), p1.y(), p1.x(), p2.y(), p2.x(), &distance, &azimuth, nullptr);
    if (azimuth < 0) {
        azimuth += 360;
        if (azimuth >= 360) { // the sum of a tiny negative azimuth rounds up
            azimuth = 0;
        }
    }
    return {distance, azimuth};
}

} // namespace veltor::utils
