#pragma once

#include <veltor/Export.h>

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <atomic>
#include <cstddef>
#include <map>
#include <shared_mutex>
#include <string_view>
#include <vector>

namespace veltor::utils {

/// Adds up how long named operations take, over the whole process, and writes the sums to the log.
/// ScopedTimer measures a scope for it.
///
///     QElapsedTimer timer;
///     timer.start();
///     load();
///     veltor::utils::SummaryTime::instance().addTime("load", quint64(timer.nsecsElapsed()));
///     ...
///     veltor::utils::SummaryTime::instance().flush();
class VELTOR_UTILS_EXPORT SummaryTime
{
public:
    /// A name of up to 16 bytes as a number of 128 bits, the first byte the most significant, so that
    /// numbers sort as their names do.
    class VELTOR_UTILS_EXPORT OperationId
    {
    public:
        /// From the name's bytes: the first eight in @p high, the others in @p low.
        constexpr OperationId(quint64 high, quint64 low) noexcept
            : m_high(high)
            , m_low(low)
        {}

        /// From a literal; a longer one does not compile.
        template <std::size_t Size>
        constexpr OperationId(const char (&name)[Size]) noexcept // NOLINT: meant to convert
            : OperationId(fromName({name, Size - 1}))
        {
            static_assert(Size <= 17, "an operation's name has 16 bytes at most");
        }

        /// From @p name, normally ASCII; bytes after the sixteenth and from a zero byte on are left out.
        [[nodiscard]] static constexpr OperationId fromName(std::string_view name) noexcept
        {
            name = name.substr(0, name.find('\0'));
            return {word(name, 0), word(name, 8)};
        }

        /// The first eight bytes of the name.
        [[nodiscard]] constexpr quint64 high() const noexcept { return m_high; }
        /// The others.
        [[nodiscard]] constexpr quint64 low() const noexcept { return m_low; }

        /// The bytes up to the first zero one, as UTF-8.
        [[nodiscard]] QString name() const;

        friend constexpr bool operator<(OperationId a, OperationId b) noexcept
        {
            return a.m_high != b.m_high ? a.m_high < b.m_high : a.m_low < b.m_low;
        }
        friend constexpr bool operator==(OperationId a, OperationId b) noexcept
        {
            return a.m_high == b.m_high && a.m_low == b.m_low;
        }
        friend constexpr bool operator!=(OperationId a, OperationId b) noexcept { return !(a == b); }

    private:
        static constexpr quint64 word(std::string_view name, std::size_t begin) noexcept
        {
            quint64 value = 0;
            for (std::size_t i = begin; i < begin + 8; ++i) {
                value = value << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0U);
            }
            return value;
        }

        quint64 m_high;
        quint64 m_low;
    };

    /// The process's one object, made at the first call. Thread-safe.
    [[nodiscard]] static SummaryTime& instance();

    SummaryTime(const SummaryTime&) = delete;
    SummaryTime& operator=(const SummaryTime&) = delete;

    /// Adds one run of an operation. Threads that add to the same operation at the same moment may lose
    /// some of these runs; in exchange they hardly hinder each other. Thread-safe.
    void addTime(OperationId operation, unsigned long long durationNs);

    /// What one operation has added up to.
    struct Sum
    {
        OperationId operation; ///< its name
        quint64 totalNs;       ///< of all runs
        quint64 count;         ///< of runs
        quint64 minimumNs;     ///< the shortest run
        quint64 maximumNs;     ///< the longest run
    };
    /// The sums so far, in the order of the operations' names. Thread-safe beside addTime(); the four numbers
    /// of an operation that is being added to may be of different moments.
    [[nodiscard]] std::vector<Sum> snapshot() const;

    /// Forgets all operations. To be called while no other thread uses the object.
    void clear();

    /// Writes total, count, average, minimum and maximum of each operation to the log, in the order of
    /// their names; nothing is forgotten. To be called while no other thread adds or clears.
    void flush() const;

private:
    /// Relaxed loads and stores, no more: an update costs what it would without threads.
    struct Record
    {
        explicit Record(quint64 firstNs) noexcept
            : minimum(firstNs)
            , maximum(firstNs)
        {}
        void add(quint64 durationNs) noexcept;

        std::atomic<quint64> total{0};
        std::atomic<quint64> count{0};
        std::atomic<quint64> minimum;
        std::atomic<quint64> maximum;
    };

    SummaryTime() = default;
    ~SummaryTime() = default;

    std::map<OperationId, Record> m_records;
    mutable std::shared_mutex m_lock; // guards the map's shape, not what the records hold
};

} // namespace veltor::utils
