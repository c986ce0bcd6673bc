// The order in which the parts of a group may run.

#include "GroupPlan.h"

#include <algorithm>

namespace veltor::concurrent {

std::size_t GroupPlan::add()
{
    m_parts.emplace_back();
    m_ready.insert(m_ready.end(), m_parts.size() - 1);
    ++m_left;
    return m_parts.size() - 1;
}

std::vector<std::size_t> GroupPlan::addDependency(std::size_t part, std::size_t on)
{
    // The way from on back to part, if there is one: each part with the one that led to it.
    constexpr std::size_t unseen = ~std::size_t{};
    std::vector<std::size_t> cameFrom(m_parts.size(), unseen);
    std::vector<std::size_t> open{on};
    cameFrom[on] = part;
    while (!open.empty() && cameFrom[part] == unseen) {
        const std::size_t next = open.back();
        open.pop_back();
        for (const std::size_t before : m_parts[next].on) {
            if (cameFrom[before] == unseen) {
                cameFrom[before] = next;
                open.push_back(before);
            }
        }
    }
    if (cameFrom[part] != unseen) {
        std::vector<std::size_t> circle{part};
        for (std::size_t at = cameFrom[part]; at != part; at = cameFrom[at]) {
            circle.push_back(at);
        }
        circle.push_back(part);
        std::reverse(circle.begin(), circle.end());
        return circle;
    }
    m_parts[part].on.push_back(on);
    m_parts[on].followers.push_back(part);
    ++m_parts[part].unmet;
    m_ready.erase(part);
    return {};
}

std::size_t GroupPlan::begin()
{
    if (m_ready.empty()) {
        return m_parts.size();
    }
    const std::size_t part = *m_ready.begin();
    m_ready.erase(m_ready.begin());
    m_parts[part].state = State::Running;
    ++m_running;
    return part;
}

std::vector<std::size_t> GroupPlan::end(std::size_t part, State how)
{
    m_parts[part].state = how;
    --m_running;
    --m_left;
    std::vector<std::size_t> skipped;
    for (const std::size_t follower : m_parts[part].followers) {
        if (how != State::Done) {
            skip(follower, skipped);
        } else if (--m_parts[follower].unmet == 0 && m_parts[follower].state == State::Waiting) {
            m_ready.insert(follower);
        }
    }
    return skipped;
}

std::vector<std::size_t> GroupPlan::stop()
{
    std::vector<std::size_t> skipped;
    for (std::size_t part = 0; part < m_parts.size(); ++part) {
        skip(part, skipped);
    }
    return skipped;
}

/// With all that need it, when it waits.
void GroupPlan::skip(std::size_t first, std::vector<std::size_t>& skipped)
{
    std::vector<std::size_t> open{first};
    while (!open.empty()) {
        Part& part = m_parts[open.back()];
        if (part.state == State::Waiting) {
            part.state = State::Skipped;
            --m_left;
            m_ready.erase(open.back());
            skipped.push_back(open.back());
            open.pop_back();
            open.insert(open.end(), part.followers.begin(), part.followers.end());
        } else {
            open.pop_back();
        }
    }
}

} // namespace veltor::concurrent
