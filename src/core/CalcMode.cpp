// Keywords of the calculation modes.

#include <veltor/core/CalcMode.h>

#include <algorithm>
#include <array>
#include <utility>

namespace veltor::core {

CalcMode findCalcMode(const QString& name)
{
    // Ordered by how often settings and scripts use the words.
    static const std::array<std::pair<QString, CalcMode>, 10> keywords{{
        {QStringLiteral("cartesian"), CalcMode::Cartesian},
        {QStringLiteral("spherical"), CalcMode::Spherical},
        {QStringLiteral("ellipsoidal"), CalcMode::Ellipsoidal},
        {QStringLiteral("auto"), CalcMode::Auto},
        {QString(), CalcMode::Auto},
        {QStringLiteral("sphere"), CalcMode::Spherical},
        {QStringLiteral("ellipsoid"), CalcMode::Ellipsoidal},
        {QStringLiteral("default"), CalcMode::Auto},
        {QStringLiteral("ellipse"), CalcMode::Ellipsoidal},
        {QStringLiteral("plane"), CalcMode::Cartesian},
    }};
    const QString word = name.trimmed().toLower();
    const auto* const entry = std::find_if(keywords.begin(), keywords.end(),
                                           [&](const auto& keyword) { return keyword.first == word; });
    return entry != keywords.end() ? entry->second : CalcMode::Invalid;
}

} // namespace veltor::core
