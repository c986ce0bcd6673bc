// The language of the messages of every family, switched in a running application.

#include "support/LogCapture.h"
#include "support/Printers.h"

#include <veltor/concurrent/TaskProgressHandler.h>
#include <veltor/err/Exceptions.h>
#include <veltor/utils/NumberToText.h>
#include <veltor/utils/RollbackFile.h>
#include <veltor/utils/StatusTexts.h>
#include <veltor/utils/TextCodecs.h>
#include <veltor/utils/TextStreamFromFile.h>
#include <veltor/utils/Translation.h>

#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>

#include <gtest/gtest.h>

namespace veltor::utils {
namespace {

template <typename Function>
QString thrown(Function function)
{
    try {
        function();
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("nothing was thrown");
}

/// The library's own words: Windows puts the current drive before the path, and each system its reason
/// behind.
QString ownWords(QString text)
{
    const QString path = QStringLiteral("/missing/journal");
    return text.replace(QFileInfo(path).absoluteFilePath(), path).section(QStringLiteral(": "), 0, 0);
}

QString logged()
{
    test::LogCapture log;
    RollbackFile().openByName(QFileInfo(QStringLiteral("/missing/journal")), QIODevice::ReadOnly);
    return ownWords(log.takeTexts(logging::LogLevel::Error).join(QLatin1Char('\n')));
}

QString canceled()
{
    concurrent::TaskProgressHandler handler(nullptr);
    handler.cancel();
    return thrown([&] { handler.throwIfCanceled(); });
}

TEST(Translation, SwitchesTheMessagesOfEveryFamilyAndBack)
{
    struct Row
    {
        QString (*message)();
        const char* russian;
        const char* english;
    };
    const Row rows[] = {
        {[] { return thrown([] { throw err::UnexpectedType(QStringLiteral("int"), QStringList()); }); },
         "Неизвестный тип данных 'int', ожидается 'иное'", "Unknown data type 'int', expected 'another'"},
        {[] { return thrown([] { throw err::CouldNotInitializeObject(QStringLiteral("A"), QString()); }); },
         "Не удалось инициализировать объект A. ", "Could not initialize the object A. "},
        {&canceled, "Операция была прервана", "The operation was cancelled"},
        {&logged, "Ошибка открытия файла '/missing/journal'", "Could not open the file '/missing/journal'"},
        {[] { return thrown([] { codecForName(QStringLiteral("x-none")); }); },
         "Неизвестная кодировка x-none", "Unknown encoding x-none"},
        {[] {
             return thrown([] { TextStreamFromFile(QStringLiteral("/missing/file"), QIODevice::ReadOnly); })
                 .section(QLatin1Char('/'), 0, 0);
         },
         "Не удалось открыть файл '", "Could not open the file '"},
        {[] { return toOnOff(StatusCode::GroupOff); }, "Выкл. для группы", "Off for the group"},
        {[] { return toLocalizedStringRound(1234.5, 1, QLocale(QLocale::Russian)); }, "1\u00a0234,5",
         "1\u00a0234,5"},
    };
    struct Step
    {
        QLocale locale;
        bool english;
    };
    const Step steps[] = {
        {QLocale(QLocale::English, QLocale::UnitedKingdom), true},
        {QLocale(QLocale::English), true}, // again, and by another name
        {QLocale(QLocale::German), false},
        {QLocale(QLocale::English), true},
        {QLocale(QLocale::Russian), false},
    };
    for (const Step& step : steps) {
        EXPECT_EQ(installTranslation(step.locale), step.english) << step.locale.name().toStdString();
        for (const Row& row : rows) {
            EXPECT_EQ(row.message(), QString::fromUtf8(step.english ? row.english : row.russian));
        }
    }
    EXPECT_TRUE(installTranslation(QLocale(QLocale::English)));
    removeTranslation();
    EXPECT_EQ(toYesNo(true), QStringLiteral("Да"));
}

} // namespace
} // namespace veltor::utils
