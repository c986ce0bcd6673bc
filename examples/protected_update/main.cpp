// Changes several files as one unit: every file is re-encoded in place, block by block, and the whole
// either happens or does not.
//
//     protected_update [--pause-after BLOCKS] JOURNAL FILE...
//
// With --pause-after the program stops in the middle, says so on standard output and waits: whoever
// wants to see a crash kills it there.

#include <veltor/utils/Transaction.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using veltor::utils::SecuredFile;
using veltor::utils::Transaction;

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

bool updateAll(Transaction& change, const QStringList& names, Pause& pause)
{
    for (const QString& name : names) {
        const auto file = change.open(name);
        if (!file || !update(*file, pause)) {
            std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(change.errorString()));
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
    Transaction change = Transaction::begin(words.takeFirst());
    if (!change.isActive()) {
        std::fprintf(stderr, "%s\n", qPrintable(change.beginning().reason));
        return 1;
    }
    if (change.recovery().foundJournal) {
        std::fprintf(stderr, "an unfinished change was put back: %llu files\n", change.recovery().restored);
    }
    Pause pause(pauseAfter);
    if (!updateAll(change, words, pause)) {
        return change.rollback() ? 1 : 3;
    }
    const Transaction::Result done = change.commit();
    if (!done) {
        std::fprintf(stderr, "%s\n", qPrintable(done.reason));
    }
    return done ? 0 : 3;
}
