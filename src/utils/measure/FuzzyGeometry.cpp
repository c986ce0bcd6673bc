// Tolerant, rounded and exact comparisons; the algebra of rectangles.

#include <veltor/utils/FuzzyGeometry.h>

#include <veltor/utils/Rounding.h>

#include <algorithm>
#include <cmath>
#include <limits>

using veltor::utils::getRound;

namespace {

/// a <= b, or so little above that a factor lets it pass.
bool fuzzyLessEq(double a, double b, double f)
{
    return a <= b || fuzzyEq(a, b, f);
}

bool hasPositiveSize(const QRectF& r)
{
    return r.width() > 0 && r.height() > 0;
}

QSizeF bothAxes(double f)
{
    return {f, f};
}

} // namespace

double fuzzyEpsilon(double a, double b)
{
    return a == 0 || b == 0 ? 1 : std::min(std::fabs(a), std::fabs(b));
}

bool fuzzyIsZero(double v, double f)
{
    return std::fabs(v) * f <= 1;
}

bool fuzzyIsZero(const QSizeF& s, double f)
{
    return fuzzyIsZero(s.width(), f) && fuzzyIsZero(s.height(), f);
}

bool fuzzyEq(double a, double b, double f)
{
    return std::fabs(a - b) * f <= fuzzyEpsilon(a, b);
}

bool fuzzyEq(const QPointF& a, const QPointF& b, double f)
{
    return fuzzyEq(a.x(), b.x(), f) && fuzzyEq(a.y(), b.y(), f);
}

bool fuzzyEq(const QPointF& a, const QPointF& b, const QSizeF& f)
{
    return fuzzyEq(a.x(), b.x(), f.width()) && fuzzyEq(a.y(), b.y(), f.height());
}

bool fuzzyEq(const QSizeF& a, const QSizeF& b, double f)
{
    return fuzzyEq(a, b, bothAxes(f));
}

bool fuzzyEq(const QSizeF& a, const QSizeF& b, const QSizeF& f)
{
    return fuzzyEq(a.width(), b.width(), f.width()) && fuzzyEq(a.height(), b.height(), f.height());
}

bool fuzzyEq(const QMarginsF& a, const QMarginsF& b, const QSizeF& f)
{
    return fuzzyEq(a.left(), b.left(), f.width()) && fuzzyEq(a.top(), b.top(), f.height()) &&
           fuzzyEq(a.right(), b.right(), f.width()) && fuzzyEq(a.bottom(), b.bottom(), f.height());
}

bool fuzzyEqualRects(const QRectF& a, const QRectF& b, const QSizeF& f)
{
    return fuzzyEq(a.topLeft(), b.topLeft(), f) && fuzzyEq(a.size(), b.size(), f);
}

int fuzzySign(double a, double b, double f)
{
    const double difference = f * (a - b);
    const double epsilon = fuzzyEpsilon(a, b);
    if (difference < -epsilon) {
        return -1;
    }
    return difference > epsilon ? 1 : 0;
}

int fuzzyZeroSign(double v, double f)
{
    const double scaled = v * f;
    if (scaled < -1) {
        return -1;
    }
    return scaled > 1 ? 1 : 0;
}

bool roundEq(double a, double b, int n)
{
    return getRound(a, n) == getRound(b, n);
}

bool roundEq(const QPointF& a, const QPointF& b, int n)
{
    return roundEq(a, b, QSize(n, n));
}

bool roundEq(const QPointF& a, const QPointF& b, const QSize& n)
{
    return roundEq(a.x(), b.x(), n.width()) && roundEq(a.y(), b.y(), n.height());
}

bool roundEq(const QSizeF& a, const QSizeF& b, int n)
{
    return roundEq(a, b, QSize(n, n));
}

bool roundEq(const QSizeF& a, const QSizeF& b, const QSize& n)
{
    return roundEq(a.width(), b.width(), n.width()) && roundEq(a.height(), b.height(), n.height());
}

bool roundEq(const QMarginsF& a, const QMarginsF& b, const QSize& n)
{
    return roundEq(a.left(), b.left(), n.width()) && roundEq(a.top(), b.top(), n.height()) &&
           roundEq(a.right(), b.right(), n.width()) && roundEq(a.bottom(), b.bottom(), n.height());
}

bool preciseEq(const QPointF& a, const QPointF& b)
{
    return a.x() == b.x() && a.y() == b.y();
}

bool preciseEq(const QSizeF& a, const QSizeF& b)
{
    return a.width() == b.width() && a.height() == b.height();
}

bool preciseEq(const QMarginsF& a, const QMarginsF& b)
{
    return a.left() == b.left() && a.top() == b.top() && a.right() == b.right() && a.bottom() == b.bottom();
}

bool isNan(const QPointF& p)
{
    return std::isnan(p.x()) || std::isnan(p.y());
}

bool isInfinite(const QPointF& p)
{
    return std::isinf(p.x()) || std::isinf(p.y());
}

bool isIncorrect(const QPointF& p)
{
    return !std::isfinite(p.x()) || !std::isfinite(p.y());
}

QRectF scaleRect(const QRectF& r, double k)
{
    return {r.x() * k, r.y() * k, r.width() * k, r.height() * k};
}

QMarginsF scaleRect(const QMarginsF& m, double k)
{
    return {m.left() * k, m.top() * k, m.right() * k, m.bottom() * k};
}

QRectF multiplyRect(const QRectF& r, double k)
{
    return scaleRect(r, k);
}

QRectF& operator*=(QRectF& r, double k)
{
    r = scaleRect(r, k);
    return r;
}

QRectF operator*(const QRectF& r, double k)
{
    return scaleRect(r, k);
}

QRectF& operator/=(QRectF& r, double k)
{
    r = scaleRect(r, 1 / k);
    return r;
}

QRectF operator/(const QRectF& r, double k)
{
    return scaleRect(r, 1 / k);
}

QMarginsF rect2Margins(const QRectF& r)
{
    return {r.x(), r.y(), r.x() + r.width(), r.y() + r.height()};
}

QRectF margins2Rect(const QMarginsF& m)
{
    return {m.left(), m.top(), m.right() - m.left(), m.bottom() - m.top()};
}

bool contains(const QRectF& a, const QRectF& b)
{
    return contains(rect2Margins(a.normalized()), rect2Margins(b.normalized()));
}

bool contains(const QMarginsF& a, const QMarginsF& b)
{
    return a.left() <= b.left() && b.right() <= a.right() && a.top() <= b.top() && b.bottom() <= a.bottom();
}

bool containsPoint(const QMarginsF& m, const QPointF& p)
{
    return m.left() <= p.x() && p.x() <= m.right() && m.top() <= p.y() && p.y() <= m.bottom();
}

bool fuzzyContains(const QRectF& a, const QRectF& b, double f)
{
    return fuzzyContains(a, b, bothAxes(f));
}

bool fuzzyContains(const QRectF& a, const QRectF& b, const QSizeF& f)
{
    const QMarginsF outer = rect2Margins(a.normalized());
    const QMarginsF inner = rect2Margins(b.normalized());
    return fuzzyLessEq(outer.left(), inner.left(), f.width()) &&
           fuzzyLessEq(inner.right(), outer.right(), f.width()) &&
           fuzzyLessEq(outer.top(), inner.top(), f.height()) &&
           fuzzyLessEq(inner.bottom(), outer.bottom(), f.height());
}

bool fuzzyContains(const QRectF& r, const QPointF& p, double f)
{
    return fuzzyContains(r, QRectF(p, QSizeF(0, 0)), f);
}

bool fuzzyContains(const QRectF& r, const QPointF& p, const QSizeF& f)
{
    return fuzzyContains(r, QRectF(p, QSizeF(0, 0)), f);
}

bool intersectsRect(const QRectF& a, const QRectF& b)
{
    const bool positiveA = hasPositiveSize(a);
    const bool positiveB = hasPositiveSize(b);
    if (positiveA && positiveB) {
        return a.intersects(b);
    }
    if (!positiveA && !positiveB) {
        return preciseEq(a.topLeft(), b.topLeft());
    }
    return intersectsRect(rect2Margins(a.normalized()), rect2Margins(b.normalized()));
}

bool intersectsRect(const QMarginsF& a, const QMarginsF& b)
{
    return a.left() <= b.right() && b.left() <= a.right() && a.top() <= b.bottom() && b.top() <= a.bottom();
}

bool fuzzyIntersectsRect(const QRectF& a, const QRectF& b, double f)
{
    return fuzzyIntersectsRect(a, b, bothAxes(f));
}

bool fuzzyIntersectsRect(const QRectF& a, const QRectF& b, const QSizeF& f)
{
    if (!hasPositiveSize(a) && !hasPositiveSize(b)) {
        return fuzzyEq(a.topLeft(), b.topLeft(), f);
    }
    return fuzzyIntersectsRect(rect2Margins(a.normalized()), rect2Margins(b.normalized()), f);
}

bool fuzzyIntersectsRect(const QMarginsF& a, const QMarginsF& b, double f)
{
    return fuzzyIntersectsRect(a, b, bothAxes(f));
}

bool fuzzyIntersectsRect(const QMarginsF& a, const QMarginsF& b, const QSizeF& f)
{
    return fuzzyLessEq(a.left(), b.right(), f.width()) && fuzzyLessEq(b.left(), a.right(), f.width()) &&
           fuzzyLessEq(a.top(), b.bottom(), f.height()) && fuzzyLessEq(b.top(), a.bottom(), f.height());
}

QRectF adjustRect(QRectF r, double k)
{
    const double divisor = k / 2;
    if (std::fabs(divisor) <= 1e-12) {
        return r;
    }
    const double dx = r.width() / divisor;
    const double dy = r.height() / divisor;
    return {r.x() - dx, r.y() - dy, r.width() + 2 * dx, r.height() + 2 * dy};
}

void envelopePoint(QMarginsF& m, const QPointF& p)
{
    if (p.x() < m.left()) {
        m.setLeft(p.x());
    } else if (p.x() > m.right()) {
        m.setRight(p.x());
    }
    if (p.y() < m.top()) {
        m.setTop(p.y());
    } else if (p.y() > m.bottom()) {
        m.setBottom(p.y());
    }
}

void envelope(QMarginsF& m, const QMarginsF& other)
{
    // std::min and std::max keep their first argument when the second is NaN.
    m = QMarginsF(std::min(m.left(), other.left()), std::min(m.top(), other.top()),
                  std::max(m.right(), other.right()), std::max(m.bottom(), other.bottom()));
}

void subtract(QRectF& a, const QRectF& b)
{
    const auto cut = [](double& start, double& size, double otherStart, double otherEnd) {
        const double end = start + size;
        if (start < otherStart && otherStart < end) {
            size = otherStart - start;
        } else if (start < otherEnd && otherEnd < end) {
            size -= otherEnd - start;
            start = otherEnd;
        }
    };
    double x = a.x();
    double y = a.y();
    double width = a.width();
    double height = a.height();
    cut(x, width, b.left(), b.right());
    cut(y, height, b.top(), b.bottom());
    a.setRect(x, y, width, height);
}
