#pragma once

#include <veltor/logging/Logger.h>

#include <benchmark/benchmark.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <array>
#include <iostream>
#include <string>
#include <vector>

namespace veltor::benchmarks {

constexpr qint64 PageSize = 4096;
using Page = std::array<char, PageSize>;

/// In a temporary directory beneath the current one.
inline QString workFile(const QString& name)
{
    static const QTemporaryDir dir(QDir::current().filePath(QStringLiteral("bench-storage-XXXXXX")));
    return dir.filePath(name);
}

/// What a random 4 KiB write costs the kernel varies tenfold with how the file entered the page cache:
/// large writes leave large folios there, and each small write to one pays for its whole length. So
/// every file is first written in pieces of 4 KiB, as SQLite writes its own.
inline bool writeFile(const QString& name, qint64 pages)
{
    QFile file(name);
    Page page;
    page.fill('x');
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    for (qint64 at = 0; at < pages && written; ++at) {
        written = file.write(page.data(), PageSize) == PageSize;
    }
    return written;
}

inline bool readPage(const QString& name, qint64 page, Page& data)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.seek(page * PageSize) &&
           file.read(data.data(), PageSize) == PageSize;
}

/// Runs what @p add registers; the program's result.
inline int runInTurns(int argc, char** argv, void (*add)())
{
    // Contenders take turns, so that what else the machine does meets all of them; a later argument wins.
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, interleaved.data());
    argc = static_cast<int>(arguments.size());
    benchmark::Initialize(&argc, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(argc, arguments.data())) {
        return 1;
    }
    logging::setLogSink([](const logging::LogRecord& record) {
        if (record.level == logging::LogLevel::Error) {
            std::cerr << qUtf8Printable(record.text) << '\n';
        }
    });
    add();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace veltor::benchmarks
