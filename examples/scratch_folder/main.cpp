// Sorts lines in a folder of its own and puts the result beside older ones, under a name that is free.
//
//     scratch_folder [--die] DIRECTORY LINE...
//
// With --die the program ends in the middle, as a crash would. The next run removes what it left.

#include <veltor/utils/TempFileCleanup.h>
#include <veltor/utils/TemporaryDir.h>
#include <veltor/utils/UniqueFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

using veltor::utils::TempCleanupReport;
using veltor::utils::TempFileCleanup;
using veltor::utils::TemporaryDir;

namespace {

bool writeLines(const QString& path, const QStringList& lines)
{
    QFile file(path);
    const QByteArray bytes = lines.join(QLatin1Char('\n')).toUtf8() + '\n';
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    const bool die = words.removeAll(QStringLiteral("--die")) != 0;
    if (words.size() < 2) {
        std::fputs("Usage: scratch_folder [--die] DIRECTORY LINE...\n", stderr);
        return 2;
    }
    const QString directory = words.takeFirst();

    //! [cleanup]
    // What earlier runs left that were killed. On the same disk as the results, so that these can be moved.
    const TempCleanupReport report = TempFileCleanup(directory).run();
    std::printf("removed: %lld, in use: %lld\n", static_cast<long long>(report.removed),
                static_cast<long long>(report.inUse));
    //! [cleanup]

    //! [folder]
    const TemporaryDir scratch(directory);
    if (!scratch.isValid()) {
        std::fputs(scratch.errorString().toUtf8().constData(), stderr);
        return 1;
    }
    const QString draft = scratch.filePath(QStringLiteral("sorted.txt"));
    words.sort();
    if (!writeLines(draft, words)) {
        return 1;
    }
    //! [folder]
    if (die) {
        std::_Exit(3);
    }

    //! [publish]
    QString error;
    const QString result = veltor::utils::moveToUniqueName(
        draft, QDir(directory).filePath(QStringLiteral("sorted.txt")), &error);
    if (result.isEmpty()) {
        std::fputs(error.toUtf8().constData(), stderr);
        return 1;
    }
    //! [publish]
    return 0;
}
