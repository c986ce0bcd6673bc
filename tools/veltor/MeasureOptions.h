#pragma once

#include <veltor/json/JsonFormatter.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace veltor::tool {

/// WGS 84 unless --ellipsoid names another one. A sphere is kept as an infinite inverse flattening: the
/// library takes that for a flattening of 0 in every function, while some read coordinates as radians
/// when the inverse flattening is 0.
struct Ellipsoid
{
    double a = 6378137;
    double rf = 298.257223563;
};

/// What `distance` and `measure` understand; `words` are the arguments that are no options.
struct MeasureOptions
{
    Ellipsoid ellipsoid;
    bool hasEllipsoid = false;
    bool help = false;
    bool json = false;
    const json::Format* layout = &json::JsonFormatter::formatIndented;
    json::EndOfLine endOfLine = json::EndOfLine::Lf;
    int largest = 0; ///< 0: all features, in the file's order
    QString mode;
    QStringList words;
};

/// Sorts out the command line. A word is an option if it starts with two dashes, so negative coordinates
/// need no care.
/// @param usage     text of the UsageError thrown when the words do not fit
/// @param measures  whether --mode, --largest, --layout and --eol are understood; the last two imply --json
[[nodiscard]] MeasureOptions parseMeasureOptions(QStringList arguments, const QString& usage, bool measures);

} // namespace veltor::tool
