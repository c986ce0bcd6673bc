<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>LockInfo</name>
    <message>
        <source>нет папки &apos;%1&apos;</source>
        <translation>there is no folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>&apos;%1&apos; — не папка</source>
        <translation>&apos;%1&apos; is not a folder</translation>
    </message>
    <message>
        <source>нет прав на вход в папку &apos;%1&apos;</source>
        <translation>you may not enter the folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>ссылки ведут по кругу</source>
        <translation>the links lead in a circle</translation>
    </message>
    <message>
        <source>имя слишком длинное</source>
        <translation>the name is too long</translation>
    </message>
    <message>
        <source>это папка</source>
        <translation>it is a folder</translation>
    </message>
    <message>
        <source>нет прав на запись в него</source>
        <translation>you may not write to it</translation>
    </message>
    <message>
        <source>он отмечен как доступный только для чтения</source>
        <translation>it is marked as read-only</translation>
    </message>
    <message>
        <source>он отмечен как неизменяемый</source>
        <translation>it is marked as immutable</translation>
    </message>
    <message>
        <source>он отмечен как доступный только для дополнения</source>
        <translation>it is marked so that it can only be extended</translation>
    </message>
    <message>
        <source>диск подключён только для чтения</source>
        <translation>the disk is mounted for reading only</translation>
    </message>
    <message>
        <source>это работающая программа: %1</source>
        <translation>it is a running program: %1</translation>
    </message>
    <message>
        <source>на диске недостаточно места</source>
        <translation>there is not enough room on the disk</translation>
    </message>
    <message>
        <source>на диске нет места для новых файлов</source>
        <translation>there is no room for new files on the disk</translation>
    </message>
    <message>
        <source>исчерпана квота на диске</source>
        <translation>the disk quota is used up</translation>
    </message>
    <message>
        <source>его заблокировал %1</source>
        <translation>it is locked by %1</translation>
    </message>
    <message>
        <source>его использует %1</source>
        <translation>it is in use by %1</translation>
    </message>
    <message>
        <source>нет прав на создание файлов в папке &apos;%1&apos;</source>
        <translation>you may not create files in the folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>папка &apos;%1&apos; отмечена как неизменяемая</source>
        <translation>the folder &apos;%1&apos; is marked as immutable</translation>
    </message>
    <message>
        <source>%1 и ещё %2</source>
        <translation>%1 and %2 more</translation>
    </message>
    <message>
        <source>Не удалось узнать, кто использует &apos;%1&apos;: %2</source>
        <translation>Could not find out who uses &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Процессы других пользователей не видны</source>
        <translation>The processes of other users cannot be seen</translation>
    </message>
    <message>
        <source>Процессов, которые не удалось просмотреть: %1</source>
        <translation>Processes that could not be looked into: %1</translation>
    </message>
    <message>
        <source>процесс %1</source>
        <translation>process %1</translation>
    </message>
    <message>
        <source>Файл &apos;%1&apos; нельзя записать: %2</source>
        <translation>The file &apos;%1&apos; cannot be written: %2</translation>
    </message>
    <message>
        <source>%1 (процесс %2)</source>
        <translation>%1 (process %2)</translation>
    </message>
    <message>
        <source>%1 (процесс %2, пользователь %3)</source>
        <translation>%1 (process %2, user %3)</translation>
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
    <name>TemporaryDir</name>
    <message>
        <source>Не удалось открыть папку &apos;%1&apos;: %2</source>
        <translation>Could not open the folder &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>не папка этого пользователя</source>
        <translation>not a folder of this user</translation>
    </message>
    <message>
        <source>в папке нет отметки временной</source>
        <translation>the folder has no mark of a temporary one</translation>
    </message>
    <message>
        <source>Папка &apos;%1&apos; не годится для временных файлов: любой пользователь может подменить в ней чужие файлы</source>
        <translation>The folder &apos;%1&apos; is not fit for temporary files: any user can replace the files of others in it</translation>
    </message>
    <message>
        <source>Не удалось создать временную папку в &apos;%1&apos;: %2</source>
        <translation>Could not create a temporary folder in &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Не удалось удалить &apos;%1&apos;: %2</source>
        <translation>Could not remove &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Не удалось переименовать &apos;%1&apos; в &apos;%2&apos;: %3</source>
        <translation>Could not rename &apos;%1&apos; to &apos;%2&apos;: %3</translation>
    </message>
</context>
<context>
    <name>TreeRemoval</name>
    <message>
        <source>здесь подключена другая папка или другой диск</source>
        <translation>another folder or disk is mounted here</translation>
    </message>
    <message>
        <source>это не имя файла или папки</source>
        <translation>this is not the name of a file or folder</translation>
    </message>
</context>
<context>
    <name>UniqueFile</name>
    <message>
        <source>Не удалось создать &apos;%1&apos;: %2</source>
        <translation>Could not create &apos;%1&apos;: %2</translation>
    </message>
</context>
<context>
    <name>veltor</name>
    <message>
        <source>показать эту справку</source>
        <translation>show this help</translation>
    </message>
    <message>
        <source>не хватает аргументов</source>
        <translation>arguments are missing</translation>
    </message>
    <message>
        <source>после &apos;%1&apos; не хватает аргументов</source>
        <translation>arguments are missing after &apos;%1&apos;</translation>
    </message>
    <message>
        <source>лишний аргумент &apos;%1&apos;</source>
        <translation>unexpected argument &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--%1: ожидается целое число от %2 до %3, а не &apos;%4&apos;</source>
        <translation>--%1 takes a whole number from %2 to %3, not &apos;%4&apos;</translation>
    </message>
    <message>
        <source>--%1: ожидается одно из %2, а не &apos;%3&apos;</source>
        <translation>--%1 takes one of %2, not &apos;%3&apos;</translation>
    </message>
    <message>
        <source>Вызов: </source>
        <translation>Usage: </translation>
    </message>
    <message>
        <source>Ключи:</source>
        <translation>Options:</translation>
    </message>
    <message>
        <source>стандартный вывод: %1</source>
        <translation>standard output: %1</translation>
    </message>
    <message>
        <source>veltor: прервано</source>
        <translation>veltor: interrupted</translation>
    </message>
    <message>
        <source>--ellipsoid: ожидаются большая полуось в метрах и обратное сжатие, например 6378137,298.257223563 (0 — сфера), а не &apos;%1&apos;</source>
        <translation>--ellipsoid takes the semi-major axis in metres and the inverse flattening, as in 6378137,298.257223563 (0: a sphere), not &apos;%1&apos;</translation>
    </message>
    <message>
        <source>нет такого ключа: &apos;%1&apos;</source>
        <translation>there is no option &apos;%1&apos;</translation>
    </message>
    <message>
        <source>нет таких ключей: %1</source>
        <translation>there are no options %1</translation>
    </message>
    <message>
        <source>не задано значение ключа &apos;%1&apos;</source>
        <translation>a value is missing after &apos;%1&apos;</translation>
    </message>
    <message>
        <source>у ключа &apos;%1&apos; не бывает значения</source>
        <translation>&apos;%1&apos; takes no value</translation>
    </message>
    <message>
        <source>нет прав доступа</source>
        <translation>permission denied</translation>
    </message>
    <message>
        <source>открыто слишком много файлов</source>
        <translation>too many open files</translation>
    </message>
    <message>
        <source>нет такого файла или папки</source>
        <translation>no such file or directory</translation>
    </message>
    <message>
        <source>на устройстве не осталось места</source>
        <translation>no space left on device</translation>
    </message>
    <message>
        <source>это папка</source>
        <translation>is a directory</translation>
    </message>
    <message>
        <source>закрыт</source>
        <translation>is closed</translation>
    </message>
    <message>
        <source>файл слишком велик</source>
        <translation>file too large</translation>
    </message>
    <message>
        <source>ошибка ввода-вывода</source>
        <translation>input/output error</translation>
    </message>
    <message>
        <source>действие не разрешено</source>
        <translation>operation not permitted</translation>
    </message>
    <message>
        <source>канал никто не читает</source>
        <translation>nobody reads the pipe</translation>
    </message>
    <message>
        <source>ошибка системы %1</source>
        <translation>system error %1</translation>
    </message>
    <message>
        <source>расстояния между двумя точками по всем формулам</source>
        <translation>distances between positions by every formula</translation>
    </message>
    <message>
        <source>показать журнал отката, откатить, исправить, убрать</source>
        <translation>show, roll back, repair or discard a rollback journal</translation>
    </message>
    <message>
        <source>площади, периметры и длины объектов карты GeoJSON</source>
        <translation>areas, perimeters and lengths of a GeoJSON map</translation>
    </message>
    <message>
        <source>Вызов: veltor КОМАНДА [АРГУМЕНТЫ...]</source>
        <translation>Usage: veltor COMMAND [ARGUMENTS...]</translation>
    </message>
    <message>
        <source>Команды:</source>
        <translation>Commands:</translation>
    </message>
    <message>
        <source>Подробно: veltor help КОМАНДА или veltor КОМАНДА --help; версия: veltor --version</source>
        <translation>More: veltor help COMMAND or veltor COMMAND --help; the version: veltor --version</translation>
    </message>
    <message>
        <source>Код завершения: 0 — сделано, 1 — отказ или ошибка, 2 — неверная командная строка, 130 — прервано</source>
        <translation>Exit status: 0 done, 1 refused or failed, 2 the command line does not fit, 130 interrupted</translation>
    </message>
    <message>
        <source>нет такой команды: &apos;%1&apos;</source>
        <translation>there is no command &apos;%1&apos;</translation>
    </message>
    <message>
        <source>не названа команда</source>
        <translation>which command?</translation>
    </message>
    <message>
        <source>смотрите %1 --help</source>
        <translation>see %1 --help</translation>
    </message>
    <message>
        <source>на запись</source>
        <translation>for writing</translation>
    </message>
    <message>
        <source>на чтение</source>
        <translation>for reading</translation>
    </message>
    <message>
        <source>(ожидает)</source>
        <translation>(waiting)</translation>
    </message>
    <message>
        <source>%1:
</source>
        <translation>%1:
</translation>
    </message>
    <message>
        <source>с %1</source>
        <translation>since %1</translation>
    </message>
    <message>
        <source>процесс %1</source>
        <translation>process %1</translation>
    </message>
    <message>
        <source>неизвестный процесс</source>
        <translation>unknown process</translation>
    </message>
    <message>
        <source>никто не использует</source>
        <translation>nobody uses it</translation>
    </message>
    <message>
        <source>нельзя записать: %1</source>
        <translation>cannot be written: %1</translation>
    </message>
    <message>
        <source>Показывает, какие процессы открыли файл или папку, отобразили в память, выполняют или
находятся в ней, какие блокировки держат, и почему файл нельзя записать. Ничего не
меняет и не открывает. Код завершения: 0 — ничто не мешает записи, 1 — что-то мешает.</source>
        <translation>Shows which processes have a file or folder open, map it, run it or are in it, by which locks,
and why the file cannot be written. Changes and opens nothing. Exit status: 0 nothing stands
against writing, 1 something does.</translation>
    </message>
    <message>
        <source>в виде JSON</source>
        <translation>as JSON</translation>
    </message>
    <message>
        <source>кто использует файлы и почему их нельзя записать</source>
        <translation>who uses files, and why they cannot be written</translation>
    </message>
    <message>
        <source>нет такого файла; создать его ничто не мешает</source>
        <translation>there is no such file; nothing stands against making it</translation>
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
