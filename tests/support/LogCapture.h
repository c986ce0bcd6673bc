#pragma once

#include <veltor/logging/Logger.h>

#include <QtCore/QStringList>

#include <mutex>
#include <vector>

namespace veltor::test {

/// Collects every log line while it lives, instead of letting it reach the former sink.
class LogCapture
{
public:
    LogCapture()
        : m_former(logging::setLogSink([this](const logging::LogRecord& record) {
            const std::lock_guard lock(m_mutex);
            m_records.push_back(record);
        }))
    {}

    ~LogCapture() { logging::setLogSink(m_former); }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// All records so far; they are forgotten here.
    std::vector<logging::LogRecord> take()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_records, {});
    }

    /// The texts of the records of one level; all records are forgotten.
    QStringList takeTexts(logging::LogLevel level)
    {
        QStringList texts;
        for (const logging::LogRecord& record : take()) {
            if (record.level == level) {
                texts << record.text;
            }
        }
        return texts;
    }

private:
    std::mutex m_mutex; // guards m_records
    std::vector<logging::LogRecord> m_records;
    logging::LogSink m_former;
};

} // namespace veltor::test
