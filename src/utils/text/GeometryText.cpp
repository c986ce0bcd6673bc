// Points, sizes and rectangles as text.

#include <veltor/utils/NumberToText.h>

#include "utils/text/NeutralText.h"

namespace veltor::utils {
namespace {

QString pointText(const QString& x, const QString& y)
{
    return QLatin1Char('(') + x + QLatin1Char(' ') + y + QLatin1Char(')');
}

QString joined(const QString& first, const QString& second)
{
    return first + QLatin1Char(' ') + second;
}

} // namespace

QString toLocalizedString(QPointF point, const QLocale& locale)
{
    return pointText(toLocalizedString(point.x(), locale), toLocalizedString(point.y(), locale));
}

QString toString(QPointF point)
{
    return toLocalizedString(point, neutralLocale());
}

QString toStringFixup(QPointF point, int digits)
{
    return pointText(toStringFixup(point.x(), digits), toStringFixup(point.y(), digits));
}

QString toLocalizedStringByMode(QPointF point, DigitsAfterPoint mode, int digits, const QLocale& locale)
{
    return pointText(toLocalizedStringByMode(point.x(), mode, digits, locale),
                     toLocalizedStringByMode(point.y(), mode, digits, locale));
}

QString toLocalizedString(QSizeF size, const QLocale& locale)
{
    return toLocalizedString(size.width(), locale) + QLatin1Char('x') +
           toLocalizedString(size.height(), locale);
}

QString toString(QSizeF size)
{
    return toLocalizedString(size, neutralLocale());
}

QString toLocalizedString(const QRectF& rect, const QLocale& locale)
{
    return joined(toLocalizedString(rect.topLeft(), locale), toLocalizedString(rect.bottomRight(), locale));
}

QString toString(const QRectF& rect)
{
    return toLocalizedString(rect, neutralLocale());
}

QString toLocalizedStringByMode(const QRectF& rect, DigitsAfterPoint mode, int digits, const QLocale& locale)
{
    return joined(toLocalizedStringByMode(rect.topLeft(), mode, digits, locale),
                  toLocalizedStringByMode(rect.bottomRight(), mode, digits, locale));
}

QString toLocalizedStringFull(const QRectF& rect, const QLocale& locale)
{
    return toLocalizedString(rect, locale) + QLatin1String(" (") + toLocalizedString(rect.size(), locale) +
           QLatin1Char(')');
}

QString toStringFull(const QRectF& rect)
{
    return toLocalizedStringFull(rect, neutralLocale());
}

QString toString(const QVector<QPointF>& points, int digits)
{
    QString text;
    for (const QPointF& point : points) {
        if (!text.isEmpty()) {
            text += QLatin1Char(' ');
        }
        text += digits < 0 ? toString(point) : toStringFixup(point, digits);
    }
    return text;
}

} // namespace veltor::utils
