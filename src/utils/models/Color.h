#pragma once

#include <QtCore/QString>

#include <optional>

class QVariant;

namespace veltor::utils {

/// A colour of the screen; red, green, blue and opacity from 0 to 1.
struct Color
{
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;

    /// As a style sheet has it, without the opacity.
    [[nodiscard]] QString css() const;
};

/// A QColor, a QBrush of one colour or the name of one, as "#rrggbb" or "#aarrggbb"; empty for other values
/// and for a colour that is none.
[[nodiscard]] QString colorText(const QVariant& value);

/// The colour of such a text; nothing for any other.
[[nodiscard]] std::optional<Color> parseColor(const QString& text);

/// What is seen of a colour that lies on another.
[[nodiscard]] Color over(const Color& color, const Color& ground);

/// How well one can be read on the other, 1 to 21: the contrast ratio of the Web Content Accessibility
/// Guidelines 2.1, which ask for 4.5.
[[nodiscard]] double contrast(const Color& a, const Color& b);

/// The colour itself where it can be read on @p ground, else the nearest towards black or white that can.
[[nodiscard]] Color readable(const Color& color, const Color& ground);

} // namespace veltor::utils
