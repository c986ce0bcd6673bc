#include "Geodesic.h"

#include <cstring>

namespace veltor::utils {
namespace {

/// Without constructor and destructor, so that a thread that never measures pays for nothing.
struct Memo
{
    geod_geodesic geodesic;
    double key[2];
    bool filled;
};

thread_local Memo memo;

} // namespace

const geod_geodesic& preparedGeodesic(double a, double rf)
{
    // The bits are compared, not the values: zeros of either sign make different ellipsoids, and NaN has
    // to match itself.
    const double key[2] = {a, rf};
    if (!memo.filled || std::memcmp(memo.key, key, sizeof key) != 0) {
        geod_init(&memo.geodesic, a, 1 / rf);
        std::memcpy(memo.key, key, sizeof key);
        memo.filled = true;
    }
    return memo.geodesic;
}

} // namespace veltor::utils
