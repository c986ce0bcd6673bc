#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>

namespace veltor::core {

/// The model of the Earth's surface that distances and areas are measured on.
enum class CalcMode : unsigned char
{
    Cartesian = 0,   ///< a plane
    Spherical = 1,   ///< a sphere
    Ellipsoidal = 2, ///< an ellipsoid of revolution
    Invalid = 127,   ///< the keyword is not known
    Auto = 255,      ///< no explicit choice; the caller decides, say from the coordinate system in use
};

/// The mode that a keyword from settings, a script or a dialog names.
///
/// | mode          | keywords                                  |
/// |---------------|-------------------------------------------|
/// | `Cartesian`   | "cartesian", "plane"                      |
/// | `Spherical`   | "spherical", "sphere"                     |
/// | `Ellipsoidal` | "ellipsoidal", "ellipsoid", "ellipse"     |
/// | `Auto`        | "auto", "default", the empty string       |
///
/// @param name  any text; case and surrounding white space do not matter, so a blank one is `Auto`
/// @return the mode, `CalcMode::Invalid` for any other word. Thread-safe.
[[nodiscard]] VELTOR_UTILS_EXPORT CalcMode findCalcMode(const QString& name);

} // namespace veltor::core
