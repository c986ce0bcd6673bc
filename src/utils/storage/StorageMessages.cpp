// What the storage says: each text once.

#include "utils/storage/StorageMessages.h"

#include <veltor/logging/Logger.h>

#include <QtCore/QCoreApplication>

namespace veltor::utils {
namespace message {
namespace {

/// The context in which all texts of the storage are translated.
struct Text
{
    Q_DECLARE_TR_FUNCTIONS(veltor::utils::SecuredFile)
};

} // namespace

QString seekFailed(quint64 offset, quint64 journalSize, bool journalOpen)
{
    return Text::tr("Ошибка перехода к смещению %0 (размер файла отката %1, %2)")
        .arg(offset)
        .arg(journalSize)
        .arg(journalOpen ? Text::tr("файл открыт") : Text::tr("файл закрыт"));
}

QString readFailed(quint64 offset, quint64 expected, quint64 got)
{
    return Text::tr("Ошибка чтения данных отката по смещению %0 (должно быть прочитано %1, а прочитано %2)")
        .arg(offset)
        .arg(expected)
        .arg(got);
}

QString unknownVersion(const QUuid& version)
{
    return Text::tr("Указана неизвестная версия файла отката (%0)").arg(version.toString());
}

QString firstFileWithoutLast(quint64 firstFile)
{
    return Text::tr("Задано смещение первого файла в цепочке (%0), но не задано смещение последнего файла")
        .arg(firstFile);
}

QString lastFileWithoutFirst(quint64 lastFile)
{
    return Text::tr("Задано смещение последнего файла в цепочке (%0), но не задано смещение первого файла")
        .arg(lastFile);
}

QString firstFreeWithoutLast(quint64 firstFree)
{
    return Text::tr("Задано смещение первого свободного блока в цепочке (%0), но не задано смещение "
                    "последнего свободного блока")
        .arg(firstFree);
}

QString lastFreeWithoutFirst(quint64 lastFree)
{
    return Text::tr("Задано смещение последнего свободного блока в цепочке (%0), но не задано "
                    "смещение первого свободного блока")
        .arg(lastFree);
}

QString badFirstFile(quint64 offset)
{
    return Text::tr("Некорректно указано смещение первого файла в цепочке (%0)").arg(offset);
}

QString badLastFile(quint64 offset)
{
    return Text::tr("Некорректно указано смещение последнего файла в цепочке (%0)").arg(offset);
}

QString badFirstFree(quint64 offset)
{
    return Text::tr("Некорректно указано смещение первого свободного блока в цепочке (%0)").arg(offset);
}

QString badLastFree(quint64 offset)
{
    return Text::tr("Некорректно указано смещение последнего свободного блока в цепочке (%0)").arg(offset);
}

QString firstChangeWithoutLast(quint64 firstChange, quint64 fileSize)
{
    return Text::tr("Задано смещение первого изменения в цепочке (%0) файла размером %1, но не задано "
                    "смещение последнего изменения")
        .arg(firstChange)
        .arg(fileSize);
}

QString lastChangeWithoutFirst(quint64 lastChange, quint64 fileSize)
{
    return Text::tr("Задано смещение последнего изменения в цепочке (%0) файла размером %1, но не "
                    "задано смещение первого изменения")
        .arg(lastChange)
        .arg(fileSize);
}

QString badFirstChange(quint64 offset, quint64 fileSize)
{
    return Text::tr("Некорректное смещение первого изменения в цепочке (%0) файла размером %1")
        .arg(offset)
        .arg(fileSize);
}

QString badLastChange(quint64 offset, quint64 fileSize)
{
    return Text::tr("Некорректное смещение последнего изменения в цепочке (%0) файла размером %1")
        .arg(offset)
        .arg(fileSize);
}

QString badNextFile(quint64 offset, quint64 fileSizeBefore)
{
    return Text::tr("Некорректное смещение очередного (после файла размером %1) файла в цепочке (%0)")
        .arg(offset)
        .arg(fileSizeBefore);
}

QString lastChangeMismatch(quint64 stored, quint64 walked)
{
    return Text::tr("Указанное в заголовке файла смещение последнего блока (%0) не соответствует "
                    "полученному при прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString nameSeekFailed(quint64 nameOffset, quint64 entryOffset)
{
    return Text::tr("Ошибка позиционирования в файле по смещению %0 относительно %1")
        .arg(nameOffset)
        .arg(entryOffset);
}

QString nameReadFailed(quint64 nameOffset, quint64 got, quint64 expected)
{
    return Text::tr("Ошибка чтения имени файла по смещению %0 (прочитано %1 вместо %2)")
        .arg(nameOffset)
        .arg(got)
        .arg(expected);
}

QString badName()
{
    return Text::tr("Имя файла содержит запрещенные символы");
}

QString openFailed(const QString& name)
{
    return Text::tr("Ошибка открытия файла '%0'").arg(name);
}

QString lastFileMismatch(quint64 walked, quint64 stored)
{
    return Text::tr("Смещение последнего блока цепочки (%0) не совпадает с указанным в заголовке файла (%1)")
        .arg(walked)
        .arg(stored);
}

QString blockOutOfFile(quint64 length, quint64 position, quint64 sizeBound)
{
    return Text::tr("Блок данных длиной %0 со смещением %1 выходит за границы файла (%2)")
        .arg(length)
        .arg(position)
        .arg(sizeBound);
}

QString badNextChange(quint64 offset)
{
    return Text::tr("Некорректно указано смещение следующего блока изменений (%0)").arg(offset);
}

QString badPreviousChange(quint64 offset)
{
    return Text::tr("Некорректно указано смещение предыдущего блока изменений (%0)").arg(offset);
}

QString previousChangeMismatch(quint64 stored, quint64 walked)
{
    return Text::tr("Указанное смещение предыдущего блока (%0) не соответствует полученному при "
                    "прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString checksumMismatch(quint64 dataOffset)
{
    return Text::tr("Не совпадает контрольная сумма данных отката по смещению %0").arg(dataOffset);
}

QString emptyFreeBlock()
{
    return Text::tr("Пустой свободный блок");
}

QString badNextFree(quint64 offset)
{
    return Text::tr("Некорректное смещение следующего свободного блока (%0)").arg(offset);
}

QString badPreviousFree(quint64 offset)
{
    return Text::tr("Некорректное смещение предыдущего свободного блока (%0)").arg(offset);
}

QString badFreeRegion(quint64 offset)
{
    return Text::tr("Некорректное смещение свободного блока в исходном файле (%0)").arg(offset);
}

QString previousFreeMismatch(quint64 stored, quint64 walked)
{
    return Text::tr("Указанное смещение предыдущего свободного блока (%0) не соответствует "
                    "полученному при прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString journalNotUsable()
{
    return Text::tr("Устройство файла отката не открыто или не допускает произвольный доступ");
}

QString journalNotAppendable()
{
    return Text::tr("Файл отката не допускает новых изменений: он восстановлен, не прошел проверку "
                    "или не содержит контрольных сумм");
}

QString journalNotChecked()
{
    return Text::tr("Откат невозможен: файл отката не прошел проверку");
}

QString journalWriteFailed(quint64 offset, quint64 expected, quint64 written)
{
    return Text::tr("Ошибка записи данных отката по смещению %0 (должно быть записано %1, а записано %2)")
        .arg(offset)
        .arg(expected)
        .arg(written);
}

QString journalSizeUnknown()
{
    return Text::tr("Невозможно узнать размер файла отката");
}

QString journalResizeFailed(quint64 size)
{
    return Text::tr("Ошибка изменения размера файла отката до %0").arg(size);
}

QString journalNotRemoved(const QString& name)
{
    return Text::tr("Ошибка удаления файла отката '%0'").arg(name);
}

QString journalStillEffective(const QString& name)
{
    return Text::tr("Файл отката '%0' остался в силе: его не удалось ни удалить, ни очистить").arg(name);
}

QString journalInUse(const QString& name, const QString& holder, qint64 ownerPid)
{
    if (!holder.isEmpty()) {
        return Text::tr("Файл отката '%0' занят другой программой: %1").arg(name, holder);
    }
    return ownerPid != 0
               ? Text::tr("Файл отката '%0' занят другой программой (процесс %1)").arg(name).arg(ownerPid)
               : Text::tr("Файл отката '%0' занят другой программой").arg(name);
}

QString journalNotLocked(const QString& name)
{
    return Text::tr("Невозможно занять файл отката '%0'").arg(name);
}

QString journalNeedsRecovery(const QString& name)
{
    return Text::tr("Файл отката '%0' хранит незавершенные изменения").arg(name);
}

QString journalIsForeign(const QString& name)
{
    return Text::tr("Файл отката '%0' принадлежит другому пользователю или открыт ему для записи").arg(name);
}

QString journalIsNone(const QString& name)
{
    return Text::tr("Файл '%0' не является файлом отката").arg(name);
}

QString journalShowsSecrets(const QString& name)
{
    return Text::tr("Файл отката доступен тем, кому недоступен файл '%0'").arg(name);
}

QString nameTooLong(const QString& name)
{
    return Text::tr("Имя файла слишком длинное для файла отката: '%0'").arg(name);
}

QString fileIsJournal(const QString& name)
{
    return Text::tr("Файл отката '%0' не может защищать сам себя").arg(name);
}

QString fileClosed(const QString& name)
{
    return Text::tr("Файл '%0' закрыт").arg(name);
}

QString fileReplaced(const QString& name)
{
    return Text::tr("Файл '%0' заменен другим").arg(name);
}

QString fileSizeUnknown(const QString& name)
{
    return Text::tr("Невозможно узнать размер файла '%0'").arg(name);
}

QString fileReadFailed(const QString& name, quint64 offset, quint64 expected, quint64 got)
{
    return Text::tr("Ошибка чтения файла по смещению %0 (должно быть прочитано %1, а прочитано %2): '%3'")
        .arg(offset)
        .arg(expected)
        .arg(got)
        .arg(name);
}

QString fileWriteFailed(const QString& name, quint64 offset)
{
    return Text::tr("Ошибка записи файла по смещению %0: '%1'").arg(offset).arg(name);
}

QString fileResizeFailed(const QString& name, quint64 size)
{
    return Text::tr("Ошибка изменения размера файла до %0: '%1'").arg(size).arg(name);
}

QString fileFlushFailed(const QString& name)
{
    return Text::tr("Ошибка сброса данных на диск: '%0'").arg(name);
}

QString fileLengthUnexplained(const QString& name, quint64 size)
{
    return Text::tr("Прежняя длина файла (%0) не подтверждена сохраненными данными: '%1'")
        .arg(size)
        .arg(name);
}

QString keyOutdated()
{
    return Text::tr("Файл открыт под защитой уже завершенного отката");
}

QString savepointGone()
{
    return Text::tr("Точка сохранения больше не действует");
}

QString notRegular()
{
    return Text::tr("Это не обычный файл");
}

QString fileNotSynced(const QString& name)
{
    return Text::tr("Система не подтвердила запись файла '%0' на диск").arg(name);
}

QString folderNotSynced(const QString& path)
{
    return Text::tr("Система не подтвердила запись имен в папке '%0' на диск").arg(path);
}

QString journalNotSynced()
{
    return Text::tr("Система не подтвердила запись файла отката на диск");
}

QString isLink()
{
    return Text::tr("Имя является символической ссылкой или ведет через нее");
}

QString leadsOutside()
{
    return Text::tr("Имя ведет за пределы каталога файла отката");
}

QString isInterface()
{
    return Text::tr("Файл принадлежит служебной файловой системе");
}

QString isNotAccepted()
{
    return Text::tr("Файл не разрешен правилом имен");
}

} // namespace message

void LogInfo::error(const QString& text)
{
    static const logging::LoggerMessager log(logging::LogLevel::Error, "SecuredFile.cpp", 114,
                                             "static void veltor::utils::LogInfo::error(const QString&)");
    log.write(text);
}

void LogInfo::detail(const QString& text)
{
    static const logging::LoggerMessager log(logging::LogLevel::Info, "SecuredFile.cpp", 114,
                                             "static void veltor::utils::LogInfo::detail(const QString&)");
    log.write(text);
}

} // namespace veltor::utils
