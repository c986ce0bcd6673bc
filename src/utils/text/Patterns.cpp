// Expressions for masks, numbers and angles, built from texts and locales.
#include <veltor/utils/Patterns.h>

#include "base/QtDifferences.h"

#include <algorithm>
#include <limits>

namespace veltor::utils {
namespace {

/// Appends the code point at @p index, escaped.
/// @return the index behind it. Both halves of a surrogate pair go together: escaped by itself, the
///         second half would make the pattern invalid.
base::Length appendLiteral(const QString& text, base::Length index, QString& pattern)
{
    const bool pair =
        index + 1 < text.size() && text.at(index).isHighSurrogate() && text.at(index + 1).isLowSurrogate();
    const int length = pair ? 2 : 1;
    pattern += QRegularExpression::escape(text.mid(index, length));
    return index + length;
}

/// Appends the class whose "[" stands at @p index.
/// @return the index behind its "]", or the end of the glob
base::Length appendClass(const QString& glob, base::Length index, QString& pattern)
{
    pattern += QLatin1Char('[');
    ++index;
    if (index < glob.size() && glob.at(index) == QLatin1Char('!')) {
        pattern += QLatin1Char('^');
        ++index;
    }
    if (index < glob.size() && glob.at(index) == QLatin1Char(']')) {
        pattern += QLatin1Char(']');
        ++index;
    }
    while (index < glob.size() && glob.at(index) != QLatin1Char(']')) {
        pattern += QChar(ushort(glob.at(index).cell()));
        ++index;
    }
    pattern += QLatin1Char(']');
    return std::min(index + 1, glob.size());
}

bool isAsciiDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// Any one of the texts: a class where each is one character.
QString anyOf(const QStringList& texts)
{
    QStringList escaped;
    bool single = true;
    for (const QString& text : texts) {
        escaped += QRegularExpression::escape(text);
        single = single && text.size() == 1;
    }
    return single ? QLatin1Char('[') + escaped.join(QString()) + QLatin1Char(']')
                  : QStringLiteral("(?:") + escaped.join(QLatin1Char('|')) + QLatin1Char(')');
}

QString digitClass(const QLocale& locale, DigitsProcessing processing)
{
    const QString ascii = QStringLiteral("0-9");
    const QString zero = base::zeroDigit(locale);
    const bool sameDigits = zero == QLatin1String("0");
    QString nine = zero;
    nine.back() =
        QChar(static_cast<ushort>(nine.back().unicode() + 9)); // digits follow each other in Unicode
    const QString native = zero + QLatin1Char('-') + nine;
    QString members = processing == DigitsProcessing::Ascii || sameDigits ? ascii : native;
    if (processing == DigitsProcessing::Both && !sameDigits) {
        members += ascii;
    }
    return QLatin1Char('[') + members + QLatin1Char(']');
}

} // namespace

QString likeToRegular(const QString& mask, QChar escape)
{
    QString pattern;
    pattern.reserve(2 * mask.size());
    for (base::Length i = 0; i < mask.size();) {
        const QChar c = mask.at(i);
        if (!escape.isNull() && c == escape) {
            i = i + 1 < mask.size() ? appendLiteral(mask, i + 1, pattern) : i + 1;
        } else if (c == QLatin1Char('%')) {
            pattern += QLatin1String(".*");
            ++i;
        } else if (c == QLatin1Char('_')) {
            pattern += QLatin1Char('.');
            ++i;
        } else {
            i = appendLiteral(mask, i, pattern);
        }
    }
    return QRegularExpression::anchoredPattern(pattern);
}

QString globToRegular(const QString& glob)
{
    QString pattern;
    pattern.reserve(2 * glob.size());
    for (base::Length i = 0; i < glob.size();) {
        const QChar c = glob.at(i);
        if (c == QLatin1Char('?')) {
            pattern += QLatin1Char('.');
            ++i;
        } else if (c == QLatin1Char('*')) {
            pattern += QLatin1String(".*");
            ++i;
        } else if (c == QLatin1Char('[')) {
            i = appendClass(glob, i, pattern);
        } else {
            i = appendLiteral(glob, i, pattern);
        }
    }
    return QRegularExpression::anchoredPattern(pattern);
}

QString substringToWildcard(QString text)
{
    const QLatin1Char star('*');
    if (!text.startsWith(star)) {
        text.prepend(star);
    }
    if (!text.endsWith(star)) {
        text.append(star);
    }
    return text;
}

QRegularExpression getDegreeRegExp(int digits, QChar separator)
{
    const QString pattern = QStringLiteral(R"([-+]?\d{1,3}°\d{1,2}'\d{1,2}(\%0\d{0,%1})?")")
                                .arg(QString(separator), QString::number(digits < 1 ? 8 : digits));
    return QRegularExpression(pattern, QRegularExpression::DontCaptureOption);
}

bool containNonAscii(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() > 0x7F; });
}

std::pair<QString, int> stringAndNumeral(const QString& text)
{
    // ^(.*?)([0-9]+)$, read from its end: the expression itself takes quadratic time where long runs of
    // digits do not end the text.
    const base::Length end = text.endsWith(QLatin1Char('\n')) ? text.size() - 1 : text.size();
    base::Length start = end;
    while (start > 0 && isAsciiDigit(text.at(start - 1))) {
        --start;
    }
    const QString prefix = text.left(start);
    if (start == end || prefix.contains(QLatin1Char('\n'))) {
        return {text, -1};
    }
    bool fits = false;
    const int number = text.mid(start, end - start).toInt(&fits);
    return {prefix, fits ? number : std::numeric_limits<int>::max()};
}

QString digitRegular(const QLocale& locale, bool acceptAscii)
{
    return digitClass(locale, acceptAscii ? DigitsProcessing::Both : DigitsProcessing::Native) +
           QLatin1Char('+');
}

QString realRegular(const QLocale& locale, DigitsProcessing processing)
{
    const QString signs = anyOf({base::negativeSign(locale), base::positiveSign(locale)});
    const QString exponential = base::exponential(locale);
    QStringList exponents{exponential.toLower(), exponential.toUpper()};
    exponents.removeDuplicates();
    return QStringLiteral("%1?((%2+%3%2*)|(%3?%2+))(%4%1?%2+)?")
        .arg(signs, digitClass(locale, processing), QRegularExpression::escape(base::decimalPoint(locale)),
             anyOf(exponents));
}

} // namespace veltor::utils
