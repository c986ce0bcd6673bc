// Counts the lines of files in the background, one task a file, while the main thread stays free.
//
//     background_task FILE...

#include <veltor/concurrent/SignalingTaskNestedScope.h>
#include <veltor/concurrent/Task.h>
#include <veltor/concurrent/TaskThreadPool.h>
#include <veltor/err/Exceptions.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <cstdio>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

using veltor::concurrent::ProgressHandler;
using veltor::concurrent::TaskThreadPool;
using veltor::err::ConcurrentNestedException;

//! [task]
class LineCount : public veltor::concurrent::Task
{
    Q_OBJECT

public:
    explicit LineCount(QString path)
        : m_path(std::move(path))
    {}
    [[nodiscard]] bool canCancel() const override { return true; }

Q_SIGNALS:
    void counted(const QString& path, qint64 lines);

protected:
    void onStart() override // in a worker's thread
    {
        constexpr qint64 blockBytes = 0x10000;
        QFile file(m_path);
        if (!file.open(QIODevice::ReadOnly)) {
            throw veltor::err::CouldNotInitializeObject(m_path, file.errorString());
        }
        veltor::concurrent::SignalingTaskNestedScope scope(*this); // 0 to 100, the handler's range
        scope.setRange(0, double(file.size()));
        qint64 lines = 0;
        while (!file.atEnd()) {
            progressHandler()->throwIfCanceled();
            lines += file.read(blockBytes).count('\n');
            scope.setProgress(double(file.pos()));
        }
        Q_EMIT counted(m_path, lines);
    }

private:
    const QString m_path;
};
//! [task]

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList paths = QCoreApplication::arguments().mid(1);
    int running = paths.size();
    int failed = 0;

    //! [start]
    std::vector<std::shared_ptr<ProgressHandler>> handlers; // what may be kept; the tasks may not
    TaskThreadPool pool(2);
    for (const QString& path : paths) {
        auto* task = new LineCount(path);
        const auto handler = task->progressHandler();
        handlers.push_back(handler);
        QObject::connect(task, &LineCount::counted, &application, [](const QString& name, qint64 lines) {
            std::printf("%s: %lld lines\n", qPrintable(name), static_cast<long long>(lines));
        });
        QObject::connect(
            handler.get(), &ProgressHandler::progressValueChanged, &application,
            [path](double value) { std::fprintf(stderr, "%s: %.0f %%\n", qPrintable(path), value); });
        QObject::connect(handler.get(), &ProgressHandler::error, &application,
                         [path, &failed](const ConcurrentNestedException& error) {
                             ++failed;
                             try {
                                 error.raise(); // what onStart() threw
                             } catch (const std::exception& reason) {
                                 std::printf("%s: %s\n", qPrintable(path), reason.what());
                             }
                         });
        QObject::connect(handler.get(), &ProgressHandler::finished, &application, [&running] {
            if (--running == 0) {
                QCoreApplication::quit();
            }
        });
        pool.start(task); // the pool owns it from here on
    }
    //! [start]
    if (paths.isEmpty()) {
        std::fputs("Usage: background_task FILE...\n", stderr);
        return 2;
    }
    QCoreApplication::exec();
    return failed == 0 ? 0 : 1;
}

#include "main.moc"
