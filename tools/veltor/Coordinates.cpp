// Coordinates as people and programs write them, and the lines they stand in.

#include "Coordinates.h"

#include "Language.h"
#include "Text.h"

#include <veltor/utils/Patterns.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <iostream>
#include <stdexcept>

namespace veltor::tool {
namespace {

/// -12°30'15.25": recognised by the library's pattern, taken apart here.
std::optional<double> parseDegrees(std::string_view word)
{
    constexpr int fractionDigits = 15;
    static const QRegularExpression pattern = [] {
        QRegularExpression whole = utils::getDegreeRegExp(fractionDigits, QLatin1Char('.'));
        whole.setPattern(QRegularExpression::anchoredPattern(whole.pattern()));
        return whole;
    }();
    const QString text = QString::fromUtf8(word.data(), static_cast<int>(word.size()));
    if (!pattern.match(text).hasMatch()) {
        return std::nullopt;
    }
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const QString digits = text.mid(text.at(0).isDigit() ? 0 : 1);
    const auto degreesEnd = digits.indexOf(QChar(0x00B0));
    const auto minutesEnd = digits.indexOf(QLatin1Char('\''));
    const int degrees = digits.left(degreesEnd).toInt();
    const int minutes = digits.mid(degreesEnd + 1, minutesEnd - degreesEnd - 1).toInt();
    const double seconds = digits.mid(minutesEnd + 1, digits.size() - minutesEnd - 2).toDouble();
    if (minutes >= 60 || seconds >= 60) {
        return std::nullopt;
    }
    const double value = degrees + (minutes * 60 + seconds) / 3600;
    return isNegative ? -value : value;
}

} // namespace

std::optional<double> parseNumber(std::string_view word)
{
    if (word.find("\xC2\xB0") != std::string_view::npos) {
        return parseDegrees(word);
    }
    const bool hasPlus = !word.empty() && word.front() == '+';
    const std::string_view digits = word.substr(hasPlus ? 1 : 0);
    if (hasPlus && !digits.empty() && digits.front() == '-') {
        return std::nullopt;
    }
    double number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number);
    if (result.ptr != end || digits.empty()) {
        return std::nullopt;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // Which of the two ends of the range, only the slow way tells.
        number = std::strtod(std::string(digits).c_str(), nullptr);
        return std::fabs(number) < 1 ? std::optional(number) : std::nullopt;
    }
    return result.ec == std::errc() && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<QPointF> parsePosition(std::string_view longitude, std::string_view latitude)
{
    constexpr double hair = 1e-6;
    const std::optional<double> x = parseNumber(longitude);
    const std::optional<double> y = parseNumber(latitude);
    if (!x || !y || std::fabs(*y) > 90 + hair) {
        return std::nullopt;
    }
    return QPointF(*x, std::fabs(*y) > 90 ? std::copysign(90.0, *y) : *y);
}

void splitWords(std::string_view line, std::vector<std::string_view>& words)
{
    constexpr std::string_view separators = " \t,\r";
    words.clear();
    std::size_t begin = line.find_first_not_of(separators);
    while (begin != std::string_view::npos) {
        const std::size_t end = std::min(line.find_first_of(separators, begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(separators, end);
    }
}

bool readLine(std::string& line)
{
    static const bool isOwn = [] {
        std::ios::sync_with_stdio(false); // reads what is there, as a person or another program goes on
        std::cin.tie(nullptr);
        return true;
    }();
    static_cast<void>(isOwn);
    errno = 0;
    if (std::getline(std::cin, line)) {
        return true;
    }
    if (std::cin.bad()) {
        const int reason = errno != 0 ? errno : EIO;
        throw std::runtime_error(Text::tr("стандартный ввод: %1").arg(systemReason(reason)).toStdString());
    }
    return false;
}

} // namespace veltor::tool
