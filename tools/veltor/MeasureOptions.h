#pragma once

#include "Arguments.h"
#include "Ellipsoid.h"
#include "Surface.h"

#include <veltor/core/CalcMode.h>
#include <veltor/json/JsonFormatter.h>

#include <optional>

namespace veltor::tool {

enum class OutputFormat
{
    Table,
    Csv,
    Json,
    GeoJson
};

enum class SortKey
{
    None,
    Name,
    Area,
    Perimeter,
    Length
};

/// Units of lengths and of areas.
struct Unit
{
    const char* length;
    const char* area;
    double metres;       ///< of the one of length
    double squareMetres; ///< of the one of area
};

/// What the command line of `measure` asks for.
struct MeasureOptions
{
    core::CalcMode mode = core::CalcMode::Ellipsoidal;
    Edges edges = Edges::Geodesic;
    Ellipsoid ellipsoid;
    OutputFormat format = OutputFormat::Table;
    const json::Format* layout = &json::JsonFormatter::formatIndented;
    std::optional<json::EndOfLine> endOfLine;
    std::optional<Unit> unit;
    int precision = -1; ///< digits behind the point; -1: the format's own way
    int largest = 0;    ///< 0: all features
    SortKey sort = SortKey::None;
    QString nameProperty;
};

/// Declares the options in @p arguments, whose help lists them.
void addMeasureOptions(Arguments& arguments);

/// @throws UsageError
[[nodiscard]] MeasureOptions measureOptions(const Arguments& arguments);

} // namespace veltor::tool
