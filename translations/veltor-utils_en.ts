<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>GroupTask</name>
    <message>
        <source>неизвестная ошибка</source>
        <translation>unknown error</translation>
    </message>
    <message>
        <source>Часть %1</source>
        <translation>Part %1</translation>
    </message>
    <message>
        <source>Задача &apos;%1&apos; не может быть частью группы: у неё есть владелец, она живёт в другом потоке или уже запущена</source>
        <translation>The task &apos;%1&apos; cannot be a part of the group: it has an owner, lives in another thread or was started before</translation>
    </message>
    <message>
        <source>Группа задач уже запущена</source>
        <translation>The group of tasks was started before</translation>
    </message>
    <message>
        <source>Части группы ждут друг друга по кругу: %1</source>
        <translation>Parts of the group wait for each other in a circle: %1</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>иное</source>
        <translation>another</translation>
    </message>
    <message>
        <source>Функция %1 возвращает %2</source>
        <translation>Function %1 returns %2</translation>
    </message>
    <message>
        <source>Не удалось инициализировать объект </source>
        <translation>Could not initialize the object </translation>
    </message>
    <message>
        <source>Неизвестный тип данных &apos;%1&apos;, ожидается &apos;%2&apos;</source>
        <translation>Unknown data type &apos;%1&apos;, expected &apos;%2&apos;</translation>
    </message>
    <message>
        <source>Величина %1 содержит недопустимое значение %2</source>
        <translation>%1 holds the invalid value %2</translation>
    </message>
    <message>
        <source>Неподдерживаемая операция. %1</source>
        <translation>Unsupported operation. %1</translation>
    </message>
    <message>
        <source>Не реализовано %1</source>
        <translation>Not implemented: %1</translation>
    </message>
    <message>
        <source>Операция прервана. %1</source>
        <translation>Operation aborted. %1</translation>
    </message>
    <message>
        <source>Индекс %1 вышел за пределы</source>
        <translation>Index %1 is out of range</translation>
    </message>
    <message>
        <source>Не задан аргумент %1</source>
        <translation>Argument %1 is not set</translation>
    </message>
    <message>
        <source>Не удалось создать файл &apos;%0&apos;%1</source>
        <translation>Could not create the file &apos;%0&apos;%1</translation>
    </message>
    <message>
        <source>Не удалось открыть файл &apos;%0&apos;%1</source>
        <translation>Could not open the file &apos;%0&apos;%1</translation>
    </message>
    <message>
        <source>Неизвестная кодировка %1</source>
        <translation>Unknown encoding %1</translation>
    </message>
    <message>
        <source>Строка %1... в кодировке %2 превышает допустимый размер %0</source>
        <translation>The string %1... in the encoding %2 exceeds the permitted size %0</translation>
    </message>
    <message>
        <source>Выкл.</source>
        <translation>Off</translation>
    </message>
    <message>
        <source>Вкл.</source>
        <translation>On</translation>
    </message>
    <message>
        <source>Выкл. для группы</source>
        <translation>Off for the group</translation>
    </message>
    <message>
        <source>Да</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>Нет</source>
        <translation>No</translation>
    </message>
</context>
<context>
    <name>TaskListModel</name>
    <message>
        <source>Неизвестная ошибка</source>
        <translation>Unknown error</translation>
    </message>
    <message>
        <source>В очереди</source>
        <translation>Waiting</translation>
    </message>
    <message>
        <source>Выполняется</source>
        <translation>Running</translation>
    </message>
    <message>
        <source>Приостановлено</source>
        <translation>Paused</translation>
    </message>
    <message>
        <source>Отменяется</source>
        <translation>Canceling</translation>
    </message>
    <message>
        <source>Готово</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>Отменено</source>
        <translation>Canceled</translation>
    </message>
    <message>
        <source>Ошибка</source>
        <translation>Failed</translation>
    </message>
    <message>
        <source>осталось %1 с</source>
        <translation>%1 s left</translation>
    </message>
    <message>
        <source>осталось %1 мин</source>
        <translation>%1 min left</translation>
    </message>
    <message>
        <source>осталось %1 ч %2 мин</source>
        <translation>%1 h %2 min left</translation>
    </message>
</context>
<context>
    <name>TaskResult</name>
    <message>
        <source>Ошибка, о которой никто не спросил: %1</source>
        <translation>An error that nobody asked for: %1</translation>
    </message>
    <message>
        <source>Значение результата уже взято</source>
        <translation>The value of the result was taken before</translation>
    </message>
    <message>
        <source>Наблюдатель задачи прерван: %1</source>
        <translation>An observer of the task was broken off: %1</translation>
    </message>
</context>
<context>
    <name>veltor::concurrent::ProgressHandler</name>
    <message>
        <source>Операция была прервана</source>
        <translation>The operation was cancelled</translation>
    </message>
</context>
<context>
    <name>veltor::utils::SecuredFile</name>
    <message>
        <source>Ошибка перехода к смещению %0 (размер файла отката %1, %2)</source>
        <translation>Could not seek to offset %0 (size of the rollback journal %1, %2)</translation>
    </message>
    <message>
        <source>файл открыт</source>
        <translation>file open</translation>
    </message>
    <message>
        <source>файл закрыт</source>
        <translation>file closed</translation>
    </message>
    <message>
        <source>Ошибка чтения данных отката по смещению %0 (должно быть прочитано %1, а прочитано %2)</source>
        <translation>Could not read rollback data at offset %0 (bytes expected: %1, read: %2)</translation>
    </message>
    <message>
        <source>Указана неизвестная версия файла отката (%0)</source>
        <translation>Unknown version of the rollback journal (%0)</translation>
    </message>
    <message>
        <source>Задано смещение первого файла в цепочке (%0), но не задано смещение последнего файла</source>
        <translation>The offset of the first file in the chain is set (%0), but that of the last file is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего файла в цепочке (%0), но не задано смещение первого файла</source>
        <translation>The offset of the last file in the chain is set (%0), but that of the first file is not</translation>
    </message>
    <message>
        <source>Задано смещение первого свободного блока в цепочке (%0), но не задано смещение последнего свободного блока</source>
        <translation>The offset of the first free block in the chain is set (%0), but that of the last free block is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего свободного блока в цепочке (%0), но не задано смещение первого свободного блока</source>
        <translation>The offset of the last free block in the chain is set (%0), but that of the first free block is not</translation>
    </message>
    <message>
        <source>Некорректно указано смещение первого файла в цепочке (%0)</source>
        <translation>Invalid offset of the first file in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение последнего файла в цепочке (%0)</source>
        <translation>Invalid offset of the last file in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение первого свободного блока в цепочке (%0)</source>
        <translation>Invalid offset of the first free block in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение последнего свободного блока в цепочке (%0)</source>
        <translation>Invalid offset of the last free block in the chain (%0)</translation>
    </message>
    <message>
        <source>Задано смещение первого изменения в цепочке (%0) файла размером %1, но не задано смещение последнего изменения</source>
        <translation>The offset of the first change in the chain is set (%0) for a file of size %1, but that of the last change is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего изменения в цепочке (%0) файла размером %1, но не задано смещение первого изменения</source>
        <translation>The offset of the last change in the chain is set (%0) for a file of size %1, but that of the first change is not</translation>
    </message>
    <message>
        <source>Некорректное смещение первого изменения в цепочке (%0) файла размером %1</source>
        <translation>Invalid offset of the first change in the chain (%0) of a file of size %1</translation>
    </message>
    <message>
        <source>Некорректное смещение последнего изменения в цепочке (%0) файла размером %1</source>
        <translation>Invalid offset of the last change in the chain (%0) of a file of size %1</translation>
    </message>
    <message>
        <source>Некорректное смещение очередного (после файла размером %1) файла в цепочке (%0)</source>
        <translation>Invalid offset of the next file in the chain (%0), after a file of size %1</translation>
    </message>
    <message>
        <source>Указанное в заголовке файла смещение последнего блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the last block in the file&apos;s header (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Ошибка позиционирования в файле по смещению %0 относительно %1</source>
        <translation>Could not position in the file at offset %0 relative to %1</translation>
    </message>
    <message>
        <source>Ошибка чтения имени файла по смещению %0 (прочитано %1 вместо %2)</source>
        <translation>Could not read the file name at offset %0 (bytes read: %1 instead of %2)</translation>
    </message>
    <message>
        <source>Имя файла содержит запрещенные символы</source>
        <translation>The file name contains forbidden characters</translation>
    </message>
    <message>
        <source>Ошибка открытия файла &apos;%0&apos;</source>
        <translation>Could not open the file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Смещение последнего блока цепочки (%0) не совпадает с указанным в заголовке файла (%1)</source>
        <translation>The offset of the last block in the chain (%0) differs from the one in the file&apos;s header (%1)</translation>
    </message>
    <message>
        <source>Блок данных длиной %0 со смещением %1 выходит за границы файла (%2)</source>
        <translation>A data block of length %0 at offset %1 exceeds the bounds of the file (%2)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение следующего блока изменений (%0)</source>
        <translation>Invalid offset of the next change block (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение предыдущего блока изменений (%0)</source>
        <translation>Invalid offset of the previous change block (%0)</translation>
    </message>
    <message>
        <source>Указанное смещение предыдущего блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the previous block (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Не совпадает контрольная сумма данных отката по смещению %0</source>
        <translation>Checksum mismatch in the rollback data at offset %0</translation>
    </message>
    <message>
        <source>Пустой свободный блок</source>
        <translation>Empty free block</translation>
    </message>
    <message>
        <source>Некорректное смещение следующего свободного блока (%0)</source>
        <translation>Invalid offset of the next free block (%0)</translation>
    </message>
    <message>
        <source>Некорректное смещение предыдущего свободного блока (%0)</source>
        <translation>Invalid offset of the previous free block (%0)</translation>
    </message>
    <message>
        <source>Некорректное смещение свободного блока в исходном файле (%0)</source>
        <translation>Invalid offset of the free block in the original file (%0)</translation>
    </message>
    <message>
        <source>Указанное смещение предыдущего свободного блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the previous free block (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Устройство файла отката не открыто или не допускает произвольный доступ</source>
        <translation>The device of the rollback journal is not open or does not allow random access</translation>
    </message>
    <message>
        <source>Файл отката не допускает новых изменений: он восстановлен, не прошел проверку или не содержит контрольных сумм</source>
        <translation>The rollback journal takes no further changes: it was repaired, failed validation or has no checksums</translation>
    </message>
    <message>
        <source>Откат невозможен: файл отката не прошел проверку</source>
        <translation>Rollback is impossible: the rollback journal failed validation</translation>
    </message>
    <message>
        <source>Ошибка записи данных отката по смещению %0 (должно быть записано %1, а записано %2)</source>
        <translation>Could not write rollback data at offset %0 (bytes expected: %1, written: %2)</translation>
    </message>
    <message>
        <source>Ошибка удаления файла отката &apos;%0&apos;</source>
        <translation>Could not remove the rollback journal &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Имя файла слишком длинное для файла отката: &apos;%0&apos;</source>
        <translation>The file name is too long for the rollback journal: &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; не может защищать сам себя</source>
        <translation>The rollback journal &apos;%0&apos; cannot protect itself</translation>
    </message>
    <message>
        <source>Файл &apos;%0&apos; закрыт</source>
        <translation>The file &apos;%0&apos; is closed</translation>
    </message>
    <message>
        <source>Ошибка чтения файла по смещению %0 (должно быть прочитано %1, а прочитано %2): &apos;%3&apos;</source>
        <translation>Could not read the file at offset %0 (bytes expected: %1, read: %2): &apos;%3&apos;</translation>
    </message>
    <message>
        <source>Ошибка записи файла по смещению %0: &apos;%1&apos;</source>
        <translation>Could not write the file at offset %0: &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Ошибка изменения размера файла до %0: &apos;%1&apos;</source>
        <translation>Could not change the size of the file to %0: &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Ошибка сброса данных на диск: &apos;%0&apos;</source>
        <translation>Could not flush the data to disk: &apos;%0&apos;</translation>
    </message>
</context>
</TS>
