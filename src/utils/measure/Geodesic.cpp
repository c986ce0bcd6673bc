// The ellipsoid as PROJ's geodesic routines want it.

#include "Geodesic.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace veltor::utils {
namespace {

/// The bits of the parameters, not their values: zeros of either sign make different ellipsoids, and NaN
/// has to match itself.
using Key = std::array<std::uint64_t, 2>;

Key keyOf(double a, double rf)
{
    const std::array<double, 2> parameters{a, rf};
    Key key;
    static_assert(sizeof key == sizeof parameters);
    std::memcpy(key.data(), parameters.data(), sizeof key);
    return key;
}

/// Without constructor and destructor, so that a thread that never measures pays for nothing.
struct Memo
{
    geod_geodesic geodesic;
    Key key;
    bool filled;
};

thread_local Memo memo;

} // namespace

const geod_geodesic& preparedGeodesic(double a, double rf)
{
    const Key key = keyOf(a, rf);
    if (!memo.filled || memo.key != key) {
        geod_init(&memo.geodesic, a, 1 / rf);
        memo.key = key;
        memo.filled = true;
    }
    return memo.geodesic;
}

} // namespace veltor::utils
