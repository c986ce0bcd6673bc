// Rounding to decimal places and to significant digits.

#include <veltor/utils/Rounding.h>

#include <array>
#include <cmath>
#include <limits>

namespace veltor::utils {
namespace {

/// floor(log10(|x|)). What has no exponent that fits (0, infinities, NaN) is given the smallest int, the
/// value that the conversion instructions of the usual processors produce.
int decimalExponent(double x)
{
    constexpr double smallest = std::numeric_limits<int>::min();
    constexpr double largest = std::numeric_limits<int>::max();
    const double exponent = std::floor(std::log10(std::fabs(x)));
    return exponent >= smallest && exponent <= largest ? static_cast<int>(exponent)
                                                       : std::numeric_limits<int>::min();
}

/// n - exponent modulo 2^32, so that the exponent of 0 and infinity overflows nothing.
int places(int n, int exponent)
{
    return static_cast<int>(static_cast<unsigned>(n) - static_cast<unsigned>(exponent));
}

template <typename Rounding>
double atDecimalPlace(double x, int n, Rounding rounding)
{
    if (n > 0) {
        const double power = std::pow(10.0, n);
        return rounding(x * power) / power;
    }
    if (n < 0) {
        const double power = std::pow(10.0, -static_cast<double>(n)); // -n may not fit an int
        return rounding(x / power) * power;
    }
    return rounding(x);
}

template <typename Rounding>
double atSignificance(double x, int n, Rounding rounding)
{
    if (x == 0) {
        return 0;
    }
    return rounding(x, places(static_cast<int>(static_cast<unsigned>(n) - 1U), decimalExponent(x)));
}

double nearerStep(double mantissa, double lowerStep, double upperStep, double /*scale*/)
{
    return std::fabs(upperStep - mantissa) > std::fabs(lowerStep - mantissa) ? lowerStep : upperStep;
}

} // namespace

double getRound(double x, int n)
{
    return atDecimalPlace(x, n, [](double value) { return std::round(value); });
}

double getFloor(double x, int n)
{
    return atDecimalPlace(x, n, [](double value) { return std::floor(value); });
}

double getCeiling(double x, int n)
{
    return atDecimalPlace(x, n, [](double value) { return std::ceil(value); });
}

float floatRound(float x, int n)
{
    return n == 0 ? std::round(x) : static_cast<float>(getRound(static_cast<double>(x), n));
}

float floatFloor(float x, int n)
{
    return static_cast<float>(getFloor(static_cast<double>(x), n));
}

float floatCeiling(float x, int n)
{
    return static_cast<float>(getCeiling(static_cast<double>(x), n));
}

int getScaleLog(double x, int n)
{
    return places(n, decimalExponent(x));
}

double significantRound(double x, int n)
{
    return atSignificance(x, n, &getRound);
}

double significantCeiling(double x, int n)
{
    return atSignificance(x, n, &getCeiling);
}

double significantFloor(double x, int n)
{
    return atSignificance(x, n, &getFloor);
}

double scaleRound(double x, double scale)
{
    return scale > 0 ? getRound(x, places(1, decimalExponent(scale))) : x;
}

QPointF roundByUnitSize(QPointF point, QSizeF unit)
{
    return {scaleRound(point.x(), unit.width()), scaleRound(point.y(), unit.height())};
}

double coarseRound(double x, StepChooser chooser, const double* steps, unsigned n)
{
    static constexpr std::array<double, 5> defaultSteps{10, 5, 2.5, 2, 1};
    if (!chooser) {
        chooser = &nearerStep;
    }
    if (steps == nullptr || n == 0) {
        steps = defaultSteps.data();
        n = static_cast<unsigned>(defaultSteps.size());
    }
    const double scale = std::pow(10.0, decimalExponent(x));
    const double mantissa = x / scale;
    for (unsigned i = 1; i < n; ++i) {
        if (mantissa > steps[i]) {
            return chooser(mantissa, steps[i], steps[i - 1], scale) * scale;
        }
    }
    return 0;
}

} // namespace veltor::utils
