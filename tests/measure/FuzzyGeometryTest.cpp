#include <veltor/utils/FuzzyGeometry.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::nan("");

TEST(FuzzyNumbers, ToleranceIsAbsoluteBesideZeroAndRelativeElsewhere)
{
    EXPECT_TRUE(fuzzyEq(0, 1e-13, 1e12));
    EXPECT_FALSE(fuzzyEq(1e-12, 1e-13, 1e12));
    EXPECT_FALSE(fuzzyEq(1, 1 + 1e-11, 1e12));
    EXPECT_TRUE(fuzzyEq(1e6, 1e6 + 1e-7, 1e12));
    EXPECT_FALSE(fuzzyEq(nan, nan, 0));
    EXPECT_EQ(fuzzyEpsilon(0, 5), 1);
    EXPECT_EQ(fuzzyEpsilon(-3, 5), 3);
    EXPECT_TRUE(fuzzyIsZero(QSizeF(1e-13, -1e-13), 1e12));
    EXPECT_FALSE(fuzzyIsZero(QSizeF(0, 1e-11), 1e12));
    EXPECT_EQ(fuzzySign(1, 1 + 1e-13, 1e12), 0);
    EXPECT_EQ(fuzzySign(2, 1, 1e12), 1);
    EXPECT_EQ(fuzzySign(-2, 1, 1e12), -1);
    EXPECT_EQ(fuzzyZeroSign(-1e-11, 1e12), -1);
    EXPECT_EQ(fuzzyZeroSign(1e-11, 1e12), 1);
}

TEST(FuzzyComposites, EachAxisHasItsOwnFactorOrPlaces)
{
    const QSizeF wideX(10, 1e12);
    const QPointF point(1, 1);
    EXPECT_TRUE(fuzzyEq(point, QPointF(1.05, 1), wideX));
    EXPECT_FALSE(fuzzyEq(point, QPointF(1, 1.05), wideX));
    EXPECT_TRUE(fuzzyEq(point, QPointF(1.05, 1.05), 10));
    EXPECT_TRUE(fuzzyEq(QSizeF(1, 1), QSizeF(1.05, 1), wideX));
    EXPECT_TRUE(fuzzyEq(QMarginsF(1, 2, 3, 4), QMarginsF(1.05, 2, 3.1, 4), wideX));
    EXPECT_FALSE(fuzzyEq(QMarginsF(1, 2, 3, 4), QMarginsF(1, 2, 3, 4.1), wideX));
    EXPECT_TRUE(fuzzyEqualRects({1, 2, 3, 4}, {1.05, 2, 3.1, 4}, wideX));
    EXPECT_FALSE(fuzzyEqualRects({1, 2, 3, 4}, {1, 2.1, 3, 4}, wideX));

    const QSize coarseX(0, 2);
    EXPECT_TRUE(roundEq(point, QPointF(1.2, 1.001), coarseX));
    EXPECT_FALSE(roundEq(point, QPointF(1.2, 1.001), 2));
    EXPECT_TRUE(roundEq(QSizeF(1, 1), QSizeF(1.2, 1.001), coarseX));
    EXPECT_FALSE(roundEq(QSizeF(1, 1), QSizeF(1, 1.2), coarseX));
    EXPECT_TRUE(roundEq(QMarginsF(1, 2, 3, 4), QMarginsF(1.2, 2, 2.8, 4), coarseX));
    EXPECT_FALSE(roundEq(QMarginsF(1, 2, 3, 4), QMarginsF(1, 2, 3, 4.2), coarseX));
}

TEST(ExactComparison, SeesWhatQtsOwnEqualityOverlooks)
{
    const QPointF point(1, 1);
    const QPointF beside(1, std::nextafter(1, 2));
    ASSERT_TRUE(point == beside);
    EXPECT_FALSE(preciseEq(point, beside));
    EXPECT_FALSE(preciseEq(QSizeF(1, 1), QSizeF(1, beside.y())));
    EXPECT_FALSE(preciseEq(QMarginsF(1, 1, 1, 1), QMarginsF(1, 1, 1, beside.y())));
    EXPECT_TRUE(preciseEq(point, QPointF(1, 1)));
    EXPECT_FALSE(preciseEq(QPointF(nan, 1), QPointF(nan, 1)));
}

TEST(Validity, OfPoints)
{
    struct Row
    {
        QPointF point;
        bool nan;
        bool infinite;
    };
    for (const Row& row :
         {Row{{0, 0}, false, false}, Row{{nan, 0}, true, false}, Row{{0, -infinity}, false, true},
          Row{{infinity, nan}, true, true}, Row{{1.7976931348623157e308, 0}, false, false}}) {
        EXPECT_EQ(isNan(row.point), row.nan);
        EXPECT_EQ(isInfinite(row.point), row.infinite);
        EXPECT_EQ(isIncorrect(row.point), row.nan || row.infinite);
    }
}

TEST(Rectangles, ScaleAndConvertComponentByComponent)
{
    const QRectF r(1, -2, 3, 4);
    EXPECT_EQ(multiplyRect(r, 2), QRectF(2, -4, 6, 8));
    EXPECT_EQ(r / 2, QRectF(0.5, -1, 1.5, 2));
    QRectF copy = r;
    copy *= 4;
    copy /= 2;
    EXPECT_EQ(copy, r * 2);
    EXPECT_EQ(scaleRect(rect2Margins(r), 2), QMarginsF(2, -4, 8, 4));
    EXPECT_EQ(margins2Rect(rect2Margins(r)), r);
    EXPECT_EQ(adjustRect({0, 0, 10, 20}, 10), QRectF(-2, -4, 14, 28));
    EXPECT_EQ(adjustRect(r, 0), r);
}

TEST(Rectangles, SubtractCutsEachAxisByItself)
{
    struct Row
    {
        QRectF b, result;
    };
    for (const Row& row : {Row{{6, -5, 10, 30}, {0, 0, 6, 10}}, Row{{-5, 2, 8, 3}, {3, 0, 7, 2}},
                           Row{{2, 2, 2, 2}, {0, 0, 2, 2}}, Row{{-1, -1, 20, 20}, {0, 0, 10, 10}},
                           Row{{0, 0, 10, 4}, {0, 4, 10, 6}}}) {
        QRectF a(0, 0, 10, 10);
        subtract(a, row.b);
        EXPECT_EQ(a, row.result);
    }
}

TEST(Extents, GrowToTakeInPointsAndExtents)
{
    QMarginsF m(0, 0, 10, 10);
    envelopePoint(m, {-1, 12});
    EXPECT_EQ(m, QMarginsF(-1, 0, 10, 12));
    envelopePoint(m, {nan, 5});
    EXPECT_EQ(m, QMarginsF(-1, 0, 10, 12));
    envelope(m, {-5, 3, 20, 4});
    EXPECT_EQ(m, QMarginsF(-5, 0, 20, 12));
    envelope(m, {nan, -1, nan, 0});
    EXPECT_EQ(m, QMarginsF(-5, -1, 20, 12));
    QMarginsF empty(infinity, infinity, -infinity, -infinity);
    envelope(empty, m);
    EXPECT_EQ(empty, m);
}

TEST(Intersection, OfBoxesPointsAndLines)
{
    struct Row
    {
        const char* name;
        QRectF a, b;
        bool result;
    };
    const QRectF box(0, 0, 10, 10);
    for (const Row& row : {
             Row{"overlap", box, {9, 9, 5, 5}, true},
             Row{"touching boxes", box, {10, 0, 5, 5}, false},
             Row{"point on the edge", box, {10, 5, 0, 0}, true},
             Row{"point outside", box, {11, 5, 0, 0}, false},
             Row{"line across", box, {-5, 5, 20, 0}, true},
             Row{"negative size over the box", box, {12, 12, -5, -5}, true},
             Row{"lines of one origin", {1, 1, 5, 0}, {1, 1, 0, 5}, true},
             Row{"crossing lines", {0, 1, 5, 0}, {1, 0, 0, 5}, false},
         }) {
        EXPECT_EQ(intersectsRect(row.a, row.b), row.result) << row.name;
        EXPECT_EQ(intersectsRect(row.b, row.a), row.result) << row.name;
    }
    EXPECT_TRUE(intersectsRect(QMarginsF(0, 0, 10, 10), QMarginsF(10, 10, 20, 20)));
    EXPECT_FALSE(intersectsRect(QMarginsF(0, 0, 10, 10), QMarginsF(10.1, 0, 20, 20)));
}

TEST(FuzzyContainment, LetsEdgesPassByTheFactorOfTheirAxis)
{
    const QRectF box(1, 1, 1, 1);
    EXPECT_TRUE(contains(box, QRectF(2, 2, -1, -1)));
    EXPECT_FALSE(contains(box, QRectF(0.95, 1, 1, 1)));
    EXPECT_TRUE(fuzzyContains(box, QRectF(0.95, 1, 1, 1), QSizeF(10, 1e12)));
    EXPECT_FALSE(fuzzyContains(box, QRectF(0.95, 1, 1, 1), QSizeF(1e12, 10)));
    EXPECT_TRUE(fuzzyContains(box, QPointF(2 + 1e-13, 1.5), 1e12));
    EXPECT_FALSE(fuzzyContains(box, QPointF(2 + 1e-11, 1.5), QSizeF(1e12, 0)));
    EXPECT_TRUE(containsPoint({1, 1, 2, 2}, {2, 1}));
    EXPECT_FALSE(containsPoint({1, 1, 2, 2}, {2.01, 1}));
    EXPECT_FALSE(fuzzyContains(box, QPointF(nan, 1.5), 0));
    EXPECT_TRUE(fuzzyIntersectsRect(box, QRectF(2.1, 1, 1, 1), QSizeF(10, 1e12)));
    EXPECT_FALSE(fuzzyIntersectsRect(box, QRectF(2.1, 1, 1, 1), 1e12));
    EXPECT_TRUE(fuzzyIntersectsRect(box, QRectF(2, 1, 1, 1), 1e12)); // touching, unlike the exact form
    EXPECT_FALSE(fuzzyIntersectsRect(QMarginsF(1, 1, 2, 2), QMarginsF(1, 2.1, 2, 3), QSizeF(10, 1e12)));
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
