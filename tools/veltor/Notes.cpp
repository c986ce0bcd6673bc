// Equal remarks about features, each kind told once.

#include "Console.h"
#include "MapFeature.h"
#include "TerminalText.h"
#include "Text.h"

namespace veltor::tool {

void Notes::add(const QString& kind, const MapFeature& feature)
{
    Entry& entry = m_entries[kind];
    if (entry.count == 0 || feature.number < entry.number) {
        entry.number = feature.number;
        entry.name = feature.name;
    }
    ++entry.count;
}

void Notes::add(const Notes& others)
{
    for (const auto& [kind, other] : others.m_entries) {
        Entry& entry = m_entries[kind];
        if (entry.count == 0 || other.number < entry.number) {
            entry.number = other.number;
            entry.name = other.name;
        }
        entry.count += other.count;
    }
}

void Notes::print() const
{
    for (const auto& [kind, entry] : m_entries) {
        const QString place =
            Text::tr("объект %1 (%2)").arg(QString::number(entry.number), shownName(entry.name));
        QString line = QStringLiteral("veltor: %1: %2").arg(place, kind);
        if (entry.count > 1) {
            line += Text::tr(" (всего таких объектов: %1)").arg(entry.count);
        }
        printError(line);
    }
}

} // namespace veltor::tool
