// Lists of date formats: reading by all of them, writing, and words for what is no date.

#include <veltor/utils/DateFormats.h>

#include <veltor/err/Exceptions.h>

#include "DatePattern.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QRegularExpression>

#include <algorithm>

namespace veltor::utils {
namespace {

/// The same with the year in four digits, where it has two.
QString withLongYear(QString format)
{
    static const QRegularExpression twoDigits(QStringLiteral("(?<!y)yy(?!y)"));
    return format.replace(twoDigits, QStringLiteral("yyyy"));
}

QString withShortYear(QString format)
{
    return format.replace(QLatin1String("yyyy"), QLatin1String("yy"));
}

/// The same without leading zeros, which reads numbers with them too.
QString withoutZeros(QString format)
{
    static const QRegularExpression twoDays(QStringLiteral("(?<!d)dd(?!d)"));
    static const QRegularExpression twoMonths(QStringLiteral("(?<!M)MM(?!M)"));
    return format.replace(twoDays, QStringLiteral("d")).replace(twoMonths, QStringLiteral("M"));
}

QString withoutWeekday(QString format)
{
    static const QRegularExpression weekday(QStringLiteral("[,\\s]*(?<!d)d{3,4}(?!d)[,\\s]*"));
    const QRegularExpressionMatch match = weekday.match(format);
    const bool isInside = match.capturedStart() > 0 && match.capturedEnd() < format.size();
    return format.replace(weekday, isInside ? QStringLiteral(" ") : QString());
}

/// Whether a format can be one; others of Qt's locales are passed over.
void addFormat(QStringList& formats, const QString& format)
{
    if (!formats.contains(format) && DatePattern::parse(format)) {
        formats << format;
    }
}

} // namespace

struct DateFormats::Private
{
    Private(const QLocale& itsLocale, int itsFirstYear)
        : locale(itsLocale)
        , names(itsLocale)
        , firstYear(itsFirstYear)
    {}

    QLocale locale;
    DateNames names;
    int firstYear;
    std::vector<DatePattern> patterns;
};

DateFormats::DateFormats(const QStringList& formats, const QLocale& locale, int firstYear)
{
    if (firstYear < 1 || firstYear > 9900) {
        throw err::UnexpectedValue(QStringLiteral("firstYear"), firstYear);
    }
    const auto made = std::make_shared<Private>(locale, firstYear);
    for (const QString& format : formats) {
        const std::optional<DatePattern> pattern = DatePattern::parse(format);
        if (!pattern) {
            throw err::UnexpectedValue(QStringLiteral("formats"), format);
        }
        made->patterns.push_back(*pattern);
    }
    m_private = made;
}

DateFormats DateFormats::neutral()
{
    return DateFormats({QStringLiteral("yyyy-MM-dd"), QStringLiteral("yyyyMMdd"),
                        QStringLiteral("yyyy/MM/dd"), QStringLiteral("yyyy.MM.dd"),
                        QStringLiteral("d MMM yyyy"), QStringLiteral("d MMMM yyyy")});
}

DateFormats DateFormats::ofLocale(const QLocale& locale, int firstYear)
{
    const QString shortOne = withLongYear(locale.dateFormat(QLocale::ShortFormat));
    const QString longOne = locale.dateFormat(QLocale::LongFormat);
    const QString withoutDay = withoutWeekday(longOne);
    QStringList formats;
    addFormat(formats, shortOne);
    addFormat(formats, withoutZeros(shortOne));
    addFormat(formats, withShortYear(withoutZeros(shortOne)));
    for (const QString& format : {longOne, withoutDay}) {
        addFormat(formats, format);
        addFormat(formats, QString(format).replace(QLatin1String("MMMM"), QLatin1String("MMM")));
    }
    addFormat(formats, QStringLiteral("d MMMM yyyy"));
    addFormat(formats, QStringLiteral("yyyy-MM-dd"));
    return DateFormats(formats, locale, firstYear);
}

QStringList DateFormats::formats() const
{
    QStringList formats;
    for (const DatePattern& pattern : m_private->patterns) {
        formats << pattern.format();
    }
    return formats;
}

DateReading DateFormats::read(const QString& text) const
{
    const QString bare = bareDateText(text);
    std::vector<QDate> all;
    for (const DatePattern& pattern : m_private->patterns) {
        pattern.read(bare, m_private->names, m_private->firstYear, all);
    }
    DateReading reading;
    for (const QDate& date : all) {
        if (std::find(reading.dates.begin(), reading.dates.end(), date) == reading.dates.end()) {
            reading.dates.push_back(date);
        }
    }
    return reading;
}

QString DateFormats::toText(const QDate& date) const
{
    if (!date.isValid()) {
        return {};
    }
    for (const DatePattern& pattern : m_private->patterns) {
        QString text = m_private->locale.toString(date, pattern.format());
        std::vector<QDate> dates;
        pattern.read(bareDateText(text), m_private->names, m_private->firstYear, dates);
        if (std::find(dates.begin(), dates.end(), date) != dates.end()) {
            return text;
        }
    }
    return {};
}

QString DateFormats::explain(const QString& text) const
{
    const DateReading reading = read(text);
    if (reading.isDate()) {
        return {};
    }
    const QString shown = text.simplified();
    if (reading.isAmbiguous()) {
        QStringList dates;
        for (const QDate& date : reading.dates) {
            dates << m_private->locale.toString(date, QLocale::LongFormat);
        }
        const QString last = dates.takeLast();
        return QCoreApplication::translate("DateFormats", "'%1' может быть и %2, и %3")
            .arg(shown, dates.join(QStringLiteral(", ")), last);
    }
    const QString example = toText(QDate(2024, 12, 31));
    return example.isEmpty() ? QCoreApplication::translate("DateFormats", "'%1' — не дата").arg(shown)
                             : QCoreApplication::translate("DateFormats", "'%1' — не дата; пример даты: %2")
                                   .arg(shown, example);
}

} // namespace veltor::utils
