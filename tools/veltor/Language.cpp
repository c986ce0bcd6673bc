// The language of all that the tool prints, and the words of Qt and of the system in it.

#include "Language.h"

#include "Terminal.h"
#include "Text.h"

#include <veltor/utils/Translation.h>

#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QTranslator>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace veltor::tool {
namespace {

bool isRussian = false;

/// A text of Qt, and ours in its place.
struct QtText
{
    const char* theirs;
    const char* ours;
};

constexpr QtText qtTexts[] = {
    {"Unknown option '%1'.", QT_TRANSLATE_NOOP("veltor", "нет такого ключа: '%1'")},
    {"Unknown options: %1.", QT_TRANSLATE_NOOP("veltor", "нет таких ключей: %1")},
    {"Missing value after '%1'.", QT_TRANSLATE_NOOP("veltor", "не задано значение ключа '%1'")},
    {"Unexpected value after '%1'.", QT_TRANSLATE_NOOP("veltor", "у ключа '%1' не бывает значения")},
    {"Permission denied", QT_TRANSLATE_NOOP("veltor", "нет прав доступа")},
    {"Too many open files", QT_TRANSLATE_NOOP("veltor", "открыто слишком много файлов")},
    {"No such file or directory", QT_TRANSLATE_NOOP("veltor", "нет такого файла или папки")},
    {"No space left on device", QT_TRANSLATE_NOOP("veltor", "на устройстве не осталось места")},
    {"file to open is a directory", QT_TRANSLATE_NOOP("veltor", "это папка")},
};

/// Qt's own words, which have no catalogue here.
class QtTranslator : public QTranslator
{
public:
    using QTranslator::QTranslator;

    [[nodiscard]] bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* source, const char*, int) const override
    {
        static constexpr const char* contexts[] = {"QCommandLineParser", "QIODevice"};
        const auto isContext = [&](const char* name) { return std::strcmp(name, context) == 0; };
        if (std::any_of(std::begin(contexts), std::end(contexts), isContext)) {
            for (const QtText& text : qtTexts) {
                if (std::strcmp(text.theirs, source) == 0) {
                    return Text::tr(text.ours);
                }
            }
        }
        return {};
    }
};

struct Reason
{
    int number;
    const char* text;
};

constexpr Reason reasons[] = {
    {EACCES, QT_TRANSLATE_NOOP("veltor", "нет прав доступа")},
    {EBADF, QT_TRANSLATE_NOOP("veltor", "закрыт")},
    {EFBIG, QT_TRANSLATE_NOOP("veltor", "файл слишком велик")},
    {EIO, QT_TRANSLATE_NOOP("veltor", "ошибка ввода-вывода")},
    {EISDIR, QT_TRANSLATE_NOOP("veltor", "это папка")},
    {EMFILE, QT_TRANSLATE_NOOP("veltor", "открыто слишком много файлов")},
    {ENOENT, QT_TRANSLATE_NOOP("veltor", "нет такого файла или папки")},
    {ENOSPC, QT_TRANSLATE_NOOP("veltor", "на устройстве не осталось места")},
    {EPERM, QT_TRANSLATE_NOOP("veltor", "действие не разрешено")},
    {EPIPE, QT_TRANSLATE_NOOP("veltor", "канал никто не читает")},
};

} // namespace

void prepareLanguage()
{
    const std::string language = terminal::userLanguage();
    isRussian = language.compare(0, 2, "ru") == 0 && (language.size() == 2 || !std::isalpha(language[2]));
    if (!isRussian) {
        terminal::makeMessagesEnglish();
    }
    utils::installTranslation(isRussian ? QLocale::Russian : QLocale::English);
    QCoreApplication::installTranslator(new QtTranslator(QCoreApplication::instance()));
}

QString systemReason(int errorNumber)
{
    for (const Reason& reason : reasons) {
        if (reason.number == errorNumber) {
            return Text::tr(reason.text);
        }
    }
    return isRussian ? Text::tr("ошибка системы %1").arg(errorNumber)
                     : QString::fromLocal8Bit(std::strerror(errorNumber));
}

QString openReason(const QFileDevice& file)
{
    const QFileInfo info(file.fileName());
    if (info.isDir()) {
        return systemReason(EISDIR);
    }
    if (!info.exists()) {
        return systemReason(ENOENT);
    }
    return info.isReadable() ? file.errorString() : systemReason(EACCES);
}

} // namespace veltor::tool
