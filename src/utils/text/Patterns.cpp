#include <veltor/utils/Patterns.h>

#include <algorithm>
#include <limits>

namespace veltor::utils {
namespace {

/// Appends the code point at @p index, escaped.
/// @return the index behind it. Both halves of a surrogate pair go together: escaped by itself, the
///         second half would make the pattern invalid.
int appendLiteral(const QString& text, int index, QString& pattern)
{
    const bool pair =
        index + 1 < text.size() && text.at(index).isHighSurrogate() && text.at(index + 1).isLowSurrogate();
    const int length = pair ? 2 : 1;
    pattern += QRegularExpression::escape(text.mid(index, length));
    return index + length;
}

/// Appends the class whose "[" stands at @p index.
/// @return the index behind its "]", or the end of the glob
int appendClass(const QString& glob, int index, QString& pattern)
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

QString digitClass(const QLocale& locale, DigitsProcessing processing)
{
    const QString ascii = QStringLiteral("0-9");
    const QChar zero = locale.zeroDigit();
    const bool sameDigits = zero == QLatin1Char('0');
    const QString native = zero + QLatin1Char('-') + QChar(static_cast<ushort>(zero.unicode() + 9));
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
    for (int i = 0; i < mask.size();) {
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
    for (int i = 0; i < glob.size();) {
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
    const int end = text.endsWith(QLatin1Char('\n')) ? text.size() - 1 : text.size();
    int start = end;
    while (start > 0 && isAsciiDigit(text.at(start - 1))) {
        --start;
    }
    const QString prefix = text.left(start);
    if (start == end || prefix.contains(QLatin1Char('\n'))) {
        return {text, -1};
    }
    bool fits = false;
    const int number = text.midRef(start, end - start).toInt(&fits);
    return {prefix, fits ? number : std::numeric_limits<int>::max()};
}

QString digitRegular(const QLocale& locale, bool acceptAscii)
{
    return digitClass(locale, acceptAscii ? DigitsProcessing::Both : DigitsProcessing::Native) +
           QLatin1Char('+');
}

QString realRegular(const QLocale& locale, DigitsProcessing processing)
{
    const auto escaped = [](const QString& text) { return QRegularExpression::escape(text); };
    const QString signs = escaped(QString(locale.negativeSign()) + locale.positiveSign());
    const QChar exponential = locale.exponential();
    const QString exponents = exponential.toLower() == exponential.toUpper()
                                  ? escaped(exponential)
                                  : escaped(exponential.toLower()) + escaped(exponential.toUpper());
    return QStringLiteral("[%1]?((%2+%3%2*)|(%3?%2+))([%4][%1]?%2+)?")
        .arg(signs, digitClass(locale, processing), escaped(locale.decimalPoint()), exponents);
}

} // namespace veltor::utils
