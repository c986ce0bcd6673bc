// Remarks about features on their way to the report of the whole map.

#include "MapFeature.h"
#include "Text.h"

#include <veltor/err/ErrorTracer.h>

namespace veltor::tool {

void Notes::addTo(err::ErrorTracer& errors, const QString& file) const
{
    for (const Note& note : m_notes) {
        const QString feature = Text::tr("объект %1 (%2)").arg(QString::number(note.number), note.name);
        errors.add(err::ErrorSeverity::Warning, note.kind, {file, 0, feature});
    }
}

} // namespace veltor::tool
