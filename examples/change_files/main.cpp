// Keeps two files in step: names.txt holds one name a line, names.idx the byte at which each line begins.
//
//     change_files [--die] DIRECTORY NAME...
//
// With --die the program ends between the two files, as a crash would. The next run puts both back first.

#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

using veltor::utils::RollbackFile;
using veltor::utils::SecuredFile;

namespace {

//! [recover]
/// Puts back what a run that did not come to its end has changed.
bool recover(const QFileInfo& journalFile)
{
    if (!RollbackFile::needsRecovery(journalFile)) {
        return true;
    }
    RollbackFile journal;
    if (!journal.openByName(journalFile, QIODevice::ReadWrite)) { // damaged: the reason is in the log
        journal.repair();
        if (!journal.repairedWhole()) {
            return false; // somebody should look at it, with "veltor journal show"
        }
    }
    return journal.rollback();
}
//! [recover]

//! [change]
bool append(SecuredFile& file, const QByteArray& line)
{
    return file.seek(file.size()) && file.write(line) == line.size();
}

bool addNames(RollbackFile& journal, const QDir& directory, const QStringList& names, bool die)
{
    SecuredFile text;
    SecuredFile index;
    if (!text.open(directory.filePath(QStringLiteral("names.txt")), journal) ||
        !index.open(directory.filePath(QStringLiteral("names.idx")), journal)) {
        return false;
    }
    for (const QString& name : names) {
        const qint64 begin = text.size();
        if (!append(text, name.toUtf8() + '\n')) {
            return false;
        }
        if (die) {
            std::_Exit(3);
        }
        if (!append(index, QByteArray::number(begin) + '\n')) {
            return false;
        }
    }
    return true;
}
//! [change]

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
    for (const char* name : {"names.txt", "names.idx"}) { // protection takes existing files only
        QFile(directory.filePath(QLatin1String(name))).open(QIODevice::Append);
    }

    //! [commit]
    const QFileInfo journalFile(directory.filePath(QStringLiteral("names.rollback")));
    RollbackFile journal;
    if (!recover(journalFile) || !journal.openByName(journalFile, QIODevice::WriteOnly)) {
        return 1;
    }
    if (!addNames(journal, directory, words, die)) {
        journal.rollback(); // as if nothing had happened
        return 1;
    }
    journal.commit(); // final from here on
    //! [commit]
    return 0;
}
