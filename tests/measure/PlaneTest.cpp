// Rounding, angles, planar geometry and notable distances: a table of calls, and laws that hold for any
// numbers.

#include "support/Calls.h"

#include <veltor/core/CalcMode.h>
#include <veltor/utils/Angles.h>
#include <veltor/utils/Distance.h>
#include <veltor/utils/FuzzyGeometry.h>
#include <veltor/utils/Rounding.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace veltor::core;
using namespace veltor::test;
using namespace veltor::utils;

namespace {

using P = const QPointF&;
using R = const QRectF&;
using M = const QMarginsF&;
using S = const QSizeF&;

const std::map<QByteArray, Call> functions = {
    {"pointsAngle", call(pointsAngle)},
    {"pointsAngleDirect", call(pointsAngleDirect)},
    {"lineAngle", call(lineAngle)},
    {"lineAngleDirect", call(lineAngleDirect)},
    {"lengthSquared", call<double, const QLineF&>(lengthSquared)},
    {"scaleLength", call(scaleLength)},
    {"normalizeAngle", call(normalizeAngle)},
    {"fixAngle", call(fixAngle)},
    {"angleBetween", call(angleBetween)},
    {"quadrant", call(quadrant)},
    {"squareEndPoint", call(squareEndPoint)},
    {"getRound", call(getRound)},
    {"getFloor", call(getFloor)},
    {"getCeiling", call(getCeiling)},
    {"floatRound", call(floatRound)},
    {"floatFloor", call(floatFloor)},
    {"floatCeiling", call(floatCeiling)},
    {"significantRound", call(significantRound)},
    {"significantCeiling", call(significantCeiling)},
    {"significantFloor", call(significantFloor)},
    {"getScaleLog", call(getScaleLog)},
    {"scaleRound", call(scaleRound)},
    {"roundByUnitSize", call(roundByUnitSize)},
    {"coarseRound", call(+[](double x) { return coarseRound(x); })},
    {"fuzzyEq", call<bool, double, double, double>(fuzzyEq)},
    {"fuzzyEq.point", call<bool, P, P, S>(fuzzyEq)},
    {"fuzzyEq.pointAlike", call<bool, P, P, double>(fuzzyEq)},
    {"fuzzyEq.size", call<bool, S, S, S>(fuzzyEq)},
    {"fuzzyEq.margins", call<bool, M, M, S>(fuzzyEq)},
    {"fuzzyEqualRects", call(fuzzyEqualRects)},
    {"fuzzyEpsilon", call(fuzzyEpsilon)},
    {"fuzzyIsZero.size", call<bool, S, double>(fuzzyIsZero)},
    {"fuzzySign", call(fuzzySign)},
    {"fuzzyZeroSign", call(fuzzyZeroSign)},
    {"roundEq.point", call<bool, P, P, const QSize&>(roundEq)},
    {"roundEq.size", call<bool, S, S, const QSize&>(roundEq)},
    {"roundEq.margins", call<bool, M, M, const QSize&>(roundEq)},
    {"preciseEq.point", call<bool, P, P>(preciseEq)},
    {"preciseEq.size", call<bool, S, S>(preciseEq)},
    {"preciseEq.margins", call<bool, M, M>(preciseEq)},
    {"isNan", call(isNan)},
    {"isInfinite", call(isInfinite)},
    {"isIncorrect", call(isIncorrect)},
    {"cartesianDistance", call(cartesianDistance)},
    {"sphericalDistance", call(sphericalDistance)},
    {"ellipsoidDistance", call(ellipsoidDistance)},
    {"vincentyDistance", call(vincentyDistance)},
    {"lambertDistance", call(lambertDistance)},
    {"findCalcMode", call(+[](QString word) { return static_cast<int>(findCalcMode(word)); })},
    {"multiplyRect", call(multiplyRect)},
    {"divideRect", call<QRectF, R, double>(operator/)},
    {"rect2Margins", call(rect2Margins)},
    {"margins2Rect", call(margins2Rect)},
    {"scaleRect.margins", call<QMarginsF, M, double>(scaleRect)},
    {"adjustRect", call(adjustRect)},
    {"subtract", call(+[](QRectF a, R b) { return subtract(a, b), a; })},
    {"envelopePoint", call(+[](QMarginsF m, P p) { return envelopePoint(m, p), m; })},
    {"envelope", call(+[](QMarginsF m, M other) { return envelope(m, other), m; })},
    {"intersectsRect", call<bool, R, R>(intersectsRect)},
    {"intersectsRect.margins", call<bool, M, M>(intersectsRect)},
    {"contains", call<bool, R, R>(contains)},
    {"containsPoint", call(containsPoint)},
    {"fuzzyContains", call<bool, R, R, S>(fuzzyContains)},
    {"fuzzyContains.point", call<bool, R, P, S>(fuzzyContains)},
    {"fuzzyIntersectsRect", call<bool, R, R, S>(fuzzyIntersectsRect)},
    {"fuzzyIntersectsRect.margins", call<bool, M, M, S>(fuzzyIntersectsRect)},
};

TEST(Plane, CallsGiveTheResultsOfTheTable)
{
    expectCalls("measure/data/calls.txt", ' ', functions);
    EXPECT_EQ(findCalcMode(u("  Sphere\t")), CalcMode::Spherical);
    EXPECT_EQ(findCalcMode(u("  ")), CalcMode::Auto);
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
    EXPECT_EQ(coarseRound(37, {}, steps, 1), 0) << "a single step has none below";
}

TEST(FuzzyFamily, AgreesWithItsExactRelatives)
{
    constexpr double huge = 1e300;
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> number(-10, 10);
    // Sizes of 0 and below come up often; sides of two boxes never coincide.
    const auto size = [&] { return random() % 3 == 0 ? 0 : number(random); };
    const auto rectangle = [&] { return QRectF(number(random), number(random), size(), size()); };
    for (int i = 0; i < 5000; ++i) {
        const QRectF a = i % 4 == 0 ? QRectF(-10, -10, 30, 30) : rectangle();
        const QRectF b = rectangle();
        ASSERT_EQ(fuzzyContains(a, b, huge), contains(a, b));
        ASSERT_EQ(fuzzyIntersectsRect(a, b, huge), intersectsRect(a, b));
        ASSERT_EQ(fuzzyIntersectsRect(a, a, huge), intersectsRect(a, a));
        ASSERT_TRUE(fuzzyContains(a, b, 0) && fuzzyIntersectsRect(a, b, 0) && fuzzyEqualRects(a, b, {0, 0}));
        ASSERT_EQ(intersectsRect(a, b), intersectsRect(b, a));
        const QMarginsF outer = rect2Margins(a.normalized());
        const QMarginsF inner = rect2Margins(b.normalized());
        ASSERT_EQ(fuzzyIntersectsRect(outer, inner, huge), intersectsRect(outer, inner));
        ASSERT_TRUE(!contains(outer, inner) || intersectsRect(outer, inner));
        ASSERT_TRUE(!contains(a, b) || a.isEmpty() || intersectsRect(a, b));
        QMarginsF grown = outer;
        envelope(grown, inner);
        ASSERT_TRUE(contains(grown, outer) && contains(grown, inner));
    }
}

} // namespace
