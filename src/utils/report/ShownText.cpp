// Texts from outside without what terminals and pages obey.

#include "ShownText.h"

#include "base/QtDifferences.h"

namespace veltor::utils {
namespace {

/// What is shown for a unit that is no half of a pair.
char16_t shownUnit(char16_t unit)
{
    constexpr char16_t pictures = 0x2400; // of the control characters, in their order
    constexpr char16_t pictureOfDelete = 0x2421;
    if (unit < 0x20) {
        return unit == u'\n' || unit == u'\t' ? unit : static_cast<char16_t>(pictures + unit);
    }
    if (unit == 0x7F) {
        return pictureOfDelete;
    }
    const bool isLineEnd = unit == 0x85 || unit == QChar::LineSeparator || unit == QChar::ParagraphSeparator;
    const bool turns = (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
    const bool isControl = unit >= 0x80 && unit < 0xA0;
    const bool isNoCharacter = unit >= 0xFFFE || (unit >= 0xFDD0 && unit <= 0xFDEF);
    return isLineEnd ? u'\n' : turns || isControl || isNoCharacter ? u'\uFFFD' : unit;
}

} // namespace

QString shownText(const QString& text)
{
    QString shown;
    shown.reserve(text.size());
    for (base::Length i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (unit.isHighSurrogate() && next.isLowSurrogate()) {
            shown += unit;
            shown += next;
            ++i;
        } else if (unit.isSurrogate()) {
            shown += QChar(QChar::ReplacementCharacter);
        } else if (unit == QLatin1Char('\r')) {
            i += next == QLatin1Char('\n') ? 1 : 0;
            shown += QLatin1Char('\n');
        } else {
            shown += QChar(shownUnit(unit.unicode()));
        }
    }
    return shown;
}

} // namespace veltor::utils
