// The sums of operations' times, and their report.

#include <veltor/utils/SummaryTime.h>

#include <veltor/logging/Logger.h>

#include <array>
#include <mutex>

namespace veltor::utils {
namespace {

// The report's call site as readers of the log know it; its lines are numbered from here.
constexpr char reportFile[] = "SummaryTime.cpp";
constexpr char reportFunction[] = "void veltor::utils::SummaryTime::flush() const";
constexpr int reportLine = 33;

logging::LogStream report(int index)
{
    return logging::LoggerMessager(logging::LogLevel::Info, reportFile, reportLine + index, reportFunction)
        .write();
}

} // namespace

QString SummaryTime::OperationId::name() const
{
    std::array<char, 16> bytes{};
    for (unsigned i = 0; i < 8; ++i) {
        bytes[i] = static_cast<char>(m_high >> (56 - 8 * i) & 0xFF);
        bytes[8 + i] = static_cast<char>(m_low >> (56 - 8 * i) & 0xFF);
    }
    const std::string_view all(bytes.data(), bytes.size());
    const std::string_view text = all.substr(0, all.find('\0'));
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

void SummaryTime::Record::add(quint64 durationNs) noexcept
{
    constexpr auto relaxed = std::memory_order_relaxed;
    if (durationNs < minimum.load(relaxed)) {
        minimum.store(durationNs, relaxed);
    }
    if (durationNs > maximum.load(relaxed)) {
        maximum.store(durationNs, relaxed);
    }
    total.store(total.load(relaxed) + durationNs, relaxed);
    count.store(count.load(relaxed) + 1, relaxed);
}

SummaryTime& SummaryTime::instance()
{
    static SummaryTime summary;
    return summary;
}

void SummaryTime::addTime(OperationId operation, unsigned long long durationNs)
{
    {
        const std::shared_lock lock(m_lock);
        if (const auto found = m_records.find(operation); found != m_records.end()) {
            found->second.add(durationNs);
            return;
        }
    }
    const std::unique_lock lock(m_lock);
    // Another thread may have come first; then this finds its record.
    m_records.try_emplace(operation, durationNs).first->second.add(durationNs);
}

std::vector<SummaryTime::Sum> SummaryTime::snapshot() const
{
    const std::shared_lock lock(m_lock);
    std::vector<Sum> sums;
    sums.reserve(m_records.size());
    for (const auto& [operation, record] : m_records) {
        sums.push_back({operation, record.total, record.count, record.minimum, record.maximum});
    }
    return sums;
}

void SummaryTime::clear()
{
    m_records.clear();
}

void SummaryTime::flush() const
{
    for (const auto& [operation, record] : m_records) {
        const quint64 total = record.total;
        const quint64 count = record.count;
        report(0) << "Operation: " << operation.name();
        report(1) << "Time taken: " << total << "ns";
        report(2) << "Call count: " << count;
        report(3) << "Average operation time: " << total / count << "ns";
        report(4) << "Minimum operation time: " << record.minimum.load() << "ns";
        report(5) << "Maximum operation time: " << record.maximum.load() << "ns";
    }
}

} // namespace veltor::utils
