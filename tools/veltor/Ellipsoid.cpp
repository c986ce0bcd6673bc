// The value of the option --ellipsoid.

#include "Ellipsoid.h"

#include "Command.h"
#include "TerminalText.h"
#include "Text.h"

#include <cmath>
#include <limits>

namespace veltor::tool {

Ellipsoid parseEllipsoid(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    bool okA = false;
    bool okRf = false;
    Ellipsoid ellipsoid;
    if (parts.size() == 2) {
        ellipsoid.a = parts[0].toDouble(&okA);
        ellipsoid.rf = parts[1].toDouble(&okRf);
    }
    const bool isSphere = std::fabs(ellipsoid.rf) <= 1e-12;
    // A flattening of 1 or more leaves no ellipsoid; a negative one is a prolate ellipsoid.
    const bool valid = okA && okRf && std::isfinite(ellipsoid.a) && ellipsoid.a > 0 &&
                       std::isfinite(ellipsoid.rf) && (isSphere || 1 / ellipsoid.rf < 1);
    if (!valid) {
        throw UsageError(
            Text::tr("--ellipsoid: ожидаются большая полуось в метрах и обратное сжатие, например "
                     "6378137,298.257223563 (0 — сфера), а не '%1'")
                .arg(shownLine(text)));
    }
    if (isSphere) {
        ellipsoid.rf = std::numeric_limits<double>::infinity();
    }
    return ellipsoid;
}

} // namespace veltor::tool
