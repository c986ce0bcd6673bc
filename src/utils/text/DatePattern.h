#pragma once

#include <QtCore/QDate>
#include <QtCore/QLocale>
#include <QtCore/QString>

#include <optional>
#include <vector>

namespace veltor::utils {

/// The names of months or weekdays in a locale, in all their cases.
struct DateNames
{
    struct Name
    {
        QString text;
        int number;
    };
    std::vector<Name> months;
    std::vector<Name> weekdays;

    explicit DateNames(const QLocale& locale);
};

/// One format, taken apart.
class DatePattern
{
public:
    /// @return nothing when the format has other letters, or not each of day, month and year once
    [[nodiscard]] static std::optional<DatePattern> parse(const QString& format);

    [[nodiscard]] const QString& format() const { return m_format; }

    /// All dates that the text may be, some perhaps twice.
    /// @param text  without blanks around it
    void read(const QString& text, const DateNames& names, int firstYear, std::vector<QDate>& dates) const;

private:
    enum class Part
    {
        Day,
        Month,
        Year,
        Weekday,
        Literal,
        Blank
    };
    struct Step
    {
        Part part;
        int width; ///< letters in the format; 3 and 4 of a day, month: names
        QChar literal;
    };
    class Reader;

    bool addRun(QChar letter, int width);
    void addLiteral(QChar unit);
    [[nodiscard]] int countOf(Part part) const;

    QString m_format;
    std::vector<Step> m_steps;
};

/// The text without marks of the writing direction and blanks around it.
[[nodiscard]] QString bareDateText(const QString& text);

} // namespace veltor::utils
