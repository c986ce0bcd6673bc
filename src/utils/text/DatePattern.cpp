// One format of dates: taken apart, and matched with texts in every way that fits.

#include "DatePattern.h"

#include "base/QtDifferences.h"

#include <algorithm>

namespace veltor::utils {
namespace {

using base::Length;

bool isLetterOfAscii(QChar unit)
{
    return unit.unicode() < 0x80 && unit.isLetter();
}

void addName(std::vector<DateNames::Name>& names, const QString& text, int number)
{
    const QString bare = bareDateText(text);
    const auto isSame = [&](const DateNames::Name& name) { return name.text == bare; };
    if (!bare.isEmpty() && std::none_of(names.begin(), names.end(), isSame)) {
        names.push_back({bare, number});
    }
}

/// A short name with and without its dot.
void addNames(std::vector<DateNames::Name>& names, const QString& text, int number)
{
    addName(names, text, number);
    if (text.endsWith(QLatin1Char('.'))) {
        addName(names, text.left(text.size() - 1), number);
    }
}

} // namespace

QString bareDateText(const QString& text)
{
    QString bare;
    std::copy_if(text.begin(), text.end(), std::back_inserter(bare),
                 [](QChar unit) { return unit.category() != QChar::Other_Format; });
    return bare.trimmed();
}

DateNames::DateNames(const QLocale& locale)
{
    for (const auto length : {QLocale::LongFormat, QLocale::ShortFormat}) {
        for (int month = 1; month <= 12; ++month) {
            addNames(months, locale.monthName(month, length), month);
            addNames(months, locale.standaloneMonthName(month, length), month);
        }
        for (int day = 1; day <= 7; ++day) {
            addNames(weekdays, locale.dayName(day, length), day);
            addNames(weekdays, locale.standaloneDayName(day, length), day);
        }
    }
}

std::optional<DatePattern> DatePattern::parse(const QString& format)
{
    DatePattern pattern;
    pattern.m_format = format;
    bool isQuoted = false;
    const QString bare = bareDateText(format);
    for (Length i = 0; i < bare.size(); ++i) {
        const QChar unit = bare.at(i);
        if (unit == QLatin1Char('\'')) {
            const bool isDouble = i + 1 < bare.size() && bare.at(i + 1) == unit;
            if (isDouble) {
                pattern.addLiteral(unit);
                ++i;
            } else {
                isQuoted = !isQuoted;
            }
        } else if (isQuoted || !isLetterOfAscii(unit)) {
            pattern.addLiteral(unit);
        } else {
            Length end = i;
            while (end < bare.size() && bare.at(end) == unit) {
                ++end;
            }
            if (!pattern.addRun(unit, static_cast<int>(end - i))) {
                return std::nullopt;
            }
            i = end - 1;
        }
    }
    const bool isWhole = pattern.countOf(Part::Day) == 1 && pattern.countOf(Part::Month) == 1 &&
                         pattern.countOf(Part::Year) == 1 && pattern.countOf(Part::Weekday) <= 1;
    return isWhole && !isQuoted ? std::optional(pattern) : std::nullopt;
}

bool DatePattern::addRun(QChar letter, int width)
{
    if (letter == QLatin1Char('d') && width <= 4) {
        m_steps.push_back({width > 2 ? Part::Weekday : Part::Day, width, {}});
    } else if (letter == QLatin1Char('M') && width <= 4) {
        m_steps.push_back({Part::Month, width, {}});
    } else if (letter == QLatin1Char('y') && (width == 2 || width == 4)) {
        m_steps.push_back({Part::Year, width, {}});
    } else {
        return false;
    }
    return true;
}

void DatePattern::addLiteral(QChar unit)
{
    if (!unit.isSpace()) {
        m_steps.push_back({Part::Literal, 1, unit.toCaseFolded()});
    } else if (m_steps.empty() || m_steps.back().part != Part::Blank) {
        m_steps.push_back({Part::Blank, 1, {}});
    }
}

int DatePattern::countOf(Part part) const
{
    return static_cast<int>(std::count_if(m_steps.begin(), m_steps.end(),
                                          [part](const Step& step) { return step.part == part; }));
}

/// One way through a text after the other. As each part comes once, there are but a few.
class DatePattern::Reader
{
public:
    Reader(const DatePattern& pattern, const QString& text, const DateNames& names, int firstYear,
           std::vector<QDate>& dates)
        : m_steps(pattern.m_steps)
        , m_text(text)
        , m_names(names)
        , m_firstYear(firstYear)
        , m_dates(dates)
    {}

    void read(std::size_t step, Length at)
    {
        for (; step < m_steps.size() && m_steps[step].part >= Part::Literal; ++step) {
            if (!skip(m_steps[step], at)) {
                return;
            }
        }
        if (step == m_steps.size()) {
            finish(at);
            return;
        }
        const Step& part = m_steps[step];
        if (part.part == Part::Weekday || (part.part == Part::Month && part.width > 2)) {
            readName(part, step, at);
        } else {
            const int least = part.part == Part::Year ? part.width : std::min(part.width, 2);
            for (int digits = std::max(least, part.part == Part::Year ? 0 : 2); digits >= least; --digits) {
                readNumber(part, step, at, digits);
            }
        }
    }

private:
    bool skip(const Step& step, Length& at) const
    {
        if (step.part == Part::Literal) {
            return at < m_text.size() && m_text.at(at++).toCaseFolded() == step.literal;
        }
        const Length begin = at;
        while (at < m_text.size() && m_text.at(at).isSpace()) {
            ++at;
        }
        return at > begin;
    }

    void readName(const Step& part, std::size_t step, Length at)
    {
        const bool isMonth = part.part == Part::Month;
        for (const DateNames::Name& name : isMonth ? m_names.months : m_names.weekdays) {
            if (m_text.mid(at, name.text.size()).compare(name.text, Qt::CaseInsensitive) == 0) {
                (isMonth ? m_month : m_weekday) = name.number;
                read(step + 1, at + name.text.size());
            }
        }
    }

    void readNumber(const Step& part, std::size_t step, Length at, int digits)
    {
        int number = 0;
        for (int i = 0; i < digits; ++i) {
            const int digit = takeDigit(at);
            if (digit < 0) {
                return;
            }
            number = number * 10 + digit;
        }
        if (part.part == Part::Year) {
            m_year = part.width == 4 ? number : m_firstYear + (number + 100 - m_firstYear % 100) % 100;
        } else {
            (part.part == Part::Day ? m_day : m_month) = number;
        }
        read(step + 1, at);
    }

    /// The next digit, of any script; below 0 where there is none.
    int takeDigit(Length& at) const
    {
        if (at >= m_text.size()) {
            return -1;
        }
        const QChar unit = m_text.at(at++);
        if (unit.isHighSurrogate() && at < m_text.size() && m_text.at(at).isLowSurrogate()) {
            return QChar::digitValue(QChar::surrogateToUcs4(unit, m_text.at(at++)));
        }
        return unit.digitValue();
    }

    void finish(Length at)
    {
        const QDate date(m_year, m_month, m_day);
        const bool fits = at == m_text.size() && m_year > 0 && date.isValid();
        if (fits && (m_weekday == 0 || m_weekday == date.dayOfWeek())) {
            m_dates.push_back(date);
        }
    }

    const std::vector<Step>& m_steps;
    const QString& m_text;
    const DateNames& m_names;
    const int m_firstYear;
    std::vector<QDate>& m_dates;
    int m_day = 0;
    int m_month = 0;
    int m_year = 0;
    int m_weekday = 0; // none
};

void DatePattern::read(const QString& text, const DateNames& names, int firstYear,
                       std::vector<QDate>& dates) const
{
    Reader(*this, text, names, firstYear, dates).read(0, 0);
}

} // namespace veltor::utils
