// The texts of a transaction's failures.

#include "utils/storage/TransactionMessages.h"

#include <QtCore/QCoreApplication>

namespace veltor::utils::transaction::message {

QString notActive()
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Транзакция не начата или уже завершена");
}

QString canceled(const QString& journal)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Откат прерван, файл отката '%0' сохранён")
        .arg(journal);
}

QString journalDamaged(const QString& journal, const QString& fault)
{
    return QCoreApplication::translate(
               "veltor::utils::Transaction",
               "Из файла отката '%0' восстановить можно не всё, файлы не изменены: %1")
        .arg(journal, fault);
}

QString notRestored(int count, const QString& journal, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Не восстановлено файлов: %0, файл отката '%1' сохранён: %2")
        .arg(count)
        .arg(journal, reason);
}

QString restoredInPart()
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "часть сохранённых данных потеряна, восстановлено не всё");
}

QString notRestorable()
{
    return QCoreApplication::translate("veltor::utils::Transaction", "файл не удалось открыть");
}

QString savepointUnknown()
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Точка сохранения не принадлежит транзакции или уже недействительна");
}

QString badName(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "'%0' не может быть именем файла в папке файла отката")
        .arg(name);
}

QString nameReserved(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Имя '%0' занято самой транзакцией")
        .arg(name);
}

QString nameTaken(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Имя '%0' уже занято").arg(name);
}

QString noFile(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Файла '%0' нет").arg(name);
}

QString notRegular(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "'%0' не является обычным файлом")
        .arg(name);
}

QString sameFile(const QString& name, const QString& other)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "'%0' и '%1' — один и тот же файл")
        .arg(name, other);
}

QString cannotLook(const QString& name, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Нет доступа к '%0': %1")
        .arg(name, reason);
}

QString cannotCreate(const QString& name, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Ошибка создания '%0': %1")
        .arg(name, reason);
}

QString cannotMove(const QString& from, const QString& to, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Ошибка переименования '%0' в '%1': %2")
        .arg(from, to, reason);
}

QString cannotRemove(const QString& name, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "Ошибка удаления '%0': %1")
        .arg(name, reason);
}

QString cannotSync(const QString& name, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Система не подтвердила запись '%0' на диск: %1")
        .arg(name, reason);
}

QString notChangeable(const QString& name)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Нет права создавать и удалять файлы рядом с '%0'")
        .arg(name);
}

QString tooManyNames()
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Слишком много изменений имён в одной транзакции");
}

QString manifestDamaged(const QString& manifest)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Список имён транзакции '%0' повреждён, имена не изменены")
        .arg(manifest);
}

QString manifestUnreadable(const QString& manifest, const QString& reason)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Ошибка чтения или записи списка имён транзакции '%0': %1")
        .arg(manifest, reason);
}

QString folderForeign(const QString& folder)
{
    return QCoreApplication::translate("veltor::utils::Transaction",
                                       "Папка транзакции '%0' принадлежит другому пользователю")
        .arg(folder);
}

QString folderTaken(const QString& folder)
{
    return QCoreApplication::translate("veltor::utils::Transaction", "'%0' не является папкой транзакции")
        .arg(folder);
}

} // namespace veltor::utils::transaction::message
