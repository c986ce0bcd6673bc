#pragma once

#include "Arguments.h"
#include "Ellipsoid.h"

#include <veltor/json/JsonFormatter.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace veltor::tool {

/// What `distance` and `measure` understand; `words` are the arguments that are no options.
struct MeasureOptions
{
    Ellipsoid ellipsoid;
    bool hasEllipsoid = false;
    bool json = false;
    const json::Format* layout = &json::JsonFormatter::formatIndented;
    json::EndOfLine endOfLine = json::EndOfLine::Lf;
    int largest = 0; ///< 0: all features, in the file's order
    QString mode;
};

/// What the command line of `measure` asks for.
/// @throws UsageError
[[nodiscard]] MeasureOptions measureOptions(const Arguments& arguments);

} // namespace veltor::tool
