// Keeps two files in step: names.txt holds one name a line, names.idx the byte at which each line begins.
//
//     change_files [--die] DIRECTORY NAME...
//
// With --die the program ends between the two files, as a crash would. The next run puts both back first.

#include <veltor/utils/Transaction.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

using veltor::utils::SecuredFile;
using veltor::utils::Transaction;

namespace {

//! [change]
std::unique_ptr<SecuredFile> openOrCreate(Transaction& change, const QString& path)
{
    return change.exists(path) || change.create(path) ? change.open(path) : nullptr;
}

bool append(SecuredFile& file, const QByteArray& line)
{
    return file.seek(file.size()) && file.write(line) == line.size();
}

bool addNames(Transaction& change, const QDir& directory, const QStringList& names, bool die)
{
    const auto text = openOrCreate(change, directory.filePath(QStringLiteral("names.txt")));
    const auto index = openOrCreate(change, directory.filePath(QStringLiteral("names.idx")));
    if (!text || !index) {
        return false;
    }
    for (const QString& name : names) {
        const qint64 begin = text->size();
        if (!append(*text, name.toUtf8() + '\n')) {
            return false;
        }
        if (die) {
            std::_Exit(3);
        }
        if (!append(*index, QByteArray::number(begin) + '\n')) {
            return false;
        }
    }
    return true;
}
//! [change]

int fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    const bool die = words.removeAll(QStringLiteral("--die")) != 0;
    if (words.size() < 2) {
        std::fputs("Usage: change_files [--die] DIRECTORY NAME...\n", stderr);
        return 2;
    }
    const QDir directory(words.takeFirst());

    //! [begin]
    Transaction change = Transaction::begin(directory.filePath(QStringLiteral("names.rollback")));
    if (!change.isActive()) {
        return fail(change.beginning().reason); // in use, damaged, somebody else's
    }
    if (!addNames(change, directory, words, die)) {
        return fail(change.errorString()); // nothing has happened: `change` ends without a commit
    }
    const Transaction::Result done = change.commit(); // final from here on
    //! [begin]
    return done ? 0 : fail(done.reason);
}
