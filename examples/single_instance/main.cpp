// Runs a command unless another copy of this program, of whatever user, does so under the same name.
//
//     single_instance [--die] NAME COMMAND [ARGUMENT...]
//
// Ends with the command's exit code, 75 when another copy is running, 3 when that cannot be told. With --die
// it ends without letting go, as a crash would.

#include <veltor/utils/NamedMutex.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtCore/QProcess>
#include <QtCore/QStringList>

#include <cstdio>
#include <cstdlib>

using namespace veltor::utils;

namespace {

constexpr int otherRuns = 75;
constexpr int cannotTell = 3;

//! [refuse]
/// 0 when this process is the only one that has @p mutex now, an exit code otherwise.
int becomeTheOnlyOne(NamedMutex& mutex, const QString& name)
{
    const auto result = mutex.open(name.toStdString()) ? mutex.tryAcquire() : NamedMutex::Result::Failed;
    switch (result) {
    case NamedMutex::Result::Acquired:
        return 0;
    case NamedMutex::Result::Abandoned: // ours as well, but look at what the dead one left
        std::fprintf(stderr, "%s: the last copy did not come to its end\n", qUtf8Printable(name));
        return 0;
    case NamedMutex::Result::Busy:
        std::fprintf(stderr, "%s: another copy is running\n", qUtf8Printable(name));
        return otherRuns;
    case NamedMutex::Result::Failed: // is no "nobody": the reason names the file
        break;
    }
    std::fprintf(stderr, "%s: %s\n", qUtf8Printable(name), qUtf8Printable(mutex.errorString()));
    return cannotTell;
}
//! [refuse]

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    installTranslation(QLocale::system());
    QStringList words = QCoreApplication::arguments().mid(1);
    const bool dies = words.removeAll(QStringLiteral("--die")) > 0;
    if (words.size() < 2) {
        std::fputs("Usage: single_instance [--die] NAME COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    //! [hold]
    NamedMutex mutex; // as long as main() runs, on the thread that runs it
    if (const int code = becomeTheOnlyOne(mutex, words.takeFirst())) {
        return code;
    }
    //! [hold]
    const QString command = words.takeFirst();
    const int code = QProcess::execute(command, words);
    if (dies) {
        std::_Exit(code);
    }
    mutex.unlock();
    return code < 0 ? cannotTell : code;
}
