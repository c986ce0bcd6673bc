// Colours of a model's items, which come as values of Qt's module for graphics: that converts them to text
// for us, so that this library does without it.
#include "utils/models/Color.h"

#include "base/QtDifferences.h"

#include <QtCore/QVariant>

#include <algorithm>
#include <cmath>

namespace veltor::utils {
namespace {

constexpr double leastContrast = 4.5;

double luminance(const Color& color)
{
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

Color mixed(const Color& a, const Color& b, double share)
{
    const auto mix = [share](double from, double to) { return from + (to - from) * share; };
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue), a.alpha};
}

} // namespace

QString Color::css() const
{
    const auto byte = [](double value) {
        return static_cast<uint>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
    };
    const uint bits = 0x1000000u | (byte(red) << 16) | (byte(green) << 8) | byte(blue);
    return QLatin1Char('#') + QString::number(bits, 16).mid(1);
}

QString colorText(const QVariant& value)
{
    if (!value.isValid()) {
        return {};
    }
    if (value.userType() == QMetaType::QString && value.toString().startsWith(QLatin1Char('#'))) {
        return value.toString(); // also where the program knows no colours
    }
    // An invalid colour gives a text as well, that of black.
    static const QVariant none = base::converted(QVariant(), QMetaType::QColor);
    const QVariant color = base::converted(value, QMetaType::QColor);
    return color == none ? QString() : color.toString();
}

std::optional<Color> parseColor(const QString& text)
{
    bool isNumber = false;
    const uint bits = text.mid(1).toUInt(&isNumber, 16);
    if (!isNumber || !text.startsWith(QLatin1Char('#')) || (text.size() != 7 && text.size() != 9)) {
        return std::nullopt;
    }
    const auto part = [bits](int shift) { return static_cast<double>((bits >> shift) & 0xFFu) / 255.0; };
    return Color{part(16), part(8), part(0), text.size() == 9 ? part(24) : 1.0};
}

Color over(const Color& color, const Color& ground)
{
    Color seen = mixed(ground, color, color.alpha);
    seen.alpha = 1.0;
    return seen;
}

double contrast(const Color& a, const Color& b)
{
    const auto [dark, light] = std::minmax({luminance(a), luminance(b)}); // by value
    return (light + 0.05) / (dark + 0.05);
}

Color readable(const Color& color, const Color& ground)
{
    const Color black{};
    const Color white{1.0, 1.0, 1.0};
    const Color& end = contrast(black, ground) > contrast(white, ground) ? black : white;
    constexpr int steps = 20;
    for (int step = 0; step < steps; ++step) {
        const Color tried = mixed(color, end, static_cast<double>(step) / steps);
        if (contrast(tried, ground) >= leastContrast) {
            return tried;
        }
    }
    return end;
}

} // namespace veltor::utils
