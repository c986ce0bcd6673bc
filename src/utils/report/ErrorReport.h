#pragma once

#include <veltor/err/ErrorTracer.h>

#include <array>

namespace veltor::utils {

/// What an ErrorTracer held at one moment, and how it is written. No errors are reported: look at the device.
struct ErrorReport
{
    static constexpr std::size_t severities = 4;

    std::vector<err::ErrorTracer::Entry> entries;
    std::array<quint64, severities> counts{};
    std::array<quint64, severities> notKept{};

    void writeHtml(QIODevice& device, const QString& title) const;
    void writeText(QIODevice& device, const QString& title) const;
    void writeJson(QIODevice& device, const json::Format& format) const;
};

} // namespace veltor::utils
