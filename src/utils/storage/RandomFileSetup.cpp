// The limits of the block file.

#include <veltor/utils/RandomFile.h>

#include <algorithm>

namespace veltor::utils {

RandomFileSetup::RandomFileSetup(std::array<unsigned, 3> limits, unsigned threshold) noexcept
    : m_limits(limits)
    , m_threshold(threshold)
{}

RandomFileSetup::RandomFileSetup(unsigned blocks) noexcept
    : RandomFileSetup({std::max(blocks, 1u), 1, std::max(blocks, 1u)}, 1000)
{}

unsigned RandomFileSetup::increaseLimit() const noexcept
{
    return canIncrease() ? maxLimit() - curLimit() : 0;
}

unsigned RandomFileSetup::reduceLimit() const noexcept
{
    return canReduce() ? curLimit() - minLimit() : 0;
}

void RandomFileSetup::setCurLimit(unsigned blocks) noexcept
{
    const unsigned limit = std::max(blocks, 1u);
    m_limits = {limit, std::min(minLimit(), limit), std::max(maxLimit(), limit)};
}

void RandomFileSetup::setThreshold(unsigned threshold) noexcept
{
    m_threshold = threshold >= maxLimit() ? threshold : maxLimit() + 1;
}

void RandomFileSetup::fixThreshold() noexcept
{
    setThreshold(m_threshold);
}

} // namespace veltor::utils
