#pragma once

#include <veltor/Export.h>

#include <QtCore/QDate>
#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

namespace veltor::utils {

/// What a text means by a list of formats. A plain value.
struct DateReading
{
    /// The different dates that it may be, in the order of the formats; none when no format fits.
    std::vector<QDate> dates;

    /// True when it is one date, beyond doubt.
    [[nodiscard]] bool isDate() const noexcept { return dates.size() == 1; }
    /// True when several dates may be meant, as by 3/4/2024.
    [[nodiscard]] bool isAmbiguous() const noexcept { return dates.size() > 1; }
    /// The date; an invalid one unless isDate().
    [[nodiscard]] QDate date() const { return isDate() ? dates.front() : QDate(); }
};

/// A list of formats by which texts are read as dates and dates written.
///
///     const DateFormats formats({"d.M.yyyy", "M/d/yyyy", "d/M/yyyy"});
///     const DateReading reading = formats.read(text);
///     if (!reading.isDate()) {
///         show(formats.explain(text)); // '3/4/2024' may be both March 4 and April 3
///     }
///
/// All formats are tried, so that a text which is different dates by different formats is found out and not
/// guessed at. The letters of a format are those of QDate::toString():
///
/// | letters | read |
/// |---|---|
/// | `d`, `M` | one or two digits, of any script; where both are possible, both count |
/// | `dd`, `MM` | two digits |
/// | `yy` | two digits: the year of the hundred from firstYear on |
/// | `yyyy` | four digits |
/// | `MMM`, `MMMM` | a month's name in the locale, short or long, in any of its cases |
/// | `ddd`, `dddd` | a weekday's short or long name, which must be that of the date |
/// | blanks | any run of blanks, no-break ones included |
/// | all else, `'quoted'` | itself |
///
/// The dot behind a short name may be missing.
/// Upper and lower case are the same, blanks around a text do not count, nor do marks of the writing
/// direction. Dates are those of the Gregorian calendar from year 1 to 9999.
///
/// A value that is never changed; thread-safe. Copies are cheap.
class VELTOR_UTILS_EXPORT DateFormats
{
public:
    /// @param formats    with day, month and year, each once; nothing may be read by an empty list
    /// @param locale     of the names; what is not given is the locale C, which is English
    /// @param firstYear  of the hundred years that two digits stand for, from 1 to 9900
    /// @throws err::UnexpectedValue for a format that lacks a part or has one twice, and one with other
    ///         letters of ASCII that are not quoted; for a firstYear outside of its range
    explicit DateFormats(const QStringList& formats, const QLocale& locale = QLocale::c(),
                         int firstYear = 1950);

    /// Formats that mean the same everywhere, for files and protocols: `yyyy-MM-dd` (ISO 8601), which is the
    /// one that is written, `yyyyMMdd`, `yyyy/MM/dd`, `yyyy.MM.dd`, and `d MMM yyyy`, `d MMMM yyyy` in
    /// English.
    [[nodiscard]] static DateFormats neutral();
    /// How people write dates in a locale: its short format with the year in four digits, which is the one
    /// that is written, in two, and with or without leading zeros; its long formats, with or without the
    /// weekday; and `yyyy-MM-dd`.
    /// @param locale     also of the names
    /// @param firstYear  as in the constructor
    [[nodiscard]] static DateFormats ofLocale(const QLocale& locale, int firstYear = 1950);

    /// The formats, as given.
    [[nodiscard]] QStringList formats() const;

    /// What a text means.
    [[nodiscard]] DateReading read(const QString& text) const;
    /// The date by the first format that reads it back.
    /// @return empty when there is none, as for an invalid date
    [[nodiscard]] QString toText(const QDate& date) const;
    /// Why a text is not a date, for the user: that it may be several, which are named, or that it is none,
    /// with an example of what is. Empty when it is one.
    [[nodiscard]] QString explain(const QString& text) const;

private:
    struct Private;
    std::shared_ptr<const Private> m_private;
};

} // namespace veltor::utils
