#pragma once

// What Qt 5 and Qt 6 spell differently; the one place outside src/platform/ that may ask which Qt it is.

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <algorithm>

namespace veltor::base {

/// Lengths and positions in Qt's texts and containers: int in Qt 5, qsizetype in Qt 6.
using Length = decltype(QString().size());

/// Signs of a locale: one character each in Qt 5; in Qt 6 some locales have longer ones.
inline QString decimalPoint(const QLocale& locale)
{
    return QString(locale.decimalPoint());
}
inline QString groupSeparator(const QLocale& locale)
{
    return QString(locale.groupSeparator());
}
inline QString exponential(const QLocale& locale)
{
    return QString(locale.exponential());
}
inline QString negativeSign(const QLocale& locale)
{
    return QString(locale.negativeSign());
}
inline QString positiveSign(const QLocale& locale)
{
    return QString(locale.positiveSign());
}
inline QString zeroDigit(const QLocale& locale)
{
    return QString(locale.zeroDigit());
}

/// The codes of a locale's languages in Qt 5's order: the shortest first, but for the system's locale.
inline QStringList uiLanguages(const QLocale& locale)
{
    QStringList languages = locale.uiLanguages();
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    if (locale != QLocale::system()) {
        std::reverse(languages.begin(), languages.end());
    }
#endif
    return languages;
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // since Qt 5.15, which offers nothing in their place
/// Qt 5's order of variants: negative, 0, positive.
inline int order(const QVariant& a, const QVariant& b)
{
    return a < b ? -1 : static_cast<int>(a > b);
}
QT_WARNING_POP
#else
/// Qt 5's order of variants: negative, 0, positive. Qt 6 orders only those of one type.
int order(const QVariant& a, const QVariant& b);
#endif

/// The value as one of another type, by its number in QMetaType; the type's default for a value without a
/// type, and nothing where the program knows neither the type nor such a conversion.
inline QVariant converted(QVariant value, int type)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    if (!value.isValid()) {
        return QVariant(type, nullptr);
    }
    return value.userType() == type || value.convert(type) ? value : QVariant();
#else
    if (!value.isValid()) {
        return QMetaType(type).isValid() ? QVariant(QMetaType(type)) : QVariant();
    }
    return value.userType() == type || value.convert(QMetaType(type)) ? value : QVariant();
#endif
}

} // namespace veltor::base
