// Drives the window on real files: one task is paused, resumed and runs through, others are cancelled, fail
// or end meanwhile. Saves a picture of the window.

#include "ProgressWindow.h"

#include <veltor/utils/Translation.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTranslator>
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

QString makeFile(const char* name, qint64 sizeBytes)
{
    const QString path = QLatin1String(name);
    QFile file(path);
    check(file.open(QIODevice::WriteOnly) && file.resize(sizeBytes), "file made");
    return path;
}

void click(const TaskRow* row, const char* name)
{
    QTest::mouseClick(row->findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
}

QString status(const TaskRow* row)
{
    return row->findChild<QLabel*>(QStringLiteral("status"))->text();
}

int reached(const TaskRow* row)
{
    return row->findChild<QProgressBar*>()->value();
}

void drive(bool english, const QString& picturePath)
{
    const auto text = [english](const char* russian, const char* other) {
        return QString::fromUtf8(english ? other : russian);
    };
    const QString paused = text("Приостановлено", "Paused");
    const QString cancelled = text("Отменено", "Canceled");
    const QString done = text("Готово", "Done");

    const QTemporaryDir directory;
    check(QDir::setCurrent(directory.path()), "within the directory");
    const QString large = makeFile("heights.tif", 400'000'000);
    const QString small = makeFile("roads.shp", 1'000'000);
    ProgressWindow window;
    window.show();
    const auto rows = [&window] { return window.findChildren<TaskRow*>(); };

    window.addChecksums(QStringLiteral("heights.tif, roads.shp"), {large, small});
    await([&] { return rows().size() == 1 && reached(rows()[0]) > 50; }, "progress is shown");
    click(rows()[0], "pause");
    await([&] { return status(rows()[0]).startsWith(paused); }, "paused");
    window.addChecksums(QStringLiteral("heights.tif"), {large});
    await([&] { return rows().size() == 2 && reached(rows()[1]) > 100; }, "the other one goes on");
    click(rows()[1], "cancel");
    await([&] { return status(rows()[1]) == cancelled; }, "cancelled");
    check(reached(rows()[1]) < 1000, "what was cancelled is not done");

    window.addChecksums(QStringLiteral("missing.shp"), {QStringLiteral("missing.shp")});
    window.addChecksums(QStringLiteral("roads.shp"), {small});
    window.addChecksums(QStringLiteral("heights.tif"), {large});
    await([&] { return rows().size() == 5 && status(rows()[3]) == done; }, "success is shown");
    check(status(rows()[2]).endsWith(text("Такого файла нет.", "There is no such file.")),
          "so is the reason");
    check(reached(rows()[2]) < 1000, "what failed is not done");
    if (!picturePath.isEmpty()) {
        await([&] { return reached(rows()[4]) > 200; }, "one runs");
        window.resize(640, window.sizeHint().height());
        check(window.grab().save(picturePath), "picture saved");
    }
    click(rows()[4], "cancel");
    click(rows()[3], "cancel"); // by now: dismiss
    await([&] { return rows().size() == 4; }, "dismissed");

    click(rows()[0], "pause"); // by now: resume
    await([&] { return status(rows()[0]) == done; }, "resumed to its end");
    check(reached(rows()[0]) == 1000, "the bar is full");
}

} // namespace

/// Arguments: the language, ru or en; a file for the picture.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    const bool english = QCoreApplication::arguments().value(1) == QStringLiteral("en");
    QTranslator translator;
    if (english) {
        check(veltor::utils::installTranslation(QLocale(QLocale::English)), "the library speaks English");
        check(translator.load(QStringLiteral(":/progress_window/progress_window_en.qm")), "the window does");
        QCoreApplication::installTranslator(&translator);
    }
    drive(english, QCoreApplication::arguments().value(2));
    return failures == 0 ? 0 : 1;
}
