// Any bytes as lines of positions: split, read and measured by every formula without a crash or a hang.

#include "Coordinates.h"
#include "Fuzz.h"

#include <veltor/utils/Distance.h>

#include <cmath>

using namespace veltor;
using veltor::fuzz::demand;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    constexpr double a = 6378137;
    constexpr double rf = 298.257223563;
    const std::string_view line = veltor::fuzz::textOf(bytes, size);
    std::vector<std::string_view> words;
    tool::splitWords(line, words);
    for (std::size_t i = 0; i + 4 <= words.size(); i += 4) {
        const auto from = tool::parsePosition(words[i], words[i + 1]);
        const auto to = tool::parsePosition(words[i + 2], words[i + 3]);
        if (!from || !to) {
            continue;
        }
        demand(std::fabs(from->y()) <= 90 && std::isfinite(from->x()), "a position is one");
        static_cast<void>(utils::vincentyDistance(*from, *to, a, rf));
        static_cast<void>(utils::lambertDistance(*from, *to, a, rf));
        static_cast<void>(utils::sphericalDistance(*from, *to));
        const double geodesic = utils::backGeodesicProblem(*from, *to, a, rf).first;
        demand(geodesic >= 0 && geodesic < 20.1e6, "a distance is one on Earth");
        demand(!std::isnan(utils::cartesianDistance(*from, *to)), "a distance is a number");
    }
    return 0;
}
