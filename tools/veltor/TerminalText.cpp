// Texts from outside made harmless for a terminal.

#include "TerminalText.h"

#include <algorithm>

namespace veltor::tool {
namespace {

/// Characters that turn the writing direction: they show a name other than it is.
bool turnsDirection(ushort code)
{
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

bool isHarmless(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return !turnsDirection(character.unicode());
    }
}

QString escaped(QChar character)
{
    const uint code = character.unicode();
    switch (code) {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        // Of bytes above 7f the shell would make other characters.
        return code < 0x80 ? QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'))
                           : QStringLiteral("\\u%1").arg(code, 4, 16, QLatin1Char('0'));
    }
}

} // namespace

QString shownName(const QString& name)
{
    if (std::all_of(name.begin(), name.end(), &isHarmless)) {
        return name;
    }
    QString shown = QStringLiteral("$'");
    for (const QChar character : name) {
        if (character == QLatin1Char('\'') || character == QLatin1Char('\\')) {
            shown += QLatin1Char('\\');
        }
        shown += isHarmless(character) ? QString(character) : escaped(character);
    }
    return shown + QLatin1Char('\'');
}

QString shownLine(const QString& text)
{
    QString shown;
    shown.reserve(text.size());
    for (const QChar character : text) {
        shown += isHarmless(character) ? QString(character) : escaped(character);
    }
    return shown;
}

QString shownJson(const QString& json)
{
    QString shown;
    shown.reserve(json.size());
    for (const QChar character : json) {
        // What lies below is layout: inside strings JSON itself has no control characters.
        const bool keep = character < QLatin1Char(' ') || isHarmless(character);
        shown += keep ? QString(character)
                      : QStringLiteral("\\u%1").arg(uint(character.unicode()), 4, 16, QLatin1Char('0'));
    }
    return shown;
}

} // namespace veltor::tool
