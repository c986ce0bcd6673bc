#pragma once

#include <cstddef>
#include <set>
#include <vector>

namespace veltor::concurrent {

/// Which part of a group may begin when: parts, what each waits for, and how far they are. Knows no tasks.
class GroupPlan
{
public:
    /// Where a part stands.
    enum class State
    {
        Waiting,
        Running,
        Done,
        Failed,
        Canceled, // of its own
        Skipped,  // never began
    };

    /// @return its number: they count from 0
    std::size_t add();
    /// @p part waits for @p on.
    /// @return empty; or the circle that this would close, from @p part to itself, with nothing changed
    [[nodiscard]] std::vector<std::size_t> addDependency(std::size_t part, std::size_t on);

    /// The first part, in the order of adding, whose time has come; it runs from now on. size() when none.
    [[nodiscard]] std::size_t begin();
    /// A running part has ended.
    /// @return the parts that are skipped thereby, since they need it and it was not done
    std::vector<std::size_t> end(std::size_t part, State how);
    /// No further part begins.
    /// @return the parts that are skipped thereby
    std::vector<std::size_t> stop();

    [[nodiscard]] std::size_t size() const noexcept { return m_parts.size(); }
    [[nodiscard]] State state(std::size_t part) const { return m_parts[part].state; }
    [[nodiscard]] std::size_t running() const noexcept { return m_running; }
    /// Every part has ended or was skipped.
    [[nodiscard]] bool over() const noexcept { return m_left == 0; }

private:
    struct Part
    {
        State state = State::Waiting;
        std::size_t unmet = 0;              // parts that it still waits for
        std::vector<std::size_t> on;        // what it waits for
        std::vector<std::size_t> followers; // what waits for it
    };

    void skip(std::size_t part, std::vector<std::size_t>& skipped);

    std::vector<Part> m_parts;
    std::set<std::size_t> m_ready; // waiting, for nothing
    std::size_t m_running = 0;
    std::size_t m_left = 0; // neither ended nor skipped
};

} // namespace veltor::concurrent
