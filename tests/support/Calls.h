#pragma once

// Tables of calls: a line is a function's name, its arguments, "=", its result, split at a separator.

#include "Table.h"
#include "Text.h"

#include <QtCore/QLineF>
#include <QtCore/QLocale>
#include <QtCore/QMarginsF>
#include <QtCore/QRectF>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

namespace veltor::test {

/// A number; "pi" multiplies by it.
inline double numberOf(QString word, bool* ok = nullptr)
{
    const bool times = word.endsWith(u("pi"));
    word.chop(times ? 2 : 0);
    return word.toDouble(ok) * (times ? 3.14159265358979323846 : 1);
}

/// Takes a value of some type off the front of a list of words.
template <typename T>
T take(QStringList& words)
{
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return static_cast<T>(numberOf(words.takeFirst()));
    } else if constexpr (std::is_same_v<T, QString>) {
        return words.takeFirst();
    } else if constexpr (std::is_same_v<T, QChar>) {
        const QString word = words.takeFirst();
        return word == u("none") ? QChar() : word == u("blank") ? QChar(QLatin1Char(' ')) : word.at(0);
    } else if constexpr (std::is_same_v<T, QLocale>) {
        return QLocale(words.takeFirst());
    } else if constexpr (std::is_same_v<T, QSize>) {
        return {take<int>(words), take<int>(words)}; // braces: from left to right
    } else if constexpr (std::is_same_v<T, QPointF> || std::is_same_v<T, QSizeF>) {
        return {take<double>(words), take<double>(words)};
    } else {
        return {take<double>(words), take<double>(words), take<double>(words), take<double>(words)};
    }
}

/// What a function returned, in words; a float by its decimal digits, a text in quotation marks.
template <typename T>
QStringList wordsOf(const T& value)
{
    const auto words = [](auto... numbers) { return QStringList{QString::number(numbers, 'g', 17)...}; };
    if constexpr (std::is_same_v<T, float>) {
        return {QString::number(static_cast<double>(value))};
    } else if constexpr (std::is_arithmetic_v<T>) {
        return words(static_cast<double>(value));
    } else if constexpr (std::is_same_v<T, QString>) {
        return {u("\"") + value + u("\"")};
    } else if constexpr (std::is_same_v<T, QStringList>) {
        QStringList quoted;
        for (const QString& text : value) {
            quoted += wordsOf(text);
        }
        return quoted;
    } else if constexpr (std::is_same_v<T, QPointF>) {
        return words(value.x(), value.y());
    } else if constexpr (std::is_same_v<T, QRectF>) {
        return words(value.x(), value.y(), value.width(), value.height());
    } else {
        return words(value.left(), value.top(), value.right(), value.bottom());
    }
}

using Call = std::function<QStringList(QStringList)>;

template <typename Result, typename... Arguments>
Call call(Result (*function)(Arguments...))
{
    return [function](QStringList words) {
        const std::tuple<std::decay_t<Arguments>...> arguments{take<std::decay_t<Arguments>>(words)...};
        EXPECT_TRUE(words.isEmpty()) << "more arguments than the function takes";
        return wordsOf(std::apply(function, arguments));
    };
}

/// Whether two words are the same text or number.
inline bool sameWord(const QString& a, const QString& b)
{
    bool isA = false;
    bool isB = false;
    return a == b || (numberOf(a, &isA) == numberOf(b, &isB) && isA && isB);
}

/// Puts the signs of the locale that the row names, if it does, in the place of {-}, {+} and {e}.
inline void putSigns(QStringList& row)
{
    static const QRegularExpression localeName(u("^[a-z]{2}_[A-Z]{2}$"));
    const auto found = std::find_if(row.begin(), row.end(),
                                    [](const QString& word) { return localeName.match(word).hasMatch(); });
    if (found != row.end()) {
        const QLocale locale(*found);
        row.replaceInStrings(u("{-}"), QString(locale.negativeSign()));
        row.replaceInStrings(u("{+}"), QString(locale.positiveSign()));
        row.replaceInStrings(u("{e}"), QString(locale.exponential()));
    }
}

/// Does all calls of a table, and wants each function called.
inline void expectCalls(const char* table, char separator, const std::map<QByteArray, Call>& functions)
{
    std::map<QByteArray, int> calls;
    for (QStringList row : readTable(table, separator)) {
        SCOPED_TRACE(row.join(QLatin1Char(' ')).toStdString());
        for (QString& word : row) {
            word = word.trimmed();
        }
        putSigns(row);
        const int equals = row.indexOf(u("="));
        const QByteArray name = row[0].toLatin1();
        ++calls[name];
        const QStringList result = functions.at(name)(row.mid(1, equals - 1));
        const QStringList expected = row.mid(equals + 1);
        EXPECT_TRUE(std::equal(result.begin(), result.end(), expected.begin(), expected.end(), sameWord))
            << result.join(QLatin1Char(' ')).toStdString();
    }
    EXPECT_EQ(calls.size(), functions.size());
}

} // namespace veltor::test
