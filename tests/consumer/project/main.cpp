// A stranger's program: a task measures a distance and writes it, as a JSON document, to a protected file.
// Exit 0 when the file holds it, and when the library's exceptions are caught here by their types.

#include <veltor/Version.h>
#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskProgressHandler.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/err/Exceptions.h>
#include <veltor/json/JsonFormatter.h>
#include <veltor/utils/Distance.h>
#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/SecuredFile.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <cstdio>

namespace {

class Measurement : public veltor::concurrent::Task
{
public:
    explicit Measurement(QString directory)
        : m_directory(std::move(directory))
    {}

protected:
    void onStart() override
    {
        using namespace veltor;
        utils::RollbackFile journal;
        utils::SecuredFile file;
        if (!journal.openByName(QFileInfo(m_directory + QLatin1String("/journal")), QIODevice::WriteOnly) ||
            !file.open(m_directory + QLatin1String("/result.json"), journal) || !file.resize(0)) {
            throw err::OperationAborted(file.errorString());
        }
        const double metres = utils::ellipsoidDistance({0, 0}, {0, 1}, 6378137, 298.257223563);
        json::JsonFormatter(IOPtr(&file, [](QIODevice*) {}), json::JsonFormatter::formatCompact)
            .write(QJsonObject{{QStringLiteral("metres"), qRound(metres)}});
        journal.commit();
    }

private:
    QString m_directory;
};

bool isCaughtByType()
{
    try {
        veltor::concurrent::TaskThreadPool::globalInstance()->start(nullptr);
    } catch (const veltor::err::NullArgument&) {
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir directory;
    QFile result(directory.filePath(QStringLiteral("result.json")));
    if (!result.open(QIODevice::ReadWrite) || result.write("older and longer contents") < 0) {
        return 1;
    }
    result.close();

    auto* const task = new Measurement(directory.path());
    const auto handler = task->progressHandler();
    veltor::concurrent::TaskThreadPool::globalInstance()->start(task);
    handler->waitForFinished();

    const QByteArray contents = result.open(QIODevice::ReadOnly) ? result.readAll() : QByteArray();
    std::printf("veltor-utils %s: %s\n", veltor::versionText(), contents.constData());
    return contents == "{\"metres\":110574}" && isCaughtByType() && veltor::version() == VELTOR_UTILS_VERSION
               ? 0
               : 1;
}
