// Whether saved bytes explain a file's old length.

#include "utils/storage/journal/LengthProof.h"

#include <algorithm>
#include <iterator>

namespace veltor::utils::journal {
namespace {

constexpr std::size_t MaxGaps = 65536;

} // namespace

LengthProof::LengthProof(quint64 oldSize, quint64 size)
    : m_oldSize(oldSize)
    , m_size(size)
{}

void LengthProof::cut(quint64 bound)
{
    m_size = std::min(m_size, bound);
    while (!m_gaps.empty() && m_gaps.rbegin()->second > bound) {
        const auto last = std::prev(m_gaps.end());
        if (last->first < bound) {
            last->second = bound;
        } else {
            m_gaps.erase(last);
        }
    }
}

bool LengthProof::fill(quint64 begin, quint64 end)
{
    if (begin >= end) {
        return true;
    }
    if (begin > m_size) {
        m_gaps.emplace(m_size, begin);
    }
    m_size = std::max(m_size, end);
    auto gap = m_gaps.upper_bound(begin);
    if (gap != m_gaps.begin() && std::prev(gap)->second > begin) {
        --gap;
    }
    while (gap != m_gaps.end() && gap->first < end) {
        const auto [from, to] = *gap;
        gap = m_gaps.erase(gap);
        if (from < begin) {
            m_gaps.emplace(from, begin);
        }
        if (to > end) {
            m_gaps.emplace(end, to);
        }
    }
    return m_gaps.size() <= MaxGaps;
}

} // namespace veltor::utils::journal
