// The text of a value of an item model.
#include "utils/models/CellText.h"

#include <veltor/utils/NumberToText.h>

#include <QtCore/QDateTime>

#include <cmath>
#include <limits>

namespace veltor::utils {
namespace {

/// Digits that tell a number from all others, written out within these bounds.
constexpr double smallestPlain = 1e-5;
constexpr double largestPlain = 1e16;

/// The number with the fewest digits of those that are this float: 0.1, not 0.10000000149.
double shortest(float value)
{
    for (int digits = std::numeric_limits<float>::digits10;
         digits <= std::numeric_limits<float>::max_digits10; ++digits) {
        const double tried = QString::number(static_cast<double>(value), 'g', digits).toDouble();
        if (static_cast<float>(tried) == value) {
            return tried;
        }
    }
    return static_cast<double>(value);
}

template <typename Value>
QString dateText(const Value& value, const QLocale& locale, bool neutral)
{
    return neutral ? value.toString(Qt::ISODateWithMs) : locale.toString(value, QLocale::ShortFormat);
}

} // namespace

CellText::CellText(const ItemModelRules& rules, bool isData)
    : m_rules(rules)
    , m_locale(rules.numberFormat ? rules.numberFormat->locale() : rules.locale)
    , m_isData(isData)
    , m_isNeutral(rules.locale.language() == QLocale::C)
{
    if (isData) {
        m_locale.setNumberOptions(m_locale.numberOptions() | QLocale::OmitGroupSeparator);
    }
}

bool CellText::isNumber(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

QString CellText::fraction(double value) const
{
    if (m_rules.numberFormat) {
        return m_rules.numberFormat->toString(value);
    }
    if (!m_isData) {
        return toLocalizedString(value, m_locale);
    }
    const double size = std::fabs(value);
    const bool written = size == 0.0 || (size >= smallestPlain && size < largestPlain);
    return m_locale.toString(value, written ? 'f' : 'g', QLocale::FloatingPointShortest);
}

QString CellText::numberText(const QVariant& value) const
{
    switch (value.userType()) {
    case QMetaType::Double:
        return fraction(value.toDouble());
    case QMetaType::Float:
        return fraction(shortest(value.toFloat()));
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        return m_locale.toString(value.toULongLong());
    default:
        return m_locale.toString(value.toLongLong());
    }
}

QString CellText::listText(const QVariantList& values)
{
    QString text;
    for (const QVariant& value : values) {
        text += text.isNull() ? QString() : QStringLiteral(", ");
        text += isNumber(value) ? numberText(value) : otherText(value);
        if (text.isNull()) {
            text = QLatin1String("");
        }
    }
    return text;
}

QString CellText::otherText(const QVariant& value)
{
    const QLocale& locale = m_rules.locale;
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return {};
    case QMetaType::QString:
        return value.toString();
    case QMetaType::QDate:
        return dateText(value.toDate(), locale, m_isNeutral);
    case QMetaType::QTime:
        return dateText(value.toTime(), locale, m_isNeutral);
    case QMetaType::QDateTime:
        return dateText(value.toDateTime(), locale, m_isNeutral);
    case QMetaType::QPoint:
    case QMetaType::QPointF:
        return toLocalizedString(value.toPointF(), m_locale);
    case QMetaType::QSize:
    case QMetaType::QSizeF:
        return toLocalizedString(value.toSizeF(), m_locale);
    case QMetaType::QRect:
    case QMetaType::QRectF:
        return toLocalizedString(value.toRectF(), m_locale);
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listText(value.toList());
    default:
        break;
    }
    if (!value.canConvert<QString>()) {
        ++m_untold;
        return {};
    }
    return value.toString();
}

CellText::Result CellText::of(const QModelIndex& index, const QVariant& value)
{
    if (m_rules.text) {
        if (const std::optional<QString> text = m_rules.text(index, value)) {
            return {*text, false};
        }
    }
    if (isNumber(value)) {
        return {numberText(value), true};
    }
    return {otherText(value), false};
}

} // namespace veltor::utils
