// Counts the lines of files in the background, a function for each, while the main thread stays free.
//
//     background_task FILE...

#include <veltor/concurrent/TaskResult.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <cstdio>
#include <exception>
#include <memory>
#include <vector>

using namespace veltor::concurrent;

//! [work]
/// Knows nothing of threads: it reports into the scope, and stops when the scope says so.
qint64 countLines(const QString& path, NestedScope& scope)
{
    constexpr qint64 blockBytes = 0x10000;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw veltor::err::CouldNotInitializeObject(path, file.errorString());
    }
    scope.setRange(0, double(file.size()));
    qint64 lines = 0;
    while (!file.atEnd() && scope.canWork()) {
        const QByteArray block = file.read(blockBytes);
        if (block.isEmpty()) {
            throw veltor::err::CouldNotInitializeObject(path, file.errorString());
        }
        lines += block.count('\n');
        scope.setProgress(double(file.pos()));
    }
    return lines; // after a cancellation nobody sees it
}
//! [work]

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList paths = QCoreApplication::arguments().mid(1);
    if (paths.isEmpty()) {
        std::fputs("Usage: background_task FILE...\n", stderr);
        return 2;
    }
    int running = paths.size();
    int failed = 0;
    std::vector<ProgressHandlerPtr> handlers; // whose signals are shown

    //! [start]
    TaskThreadPool pool(2);
    for (const QString& path : paths) {
        const TaskResult<qint64> lines =
            run(pool, [path](NestedScope& scope) { return countLines(path, scope); });
        lines
            .then(&application,
                  [path](qint64 count) {
                      std::printf("%s: %lld lines\n", qPrintable(path), static_cast<long long>(count));
                  })
            .onFailed(&application,
                      [path, &failed](const std::exception& reason) {
                          ++failed;
                          std::printf("%s: %s\n", qPrintable(path), reason.what());
                      })
            .onFinished(&application, [&running](const TaskResult<void>&) {
                if (--running == 0) {
                    QCoreApplication::quit();
                }
            });
        //! [start]
        //! [watch]
        const ProgressHandlerPtr handler = lines.progressHandler();
        const auto show = [path](double value) {
            std::fprintf(stderr, "%s: %.0f %%\n", qPrintable(path), value);
        };
        QObject::connect(handler.get(), &ProgressHandler::progressValueChanged, &application, show);
        show(handler->progress()); // as far as it has come by now, perhaps to its end
        //! [watch]
        handlers.push_back(handler);
    }
    QCoreApplication::exec();
    return failed == 0 ? 0 : 1;
}
