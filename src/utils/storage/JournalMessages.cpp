#include "utils/storage/JournalMessages.h"

#include <veltor/logging/Logger.h>
#include <veltor/utils/SecuredFile.h>

namespace veltor::utils {
namespace journal::message {

QString seekFailed(quint64 offset, quint64 journalSize, bool journalOpen)
{
    return SecuredFile::tr("Ошибка перехода к смещению %0 (размер файла отката %1, %2)")
        .arg(offset)
        .arg(journalSize)
        .arg(journalOpen ? SecuredFile::tr("файл открыт") : SecuredFile::tr("файл закрыт"));
}

QString readFailed(quint64 offset, quint64 expected, quint64 got)
{
    return SecuredFile::tr(
               "Ошибка чтения данных отката по смещению %0 (должно быть прочитано %1, а прочитано %2)")
        .arg(offset)
        .arg(expected)
        .arg(got);
}

QString unknownVersion(const QUuid& version)
{
    return SecuredFile::tr("Указана неизвестная версия файла отката (%0)").arg(version.toString());
}

QString firstFileWithoutLast(quint64 firstFile)
{
    return SecuredFile::tr(
               "Задано смещение первого файла в цепочке (%0), но не задано смещение последнего файла")
        .arg(firstFile);
}

QString lastFileWithoutFirst(quint64 lastFile)
{
    return SecuredFile::tr(
               "Задано смещение последнего файла в цепочке (%0), но не задано смещение первого файла")
        .arg(lastFile);
}

QString firstFreeWithoutLast(quint64 firstFree)
{
    return SecuredFile::tr("Задано смещение первого свободного блока в цепочке (%0), но не задано смещение "
                           "последнего свободного блока")
        .arg(firstFree);
}

QString lastFreeWithoutFirst(quint64 lastFree)
{
    return SecuredFile::tr("Задано смещение последнего свободного блока в цепочке (%0), но не задано "
                           "смещение первого свободного блока")
        .arg(lastFree);
}

QString badFirstFile(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение первого файла в цепочке (%0)").arg(offset);
}

QString badLastFile(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение последнего файла в цепочке (%0)").arg(offset);
}

QString badFirstFree(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение первого свободного блока в цепочке (%0)")
        .arg(offset);
}

QString badLastFree(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение последнего свободного блока в цепочке (%0)")
        .arg(offset);
}

QString firstChangeWithoutLast(quint64 firstChange, quint64 fileSize)
{
    return SecuredFile::tr("Задано смещение первого изменения в цепочке (%0) файла размером %1, но не задано "
                           "смещение последнего изменения")
        .arg(firstChange)
        .arg(fileSize);
}

QString lastChangeWithoutFirst(quint64 lastChange, quint64 fileSize)
{
    return SecuredFile::tr("Задано смещение последнего изменения в цепочке (%0) файла размером %1, но не "
                           "задано смещение первого изменения")
        .arg(lastChange)
        .arg(fileSize);
}

QString badFirstChange(quint64 offset, quint64 fileSize)
{
    return SecuredFile::tr("Некорректное смещение первого изменения в цепочке (%0) файла размером %1")
        .arg(offset)
        .arg(fileSize);
}

QString badLastChange(quint64 offset, quint64 fileSize)
{
    return SecuredFile::tr("Некорректное смещение последнего изменения в цепочке (%0) файла размером %1")
        .arg(offset)
        .arg(fileSize);
}

QString badNextFile(quint64 offset, quint64 fileSizeBefore)
{
    return SecuredFile::tr("Некорректное смещение очередного (после файла размером %1) файла в цепочке (%0)")
        .arg(offset)
        .arg(fileSizeBefore);
}

QString lastChangeMismatch(quint64 stored, quint64 walked)
{
    return SecuredFile::tr("Указанное в заголовке файла смещение последнего блока (%0) не соответствует "
                           "полученному при прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString nameSeekFailed(quint64 nameOffset, quint64 entryOffset)
{
    return SecuredFile::tr("Ошибка позиционирования в файле по смещению %0 относительно %1")
        .arg(nameOffset)
        .arg(entryOffset);
}

QString nameReadFailed(quint64 nameOffset, quint64 got, quint64 expected)
{
    return SecuredFile::tr("Ошибка чтения имени файла по смещению %0 (прочитано %1 вместо %2)")
        .arg(nameOffset)
        .arg(got)
        .arg(expected);
}

QString badName()
{
    return SecuredFile::tr("Имя файла содержит запрещенные символы");
}

QString openFailed(const QString& name)
{
    return SecuredFile::tr("Ошибка открытия файла '%0'").arg(name);
}

QString lastFileMismatch(quint64 walked, quint64 stored)
{
    return SecuredFile::tr(
               "Смещение последнего блока цепочки (%0) не совпадает с указанным в заголовке файла (%1)")
        .arg(walked)
        .arg(stored);
}

QString blockOutOfFile(quint64 length, quint64 position, quint64 sizeBound)
{
    return SecuredFile::tr("Блок данных длиной %0 со смещением %1 выходит за границы файла (%2)")
        .arg(length)
        .arg(position)
        .arg(sizeBound);
}

QString badNextChange(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение следующего блока изменений (%0)").arg(offset);
}

QString badPreviousChange(quint64 offset)
{
    return SecuredFile::tr("Некорректно указано смещение предыдущего блока изменений (%0)").arg(offset);
}

QString previousChangeMismatch(quint64 stored, quint64 walked)
{
    return SecuredFile::tr("Указанное смещение предыдущего блока (%0) не соответствует полученному при "
                           "прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString checksumMismatch(quint64 dataOffset)
{
    return SecuredFile::tr("Не совпадает контрольная сумма данных отката по смещению %0").arg(dataOffset);
}

QString emptyFreeBlock()
{
    return SecuredFile::tr("Пустой свободный блок");
}

QString badNextFree(quint64 offset)
{
    return SecuredFile::tr("Некорректное смещение следующего свободного блока (%0)").arg(offset);
}

QString badPreviousFree(quint64 offset)
{
    return SecuredFile::tr("Некорректное смещение предыдущего свободного блока (%0)").arg(offset);
}

QString badFreeRegion(quint64 offset)
{
    return SecuredFile::tr("Некорректное смещение свободного блока в исходном файле (%0)").arg(offset);
}

QString previousFreeMismatch(quint64 stored, quint64 walked)
{
    return SecuredFile::tr("Указанное смещение предыдущего свободного блока (%0) не соответствует "
                           "полученному при прямом проходе по цепочке (%1)")
        .arg(stored)
        .arg(walked);
}

QString journalNotUsable()
{
    return SecuredFile::tr("Устройство файла отката не открыто или не допускает произвольный доступ");
}

QString journalNotAppendable()
{
    return SecuredFile::tr("Файл отката не допускает новых изменений: он восстановлен, не прошел проверку "
                           "или не содержит контрольных сумм");
}

QString journalNotChecked()
{
    return SecuredFile::tr("Откат невозможен: файл отката не прошел проверку");
}

QString journalWriteFailed(quint64 offset, quint64 expected, quint64 written)
{
    return SecuredFile::tr(
               "Ошибка записи данных отката по смещению %0 (должно быть записано %1, а записано %2)")
        .arg(offset)
        .arg(expected)
        .arg(written);
}

QString journalNotRemoved(const QString& name)
{
    return SecuredFile::tr("Ошибка удаления файла отката '%0'").arg(name);
}

QString nameTooLong(const QString& name)
{
    return SecuredFile::tr("Имя файла слишком длинное для файла отката: '%0'").arg(name);
}

QString fileIsJournal(const QString& name)
{
    return SecuredFile::tr("Файл отката '%0' не может защищать сам себя").arg(name);
}

QString fileClosed(const QString& name)
{
    return SecuredFile::tr("Файл '%0' закрыт").arg(name);
}

QString fileReadFailed(const QString& name, quint64 offset, quint64 expected, quint64 got)
{
    return SecuredFile::tr(
               "Ошибка чтения файла по смещению %0 (должно быть прочитано %1, а прочитано %2): '%3'")
        .arg(offset)
        .arg(expected)
        .arg(got)
        .arg(name);
}

QString fileWriteFailed(const QString& name, quint64 offset)
{
    return SecuredFile::tr("Ошибка записи файла по смещению %0: '%1'").arg(offset).arg(name);
}

QString fileResizeFailed(const QString& name, quint64 size)
{
    return SecuredFile::tr("Ошибка изменения размера файла до %0: '%1'").arg(size).arg(name);
}

QString fileFlushFailed(const QString& name)
{
    return SecuredFile::tr("Ошибка сброса данных на диск: '%0'").arg(name);
}

} // namespace journal::message

void LogInfo::error(const QString& text)
{
    static const logging::LoggerMessager log(logging::LogLevel::Error, "SecuredFile.cpp", 114,
                                             "static void veltor::utils::LogInfo::error(const QString&)");
    log.write(text);
}

} // namespace veltor::utils
