// Drives the window on real files: one task runs through, one is paused, one is cancelled in its pause,
// one fails. Saves a picture of the window to the file named by the first argument.

#include "ProgressWindow.h"

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

namespace {

int failures = 0;

void check(bool condition, const char* what)
{
    if (!condition) {
        ++failures;
        qCritical("failed: %s", what);
    }
}

template <typename Condition>
void await(Condition condition, const char* what)
{
    check(QTest::qWaitFor(condition, 30000), what);
}

QString makeFile(const QTemporaryDir& directory, const char* name, qint64 sizeBytes)
{
    const QString path = directory.filePath(QLatin1String(name));
    QFile file(path);
    check(file.open(QIODevice::WriteOnly) && file.resize(sizeBytes), "file made");
    return path;
}

void click(const TaskRow* row, const char* name)
{
    QTest::mouseClick(row->findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
}

QString message(const TaskRow* row)
{
    return row->findChild<QLabel*>(QStringLiteral("message"))->text();
}

void drive(const QString& picturePath)
{
    const QTemporaryDir directory;
    const QString large = makeFile(directory, "heights.tif", 400'000'000);
    const QString small = makeFile(directory, "roads.shp", 1'000'000);
    ProgressWindow window;
    window.show();

    const auto resumed = window.addChecksum(QStringLiteral("heights.tif, roads.shp"), {large, small});
    const auto cancelled = window.addChecksum(QStringLiteral("heights.tif"), {large});
    const auto rows = window.findChildren<TaskRow*>();
    for (int i = 0; i < 2; ++i) {
        const QProgressBar* bar = rows[i]->findChild<QProgressBar*>();
        await([bar] { return bar->value() > 50; }, "progress is shown");
        click(rows[i], "pause");
        const QPushButton* resume = rows[i]->findChild<QPushButton*>(QStringLiteral("resume"));
        await([resume] { return resume->isEnabled(); }, "paused");
    }
    check(!resumed->isFinished() && !cancelled->isFinished(), "both are paused");
    click(rows[1], "cancel");
    await([&] { return cancelled->isFinished(); }, "cancelled in the pause");

    const QString missing = QStringLiteral("missing.shp");
    const auto failed = window.addChecksum(missing, {missing});
    const auto quick = window.addChecksum(QStringLiteral("roads.shp"), {small});
    await([&] { return failed->isFinished() && quick->isFinished(); }, "both ended beside the paused one");
    const auto all = window.findChildren<TaskRow*>();
    await([&] { return message(all[1]) == QStringLiteral("Отменено"); }, "cancellation is shown");
    await([&] { return message(all[2]).contains(QStringLiteral("missing.shp")); },
          "the error's text is shown");
    await([&] { return message(all[3]) == QStringLiteral("Готово"); }, "success is shown");
    if (!picturePath.isEmpty()) {
        window.resize(640, 520);
        check(window.grab().save(picturePath), "picture saved");
    }

    click(all[0], "resume");
    await([&] { return message(all[0]) == QStringLiteral("Готово"); }, "resumed to its end");
    check(all[0]->findChild<QProgressBar*>()->value() == 1000, "the bar is full");
}

} // namespace

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    drive(QCoreApplication::arguments().value(1));
    return failures == 0 ? 0 : 1;
}
