// Changes several files as one unit: every file is re-encoded in place, block by block, and the whole
// either happens or does not.
//
//     protected_update [--pause-after BLOCKS] JOURNAL FILE...
//
// With --pause-after the program stops in the middle, says so on standard output and waits: whoever
// wants to see a crash kills it there.

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using veltor::utils::RollbackFile;
using veltor::utils::SecuredFile;

constexpr qint64 BlockSize = 64 * 1024;

/// The change that this program makes to the files: each byte's bits are turned over.
QByteArray changed(QByteArray block)
{
    for (char& byte : block) {
        byte = static_cast<char>(~byte);
    }
    return block;
}

/// Counts down to the moment at which the program is to stop.
class Pause
{
public:
    explicit Pause(long long afterBlocks)
        : m_left(afterBlocks)
    {}

    void blockWritten()
    {
        if (--m_left == 0) {
            std::puts("half-way");
            std::fflush(stdout);
            std::getchar(); // waits here for whatever comes
        }
    }

private:
    long long m_left;
};

/// Overwrites every block, then appends a trailer: changes inside a file and growth.
bool update(SecuredFile& file, Pause& pause)
{
    const qint64 size = file.size();
    for (qint64 position = 0; position < size; position += BlockSize) {
        if (!file.seek(position)) {
            return false;
        }
        const QByteArray block = changed(file.read(BlockSize));
        if (!file.seek(position) || file.write(block) != block.size()) {
            return false;
        }
        pause.blockWritten();
    }
    const QByteArray trailer("turned over\n");
    return file.seek(size) && file.write(trailer) == trailer.size();
}

bool updateAll(RollbackFile& journal, const QStringList& names, Pause& pause)
{
    for (const QString& name : names) {
        SecuredFile file;
        if (!file.open(name, journal) || !update(file, pause)) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(file.errorString()));
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    long long pauseAfter = 0;
    if (words.value(0) == QLatin1String("--pause-after")) {
        pauseAfter = words.value(1).toLongLong();
        words = words.mid(2);
    }
    if (words.size() < 2) {
        std::fputs("Usage: protected_update [--pause-after BLOCKS] JOURNAL FILE...\n", stderr);
        return 2;
    }
    const QFileInfo journalFile(words.takeFirst());
    if (RollbackFile::needsRecovery(journalFile)) {
        std::fprintf(stderr, "%s holds an unfinished change: roll it back first\n",
                     qPrintable(journalFile.filePath()));
        return 1;
    }

    RollbackFile journal;
    Pause pause(pauseAfter);
    if (!journal.openByName(journalFile, QIODevice::WriteOnly)) {
        return 1;
    }
    if (!updateAll(journal, words, pause)) {
        return journal.rollback() ? 1 : 3;
    }
    journal.commit();
    return 0;
}
